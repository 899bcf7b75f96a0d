// The multicast parameter dump: its exact lines, its refusals, and the
// served call end to end.
#include "mc_fixture.h"

namespace {

class McDump : public ketest::McTest {
protected:
    // Port 2 with every dumped field set to a value of its own.
    void SetUp() override
    {
        McTest::SetUp();
        st_mc_attr attr = {17, 1, 1};
        st_mc_igmp_attr igmp = {2, 100, 6, 0x88};
        ASSERT_EQ(ke_omci_tapi_mc_attr_set(&attr), 0u);
        ASSERT_EQ(ke_omci_tapi_mc_igmp_attr_set(2, &igmp), 0u);
        ASSERT_EQ(ke_omci_tapi_mc_tagact_set(2, 1), 0u);
        ASSERT_EQ(ke_omci_tapi_mc_usr_vlan_set(2, 55), 0u);
        ASSERT_EQ(ke_omci_tapi_mc_uprate_set(2, 1000), 0u);
        ASSERT_EQ(ke_omci_tapi_mc_group_num_set(2, 16), 0u);
        ketest::preload_port_mode(2, 1);
    }
};

const char kPortTwo[] =
    "port id [2]\n"
    "igmp ver [3]\n"
    "igmp mode [1]\n"
    "igmp quickleave [1]\n"
    "port sfu mode [1]\n"
    "uprate [1000]\n"
    "group num [16]\n"
    "igmp upmode [2] uppri [6] upvlan [100]\n"
    "down tagact[1] usrvlan[55]\n";

TEST_F(McDump, PortWithoutVlansPrintsNineLines)
{
    kestub::reset();
    ketest::preload_port_mode(2, 1);
    uint32_t ret = 1;
    EXPECT_EQ(ketest::dump_port(2, &ret), kPortTwo);
    EXPECT_EQ(ret, 0u);
    ASSERT_EQ(kestub::cm_calls().size(), 1u) << "the dump only reads the port mode";
    EXPECT_EQ(kestub::cm_calls()[0].table, 834u);
}

TEST_F(McDump, VlanLinesFollowInSlotOrderWithTheirCounts)
{
    for (uint32_t v : {300u, 400u, 500u}) {
        st_mc_vlan vlan = {2, v};
        ASSERT_EQ(ke_omci_tapi_mc_vlan_set(&vlan), 0u);
    }
    st_mc_vlan gone = {2, 400};
    ASSERT_EQ(ke_omci_tapi_mc_vlan_del(&gone), 0u);
    st_mc_table row;
    std::memset(&row, 0, sizeof row);
    row.ui_port = 2;
    row.ui_vlan = 300;
    ASSERT_EQ(ke_omci_tapi_mc_table_set(&row), 0u);
    row.auc_ip_start[0] = 1;
    ASSERT_EQ(ke_omci_tapi_mc_table_set(&row), 0u);

    uint32_t ret = 1;
    EXPECT_EQ(ketest::dump_port(2, &ret),
              std::string(kPortTwo) + "vlan [300] area cnt[2]\nvlan [500] area cnt[0]\n");
    EXPECT_EQ(ret, 0u);
}

TEST_F(McDump, UnreadablePortModeReadsAsZeroAfterItsOwnLine)
{
    kestub::reset();
    uint32_t ret = 1;
    std::string out = ketest::dump_port(2, &ret);
    EXPECT_EQ(ret, 0u);
    std::string head = "port id [2]\nigmp ver [3]\nigmp mode [1]\nigmp quickleave [1]\n";
    std::string tail =
        "port sfu mode [0]\nuprate [1000]\ngroup num [16]\n"
        "igmp upmode [2] uppri [6] upvlan [100]\ndown tagact[1] usrvlan[55]\n";
    ASSERT_GT(out.size(), head.size() + tail.size());
    EXPECT_EQ(out.substr(0, head.size()), head);
    EXPECT_EQ(out.substr(out.size() - tail.size()), tail);
    std::string between = out.substr(head.size(), out.size() - head.size() - tail.size());
    EXPECT_EQ(between.rfind("ke_omci_tapi_check_port_mode_is_sfu[", 0), 0u) << between;
}

TEST_F(McDump, RefusalsPrintNothing)
{
    kestub::reset();
    struct {
        const char *label;
        uint32_t port;
        void *buf;
        uint32_t len;
        uint32_t ret;
    } cases[] = {
        {"port at the count", ketest::kMcPorts, nullptr, 4, 0x70000000},
        {"port at the cache size", MC_PORT_MAX, nullptr, 4, 0x70000000},
        {"largest port", 0xFFFFFFFF, nullptr, 4, 0x70000000},
        {"eight bytes", 0, nullptr, 8, 0x72200008},
        {"three bytes", 0, nullptr, 3, 0x72200008},
        {"no bytes", 0, nullptr, 0, 0x72200008},
    };
    for (const auto &c : cases) {
        uint32_t req[2] = {c.port, 0};
        uint32_t ret = 0;
        std::string out = ketest::printed([&] { ret = ke_ke_omci_mc_param_get_call(req, c.len); });
        EXPECT_EQ(ret, c.ret) << c.label;
        EXPECT_EQ(out, "") << c.label;
    }
    uint32_t ret = 0;
    std::string out = ketest::printed([&] { ret = ke_ke_omci_mc_param_get_call(nullptr, 4); });
    EXPECT_EQ(ret, 0x72200008u);
    EXPECT_EQ(out, "");
    EXPECT_TRUE(kestub::cm_calls().empty());
}

TEST_F(McDump, ClientReachesTheServedEntryByName)
{
    kestub::reset();
    ketest::preload_port_mode(2, 1);
    kestub::ipc_serve("ke_ke_omci_mc_param_get_call", ke_ke_omci_mc_param_get_call);
    uint32_t port = 2;
    uint32_t ret = 1;
    std::string out = ketest::printed([&] { ret = ke_omci_mc_param_get(&port); });
    EXPECT_EQ(ret, 0u);
    EXPECT_EQ(out, kPortTwo);
    ASSERT_EQ(kestub::ipc_calls().size(), 1u);
    EXPECT_EQ(kestub::ipc_calls()[0].name, "ke_ke_omci_mc_param_get_call");
    EXPECT_EQ(kestub::ipc_calls()[0].request, ketest::words({2}));

    port = ketest::kMcPorts;
    EXPECT_EQ(ke_omci_mc_param_get(&port), 0x70000000u);
}

}  // namespace
