// GEM port mapping: the three requests and their traces, and the
// follow-up that moves a port's upstream IGMP GEM port on an SFU, which
// needs the system information.
#include "gem_map_fixture.h"
#include "mc_fixture.h"

namespace {

using ketest::call_names;
using ketest::map_request;

constexpr uint32_t kPort = 1, kIgmpVlan = 100, kIgmpPri = 5;

class GemMapSysinfo : public ketest::StubTest {};

// First in this program: the system information has never been read, and
// cannot be; the set reports the failure, last as its own, without a
// follow-up.
TEST_F(GemMapSysinfo, UnreadableSystemInformationFailsTheSetWithoutFollowUp)
{
    kestub::log_set(true);
    kestub::ipc_script("ke_ke_sml_gpon_map_set_call", 0);
    kestub::ipc_script("ke_ke_board_info_get_call", 0x72200004);
    st_gem_map_param map = {0x1, 0, 0, 0, 0x400, 3};
    uint32_t ret = 0;
    std::string out = ketest::printed([&] { ret = ke_omci_tapi_map_set(&map); });
    EXPECT_EQ(ret, 1u);
    EXPECT_EQ(ketest::call_names(), (std::vector<std::string>{"ke_ke_sml_gpon_map_set_call",
                                                              "ke_ke_board_info_get_call"}));
    EXPECT_TRUE(kestub::cm_calls().empty());
    std::string last = out.substr(out.rfind('\n', out.size() - 2) + 1);
    EXPECT_EQ(ketest::traced(last), ketest::info("ke_omci_tapi_map_set", 1)) << out;
}

class GemMap : public ketest::McTest {
protected:
    // Port kPort sends IGMP on VLAN 100 priority 5 through GEM port 0x10;
    // the system information is fetched (once per process).
    void SetUp() override
    {
        McTest::SetUp();
        ketest::script_sysinfo("SFU");
        st_sysinfo info;
        ASSERT_EQ(ke_omci_tapi_sysinfo_get(&info), 0u);
        st_mc_igmp_attr igmp = {3, kIgmpVlan, kIgmpPri, 0x10};
        ASSERT_EQ(ke_omci_tapi_mc_igmp_attr_set(kPort, &igmp), 0u);
        kestub::reset();
        ketest::preload_ports();
        kestub::ipc_script("ke_ke_sml_gpon_map_set_call", 0);
    }
    void TearDown() override { gst_sysinfo.ui_product_type = KE_PRODUCT_SFU; }

    static st_mc_igmp_attr igmp_of(uint32_t port)
    {
        st_mc_igmp_attr a = {};
        EXPECT_EQ(ke_omci_tapi_mc_igmp_attr_get(port, &a), 0u);
        return a;
    }
};

// On an HGU a set is one request, with its keys traced.
TEST_F(GemMap, SetSendsOneRequestAndTracesItsKeys)
{
    st_gem_map_param map = {0x1, kIgmpVlan, kIgmpPri, kPort, 0x400, 3};
    kestub::log_set(true);
    gst_sysinfo.ui_product_type = KE_PRODUCT_HGU;
    uint32_t ret = 7;
    EXPECT_EQ(ketest::traced(ketest::printed([&] { ret = ke_omci_tapi_map_set(&map); })),
              "[ke_omci_tapi_map_set(N)][INFO]:ui_mask=0x1 em_port=0x1\n"
              "[ke_omci_tapi_map_set(N)][INFO]:ui_tcont=0x3 ui_gemport=0x400\n");
    EXPECT_EQ(ret, 0u);
    EXPECT_EQ(call_names(), std::vector<std::string>{"ke_ke_sml_gpon_map_set_call"});
    EXPECT_EQ(kestub::ipc_calls()[0].request, map_request(map, true));
    EXPECT_TRUE(kestub::cm_calls().empty());
}

TEST_F(GemMap, FollowUpMovesTheIgmpGemPortOnlyOnAMatchingSfuMapping)
{
    struct { uint32_t product, mask, vlan, pri; bool moves; } cases[] = {
        {KE_PRODUCT_SFU, 0x1, kIgmpVlan, kIgmpPri, true},
        {KE_PRODUCT_SFU, 0xFF, kIgmpVlan, kIgmpPri, true},
        {KE_PRODUCT_SFU, 0xFE, kIgmpVlan, kIgmpPri, false},
        {KE_PRODUCT_SFU, 0x1, kIgmpVlan, kIgmpPri + 1, false},
        {KE_PRODUCT_SFU, 0x1, kIgmpVlan + 1, kIgmpPri, false},
        {KE_PRODUCT_HGU, 0x1, kIgmpVlan, kIgmpPri, false},
        {KE_PRODUCT_SBU, 0x1, kIgmpVlan, kIgmpPri, false},
    };
    uint32_t gemport = 0x200;
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message()
                     << c.product << " " << c.mask << " " << c.vlan << " " << c.pri);
        kestub::reset();
        ketest::preload_ports();
        kestub::ipc_script("ke_ke_sml_gpon_map_set_call", 0);
        gst_sysinfo.ui_product_type = c.product;
        uint32_t before = igmp_of(kPort).ui_upgemport;
        st_gem_map_param map = {c.mask, c.vlan, c.pri, kPort, ++gemport, 4};
        EXPECT_EQ(ke_omci_tapi_map_set(&map), 0u);
        EXPECT_EQ(call_names(), std::vector<std::string>{"ke_ke_sml_gpon_map_set_call"});
        st_mc_igmp_attr after = igmp_of(kPort);
        EXPECT_EQ(ketest::bytes_of(after),
                  ketest::words({3, kIgmpVlan, kIgmpPri, c.moves ? gemport : before}));
        EXPECT_EQ(ketest::cm_sets(822).size(), c.moves ? 1u : 0u);
        if (c.moves) {
            EXPECT_EQ(ketest::cm_sets(822).at(0),
                      ketest::cm_record(116, {{8, kPort}, {12, 1}, {20, kIgmpVlan}, {24, kIgmpPri},
                                           {32, gemport}, {112, 124}}));
        }
    }
}

// A failed rewrite (whose status the fault sweep checks) leaves the cache.
TEST_F(GemMap, FollowUpFailuresNeverFailTheMapping)
{
    kestub::cm_fail(822, 0x31);
    st_gem_map_param map = {0x1, kIgmpVlan, kIgmpPri, kPort, 0x333, 4};
    EXPECT_EQ(ke_omci_tapi_map_set(&map), 0u);
    EXPECT_EQ(igmp_of(kPort).ui_upgemport, 0x10u);

    // A port beyond the cache reads as zero, matches VLAN 0 priority 0,
    // and its rewrite is refused.
    kestub::reset();
    kestub::ipc_script("ke_ke_sml_gpon_map_set_call", 0);
    st_gem_map_param beyond = {0x1, 0, 0, MC_PORT_MAX, 0x333, 4};
    EXPECT_EQ(ke_omci_tapi_map_set(&beyond), 0u);
    EXPECT_TRUE(kestub::cm_calls().empty());
}

TEST_F(GemMap, GetAndDeleteSendTheirRequests)
{
    st_gem_map_param map = {0x5, 9, 1, 2, 0xAAAA, 0xBBBB};
    st_gem_map reply = {0x5, 9, 1, 2, 0xFFFFFFFF, 0x777, 6};
    kestub::ipc_script_reply("ke_ke_sml_gpon_map_get_call", reply);
    kestub::ipc_script("ke_ke_sml_gpon_map_del_call", 0);
    kestub::log_set(true);
    std::string out = ketest::printed([&] {
        EXPECT_EQ(ke_omci_tapi_map_get(&map), 0u);
        EXPECT_EQ(ke_omci_tapi_map_del(&map), 0u);
    });
    EXPECT_EQ(ketest::bytes_of(map), ketest::words({0x5, 9, 1, 2, 0x777, 6}));
    ASSERT_EQ(kestub::ipc_calls().size(), 2u);
    EXPECT_EQ(kestub::ipc_calls()[0].request, map_request({0x5, 9, 1, 2, 0, 0}, false));
    EXPECT_EQ(kestub::ipc_calls()[1].request, map_request(map, true));
    EXPECT_EQ(ketest::traced(out), "[ke_omci_tapi_map_del(N)][INFO]:em_port=0x2 ui_mask=0x5\n");
    EXPECT_TRUE(kestub::cm_calls().empty());

    kestub::reset();
    EXPECT_EQ(ke_omci_tapi_map_set(nullptr), 1u);
    EXPECT_EQ(ke_omci_tapi_map_get(nullptr), 1u);
    EXPECT_EQ(ke_omci_tapi_map_del(nullptr), 1u);
    EXPECT_TRUE(kestub::ipc_calls().empty());
}

}  // namespace
