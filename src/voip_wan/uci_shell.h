// Running uci through the shell: the command runner and the checks that
// keep caller text from meaning anything to the shell.
#ifndef KE_VOIP_WAN_UCI_SHELL_H
#define KE_VOIP_WAN_UCI_SHELL_H

namespace ke::voip_wan {

// Every command buffer is 256 bytes, zero-filled before use.
inline constexpr unsigned kCommandSize = 256;

// Formats a command into a fresh command buffer and runs it with system();
// its exit status is not examined.
void run_command(const char *fmt, ...) __attribute__((format(printf, 1, 2)));

// Text that may stand unquoted in a uci command: letters, digits, blanks
// and ". _ @ [ ] : -" (a uci reference, "config type", an address), nothing
// that the shell would expand, quote, redirect or run.
bool is_plain_text(const char *text);

}  // namespace ke::voip_wan

#endif
