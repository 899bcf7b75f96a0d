// The log gate.  People open it with the environment (KE_LOG=7 prints
// every line up to level 7); tests open and close it through kestub.
#include <cstdlib>

#include "kestub.h"
#include "platform.h"
#include "state.h"

namespace kestub {
namespace {

struct LogState {
    bool env_read = false;
    long max_level = -1;  // lines up to this level are printed; -1 none
    unsigned queries = 0;
};

LogState &log_state()
{
    static LogState state;
    return state;
}

}  // namespace

void log_reset() { log_state() = LogState{}; }

void log_set(bool open)
{
    log_state().env_read = true;
    log_state().max_level = open ? 0x7fffffff : -1;
}

unsigned log_queries() { return log_state().queries; }

}  // namespace kestub

extern "C" uint32_t ke_log_print_on(uint32_t module, uint32_t level)
{
    (void)module;
    kestub::LogState &st = kestub::log_state();
    ++st.queries;
    if (!st.env_read) {
        st.env_read = true;
        const char *env = std::getenv("KE_LOG");
        st.max_level = env != nullptr ? std::strtol(env, nullptr, 0) : -1;
    }
    return static_cast<long>(level) <= st.max_level ? 1 : 0;
}
