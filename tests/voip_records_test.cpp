// Every VoIP and remote-management setter: the exact records it hands the
// configuration manager (fields at odd offsets, mask words, untouched
// bytes zero), and refused arguments; the TR-069 server read back, the
// configuration method kept in memory and the TR-069 WAN status.
#include <functional>

#include "ke_omci_tapi/remote_mgmt.h"
#include "ke_omci_tapi/voip.h"
#include "voip_test.h"

namespace {

using ketest::Bytes;
using ketest::filled;
using ketest::Image;

class VoipRecords : public ketest::StubTest {};

st_voip_server server(uint16_t port, uint16_t protocol)
{
    st_voip_server s = {};
    std::memcpy(s.auc_address, filled('a', 128).data(), 128);
    s.us_port = port;
    s.us_protocol = protocol;
    return s;
}

st_voip_agent agent(uint16_t value)
{
    st_voip_agent a = {};
    std::memcpy(a.auc_address, filled('g', 128).data(), 128);
    a.us_value = value;
    return a;
}

// The URL fills its 256 bytes with no terminator.
st_tr069_server acs_server(char first)
{
    st_tr069_server s;
    std::memcpy(s.auc_acs_url, filled(first, 256).data(), 256);
    std::memcpy(s.auc_acs_user_name, filled(first + 1, 64).data(), 64);
    std::memcpy(s.auc_acs_password, filled(first + 2, 64).data(), 64);
    return s;
}

// A table 470 record with one server block (address 'a'...) or the agent.
Bytes servers(uint32_t block, uint32_t port, uint8_t transport, uint32_t mask)
{
    return Image(1008)
        .text(block, filled(block == 820 ? 'g' : 'a', 128))
        .u32(block + 128, port)
        .u8(block + 132, transport)
        .u32(1000, mask);
}

// A call of fn with a copy of its argument record.
template <class Fn, class Arg>
std::function<uint32_t()> with(Fn fn, Arg arg)
{
    return [fn, arg]() mutable { return fn(&arg); };
}

TEST_F(VoipRecords, EverySetterSendsExactlyItsRecords)
{
    st_voip_sipauth auth = {0x0207, {}, {}, {}};
    std::memcpy(auth.auc_user_name, filled('u', 128).data(), 128);
    std::memcpy(auth.auc_password, filled('p', 128).data(), 128);
    std::memcpy(auth.auc_realm, filled('r', 128).data(), 128);
    using Writes = std::vector<std::pair<uint32_t, Bytes>>;
    struct Case { const char *label; std::function<uint32_t()> call; Writes writes; } cases[] = {
        // clang-format off
        {"udptcp, line 0x0102", with(ke_omci_tapi_voip_udptcp_set, st_voip_udptcp{0x0102, 5060, 17, 0x1B8}),
         {{473, Image(4171).u8(4, 2).u8(7, 0xB8).u32(9, 5060).u32(4167, 0x14)}}},
        {"proxy, port 0, keep", with(ke_omci_tapi_voip_proxyserver_set, server(0, 0xFFFF)),
         {{470, servers(4, 0, 1, 0x1)}}},
        {"proxy, tcp", with(ke_omci_tapi_voip_proxyserver_set, server(5061, 6)),
         {{470, servers(4, 5061, 0, 0x7)}}},
        {"registrar, udp", with(ke_omci_tapi_voip_regserver_set, server(5060, 17)),
         {{470, servers(140, 5060, 1, 0x38)}}},
        {"registrar, port kept", with(ke_omci_tapi_voip_regserver_set, server(0, 56)),
         {{470, servers(140, 0, 2, 0x28)}}},
        {"outbound, sctp", with(ke_omci_tapi_voip_outbserver_set, server(0, 132)),
         {{470, servers(276, 0, 3, 0x140)}}},
        {"outbound, unknown", with(ke_omci_tapi_voip_outbserver_set, server(9, 99)),
         {{470, servers(276, 9, 1, 0x1C0)}}},
        {"agent 56", with(ke_omci_tapi_voip_agent_set, agent(56)), {{470, servers(820, 56, 2, 0x1C0000)}}},
        {"agent 132", with(ke_omci_tapi_voip_agent_set, agent(132)), {{470, servers(820, 132, 3, 0x1C0000)}}},
        {"agent 6", with(ke_omci_tapi_voip_agent_set, agent(6)), {{470, servers(820, 6, 0, 0x1C0000)}}},
        {"agent 5060", with(ke_omci_tapi_voip_agent_set, agent(5060)), {{470, servers(820, 5060, 1, 0x1C0000)}}},
        {"agent 0xFFFF", with(ke_omci_tapi_voip_agent_set, agent(0xFFFF)), {{470, servers(820, 65535, 1, 0x1C0000)}}},
        {"regtime", with(ke_omci_tapi_voip_regtime_set, st_voip_regtime{0x103, 3600, 0xFFFF}),
         {{473, Image(4171).u8(4, 3).u32(13, 3600).u32(17, 0xFFFF).u32(4167, 0x60)}}},
        {"off-hook 300", with(ke_omci_tapi_voip_offhooktime_set, 300u), {{468, Image(4460).u8(8, 44).u32(4456, 0x10)}}},
        {"sipauth", with(ke_omci_tapi_voip_sipauth_set, auth),
         {{471, Image(604).u8(4, 7).text(8, filled('u', 128)).text(136, filled('p', 128))
                    .text(264, filled('r', 128)).u32(600, 0xE)}}},
        {"gain", with(ke_omci_tapi_voip_gain_set, st_voip_gain{1, 0xFFFFFFF6, 20}),
         {{474, Image(32).u8(4, 1).u32(8, 0xFFFFFFF6).u32(12, 20).u32(28, 0xC)}}},
        {"type 1", with(ke_omci_tapi_voip_type_set, 1u), {{468, Image(4460).u8(4, 0).u32(4456, 0x1)}}},
        {"type 2", with(ke_omci_tapi_voip_type_set, 2u), {{468, Image(4460).u8(4, 2).u32(4456, 0x1)}}},
        {"type 5", with(ke_omci_tapi_voip_type_set, 5u), {{468, Image(4460).u8(4, 1).u32(4456, 0x1)}}},
        {"admin 0", with(ke_omci_tapi_voip_adminstate_set, st_voip_admin{0x305, 0}),
         {{471, Image(604).u8(4, 5).u8(5, 1).u32(600, 0x1)}}},
        {"admin 1", with(ke_omci_tapi_voip_adminstate_set, st_voip_admin{5, 1}),
         {{471, Image(604).u8(4, 5).u8(5, 0).u32(600, 0x1)}}},
        {"admin 2", with(ke_omci_tapi_voip_adminstate_set, st_voip_admin{5, 2}),
         {{471, Image(604).u8(4, 5).u8(5, 0).u32(600, 0x1)}}},
        {"admin 3", with(ke_omci_tapi_voip_adminstate_set, st_voip_admin{5, 3}),
         {{471, Image(604).u8(4, 5).u8(5, 1).u32(600, 0x1)}}},
        {"rtp", with(ke_omci_tapi_voip_rtp_set, st_voip_rtp{2, 50000, 50100, 0x12E}),
         {{476, Image(100).u8(5, 0x2E).u32(96, 0x2)},
          {473, Image(4171).u8(4, 2).u8(8, 0x2E).u32(21, 50000).u32(25, 50100).u32(4167, 0x308)}}},
        {"silence", with(ke_omci_tapi_voip_silence_set, st_voip_silence{0x103, 0x101}),
         {{473, Image(4171).u8(4, 3).u8(39, 1).u32(4167, 0x4000)}}},
        {"fax 257", with(ke_omci_tapi_voip_faxmode_set, 257u), {{477, Image(40).u8(4, 1).u32(36, 0x1)}}},
        // The TR-069 server's mask sits at 2179, with four zero bytes after it.
        {"acs", with(ke_omci_tapi_tr069_server_set, acs_server('a')),
         {{524, Image(2187).text(12, filled('a', 256)).text(272, filled('b', 64))
                    .text(336, filled('c', 64)).u32(2179, 0x250)}}},
        // The two flags store 1 only for 1, each in its own word.
        {"voip conf 1", with(ke_omci_tapi_voip_conf_set, 1u), {{668, Image(16).u32(4, 1).u32(12, 0x1)}}},
        {"voip conf 3", with(ke_omci_tapi_voip_conf_set, 3u), {{668, Image(16).u32(12, 0x1)}}},
        {"voip conf 0x101", with(ke_omci_tapi_voip_conf_set, 0x101u), {{668, Image(16).u32(12, 0x1)}}},
        {"tr069 conf 1", with(ke_omci_tapi_tr069_conf_set, 1u), {{668, Image(16).u32(8, 1).u32(12, 0x2)}}},
        {"tr069 conf 2", with(ke_omci_tapi_tr069_conf_set, 2u), {{668, Image(16).u32(12, 0x2)}}},
        {"digit map", [] { return ke_omci_tapi_voip_digitmap_set("[2-9]xxxxxx"); }, {}},
        {"null digit map", [] { return ke_omci_tapi_voip_digitmap_set(nullptr); }, {}},
        // clang-format on
    };
    for (const Case &c : cases) {
        kestub::reset();
        EXPECT_EQ(c.call(), 0u) << c.label;
        EXPECT_EQ(ketest::cm_sets(), c.writes) << c.label;
        EXPECT_EQ(kestub::cm_calls().size(), c.writes.size()) << c.label;
    }
}

TEST_F(VoipRecords, NullArgumentsAreRefusedWithoutATableOperation)
{
    const uint32_t results[] = {
        // clang-format off
        ke_omci_tapi_voip_udptcp_set(nullptr),      ke_omci_tapi_voip_proxyserver_set(nullptr),
        ke_omci_tapi_voip_regserver_set(nullptr),   ke_omci_tapi_voip_outbserver_set(nullptr),
        ke_omci_tapi_voip_agent_set(nullptr),       ke_omci_tapi_voip_codec_set(nullptr),
        ke_omci_tapi_voip_codec_get(nullptr),       ke_omci_tapi_voip_regtime_set(nullptr),
        ke_omci_tapi_voip_regtime_get(nullptr),     ke_omci_tapi_voip_offhooktime_set(nullptr),
        ke_omci_tapi_voip_offhooktime_get(nullptr), ke_omci_tapi_voip_sipauth_set(nullptr),
        ke_omci_tapi_voip_sipauth_get(nullptr),     ke_omci_tapi_voip_gain_set(nullptr),
        ke_omci_tapi_voip_gain_get(nullptr),        ke_omci_tapi_voip_hookstatus_get(nullptr),
        ke_omci_tapi_voip_type_set(nullptr),        ke_omci_tapi_voip_type_get(nullptr),
        ke_omci_tapi_voip_adminstate_set(nullptr),  ke_omci_tapi_voip_adminstate_get(nullptr),
        ke_omci_tapi_voip_rtp_set(nullptr),         ke_omci_tapi_voip_rtp_get(nullptr),
        ke_omci_tapi_voip_silence_set(nullptr),     ke_omci_tapi_voip_faxmode_set(nullptr),
        ke_omci_tapi_voip_line_status_get(nullptr), ke_omci_tapi_voip_rtppm_get(nullptr),
        ke_omci_tapi_voip_callctrlpm_get(nullptr),  ke_omci_tapi_voip_sip_agentpm_get(nullptr),
        ke_omci_tapi_voip_sip_callinitpm_get(nullptr), ke_omci_tapi_voip_emergency_get(nullptr),
        ke_omci_tapi_tr069_server_set(nullptr),     ke_omci_tapi_tr069_server_get(nullptr),
        ke_omci_tapi_voip_conf_set(nullptr),        ke_omci_tapi_voip_conf_get(nullptr),
        ke_omci_tapi_tr069_conf_set(nullptr),
        // clang-format on
    };
    for (uint32_t r : results)
        EXPECT_EQ(r, 1u);
    EXPECT_TRUE(kestub::cm_calls().empty());
}

class RemoteMgmt : public ketest::StubTest {};

// No test before this one sets the method: it is 0 from load until it is set.
TEST_F(RemoteMgmt, ConfigurationMethodStartsAtZeroAndKeepsTheLastValueInMemory)
{
    EXPECT_EQ(ke_omci_tapi_voip_cnfig_method_get(), 0u);
    for (uint32_t method : {3u, 0xFFFFFFFFu, 0u}) {
        EXPECT_EQ(ke_omci_tapi_voip_cnfig_method_set(method), 0u);
        EXPECT_EQ(ke_omci_tapi_voip_cnfig_method_get(), method);
    }
    uint32_t status = 0xDEAD;  // no TR-069 connection has been set
    EXPECT_EQ(ke_omci_tapi_tr069_status_get(&status), 0u);
    EXPECT_EQ(status, 0u);
    EXPECT_EQ(ke_omci_tapi_tr069_status_get(nullptr), 0u);
    EXPECT_TRUE(kestub::cm_calls().empty());
}

// Through the store: the server reads back byte for byte, the VoIP flag
// reads back and the TR-069 flag leaves it.
TEST_F(RemoteMgmt, ServerAndFlagReadBack)
{
    st_tr069_server req = acs_server('a'), out;
    std::memset(&out, 0x5A, sizeof out);
    ASSERT_EQ(ke_omci_tapi_tr069_server_set(&req), 0u);
    EXPECT_EQ(ke_omci_tapi_tr069_server_get(&out), 0u);
    EXPECT_EQ(std::memcmp(&out, &req, sizeof out), 0);
    uint32_t one = 1, zero = 0, flag = 7;
    ASSERT_EQ(ke_omci_tapi_voip_conf_set(&one), 0u);
    ASSERT_EQ(ke_omci_tapi_tr069_conf_set(&zero), 0u);
    EXPECT_EQ(ke_omci_tapi_voip_conf_get(&flag), 0u);
    EXPECT_EQ(flag, 1u);
}

}  // namespace
