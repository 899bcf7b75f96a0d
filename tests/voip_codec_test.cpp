// Codec list: payload types to stored codes and back, the exchange that
// keeps a codec in one entry (its exact reads and writes), the priority
// reorder, and the failure reports.
#include "ke_omci_tapi/voip.h"
#include "voip_test.h"

namespace {

using kestub::CmOp;
using ketest::Bytes;
using ketest::Image;
using ketest::Info;

constexpr uint32_t kList = 465;
constexpr uint32_t kEntry = 478;

struct Code {
    uint8_t payload, code, enable;
};
// Every payload type with a stored code; all others store code 0, disabled.
const Code kCodes[] = {
    {0, 2, 1},   {3, 12, 0}, {4, 9, 0},   {5, 16, 0},  {6, 17, 0},  {7, 20, 0},
    {8, 1, 1},   {9, 4, 1},  {10, 21, 0}, {11, 22, 0}, {12, 23, 0}, {13, 24, 0},
    {14, 25, 0}, {15, 8, 0}, {16, 18, 0}, {17, 19, 0}, {18, 3, 1},
};

const Code *by_payload(unsigned p)
{
    for (const Code &c : kCodes)
        if (c.payload == p)
            return &c;
    return nullptr;
}

const Code *by_code(unsigned code)
{
    for (const Code &c : kCodes)
        if (c.code == code)
            return &c;
    return nullptr;
}

// A stored entry as the voice application keeps it.
Image entry(uint8_t id, uint8_t code, uint8_t enable, uint8_t priority, const std::string &period)
{
    Image e(48);
    e.u8(4, enable).u8(5, priority).u8(6, id).u8(7, code).text(12, period).u32(44, 31);
    return e;
}

void list_length(uint8_t n) { kestub::cm_preload(kList, Image(304).u8(9, n).bytes().data(), 304); }

void preload(const Image &e) { kestub::cm_preload(kEntry, e.bytes().data(), 48); }

Bytes stored_entry(uint8_t id)
{
    for (const auto &e : kestub::cm_entries(kEntry))
        if (ketest::u8_at(e, 6) == id)
            return e;
    return {};
}

uint32_t set(uint8_t id, uint8_t payload, uint8_t priority, uint8_t period)
{
    st_voip_codec c = {id, payload, priority, 0xEE, period};
    return ke_omci_tapi_voip_codec_set(&c);
}

using Ops = std::vector<std::pair<CmOp, uint32_t>>;

class VoipCodec : public ketest::StubTest {};

TEST_F(VoipCodec, EveryPayloadTypeIsStoredAsItsCodeWithItsEnableFlag)
{
    for (unsigned p = 0; p < 256; ++p) {
        kestub::reset();
        list_length(1);
        preload(entry(1, 0xEE, 1, 1, "20"));
        EXPECT_EQ(set(1, static_cast<uint8_t>(p), 6, 20), 0u) << p;
        const Code *c = by_payload(p);
        Bytes expected = Image(48)
                             .u8(4, c ? c->enable : 0)
                             .u8(5, 6)
                             .u8(6, 1)
                             .u8(7, c ? c->code : 0)
                             .text(12, "20")
                             .u32(44, 31);
        auto sets = ketest::cm_sets();
        ASSERT_EQ(sets.size(), 1u) << p;
        EXPECT_EQ(sets[0].second, expected) << "payload type " << p;
    }
}

TEST_F(VoipCodec, EveryStoredCodeReadsBackAsItsPayloadTypeOrLeavesTheCallersValue)
{
    for (unsigned code = 0; code < 256; ++code) {
        kestub::reset();
        preload(entry(2, static_cast<uint8_t>(code), 1, 7, "30"));
        st_voip_codec out = {2, 0xAB, 0, 0, 0};
        EXPECT_EQ(ke_omci_tapi_voip_codec_get(&out), 0u);
        const Code *c = by_code(code);
        EXPECT_EQ(out.uc_codec, c ? c->payload : 0xAB) << "code " << code;
        EXPECT_EQ(out.uc_entry_id, 2u);
        EXPECT_EQ(out.uc_priority, 7u);
        EXPECT_EQ(out.uc_enable, 1u);
        EXPECT_EQ(out.uc_period, 30u);
    }
}

TEST_F(VoipCodec, PeriodIsDecimalTextAndZeroDisablesTheEntry)
{
    struct Case {
        uint8_t payload, period;
        const char *text;
        uint8_t enable;
    } cases[] = {{0, 0, "0", 0}, {0, 255, "255", 1}, {18, 10, "10", 1}, {3, 20, "20", 0}};
    for (const Case &c : cases) {
        kestub::reset();
        const Code *code = by_payload(c.payload);
        preload(entry(4, code->code, 1, 4, "99"));
        EXPECT_EQ(set(4, c.payload, 4, c.period), 0u);
        Bytes expected = Image(48)
                             .u8(4, c.enable)
                             .u8(5, 4)
                             .u8(6, 4)
                             .u8(7, code->code)
                             .text(12, c.text)
                             .u32(44, 31);
        ASSERT_EQ(ketest::cm_sets().size(), 1u);
        EXPECT_EQ(ketest::cm_sets()[0].second, expected) << int(c.period);
    }
}

TEST_F(VoipCodec, StoredPeriodTextReadsBackAsItsLowByte)
{
    struct Case {
        std::string text;
        uint8_t period;
    } cases[] = {{"30", 30}, {"300", 44}, {"", 0}, {"ms", 0}, {std::string(31, '0') + "7", 7}};
    for (const Case &c : cases) {
        kestub::reset();
        preload(entry(1, 2, 1, 1, c.text));
        st_voip_codec out = {1, 0, 0, 0, 0x55};
        EXPECT_EQ(ke_omci_tapi_voip_codec_get(&out), 0u);
        EXPECT_EQ(out.uc_period, c.period) << c.text;
    }
}

TEST_F(VoipCodec, UnchangedCodecWritesTheEntryAloneWithoutReadingTheList)
{
    list_length(4);
    preload(entry(2, 1, 1, 2, "10"));
    EXPECT_EQ(set(2, 8, 5, 20), 0u);
    EXPECT_EQ(ketest::cm_ops(), (Ops{{CmOp::Get, kEntry}, {CmOp::Set, kEntry}}));
    Bytes expected = Image(48).u8(4, 1).u8(5, 5).u8(6, 2).u8(7, 1).text(12, "20").u32(44, 31);
    EXPECT_EQ(ketest::cm_sets()[0].second, expected);
    EXPECT_EQ(stored_entry(2), expected);
}

// Entry 1 takes G729 from entry 3: entry 3 is written first with entry 1's
// old codec, enable flag and period and priority 3, then entry 1; entry 4
// is never read.
TEST_F(VoipCodec, ChangedCodecHeldElsewhereIsExchangedInTheExactOrder)
{
    list_length(4);
    Image old = entry(1, 2, 1, 1, "20");
    preload(old);
    preload(entry(2, 1, 1, 2, "20"));
    preload(entry(3, 3, 0, 7, "10"));
    preload(entry(4, 4, 1, 4, "20"));
    kestub::log_set(true);
    uint32_t ret = 0;
    std::string out = ketest::printed([&] { ret = set(1, 18, 9, 30); });
    EXPECT_EQ(ret, 0u);
    EXPECT_EQ(ketest::cm_ops(), (Ops{{CmOp::Get, kEntry},
                                     {CmOp::Get, kList},
                                     {CmOp::Get, kEntry},
                                     {CmOp::Get, kEntry},
                                     {CmOp::Set, kEntry},
                                     {CmOp::Set, kEntry}}));
    Bytes moved = Image(old).u8(5, 3).u8(6, 3);
    Bytes set_entry = Image(48).u8(4, 1).u8(5, 9).u8(6, 1).u8(7, 3).text(12, "30").u32(44, 31);
    auto sets = ketest::cm_sets();
    ASSERT_EQ(sets.size(), 2u);
    EXPECT_EQ(sets[0].second, moved);
    EXPECT_EQ(sets[1].second, set_entry);
    EXPECT_EQ(stored_entry(3), moved);
    EXPECT_EQ(stored_entry(1), set_entry);
    EXPECT_EQ(ketest::without_lines(out),
              "[CheckCodecListPriority(L)]totalNum=4\n"
              "[CheckCodecListPriority(L)]Priority=2,EntryID=2,Codec=1,PacketizationPeriod=20\n"
              "[CheckCodecListPriority(L)]Priority=7,EntryID=3,Codec=3,PacketizationPeriod=10\n"
              "[CheckCodecListPriority(L)]ucPriority is repeat.\n");
}

TEST_F(VoipCodec, ChangedCodecHeldNowhereWritesOnlyTheEntryAfterScanningAll)
{
    list_length(3);
    preload(entry(1, 2, 1, 1, "20"));
    preload(entry(2, 1, 1, 2, "20"));
    preload(entry(3, 4, 1, 3, "20"));
    EXPECT_EQ(set(2, 18, 2, 20), 0u);
    EXPECT_EQ(ketest::cm_ops(), (Ops{{CmOp::Get, kEntry},
                                     {CmOp::Get, kList},
                                     {CmOp::Get, kEntry},
                                     {CmOp::Get, kEntry},
                                     {CmOp::Set, kEntry}}));
    EXPECT_EQ(ketest::u8_at(stored_entry(2), 7), 3u);
    EXPECT_EQ(ketest::u8_at(stored_entry(1), 7), 2u);
}

// An unmapped payload type stores code 0, which the scan compares like any
// other: the lowest-numbered entry holding 0 takes the old codec.
TEST_F(VoipCodec, UnmappedCodecMovesTheOldCodecToTheFirstEntryHoldingNone)
{
    list_length(4);
    Image old = entry(1, 2, 1, 1, "20");
    preload(old);
    preload(entry(2, 1, 1, 2, "20"));
    preload(entry(3, 0, 0, 3, "0"));
    preload(entry(4, 0, 0, 4, "0"));
    EXPECT_EQ(set(1, 2, 1, 20), 0u);
    auto sets = ketest::cm_sets();
    ASSERT_EQ(sets.size(), 2u);
    EXPECT_EQ(sets[0].second, Bytes(Image(old).u8(5, 3).u8(6, 3)));
    EXPECT_EQ(sets[1].second,
              Bytes(Image(48).u8(4, 0).u8(5, 1).u8(6, 1).u8(7, 0).text(12, "20").u32(44, 31)));
    EXPECT_EQ(ketest::u8_at(stored_entry(4), 7), 0u);
}

// Entry 2 holds "none" but cannot be read: it is taken as holding no codec
// and passed over, so entry 3 receives the old codec.
TEST_F(VoipCodec, AnEntryThatCannotBeReadIsPassedOver)
{
    list_length(3);
    preload(entry(1, 2, 1, 1, "20"));
    preload(entry(2, 0, 0, 2, "0"));
    preload(entry(3, 0, 0, 3, "0"));
    kestub::cm_fail(kEntry, 0x72300009, 2);  // the scan's read of entry 2
    kestub::log_set(true);
    uint32_t ret = 0;
    std::string out = ketest::printed([&] { ret = set(1, 2, 1, 20); });
    EXPECT_EQ(ret, 0u);
    auto sets = ketest::cm_sets();
    ASSERT_EQ(sets.size(), 2u);
    EXPECT_EQ(ketest::u8_at(sets[0].second, 6), 3u);
    EXPECT_EQ(ketest::u8_at(sets[0].second, 7), 2u);
    EXPECT_EQ(ketest::u8_at(stored_entry(2), 7), 0u);
    EXPECT_NE(out.find("Priority=0,EntryID=2,Codec=0,PacketizationPeriod=\n"), std::string::npos)
        << out;

    // An entry missing from the store is passed over the same way.
    kestub::reset();
    list_length(2);
    preload(entry(1, 2, 1, 1, "20"));
    EXPECT_EQ(set(1, 2, 1, 20), 0u);
    ASSERT_EQ(ketest::cm_sets().size(), 1u);
    EXPECT_EQ(ketest::u8_at(ketest::cm_sets()[0].second, 6), 1u);
}

TEST_F(VoipCodec, ChangedCodecWithAnEmptyListIsRefusedAndWritesNothing)
{
    for (bool header : {true, false}) {
        kestub::reset();
        if (header)
            list_length(0);  // else the header read fails, which counts as empty
        preload(entry(1, 2, 1, 1, "20"));
        kestub::log_set(true);
        uint32_t ret = 0;
        std::string out = ketest::printed([&] { ret = set(1, 8, 1, 20); });
        EXPECT_EQ(ret, 1u);
        EXPECT_TRUE(ketest::cm_sets().empty());
        auto lines = ketest::lines_of(out);
        ASSERT_EQ(lines.size(), 2u) << out;
        EXPECT_EQ(ketest::without_lines(lines[0]), "[CheckCodecListPriority(L)]totalNum=0.\n");
        EXPECT_EQ(ketest::infos(lines[1]),
                  (std::vector<Info>{{"ke_omci_tapi_voip_codec_set", 0x70000000}}));
    }
}

// A failed exchange leaves the list as it was; a failed final write leaves
// the exchanged entry changed and the set entry as it was.
TEST_F(VoipCodec, EachSetFailureIsReportedByItsProcedureThenAsOne)
{
    struct Case {
        const char *label;
        unsigned nth_entry_op;  // which operation on table 478 fails
        size_t sets_tried;
        uint8_t entry1_code, entry3_code;  // stored afterwards
    } cases[] = {
        {"read of the entry", 1, 0, 2, 3},
        {"exchange write", 4, 1, 2, 3},
        {"entry write after the exchange", 5, 2, 2, 2},
    };
    const std::vector<Info> lines = {{"CheckCodecListPriority", 0x7230000B},
                                     {"ke_omci_tapi_voip_codec_set", 1}};
    for (const Case &c : cases) {
        kestub::reset();
        list_length(3);
        preload(entry(1, 2, 1, 1, "20"));
        preload(entry(2, 1, 1, 2, "20"));
        preload(entry(3, 3, 1, 3, "20"));
        kestub::cm_fail(kEntry, 0x7230000B, c.nth_entry_op);
        kestub::log_set(true);
        uint32_t ret = 0;
        std::string out = ketest::printed([&] { ret = set(1, 18, 1, 20); });
        EXPECT_EQ(ret, 1u) << c.label;
        std::vector<Info> got;  // the scan's own lines left out
        for (const Info &i : ketest::infos(out))
            if (i.func[0] != '?')
                got.push_back(i);
        EXPECT_EQ(got, lines) << c.label;
        EXPECT_EQ(ketest::cm_sets().size(), c.sets_tried) << c.label;
        EXPECT_EQ(ketest::u8_at(stored_entry(1), 7), c.entry1_code) << c.label;
        EXPECT_EQ(ketest::u8_at(stored_entry(3), 7), c.entry3_code) << c.label;
    }
}

TEST_F(VoipCodec, UnchangedCodecWriteFailureIsReportedOnceAndGateClosedPrintsNothing)
{
    for (bool gate : {true, false}) {
        kestub::reset();
        preload(entry(1, 2, 1, 1, "20"));
        kestub::cm_fail(kEntry, 0x7230000C, 2);
        kestub::log_set(gate);
        uint32_t ret = 0;
        std::string out = ketest::printed([&] { ret = set(1, 0, 1, 20); });
        EXPECT_EQ(ret, 1u);
        if (gate)
            EXPECT_EQ(ketest::infos(out),
                      (std::vector<Info>{{"ke_omci_tapi_voip_codec_set", 0x7230000C}}));
        else
            EXPECT_EQ(out, "");
    }
}

TEST_F(VoipCodec, FailedGetLeavesTheCallersRecordAndTraces)
{
    kestub::log_set(true);
    st_voip_codec out = {9, 1, 2, 3, 4};
    uint32_t ret = 0;
    std::string text = ketest::printed([&] { ret = ke_omci_tapi_voip_codec_get(&out); });
    EXPECT_EQ(ret, 1u);
    EXPECT_EQ(ketest::infos(text),
              (std::vector<Info>{{"ke_omci_tapi_voip_codec_get", kestub::kCmNoEntry}}));
    st_voip_codec same = {9, 1, 2, 3, 4};
    EXPECT_EQ(std::memcmp(&out, &same, sizeof out), 0);
}

TEST_F(VoipCodec, ReorderReadsAndWritesEachEntryInOrderWithItsNumberAsPriority)
{
    list_length(3);
    Image e1 = entry(1, 2, 1, 7, "20"), e2 = entry(2, 1, 1, 8, "30"), e3 = entry(3, 3, 0, 9, "0");
    preload(e1);
    preload(e2);
    preload(e3);
    kestub::log_set(true);
    uint32_t ret = 1;
    std::string out = ketest::printed([&] { ret = ke_omci_tapi_voip_codec_priority_reorder(); });
    EXPECT_EQ(ret, 0u);
    EXPECT_EQ(ketest::without_lines(out),
              "[ke_omci_tapi_voip_codec_priority_reorder(L)]totalNum=3\n");
    EXPECT_EQ(ketest::cm_ops(), (Ops{{CmOp::Get, kList},
                                     {CmOp::Get, kEntry},
                                     {CmOp::Set, kEntry},
                                     {CmOp::Get, kEntry},
                                     {CmOp::Set, kEntry},
                                     {CmOp::Get, kEntry},
                                     {CmOp::Set, kEntry}}));
    auto sets = ketest::cm_sets();
    ASSERT_EQ(sets.size(), 3u);
    EXPECT_EQ(sets[0].second, Bytes(Image(e1).u8(5, 1).u32(44, 2)));
    EXPECT_EQ(sets[1].second, Bytes(Image(e2).u8(5, 2).u32(44, 2)));
    EXPECT_EQ(sets[2].second, Bytes(Image(e3).u8(5, 3).u32(44, 2)));
    // Only the priorities changed in the store.
    EXPECT_EQ(stored_entry(1), Bytes(Image(e1).u8(5, 1)));
    EXPECT_EQ(stored_entry(3), Bytes(Image(e3).u8(5, 3)));
}

TEST_F(VoipCodec, ReorderGoesOnPastFailuresAndReturnsTheLastWritesStatus)
{
    list_length(2);
    preload(entry(1, 2, 1, 7, "20"));
    preload(entry(2, 1, 1, 8, "20"));
    kestub::cm_fail(kEntry, 0x7230000D, 1);  // the read of entry 1
    kestub::cm_fail_nth(5, 0x7230000E);      // the write of entry 2
    EXPECT_EQ(ke_omci_tapi_voip_codec_priority_reorder(), 0x7230000Eu);
    auto sets = ketest::cm_sets();
    ASSERT_EQ(sets.size(), 2u);
    EXPECT_EQ(sets[0].second, Bytes(Image(48).u8(5, 1).u8(6, 1).u32(44, 2)));
    EXPECT_EQ(ketest::u8_at(stored_entry(1), 5), 1u);

    kestub::reset();
    list_length(2);
    preload(entry(1, 2, 1, 7, "20"));
    preload(entry(2, 1, 1, 8, "20"));
    kestub::cm_fail(kEntry, 0x7230000F, 2);  // the write of entry 1
    EXPECT_EQ(ke_omci_tapi_voip_codec_priority_reorder(), 0u);
    EXPECT_EQ(ketest::u8_at(stored_entry(2), 5), 2u);
}

TEST_F(VoipCodec, ReorderOfAnEmptyListOnlyReadsTheHeader)
{
    list_length(0);
    kestub::log_set(true);
    std::string out = ketest::printed([] { ke_omci_tapi_voip_codec_priority_reorder(); });
    EXPECT_EQ(ketest::without_lines(out),
              "[ke_omci_tapi_voip_codec_priority_reorder(L)]totalNum=0.\n");
    EXPECT_EQ(ketest::cm_ops(), (Ops{{CmOp::Get, kList}}));
}

TEST_F(VoipCodec, NullRecordsAreRefused)
{
    EXPECT_EQ(ke_omci_tapi_voip_codec_set(nullptr), 1u);
    EXPECT_EQ(ke_omci_tapi_voip_codec_get(nullptr), 1u);
    EXPECT_TRUE(kestub::cm_calls().empty());
}

}  // namespace
