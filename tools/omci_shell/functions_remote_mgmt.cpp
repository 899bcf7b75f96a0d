// Remote management: TR-069 server, configuration flags and method.
#include "functions.h"
#include "ke_omci_tapi/remote_mgmt.h"

namespace omcishell {
namespace {

constexpr std::array kRows = {
    KE_SHELL_FN(ke_omci_tapi_tr069_server_set, "in rec:st_tr069_server server"),
    KE_SHELL_FN(ke_omci_tapi_tr069_server_get, "out rec:st_tr069_server server"),
    KE_SHELL_FN(ke_omci_tapi_voip_conf_set, "in u32 conf"),
    KE_SHELL_FN(ke_omci_tapi_voip_conf_get, "out u32 conf"),
    KE_SHELL_FN(ke_omci_tapi_tr069_conf_set, "in u32 conf"),
    KE_SHELL_FN(ke_omci_tapi_tr069_status_get, "out u32 status"),
    KE_SHELL_FN(ke_omci_tapi_voip_cnfig_method_set, "in u32 method"),
    KE_SHELL_FN(ke_omci_tapi_voip_cnfig_method_get, "return u32 method"),
};

}  // namespace

const FunctionList kRemoteMgmtFunctions = ketool::rows_of(kRows);

}  // namespace omcishell
