// Multicast VLANs of a port: the eight slots of table 824, mirrored in
// the port's cache entry, and the VLAN memberships of table 808.
#include <algorithm>

#include "cm_table.h"
#include "mc_state.h"
#include "mc_tables.h"

using namespace ke::cm;
using namespace ke::mc;
using ke::Site;

namespace {

// The membership writes only ever add; their failures do not matter to
// the multicast list.
void add_member(uint32_t port, uint32_t vid)
{
    Record<IGD_CO_VLAN_MEMBER_TAB> rec;
    rec.put_port(port);
    rec.put_u32(MemberTab::ui_vid, vid);
    rec.put_tail_mask(MemberTab::kMask);
    set(rec);
}

// Edits a copy of the port's entry (edit answers whether there is anything
// to write), writes its slots, and keeps the copy when that succeeded.
template <class Edit>
uint32_t edit_slots(Site site, uint32_t port, Edit edit)
{
    return change_port(
        site, port, edit,
        [port](const st_mc_port_param &p) {
            return ke_omci_mc_vlan_set_proc(port, p.aui_vlan.data(), MC_VLAN_MAX);
        });
}

}  // namespace

extern "C" {

uint32_t ke_omci_mc_vlan_set_proc(uint32_t ui_port, const uint32_t *pui_vlan, uint32_t ui_num)
{
    if (ui_port >= MC_PORT_MAX || pui_vlan == nullptr || ui_num > MC_VLAN_MAX)
        return reject(KE_SITE);

    Record<IGD_CO_MC_VLAN_TAB> list;
    list.put_port(ui_port);
    for (uint32_t i = 0; i < ui_num; ++i) {
        uint32_t vlan = pui_vlan[i];
        list.put_u32(VlanTab::aui_vlan + 4 * i, vlan);
        if (vlan != MC_VLAN_NONE) {
            add_member(ui_port, vlan);
            add_member(MemberTab::kCounterpartPort, vlan);
        }
    }
    list.put_tail_mask(VlanTab::kMask);
    return report_info(KE_SITE, set(list));
}

uint32_t ke_omci_tapi_mc_vlan_set(const st_mc_vlan *pst_vlan)
{
    if (pst_vlan == nullptr)
        return reject(KE_SITE);
    uint32_t vlan = pst_vlan->ui_vlan;
    return edit_slots(KE_SITE, pst_vlan->ui_port, [vlan](st_mc_port_param &p) {
        VlanSlots &slots = p.aui_vlan;
        if (std::find(slots.begin(), slots.end(), vlan) != slots.end())
            return false;
        auto empty = std::find(slots.begin(), slots.end(), uint32_t{MC_VLAN_NONE});
        if (empty == slots.end())
            return false;
        *empty = vlan;
        return true;
    });
}

// The list goes out without every slot that holds the VLAN, yet only the
// last of them is emptied in the cache (more than one slot holds the same
// VLAN only before the first initialisation, when every slot holds 0).
// The slot's range count stays for whichever VLAN takes the slot next.
uint32_t ke_omci_tapi_mc_vlan_del(const st_mc_vlan *pst_vlan)
{
    if (pst_vlan == nullptr)
        return reject(KE_SITE);
    uint32_t port = pst_vlan->ui_port;
    uint32_t vlan = pst_vlan->ui_vlan;
    VlanSlots list{};
    return change_port(
        KE_SITE, port,
        [vlan, &list](st_mc_port_param &p) {
            list = p.aui_vlan;
            uint32_t *last = nullptr;
            for (size_t i = 0; i < list.size(); ++i) {
                if (list[i] == vlan) {
                    list[i] = MC_VLAN_NONE;
                    last = &p.aui_vlan[i];
                }
            }
            if (last == nullptr)
                return false;
            *last = MC_VLAN_NONE;
            return true;
        },
        [port, &list](const st_mc_port_param &) {
            return ke_omci_mc_vlan_set_proc(port, list.data(), MC_VLAN_MAX);
        });
}

uint32_t ke_omci_tapi_mc_vlan_clr(uint32_t ui_port)
{
    return edit_slots(KE_SITE, ui_port, [](st_mc_port_param &p) {
        p.aui_vlan.fill(MC_VLAN_NONE);
        p.aui_area_cnt.fill(0);
        return true;
    });
}

}  // extern "C"
