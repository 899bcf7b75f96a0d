// First use of the multicast state, in one process from load: nothing is
// served before the board's port count is known, a failed or empty board
// read is retried, and every counted port is cleared once.
#include "mc_fixture.h"

namespace {

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
