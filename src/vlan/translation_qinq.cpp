// VLAN translation rules (table 813) and QinQ rules (table 814).  Both
// tables hold the same rule record; the requests differ only in which of
// its words they write, so each request is one row of flags below.
#include <array>

#include "tables.h"

namespace cm = ke::cm;
using namespace ke::vlan;

namespace {

// Which match words a request writes.
enum class Match {
    None,   // no match condition
    Cvlan,  // the customer VLAN only, enabled whatever its value
    IfSet,  // all three, each enabled unless it is KE_VLAN_NO_MATCH
    All,    // all three, all enabled
};

// Action words a request writes.
enum ActionWords : uint32_t {
    kTpidEn = 1u << 0,     // the rule's TPID enable
    kTpidType = 1u << 1,   // TPID type 2
    kSpri = 1u << 2,       // outer priority, enabled
    kSvlan = 1u << 3,      // outer VLAN, enabled
    kTpidType2 = 1u << 4,  // second TPID type 2
};

enum class Op { Set, Del };

struct RuleRequest {
    uint32_t table;
    Op op;
    Match match;
    uint32_t actions;
};

using Req = RuleRequest;
constexpr uint32_t kTranslation = cm::IGD_CO_VLAN_TRANSLATION_TAB;
constexpr uint32_t kQinq = cm::IGD_CO_VLAN_QINQ_TAB;

// clang-format off
constexpr Req kTranslationSet   {kTranslation, Op::Set, Match::Cvlan, kTpidEn | kTpidType | kSvlan | kTpidType2};
constexpr Req kTranslationDel   {kTranslation, Op::Del, Match::Cvlan, 0};
constexpr Req kTranslationOptSet{kTranslation, Op::Set, Match::IfSet, kTpidEn | kTpidType | kSpri | kSvlan | kTpidType2};
constexpr Req kTranslationOptDel{kTranslation, Op::Del, Match::IfSet, kTpidEn | kTpidType | kSvlan};
constexpr Req kPortQinqSet      {kQinq,        Op::Set, Match::None,  kTpidEn | kTpidType | kSpri | kSvlan};
constexpr Req kPortQinqDel      {kQinq,        Op::Del, Match::Cvlan, 0};
constexpr Req kQinqSet          {kQinq,        Op::Set, Match::Cvlan, kTpidEn | kTpidType | kSvlan};
constexpr Req kQinqDel          {kQinq,        Op::Del, Match::Cvlan, 0};
constexpr Req kQinqFullSet      {kQinq,        Op::Set, Match::IfSet, kTpidEn | kSpri | kSvlan | kTpidType2};
constexpr Req kQinqFullDel      {kQinq,        Op::Del, Match::IfSet, kTpidEn | kSpri | kSvlan};
constexpr Req kQinqVlanSet      {kQinq,        Op::Set, Match::All,   kTpidEn | kTpidType | kSpri | kSvlan};
constexpr Req kQinqVlanDel      {kQinq,        Op::Del, Match::All,   kTpidEn | kTpidType | kSpri | kSvlan};
// clang-format on

// The TPID type this library writes, also shown in the translation lines.
constexpr uint32_t kTpidTypeValue = 2;

struct MatchWord {
    uint32_t enable;
    uint32_t value;
};
constexpr std::array<MatchWord, 3> kMatchWords = {{
    {KE_VLAN_AT(st_vlan_rule_tab, ui_cvlan_en), KE_VLAN_AT(st_vlan_rule_tab, ui_cvlan)},
    {KE_VLAN_AT(st_vlan_rule_tab, ui_match2_en), KE_VLAN_AT(st_vlan_rule_tab, ui_match2)},
    {KE_VLAN_AT(st_vlan_rule_tab, ui_match3_en), KE_VLAN_AT(st_vlan_rule_tab, ui_match3)},
}};

constexpr size_t match_words(Match m)
{
    return m == Match::None ? 0 : m == Match::Cvlan ? 1 : kMatchWords.size();
}

template <uint32_t Table>
uint32_t send_rule(const RuleRequest &req, uint32_t port, const st_vlan_rule &rule)
{
    RuleRecord<Table> rec;
    rec.put_port(port);

    const std::array<uint32_t, 3> match = {rule.ui_cvlan, rule.ui_match2, rule.ui_match3};
    for (size_t i = 0; i < match_words(req.match); ++i) {
        rec.put_u32(kMatchWords[i].value, match[i]);
        if (req.match != Match::IfSet || match[i] != KE_VLAN_NO_MATCH)
            rec.put_u32(kMatchWords[i].enable, 1);
    }
    if (req.actions & kTpidEn)
        rec.put_u32(KE_VLAN_AT(st_vlan_rule_tab, ui_act_tpid_en), rule.ui_act_tpid_en);
    if (req.actions & kTpidType)
        rec.put_u32(KE_VLAN_AT(st_vlan_rule_tab, ui_act_tpid_type), kTpidTypeValue);
    if (req.actions & kSpri) {
        rec.put_u32(KE_VLAN_AT(st_vlan_rule_tab, ui_spri_en), 1);
        rec.put_u32(KE_VLAN_AT(st_vlan_rule_tab, ui_spri), rule.ui_spri);
    }
    if (req.actions & kSvlan) {
        rec.put_u32(KE_VLAN_AT(st_vlan_rule_tab, ui_svlan_en), 1);
        rec.put_u32(KE_VLAN_AT(st_vlan_rule_tab, ui_svlan), rule.ui_svlan);
    }
    if (req.actions & kTpidType2)
        rec.put_u32(KE_VLAN_AT(st_vlan_rule_tab, ui_tpid_type2), kTpidTypeValue);

    return req.op == Op::Set ? cm::set(rec) : cm::del(rec);
}

// Writes or removes the rule of req on port; the operation's result.
uint32_t send_rule(const RuleRequest &req, uint32_t port, const st_vlan_rule &rule)
{
    return req.table == kTranslation ? send_rule<kTranslation>(req, port, rule)
                                     : send_rule<kQinq>(req, port, rule);
}

// The rule of the functions that take their values as arguments; a word
// its request does not write is never read.
st_vlan_rule rule_of(uint32_t cvlan, uint32_t svlan, uint32_t spri, uint32_t tpid_en)
{
    return st_vlan_rule{cvlan, KE_VLAN_NO_MATCH, KE_VLAN_NO_MATCH, svlan, spri, tpid_en};
}

// Removal of the rule that matches a customer VLAN; its failure line shows
// the port and the VLAN.
uint32_t remove_by_cvlan(ke::Site site, const RuleRequest &req, uint32_t port, uint32_t cvlan,
                         const char *format)
{
    return cm::report_ungated(site, send_rule(req, port, rule_of(cvlan, 0, 0, 0)), format, port,
                              cvlan);
}

// A caller's translation rule; its failure line shows the port, the outer
// VLAN, the TPID enable and type.  No rule, no write.
uint32_t write_opt_rule(ke::Site site, const RuleRequest &req, uint32_t port,
                        const st_vlan_rule *rule, const char *format)
{
    if (rule == nullptr)
        return 0;
    return cm::report_ungated(site, send_rule(req, port, *rule), format, port, rule->ui_svlan,
                              rule->ui_act_tpid_en, kTpidTypeValue);
}

// A caller's QinQ rule; its failure line shows the port, the customer and
// outer VLANs and the TPID enable.  No rule, no write.
uint32_t write_full_rule(ke::Site site, const RuleRequest &req, uint32_t port,
                         const st_vlan_rule *rule, const char *format)
{
    if (rule == nullptr)
        return 0;
    return cm::report_ungated(site, send_rule(req, port, *rule), format, port, rule->ui_cvlan,
                              rule->ui_svlan, rule->ui_act_tpid_en);
}

}  // namespace

extern "C" {

uint32_t ke_omci_tapi_vlan_translation_set(uint32_t ui_port, uint32_t ui_cvlan, uint32_t ui_svlan,
                                           uint32_t ui_act_tpid_en)
{
    uint32_t ret =
        send_rule(kTranslationSet, ui_port, rule_of(ui_cvlan, ui_svlan, 0, ui_act_tpid_en));
    return cm::report_ungated(
        KE_SITE, ret,
        "%s[%d] config traslation port=%u,svlan=%u,act_tpid_en=%u,act_tpid_type=%u fail, "
        "ret=%d\n",
        ui_port, ui_svlan, ui_act_tpid_en, kTpidTypeValue);
}

uint32_t ke_omci_tapi_vlan_translation_del(uint32_t ui_port, uint32_t ui_cvlan)
{
    return remove_by_cvlan(KE_SITE, kTranslationDel, ui_port, ui_cvlan,
                           "%s[%d] del traslation port=%u,cvlan=%u fail, ret=%d\n");
}

uint32_t ke_omci_tapi_vlan_translation_opt_set(uint32_t ui_port, const st_vlan_rule *pst_rule)
{
    return write_opt_rule(KE_SITE, kTranslationOptSet, ui_port, pst_rule,
                          "%s[%d] config traslation opt port=%u,svlan=%u,act_tpid_en=%u,"
                          "act_tpid_type=%u fail, ret=%d\n");
}

uint32_t ke_omci_tapi_vlan_translation_opt_del(uint32_t ui_port, const st_vlan_rule *pst_rule)
{
    return write_opt_rule(KE_SITE, kTranslationOptDel, ui_port, pst_rule,
                          "%s[%d] del traslation opt port=%u,svlan=%u,act_tpid_en=%u,"
                          "act_tpid_type=%u fail, ret=%d\n");
}

uint32_t ke_omci_tapi_port_qinq_set(uint32_t ui_port, uint32_t ui_spri, uint32_t ui_svlan,
                                    uint32_t ui_act_tpid_en)
{
    uint32_t ret = send_rule(kPortQinqSet, ui_port,
                             rule_of(KE_VLAN_NO_MATCH, ui_svlan, ui_spri, ui_act_tpid_en));
    return cm::report_ungated(
        KE_SITE, ret, "%s[%d] set qinq port=%u,ui_spri=%u,svlan=%u,act_tpid_en=%u fail, ret=%d\n",
        ui_port, ui_spri, ui_svlan, ui_act_tpid_en);
}

uint32_t ke_omci_tapi_port_qinq_del(uint32_t ui_port, uint32_t ui_cvlan)
{
    return remove_by_cvlan(KE_SITE, kPortQinqDel, ui_port, ui_cvlan,
                           "%s[%d] del qinq port=%u,cvlan=%u fail, ret=%d\n");
}

uint32_t ke_omci_tapi_qinq_set(uint32_t ui_port, uint32_t ui_cvlan, uint32_t ui_svlan,
                               uint32_t ui_act_tpid_en)
{
    uint32_t ret = send_rule(kQinqSet, ui_port, rule_of(ui_cvlan, ui_svlan, 0, ui_act_tpid_en));
    return cm::report_ungated(KE_SITE, ret,
                              "%s[%d] set qinq port=%u,svlan=%u,act_tpid_en=%u fail, ret=%d\n",
                              ui_port, ui_svlan, ui_act_tpid_en);
}

uint32_t ke_omci_tapi_qinq_del(uint32_t ui_port, uint32_t ui_cvlan)
{
    return remove_by_cvlan(KE_SITE, kQinqDel, ui_port, ui_cvlan,
                           "%s[%d] del qinq port=%u,cvlan=%u fail, ret=%d\n");
}

uint32_t ke_omci_tapi_qinq_full_set(uint32_t ui_port, const st_vlan_rule *pst_rule)
{
    return write_full_rule(KE_SITE, kQinqFullSet, ui_port, pst_rule,
                           "%s[%d] set qinq full port=%u,cvlan=%u,svlan=%u,tpid_en=%u fail, "
                           "ret=%d\n");
}

uint32_t ke_omci_tapi_qinq_full_del(uint32_t ui_port, const st_vlan_rule *pst_rule)
{
    return write_full_rule(KE_SITE, kQinqFullDel, ui_port, pst_rule,
                           "%s[%d] del qinq full port=%u,cvlan=%u,svlan=%u,tpid_en=%u fail, "
                           "ret=%d\n");
}

uint32_t ke_omci_tapi_qinq_vlan_set(uint32_t ui_port, const st_vlan_rule *pst_rule)
{
    return write_full_rule(KE_SITE, kQinqVlanSet, ui_port, pst_rule,
                           "%s[%d] set qinq full port=%u,cvlan=%u,svlan=%u,tpid_en=%u fail, "
                           "ret=%d\n");
}

uint32_t ke_omci_tapi_qinq_vlan_del(uint32_t ui_port, const st_vlan_rule *pst_rule)
{
    return write_full_rule(KE_SITE, kQinqVlanDel, ui_port, pst_rule,
                           "%s[%d] del qinq full port=%u,cvlan=%u,svlan=%u,tpid_en=%u fail, "
                           "ret=%d\n");
}

uint32_t ke_omci_tapi_tls_ctag_set(KE_ANY_ARGS) { return 0; }

uint32_t ke_omci_tapi_tls_ctag_del(KE_ANY_ARGS) { return 0; }

uint32_t ke_omci_tapi_tls_stag_set(KE_ANY_ARGS) { return 0; }

uint32_t ke_omci_tapi_tls_stag_del(KE_ANY_ARGS) { return 0; }

}  // extern "C"
