// Line status and performance counters: the state codes reported for the
// stored ones, the three reads of the line status and what each failure
// leaves, the counters word by word, and the emergency state.
#include <functional>

#include "ke_omci_tapi/voip.h"
#include "voip_test.h"

namespace {

using kestub::CmOp;
using ketest::Image;
using ketest::Info;

constexpr uint32_t kRtpStats = 669, kRtpStatsSize = 60;
constexpr uint32_t kRegInfo = 467, kRegInfoSize = 12;
constexpr uint32_t kCallStats = 671, kCallStatsSize = 24;
constexpr uint32_t kSipStats = 673, kSipStatsSize = 84;
constexpr uint32_t kGlobal = 468, kGlobalSize = 4460;

using Ops = std::vector<std::pair<CmOp, uint32_t>>;

class VoipLineStatus : public ketest::StubTest {};

void preload(uint32_t table, const Image &rec)
{
    kestub::cm_preload(table, rec.bytes().data(), rec.bytes().size());
}

// A line's three status records: codec used, registration, call stats.
void line(uint8_t id, uint32_t codec_used, uint8_t reg, uint8_t hook, uint8_t reason)
{
    preload(kRtpStats, Image(kRtpStatsSize).u8(4, id).u32(52, codec_used));
    preload(kRegInfo, Image(kRegInfoSize).u8(4, id).u8(5, reg).u8(6, hook).u8(7, reason));
    preload(kCallStats, Image(kCallStatsSize).u8(4, id).u32(8, 0xC0 + id).u32(12, 0xD0 + id));
}

TEST_F(VoipLineStatus, RegistrationAndHookStateBecomeTheServerStatus)
{
    struct Case {
        uint8_t reg, reason, hook;
        uint32_t status;
    } cases[] = {
        {0, 0, 0, 13}, {0, 9, 0, 13}, {1, 0, 0, 15}, {3, 0, 0, 1},  {3, 0, 1, 2}, {4, 7, 0, 6},
        {4, 8, 0, 7},  {4, 9, 0, 5},  {4, 0, 0, 5},  {2, 0, 0, 0},  {5, 7, 0, 0}, {255, 8, 0, 0},
        {0, 0, 1, 2},  {4, 8, 1, 2},  {2, 0, 1, 2},  {1, 0, 2, 15},
    };
    for (const Case &c : cases) {
        kestub::reset();
        line(1, 1, c.reg, c.hook, c.reason);
        st_voip_line_status out = {1, 0, 99, 0, 0};
        EXPECT_EQ(ke_omci_tapi_voip_line_status_get(&out), 0u);
        EXPECT_EQ(out.ui_server_status, c.status)
            << "reg " << int(c.reg) << " reason " << int(c.reason) << " hook " << int(c.hook);
    }
}

TEST_F(VoipLineStatus, CodecInUseIsReportedAsItsPayloadType)
{
    struct Case {
        uint32_t stored, payload;
    } cases[] = {{1, 0}, {2, 18}, {3, 4}, {4, 4},     {7, 9},  {0, 8},
                 {5, 8}, {6, 8},  {8, 8}, {0x101, 8}, {18, 8}, {0xFFFFFFFF, 8}};
    for (const Case &c : cases) {
        kestub::reset();
        line(2, c.stored, 3, 0, 0);
        st_voip_line_status out = {2, 0xEE, 0, 0, 0};
        EXPECT_EQ(ke_omci_tapi_voip_line_status_get(&out), 0u);
        EXPECT_EQ(out.ui_codec_used, c.payload) << c.stored;
    }
}

TEST_F(VoipLineStatus, LineStatusReadsItsThreeTablesForTheLine)
{
    line(1, 7, 4, 0, 8);
    line(2, 2, 3, 0, 0);
    st_voip_line_status out = {0x102, 0, 0, 0, 0};
    EXPECT_EQ(ke_omci_tapi_voip_line_status_get(&out), 0u);
    EXPECT_EQ(out.ui_line, 0x102u);
    EXPECT_EQ(out.ui_codec_used, 18u);
    EXPECT_EQ(out.ui_server_status, 1u);
    EXPECT_EQ(out.ui_call_stats[0], 0xC2u);
    EXPECT_EQ(out.ui_call_stats[1], 0xD2u);
    EXPECT_EQ(ketest::cm_ops(),
              (Ops{{CmOp::Get, kRtpStats}, {CmOp::Get, kRegInfo}, {CmOp::Get, kCallStats}}));
    for (const auto &c : kestub::cm_calls())
        EXPECT_EQ(c.size, c.table == kRtpStats  ? kRtpStatsSize
                          : c.table == kRegInfo ? kRegInfoSize
                                                : kCallStatsSize);
}

TEST_F(VoipLineStatus, AFailedReadIsReportedTwiceAndLeavesEarlierOutputs)
{
    struct Case {
        uint32_t table;
        const char *proc;
        uint32_t codec, status, stat0;  // outputs afterwards
    } cases[] = {
        {kRtpStats, "ke_omci_tapi_voip_line_rtp_stats_get", 0xA1, 0xA2, 0xA3},
        {kRegInfo, "ke_omci_tapi_voip_user_reg_info_get", 9, 0xA2, 0xA3},
        {kCallStats, "ke_omci_tapi_voip_line_call_stats_get", 9, 2, 0xA3},
    };
    for (const Case &c : cases) {
        for (bool gate : {true, false}) {
            kestub::reset();
            line(3, 7, 1, 1, 0);
            kestub::cm_fail(c.table, 0x72300030);
            kestub::log_set(gate);
            st_voip_line_status out = {3, 0xA1, 0xA2, 0xA3, 0xA4};
            uint32_t ret = 0;
            std::string text =
                ketest::printed([&] { ret = ke_omci_tapi_voip_line_status_get(&out); });
            EXPECT_EQ(ret, 1u) << c.proc;
            if (gate)
                EXPECT_EQ(ketest::infos(text),
                          (std::vector<Info>{{c.proc, 0x72300030},
                                             {"ke_omci_tapi_voip_line_status_get", 1}}));
            else
                EXPECT_EQ(text, "");
            EXPECT_EQ(out.ui_codec_used, c.codec) << c.proc;
            EXPECT_EQ(out.ui_server_status, c.status) << c.proc;
            EXPECT_EQ(out.ui_call_stats[0], c.stat0) << c.proc;
            EXPECT_EQ(out.ui_call_stats[1], 0xA4u) << c.proc;
        }
    }
}

// Counter k of a stored record holds 0x100 * table-word index + line, so a
// word copied from the wrong place shows.
Image counters(size_t size, uint8_t id)
{
    Image rec(size);
    rec.u8(4, id);
    for (size_t off = 8; off + 4 <= size - 4; off += 4)
        rec.u32(off, static_cast<uint32_t>(0x100 * (off / 4) + id));
    return rec;
}

std::vector<uint32_t> words_of(const void *rec, size_t size)
{
    std::vector<uint32_t> w(size / 4);
    std::memcpy(w.data(), rec, size);
    return w;
}

TEST_F(VoipLineStatus, CountersAreCopiedWordByWordFromTheLinesRecord)
{
    preload(kRtpStats, counters(kRtpStatsSize, 1));
    preload(kRtpStats, counters(kRtpStatsSize, 5));
    preload(kSipStats, counters(kSipStatsSize, 1));
    preload(kSipStats, counters(kSipStatsSize, 5));
    auto w = [](uint32_t table_word) { return 0x100 * table_word + 5; };

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

    EXPECT_EQ(ketest::cm_ops(), (Ops{{CmOp::Get, kRtpStats},
                                     {CmOp::Get, kRtpStats},
                                     {CmOp::Get, kSipStats},
                                     {CmOp::Get, kSipStats}}));
}

TEST_F(VoipLineStatus, FailedCounterReadsLeaveTheCallersRecord)
{
    st_voip_rtp_pm rtp = {1, 2, 3, 4, 5, 6, 7, 8};
    st_voip_callctrl_pm call = {1, 2, 3, 4, 5, 6};
    st_voip_sip_agent_pm agent = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14};
    st_voip_sip_callinit_pm init = {1, 2, 3, 4, 5, 6};
    uint8_t emergency = 9;
    struct Case {
        const char *name;
        uint32_t table;
        std::function<uint32_t()> call;
        const void *rec;
        size_t size;
    } cases[] = {
        {"ke_omci_tapi_voip_rtppm_get", kRtpStats,
         [&] { return ke_omci_tapi_voip_rtppm_get(&rtp); }, &rtp, sizeof rtp},
        {"ke_omci_tapi_voip_callctrlpm_get", kRtpStats,
         [&] { return ke_omci_tapi_voip_callctrlpm_get(&call); }, &call, sizeof call},
        {"ke_omci_tapi_voip_sip_agentpm_get", kSipStats,
         [&] { return ke_omci_tapi_voip_sip_agentpm_get(&agent); }, &agent, sizeof agent},
        {"ke_omci_tapi_voip_sip_callinitpm_get", kSipStats,
         [&] { return ke_omci_tapi_voip_sip_callinitpm_get(&init); }, &init, sizeof init},
        {"ke_omci_tapi_voip_emergency_get", kGlobal,
         [&] { return ke_omci_tapi_voip_emergency_get(&emergency); }, &emergency, 1},
    };
    for (const Case &c : cases) {
        kestub::reset();
        preload(kRtpStats, counters(kRtpStatsSize, 1));
        preload(kSipStats, counters(kSipStatsSize, 1));
        preload(kGlobal, Image(kGlobalSize).u32(4248, 1));
        kestub::cm_fail(c.table, 0x72300031);
        kestub::log_set(true);
        std::vector<uint8_t> before(static_cast<const uint8_t *>(c.rec),
                                    static_cast<const uint8_t *>(c.rec) + c.size);
        uint32_t ret = 0;
        std::string text = ketest::printed([&] { ret = c.call(); });
        EXPECT_EQ(ret, 1u) << c.name;
        EXPECT_EQ(ketest::infos(text), (std::vector<Info>{{c.name, 0x72300031}}));
        EXPECT_EQ(std::memcmp(before.data(), c.rec, c.size), 0) << c.name;
    }
}

TEST_F(VoipLineStatus, OnlyEmergencyStateOneReportsAnEmergency)
{
    struct Case {
        uint32_t stored;
        uint8_t reported;
    } cases[] = {{0, 0}, {1, 1}, {2, 0}, {0x101, 0}, {0xFFFFFFFF, 0}};
    for (const Case &c : cases) {
        kestub::reset();
        preload(kGlobal, Image(kGlobalSize).u32(4248, c.stored).u8(4, 1).u8(8, 1));
        uint8_t out = 0xEE;
        EXPECT_EQ(ke_omci_tapi_voip_emergency_get(&out), 0u);
        EXPECT_EQ(out, c.reported) << c.stored;
    }
}

TEST_F(VoipLineStatus, NullArgumentsAreRefused)
{
    EXPECT_EQ(ke_omci_tapi_voip_line_status_get(nullptr), 1u);
    EXPECT_EQ(ke_omci_tapi_voip_rtppm_get(nullptr), 1u);
    EXPECT_EQ(ke_omci_tapi_voip_callctrlpm_get(nullptr), 1u);
    EXPECT_EQ(ke_omci_tapi_voip_sip_agentpm_get(nullptr), 1u);
    EXPECT_EQ(ke_omci_tapi_voip_sip_callinitpm_get(nullptr), 1u);
    EXPECT_EQ(ke_omci_tapi_voip_emergency_get(nullptr), 1u);
    EXPECT_TRUE(kestub::cm_calls().empty());
}

}  // namespace
