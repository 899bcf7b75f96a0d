// GEM port mapping test support.
#ifndef KE_TEST_GEM_MAP_FIXTURE_H
#define KE_TEST_GEM_MAP_FIXTURE_H

#include <array>
#include <cstring>

#include "ke_omci_tapi/device.h"
#include "ke_omci_tapi/pon.h"
#include "stub_test.h"

namespace ketest {

// Scripts the two system-information replies with a product-type text.
inline void script_sysinfo(const char *product)
{
    std::array<uint8_t, 956> board{};
    std::array<uint8_t, 720> info{};
    std::memcpy(info.data() + 255, product, std::strlen(product) + 1);
    kestub::ipc_script("ke_ke_board_info_get_call", 0, board.data(), board.size());
    kestub::ipc_script("ke_ke_sysinfo_data_get_call", 0, info.data(), info.size());
}

// The request every mapping call sends; get sends no GEM port or T-CONT.
inline std::vector<uint8_t> map_request(const st_gem_map_param &map, bool with_target)
{
    return words({map.ui_mask, map.ui_vlan, map.ui_pri, map.em_port, 0xFFFFFFFF,
                  with_target ? map.ui_gemport : 0, with_target ? map.ui_tcont : 0});
}

}  // namespace ketest

#endif
