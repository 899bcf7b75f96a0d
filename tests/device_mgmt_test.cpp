// Device management: the system information (the byte mapping of both
// replies, the cache filled once per process) and the serial-number and
// LOID read; reboot; the firmware upgrade (the section rule, the saved
// word, the shard request, the section line of stop); the Ethernet port
// attributes (the word each getter and setter owns, the read-modify-write,
// the instance identifier).  The system-information tests come first: only
// they fill the cache in this process; the product-type cases run in
// processes of their own (device_product_type_test).
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "ke_omci_tapi/device.h"
#include "ke_omci_tapi/lifecycle.h"
#include "stub_test.h"
#include "sysinfo_replies.h"

namespace {

using Bytes = std::vector<uint8_t>;
using Names = std::vector<std::string>;
using ketest::bytes_of;
using ketest::call_names;
using ketest::patterned;
using ketest::printed;
using ketest::script;
using ketest::sysinfo_reply;
using ketest::u32_at;
using ketest::words;

class Sysinfo : public ketest::StubTest {};

// Fields: record offset, width, reply offset; from the board reply when
// marked, otherwise from the system-information reply.
struct Source { size_t to, width, from; bool board; };
constexpr Source kSysinfo[] = {
    {0, 4, 215, false}, {4, 14, 387, false}, {18, 14, 267, false}, {32, 20, 455, false},
    {52, 4, 484, false}, {60, 4, 4, true},   {64, 4, 8, true},     {68, 4, 12, true},
    {72, 4, 0, true},   {76, 12, 564, false}, {88, 4, 684, false},
};
constexpr Source kSnLoid[] = {
    {0, 6, 66, false}, {6, 8, 48, false}, {50, 16, 195, false}, {66, 36, 155, false}};

template <size_t N>
Bytes mapped(const Source (&fields)[N], size_t size, const Bytes &info, const Bytes &board = {})
{
    Bytes rec(size, 0);
    for (const Source &f : fields)
        std::memcpy(rec.data() + f.to, (f.board ? board : info).data() + f.from, f.width);
    return rec;
}

// A failed fetch fills nothing (the fault sweep's): the retry makes both
// calls again, and only a whole fetch fills the cache.
TEST_F(Sysinfo, CacheIsFilledOnceAndOnlyByAWholeFetch)
{
    EXPECT_EQ(bytes_of(gst_sysinfo), Bytes(92, 0));
    const Bytes board = patterned(956, 7), info = sysinfo_reply("hgu", 8);
    st_sysinfo out;
    kestub::ipc_script("ke_ke_board_info_get_call", 0x1001);
    EXPECT_EQ(ke_omci_tapi_sysinfo_get(&out), 1u);
    script("ke_ke_board_info_get_call", board);
    script("ke_ke_sysinfo_data_get_call", info);
    EXPECT_EQ(ke_omci_tapi_sysinfo_get(&out), 0u);
    EXPECT_EQ(call_names(), (std::vector<std::string>{"ke_ke_board_info_get_call",
                                                      "ke_ke_board_info_get_call",
                                                      "ke_ke_sysinfo_data_get_call"}));
    EXPECT_EQ(kestub::ipc_calls()[1].len, 956u);
    EXPECT_EQ(kestub::ipc_calls()[2].len, 720u);
    Bytes expected = mapped(kSysinfo, 92, info, board);
    expected[56] = KE_PRODUCT_HGU;
    EXPECT_EQ(bytes_of(out), expected);

    // Later reads make no call.
    kestub::reset();
    std::memset(&out, 0, sizeof out);
    EXPECT_EQ(ke_omci_tapi_sysinfo_get(&out), 0u);
    EXPECT_EQ(bytes_of(out), expected);
    EXPECT_TRUE(kestub::ipc_calls().empty());
}

TEST_F(Sysinfo, SnLoidTakesAFreshReplyEveryTimeAndTheStore)
{
    st_sn_loid loid;
    for (size_t i = 0; i < sizeof loid; ++i)
        reinterpret_cast<uint8_t *>(&loid)[i] = static_cast<uint8_t>(0xC0 ^ i);
    ASSERT_EQ(ke_ke_omci_set_loid_call(&loid, sizeof loid), 0u);
    ASSERT_EQ(ke_ke_omci_set_loidpwd_call(&loid, sizeof loid), 0u);
    for (uint32_t seed : {11u, 12u}) {
        const Bytes info = sysinfo_reply("SFU", seed);
        script("ke_ke_sysinfo_data_get_call", info);
        st_sn_loid out;
        EXPECT_EQ(ke_omci_tapi_sn_loid_get(&out), 0u);
        Bytes expected = mapped(kSnLoid, 102, info);
        std::memcpy(expected.data() + 14, loid.auc_loid, 36);
        EXPECT_EQ(bytes_of(out), expected) << "seed " << seed;
    }
    EXPECT_EQ(kestub::ipc_calls().size(), 2u);
}

TEST_F(Sysinfo, RebootIsOneControlRequest)
{
    EXPECT_EQ(ke_omci_tapi_reboot(), 0u);
    ASSERT_EQ(kestub::cm_calls().size(), 1u);
    EXPECT_EQ(kestub::cm_calls()[0].op, kestub::CmOp::OamCtrl);
    EXPECT_EQ(kestub::cm_calls()[0].table, 0x20000001u);
    EXPECT_TRUE(kestub::ipc_calls().empty());
}

constexpr const char *kFlagGet = "ke_ke_upgrade_flag_get_call";
constexpr const char *kFlagSet = "ke_ke_upgrade_flag_set_call";
constexpr const char *kStart = "ke_ke_upgrade_sharding_start_call";
constexpr const char *kWrite = "ke_ke_upgrade_image_sharding_write_call";
const uint8_t kInfo[24] = {1, 2, 3, 4, 5, 6, 7, 8, 0x91, 0x92, 0x93, 0x94, 13, 14, 15, 16,
                           17, 18, 19, 20, 21, 22, 23, 24};

class Upgrade : public ketest::StubTest {
protected:
    void SetUp() override
    {
        StubTest::SetUp();
        kestub::ipc_serve_default([](void *, uint32_t) { return 0u; });
    }
};

uint32_t start(uint32_t flag, uint32_t word)
{
    kestub::ipc_script_reply(kFlagGet, flag);
    return ke_omci_tapi_upgrade_start(word, kInfo);
}

// The word the next shard carries.
uint32_t word_of_next_shard()
{
    EXPECT_EQ(ke_omci_tapi_upgrade_write(kInfo, 1), 0u);
    return u32_at(kestub::ipc_calls().back().request, 0);
}

TEST_F(Upgrade, StartAndStopPickTheSectionThatIsNotBooted)
{
    struct {
        uint32_t flag, other;
    } cases[] = {{1, 0}, {0, 1}, {2, 1}};
    for (const auto &c : cases) {
        kestub::ipc_serve_default([](void *, uint32_t) { return 0u; });
        EXPECT_EQ(start(c.flag, 0xCAFE), 0u);
        std::vector<uint8_t> req = words({c.other, 0xCAFE, 0x94939291});
        req.insert(req.end(), kInfo, kInfo + 24);
        EXPECT_EQ(call_names(), (Names{kFlagGet, kStart}));
        EXPECT_EQ(kestub::ipc_calls()[1].request, req) << "flag " << c.flag;

        kestub::reset();
        kestub::ipc_script_reply(kFlagGet, c.flag);
        kestub::ipc_script(kFlagSet, 0);  // the reply is the request itself
        std::string line = printed([] { EXPECT_EQ(ke_omci_tapi_upgrade_stop(), 0u); });
        EXPECT_EQ(line, "\r\n" + std::to_string(c.other) + " section will loading!!\r\n\n");
        EXPECT_EQ(call_names(), (Names{kFlagGet, kFlagSet}));
        EXPECT_EQ(kestub::ipc_calls()[1].request, words({c.other})) << "flag " << c.flag;
        kestub::reset();
    }
    // The line shows the flag buffer as the service left it.
    kestub::ipc_script_reply(kFlagGet, uint32_t{1});
    kestub::ipc_script_reply(kFlagSet, uint32_t{7});
    EXPECT_EQ(printed([] { ke_omci_tapi_upgrade_stop(); }), "\r\n7 section will loading!!\r\n\n");
}

TEST_F(Upgrade, ShardGoesOutWholeWithTheLatestStartsWord)
{
    ASSERT_EQ(start(0, 111), 0u);
    ASSERT_EQ(start(0, 0x1234ABCD), 0u);
    std::vector<uint8_t> image(6145);
    for (size_t i = 0; i < image.size(); ++i)
        image[i] = static_cast<uint8_t>(i + 1);
    EXPECT_EQ(ke_omci_tapi_upgrade_write(image.data(), 100), 0u);
    std::vector<uint8_t> req = words({0x1234ABCD, 100});
    req.insert(req.end(), image.begin(), image.begin() + 100);
    req.resize(6152, 0);
    EXPECT_EQ(kestub::ipc_calls().back().name, kWrite);
    EXPECT_EQ(kestub::ipc_calls().back().request, req);

    EXPECT_EQ(ke_omci_tapi_upgrade_write(image.data(), 6144), 0u);
    EXPECT_EQ(kestub::ipc_calls().back().request[6151], image[6143]);
    // Past the bound (bounds_test), a length that is negative as an int.
    const size_t calls = kestub::ipc_calls().size();
    EXPECT_EQ(ke_omci_tapi_upgrade_write(image.data(), 0xFFFFFFFF), 0x70000000u);
    EXPECT_EQ(kestub::ipc_calls().size(), calls);

    // A failed start call still saves the word.
    kestub::ipc_script(kStart, 9);
    EXPECT_EQ(start(1, 333), 1u);
    EXPECT_EQ(word_of_next_shard(), 333u);
}

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
    struct { uint32_t (*fn)(uint32_t, uint32_t *); size_t off; } getters[] = {
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
