// System information, serial number and LOID, reboot; the lifecycle.
#include "functions.h"
#include "ke_omci_tapi/device.h"
#include "ke_omci_tapi/lifecycle.h"

namespace omcishell {
namespace {

constexpr std::array<Function, 4> kRows = {{
    {"ke_omci_tapi_init", "", [](Args &) { return ke_omci_tapi_init(); }},
    {"ke_omci_tapi_sysinfo_get", "out rec:st_sysinfo info",
     [](Args &a) { return ke_omci_tapi_sysinfo_get(static_cast<st_sysinfo *>(a.bytes(0))); }},
    {"ke_omci_tapi_sn_loid_get", "out rec:st_sn_loid sn_loid",
     [](Args &a) { return ke_omci_tapi_sn_loid_get(static_cast<st_sn_loid *>(a.bytes(0))); }},
    {"ke_omci_tapi_reboot", "", [](Args &) { return ke_omci_tapi_reboot(); }},
}};

}  // namespace

const FunctionList kDeviceFunctions = ketool::rows_of(kRows);

}  // namespace omcishell
