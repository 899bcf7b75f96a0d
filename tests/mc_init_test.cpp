// The multicast state in one process from load: the VLAN slots before
// the first initialisation; nothing served before the board's port count
// is known, a failed or empty board read retried, and every counted port
// cleared once.
#include "mc_fixture.h"

namespace {

using ketest::cm_sets;
using ketest::Records;
using ketest::vlan;
using ketest::vlan_list;
constexpr uint32_t kNone = MC_VLAN_NONE;

class McSlotsAtLoad : public ketest::StubTest {};

// First in this program, before the first initialisation empties them:
// every slot holds 0, so VLAN 0 sits in all eight.  A removal writes the
// list without every slot that held the VLAN, but empties in the port's
// slots only the last of them.
TEST_F(McSlotsAtLoad, RemovalEmptiesOnlyTheLastMatchingSlot)
{
    const uint32_t port = 1;
    EXPECT_EQ(vlan(ke_omci_tapi_mc_vlan_del, port, 0), 0u);
    EXPECT_EQ(vlan(ke_omci_tapi_mc_vlan_set, port, 5), 0u);
    EXPECT_EQ(vlan(ke_omci_tapi_mc_vlan_del, port, 0), 0u);
    const uint32_t x = kNone;
    EXPECT_EQ(cm_sets(824), (Records{
                                vlan_list(port, {x, x, x, x, x, x, x, x}),
                                vlan_list(port, {0, 0, 0, 0, 0, 0, 0, 5}),
                                vlan_list(port, {x, x, x, x, x, x, x, 5}),
                            }));

    kestub::reset();
    EXPECT_EQ(vlan(ke_omci_tapi_mc_vlan_set, port, 6), 0u);
    EXPECT_EQ(cm_sets(824), Records{vlan_list(port, {0, 0, 0, 0, 0, 0, 6, 5})});
}


class McInit : public ketest::StubTest {};

uint32_t dump_status(uint32_t port)
{
    uint32_t ret = 0;
    std::string out = ketest::dump_port(port, &ret);
    EXPECT_EQ(out.empty(), ret != 0) << port;
    return ret;
}

// Each attempt asks the system information, then the board, with zeroed buffers.
void expect_info_calls()
{
    ASSERT_EQ(ketest::call_names(), (std::vector<std::string>{"ke_ke_sysinfo_data_get_call",
                                                              "ke_ke_board_info_get_call"}));
    EXPECT_EQ(kestub::ipc_calls()[0].request, std::vector<uint8_t>(720, 0));
    EXPECT_EQ(kestub::ipc_calls()[1].request, std::vector<uint8_t>(956, 0));
}

// A board with more ports than the cache is bounds_test's.
TEST_F(McInit, PortCountComesFromTheBoardOnce)
{
    EXPECT_EQ(dump_status(0), 0x70000000u);
    EXPECT_EQ(ke_omci_tapi_mc_group_num_set(0, 5), 0u);
    EXPECT_TRUE(kestub::cm_calls().empty());

    kestub::ipc_script("ke_ke_board_info_get_call", 0x14);
    ke_omci_mc_data_init();
    expect_info_calls();
    kestub::reset();
    ketest::script_board(0);
    ke_omci_mc_data_init();
    expect_info_calls();
    EXPECT_TRUE(kestub::cm_calls().empty());
    EXPECT_EQ(dump_status(0), 0x70000000u);

    kestub::reset();
    ketest::preload_ports();
    ketest::script_board(3);
    kestub::log_set(true);
    EXPECT_EQ(ketest::printed([] { ke_omci_mc_data_init(); }), "") << "no port refused";
    kestub::log_set(false);
    expect_info_calls();
    ketest::Ops ops;
    for (uint32_t port = 0; port < 3; ++port) {
        ops.insert(ops.end(), {{kestub::CmOp::Set, 824}, {kestub::CmOp::Get, 817},
                               {kestub::CmOp::Set, 817}, {kestub::CmOp::Set, 817}});
        EXPECT_EQ(ketest::u32_at(kestub::cm_calls()[4 * port].record, 8), port);
    }
    EXPECT_EQ(ketest::cm_ops(), ops);
    EXPECT_EQ(dump_status(2), 0u);
    EXPECT_EQ(dump_status(3), 0x70000000u);

    kestub::reset();
    ke_omci_mc_data_init();
    EXPECT_TRUE(kestub::ipc_calls().empty()) << "initialised once";
}

}  // namespace
