// Device management: system information, serial number and LOID, reboot,
// firmware upgrade, Ethernet port attributes.
#include "functions.h"
#include "ke_omci_tapi/device.h"

namespace omcishell {
namespace {

constexpr std::array kRows = {
    KE_SHELL_FN(ke_omci_tapi_sysinfo_get, "out rec:st_sysinfo info"),
    KE_SHELL_FN(ke_omci_tapi_sn_loid_get, "out rec:st_sn_loid sn_loid"),
    KE_SHELL_FN(ke_omci_tapi_reboot, ""),
    KE_SHELL_FN(ke_omci_tapi_upgrade_start, "in u32 upgrade_word, in bytes[24] info"),
    // A buffer larger than the largest shard, so that a longer one can be
    // tried (the download command sends whole images).
    KE_SHELL_FN(ke_omci_tapi_upgrade_write, "in bytes[8192] data, in count:data len"),
    KE_SHELL_FN(ke_omci_tapi_upgrade_stop, ""),
    KE_SHELL_FN(ke_omci_tapi_port_type_get, "in u32 port, out u32 type"),
    KE_SHELL_FN(ke_omci_tapi_port_state_get, "in u32 port, out u32 state"),
    KE_SHELL_FN(ke_omci_tapi_port_ethmode_get, "in u32 port, out u32 mode"),
    KE_SHELL_FN(ke_omci_tapi_port_link_get, "in u32 port, out u32 link"),
    KE_SHELL_FN(ke_omci_tapi_port_loopback_get, "in u32 port, out u32 loopback"),
    KE_SHELL_FN(ke_omci_tapi_port_pause_get, "in u32 port, out u32 pause"),
    KE_SHELL_FN(ke_omci_tapi_port_state_set, "in u32 port, in u32 state"),
    KE_SHELL_FN(ke_omci_tapi_port_ethmode_set, "in u32 port, in u32 mode"),
    KE_SHELL_FN(ke_omci_tapi_port_loopback_set, "in u32 port, in u32 loopback"),
    KE_SHELL_FN(ke_omci_tapi_port_pause_set, "in u32 port, in u32 pause"),
    KE_SHELL_FN(ke_omci_tapi_port_incar_set,
                "in u32 port, in u32 incar0, in u32 incar1, in u32 incar2, in u32 incar3"),
    KE_SHELL_FN(ke_omci_tapi_port_outcar_set, "in u32 port, in u32 outcar"),
    KE_SHELL_FN(ke_omci_tapi_port_mtu_set, "in u32 port, in u32 mtu"),
    KE_SHELL_FN(ke_omci_tapi_port_mtu_get, "in u32 port, out u32 mtu"),
    KE_SHELL_FN(ke_omci_tapi_port_pptpinstid_get, "in u32 port, out u16 instid"),
};

}  // namespace

const FunctionList kDeviceFunctions = ketool::rows_of(kRows);

}  // namespace omcishell
