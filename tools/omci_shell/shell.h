// The command interpreter: one line at a time, an exported function by
// name with typed arguments, a served call of another process, or a
// built-in command.  Results go to one stream, in the order they happen.
#ifndef KE_OMCI_SHELL_SHELL_H
#define KE_OMCI_SHELL_SHELL_H

#include <cstdint>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "functions.h"

namespace omcishell {

class Shell {
public:
    explicit Shell(FILE *out);

    // Runs one line; false when it asks to quit.
    bool run_line(const std::string &line);

    // Commands that failed to run and expectations that did not hold.
    int errors() const { return errors_; }
    uint32_t last_status() const { return last_status_; }

    // Where the download command draws its progress (nullptr: nowhere).
    void set_progress(FILE *progress) { progress_ = progress; }

private:
    void call_function(const std::vector<std::string> &words);
    void builtin_help(const std::vector<std::string> &words);
    void expect(const std::vector<std::string> &words);
    void await(const std::vector<std::string> &words);
    void download(const std::vector<std::string> &words);
    void table(const std::vector<std::string> &words, bool set);
    // Prints the outputs of a call and keeps them for expect.
    void show_outputs(const std::vector<Param> &params, Args &args);
    void keep_lines(const std::string &prefix, const std::vector<std::string> &lines,
                    const char *indent);
    void fail(const std::string &why);

    FILE *out_;
    FILE *progress_ = nullptr;
    int errors_ = 0;
    uint32_t last_status_ = 0;
    // The outputs of the last command that had any, by name ("allocid",
    // "sn_loid.auc_loid"), as shown.
    std::map<std::string, std::string> outputs_;
    // Served calls awaited so far, by name.
    std::map<std::string, unsigned> awaited_;
};

// A served call of whichever process serves it: words[0] is the remote
// name or its short form (set_loid, set_loidpwd, mc_param_get), the rest
// its request (a known record's positional value or field=value words, or
// hex for any other name).  Prints the status and the reply; false with a
// reason when the request cannot be built.
bool remote_call(FILE *out, const std::vector<std::string> &words, uint32_t *status,
                 std::string *why);

// Prints every remote call, served call, table operation and shell
// command to out as it happens (nullptr: stop).
void trace_to(FILE *out);
// The trace line of a command.
void trace_command(const std::string &line);
// The trace line of a command the library gave the shell.
void trace_shell(const char *command, bool ran);

// Counts the calls this process serves, from now on.
void watch_served();
unsigned served_count(const std::string &name);

// The library's shell commands: with run_uci, plain uci commands run
// (uci finds its directories in the environment); every other command,
// the delayed service reloads among them, is only traced.
void serve_shell_commands(bool run_uci);

}  // namespace omcishell

#endif
