// T-CONT and GEM port provisioning: names, records and status rules.
#include <functional>

#include "ke_omci_tapi/pon.h"
#include "stub_test.h"

namespace {

using ketest::call_names;
using ketest::words;

class Pon : public ketest::StubTest {};

// Functions that hand a word to the service and return its status as is.
struct PassThroughCase {
    const char *label;
    const char *remote;
    std::function<uint32_t()> invoke;
    std::vector<uint8_t> request;
};

std::vector<PassThroughCase> pass_through_cases()
{
    static uint32_t word;
    return {
        {"tcont_del", "ke_ke_sml_gpon_tcont_del_call", [] { return ke_omci_tapi_tcont_del(5); },
         words({5})},
        {"gem_block_set", "ke_ke_sml_gpon_gemblock_set_call",
         [] { return ke_omci_tapi_gem_block_set(48); }, words({48})},
        {"gemport_del", "ke_ke_sml_gpon_gemport_del_call",
         [] { return ke_omci_tapi_gemport_del(1024); }, words({1024})},
        {"gemport_loopback_set", "ke_ke_sml_gpon_gemport_loopback_set_call",
         [] { return ke_omci_tapi_gemport_loopback_set(1, 2, 3); }, words({1, 2, 3})},
        {"dba_mode_get", "ke_ke_sml_gpon_dba_mode_get_call",
         [] { word = 0x11; return ke_omci_tapi_dba_mode_get(&word); }, words({0x11})},
        {"gem_block_get", "ke_ke_sml_gpon_gemblock_get_call",
         [] { word = 0x22; return ke_omci_tapi_gem_block_get(&word); }, words({0x22})},
        {"gemport_num_get", "ke_ke_sml_gpon_gemport_num_get_call",
         [] { word = 0x33; return ke_omci_tapi_gemport_num_get(&word); }, words({0x33})},
    };
}

TEST_F(Pon, PassThroughSendsItsRecordAndReturnsTheStatusUnchanged)
{
    kestub::log_set(true);
    for (const auto &c : pass_through_cases()) {
        for (uint32_t status : {0u, 1u, 0x72200008u}) {
            kestub::reset();
            kestub::log_set(true);
            kestub::ipc_script(c.remote, status);
            uint32_t ret = 0;
            std::string out = ketest::printed([&] { ret = c.invoke(); });
            EXPECT_EQ(ret, status) << c.label;
            EXPECT_EQ(out, "") << c.label;
            ASSERT_EQ(kestub::ipc_calls().size(), 1u) << c.label;
            const auto &call = kestub::ipc_calls()[0];
            EXPECT_EQ(call.name, c.remote);
            EXPECT_EQ(call.len, c.request.size()) << c.label;
            EXPECT_EQ(call.request, c.request) << c.label;
        }
    }
}

TEST_F(Pon, InOutGettersLeaveTheReplyInTheCallersWord)
{
    struct {
        const char *remote;
        uint32_t (*fn)(uint32_t *);
    } cases[] = {
        {"ke_ke_sml_gpon_dba_mode_get_call", ke_omci_tapi_dba_mode_get},
        {"ke_ke_sml_gpon_gemblock_get_call", ke_omci_tapi_gem_block_get},
        {"ke_ke_sml_gpon_gemport_num_get_call", ke_omci_tapi_gemport_num_get},
        {"ke_ke_sml_gpon_tcont_num_get_call", ke_omci_tapi_tcont_num_get},
    };
    for (const auto &c : cases) {
        kestub::ipc_script_reply(c.remote, uint32_t{0xA1B2C3D4});
        uint32_t word = 1;
        EXPECT_EQ(c.fn(&word), 0u) << c.remote;
        EXPECT_EQ(word, 0xA1B2C3D4u) << c.remote;
    }
}


TEST_F(Pon, TcontSetSendsIndexAndAllocId)
{
    kestub::ipc_script("ke_ke_sml_gpon_tcont_set_call", 0);
    EXPECT_EQ(ke_omci_tapi_tcont_set(2, 0x4321), 0u);
    ASSERT_EQ(call_names(), std::vector<std::string>{"ke_ke_sml_gpon_tcont_set_call"});
    EXPECT_EQ(kestub::ipc_calls()[0].request, words({2, 0x4321}));
}

TEST_F(Pon, TcontZeroReadsTheOnuIdWithOneCall)
{
    kestub::ipc_script_reply("ke_ke_sml_gpon_onuid_get_call", uint32_t{42});
    uint32_t id = 0;
    EXPECT_EQ(ke_omci_tapi_tcont_get(0, &id), 0u);
    EXPECT_EQ(id, 42u);
    EXPECT_EQ(call_names(), std::vector<std::string>{"ke_ke_sml_gpon_onuid_get_call"});
    EXPECT_EQ(kestub::ipc_calls()[0].request, words({0}));
}

TEST_F(Pon, OtherTcontsReadTheirAllocIdAndNeverTheOnuId)
{
    st_tcont reply = {7, 0x0BEE};
    kestub::ipc_script_reply("ke_ke_sml_gpon_tcont_get_call", reply);
    uint32_t id = 0;
    EXPECT_EQ(ke_omci_tapi_tcont_get(7, &id), 0u);
    EXPECT_EQ(id, 0x0BEEu);
    EXPECT_EQ(call_names(), std::vector<std::string>{"ke_ke_sml_gpon_tcont_get_call"});
    EXPECT_EQ(kestub::ipc_calls()[0].request, words({7, 0}));
}

TEST_F(Pon, GponModeIsDeliveredOnSuccess)
{
    kestub::ipc_script_reply("ke_ke_sml_gpon_mode_get_call", uint32_t{3});
    uint32_t mode = 0;
    EXPECT_EQ(ke_omci_tapi_gponmode_get(&mode), 0u);
    EXPECT_EQ(mode, 3u);
    EXPECT_EQ(kestub::ipc_calls()[0].len, 4u);
}

// A missing output word receives nothing: the call is made and its status
// stands, as for every other getter of the library.
TEST_F(Pon, WordGettersWithoutAnOutputMakeTheCallAndReturnZero)
{
    struct {
        const char *remote;
        std::vector<uint8_t> reply;
        std::function<uint32_t()> invoke;
    } cases[] = {
        {"ke_ke_sml_gpon_mode_get_call", words({2}),
         [] { return ke_omci_tapi_gponmode_get(nullptr); }},
        {"ke_ke_sml_gpon_onuid_get_call", words({9}),
         [] { return ke_omci_tapi_tcont_get(0, nullptr); }},
        {"ke_ke_sml_gpon_tcont_get_call", words({3, 9}),
         [] { return ke_omci_tapi_tcont_get(3, nullptr); }},
    };
    for (const auto &c : cases) {
        kestub::reset();
        kestub::ipc_script(c.remote, 0, c.reply.data(), c.reply.size());
        EXPECT_EQ(c.invoke(), 0u) << c.remote;
        EXPECT_EQ(call_names(), std::vector<std::string>{c.remote});
    }
}

TEST_F(Pon, GemportAttributesTravelUnchangedBothWays)
{
    uint8_t attr[KE_GEMPORT_ATTR_LEN];
    for (size_t i = 0; i < sizeof attr; ++i)
        attr[i] = static_cast<uint8_t>(i + 1);

    kestub::ipc_script("ke_ke_sml_gpon_gemport_set_call", 0);
    EXPECT_EQ(ke_omci_tapi_gemport_set(0x1001, attr), 0u);
    st_gemport sent;
    sent.ui_gemport = 0x1001;
    std::memcpy(sent.st_gemport_attr, attr, sizeof attr);
    EXPECT_EQ(kestub::ipc_calls().back().request, ketest::bytes_of(sent));

    st_gemport reply = sent;
    reply.st_gemport_attr[27] = 0xFE;
    kestub::ipc_script_reply("ke_ke_sml_gpon_gemport_get_call", reply);
    uint8_t out[KE_GEMPORT_ATTR_LEN] = {};
    EXPECT_EQ(ke_omci_tapi_gemport_get(0x1001, out), 0u);
    EXPECT_EQ(std::memcmp(out, reply.st_gemport_attr, sizeof out), 0);
    std::vector<uint8_t> request(32, 0);
    std::memcpy(request.data(), &sent.ui_gemport, 4);
    EXPECT_EQ(kestub::ipc_calls().back().request, request);
}

TEST_F(Pon, OmccEntryPointsDoNothing)
{
    EXPECT_EQ(ke_omci_tapi_omcc_create(), 0u);
    EXPECT_EQ(ke_omci_tapi_omcc_destory(), 0u);
    EXPECT_TRUE(kestub::ipc_calls().empty());
}

}  // namespace
