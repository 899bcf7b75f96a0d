// --trace: every remote call, served call, table operation and command,
// printed as it happens; and the count of calls served, for await.
#include <atomic>
#include <map>
#include <mutex>
#include <string>

#include "cm_table.h"
#include "kestub.h"
#include "shell.h"
#include "text.h"

namespace omcishell {
namespace {

std::atomic<FILE *> g_out{nullptr};

// Calls served so far, by name; the serving thread counts, the shell reads.
std::mutex g_served_mutex;
std::map<std::string, unsigned> g_served;

// Bytes shown of a record in a trace line.
constexpr size_t kShown = 32;

const char *op_name(kestub::CmOp op)
{
    switch (op) {
    case kestub::CmOp::Get:
        return "Get";
    case kestub::CmOp::Set:
        return "Set";
    case kestub::CmOp::Add:
        return "Add";
    case kestub::CmOp::Del:
        return "Del";
    case kestub::CmOp::GetEntryNum:
        return "GetEntryNum";
    case kestub::CmOp::GetAllEntry:
        return "GetAllEntry";
    case kestub::CmOp::OamCtrl:
        break;
    }
    return "OamCtrl";
}

void observe(const kestub::Event &e)
{
    if (e.kind == kestub::EventKind::IpcServed && e.name != nullptr) {
        std::lock_guard<std::mutex> lock(g_served_mutex);
        ++g_served[e.name];
    }
    FILE *out = g_out.load();
    if (out == nullptr)
        return;
    const uint8_t *shown = e.bytes;
    if (e.kind == kestub::EventKind::CmOp) {
        const char *table = ke::cm::table_info(e.table).name;
        if (e.cm_op == kestub::CmOp::Get && e.status == 0)
            shown = e.reply;
        std::fprintf(out, "[cm] %s %u %s size=%u -> 0x%x%s%s\n", op_name(e.cm_op),
                     static_cast<unsigned>(e.table), table, static_cast<unsigned>(e.len),
                     static_cast<unsigned>(e.status), shown != nullptr ? " | " : "",
                     shown != nullptr ? ketool::hex(shown, e.len, kShown).c_str() : "");
    } else {
        bool served = e.kind == kestub::EventKind::IpcServed;
        std::fprintf(out, "[%s] %s len=%u -> 0x%x%s%s\n", served ? "served" : "ipc", e.name,
                     static_cast<unsigned>(e.len), static_cast<unsigned>(e.status),
                     shown != nullptr ? " | " : "",
                     shown != nullptr ? ketool::hex(shown, e.len, kShown).c_str() : "");
        if (e.status == 0 && e.reply != nullptr && shown != nullptr &&
            std::memcmp(e.reply, shown, e.len) != 0)
            std::fprintf(out, "      reply | %s\n", ketool::hex(e.reply, e.len, kShown).c_str());
    }
    std::fflush(out);
}

}  // namespace

void trace_to(FILE *out)
{
    g_out.store(out);
    kestub::set_observer(observe);
}

void watch_served() { kestub::set_observer(observe); }

unsigned served_count(const std::string &name)
{
    std::lock_guard<std::mutex> lock(g_served_mutex);
    auto it = g_served.find(name);
    return it == g_served.end() ? 0 : it->second;
}

void trace_shell(const char *command, bool ran)
{
    FILE *out = g_out.load();
    if (out != nullptr) {
        std::fprintf(out, "[sh] %s: %s\n", ran ? "ran" : "not run", command);
        std::fflush(out);
    }
}

void trace_command(const std::string &line)
{
    FILE *out = g_out.load();
    if (out != nullptr) {
        std::fprintf(out, "[cmd] %s\n", line.c_str());
        std::fflush(out);
    }
}

}  // namespace omcishell
