// Reboot: a request to the configuration manager, which does the work.
#include "ke_omci_tapi/device.h"
#include "platform.h"
#include "trace.h"

extern "C" uint32_t ke_omci_tapi_reboot(void)
{
    uint32_t ret = igdCmOamCtrl(KE_OAM_CTRL_REBOOT);
    if (ret != 0) {
        ke::trace_failed_call(KE_SITE, ret);
        return 1;
    }
    return 0;
}
