// Per-port IGMP settings.  Each setter changes a copy of the port's cache
// entry, writes it (the whole port in table 822, or the setting's own
// table), and keeps the change only when the write succeeded.
#include "cm_table.h"
#include "codes.h"
#include "mc_state.h"
#include "mc_tables.h"

using namespace ke::cm;
using namespace ke::mc;
using ke::Site;

namespace {

uint32_t ke_omci_mc_port_set_proc(uint32_t port, const st_mc_port_param &param)
{
    uint32_t up_transparent = map_code(kUpTransparent, param.ui_upmode);
    if (up_transparent == kRejected)
        return reject(KE_SITE);
    uint32_t down_tagact = map_code(kDownTagact, param.ui_down_tagact);
    if (down_tagact == kRejected)
        return reject(KE_SITE);

    Record<IGD_CO_MC_PORT_TAB> rec;
    rec.put_port(port);
    rec.put_u32(PortTab::ui_up_transparent, up_transparent);
    rec.put_u32(PortTab::ui_upvlan, param.ui_upvlan);
    rec.put_u32(PortTab::ui_uppri, param.ui_uppri);
    rec.put_u32(PortTab::ui_upgemport, param.ui_upgemport);
    rec.put_u32(PortTab::ui_down_tagact, down_tagact);
    rec.put_u32(PortTab::ui_usrvlan, param.ui_usrvlan);
    rec.put_u32(PortTab::ui_port_mode, ke_omci_tapi_check_port_mode_is_sfu(port) != 0
                                           ? PortTab::kModeSfu
                                           : PortTab::kModeHgu);
    rec.put_tail_mask(PortTab::kMask);
    return report_info(KE_SITE, set(rec));
}

// The per-port setters of table 822: change, write the whole port, keep.
template <class Change>
uint32_t update_port(Site site, uint32_t port, Change change)
{
    return change_port(
        site, port,
        [&](st_mc_port_param &p) {
            change(p);
            return true;
        },
        [port](const st_mc_port_param &p) { return ke_omci_mc_port_set_proc(port, p); });
}

uint32_t ke_omci_tapi_mc_uprate_set_proc(uint32_t port, uint32_t rate)
{
    Record<IGD_CO_MC_UPRATE_TAB> rec;
    rec.put_port(port);
    rec.put_u32(UprateTab::ui_uprate, rate);
    rec.put_u32(UprateTab::ui_fixed, UprateTab::kFixed);
    rec.put_tail_mask(UprateTab::kMask);
    return report_info(KE_SITE, set(rec));
}

}  // namespace

extern "C" {

uint32_t ke_omci_tapi_mc_igmp_attr_set(uint32_t ui_port, const st_mc_igmp_attr *pst_attr)
{
    if (pst_attr == nullptr)
        return reject(KE_SITE);
    uint32_t upmode = map_code(kUpmodeIn, pst_attr->ui_upmode);
    if (upmode == kRejected)
        return reject(KE_SITE);
    return update_port(KE_SITE, ui_port, [&](st_mc_port_param &p) {
        p.ui_upmode = upmode;
        p.ui_upvlan = pst_attr->ui_upvlan;
        p.ui_uppri = pst_attr->ui_uppri;
        p.ui_upgemport = pst_attr->ui_upgemport;
    });
}

uint32_t ke_omci_tapi_mc_igmp_attr_get(uint32_t ui_port, st_mc_igmp_attr *pst_attr)
{
    ke_omci_mc_data_init();
    if (pst_attr == nullptr)
        return MC_ERR_STATE;
    const st_mc_port_param none{};
    const st_mc_port_param *p = counted_port(ui_port);
    if (p == nullptr)
        p = &none;
    uint32_t upmode = map_code(kUpmodeOut, p->ui_upmode);
    if (upmode == kRejected)
        return MC_ERR_STATE;
    pst_attr->ui_upmode = upmode;
    pst_attr->ui_upvlan = p->ui_upvlan;
    pst_attr->ui_uppri = p->ui_uppri;
    pst_attr->ui_upgemport = p->ui_upgemport;
    return 0;
}

uint32_t ke_omci_tapi_mc_tagact_set(uint32_t ui_port, uint32_t ui_tagact)
{
    uint32_t tagact = map_code(kTagactIn, ui_tagact);
    if (tagact == kRejected)
        return reject(KE_SITE);
    return update_port(KE_SITE, ui_port, [tagact](st_mc_port_param &p) {
        if (tagact != kKeep)
            p.ui_down_tagact = tagact;
    });
}

uint32_t ke_omci_tapi_mc_usr_vlan_set(uint32_t ui_port, uint32_t ui_usrvlan)
{
    return update_port(KE_SITE, ui_port,
                       [ui_usrvlan](st_mc_port_param &p) { p.ui_usrvlan = ui_usrvlan; });
}

uint32_t ke_omci_tapi_mc_uprate_set(uint32_t ui_port, uint32_t ui_uprate)
{
    return change_port(
        KE_SITE, ui_port,
        [ui_uprate](st_mc_port_param &p) {
            p.ui_uprate = ui_uprate;
            return true;
        },
        [ui_port, ui_uprate](const st_mc_port_param &) {
            return ke_omci_tapi_mc_uprate_set_proc(ui_port, ui_uprate);
        });
}

uint32_t ke_omci_tapi_mc_group_num_set_proc(uint32_t ui_port, uint32_t ui_group_num)
{
    Record<IGD_CO_MC_GROUP_NUM_TAB> rec;
    rec.put_port(ui_port);
    rec.put_u32(GroupNumTab::ui_group_num, ui_group_num);
    rec.put_tail_mask(GroupNumTab::kMask);
    return report_info(KE_SITE, set(rec));
}

// The one setter that checks the port against the board's count.
uint32_t ke_omci_tapi_mc_group_num_set(uint32_t ui_port, uint32_t ui_group_num)
{
    st_mc_port_param *entry = counted_port(ui_port);
    if (entry == nullptr)
        return 0;
    if (ke_omci_tapi_mc_group_num_set_proc(ui_port, ui_group_num) != 0)
        return 1;
    entry->ui_group_num = ui_group_num;
    return 0;
}

}  // extern "C"
