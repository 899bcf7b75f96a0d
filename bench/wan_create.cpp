// VoIP WAN creation: the wall time of ke_omci_tapi_voip_wan_set creating a
// missing connection (the uci stand-in run by the shell, once per command,
// on a sandboxed copy of the bench's OpenWrt configuration), against the
// floor: as many system() calls of `true`; and against a second floor, as
// many of /bin/true, a program of its own started by each shell as uci is.
//
// Nothing touches the machine's /etc/config: uci is the stand-in, first on
// PATH, with UCI_CONFIG_DIR and UCI_SAVE_DIR in the run directory.  The
// library's scratch file is a private one as well (its fopen and unlink,
// and the commands' redirections, go to a file in the run directory), so
// that other processes using the shared one cannot disturb the run.
#include <arpa/inet.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "bench_env.h"
#include "floor_report.h"
#include "ke_omci_tapi/voip_wan.h"
#include "kestub.h"
#include "private_scratch.h"

namespace {

namespace fs = std::filesystem;

constexpr double kTarget = 2.0;

kebench::RunDir *g_run;
unsigned g_run_commands;    // shell commands that ran in the last creation
unsigned g_floor_commands;  // as many as the first creation ran

std::string config_dir() { return *g_run / "config"; }
std::string save_dir() { return *g_run / "uci-staged"; }

// The library's uci commands run, with their output redirected to the
// private scratch file; anything else (the delayed reload of the
// services) is only recorded, as in the tests.
int run_uci(const char *command)
{
    if (!kestub::is_plain_uci_command(command))
        return 0;
    std::string text = command;
    const std::string shared = ketest::kSharedScratchFile;
    size_t at = text.find(shared);
    if (at != std::string::npos)
        text.replace(at, shared.size(), ketest::private_scratch_file());
    ++g_run_commands;
    return kestub::shell_run(text.c_str());
}

int run_floor(const char *command) { return kestub::shell_run(command); }

// The configuration the main job starts from, fresh, nothing staged.
bool fresh_config()
{
    std::error_code err;
    fs::remove_all(config_dir(), err);
    fs::remove_all(save_dir(), err);
    fs::create_directory(config_dir(), err);
    fs::create_directory(save_dir(), err);
    fs::copy(KE_OPENWRT_DIR, config_dir(), err);
    return !err;
}

// The scenario's voice connection: static, VLAN 200, priority 5.
st_voip_wan_attr voice_connection()
{
    st_voip_wan_attr a{};
    a.us_ip_options_set = 1;
    a.ui_vlan_id = 200;
    a.ui_vlan_id_set = 1;
    a.uc_priority = 5;
    a.us_priority_set = 1;
    a.ui_ipaddr = inet_addr("10.20.0.10");
    a.ui_ipaddr_set = 1;
    a.ui_netmask = inet_addr("255.255.255.0");
    a.ui_netmask_set = 1;
    a.ui_gateway = inet_addr("10.20.0.1");
    a.ui_gateway_set = 1;
    std::snprintf(a.ac_dns, sizeof a.ac_dns, "10.20.0.2");
    a.ui_dns_set = 1;
    return a;
}

void library_create(benchmark::State &state)
{
    const st_voip_wan_attr attr = voice_connection();
    for (auto _ : state) {
        state.PauseTiming();
        bool ready = fresh_config();
        kestub::reset();
        kestub::shell_serve(run_uci);
        g_run_commands = 0;
        state.ResumeTiming();
        if (!ready || ke_omci_tapi_voip_wan_set(&attr) != 0) {
            state.SkipWithError("the creation failed");
            return;
        }
    }
    std::string network = ketest::read_file(config_dir() + "/network");
    if (network.find("config interface 'pon_1'") == std::string::npos)
        state.SkipWithError("no interface pon_1 in the configuration");
}

// The floor: as many shells running command.  `true` is the shell's own;
// /bin/true is a second program image per command, as uci is.
void floor_create(benchmark::State &state, const char *command)
{
    for (auto _ : state) {
        state.PauseTiming();
        kestub::reset();
        kestub::shell_serve(run_floor);
        state.ResumeTiming();
        for (unsigned i = 0; i < g_floor_commands; ++i)
            std::system(command);
    }
}

}  // namespace

int main(int argc, char **argv)
{
    kebench::RunDir run("ke_bench_wan");
    g_run = &run;
    std::string path = std::getenv("PATH") != nullptr ? std::getenv("PATH") : "/usr/bin:/bin";
    setenv("PATH", (fs::path(KE_UCI_PATH).parent_path().string() + ":" + path).c_str(), 1);
    setenv("UCI_CONFIG_DIR", config_dir().c_str(), 1);
    setenv("UCI_SAVE_DIR", save_dir().c_str(), 1);
    if (!ketest::use_private_scratch("libke_omci_tapi", run / "tmp_uci_value")) {
        std::fprintf(stderr, "wan_create: cannot give the library a private scratch file\n");
        return 1;
    }

    // One creation first: the number of commands the floor runs.
    if (!fresh_config()) {
        std::fprintf(stderr, "wan_create: cannot copy %s\n", KE_OPENWRT_DIR);
        return 1;
    }
    kestub::reset();
    kestub::shell_serve(run_uci);
    g_run_commands = 0;
    const st_voip_wan_attr attr = voice_connection();
    ke_omci_tapi_voip_wan_set(&attr);
    g_floor_commands = g_run_commands;
    size_t issued = kestub::shell_commands().size();

    const char *name = "voip_wan_creation";
    kebench::once(
        benchmark::RegisterBenchmark(kebench::library_name(name).c_str(), library_create));
    kebench::once(
        benchmark::RegisterBenchmark(kebench::floor_name(name).c_str(), floor_create, "true"));
    std::string exec_floor = kebench::floor_name(name) + "_exec";
    kebench::once(benchmark::RegisterBenchmark(exec_floor.c_str(), floor_create, "/bin/true"));
    auto medians = kebench::run_all(argc, argv, 7);
    auto lib = medians.find(kebench::library_name(name));
    auto flo = medians.find(kebench::floor_name(name));
    auto exec = medians.find(exec_floor);
    if (lib == medians.end() || flo == medians.end() || exec == medians.end())
        return 1;

    double lib_ms = lib->second.real * 1e3, floor_ms = flo->second.real * 1e3;
    double exec_ms = exec->second.real * 1e3;
    double ratio = lib_ms / floor_ms;
    std::printf("One creation issues %zu shell commands; %u run uci (the delayed reload of "
                "the services is only recorded), so each floor runs %u commands.\n\n",
                issued, g_floor_commands, g_floor_commands);
    std::printf("| Case | ms | Library against it | Target |\n"
                "|---|---:|---:|---|\n"
                "| `ke_omci_tapi_voip_wan_set` creating `pon_1` | %.1f | | |\n"
                "| floor: `system(\"true\")` | %.1f | %.2f | %s |\n"
                "| floor with a program per command: `system(\"/bin/true\")` | %.1f | %.2f | |\n",
                lib_ms, floor_ms, ratio, ratio <= kTarget ? "met (<= 2)" : "MISSED (<= 2)", exec_ms,
                lib_ms / exec_ms);
    return 0;
}
