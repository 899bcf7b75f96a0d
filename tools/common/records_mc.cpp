// Multicast: global attributes, a port's IGMP settings, VLANs, group rows.
#include "ke_omci_tapi/mc.h"
#include "records.h"

namespace ketool {
namespace {

constexpr std::array kMcAttr = {
    KE_FIELD(st_mc_attr, ui_igmp_ver, Kind::U32),
    KE_FIELD(st_mc_attr, ui_mc_mode, Kind::U32),
    KE_FIELD(st_mc_attr, ui_quickleave, Kind::U32),
};
constexpr std::array kMcIgmpAttr = {
    KE_FIELD(st_mc_igmp_attr, ui_upmode, Kind::U32),
    KE_FIELD(st_mc_igmp_attr, ui_upvlan, Kind::U32),
    KE_FIELD(st_mc_igmp_attr, ui_uppri, Kind::U32),
    KE_FIELD(st_mc_igmp_attr, ui_upgemport, Kind::U32),
};
constexpr std::array kMcVlan = {
    KE_FIELD(st_mc_vlan, ui_port, Kind::U32),
    KE_FIELD(st_mc_vlan, ui_vlan, Kind::U32),
};
constexpr std::array kMcTable = {
    KE_FIELD(st_mc_table, ui_row_0, Kind::U32),
    KE_FIELD(st_mc_table, ui_row_1, Kind::U32),
    KE_FIELD(st_mc_table, ui_vlan, Kind::U32),
    KE_FIELD(st_mc_table, ui_row_3, Kind::U32),
    KE_FIELD(st_mc_table, auc_ip_start, Kind::Bytes),
    KE_FIELD(st_mc_table, auc_ip_end, Kind::Bytes),
    KE_FIELD(st_mc_table, ui_port, Kind::U32),
};

constexpr Layout kMcAttrLayout = KE_LAYOUT(st_mc_attr, kMcAttr);
constexpr Layout kMcIgmpAttrLayout = KE_LAYOUT(st_mc_igmp_attr, kMcIgmpAttr);
constexpr Layout kMcVlanLayout = KE_LAYOUT(st_mc_vlan, kMcVlan);
constexpr Layout kMcTableLayout = KE_LAYOUT(st_mc_table, kMcTable);

constexpr std::array kLayouts = {
    &kMcAttrLayout, &kMcIgmpAttrLayout, &kMcVlanLayout, &kMcTableLayout,
};

}  // namespace

const LayoutList kMcRecords = rows_of(kLayouts);

}  // namespace ketool
