// VLAN rules and port mode: the caller records and the table records.
#include "ke_omci_tapi/vlan.h"
#include "records.h"

namespace ketool {
namespace {

constexpr std::array kVlanRule = {
    KE_FIELD(st_vlan_rule, ui_cvlan, Kind::U32),
    KE_FIELD(st_vlan_rule, ui_match2, Kind::U32),
    KE_FIELD(st_vlan_rule, ui_match3, Kind::U32),
    KE_FIELD(st_vlan_rule, ui_svlan, Kind::U32),
    KE_FIELD(st_vlan_rule, ui_spri, Kind::U32),
    KE_FIELD(st_vlan_rule, ui_act_tpid_en, Kind::U32),
};
constexpr std::array kPortModeUpdate = {
    KE_FIELD(st_port_mode_update, ui_sfu_mode, Kind::U32),
    KE_FIELD(st_port_mode_update, uc_port, Kind::U8),
};
constexpr std::array kFilterTab = {
    KE_FIELD(st_vlan_filter_tab, ui_head0, Kind::U32),
    KE_FIELD(st_vlan_filter_tab, ui_head1, Kind::U32),
    KE_FIELD(st_vlan_filter_tab, ui_port, Kind::U32),
    KE_FIELD(st_vlan_filter_tab, ui_filter_mode, Kind::U32),
    KE_FIELD(st_vlan_filter_tab, ui_mask, Kind::U32),
};
constexpr std::array kMemberTab = {
    KE_FIELD(st_vlan_member_tab, ui_head0, Kind::U32),
    KE_FIELD(st_vlan_member_tab, ui_head1, Kind::U32),
    KE_FIELD(st_vlan_member_tab, ui_port, Kind::U32),
    KE_FIELD(st_vlan_member_tab, ui_vid, Kind::U32),
    KE_FIELD(st_vlan_member_tab, ui_mask, Kind::U32),
};
constexpr std::array kTagactTab = {
    KE_FIELD(st_vlan_tagact_tab, ui_head0, Kind::U32),
    KE_FIELD(st_vlan_tagact_tab, ui_head1, Kind::U32),
    KE_FIELD(st_vlan_tagact_tab, ui_port, Kind::U32),
    KE_FIELD(st_vlan_tagact_tab, ui_tag_type, Kind::U32),
    KE_FIELD(st_vlan_tagact_tab, ui_dir, Kind::U32),
    KE_FIELD(st_vlan_tagact_tab, ui_act, Kind::U32),
    KE_FIELD(st_vlan_tagact_tab, ui_mask, Kind::U32),
};
constexpr std::array kDeftagTab = {
    KE_FIELD(st_vlan_deftag_tab, ui_head0, Kind::U32),
    KE_FIELD(st_vlan_deftag_tab, ui_head1, Kind::U32),
    KE_FIELD(st_vlan_deftag_tab, ui_port, Kind::U32),
    KE_FIELD(st_vlan_deftag_tab, ui_tpid_type, Kind::U32),
    KE_FIELD(st_vlan_deftag_tab, ui_def_pri, Kind::U32),
    KE_FIELD(st_vlan_deftag_tab, ui_def_vlan_id, Kind::U32),
    KE_FIELD(st_vlan_deftag_tab, ui_rsv24, Kind::U32),
    KE_FIELD(st_vlan_deftag_tab, ui_rsv28, Kind::U32),
    KE_FIELD(st_vlan_deftag_tab, ui_mask, Kind::U32),
};
constexpr std::array kDefpriTab = {
    KE_FIELD(st_vlan_defpri_tab, ui_head0, Kind::U32),
    KE_FIELD(st_vlan_defpri_tab, ui_head1, Kind::U32),
    KE_FIELD(st_vlan_defpri_tab, ui_port, Kind::U32),
    KE_FIELD(st_vlan_defpri_tab, ui_pri, Kind::U32),
    KE_FIELD(st_vlan_defpri_tab, ui_mask, Kind::U32),
};
constexpr std::array kRuleTab = {
    KE_FIELD(st_vlan_rule_tab, ui_head0, Kind::U32),
    KE_FIELD(st_vlan_rule_tab, ui_head1, Kind::U32),
    KE_FIELD(st_vlan_rule_tab, ui_port, Kind::U32),
    KE_FIELD(st_vlan_rule_tab, ui_cvlan_en, Kind::U32),
    KE_FIELD(st_vlan_rule_tab, ui_cvlan, Kind::U32),
    KE_FIELD(st_vlan_rule_tab, ui_match2_en, Kind::U32),
    KE_FIELD(st_vlan_rule_tab, ui_match2, Kind::U32),
    KE_FIELD(st_vlan_rule_tab, ui_match3_en, Kind::U32),
    KE_FIELD(st_vlan_rule_tab, ui_match3, Kind::U32),
    KE_FIELD(st_vlan_rule_tab, ui_act_tpid_en, Kind::U32),
    KE_FIELD(st_vlan_rule_tab, ui_act_tpid_type, Kind::U32),
    KE_FIELD(st_vlan_rule_tab, ui_spri_en, Kind::U32),
    KE_FIELD(st_vlan_rule_tab, ui_spri, Kind::U32),
    KE_FIELD(st_vlan_rule_tab, ui_svlan_en, Kind::U32),
    KE_FIELD(st_vlan_rule_tab, ui_svlan, Kind::U32),
    KE_FIELD(st_vlan_rule_tab, ui_tpid_type2, Kind::U32),
    KE_FIELD(st_vlan_rule_tab, ui_mask, Kind::U32),
};
constexpr std::array kFlushAllTab = {
    KE_FIELD(st_vlan_flush_all_tab, ui_head0, Kind::U32),
    KE_FIELD(st_vlan_flush_all_tab, ui_port, Kind::U32),
};
constexpr std::array kTrunkTab = {
    KE_FIELD(st_vlan_trunk_tab, ui_head0, Kind::U32),
    KE_FIELD(st_vlan_trunk_tab, ui_port, Kind::U32),
    KE_FIELD(st_vlan_trunk_tab, ui_trunk, Kind::U32),
};
constexpr std::array kPortInfoTab = {
    KE_FIELD(st_port_info_tab, ui_head0, Kind::U32),
    KE_FIELD(st_port_info_tab, ui_head1, Kind::U32),
    KE_FIELD(st_port_info_tab, ui_port, Kind::U32),
    KE_FIELD(st_port_info_tab, auc_other, Kind::Bytes),
    KE_FIELD(st_port_info_tab, ui_sfu_mode, Kind::U32),
    KE_FIELD(st_port_info_tab, ui_mask, Kind::U32),
};

constexpr Layout kVlanRuleLayout = KE_LAYOUT(st_vlan_rule, kVlanRule);
constexpr Layout kPortModeUpdateLayout = KE_LAYOUT(st_port_mode_update, kPortModeUpdate);
constexpr Layout kFilterTabLayout = KE_LAYOUT(st_vlan_filter_tab, kFilterTab);
constexpr Layout kMemberTabLayout = KE_LAYOUT(st_vlan_member_tab, kMemberTab);
constexpr Layout kTagactTabLayout = KE_LAYOUT(st_vlan_tagact_tab, kTagactTab);
constexpr Layout kDeftagTabLayout = KE_LAYOUT(st_vlan_deftag_tab, kDeftagTab);
constexpr Layout kDefpriTabLayout = KE_LAYOUT(st_vlan_defpri_tab, kDefpriTab);
constexpr Layout kRuleTabLayout = KE_LAYOUT(st_vlan_rule_tab, kRuleTab);
constexpr Layout kFlushAllTabLayout = KE_LAYOUT(st_vlan_flush_all_tab, kFlushAllTab);
constexpr Layout kTrunkTabLayout = KE_LAYOUT(st_vlan_trunk_tab, kTrunkTab);
constexpr Layout kPortInfoTabLayout = KE_LAYOUT(st_port_info_tab, kPortInfoTab);

constexpr std::array kLayouts = {
    &kVlanRuleLayout,  &kPortModeUpdateLayout, &kFilterTabLayout, &kMemberTabLayout,
    &kTagactTabLayout, &kDeftagTabLayout,      &kDefpriTabLayout, &kRuleTabLayout,
    &kFlushAllTabLayout, &kTrunkTabLayout,     &kPortInfoTabLayout,
};

}  // namespace

const LayoutList kVlanRecords = rows_of(kLayouts);

}  // namespace ketool
