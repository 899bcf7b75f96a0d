// GEM port mapping: the three requests, their traces and statuses, and
// the follow-up that moves a port's upstream IGMP GEM port on an SFU.
#include "gem_map_fixture.h"
#include "mc_fixture.h"

namespace {

using ketest::call_names;
using ketest::cm_sets;
using ketest::map_request;
using ketest::parse_info_line;

constexpr uint32_t kPort = 1;
constexpr uint32_t kIgmpVlan = 100;
constexpr uint32_t kIgmpPri = 5;

class GemMap : public ketest::McTest {
protected:
    // Port kPort sends IGMP on VLAN 100 priority 5 through GEM port 0x10;
    // the system information is fetched, the unit is an SFU.
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
        gst_sysinfo.ui_product_type = KE_PRODUCT_SFU;
    }
    void TearDown() override
    {
        gst_sysinfo.ui_product_type = KE_PRODUCT_SFU;
        McTest::TearDown();
    }

    static st_mc_igmp_attr igmp_of(uint32_t port)
    {
        st_mc_igmp_attr a = {};
        EXPECT_EQ(ke_omci_tapi_mc_igmp_attr_get(port, &a), 0u);
        return a;
    }
};

// Splits printed text into lines, each with its line feed.
std::vector<std::string> lines_of(const std::string &text)
{
    std::vector<std::string> out;
    size_t pos = 0;
    while (pos < text.size()) {
        size_t end = text.find('\n', pos);
        end = end == std::string::npos ? text.size() : end + 1;
        out.push_back(text.substr(pos, end - pos));
        pos = end;
    }
    return out;
}

// "[func(N)][INFO]:" + rest, for any N > 0.
bool is_key_line(const std::string &line, const std::string &func, const std::string &rest)
{
    std::string head = "[" + func + "(";
    if (line.rfind(head, 0) != 0)
        return false;
    int n = std::atoi(line.c_str() + head.size());
    return n > 0 && line == head + std::to_string(n) + ")][INFO]:" + rest;
}

TEST_F(GemMap, SetSendsOneRequestAndTracesItsKeys)
{
    st_gem_map_param map = {0x1, 7, 2, kPort, 0x400, 3};
    gst_sysinfo.ui_product_type = KE_PRODUCT_HGU;
    for (bool gate : {true, false}) {
        kestub::reset();
        kestub::log_set(gate);
        kestub::ipc_script("ke_ke_sml_gpon_map_set_call", 0);
        uint32_t ret = 1;
        std::string out = ketest::printed([&] { ret = ke_omci_tapi_map_set(&map); });
        EXPECT_EQ(ret, 0u);
        ASSERT_EQ(call_names(), std::vector<std::string>{"ke_ke_sml_gpon_map_set_call"});
        EXPECT_EQ(kestub::ipc_calls()[0].len, 28u);
        EXPECT_EQ(kestub::ipc_calls()[0].request, map_request(map, true));
        EXPECT_TRUE(kestub::cm_calls().empty()) << "no IGMP read on an HGU";
        if (!gate) {
            EXPECT_EQ(out, "");
            continue;
        }
        auto lines = lines_of(out);
        ASSERT_EQ(lines.size(), 2u) << out;
        EXPECT_TRUE(is_key_line(lines[0], "ke_omci_tapi_map_set", "ui_mask=0x1 em_port=0x1\n"))
            << out;
        EXPECT_TRUE(
            is_key_line(lines[1], "ke_omci_tapi_map_set", "ui_tcont=0x3 ui_gemport=0x400\n"))
            << out;
    }
}

TEST_F(GemMap, RefusedSetIsTracedAndHasNoFollowUp)
{
    kestub::log_set(true);
    kestub::ipc_script("ke_ke_sml_gpon_map_set_call", 0x72200008);
    st_gem_map_param map = {0x1, kIgmpVlan, kIgmpPri, kPort, 0x400, 3};
    uint32_t ret = 0;
    std::string out = ketest::printed([&] { ret = ke_omci_tapi_map_set(&map); });
    EXPECT_EQ(ret, 1u);
    auto lines = lines_of(out);
    ASSERT_EQ(lines.size(), 3u) << out;
    std::string func;
    int line = 0;
    EXPECT_TRUE(parse_info_line(lines[2], &func, &line, 0x72200008)) << out;
    EXPECT_EQ(func, "ke_omci_tapi_map_set");
    EXPECT_TRUE(kestub::cm_calls().empty());
    EXPECT_EQ(igmp_of(kPort).ui_upgemport, 0x10u);
}

TEST_F(GemMap, FollowUpMovesTheIgmpGemPortOnlyOnAMatchingSfuMapping)
{
    struct {
        const char *label;
        uint32_t product, mask, vlan, pri;
        bool moves;
    } cases[] = {
        {"sfu, bit 0, matching", KE_PRODUCT_SFU, 0x1, kIgmpVlan, kIgmpPri, true},
        {"sfu, more bits, matching", KE_PRODUCT_SFU, 0xFF, kIgmpVlan, kIgmpPri, true},
        {"sfu, bit 0 clear", KE_PRODUCT_SFU, 0xFE, kIgmpVlan, kIgmpPri, false},
        {"sfu, other priority", KE_PRODUCT_SFU, 0x1, kIgmpVlan, kIgmpPri + 1, false},
        {"sfu, other vlan", KE_PRODUCT_SFU, 0x1, kIgmpVlan + 1, kIgmpPri, false},
        {"hgu", KE_PRODUCT_HGU, 0x1, kIgmpVlan, kIgmpPri, false},
        {"sbu", KE_PRODUCT_SBU, 0x1, kIgmpVlan, kIgmpPri, false},
        {"other", KE_PRODUCT_OTHER, 0x1, kIgmpVlan, kIgmpPri, false},
    };
    uint32_t gemport = 0x200;
    for (const auto &c : cases) {
        SCOPED_TRACE(c.label);
        kestub::reset();
        ketest::preload_ports();
        gst_sysinfo.ui_product_type = c.product;
        st_mc_igmp_attr before = igmp_of(kPort);
        st_gem_map_param map = {c.mask, c.vlan, c.pri, kPort, ++gemport, 4};
        kestub::ipc_script("ke_ke_sml_gpon_map_set_call", 0);
        EXPECT_EQ(ke_omci_tapi_map_set(&map), 0u);
        EXPECT_EQ(call_names(), std::vector<std::string>{"ke_ke_sml_gpon_map_set_call"});

        st_mc_igmp_attr after = igmp_of(kPort);
        EXPECT_EQ(after.ui_upmode, 3u);
        EXPECT_EQ(after.ui_upvlan, kIgmpVlan);
        EXPECT_EQ(after.ui_uppri, kIgmpPri);
        if (c.moves) {
            EXPECT_EQ(after.ui_upgemport, gemport);
            ASSERT_EQ(cm_sets(822).size(), 1u);
            EXPECT_EQ(cm_sets(822)[0], ketest::record(116, {{8, kPort},
                                                            {12, 1},
                                                            {20, kIgmpVlan},
                                                            {24, kIgmpPri},
                                                            {32, gemport},
                                                            {112, 124}}));
        } else {
            EXPECT_EQ(after.ui_upgemport, before.ui_upgemport);
            EXPECT_TRUE(cm_sets(822).empty());
        }
    }
}

TEST_F(GemMap, FollowUpFailuresNeverFailTheMapping)
{
    // The port write fails: the mapping stands, the IGMP GEM port stays.
    kestub::cm_fail(822, 0x31);
    kestub::ipc_script("ke_ke_sml_gpon_map_set_call", 0);
    st_gem_map_param map = {0x1, kIgmpVlan, kIgmpPri, kPort, 0x333, 4};
    EXPECT_EQ(ke_omci_tapi_map_set(&map), 0u);
    EXPECT_EQ(igmp_of(kPort).ui_upgemport, 0x10u);

    // A port the cache cannot hold reads as zero, matches VLAN 0 priority
    // 0, and its rewrite is refused without touching anything.
    kestub::reset();
    kestub::ipc_script("ke_ke_sml_gpon_map_set_call", 0);
    st_gem_map_param beyond = {0x1, 0, 0, MC_PORT_MAX, 0x333, 4};
    EXPECT_EQ(ke_omci_tapi_map_set(&beyond), 0u);
    EXPECT_TRUE(kestub::cm_calls().empty());
}

TEST_F(GemMap, GetSendsTheKeyAndFillsTheTargetOnlyOnSuccess)
{
    st_gem_map_param map = {0x5, 9, 1, 2, 0xAAAA, 0xBBBB};
    st_gem_map reply = {0x5, 9, 1, 2, 0xFFFFFFFF, 0x777, 6};
    kestub::ipc_script_reply("ke_ke_sml_gpon_map_get_call", reply);
    EXPECT_EQ(ke_omci_tapi_map_get(&map), 0u);
    ASSERT_EQ(kestub::ipc_calls().size(), 1u);
    EXPECT_EQ(kestub::ipc_calls()[0].request, map_request({0x5, 9, 1, 2, 0, 0}, false));
    EXPECT_EQ(map.ui_gemport, 0x777u);
    EXPECT_EQ(map.ui_tcont, 6u);
    EXPECT_EQ(map.ui_mask, 0x5u);

    kestub::log_set(true);
    kestub::ipc_script("ke_ke_sml_gpon_map_get_call", 0x72200008);
    uint32_t ret = 0;
    std::string out = ketest::printed([&] { ret = ke_omci_tapi_map_get(&map); });
    EXPECT_EQ(ret, 0x72200008u);
    EXPECT_EQ(out, "");
    EXPECT_EQ(map.ui_gemport, 0x777u);
    EXPECT_EQ(map.ui_tcont, 6u);
}

TEST_F(GemMap, DeleteSendsTheWholeMappingTracesAndPassesTheStatus)
{
    st_gem_map_param map = {0x1, kIgmpVlan, kIgmpPri, kPort, 0x400, 3};
    for (uint32_t status : {0u, 0x72200008u}) {
        kestub::reset();
        kestub::log_set(true);
        kestub::ipc_script("ke_ke_sml_gpon_map_del_call", status);
        uint32_t ret = 1;
        std::string out = ketest::printed([&] { ret = ke_omci_tapi_map_del(&map); });
        EXPECT_EQ(ret, status);
        ASSERT_EQ(call_names(), std::vector<std::string>{"ke_ke_sml_gpon_map_del_call"});
        EXPECT_EQ(kestub::ipc_calls()[0].request, map_request(map, true));
        auto lines = lines_of(out);
        ASSERT_EQ(lines.size(), 1u) << out;
        EXPECT_TRUE(is_key_line(lines[0], "ke_omci_tapi_map_del", "em_port=0x1 ui_mask=0x1\n"))
            << out;
        EXPECT_TRUE(kestub::cm_calls().empty());
    }
    EXPECT_EQ(igmp_of(kPort).ui_upgemport, 0x10u);
}

TEST_F(GemMap, NullRecordsMakeNoCall)
{
    EXPECT_EQ(ke_omci_tapi_map_set(nullptr), 1u);
    EXPECT_EQ(ke_omci_tapi_map_get(nullptr), 1u);
    EXPECT_EQ(ke_omci_tapi_map_del(nullptr), 1u);
    EXPECT_TRUE(kestub::ipc_calls().empty());
}

}  // namespace
