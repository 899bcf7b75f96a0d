// uci: reads and changes configuration files of the OpenWrt format, for
// machines that do not have the device's own tool.  Changes are staged
// until "commit"; every read sees them before that.
//
// Without -c and -P the directories come from the environment, so that a
// test or a simulator points every uci run, including those made through
// the shell by the library, at its own directories.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "commands.h"

namespace {

const char kUsage[] =
    "Usage: uci [<options>] <command> [<arguments>]\n"
    "\n"
    "Commands:\n"
    "\tget      <config>.<section>[.<option>]\n"
    "\tset      <config>.<section>[.<option>]=<value>\n"
    "\tadd      <config> <section-type>\n"
    "\tadd_list <config>.<section>.<option>=<value>\n"
    "\tcommit   [<config>]\n"
    "\tshow     [<config>[.<section>[.<option>]]]\n"
    "\texport   [<config>]\n"
    "\n"
    "A section is named, or given as @<type>[<n>], the n-th section of that\n"
    "type (counted from the end when n is negative).\n"
    "\n"
    "Options:\n"
    "\t-c <dir>  configuration directory\n"
    "\t-P <dir>  directory of the changes staged until a commit\n"
    "\t-q        quiet: print no error messages\n"
    "\n"
    "Environment:\n"
    "\tUCI_CONFIG_DIR  configuration directory without -c (else /etc/config)\n"
    "\tUCI_SAVE_DIR    staging directory without -P (else /tmp/.uci)\n";

std::string from_env(const char *name, const char *fallback)
{
    const char *v = std::getenv(name);
    return v != nullptr && *v != '\0' ? v : fallback;
}

int usage()
{
    std::fputs(kUsage, stderr);
    return 1;
}

}  // namespace

int main(int argc, char **argv)
{
    if (argc == 2 && std::string(argv[1]) == "--help") {
        std::fputs(kUsage, stdout);
        return 0;
    }
    uci::Context ctx;
    ctx.store.config_dir = from_env("UCI_CONFIG_DIR", "/etc/config");
    ctx.store.save_dir = from_env("UCI_SAVE_DIR", "/tmp/.uci");
    opterr = 0;  // an unknown option gets the usage text, nothing else
    int opt;
    while ((opt = getopt(argc, argv, "+c:P:q")) != -1) {
        switch (opt) {
        case 'c':
            ctx.store.config_dir = optarg;
            break;
        case 'P':
            ctx.store.save_dir = optarg;
            break;
        case 'q':
            ctx.quiet = true;
            break;
        default:
            return usage();
        }
    }
    std::vector<std::string> args(argv + optind, argv + argc);
    int ret = uci::run_command(ctx, args);
    return ret < 0 ? usage() : ret;
}
