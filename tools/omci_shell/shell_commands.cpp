// The commands the library hands to the shell.  The plain uci commands of
// the VoIP WAN functions run, so that the interface they create is really
// written (uci takes its directories from UCI_CONFIG_DIR and UCI_SAVE_DIR);
// anything else, the delayed reload of the device's services first of all,
// has no business on this machine and is only traced.
#include <string>

#include "kestub.h"
#include "shell.h"

namespace omcishell {
namespace {

// Where the library's uci commands put their output.
constexpr char kRedirect[] = " > /tmp/tmp_uci_value";

// "uci ..." made only of the characters the library's own commands hold,
// optionally redirected into the scratch file: nothing the shell would act
// on besides running uci.
bool is_plain_uci(std::string command)
{
    const std::string redirect = kRedirect;
    if (command.size() > redirect.size() &&
        command.compare(command.size() - redirect.size(), redirect.size(), redirect) == 0)
        command.resize(command.size() - redirect.size());
    return command.rfind("uci ", 0) == 0 &&
           command.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                     "0123456789._@[]:=- ") == std::string::npos;
}

int run_uci(const char *command)
{
    bool plain = command != nullptr && is_plain_uci(command);
    trace_shell(command != nullptr ? command : "(null)", plain);
    return plain ? kestub::shell_run(command) : 0;
}

int trace_only(const char *command)
{
    trace_shell(command != nullptr ? command : "(null)", false);
    return 0;
}

}  // namespace

void serve_shell_commands(bool run) { kestub::shell_serve(run ? run_uci : trace_only); }

}  // namespace omcishell
