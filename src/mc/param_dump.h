// The multicast parameter dump: the implementation behind the served call
// "ke_ke_omci_mc_param_get_call".
#ifndef KE_MC_PARAM_DUMP_H
#define KE_MC_PARAM_DUMP_H

#include <cstdint>

// Prints the multicast state of the port named by the 4-byte request.
// 0, or 0x70000000 (nothing printed) for a port at or above the port count.
extern "C" uint32_t ke_ke_omci_mc_param_get_ipc(const void *request);

#endif
