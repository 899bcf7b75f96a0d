// The dump itself reads the multicast state and is written with it; until
// then a checked request is accepted and nothing is printed.
#include "param_dump.h"

extern "C" uint32_t ke_ke_omci_mc_param_get_ipc(void *pv_request)
{
    (void)pv_request;
    return 0;
}
