// In-process IPC: ke_ipc_call dispatches by name to handlers registered in
// this process, or to the next scripted answer for that name.
#include <algorithm>
#include <cstring>
#include <deque>
#include <map>

#include "kestub.h"
#include "platform.h"
#include "state.h"

namespace kestub {
namespace {

struct Script {
    uint32_t status;
    std::vector<uint8_t> reply;
};

// Looked up by the caller's name as it stands (std::less<>): no string is
// built per call.
struct IpcState {
    std::map<std::string, IpcHandler, std::less<>> handlers;
    std::map<std::string, std::deque<Script>, std::less<>> scripts;
    IpcHandler fallback = nullptr;
    std::vector<IpcCall> calls;
    bool recording = true;
    unsigned made = 0;     // calls since reset(), recorded or not
    unsigned fail_at = 0;  // call number that fails; 0 none
    uint32_t fail_status = 0;
};

IpcState &ipc()
{
    static IpcState state;
    return state;
}

// Outside the state, so that the check costs one load.
IpcHandler g_answer_all = nullptr;

uint32_t dispatch(const char *name, void *buf, uint32_t len)
{
    IpcState &st = ipc();
    if (st.fail_at != 0 && st.made == st.fail_at) {
        st.fail_at = 0;
        if (buf != nullptr)
            std::memset(buf, 0xEE, len);
        return st.fail_status;
    }
    auto script = st.scripts.find(name);
    if (script != st.scripts.end() && !script->second.empty()) {
        Script next = std::move(script->second.front());
        script->second.pop_front();
        if (buf != nullptr) {
            if (next.status != 0)
                std::memset(buf, 0xEE, len);
            else if (!next.reply.empty())
                std::memcpy(buf, next.reply.data(), std::min<size_t>(len, next.reply.size()));
        }
        return next.status;
    }
    auto handler = st.handlers.find(name);
    if (handler != st.handlers.end())
        return handler->second(buf, len);
    if (st.fallback != nullptr)
        return st.fallback(buf, len);
    return socket_call(name, buf, len);
}

}  // namespace

void ipc_reset()
{
    ipc() = IpcState{};
    g_answer_all = nullptr;
}

void ipc_serve(const char *name, IpcHandler handler)
{
    if (handler == nullptr)
        ipc().handlers.erase(name);
    else
        ipc().handlers[name] = handler;
}

void ipc_serve_default(IpcHandler handler) { ipc().fallback = handler; }

void ipc_script(const char *name, uint32_t status, const void *reply, size_t reply_len)
{
    const auto *bytes = static_cast<const uint8_t *>(reply);
    Script s{status, {}};
    if (bytes != nullptr)
        s.reply.assign(bytes, bytes + reply_len);
    ipc().scripts[name].push_back(std::move(s));
}

void ipc_fail_nth(unsigned nth, uint32_t status)
{
    ipc().fail_at = nth == 0 ? 0 : ipc().made + nth;
    ipc().fail_status = status;
}

const std::vector<IpcCall> &ipc_calls() { return ipc().calls; }

void ipc_record(bool on) { ipc().recording = on; }

void ipc_answer_all(IpcHandler handler) { g_answer_all = handler; }

IpcHandler local_handler(const char *name)
{
    auto handler = ipc().handlers.find(name);
    return handler != ipc().handlers.end() ? handler->second : nullptr;
}

std::vector<std::string> local_names()
{
    std::vector<std::string> names;
    for (const auto &h : ipc().handlers)
        names.push_back(h.first);
    return names;
}

}  // namespace kestub

namespace kestub {
namespace {

// A call as the tests see it: counted, recorded and observed.  Kept out of
// ke_ipc_call so that answering at once costs no more than the check.
__attribute__((noinline)) uint32_t call_kept(const char *name, void *buf, uint32_t len)
{
    ++ipc().made;
    // Unrecorded and unobserved, a call is its dispatch alone.
    if (!ipc().recording && !observed())
        return name != nullptr ? dispatch(name, buf, len) : kIpcNoServer;
    IpcCall rec{name != nullptr ? name : "", {}, len, buf == nullptr, 0};
    if (buf != nullptr) {
        const auto *bytes = static_cast<const uint8_t *>(buf);
        rec.request.assign(bytes, bytes + len);
    }
    rec.status = name != nullptr ? dispatch(name, buf, len) : kIpcNoServer;
    notify(Event{EventKind::IpcCall, rec.name.c_str(), CmOp{}, 0, rec.request.data(),
                 static_cast<const uint8_t *>(buf), len, rec.status});
    uint32_t status = rec.status;
    if (ipc().recording)
        ipc().calls.push_back(std::move(rec));
    return status;
}

}  // namespace
}  // namespace kestub

extern "C" uint32_t ke_ipc_call(const char *name, void *buf, uint32_t len)
{
    if (kestub::IpcHandler answer = kestub::g_answer_all)
        return answer(buf, len);
    return kestub::call_kept(name, buf, len);
}
