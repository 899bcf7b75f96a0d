// The multicast parameter dump, served under "ke_ke_omci_mc_param_get_call";
// its implementation is declared with the multicast interface.
#ifndef KE_MC_PARAM_DUMP_H
#define KE_MC_PARAM_DUMP_H

#include "ke_omci_tapi/mc.h"

#endif
