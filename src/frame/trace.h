// Tracing: the log gate, the failed-call line and the bounded-copy line.
#ifndef KE_FRAME_TRACE_H
#define KE_FRAME_TRACE_H

#include <cstdint>

namespace ke {

// The library's log module and the level of every gated line.
inline constexpr uint32_t kLogModule = 0x5102100;
inline constexpr uint32_t kLogLevel = 7;

// Where a failure is reported from: the reporting function's log name and
// the source line of the failing check.  KE_SITE names the enclosing
// function, so each exported function (or _proc procedure) reports itself.
struct Site {
    const char *func;
    int line;
};
#define KE_SITE (::ke::Site{__func__, __LINE__})
// The site of a procedure whose log name is not its function name.
#define KE_SITE_AS(name) (::ke::Site{name, __LINE__})

// Asks the log gate; never cached, since the answer may change at any time.
bool log_gate_open();

// "[func(line)][INFO]:ui_ret =0x..., ui_line =line", only with the gate open.
void trace_failed_call(Site site, uint32_t ret);

// "func, line:<op> return[err] failed", always printed.
void trace_copy_failed(Site site, const char *op, int err);

}  // namespace ke

#endif
