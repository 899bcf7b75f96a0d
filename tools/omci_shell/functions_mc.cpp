// Multicast.
#include "functions.h"
#include "ke_omci_tapi/mc.h"

namespace omcishell {
namespace {

constexpr std::array kRows = {
    KE_SHELL_FN(ke_omci_mc_data_init, ""),
    KE_SHELL_FN(ke_omci_tapi_mc_attr_set, "in rec:st_mc_attr attr"),
    KE_SHELL_FN(ke_omci_tapi_mc_attr_get, "out rec:st_mc_attr attr"),
    KE_SHELL_FN(ke_omci_tapi_mc_igmp_attr_set, "in u32 port, in rec:st_mc_igmp_attr attr"),
    KE_SHELL_FN(ke_omci_tapi_mc_igmp_attr_get, "in u32 port, out rec:st_mc_igmp_attr attr"),
    KE_SHELL_FN(ke_omci_tapi_mc_tagact_set, "in u32 port, in u32 tagact"),
    KE_SHELL_FN(ke_omci_tapi_mc_usr_vlan_set, "in u32 port, in u32 usrvlan"),
    KE_SHELL_FN(ke_omci_tapi_mc_uprate_set, "in u32 port, in u32 uprate"),
    KE_SHELL_FN(ke_omci_tapi_mc_group_num_set, "in u32 port, in u32 group_num"),
    KE_SHELL_FN(ke_omci_tapi_mc_group_num_set_proc, "in u32 port, in u32 group_num"),
    // A list longer than the eight slots, so that the refusal can be tried.
    KE_SHELL_FN(ke_omci_mc_vlan_set_proc, "in u32 port, in u32[16] vlans, in count:vlans num"),
    KE_SHELL_FN(ke_omci_tapi_mc_vlan_set, "in rec:st_mc_vlan vlan"),
    KE_SHELL_FN(ke_omci_tapi_mc_vlan_del, "in rec:st_mc_vlan vlan"),
    KE_SHELL_FN(ke_omci_tapi_mc_vlan_clr, "in u32 port"),
    KE_SHELL_FN(ke_omci_tapi_mc_table_set, "in rec:st_mc_table row"),
    KE_SHELL_FN(ke_omci_tapi_mc_table_del, "in rec:st_mc_table row"),
    KE_SHELL_FN(ke_omci_tapi_mc_range_clr, "in u32 port"),
    KE_SHELL_FN(ke_omci_tapi_mc_filter_set, ""),
    KE_SHELL_FN(ke_omci_tapi_mc_filter_del, ""),
};

}  // namespace

const FunctionList kMcFunctions = ketool::rows_of(kRows);

}  // namespace omcishell
