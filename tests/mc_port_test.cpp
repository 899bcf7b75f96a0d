// Multicast settings: the global attributes and their four records, the
// per-port IGMP settings (the port record of table 822 and its code
// mappings, the rate and group-number records, the rejected codes and
// ports), and the parameter dump that shows them.
#include "mc_fixture.h"

namespace {

using kestub::CmOp;
using ketest::cm_record;
using ketest::cm_sets;
using ketest::info;

class McPort : public ketest::McTest {};

TEST_F(McPort, EachVersionAndModeWritesItsFourRecordsAndReadsBack)
{
    struct {
        st_mc_attr in;
        uint32_t ctrl_type, ver, flags[4], quickleave_off;  // tables 819, 820, 826, 821
        uint32_t ver_read, mode_read;
    } cases[] = {
        {{1, 0, 0}, 1, 1, {1, 1, 0, 0}, 1, 2, 0}, {{2, 1, 1}, 0, 1, {0, 0, 1, 1}, 0, 2, 1},
        {{3, 5, 7}, 0, 2, {1, 1, 1, 1}, 0, 3, 0}, {{16, 2, 0}, 0, 1, {1, 1, 1, 1}, 1, 16, 0},
        {{17, ~0u, 1}, 0, 1, {1, 1, 1, 1}, 0, 17, 0},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.in.ui_igmp_ver);
        kestub::reset();
        ASSERT_EQ(ke_omci_tapi_mc_attr_set(&c.in), 0u);
        EXPECT_EQ(ketest::cm_ops(), (ketest::Ops{{CmOp::Set, 819}, {CmOp::Set, 820},
                                                 {CmOp::Set, 826}, {CmOp::Set, 821}}));
        EXPECT_EQ(cm_sets(819)[0], cm_record(16, {{8, c.ctrl_type}, {12, 4}}));
        EXPECT_EQ(cm_sets(820)[0], cm_record(16, {{8, c.ver}, {12, 4}}));
        EXPECT_EQ(cm_sets(826)[0], cm_record(36, {{8, c.flags[0]}, {12, c.flags[1]},
                                                  {16, c.flags[2]}, {20, c.flags[3]}, {32, 60}}));
        EXPECT_EQ(cm_sets(821)[0], cm_record(20, {{12, c.quickleave_off}, {16, 8}}));
        st_mc_attr out = {0, 0, 0xCC};
        EXPECT_EQ(ke_omci_tapi_mc_attr_get(&out), 0u);
        EXPECT_EQ(ketest::bytes_of(out), ketest::words({c.ver_read, c.mode_read, 0xCC}));
    }
}

// A rejected version writes nothing and keeps what is stored (failed
// writes are the fault sweep's).
TEST_F(McPort, RejectedVersionsKeepTheStoredAttributes)
{
    const std::string rejected = info("ke_omci_tapi_mc_attr_set", 0x70000012);
    st_mc_attr before = {17, 1, 1};
    ASSERT_EQ(ke_omci_tapi_mc_attr_set(&before), 0u);
    for (uint32_t version : {0u, 4u, 18u}) {
        for (bool gate : {true, false}) {
            SCOPED_TRACE(testing::Message() << version << " " << gate);
            kestub::reset();
            kestub::log_set(gate);
            st_mc_attr in = {version, 0, 0};
            uint32_t ret = 0;
            std::string out = ketest::printed([&] { ret = ke_omci_tapi_mc_attr_set(&in); });
            EXPECT_EQ(ret, 1u);
            EXPECT_TRUE(kestub::cm_calls().empty());
            EXPECT_EQ(ketest::traced(out), gate ? rejected : "");
            st_mc_attr read = {};
            EXPECT_EQ(ke_omci_tapi_mc_attr_get(&read), 0u);
            EXPECT_EQ(ketest::bytes_of(read), ketest::words({17, 1, 0}));
        }
    }
    EXPECT_EQ(ke_omci_tapi_mc_attr_set(nullptr), 1u);
    EXPECT_EQ(ke_omci_tapi_mc_attr_get(nullptr), 0u);
}


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
        EXPECT_EQ(kestub::cm_calls()[0].record, cm_record(52, {{8, 2}, {48, 16}}));
        EXPECT_EQ(ketest::cm_sets(822)[0],
                  cm_record(116, {{8, 2}, {12, c.port_mode}, {16, c.transparent}, {20, 100},
                                  {24, 5}, {32, 0x1234}, {36, 1}, {40, 300}, {112, 124}}));
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
              ketest::Records{cm_record(24, {{8, 3}, {12, 0x2000}, {16, 6}, {20, 28}})});
    EXPECT_EQ(ketest::cm_sets(818), (ketest::Records{
                                        cm_record(24, {{8, 3}, {12, 64}, {20, 12}}),
                                        cm_record(24, {{8, 9}, {12, 5}, {20, 12}}),
                                        cm_record(24, {{8, 3}, {12, 77}, {20, 12}})}));
    EXPECT_TRUE(dump_has(3, "uprate [8192]\ngroup num [64]\n"));

    kestub::reset();
    for (uint32_t port : {ketest::kMcPorts, 0xFFFFFFFFu})
        EXPECT_EQ(ke_omci_tapi_mc_group_num_set(port, 5), 0u) << port;
    EXPECT_TRUE(kestub::cm_calls().empty());
}


uint32_t igmp_mode(uint32_t port, uint32_t mode)
{
    st_mc_igmp_attr a = {mode, 1, 1, 1};
    return ke_omci_tapi_mc_igmp_attr_set(port, &a);
}

constexpr uint32_t kPast = MC_PORT_MAX;  // the first port the cache cannot hold

// Rejected codes, and ports the cache cannot hold (their statuses are also
// bounds_test's): the value error is traced, nothing is written, the
// cached settings stay.
TEST_F(McPort, RejectedCodesAndPortsWriteNothing)
{
    static st_mc_table row;
    static uint32_t list[MC_VLAN_MAX + 1] = {10, 20};
    row.ui_port = kPast;
    st_mc_igmp_attr before = {1, 7, 1, 9};
    ASSERT_EQ(ke_omci_tapi_mc_igmp_attr_set(0, &before), 0u);
    auto no = [](const char *func) { return info(func, 0x70000012); };
    using ketest::vlan;
    struct { std::string lines; uint32_t result; uint32_t (*call)(); } cases[] = {
        {no("ke_omci_tapi_mc_igmp_attr_set"), 1, [] { return igmp_mode(0, 4); }},
        {no("ke_omci_tapi_mc_igmp_attr_set"), 1, [] { return igmp_mode(kPast, 0); }},
        {no("ke_omci_tapi_mc_tagact_set"), 1, [] { return ke_omci_tapi_mc_tagact_set(0, 8); }},
        {no("ke_omci_tapi_mc_tagact_set"), 1, [] { return ke_omci_tapi_mc_tagact_set(kPast, 1); }},
        {no("ke_omci_tapi_mc_uprate_set"), 1, [] { return ke_omci_tapi_mc_uprate_set(kPast, 1); }},
        {no("ke_omci_tapi_mc_vlan_set"), 1,
         [] { return vlan(ke_omci_tapi_mc_vlan_set, kPast, 10); }},
        {no("ke_omci_tapi_mc_vlan_set"), 1, [] { return ke_omci_tapi_mc_vlan_set(nullptr); }},
        {no("ke_omci_mc_vlan_set_proc"), 1, [] { return ke_omci_mc_vlan_set_proc(0, list, 9); }},
        {no("ke_omci_tapi_mc_range_clr"), 1, [] { return ke_omci_tapi_mc_range_clr(kPast); }},
        {no("ke_omci_tapi_mc_vlan_set") + info("ke_omci_tapi_mc_table_set", 1), 1,
         [] { return ke_omci_tapi_mc_table_set(&row); }},
        {no("ke_omci_tapi_mc_table_del"), 0, [] { return ke_omci_tapi_mc_table_del(&row); }},
        {no("ke_omci_tapi_mc_table_set"), 1, [] { return ke_omci_tapi_mc_table_set(nullptr); }},
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

// Ports past the board's count are refused silently; the bounds of the
// cache and of the request are bounds_test's and the served calls'.
TEST_F(McDump, PortsPastTheBoardPrintNothing)
{
    for (uint32_t port : {ketest::kMcPorts, 0xFFFFFFFFu}) {
        uint32_t ret = 0;
        EXPECT_EQ(ketest::dump_port(port, &ret), "");
        EXPECT_EQ(ret, 0x70000000u) << port;
    }
    EXPECT_TRUE(kestub::cm_calls().empty());
}

}  // namespace
