/* Remote management: the TR-069 management server, the VoIP and TR-069
 * configuration flags, the VoIP configuration method and the TR-069 WAN
 * status.
 *
 * The table functions return 0, or 1 when their configuration-manager
 * operation failed (traced when the log gate is open); a getter writes its
 * outputs only after a successful read.  A null argument pointer is
 * refused with 1 before any table is touched. */
#ifndef KE_OMCI_TAPI_REMOTE_MGMT_H
#define KE_OMCI_TAPI_REMOTE_MGMT_H

#include "types.h"

KE_EXTERN_C_BEGIN

#define KE_ACS_URL_LEN 256
#define KE_ACS_CREDENTIAL_LEN 64

/* ACS address and credentials, each copied whole, not terminated. */
typedef struct {
    uint8_t auc_acs_url[KE_ACS_URL_LEN];
    uint8_t auc_acs_user_name[KE_ACS_CREDENTIAL_LEN];
    uint8_t auc_acs_password[KE_ACS_CREDENTIAL_LEN];
} st_tr069_server;
KE_ASSERT_SIZE(st_tr069_server, 384);
KE_ASSERT_OFFSET(st_tr069_server, auc_acs_user_name, 256);
KE_ASSERT_OFFSET(st_tr069_server, auc_acs_password, 320);

/* Stores the ACS URL, user name and password, whole.  0 or 1. */
KE_API uint32_t ke_omci_tapi_tr069_server_set(const st_tr069_server *pst_server);
/* Reads the three texts back, whole.  0 or 1. */
KE_API uint32_t ke_omci_tapi_tr069_server_get(st_tr069_server *pst_server);

/* Configuration flags: a set stores 1 for exactly 1 and 0 for any other
 * value; each set writes only its own flag. */
/* The VoIP configuration flag.  0 or 1. */
KE_API uint32_t ke_omci_tapi_voip_conf_set(const uint32_t *pui_conf);
/* The stored VoIP configuration flag.  0 or 1. */
KE_API uint32_t ke_omci_tapi_voip_conf_get(uint32_t *pui_conf);
/* The TR-069 configuration flag (no getter).  0 or 1. */
KE_API uint32_t ke_omci_tapi_tr069_conf_set(const uint32_t *pui_conf);

/* 1 while a WAN connection for a service other than voice is set, else 0.
 * Always returns 0 (a null pointer is left alone). */
KE_API uint32_t ke_omci_tapi_tr069_status_get(uint32_t *pui_status);

/* The VoIP configuration method, kept in the library's memory only (0
 * until first set).  The set always returns 0; the get returns the method
 * itself, not a status. */
KE_API uint32_t ke_omci_tapi_voip_cnfig_method_set(uint32_t ui_method);
/* The method last set (0 before any set). */
KE_API uint32_t ke_omci_tapi_voip_cnfig_method_get(void);

KE_EXTERN_C_END

#endif
