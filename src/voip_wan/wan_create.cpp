// Creation of a WAN interface in the OpenWrt configuration: a VLAN device
// on the PON device, an interface in the first free slot pon_1 .. pon_4,
// its firewall zone and IGMP proxy binding, the commits and a delayed
// reload of the services.  Nothing is rolled back and no command's status
// is examined; the caller cannot tell a creation from a refusal.
#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "copy.h"
#include "platform.h"
#include "trace.h"
#include "uci_shell.h"
#include "wan_conn.h"

namespace ke::voip_wan {
namespace {

// Every line and copy failure of a creation is reported under this name.
constexpr char kLogName[] = "igdCmConfAddByUci";
#define CREATE_SITE (::ke::Site{kLogName, __LINE__})

// The WAN MAC is the board MAC plus an offset that depends on the slot.
constexpr std::array<uint32_t, WAN_IF_MAX> kSlotMacOffset = {1, 6, 7, 8};

// The value buffer: uci values, section names, the service name, one
// address text or one DNS server at a time.
constexpr unsigned kValueSize = 16;

// A bound on the devices looked at, so that a uci that never stops
// answering cannot hold the caller forever.
constexpr int kMaxDevices = 4096;

// "[name(line)][name][line]: ..." with the log gate open.
__attribute__((format(printf, 2, 3))) void trace(Site site, const char *fmt, ...)
{
    if (!log_gate_open())
        return;
    std::printf("[%s(%d)][%s][%d]: ", site.func, site.line, site.func, site.line);
    va_list ap;
    va_start(ap, fmt);
    std::vprintf(fmt, ap);
    va_end(ap);
}

bool all_zero(const WanConn &rec, uint32_t off)
{
    return rec.u8(off) == 0 && rec.u8(off + 1) == 0 && rec.u8(off + 2) == 0 &&
           rec.u8(off + 3) == 0;
}

const char *service_name(uint32_t service)
{
    if (service == KE_WAN_SERVICE_VOICE)
        return "VOICE";
    if (service == KE_WAN_SERVICE_TR069)
        return "TR069";
    return "INTERNET";
}

const char *proto_of(uint8_t addr_mode)
{
    return addr_mode == KE_WAN_ADDR_DHCP ? "dhcp" : "static";
}

// The lowest slot n whose network.pon_n uci does not know; 0 when all are.
int free_slot()
{
    for (int n = 1; n <= WAN_IF_MAX; ++n) {
        char name[32];
        char value[kValueSize];
        std::snprintf(name, sizeof name, "network.pon_%d", n);
        if (omci_uci_get(name, value, sizeof value) != 0)
            return n;
    }
    return 0;
}

bool device_exists(const char *device)
{
    for (int i = 0; i < kMaxDevices; ++i) {
        char name[48];
        char value[kValueSize];
        std::snprintf(name, sizeof name, "network.@device[%d].name", i);
        if (omci_uci_get(name, value, sizeof value) != 0)
            return false;
        if (std::strcmp(value, device) == 0)
            return true;
    }
    return false;
}

// The board MAC (twelve hex digits) plus the slot's offset, as
// "XX:XX:XX:XX:XX:XX".  Digits that cannot be parsed count as zero; a
// signed field ("-1") is taken modulo 256, so that every word is a byte.
void derive_mac(const char *board_mac, int slot, char *text, size_t size)
{
    uint32_t mac[6] = {};
    std::sscanf(board_mac, "%02x%02x%02x%02x%02x%02x", &mac[0], &mac[1], &mac[2], &mac[3],
                &mac[4], &mac[5]);
    for (uint32_t &word : mac)
        word &= 0xFF;
    mac_increase_with_offset(mac, kSlotMacOffset[static_cast<size_t>(slot - 1)]);
    std::snprintf(text, size, "%02X:%02X:%02X:%02X:%02X:%02X", mac[0], mac[1], mac[2], mac[3],
                  mac[4], mac[5]);
}

// One dns list entry per DNS server of the record.  Each server is also
// copied into the 16-byte value buffer; a server too long for it is still
// added whole (the failed copy is printed).  The text comes from the OLT:
// a server holding a character the shell would act on is skipped.
void add_dns_servers(const WanConn &rec, const char *iface, char *value)
{
    if (rec.u8(conn::kDns) == 0)
        return;
    const char *text = reinterpret_cast<const char *>(rec.data() + conn::kDns);
    char dns[64] = {};
    if (copy_text(CREATE_SITE, dns, sizeof dns, text) != 0)
        dns[0] = '\0';
    for (char *token = ke_os_strtok(dns, ","); token != nullptr;
         token = ke_os_strtok(nullptr, ",")) {
        if (*token == '\0')
            continue;
        copy_text(CREATE_SITE, value, kValueSize, token);
        if (!is_plain_text(token)) {
            trace(CREATE_SITE, "DNS server [%s] holds a shell character, skipped\n", token);
            continue;
        }
        run_command("uci add_list network.%s.dns=%s", iface, token);
    }
}

// Address, mask and gateway (those given) and the DNS servers of a
// static interface.
void set_static_addresses(const WanConn &rec, const char *iface, char *value)
{
    struct Field {
        uint32_t off;
        const char *option;
    };
    constexpr Field kFields[] = {
        {conn::kIpaddr, "ipaddr"}, {conn::kNetmask, "netmask"}, {conn::kGateway, "gateway"}};
    for (const Field &f : kFields) {
        if (all_zero(rec, f.off))
            continue;
        omci_iptochar(rec.data() + f.off, value, kValueSize);
        run_command("uci set network.%s.%s=%s", iface, f.option, value);
    }
    add_dns_servers(rec, iface, value);
}

// The VLAN device pon.V on the PON device: every internal priority leaves
// with the connection's 802.1p priority.
void add_vlan_device(const WanConn &rec, int vlan, const char *mac, char *value)
{
    if (omci_uci_add("network device", value, kValueSize) != 0)
        return;
    run_command("uci set network.%s.name=pon.%d", value, vlan);
    run_command("uci set network.%s.macaddr=%s", value, mac);
    run_command("uci set network.%s.type=8021q", value);
    run_command("uci set network.%s.ifname=pon", value);
    run_command("uci set network.%s.vid=%d", value, vlan);
    for (int p = 0; p <= 7; ++p)
        run_command("uci add_list network.%s.egress_qos_mapping=%d:%d", value, p,
                    rec.u8(conn::kPriority));
}

void add_interface(const WanConn &rec, int slot, int vlan, char *value)
{
    uint8_t mode = rec.u8(conn::kAddrMode);
    run_command("uci set network.pon_%d=interface", slot);
    run_command("uci set network.pon_%d.proto=%s", slot, proto_of(mode));
    run_command("uci set network.pon_%d.device=pon.%d", slot, vlan);
    copy_text(CREATE_SITE, value, kValueSize, service_name(rec.u32(conn::kService)));
    run_command("uci set network.pon_%d.conn_type=%s", slot, value);
    run_command("uci set network.pon_%d.nat=1", slot);
    run_command("uci set network.pon_%d.igmp_proxy=1", slot);
    run_command("uci set network.pon_%d.metric=0", slot);
    if (mode == KE_WAN_ADDR_STATIC) {
        char iface[16];
        std::snprintf(iface, sizeof iface, "pon_%d", slot);
        set_static_addresses(rec, iface, value);
    }
}

// An internet connection takes over the interface "wan": it moves onto
// the new device, and the new slot itself is switched off.
void move_wan(const WanConn &rec, int slot, int vlan, const char *mac, char *value)
{
    uint8_t mode = rec.u8(conn::kAddrMode);
    run_command("uci set network.wan.ifname=pon.%d", vlan);
    run_command("uci set network.wan6.ifname=pon.%d", vlan);
    run_command("uci set network.pon_%d.disabled=1", slot);
    run_command("uci set network.wan.disabled=0");
    run_command("uci set network.wan.proto=%s", proto_of(mode));
    if (mode == KE_WAN_ADDR_STATIC)
        set_static_addresses(rec, "wan", value);
    run_command("uci set network.wan.ori_macaddr=%s", mac);
}

void add_igmp_proxy(int slot, char *value)
{
    if (omci_uci_add("igmpproxy phyint", value, kValueSize) != 0)
        return;
    run_command("uci set igmpproxy.%s.zone=wan", value);
    run_command("uci set igmpproxy.%s.network=pon_%d", value, slot);
    run_command("uci set igmpproxy.%s.direction=upstream", value);
}

// The services are reloaded five seconds later, in the background, so that
// the caller is not held by the reload.
void commit_and_reload()
{
    run_command("uci commit network");
    run_command("uci commit firewall");
    run_command("uci commit igmpproxy");
    run_command("( sleep 5; /etc/init.d/network reload >/dev/null 2>&1; "
                "/etc/init.d/firewall reload >/dev/null 2>&1; "
                "/etc/init.d/igmpproxy reload >/dev/null 2>&1 ) &");
}

}  // namespace

uint32_t create_interface(const WanConn &rec)
{
    char board_mac[257] = {};
    bdinfo_get_value("mac", board_mac, sizeof board_mac);
    trace(CREATE_SITE, "bdmac[%s]\n", board_mac);

    int slot = free_slot();
    if (slot == 0)
        return 0;
    trace(CREATE_SITE, "found an available pon wan interface, create it\n");

    int vlan = static_cast<int>(rec.u32(conn::kVlanId));
    char device[16];
    std::snprintf(device, sizeof device, "pon.%d", vlan);
    if (device_exists(device)) {
        trace(CREATE_SITE, "VLAN ID %d is conflicted!\n", vlan);
        return 0;
    }
    if (rec.u8(conn::kAddrMode) == KE_WAN_ADDR_STATIC &&
        (all_zero(rec, conn::kIpaddr) || all_zero(rec, conn::kNetmask))) {
        trace(CREATE_SITE, "Missing IP address or Mask configuration for static!\n");
        return 0;
    }
    char mac[18];
    derive_mac(board_mac, slot, mac, sizeof mac);
    trace(CREATE_SITE, "pon_%d PonWanMac[%s]\n", slot, mac);

    char value[kValueSize] = {};
    add_vlan_device(rec, vlan, mac, value);
    add_interface(rec, slot, vlan, value);
    uint32_t service = rec.u32(conn::kService);
    if (service != KE_WAN_SERVICE_TR069 && service != KE_WAN_SERVICE_VOICE)
        move_wan(rec, slot, vlan, mac, value);
    run_command("uci add_list firewall.@zone[1].network=pon_%d", slot);
    add_igmp_proxy(slot, value);
    commit_and_reload();
    return 0;
}

}  // namespace ke::voip_wan

extern "C" KE_API uint32_t igdCmConfAddByUci(const st_wan_conn *wan_conn)
{
    if (wan_conn == nullptr)
        return 0;
    ke::voip_wan::WanConn rec;
    rec.put(0, wan_conn, rec.size());
    return ke::voip_wan::create_interface(rec);
}
