// Multicast VLANs and group rows: the VLAN list of table 824 with its
// memberships in table 808, the 48-entry range record of table 817, and
// the range counts kept per VLAN.
#include "mc_fixture.h"

namespace {

using kestub::CmOp;
using ketest::Bytes;
using ketest::cm_ops;
using ketest::cm_sets;
using ketest::Ops;
using ketest::ranges;
using ketest::info;
using ketest::cm_record;
using ketest::Records;
using ketest::vlan;
using ketest::vlan_list;
constexpr uint32_t kNone = MC_VLAN_NONE;

class McGroup : public ketest::McTest {};

Bytes member(uint32_t port, uint32_t vid)
{
    return cm_record(20, {{8, port}, {12, vid}, {16, 12}});
}

st_mc_table row(uint32_t port, uint32_t vlan, uint8_t first)
{
    st_mc_table r;
    std::memset(&r, 0x5A, sizeof r);  // the stack's own words travel nowhere
    r.ui_port = port;
    r.ui_vlan = vlan;
    for (uint8_t i = 0; i < MC_IP_LEN; ++i) {
        r.auc_ip_start[i] = static_cast<uint8_t>(first + i);
        r.auc_ip_end[i] = static_cast<uint8_t>(first + 0x40 + i);
    }
    return r;
}

void put_range(Bytes &rec, size_t i, const st_mc_table &r, uint32_t valid)
{
    std::memcpy(rec.data() + 12 + 36 * i, r.auc_ip_start, MC_IP_LEN);
    std::memcpy(rec.data() + 12 + 36 * i + 16, r.auc_ip_end, MC_IP_LEN);
    std::memcpy(rec.data() + 12 + 36 * i + 32, &valid, 4);
}

std::string vlan_lines(uint32_t port)
{
    uint32_t ret = 1;
    std::string out = ketest::dump_port(port, &ret);
    size_t at = out.find("\nvlan [");
    return ret != 0 ? "refused" : at == std::string::npos ? "" : out.substr(at + 1);
}

TEST_F(McGroup, VlanProcedureWritesEachVlanAsMemberOfThePortAndOfPortEight)
{
    uint32_t list[] = {10, kNone, 0, kNone, kNone, kNone, kNone, 4095};
    EXPECT_EQ(ke_omci_mc_vlan_set_proc(2, list, MC_VLAN_MAX), 0u);
    EXPECT_EQ(cm_sets(808), (Records{member(2, 10), member(8, 10), member(2, 0), member(8, 0),
                                     member(2, 4095), member(8, 4095)}));
    EXPECT_EQ(cm_ops().back(), std::make_pair(CmOp::Set, 824u));
    EXPECT_EQ(cm_sets(824),
              Records{vlan_list(2, {10, kNone, 0, kNone, kNone, kNone, kNone, 4095})});

    // A shorter list leaves the other slots 0; a missing one is refused.
    kestub::reset();
    EXPECT_EQ(ke_omci_mc_vlan_set_proc(2, list, 2), 0u);
    EXPECT_EQ(cm_sets(824), Records{vlan_list(2, {10, kNone, 0, 0, 0, 0, 0, 0})});
    EXPECT_EQ(ke_omci_mc_vlan_set_proc(2, nullptr, 1), 1u);
}

TEST_F(McGroup, VlansTakeTheFirstEmptySlotAndWriteOnlyWhenTheListChanges)
{
    for (uint32_t v = 101; v <= 108; ++v)
        ASSERT_EQ(vlan(ke_omci_tapi_mc_vlan_set, 1, v), 0u);
    kestub::reset();
    ASSERT_EQ(vlan(ke_omci_tapi_mc_vlan_del, 1, 103), 0u);
    EXPECT_EQ(cm_sets(824), Records{vlan_list(1, {101, 102, kNone, 104, 105, 106, 107, 108})});
    EXPECT_EQ(cm_sets(808).size(), 14u);
    kestub::reset();
    ASSERT_EQ(vlan(ke_omci_tapi_mc_vlan_set, 1, 200), 0u);
    EXPECT_EQ(cm_sets(824), Records{vlan_list(1, {101, 102, 200, 104, 105, 106, 107, 108})});

    kestub::reset();
    EXPECT_EQ(vlan(ke_omci_tapi_mc_vlan_set, 1, 999), 0u) << "a ninth VLAN";
    EXPECT_EQ(vlan(ke_omci_tapi_mc_vlan_set, 1, 104), 0u) << "a VLAN present";
    EXPECT_EQ(vlan(ke_omci_tapi_mc_vlan_del, 1, 103), 0u) << "a VLAN absent";
    EXPECT_TRUE(kestub::cm_calls().empty());

    kestub::reset();
    EXPECT_EQ(ke_omci_tapi_mc_vlan_clr(1), 0u);
    EXPECT_EQ(cm_ops(), (Ops{{CmOp::Set, 824}}));
    EXPECT_EQ(cm_sets(824),
              Records{vlan_list(1, {kNone, kNone, kNone, kNone, kNone, kNone, kNone, kNone})});
    EXPECT_EQ(vlan_lines(1), "");
}

TEST_F(McGroup, RowsStoreTheirRangeInTheFirstFreeEntryAndCountIt)
{
    st_mc_table a = row(0, 50, 0xA0), b = row(0, 50, 0xB0);
    Bytes stored = ranges(0);
    put_range(stored, 0, b, 0);  // a freed entry keeps its old bytes
    put_range(stored, 1, b, 1);
    ketest::preload(stored, 817);
    ASSERT_EQ(ke_omci_tapi_mc_table_set(&a), 0u);
    ASSERT_EQ(ke_omci_tapi_mc_table_set(&a), 0u) << "the same range takes a second entry";
    EXPECT_EQ(cm_ops(), (Ops{{CmOp::Set, 808}, {CmOp::Set, 808}, {CmOp::Set, 824}, {CmOp::Get, 817},
                             {CmOp::Set, 817}, {CmOp::Get, 817}, {CmOp::Set, 817}}));
    EXPECT_EQ(kestub::cm_calls()[3].record, ranges(0)) << "the Get carries port and mask 12";
    put_range(stored, 0, a, 1);
    Bytes second = stored;
    put_range(second, 2, a, 1);
    EXPECT_EQ(cm_sets(817), (Records{stored, second}));
    EXPECT_EQ(vlan_lines(0), "vlan [50] area cnt[2]\n");
}

TEST_F(McGroup, FullRangeTableOrFullVlanListStillTakeTheRow)
{
    Bytes full = ranges(1);
    for (uint8_t i = 0; i < MC_RANGE_MAX; ++i)
        put_range(full, i, row(1, 60, i), 1);
    ketest::preload(full, 817);
    st_mc_table r = row(1, 60, 0xA0);
    EXPECT_EQ(ke_omci_tapi_mc_table_set(&r), 0u) << "a 49th range";
    EXPECT_TRUE(cm_sets(817).empty());
    EXPECT_EQ(vlan_lines(1), "vlan [60] area cnt[1]\n");

    for (uint32_t v = 1; v < MC_VLAN_MAX; ++v)
        ASSERT_EQ(vlan(ke_omci_tapi_mc_vlan_set, 2, v), 0u);
    ASSERT_EQ(vlan(ke_omci_tapi_mc_vlan_set, 2, 60), 0u);
    std::string before = vlan_lines(2);
    kestub::reset();
    ketest::preload_ports();
    st_mc_table ninth = row(2, 900, 0xA0);
    EXPECT_EQ(ke_omci_tapi_mc_table_set(&ninth), 0u);
    EXPECT_EQ(cm_ops(), (Ops{{CmOp::Get, 817}, {CmOp::Set, 817}}));
    EXPECT_EQ(vlan_lines(2), before);
}

// A row whose VLAN is the empty-slot mark finds that mark in the first
// empty slot: its range is counted there, and uncounting it to 0 rewrites
// the list without that VLAN, which changes no slot.
TEST_F(McGroup, RowsWithTheEmptySlotMarkCountUnderTheFirstEmptySlot)
{
    ASSERT_EQ(vlan(ke_omci_tapi_mc_vlan_set, 0, 30), 0u);
    kestub::reset();
    ketest::preload_ports();
    st_mc_table r = row(0, kNone, 0xA0);
    EXPECT_EQ(ke_omci_tapi_mc_table_set(&r), 0u);
    EXPECT_EQ(ke_omci_tapi_mc_table_set(&r), 0u);
    EXPECT_EQ(cm_ops(),
              (Ops{{CmOp::Get, 817}, {CmOp::Set, 817}, {CmOp::Get, 817}, {CmOp::Set, 817}}))
        << "the mark is in a slot already: no list write";

    kestub::reset();
    ketest::preload_ports();
    Bytes stored = ranges(0);
    put_range(stored, 0, r, 1);
    ketest::preload(stored, 817);
    EXPECT_EQ(ke_omci_tapi_mc_table_del(&r), 0u);
    EXPECT_EQ(cm_ops(), (Ops{{CmOp::Get, 817}, {CmOp::Set, 817}})) << "2 ranges counted, 1 left";
    kestub::reset();
    ketest::preload_ports();
    ASSERT_EQ(vlan(ke_omci_tapi_mc_vlan_set, 0, 31), 0u);
    EXPECT_EQ(vlan_lines(0), "vlan [30] area cnt[0]\nvlan [31] area cnt[1]\n");

    ASSERT_EQ(vlan(ke_omci_tapi_mc_vlan_set, 0, 32), 0u);  // the slot after 31 holds no count
    kestub::reset();
    ketest::preload(stored, 817);
    ASSERT_EQ(ke_omci_tapi_mc_table_set(&r), 0u);
    EXPECT_EQ(ke_omci_tapi_mc_table_del(&r), 0u);
    EXPECT_EQ(cm_sets(808), (Records{member(0, 30), member(8, 30), member(0, 31), member(8, 31),
                                     member(0, 32), member(8, 32)}));
    EXPECT_EQ(cm_sets(824), Records{vlan_list(0, {30, 31, 32, kNone, kNone, kNone, kNone, kNone})});
    EXPECT_EQ(vlan_lines(0),
              "vlan [30] area cnt[0]\nvlan [31] area cnt[1]\nvlan [32] area cnt[0]\n");
}

TEST_F(McGroup, RemovingRangesUncountsThemAndTheLastRemovesTheVlan)
{
    ASSERT_EQ(vlan(ke_omci_tapi_mc_vlan_set, 3, 5), 0u);
    st_mc_table a = row(3, 70, 0xA0), b = row(3, 70, 0xB0), c = row(3, 70, 0xC0);
    for (const st_mc_table *r : {&a, &b})
        ASSERT_EQ(ke_omci_tapi_mc_table_set(r), 0u);

    kestub::reset();
    Bytes stored = ranges(3);
    put_range(stored, 0, a, 1);
    put_range(stored, 1, b, 1);
    put_range(stored, 2, c, 2);  // neither free nor in use: never matched
    ketest::preload(stored, 817);
    EXPECT_EQ(ke_omci_tapi_mc_table_del(&c), 0u) << "a range not stored as in use";
    EXPECT_EQ(cm_ops(), (Ops{{CmOp::Get, 817}}));
    EXPECT_EQ(vlan_lines(3), "vlan [5] area cnt[0]\nvlan [70] area cnt[1]\n");

    kestub::reset();
    ketest::preload(stored, 817);
    EXPECT_EQ(ke_omci_tapi_mc_table_del(&b), 0u);
    put_range(stored, 1, b, 0);
    EXPECT_EQ(cm_sets(817), Records{stored});
    EXPECT_EQ(cm_sets(824),
              Records{vlan_list(3, {5, kNone, kNone, kNone, kNone, kNone, kNone, kNone})});
    EXPECT_EQ(vlan_lines(3), "vlan [5] area cnt[0]\n");
}

TEST_F(McGroup, RangeCountStaysAtZeroAndKeepsItsVlan)
{
    ASSERT_EQ(vlan(ke_omci_tapi_mc_vlan_set, 1, 90), 0u);
    kestub::reset();
    ketest::preload_ports();
    st_mc_table r = row(1, 90, 0xA0);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(ke_omci_tapi_mc_table_del(&r), 0u);
    EXPECT_TRUE(cm_sets(824).empty());
    EXPECT_EQ(vlan_lines(1), "vlan [90] area cnt[0]\n");
    ASSERT_EQ(ke_omci_tapi_mc_table_set(&r), 0u);
    EXPECT_EQ(vlan_lines(1), "vlan [90] area cnt[1]\n");
}

TEST_F(McGroup, RowFailuresAreReportedUnderTheirProcedures)
{
    const char *kCounted0 = "vlan [40] area cnt[0]\n", *kCounted1 = "vlan [40] area cnt[1]\n";
    struct {
        uint32_t (*fn)(const st_mc_table *);
        uint32_t table;
        unsigned nth;
        uint32_t ret;
        std::string lines;
        const char *vlans_after;
    } cases[] = {
        {ke_omci_tapi_mc_table_set, 824, 1, 1,
         info("ke_omci_mc_vlan_set_proc", 0x77) + info("ke_omci_tapi_mc_table_set", 1), ""},
        {ke_omci_tapi_mc_table_set, 817, 2, 1, info("ke_omci_mc_range_add_proc", 0x77), kCounted0},
        // The removal follows a successful add of the row.
        {ke_omci_tapi_mc_table_del, 817, 1, 0, info("ke_omci_mc_range_del_proc", 0x77), kCounted1},
    };
    st_mc_table r = row(2, 40, 0xA0);
    for (const auto &c : cases) {
        SCOPED_TRACE(c.nth);
        ASSERT_EQ(ke_omci_tapi_mc_range_clr(2), 0u);
        kestub::reset();
        ketest::preload_ports();
        if (c.fn == ke_omci_tapi_mc_table_del) {
            ASSERT_EQ(ke_omci_tapi_mc_table_set(&r), 0u);
        }
        kestub::cm_fail(c.table, 0x77, c.nth);
        kestub::log_set(true);
        uint32_t ret = 7;
        std::string out = ketest::printed([&] { ret = c.fn(&r); });
        kestub::log_set(false);
        EXPECT_EQ(ret, c.ret);
        EXPECT_EQ(ketest::traced(out), c.lines);
        EXPECT_EQ(vlan_lines(2), c.vlans_after);
    }
}

TEST_F(McGroup, RangeClearZeroesEveryEntryAndEmptiesTheVlans)
{
    st_mc_table r = row(1, 10, 0xA0);
    ASSERT_EQ(ke_omci_tapi_mc_table_set(&r), 0u);
    kestub::reset();
    Bytes stored = ranges(1), invalidated = ranges(1);
    for (uint8_t i = 0; i < MC_RANGE_MAX; i += 5) {
        put_range(stored, i, row(1, 10, i), 1);
        put_range(invalidated, i, row(1, 10, i), 0);
    }
    ketest::preload(stored, 817);
    EXPECT_EQ(ke_omci_tapi_mc_range_clr(1), 0u);
    EXPECT_EQ(cm_ops(),
              (Ops{{CmOp::Set, 824}, {CmOp::Get, 817}, {CmOp::Set, 817}, {CmOp::Set, 817}}));
    EXPECT_EQ(kestub::cm_calls()[1].record, cm_record(1744, {{8, 1}, {1740, 14}}));
    EXPECT_EQ(cm_sets(817), (Records{invalidated, ranges(1)}));
    EXPECT_EQ(kestub::cm_entries(817), Records{ranges(1)});
    EXPECT_EQ(vlan_lines(1), "");
}

}  // namespace
