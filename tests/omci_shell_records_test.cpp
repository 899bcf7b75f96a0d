// The record layouts the bench's programs share: every public record and
// every configuration table described soundly, values of every kind shown
// and typed, and the table layouts lined up with what the library writes.
#include <algorithm>
#include <functional>
#include <set>

#include "cm_table.h"
#include "ke_omci_tapi/ke_omci_tapi.h"
#include "record.h"
#include "stub_test.h"
#include "tables.h"
#include "text.h"

namespace {

using ketool::Field;
using ketool::Kind;
using ketool::Layout;

// The first two fields of layout that share a byte, as "a/b"; "" if none.
std::string overlap(const Layout &layout)
{
    for (size_t i = 0; i < layout.count; ++i)
        for (size_t j = i + 1; j < layout.count; ++j) {
            const Field &a = layout.fields[i], &b = layout.fields[j];
            uint32_t a_end = a.offset + a.width * a.count, b_end = b.offset + b.width * b.count;
            if (a.offset < b_end && b.offset < a_end)
                return std::string(a.name) + "/" + b.name;
        }
    return "";
}

TEST(Records, EveryPublicRecordIsDescribedSoundly)
{
    std::set<std::string> names;
    for (const Layout *l : ketool::known_records()) {
        SCOPED_TRACE(l->name);
        EXPECT_TRUE(ketool::layout_valid(*l));
        EXPECT_EQ(overlap(*l), "");
        EXPECT_TRUE(names.insert(l->name).second) << "listed twice";
        EXPECT_EQ(ketool::find_record(l->name), l);
    }
    EXPECT_GE(names.size(), 70u);
    EXPECT_EQ(ketool::find_record("st_nothing"), nullptr);
}

TEST(Records, EveryTableOfTheIndexHasALayoutOfItsSize)
{
    for (const ke::cm::TableInfo &t : ke::cm::kTables) {
        SCOPED_TRACE(t.name);
        const Layout *l = ketool::table_layout(t.id);
        ASSERT_NE(l, nullptr);
        EXPECT_EQ(l->size, t.size);
        EXPECT_TRUE(ketool::layout_valid(*l));
        EXPECT_EQ(overlap(*l), "");
    }
    EXPECT_EQ(ketool::table_layout(9999), nullptr);
}

// One field of each kind, and arrays of numbers and of records.
constexpr std::array kPair = {
    Field{"a", 0, 2, Kind::U16},
    Field{"b", 2, 1, Kind::U8},
};
constexpr Layout kPairLayout = ketool::make_layout("pair", 4, kPair);
constexpr std::array kAll = {
    Field{"u8", 0, 1, Kind::U8},
    Field{"u16", 2, 2, Kind::U16},
    Field{"u32", 4, 4, Kind::U32},
    Field{"u64", 8, 8, Kind::U64},
    Field{"be", 16, 8, Kind::U64Be},
    Field{"raw", 24, 3, Kind::Bytes},
    Field{"name", 27, 5, Kind::Text},
    Field{"mac", 32, 6, Kind::Mac},
    Field{"ip", 38, 4, Kind::Ipv4},
    Field{"words", 44, 4, Kind::U32, 3},
    Field{"pairs", 56, 4, Kind::Rec, 3, &kPairLayout},
};
constexpr Layout kAllLayout = ketool::make_layout("all", 72, kAll);

TEST(Records, ValuesOfEveryKindAreTypedAndShown)
{
    std::vector<uint8_t> rec(72, 0);
    std::string why;
    for (const char *a : {"u8=255", "u16=0x1234", "u32=4000000000", "u64=0x123456789",
                          "be=258", "raw=aa:bb", "name=hello", "mac=02:00:00:00:00:09",
                          "ip=192.168.1.10", "words[2]=7", "pairs[1].a=9", "pairs[1].b=10"})
        ASSERT_TRUE(ketool::assign(kAllLayout, rec.data(), a, &why)) << a << ": " << why;
    EXPECT_EQ(rec[16 + 6], 0x01);  // big-endian 258: ... 01 02
    EXPECT_EQ(rec[16 + 7], 0x02);
    EXPECT_EQ(rec[38], 192);       // network order
    rec[70] = 0x5a;                // in no field
    EXPECT_EQ(ketool::decode(kAllLayout, rec.data(), rec.size()),
              (std::vector<std::string>{
                  "u8 = 255 (0xff)", "u16 = 4660 (0x1234)", "u32 = 4000000000 (0xee6b2800)",
                  "u64 = 4886718345 (0x123456789)", "be = 258 (0x102)", "raw = aa bb 00",
                  "name = \"hello\"", "mac = 02:00:00:00:00:09", "ip = 192.168.1.10",
                  "words = 0 0 7", "pairs[1].a = 9", "pairs[1].b = 10 (0xa)", "+70: 5a"}));
    EXPECT_EQ(ketool::decode_line(kAllLayout, rec.data(), rec.size()),
              "u8=0xff u16=0x1234 u32=0xee6b2800 u64=0x123456789 be=0x102 raw=[aa bb 00] "
              "name=\"hello\" mac=02:00:00:00:00:09 ip=192.168.1.10 words=[0 0 7] pairs[1].a=9 "
              "pairs[1].b=0xa");
    // A record cut short shows the fields that fit.
    EXPECT_EQ(ketool::decode(kAllLayout, rec.data(), 4),
              (std::vector<std::string>{"u8 = 255 (0xff)", "u16 = 4660 (0x1234)"}));
}

TEST(Records, AssignmentsThatCannotBeMadeSayWhy)
{
    struct Case {
        const char *assignment;
        const char *why;
    };
    const Case cases[] = {
        {"u8", "expected field=value: u8"},
        {"u16=-1", "u16: not a number that fits 2 bytes: -1"},
        {"u64=18446744073709551616", "u64: not a number that fits 8 bytes: 18446744073709551616"},
        {"name=toolong", "name: longer than 5 characters"},
        {"mac=02:00", "mac: expected 6 hex bytes: 02:00"},
        {"raw=aabbccdd", "raw: expected up to 3 hex bytes: aabbccdd"},
        {"ip=256.1.1.1", "ip: expected an address a.b.c.d: 256.1.1.1"},
        {"ip=1.2.3", "ip: expected an address a.b.c.d: 1.2.3"},
        {"ip=1.2.3.4.5", "ip: expected an address a.b.c.d: 1.2.3.4.5"},
        {"ip= 1.2.3.4", "ip: expected an address a.b.c.d:  1.2.3.4"},
        {"words=1", "words has 3 elements: name one as words[i]"},
        {"words[3]=1", "words: index out of 0..2: words[3]"},
        {"words[x]=1", "words: index out of 0..2: words[x]"},
        {"pairs[0]=1", "pairs is a record: name it pairs.FIELD=VALUE"},
        {"pairs[0].c=1", "pair has no field c"},
        {"u8.x=1", "no such field: u8.x"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.assignment);
        std::vector<uint8_t> rec(72, 0);
        std::string why;
        EXPECT_FALSE(ketool::assign(kAllLayout, rec.data(), c.assignment, &why));
        EXPECT_EQ(why, c.why);
        EXPECT_EQ(rec, std::vector<uint8_t>(72, 0));
    }
}

TEST(Records, UnsoundLayoutsAreRefused)
{
    static constexpr std::array kSelf = {Field{"self", 0, 4, Kind::Rec}};
    static const Layout kSelfLayout{"self", 4, kSelf.data(), 1};
    static const std::array kLoop = {Field{"loop", 0, 4, Kind::Rec, 1, &kSelfLayout}};
    struct Case {
        Field field;
        uint32_t size;
    };
    const Case cases[] = {
        {{"past", 4, 4, Kind::U32}, 6},
        {{"wide", 0, 3, Kind::U32}, 8},
        {{"empty", 0, 0, Kind::Bytes}, 8},
        {{"none", 0, 4, Kind::U32, 0}, 8},
        {{"many", 0, 4, Kind::U32, 3}, 8},
        {{"nosub", 0, 4, Kind::Rec, 1, nullptr}, 8},
        {{"far", 0xfffffff0, 4, Kind::U32}, 8},
        {{"huge", 4, 0x80000000, Kind::Bytes, 2}, 8},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.field.name);
        EXPECT_FALSE(ketool::layout_valid(Layout{"bad", c.size, &c.field, 1}));
    }
    EXPECT_TRUE(ketool::layout_valid(Layout{"good", 8, &cases[3].field, 0}));
    EXPECT_FALSE(ketool::layout_valid(Layout{"loop", 4, kLoop.data(), 1}));
}

TEST(Records, NumbersAsTyped)
{
    struct Case {
        const char *text;
        bool ok;
        uint64_t value;
    };
    const Case cases[] = {
        {"0", true, 0},           {"4294967296", true, 4294967296ull},
        {"0x10", true, 16},       {"0X1f", true, 31},
        {"18446744073709551615", true, ~0ull},
        {"18446744073709551616", false, 0},
        {"", false, 0},           {"0x", false, 0},
        {"-1", false, 0},         {"+1", false, 0},
        {" 1", false, 0},         {"0x-1", false, 0},
        {"0x 1", false, 0},       {"12a", false, 0},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.text);
        uint64_t v = 0;
        EXPECT_EQ(ketool::parse_u64(c.text, &v), c.ok);
        if (c.ok) {
            EXPECT_EQ(v, c.value);
        }
        uint32_t w = 0;
        EXPECT_EQ(ketool::parse_u32(c.text, &w), c.ok && c.value <= 0xffffffffu);
    }
}

// What the library writes, decoded by the table layouts: each value under
// its own name (the demo's scenario reads the VLAN translation and SIP
// server tables back by name).
class TableLayouts : public ketest::StubTest {};

TEST_F(TableLayouts, LineUpWithWhatTheLibraryWrites)
{
    struct Case {
        const char *what;
        uint32_t table;
        std::function<void()> write;
        std::vector<std::string> lines;  // each must be among the decoded lines
    };
    st_voip_rtp rtp{1, 50000, 50100, 46};
    st_voip_sipauth auth{};
    auth.ui_line = 1;
    std::memcpy(auth.auc_user_name, "1001", 4);
    st_tr069_server acs{};
    std::memcpy(acs.auc_acs_url, "http://acs.example", 18);
    st_mc_igmp_attr igmp{1, 100, 5, 0x101};
    st_port_mode_update mode{};
    mode.ui_sfu_mode = 1;
    mode.uc_port = 2;
    uint32_t conf = 1;
    const Case cases[] = {
        {"rtp", 473, [&] { ke_omci_tapi_voip_rtp_set(&rtp); },
         {"ucLineId = 1", "ulRtpPortMin = 50000 (0xc350)", "ulRtpPortMax = 50100 (0xc3b4)",
          "ucRtpDscp = 46 (0x2e)"}},
        {"rtp dscp", 476, [&] { ke_omci_tapi_voip_rtp_set(&rtp); }, {"ucRtpDscp = 46 (0x2e)"}},
        {"sip user", 471, [&] { ke_omci_tapi_voip_sipauth_set(&auth); },
         {"ucLineId = 1", "acUserName = \"1001\"", "ulMask = 14 (0xe)"}},
        {"acs", 524, [&] { ke_omci_tapi_tr069_server_set(&acs); },
         {"acAcsUrl = \"http://acs.example\"", "ulMask = 592 (0x250)"}},
        {"conf", 668, [&] { ke_omci_tapi_voip_conf_set(&conf); }, {"ulVoipConf = 1"}},
        {"igmp", 822, [&] { ke_omci_tapi_mc_igmp_attr_set(0, &igmp); },
         {"ui_port = 0", "ui_upvlan = 100 (0x64)", "ui_uppri = 5", "ui_upgemport = 257 (0x101)"}},
        {"port mode", 834, [&] { ke_omci_update_the_cm_table(&mode); },
         {"ui_port = 2", "ui_sfu_mode = 1", "ui_mask = 16 (0x10)"}},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        kestub::reset();
        c.write();
        std::vector<std::vector<uint8_t>> entries = kestub::cm_entries(c.table);
        ASSERT_EQ(entries.size(), 1u);
        std::vector<std::string> lines =
            ketool::decode(*ketool::table_layout(c.table), entries[0].data(), entries[0].size());
        for (const std::string &want : c.lines)
            EXPECT_NE(std::find(lines.begin(), lines.end(), want), lines.end()) << want;
        for (const std::string &line : lines)
            EXPECT_NE(line[0], '+') << "bytes no field names: " << line;
    }
}

}  // namespace
