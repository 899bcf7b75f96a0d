// A provisioning burst: 1,000 mixed provisioning calls through the bench
// as the main job sets it up (the library in this process, its remote
// calls over the stand-in's sockets to sml-sim, the configuration tables
// in an SQLite database), timed as a whole: calls per second.
//
// The mix, 200 rounds of five: a T-CONT, a GEM port, a GEM port mapping
// (on this SFU it also reads the port's IGMP attributes), a VLAN
// membership and a multicast VLAN added or removed, cycling over the
// line's T-CONTs, GEM ports, user ports and VLANs so that every call is
// one a real OLT could send again and again.
#include <cstdio>
#include <cstdlib>

#include "bench_env.h"
#include "floor_report.h"
#include "ke_omci_tapi/device.h"
#include "ke_omci_tapi/mc.h"
#include "ke_omci_tapi/pon.h"
#include "ke_omci_tapi/vlan.h"
#include "kestub.h"

namespace {

constexpr int kRounds = 200;
constexpr int kKinds = 5;
constexpr int kCalls = kRounds * kKinds;
constexpr uint32_t kUserPorts = 4;

const char *const kKindNames[kKinds] = {
    "`ke_omci_tapi_tcont_set` (remote call)",
    "`ke_omci_tapi_gemport_set` (remote call)",
    "`ke_omci_tapi_map_set` (remote call, IGMP attributes read)",
    "`ke_omci_tapi_vlan_set` (configuration table 808)",
    "`ke_omci_tapi_mc_vlan_set` / `_del` (configuration table 824)",
};

double g_kind_seconds[kKinds];
unsigned g_kind_calls[kKinds];
unsigned g_failed;

uint32_t call(int kind, int r)
{
    uint32_t tcont = static_cast<uint32_t>(r % 8);
    uint32_t gemport = 0x100 + static_cast<uint32_t>(r % 64);
    uint32_t port = static_cast<uint32_t>(r) % kUserPorts;
    switch (kind) {
    case 0:
        return ke_omci_tapi_tcont_set(tcont, 0x400 + tcont);
    case 1: {
        uint8_t attr[28] = {static_cast<uint8_t>(r)};
        return ke_omci_tapi_gemport_set(gemport, attr);
    }
    case 2: {
        st_gem_map_param map{1, 100 + static_cast<uint32_t>(r % 16), 0, port, gemport, tcont};
        return ke_omci_tapi_map_set(&map);
    }
    case 3:
        return ke_omci_tapi_vlan_set(port, 100 + static_cast<uint32_t>(r % 16));
    default: {
        // Four rounds add a multicast VLAN to each port, the next four
        // take it away again.
        st_mc_vlan vlan{port, 4000 + static_cast<uint32_t>(r / 8 % 8)};
        return r / 4 % 2 == 0 ? ke_omci_tapi_mc_vlan_set(&vlan) : ke_omci_tapi_mc_vlan_del(&vlan);
    }
    }
}

void burst(benchmark::State &state)
{
    for (auto _ : state) {
        for (int r = 0; r < kRounds; ++r) {
            for (int kind = 0; kind < kKinds; ++kind) {
                auto start = kebench::Clock::now();
                if (call(kind, r) != 0)
                    ++g_failed;
                g_kind_seconds[kind] += kebench::seconds_since(start);
                ++g_kind_calls[kind];
            }
        }
    }
    if (g_failed != 0)
        state.SkipWithError("a provisioning call failed");
}

}  // namespace

int main(int argc, char **argv)
{
    kebench::RunDir run("ke_bench_burst");
    setenv("KE_CM_DB", (run / "cm.db").c_str(), 1);
    ketest::Process sim;
    if (!kebench::start_sim(sim, run)) {
        std::fprintf(stderr, "burst: the simulator did not start\n");
        return 1;
    }
    kestub::ipc_record(false);
    // The line as the scenario leaves it before provisioning: system
    // information read, multicast set up (its first use clears every
    // port's tables).
    st_sysinfo info;
    ke_omci_tapi_sysinfo_get(&info);
    ke_omci_mc_data_init();

    const char *name = "provisioning_burst_1000";
    kebench::once(benchmark::RegisterBenchmark(kebench::library_name(name).c_str(), burst));
    auto medians = kebench::run_all(argc, argv, 5);
    auto lib = medians.find(kebench::library_name(name));
    if (lib == medians.end())
        return 1;

    std::printf("| Case | Calls | Median wall time ms | Calls per second |\n"
                "|---|---:|---:|---:|\n"
                "| mixed provisioning burst | %d | %.1f | %.0f |\n\n",
                kCalls, lib->second.real * 1e3, kCalls / lib->second.real);
    std::printf("| Call (over every repetition) | Mean ms per call |\n|---|---:|\n");
    for (int kind = 0; kind < kKinds; ++kind)
        std::printf("| %s | %.3f |\n", kKindNames[kind],
                    g_kind_seconds[kind] * 1e3 / g_kind_calls[kind]);
    return 0;
}
