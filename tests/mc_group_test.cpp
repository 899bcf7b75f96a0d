// Multicast VLANs, group table rows and address ranges: the VLAN list of
// table 824 with its memberships in table 808, the 48-entry range record
// of table 817, and the range counts kept per VLAN.
#include <algorithm>

#include "mc_fixture.h"

namespace {

using kestub::CmOp;
using ketest::cm_entry;
using ketest::cm_ops;
using ketest::cm_sets;
using ketest::kRangeSize;
using ketest::parse_info_line;
using ketest::put_u32;
using ketest::record;

using Ops = std::vector<std::pair<CmOp, uint32_t>>;
using Records = std::vector<std::vector<uint8_t>>;
using Slots = std::array<uint32_t, MC_VLAN_MAX>;
constexpr uint32_t kNone = MC_VLAN_NONE;

class McGroup : public ketest::McTest {};

std::vector<uint8_t> vlan_list(uint32_t port, const Slots &slots)
{
    auto rec = record(48, {{8, port}, {44, 12}});
    for (size_t i = 0; i < slots.size(); ++i)
        put_u32(rec, 12 + 4 * i, slots[i]);
    return rec;
}

std::vector<uint8_t> member(uint32_t port, uint32_t vid)
{
    return record(20, {{8, port}, {12, vid}, {16, 12}});
}

// The membership writes of the VLAN procedure for this list.
template <class List>
Records members_of(uint32_t port, const List &list)
{
    Records out;
    for (uint32_t v : list) {
        if (v == kNone)
            continue;
        out.push_back(member(port, v));
        out.push_back(member(8, v));
    }
    return out;
}

st_mc_table row(uint32_t port, uint32_t vlan, uint8_t start, uint8_t end)
{
    st_mc_table r;
    std::memset(&r, 0, sizeof r);
    r.ui_row_0 = 0x11111111;  // the stack's own words travel nowhere
    r.ui_row_1 = 0x22222222;
    r.ui_row_3 = 0x33333333;
    r.ui_port = port;
    r.ui_vlan = vlan;
    for (int i = 0; i < MC_IP_LEN; ++i) {
        r.auc_ip_start[i] = static_cast<uint8_t>(start + i);
        r.auc_ip_end[i] = static_cast<uint8_t>(end + i);
    }
    return r;
}

// Range entry i of a 817 record.
void put_range(std::vector<uint8_t> &rec, size_t i, const st_mc_table &r, uint32_t valid)
{
    size_t off = 12 + 36 * i;
    std::memcpy(rec.data() + off, r.auc_ip_start, MC_IP_LEN);
    std::memcpy(rec.data() + off + 16, r.auc_ip_end, MC_IP_LEN);
    put_u32(rec, off + 32, valid);
}

std::vector<uint8_t> ranges(uint32_t port)
{
    return record(kRangeSize, {{8, port}, {kRangeSize - 4, 12}});
}

// The VLAN lines of a port's dump.
std::string vlan_lines(uint32_t port)
{
    uint32_t ret = 1;
    std::string out = ketest::dump_port(port, &ret);
    EXPECT_EQ(ret, 0u);
    size_t at = out.find("\nvlan [");
    return at == std::string::npos ? "" : out.substr(at + 1);
}

uint32_t add_vlan(uint32_t port, uint32_t vlan)
{
    st_mc_vlan v = {port, vlan};
    return ke_omci_tapi_mc_vlan_set(&v);
}

uint32_t del_vlan(uint32_t port, uint32_t vlan)
{
    st_mc_vlan v = {port, vlan};
    return ke_omci_tapi_mc_vlan_del(&v);
}

void expect_info_lines(const std::string &out,
                       const std::vector<std::pair<std::string, uint32_t>> &lines)
{
    size_t pos = 0;
    for (const auto &l : lines) {
        size_t end = out.find('\n', pos);
        ASSERT_NE(end, std::string::npos) << out;
        std::string func;
        int line = 0;
        EXPECT_TRUE(parse_info_line(out.substr(pos, end + 1 - pos), &func, &line, l.second)) << out;
        EXPECT_EQ(func, l.first);
        pos = end + 1;
    }
    EXPECT_EQ(pos, out.size()) << out;
}

TEST_F(McGroup, VlanProcedureWritesEachVlanTwiceAsMemberThenTheList)
{
    struct {
        std::vector<uint32_t> list;
        Slots slots;  // as table 824 receives them
    } cases[] = {
        {{10, kNone, 20, kNone, kNone, kNone, kNone, 4095},
         {10, kNone, 20, kNone, kNone, kNone, kNone, 4095}},
        {{kNone, kNone, kNone, kNone, kNone, kNone, kNone, kNone},
         {kNone, kNone, kNone, kNone, kNone, kNone, kNone, kNone}},
        {{7, 0}, {7, 0, 0, 0, 0, 0, 0, 0}},
    };
    for (const auto &c : cases) {
        kestub::reset();
        EXPECT_EQ(ke_omci_mc_vlan_set_proc(2, c.list.data(), static_cast<uint32_t>(c.list.size())),
                  0u);
        Records expect = members_of(2, c.list);
        Ops ops(expect.size(), {CmOp::Set, 808});
        ops.push_back({CmOp::Set, 824});
        EXPECT_EQ(cm_ops(), ops);
        EXPECT_EQ(cm_sets(808), expect);
        EXPECT_EQ(cm_sets(824), Records{vlan_list(2, c.slots)});
    }
}

TEST_F(McGroup, VlanProcedureIgnoresMembershipFailuresButNotTheList)
{
    uint32_t list[MC_VLAN_MAX] = {10, 20, kNone, kNone, kNone, kNone, kNone, kNone};
    kestub::cm_fail(808, 0x41, 1);
    EXPECT_EQ(ke_omci_mc_vlan_set_proc(1, list, MC_VLAN_MAX), 0u);
    EXPECT_EQ(cm_sets(808).size(), 4u);

    kestub::reset();
    kestub::log_set(true);
    kestub::cm_fail(824, 0x42);
    uint32_t ret = 0;
    std::string out =
        ketest::printed([&] { ret = ke_omci_mc_vlan_set_proc(1, list, MC_VLAN_MAX); });
    EXPECT_EQ(ret, 1u);
    expect_info_lines(out, {{"ke_omci_mc_vlan_set_proc", 0x42}});

    kestub::reset();
    uint32_t nine[MC_VLAN_MAX + 1] = {};
    EXPECT_EQ(ke_omci_mc_vlan_set_proc(1, nine, MC_VLAN_MAX + 1), 1u);
    EXPECT_EQ(ke_omci_mc_vlan_set_proc(1, nullptr, MC_VLAN_MAX), 1u);
    EXPECT_TRUE(kestub::cm_calls().empty());
}

TEST_F(McGroup, VlansFillTheFirstEmptySlotAndANinthChangesNothing)
{
    Slots slots;
    slots.fill(kNone);
    std::string lines;
    for (uint32_t i = 0; i < MC_VLAN_MAX; ++i) {
        kestub::reset();
        uint32_t vlan = 100 + i;
        ASSERT_EQ(add_vlan(1, vlan), 0u);
        slots[i] = vlan;
        Records expect = members_of(1, slots);
        EXPECT_EQ(cm_sets(808), expect) << i;
        EXPECT_EQ(cm_sets(824), Records{vlan_list(1, slots)}) << i;
        lines += "vlan [" + std::to_string(vlan) + "] area cnt[0]\n";
    }
    kestub::reset();
    EXPECT_EQ(add_vlan(1, 999), 0u);
    EXPECT_EQ(add_vlan(1, 103), 0u);
    EXPECT_TRUE(kestub::cm_calls().empty());
    EXPECT_EQ(vlan_lines(1), lines);
}

TEST_F(McGroup, VlanAlreadyPresentWritesNothing)
{
    ASSERT_EQ(add_vlan(0, 10), 0u);
    kestub::reset();
    EXPECT_EQ(add_vlan(0, 10), 0u);
    EXPECT_TRUE(kestub::cm_calls().empty());
    EXPECT_EQ(vlan_lines(0), "vlan [10] area cnt[0]\n");
}

TEST_F(McGroup, FailedListWriteLeavesTheSlots)
{
    ASSERT_EQ(add_vlan(3, 10), 0u);
    kestub::cm_fail(824, 0x5);
    EXPECT_EQ(add_vlan(3, 20), 1u);
    EXPECT_EQ(vlan_lines(3), "vlan [10] area cnt[0]\n");
    kestub::cm_fail(824, 0x5);
    EXPECT_EQ(del_vlan(3, 10), 1u);
    EXPECT_EQ(vlan_lines(3), "vlan [10] area cnt[0]\n");
    kestub::cm_fail(824, 0x5);
    EXPECT_EQ(ke_omci_tapi_mc_vlan_clr(3), 1u);
    EXPECT_EQ(vlan_lines(3), "vlan [10] area cnt[0]\n");
}

TEST_F(McGroup, VlanDeleteEmptiesItsSlotAndKeepsTheSlotCount)
{
    for (uint32_t v : {10u, 20u, 30u})
        ASSERT_EQ(add_vlan(2, v), 0u);
    st_mc_table r = row(2, 20, 0xE0, 0xE8);
    ASSERT_EQ(ke_omci_tapi_mc_table_set(&r), 0u);

    kestub::reset();
    EXPECT_EQ(del_vlan(2, 20), 0u);
    Slots slots = {10, kNone, 30, kNone, kNone, kNone, kNone, kNone};
    EXPECT_EQ(cm_sets(808), members_of(2, slots));
    EXPECT_EQ(cm_sets(824), Records{vlan_list(2, slots)});

    kestub::reset();
    EXPECT_EQ(del_vlan(2, 20), 0u);
    EXPECT_TRUE(kestub::cm_calls().empty());

    // The next VLAN in that slot finds the count left behind.
    ASSERT_EQ(add_vlan(2, 40), 0u);
    EXPECT_EQ(vlan_lines(2),
              "vlan [10] area cnt[0]\nvlan [40] area cnt[1]\nvlan [30] area cnt[0]\n");
}

TEST_F(McGroup, VlanClearEmptiesEverySlotAndCountWithoutMemberships)
{
    ASSERT_EQ(add_vlan(1, 10), 0u);
    st_mc_table r = row(1, 10, 1, 2);
    ASSERT_EQ(ke_omci_tapi_mc_table_set(&r), 0u);
    kestub::reset();
    EXPECT_EQ(ke_omci_tapi_mc_vlan_clr(1), 0u);
    Slots none;
    none.fill(kNone);
    EXPECT_EQ(cm_ops(), (Ops{{CmOp::Set, 824}}));
    EXPECT_EQ(cm_sets(824), Records{vlan_list(1, none)});
    EXPECT_EQ(vlan_lines(1), "");
    ASSERT_EQ(add_vlan(1, 10), 0u);
    EXPECT_EQ(vlan_lines(1), "vlan [10] area cnt[0]\n");
}

TEST_F(McGroup, RowsStoreTheirRangeInTheFirstFreeEntryAndCountIt)
{
    st_mc_table a = row(0, 50, 0xE0, 0xE1);
    st_mc_table b = row(0, 50, 0xE2, 0xE3);
    auto stored = ranges(0);
    put_range(stored, 0, a, 0);  // a freed entry keeps its old bytes
    put_range(stored, 1, b, 1);
    kestub::cm_preload(817, stored.data(), stored.size());

    ASSERT_EQ(ke_omci_tapi_mc_table_set(&a), 0u);
    EXPECT_EQ(cm_ops(), (Ops{{CmOp::Set, 808},
                             {CmOp::Set, 808},
                             {CmOp::Set, 824},
                             {CmOp::Get, 817},
                             {CmOp::Set, 817}}));
    EXPECT_EQ(kestub::cm_calls()[3].record, ranges(0)) << "Get carries the port and mask 12";
    put_range(stored, 0, a, 1);
    EXPECT_EQ(cm_sets(817), Records{stored});

    kestub::reset();
    kestub::cm_preload(817, stored.data(), stored.size());
    ASSERT_EQ(ke_omci_tapi_mc_table_set(&a), 0u) << "the same range again takes a second entry";
    EXPECT_EQ(cm_ops(), (Ops{{CmOp::Get, 817}, {CmOp::Set, 817}}));
    put_range(stored, 2, a, 1);
    EXPECT_EQ(cm_sets(817), Records{stored});
    EXPECT_EQ(vlan_lines(0), "vlan [50] area cnt[2]\n");
}

TEST_F(McGroup, FullRangeTableStoresNothingButStillCounts)
{
    auto full = ranges(1);
    for (size_t i = 0; i < MC_RANGE_MAX; ++i)
        put_range(full, i, row(1, 60, static_cast<uint8_t>(i), 0), 1);
    kestub::cm_preload(817, full.data(), full.size());
    st_mc_table r = row(1, 60, 0xE0, 0xE1);
    EXPECT_EQ(ke_omci_tapi_mc_table_set(&r), 0u);
    EXPECT_TRUE(cm_sets(817).empty());
    EXPECT_EQ(cm_entry(817, 1), full);
    EXPECT_EQ(vlan_lines(1), "vlan [60] area cnt[1]\n");
}

TEST_F(McGroup, RowWithoutAFreeVlanSlotStoresItsRangeUncounted)
{
    for (uint32_t v = 1; v <= MC_VLAN_MAX; ++v)
        ASSERT_EQ(add_vlan(2, v), 0u);
    std::string before = vlan_lines(2);
    kestub::reset();
    ketest::preload_ports();
    st_mc_table r = row(2, 900, 0xE0, 0xE1);
    EXPECT_EQ(ke_omci_tapi_mc_table_set(&r), 0u);
    EXPECT_EQ(cm_ops(), (Ops{{CmOp::Get, 817}, {CmOp::Set, 817}}));
    EXPECT_EQ(vlan_lines(2), before);
}

TEST_F(McGroup, RemovingTheLastCountedRangeRemovesItsVlan)
{
    ASSERT_EQ(add_vlan(3, 5), 0u);
    st_mc_table a = row(3, 70, 0xE0, 0xE1);
    st_mc_table b = row(3, 70, 0xE2, 0xE3);
    ASSERT_EQ(ke_omci_tapi_mc_table_set(&a), 0u);
    ASSERT_EQ(ke_omci_tapi_mc_table_set(&b), 0u);
    EXPECT_EQ(vlan_lines(3), "vlan [5] area cnt[0]\nvlan [70] area cnt[2]\n");

    kestub::reset();
    auto stored = ranges(3);
    put_range(stored, 0, a, 1);
    put_range(stored, 1, b, 1);
    kestub::cm_preload(817, stored.data(), stored.size());
    EXPECT_EQ(ke_omci_tapi_mc_table_del(&b), 0u);
    EXPECT_EQ(cm_ops(), (Ops{{CmOp::Get, 817}, {CmOp::Set, 817}}));
    put_range(stored, 1, b, 0);
    EXPECT_EQ(cm_sets(817), Records{stored});
    EXPECT_EQ(vlan_lines(3), "vlan [5] area cnt[0]\nvlan [70] area cnt[1]\n");

    kestub::reset();
    kestub::cm_preload(817, stored.data(), stored.size());
    EXPECT_EQ(ke_omci_tapi_mc_table_del(&a), 0u);
    Slots slots = {5, kNone, kNone, kNone, kNone, kNone, kNone, kNone};
    EXPECT_EQ(cm_ops(), (Ops{{CmOp::Get, 817},
                             {CmOp::Set, 817},
                             {CmOp::Set, 808},
                             {CmOp::Set, 808},
                             {CmOp::Set, 824}}));
    EXPECT_EQ(cm_sets(824), Records{vlan_list(3, slots)});
    EXPECT_EQ(vlan_lines(3), "vlan [5] area cnt[0]\n");
}

TEST_F(McGroup, RemovingAnUnstoredRangeWritesNothingAndStillUncounts)
{
    st_mc_table a = row(0, 80, 0xE0, 0xE1);
    st_mc_table b = row(0, 80, 0xE2, 0xE3);
    ASSERT_EQ(ke_omci_tapi_mc_table_set(&a), 0u);
    ASSERT_EQ(ke_omci_tapi_mc_table_set(&b), 0u);

    kestub::reset();
    auto stored = ranges(0);
    put_range(stored, 0, b, 0);  // a matching but freed entry is not a match
    st_mc_table half = row(0, 80, 0xE0, 0xE3);
    put_range(stored, 1, half, 1);  // start of one range, end of the other
    kestub::cm_preload(817, stored.data(), stored.size());
    EXPECT_EQ(ke_omci_tapi_mc_table_del(&b), 0u);
    EXPECT_EQ(cm_ops(), (Ops{{CmOp::Get, 817}}));
    EXPECT_EQ(vlan_lines(0), "vlan [80] area cnt[1]\n");
}

TEST_F(McGroup, RangeCountStaysAtZeroAndKeepsItsVlan)
{
    ASSERT_EQ(add_vlan(1, 90), 0u);
    kestub::reset();
    ketest::preload_ports();
    st_mc_table r = row(1, 90, 0xE0, 0xE1);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(ke_omci_tapi_mc_table_del(&r), 0u);
    EXPECT_TRUE(cm_sets(824).empty());
    EXPECT_EQ(vlan_lines(1), "vlan [90] area cnt[0]\n");
    ASSERT_EQ(ke_omci_tapi_mc_table_set(&r), 0u);
    EXPECT_EQ(vlan_lines(1), "vlan [90] area cnt[1]\n");
}

TEST_F(McGroup, RowFailuresAreReportedUnderTheirProcedures)
{
    st_mc_table r = row(2, 40, 0xE0, 0xE1);
    struct {
        const char *label;
        uint32_t table;
        unsigned nth;
        std::vector<std::pair<std::string, uint32_t>> lines;
        std::string vlans_after;
    } cases[] = {
        {"list",
         824,
         1,
         {{"ke_omci_mc_vlan_set_proc", 0x77}, {"ke_omci_tapi_mc_table_set", 1}},
         ""},
        {"range get", 817, 1, {{"ke_omci_mc_range_add_proc", 0x77}}, "vlan [40] area cnt[0]\n"},
        {"range set", 817, 2, {{"ke_omci_mc_range_add_proc", 0x77}}, "vlan [40] area cnt[0]\n"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.label);
        ASSERT_EQ(ke_omci_tapi_mc_vlan_clr(2), 0u);
        kestub::reset();
        ketest::preload_ports();
        kestub::log_set(true);
        kestub::cm_fail(c.table, 0x77, c.nth);
        uint32_t ret = 0;
        std::string out = ketest::printed([&] { ret = ke_omci_tapi_mc_table_set(&r); });
        EXPECT_EQ(ret, 1u);
        expect_info_lines(out, c.lines);
        kestub::log_set(false);
        EXPECT_EQ(vlan_lines(2), c.vlans_after);
        EXPECT_EQ(ketest::cm_entry(817, 2), ranges(2)) << "nothing stored";
    }
}

TEST_F(McGroup, RowRemovalFailureAnswersZeroAndKeepsTheCount)
{
    st_mc_table r = row(0, 30, 0xE0, 0xE1);
    ASSERT_EQ(ke_omci_tapi_mc_table_set(&r), 0u);
    for (unsigned nth : {1u, 2u}) {
        kestub::log_set(true);
        kestub::cm_fail(817, 0x78, nth);
        uint32_t ret = 1;
        std::string out = ketest::printed([&] { ret = ke_omci_tapi_mc_table_del(&r); });
        kestub::log_set(false);
        EXPECT_EQ(ret, 0u);
        expect_info_lines(out, {{"ke_omci_mc_range_del_proc", 0x78}});
        EXPECT_EQ(vlan_lines(0), "vlan [30] area cnt[1]\n");
    }
}

TEST_F(McGroup, RangeClearZeroesEveryEntryAndEmptiesTheVlans)
{
    ASSERT_EQ(add_vlan(1, 10), 0u);
    st_mc_table r = row(1, 10, 0xE0, 0xE1);
    ASSERT_EQ(ke_omci_tapi_mc_table_set(&r), 0u);

    kestub::reset();
    auto stored = ranges(1);
    for (size_t i = 0; i < MC_RANGE_MAX; i += 5)
        put_range(stored, i, row(1, 10, static_cast<uint8_t>(i), 0x80), 1);
    put_u32(stored, kRangeSize - 4, 0x3);
    kestub::cm_preload(817, stored.data(), stored.size());

    EXPECT_EQ(ke_omci_tapi_mc_range_clr(1), 0u);
    Slots none;
    none.fill(kNone);
    EXPECT_EQ(cm_ops(),
              (Ops{{CmOp::Set, 824}, {CmOp::Get, 817}, {CmOp::Set, 817}, {CmOp::Set, 817}}));
    EXPECT_EQ(cm_sets(824), Records{vlan_list(1, none)});
    EXPECT_EQ(kestub::cm_calls()[1].record, record(kRangeSize, {{8, 1}, {kRangeSize - 4, 14}}));
    auto invalidated = stored;
    for (size_t i = 0; i < MC_RANGE_MAX; ++i)
        put_u32(invalidated, 12 + 36 * i + 32, 0);
    put_u32(invalidated, kRangeSize - 4, 12);
    EXPECT_EQ(cm_sets(817), (Records{invalidated, ranges(1)}));
    EXPECT_EQ(cm_entry(817, 1), ranges(1));
    EXPECT_EQ(vlan_lines(1), "");
}

TEST_F(McGroup, RangeClearFailuresAreReportedAndStopTheClear)
{
    for (unsigned nth : {1u, 2u, 3u}) {
        kestub::reset();
        ketest::preload_ports();
        kestub::log_set(true);
        kestub::cm_fail(817, 0x79, nth);
        uint32_t ret = 0;
        std::string out = ketest::printed([&] { ret = ke_omci_tapi_mc_range_clr(0); });
        EXPECT_EQ(ret, 1u) << nth;
        expect_info_lines(out, {{"ke_omci_tapi_mc_range_clr", 0x79}});
        size_t ops_817 = std::count_if(kestub::cm_calls().begin(), kestub::cm_calls().end(),
                                       [](const kestub::CmCall &c) { return c.table == 817; });
        EXPECT_EQ(ops_817, nth);
    }
}

TEST_F(McGroup, RowsAndVlansRefuseBadRecordsAndPorts)
{
    kestub::log_set(true);
    st_mc_table r = row(MC_PORT_MAX, 10, 1, 2);
    uint32_t ret = 0;
    std::string out = ketest::printed([&] { ret = ke_omci_tapi_mc_table_set(&r); });
    EXPECT_EQ(ret, 1u);
    expect_info_lines(out,
                      {{"ke_omci_tapi_mc_vlan_set", 0x70000012}, {"ke_omci_tapi_mc_table_set", 1}});

    ketest::printed([] {
        EXPECT_EQ(ke_omci_tapi_mc_table_set(nullptr), 1u);
        EXPECT_EQ(ke_omci_tapi_mc_table_del(nullptr), 0u);
        EXPECT_EQ(ke_omci_tapi_mc_vlan_set(nullptr), 1u);
        EXPECT_EQ(ke_omci_tapi_mc_vlan_del(nullptr), 1u);
    });
    EXPECT_TRUE(kestub::cm_calls().empty());
    EXPECT_EQ(ke_omci_tapi_mc_filter_set(), 0u);
    EXPECT_EQ(ke_omci_tapi_mc_filter_del(), 0u);
}

}  // namespace
