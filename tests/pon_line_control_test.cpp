// Line control, alarms and the optical module: records and status rules,
// the operation-state guard and the optical information's own failures.
#include "call_cases.h"
#include "ke_omci_tapi/pon.h"

namespace {

using ketest::call_names;
using ketest::counting;
using ketest::printed;
using ketest::StatusRule;
using ketest::words;
using ketest::zeros;

class LineControl : public ketest::StubTest {};

constexpr const char *kRegState = "ke_ke_sml_gpon_regstate_get_call";
constexpr const char *kOpticalSta = "ke_ke_sml_optical_sta_get_call";
constexpr const char *kOpticalInfo = "ke_ke_sml_optical_info_get_call";

TEST_F(LineControl, EachFunctionSendsItsRecordAndMapsItsStatus)
{
    static uint32_t mode;
    static std::vector<uint8_t> start;
    static uint8_t alarm[KE_ALARM_LEN];
    ketest::check_call_cases({
        {"ke_omci_tapi_gpon_set_mode", "ke_ke_sml_gpon_mode_set_call",
         [] { mode = 0x0203; return ke_omci_tapi_gpon_set_mode(&mode); }, words({0x0203}),
         StatusRule::PassThrough},
        {"ke_omci_tapi_pon_start", "ke_ke_sml_gpon_pon_start_call",
         [] { start = counting(KE_PON_START_LEN); return ke_omci_tapi_pon_start(start.data()); },
         counting(KE_PON_START_LEN), StatusRule::PassThrough},
        {"ke_omci_tapi_pon_stop", "ke_ke_sml_gpon_pon_stop_call",
         [] { return ke_omci_tapi_pon_stop(); }, {}, StatusRule::PassThrough, true},
        {"ke_omci_tapi_gpon_alarm_get", "ke_ke_sml_gpon_alarm_get_call",
         [] { return ke_omci_tapi_gpon_alarm_get(alarm); }, zeros(KE_ALARM_LEN),
         StatusRule::Plain},
    });
}

TEST_F(LineControl, InOutBuffersHoldTheReply)
{
    kestub::ipc_script_reply("ke_ke_sml_gpon_mode_set_call", uint32_t{0x0A0B0C0D});
    uint32_t mode = 1;
    EXPECT_EQ(ke_omci_tapi_gpon_set_mode(&mode), 0u);
    EXPECT_EQ(mode, 0x0A0B0C0Du);

    std::vector<uint8_t> reply = counting(KE_PON_START_LEN, 0x40);
    kestub::ipc_script("ke_ke_sml_gpon_pon_start_call", 0, reply.data(), reply.size());
    std::vector<uint8_t> param(KE_PON_START_LEN + 4, 0x11);
    EXPECT_EQ(ke_omci_tapi_pon_start(param.data()), 0u);
    std::vector<uint8_t> expected = reply;
    expected.resize(KE_PON_START_LEN + 4, 0x11);
    EXPECT_EQ(param, expected);
}

TEST_F(LineControl, AlarmRecordIsDeliveredWholeOnlyOnSuccess)
{
    std::vector<uint8_t> reply = counting(KE_ALARM_LEN);
    kestub::ipc_script("ke_ke_sml_gpon_alarm_get_call", 0, reply.data(), reply.size());
    std::vector<uint8_t> alarm(KE_ALARM_LEN, 0xCC);
    EXPECT_EQ(ke_omci_tapi_gpon_alarm_get(alarm.data()), 0u);
    EXPECT_EQ(alarm, reply);

    kestub::ipc_script("ke_ke_sml_gpon_alarm_get_call", 9);
    std::vector<uint8_t> untouched(KE_ALARM_LEN, 0xCC);
    EXPECT_EQ(ke_omci_tapi_gpon_alarm_get(untouched.data()), 1u);
    EXPECT_EQ(untouched, std::vector<uint8_t>(KE_ALARM_LEN, 0xCC));
}

// The optical status read: which calls it makes, what it returns and the
// words the caller ends with, for each registration state and force flag.
TEST_F(LineControl, OpticalStatusIsReadOnlyInOperationStateUnlessForced)
{
    const st_optical_sta reply = {{11, 22, 33, 44, 55}};
    const std::vector<uint32_t> untouched = {7, 7, 7, 7, 7};
    const std::vector<uint32_t> delivered = {11, 22, 33, 44, 55};
    struct Case {
        uint32_t force;
        uint32_t state;  // the registration state the service reports
        std::vector<std::string> calls;
        uint32_t ret;
        std::vector<uint32_t> words;
    } cases[] = {
        {0, 5, {kRegState, kOpticalSta}, 0, delivered},
        {0, 4, {kRegState}, KE_ERR_NOT_OPERATING, untouched},
        {0, 0, {kRegState}, KE_ERR_NOT_OPERATING, untouched},
        {0, 6, {kRegState}, KE_ERR_NOT_OPERATING, untouched},
        {1, 4, {kOpticalSta}, 0, delivered},
        {0xFFFFFFFF, 1, {kOpticalSta}, 0, delivered},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE("force " + std::to_string(c.force) + " state " + std::to_string(c.state));
        kestub::reset();
        kestub::log_set(true);
        kestub::ipc_script_reply(kRegState, c.state);
        kestub::ipc_script_reply(kOpticalSta, reply);
        std::vector<uint32_t> out = untouched;
        uint32_t ret = 0;
        std::string text = printed([&] { ret = ke_omci_tapi_optical_attr_get(c.force, out.data()); });
        EXPECT_EQ(ret, c.ret);
        EXPECT_EQ(out, c.words);
        EXPECT_EQ(call_names(), c.calls);
        EXPECT_EQ(text, "");
        for (const auto &call : kestub::ipc_calls())
            EXPECT_EQ(call.request, zeros(call.name == kRegState ? 4 : 20)) << call.name;
    }
}

TEST_F(LineControl, OpticalStatusIgnoresTheStatusOfBothReads)
{
    kestub::log_set(true);
    // A failed registration read counts as state 0, even if the reply said 5.
    uint32_t state = REGSTATE_O5;
    kestub::ipc_script(kRegState, 0x1234, &state, sizeof state);
    std::vector<uint32_t> out = {7, 7, 7, 7, 7};
    std::string text = printed([&] {
        EXPECT_EQ(ke_omci_tapi_optical_attr_get(0, out.data()), KE_ERR_NOT_OPERATING);
    });
    EXPECT_EQ(text, "");
    EXPECT_EQ(out, std::vector<uint32_t>(5, 7));

    // A failed status read delivers five zero words and succeeds.
    kestub::ipc_script_reply(kRegState, uint32_t{REGSTATE_O5});
    kestub::ipc_script(kOpticalSta, 0x1234);
    text = printed([&] { EXPECT_EQ(ke_omci_tapi_optical_attr_get(0, out.data()), 0u); });
    EXPECT_EQ(text, "");
    EXPECT_EQ(out, std::vector<uint32_t>(5, 0));
}

std::string fail_line(int line, long ret)
{
    return "ke_omci_tapi_optical_info_get[" + std::to_string(line) +
           "] fail, ret=" + std::to_string(ret) + "\n";
}

int line_of(const std::string &text)
{
    return std::atoi(text.c_str() + std::strlen("ke_omci_tapi_optical_info_get["));
}

TEST_F(LineControl, OpticalInfoFailureReturnsTheStatusWithItsOwnUngatedLine)
{
    kestub::log_set(false);
    std::vector<uint8_t> info(KE_OPTICAL_INFO_LEN, 0x3C);
    for (uint32_t status : {7u, 0x80000001u}) {
        kestub::ipc_script(kOpticalInfo, status);
        uint32_t ret = 0;
        std::string out = printed([&] { ret = ke_omci_tapi_optical_info_get(info.data()); });
        EXPECT_EQ(ret, status);
        EXPECT_EQ(out, fail_line(line_of(out), static_cast<int32_t>(status)));
        EXPECT_GT(line_of(out), 0);
        EXPECT_EQ(info, std::vector<uint8_t>(KE_OPTICAL_INFO_LEN, 0x3C));
    }
    EXPECT_EQ(kestub::log_queries(), 0u);
}

TEST_F(LineControl, OpticalInfoIsCopiedOnSuccess)
{
    std::vector<uint8_t> reply = counting(KE_OPTICAL_INFO_LEN);
    kestub::ipc_script(kOpticalInfo, 0, reply.data(), reply.size());
    std::vector<uint8_t> info(KE_OPTICAL_INFO_LEN, 0);
    std::string out = printed([&] { EXPECT_EQ(ke_omci_tapi_optical_info_get(info.data()), 0u); });
    EXPECT_EQ(out, "");
    EXPECT_EQ(info, reply);
    EXPECT_EQ(kestub::ipc_calls()[0].request, zeros(KE_OPTICAL_INFO_LEN));
}

TEST_F(LineControl, OpticalInfoCopyFailureReturnsTheCopysCodeOnItsOwnLine)
{
    kestub::ipc_script(kOpticalInfo, 7);
    std::string call_failed = printed([] { ke_omci_tapi_optical_info_get(nullptr); });

    kestub::ipc_script(kOpticalInfo, 0);
    uint32_t ret = 0;
    std::string out = printed([&] { ret = ke_omci_tapi_optical_info_get(nullptr); });
    EXPECT_EQ(ret, static_cast<uint32_t>(ketest::kEsNullPtr));
    EXPECT_EQ(out, fail_line(line_of(out), ketest::kEsNullPtr));
    EXPECT_NE(line_of(out), line_of(call_failed));
}

TEST_F(LineControl, PowerManagementEntryPointsDoNothing)
{
    EXPECT_EQ(ke_omci_tapi_pmu_attr_set(), 0u);
    EXPECT_EQ(ke_omci_tapi_pmu_attr_get(), 0u);
    EXPECT_TRUE(kestub::ipc_calls().empty());
}

}  // namespace
