/* Library start and stop, and the three calls the library serves.
 *
 * Another process hands data to the OMCI process through a client stub;
 * the IPC library carries the request to the serving process and there
 * calls the server entry of the same name as the remote call, which
 * checks the request and hands it to the implementation.  The served
 * names are listed in the section .ke_ipc_section, in this order:
 * "ke_ke_omci_mc_param_get_call", "ke_ke_omci_set_loidpwd_call",
 * "ke_ke_omci_set_loid_call". */
#ifndef KE_OMCI_TAPI_LIFECYCLE_H
#define KE_OMCI_TAPI_LIFECYCLE_H

#include "device.h"
#include "types.h"

KE_EXTERN_C_BEGIN

/* A server entry's answer to a null request or one of the wrong length. */
#define KE_SERVED_CALL_REFUSED 0x72200008u

/* Request lengths of the served calls. */
#define KE_MC_PARAM_GET_REQ_LEN 4u
#define KE_SET_LOID_REQ_LEN 102u /* a whole st_sn_loid */

/* Always 0: all state is static and set at load time. */
KE_API uint32_t ke_omci_tapi_init(void);
/* Does nothing. */
KE_API void ke_omci_tapi_exit(void);

/* Client stubs: the status of the remote call, unchanged.  The caller's
 * record is the buffer and holds the reply afterwards. */

/* Hands the LOID of the 102-byte record to the serving process. */
KE_API uint32_t ke_omci_set_loid(st_sn_loid *pst_loid);
/* Hands the LOID password of the 102-byte record to the serving process. */
KE_API uint32_t ke_omci_set_loidpwd(st_sn_loid *pst_loid);
/* Asks the serving process to dump the multicast state of port *pui_port. */
KE_API uint32_t ke_omci_mc_param_get(uint32_t *pui_port);

/* Server entries: KE_SERVED_CALL_REFUSED for a null buffer or a length
 * other than the call's request length, otherwise the implementation's
 * status. */

/* The LOID call: accepts KE_SET_LOID_REQ_LEN bytes. */
KE_API uint32_t ke_ke_omci_set_loid_call(void *pv_buf, uint32_t ui_len);
/* The LOID password call: accepts KE_SET_LOID_REQ_LEN bytes. */
KE_API uint32_t ke_ke_omci_set_loidpwd_call(void *pv_buf, uint32_t ui_len);
/* The multicast dump call: accepts KE_MC_PARAM_GET_REQ_LEN bytes. */
KE_API uint32_t ke_ke_omci_mc_param_get_call(void *pv_buf, uint32_t ui_len);

/* Implementations: the other request bytes are ignored.  Always 0. */

/* Stores auc_loid (24 bytes) of the request in the LOID store, whole. */
KE_API uint32_t ke_ke_omci_set_loid_ipc(void *pv_request);
/* Stores auc_loid_pwd (12 bytes) of the request in the LOID store, whole. */
KE_API uint32_t ke_ke_omci_set_loidpwd_ipc(void *pv_request);
/* Prints the multicast state of the port in the 4-byte request.  0, or
 * 0x70000000 (nothing printed) for a port at or above the port count. */
KE_API uint32_t ke_ke_omci_mc_param_get_ipc(void *pv_request);

KE_EXTERN_C_END

#endif
