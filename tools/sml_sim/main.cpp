// sml-sim: the device's sml service, simulated in a process of its own.
#include <signal.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

#include "cli.h"
#include "kestub.h"
#include "sim.h"
#include "text.h"

namespace {

constexpr char kUsage[] =
    "usage: sml-sim [options]\n"
    "Serves the sml service's remote procedures to other processes over the\n"
    "run directory's sockets, with the state a real service keeps, and logs\n"
    "every call it serves: name, length, status and a short decode.\n"
    "\n"
    "  --run-dir DIR     run directory (default: $KE_RUN_DIR, else /tmp/ke_omci_run-<uid>)\n"
    "  --profile FILE    device profile to apply over the embedded default\n"
    "  --print-profile   print the profile (default and --profile applied) and exit\n"
    "  --list            print every procedure with its record length and exit\n"
    "  --log FILE        append the call log to FILE instead of standard output\n"
    "  --delay-ms N      wait N ms before every reply (a slow service)\n"
    "  --stall NAME      never answer procedure NAME: print \"sml-sim: stalling in NAME\"\n"
    "                    on standard error and hang until killed (SIGKILL), so a\n"
    "                    test can kill the service in the middle of that call\n"
    "  --help            this text\n"
    "Stops on SIGINT or SIGTERM and removes its sockets.  The flash (image\n"
    "sections section0.bin and section1.bin, and boot_flag) is kept in the run\n"
    "directory's flash/ and outlives the simulator.\n";

int usage_error(const std::string &why) { return ketool::usage_error("sml-sim", kUsage, why); }

bool read_file(const std::string &path, std::string *text)
{
    std::ifstream in(path);
    if (!in)
        return false;
    std::stringstream ss;
    ss << in.rdbuf();
    *text = ss.str();
    return true;
}

bool is_procedure(const std::string &name)
{
    for (const smlsim::Procedure *p : smlsim::all_procedures())
        if (name == p->name)
            return true;
    return false;
}

}  // namespace

int main(int argc, char **argv)
{
    smlsim::Profile profile = smlsim::default_profile();
    std::string log_path;
    uint32_t delay_ms = 0;
    std::string stall;
    bool print_profile = false;
    bool list = false;
    for (int i = 1; i < argc; ++i) {
        std::string opt = argv[i];
        bool has_value = i + 1 < argc;
        if (opt == "--help") {
            std::fputs(kUsage, stdout);
            return 0;
        } else if (opt == "--print-profile") {
            print_profile = true;
        } else if (opt == "--list") {
            list = true;
        } else if (opt == "--run-dir" && has_value) {
            setenv("KE_RUN_DIR", argv[++i], 1);
        } else if (opt == "--log" && has_value) {
            log_path = argv[++i];
        } else if (opt == "--delay-ms" && has_value) {
            if (!ketool::parse_u32(argv[++i], &delay_ms))
                return usage_error(std::string("not a number: ") + argv[i]);
        } else if (opt == "--stall" && has_value) {
            stall = argv[++i];
            if (!is_procedure(stall))
                return usage_error("no such procedure: " + stall);
        } else if (opt == "--profile" && has_value) {
            std::string text, why;
            if (!read_file(argv[++i], &text))
                return usage_error(std::string("cannot read ") + argv[i]);
            if (!smlsim::apply_profile(text, &profile, &why))
                return usage_error(std::string(argv[i]) + ": " + why);
        } else {
            return usage_error("unknown option or missing value: " + opt);
        }
    }
    if (print_profile) {
        std::fputs(smlsim::profile_text(profile).c_str(), stdout);
        return 0;
    }
    if (list) {
        for (const smlsim::Procedure *p : smlsim::all_procedures())
            std::printf("%-44s %u\n", p->name, static_cast<unsigned>(p->len));
        return 0;
    }

    FILE *log = stdout;
    if (!log_path.empty() && (log = std::fopen(log_path.c_str(), "a")) == nullptr)
        return usage_error("cannot open " + log_path);

    // The serving thread inherits a mask that leaves the stop signals to
    // sigwait below.
    sigset_t stop;
    sigemptyset(&stop);
    sigaddset(&stop, SIGINT);
    sigaddset(&stop, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stop, nullptr);

    smlsim::Sim sim(profile);
    sim.set_log(log);
    sim.set_delay_ms(delay_ms);
    sim.set_stall(stall);
    sim.attach();
    int served = kestub::serve_start();
    if (served < 0)
        return 1;
    std::fprintf(stderr, "sml-sim: serving %d procedures in %s\n", served,
                 kestub::run_dir().c_str());
    int sig = 0;
    sigwait(&stop, &sig);
    kestub::serve_stop();
    std::fprintf(stderr, "sml-sim: stopped by signal %d\n", sig);
    if (log != stdout)
        std::fclose(log);
    return 0;
}
