// What the VoIP getters report for what the voice application stored: the
// code mappings back, the line status with its three reads, the counters
// word by word.
#include <functional>

#include "ke_omci_tapi/voip.h"
#include "voip_test.h"

namespace {

using kestub::CmOp;
using ketest::Bytes;
using ketest::filled;
using ketest::Image;
using ketest::preload;

class VoipReadback : public ketest::StubTest {};

using Getter = std::function<uint32_t(uint32_t *)>;

// A getter of a per-line record: reads line 2 and reports one field.
template <class Rec, class Out>
Getter line_get(uint32_t (*fn)(Rec *), Out Rec::*out)
{
    return [fn, out](uint32_t *v) {
        Rec r = {};
        r.ui_line = 2;
        uint32_t status = fn(&r);
        *v = r.*out;
        return status;
    };
}

TEST_F(VoipReadback, GettersMapTheStoredValues)
{
    Getter type = ke_omci_tapi_voip_type_get, offhook = ke_omci_tapi_voip_offhooktime_get;
    Getter admin = line_get(ke_omci_tapi_voip_adminstate_get, &st_voip_admin::ui_admin_state);
    Getter hook = line_get(ke_omci_tapi_voip_hookstatus_get, &st_voip_hook::ui_hook_state);
    Getter expiry = line_get(ke_omci_tapi_voip_regtime_get, &st_voip_regtime::us_reg_exp_time);
    Getter head =
        line_get(ke_omci_tapi_voip_regtime_get, &st_voip_regtime::us_rereg_head_start_time);
    Getter rx = line_get(ke_omci_tapi_voip_gain_get, &st_voip_gain::ui_rx_gain);
    Getter tx = line_get(ke_omci_tapi_voip_gain_get, &st_voip_gain::ui_tx_gain);
    Getter emergency = [](uint32_t *v) {
        uint8_t b = 0xEE;
        uint32_t status = ke_omci_tapi_voip_emergency_get(&b);
        *v = b;
        return status;
    };
    struct Case { uint32_t table; Bytes stored; Getter get; uint32_t expected; } cases[] = {
        // clang-format off
        {468, Image(4460).u8(4, 0), type, 1},          {468, Image(4460).u8(4, 2), type, 2},
        {468, Image(4460).u8(4, 1), type, 0},          {468, Image(4460).u8(4, 255), type, 0},
        {468, Image(4460).u8(8, 0xAB), offhook, 0xAB}, {471, Image(604).u8(4, 2).u8(5, 0), admin, 1},
        {471, Image(604).u8(4, 2).u8(5, 1), admin, 0}, {471, Image(604).u8(4, 2).u8(5, 2), admin, 0},
        {467, Image(12).u8(4, 2).u8(6, 1), hook, 1},
        {473, Image(4171).u8(4, 2).u32(13, 70000), expiry, 4464},
        {473, Image(4171).u8(4, 2).u32(17, 0x12345), head, 0x2345},
        {474, Image(32).u8(4, 2).u32(8, 0xFFFFFFF6), rx, 0xFFFFFFF6},
        {474, Image(32).u8(4, 2).u32(12, 20), tx, 20},
        {468, Image(4460).u32(4248, 1), emergency, 1}, {468, Image(4460).u32(4248, 2), emergency, 0},
        {468, Image(4460).u32(4248, 0x101), emergency, 0},
        // clang-format on
    };
    for (const Case &c : cases) {
        kestub::reset();
        // Another line first; in a global table the record replaces it.
        preload(c.table, Image(c.stored.size()).u8(4, 3).u8(5, 1).u8(6, 0).u32(8, 1));
        preload(c.table, c.stored);
        uint32_t value = 0xDEAD;
        EXPECT_EQ(c.get(&value), 0u) << c.table;
        EXPECT_EQ(value, c.expected) << c.table << " case " << (&c - cases);
    }
}

// The three status records of a line: codec in use, registration, calls.
void line(uint8_t id, uint32_t codec_used, uint8_t reg, uint8_t hook, uint8_t reason)
{
    preload(669, Image(60).u8(4, id).u32(52, codec_used));
    preload(467, Image(12).u8(4, id).u8(5, reg).u8(6, hook).u8(7, reason));
    preload(671, Image(24).u8(4, id).u32(8, 0xC0 + id).u32(12, 0xD0 + id));
}

TEST_F(VoipReadback, LineStatusReportsCodecServerStatusAndCallStats)
{
    struct Case {
        uint32_t codec_used;
        uint8_t reg, reason, hook;
        uint32_t codec, status;
    } cases[] = {
        {1, 0, 9, 0, 0, 13}, {2, 1, 0, 0, 18, 15}, {3, 3, 0, 0, 4, 1},     {4, 3, 0, 1, 4, 2},
        {7, 4, 7, 0, 9, 6},  {0, 4, 8, 0, 8, 7},   {5, 4, 9, 0, 8, 5},     {6, 4, 0, 0, 8, 5},
        {8, 2, 0, 0, 8, 0},  {18, 5, 7, 0, 8, 0},  {0x101, 0, 0, 1, 8, 2}, {1, 4, 8, 1, 0, 2},
        {1, 1, 0, 2, 0, 15},
    };
    for (const Case &c : cases) {
        kestub::reset();
        line(1, 7, 3, 0, 0);
        line(2, c.codec_used, c.reg, c.hook, c.reason);
        st_voip_line_status out = {0x102, 0xEE, 0xEE, 0, 0};
        EXPECT_EQ(ke_omci_tapi_voip_line_status_get(&out), 0u);
        EXPECT_EQ(out.ui_codec_used, c.codec) << "codec used " << c.codec_used;
        EXPECT_EQ(out.ui_server_status, c.status)
            << "reg " << int(c.reg) << " reason " << int(c.reason) << " hook " << int(c.hook);
        EXPECT_EQ(out.ui_call_stats[0], 0xC2u);
        EXPECT_EQ(out.ui_call_stats[1], 0xD2u);
    }
    using Ops = std::vector<std::pair<CmOp, uint32_t>>;
    EXPECT_EQ(ketest::cm_ops(), (Ops{{CmOp::Get, 669}, {CmOp::Get, 467}, {CmOp::Get, 671}}));
}

// A failed read is reported under its procedure's name (the fault
// sweep's), then as 1 under the function's; the outputs of the earlier
// reads stay written.
TEST_F(VoipReadback, LineStatusFailureLeavesTheEarlierOutputs)
{
    line(3, 7, 1, 1, 0);
    kestub::cm_fail(671, 0x72300030);
    kestub::log_set(true);
    st_voip_line_status out = {3, 0xA1, 0xA2, 0xA3, 0xA4};
    uint32_t ret = 0;
    std::string text = ketest::printed([&] { ret = ke_omci_tapi_voip_line_status_get(&out); });
    EXPECT_EQ(ret, 1u);
    EXPECT_EQ(ketest::infos(text), (std::vector<std::string>{
                                       "ke_omci_tapi_voip_line_call_stats_get/0x72300030",
                                       "ke_omci_tapi_voip_line_status_get/0x1"}));
    EXPECT_EQ(ketest::bytes_of(out), ketest::words({3, 9, 2, 0xA3, 0xA4}));
}

std::vector<uint32_t> words_of(const void *rec, size_t size)
{
    std::vector<uint32_t> w(size / 4);
    std::memcpy(w.data(), rec, size);
    return w;
}

// Stored word k of line 5 holds 0x100 * k + 5, so a misplaced copy shows.
TEST_F(VoipReadback, CountersAreCopiedWordByWordFromTheLinesRecord)
{
    for (uint32_t table : {669u, 673u}) {
        for (uint8_t id : {1, 5}) {
            Image rec(table == 669 ? 60 : 84);
            rec.u8(4, id);
            for (uint32_t k = 2; k < (table == 669 ? 14u : 20u); ++k)
                rec.u32(4 * k, 0x100 * k + id);
            preload(table, rec);
        }
    }
    auto w = [](uint32_t k) { return 0x100 * k + 5; };
    st_voip_rtp_pm rtp = {5, 0x77, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(ke_omci_tapi_voip_rtppm_get(&rtp), 0u);
    EXPECT_EQ(words_of(&rtp, sizeof rtp),
              (std::vector<uint32_t>{5, 0x77, w(2), w(3), w(4), w(5), w(6), w(7)}));
    st_voip_callctrl_pm call = {5, 0, 0, 0, 0, 0};
    EXPECT_EQ(ke_omci_tapi_voip_callctrlpm_get(&call), 0u);
    EXPECT_EQ(words_of(&call, sizeof call),
              (std::vector<uint32_t>{5, w(8), w(9), w(10), w(11), w(12)}));
    st_voip_sip_agent_pm agent = {};
    agent.ui_line = 5;
    EXPECT_EQ(ke_omci_tapi_voip_sip_agentpm_get(&agent), 0u);
    std::vector<uint32_t> expected = {5};
    for (uint32_t k = 2; k <= 14; ++k)
        expected.push_back(w(k));
    EXPECT_EQ(words_of(&agent, sizeof agent), expected);
    st_voip_sip_callinit_pm init = {5, 0, 0, 0, 0, 0};
    EXPECT_EQ(ke_omci_tapi_voip_sip_callinitpm_get(&init), 0u);
    EXPECT_EQ(words_of(&init, sizeof init),
              (std::vector<uint32_t>{5, w(15), w(16), w(17), w(18), w(19)}));
}

// The DSCP mark comes from the global table, read first and delivered even
// when the line's read then fails.
TEST_F(VoipReadback, RtpGetTakesTheGlobalMarkBeforeReadingTheLine)
{
    preload(476, Image(100).u8(5, 10));
    preload(473, Image(4171).u8(4, 2).u8(8, 46).u32(21, 50000).u32(25, 50100));
    st_voip_rtp out = {2, 0, 0, 0};
    EXPECT_EQ(ke_omci_tapi_voip_rtp_get(&out), 0u);
    EXPECT_EQ(words_of(&out, sizeof out), (std::vector<uint32_t>{2, 50000, 50100, 10}));
    out = {7, 1, 2, 3};  // line 7 has no profile
    EXPECT_EQ(ke_omci_tapi_voip_rtp_get(&out), 1u);
    EXPECT_EQ(words_of(&out, sizeof out), (std::vector<uint32_t>{7, 1, 2, 10}));
    using Ops = std::vector<std::pair<CmOp, uint32_t>>;
    EXPECT_EQ(ketest::cm_ops(),
              (Ops{{CmOp::Get, 476}, {CmOp::Get, 473}, {CmOp::Get, 476}, {CmOp::Get, 473}}));
}

// The three texts fill their 128 bytes, without a terminator.
TEST_F(VoipReadback, SipAuthReadsItsThreeTexts)
{
    preload(471, Image(604).u8(4, 1).text(8, filled('x', 128)));
    preload(471, Image(604).u8(4, 3).text(8, filled('u', 128)).text(136, filled('p', 128))
                     .text(264, filled('r', 128)));
    st_voip_sipauth auth = {3, {}, {}, {}};
    EXPECT_EQ(ke_omci_tapi_voip_sipauth_get(&auth), 0u);
    EXPECT_EQ(std::string(reinterpret_cast<char *>(auth.auc_user_name), 128), filled('u', 128));
    EXPECT_EQ(std::string(reinterpret_cast<char *>(auth.auc_password), 128), filled('p', 128));
    EXPECT_EQ(std::string(reinterpret_cast<char *>(auth.auc_realm), 128), filled('r', 128));
    EXPECT_EQ(auth.ui_line, 3u);
}

}  // namespace
