#include "wan_status.h"

namespace ke::voip_wan {
namespace {
uint8_t uc_tr069_wan_status;
}

uint8_t tr069_wan_status() { return uc_tr069_wan_status; }

void set_tr069_wan_status(uint8_t status) { uc_tr069_wan_status = status; }

}  // namespace ke::voip_wan
