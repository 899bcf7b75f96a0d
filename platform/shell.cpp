// The shell: system() as the library sees it.  Every command is recorded
// and handed to the test's handler; without one nothing runs, so that no
// test reaches the machine's own configuration or services by accident.
#include <spawn.h>
#include <sys/wait.h>

#include <cstdlib>

#include "kestub.h"
#include "state.h"

extern char **environ;

namespace kestub {
namespace {

struct ShellState {
    ShellHandler handler = nullptr;
    std::vector<std::string> commands;
};

ShellState &shell()
{
    static ShellState state;
    return state;
}

}  // namespace

void shell_reset() { shell() = ShellState{}; }

void shell_serve(ShellHandler handler) { shell().handler = handler; }

const std::vector<std::string> &shell_commands() { return shell().commands; }

int shell_run(const char *command)
{
    char sh[] = "sh";
    char dash_c[] = "-c";
    char *argv[] = {sh, dash_c, const_cast<char *>(command), nullptr};
    pid_t pid;
    if (posix_spawn(&pid, "/bin/sh", nullptr, nullptr, argv, environ) != 0)
        return -1;
    int status = 0;
    while (waitpid(pid, &status, 0) < 0)
        ;
    return status;
}

bool is_plain_uci_command(std::string command)
{
    const std::string redirect = " > /tmp/tmp_uci_value";
    if (command.size() > redirect.size() &&
        command.compare(command.size() - redirect.size(), redirect.size(), redirect) == 0)
        command.resize(command.size() - redirect.size());
    return command.rfind("uci ", 0) == 0 &&
           command.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                     "0123456789._@[]:=- ") == std::string::npos;
}

}  // namespace kestub

extern "C" int system(const char *command)
{
    if (command == nullptr)
        return 1;  // a shell is available
    kestub::shell().commands.emplace_back(command);
    kestub::ShellHandler handler = kestub::shell().handler;
    return handler != nullptr ? handler(command) : 0;
}
