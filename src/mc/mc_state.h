// Multicast state: the global attributes and the per-port cache.
//
// Both are static, zero at load, and change only after the table write
// they mirror succeeded.  The cache holds MC_PORT_MAX ports; every access
// by port number goes through the accessors below, which never index past
// the array.
#ifndef KE_MC_STATE_H
#define KE_MC_STATE_H

#include <array>
#include <cstdint>

#include "ke_omci_tapi/mc.h"
#include "ke_omci_tapi/vlan.h"
#include "trace.h"

namespace ke::mc {

struct st_mc_glb_attr {
    uint32_t ui_mode;        // internal mode 0, 1 or 2
    uint32_t ui_ver;         // internal version: 0 IGMPv2, 1 IGMPv3, 2 MLDv1, 3 MLDv2
    uint32_t ui_quickleave;  // as the caller passed it
    uint32_t ui_port_num;    // user ports; 0 until the first initialisation
};

using VlanSlots = std::array<uint32_t, MC_VLAN_MAX>;

struct st_mc_port_param {
    uint32_t ui_down_tagact;  // internal code 0, 1 or 2
    uint32_t ui_upmode;       // internal code 0, 1 or 2
    uint32_t ui_upvlan;
    uint32_t ui_uppri;
    uint32_t ui_upgemport;
    uint32_t ui_uprate;
    uint32_t ui_group_num;
    uint32_t ui_usrvlan;
    VlanSlots aui_vlan;      // MC_VLAN_NONE in an empty slot
    VlanSlots aui_area_cnt;  // ranges counted under each slot's VLAN
};

extern st_mc_glb_attr gst_mc_glb_attr;

// Reports a rejected value or port under site's log name; the caller
// returns 1.
uint32_t reject(Site site);

// The cache entry of a port the cache can hold; any other port is
// rejected (INFO line under site) and gives nullptr.
st_mc_port_param *port_param(Site site, uint32_t port);

// The cache entry of a port below the board's port count, or nullptr.
st_mc_port_param *counted_port(uint32_t port);

// Changes a copy of a port's cache entry (edit answers whether there is
// anything to write), writes the copy, and keeps it only when the write
// answered 0.  A port the cache cannot hold is rejected under site.
template <class Edit, class Write>
uint32_t change_port(Site site, uint32_t port, Edit edit, Write write)
{
    st_mc_port_param *entry = port_param(site, port);
    if (entry == nullptr)
        return 1;
    st_mc_port_param next = *entry;
    if (!edit(next))
        return 0;
    uint32_t ret = write(next);
    if (ret == 0)
        *entry = next;
    return ret;
}

}  // namespace ke::mc

#endif
