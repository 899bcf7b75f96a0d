// RTP, silence suppression, fax and digit map: the records of tables 476,
// 473 and 477, the order of the two RTP writes and reads, and what a
// failure half-way leaves behind.
#include <functional>

#include "ke_omci_tapi/voip.h"
#include "voip_test.h"

namespace {

using kestub::CmOp;
using ketest::Bytes;
using ketest::Image;
using ketest::Info;

constexpr uint32_t kRtp = 476, kRtpSize = 100;
constexpr uint32_t kProfile = 473, kProfileSize = 4171;
constexpr uint32_t kFax = 477, kFaxSize = 40;

using Ops = std::vector<std::pair<CmOp, uint32_t>>;

class VoipMedia : public ketest::StubTest {};

TEST_F(VoipMedia, RtpSetWritesTheGlobalMarkThenTheLinesRangeAndMark)
{
    struct Case {
        st_voip_rtp req;
        uint8_t dscp;
    } cases[] = {{{2, 50000, 50100, 46}, 46}, {{0x1FF, 70000, 10, 0x12E}, 0x2E}};
    for (const Case &c : cases) {
        kestub::reset();
        EXPECT_EQ(ke_omci_tapi_voip_rtp_set(&c.req), 0u);
        auto sets = ketest::cm_sets();
        ASSERT_EQ(sets.size(), 2u);
        EXPECT_EQ(sets[0].first, kRtp);
        EXPECT_EQ(sets[0].second, Bytes(Image(kRtpSize).u8(5, c.dscp).u32(96, 0x2)));
        EXPECT_EQ(sets[1].first, kProfile);
        EXPECT_EQ(sets[1].second, Bytes(Image(kProfileSize)
                                            .u8(4, c.req.ui_line & 0xFF)
                                            .u8(8, c.dscp)
                                            .u32(21, c.req.ui_port_min)
                                            .u32(25, c.req.ui_port_max)
                                            .u32(4167, 0x308)));
    }
}

TEST_F(VoipMedia, RtpSetStopsAtAFailedGlobalWriteAndKeepsItAfterAFailedLineWrite)
{
    st_voip_rtp req = {2, 50000, 50100, 46};
    kestub::log_set(true);
    kestub::cm_fail(kRtp, 0x72300020);
    uint32_t ret = 0;
    std::string first = ketest::printed([&] { ret = ke_omci_tapi_voip_rtp_set(&req); });
    EXPECT_EQ(ret, 1u);
    EXPECT_EQ(ketest::cm_ops(), (Ops{{CmOp::Set, kRtp}}));
    EXPECT_TRUE(kestub::cm_entries(kProfile).empty());

    kestub::reset();
    kestub::log_set(true);
    kestub::cm_fail(kProfile, 0x72300021);
    std::string second = ketest::printed([&] { ret = ke_omci_tapi_voip_rtp_set(&req); });
    EXPECT_EQ(ret, 1u);
    EXPECT_EQ(ketest::cm_ops(), (Ops{{CmOp::Set, kRtp}, {CmOp::Set, kProfile}}));
    EXPECT_EQ(ketest::u8_at(ketest::stored(kRtp), 5), 46u);

    std::string f1, f2;
    int l1 = 0, l2 = 0;
    ASSERT_TRUE(ketest::parse_info_line(first, &f1, &l1, 0x72300020)) << first;
    ASSERT_TRUE(ketest::parse_info_line(second, &f2, &l2, 0x72300021)) << second;
    EXPECT_EQ(f1, "ke_omci_tapi_voip_rtp_set");
    EXPECT_EQ(f2, "ke_omci_tapi_voip_rtp_set");
    EXPECT_NE(l1, l2);
}

TEST_F(VoipMedia, RtpGetReadsTheMarkFromTheGlobalTableAndTheRangeFromTheLine)
{
    kestub::cm_preload(kRtp, Image(kRtpSize).u8(5, 10).bytes().data(), kRtpSize);
    Image line = Image(kProfileSize).u8(4, 2).u8(8, 46).u32(21, 50000).u32(25, 50100);
    kestub::cm_preload(kProfile, line.bytes().data(), kProfileSize);
    st_voip_rtp out = {2, 0, 0, 0};
    EXPECT_EQ(ke_omci_tapi_voip_rtp_get(&out), 0u);
    EXPECT_EQ(out.ui_dscp, 10u);
    EXPECT_EQ(out.ui_port_min, 50000u);
    EXPECT_EQ(out.ui_port_max, 50100u);
    EXPECT_EQ(out.ui_line, 2u);
    EXPECT_EQ(ketest::cm_ops(), (Ops{{CmOp::Get, kRtp}, {CmOp::Get, kProfile}}));
}

TEST_F(VoipMedia, RtpRoundTripsThroughTheStoreWithTheLastGlobalMark)
{
    st_voip_rtp two = {2, 50000, 50100, 46}, one = {1, 40000, 40100, 10};
    ASSERT_EQ(ke_omci_tapi_voip_rtp_set(&two), 0u);
    ASSERT_EQ(ke_omci_tapi_voip_rtp_set(&one), 0u);
    st_voip_rtp out = {2, 0, 0, 0};
    EXPECT_EQ(ke_omci_tapi_voip_rtp_get(&out), 0u);
    EXPECT_EQ(out.ui_dscp, 10u);
    EXPECT_EQ(out.ui_port_min, 50000u);
    EXPECT_EQ(out.ui_port_max, 50100u);
}

TEST_F(VoipMedia, RtpGetFailuresLeaveOnlyTheOutputsNotYetReached)
{
    kestub::cm_preload(kRtp, Image(kRtpSize).u8(5, 34).bytes().data(), kRtpSize);
    kestub::log_set(true);
    kestub::cm_fail(kRtp, 0x72300022);
    st_voip_rtp out = {7, 1, 2, 3};
    uint32_t ret = 0;
    std::string text = ketest::printed([&] { ret = ke_omci_tapi_voip_rtp_get(&out); });
    EXPECT_EQ(ret, 1u);
    EXPECT_EQ(ketest::infos(text), (std::vector<Info>{{"ke_omci_tapi_voip_rtp_get", 0x72300022}}));
    EXPECT_EQ(out.ui_dscp, 3u);
    EXPECT_EQ(ketest::cm_ops(), (Ops{{CmOp::Get, kRtp}}));

    // Line 7 has no profile: the mark is already delivered, the range not.
    text = ketest::printed([&] { ret = ke_omci_tapi_voip_rtp_get(&out); });
    EXPECT_EQ(ret, 1u);
    EXPECT_EQ(ketest::infos(text),
              (std::vector<Info>{{"ke_omci_tapi_voip_rtp_get", kestub::kCmNoEntry}}));
    EXPECT_EQ(out.ui_dscp, 34u);
    EXPECT_EQ(out.ui_port_min, 1u);
    EXPECT_EQ(out.ui_port_max, 2u);
}

TEST_F(VoipMedia, SilenceAndFaxSendOneFieldWithItsOwnBit)
{
    st_voip_silence silence = {0x103, 0x101};
    uint32_t fax = 257;
    struct Case {
        const char *name;
        uint32_t table;
        std::function<uint32_t()> call;
        Bytes expected;
    } cases[] = {
        {"ke_omci_tapi_voip_silence_set", kProfile,
         [&] { return ke_omci_tapi_voip_silence_set(&silence); },
         Image(kProfileSize).u8(4, 3).u8(39, 1).u32(4167, 0x4000)},
        {"ke_omci_tapi_voip_faxmode_set", kFax, [&] { return ke_omci_tapi_voip_faxmode_set(&fax); },
         Image(kFaxSize).u8(4, 1).u32(36, 0x1)},
    };
    for (const Case &c : cases) {
        kestub::reset();
        EXPECT_EQ(c.call(), 0u) << c.name;
        auto sets = ketest::cm_sets();
        ASSERT_EQ(sets.size(), 1u) << c.name;
        EXPECT_EQ(sets[0].first, c.table) << c.name;
        EXPECT_EQ(sets[0].second, c.expected) << c.name;

        kestub::reset();
        kestub::log_set(true);
        kestub::cm_fail(c.table, 0x72300023);
        uint32_t ret = 0;
        std::string out = ketest::printed([&] { ret = c.call(); });
        EXPECT_EQ(ret, 1u) << c.name;
        EXPECT_EQ(ketest::infos(out), (std::vector<Info>{{c.name, 0x72300023}}));
    }
}

TEST_F(VoipMedia, DigitMapIsAcceptedAndIgnored)
{
    const char map[] = "[2-9]xxxxxx";
    EXPECT_EQ(ke_omci_tapi_voip_digitmap_set(nullptr), 0u);
    EXPECT_EQ(ke_omci_tapi_voip_digitmap_set(map), 0u);
    EXPECT_TRUE(kestub::cm_calls().empty());
}

TEST_F(VoipMedia, NullArgumentsAreRefused)
{
    EXPECT_EQ(ke_omci_tapi_voip_rtp_set(nullptr), 1u);
    EXPECT_EQ(ke_omci_tapi_voip_rtp_get(nullptr), 1u);
    EXPECT_EQ(ke_omci_tapi_voip_silence_set(nullptr), 1u);
    EXPECT_EQ(ke_omci_tapi_voip_faxmode_set(nullptr), 1u);
    EXPECT_TRUE(kestub::cm_calls().empty());
}

}  // namespace
