// The multicast parameter dump: one port's state, line by line.
#include "param_dump.h"

#include <cstdio>
#include <cstring>

#include "ke_omci_tapi/lifecycle.h"
#include "mc_state.h"

using namespace ke::mc;

// Reads without a lock: a dump taken while the port changes may mix old
// and new values, and never writes anything.
extern "C" uint32_t ke_ke_omci_mc_param_get_ipc(void *pv_request)
{
    if (pv_request == nullptr)
        return KE_SERVED_CALL_REFUSED;
    uint32_t port = 0;
    std::memcpy(&port, pv_request, sizeof port);
    const st_mc_port_param *p = counted_port(port);
    if (p == nullptr)
        return MC_ERR_STATE;

    const st_mc_glb_attr &glb = gst_mc_glb_attr;
    std::printf("port id [%u]\n", port);
    std::printf("igmp ver [%u]\n", glb.ui_ver);
    std::printf("igmp mode [%u]\n", glb.ui_mode);
    std::printf("igmp quickleave [%u]\n", glb.ui_quickleave);
    std::printf("port sfu mode [%u]\n", ke_omci_tapi_check_port_mode_is_sfu(port));
    std::printf("uprate [%u]\n", p->ui_uprate);
    std::printf("group num [%u]\n", p->ui_group_num);
    std::printf("igmp upmode [%u] uppri [%u] upvlan [%u]\n", p->ui_upmode, p->ui_uppri,
                p->ui_upvlan);
    std::printf("down tagact[%u] usrvlan[%u]\n", p->ui_down_tagact, p->ui_usrvlan);
    for (size_t i = 0; i < p->aui_vlan.size(); ++i)
        if (p->aui_vlan[i] != MC_VLAN_NONE)
            std::printf("vlan [%u] area cnt[%u]\n", p->aui_vlan[i], p->aui_area_cnt[i]);
    return 0;
}
