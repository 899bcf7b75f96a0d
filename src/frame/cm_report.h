// How a configuration-table writer reports a failed operation, in the
// styles other than the INFO line (cm::report_info in cm_table.h).  Each
// family keeps to one style; its own texts are the formats passed here.
#ifndef KE_FRAME_CM_REPORT_H
#define KE_FRAME_CM_REPORT_H

#include <cstdint>
#include <cstdio>
#include <type_traits>

#include "trace.h"

namespace ke::cm {

// Status of a port-mode writer whose operation failed (error-word style);
// also what the VLAN membership writers answer to a bad argument.
inline constexpr uint32_t kRefused = 0x70000000;

// Every traced value is a 32-bit word, so %u and %d read what was passed.
template <class... Values>
inline constexpr bool kWordValues = ((std::is_integral_v<Values> && sizeof(Values) == 4) && ...);

// Ungated failure line.  When ret is nonzero, prints
//   printf(format, func, line, values..., (int)ret)
// without asking the log gate: the format starts with "%s[%d]" and ends
// with "ret=%d".  The writer's caller sees 0 whatever ret was.
template <class... Values>
inline uint32_t report_ungated(Site site, uint32_t ret, const char *format, Values... values)
{
    static_assert(kWordValues<Values...>, "trace values are 32-bit words");
    if (ret != 0)
        std::printf(format, site.func, site.line, values..., static_cast<int>(ret));
    return 0;
}

// Gated bracket line: with the log gate open, prints
//   printf(format, func, line, func, line, values...)
// for a format that starts "[%s(%d)]%s[%d]".  A failure code, where the
// text shows one, is among the values.
template <class... Values>
inline void bracket_line(Site site, const char *format, Values... values)
{
    static_assert(kWordValues<Values...>, "trace values are 32-bit words");
    if (log_gate_open())
        std::printf(format, site.func, site.line, site.func, site.line, values...);
}

// Gated bracket report of an operation's result: the line only when ret
// is nonzero; the writer's caller sees 0 whatever ret was.
template <class... Values>
inline uint32_t report_bracket(Site site, uint32_t ret, const char *format, Values... values)
{
    if (ret != 0)
        bracket_line(site, format, values...);
    return 0;
}

// Error word.  When ret is nonzero, puts "<op> <table name> error" (op is
// the writer's own word, "set", "Add", "Del" ...), always, and answers
// kRefused; 0 otherwise.
uint32_t report_error_word(uint32_t ret, const char *op, uint32_t table);

}  // namespace ke::cm

#endif
