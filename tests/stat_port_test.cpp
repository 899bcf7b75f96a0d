// Ethernet and bridge-port counters: the mapping from the service's 46
// counters, the bridge-port words and the failure path.
#include "call_cases.h"
#include "ke_omci_tapi/stat.h"

namespace {

using ketest::StatusRule;
using ketest::words;
using ketest::zeros;

class PortCounters : public ketest::StubTest {};

constexpr const char *kPortStat = "ke_ke_sml_port_stat_get_call";

// Service counter k carries a value that names k in both halves.
st_port_stat distinct_counters()
{
    st_port_stat s{};
    for (uint64_t k = 0; k < KE_PORT_STAT_COUNTERS; ++k)
        s.aull_counter[k] = ((k + 1) << 40) | (0xA000 + k);
    return s;
}

TEST_F(PortCounters, BothReadsSendThePortInTheFullRecord)
{
    static st_eth_stat eth;
    static st_brport_stat br;
    std::vector<uint8_t> request = ketest::cat({words({6}), zeros(372)});
    ketest::check_call_cases({
        {"ke_omci_tapi_stat_eth_get", kPortStat, [] { return ke_omci_tapi_stat_eth_get(6, &eth); },
         request, StatusRule::Plain},
        {"ke_omci_tapi_stat_brport_get", kPortStat,
         [] { return ke_omci_tapi_stat_brport_get(6, &br); }, request, StatusRule::Plain},
    });
}

TEST_F(PortCounters, EthernetCountersAreRearrangedFromTheServiceCounters)
{
    // Ethernet counters j by rows: [first j, last j] from first source k
    // onwards; -1 is a counter no service counter feeds.
    struct Row {
        int first_j, last_j, first_k;
    } rows[] = {
        {0, 13, 0}, {14, 14, 20}, {15, 19, 14}, {20, 20, 13}, {21, 21, 19},
        {22, 28, 21}, {29, 33, 30}, {34, 34, -1}, {35, 42, 35},
    };
    const st_port_stat reply = distinct_counters();
    kestub::ipc_script_reply(kPortStat, reply);
    st_eth_stat eth;
    std::memset(&eth, 0xCC, sizeof eth);
    ASSERT_EQ(ke_omci_tapi_stat_eth_get(2, &eth), 0u);

    int covered = 0;
    for (const auto &r : rows) {
        for (int j = r.first_j; j <= r.last_j; ++j, ++covered) {
            uint64_t expected = r.first_k < 0 ? 0 : reply.aull_counter[r.first_k + j - r.first_j];
            EXPECT_EQ(eth.aull_counter[j], expected) << "Ethernet counter " << j;
        }
    }
    EXPECT_EQ(covered, KE_ETH_STAT_COUNTERS);
    EXPECT_EQ(eth.aull_counter[20], eth.aull_counter[13]);
}

TEST_F(PortCounters, UndeliveredServiceCountersReachNoEthernetCounter)
{
    const st_port_stat reply = distinct_counters();
    kestub::ipc_script_reply(kPortStat, reply);
    st_eth_stat eth;
    ASSERT_EQ(ke_omci_tapi_stat_eth_get(2, &eth), 0u);
    for (int k : {28, 29, 43, 44, 45})
        for (int j = 0; j < KE_ETH_STAT_COUNTERS; ++j)
            EXPECT_NE(eth.aull_counter[j], reply.aull_counter[k]) << k << " in " << j;
}

TEST_F(PortCounters, BridgePortWordsAreLowHalvesOfTwoCounters)
{
    st_port_stat reply = distinct_counters();
    reply.aull_counter[32] = 0x0000000500000007ull;
    reply.aull_counter[16] = 0xFFFFFFFF80000001ull;
    kestub::ipc_script_reply(kPortStat, reply);
    st_brport_stat br = {{9, 9, 9, 9, 9}};
    EXPECT_EQ(ke_omci_tapi_stat_brport_get(1, &br), 0u);
    EXPECT_EQ(std::vector<uint32_t>(br.aui_counter, br.aui_counter + 5),
              (std::vector<uint32_t>{7, 0, 0, 0x80000001, 0}));
}

TEST_F(PortCounters, FailedReadLeavesEveryCounter)
{
    st_eth_stat eth;
    std::memset(&eth, 0xCC, sizeof eth);
    st_brport_stat br = {{9, 9, 9, 9, 9}};
    kestub::ipc_script(kPortStat, 3);
    EXPECT_EQ(ke_omci_tapi_stat_eth_get(1, &eth), 1u);
    kestub::ipc_script(kPortStat, 3);
    EXPECT_EQ(ke_omci_tapi_stat_brport_get(1, &br), 1u);
    for (uint64_t v : eth.aull_counter)
        EXPECT_EQ(v, 0xCCCCCCCCCCCCCCCCull);
    for (uint32_t v : br.aui_counter)
        EXPECT_EQ(v, 9u);
}

TEST_F(PortCounters, ClearAndBridgeReadDoNothing)
{
    EXPECT_EQ(ke_omci_tapi_stat_eth_clr(), 0u);
    EXPECT_EQ(ke_omci_tapi_stat_bridge_get(), 0u);
    EXPECT_TRUE(kestub::ipc_calls().empty());
}

}  // namespace
