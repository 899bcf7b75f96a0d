// Every VLAN and port-mode writer: the one record it sends (every byte not
// named zero, at the table's full size), and what a failed operation
// prints in the family's style.
#include <cstring>
#include <functional>
#include <string>

#include "ke_omci_tapi/vlan.h"
#include "stub_test.h"

namespace {

using kestub::CmOp;
using ketest::cm_record;

constexpr uint32_t kNo = KE_VLAN_NO_MATCH;
// Customer VLAN 101, no second match, third match 303, S-VLAN 202,
// S-priority 5, TPID enable 7.
constexpr st_vlan_rule kRule = {101, kNo, 303, 202, 5, 7};

// A rule record of port 3 with the given words.
std::vector<uint8_t> rule(std::initializer_list<std::pair<size_t, uint32_t>> words)
{
    std::vector<uint8_t> rec = cm_record(68, words);
    rec[8] = 3;
    return rec;
}

// Mode 1 for port 255 in exactly ten bytes, unaligned: a byte other than
// 4 to 7 and 9 read shows as 0xAA, a read past the end or a misaligned
// word is a sanitizer report.
st_port_mode_update *mode_update()
{
    static uint8_t block[11];
    std::memset(block, 0xAA, sizeof block);
    const uint32_t mode = 1;
    std::memcpy(block + 5, &mode, 4);
    block[10] = 0xFF;
    return reinterpret_cast<st_port_mode_update *>(block + 1);
}

struct Row {
    const char *name;
    std::function<uint32_t()> call;
    CmOp op;
    uint32_t table;
    std::vector<uint8_t> record;
    const char *failure;  // "%s": the function, "%d": its source line
};

const std::vector<Row> &rows()
{
    static const std::vector<Row> rows = {
        {"ke_omci_tapi_vlan_filter_set", [] { return ke_omci_tapi_vlan_filter_set(3, 0x11); },
         CmOp::Set, 807, cm_record(20, {{8, 3}, {12, 0x11}}), "%s[%d] fail, ret=-2\n"},
        {"ke_omci_tapi_defpri_set", [] { return ke_omci_tapi_defpri_set(4, 6); }, CmOp::Set, 811,
         cm_record(20, {{8, 4}, {12, 6}}),
         "%s[%d] Set defpri config port=4 pri=6 fail, ret=-2\n"},
        {"ke_omci_tapi_tagact_set", [] { return ke_omci_tapi_tagact_set(5, 1, 2, 3); }, CmOp::Set,
         809, cm_record(28, {{8, 5}, {12, 1}, {16, 2}, {20, 3}}),
         "%s[%d] config tagact port=5,tag_type=1,dir=2,act=3 fail, ret=-2\n"},
        // VLAN 100, priority 5, TPID type 2: stored in the reverse order.
        {"ke_omci_tapi_deftag_set", [] { return ke_omci_tapi_deftag_set(6, 100, 5, 2); },
         CmOp::Set, 810, cm_record(36, {{8, 6}, {12, 2}, {16, 5}, {20, 100}}),
         "%s[%d] config tagact port=6,def_vlan_id=100,def_pri=5,tpid_type=2 fail, ret=-2\n"},
        {"ke_omci_tapi_vlan_translation_set",
         [] { return ke_omci_tapi_vlan_translation_set(3, 101, 202, 7); }, CmOp::Set, 813,
         rule({{12, 1}, {16, 101}, {36, 7}, {40, 2}, {52, 1}, {56, 202}, {60, 2}}),
         "%s[%d] config traslation port=3,svlan=202,act_tpid_en=7,act_tpid_type=2 fail, "
         "ret=-2\n"},
        {"ke_omci_tapi_vlan_translation_del",
         [] { return ke_omci_tapi_vlan_translation_del(3, 101); }, CmOp::Del, 813,
         rule({{12, 1}, {16, 101}}), "%s[%d] del traslation port=3,cvlan=101 fail, ret=-2\n"},
        {"ke_omci_tapi_vlan_translation_opt_set",
         [] { return ke_omci_tapi_vlan_translation_opt_set(3, &kRule); }, CmOp::Set, 813,
         rule({{12, 1}, {16, 101}, {24, kNo}, {28, 1}, {32, 303}, {36, 7}, {40, 2}, {44, 1},
               {48, 5}, {52, 1}, {56, 202}, {60, 2}}),
         "%s[%d] config traslation opt port=3,svlan=202,act_tpid_en=7,act_tpid_type=2 fail, "
         "ret=-2\n"},
        {"ke_omci_tapi_vlan_translation_opt_del",
         [] { return ke_omci_tapi_vlan_translation_opt_del(3, &kRule); }, CmOp::Del, 813,
         rule({{12, 1}, {16, 101}, {24, kNo}, {28, 1}, {32, 303}, {36, 7}, {40, 2}, {52, 1},
               {56, 202}}),
         "%s[%d] del traslation opt port=3,svlan=202,act_tpid_en=7,act_tpid_type=2 fail, "
         "ret=-2\n"},
        {"ke_omci_tapi_port_qinq_set", [] { return ke_omci_tapi_port_qinq_set(3, 5, 202, 7); },
         CmOp::Set, 814, rule({{36, 7}, {40, 2}, {44, 1}, {48, 5}, {52, 1}, {56, 202}}),
         "%s[%d] set qinq port=3,ui_spri=5,svlan=202,act_tpid_en=7 fail, ret=-2\n"},
        {"ke_omci_tapi_port_qinq_del", [] { return ke_omci_tapi_port_qinq_del(3, 101); },
         CmOp::Del, 814, rule({{12, 1}, {16, 101}}),
         "%s[%d] del qinq port=3,cvlan=101 fail, ret=-2\n"},
        // The same words as the translation rule but the second TPID type.
        {"ke_omci_tapi_qinq_set", [] { return ke_omci_tapi_qinq_set(3, 101, 202, 7); }, CmOp::Set,
         814, rule({{12, 1}, {16, 101}, {36, 7}, {40, 2}, {52, 1}, {56, 202}}),
         "%s[%d] set qinq port=3,svlan=202,act_tpid_en=7 fail, ret=-2\n"},
        {"ke_omci_tapi_qinq_del", [] { return ke_omci_tapi_qinq_del(3, 101); }, CmOp::Del, 814,
         rule({{12, 1}, {16, 101}}), "%s[%d] del qinq port=3,cvlan=101 fail, ret=-2\n"},
        {"ke_omci_tapi_qinq_full_set", [] { return ke_omci_tapi_qinq_full_set(3, &kRule); },
         CmOp::Set, 814,
         rule({{12, 1}, {16, 101}, {24, kNo}, {28, 1}, {32, 303}, {36, 7}, {44, 1}, {48, 5},
               {52, 1}, {56, 202}, {60, 2}}),
         "%s[%d] set qinq full port=3,cvlan=101,svlan=202,tpid_en=7 fail, ret=-2\n"},
        {"ke_omci_tapi_qinq_full_del", [] { return ke_omci_tapi_qinq_full_del(3, &kRule); },
         CmOp::Del, 814,
         rule({{12, 1}, {16, 101}, {24, kNo}, {28, 1}, {32, 303}, {36, 7}, {44, 1}, {48, 5},
               {52, 1}, {56, 202}}),
         "%s[%d] del qinq full port=3,cvlan=101,svlan=202,tpid_en=7 fail, ret=-2\n"},
        // All three match words enabled, also the one that is no match.
        {"ke_omci_tapi_qinq_vlan_set", [] { return ke_omci_tapi_qinq_vlan_set(3, &kRule); },
         CmOp::Set, 814,
         rule({{12, 1}, {16, 101}, {20, 1}, {24, kNo}, {28, 1}, {32, 303}, {36, 7}, {40, 2},
               {44, 1}, {48, 5}, {52, 1}, {56, 202}}),
         "%s[%d] set qinq full port=3,cvlan=101,svlan=202,tpid_en=7 fail, ret=-2\n"},
        {"ke_omci_tapi_qinq_vlan_del", [] { return ke_omci_tapi_qinq_vlan_del(3, &kRule); },
         CmOp::Del, 814,
         rule({{12, 1}, {16, 101}, {20, 1}, {24, kNo}, {28, 1}, {32, 303}, {36, 7}, {40, 2},
               {44, 1}, {48, 5}, {52, 1}, {56, 202}}),
         "%s[%d] del qinq full port=3,cvlan=101,svlan=202,tpid_en=7 fail, ret=-2\n"},
        {"ke_omci_update_the_cm_table", [] { return ke_omci_update_the_cm_table(mode_update()); },
         CmOp::Set, 834, cm_record(52, {{8, 255}, {44, 1}, {48, 16}}),
         "set IGD_CO_PORT_INFO_TAB error\n"},
        {"ke_omci_init_the_port_to_sfu", [] { return ke_omci_init_the_port_to_sfu(6); },
         CmOp::Add, 815, ketest::words({0, 6}), "Add IGD_CO_VLAN_FLUSH_ALL_TAB error\n"},
        {"ke_omci_restore_the_port_to_hgu", [] { return ke_omci_restore_the_port_to_hgu(6); },
         CmOp::Del, 815, ketest::words({0, 6}), "Del IGD_CO_VLAN_FLUSH_ALL_TAB error\n"},
        {"ke_omci_notify_sfu_trunk", [] { return ke_omci_notify_sfu_trunk(6, 9); }, CmOp::Set,
         816, ketest::words({0, 6, 9}), "Set IGD_CO_VLAN_TRUNK_TAB error\n"},
    };
    return rows;
}

class VlanWriters : public ketest::StubTest {};

TEST_F(VlanWriters, SendTheirRecordAndReportAFailureInTheirStyle)
{
    for (const Row &row : rows()) {
        for (bool fail : {false, true}) {
            SCOPED_TRACE(std::string(row.name) + (fail ? " failing" : ""));
            kestub::reset();
            kestub::log_set(!fail);  // failure lines never ask the gate
            if (fail)
                kestub::cm_fail(row.table, 0xFFFFFFFE);
            else if (row.op == CmOp::Del)  // a removal finds what it sends
                kestub::cm_preload(row.table, row.record.data(), row.record.size());
            uint32_t ret = 9;
            std::string out = ketest::printed([&] { ret = row.call(); });
            EXPECT_TRUE(ketest::one_cm_call(row.op, row.table, row.record));
            EXPECT_TRUE(fail || ret == 0) << ret;  // a failure's status is the fault sweep's
            std::string failure = row.failure;
            if (failure.rfind("%s", 0) == 0)
                failure.replace(0, 2, row.name);
            EXPECT_TRUE(ketest::matches_at_line(out, fail ? failure : "")) << out;
            EXPECT_EQ(kestub::log_queries(), 0u);
        }
    }
}

TEST_F(VlanWriters, InertNamesAndNullRulesWriteNothing)
{
    kestub::log_set(true);
    std::string out = ketest::printed([] {
        for (auto fn : {ke_omci_tapi_deftag_get, ke_omci_tapi_tpid_set,
                        ke_omci_tapi_untag_addtag_set, ke_omci_tapi_untag_addtag_del,
                        ke_omci_tapi_tls_ctag_set, ke_omci_tapi_tls_ctag_del,
                        ke_omci_tapi_tls_stag_set, ke_omci_tapi_tls_stag_del}) {
            EXPECT_EQ(fn(), 0u);
            EXPECT_EQ(fn(1u, 0x8100u, nullptr), 0u);  // the OMCI stack's arguments, ignored
        }
        for (auto fn : {ke_omci_tapi_vlan_translation_opt_set,
                        ke_omci_tapi_vlan_translation_opt_del, ke_omci_tapi_qinq_full_set,
                        ke_omci_tapi_qinq_full_del, ke_omci_tapi_qinq_vlan_set,
                        ke_omci_tapi_qinq_vlan_del})
            EXPECT_EQ(fn(1, nullptr), 0u);
        EXPECT_EQ(ke_omci_update_the_cm_table(nullptr), 0x70000000u);
    });
    EXPECT_EQ(out, "");
    EXPECT_TRUE(kestub::cm_calls().empty());
    EXPECT_TRUE(kestub::ipc_calls().empty());
}

}  // namespace
