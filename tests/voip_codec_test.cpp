// Codec list: payload types to stored codes and back, the exchange that
// keeps a codec in one entry (its exact reads and writes), the priority
// reorder, and the reports of a refusal and of a failed exchange.
#include "ke_omci_tapi/voip.h"
#include "voip_test.h"

namespace {

using kestub::CmOp;
using ketest::Bytes;
using ketest::Image;
using Ops = std::vector<std::pair<CmOp, uint32_t>>;

constexpr uint32_t kList = 465, kEntry = 478;
constexpr auto Get = CmOp::Get;
constexpr auto Set = CmOp::Set;

// Payload type, stored code, enable flag; every other type stores 0, 0.
const uint8_t kCodes[][3] = {
    {0, 2, 1},   {3, 12, 0}, {4, 9, 0},   {5, 16, 0},  {6, 17, 0},  {7, 20, 0},
    {8, 1, 1},   {9, 4, 1},  {10, 21, 0}, {11, 22, 0}, {12, 23, 0}, {13, 24, 0},
    {14, 25, 0}, {15, 8, 0}, {16, 18, 0}, {17, 19, 0}, {18, 3, 1},
};

// A stored entry as the voice application keeps it.
Image entry(uint8_t id, uint8_t code, uint8_t enable, uint8_t priority, const std::string &period)
{
    return std::move(
        Image(48).u8(4, enable).u8(5, priority).u8(6, id).u8(7, code).text(12, period).u32(44, 31));
}

// A list of entries 1..n holding the given codes (priority = number).
void list(std::initializer_list<uint8_t> codes)
{
    ketest::preload(kList, Image(304).u8(9, static_cast<uint8_t>(codes.size())));
    uint8_t id = 0;
    for (uint8_t code : codes) {
        ++id;
        ketest::preload(kEntry, entry(id, code, 1, id, std::to_string(10 * id)));
    }
}

Bytes stored_entry(uint8_t id) { return ketest::stored(kEntry, 6, id); }

uint32_t set(uint8_t id, uint8_t payload, uint8_t priority, uint8_t period)
{
    st_voip_codec c = {id, payload, priority, 0xEE, period};
    return ke_omci_tapi_voip_codec_set(&c);
}

class VoipCodec : public ketest::StubTest {};

TEST_F(VoipCodec, PayloadTypesAndStoredCodesMapBothWays)
{
    for (unsigned p = 0; p < 256; ++p) {
        uint8_t code = 0, enable = 0, payload_of_p = 0xAB;  // p read as a stored code
        for (const auto &c : kCodes) {
            if (c[0] == p)
                code = c[1], enable = c[2];
            if (c[1] == p)
                payload_of_p = c[0];
        }
        kestub::reset();
        list({0xEE});
        EXPECT_EQ(set(1, static_cast<uint8_t>(p), 6, 20), 0u) << p;
        Bytes expected = entry(1, code, enable, 6, "20");
        EXPECT_EQ(ketest::cm_sets(), (std::vector<std::pair<uint32_t, Bytes>>{{kEntry, expected}}))
            << "payload type " << p;

        ketest::preload(kEntry, entry(2, static_cast<uint8_t>(p), 1, 7, "30"));
        st_voip_codec out = {2, 0xAB, 0, 0, 0};
        EXPECT_EQ(ke_omci_tapi_voip_codec_get(&out), 0u);
        EXPECT_EQ(out.uc_codec, payload_of_p) << "stored code " << p;
        EXPECT_EQ(out.uc_priority, 7u);
        EXPECT_EQ(out.uc_enable, 1u);
    }
}

TEST_F(VoipCodec, PeriodIsDecimalTextZeroDisablesAndReadsBackAsItsLowByte)
{
    list({2});
    EXPECT_EQ(set(1, 0, 4, 0), 0u);
    EXPECT_EQ(stored_entry(1), Bytes(entry(1, 2, 0, 4, "0")));
    EXPECT_EQ(set(1, 0, 4, 255), 0u);
    EXPECT_EQ(stored_entry(1), Bytes(entry(1, 2, 1, 4, "255")));

    for (auto c : std::vector<std::pair<std::string, uint8_t>>{
             {"30", 30}, {"300", 44}, {"", 0}, {"ms", 0}, {std::string(31, '0') + "7", 7}}) {
        ketest::preload(kEntry, entry(1, 2, 1, 1, c.first));
        st_voip_codec out = {1, 0, 0, 0, 0x55};
        EXPECT_EQ(ke_omci_tapi_voip_codec_get(&out), 0u);
        EXPECT_EQ(out.uc_period, c.second) << c.first;
    }
}

TEST_F(VoipCodec, UnchangedCodecWritesTheEntryAloneWithoutReadingTheList)
{
    list({2, 1, 3, 4});
    EXPECT_EQ(set(2, 8, 5, 20), 0u);
    EXPECT_EQ(ketest::cm_ops(), (Ops{{Get, kEntry}, {Set, kEntry}}));
    EXPECT_EQ(ketest::cm_sets()[0].second, Bytes(entry(2, 1, 1, 5, "20")));
}

// Entry 1 takes G729 from entry 3: entry 3 is written first with entry 1's
// old codec, enable flag and period and priority 3, then entry 1; entry 4
// is never read.
TEST_F(VoipCodec, ChangedCodecHeldElsewhereIsExchangedInTheExactOrder)
{
    list({2, 1, 3, 4});
    ketest::preload(kEntry, entry(1, 2, 0, 1, "20"));
    kestub::log_set(true);
    uint32_t ret = 1;
    std::string out = ketest::printed([&] { ret = set(1, 18, 9, 30); });
    EXPECT_EQ(ret, 0u);
    EXPECT_EQ(ketest::cm_ops(), (Ops{{Get, kEntry}, {Get, kList}, {Get, kEntry}, {Get, kEntry},
                                     {Set, kEntry}, {Set, kEntry}}));
    auto sets = ketest::cm_sets();
    ASSERT_EQ(sets.size(), 2u);
    EXPECT_EQ(sets[0].second, Bytes(entry(3, 2, 0, 3, "20")));
    EXPECT_EQ(sets[1].second, Bytes(entry(1, 3, 1, 9, "30")));
    EXPECT_EQ(ketest::without_lines(out),
              "[CheckCodecListPriority(L)]totalNum=4\n"
              "[CheckCodecListPriority(L)]Priority=2,EntryID=2,Codec=1,PacketizationPeriod=20\n"
              "[CheckCodecListPriority(L)]Priority=3,EntryID=3,Codec=3,PacketizationPeriod=30\n"
              "[CheckCodecListPriority(L)]ucPriority is repeat.\n");
}

// The scan compares stored codes, 0 included; an entry it cannot read
// holds no codec (the fault sweep's).
TEST_F(VoipCodec, ScanTakesTheFirstEntryHoldingTheNewCode)
{
    struct Case {
        std::initializer_list<uint8_t> codes;
        uint8_t payload;
        std::vector<uint8_t> written;  // entry numbers, in order
    } cases[] = {
        {{2, 1, 4}, 18, {1}},       // held nowhere: all read, one write
        {{2, 0, 0, 0}, 2, {2, 1}},  // unmapped: lowest entry holding 0
    };
    for (const Case &c : cases) {
        kestub::reset();
        list(c.codes);
        EXPECT_EQ(set(1, c.payload, 1, 20), 0u);
        std::vector<uint8_t> written;
        for (const auto &s : ketest::cm_sets())
            written.push_back(s.second[6]);
        EXPECT_EQ(written, c.written);
    }
    EXPECT_EQ(stored_entry(2), Bytes(entry(2, 2, 1, 2, "10")));
}

TEST_F(VoipCodec, ChangedCodecWithAnEmptyListIsRefusedAndWritesNothing)
{
    for (bool header : {true, false}) {
        kestub::reset();
        ketest::preload(kEntry, entry(1, 2, 1, 1, "20"));
        if (header)  // else the header read fails, which counts as empty
            ketest::preload(kList, Image(304));
        kestub::log_set(true);
        uint32_t ret = 0;
        std::string out = ketest::printed([&] { ret = set(1, 8, 1, 20); });
        EXPECT_EQ(ret, 1u);
        EXPECT_TRUE(ketest::cm_sets().empty());
        auto lines = ketest::infos(out);
        ASSERT_EQ(lines.size(), 2u) << out;
        EXPECT_EQ(ketest::without_lines(lines[0]), "? [CheckCodecListPriority(L)]totalNum=0.\n");
        EXPECT_EQ(lines[1], "ke_omci_tapi_voip_codec_set/0x70000000");
    }
}

// A failed write of the exchange is reported by its procedure (the fault
// sweep's), then as 1 by the setter.
TEST_F(VoipCodec, AFailedExchangeIsReportedByItsProcedureThenAsOne)
{
    list({2, 1, 3});
    kestub::cm_fail(kEntry, 0x7230000B, 4);
    kestub::log_set(true);
    uint32_t ret = 0;
    std::string out = ketest::printed([&] { ret = set(1, 18, 1, 20); });
    EXPECT_EQ(ret, 1u);
    std::vector<std::string> got;  // the scan's own lines left out
    for (const std::string &i : ketest::infos(out))
        if (i[0] != '?')
            got.push_back(i);
    EXPECT_EQ(got, (std::vector<std::string>{"CheckCodecListPriority/0x7230000b",
                                             "ke_omci_tapi_voip_codec_set/0x1"}));
}

TEST_F(VoipCodec, ReorderReadsAndWritesEachEntryInOrderWithItsNumberAsPriority)
{
    list({2, 1, 3});
    ketest::preload(kEntry, entry(1, 2, 1, 7, "20"));
    kestub::log_set(true);
    uint32_t ret = 1;
    std::string out = ketest::printed([&] { ret = ke_omci_tapi_voip_codec_priority_reorder(); });
    EXPECT_EQ(ret, 0u);
    EXPECT_EQ(ketest::without_lines(out),
              "[ke_omci_tapi_voip_codec_priority_reorder(L)]totalNum=3\n");
    EXPECT_EQ(ketest::cm_ops(), (Ops{{Get, kList}, {Get, kEntry}, {Set, kEntry}, {Get, kEntry},
                                     {Set, kEntry}, {Get, kEntry}, {Set, kEntry}}));
    auto sets = ketest::cm_sets();
    ASSERT_EQ(sets.size(), 3u);
    EXPECT_EQ(sets[0].second, Bytes(Image(entry(1, 2, 1, 1, "20")).u32(44, 2)));
    EXPECT_EQ(sets[2].second, Bytes(Image(entry(3, 3, 1, 3, "30")).u32(44, 2)));
    EXPECT_EQ(stored_entry(1), Bytes(entry(1, 2, 1, 1, "20")));
}

// Which failures stop it and what it answers are the fault sweep's.
TEST_F(VoipCodec, ReorderWritesAnEntryItCannotReadAsZeroes)
{
    list({2, 1});
    kestub::cm_fail(kEntry, 0x7230000D, 1);  // the read of entry 1
    EXPECT_EQ(ke_omci_tapi_voip_codec_priority_reorder(), 0u);
    EXPECT_EQ(ketest::cm_sets()[0].second, Bytes(Image(48).u8(5, 1).u8(6, 1).u32(44, 2)));

    kestub::reset();
    list({});
    kestub::log_set(true);
    std::string out = ketest::printed([] { ke_omci_tapi_voip_codec_priority_reorder(); });
    EXPECT_EQ(ketest::without_lines(out),
              "[ke_omci_tapi_voip_codec_priority_reorder(L)]totalNum=0.\n");
    EXPECT_EQ(ketest::cm_ops(), (Ops{{Get, kList}}));
}

}  // namespace
