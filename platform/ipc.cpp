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

struct IpcState {
    std::map<std::string, IpcHandler> handlers;
    std::map<std::string, std::deque<Script>> scripts;
    IpcHandler fallback = nullptr;
    std::vector<IpcCall> calls;
    unsigned fail_at = 0;  // call number that fails; 0 none
    uint32_t fail_status = 0;
};

IpcState &ipc()
{
    static IpcState state;
    return state;
}

uint32_t dispatch(const char *name, void *buf, uint32_t len)
{
    IpcState &st = ipc();
    if (st.fail_at != 0 && st.calls.size() + 1 == st.fail_at) {
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
    ipc().fail_at = nth == 0 ? 0 : static_cast<unsigned>(ipc().calls.size()) + nth;
    ipc().fail_status = status;
}

const std::vector<IpcCall> &ipc_calls() { return ipc().calls; }

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

extern "C" uint32_t ke_ipc_call(const char *name, void *buf, uint32_t len)
{
    using namespace kestub;
    IpcCall rec{name != nullptr ? name : "", {}, len, buf == nullptr, 0};
    if (buf != nullptr) {
        const auto *bytes = static_cast<const uint8_t *>(buf);
        rec.request.assign(bytes, bytes + len);
    }
    rec.status = name != nullptr ? dispatch(name, buf, len) : kIpcNoServer;
    notify(Event{EventKind::IpcCall, rec.name.c_str(), CmOp{}, 0, rec.request.data(),
                 static_cast<const uint8_t *>(buf), len, rec.status});
    ipc().calls.push_back(std::move(rec));
    return ipc().calls.back().status;
}
