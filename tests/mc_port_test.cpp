// Per-port IGMP settings: the port record of table 822 and its code
// mappings, the rate and group-number records, the cache that follows
// only successful writes, and the port bounds.
#include <functional>

#include "mc_fixture.h"

namespace {

using kestub::CmOp;
using ketest::record;
using Setter = std::function<uint32_t(uint32_t)>;

class McPort : public ketest::McTest {};

bool dump_has(uint32_t port, const std::string &line)
{
    uint32_t ret = 1;
    std::string out = ketest::dump_port(port, &ret);
    return ret == 0 && out.find(line) != std::string::npos;
}

std::string str(uint32_t v) { return std::to_string(v); }

TEST_F(McPort, IgmpAttributesWriteThePortRecordAndReadBackInCallerCodes)
{
    struct {
        uint32_t upmode, transparent, read_back;
        uint32_t sfu_mode, port_mode;  // table 834 as stored, table 822 as written
    } cases[] = {{0, 1, 0, 0, 1}, {1, 0, 1, 1, 2}, {2, 0, 3, 2, 1}, {3, 0, 3, 1, 2}};
    ASSERT_EQ(ke_omci_tapi_mc_usr_vlan_set(2, 300), 0u);
    ASSERT_EQ(ke_omci_tapi_mc_tagact_set(2, 3), 0u);
    for (const auto &c : cases) {
        SCOPED_TRACE(c.upmode);
        kestub::reset();
        ketest::preload_port_mode(2, c.sfu_mode);
        st_mc_igmp_attr in = {c.upmode, 100, 5, 0x1234};
        ASSERT_EQ(ke_omci_tapi_mc_igmp_attr_set(2, &in), 0u);
        EXPECT_EQ(ketest::cm_ops(), (ketest::Ops{{CmOp::Get, 834}, {CmOp::Set, 822}}));
        EXPECT_EQ(kestub::cm_calls()[0].record, record(52, {{8, 2}, {48, 16}}));
        EXPECT_EQ(ketest::cm_sets(822)[0],
                  record(116, {{8, 2}, {12, c.port_mode}, {16, c.transparent}, {20, 100}, {24, 5},
                               {32, 0x1234}, {36, 1}, {40, 300}, {112, 124}}));
        st_mc_igmp_attr out = {};
        EXPECT_EQ(ke_omci_tapi_mc_igmp_attr_get(2, &out), 0u);
        EXPECT_EQ(ketest::bytes_of(out), ketest::words({c.read_back, 100, 5, 0x1234}));
    }
}

TEST_F(McPort, TagActionCodesMapToTheCacheAndToTheTable)
{
    // In order, each from the action the previous one left; 2 and 5 keep it.
    struct {
        uint32_t code, cached, table;
    } cases[] = {{1, 1, 4}, {2, 1, 4}, {5, 1, 4}, {0, 0, 0}, {2, 0, 0}, {3, 2, 1},
                 {5, 2, 1}, {1, 1, 4}, {4, 2, 1}, {6, 2, 1}, {0, 0, 0}, {7, 2, 1}};
    for (const auto &c : cases) {
        kestub::reset();
        ketest::preload_port_mode(1, 0);
        ASSERT_EQ(ke_omci_tapi_mc_tagact_set(1, c.code), 0u);
        EXPECT_EQ(ketest::u32_at(ketest::cm_sets(822).at(0), 36), c.table) << c.code;
        EXPECT_TRUE(dump_has(1, "down tagact[" + str(c.cached) + "] usrvlan[0]\n")) << c.code;
    }
}

TEST_F(McPort, RateAndGroupNumberRecords)
{
    EXPECT_EQ(ke_omci_tapi_mc_uprate_set(3, 0x2000), 0u);
    EXPECT_EQ(ke_omci_tapi_mc_group_num_set(3, 64), 0u);
    EXPECT_EQ(ke_omci_tapi_mc_group_num_set_proc(9, 5), 0u) << "the procedure checks no port";
    EXPECT_EQ(ke_omci_tapi_mc_group_num_set_proc(3, 77), 0u) << "nor touches the cache";
    EXPECT_EQ(ketest::cm_sets(825),
              ketest::Records{record(24, {{8, 3}, {12, 0x2000}, {16, 6}, {20, 28}})});
    EXPECT_EQ(ketest::cm_sets(818), (ketest::Records{
                                        record(24, {{8, 3}, {12, 64}, {20, 12}}),
                                        record(24, {{8, 9}, {12, 5}, {20, 12}}),
                                        record(24, {{8, 3}, {12, 77}, {20, 12}})}));
    EXPECT_TRUE(dump_has(3, "uprate [8192]\ngroup num [64]\n"));

    kestub::reset();
    for (uint32_t port : {ketest::kMcPorts, 7u, 8u, 0xFFFFFFFFu})
        EXPECT_EQ(ke_omci_tapi_mc_group_num_set(port, 5), 0u) << port;
    EXPECT_TRUE(kestub::cm_calls().empty());
}


// Rejected codes, and ports the cache cannot hold: the value error is
// reported, nothing is written, the cached settings stay.
TEST_F(McPort, RejectedCodesAndPortsWriteNothing)
{
    static st_mc_table row;
    static uint32_t list[MC_VLAN_MAX + 1] = {10, 20};
    st_mc_igmp_attr before = {1, 7, 1, 9};
    ASSERT_EQ(ke_omci_tapi_mc_igmp_attr_set(0, &before), 0u);
    auto igmp = [](uint32_t p, uint32_t mode) {
        st_mc_igmp_attr a = {mode, 1, 1, 1};
        return ke_omci_tapi_mc_igmp_attr_set(p, &a);
    };
    auto vlan = [](uint32_t (*fn)(const st_mc_vlan *), uint32_t p) {
        st_mc_vlan v = {p, 10};
        return fn(&v);
    };
    auto refused = [](const char *func) { return ketest::info(func, 0x70000012); };
    const uint32_t kBeyond = MC_PORT_MAX;
    row.ui_port = kBeyond;
    struct {
        std::string lines;
        uint32_t result;
        std::function<uint32_t()> call;
    } cases[] = {
        {refused("ke_omci_tapi_mc_igmp_attr_set"), 1, [&] { return igmp(0, 4); }},
        {refused("ke_omci_tapi_mc_igmp_attr_set"), 1, [&] { return igmp(kBeyond, 0); }},
        {refused("ke_omci_tapi_mc_tagact_set"), 1, [] { return ke_omci_tapi_mc_tagact_set(0, 8); }},
        {refused("ke_omci_tapi_mc_tagact_set"), 1,
         [&] { return ke_omci_tapi_mc_tagact_set(kBeyond, 1); }},
        {refused("ke_omci_tapi_mc_uprate_set"), 1,
         [&] { return ke_omci_tapi_mc_uprate_set(kBeyond, 1); }},
        {refused("ke_omci_tapi_mc_vlan_set"), 1,
         [&] { return vlan(ke_omci_tapi_mc_vlan_set, kBeyond); }},
        {refused("ke_omci_tapi_mc_vlan_set"), 1, [] { return ke_omci_tapi_mc_vlan_set(nullptr); }},
        {refused("ke_omci_mc_vlan_set_proc"), 1,
         [] { return ke_omci_mc_vlan_set_proc(0, list, 9); }},
        {refused("ke_omci_tapi_mc_range_clr"), 1,
         [&] { return ke_omci_tapi_mc_range_clr(kBeyond); }},
        {refused("ke_omci_tapi_mc_vlan_set") + ketest::info("ke_omci_tapi_mc_table_set", 1), 1,
         [] { return ke_omci_tapi_mc_table_set(&row); }},
        {refused("ke_omci_tapi_mc_table_del"), 0, [] { return ke_omci_tapi_mc_table_del(&row); }},
        {refused("ke_omci_tapi_mc_table_set"), 1,
         [] { return ke_omci_tapi_mc_table_set(nullptr); }},
    };
    for (const auto &c : cases) {
        kestub::reset();
        kestub::log_set(true);
        uint32_t ret = 7;
        EXPECT_EQ(ketest::traced(ketest::printed([&] { ret = c.call(); })), c.lines);
        EXPECT_EQ(ret, c.result) << c.lines;
        EXPECT_TRUE(kestub::cm_calls().empty()) << c.lines;
    }
    st_mc_igmp_attr after = {};
    EXPECT_EQ(ke_omci_tapi_mc_igmp_attr_get(0, &after), 0u);
    EXPECT_EQ(ketest::bytes_of(after), ketest::bytes_of(before));
    EXPECT_TRUE(dump_has(0, "down tagact[0] usrvlan[0]\n"));
}

TEST_F(McPort, IgmpAttributesOfPortsBeyondTheBoardReadAsZero)
{
    st_mc_igmp_attr in = {1, 5, 5, 5};
    ASSERT_EQ(ke_omci_tapi_mc_igmp_attr_set(ketest::kMcPorts, &in), 0u);
    for (uint32_t port : {ketest::kMcPorts, 8u, 0xFFFFFFFFu}) {
        st_mc_igmp_attr out = {9, 9, 9, 9};
        EXPECT_EQ(ke_omci_tapi_mc_igmp_attr_get(port, &out), 0u) << port;
        EXPECT_EQ(ketest::bytes_of(out), ketest::words({0, 0, 0, 0})) << port;
    }
    EXPECT_EQ(ke_omci_tapi_mc_igmp_attr_get(0, nullptr), 0x70000000u);
}

}  // namespace
