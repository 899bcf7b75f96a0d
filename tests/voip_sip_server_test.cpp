// SIP signalling port, SIP servers and user agent: the exact records of
// tables 473 and 470, transport codes, mask bits and failures.
#include <functional>

#include "ke_omci_tapi/voip.h"
#include "voip_test.h"

namespace {

using ketest::Bytes;
using ketest::Image;
using ketest::Info;

constexpr uint32_t kServerTab = 470;
constexpr uint32_t kServerSize = 1008;
constexpr uint32_t kServerMask = 1000;
constexpr uint32_t kProfileTab = 473;
constexpr uint32_t kProfileSize = 4171;

class VoipSipServer : public ketest::StubTest {};

// A 128-byte address that fills its field with no terminator.
std::string address(char first)
{
    std::string s(128, ' ');
    for (size_t i = 0; i < s.size(); ++i)
        s[i] = static_cast<char>(first + i % 26);
    return s;
}

TEST_F(VoipSipServer, SignallingPortGoesToTheLineProfileAtItsOddOffsets)
{
    st_voip_udptcp req = {0x0102, 5060, 17, 0x1B8};
    EXPECT_EQ(ke_omci_tapi_voip_udptcp_set(&req), 0u);
    auto sets = ketest::cm_sets();
    ASSERT_EQ(sets.size(), 1u);
    EXPECT_EQ(sets[0].first, kProfileTab);
    Bytes expected = Image(kProfileSize).u8(4, 0x02).u8(7, 0xB8).u32(9, 5060).u32(4167, 0x14);
    EXPECT_EQ(sets[0].second, expected);
    EXPECT_EQ(kestub::cm_calls()[0].size, kProfileSize);
}

struct ServerFn {
    const char *name;
    uint32_t (*fn)(const st_voip_server *);
    uint32_t block;  // offset of the server's address
    uint32_t bit_a, bit_p, bit_t;
};

const ServerFn kServers[] = {
    {"ke_omci_tapi_voip_proxyserver_set", ke_omci_tapi_voip_proxyserver_set, 4, 0x1, 0x2, 0x4},
    {"ke_omci_tapi_voip_regserver_set", ke_omci_tapi_voip_regserver_set, 140, 0x8, 0x10, 0x20},
    {"ke_omci_tapi_voip_outbserver_set", ke_omci_tapi_voip_outbserver_set, 276, 0x40, 0x80, 0x100},
};

TEST_F(VoipSipServer, EachServerWritesOnlyItsBlockWithTheBitsItsRequestSelects)
{
    struct Case {
        uint16_t port, protocol;
        uint8_t transport;
        bool port_bit, transport_bit;
    } cases[] = {
        {0, 0xFFFF, 1, false, false},  // keep both: only the address is selected
        {5060, 17, 1, true, true},       {5061, 6, 0, true, true},  {0, 56, 2, false, true},
        {7000, 132, 3, true, true},      {5060, 99, 1, true, true}, {1, 0, 1, true, true},
        {65535, 0xFFFF, 1, true, false},
    };
    for (const ServerFn &s : kServers) {
        for (const Case &c : cases) {
            kestub::reset();
            st_voip_server req = {};
            std::string addr = address('a');
            std::memcpy(req.auc_address, addr.data(), 128);
            req.us_port = c.port;
            req.us_protocol = c.protocol;
            EXPECT_EQ(s.fn(&req), 0u) << s.name;
            uint32_t mask = s.bit_a | (c.port_bit ? s.bit_p : 0) | (c.transport_bit ? s.bit_t : 0);
            Bytes expected = Image(kServerSize)
                                 .text(s.block, addr)
                                 .u32(s.block + 128, c.port)
                                 .u8(s.block + 132, c.transport)
                                 .u32(kServerMask, mask);
            auto sets = ketest::cm_sets();
            ASSERT_EQ(sets.size(), 1u) << s.name;
            EXPECT_EQ(sets[0].first, kServerTab);
            EXPECT_EQ(sets[0].second, expected)
                << s.name << " port " << c.port << " protocol " << c.protocol;
        }
    }
}

TEST_F(VoipSipServer, AgentValueIsBothPortAndMappedTransport)
{
    struct Case {
        uint16_t value;
        uint8_t transport;
    } cases[] = {{56, 2}, {132, 3}, {6, 0}, {17, 1}, {5060, 1}, {0xFFFF, 1}, {0, 1}};
    for (const Case &c : cases) {
        kestub::reset();
        st_voip_agent req = {};
        std::string addr = address('A');
        std::memcpy(req.auc_address, addr.data(), 128);
        req.us_value = c.value;
        EXPECT_EQ(ke_omci_tapi_voip_agent_set(&req), 0u);
        Bytes expected = Image(kServerSize)
                             .text(820, addr)
                             .u32(948, c.value)
                             .u8(952, c.transport)
                             .u32(kServerMask, 0x1C0000);
        auto sets = ketest::cm_sets();
        ASSERT_EQ(sets.size(), 1u);
        EXPECT_EQ(sets[0].second, expected) << "value " << c.value;
    }
}

TEST_F(VoipSipServer, AFailedWriteReturnsOneAndTracesTheExportedFunction)
{
    st_voip_server server = {};
    st_voip_agent agent = {};
    st_voip_udptcp udptcp = {};
    struct Case {
        const char *name;
        uint32_t table;
        std::function<uint32_t()> call;
    } cases[] = {
        {"ke_omci_tapi_voip_proxyserver_set", kServerTab,
         [&] { return ke_omci_tapi_voip_proxyserver_set(&server); }},
        {"ke_omci_tapi_voip_regserver_set", kServerTab,
         [&] { return ke_omci_tapi_voip_regserver_set(&server); }},
        {"ke_omci_tapi_voip_outbserver_set", kServerTab,
         [&] { return ke_omci_tapi_voip_outbserver_set(&server); }},
        {"ke_omci_tapi_voip_agent_set", kServerTab,
         [&] { return ke_omci_tapi_voip_agent_set(&agent); }},
        {"ke_omci_tapi_voip_udptcp_set", kProfileTab,
         [&] { return ke_omci_tapi_voip_udptcp_set(&udptcp); }},
    };
    for (const Case &c : cases) {
        for (bool gate : {true, false}) {
            kestub::reset();
            kestub::log_set(gate);
            kestub::cm_fail(c.table, 0x7230000A);
            uint32_t ret = 0;
            std::string out = ketest::printed([&] { ret = c.call(); });
            EXPECT_EQ(ret, 1u) << c.name;
            if (gate)
                EXPECT_EQ(ketest::infos(out), (std::vector<Info>{{c.name, 0x7230000A}}));
            else
                EXPECT_EQ(out, "") << c.name;
        }
    }
}

TEST_F(VoipSipServer, NullRequestsAreRefusedWithoutATableWrite)
{
    EXPECT_EQ(ke_omci_tapi_voip_udptcp_set(nullptr), 1u);
    EXPECT_EQ(ke_omci_tapi_voip_proxyserver_set(nullptr), 1u);
    EXPECT_EQ(ke_omci_tapi_voip_regserver_set(nullptr), 1u);
    EXPECT_EQ(ke_omci_tapi_voip_outbserver_set(nullptr), 1u);
    EXPECT_EQ(ke_omci_tapi_voip_agent_set(nullptr), 1u);
    EXPECT_TRUE(kestub::cm_calls().empty());
}

// The store keeps every server: each write selects only its own fields,
// and a request that keeps the port and transport leaves them as stored.
TEST_F(VoipSipServer, ServersAccumulateInTheStoreAndKeptFieldsStay)
{
    st_voip_server proxy = {};
    std::memcpy(proxy.auc_address, address('p').data(), 128);
    proxy.us_port = 5060;
    proxy.us_protocol = 6;
    st_voip_server reg = {};
    std::memcpy(reg.auc_address, address('r').data(), 128);
    reg.us_port = 5070;
    reg.us_protocol = 132;
    st_voip_agent agent = {};
    std::memcpy(agent.auc_address, address('g').data(), 128);
    agent.us_value = 56;
    ASSERT_EQ(ke_omci_tapi_voip_proxyserver_set(&proxy), 0u);
    ASSERT_EQ(ke_omci_tapi_voip_regserver_set(&reg), 0u);
    ASSERT_EQ(ke_omci_tapi_voip_agent_set(&agent), 0u);
    st_voip_server readdress = {};
    std::memcpy(readdress.auc_address, address('q').data(), 128);
    readdress.us_protocol = KE_VOIP_PROTOCOL_KEEP;
    ASSERT_EQ(ke_omci_tapi_voip_proxyserver_set(&readdress), 0u);

    Bytes s = ketest::stored(kServerTab);
    ASSERT_EQ(s.size(), kServerSize);
    EXPECT_EQ(std::string(s.begin() + 4, s.begin() + 132), address('q'));
    EXPECT_EQ(ketest::u32_at(s, 132), 5060u);
    EXPECT_EQ(ketest::u8_at(s, 136), 0u);
    EXPECT_EQ(std::string(s.begin() + 140, s.begin() + 268), address('r'));
    EXPECT_EQ(ketest::u32_at(s, 268), 5070u);
    EXPECT_EQ(ketest::u8_at(s, 272), 3u);
    EXPECT_EQ(ketest::u32_at(s, 948), 56u);
    EXPECT_EQ(ketest::u8_at(s, 952), 2u);
    EXPECT_EQ(ketest::u32_at(s, 1004), 0u);
}

}  // namespace
