// The VoIP WAN connection: finding it by service bit, change detection
// and field masks of a set, creation when it is missing, the read of its
// values in use, the delete and the TR-069 WAN status byte.  Failed table
// operations, allocations and copies are the fault sweep's.
#include <arpa/inet.h>

#include <cstring>

#include "ke_omci_tapi/voip_wan.h"
#include "uci_sandbox.h"

// The TR-069 status read belongs to the remote-management family; its
// checks run when that family is in the build.
extern "C" __attribute__((weak)) uint32_t ke_omci_tapi_tr069_status_get(uint32_t *value);

namespace {

using ketest::bytes_of;
using kestub::CmOp;
using Ops = std::vector<CmOp>;

constexpr uint32_t kConn = 448, kState = 449, kList = 458;

uint32_t addr(const char *text) { return inet_addr(text); }

void put_addr(uint8_t *dst, const char *text)
{
    uint32_t a = addr(text);
    std::memcpy(dst, &a, 4);
}

template <class Rec>
Rec zeroed()
{
    Rec r;
    std::memset(static_cast<void *>(&r), 0, sizeof r);
    return r;
}

st_wan_conn_list_entry entry(uint8_t key, uint8_t service, const char *name)
{
    auto e = zeroed<st_wan_conn_list_entry>();
    e.auc_key[0] = key;
    e.auc_key[1] = static_cast<uint8_t>(key + 1);
    e.auc_key[2] = static_cast<uint8_t>(key + 2);
    e.uc_service = service;
    std::snprintf(e.ac_name, sizeof e.ac_name, "%s", name);
    return e;
}

// A static connection as the configuration manager holds it.
st_wan_conn stored_conn(uint8_t key, const char *name)
{
    auto c = zeroed<st_wan_conn>();
    c.auc_key[0] = key;
    c.auc_key[1] = static_cast<uint8_t>(key + 1);
    c.auc_key[2] = static_cast<uint8_t>(key + 2);
    std::snprintf(c.ac_name, sizeof c.ac_name, "%s", name);
    c.uc_vlan_mode = 2;
    c.ui_vlan_id = 100;
    c.uc_priority = 5;
    c.uc_priority_enable = 1;
    c.uc_addr_mode = KE_WAN_ADDR_STATIC;
    c.ui_service = KE_WAN_SERVICE_VOICE;
    put_addr(c.auc_ipaddr, "10.0.0.2");
    put_addr(c.auc_netmask, "255.255.255.0");
    put_addr(c.auc_gateway, "10.0.0.1");
    std::snprintf(c.ac_dns, sizeof c.ac_dns, "8.8.8.8,8.8.4.4");
    const uint8_t mac[6] = {0x02, 0x10, 0x18, 0x00, 0x00, key};
    std::memcpy(c.auc_mac, mac, 6);
    return c;
}

st_wan_conn_state stored_state(uint8_t key, const char *name)
{
    auto s = zeroed<st_wan_conn_state>();
    s.uc_key = key;
    std::snprintf(s.ac_name, sizeof s.ac_name, "%s", name);
    std::snprintf(s.ac_ipaddr, sizeof s.ac_ipaddr, "10.9.8.7");
    std::snprintf(s.ac_netmask, sizeof s.ac_netmask, "255.255.0.0");
    std::snprintf(s.ac_gateway, sizeof s.ac_gateway, "10.9.0.1");
    std::snprintf(s.ac_dns1, sizeof s.ac_dns1, "1.1.1.1");
    std::snprintf(s.ac_dns2, sizeof s.ac_dns2, "9.9.9.9");
    return s;
}

st_voip_wan_attr attr_for(uint16_t service)
{
    auto a = zeroed<st_voip_wan_attr>();
    a.us_service = service;
    return a;
}

Ops ops()
{
    Ops out;
    for (const auto &c : kestub::cm_calls())
        out.push_back(c.op);
    return out;
}

// The records written to table 448.
std::vector<std::vector<uint8_t>> conn_sets()
{
    std::vector<std::vector<uint8_t>> out;
    for (const auto &c : kestub::cm_calls())
        if (c.op == CmOp::Set && c.table == kConn)
            out.push_back(c.record);
    return out;
}

class VoipWan : public ketest::UciSandbox {
protected:
    void SetUp() override
    {
        UciSandbox::SetUp();
        use_slots(1);
        write_config("firewall", "config zone\nconfig zone\n");
        write_config("igmpproxy", "");
    }

    // n WAN interface slots in use: what set counts the list with.
    void use_slots(int n)
    {
        std::string network = "config interface 'wan'\nconfig interface 'wan6'\n";
        for (int i = 1; i <= n; ++i)
            network += "config interface 'pon_" + std::to_string(i) + "'\n";
        write_config("network", network);
    }

    template <class Rec>
    static void preload(uint32_t table, const Rec &r)
    {
        kestub::cm_preload(table, &r, sizeof r);
    }

    // One connection with these service bits, its record and its state.
    static st_wan_conn preload_conn(uint8_t key, uint8_t service_bits, const char *name)
    {
        preload(kList, entry(key, service_bits, name));
        st_wan_conn c = stored_conn(key, name);
        preload(kConn, c);
        preload(kState, stored_state(key, name));
        return c;
    }

    static st_wan_conn preload_voice() { return preload_conn(1, KE_WAN_SERVICE_VOICE, "voice"); }

    // Delete clears the status byte, which lives as long as the library.
    void clear_status()
    {
        ke_omci_tapi_voip_wan_del(1);
        restart();
    }

    // The status byte; want when the TR-069 status read is in the build.
    static void expect_status(uint32_t want, const char *label = "")
    {
        if (ke_omci_tapi_tr069_status_get == nullptr)
            return;
        uint32_t value = 0xEEEEEEEE;
        EXPECT_EQ(ke_omci_tapi_tr069_status_get(&value), 0u);
        EXPECT_EQ(static_cast<uint8_t>(value), want) << label;
    }
};

// The list is read whole (1 slot: 1 entry of 148 bytes), then the
// connection's record; only a change writes it, with the fields' masks.
TEST_F(VoipWan, EachChangedValueSetsItsMaskBits)
{
    struct Case {
        const char *label;
        void (*old)(st_wan_conn &);
        void (*give)(st_voip_wan_attr &);
        void (*want)(st_wan_conn &);  // fields written, from the old record
        uint32_t mask1, mask2;
    };
    auto same = [](st_wan_conn &) {};
    const Case cases[] = {
        {"new gateway", same,
         [](st_voip_wan_attr &a) { a.ui_gateway = addr("10.0.0.254"); a.ui_gateway_set = 1; },
         [](st_wan_conn &c) { put_addr(c.auc_gateway, "10.0.0.254"); }, 0x1000100, 0},
        {"dhcp on a static connection", same,
         [](st_voip_wan_attr &a) { a.us_ip_options = 1; a.us_ip_options_set = 1; },
         [](st_wan_conn &c) { c.uc_addr_mode = KE_WAN_ADDR_DHCP; }, 0x100, 0},
        {"only bit 0 of the options counts", same,
         [](st_voip_wan_attr &a) { a.us_ip_options = 0xFFFE; a.us_ip_options_set = 1; }, same,
         0, 0},
        {"new vlan", same, [](st_voip_wan_attr &a) { a.ui_vlan_id = 101; a.ui_vlan_id_set = 1; },
         [](st_wan_conn &c) { c.ui_vlan_id = 101; }, 0x22, 0},
        {"same vlan, vlan mode not yet 2", [](st_wan_conn &c) { c.uc_vlan_mode = 0; },
         [](st_voip_wan_attr &a) { a.ui_vlan_id = 100; a.ui_vlan_id_set = 1; },
         [](st_wan_conn &c) { c.uc_vlan_mode = 2; }, 0x22, 0},
        {"priority 15 means none", same,
         [](st_voip_wan_attr &a) { a.uc_priority = 15; a.us_priority_set = 1; },
         [](st_wan_conn &c) { c.uc_priority = 0; c.uc_priority_enable = 0; }, 0x4, 0x20000000},
        {"priority 0 is in force",
         [](st_wan_conn &c) { c.uc_priority = 0; c.uc_priority_enable = 0; },
         [](st_voip_wan_attr &a) { a.uc_priority = 0; a.us_priority_set = 1; },
         [](st_wan_conn &c) { c.uc_priority_enable = 1; }, 0, 0x20000000},
        {"new priority", same,
         [](st_voip_wan_attr &a) { a.uc_priority = 6; a.us_priority_set = 1; },
         [](st_wan_conn &c) { c.uc_priority = 6; }, 0x4, 0},
        {"new address", same,
         [](st_voip_wan_attr &a) { a.ui_ipaddr = addr("10.0.0.3"); a.ui_ipaddr_set = 1; },
         [](st_wan_conn &c) { put_addr(c.auc_ipaddr, "10.0.0.3"); }, 0x2000100, 0},
        {"same address on a dhcp connection",
         [](st_wan_conn &c) { c.uc_addr_mode = KE_WAN_ADDR_DHCP; },
         [](st_voip_wan_attr &a) { a.ui_ipaddr = addr("10.0.0.2"); a.ui_ipaddr_set = 1; },
         [](st_wan_conn &c) { c.uc_addr_mode = KE_WAN_ADDR_STATIC; }, 0x2000100, 0},
        {"new mask", same,
         [](st_voip_wan_attr &a) { a.ui_netmask = addr("255.0.0.0"); a.ui_netmask_set = 1; },
         [](st_wan_conn &c) { put_addr(c.auc_netmask, "255.0.0.0"); }, 0x800100, 0},
        {"new dns text", same,
         [](st_voip_wan_attr &a) { std::strcpy(a.ac_dns, "9.9.9.9"); a.ui_dns_set = 1; },
         [](st_wan_conn &c) { std::memset(c.ac_dns, 0, 256); std::strcpy(c.ac_dns, "9.9.9.9"); },
         0x40000100, 0},
        {"dns differing after its terminator", [](st_wan_conn &c) { c.ac_dns[255] = 'x'; },
         [](st_voip_wan_attr &a) { std::strcpy(a.ac_dns, "8.8.8.8,8.8.4.4"); a.ui_dns_set = 1; },
         [](st_wan_conn &c) { c.ac_dns[255] = 0; }, 0x40000100, 0},
        {"an address after dhcp in one call stays static", same,
         [](st_voip_wan_attr &a) {
             a.us_ip_options = a.us_ip_options_set = a.ui_ipaddr_set = 1;
             a.ui_ipaddr = addr("10.0.0.2");
         },
         same, 0x100, 0},
        {"every value as stored", same,
         [](st_voip_wan_attr &a) {
             st_wan_conn c = stored_conn(1, "voice");
             a.us_ip_options_set = a.ui_vlan_id_set = a.us_priority_set = 1;
             a.ui_ipaddr_set = a.ui_netmask_set = a.ui_gateway_set = a.ui_dns_set = 1;
             a.ui_vlan_id = c.ui_vlan_id;
             a.uc_priority = c.uc_priority;
             std::memcpy(&a.ui_ipaddr, c.auc_ipaddr, 4);
             std::memcpy(&a.ui_netmask, c.auc_netmask, 4);
             std::memcpy(&a.ui_gateway, c.auc_gateway, 4);
             std::memcpy(a.ac_dns, c.ac_dns, 256);
         },
         same, 0, 0},
        {"values without presence are ignored", same,
         [](st_voip_wan_attr &a) {
             a.us_ip_options = 1;
             a.ui_vlan_id = 7;
             a.uc_priority = 1;
             a.ui_ipaddr = addr("1.2.3.4");
             a.ui_netmask = addr("255.0.0.0");
             a.ui_gateway = addr("1.2.3.1");
             std::strcpy(a.ac_dns, "1.1.1.1");
         },
         same, 0, 0},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.label);
        restart();
        st_wan_conn old = stored_conn(1, "voice");
        c.old(old);
        preload(kList, entry(1, KE_WAN_SERVICE_VOICE, "voice"));
        preload(kConn, old);
        st_voip_wan_attr a = attr_for(0);
        c.give(a);
        EXPECT_EQ(ke_omci_tapi_voip_wan_set(&a), 0u);
        const bool written = c.mask1 != 0 || c.mask2 != 0;
        ASSERT_EQ(ops(), (written ? Ops{CmOp::GetAllEntry, CmOp::Get, CmOp::Set}
                                  : Ops{CmOp::GetAllEntry, CmOp::Get}));
        const auto &calls = kestub::cm_calls();
        EXPECT_EQ(calls[0].table, kList);
        EXPECT_EQ(calls[0].size, 148u);
        EXPECT_EQ(calls[0].count, 1u);
        EXPECT_EQ(calls[1].table, kConn);
        EXPECT_EQ(calls[1].size, 2680u);
        if (written) {
            st_wan_conn want = old;
            c.want(want);
            want.ui_mask1 = c.mask1;
            want.ui_mask2 = c.mask2;
            EXPECT_EQ(conn_sets().at(0), bytes_of(want));
        }
    }
    EXPECT_EQ(ke_omci_tapi_voip_wan_set(nullptr), 0x70000000u);
}

TEST_F(VoipWan, ServiceBitsDifferBetweenSetAndReads)
{
    use_slots(4);
    // Key 1: TR-069; key 4: internet; key 7: voice and TR-069.
    auto arrange = [this] {
        restart();
        preload_conn(1, KE_WAN_SERVICE_TR069, "tr069");
        preload_conn(4, KE_WAN_SERVICE_INTERNET, "internet");
        preload_conn(7, KE_WAN_SERVICE_VOICE | KE_WAN_SERVICE_TR069, "both");
    };
    struct {
        uint16_t service;
        uint8_t set_key, read_key;
    } cases[] = {{0, 7, 7}, {1, 1, 1}, {2, 4, 1}, {0xFFFF, 4, 1}};
    for (const auto &c : cases) {
        arrange();
        st_voip_wan_attr a = attr_for(c.service);
        a.ui_vlan_id = 200;
        a.ui_vlan_id_set = 1;
        EXPECT_EQ(ke_omci_tapi_voip_wan_set(&a), 0u);
        EXPECT_EQ(kestub::cm_calls()[0].count, 4u);
        ASSERT_EQ(conn_sets().size(), 1u) << c.service;
        EXPECT_EQ(conn_sets()[0][4], c.set_key) << c.service;

        arrange();
        st_voip_wan_attr g = attr_for(c.service);
        EXPECT_EQ(ke_omci_tapi_voip_wan_get(&g), 0u);
        EXPECT_EQ(g.auc_mac[5], c.read_key) << c.service;
        EXPECT_EQ(g.us_ip_options, 0) << "a static connection leaves the DHCP bit clear";
    }
    // The delete reads like get, with the service as a word.
    for (uint32_t service : {0u, 2u, 0x10000u}) {
        arrange();
        EXPECT_EQ(ke_omci_tapi_voip_wan_del(service), 0u);
        ASSERT_EQ(ops().back(), CmOp::Del);
        EXPECT_EQ(kestub::cm_calls().back().record[4], service == 0 ? 7 : 1) << service;
    }
}

TEST_F(VoipWan, NoSlotAndNoVlanCreatesNothing)
{
    clear_status();
    use_slots(0);
    st_voip_wan_attr a = attr_for(1);
    a.ui_ipaddr = addr("10.0.0.2");
    a.ui_ipaddr_set = 1;
    EXPECT_EQ(ke_omci_tapi_voip_wan_set(&a), 0u);
    EXPECT_TRUE(kestub::cm_calls().empty());
    EXPECT_EQ(kestub::shell_commands().size(), 4u);  // the slot reads
    expect_status(0);
}

TEST_F(VoipWan, AMissingConnectionIsCreatedFromTheCallersValues)
{
    struct {
        const char *label;
        uint16_t service, ip_options;
        uint8_t priority;
        bool address;
        const char *proto, *conn_type, *mapping;
    } cases[] = {
        {"static voice", 0, 0, 3, true, "static", "VOICE", "7:3"},
        {"dhcp tr069 without priority", 1, 1, 15, false, "dhcp", "TR069", "7:0"},
        {"dhcp asked, address given: static", 1, 1, 0, true, "static", "TR069", "7:0"},
        {"internet", 9, 0, 7, true, "static", "INTERNET", "7:7"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.label);
        clear_status();
        use_slots(0);
        write_config("firewall", "config zone\nconfig zone\n");
        st_voip_wan_attr a = attr_for(c.service);
        a.ui_vlan_id = 300;
        a.uc_priority = c.priority;
        a.us_ip_options = c.ip_options;
        a.ui_vlan_id_set = a.us_priority_set = a.us_ip_options_set = 1;
        if (c.address) {
            a.ui_ipaddr = addr("10.3.0.2");
            a.ui_netmask = addr("255.255.255.0");
            std::strcpy(a.ac_dns, "1.0.0.1,1.1.1.1");
            a.ui_ipaddr_set = a.ui_netmask_set = a.ui_dns_set = 1;
        }
        EXPECT_EQ(ke_omci_tapi_voip_wan_set(&a), 0u);
        EXPECT_TRUE(kestub::cm_calls().empty());
        EXPECT_EQ(uci_get("network.pon_1.proto"), c.proto);
        EXPECT_EQ(uci_get("network.pon_1.conn_type"), c.conn_type);
        EXPECT_EQ(uci_get("network.pon_1.device"), "pon.300");
        EXPECT_EQ(uci_get("network.@device[-1].egress_qos_mapping").substr(28), c.mapping);
        EXPECT_EQ(uci_get("network.pon_1.ipaddr"), c.address ? "10.3.0.2" : "");
        EXPECT_EQ(uci_get("network.pon_1.dns"), c.address ? "1.0.0.1 1.1.1.1" : "");
        expect_status(c.service != 0 ? 1 : 0);
    }
}

TEST_F(VoipWan, GetReturnsTheValuesInUseAndTheConfiguredDns)
{
    // The reads match only with the name, and with all ones (448) or the
    // 30 field bits (449) as masks.
    kestub::cm_set_key(kConn, {{4, 3}, {92, 64}, {2668, 8}});
    kestub::cm_set_key(kState, {{4, 1}, {8, 64}, {555, 4}});
    st_wan_conn c = stored_conn(3, "ip host");
    c.uc_addr_mode = KE_WAN_ADDR_DHCP;
    std::snprintf(c.ac_dns, sizeof c.ac_dns, "4.4.4.4");
    c.ac_dns[255] = 'z';  // all 256 bytes are copied
    c.ui_mask1 = c.ui_mask2 = 0xFFFFFFFF;
    st_wan_conn_state s = stored_state(3, "ip host");
    std::memcpy(s.ac_dns2, "1111111111111111", 16);  // no terminator: malformed
    const uint8_t state_mask[4] = {0xFF, 0xFF, 0xFF, 0x3F};
    std::memcpy(s.auc_mask, state_mask, 4);
    preload(kList, entry(3, KE_WAN_SERVICE_VOICE, "ip host"));
    preload(kConn, c);
    preload(kState, s);

    st_voip_wan_attr a = attr_for(0);
    a.us_ip_options = 0x10;
    EXPECT_EQ(ke_omci_tapi_voip_wan_get(&a), 0u);
    EXPECT_EQ(ops(), (Ops{CmOp::GetEntryNum, CmOp::GetAllEntry, CmOp::Get, CmOp::Get}));
    EXPECT_EQ(kestub::cm_calls()[3].table, kState);
    EXPECT_EQ(kestub::cm_calls()[3].size, 559u);
    EXPECT_EQ(a.us_ip_options, 0x11);
    EXPECT_EQ(a.ui_ipaddr, addr("10.9.8.7"));
    EXPECT_EQ(a.ui_netmask, addr("255.255.0.0"));
    EXPECT_EQ(a.ui_gateway, addr("10.9.0.1"));
    EXPECT_EQ(a.ui_dns1, addr("1.1.1.1"));
    EXPECT_EQ(a.ui_dns2, 0xFFFFFFFFu);
    EXPECT_EQ(std::memcmp(a.ac_dns, c.ac_dns, 256), 0);
    EXPECT_EQ(std::memcmp(a.auc_mac, c.auc_mac, 6), 0);
    EXPECT_EQ(a.us_service, 0);
}

TEST_F(VoipWan, GetOfAMissingConnectionLeavesTheCallersRecord)
{
    preload_voice();
    st_voip_wan_attr a;
    std::memset(&a, 0x5A, sizeof a);
    a.us_service = 1;
    const st_voip_wan_attr before = a;
    EXPECT_EQ(ke_omci_tapi_voip_wan_get(&a), 0x70000000u);
    EXPECT_EQ(bytes_of(a), bytes_of(before));
    EXPECT_EQ(ke_omci_tapi_voip_wan_get(nullptr), 0x70000000u);
}

TEST_F(VoipWan, DeleteRemovesTheConnectionAsRead)
{
    st_wan_conn stored = preload_voice();
    EXPECT_EQ(ke_omci_tapi_voip_wan_del(0), 0u);
    EXPECT_EQ(ops(), (Ops{CmOp::GetEntryNum, CmOp::GetAllEntry, CmOp::Get, CmOp::Del}));
    const auto &del = kestub::cm_calls()[3];
    EXPECT_EQ(del.table, kConn);
    EXPECT_EQ(del.record, bytes_of(stored));
    EXPECT_TRUE(kestub::cm_entries(kConn).empty());

    // A missing connection is a success.  (An empty table is one whose
    // count cannot be read, as the fault sweep has it.)
    restart();
    preload_conn(1, KE_WAN_SERVICE_TR069, "tr069");
    EXPECT_EQ(ke_omci_tapi_voip_wan_del(0), 0u);
    EXPECT_EQ(kestub::cm_entries(kConn).size(), 1u);
}

TEST_F(VoipWan, Tr069StatusFollowsSetAndDelete)
{
    if (ke_omci_tapi_tr069_status_get == nullptr)
        GTEST_SKIP() << "the TR-069 status read is not in this build";
    clear_status();
    use_slots(2);
    preload(kList, entry(1, KE_WAN_SERVICE_TR069, "tr069"));
    preload(kList, entry(2, KE_WAN_SERVICE_VOICE, "voice"));
    preload(kConn, stored_conn(1, "tr069"));
    preload(kConn, stored_conn(2, "voice"));
    st_voip_wan_attr voice = attr_for(0), tr069 = attr_for(1);
    expect_status(0);
    EXPECT_EQ(ke_omci_tapi_voip_wan_set(&voice), 0u);
    expect_status(0);
    EXPECT_EQ(ke_omci_tapi_voip_wan_set(&tr069), 0u);  // nothing changes, still a success
    expect_status(1);
    EXPECT_EQ(ke_omci_tapi_voip_wan_del(0), 0u);
    expect_status(1);
    kestub::os_fail_malloc(1);
    EXPECT_EQ(ke_omci_tapi_voip_wan_del(3), 0x7000001bu);  // cleared whatever the outcome
    expect_status(0);
}

}  // namespace
