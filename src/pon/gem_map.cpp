// GEM port mapping: set, read and delete through the sml service.  On an
// SFU a new mapping on the port's IGMP VLAN and priority also moves the
// port's upstream IGMP GEM port.
#include <cstdio>

#include "ke_omci_tapi/device.h"
#include "ke_omci_tapi/mc.h"
#include "ke_omci_tapi/pon.h"

#include "../frame/call.h"

using ke::Site;

namespace {

// Mask bit that lets a mapping move the IGMP GEM port.
constexpr uint32_t kMaskIgmpFollow = 0x1;

// "[func(line)][INFO]:" followed by two key fields, when the gate is open.
void trace_keys(Site site, const char *format, uint32_t a, uint32_t b)
{
    if (ke::log_gate_open())
        std::printf(format, site.func, site.line, a, b);
}

void fill_request(Site site, st_gem_map &req, const st_gem_map_param &map, bool with_target)
{
    ke::fill_zero(site, &req, sizeof req);
    req.ui_mask = map.ui_mask;
    req.ui_vlan = map.ui_vlan;
    req.ui_pri = map.ui_pri;
    req.em_port = map.em_port;
    req.ui_map_rsv = KE_GEM_MAP_RSV;
    if (with_target) {
        req.ui_gemport = map.ui_gemport;
        req.ui_tcont = map.ui_tcont;
    }
}

// Best effort: any failure or mismatch leaves the IGMP settings alone.
void follow_igmp_gemport(const st_gem_map_param &map, st_mc_igmp_attr &igmp)
{
    if ((map.ui_mask & kMaskIgmpFollow) == 0)
        return;
    if (ke_omci_tapi_mc_igmp_attr_get(map.em_port, &igmp) != 0)
        return;
    if (igmp.ui_upvlan != map.ui_vlan || igmp.ui_uppri != map.ui_pri)
        return;
    igmp.ui_upgemport = map.ui_gemport;
    ke_omci_tapi_mc_igmp_attr_set(map.em_port, &igmp);
}

}  // namespace

extern "C" {

uint32_t ke_omci_tapi_map_set(const st_gem_map_param *pst_map)
{
    if (pst_map == nullptr)
        return 1;
    st_gem_map req;
    st_sysinfo sysinfo;
    st_mc_igmp_attr igmp;
    fill_request(KE_SITE, req, *pst_map, true);
    ke::fill_zero(KE_SITE, &sysinfo, sizeof sysinfo);
    ke::fill_zero(KE_SITE, &igmp, sizeof igmp);

    trace_keys(KE_SITE, "[%s(%d)][INFO]:ui_mask=0x%x em_port=0x%x\n", req.ui_mask, req.em_port);
    trace_keys(KE_SITE, "[%s(%d)][INFO]:ui_tcont=0x%x ui_gemport=0x%x\n", req.ui_tcont,
               req.ui_gemport);
    if (ke::call(KE_SITE, "ke_ke_sml_gpon_map_set_call", req) != 0)
        return 1;

    uint32_t ret = ke_omci_tapi_sysinfo_get(&sysinfo);
    if (ret != 0) {
        ke::trace_failed_call(KE_SITE, ret);
        return 1;
    }
    if (sysinfo.ui_product_type == KE_PRODUCT_SFU)
        follow_igmp_gemport(*pst_map, igmp);
    return 0;
}

uint32_t ke_omci_tapi_map_get(st_gem_map_param *pst_map)
{
    if (pst_map == nullptr)
        return 1;
    st_gem_map req;
    fill_request(KE_SITE, req, *pst_map, false);
    uint32_t ret = ke::pass_through("ke_ke_sml_gpon_map_get_call", req);
    if (ret == 0) {
        pst_map->ui_gemport = req.ui_gemport;
        pst_map->ui_tcont = req.ui_tcont;
    }
    return ret;
}

uint32_t ke_omci_tapi_map_del(const st_gem_map_param *pst_map)
{
    if (pst_map == nullptr)
        return 1;
    st_gem_map req;
    fill_request(KE_SITE, req, *pst_map, true);
    trace_keys(KE_SITE, "[%s(%d)][INFO]:em_port=0x%x ui_mask=0x%x\n", req.em_port, req.ui_mask);
    return ke::pass_through("ke_ke_sml_gpon_map_del_call", req);
}

}  // extern "C"
