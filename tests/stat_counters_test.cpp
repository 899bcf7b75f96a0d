// PON, Ethernet and bridge-port counters: records and deliveries,
// byte-reversed GEM port counters, the wrapping GAL Ethernet sum and the
// mapping from the service's 46 port counters.
#include <algorithm>

#include "call_cases.h"
#include "ke_omci_tapi/stat.h"

namespace {

using namespace ketest;

class Counters : public StubTest {};

constexpr const char *kTc = "ke_ke_sml_xgpon_tc_get_call";
constexpr const char *kGemport = "ke_ke_sml_gpon_gemport_stat_get_call";
constexpr const char *kPortStat = "ke_ke_sml_port_stat_get_call";

uint32_t out[16];  // longer than every record: nothing may land past it
Bytes out_bytes() { return bytes_of(out); }
Bytes then_kept(const Bytes &b) { return cat({b, Bytes(sizeof out - b.size(), kUntouched)}); }

TEST_F(Counters, EachFunctionSendsItsRecordAndDelivers)
{
    static st_gemport_stat gem;
    static st_eth_stat eth;
    static st_brport_stat br;
    const Bytes port_request = cat({words({6}), zeros(372)});
    auto whole = [](auto fn) { return [fn] { return fn(*fresh(out)); }; };
    check_call_cases({
        {"ke_ke_sml_gpon_fec_stat_get_call", whole(ke_omci_tapi_stat_fec_get), zeros(20),
         counting(20), out_bytes, then_kept(counting(20))},
        {kTc, whole(ke_omci_tapi_stat_tc_get), zeros(32), counting(32), out_bytes,
         then_kept(counting(32))},
        {"ke_ke_sml_xgpon_downmng_get_call", whole(ke_omci_tapi_stat_downmng_get), zeros(56),
         counting(56), out_bytes, then_kept(counting(56))},
        {"ke_ke_sml_xgpon_upmng_get_call", whole(ke_omci_tapi_stat_upmng_get), zeros(24),
         counting(24), out_bytes, then_kept(counting(24))},
        // The GAL Ethernet count is the sum of words 6 and 7, wrapping.
        {kTc, whole(ke_omci_tapi_stat_galeth_get), zeros(32),
         words({1, 2, 3, 4, 5, 6, 0xFFFFFFFF, 2}), out_bytes, then_kept(words({1}))},
        // Their deliveries are the tests below.
        {kGemport, [] { return ke_omci_tapi_stat_gemport_get(0x0123, &gem); },
         cat({words({0x0123}), zeros(36)})},
        {kPortStat, [] { return ke_omci_tapi_stat_eth_get(6, &eth); }, port_request},
        {kPortStat, [] { return ke_omci_tapi_stat_brport_get(6, &br); }, port_request},
    });
}

Bytes bytes_at(const st_gemport_stat &s, size_t off, size_t n, bool reverse = false)
{
    Bytes all = bytes_of(s), v(all.begin() + off, all.begin() + off + n);
    if (reverse)
        std::reverse(v.begin(), v.end());
    return v;
}

// Offsets 4, 8 and 32 as they come, the 64-bit counters at 16 and 24 with
// their bytes reversed, offsets 0, 12 and 36 never written.
TEST_F(Counters, GemportCountersDeliverSixtyFourBitValuesByteReversed)
{
    st_gemport_stat reply, got;
    std::memcpy(&reply, counting(sizeof reply, 0x10).data(), sizeof reply);
    kestub::ipc_script_reply(kGemport, reply);
    EXPECT_EQ(ke_omci_tapi_stat_gemport_get(3, fresh(got)), 0u);
    const Bytes kept(4, kUntouched);
    EXPECT_EQ(bytes_of(got), cat({kept, bytes_at(reply, 4, 8), kept, bytes_at(reply, 16, 8, true),
                                  bytes_at(reply, 24, 8, true), bytes_at(reply, 32, 4), kept}));
}

// Service counter k carries a value that names k in both halves.
st_port_stat distinct_counters()
{
    st_port_stat s{};
    for (uint64_t k = 0; k < KE_PORT_STAT_COUNTERS; ++k)
        s.aull_counter[k] = ((k + 1) << 40) | (0xA000 + k);
    return s;
}

TEST_F(Counters, EthernetCountersAreRearrangedFromTheServiceCounters)
{
    // Rows of Ethernet counters [first_j, last_j] fed from first_k onwards;
    // -1: no service counter feeds it.
    struct Row { int first_j, last_j, first_k; } rows[] = {
        {0, 13, 0}, {14, 14, 20}, {15, 19, 14}, {20, 20, 13}, {21, 21, 19},
        {22, 28, 21}, {29, 33, 30}, {34, 34, -1}, {35, 42, 35},
    };
    const st_port_stat reply = distinct_counters();
    kestub::ipc_script_reply(kPortStat, reply);
    st_eth_stat eth;
    ASSERT_EQ(ke_omci_tapi_stat_eth_get(2, fresh(eth)), 0u);
    int covered = 0;
    for (const auto &r : rows)
        for (int j = r.first_j; j <= r.last_j; ++j, ++covered)
            EXPECT_EQ(eth.aull_counter[j],
                      r.first_k < 0 ? 0 : reply.aull_counter[r.first_k + j - r.first_j])
                << "Ethernet counter " << j;
    EXPECT_EQ(covered, KE_ETH_STAT_COUNTERS);
}

TEST_F(Counters, BridgePortWordsAreLowHalvesOfTwoCounters)
{
    st_port_stat reply = distinct_counters();
    reply.aull_counter[32] = 0x0000000500000007ull;
    reply.aull_counter[16] = 0xFFFFFFFF80000001ull;
    kestub::ipc_script_reply(kPortStat, reply);
    st_brport_stat br;
    EXPECT_EQ(ke_omci_tapi_stat_brport_get(1, fresh(br)), 0u);
    EXPECT_EQ(bytes_of(br), words({7, 0, 0, 0x80000001, 0}));
}

}  // namespace
