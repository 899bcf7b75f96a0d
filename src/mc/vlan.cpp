// Multicast VLANs of a port: the eight slots of table 824, mirrored in
// the port's cache entry, and the VLAN memberships of table 808.
#include "cm_table.h"
#include "mc_state.h"
#include "mc_tables.h"

using namespace ke::cm;
using namespace ke::mc;

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

// Writes the slots and, when that succeeded, keeps them in the cache.
uint32_t write_slots(uint32_t port, st_mc_port_param &entry, const VlanSlots &slots)
{
    uint32_t ret = ke_omci_mc_vlan_set_proc(port, slots.data(), MC_VLAN_MAX);
    if (ret == 0)
        entry.aui_vlan = slots;
    return ret;
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
    st_mc_port_param *entry = port_param(KE_SITE, pst_vlan->ui_port);
    if (entry == nullptr)
        return 1;

    VlanSlots slots = entry->aui_vlan;
    size_t empty = slots.size();
    for (size_t i = 0; i < slots.size(); ++i) {
        if (slots[i] == pst_vlan->ui_vlan)
            return 0;
        if (empty == slots.size() && slots[i] == MC_VLAN_NONE)
            empty = i;
    }
    if (empty == slots.size())
        return 0;
    slots[empty] = pst_vlan->ui_vlan;
    return write_slots(pst_vlan->ui_port, *entry, slots);
}

uint32_t ke_omci_tapi_mc_vlan_del(const st_mc_vlan *pst_vlan)
{
    if (pst_vlan == nullptr)
        return reject(KE_SITE);
    st_mc_port_param *entry = port_param(KE_SITE, pst_vlan->ui_port);
    if (entry == nullptr)
        return 1;

    VlanSlots slots = entry->aui_vlan;
    bool found = false;
    for (uint32_t &slot : slots) {
        if (slot == pst_vlan->ui_vlan) {
            slot = MC_VLAN_NONE;
            found = true;
        }
    }
    if (!found)
        return 0;
    return write_slots(pst_vlan->ui_port, *entry, slots);
}

uint32_t ke_omci_tapi_mc_vlan_clr(uint32_t ui_port)
{
    st_mc_port_param *entry = port_param(KE_SITE, ui_port);
    if (entry == nullptr)
        return 1;
    VlanSlots empty;
    empty.fill(MC_VLAN_NONE);
    uint32_t ret = write_slots(ui_port, *entry, empty);
    if (ret == 0)
        entry->aui_area_cnt.fill(0);
    return ret;
}

}  // extern "C"
