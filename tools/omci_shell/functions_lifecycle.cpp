// Library start and stop; the served calls in their three layers.
#include "functions.h"
#include "ke_omci_tapi/lifecycle.h"
#include "ke_omci_tapi/mc.h"

namespace omcishell {
namespace {

constexpr std::array kRows = {
    KE_SHELL_FN(ke_omci_tapi_init, ""),
    KE_SHELL_FN(ke_omci_tapi_exit, ""),
    KE_SHELL_FN(ke_omci_set_loid, "inout rec:st_sn_loid loid"),
    KE_SHELL_FN(ke_omci_set_loidpwd, "inout rec:st_sn_loid loid"),
    KE_SHELL_FN(ke_omci_mc_param_get, "inout u32 port"),
    KE_SHELL_FN(ke_ke_omci_set_loid_call, "inout bytes[128] buf, in count:buf len"),
    KE_SHELL_FN(ke_ke_omci_set_loidpwd_call, "inout bytes[128] buf, in count:buf len"),
    KE_SHELL_FN(ke_ke_omci_mc_param_get_call, "inout bytes[8] buf, in count:buf len"),
    KE_SHELL_FN(ke_ke_omci_set_loid_ipc, "in rec:st_sn_loid request"),
    KE_SHELL_FN(ke_ke_omci_set_loidpwd_ipc, "in rec:st_sn_loid request"),
    KE_SHELL_FN(ke_ke_omci_mc_param_get_ipc, "in u32 port"),
};

}  // namespace

const FunctionList kLifecycleFunctions = ketool::rows_of(kRows);

}  // namespace omcishell
