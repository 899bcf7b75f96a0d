// VoIP WAN: the caller's IP host settings and the WAN connection tables.
// Reserved bytes are left out: they show up only if they are not zero.
#include "ke_omci_tapi/voip_wan.h"
#include "records.h"

namespace ketool {
namespace {

constexpr std::array kWanAttr = {
    KE_FIELD(st_voip_wan_attr, us_ip_options, Kind::U16),
    KE_FIELD(st_voip_wan_attr, us_ip_options_set, Kind::U16),
    KE_FIELD(st_voip_wan_attr, ui_vlan_id, Kind::U32),
    KE_FIELD(st_voip_wan_attr, ui_vlan_id_set, Kind::U32),
    KE_FIELD(st_voip_wan_attr, uc_priority, Kind::U8),
    KE_FIELD(st_voip_wan_attr, us_priority_set, Kind::U16),
    KE_FIELD(st_voip_wan_attr, ui_netmask, Kind::Ipv4),
    KE_FIELD(st_voip_wan_attr, ui_netmask_set, Kind::U32),
    KE_FIELD(st_voip_wan_attr, ui_gateway, Kind::Ipv4),
    KE_FIELD(st_voip_wan_attr, ui_gateway_set, Kind::U32),
    KE_FIELD(st_voip_wan_attr, ui_ipaddr, Kind::Ipv4),
    KE_FIELD(st_voip_wan_attr, ui_dns1, Kind::Ipv4),
    KE_FIELD(st_voip_wan_attr, ui_dns2, Kind::Ipv4),
    KE_FIELD(st_voip_wan_attr, ui_ipaddr_set, Kind::U32),
    KE_FIELD(st_voip_wan_attr, ac_dns, Kind::Text),
    KE_FIELD(st_voip_wan_attr, ui_dns_set, Kind::U32),
    KE_FIELD(st_voip_wan_attr, auc_mac, Kind::Mac),
    KE_FIELD(st_voip_wan_attr, us_service, Kind::U16),
};
constexpr std::array kWanConn = {
    KE_FIELD(st_wan_conn, ui_head, Kind::U32),
    KE_FIELD(st_wan_conn, auc_key, Kind::Bytes),
    KE_FIELD(st_wan_conn, uc_create_mark_1, Kind::U8),
    KE_FIELD(st_wan_conn, uc_vlan_mode, Kind::U8),
    KE_FIELD(st_wan_conn, uc_priority, Kind::U8),
    KE_FIELD(st_wan_conn, ui_vlan_id, Kind::U32),
    KE_FIELD(st_wan_conn, uc_create_mark_2, Kind::U8),
    KE_FIELD(st_wan_conn, uc_create_mark_3, Kind::U8),
    KE_FIELD(st_wan_conn, uc_addr_mode, Kind::U8),
    KE_FIELD(st_wan_conn, ui_service, Kind::U32),
    KE_FIELD(st_wan_conn, ac_name, Kind::Text),
    KE_FIELD(st_wan_conn, auc_netmask, Kind::Ipv4),
    KE_FIELD(st_wan_conn, auc_gateway, Kind::Ipv4),
    KE_FIELD(st_wan_conn, auc_ipaddr, Kind::Ipv4),
    KE_FIELD(st_wan_conn, ui_mtu, Kind::U32),
    KE_FIELD(st_wan_conn, uc_create_mark_4, Kind::U8),
    KE_FIELD(st_wan_conn, uc_priority_enable, Kind::U8),
    KE_FIELD(st_wan_conn, ac_dns, Kind::Text),
    KE_FIELD(st_wan_conn, auc_mac, Kind::Mac),
    KE_FIELD(st_wan_conn, uc_create_mark_5, Kind::U8),
    KE_FIELD(st_wan_conn, ui_mask1, Kind::U32),
    KE_FIELD(st_wan_conn, ui_mask2, Kind::U32),
};
constexpr std::array kWanConnState = {
    KE_FIELD(st_wan_conn_state, uc_key, Kind::U8),
    KE_FIELD(st_wan_conn_state, ac_name, Kind::Text),
    KE_FIELD(st_wan_conn_state, ac_ipaddr, Kind::Text),
    KE_FIELD(st_wan_conn_state, ac_netmask, Kind::Text),
    KE_FIELD(st_wan_conn_state, ac_gateway, Kind::Text),
    KE_FIELD(st_wan_conn_state, ac_dns1, Kind::Text),
    KE_FIELD(st_wan_conn_state, ac_dns2, Kind::Text),
    ketool::Field{"auc_mask", offsetof(st_wan_conn_state, auc_mask), 4, Kind::U32},
};
constexpr std::array kWanConnListEntry = {
    KE_FIELD(st_wan_conn_list_entry, auc_key, Kind::Bytes),
    KE_FIELD(st_wan_conn_list_entry, uc_service, Kind::U8),
    KE_FIELD(st_wan_conn_list_entry, ac_name, Kind::Text),
};

constexpr Layout kWanAttrLayout = KE_LAYOUT(st_voip_wan_attr, kWanAttr);
constexpr Layout kWanConnLayout = KE_LAYOUT(st_wan_conn, kWanConn);
constexpr Layout kWanConnStateLayout = KE_LAYOUT(st_wan_conn_state, kWanConnState);
constexpr Layout kWanConnListEntryLayout = KE_LAYOUT(st_wan_conn_list_entry, kWanConnListEntry);

constexpr std::array kLayouts = {
    &kWanAttrLayout, &kWanConnLayout, &kWanConnStateLayout, &kWanConnListEntryLayout,
};

}  // namespace

const LayoutList kVoipWanRecords = rows_of(kLayouts);

}  // namespace ketool
