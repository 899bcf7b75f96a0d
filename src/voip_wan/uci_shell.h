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

// A dotted IPv4 address: four decimal numbers of 1 to 3 digits, each at
// most 255, and nothing else.
bool is_dotted_ipv4(const char *text);

}  // namespace ke::voip_wan

#endif
