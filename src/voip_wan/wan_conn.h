// The WAN connection tables: the connection record (448), its state
// (449) and the connection list (458), with the field masks of 448 and
// the lookup of a connection by its service bit.
#ifndef KE_VOIP_WAN_WAN_CONN_H
#define KE_VOIP_WAN_WAN_CONN_H

#include <cstddef>
#include <cstdint>

#include "cm_table.h"
#include "ke_omci_tapi/voip_wan.h"

namespace ke::voip_wan {

using WanConn = cm::Record<cm::IGD_CO_WAN_CONN_TAB>;
using WanState = cm::Record<cm::IGD_CO_WAN_CONN_STATE_TAB>;

static_assert(WanConn::kSize == sizeof(st_wan_conn), "table 448 record");
static_assert(WanState::kSize == sizeof(st_wan_conn_state), "table 449 record");
static_assert(cm::record_size(cm::IGD_CO_WAN_CONN_LIST_TAB) == sizeof(st_wan_conn_list_entry),
              "table 458 entry");

// Field offsets, taken from the public records so that there is one layout.
namespace conn {
inline constexpr uint32_t kKey = offsetof(st_wan_conn, auc_key);
inline constexpr uint32_t kKeyLen = sizeof(st_wan_conn::auc_key);
inline constexpr uint32_t kMark1 = offsetof(st_wan_conn, uc_create_mark_1);
inline constexpr uint32_t kVlanMode = offsetof(st_wan_conn, uc_vlan_mode);
inline constexpr uint32_t kPriority = offsetof(st_wan_conn, uc_priority);
inline constexpr uint32_t kVlanId = offsetof(st_wan_conn, ui_vlan_id);
inline constexpr uint32_t kMark2 = offsetof(st_wan_conn, uc_create_mark_2);
inline constexpr uint32_t kMark3 = offsetof(st_wan_conn, uc_create_mark_3);
inline constexpr uint32_t kAddrMode = offsetof(st_wan_conn, uc_addr_mode);
inline constexpr uint32_t kService = offsetof(st_wan_conn, ui_service);
inline constexpr uint32_t kName = offsetof(st_wan_conn, ac_name);
inline constexpr uint32_t kNameLen = sizeof(st_wan_conn::ac_name);
inline constexpr uint32_t kNetmask = offsetof(st_wan_conn, auc_netmask);
inline constexpr uint32_t kGateway = offsetof(st_wan_conn, auc_gateway);
inline constexpr uint32_t kIpaddr = offsetof(st_wan_conn, auc_ipaddr);
inline constexpr uint32_t kMtu = offsetof(st_wan_conn, ui_mtu);
inline constexpr uint32_t kMark4 = offsetof(st_wan_conn, uc_create_mark_4);
inline constexpr uint32_t kPriorityEnable = offsetof(st_wan_conn, uc_priority_enable);
inline constexpr uint32_t kDns = offsetof(st_wan_conn, ac_dns);
inline constexpr uint32_t kDnsLen = sizeof(st_wan_conn::ac_dns);
inline constexpr uint32_t kMac = offsetof(st_wan_conn, auc_mac);
inline constexpr uint32_t kMacLen = sizeof(st_wan_conn::auc_mac);
inline constexpr uint32_t kMark5 = offsetof(st_wan_conn, uc_create_mark_5);
inline constexpr uint32_t kMask1 = offsetof(st_wan_conn, ui_mask1);
inline constexpr uint32_t kMask2 = offsetof(st_wan_conn, ui_mask2);

// ui_mask1 bits: each selects the fields it names.
inline constexpr uint32_t kMaskVlan = 0x22;  // uc_vlan_mode and ui_vlan_id
inline constexpr uint32_t kMaskPriority = 0x4;
inline constexpr uint32_t kMaskAddrMode = 0x100;
inline constexpr uint32_t kMaskNetmask = 0x800000;
inline constexpr uint32_t kMaskGateway = 0x1000000;
inline constexpr uint32_t kMaskIpaddr = 0x2000000;
inline constexpr uint32_t kMaskDns = 0x40000000;
// ui_mask2 bit.
inline constexpr uint32_t kMask2PriorityEnable = 0x20000000;
// Both words all ones: every field (each Get, and a record for creation).
inline constexpr uint32_t kMaskAll = 0xFFFFFFFF;

inline constexpr uint32_t kCreateMtu = 1492;
}  // namespace conn

namespace state {
inline constexpr uint32_t kKey = offsetof(st_wan_conn_state, uc_key);
inline constexpr uint32_t kName = offsetof(st_wan_conn_state, ac_name);
inline constexpr uint32_t kIpaddr = offsetof(st_wan_conn_state, ac_ipaddr);
inline constexpr uint32_t kNetmask = offsetof(st_wan_conn_state, ac_netmask);
inline constexpr uint32_t kGateway = offsetof(st_wan_conn_state, ac_gateway);
inline constexpr uint32_t kDns1 = offsetof(st_wan_conn_state, ac_dns1);
inline constexpr uint32_t kDns2 = offsetof(st_wan_conn_state, ac_dns2);
inline constexpr uint32_t kTextLen = sizeof(st_wan_conn_state::ac_ipaddr);
inline constexpr uint32_t kMask = offsetof(st_wan_conn_state, auc_mask);
}  // namespace state

namespace list {
inline constexpr uint32_t kEntrySize = sizeof(st_wan_conn_list_entry);
inline constexpr uint32_t kKey = offsetof(st_wan_conn_list_entry, auc_key);
inline constexpr uint32_t kService = offsetof(st_wan_conn_list_entry, uc_service);
inline constexpr uint32_t kName = offsetof(st_wan_conn_list_entry, ac_name);
}  // namespace list

// The allocator a function takes its connection list from.
struct Heap {
    void *(*alloc)(uint32_t size);
    void (*release)(void *block);
};

enum class Lookup { Found, NotFound, NoMemory, ListFailed, ReadFailed };

struct LookupResult {
    Lookup result;
    uint32_t ret;  // the failed call's code for ListFailed and ReadFailed
};

// Reads the first `count` entries of the connection list and, for the
// first whose service byte has service_bit, reads its connection record
// (all fields) into rec, which must be zero.  An empty list finds nothing.
// Copy failures are printed under log_name.
LookupResult find_connection(const char *log_name, uint32_t count, uint8_t service_bit,
                             const Heap &heap, WanConn &rec);

// Creates the OpenWrt WAN interface of a connection record; always 0.
uint32_t create_interface(const WanConn &rec);

}  // namespace ke::voip_wan

#endif
