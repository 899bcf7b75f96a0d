// The TR-069 WAN status byte: 1 while a TR-069 (non-voice) WAN connection
// has been set, 0 at load and after its delete.  Written by the VoIP WAN
// set and delete, read by the remote-management status read.
#ifndef KE_VOIP_WAN_STATUS_H
#define KE_VOIP_WAN_STATUS_H

#include <cstdint>

namespace ke::voip_wan {

uint8_t tr069_wan_status();
void set_tr069_wan_status(uint8_t status);

}  // namespace ke::voip_wan

#endif
