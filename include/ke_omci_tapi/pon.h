/* PON line: T-CONTs and GEM ports, line security keys and time of day,
 * line control, alarms and the optical module.
 *
 * Each function is a remote call to the sml service, which owns the line;
 * the library keeps no copy of the provisioning and no key material. */
#ifndef KE_OMCI_TAPI_PON_H
#define KE_OMCI_TAPI_PON_H

#include "types.h"

KE_EXTERN_C_BEGIN

#define KE_GEMPORT_ATTR_LEN 28 /* GEM port attribute block, the service's layout */

/* Records exchanged with the service (request and reply in one). */
typedef struct {
    uint32_t ui_tcont;   /* T-CONT index; 0 is the default T-CONT */
    uint32_t ui_allocid; /* Alloc-ID: in on set, out on get */
} st_tcont;
KE_ASSERT_SIZE(st_tcont, 8);
KE_ASSERT_OFFSET(st_tcont, ui_allocid, 4);

typedef struct {
    uint32_t ui_gemport;
    uint8_t st_gemport_attr[KE_GEMPORT_ATTR_LEN];
} st_gemport;
KE_ASSERT_SIZE(st_gemport, 32);
KE_ASSERT_OFFSET(st_gemport, st_gemport_attr, 4);

typedef struct {
    uint32_t ui_word[3]; /* the three arguments, in order */
} st_gemport_loopback;
KE_ASSERT_SIZE(st_gemport_loopback, 12);

/* OMCC create: no action, always 0. */
KE_API uint32_t ke_omci_tapi_omcc_create(void);
/* OMCC destroy: no action, always 0. */
KE_API uint32_t ke_omci_tapi_omcc_destory(void);

/* PON mode, as written by ke_omci_tapi_gpon_set_mode. 0, or 1 traced. */
KE_API uint32_t ke_omci_tapi_gponmode_get(uint32_t *pui_mode);

/* Number of T-CONTs, read into *pui_num in place. 0, or 1 traced. */
KE_API uint32_t ke_omci_tapi_tcont_num_get(uint32_t *pui_num);

/* Gives T-CONT ui_tcont the Alloc-ID ui_allocid.  0, or 1 traced. */
KE_API uint32_t ke_omci_tapi_tcont_set(uint32_t ui_tcont, uint32_t ui_allocid);

/* Alloc-ID of a T-CONT; for T-CONT 0 it is the ONU-ID. 0, or 1 traced. */
KE_API uint32_t ke_omci_tapi_tcont_get(uint32_t ui_tcont, uint32_t *pui_allocid);

/* The functions below return the remote status unchanged and trace
 * nothing.  The in-out getters hand the caller's 4-byte word to the
 * service as is; it holds the reply afterwards. */

/* Deletes T-CONT ui_tcont.  Remote status. */
KE_API uint32_t ke_omci_tapi_tcont_del(uint32_t ui_tcont);
/* DBA mode, read into *pui_mode in place.  Remote status. */
KE_API uint32_t ke_omci_tapi_dba_mode_get(uint32_t *pui_mode);
/* Sets the GEM block length ui_len.  Remote status. */
KE_API uint32_t ke_omci_tapi_gem_block_set(uint32_t ui_len);
/* GEM block length, read into *pui_len in place.  Remote status. */
KE_API uint32_t ke_omci_tapi_gem_block_get(uint32_t *pui_len);
/* Number of GEM ports, read into *pui_num in place.  Remote status. */
KE_API uint32_t ke_omci_tapi_gemport_num_get(uint32_t *pui_num);
/* Deletes GEM port ui_gemport.  Remote status. */
KE_API uint32_t ke_omci_tapi_gemport_del(uint32_t ui_gemport);
/* Sends the three words, in order, as the loopback record.  Remote status. */
KE_API uint32_t ke_omci_tapi_gemport_loopback_set(uint32_t ui_word0, uint32_t ui_word1,
                                                  uint32_t ui_word2);

/* Sets GEM port ui_gemport's KE_GEMPORT_ATTR_LEN-byte attribute block,
 * copied unchanged.  0, or 1 traced. */
KE_API uint32_t ke_omci_tapi_gemport_set(uint32_t ui_gemport, const void *pv_attr);
/* Reads GEM port ui_gemport's attribute block into pv_attr, written only on
 * success.  0, or 1 traced. */
KE_API uint32_t ke_omci_tapi_gemport_get(uint32_t ui_gemport, void *pv_attr);

/* ---- Line security keys and time of day ------------------------------ */

#define KE_KEY_LEN 16         /* MSK and multicast key bytes */
#define KE_AES_CMAC_IN_LEN 148 /* AES-CMAC input, the service's layout */
#define KE_TOD_LEN 14         /* OLT-G time of day: 4-byte superframe, 10-byte stamp */

typedef struct {
    uint8_t auc_key[KE_KEY_LEN];
} st_msk;
KE_ASSERT_SIZE(st_msk, 16);

/* The same layout in the caller's memory and on the wire. */
typedef struct {
    uint8_t auc_input[KE_AES_CMAC_IN_LEN]; /* in */
    uint8_t auc_cmac[16];                  /* out: the 128-bit result */
} st_aes_cmac;
KE_ASSERT_SIZE(st_aes_cmac, 164);
KE_ASSERT_OFFSET(st_aes_cmac, auc_cmac, 148);

typedef struct {
    uint32_t ui_key_id;
    uint32_t ui_key_len;           /* the caller's length, even above 16 */
    uint8_t auc_key[KE_KEY_LEN];   /* zero beyond ui_key_len */
} st_mckey;
KE_ASSERT_SIZE(st_mckey, 24);
KE_ASSERT_OFFSET(st_mckey, ui_key_len, 4);
KE_ASSERT_OFFSET(st_mckey, auc_key, 8);

/* Time of day in host order, from the caller's big-endian 14 bytes. */
typedef struct {
    uint32_t ui_superframe; /* bytes 0-3 */
    uint32_t ui_sec_upper;  /* bytes 4-5: upper 16 bits of the 48-bit seconds */
    uint32_t ui_sec_lower;  /* bytes 6-9 */
    uint32_t ui_nsec;       /* bytes 10-13 */
} st_tod;
KE_ASSERT_SIZE(st_tod, 16);
KE_ASSERT_OFFSET(st_tod, ui_sec_upper, 4);
KE_ASSERT_OFFSET(st_tod, ui_sec_lower, 8);
KE_ASSERT_OFFSET(st_tod, ui_nsec, 12);

/* The MSK's 16 bytes; traced (gated) before the call.  Remote status. */
KE_API uint32_t ke_omci_tapi_msk_set(const void *pv_key);

/* Sends the whole record; on success only auc_cmac is written back.
 * 0, or 1 traced. */
KE_API uint32_t ke_omci_tapi_aes_cmac(st_aes_cmac *pst_cmac);

/* Sets multicast key ui_key_id to ui_key_len bytes at pv_key.  A key
 * longer than 16 bytes is not copied (copy line printed) yet the request
 * goes out with a zero key and the caller's length.  Remote status. */
KE_API uint32_t ke_omci_tapi_mckey_set(uint32_t ui_key_id, uint32_t ui_key_len,
                                       const void *pv_key);
/* Deletes multicast key ui_key_id.  Remote status. */
KE_API uint32_t ke_omci_tapi_mckey_del(uint32_t ui_key_id);

/* KE_TOD_LEN bytes of big-endian time-of-day information.  Remote status. */
KE_API uint32_t ke_omci_tapi_time_set(const void *pv_tod);

/* ---- Line control, alarms and optical module ------------------------- */

#define KE_ALARM_LEN 112
#define KE_PON_START_LEN 64
#define KE_OPTICAL_INFO_LEN 56
#define KE_OPTICAL_STA_WORDS 5

#define REGSTATE_O5 5u                 /* registration state: operation */
#define KE_ERR_NOT_OPERATING 0x70000037u /* optical status read outside O5 */

typedef struct {
    uint8_t auc_alarm[KE_ALARM_LEN]; /* the service's layout */
} st_alarm;
KE_ASSERT_SIZE(st_alarm, 112);

typedef struct {
    uint32_t aui_word[KE_OPTICAL_STA_WORDS];
} st_optical_sta;
KE_ASSERT_SIZE(st_optical_sta, 20);

typedef struct {
    uint8_t auc_info[KE_OPTICAL_INFO_LEN]; /* the service's layout */
} st_optical_info;
KE_ASSERT_SIZE(st_optical_info, 56);

/* KE_ALARM_LEN bytes, written on success.  0, or 1 traced. */
KE_API uint32_t ke_omci_tapi_gpon_alarm_get(void *pv_alarm);

/* Sets the PON mode; the caller's word is the buffer and holds the reply.
 * Remote status. */
KE_API uint32_t ke_omci_tapi_gpon_set_mode(uint32_t *pui_mode);
/* Starts the line with the KE_PON_START_LEN bytes at pv_param, which hold
 * the reply afterwards.  Remote status. */
KE_API uint32_t ke_omci_tapi_pon_start(void *pv_param);
/* Stops the line (a call without a record).  Remote status. */
KE_API uint32_t ke_omci_tapi_pon_stop(void);

/* Five status words.  Unless ui_force is nonzero the read is made only in
 * registration state REGSTATE_O5; otherwise KE_ERR_NOT_OPERATING with the
 * words untouched.  0 whatever the service answers (zero words when the
 * status read fails). */
KE_API uint32_t ke_omci_tapi_optical_attr_get(uint32_t ui_force, uint32_t *pui_sta);

/* KE_OPTICAL_INFO_LEN bytes.  0, the remote status, or the copy's error
 * code; a failure prints its own line whatever the log gate says. */
KE_API uint32_t ke_omci_tapi_optical_info_get(void *pv_info);

/* Power management set: no action, always 0. */
KE_API uint32_t ke_omci_tapi_pmu_attr_set(KE_ANY_ARGS);
/* Power management get: no action, always 0. */
KE_API uint32_t ke_omci_tapi_pmu_attr_get(KE_ANY_ARGS);

/* GEM port mapping: which upstream traffic of a user port, selected by
 * its key fields, goes into which GEM port and T-CONT.  The service holds
 * the mappings. */
typedef struct {
    uint32_t ui_mask;    /* key mask, passed to the service unchanged */
    uint32_t ui_vlan;    /* VLAN key */
    uint32_t ui_pri;     /* priority key */
    uint32_t em_port;    /* user port */
    uint32_t ui_gemport; /* in for set and delete, out for get */
    uint32_t ui_tcont;   /* in for set and delete, out for get */
} st_gem_map_param;
KE_ASSERT_SIZE(st_gem_map_param, 24);
KE_ASSERT_OFFSET(st_gem_map_param, em_port, 12);
KE_ASSERT_OFFSET(st_gem_map_param, ui_tcont, 20);

#define KE_GEM_MAP_RSV 0xFFFFFFFFu /* ui_map_rsv of every mapping request */

/* The mapping as the service exchanges it, for set, get and delete. */
typedef struct {
    uint32_t ui_mask;
    uint32_t ui_vlan;
    uint32_t ui_pri;
    uint32_t em_port;
    uint32_t ui_map_rsv; /* KE_GEM_MAP_RSV */
    uint32_t ui_gemport;
    uint32_t ui_tcont;
} st_gem_map;
KE_ASSERT_SIZE(st_gem_map, 28);
KE_ASSERT_OFFSET(st_gem_map, em_port, 12);
KE_ASSERT_OFFSET(st_gem_map, ui_map_rsv, 16);
KE_ASSERT_OFFSET(st_gem_map, ui_gemport, 20);
KE_ASSERT_OFFSET(st_gem_map, ui_tcont, 24);

/* Sets a mapping.  On an SFU, when bit 0 of ui_mask is set and the
 * mapping's VLAN and priority are those the port sends IGMP with, the
 * port's upstream IGMP GEM port follows the new GEM port; that follow-up
 * never changes the result.  0, or 1 traced when the service refused or
 * the system information could not be read (the mapping then stays
 * set).  A null record: 1, no call. */
KE_API uint32_t ke_omci_tapi_map_set(const st_gem_map_param *pst_map);

/* Reads ui_gemport and ui_tcont of the mapping keyed by words 0 to 3;
 * they are written only on success.  The remote status unchanged; a null
 * record: 1, no call. */
KE_API uint32_t ke_omci_tapi_map_get(st_gem_map_param *pst_map);

/* Deletes a mapping; IGMP settings are not touched.  The remote status
 * unchanged; a null record: 1, no call. */
KE_API uint32_t ke_omci_tapi_map_del(const st_gem_map_param *pst_map);

KE_EXTERN_C_END

#endif
