// A user port's SFU or HGU mode, for the rest of the library.
#ifndef KE_VLAN_PORT_MODE_H
#define KE_VLAN_PORT_MODE_H

#include <cstdint>

#include "ke_omci_tapi/vlan.h"

namespace ke::vlan {

// Whether port is in SFU mode, as the port-information table (834) says.
//
// Makes exactly one Get of table 834 (the port as key, the mode mask) and
// keeps nothing: true only when the stored mode is 1.  Any other mode, a
// missing entry or a failed Get is false (HGU); the failure is printed,
// without the log gate, as a failure of ke_omci_tapi_check_port_mode_is_sfu.
// It only reads, so it may run on the IPC library's serving thread.
inline bool port_is_sfu(uint32_t port) { return ke_omci_tapi_check_port_mode_is_sfu(port) == 1; }

}  // namespace ke::vlan

#endif
