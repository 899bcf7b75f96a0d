// omci-shell: the OMCI stack's process, stood in for.  It loads the
// library, serves the library's served calls to other processes, and runs
// commands from a script or typed at the prompt.
#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "cli.h"
#include "kestub.h"
#include "shell.h"

namespace {

constexpr char kUsage[] =
    "usage: omci-shell [options] [SCRIPT]\n"
    "       omci-shell [options] --call NAME [ARG...]\n"
    "Loads libke_omci_tapi, serves its served calls to other processes, and\n"
    "runs commands from SCRIPT (or --script), or from standard input: an\n"
    "exported function by name with its arguments, printing the status and\n"
    "the outputs decoded.  Type help at the prompt for the commands.\n"
    "\n"
    "  --run-dir DIR     run directory (default: $KE_RUN_DIR, else /tmp/ke_omci_run-<uid>)\n"
    "  --script FILE     read commands from FILE\n"
    "  --trace           print every remote call, served call, table operation and\n"
    "                    command as it happens\n"
    "  --cm-db PATH      keep the configuration tables in the database PATH\n"
    "                    (default: $KE_CM_DB, else <run dir>/cm.db)\n"
    "  --cm-memory       keep the configuration tables in this process only\n"
    "  --load LIB        load the shared library LIB too (its served calls are served)\n"
    "  --no-serve        serve nothing to other processes\n"
    "  --no-uci          run none of the library's shell commands (by default its uci\n"
    "                    commands run when UCI_CONFIG_DIR names a configuration\n"
    "                    directory; other commands, such as service reloads, are only\n"
    "                    traced)\n"
    "  --call NAME ...   make one served call of another process and exit: NAME is\n"
    "                    set_loid, set_loidpwd, mc_param_get or any remote name;\n"
    "                    then a value, field=value words, or (other names) hex bytes\n"
    "  --help            this text\n"
    "The download command draws its progress on standard error when that is a\n"
    "terminal.\n"
    "Exit status: 0 when every command ran and every expect held (with --call:\n"
    "when the call answered 0), 1 otherwise, 2 on a usage error.\n";

int usage_error(const std::string &why) { return ketool::usage_error("omci-shell", kUsage, why); }

// mkdir -p, quietly: a failure shows when the database cannot be opened.
void make_dirs(const std::string &path)
{
    for (size_t slash = path.find('/', 1);; slash = path.find('/', slash + 1)) {
        mkdir(path.substr(0, slash).c_str(), 0700);
        if (slash == std::string::npos)
            return;
    }
}

int run(omcishell::Shell &shell, std::istream &in, bool prompt)
{
    std::string line;
    for (;;) {
        if (prompt) {
            std::fputs("omci> ", stdout);
            std::fflush(stdout);
        }
        if (!std::getline(in, line) || !shell.run_line(line))
            break;
    }
    return shell.errors() == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char **argv)
{
    std::string script;
    std::string cm_db;
    bool cm_memory = false;
    bool trace = false;
    bool serve = true;
    bool run_uci = true;
    std::vector<std::string> call;
    for (int i = 1; i < argc; ++i) {
        std::string opt = argv[i];
        bool has_value = i + 1 < argc;
        if (opt == "--help") {
            std::fputs(kUsage, stdout);
            return 0;
        } else if (opt == "--trace") {
            trace = true;
        } else if (opt == "--no-serve") {
            serve = false;
        } else if (opt == "--no-uci") {
            run_uci = false;
        } else if (opt == "--cm-memory") {
            cm_memory = true;
        } else if (opt == "--run-dir" && has_value) {
            setenv("KE_RUN_DIR", argv[++i], 1);
        } else if (opt == "--script" && has_value) {
            script = argv[++i];
        } else if (opt == "--cm-db" && has_value) {
            cm_db = argv[++i];
        } else if (opt == "--load" && has_value) {
            if (dlopen(argv[++i], RTLD_NOW | RTLD_GLOBAL) == nullptr)
                return usage_error(std::string("cannot load ") + dlerror());
        } else if (opt == "--call" && has_value) {
            call.assign(argv + i + 1, argv + argc);
            break;
        } else if (opt.rfind("--", 0) != 0 && script.empty()) {
            script = opt;
        } else {
            return usage_error("unknown option or missing value: " + opt);
        }
    }
    if (trace)
        omcishell::trace_to(stdout);

    if (!call.empty()) {
        uint32_t status = 0;
        std::string why;
        if (!omcishell::remote_call(stdout, call, &status, &why))
            return usage_error(why);
        return status == 0 ? 0 : 1;
    }

    const char *env_db = std::getenv("KE_CM_DB");
    if (!cm_memory) {
        if (cm_db.empty())
            cm_db = env_db != nullptr && env_db[0] != '\0' ? env_db : kestub::run_dir() + "/cm.db";
        make_dirs(kestub::run_dir());
        if (!kestub::cm_use_db(cm_db.c_str()))
            return usage_error("cannot open the configuration database " + cm_db);
    } else {
        kestub::cm_use_db(nullptr);
    }

    const char *uci_dir = std::getenv("UCI_CONFIG_DIR");
    omcishell::serve_shell_commands(run_uci && uci_dir != nullptr && uci_dir[0] != '\0');

    if (serve && kestub::serve_start() < 0)
        return usage_error("cannot serve (another omci-shell running? try --no-serve)");

    omcishell::Shell shell(stdout);
    if (isatty(STDERR_FILENO) != 0)
        shell.set_progress(stderr);
    int rc;
    if (!script.empty()) {
        std::ifstream in(script);
        if (!in) {
            kestub::serve_stop();
            return usage_error("cannot read " + script);
        }
        rc = run(shell, in, false);
    } else {
        rc = run(shell, std::cin, isatty(STDIN_FILENO) != 0);
    }
    kestub::serve_stop();
    return rc;
}
