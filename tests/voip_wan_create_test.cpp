// Creation of a WAN interface: every uci command in order, slot and MAC
// choice, the refusals, and DNS text that must never reach the shell.
// What a failed command changes is the fault sweep's.
#include <arpa/inet.h>

#include <algorithm>
#include <cstring>
#include <regex>

#include "ke_omci_tapi/voip_wan.h"
#include "uci_sandbox.h"

namespace {

using Commands = std::vector<std::string>;

const char kNetwork[] = "config interface 'loopback'\nconfig interface 'wan'\n"
                        "\toption proto 'dhcp'\nconfig interface 'wan6'\n";
const char kFirewall[] = "config zone\n\toption name 'lan'\n"
                         "config zone\n\toption name 'wan'\n\tlist network 'wan'\n";
const char kIgmpproxy[] = "config igmpproxy\n\toption quickleave '1'\n";

const char kReload[] = "( sleep 5; /etc/init.d/network reload >/dev/null 2>&1; "
                       "/etc/init.d/firewall reload >/dev/null 2>&1; "
                       "/etc/init.d/igmpproxy reload >/dev/null 2>&1 ) &";

struct Conn {
    uint32_t service = KE_WAN_SERVICE_VOICE;
    uint8_t addr_mode = KE_WAN_ADDR_STATIC;
    const char *ipaddr = "192.168.10.2";
    const char *netmask = "255.255.255.0";
    const char *gateway = "192.168.10.1";
    const char *dns = "8.8.8.8,8.8.4.4";

    // VLAN 100, priority 5.
    st_wan_conn record() const
    {
        st_wan_conn rec;
        std::memset(&rec, 0, sizeof rec);
        rec.ui_service = service;
        rec.uc_addr_mode = addr_mode;
        rec.ui_vlan_id = 100;
        rec.uc_priority = 5;
        auto put = [](uint8_t *dst, const char *text) { text && inet_pton(AF_INET, text, dst); };
        put(rec.auc_ipaddr, ipaddr);
        put(rec.auc_netmask, netmask);
        put(rec.auc_gateway, gateway);
        std::snprintf(rec.ac_dns, sizeof rec.ac_dns, "%s", dns);
        return rec;
    }
};

// The reads of uci values, as the library runs them.
Commands reads(const Commands &refs)
{
    Commands out;
    for (const std::string &r : refs)
        out.push_back("uci -q get " + r + " > /tmp/tmp_uci_value");
    return out;
}

// The text after the prefix of each trace line of the creation, or the
// line marked unexpected when it does not carry the creation's name and
// one line number twice.
std::vector<std::string> trace_texts(const std::string &out)
{
    static const std::regex line(
        R"(\[igdCmConfAddByUci\((\d+)\)\]\[igdCmConfAddByUci\]\[(\d+)\]: (.*))");
    std::vector<std::string> texts;
    std::istringstream in(out);
    for (std::string l; std::getline(in, l);) {
        std::smatch m;
        bool ok = std::regex_match(l, m, line) && m[1] == m[2];
        texts.push_back(ok ? m[3].str() : "unexpected: " + l);
    }
    return texts;
}

class WanCreate : public ketest::UciSandbox {
protected:
    void SetUp() override
    {
        UciSandbox::SetUp();
        write_configs(kNetwork);
    }

    void write_configs(const std::string &network)
    {
        write_config("network", network);
        write_config("firewall", kFirewall);
        write_config("igmpproxy", kIgmpproxy);
    }

    // Creates conn and returns the commands it ran.
    Commands create(const Conn &conn)
    {
        st_wan_conn rec = conn.record();
        EXPECT_EQ(igdCmConfAddByUci(&rec), 0u);
        return kestub::shell_commands();
    }

    // The section name used by the command at index i (after "network."
    // or "igmpproxy." up to the next dot).
    static std::string section_in(const Commands &cmds, size_t i)
    {
        if (i >= cmds.size())
            return "";
        size_t start = cmds[i].find('.') + 1;
        return cmds[i].substr(start, cmds[i].find('.', start) - start);
    }

    // The commands between the first one starting with `from` and the first
    // one after it starting with `to`, both excluded.
    static Commands between(const Commands &cmds, const std::string &from, const std::string &to)
    {
        auto first = std::find_if(cmds.begin(), cmds.end(),
                                  [&](const std::string &c) { return c.rfind(from, 0) == 0; });
        if (first == cmds.end())
            return {"<" + from + " not found>"};
        auto last = std::find_if(first + 1, cmds.end(),
                                 [&](const std::string &c) { return c.rfind(to, 0) == 0; });
        if (last == cmds.end())
            return {"<" + to + " not found>"};
        return Commands(first + 1, last);
    }
};

TEST_F(WanCreate, StaticVoiceWithTwoDnsServersRunsEveryCommandInOrder)
{
    kestub::log_set(true);
    Commands cmds;
    std::string out = ketest::printed([&] { cmds = create(Conn{}); });
    EXPECT_EQ(trace_texts(out), (std::vector<std::string>{
                                    "bdmac[021018000001]",
                                    "found an available pon wan interface, create it",
                                    "pon_1 PonWanMac[02:10:18:00:00:02]",
                                }));
    std::string dev = section_in(cmds, 3);
    std::string proxy = section_in(cmds, 30);
    ASSERT_TRUE(std::regex_match(dev, std::regex("[A-Za-z0-9_]+"))) << dev;
    ASSERT_TRUE(std::regex_match(proxy, std::regex("[A-Za-z0-9_]+"))) << proxy;
    Commands want = reads({"network.pon_1", "network.@device[0].name"});
    Commands device = {
        "uci -q add network device > /tmp/tmp_uci_value",
        "uci set network." + dev + ".name=pon.100",
        "uci set network." + dev + ".macaddr=02:10:18:00:00:02",
        "uci set network." + dev + ".type=8021q",
        "uci set network." + dev + ".ifname=pon",
        "uci set network." + dev + ".vid=100",
    };
    want.insert(want.end(), device.begin(), device.end());
    for (int p = 0; p < 8; ++p)
        want.push_back("uci add_list network." + dev + ".egress_qos_mapping=" + std::to_string(p) +
                       ":5");
    Commands rest = {
        "uci set network.pon_1=interface",
        "uci set network.pon_1.proto=static",
        "uci set network.pon_1.device=pon.100",
        "uci set network.pon_1.conn_type=VOICE",
        "uci set network.pon_1.nat=1",
        "uci set network.pon_1.igmp_proxy=1",
        "uci set network.pon_1.metric=0",
        "uci set network.pon_1.ipaddr=192.168.10.2",
        "uci set network.pon_1.netmask=255.255.255.0",
        "uci set network.pon_1.gateway=192.168.10.1",
        "uci add_list network.pon_1.dns=8.8.8.8",
        "uci add_list network.pon_1.dns=8.8.4.4",
        "uci add_list firewall.@zone[1].network=pon_1",
        "uci -q add igmpproxy phyint > /tmp/tmp_uci_value",
        "uci set igmpproxy." + proxy + ".zone=wan",
        "uci set igmpproxy." + proxy + ".network=pon_1",
        "uci set igmpproxy." + proxy + ".direction=upstream",
        "uci commit network",
        "uci commit firewall",
        "uci commit igmpproxy",
        kReload,
    };
    want.insert(want.end(), rest.begin(), rest.end());
    EXPECT_EQ(cmds, want);

    // The sections named are the ones uci added, and all is committed.
    EXPECT_EQ(uci_get("network.@device[-1].name"), "pon.100");
    EXPECT_EQ(uci_get("igmpproxy.@phyint[-1].network"), "pon_1");
    EXPECT_TRUE(std::filesystem::is_empty(save_dir_));
    EXPECT_FALSE(ketest::file_exists(ketest::kScratchFile));
}

TEST_F(WanCreate, InterfaceCommandsFollowServiceAndAddressMode)
{
    struct {
        const char *label;
        Conn conn;
        Commands body;  // between metric=0 and the firewall zone
        Commands before_metric;
    } cases[] = {
        {"dhcp voice", Conn{.addr_mode = KE_WAN_ADDR_DHCP}, {},
         {"uci set network.pon_1.proto=dhcp", "uci set network.pon_1.device=pon.100",
          "uci set network.pon_1.conn_type=VOICE"}},
        {"static tr069 without gateway or dns",
         Conn{.service = KE_WAN_SERVICE_TR069, .gateway = nullptr, .dns = ""},
         {"uci set network.pon_1.ipaddr=192.168.10.2",
          "uci set network.pon_1.netmask=255.255.255.0"},
         {"uci set network.pon_1.proto=static", "uci set network.pon_1.device=pon.100",
          "uci set network.pon_1.conn_type=TR069"}},
        {"static internet",
         Conn{.service = KE_WAN_SERVICE_INTERNET, .dns = "1.1.1.1"},
         {"uci set network.pon_1.ipaddr=192.168.10.2",
          "uci set network.pon_1.netmask=255.255.255.0",
          "uci set network.pon_1.gateway=192.168.10.1", "uci add_list network.pon_1.dns=1.1.1.1",
          "uci set network.wan.ifname=pon.100", "uci set network.wan6.ifname=pon.100",
          "uci set network.pon_1.disabled=1", "uci set network.wan.disabled=0",
          "uci set network.wan.proto=static", "uci set network.wan.ipaddr=192.168.10.2",
          "uci set network.wan.netmask=255.255.255.0", "uci set network.wan.gateway=192.168.10.1",
          "uci add_list network.wan.dns=1.1.1.1",
          "uci set network.wan.ori_macaddr=02:10:18:00:00:02"},
         {"uci set network.pon_1.proto=static", "uci set network.pon_1.device=pon.100",
          "uci set network.pon_1.conn_type=INTERNET"}},
        {"dhcp internet, any other service value",
         Conn{.service = 0, .addr_mode = KE_WAN_ADDR_DHCP},
         {"uci set network.wan.ifname=pon.100", "uci set network.wan6.ifname=pon.100",
          "uci set network.pon_1.disabled=1", "uci set network.wan.disabled=0",
          "uci set network.wan.proto=dhcp", "uci set network.wan.ori_macaddr=02:10:18:00:00:02"},
         {"uci set network.pon_1.proto=dhcp", "uci set network.pon_1.device=pon.100",
          "uci set network.pon_1.conn_type=INTERNET"}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.label);
        restart();
        write_config("network", kNetwork);
        Commands cmds = create(c.conn);
        EXPECT_EQ(between(cmds, "uci set network.pon_1.metric=0", "uci add_list firewall"), c.body);
        EXPECT_EQ(between(cmds, "uci set network.pon_1=interface", "uci set network.pon_1.nat=1"),
                  c.before_metric);
        EXPECT_EQ(cmds.back(), kReload);
    }
}

TEST_F(WanCreate, TakesTheFirstFreeSlotWithItsMacOffset)
{
    struct { const char *taken; int slot; const char *mac; } cases[] = {
        {"", 1, "02:10:18:00:00:02"},
        {"pon_1", 2, "02:10:18:00:00:07"},
        {"pon_1 pon_2", 3, "02:10:18:00:00:08"},
        {"pon_2 pon_1 pon_3", 4, "02:10:18:00:00:09"},
        {"pon_2 pon_3", 1, "02:10:18:00:00:02"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.taken);
        restart();
        std::string network;
        std::istringstream taken(c.taken);
        for (std::string s; taken >> s;)
            network += "config interface '" + s + "'\n";
        write_configs(network);
        Commands cmds;
        EXPECT_EQ(ketest::printed([&] { cmds = create(Conn{}); }), "");  // gate closed
        std::string slot = "pon_" + std::to_string(c.slot);
        Commands slot_reads;
        for (int n = 1; n <= c.slot; ++n)
            slot_reads.push_back("network.pon_" + std::to_string(n));
        EXPECT_EQ(Commands(cmds.begin(), cmds.begin() + c.slot), reads(slot_reads));
        EXPECT_EQ(uci_get("network.@device[0].macaddr"), c.mac);
        EXPECT_EQ(uci_get("network." + slot + ".device"), "pon.100");
        EXPECT_EQ(uci_get("firewall.@zone[1].network"), "wan " + slot);
        EXPECT_EQ(uci_get("igmpproxy.@phyint[0].network"), slot);
    }
}

TEST_F(WanCreate, DerivedMacCarriesAndToleratesABadBoardMac)
{
    struct { const char *board; const char *mac; } cases[] = {
        {"0011223344FF", "00:11:22:33:45:00"},  // the carry
        {"00112233fffe", "00:11:22:33:FF:FF"},  // upper-case text
        {"", "00:00:00:00:00:01"},
        {"zz", "00:00:00:00:00:01"},
        {"0011zz", "00:11:00:00:00:01"},
    };
    for (const auto &c : cases) {
        restart();
        kestub::bdinfo_set("mac", c.board);
        write_config("network", kNetwork);
        Commands cmds = create(Conn{});
        ASSERT_GT(cmds.size(), 4u);
        EXPECT_EQ(cmds[4], "uci set network." + section_in(cmds, 3) + ".macaddr=" + c.mac)
            << c.board;
        EXPECT_EQ(uci_get("network.@device[0].macaddr"), c.mac) << c.board;
    }
}

TEST_F(WanCreate, RefusalsCreateNothing)
{
    const std::string dev100 = "config device\n\toption name 'pon.100'\n";
    const std::string dev7 = "config device\n\toption name 'pon.7'\n";
    const char *conflict = "VLAN ID 100 is conflicted!";
    const char *missing = "Missing IP address or Mask configuration for static!";
    const Commands one_device = reads({"network.pon_1", "network.@device[0].name"}),
                   two_devices = reads({"network.pon_1", "network.@device[0].name",
                                        "network.@device[1].name"});
    struct {
        std::string network;
        Conn conn;
        Commands reads;
        const char *trace;  // after the board MAC line; nullptr: none
    } cases[] = {
        {"config interface 'pon_1'\nconfig interface 'pon_2'\n"
         "config interface 'pon_3'\nconfig interface 'pon_4'\n",
         Conn{}, reads({"network.pon_1", "network.pon_2", "network.pon_3", "network.pon_4"}),
         nullptr},
        {dev100, Conn{}, one_device, conflict},  // left from an earlier creation
        {dev7 + dev100, Conn{}, two_devices, conflict},
        {"", Conn{.ipaddr = nullptr}, one_device, missing},
        {dev7, Conn{.netmask = "0.0.0.0"}, two_devices, missing},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(&c - cases);
        restart();
        kestub::log_set(true);
        write_config("network", c.network);
        Commands cmds;
        std::string out = ketest::printed([&] { cmds = create(c.conn); });
        EXPECT_EQ(cmds, c.reads);
        std::vector<std::string> want = {"bdmac[021018000001]"};
        if (c.trace != nullptr)
            want.insert(want.end(), {"found an available pon wan interface, create it", c.trace});
        EXPECT_EQ(trace_texts(out), want);
        EXPECT_EQ(config("network"), c.network);
        EXPECT_TRUE(std::filesystem::is_empty(save_dir_));
    }
    // A DHCP connection needs no address.
    restart();
    write_config("network", "");
    Conn dhcp{.addr_mode = KE_WAN_ADDR_DHCP, .ipaddr = nullptr, .netmask = nullptr};
    EXPECT_EQ(create(dhcp).back(), kReload);

    restart();
    EXPECT_EQ(igdCmConfAddByUci(nullptr), 0u);
    EXPECT_TRUE(kestub::shell_commands().empty());
}

// What does not fit its copy is bounds_test's.
TEST_F(WanCreate, DnsTextGivesOneEntryPerServerWithoutShellCharacters)
{
    struct {
        const char *dns;
        Commands entries;
        std::vector<std::string> skipped;  // traced
    } cases[] = {
        {"8.8.8.8,,8.8.4.4", {"8.8.8.8", "8.8.4.4"}, {}},
        {",1.1.1.1,", {"1.1.1.1"}, {}},
        {"8.8.8.8, 8.8.4.4", {"8.8.8.8", " 8.8.4.4"}, {}},  // blanks stay
        {"dns.example,2001:db8::1", {"dns.example", "2001:db8::1"}, {}},
        {"$(reboot),9.9.9.9", {"9.9.9.9"}, {"$(reboot)"}},
        {"`id`,1.1.1.1;true", {}, {"`id`", "1.1.1.1;true"}},
        {"1.1.1.1|cat,a'b,a\"b,a\\b", {}, {"1.1.1.1|cat", "a'b", "a\"b", "a\\b"}},
        {"1.1.1.1>x,1.1.1.10,*,~", {"1.1.1.10"}, {"1.1.1.1>x", "*", "~"}},
        {"a\tb,a&b,a=b", {}, {"a\tb", "a&b", "a=b"}},
    };
    for (const auto &c : cases) {
        restart();
        kestub::log_set(true);
        write_config("network", kNetwork);
        Commands cmds;
        std::string out = ketest::printed([&] { cmds = create(Conn{.dns = c.dns}); });
        Commands want;
        for (const std::string &e : c.entries)
            want.push_back("uci add_list network.pon_1.dns=" + e);
        EXPECT_EQ(between(cmds, "uci set network.pon_1.gateway", "uci add_list firewall"), want)
            << c.dns;
        std::vector<std::string> traces = trace_texts(out);
        ASSERT_GE(traces.size(), 3u) << c.dns;
        std::vector<std::string> skipped(traces.begin() + 3, traces.end());
        std::vector<std::string> want_skipped;
        for (const std::string &s : c.skipped)
            want_skipped.push_back("DNS server [" + s + "] holds a shell character, skipped");
        EXPECT_EQ(skipped, want_skipped) << c.dns;
        for (const std::string &cmd : cmds)
            EXPECT_TRUE(cmd == kReload || ketest::is_plain_uci_command(cmd)) << cmd;
    }
}

}  // namespace
