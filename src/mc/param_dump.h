// The multicast parameter dump, served under "ke_ke_omci_mc_param_get_call".
#ifndef KE_MC_PARAM_DUMP_H
#define KE_MC_PARAM_DUMP_H

#include "ke_omci_tapi/types.h"

KE_EXTERN_C_BEGIN

// Prints the multicast state of the user port in the 4-byte request;
// reached only through the server entry, which has checked the request.
KE_API uint32_t ke_ke_omci_mc_param_get_ipc(void *pv_request);

KE_EXTERN_C_END

#endif
