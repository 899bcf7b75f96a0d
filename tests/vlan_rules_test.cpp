// Per-port VLAN rules: the records written to tables 807 to 811, the
// membership bounds, and the two failure styles of the family (an
// ungated line for the rule tables, a gated bracket line for membership).
#include <functional>
#include <string>

#include "ke_omci_tapi/vlan.h"
#include "stub_test.h"

namespace {

using kestub::CmOp;
using ketest::cm_record;
using ketest::matches_at_line;
using ketest::printed;

class VlanRules : public ketest::StubTest {};

// A failure code whose "%d" rendering is negative.
constexpr uint32_t kFailCode = 0xFFFFFFFE;

struct WriterRow {
    const char *name;
    std::function<uint32_t()> call;
    uint32_t table;
    std::vector<uint8_t> record;
    std::string fail_line;  // with %d for the source line
};

std::vector<WriterRow> writer_rows()
{
    return {
        {"filter_set", [] { return ke_omci_tapi_vlan_filter_set(3, 0x11); }, 807,
         cm_record(20, {{8, 3}, {12, 0x11}}), "ke_omci_tapi_vlan_filter_set[%d] fail, ret=-2\n"},
        {"defpri_set", [] { return ke_omci_tapi_defpri_set(4, 6); }, 811,
         cm_record(20, {{8, 4}, {12, 6}}),
         "ke_omci_tapi_defpri_set[%d] Set defpri config port=4 pri=6 fail, ret=-2\n"},
        {"tagact_set", [] { return ke_omci_tapi_tagact_set(5, 1, 2, 3); }, 809,
         cm_record(28, {{8, 5}, {12, 1}, {16, 2}, {20, 3}}),
         "ke_omci_tapi_tagact_set[%d] config tagact port=5,tag_type=1,dir=2,act=3 fail, "
         "ret=-2\n"},
        // Default VLAN 100, priority 5, TPID type 2: stored in reverse order.
        {"deftag_set", [] { return ke_omci_tapi_deftag_set(6, 100, 5, 2); }, 810,
         cm_record(36, {{8, 6}, {12, 2}, {16, 5}, {20, 100}}),
         "ke_omci_tapi_deftag_set[%d] config tagact port=6,def_vlan_id=100,def_pri=5,"
         "tpid_type=2 fail, ret=-2\n"},
    };
}

TEST_F(VlanRules, WritersSendTheirRecordWithAZeroMaskAndPrintNothing)
{
    for (const WriterRow &row : writer_rows()) {
        kestub::reset();
        kestub::log_set(true);
        uint32_t ret = 9;
        std::string out = printed([&] { ret = row.call(); });
        EXPECT_EQ(ret, 0u) << row.name;
        EXPECT_EQ(out, "") << row.name;
        ASSERT_EQ(kestub::cm_calls().size(), 1u) << row.name;
        const kestub::CmCall &c = kestub::cm_calls()[0];
        EXPECT_EQ(c.op, CmOp::Set) << row.name;
        EXPECT_EQ(c.table, row.table) << row.name;
        EXPECT_EQ(c.size, row.record.size()) << row.name;
        EXPECT_EQ(c.record, row.record) << row.name;
    }
}

TEST_F(VlanRules, WriterFailurePrintsItsLineWithoutTheGateAndStillSucceeds)
{
    for (const WriterRow &row : writer_rows()) {
        kestub::reset();
        kestub::log_set(false);
        kestub::cm_fail(row.table, kFailCode);
        uint32_t ret = 9;
        std::string out = printed([&] { ret = row.call(); });
        EXPECT_EQ(ret, 0u) << row.name;
        EXPECT_TRUE(matches_at_line(out, row.fail_line)) << row.name << ": " << out;
        EXPECT_EQ(kestub::log_queries(), 0u) << row.name;
    }
}

struct MemberRow {
    uint32_t port;
    uint32_t vid;
    bool accepted;
};

constexpr MemberRow kMemberRows[] = {
    {0, 0, true},           {8, 4095, true},  {3, 100, true},
    {9, 0, false},          {0, 4096, false}, {0xFFFFFFFF, 1, false},
    {1, 0xFFFFFFFF, false}, {9, 4096, false},
};

TEST_F(VlanRules, MembershipAcceptsPortsUpToEightAndTwelveBitVlans)
{
    struct Fn {
        const char *name;
        uint32_t (*call)(uint32_t, uint32_t);
        CmOp op;
    };
    const Fn fns[] = {{"vlan_set", ke_omci_tapi_vlan_set, CmOp::Set},
                      {"vlan_del", ke_omci_tapi_vlan_del, CmOp::Del}};
    for (const Fn &fn : fns) {
        for (const MemberRow &row : kMemberRows) {
            kestub::reset();
            kestub::log_set(false);
            uint32_t ret = fn.call(row.port, row.vid);
            std::string what = std::string(fn.name) + " port " + std::to_string(row.port) +
                               " vid " + std::to_string(row.vid);
            if (!row.accepted) {
                EXPECT_EQ(ret, 0x70000000u) << what;
                EXPECT_TRUE(kestub::cm_calls().empty()) << what;
                continue;
            }
            EXPECT_EQ(ret, 0u) << what;
            ASSERT_EQ(kestub::cm_calls().size(), 1u) << what;
            const kestub::CmCall &c = kestub::cm_calls()[0];
            EXPECT_EQ(c.op, fn.op) << what;
            EXPECT_EQ(c.table, 808u) << what;
            EXPECT_EQ(c.size, 20u) << what;
            EXPECT_EQ(c.record, cm_record(20, {{8, row.port}, {12, row.vid}})) << what;
        }
    }
}

TEST_F(VlanRules, MembershipLinesAreBracketedAndGated)
{
    struct Case {
        const char *name;
        std::function<uint32_t()> call;
        uint32_t fail_table;  // 0: no injected failure (a refused argument)
        uint32_t status;
        std::string line;
    };
    const Case cases[] = {
        {"set refused", [] { return ke_omci_tapi_vlan_set(9, 4095); }, 0, 0x70000000,
         "[ke_omci_tapi_vlan_set(%d)]ke_omci_tapi_vlan_set[%d] parameter error, config "
         "port=9,vid=4095\n"},
        {"del refused", [] { return ke_omci_tapi_vlan_del(2, 4096); }, 0, 0x70000000,
         "[ke_omci_tapi_vlan_del(%d)]ke_omci_tapi_vlan_del[%d] parameter error, config "
         "port=2,vid=4096\n"},
        {"set failed", [] { return ke_omci_tapi_vlan_set(2, 100); }, 808, 0,
         "[ke_omci_tapi_vlan_set(%d)]ke_omci_tapi_vlan_set[%d] config port=2,vid=100\n"},
        {"del failed", [] { return ke_omci_tapi_vlan_del(2, 100); }, 808, 0,
         "[ke_omci_tapi_vlan_del(%d)]ke_omci_tapi_vlan_del[%d] del port=2,vid=100 fail, "
         "ret=-2\n"},
    };
    for (const Case &c : cases) {
        for (bool open : {true, false}) {
            kestub::reset();
            kestub::log_set(open);
            if (c.fail_table != 0)
                kestub::cm_fail(c.fail_table, kFailCode);
            uint32_t ret = 9;
            std::string out = printed([&] { ret = c.call(); });
            EXPECT_EQ(ret, c.status) << c.name;
            if (open)
                EXPECT_TRUE(matches_at_line(out, c.line)) << c.name << ": " << out;
            else
                EXPECT_EQ(out, "") << c.name;
            EXPECT_EQ(kestub::log_queries(), 1u) << c.name;
        }
    }
}

TEST_F(VlanRules, MembershipIsKeptPerPortAndVlan)
{
    EXPECT_EQ(ke_omci_tapi_vlan_set(2, 100), 0u);
    EXPECT_EQ(ke_omci_tapi_vlan_set(2, 200), 0u);
    EXPECT_EQ(ke_omci_tapi_vlan_set(3, 100), 0u);
    EXPECT_EQ(kestub::cm_entries(808).size(), 3u);

    EXPECT_EQ(ke_omci_tapi_vlan_del(2, 100), 0u);
    auto left = kestub::cm_entries(808);
    ASSERT_EQ(left.size(), 2u);
    EXPECT_EQ(left[0], cm_record(20, {{8, 2}, {12, 200}}));
    EXPECT_EQ(left[1], cm_record(20, {{8, 3}, {12, 100}}));

    // Removing it again fails in the store, which the caller never sees.
    kestub::log_set(true);
    uint32_t ret = 9;
    std::string out = printed([&] { ret = ke_omci_tapi_vlan_del(2, 100); });
    EXPECT_EQ(ret, 0u);
    EXPECT_TRUE(matches_at_line(out, "[ke_omci_tapi_vlan_del(%d)]ke_omci_tapi_vlan_del[%d] del "
                                     "port=2,vid=100 fail, ret=" +
                                         std::to_string(static_cast<int>(kestub::kCmNoEntry)) +
                                         "\n"))
        << out;
}

TEST_F(VlanRules, FilterModeReadsBackWhatWasWritten)
{
    EXPECT_EQ(ke_omci_tapi_vlan_filter_set(3, 0x10), 0u);
    EXPECT_EQ(ke_omci_tapi_vlan_filter_set(4, 0x20), 0u);
    EXPECT_EQ(ke_omci_tapi_vlan_filter_set(3, 0x30), 0u);
    uint32_t mode3 = 0, mode4 = 0;
    EXPECT_EQ(ke_omci_tapi_vlan_filter_get(3, &mode3), 0u);
    EXPECT_EQ(ke_omci_tapi_vlan_filter_get(4, &mode4), 0u);
    EXPECT_EQ(mode3, 0x30u);
    EXPECT_EQ(mode4, 0x20u);

    // The Get carries the port as key and a zero mask, at full size.
    const kestub::CmCall &get = kestub::cm_calls().back();
    EXPECT_EQ(get.op, CmOp::Get);
    EXPECT_EQ(get.table, 807u);
    EXPECT_EQ(get.size, 20u);
    EXPECT_EQ(get.record, cm_record(20, {{8, 4}}));
}

TEST_F(VlanRules, FailedFilterReadLeavesTheOutputAndSucceeds)
{
    kestub::log_set(false);
    kestub::cm_preload(807, cm_record(20, {{8, 3}, {12, 0x55}}).data(), 20);
    kestub::cm_fail(807, 0x123);
    uint32_t mode = 0xCAFEF00D;
    uint32_t ret = 9;
    std::string out = printed([&] { ret = ke_omci_tapi_vlan_filter_get(3, &mode); });
    EXPECT_EQ(ret, 0u);
    EXPECT_EQ(mode, 0xCAFEF00Du);
    EXPECT_TRUE(matches_at_line(out, "ke_omci_tapi_vlan_filter_get[%d] fail, ret=291\n")) << out;

    // A port with no entry is the same failure; a null output is no harm.
    out = printed([&] { ret = ke_omci_tapi_vlan_filter_get(5, &mode); });
    EXPECT_EQ(mode, 0xCAFEF00Du);
    EXPECT_FALSE(out.empty());
    EXPECT_EQ(ke_omci_tapi_vlan_filter_get(3, nullptr), 0u);
}

TEST_F(VlanRules, InertNamesTouchNothing)
{
    kestub::log_set(true);
    std::string out = printed([] {
        EXPECT_EQ(ke_omci_tapi_deftag_get(), 0u);
        EXPECT_EQ(ke_omci_tapi_tpid_set(), 0u);
        EXPECT_EQ(ke_omci_tapi_untag_addtag_set(), 0u);
        EXPECT_EQ(ke_omci_tapi_untag_addtag_del(), 0u);
    });
    EXPECT_EQ(out, "");
    EXPECT_TRUE(kestub::cm_calls().empty());
    EXPECT_TRUE(kestub::ipc_calls().empty());
}

}  // namespace
