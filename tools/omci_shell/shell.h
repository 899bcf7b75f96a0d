// The command interpreter: one line at a time, an exported function by
// name with typed arguments, a served call of another process, or a
// built-in command.  Results go to one stream, in the order they happen.
#ifndef KE_OMCI_SHELL_SHELL_H
#define KE_OMCI_SHELL_SHELL_H

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace omcishell {

class Shell {
public:
    explicit Shell(FILE *out) : out_(out) {}

    // Runs one line; false when it asks to quit.
    bool run_line(const std::string &line);

    // Commands that failed to run and expectations that did not hold.
    int errors() const { return errors_; }
    uint32_t last_status() const { return last_status_; }

private:
    void call_function(const std::vector<std::string> &words);
    void builtin_help(const std::vector<std::string> &words);
    void fail(const std::string &why);

    FILE *out_;
    int errors_ = 0;
    uint32_t last_status_ = 0;
};

// A served call of whichever process serves it: words[0] is the remote
// name or its short form (set_loid, set_loidpwd, mc_param_get), the rest
// its request (a known record's positional value or field=value words, or
// hex for any other name).  Prints the status and the reply; false with a
// reason when the request cannot be built.
bool remote_call(FILE *out, const std::vector<std::string> &words, uint32_t *status,
                 std::string *why);

// Prints every remote call, served call and table operation to out as it
// happens (nullptr: stop).
void trace_to(FILE *out);
// The trace line of a command.
void trace_command(const std::string &line);

}  // namespace omcishell

#endif
