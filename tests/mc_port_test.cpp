// Per-port IGMP settings: the port record of table 822, the code mappings,
// the cache that follows only successful writes, and the port bounds.
#include <functional>

#include "mc_fixture.h"

namespace {

using kestub::CmOp;
using ketest::cm_ops;
using ketest::cm_sets;
using ketest::parse_info_line;
using ketest::record;

class McPort : public ketest::McTest {};

using Ops = std::vector<std::pair<CmOp, uint32_t>>;

// The table 822 record the port procedure must send.
std::vector<uint8_t> port_record(uint32_t port, uint32_t port_mode, uint32_t transparent,
                                 uint32_t upvlan, uint32_t uppri, uint32_t upgemport, uint32_t down,
                                 uint32_t usrvlan)
{
    return record(116, {{8, port},
                        {12, port_mode},
                        {16, transparent},
                        {20, upvlan},
                        {24, uppri},
                        {32, upgemport},
                        {36, down},
                        {40, usrvlan},
                        {112, 124}});
}

std::string dump_of(uint32_t port)
{
    uint32_t ret = 1;
    std::string out = ketest::dump_port(port, &ret);
    EXPECT_EQ(ret, 0u);
    return out;
}

bool dump_has(uint32_t port, const std::string &line)
{
    return dump_of(port).find(line) != std::string::npos;
}

// Exactly one failed-call line of func for status ret.
void expect_info(const std::string &out, const std::string &func, uint32_t ret)
{
    std::string got;
    int line = 0;
    EXPECT_TRUE(parse_info_line(out, &got, &line, ret)) << out;
    EXPECT_EQ(got, func);
}

TEST_F(McPort, IgmpAttributesWriteThePortRecordAndReadBackInCallerCodes)
{
    struct {
        uint32_t upmode, transparent, read_back, cached;
    } cases[] = {{0, 1, 0, 0}, {1, 0, 1, 1}, {2, 0, 3, 2}, {3, 0, 3, 2}};
    ASSERT_EQ(ke_omci_tapi_mc_usr_vlan_set(2, 300), 0u);
    ASSERT_EQ(ke_omci_tapi_mc_tagact_set(2, 3), 0u);
    for (const auto &c : cases) {
        SCOPED_TRACE(c.upmode);
        kestub::reset();
        ketest::preload_ports();
        st_mc_igmp_attr in = {c.upmode, 100, 5, 0x1234};
        ASSERT_EQ(ke_omci_tapi_mc_igmp_attr_set(2, &in), 0u);
        EXPECT_EQ(cm_ops(), (Ops{{CmOp::Get, 834}, {CmOp::Set, 822}}));
        EXPECT_EQ(cm_sets(822).at(0), port_record(2, 1, c.transparent, 100, 5, 0x1234, 1, 300));

        st_mc_igmp_attr out = {};
        EXPECT_EQ(ke_omci_tapi_mc_igmp_attr_get(2, &out), 0u);
        EXPECT_EQ(out.ui_upmode, c.read_back);
        EXPECT_EQ(out.ui_upvlan, 100u);
        EXPECT_EQ(out.ui_uppri, 5u);
        EXPECT_EQ(out.ui_upgemport, 0x1234u);
        char line[80];
        std::snprintf(line, sizeof line, "igmp upmode [%u] uppri [5] upvlan [100]\n", c.cached);
        EXPECT_TRUE(dump_has(2, line));
    }
}

TEST_F(McPort, TagActionCodesMapToTheCacheAndToTheTable)
{
    struct {
        uint32_t code;
        uint32_t cached;  // internal action afterwards
        uint32_t table;   // ui_down_tagact written to table 822
    } cases[] = {
        // Starting from internal action 1; 2 and 5 keep whatever is current.
        {1, 1, 4}, {2, 1, 4}, {5, 1, 4}, {0, 0, 0}, {2, 0, 0}, {3, 2, 1},
        {5, 2, 1}, {1, 1, 4}, {4, 2, 1}, {6, 2, 1}, {7, 2, 1},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.code);
        kestub::reset();
        ketest::preload_ports();
        ASSERT_EQ(ke_omci_tapi_mc_tagact_set(1, c.code), 0u);
        ASSERT_EQ(cm_sets(822).size(), 1u);
        EXPECT_EQ(ketest::u32_at(cm_sets(822)[0], 36), c.table);
        EXPECT_TRUE(dump_has(1, "down tagact[" + std::to_string(c.cached) + "] usrvlan[0]\n"));
    }
}

TEST_F(McPort, RejectedCodesWriteNothingAndReportTheValueError)
{
    st_mc_igmp_attr before = {1, 7, 1, 9};
    ASSERT_EQ(ke_omci_tapi_mc_igmp_attr_set(0, &before), 0u);
    ASSERT_EQ(ke_omci_tapi_mc_tagact_set(0, 1), 0u);
    struct {
        const char *func;
        std::function<uint32_t()> call;
    } cases[] = {
        {"ke_omci_tapi_mc_igmp_attr_set",
         [] {
             st_mc_igmp_attr a = {4, 1, 1, 1};
             return ke_omci_tapi_mc_igmp_attr_set(0, &a);
         }},
        {"ke_omci_tapi_mc_igmp_attr_set",
         [] {
             st_mc_igmp_attr a = {0xFFFFFFFF, 1, 1, 1};
             return ke_omci_tapi_mc_igmp_attr_set(0, &a);
         }},
        {"ke_omci_tapi_mc_tagact_set", [] { return ke_omci_tapi_mc_tagact_set(0, 8); }},
        {"ke_omci_tapi_mc_tagact_set", [] { return ke_omci_tapi_mc_tagact_set(0, 0xFFFFFFFF); }},
    };
    for (const auto &c : cases) {
        kestub::reset();
        kestub::log_set(true);
        uint32_t ret = 0;
        std::string out = ketest::printed([&] { ret = c.call(); });
        EXPECT_EQ(ret, 1u) << c.func;
        EXPECT_TRUE(kestub::cm_calls().empty()) << c.func;
        expect_info(out, c.func, 0x70000012);
    }
    kestub::reset();
    ketest::preload_ports();
    st_mc_igmp_attr after = {};
    EXPECT_EQ(ke_omci_tapi_mc_igmp_attr_get(0, &after), 0u);
    EXPECT_EQ(ketest::bytes_of(after), ketest::bytes_of(before));
    EXPECT_TRUE(dump_has(0, "down tagact[1] usrvlan[0]\n"));
}

TEST_F(McPort, PortModeFollowsThePortInformationTable)
{
    struct {
        bool stored;
        uint32_t sfu_mode;
        uint32_t port_mode;
    } cases[] = {{true, 1, 2}, {true, 0, 1}, {true, 2, 1}, {false, 0, 1}};
    for (const auto &c : cases) {
        kestub::reset();
        ketest::preload_empty_ranges(3);
        if (c.stored)
            ketest::preload_port_mode(3, c.sfu_mode);
        ketest::printed([] { EXPECT_EQ(ke_omci_tapi_mc_usr_vlan_set(3, 42), 0u); });
        ASSERT_EQ(cm_sets(822).size(), 1u);
        EXPECT_EQ(ketest::u32_at(cm_sets(822)[0], 12), c.port_mode) << c.sfu_mode;
    }
}

// Each setter: its table, its log name, and the dump line that shows the
// cached value.  A failed write must leave that line as it was.
TEST_F(McPort, FailedWriteLeavesTheCacheAsItWas)
{
    struct {
        const char *label;
        uint32_t table;
        const char *log_name;
        std::function<uint32_t(uint32_t)> set;  // sets a value
        std::function<std::string(uint32_t)> line;
    } cases[] = {
        {"igmp", 822, "ke_omci_mc_port_set_proc",
         [](uint32_t v) {
             st_mc_igmp_attr a = {1, v, 3, v};
             return ke_omci_tapi_mc_igmp_attr_set(1, &a);
         },
         [](uint32_t v) {
             return "igmp upmode [1] uppri [3] upvlan [" + std::to_string(v) + "]\n";
         }},
        {"tagact", 822, "ke_omci_mc_port_set_proc",
         [](uint32_t v) { return ke_omci_tapi_mc_tagact_set(1, v); },
         [](uint32_t v) { return "down tagact[" + std::to_string(v) + "] usrvlan[0]\n"; }},
        {"usrvlan", 822, "ke_omci_mc_port_set_proc",
         [](uint32_t v) { return ke_omci_tapi_mc_usr_vlan_set(1, v); },
         [](uint32_t v) { return "down tagact[0] usrvlan[" + std::to_string(v) + "]\n"; }},
        {"uprate", 825, "ke_omci_tapi_mc_uprate_set_proc",
         [](uint32_t v) { return ke_omci_tapi_mc_uprate_set(1, v); },
         [](uint32_t v) { return "uprate [" + std::to_string(v) + "]\n"; }},
        {"group num", 818, "ke_omci_tapi_mc_group_num_set_proc",
         [](uint32_t v) { return ke_omci_tapi_mc_group_num_set(1, v); },
         [](uint32_t v) { return "group num [" + std::to_string(v) + "]\n"; }},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.label);
        ASSERT_EQ(c.set(1), 0u);
        EXPECT_TRUE(dump_has(1, c.line(1)));
        kestub::cm_fail(c.table, 0x66);
        kestub::log_set(true);
        uint32_t ret = 0;
        std::string out = ketest::printed([&] { ret = c.set(0); });
        kestub::log_set(false);
        EXPECT_EQ(ret, 1u);
        expect_info(out, c.log_name, 0x66);
        EXPECT_TRUE(dump_has(1, c.line(1)));
        ASSERT_EQ(c.set(0), 0u);
        EXPECT_TRUE(dump_has(1, c.line(0)));
    }
}

TEST_F(McPort, FailedWriteKeepsTheIgmpAttributesReadBack)
{
    st_mc_igmp_attr first = {1, 10, 2, 0x40};
    ASSERT_EQ(ke_omci_tapi_mc_igmp_attr_set(2, &first), 0u);
    kestub::cm_fail(822, 0x9);
    st_mc_igmp_attr second = {3, 20, 3, 0x50};
    EXPECT_EQ(ke_omci_tapi_mc_igmp_attr_set(2, &second), 1u);
    st_mc_igmp_attr read = {};
    EXPECT_EQ(ke_omci_tapi_mc_igmp_attr_get(2, &read), 0u);
    EXPECT_EQ(ketest::bytes_of(read), ketest::bytes_of(first));
}

TEST_F(McPort, RateAndGroupNumberRecords)
{
    EXPECT_EQ(ke_omci_tapi_mc_uprate_set(3, 0x2000), 0u);
    EXPECT_EQ(ke_omci_tapi_mc_group_num_set(3, 64), 0u);
    EXPECT_EQ(cm_ops(), (Ops{{CmOp::Set, 825}, {CmOp::Set, 818}}));
    EXPECT_EQ(cm_sets(825).at(0), record(24, {{8, 3}, {12, 0x2000}, {16, 6}, {20, 28}}));
    EXPECT_EQ(cm_sets(818).at(0), record(24, {{8, 3}, {12, 64}, {20, 12}}));
    std::string dump = dump_of(3);
    EXPECT_NE(dump.find("uprate [8192]\ngroup num [64]\n"), std::string::npos) << dump;
}

TEST_F(McPort, GroupNumberIgnoresPortsBeyondTheBoardWhileTheProcedureChecksNothing)
{
    for (uint32_t port : {ketest::kMcPorts, 7u, 8u, 0xFFFFFFFFu})
        EXPECT_EQ(ke_omci_tapi_mc_group_num_set(port, 5), 0u) << port;
    EXPECT_TRUE(kestub::cm_calls().empty());

    EXPECT_EQ(ke_omci_tapi_mc_group_num_set_proc(9, 5), 0u);
    EXPECT_EQ(ke_omci_tapi_mc_group_num_set_proc(1, 77), 0u);
    EXPECT_EQ(cm_sets(818),
              (std::vector<std::vector<uint8_t>>{record(24, {{8, 9}, {12, 5}, {20, 12}}),
                                                 record(24, {{8, 1}, {12, 77}, {20, 12}})}));
    EXPECT_TRUE(dump_has(1, "group num [0]\n"));
}

TEST_F(McPort, PortsBeyondTheCacheAreRefusedWithoutAWrite)
{
    static st_mc_table row;
    struct {
        const char *func;
        uint32_t result;
        std::function<uint32_t(uint32_t)> call;
    } cases[] = {
        {"ke_omci_tapi_mc_igmp_attr_set", 1,
         [](uint32_t p) {
             st_mc_igmp_attr a = {0, 1, 1, 1};
             return ke_omci_tapi_mc_igmp_attr_set(p, &a);
         }},
        {"ke_omci_tapi_mc_tagact_set", 1,
         [](uint32_t p) { return ke_omci_tapi_mc_tagact_set(p, 1); }},
        {"ke_omci_tapi_mc_usr_vlan_set", 1,
         [](uint32_t p) { return ke_omci_tapi_mc_usr_vlan_set(p, 1); }},
        {"ke_omci_tapi_mc_uprate_set", 1,
         [](uint32_t p) { return ke_omci_tapi_mc_uprate_set(p, 1); }},
        {"ke_omci_tapi_mc_vlan_set", 1,
         [](uint32_t p) {
             st_mc_vlan v = {p, 10};
             return ke_omci_tapi_mc_vlan_set(&v);
         }},
        {"ke_omci_tapi_mc_vlan_del", 1,
         [](uint32_t p) {
             st_mc_vlan v = {p, 10};
             return ke_omci_tapi_mc_vlan_del(&v);
         }},
        {"ke_omci_tapi_mc_vlan_clr", 1, [](uint32_t p) { return ke_omci_tapi_mc_vlan_clr(p); }},
        {"ke_omci_mc_vlan_set_proc", 1,
         [](uint32_t p) {
             uint32_t list[MC_VLAN_MAX] = {10, 20, 30, 40, 50, 60, 70, 80};
             return ke_omci_mc_vlan_set_proc(p, list, MC_VLAN_MAX);
         }},
        {"ke_omci_tapi_mc_range_clr", 1, [](uint32_t p) { return ke_omci_tapi_mc_range_clr(p); }},
        {"ke_omci_tapi_mc_table_del", 0,
         [](uint32_t p) {
             row.ui_port = p;
             row.ui_vlan = 10;
             return ke_omci_tapi_mc_table_del(&row);
         }},
    };
    for (uint32_t port : {uint32_t{MC_PORT_MAX}, 9u, 0xFFFFFFFFu}) {
        for (const auto &c : cases) {
            kestub::reset();
            kestub::log_set(true);
            uint32_t ret = 7;
            std::string out = ketest::printed([&] { ret = c.call(port); });
            EXPECT_EQ(ret, c.result) << c.func << " port " << port;
            EXPECT_TRUE(kestub::cm_calls().empty()) << c.func << " port " << port;
            expect_info(out, c.func, 0x70000012);
        }
    }
}

TEST_F(McPort, IgmpAttributesOfPortsBeyondTheBoardReadAsZero)
{
    for (uint32_t port : {ketest::kMcPorts, 7u, 8u, 0xFFFFFFFFu}) {
        if (port < MC_PORT_MAX) {
            st_mc_igmp_attr in = {1, 5, 5, 5};
            ASSERT_EQ(ke_omci_tapi_mc_igmp_attr_set(port, &in), 0u) << port;
        }
        st_mc_igmp_attr out = {9, 9, 9, 9};
        EXPECT_EQ(ke_omci_tapi_mc_igmp_attr_get(port, &out), 0u) << port;
        EXPECT_EQ(ketest::bytes_of(out), ketest::words({0, 0, 0, 0})) << port;
    }
    EXPECT_EQ(ke_omci_tapi_mc_igmp_attr_get(0, nullptr), 0x70000000u);
}

}  // namespace
