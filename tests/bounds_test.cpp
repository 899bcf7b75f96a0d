// Bounds: every number a caller (or the service, or uci) hands the library
// that selects memory - a port, a list length, a request length, a shard
// length, a buffer size, a count of entries - and what the library does
// at the last value its bound lets through and at the first value past it.
// Buffers are exactly as long as the call under test may use, so a byte
// read or written past a bound is an AddressSanitizer report.
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "ke_omci_tapi/bridge_qos.h"
#include "ke_omci_tapi/device.h"
#include "ke_omci_tapi/lifecycle.h"
#include "ke_omci_tapi/mc.h"
#include "ke_omci_tapi/pon.h"
#include "ke_omci_tapi/vlan.h"
#include "ke_omci_tapi/voip_wan.h"
#include "../src/mc/param_dump.h"
#include "private_scratch.h"
#include "stub_test.h"

namespace {

using Bytes = std::vector<uint8_t>;

constexpr uint32_t kAnyStatus = 0xFFFFFFFF;
// The board reports one user port more than the multicast cache holds.
constexpr uint32_t kBoardPorts = MC_PORT_MAX + 1;

// Back-end operations made since the stand-in was reset.
size_t back_end_ops()
{
    return kestub::ipc_calls().size() + kestub::cm_calls().size() + kestub::shell_commands().size();
}

// The multicast state of this process is set up once, from a board with
// one port too many; the operations it took are kept for the clamp test.
std::vector<kestub::CmCall> g_init_ops;

void start_multicast()
{
    kestub::reset();
    for (uint32_t port = 0; port < MC_PORT_MAX; ++port) {
        Bytes ranges = ketest::cm_record(1744, {{8, port}});
        kestub::cm_preload(817, ranges.data(), ranges.size());
    }
    Bytes board = ketest::cm_record(956, {{4, kBoardPorts}});
    kestub::ipc_script("ke_ke_board_info_get_call", 0, board.data(), board.size());
    ke_omci_mc_data_init();
    g_init_ops = kestub::cm_calls();
}

class Bounds : public ketest::StubTest {
protected:
    static void SetUpTestSuite()
    {
        char dir[] = "/tmp/ke_bounds_XXXXXX";
        ASSERT_NE(mkdtemp(dir), nullptr);
        dir_ = dir;
        // The uci reads of this program never meet another suite's.
        ASSERT_TRUE(ketest::use_private_scratch("libke_omci_tapi", dir_ + "/uci_value"));
        start_multicast();
    }
    static void TearDownTestSuite()
    {
        unlink(ketest::private_scratch_file().c_str());
        rmdir(dir_.c_str());
    }

    static std::string dir_;
};

std::string Bounds::dir_;

// ---- Refused at the first value past the bound -------------------------

struct Refusal {
    const char *where;
    uint32_t last;               // the last value the bound lets through
    uint32_t (*call)(uint32_t);  // the call with the value under test
    uint32_t inside;             // its answer at `last` (kAnyStatus: not fixed here)
    uint32_t past;               // its answer at last + 1, with no back-end operation
    bool reaches = true;         // `last` goes on to the back end
};

uint32_t g_vlans[MC_VLAN_MAX + 1] = {100,          MC_VLAN_NONE, MC_VLAN_NONE,
                                     MC_VLAN_NONE, MC_VLAN_NONE, MC_VLAN_NONE,
                                     MC_VLAN_NONE, MC_VLAN_NONE, MC_VLAN_NONE};
uint8_t g_shard[UPGRADE_SHARD_MAX + 1];

// A request of len bytes in a buffer of exactly that length.
uint32_t served(uint32_t (*entry)(void *, uint32_t), uint32_t len)
{
    std::vector<uint8_t> request(len, 0);
    return entry(request.data(), len);
}

st_mc_table row_on(uint32_t port)
{
    st_mc_table row;
    std::memset(&row, 0, sizeof row);
    row.ui_vlan = 100;
    row.auc_ip_start[0] = 0xE0;
    row.auc_ip_end[0] = 0xE0;
    row.ui_port = port;
    return row;
}

// A uci reference of len characters, in a buffer of exactly len + 1.
template <int (*Read)(const char *, char *, int)>
uint32_t uci_text_of(uint32_t len)
{
    std::string text = "network." + std::string(len - 8, 'x');
    std::vector<char> ref(text.c_str(), text.c_str() + len + 1);
    char value[16];
    return static_cast<uint32_t>(Read(ref.data(), value, sizeof value));
}

const Refusal kRefusals[] = {
    // The per-port cache holds MC_PORT_MAX ports.
    {"ke_omci_tapi_mc_igmp_attr_set port", MC_PORT_MAX - 1,
     [](uint32_t p) {
         st_mc_igmp_attr a = {1, 100, 5, 0x300};
         return ke_omci_tapi_mc_igmp_attr_set(p, &a);
     },
     0, 1},
    {"ke_omci_tapi_mc_tagact_set port", MC_PORT_MAX - 1,
     [](uint32_t p) { return ke_omci_tapi_mc_tagact_set(p, 1); }, 0, 1},
    {"ke_omci_tapi_mc_usr_vlan_set port", MC_PORT_MAX - 1,
     [](uint32_t p) { return ke_omci_tapi_mc_usr_vlan_set(p, 10); }, 0, 1},
    {"ke_omci_tapi_mc_uprate_set port", MC_PORT_MAX - 1,
     [](uint32_t p) { return ke_omci_tapi_mc_uprate_set(p, 64); }, 0, 1},
    {"ke_omci_tapi_mc_vlan_set port", MC_PORT_MAX - 1,
     [](uint32_t p) {
         st_mc_vlan v = {p, 300};
         return ke_omci_tapi_mc_vlan_set(&v);
     },
     0, 1},
    {"ke_omci_tapi_mc_vlan_del port", MC_PORT_MAX - 1,
     [](uint32_t p) {
         st_mc_vlan v = {p, 300};
         ke_omci_tapi_mc_vlan_set(&v);
         kestub::reset();
         return ke_omci_tapi_mc_vlan_del(&v);
     },
     0, 1},
    {"ke_omci_tapi_mc_vlan_clr port", MC_PORT_MAX - 1,
     [](uint32_t p) { return ke_omci_tapi_mc_vlan_clr(p); }, 0, 1},
    {"ke_omci_tapi_mc_table_set row port", MC_PORT_MAX - 1,
     [](uint32_t p) {
         st_mc_table row = row_on(p);
         return ke_omci_tapi_mc_table_set(&row);
     },
     kAnyStatus, 1},
    {"ke_omci_tapi_mc_table_del row port", MC_PORT_MAX - 1,
     [](uint32_t p) {
         st_mc_table row = row_on(p);
         return ke_omci_tapi_mc_table_del(&row);
     },
     0, 0},
    {"ke_omci_tapi_mc_range_clr port", MC_PORT_MAX - 1,
     [](uint32_t p) { return ke_omci_tapi_mc_range_clr(p); }, kAnyStatus, 1},
    {"ke_omci_mc_vlan_set_proc port", MC_PORT_MAX - 1,
     [](uint32_t p) { return ke_omci_mc_vlan_set_proc(p, g_vlans, MC_VLAN_MAX); }, 0, 1},
    {"ke_omci_mc_vlan_set_proc list length", MC_VLAN_MAX,
     [](uint32_t n) { return ke_omci_mc_vlan_set_proc(1, g_vlans, n); }, 0, 1},
    // Ports counted by the board (MC_PORT_MAX here, after the clamp).
    {"ke_omci_tapi_mc_group_num_set port", MC_PORT_MAX - 1,
     [](uint32_t p) { return ke_omci_tapi_mc_group_num_set(p, 16); }, 0, 0},
    {"ke_ke_omci_mc_param_get_ipc port", MC_PORT_MAX - 1,
     [](uint32_t p) { return ke_ke_omci_mc_param_get_ipc(&p); }, 0, MC_ERR_STATE},
    // Served calls take their request length and no other.
    {"ke_ke_omci_mc_param_get_call length", KE_MC_PARAM_GET_REQ_LEN,
     [](uint32_t len) { return served(ke_ke_omci_mc_param_get_call, len); }, 0,
     KE_SERVED_CALL_REFUSED},
    {"ke_ke_omci_set_loid_call length", KE_SET_LOID_REQ_LEN,
     [](uint32_t len) { return served(ke_ke_omci_set_loid_call, len); }, 0, KE_SERVED_CALL_REFUSED,
     false},
    {"ke_ke_omci_set_loidpwd_call length", KE_SET_LOID_REQ_LEN,
     [](uint32_t len) { return served(ke_ke_omci_set_loidpwd_call, len); }, 0,
     KE_SERVED_CALL_REFUSED, false},
    // VLAN membership: ports 0 to 8, 12-bit VLAN IDs.
    {"ke_omci_tapi_vlan_set port", 8, [](uint32_t p) { return ke_omci_tapi_vlan_set(p, 100); }, 0,
     KE_VLAN_REFUSED},
    {"ke_omci_tapi_vlan_set VLAN ID", 4095,
     [](uint32_t vid) { return ke_omci_tapi_vlan_set(1, vid); }, 0, KE_VLAN_REFUSED},
    {"ke_omci_tapi_vlan_del port", 8, [](uint32_t p) { return ke_omci_tapi_vlan_del(p, 100); }, 0,
     KE_VLAN_REFUSED},
    {"ke_omci_tapi_vlan_del VLAN ID", 4095,
     [](uint32_t vid) { return ke_omci_tapi_vlan_del(1, vid); }, 0, KE_VLAN_REFUSED},
    // A shard fills at most the request's data area.
    {"ke_omci_tapi_upgrade_write length", UPGRADE_SHARD_MAX,
     [](uint32_t len) { return ke_omci_tapi_upgrade_write(g_shard, len); }, 0,
     KE_UPGRADE_SHARD_REFUSED},
    // A uci reference fits the 256-byte command: 32 characters of command
    // around at most 223 of reference.
    {"omci_uci_get reference length", 223, uci_text_of<omci_uci_get>, kAnyStatus, 0xFFFFFFFF},
    {"omci_uci_add type length", 223, uci_text_of<omci_uci_add>, kAnyStatus, 0xFFFFFFFF},
};

TEST_F(Bounds, FirstValuePastEachBoundIsRefusedAndReachesNothing)
{
    for (const Refusal &b : kRefusals) {
        SCOPED_TRACE(b.where);
        kestub::reset();
        kestub::ipc_serve_default([](void *, uint32_t) { return 0u; });
        uint32_t ret = 0;
        ketest::printed([&] { ret = b.call(b.last); });
        if (b.inside != kAnyStatus) {
            EXPECT_EQ(ret, b.inside) << "at " << b.last;
        }
        EXPECT_EQ(back_end_ops() > 0, b.reaches) << "at " << b.last;

        kestub::reset();
        kestub::log_set(true);
        std::string out = ketest::printed([&] { ret = b.call(b.last + 1); });
        EXPECT_EQ(ret, b.past) << "at " << b.last + 1 << ": " << out;
        EXPECT_EQ(back_end_ops(), 0u) << b.last + 1 << " reaches the back end";
    }
}

// ---- Clamped, cut or left out ------------------------------------------

// A board with more user ports than the cache is served as one of
// MC_PORT_MAX ports: exactly those are cleared.
TEST_F(Bounds, BoardPortCountPastTheCacheIsServedAsTheCache)
{
    std::vector<uint32_t> cleared;
    for (const kestub::CmCall &c : g_init_ops)
        if (c.op == kestub::CmOp::Set && c.table == 824)
            cleared.push_back(ketest::u32_at(c.record, 8));
    std::vector<uint32_t> ports;
    for (uint32_t port = 0; port < MC_PORT_MAX; ++port)
        ports.push_back(port);
    EXPECT_EQ(cleared, ports) << "from a board of " << kBoardPorts << " ports";
}

// The MAC table copies no more entries than the caller has room for and a
// reply can carry, whatever count the service answers: each entry's MAC
// from reply offset 16 + 16i and its word from 12 + 16i; bytes 6 and 7 and
// every entry past the count are left alone.
TEST_F(Bounds, MacTableCopiesWithinCapacityAndReply)
{
    struct Case {
        uint32_t answered;  // the count in the service's reply
        uint32_t capacity;  // the caller's entries
        uint32_t copied;
    };
    const Case cases[] = {
        {10, 10, 10},
        {10, 9, 9},  // the caller's capacity
        {10, 0, 0},
        {0, 20, 0},
        {BR_TABLE_MAX, BR_TABLE_MAX + 8, BR_TABLE_MAX},
        {BR_TABLE_MAX + 1, BR_TABLE_MAX + 8, BR_TABLE_MAX},  // what a reply can carry
        {0xFFFFFFFF, BR_TABLE_MAX + 8, BR_TABLE_MAX},
    };
    st_br_table reply;
    std::memset(&reply, 0xD0, sizeof reply);
    for (uint32_t i = 0; i < BR_TABLE_MAX; ++i) {
        reply.ast_entry[i].ui_info = 0x1000 + i;
        for (int b = 0; b < KE_MAC_LEN; ++b)
            reply.ast_entry[i].auc_mac[b] = static_cast<uint8_t>(i * 8 + b);
    }
    for (const Case &c : cases) {
        SCOPED_TRACE(std::to_string(c.answered) + " answered, room for " +
                     std::to_string(c.capacity));
        kestub::reset();
        kestub::log_set(true);
        reply.ui_entry_num = c.answered;
        kestub::ipc_script_reply("ke_ke_sml_br_table_get_call", reply);
        std::vector<st_br_mac> entries(std::max(c.capacity, 1u));
        std::memset(entries.data(), 0xA5, entries.size() * sizeof(st_br_mac));
        uint32_t count = c.capacity;
        EXPECT_EQ(ketest::printed([&] {
                      EXPECT_EQ(ke_omci_tapi_br_table_get(9, &count, entries.data()), 0u);
                  }),
                  "");
        EXPECT_EQ(count, c.copied);
        for (uint32_t i = 0; i < entries.size(); ++i) {
            st_br_mac want;
            std::memset(&want, 0xA5, sizeof want);
            if (i < c.copied) {
                std::memcpy(want.auc_mac, reply.ast_entry[i].auc_mac, KE_MAC_LEN);
                want.ui_info = 0x1000 + i;
            }
            EXPECT_EQ(ketest::bytes_of(entries[i]), ketest::bytes_of(want)) << i;
        }
        Bytes request = ketest::words({0, 0, 9});
        request.resize(sizeof(st_br_table));
        EXPECT_EQ(kestub::ipc_calls().at(0).request, request);
    }
}

// The DNS text of a new interface is split in a 64-byte copy: a text that
// does not fit adds no server.  A server that does not fit the 16-byte
// value buffer is added whole, after the failed copy is printed.
TEST_F(Bounds, DnsTextPastItsCopyAddsNoServer)
{
    const std::string server = "255.255.255.255";  // the longest dotted address
    struct Case { std::string dns; std::vector<std::string> servers; bool copy_failed; };
    const Case cases[] = {
        {server + std::string(63 - server.size(), ','), {server}, false},  // 63 characters
        {server + std::string(64 - server.size(), ','), {}, true},  // 64: no room for the NUL
        {"1.1.1.1," + server, {"1.1.1.1", server}, false},
        {"1.1.1.1,0" + server, {"1.1.1.1", "0" + server}, true},  // a 16-character server
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.dns);
        kestub::reset();
        kestub::log_set(true);
        st_wan_conn conn;
        std::memset(&conn, 0, sizeof conn);
        conn.ui_service = KE_WAN_SERVICE_VOICE;
        conn.uc_addr_mode = KE_WAN_ADDR_STATIC;
        conn.ui_vlan_id = 100;
        conn.auc_ipaddr[0] = 10;
        conn.auc_netmask[0] = 255;
        std::memcpy(conn.ac_dns, c.dns.data(), c.dns.size());
        std::string out = ketest::printed([&] { EXPECT_EQ(igdCmConfAddByUci(&conn), 0u); });
        std::vector<std::string> servers;
        const std::string dns = "uci add_list network.pon_1.dns=";
        for (const std::string &command : kestub::shell_commands())
            if (command.rfind(dns, 0) == 0)
                servers.push_back(command.substr(dns.size()));
        EXPECT_EQ(servers, c.servers);
        EXPECT_EQ(out.find("strcpy_s return[") != std::string::npos, c.copy_failed) << out;
        const auto &commands = kestub::shell_commands();
        EXPECT_NE(std::find(commands.begin(), commands.end(), "uci set network.pon_1=interface"),
                  commands.end())
            << "the interface is still created";
    }
}

}  // namespace
