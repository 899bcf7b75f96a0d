// PON line, Ethernet and bridge-port counters.
#include "functions.h"
#include "ke_omci_tapi/stat.h"

namespace omcishell {
namespace {

constexpr std::array kRows = {
    KE_SHELL_FN(ke_omci_tapi_stat_fec_get, "out rec:st_fec_stat fec"),
    KE_SHELL_FN(ke_omci_tapi_stat_gemport_get, "in u32 gemport, out rec:st_gemport_stat stat"),
    KE_SHELL_FN(ke_omci_tapi_stat_tc_get, "out rec:st_xgpon_tc_stat tc"),
    KE_SHELL_FN(ke_omci_tapi_stat_downmng_get, "out rec:st_xgpon_downmng_stat downmng"),
    KE_SHELL_FN(ke_omci_tapi_stat_upmng_get, "out rec:st_xgpon_upmng_stat upmng"),
    KE_SHELL_FN(ke_omci_tapi_stat_galeth_get, "out u32 counter"),
    KE_SHELL_FN(ke_omci_tapi_stat_eth_get, "in u32 port, out rec:st_eth_stat eth"),
    KE_SHELL_FN(ke_omci_tapi_stat_brport_get, "in u32 port, out rec:st_brport_stat brport"),
    KE_SHELL_FN(ke_omci_tapi_stat_eth_clr, ""),
    KE_SHELL_FN(ke_omci_tapi_stat_bridge_get, ""),
};

}  // namespace

const FunctionList kStatFunctions = ketool::rows_of(kRows);

}  // namespace omcishell
