// The sml service simulator, driven in process through the library: its
// state model, the serving convention on every procedure, the replies the
// device profile builds, and its call log.
#include <dlfcn.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <set>

#include "ke_omci_tapi/pon.h"
#include "platform.h"
#include "sim.h"
#include "stub_test.h"

namespace {

using smlsim::Profile;

class SimTest : public ketest::StubTest {
protected:
    void SetUp() override
    {
        StubTest::SetUp();
        log = open_memstream(&log_text, &log_len);
        start(smlsim::default_profile());
    }
    void TearDown() override
    {
        std::fclose(log);
        std::free(log_text);
        StubTest::TearDown();
    }
    void start(const Profile &profile)
    {
        sim = std::make_unique<smlsim::Sim>(profile);
        sim->set_log(log);
        sim->attach();
    }
    std::string logged()
    {
        std::fflush(log);
        return std::string(log_text, log_len);
    }
    Profile with(const std::string &text)
    {
        Profile p = smlsim::default_profile();
        std::string why;
        EXPECT_TRUE(smlsim::apply_profile(text, &p, &why)) << why;
        return p;
    }

    std::unique_ptr<smlsim::Sim> sim;
    FILE *log = nullptr;
    char *log_text = nullptr;
    size_t log_len = 0;
};

TEST_F(SimTest, TcontsAndGemportsExistBetweenSetAndDelete)
{
    start(with("tconts = 8\ngemports = 2\nonu_id = 77\n"));
    uint8_t attr[28];
    for (int i = 0; i < 28; ++i)
        attr[i] = static_cast<uint8_t>(i + 1);
    uint8_t back[28] = {};
    uint32_t allocid = 0xdead;
    uint32_t num = 0;
    struct Step {
        const char *what;
        uint32_t status;
        uint32_t (*run)(const uint8_t *attr, uint8_t *back, uint32_t *word);
    };
    const std::vector<Step> steps = {
        {"get of a T-CONT never set", 1,
         [](const uint8_t *, uint8_t *, uint32_t *w) { return ke_omci_tapi_tcont_get(3, w); }},
        {"delete of a T-CONT never set", smlsim::kNoObject,
         [](const uint8_t *, uint8_t *, uint32_t *) { return ke_omci_tapi_tcont_del(3); }},
        {"set", 0, [](const uint8_t *, uint8_t *, uint32_t *) { return ke_omci_tapi_tcont_set(3, 0x401); }},
        {"get", 0, [](const uint8_t *, uint8_t *, uint32_t *w) { return ke_omci_tapi_tcont_get(3, w); }},
        {"index beyond the line's T-CONTs", 1,
         [](const uint8_t *, uint8_t *, uint32_t *) { return ke_omci_tapi_tcont_set(8, 0x402); }},
        {"Alloc-ID beyond the range", 1,
         [](const uint8_t *, uint8_t *, uint32_t *) { return ke_omci_tapi_tcont_set(4, 0x4000); }},
        {"Alloc-ID of another T-CONT", 1,
         [](const uint8_t *, uint8_t *, uint32_t *) { return ke_omci_tapi_tcont_set(4, 0x401); }},
        {"set again, new Alloc-ID", 0,
         [](const uint8_t *, uint8_t *, uint32_t *) { return ke_omci_tapi_tcont_set(3, 0x402); }},
        {"T-CONT 0 reads the ONU-ID", 0,
         [](const uint8_t *, uint8_t *, uint32_t *w) { return ke_omci_tapi_tcont_get(0, w); }},
        {"delete", 0, [](const uint8_t *, uint8_t *, uint32_t *) { return ke_omci_tapi_tcont_del(3); }},
        {"get after delete", 1,
         [](const uint8_t *, uint8_t *, uint32_t *w) { return ke_omci_tapi_tcont_get(3, w); }},
        {"GEM port get before set", 1,
         [](const uint8_t *, uint8_t *b, uint32_t *) { return ke_omci_tapi_gemport_get(0x101, b); }},
        {"GEM port set", 0,
         [](const uint8_t *a, uint8_t *, uint32_t *) { return ke_omci_tapi_gemport_set(0x101, a); }},
        {"GEM port get", 0,
         [](const uint8_t *, uint8_t *b, uint32_t *) { return ke_omci_tapi_gemport_get(0x101, b); }},
        {"second GEM port", 0,
         [](const uint8_t *a, uint8_t *, uint32_t *) { return ke_omci_tapi_gemport_set(0x102, a); }},
        {"third GEM port: the line offers two", 1,
         [](const uint8_t *a, uint8_t *, uint32_t *) { return ke_omci_tapi_gemport_set(0x103, a); }},
        {"GEM port beyond the range", 1,
         [](const uint8_t *a, uint8_t *, uint32_t *) { return ke_omci_tapi_gemport_set(0xffff, a); }},
        {"GEM port delete", 0,
         [](const uint8_t *, uint8_t *, uint32_t *) { return ke_omci_tapi_gemport_del(0x101); }},
        {"GEM port delete again", smlsim::kNoObject,
         [](const uint8_t *, uint8_t *, uint32_t *) { return ke_omci_tapi_gemport_del(0x101); }},
        {"room again for a new one", 0,
         [](const uint8_t *a, uint8_t *, uint32_t *) { return ke_omci_tapi_gemport_set(0x103, a); }},
    };
    std::vector<uint32_t> words;
    for (const Step &s : steps) {
        SCOPED_TRACE(s.what);
        allocid = 0xdead;
        EXPECT_EQ(s.run(attr, back, &allocid), s.status);
        words.push_back(allocid);
    }
    EXPECT_EQ(words[0], 0xdeadu);  // a failed get leaves the output alone
    EXPECT_EQ(words[3], 0x401u);
    EXPECT_EQ(words[8], 77u);
    EXPECT_EQ(std::memcmp(back, attr, 28), 0);
    EXPECT_EQ(ke_omci_tapi_tcont_num_get(&num), 0u);
    EXPECT_EQ(num, 8u);
    EXPECT_EQ(ke_omci_tapi_gemport_num_get(&num), 0u);
    EXPECT_EQ(num, 2u);
}

TEST_F(SimTest, LineWordsKeepWhatWasSet)
{
    uint32_t word = 0;
    EXPECT_EQ(ke_omci_tapi_gem_block_get(&word), 0u);
    EXPECT_EQ(word, 48u);
    EXPECT_EQ(ke_omci_tapi_gem_block_set(96), 0u);
    EXPECT_EQ(ke_omci_tapi_gem_block_set(0), smlsim::kBadValue);
    EXPECT_EQ(ke_omci_tapi_gem_block_get(&word), 0u);
    EXPECT_EQ(word, 96u);
    EXPECT_EQ(ke_omci_tapi_gemport_loopback_set(1, 2, 3), 0u);
    EXPECT_EQ(sim->state().pon.loopback, (std::array<uint32_t, 3>{1, 2, 3}));
    sim->state().pon.pon_mode = 2;
    EXPECT_EQ(ke_omci_tapi_gponmode_get(&word), 0u);
    EXPECT_EQ(word, 2u);
}

// The remote names the library's file holds: every "ke_ke_..._call" string
// but the library's own served calls.
std::set<std::string> names_the_library_calls()
{
    Dl_info info{};
    EXPECT_NE(dladdr(reinterpret_cast<void *>(&ke_omci_tapi_tcont_set), &info), 0);
    std::ifstream in(info.dli_fname, std::ios::binary);
    std::string image((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::set<std::string> names;
    for (size_t at = image.find("ke_ke_"); at != std::string::npos; at = image.find("ke_ke_", at + 1)) {
        std::string name(image.c_str() + at);
        if (name.size() > 11 && name.compare(name.size() - 5, 5, "_call") == 0 &&
            name.rfind("ke_ke_omci_", 0) != 0)
            names.insert(name);
    }
    return names;
}

TEST_F(SimTest, ServesEveryRemoteNameTheLibraryCallsAndNoOther)
{
    std::set<std::string> rows;
    for (const smlsim::Procedure *p : smlsim::all_procedures())
        EXPECT_TRUE(rows.insert(p->name).second) << p->name << " has two rows";
    std::set<std::string> called = names_the_library_calls();
    EXPECT_GT(called.size(), 50u);
    EXPECT_EQ(rows, called);
}

TEST_F(SimTest, EveryProcedureRefusesANullBufferOrAnotherLength)
{
    for (const smlsim::Procedure *p : smlsim::all_procedures()) {
        SCOPED_TRACE(p->name);
        ASSERT_NE(p->handle, nullptr);
        EXPECT_TRUE(p->layout == nullptr || ketool::layout_valid(*p->layout));
        std::vector<uint8_t> buf(p->len + 1, 0x5a);
        for (uint32_t len : {p->len - 1, p->len + 1, 0u}) {
            if (len == p->len || len > p->len + 1)
                continue;
            EXPECT_EQ(ke_ipc_call(p->name, buf.data(), len), smlsim::kRefused);
            EXPECT_EQ(buf, std::vector<uint8_t>(p->len + 1, 0x5a));  // untouched
        }
        // A procedure without a record takes the null buffer.
        EXPECT_EQ(ke_ipc_call(p->name, nullptr, p->len), p->len == 0 ? 0u : smlsim::kRefused);
    }
    EXPECT_NE(logged().find("ke_ke_sml_gpon_tcont_set_call len=7 status=0x72200008 refused: "
                            "length 7, expected 8\n"),
              std::string::npos);
    EXPECT_NE(logged().find("ke_ke_board_info_get_call len=956 status=0x72200008 refused: "
                            "length 956 (null buffer), expected 956\n"),
              std::string::npos);
    EXPECT_NE(logged().find("ke_ke_sml_gpon_pon_stop_call len=1 status=0x72200008 refused: "
                            "length 1, expected 0\n"
                            "ke_ke_sml_gpon_pon_stop_call len=0 status=0x0 (no record)\n"),
              std::string::npos);
}

TEST_F(SimTest, LogsEveryCallWithAShortDecode)
{
    uint8_t attr[28] = {0xaa, 0xbb};
    ke_omci_tapi_tcont_set(1, 0x400);
    ke_omci_tapi_tcont_del(2);
    ke_omci_tapi_gemport_set(0x101, attr);
    EXPECT_EQ(logged(),
              "ke_ke_sml_gpon_tcont_set_call len=8 status=0x0 tcont=1 allocid=0x400\n"
              "ke_ke_sml_gpon_tcont_del_call len=4 status=0x72400001 tcont=2\n"
              "ke_ke_sml_gpon_gemport_set_call len=32 status=0x0 gemport=0x101 "
              "attr=[aa bb 00 00 00 00 00 00 ...]\n");
}

// ---- The device profile --------------------------------------------------

std::vector<uint8_t> reply(const char *name, uint32_t len)
{
    std::vector<uint8_t> buf(len, 0xcc);
    EXPECT_EQ(ke_ipc_call(name, buf.data(), len), 0u);
    return buf;
}

std::vector<uint8_t> slice(const std::vector<uint8_t> &b, size_t off, size_t n)
{
    return std::vector<uint8_t>(b.begin() + off, b.begin() + off + n);
}

std::vector<uint8_t> text(const std::string &s, size_t width)
{
    std::vector<uint8_t> out(width, 0);
    std::memcpy(out.data(), s.data(), s.size());
    return out;
}

TEST_F(SimTest, ProfileKeysLandWhereTheLibraryReadsThem)
{
    start(with("product_type = hgu\n"
               "user_ports = 2   # two ports\n"
               "sn = ABCD1234abcd\n"
               "mac = 00:11:22:aa:bb:cc\n"
               "info_b = \"V2.3 beta\"\n"
               "info_e = 0x10\n"
               "board_0 = 7\n"
               "board_3 = 0xffffffff\n"));
    std::vector<uint8_t> sys = reply("ke_ke_sysinfo_data_get_call", 720);
    std::vector<uint8_t> board = reply("ke_ke_board_info_get_call", 956);
    struct Case {
        const std::vector<uint8_t> *image;
        size_t off;
        std::vector<uint8_t> bytes;
    };
    const std::vector<Case> cases = {
        {&sys, 255, text("hgu", 12)},
        {&sys, 48, {'A', 'B', 'C', 'D', 0x12, 0x34, 0xab, 0xcd}},
        {&sys, 66, {0x00, 0x11, 0x22, 0xaa, 0xbb, 0xcc}},
        {&sys, 387, text("V2.3 beta", 14)},
        {&sys, 484, ketest::words({0x10})},
        {&sys, 215, text("KEON", 4)},  // defaults stay
        {&sys, 684, ketest::words({0})},
        {&board, 0, ketest::words({7, 2, 0, 0xffffffff})},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.off);
        EXPECT_EQ(slice(*c.image, c.off, c.bytes.size()), c.bytes);
    }
    // Nothing the profile names: zero, never the caller's bytes.
    EXPECT_EQ(slice(sys, 700, 20), std::vector<uint8_t>(20, 0));
    EXPECT_EQ(slice(board, 16, 940), std::vector<uint8_t>(940, 0));
}

TEST_F(SimTest, DefaultProfileIsAnSfuWithFourPorts)
{
    std::vector<uint8_t> sys = reply("ke_ke_sysinfo_data_get_call", 720);
    std::vector<uint8_t> board = reply("ke_ke_board_info_get_call", 956);
    EXPECT_EQ(slice(sys, 255, 4), text("SFU", 4));
    EXPECT_EQ(ketest::u32_at(board, 4), 4u);
    EXPECT_EQ(slice(sys, 48, 4), text("KEON", 4));
}

TEST_F(SimTest, BadProfilesNameTheLine)
{
    struct Case {
        const char *text;
        const char *why;
    };
    const std::vector<Case> cases = {
        {"# fine\nsize = 3\n", "line 2: unknown key size"},
        {"user_ports\n", "line 1: expected key = value"},
        {"user_ports = four\n", "line 1: user_ports: not a number that fits 4 bytes: four"},
        {"user_ports = 0x100000000\n", "line 1: user_ports: not a number that fits 4 bytes: 0x100000000"},
        {"\n\nproduct_type = ABCDEFGHIJKLM\n", "line 3: product_type: longer than 12 characters"},
        {"sn = KEON123\n", "line 1: sn: expected four vendor letters and eight hex digits: KEON123"},
        {"sn = KEON1234567G\n", "line 1: sn: expected four vendor letters and eight hex digits: KEON1234567G"},
        {"mac = 00:11:22:33:44\n", "line 1: mac: expected 6 hex bytes: 00:11:22:33:44"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.text);
        Profile p = smlsim::default_profile();
        std::string why;
        EXPECT_FALSE(smlsim::apply_profile(c.text, &p, &why));
        EXPECT_EQ(why, c.why);
    }
}

TEST_F(SimTest, PrintedProfileLoadsBackToTheSameReplies)
{
    Profile edited = with("product_type = \"Other type\"\nsn = ZZZZ0000FFFF\nmac = 02:00:00:00:00:09\n"
                          "id_c = \"\"\ngemports = 9\n");
    Profile loaded = smlsim::default_profile();
    std::string why;
    ASSERT_TRUE(smlsim::apply_profile(smlsim::profile_text(edited), &loaded, &why)) << why;
    EXPECT_EQ(loaded.sysinfo, edited.sysinfo);
    EXPECT_EQ(loaded.board, edited.board);
    EXPECT_EQ(loaded.settings, edited.settings);
    EXPECT_NE(smlsim::profile_text(edited).find("\nsn = ZZZZ0000FFFF\n"), std::string::npos);
}

}  // namespace
