// Device management: system information, serial number and LOID,
// firmware upgrade, Ethernet port attributes.
#include "ke_omci_tapi/device.h"
#include "records.h"

namespace ketool {
namespace {

constexpr std::array kSysinfo = {
    KE_FIELD(st_sysinfo, auc_info_a, Kind::Text),
    KE_FIELD(st_sysinfo, auc_info_b, Kind::Text),
    KE_FIELD(st_sysinfo, auc_info_c, Kind::Text),
    KE_FIELD(st_sysinfo, auc_info_d, Kind::Text),
    KE_FIELD(st_sysinfo, ui_info_e, Kind::U32),
    KE_FIELD(st_sysinfo, ui_product_type, Kind::U32),
    KE_FIELD(st_sysinfo, ui_user_port_num, Kind::U32),
    KE_FIELD(st_sysinfo, ui_board_2, Kind::U32),
    KE_FIELD(st_sysinfo, ui_board_3, Kind::U32),
    KE_FIELD(st_sysinfo, ui_board_0, Kind::U32),
    KE_FIELD(st_sysinfo, auc_info_f, Kind::Text),
    KE_FIELD(st_sysinfo, ui_info_g, Kind::U32),
};
constexpr std::array kSnLoid = {
    KE_FIELD(st_sn_loid, auc_id_a, Kind::Bytes),
    KE_FIELD(st_sn_loid, auc_sn, Kind::Bytes),
    KE_FIELD(st_sn_loid, auc_loid, Kind::Text),
    KE_FIELD(st_sn_loid, auc_loid_pwd, Kind::Text),
    KE_FIELD(st_sn_loid, auc_id_b, Kind::Text),
    KE_FIELD(st_sn_loid, auc_id_c, Kind::Text),
};
constexpr std::array kUpgradeStart = {
    KE_FIELD(st_upgrade_start, ui_section, Kind::U32),
    KE_FIELD(st_upgrade_start, ui_upgrade_word, Kind::U32),
    KE_FIELD(st_upgrade_start, ui_info_2, Kind::U32),
    KE_FIELD(st_upgrade_start, auc_info, Kind::Bytes),
};
constexpr std::array kUpgradeShard = {
    KE_FIELD(st_upgrade_shard, ui_upgrade_word, Kind::U32),
    KE_FIELD(st_upgrade_shard, ui_len, Kind::U32),
    KE_FIELD(st_upgrade_shard, auc_data, Kind::Bytes),
};
constexpr std::array kPortAttr = {
    KE_FIELD(st_port_attr, ui_port, Kind::U32),
    KE_FIELD(st_port_attr, ui_type, Kind::U32),
    KE_FIELD(st_port_attr, ui_state, Kind::U32),
    KE_FIELD(st_port_attr, ui_ethmode_cfg, Kind::U32),
    KE_FIELD(st_port_attr, ui_ethmode, Kind::U32),
    KE_FIELD(st_port_attr, ui_link, Kind::U32),
    KE_FIELD(st_port_attr, ui_loopback, Kind::U32),
    KE_FIELD(st_port_attr, ui_pause, Kind::U32),
    KE_ARRAY(st_port_attr, aui_incar, Kind::U32),
    KE_FIELD(st_port_attr, ui_reserved, Kind::U32),
    KE_FIELD(st_port_attr, ui_outcar, Kind::U32),
};

constexpr Layout kSysinfoLayout = KE_LAYOUT(st_sysinfo, kSysinfo);
constexpr Layout kSnLoidLayout = KE_LAYOUT(st_sn_loid, kSnLoid);
constexpr Layout kUpgradeStartLayout = KE_LAYOUT(st_upgrade_start, kUpgradeStart);
constexpr Layout kUpgradeShardLayout = KE_LAYOUT(st_upgrade_shard, kUpgradeShard);
constexpr Layout kPortAttrLayout = KE_LAYOUT(st_port_attr, kPortAttr);

constexpr std::array kLayouts = {
    &kSysinfoLayout, &kSnLoidLayout, &kUpgradeStartLayout, &kUpgradeShardLayout, &kPortAttrLayout,
};

}  // namespace

const LayoutList kDeviceRecords = rows_of(kLayouts);

}  // namespace ketool
