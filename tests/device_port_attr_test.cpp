// Ethernet port attributes: the word each getter and setter owns, the
// read-modify-write, the instance identifier, the MTU entries.
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "ke_omci_tapi/device.h"
#include "stub_test.h"

namespace {

using Bytes = std::vector<uint8_t>;
using Names = std::vector<std::string>;
using ketest::call_names;
using ketest::u32_at;

constexpr const char *kGet = "ke_ke_sml_port_attr_get_call";
constexpr const char *kSet = "ke_ke_sml_port_attr_set_call";

class PortAttr : public ketest::StubTest {};

Bytes with_word(Bytes rec, size_t off, uint32_t v)
{
    std::memcpy(rec.data() + off, &v, 4);
    return rec;
}

// The record as the service returns it: a distinct value in every word.
Bytes service_record(uint32_t port, uint32_t type = 0xA1010101)
{
    Bytes rec(56);
    for (uint32_t w = 0; w < 14; ++w)
        rec = with_word(rec, w * 4, 0xA0000000u + w * 0x01010101u);
    return with_word(with_word(rec, 0, port), 4, type);
}

void script_read(const Bytes &reply) { kestub::ipc_script(kGet, 0, reply.data(), reply.size()); }

TEST_F(PortAttr, GettersAnswerTheirOwnWordOfTheRecord)
{
    struct {
        uint32_t (*fn)(uint32_t, uint32_t *);
        size_t off;
    } getters[] = {
        {ke_omci_tapi_port_type_get, 4},     {ke_omci_tapi_port_state_get, 8},
        {ke_omci_tapi_port_ethmode_get, 16}, {ke_omci_tapi_port_link_get, 20},
        {ke_omci_tapi_port_loopback_get, 24}, {ke_omci_tapi_port_pause_get, 28},
    };
    for (const auto &g : getters) {
        script_read(service_record(3));
        uint32_t out = 0;
        EXPECT_EQ(g.fn(3, &out), 0u) << g.off;
        EXPECT_EQ(out, u32_at(service_record(3), g.off)) << g.off;
        EXPECT_EQ(kestub::ipc_calls().back().request, with_word(Bytes(56, 0), 0, 3)) << g.off;
    }
}

TEST_F(PortAttr, SettersWriteBackTheRecordReadWithOnlyTheirWordsChanged)
{
    struct {
        std::function<uint32_t()> invoke;
        std::vector<std::pair<size_t, uint32_t>> words;
    } setters[] = {
        {[] { return ke_omci_tapi_port_state_set(2, 11); }, {{8, 11}}},
        {[] { return ke_omci_tapi_port_ethmode_set(2, 12); }, {{12, 12}}},
        {[] { return ke_omci_tapi_port_loopback_set(2, 13); }, {{24, 13}}},
        {[] { return ke_omci_tapi_port_pause_set(2, 14); }, {{28, 14}}},
        {[] { return ke_omci_tapi_port_incar_set(2, 1, 2, 3, 4); },
         {{32, 1}, {36, 2}, {40, 3}, {44, 4}}},
        {[] { return ke_omci_tapi_port_outcar_set(2, 15); }, {{52, 15}}},
    };
    for (const auto &s : setters) {
        kestub::reset();
        script_read(service_record(2));
        kestub::ipc_script(kSet, 0);
        EXPECT_EQ(s.invoke(), 0u);
        Bytes expected = service_record(2);
        for (const auto &[off, value] : s.words)
            expected = with_word(expected, off, value);
        ASSERT_EQ(call_names(), (Names{kGet, kSet}));
        EXPECT_EQ(kestub::ipc_calls()[0].request, with_word(Bytes(56, 0), 0, 2));
        EXPECT_EQ(kestub::ipc_calls()[1].request, expected) << "word " << s.words[0].first;
    }
}

TEST_F(PortAttr, InstanceIdentifierFollowsTheTypeOfPortZero)
{
    struct {
        uint32_t type, port, ret;
        uint16_t id;
    } cases[] = {{0, 2, 0, 3},          {1, 3, 0, 0x104},
                 {2, 2, 0, 0x103},      {3, 2, 0x70000000, 7},
                 {0xFFFFFFFF, 1, 0x70000000, 7}};
    for (const auto &c : cases) {
        kestub::reset();
        script_read(service_record(0, c.type));
        uint16_t id = 7;
        EXPECT_EQ(ke_omci_tapi_port_pptpinstid_get(c.port, &id), c.ret) << c.type << "/" << c.port;
        EXPECT_EQ(id, c.id) << c.type << "/" << c.port;
        ASSERT_EQ(call_names(), Names{kGet});
        EXPECT_EQ(kestub::ipc_calls()[0].request, Bytes(56, 0)) << "always port 0";
    }

    // A failed type read is traced by the getter, then as 1 by the identifier.
    kestub::log_set(true);
    kestub::ipc_script(kGet, 0x72200004);
    uint16_t id = 7;
    std::string out = ketest::printed([&] { ke_omci_tapi_port_pptpinstid_get(5, &id); });
    std::string func;
    int at = 0;
    size_t split = out.find('\n') + 1;
    EXPECT_TRUE(ketest::parse_info_line(out.substr(split), &func, &at, 1)) << out;
    EXPECT_EQ(func, "ke_omci_tapi_port_pptpinstid_get");
}

// The MTU entries make no call (the fault sweep's) and leave the output.
TEST_F(PortAttr, MtuReadLeavesTheOutput)
{
    uint32_t mtu = 0x600D;
    EXPECT_EQ(ke_omci_tapi_port_mtu_get(1, &mtu), 0u);
    EXPECT_EQ(mtu, 0x600Du);
}

}  // namespace
