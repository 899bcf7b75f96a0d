// Line settings: exact records of tables 468, 471, 473 and 474, the
// signalling-type and administrative-state codes both ways, getters,
// failures, and round trips through the store.
#include <functional>

#include "ke_omci_tapi/voip.h"
#include "voip_test.h"

namespace {

using ketest::Bytes;
using ketest::Image;
using ketest::Info;

constexpr uint32_t kGlobal = 468, kGlobalSize = 4460;
constexpr uint32_t kSipUser = 471, kSipUserSize = 604;
constexpr uint32_t kProfile = 473, kProfileSize = 4171;
constexpr uint32_t kGain = 474, kGainSize = 32;
constexpr uint32_t kRegInfo = 467;

class VoipLineSettings : public ketest::StubTest {};

std::string text(char first, size_t n = 128)
{
    std::string s(n, ' ');
    for (size_t i = 0; i < n; ++i)
        s[i] = static_cast<char>(first + i % 23);
    return s;
}

st_voip_sipauth auth(uint32_t line, char first)
{
    st_voip_sipauth a = {};
    a.ui_line = line;
    std::memcpy(a.auc_user_name, text(first).data(), 128);
    std::memcpy(a.auc_password, text(first + 1).data(), 128);
    std::memcpy(a.auc_realm, text(first + 2).data(), 128);
    return a;
}

Bytes only_set()
{
    auto sets = ketest::cm_sets();
    EXPECT_EQ(sets.size(), 1u);
    return sets.empty() ? Bytes{} : sets[0].second;
}

TEST_F(VoipLineSettings, SettersSendTheirFieldsAtTheirOffsetsWithTheirMasks)
{
    st_voip_regtime regtime = {0x103, 3600, 0xFFFF};
    uint32_t offhook = 300;
    st_voip_sipauth sipauth = auth(0x0207, 'a');
    st_voip_gain gain = {1, 0xFFFFFFF6, 20};
    struct Case {
        const char *name;
        uint32_t table;
        std::function<uint32_t()> call;
        Bytes expected;
    } cases[] = {
        {"regtime_set", kProfile, [&] { return ke_omci_tapi_voip_regtime_set(&regtime); },
         Image(kProfileSize).u8(4, 3).u32(13, 3600).u32(17, 0xFFFF).u32(4167, 0x60)},
        {"offhooktime_set", kGlobal, [&] { return ke_omci_tapi_voip_offhooktime_set(&offhook); },
         Image(kGlobalSize).u8(8, 44).u32(4456, 0x10)},
        {"sipauth_set", kSipUser, [&] { return ke_omci_tapi_voip_sipauth_set(&sipauth); },
         Image(kSipUserSize)
             .u8(4, 7)
             .text(8, text('a'))
             .text(136, text('b'))
             .text(264, text('c'))
             .u32(600, 0xE)},
        {"gain_set", kGain, [&] { return ke_omci_tapi_voip_gain_set(&gain); },
         Image(kGainSize).u8(4, 1).u32(8, 0xFFFFFFF6).u32(12, 20).u32(28, 0xC)},
    };
    for (const Case &c : cases) {
        kestub::reset();
        EXPECT_EQ(c.call(), 0u) << c.name;
        ASSERT_EQ(kestub::cm_calls().size(), 1u) << c.name;
        EXPECT_EQ(kestub::cm_calls()[0].table, c.table) << c.name;
        EXPECT_EQ(kestub::cm_calls()[0].size, c.expected.size()) << c.name;
        EXPECT_EQ(only_set(), c.expected) << c.name;
    }
}

TEST_F(VoipLineSettings, SignallingTypeCodesBothWays)
{
    struct Set {
        uint32_t caller;
        uint8_t stored;
    } sets[] = {{1, 0}, {2, 2}, {0, 1}, {3, 1}, {5, 1}, {0xFFFFFFFF, 1}};
    for (const Set &s : sets) {
        kestub::reset();
        EXPECT_EQ(ke_omci_tapi_voip_type_set(&s.caller), 0u);
        EXPECT_EQ(only_set(), Bytes(Image(kGlobalSize).u8(4, s.stored).u32(4456, 0x1))) << s.caller;
    }
    struct Get {
        uint8_t stored;
        uint32_t caller;
    } gets[] = {{0, 1}, {2, 2}, {1, 0}, {3, 0}, {255, 0}};
    for (const Get &g : gets) {
        kestub::reset();
        kestub::cm_preload(kGlobal, Image(kGlobalSize).u8(4, g.stored).bytes().data(), kGlobalSize);
        uint32_t out = 0xDEAD;
        EXPECT_EQ(ke_omci_tapi_voip_type_get(&out), 0u);
        EXPECT_EQ(out, g.caller) << int(g.stored);
    }
}

TEST_F(VoipLineSettings, AdministrativeStateCodesBothWays)
{
    struct Set {
        uint32_t caller;
        uint8_t stored;
    } sets[] = {{0, 1}, {1, 0}, {2, 0}, {3, 1}, {0x100, 1}};
    for (const Set &s : sets) {
        kestub::reset();
        st_voip_admin admin = {0x305, s.caller};
        EXPECT_EQ(ke_omci_tapi_voip_adminstate_set(&admin), 0u);
        EXPECT_EQ(only_set(), Bytes(Image(kSipUserSize).u8(4, 5).u8(5, s.stored).u32(600, 0x1)))
            << s.caller;
    }
    struct Get {
        uint8_t stored;
        uint32_t caller;
    } gets[] = {{0, 1}, {1, 0}, {2, 0}, {255, 0}};
    for (const Get &g : gets) {
        kestub::reset();
        kestub::cm_preload(kSipUser, Image(kSipUserSize).u8(4, 5).u8(5, g.stored).bytes().data(),
                           kSipUserSize);
        st_voip_admin admin = {5, 0xDEAD};
        EXPECT_EQ(ke_omci_tapi_voip_adminstate_get(&admin), 0u);
        EXPECT_EQ(admin.ui_admin_state, g.caller) << int(g.stored);
        EXPECT_EQ(admin.ui_line, 5u);
    }
}

TEST_F(VoipLineSettings, GettersReadTheirLinesFieldsAndTruncateToTheCallersWidth)
{
    kestub::cm_preload(kProfile,
                       Image(kProfileSize).u8(4, 2).u32(13, 70000).u32(17, 0x1234).bytes().data(),
                       kProfileSize);
    kestub::cm_preload(kProfile,
                       Image(kProfileSize).u8(4, 3).u32(13, 10).u32(17, 20).bytes().data(),
                       kProfileSize);
    st_voip_regtime regtime = {0x102, 1, 1};
    EXPECT_EQ(ke_omci_tapi_voip_regtime_get(&regtime), 0u);
    EXPECT_EQ(regtime.us_reg_exp_time, 4464u);
    EXPECT_EQ(regtime.us_rereg_head_start_time, 0x1234u);

    kestub::cm_preload(kGlobal, Image(kGlobalSize).u8(8, 0xAB).bytes().data(), kGlobalSize);
    uint32_t offhook = 0;
    EXPECT_EQ(ke_omci_tapi_voip_offhooktime_get(&offhook), 0u);
    EXPECT_EQ(offhook, 0xABu);

    kestub::cm_preload(kRegInfo, Image(12).u8(4, 1).u8(5, 3).u8(6, 0).bytes().data(), 12);
    kestub::cm_preload(kRegInfo, Image(12).u8(4, 4).u8(5, 3).u8(6, 1).bytes().data(), 12);
    st_voip_hook hook = {4, 7};
    EXPECT_EQ(ke_omci_tapi_voip_hookstatus_get(&hook), 0u);
    EXPECT_EQ(hook.ui_hook_state, 1u);
    hook = {1, 7};
    EXPECT_EQ(ke_omci_tapi_voip_hookstatus_get(&hook), 0u);
    EXPECT_EQ(hook.ui_hook_state, 0u);
}

TEST_F(VoipLineSettings, EveryFailureReturnsOneTracesAndLeavesOutputs)
{
    st_voip_regtime regtime = {1, 11, 12};
    uint32_t word = 0x5A5A;
    st_voip_sipauth sipauth = auth(1, 'k');
    st_voip_gain gain = {1, 21, 22};
    st_voip_hook hook = {1, 31};
    st_voip_admin admin = {1, 41};
    struct Case {
        const char *name;
        uint32_t table;
        std::function<uint32_t()> call;
    } cases[] = {
        {"ke_omci_tapi_voip_regtime_set", kProfile,
         [&] { return ke_omci_tapi_voip_regtime_set(&regtime); }},
        {"ke_omci_tapi_voip_regtime_get", kProfile,
         [&] { return ke_omci_tapi_voip_regtime_get(&regtime); }},
        {"ke_omci_tapi_voip_offhooktime_set", kGlobal,
         [&] { return ke_omci_tapi_voip_offhooktime_set(&word); }},
        {"ke_omci_tapi_voip_offhooktime_get", kGlobal,
         [&] { return ke_omci_tapi_voip_offhooktime_get(&word); }},
        {"ke_omci_tapi_voip_sipauth_set", kSipUser,
         [&] { return ke_omci_tapi_voip_sipauth_set(&sipauth); }},
        {"ke_omci_tapi_voip_sipauth_get", kSipUser,
         [&] { return ke_omci_tapi_voip_sipauth_get(&sipauth); }},
        {"ke_omci_tapi_voip_gain_set", kGain, [&] { return ke_omci_tapi_voip_gain_set(&gain); }},
        {"ke_omci_tapi_voip_gain_get", kGain, [&] { return ke_omci_tapi_voip_gain_get(&gain); }},
        {"ke_omci_tapi_voip_hookstatus_get", kRegInfo,
         [&] { return ke_omci_tapi_voip_hookstatus_get(&hook); }},
        {"ke_omci_tapi_voip_type_set", kGlobal, [&] { return ke_omci_tapi_voip_type_set(&word); }},
        {"ke_omci_tapi_voip_type_get", kGlobal, [&] { return ke_omci_tapi_voip_type_get(&word); }},
        {"ke_omci_tapi_voip_adminstate_set", kSipUser,
         [&] { return ke_omci_tapi_voip_adminstate_set(&admin); }},
        {"ke_omci_tapi_voip_adminstate_get", kSipUser,
         [&] { return ke_omci_tapi_voip_adminstate_get(&admin); }},
    };
    for (const Case &c : cases) {
        kestub::reset();
        kestub::log_set(true);
        kestub::cm_fail(c.table, 0x72300010);
        uint32_t ret = 0;
        std::string out = ketest::printed([&] { ret = c.call(); });
        EXPECT_EQ(ret, 1u) << c.name;
        EXPECT_EQ(ketest::infos(out), (std::vector<Info>{{c.name, 0x72300010}})) << c.name;
        ASSERT_EQ(kestub::cm_calls().size(), 1u) << c.name;
        EXPECT_EQ(kestub::cm_calls()[0].table, c.table) << c.name;
    }
    EXPECT_EQ(regtime.us_reg_exp_time, 11u);
    EXPECT_EQ(regtime.us_rereg_head_start_time, 12u);
    EXPECT_EQ(word, 0x5A5Au);
    EXPECT_EQ(std::string(reinterpret_cast<char *>(sipauth.auc_realm), 128), text('m'));
    EXPECT_EQ(gain.ui_rx_gain, 21u);
    EXPECT_EQ(gain.ui_tx_gain, 22u);
    EXPECT_EQ(hook.ui_hook_state, 31u);
    EXPECT_EQ(admin.ui_admin_state, 41u);

    kestub::reset();
    kestub::log_set(false);
    kestub::cm_fail(kGain, 0x72300011);
    EXPECT_EQ(ketest::printed([&] { EXPECT_EQ(ke_omci_tapi_voip_gain_set(&gain), 1u); }), "");
}

TEST_F(VoipLineSettings, NullArgumentsAreRefusedWithoutATableOperation)
{
    EXPECT_EQ(ke_omci_tapi_voip_regtime_set(nullptr), 1u);
    EXPECT_EQ(ke_omci_tapi_voip_regtime_get(nullptr), 1u);
    EXPECT_EQ(ke_omci_tapi_voip_offhooktime_set(nullptr), 1u);
    EXPECT_EQ(ke_omci_tapi_voip_offhooktime_get(nullptr), 1u);
    EXPECT_EQ(ke_omci_tapi_voip_sipauth_set(nullptr), 1u);
    EXPECT_EQ(ke_omci_tapi_voip_sipauth_get(nullptr), 1u);
    EXPECT_EQ(ke_omci_tapi_voip_gain_set(nullptr), 1u);
    EXPECT_EQ(ke_omci_tapi_voip_gain_get(nullptr), 1u);
    EXPECT_EQ(ke_omci_tapi_voip_hookstatus_get(nullptr), 1u);
    EXPECT_EQ(ke_omci_tapi_voip_type_set(nullptr), 1u);
    EXPECT_EQ(ke_omci_tapi_voip_type_get(nullptr), 1u);
    EXPECT_EQ(ke_omci_tapi_voip_adminstate_set(nullptr), 1u);
    EXPECT_EQ(ke_omci_tapi_voip_adminstate_get(nullptr), 1u);
    EXPECT_TRUE(kestub::cm_calls().empty());
}

// Setters of different fields of one record each send only their own
// bits; the store keeps every field last written.
TEST_F(VoipLineSettings, GlobalSettingsRoundTripTogether)
{
    kestub::cm_preload(kGlobal, Image(kGlobalSize).u32(4248, 1).bytes().data(), kGlobalSize);
    uint32_t offhook = 45, type = 2;
    ASSERT_EQ(ke_omci_tapi_voip_offhooktime_set(&offhook), 0u);
    ASSERT_EQ(ke_omci_tapi_voip_type_set(&type), 0u);
    offhook = 46;
    ASSERT_EQ(ke_omci_tapi_voip_offhooktime_set(&offhook), 0u);
    uint32_t out = 0;
    EXPECT_EQ(ke_omci_tapi_voip_offhooktime_get(&out), 0u);
    EXPECT_EQ(out, 46u);
    EXPECT_EQ(ke_omci_tapi_voip_type_get(&out), 0u);
    EXPECT_EQ(out, 2u);
    uint8_t emergency = 0;
    EXPECT_EQ(ke_omci_tapi_voip_emergency_get(&emergency), 0u);
    EXPECT_EQ(emergency, 1u);
}

TEST_F(VoipLineSettings, SipUserOfEachLineRoundTripsWithItsAdministrativeState)
{
    st_voip_sipauth three = auth(3, 'A'), four = auth(4, 'a');
    st_voip_admin lock = {3, 1};
    ASSERT_EQ(ke_omci_tapi_voip_sipauth_set(&three), 0u);
    ASSERT_EQ(ke_omci_tapi_voip_adminstate_set(&lock), 0u);
    ASSERT_EQ(ke_omci_tapi_voip_sipauth_set(&four), 0u);

    st_voip_sipauth out = {};
    out.ui_line = 3;
    EXPECT_EQ(ke_omci_tapi_voip_sipauth_get(&out), 0u);
    EXPECT_EQ(std::memcmp(&out, &three, sizeof out), 0);
    out.ui_line = 4;
    EXPECT_EQ(ke_omci_tapi_voip_sipauth_get(&out), 0u);
    EXPECT_EQ(std::memcmp(&out, &four, sizeof out), 0);
    st_voip_admin state = {3, 9};
    EXPECT_EQ(ke_omci_tapi_voip_adminstate_get(&state), 0u);
    EXPECT_EQ(state.ui_admin_state, 1u);
    // The strings written after the state did not unlock the line.
    ASSERT_EQ(ke_omci_tapi_voip_sipauth_set(&three), 0u);
    EXPECT_EQ(ke_omci_tapi_voip_adminstate_get(&state), 0u);
    EXPECT_EQ(state.ui_admin_state, 1u);
}

TEST_F(VoipLineSettings, GainsAndTimersRoundTripPerLine)
{
    st_voip_gain one = {1, 0xFFFFFFF6, 20}, two = {2, 3, 4};
    ASSERT_EQ(ke_omci_tapi_voip_gain_set(&one), 0u);
    ASSERT_EQ(ke_omci_tapi_voip_gain_set(&two), 0u);
    st_voip_gain out = {1, 0, 0};
    EXPECT_EQ(ke_omci_tapi_voip_gain_get(&out), 0u);
    EXPECT_EQ(out.ui_rx_gain, 0xFFFFFFF6u);
    EXPECT_EQ(out.ui_tx_gain, 20u);
    out = {2, 0, 0};
    EXPECT_EQ(ke_omci_tapi_voip_gain_get(&out), 0u);
    EXPECT_EQ(out.ui_rx_gain, 3u);

    st_voip_regtime regtime = {6, 3600, 300};
    st_voip_udptcp udptcp = {6, 5060, 17, 0xB8};
    st_voip_silence silence = {6, 1};
    ASSERT_EQ(ke_omci_tapi_voip_regtime_set(&regtime), 0u);
    ASSERT_EQ(ke_omci_tapi_voip_udptcp_set(&udptcp), 0u);
    ASSERT_EQ(ke_omci_tapi_voip_silence_set(&silence), 0u);
    st_voip_regtime back = {6, 0, 0};
    EXPECT_EQ(ke_omci_tapi_voip_regtime_get(&back), 0u);
    EXPECT_EQ(back.us_reg_exp_time, 3600u);
    EXPECT_EQ(back.us_rereg_head_start_time, 300u);
    Bytes line = ketest::stored(kProfile);
    EXPECT_EQ(ketest::u32_at(line, 9), 5060u);
    EXPECT_EQ(ketest::u8_at(line, 7), 0xB8u);
    EXPECT_EQ(ketest::u8_at(line, 39), 1u);
    EXPECT_EQ(ketest::u32_at(line, 4167), 0x4074u);
}

}  // namespace
