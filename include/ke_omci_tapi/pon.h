/* PON line: T-CONTs and GEM ports.
 *
 * Each function is one remote call to the sml service, which owns the line;
 * the library keeps no copy of the provisioning. */
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

/* OMCC entry points: accepted, no action, always 0. */
KE_API uint32_t ke_omci_tapi_omcc_create(void);
KE_API uint32_t ke_omci_tapi_omcc_destory(void);

/* PON mode, as written by ke_omci_tapi_gpon_set_mode. 0, or 1 traced. */
KE_API uint32_t ke_omci_tapi_gponmode_get(uint32_t *pui_mode);

/* Number of T-CONTs, read into *pui_num in place. 0, or 1 traced. */
KE_API uint32_t ke_omci_tapi_tcont_num_get(uint32_t *pui_num);

/* 0, or 1 traced. */
KE_API uint32_t ke_omci_tapi_tcont_set(uint32_t ui_tcont, uint32_t ui_allocid);

/* Alloc-ID of a T-CONT; for T-CONT 0 it is the ONU-ID. 0, or 1 traced. */
KE_API uint32_t ke_omci_tapi_tcont_get(uint32_t ui_tcont, uint32_t *pui_allocid);

/* The functions below return the remote status unchanged.  The in-out
 * getters hand the caller's 4-byte word to the service as is. */
KE_API uint32_t ke_omci_tapi_tcont_del(uint32_t ui_tcont);
KE_API uint32_t ke_omci_tapi_dba_mode_get(uint32_t *pui_mode);
KE_API uint32_t ke_omci_tapi_gem_block_set(uint32_t ui_len);
KE_API uint32_t ke_omci_tapi_gem_block_get(uint32_t *pui_len);
KE_API uint32_t ke_omci_tapi_gemport_num_get(uint32_t *pui_num);
KE_API uint32_t ke_omci_tapi_gemport_del(uint32_t ui_gemport);
KE_API uint32_t ke_omci_tapi_gemport_loopback_set(uint32_t ui_word0, uint32_t ui_word1,
                                                  uint32_t ui_word2);

/* GEM port attributes: a KE_GEMPORT_ATTR_LEN-byte block copied unchanged
 * to (set) or from (get) the service.  0, or 1 traced. */
KE_API uint32_t ke_omci_tapi_gemport_set(uint32_t ui_gemport, const void *pv_attr);
KE_API uint32_t ke_omci_tapi_gemport_get(uint32_t ui_gemport, void *pv_attr);

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
