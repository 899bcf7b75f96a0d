// The commands the library hands to the shell.  The plain uci commands of
// the VoIP WAN functions run, so that the interface they create is really
// written (uci takes its directories from UCI_CONFIG_DIR and UCI_SAVE_DIR);
// anything else, the delayed reload of the device's services first of all,
// has no business on this machine and is only traced.
#include "kestub.h"
#include "shell.h"

namespace omcishell {
namespace {

int run_uci(const char *command)
{
    bool plain = kestub::is_plain_uci_command(command);
    trace_shell(command, plain);
    return plain ? kestub::shell_run(command) : 0;
}

int trace_only(const char *command)
{
    trace_shell(command, false);
    return 0;
}

}  // namespace

void serve_shell_commands(bool run) { kestub::shell_serve(run ? run_uci : trace_only); }

}  // namespace omcishell
