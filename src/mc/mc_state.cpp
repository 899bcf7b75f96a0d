// The multicast state and the first-use initialisation.
#include "mc_state.h"

#include <cstring>

#include "call.h"

namespace ke::mc {

st_mc_glb_attr gst_mc_glb_attr;

namespace {

std::array<st_mc_port_param, MC_PORT_MAX> gast_mc_port_param;

// Reply lengths of the two information calls made at initialisation.
constexpr uint32_t kSysinfoReplyLen = 720;
constexpr uint32_t kBoardReplyLen = 956;
constexpr uint32_t kBoardPortNumOffset = 4;

}  // namespace

uint32_t reject(Site site)
{
    trace_failed_call(site, MC_ERR_VALUE);
    return 1;
}

st_mc_port_param *port_param(Site site, uint32_t port)
{
    if (port >= gast_mc_port_param.size()) {
        reject(site);
        return nullptr;
    }
    return &gast_mc_port_param[port];
}

st_mc_port_param *counted_port(uint32_t port)
{
    if (port >= gst_mc_glb_attr.ui_port_num || port >= gast_mc_port_param.size())
        return nullptr;
    return &gast_mc_port_param[port];
}

}  // namespace ke::mc

using namespace ke::mc;

extern "C" {

// The system information is asked first and its reply is not used; the
// board information gives the user-port count.  A failed board call, or a
// board without ports, leaves the count at 0 and the next call tries again.
void ke_omci_mc_data_init(void)
{
    if (gst_mc_glb_attr.ui_port_num != 0)
        return;

    std::array<uint8_t, kSysinfoReplyLen> sysinfo{};
    ke::pass_through("ke_ke_sysinfo_data_get_call", sysinfo.data(), kSysinfoReplyLen);
    std::array<uint8_t, kBoardReplyLen> board{};
    if (ke::pass_through("ke_ke_board_info_get_call", board.data(), kBoardReplyLen) != 0)
        return;

    uint32_t port_num = 0;
    std::memcpy(&port_num, board.data() + kBoardPortNumOffset, sizeof port_num);
    // The cache cannot serve more ports than it holds.
    if (port_num > MC_PORT_MAX)
        port_num = MC_PORT_MAX;
    gst_mc_glb_attr.ui_port_num = port_num;

    for (uint32_t port = 0; port < port_num; ++port)
        ke_omci_tapi_mc_range_clr(port);
}

}  // extern "C"
