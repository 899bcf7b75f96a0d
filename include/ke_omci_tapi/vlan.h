/* VLAN rules, VLAN translation and QinQ, SFU and HGU port mode.
 *
 * Every function writes (or reads) one record of a configuration-manager
 * table; whatever consumes the tables configures the switch.  The library
 * keeps no VLAN state.  The table records are given here as they travel:
 * zero-filled, 32-bit words in host order, the user port as the key. */
#ifndef KE_OMCI_TAPI_VLAN_H
#define KE_OMCI_TAPI_VLAN_H

#include "types.h"

KE_EXTERN_C_BEGIN

/* ---- Caller records ---------------------------------------------------- */

/* A match word of this value is no match condition. */
#define KE_VLAN_NO_MATCH 0xFFFFFFFFu

/* A translation or QinQ rule as the OMCI stack hands it in. */
typedef struct {
    uint32_t ui_cvlan;       /* customer VLAN to match, or KE_VLAN_NO_MATCH */
    uint32_t ui_match2;      /* second match value, or KE_VLAN_NO_MATCH */
    uint32_t ui_match3;      /* third match value, or KE_VLAN_NO_MATCH */
    uint32_t ui_svlan;       /* outer VLAN to apply */
    uint32_t ui_spri;        /* outer priority to apply */
    uint32_t ui_act_tpid_en; /* TPID enable */
} st_vlan_rule;
KE_ASSERT_SIZE(st_vlan_rule, 24);
KE_ASSERT_OFFSET(st_vlan_rule, ui_match2, 4);
KE_ASSERT_OFFSET(st_vlan_rule, ui_match3, 8);
KE_ASSERT_OFFSET(st_vlan_rule, ui_svlan, 12);
KE_ASSERT_OFFSET(st_vlan_rule, ui_spri, 16);
KE_ASSERT_OFFSET(st_vlan_rule, ui_act_tpid_en, 20);

/* A port's new mode for ke_omci_update_the_cm_table.  Only bytes 4 to 7
 * and byte 9 are read, so a 10-byte block will do; ports above 255 cannot
 * be named here. */
typedef struct {
    uint8_t auc_rsv0[4];
    uint32_t ui_sfu_mode; /* 1: SFU */
    uint8_t uc_rsv8;
    uint8_t uc_port;
    uint8_t auc_rsv10[2];
} st_port_mode_update;
KE_ASSERT_SIZE(st_port_mode_update, 12);
KE_ASSERT_OFFSET(st_port_mode_update, ui_sfu_mode, 4);
KE_ASSERT_OFFSET(st_port_mode_update, uc_port, 9);

/* ---- Table records ----------------------------------------------------- */

/* The VLAN rule tables (807 to 814) are written with a zero mask. */

/* 807 IGD_CO_VLAN_FILTER_TAB */
typedef struct {
    uint32_t ui_head0;
    uint32_t ui_head1;
    uint32_t ui_port;
    uint32_t ui_filter_mode;
    uint32_t ui_mask;
} st_vlan_filter_tab;
KE_ASSERT_SIZE(st_vlan_filter_tab, 20);
KE_ASSERT_OFFSET(st_vlan_filter_tab, ui_port, 8);
KE_ASSERT_OFFSET(st_vlan_filter_tab, ui_filter_mode, 12);
KE_ASSERT_OFFSET(st_vlan_filter_tab, ui_mask, 16);

/* 808 IGD_CO_VLAN_MEMBER_TAB: one entry per member VLAN of a port. */
typedef struct {
    uint32_t ui_head0;
    uint32_t ui_head1;
    uint32_t ui_port;
    uint32_t ui_vid; /* 0 to 4095 */
    uint32_t ui_mask;
} st_vlan_member_tab;
KE_ASSERT_SIZE(st_vlan_member_tab, 20);
KE_ASSERT_OFFSET(st_vlan_member_tab, ui_port, 8);
KE_ASSERT_OFFSET(st_vlan_member_tab, ui_vid, 12);
KE_ASSERT_OFFSET(st_vlan_member_tab, ui_mask, 16);

/* 809 IGD_CO_VLAN_TAGACT_TAB */
typedef struct {
    uint32_t ui_head0;
    uint32_t ui_head1;
    uint32_t ui_port;
    uint32_t ui_tag_type;
    uint32_t ui_dir;
    uint32_t ui_act;
    uint32_t ui_mask;
} st_vlan_tagact_tab;
KE_ASSERT_SIZE(st_vlan_tagact_tab, 28);
KE_ASSERT_OFFSET(st_vlan_tagact_tab, ui_port, 8);
KE_ASSERT_OFFSET(st_vlan_tagact_tab, ui_tag_type, 12);
KE_ASSERT_OFFSET(st_vlan_tagact_tab, ui_dir, 16);
KE_ASSERT_OFFSET(st_vlan_tagact_tab, ui_act, 20);
KE_ASSERT_OFFSET(st_vlan_tagact_tab, ui_mask, 24);

/* 810 IGD_CO_VLAN_DEFTAG_TAB */
typedef struct {
    uint32_t ui_head0;
    uint32_t ui_head1;
    uint32_t ui_port;
    uint32_t ui_tpid_type;
    uint32_t ui_def_pri;
    uint32_t ui_def_vlan_id;
    uint32_t ui_rsv24;
    uint32_t ui_rsv28;
    uint32_t ui_mask;
} st_vlan_deftag_tab;
KE_ASSERT_SIZE(st_vlan_deftag_tab, 36);
KE_ASSERT_OFFSET(st_vlan_deftag_tab, ui_port, 8);
KE_ASSERT_OFFSET(st_vlan_deftag_tab, ui_tpid_type, 12);
KE_ASSERT_OFFSET(st_vlan_deftag_tab, ui_def_pri, 16);
KE_ASSERT_OFFSET(st_vlan_deftag_tab, ui_def_vlan_id, 20);
KE_ASSERT_OFFSET(st_vlan_deftag_tab, ui_rsv24, 24);
KE_ASSERT_OFFSET(st_vlan_deftag_tab, ui_mask, 32);

/* 811 IGD_CO_VLAN_DEFPRI_TAB */
typedef struct {
    uint32_t ui_head0;
    uint32_t ui_head1;
    uint32_t ui_port;
    uint32_t ui_pri;
    uint32_t ui_mask;
} st_vlan_defpri_tab;
KE_ASSERT_SIZE(st_vlan_defpri_tab, 20);
KE_ASSERT_OFFSET(st_vlan_defpri_tab, ui_port, 8);
KE_ASSERT_OFFSET(st_vlan_defpri_tab, ui_pri, 12);
KE_ASSERT_OFFSET(st_vlan_defpri_tab, ui_mask, 16);

/* 813 IGD_CO_VLAN_TRANSLATION_TAB and 814 IGD_CO_VLAN_QINQ_TAB: a rule
 * matches on the enabled match words and acts on the outer tag. */
typedef struct {
    uint32_t ui_head0;
    uint32_t ui_head1;
    uint32_t ui_port;
    uint32_t ui_cvlan_en;
    uint32_t ui_cvlan;
    uint32_t ui_match2_en;
    uint32_t ui_match2;
    uint32_t ui_match3_en;
    uint32_t ui_match3;
    uint32_t ui_act_tpid_en;
    uint32_t ui_act_tpid_type;
    uint32_t ui_spri_en;
    uint32_t ui_spri;
    uint32_t ui_svlan_en;
    uint32_t ui_svlan;
    uint32_t ui_tpid_type2;
    uint32_t ui_mask;
} st_vlan_rule_tab;
KE_ASSERT_SIZE(st_vlan_rule_tab, 68);
KE_ASSERT_OFFSET(st_vlan_rule_tab, ui_port, 8);
KE_ASSERT_OFFSET(st_vlan_rule_tab, ui_cvlan_en, 12);
KE_ASSERT_OFFSET(st_vlan_rule_tab, ui_cvlan, 16);
KE_ASSERT_OFFSET(st_vlan_rule_tab, ui_match2_en, 20);
KE_ASSERT_OFFSET(st_vlan_rule_tab, ui_match2, 24);
KE_ASSERT_OFFSET(st_vlan_rule_tab, ui_match3_en, 28);
KE_ASSERT_OFFSET(st_vlan_rule_tab, ui_match3, 32);
KE_ASSERT_OFFSET(st_vlan_rule_tab, ui_act_tpid_en, 36);
KE_ASSERT_OFFSET(st_vlan_rule_tab, ui_act_tpid_type, 40);
KE_ASSERT_OFFSET(st_vlan_rule_tab, ui_spri_en, 44);
KE_ASSERT_OFFSET(st_vlan_rule_tab, ui_spri, 48);
KE_ASSERT_OFFSET(st_vlan_rule_tab, ui_svlan_en, 52);
KE_ASSERT_OFFSET(st_vlan_rule_tab, ui_svlan, 56);
KE_ASSERT_OFFSET(st_vlan_rule_tab, ui_tpid_type2, 60);
KE_ASSERT_OFFSET(st_vlan_rule_tab, ui_mask, 64);

/* 815 IGD_CO_VLAN_FLUSH_ALL_TAB: the entry of a port puts it into SFU
 * behaviour, its removal restores HGU behaviour.  No mask. */
typedef struct {
    uint32_t ui_head0;
    uint32_t ui_port;
} st_vlan_flush_all_tab;
KE_ASSERT_SIZE(st_vlan_flush_all_tab, 8);
KE_ASSERT_OFFSET(st_vlan_flush_all_tab, ui_port, 4);

/* 816 IGD_CO_VLAN_TRUNK_TAB: no mask. */
typedef struct {
    uint32_t ui_head0;
    uint32_t ui_port;
    uint32_t ui_trunk;
} st_vlan_trunk_tab;
KE_ASSERT_SIZE(st_vlan_trunk_tab, 12);
KE_ASSERT_OFFSET(st_vlan_trunk_tab, ui_port, 4);
KE_ASSERT_OFFSET(st_vlan_trunk_tab, ui_trunk, 8);

/* 834 IGD_CO_PORT_INFO_TAB: read and written with mask
 * KE_PORT_INFO_MASK_SFU_MODE only; the other port information is not
 * touched and travels as 0. */
#define KE_PORT_INFO_MASK_SFU_MODE 16u
typedef struct {
    uint32_t ui_head0;
    uint32_t ui_head1;
    uint32_t ui_port;
    uint8_t auc_other[32];
    uint32_t ui_sfu_mode; /* 1: SFU */
    uint32_t ui_mask;
} st_port_info_tab;
KE_ASSERT_SIZE(st_port_info_tab, 52);
KE_ASSERT_OFFSET(st_port_info_tab, ui_port, 8);
KE_ASSERT_OFFSET(st_port_info_tab, auc_other, 12);
KE_ASSERT_OFFSET(st_port_info_tab, ui_sfu_mode, 44);
KE_ASSERT_OFFSET(st_port_info_tab, ui_mask, 48);

/* ---- VLAN rules -------------------------------------------------------- */

/* Status of a refused membership request, and of a failed port-mode write. */
#define KE_VLAN_REFUSED 0x70000000u

/* The rule writers return 0 even when the table operation fails; the
 * failure is printed (always, or with the log gate open for the
 * membership pair). */

/* VLAN filter mode of a port, passed through.  Always 0. */
KE_API uint32_t ke_omci_tapi_vlan_filter_set(uint32_t ui_port, uint32_t ui_filter_mode);

/* *pui_filter_mode is written only when the read succeeds.  Always 0. */
KE_API uint32_t ke_omci_tapi_vlan_filter_get(uint32_t ui_port, uint32_t *pui_filter_mode);

/* Membership of VLAN ui_vid on a port.  Ports 0 to 8 and VLAN IDs 0 to
 * 4095 are accepted; anything else is KE_VLAN_REFUSED and writes nothing.
 * Otherwise 0. */
KE_API uint32_t ke_omci_tapi_vlan_set(uint32_t ui_port, uint32_t ui_vid);
/* Removes the membership of VLAN ui_vid on a port; arguments and results
 * as ke_omci_tapi_vlan_set. */
KE_API uint32_t ke_omci_tapi_vlan_del(uint32_t ui_port, uint32_t ui_vid);

/* Default priority of a port, passed through.  Always 0. */
KE_API uint32_t ke_omci_tapi_defpri_set(uint32_t ui_port, uint32_t ui_pri);
/* Tag action of a port: tag type, direction and action, passed through.
 * Always 0. */
KE_API uint32_t ke_omci_tapi_tagact_set(uint32_t ui_port, uint32_t ui_tag_type, uint32_t ui_dir,
                                        uint32_t ui_act);
/* Default tag of a port: VLAN ID, priority and TPID type (stored in the
 * reverse order).  Always 0. */
KE_API uint32_t ke_omci_tapi_deftag_set(uint32_t ui_port, uint32_t ui_def_vlan_id,
                                        uint32_t ui_def_pri, uint32_t ui_tpid_type);

/* Accepted, no action, always 0. */
KE_API uint32_t ke_omci_tapi_deftag_get(KE_ANY_ARGS);
/* Accepted, no action, always 0. */
KE_API uint32_t ke_omci_tapi_tpid_set(KE_ANY_ARGS);
/* Accepted, no action, always 0. */
KE_API uint32_t ke_omci_tapi_untag_addtag_set(KE_ANY_ARGS);
/* Accepted, no action, always 0. */
KE_API uint32_t ke_omci_tapi_untag_addtag_del(KE_ANY_ARGS);

/* ---- VLAN translation and QinQ ----------------------------------------- */

/* Each writes or removes one rule (translation rules in table 813, QinQ
 * rules in 814) and returns 0, also when the operation fails (the failure
 * is printed).  A null rule pointer writes nothing. */
/* Translation rule: customer VLAN to outer VLAN, with the TPID enable.
 * Always 0. */
KE_API uint32_t ke_omci_tapi_vlan_translation_set(uint32_t ui_port, uint32_t ui_cvlan,
                                                  uint32_t ui_svlan, uint32_t ui_act_tpid_en);
/* Removes the translation rule of a customer VLAN.  Always 0. */
KE_API uint32_t ke_omci_tapi_vlan_translation_del(uint32_t ui_port, uint32_t ui_cvlan);
/* Translation rule from a caller's rule; a KE_VLAN_NO_MATCH match word is
 * no condition.  Always 0. */
KE_API uint32_t ke_omci_tapi_vlan_translation_opt_set(uint32_t ui_port,
                                                      const st_vlan_rule *pst_rule);
/* Removes a translation rule given as by ke_omci_tapi_vlan_translation_opt_set.
 * Always 0. */
KE_API uint32_t ke_omci_tapi_vlan_translation_opt_del(uint32_t ui_port,
                                                      const st_vlan_rule *pst_rule);
/* A port-wide QinQ rule: no customer-VLAN condition; outer priority,
 * outer VLAN and TPID enable.  Always 0. */
KE_API uint32_t ke_omci_tapi_port_qinq_set(uint32_t ui_port, uint32_t ui_spri, uint32_t ui_svlan,
                                           uint32_t ui_act_tpid_en);
/* Removes the QinQ rule of a customer VLAN.  Always 0. */
KE_API uint32_t ke_omci_tapi_port_qinq_del(uint32_t ui_port, uint32_t ui_cvlan);
/* QinQ rule: customer VLAN to outer VLAN, with the TPID enable.  Always 0. */
KE_API uint32_t ke_omci_tapi_qinq_set(uint32_t ui_port, uint32_t ui_cvlan, uint32_t ui_svlan,
                                      uint32_t ui_act_tpid_en);
/* Removes the QinQ rule of a customer VLAN.  Always 0. */
KE_API uint32_t ke_omci_tapi_qinq_del(uint32_t ui_port, uint32_t ui_cvlan);
/* QinQ rule from a caller's rule; a KE_VLAN_NO_MATCH match word is no
 * condition.  Always 0. */
KE_API uint32_t ke_omci_tapi_qinq_full_set(uint32_t ui_port, const st_vlan_rule *pst_rule);
/* Removes a QinQ rule given as by ke_omci_tapi_qinq_full_set.  Always 0. */
KE_API uint32_t ke_omci_tapi_qinq_full_del(uint32_t ui_port, const st_vlan_rule *pst_rule);
/* QinQ rule matching on all three match words, whatever their values.
 * Always 0. */
KE_API uint32_t ke_omci_tapi_qinq_vlan_set(uint32_t ui_port, const st_vlan_rule *pst_rule);
/* Removes a rule given as by ke_omci_tapi_qinq_vlan_set.  Always 0. */
KE_API uint32_t ke_omci_tapi_qinq_vlan_del(uint32_t ui_port, const st_vlan_rule *pst_rule);

/* Accepted, no action, always 0. */
KE_API uint32_t ke_omci_tapi_tls_ctag_set(KE_ANY_ARGS);
/* Accepted, no action, always 0. */
KE_API uint32_t ke_omci_tapi_tls_ctag_del(KE_ANY_ARGS);
/* Accepted, no action, always 0. */
KE_API uint32_t ke_omci_tapi_tls_stag_set(KE_ANY_ARGS);
/* Accepted, no action, always 0. */
KE_API uint32_t ke_omci_tapi_tls_stag_del(KE_ANY_ARGS);

/* ---- SFU and HGU port mode --------------------------------------------- */

/* 1 when the port's stored mode is SFU (1); 0 for any other mode and when
 * the read fails (printed always): a failed read is taken as HGU. */
KE_API uint32_t ke_omci_tapi_check_port_mode_is_sfu(uint32_t ui_port);

/* The writers below return 0, or KE_VLAN_REFUSED when the operation
 * failed (printed always). */

/* Stores the port's mode (port from byte 9, mode from bytes 4 to 7).  A
 * null pointer writes nothing and is KE_VLAN_REFUSED. */
KE_API uint32_t ke_omci_update_the_cm_table(const st_port_mode_update *pst_update);

/* Adds the port's flush entry (SFU behaviour).  0 or KE_VLAN_REFUSED. */
KE_API uint32_t ke_omci_init_the_port_to_sfu(uint32_t ui_port);
/* Removes the port's flush entry (HGU behaviour).  0 or KE_VLAN_REFUSED. */
KE_API uint32_t ke_omci_restore_the_port_to_hgu(uint32_t ui_port);

/* Announces the port's trunk setting, passed through as given. */
KE_API uint32_t ke_omci_notify_sfu_trunk(uint32_t ui_port, uint32_t ui_trunk);

KE_EXTERN_C_END

#endif
