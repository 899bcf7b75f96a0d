// Multicast group filters are not kept by this library: accepted, no action.
#include "ke_omci_tapi/mc.h"

extern "C" {

uint32_t ke_omci_tapi_mc_filter_set(KE_ANY_ARGS) { return 0; }

uint32_t ke_omci_tapi_mc_filter_del(KE_ANY_ARGS) { return 0; }

}  // extern "C"
