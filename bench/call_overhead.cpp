// Per-call overhead: representative exported functions against an
// in-process back end that answers at once, each next to its floor.
//
// The back end: the stand-in's IPC handing every call to one handler (no
// record of calls, no name lookup, no script), and its configuration
// manager answering through one handler instead of its tables.  The floor
// of a function (floors.h) is the work no implementation can skip:
// zero-fill the same record, copy its inputs in and its outputs out, and
// one call of the same transport per remote call.
#include <cstdio>

#include "floor_report.h"
#include "floors.h"
#include "ke_omci_tapi/device.h"
#include "kestub.h"

namespace {

// ---- The back end: handlers that answer at once ----------------------------

constexpr uint32_t kLearn = 1;
constexpr uint32_t kAge = 300;

uint32_t answer_learn(void *buf, uint32_t)
{
    static_cast<st_br_learn *>(buf)->ui_learn = kLearn;
    return 0;
}

uint32_t answer_word(void *buf, uint32_t)
{
    *static_cast<uint32_t *>(buf) = kAge;
    return 0;
}

// A full table: every entry is copied out.
uint32_t answer_table(void *buf, uint32_t)
{
    static_cast<st_br_table *>(buf)->ui_entry_num = BR_TABLE_MAX;
    return 0;
}

uint32_t answer_nothing(void *, uint32_t) { return 0; }

uint32_t store_nothing(kestub::CmOp, uint32_t, void *, uint32_t) { return 0; }

// The transport answers every call with handler, the library's and the
// floor's alike.
void serve(kestub::IpcHandler handler)
{
    kestub::reset();
    kestub::ipc_answer_all(handler);
}

void serve_cm(kestub::CmHandler handler)
{
    kestub::reset();
    kestub::cm_serve(handler);
}

// ---- The cases -------------------------------------------------------------

template <class Fn>
void loop(benchmark::State &state, Fn fn)
{
    for (auto _ : state) {
        uint32_t ret = fn();
        benchmark::DoNotOptimize(ret);
        benchmark::ClobberMemory();
    }
}

void get_library(benchmark::State &state)
{
    serve(answer_learn);
    uint32_t out = 0;
    loop(state, [&] { return ke_omci_tapi_br_learn_get(1, &out); });
}

void get_floor(benchmark::State &state)
{
    serve(answer_learn);
    uint32_t out = 0;
    loop(state, [&] { return floor_get(1, &out); });
}

void pass_library(benchmark::State &state)
{
    serve(answer_word);
    uint32_t word = 0;
    loop(state, [&] { return ke_omci_tapi_br_age_get(&word); });
}

void pass_floor(benchmark::State &state)
{
    serve(answer_word);
    uint32_t word = 0;
    loop(state, [&] { return floor_pass_through(&word); });
}

void rmw_library(benchmark::State &state)
{
    serve(answer_learn);
    loop(state, [&] { return ke_omci_tapi_br_learn_set(1, 0); });
}

void rmw_floor(benchmark::State &state)
{
    serve(answer_learn);
    loop(state, [&] { return floor_read_modify_write(1, 0); });
}

st_br_mac g_macs[BR_TABLE_MAX];

void table_library(benchmark::State &state)
{
    serve(answer_table);
    loop(state, [&] {
        uint32_t num = BR_TABLE_MAX;
        return ke_omci_tapi_br_table_get(1, &num, g_macs);
    });
}

void table_floor(benchmark::State &state)
{
    serve(answer_table);
    loop(state, [&] {
        uint32_t num = BR_TABLE_MAX;
        return floor_table(1, &num, g_macs);
    });
}

st_eth_stat g_eth;

void eth_library(benchmark::State &state)
{
    serve(answer_nothing);
    loop(state, [&] { return ke_omci_tapi_stat_eth_get(1, &g_eth); });
}

void eth_floor(benchmark::State &state)
{
    serve(answer_nothing);
    loop(state, [&] { return floor_eth_stat(1, &g_eth); });
}

uint8_t g_image[UPGRADE_SHARD_MAX];

void shard_library(benchmark::State &state)
{
    serve(answer_nothing);
    loop(state, [&] { return ke_omci_tapi_upgrade_write(g_image, sizeof g_image); });
}

void shard_floor(benchmark::State &state)
{
    serve(answer_nothing);
    loop(state, [&] { return floor_shard(0, g_image, sizeof g_image); });
}

const st_voip_regtime g_regtime = {1, 3600, 60};

void voip_library(benchmark::State &state)
{
    serve_cm(store_nothing);
    loop(state, [&] { return ke_omci_tapi_voip_regtime_set(&g_regtime); });
}

void voip_floor(benchmark::State &state)
{
    serve_cm(store_nothing);
    loop(state, [&] { return floor_voip_write(&g_regtime); });
}

struct Case {
    const char *name;
    const char *function;
    const char *what;
    void (*library)(benchmark::State &);
    void (*floor)(benchmark::State &);
};

const Case kCases[] = {
    {"plain_get", "ke_omci_tapi_br_learn_get", "plain get, 12-byte record", get_library, get_floor},
    {"pass_through", "ke_omci_tapi_br_age_get", "pass-through, caller's 4 bytes", pass_library,
     pass_floor},
    {"read_modify_write", "ke_omci_tapi_br_learn_set", "read-modify-write, 2 calls of 12 bytes",
     rmw_library, rmw_floor},
    {"mac_table", "ke_omci_tapi_br_table_get", "MAC table copy, 524 bytes, 32 entries",
     table_library, table_floor},
    {"eth_counters", "ke_omci_tapi_stat_eth_get", "Ethernet counters, 376 bytes", eth_library,
     eth_floor},
    {"firmware_shard", "ke_omci_tapi_upgrade_write", "firmware shard, 6152 bytes", shard_library,
     shard_floor},
    {"voip_line_profile", "ke_omci_tapi_voip_regtime_set",
     "VoIP line profile write, 4171 bytes (configuration manager)", voip_library, voip_floor},
};

constexpr double kTarget = 1.5;

}  // namespace

int main(int argc, char **argv)
{
    for (const Case &c : kCases) {
        benchmark::RegisterBenchmark(kebench::library_name(c.name).c_str(), c.library);
        benchmark::RegisterBenchmark(kebench::floor_name(c.name).c_str(), c.floor);
    }
    auto medians = kebench::run_all(argc, argv, 9);
    if (medians.empty())
        return 1;

    // CPU time: a call that never leaves the process, and the machine is
    // shared, so time spent descheduled is not the call's.
    int missed = 0;
    std::printf("| Function | Call | Library ns | Floor ns | Ratio | Target |\n"
                "|---|---|---:|---:|---:|---|\n");
    for (const Case &c : kCases) {
        auto lib = medians.find(kebench::library_name(c.name));
        auto flo = medians.find(kebench::floor_name(c.name));
        if (lib == medians.end() || flo == medians.end())
            continue;
        double lib_ns = lib->second.cpu * 1e9, floor_ns = flo->second.cpu * 1e9;
        double ratio = lib_ns / floor_ns;
        bool met = ratio <= kTarget;
        missed += met ? 0 : 1;
        std::printf("| `%s` | %s | %.1f | %.1f | %.2f | %s |\n", c.function, c.what, lib_ns,
                    floor_ns, ratio, met ? "met (<= 1.5)" : "MISSED (<= 1.5)");
    }
    std::printf("\n%d of %zu cases above the target.\n", missed, sizeof kCases / sizeof kCases[0]);
    return 0;
}
