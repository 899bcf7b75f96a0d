// VLAN translation (table 813) and QinQ (table 814) rules: each request's
// record word by word, the conditional match words, the failure lines,
// and removal through the store.
#include <functional>
#include <string>

#include "ke_omci_tapi/vlan.h"
#include "stub_test.h"

namespace {

using kestub::CmOp;
using ketest::cm_record;
using ketest::matches_at_line;
using ketest::printed;

class VlanTranslation : public ketest::StubTest {};

constexpr uint32_t kNo = KE_VLAN_NO_MATCH;

// Customer VLAN 101, no second match, third match 303, S-VLAN 202,
// S-priority 5, TPID enable 7.
constexpr st_vlan_rule kRule = {101, kNo, 303, 202, 5, 7};

struct Row {
    const char *name;
    std::function<uint32_t()> call;
    uint32_t table;
    CmOp op;
    std::vector<std::pair<size_t, uint32_t>> words;  // besides port 3 at 8
    const char *fail_line;                           // after "<name>[%d] "
};

std::vector<Row> rows()
{
    return {
        {"ke_omci_tapi_vlan_translation_set",
         [] { return ke_omci_tapi_vlan_translation_set(3, 101, 202, 7); }, 813, CmOp::Set,
         {{12, 1}, {16, 101}, {36, 7}, {40, 2}, {52, 1}, {56, 202}, {60, 2}},
         "config traslation port=3,svlan=202,act_tpid_en=7,act_tpid_type=2 fail, ret=-2\n"},
        {"ke_omci_tapi_vlan_translation_del",
         [] { return ke_omci_tapi_vlan_translation_del(3, 101); }, 813, CmOp::Del,
         {{12, 1}, {16, 101}},
         "del traslation port=3,cvlan=101 fail, ret=-2\n"},
        {"ke_omci_tapi_vlan_translation_opt_set",
         [] { return ke_omci_tapi_vlan_translation_opt_set(3, &kRule); }, 813, CmOp::Set,
         {{12, 1}, {16, 101}, {24, kNo}, {28, 1}, {32, 303}, {36, 7}, {40, 2}, {44, 1}, {48, 5},
          {52, 1}, {56, 202}, {60, 2}},
         "config traslation opt port=3,svlan=202,act_tpid_en=7,act_tpid_type=2 fail, ret=-2\n"},
        {"ke_omci_tapi_vlan_translation_opt_del",
         [] { return ke_omci_tapi_vlan_translation_opt_del(3, &kRule); }, 813, CmOp::Del,
         {{12, 1}, {16, 101}, {24, kNo}, {28, 1}, {32, 303}, {36, 7}, {40, 2}, {52, 1},
          {56, 202}},
         "del traslation opt port=3,svlan=202,act_tpid_en=7,act_tpid_type=2 fail, ret=-2\n"},
        {"ke_omci_tapi_port_qinq_set", [] { return ke_omci_tapi_port_qinq_set(3, 5, 202, 7); },
         814, CmOp::Set,
         {{36, 7}, {40, 2}, {44, 1}, {48, 5}, {52, 1}, {56, 202}},
         "set qinq port=3,ui_spri=5,svlan=202,act_tpid_en=7 fail, ret=-2\n"},
        {"ke_omci_tapi_port_qinq_del", [] { return ke_omci_tapi_port_qinq_del(3, 101); }, 814,
         CmOp::Del, {{12, 1}, {16, 101}},
         "del qinq port=3,cvlan=101 fail, ret=-2\n"},
        {"ke_omci_tapi_qinq_set", [] { return ke_omci_tapi_qinq_set(3, 101, 202, 7); }, 814,
         CmOp::Set, {{12, 1}, {16, 101}, {36, 7}, {40, 2}, {52, 1}, {56, 202}},
         "set qinq port=3,svlan=202,act_tpid_en=7 fail, ret=-2\n"},
        {"ke_omci_tapi_qinq_del", [] { return ke_omci_tapi_qinq_del(3, 101); }, 814, CmOp::Del,
         {{12, 1}, {16, 101}},
         "del qinq port=3,cvlan=101 fail, ret=-2\n"},
        {"ke_omci_tapi_qinq_full_set", [] { return ke_omci_tapi_qinq_full_set(3, &kRule); }, 814,
         CmOp::Set,
         {{12, 1}, {16, 101}, {24, kNo}, {28, 1}, {32, 303}, {36, 7}, {44, 1}, {48, 5}, {52, 1},
          {56, 202}, {60, 2}},
         "set qinq full port=3,cvlan=101,svlan=202,tpid_en=7 fail, ret=-2\n"},
        {"ke_omci_tapi_qinq_full_del", [] { return ke_omci_tapi_qinq_full_del(3, &kRule); }, 814,
         CmOp::Del,
         {{12, 1}, {16, 101}, {24, kNo}, {28, 1}, {32, 303}, {36, 7}, {44, 1}, {48, 5}, {52, 1},
          {56, 202}},
         "del qinq full port=3,cvlan=101,svlan=202,tpid_en=7 fail, ret=-2\n"},
        {"ke_omci_tapi_qinq_vlan_set", [] { return ke_omci_tapi_qinq_vlan_set(3, &kRule); }, 814,
         CmOp::Set,
         {{12, 1}, {16, 101}, {20, 1}, {24, kNo}, {28, 1}, {32, 303}, {36, 7}, {40, 2}, {44, 1},
          {48, 5}, {52, 1}, {56, 202}},
         "set qinq full port=3,cvlan=101,svlan=202,tpid_en=7 fail, ret=-2\n"},
        {"ke_omci_tapi_qinq_vlan_del", [] { return ke_omci_tapi_qinq_vlan_del(3, &kRule); }, 814,
         CmOp::Del,
         {{12, 1}, {16, 101}, {20, 1}, {24, kNo}, {28, 1}, {32, 303}, {36, 7}, {40, 2}, {44, 1},
          {48, 5}, {52, 1}, {56, 202}},
         "del qinq full port=3,cvlan=101,svlan=202,tpid_en=7 fail, ret=-2\n"},
    };
}

std::vector<uint8_t> rule_record(const std::vector<std::pair<size_t, uint32_t>> &words)
{
    std::vector<uint8_t> rec = cm_record(68, {{8, 3}});
    for (const auto &w : words)
        std::memcpy(rec.data() + w.first, &w.second, 4);
    return rec;
}

TEST_F(VlanTranslation, EachRequestSendsExactlyItsWords)
{
    for (const Row &row : rows()) {
        kestub::reset();
        kestub::log_set(true);
        // A removal finds the very record it sends.
        const std::vector<uint8_t> expected = rule_record(row.words);
        if (row.op == CmOp::Del)
            kestub::cm_preload(row.table, expected.data(), expected.size());
        uint32_t ret = 9;
        std::string out = printed([&] { ret = row.call(); });
        EXPECT_EQ(ret, 0u) << row.name;
        EXPECT_EQ(out, "") << row.name;
        EXPECT_EQ(kestub::cm_entries(row.table).size(), row.op == CmOp::Set ? 1u : 0u)
            << row.name;
        ASSERT_EQ(kestub::cm_calls().size(), 1u) << row.name;
        const kestub::CmCall &c = kestub::cm_calls()[0];
        EXPECT_EQ(c.op, row.op) << row.name;
        EXPECT_EQ(c.table, row.table) << row.name;
        EXPECT_EQ(c.size, 68u) << row.name;
        EXPECT_EQ(c.record, expected) << row.name;
    }
}

TEST_F(VlanTranslation, FailurePrintsItsLineWithoutTheGateAndStillSucceeds)
{
    for (const Row &row : rows()) {
        kestub::reset();
        kestub::log_set(false);
        kestub::cm_fail(row.table, 0xFFFFFFFE);
        uint32_t ret = 9;
        std::string out = printed([&] { ret = row.call(); });
        EXPECT_EQ(ret, 0u) << row.name;
        std::string line = std::string(row.name) + "[%d] " + row.fail_line;
        EXPECT_TRUE(matches_at_line(out, line)) << out;
        EXPECT_EQ(kestub::log_queries(), 0u) << row.name;
    }
}

TEST_F(VlanTranslation, MatchWordsAreEnabledOnlyWhenSetExceptInTheVlanRule)
{
    const st_vlan_rule none = {kNo, kNo, kNo, 9, 1, 0};
    const st_vlan_rule all = {0, 1, 2, 9, 1, 0};
    struct Case {
        const char *name;
        uint32_t (*call)(uint32_t, const st_vlan_rule *);
        const st_vlan_rule *rule;
        uint32_t enables[3];  // words at 12, 20, 28
    };
    const Case cases[] = {
        {"opt_set none", ke_omci_tapi_vlan_translation_opt_set, &none, {0, 0, 0}},
        {"opt_del none", ke_omci_tapi_vlan_translation_opt_del, &none, {0, 0, 0}},
        {"full_set none", ke_omci_tapi_qinq_full_set, &none, {0, 0, 0}},
        {"full_del none", ke_omci_tapi_qinq_full_del, &none, {0, 0, 0}},
        {"vlan_set none", ke_omci_tapi_qinq_vlan_set, &none, {1, 1, 1}},
        {"vlan_del none", ke_omci_tapi_qinq_vlan_del, &none, {1, 1, 1}},
        {"opt_set all", ke_omci_tapi_vlan_translation_opt_set, &all, {1, 1, 1}},
        {"full_set all", ke_omci_tapi_qinq_full_set, &all, {1, 1, 1}},
    };
    for (const Case &c : cases) {
        kestub::reset();
        printed([&] { c.call(3, c.rule); });
        ASSERT_EQ(kestub::cm_calls().size(), 1u) << c.name;
        const std::vector<uint8_t> &rec = kestub::cm_calls()[0].record;
        EXPECT_EQ(ketest::u32_at(rec, 12), c.enables[0]) << c.name;
        EXPECT_EQ(ketest::u32_at(rec, 20), c.enables[1]) << c.name;
        EXPECT_EQ(ketest::u32_at(rec, 28), c.enables[2]) << c.name;
        // The values travel whether enabled or not.
        EXPECT_EQ(ketest::u32_at(rec, 16), c.rule->ui_cvlan) << c.name;
        EXPECT_EQ(ketest::u32_at(rec, 24), c.rule->ui_match2) << c.name;
        EXPECT_EQ(ketest::u32_at(rec, 32), c.rule->ui_match3) << c.name;
    }
}

TEST_F(VlanTranslation, ScalarCustomerVlanIsAlwaysAMatch)
{
    ke_omci_tapi_vlan_translation_set(1, kNo, 2, 0);
    printed([] { ke_omci_tapi_qinq_del(1, kNo); });
    ASSERT_EQ(kestub::cm_calls().size(), 2u);
    for (const kestub::CmCall &c : kestub::cm_calls()) {
        EXPECT_EQ(ketest::u32_at(c.record, 12), 1u);
        EXPECT_EQ(ketest::u32_at(c.record, 16), kNo);
    }
}

TEST_F(VlanTranslation, TranslationAndQinqDifferOnlyInTheSecondTpidTypeAndTable)
{
    ke_omci_tapi_vlan_translation_set(2, 10, 20, 1);
    ke_omci_tapi_qinq_set(2, 10, 20, 1);
    ASSERT_EQ(kestub::cm_calls().size(), 2u);
    const kestub::CmCall &translation = kestub::cm_calls()[0];
    const kestub::CmCall &qinq = kestub::cm_calls()[1];
    EXPECT_EQ(translation.table, 813u);
    EXPECT_EQ(qinq.table, 814u);
    std::vector<uint8_t> expected = translation.record;
    std::memset(expected.data() + 60, 0, 4);
    EXPECT_EQ(ketest::u32_at(translation.record, 60), 2u);
    EXPECT_EQ(qinq.record, expected);
}

TEST_F(VlanTranslation, RulesAreRemovedByTheirMatch)
{
    // Two translation rules of one port, told apart by the customer VLAN.
    ke_omci_tapi_vlan_translation_set(3, 101, 202, 1);
    ke_omci_tapi_vlan_translation_set(3, 102, 203, 1);
    ke_omci_tapi_vlan_translation_set(3, 101, 204, 1);  // replaces the first
    auto entries = kestub::cm_entries(813);
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(ketest::u32_at(entries[0], 56), 204u);
    ke_omci_tapi_vlan_translation_del(3, 101);
    entries = kestub::cm_entries(813);
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(ketest::u32_at(entries[0], 16), 102u);

    // A full QinQ rule goes away with the removal of the same rule.
    ke_omci_tapi_qinq_full_set(4, &kRule);
    EXPECT_EQ(kestub::cm_entries(814).size(), 1u);
    ke_omci_tapi_qinq_full_del(4, &kRule);
    EXPECT_TRUE(kestub::cm_entries(814).empty());

    // Nothing left to remove: the store's refusal is printed, not returned.
    uint32_t ret = 9;
    std::string out = printed([&] { ret = ke_omci_tapi_qinq_full_del(4, &kRule); });
    EXPECT_EQ(ret, 0u);
    EXPECT_TRUE(matches_at_line(out, "ke_omci_tapi_qinq_full_del[%d] del qinq full port=4,"
                                     "cvlan=101,svlan=202,tpid_en=7 fail, ret=" +
                                         std::to_string(static_cast<int>(kestub::kCmNoEntry)) +
                                         "\n"))
        << out;
}

TEST_F(VlanTranslation, NullRuleAndInertNamesWriteNothing)
{
    kestub::log_set(true);
    std::string out = printed([] {
        EXPECT_EQ(ke_omci_tapi_vlan_translation_opt_set(1, nullptr), 0u);
        EXPECT_EQ(ke_omci_tapi_vlan_translation_opt_del(1, nullptr), 0u);
        EXPECT_EQ(ke_omci_tapi_qinq_full_set(1, nullptr), 0u);
        EXPECT_EQ(ke_omci_tapi_qinq_full_del(1, nullptr), 0u);
        EXPECT_EQ(ke_omci_tapi_qinq_vlan_set(1, nullptr), 0u);
        EXPECT_EQ(ke_omci_tapi_qinq_vlan_del(1, nullptr), 0u);
        EXPECT_EQ(ke_omci_tapi_tls_ctag_set(), 0u);
        EXPECT_EQ(ke_omci_tapi_tls_ctag_del(), 0u);
        EXPECT_EQ(ke_omci_tapi_tls_stag_set(), 0u);
        EXPECT_EQ(ke_omci_tapi_tls_stag_del(), 0u);
    });
    EXPECT_EQ(out, "");
    EXPECT_TRUE(kestub::cm_calls().empty());
}

}  // namespace
