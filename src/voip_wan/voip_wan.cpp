// The WAN connection that carries voice (or TR-069, or internet) traffic:
// set, read and delete in the configuration manager, found through the
// connection list by its service bit.
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "copy.h"
#include "platform.h"
#include "trace.h"
#include "wan_conn.h"
#include "wan_status.h"

namespace ke::voip_wan {
namespace {

constexpr uint32_t kSetNoMemory = 0x70000000;
constexpr uint32_t kNotFound = 0x70000000;
constexpr uint32_t kNoMemory = 0x7000001b;
constexpr uint8_t kPriorityNone = 15;

// The set function takes its list from the C heap, get and delete from
// the OS-abstraction library.
constexpr Heap kCHeap = {[](uint32_t size) { return std::malloc(size); }, std::free};
constexpr Heap kOsHeap = {ke_os_malloc, ke_os_free};

// Set picks voice, TR-069 or internet; get and delete know only voice
// and TR-069.
uint8_t set_service_bit(uint16_t service)
{
    if (service == 0)
        return KE_WAN_SERVICE_VOICE;
    return service == 1 ? KE_WAN_SERVICE_TR069 : KE_WAN_SERVICE_INTERNET;
}

uint8_t read_service_bit(uint32_t service)
{
    return service == 0 ? KE_WAN_SERVICE_VOICE : KE_WAN_SERVICE_TR069;
}

// The failed-call line of the set function's steps (gated).
void trace_step(Site site, uint32_t ret)
{
    if (log_gate_open())
        std::printf("[%s(%d)][INFO]:i_ret =0x%x\n", site.func, site.line,
                    static_cast<unsigned>(ret));
}

// Applies the caller's values whose presence word is set, in this order,
// and ORs into the mask words the bits of the fields that change.  Any
// address or the DNS text switches the connection to static addressing,
// also when the IP options of the same call asked for DHCP.
void ke_omci_tapi_voip_set_wan_attr(const st_voip_wan_attr &attr, WanConn &rec)
{
    WanConn old;
    copy(KE_SITE, old.data(), old.size(), rec.data(), rec.size());
    uint32_t mask1 = rec.u32(conn::kMask1);
    uint32_t mask2 = rec.u32(conn::kMask2);

    if (attr.us_ip_options_set != 0) {
        uint8_t mode = (attr.us_ip_options & 1) != 0 ? KE_WAN_ADDR_DHCP : KE_WAN_ADDR_STATIC;
        rec.put_u8(conn::kAddrMode, mode);
        if (mode != old.u8(conn::kAddrMode))
            mask1 |= conn::kMaskAddrMode;
    }
    if (attr.ui_vlan_id_set != 0) {
        rec.put_u8(conn::kVlanMode, 2);
        rec.put_u32(conn::kVlanId, attr.ui_vlan_id);
        if (attr.ui_vlan_id != old.u32(conn::kVlanId) || old.u8(conn::kVlanMode) != 2)
            mask1 |= conn::kMaskVlan;
    }
    if (attr.us_priority_set != 0) {
        bool none = attr.uc_priority == kPriorityNone;
        uint8_t priority = none ? 0 : attr.uc_priority;
        uint8_t enable = none ? 0 : 1;
        rec.put_u8(conn::kPriority, priority);
        rec.put_u8(conn::kPriorityEnable, enable);
        if (priority != old.u8(conn::kPriority))
            mask1 |= conn::kMaskPriority;
        if (enable != old.u8(conn::kPriorityEnable))
            mask2 |= conn::kMask2PriorityEnable;
    }

    struct Static {
        uint32_t present;
        const void *value;
        uint32_t off;
        uint32_t len;
        uint32_t bits;
    };
    const Static rows[] = {
        {attr.ui_ipaddr_set, &attr.ui_ipaddr, conn::kIpaddr, 4, conn::kMaskIpaddr},
        {attr.ui_netmask_set, &attr.ui_netmask, conn::kNetmask, 4, conn::kMaskNetmask},
        {attr.ui_gateway_set, &attr.ui_gateway, conn::kGateway, 4, conn::kMaskGateway},
        {attr.ui_dns_set, attr.ac_dns, conn::kDns, conn::kDnsLen, conn::kMaskDns},
    };
    for (const Static &r : rows) {
        if (r.present == 0)
            continue;
        copy(KE_SITE, rec.data() + r.off, r.len, r.value, r.len);
        rec.put_u8(conn::kAddrMode, KE_WAN_ADDR_STATIC);
        if (ke_os_memcmp(r.value, old.data() + r.off, r.len) != 0 ||
            old.u8(conn::kAddrMode) != KE_WAN_ADDR_STATIC)
            mask1 |= r.bits | conn::kMaskAddrMode;
    }
    rec.put_u32(conn::kMask1, mask1);
    rec.put_u32(conn::kMask2, mask2);
}

// Finds the connection with the service bit among the first `count`
// list entries; *found says whether there is one.
uint32_t ke_omci_tapi_voip_get_wan(uint32_t count, uint8_t service_bit, WanConn &rec, bool *found)
{
    LookupResult r = find_connection(__func__, count, service_bit, kCHeap, rec);
    *found = r.result == Lookup::Found;
    switch (r.result) {
    case Lookup::NoMemory:
        return kSetNoMemory;
    case Lookup::ListFailed:
        trace_step(KE_SITE, r.ret);
        return 1;
    case Lookup::ReadFailed:
        trace_step(KE_SITE, r.ret);
        return 1;
    case Lookup::Found:
    case Lookup::NotFound:
        break;
    }
    return 0;
}

// Writes the fields that the caller changes; nothing when none does.
uint32_t ke_omci_tapi_voip_set_wan(const st_voip_wan_attr &attr, WanConn &rec)
{
    rec.put_u32(conn::kMask1, 0);
    rec.put_u32(conn::kMask2, 0);
    ke_omci_tapi_voip_set_wan_attr(attr, rec);
    if (rec.u32(conn::kMask1) == 0 && rec.u32(conn::kMask2) == 0)
        return 0;
    uint32_t ret = cm::set(rec);
    if (ret != 0) {
        trace_step(KE_SITE, ret);
        return 1;
    }
    return 0;
}

// Builds a record for creation (static unless the caller says otherwise)
// and creates the WAN interface from it.
uint32_t ke_omci_tapi_voip_add_wan(const st_voip_wan_attr &attr, uint8_t service_bit, WanConn &rec)
{
    rec.put_u8(conn::kAddrMode, KE_WAN_ADDR_STATIC);
    ke_omci_tapi_voip_set_wan_attr(attr, rec);
    rec.put_u32(conn::kMask1, conn::kMaskAll);
    rec.put_u32(conn::kMask2, conn::kMaskAll);
    rec.put_u8(conn::kMark1, 1);
    rec.put_u8(conn::kVlanMode, 2);
    rec.put_u32(conn::kVlanId, attr.ui_vlan_id);
    rec.put_u8(conn::kMark2, 1);
    rec.put_u8(conn::kMark3, 1);
    rec.put_u32(conn::kService, service_bit);
    rec.put_u32(conn::kMtu, conn::kCreateMtu);
    rec.put_u8(conn::kMark4, 1);
    rec.put_u8(conn::kMark5, 1);
    uint32_t ret = create_interface(rec);
    if (ret != 0) {
        trace_step(KE_SITE, ret);
        return 1;
    }
    return 0;
}

// A state text (16 bytes, not necessarily terminated) as an address word.
uint32_t address_of(const WanState &state, uint32_t off)
{
    char text[state::kTextLen + 1] = {};
    state.get(off, text, state::kTextLen);
    return __omci_chartoip(text);
}

// The number of WAN connections.  A count the configuration manager could
// not give is no count at all: the table reads as empty, and no list is
// sized from whatever the failed call left behind.
uint32_t table_entries()
{
    uint32_t count = 0;
    if (igdCmConfGetEntryNum(cm::IGD_CO_WAN_CONN_TAB, &count) != 0)
        return 0;
    return count;
}

}  // namespace
}  // namespace ke::voip_wan

using namespace ke::voip_wan;
namespace cm = ke::cm;

extern "C" {

KE_API uint32_t ke_omci_tapi_voip_wan_set(const st_voip_wan_attr *attr)
{
    if (attr == nullptr)
        return kSetNoMemory;
    uint8_t service_bit = set_service_bit(attr->us_service);
    WanConn rec;

    uint32_t slots = 0;
    igdCmConfGetEntryNumByUci(&slots);
    bool found = false;
    if (slots != 0) {
        uint32_t ret = ke_omci_tapi_voip_get_wan(slots, service_bit, rec, &found);
        if (ret != 0)
            return ret;
    }
    if (!found && attr->ui_vlan_id_set == 0)
        return 0;  // nothing to create from: no connection, no status change
    uint32_t ret = found ? ke_omci_tapi_voip_set_wan(*attr, rec)
                         : ke_omci_tapi_voip_add_wan(*attr, service_bit, rec);
    if (ret != 0)
        return ret;
    if (attr->us_service != 0)
        set_tr069_wan_status(1);
    return 0;
}

KE_API uint32_t ke_omci_tapi_voip_wan_get(st_voip_wan_attr *attr)
{
    if (attr == nullptr)
        return kNotFound;
    WanConn rec;
    WanState st;
    LookupResult r = find_connection(__func__, table_entries(),
                                     read_service_bit(attr->us_service), kOsHeap, rec);
    switch (r.result) {
    case Lookup::NoMemory:
        return kNoMemory;
    case Lookup::ListFailed:
    case Lookup::ReadFailed:
        return 1;
    case Lookup::NotFound:
        return kNotFound;
    case Lookup::Found:
        break;
    }
    if (rec.u8(conn::kAddrMode) == KE_WAN_ADDR_DHCP)
        attr->us_ip_options |= 1;

    // All 30 field bits, little-endian whatever the host.
    constexpr uint8_t kAllStateFields[4] = {0xFF, 0xFF, 0xFF, 0x3F};
    st.put(state::kMask, kAllStateFields, sizeof kAllStateFields);
    st.put_u8(state::kKey, rec.u8(conn::kKey));
    ke::copy_text(KE_SITE, reinterpret_cast<char *>(st.data() + state::kName), conn::kNameLen,
                  reinterpret_cast<const char *>(rec.data() + conn::kName));
    if (cm::get(st) != 0)
        return 1;

    ke::copy(KE_SITE, attr->auc_mac, sizeof attr->auc_mac, rec.data() + conn::kMac, conn::kMacLen);
    attr->ui_netmask = address_of(st, state::kNetmask);
    attr->ui_gateway = address_of(st, state::kGateway);
    attr->ui_ipaddr = address_of(st, state::kIpaddr);
    attr->ui_dns1 = address_of(st, state::kDns1);
    attr->ui_dns2 = address_of(st, state::kDns2);
    ke::copy(KE_SITE, attr->ac_dns, sizeof attr->ac_dns, rec.data() + conn::kDns, conn::kDnsLen);
    return 0;
}

KE_API uint32_t ke_omci_tapi_voip_wan_del(uint32_t ui_service)
{
    if (ui_service != 0)
        set_tr069_wan_status(0);
    WanConn rec;
    LookupResult r =
        find_connection(__func__, table_entries(), read_service_bit(ui_service), kOsHeap, rec);
    switch (r.result) {
    case Lookup::NoMemory:
        return kNoMemory;
    case Lookup::ListFailed:
        ke::trace_failed_call(KE_SITE, r.ret);
        return 0;
    case Lookup::NotFound:
        return 0;
    case Lookup::ReadFailed:
        return 1;
    case Lookup::Found:
        break;
    }
    return cm::del(rec) == 0 ? 0 : 1;
}

}  // extern "C"
