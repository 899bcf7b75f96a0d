// Global multicast attributes: IGMP/MLD version, multicast mode and
// quick leave, written to tables 819, 820, 826 and 821 in that order.
#include "cm_table.h"
#include "codes.h"
#include "mc_state.h"
#include "mc_tables.h"

using namespace ke::cm;
using namespace ke::mc;

namespace {

uint32_t ke_omci_mc_ctrl_type_set_proc(uint32_t mode)
{
    Record<IGD_CO_MC_CTRL_TYPE_TAB> rec;
    rec.put_u32(CtrlTypeTab::ui_ctrl_type, map_code(kCtrlType, mode, 0));
    rec.put_tail_mask(CtrlTypeTab::kMask);
    return report_info(KE_SITE, set(rec));
}

uint32_t ke_omci_mc_ver_mode_set_proc(uint32_t ver, uint32_t mode)
{
    Record<IGD_CO_MC_VER_TAB> ver_rec;
    ver_rec.put_u32(VerTab::ui_ver, map_code(kVerTable, ver, kVerTableOther));
    ver_rec.put_tail_mask(VerTab::kMask);
    if (report_info(KE_SITE, set(ver_rec)) != 0)
        return 1;

    Record<IGD_CO_MC_MODE_TAB> mode_rec;
    const ModeFlags &flags = kModeFlags[mode < kModeFlags.size() ? mode : kModeInOther];
    for (uint32_t i = 0; i < flags.size(); ++i)
        mode_rec.put_u32(ModeTab::ui_flag0 + 4 * i, flags[i]);
    mode_rec.put_tail_mask(ModeTab::kMask);
    return report_info(KE_SITE, set(mode_rec));
}

// The whole sequence; a failed step stops it, earlier tables stay written.
uint32_t ke_omci_mc_glb_attr_set_proc(uint32_t mode, uint32_t ver, uint32_t quickleave)
{
    if (ke_omci_mc_ctrl_type_set_proc(mode) != 0)
        return report_info(KE_SITE, 1);
    if (ke_omci_mc_ver_mode_set_proc(ver, mode) != 0)
        return report_info(KE_SITE, 1);

    Record<IGD_CO_MC_GLB_ATTR_TAB> rec;
    rec.put_u32(GlbAttrTab::ui_quickleave_off, quickleave == 0 ? 1 : 0);
    rec.put_tail_mask(GlbAttrTab::kMask);
    return report_info(KE_SITE, set(rec));
}

}  // namespace

extern "C" {

uint32_t ke_omci_tapi_mc_attr_set(const st_mc_attr *pst_attr)
{
    if (pst_attr == nullptr)
        return reject(KE_SITE);
    uint32_t ver = map_code(kVersionIn, pst_attr->ui_igmp_ver);
    if (ver == kRejected)
        return reject(KE_SITE);
    uint32_t mode = map_code(kModeIn, pst_attr->ui_mc_mode, kModeInOther);

    if (ke_omci_mc_glb_attr_set_proc(mode, ver, pst_attr->ui_quickleave) != 0)
        return 1;
    gst_mc_glb_attr.ui_mode = mode;
    gst_mc_glb_attr.ui_ver = ver;
    gst_mc_glb_attr.ui_quickleave = pst_attr->ui_quickleave;
    return 0;
}

// Always 0: a null record is only reported.
uint32_t ke_omci_tapi_mc_attr_get(st_mc_attr *pst_attr)
{
    if (pst_attr == nullptr) {
        reject(KE_SITE);
        return 0;
    }
    pst_attr->ui_igmp_ver = map_code(kVersionOut, gst_mc_glb_attr.ui_ver, kVersionOutOther);
    pst_attr->ui_mc_mode = map_code(kModeOut, gst_mc_glb_attr.ui_mode, 0);
    return 0;
}

}  // extern "C"
