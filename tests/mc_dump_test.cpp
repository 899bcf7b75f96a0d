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
        kestub::reset();
        ketest::preload_port_mode(2, 1);
    }
};

const std::string kHead = "port id [2]\nigmp ver [3]\nigmp mode [1]\nigmp quickleave [1]\n";
const std::string kTail =
    "uprate [1000]\ngroup num [16]\nigmp upmode [2] uppri [6] upvlan [100]\n"
    "down tagact[1] usrvlan[55]\n";

TEST_F(McDump, PortPrintsItsLinesAndOneLinePerVlan)
{
    uint32_t ret = 1;
    EXPECT_EQ(ketest::dump_port(2, &ret), kHead + "port sfu mode [1]\n" + kTail);
    EXPECT_EQ(ret, 0u);
    EXPECT_EQ(ketest::cm_ops(), (ketest::Ops{{kestub::CmOp::Get, 834}})) << "a dump only reads";

    for (uint32_t v : {300u, 400u, 500u}) {
        st_mc_vlan vlan = {2, v};
        ASSERT_EQ(ke_omci_tapi_mc_vlan_set(&vlan), 0u);
    }
    st_mc_vlan gone = {2, 400};
    ASSERT_EQ(ke_omci_tapi_mc_vlan_del(&gone), 0u);
    st_mc_table row = {};
    row.ui_port = 2;
    row.ui_vlan = 300;
    ketest::preload(ketest::ranges(2), 817);
    ASSERT_EQ(ke_omci_tapi_mc_table_set(&row), 0u);
    row.auc_ip_end[0] = 1;
    ASSERT_EQ(ke_omci_tapi_mc_table_set(&row), 0u);
    EXPECT_EQ(ketest::dump_port(2, &ret), kHead + "port sfu mode [1]\n" + kTail +
                                              "vlan [300] area cnt[2]\nvlan [500] area cnt[0]\n");
}

TEST_F(McDump, RefusalsPrintNothing)
{
    struct {
        uint32_t port;
        uint32_t len;
        uint32_t ret;
    } cases[] = {
        {ketest::kMcPorts, 4, 0x70000000},
        {MC_PORT_MAX, 4, 0x70000000},
        {0xFFFFFFFF, 4, 0x70000000},
        {0, 8, 0x72200008},
        {0, 3, 0x72200008},
        {0, 0, 0x72200008},
    };
    for (const auto &c : cases) {
        uint32_t req[2] = {c.port, 0};
        uint32_t ret = 0;
        EXPECT_EQ(ketest::printed([&] { ret = ke_ke_omci_mc_param_get_call(req, c.len); }), "");
        EXPECT_EQ(ret, c.ret) << c.port << " " << c.len;
    }
    EXPECT_EQ(ke_ke_omci_mc_param_get_call(nullptr, 4), 0x72200008u);
    EXPECT_TRUE(kestub::cm_calls().empty());
}

TEST_F(McDump, ClientReachesTheServedEntryByName)
{
    kestub::ipc_serve("ke_ke_omci_mc_param_get_call", ke_ke_omci_mc_param_get_call);
    uint32_t port = 2;
    uint32_t ret = 1;
    EXPECT_EQ(ketest::printed([&] { ret = ke_omci_mc_param_get(&port); }),
              kHead + "port sfu mode [1]\n" + kTail);
    EXPECT_EQ(ret, 0u);
    ASSERT_EQ(ketest::call_names(), std::vector<std::string>{"ke_ke_omci_mc_param_get_call"});
    EXPECT_EQ(kestub::ipc_calls()[0].request, ketest::words({2}));
    port = ketest::kMcPorts;
    EXPECT_EQ(ke_omci_mc_param_get(&port), 0x70000000u);
}

}  // namespace
