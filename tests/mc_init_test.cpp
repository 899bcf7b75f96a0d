// First use of the multicast state, in one process from load: nothing is
// served before the board's port count is known, a failed or empty board
// read is retried, a board with more ports than the cache is limited to
// the cache, and every counted port is cleared exactly once.
#include "mc_fixture.h"

namespace {

using kestub::CmOp;
using ketest::record;

class McInit : public ketest::StubTest {};

std::vector<uint8_t> board_reply(uint32_t ports)
{
    std::vector<uint8_t> board(956, 0xA5);
    std::memcpy(board.data() + 4, &ports, 4);
    return board;
}

uint32_t dump_status(uint32_t port)
{
    uint32_t ret = 0;
    std::string out = ketest::dump_port(port, &ret);
    if (ret != 0) {
        EXPECT_EQ(out, "");
    }
    return ret;
}

void expect_info_calls()
{
    const auto &calls = kestub::ipc_calls();
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(calls[0].name, "ke_ke_sysinfo_data_get_call");
    EXPECT_EQ(calls[0].request, std::vector<uint8_t>(720, 0));
    EXPECT_EQ(calls[1].name, "ke_ke_board_info_get_call");
    EXPECT_EQ(calls[1].request, std::vector<uint8_t>(956, 0));
}

TEST_F(McInit, PortCountComesFromTheBoardOnceAndIsLimitedToTheCache)
{
    // Before any initialisation every port is beyond the count.
    EXPECT_EQ(dump_status(0), 0x70000000u);
    EXPECT_EQ(ke_omci_tapi_mc_group_num_set(0, 5), 0u);
    EXPECT_TRUE(kestub::cm_calls().empty());

    // The board call fails (the system-information call failing does not
    // matter): no count, no clearing.
    kestub::ipc_script("ke_ke_sysinfo_data_get_call", 0x13);
    kestub::ipc_script("ke_ke_board_info_get_call", 0x14);
    ke_omci_mc_data_init();
    expect_info_calls();
    EXPECT_TRUE(kestub::cm_calls().empty());
    EXPECT_EQ(dump_status(0), 0x70000000u);

    // A board without user ports: asked again next time.
    kestub::reset();
    auto none = board_reply(0);
    kestub::ipc_script("ke_ke_sysinfo_data_get_call", 0x13);
    kestub::ipc_script("ke_ke_board_info_get_call", 0, none.data(), none.size());
    ke_omci_mc_data_init();
    expect_info_calls();
    EXPECT_TRUE(kestub::cm_calls().empty());

    // Twelve ports on the board; the cache serves eight, each cleared.
    kestub::reset();
    ketest::preload_ports();
    auto twelve = board_reply(12);
    kestub::ipc_script("ke_ke_board_info_get_call", 0, twelve.data(), twelve.size());
    kestub::log_set(true);
    EXPECT_EQ(ketest::printed([] { ke_omci_mc_data_init(); }), "") << "no port refused";
    kestub::log_set(false);
    expect_info_calls();
    std::vector<std::pair<CmOp, uint32_t>> per_port = {
        {CmOp::Set, 824}, {CmOp::Get, 817}, {CmOp::Set, 817}, {CmOp::Set, 817}};
    std::vector<std::pair<CmOp, uint32_t>> ops;
    for (uint32_t port = 0; port < MC_PORT_MAX; ++port)
        ops.insert(ops.end(), per_port.begin(), per_port.end());
    EXPECT_EQ(ketest::cm_ops(), ops);
    for (uint32_t port = 0; port < MC_PORT_MAX; ++port) {
        EXPECT_EQ(kestub::cm_calls()[4 * port].record, [&] {
            auto rec = record(48, {{8, port}, {44, 12}});
            for (uint32_t i = 0; i < MC_VLAN_MAX; ++i)
                ketest::put_u32(rec, 12 + 4 * i, MC_VLAN_NONE);
            return rec;
        }()) << port;
        EXPECT_EQ(ketest::cm_entry(817, port), record(1744, {{8, port}, {1740, 12}})) << port;
    }

    EXPECT_EQ(dump_status(MC_PORT_MAX - 1), 0u);
    EXPECT_EQ(dump_status(MC_PORT_MAX), 0x70000000u);
    EXPECT_EQ(dump_status(11), 0x70000000u);

    // Initialised: no further call, not even through the IGMP reader.
    kestub::reset();
    ke_omci_mc_data_init();
    st_mc_igmp_attr igmp = {9, 9, 9, 9};
    EXPECT_EQ(ke_omci_tapi_mc_igmp_attr_get(7, &igmp), 0u);
    EXPECT_EQ(ketest::bytes_of(igmp), ketest::words({0, 0, 0, 0}));
    EXPECT_TRUE(kestub::ipc_calls().empty());
    EXPECT_TRUE(kestub::cm_calls().empty());
}

}  // namespace
