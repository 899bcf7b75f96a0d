// How the voice service is configured: the VoIP and TR-069 flags of the
// configuration manager, the configuration method kept in memory, and the
// TR-069 WAN status.
#include "../voip/voip_record.h"
#include "../voip_wan/wan_status.h"
#include "ke_omci_tapi/remote_mgmt.h"

namespace ke::voip {
namespace {

// The method last set; never written to the configuration manager.
uint32_t ui_voip_cnfig_method;

}  // namespace
}  // namespace ke::voip

using namespace ke::voip;

extern "C" {

// Each flag is written alone: 1 for exactly 1, 0 for anything else.
uint32_t ke_omci_tapi_voip_conf_set(const uint32_t *pui_conf)
{
    if (pui_conf == nullptr)
        return 1;
    return store_field(KE_SITE, ConfMethod::kVoipConf, *pui_conf == 1 ? 1 : 0);
}

uint32_t ke_omci_tapi_voip_conf_get(uint32_t *pui_conf)
{
    if (pui_conf == nullptr)
        return 1;
    return load_field(KE_SITE, ConfMethod::kVoipConf, pui_conf);
}

uint32_t ke_omci_tapi_tr069_conf_set(const uint32_t *pui_conf)
{
    if (pui_conf == nullptr)
        return 1;
    return store_field(KE_SITE, ConfMethod::kTr069Conf, *pui_conf == 1 ? 1 : 0);
}

uint32_t ke_omci_tapi_tr069_status_get(uint32_t *pui_status)
{
    if (pui_status != nullptr)
        *pui_status = ke::voip_wan::tr069_wan_status();
    return 0;
}

uint32_t ke_omci_tapi_voip_cnfig_method_set(uint32_t ui_method)
{
    ui_voip_cnfig_method = ui_method;
    return 0;
}

uint32_t ke_omci_tapi_voip_cnfig_method_get(void) { return ui_voip_cnfig_method; }

}  // extern "C"
