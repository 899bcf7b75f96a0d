// Per-port VLAN rules: filter mode, membership, default priority, tag
// action and default tag, one record each, written with a zero mask.
#include "tables.h"

namespace cm = ke::cm;
using namespace ke::vlan;

namespace {

constexpr uint32_t kFilterMode = KE_VLAN_AT(st_vlan_filter_tab, ui_filter_mode);
constexpr uint32_t kVid = KE_VLAN_AT(st_vlan_member_tab, ui_vid);
constexpr uint32_t kPri = KE_VLAN_AT(st_vlan_defpri_tab, ui_pri);
constexpr uint32_t kTagType = KE_VLAN_AT(st_vlan_tagact_tab, ui_tag_type);
constexpr uint32_t kDir = KE_VLAN_AT(st_vlan_tagact_tab, ui_dir);
constexpr uint32_t kAct = KE_VLAN_AT(st_vlan_tagact_tab, ui_act);
constexpr uint32_t kTpidType = KE_VLAN_AT(st_vlan_deftag_tab, ui_tpid_type);
constexpr uint32_t kDefPri = KE_VLAN_AT(st_vlan_deftag_tab, ui_def_pri);
constexpr uint32_t kDefVlanId = KE_VLAN_AT(st_vlan_deftag_tab, ui_def_vlan_id);

// Membership takes ports 0 to 8 (nine port numbers, not eight) and every
// 12-bit VLAN ID.
constexpr uint32_t kMemberPortMax = 8;
constexpr uint32_t kVidCount = 4096;

// Fills the membership entry of vid on port.  Arguments out of range are
// reported (gated) under the caller's site and fill nothing.
bool fill_member(ke::Site site, MemberRecord &rec, uint32_t port, uint32_t vid)
{
    if (port > kMemberPortMax || vid >= kVidCount) {
        cm::bracket_line(site, "[%s(%d)]%s[%d] parameter error, config port=%u,vid=%u\n", port,
                         vid);
        return false;
    }
    rec.put_port(port);
    rec.put_u32(kVid, vid);
    return true;
}

}  // namespace

extern "C" {

uint32_t ke_omci_tapi_vlan_filter_set(uint32_t ui_port, uint32_t ui_filter_mode)
{
    FilterRecord rec;
    rec.put_port(ui_port);
    rec.put_u32(kFilterMode, ui_filter_mode);
    return cm::report_ungated(KE_SITE, cm::set(rec), "%s[%d] fail, ret=%d\n");
}

uint32_t ke_omci_tapi_vlan_filter_get(uint32_t ui_port, uint32_t *pui_filter_mode)
{
    FilterRecord rec;
    rec.put_port(ui_port);
    uint32_t ret = cm::get(rec);
    if (ret != 0)
        return cm::report_ungated(KE_SITE, ret, "%s[%d] fail, ret=%d\n");
    if (pui_filter_mode != nullptr)
        *pui_filter_mode = rec.u32(kFilterMode);
    return 0;
}

uint32_t ke_omci_tapi_vlan_set(uint32_t ui_port, uint32_t ui_vid)
{
    MemberRecord rec;
    if (!fill_member(KE_SITE, rec, ui_port, ui_vid))
        return cm::kRefused;
    return cm::report_bracket(KE_SITE, cm::set(rec), "[%s(%d)]%s[%d] config port=%u,vid=%u\n",
                              ui_port, ui_vid);
}

uint32_t ke_omci_tapi_vlan_del(uint32_t ui_port, uint32_t ui_vid)
{
    MemberRecord rec;
    if (!fill_member(KE_SITE, rec, ui_port, ui_vid))
        return cm::kRefused;
    uint32_t ret = cm::del(rec);
    return cm::report_bracket(KE_SITE, ret, "[%s(%d)]%s[%d] del port=%u,vid=%u fail, ret=%d\n",
                              ui_port, ui_vid, static_cast<int>(ret));
}

uint32_t ke_omci_tapi_defpri_set(uint32_t ui_port, uint32_t ui_pri)
{
    DefPriRecord rec;
    rec.put_port(ui_port);
    rec.put_u32(kPri, ui_pri);
    return cm::report_ungated(KE_SITE, cm::set(rec),
                              "%s[%d] Set defpri config port=%u pri=%u fail, ret=%d\n", ui_port,
                              ui_pri);
}

uint32_t ke_omci_tapi_tagact_set(uint32_t ui_port, uint32_t ui_tag_type, uint32_t ui_dir,
                                 uint32_t ui_act)
{
    TagActRecord rec;
    rec.put_port(ui_port);
    rec.put_u32(kTagType, ui_tag_type);
    rec.put_u32(kDir, ui_dir);
    rec.put_u32(kAct, ui_act);
    return cm::report_ungated(
        KE_SITE, cm::set(rec),
        "%s[%d] config tagact port=%u,tag_type=%u,dir=%u,act=%u fail, ret=%d\n", ui_port,
        ui_tag_type, ui_dir, ui_act);
}

// The record holds the values in the reverse order of the arguments.
uint32_t ke_omci_tapi_deftag_set(uint32_t ui_port, uint32_t ui_def_vlan_id, uint32_t ui_def_pri,
                                 uint32_t ui_tpid_type)
{
    DefTagRecord rec;
    rec.put_port(ui_port);
    rec.put_u32(kTpidType, ui_tpid_type);
    rec.put_u32(kDefPri, ui_def_pri);
    rec.put_u32(kDefVlanId, ui_def_vlan_id);
    return cm::report_ungated(
        KE_SITE, cm::set(rec),
        "%s[%d] config tagact port=%u,def_vlan_id=%u,def_pri=%u,tpid_type=%u fail, ret=%d\n",
        ui_port, ui_def_vlan_id, ui_def_pri, ui_tpid_type);
}

uint32_t ke_omci_tapi_deftag_get(KE_ANY_ARGS) { return 0; }

uint32_t ke_omci_tapi_tpid_set(KE_ANY_ARGS) { return 0; }

uint32_t ke_omci_tapi_untag_addtag_set(KE_ANY_ARGS) { return 0; }

uint32_t ke_omci_tapi_untag_addtag_del(KE_ANY_ARGS) { return 0; }

}  // extern "C"
