// VLAN rules, translation and QinQ, SFU and HGU port mode.
#include "functions.h"
#include "ke_omci_tapi/vlan.h"

namespace omcishell {
namespace {

constexpr std::array kRows = {
    KE_SHELL_FN(ke_omci_tapi_vlan_filter_set, "in u32 port, in u32 filter_mode"),
    KE_SHELL_FN(ke_omci_tapi_vlan_filter_get, "in u32 port, out u32 filter_mode"),
    KE_SHELL_FN(ke_omci_tapi_vlan_set, "in u32 port, in u32 vid"),
    KE_SHELL_FN(ke_omci_tapi_vlan_del, "in u32 port, in u32 vid"),
    KE_SHELL_FN(ke_omci_tapi_defpri_set, "in u32 port, in u32 pri"),
    KE_SHELL_FN(ke_omci_tapi_tagact_set, "in u32 port, in u32 tag_type, in u32 dir, in u32 act"),
    KE_SHELL_FN(ke_omci_tapi_deftag_set,
                "in u32 port, in u32 def_vlan_id, in u32 def_pri, in u32 tpid_type"),
    KE_SHELL_FN(ke_omci_tapi_deftag_get, ""),
    KE_SHELL_FN(ke_omci_tapi_tpid_set, ""),
    KE_SHELL_FN(ke_omci_tapi_untag_addtag_set, ""),
    KE_SHELL_FN(ke_omci_tapi_untag_addtag_del, ""),
    KE_SHELL_FN(ke_omci_tapi_vlan_translation_set,
                "in u32 port, in u32 cvlan, in u32 svlan, in u32 act_tpid_en"),
    KE_SHELL_FN(ke_omci_tapi_vlan_translation_del, "in u32 port, in u32 cvlan"),
    KE_SHELL_FN(ke_omci_tapi_vlan_translation_opt_set, "in u32 port, in rec:st_vlan_rule rule"),
    KE_SHELL_FN(ke_omci_tapi_vlan_translation_opt_del, "in u32 port, in rec:st_vlan_rule rule"),
    KE_SHELL_FN(ke_omci_tapi_port_qinq_set,
                "in u32 port, in u32 spri, in u32 svlan, in u32 act_tpid_en"),
    KE_SHELL_FN(ke_omci_tapi_port_qinq_del, "in u32 port, in u32 cvlan"),
    KE_SHELL_FN(ke_omci_tapi_qinq_set, "in u32 port, in u32 cvlan, in u32 svlan, in u32 act_tpid_en"),
    KE_SHELL_FN(ke_omci_tapi_qinq_del, "in u32 port, in u32 cvlan"),
    KE_SHELL_FN(ke_omci_tapi_qinq_full_set, "in u32 port, in rec:st_vlan_rule rule"),
    KE_SHELL_FN(ke_omci_tapi_qinq_full_del, "in u32 port, in rec:st_vlan_rule rule"),
    KE_SHELL_FN(ke_omci_tapi_qinq_vlan_set, "in u32 port, in rec:st_vlan_rule rule"),
    KE_SHELL_FN(ke_omci_tapi_qinq_vlan_del, "in u32 port, in rec:st_vlan_rule rule"),
    KE_SHELL_FN(ke_omci_tapi_tls_ctag_set, ""),
    KE_SHELL_FN(ke_omci_tapi_tls_ctag_del, ""),
    KE_SHELL_FN(ke_omci_tapi_tls_stag_set, ""),
    KE_SHELL_FN(ke_omci_tapi_tls_stag_del, ""),
    KE_SHELL_FN(ke_omci_tapi_check_port_mode_is_sfu, "return u32 is_sfu, in u32 port"),
    KE_SHELL_FN(ke_omci_update_the_cm_table, "in rec:st_port_mode_update update"),
    KE_SHELL_FN(ke_omci_init_the_port_to_sfu, "in u32 port"),
    KE_SHELL_FN(ke_omci_restore_the_port_to_hgu, "in u32 port"),
    KE_SHELL_FN(ke_omci_notify_sfu_trunk, "in u32 port, in u32 trunk"),
};

}  // namespace

const FunctionList kVlanFunctions = ketool::rows_of(kRows);

}  // namespace omcishell
