// The sml service simulator, driven in process through the library: the
// serving convention on every procedure, its call log, the device profile,
// and its state model (line, keys, bridge, QoS, counters, ports, flash),
// each a round trip a user would expect.
#include <dlfcn.h>

#include <cstdio>
#include <cstring>
#include <functional>
#include <set>

#include "aes_cmac.h"
#include "ke_omci_tapi/bridge_qos.h"
#include "ke_omci_tapi/device.h"
#include "ke_omci_tapi/pon.h"
#include "ke_omci_tapi/stat.h"
#include "platform.h"
#include "process.h"
#include "sim.h"
#include "stub_test.h"
#include "text.h"

namespace {

using smlsim::kBadValue;
using smlsim::kInUse;
using smlsim::kNoObject;
using smlsim::Profile;

class SimTest : public ketest::StubTest {
protected:
    void SetUp() override
    {
        StubTest::SetUp();
        log = open_memstream(&log_text, &log_len);
        start(smlsim::default_profile());
        for (const char *file : {"section0.bin", "section1.bin", "boot_flag"})
            std::remove((state().flash.dir + "/" + file).c_str());
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
    smlsim::SimState &state() { return sim->state(); }

    std::unique_ptr<smlsim::Sim> sim;
    FILE *log = nullptr;
    char *log_text = nullptr;
    size_t log_len = 0;
};

// One call of a sequence: what it does and the status it must answer.
struct Step {
    const char *what;
    uint32_t status;
    std::function<uint32_t()> run;
};

void run_steps(const std::vector<Step> &steps)
{
    for (const Step &s : steps) {
        SCOPED_TRACE(s.what);
        EXPECT_EQ(s.run(), s.status);
    }
}

// ---- Serving -------------------------------------------------------------

// The remote names the library's file holds: every "ke_ke_..._call" string
// but the library's own served calls.
std::set<std::string> names_the_library_calls()
{
    Dl_info info{};
    EXPECT_NE(dladdr(reinterpret_cast<void *>(&ke_omci_tapi_tcont_set), &info), 0);
    std::string image = ketest::read_file(info.dli_fname);
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
               "info_b = \"V2.3 #beta\"  # quoted, the text keeps its '#'\n"
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
        {&sys, 387, text("V2.3 #beta", 14)},
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

// What --print-profile writes loads back, every key as it was.
TEST_F(SimTest, PrintedProfileLoadsBackToTheSameReplies)
{
    Profile edited = with("product_type = \"Other type\"\nsn = ZZZZ0000FFFF\nmac = 02:00:00:00:00:09\n"
                          "id_c = \"\"\ninfo_b = \"V#2\"\ngemports = 9\n");
    Profile loaded = smlsim::default_profile();
    std::string why;
    ASSERT_TRUE(smlsim::apply_profile(smlsim::profile_text(edited), &loaded, &why)) << why;
    EXPECT_EQ(loaded.sysinfo, edited.sysinfo);
    EXPECT_EQ(loaded.board, edited.board);
    EXPECT_EQ(loaded.settings, edited.settings);
}

TEST_F(SimTest, PortTypeComesFromTheProfile)
{
    struct Case {
        const char *type;
        uint32_t status;
        uint16_t instid;
    };
    const std::vector<Case> cases = {{"0", 0, 3}, {"2", 0, 0x103}, {"3", KE_PORT_TYPE_UNKNOWN, 0}};
    for (const Case &c : cases) {
        SCOPED_TRACE(c.type);
        start(with(std::string("port_type = ") + c.type));
        uint16_t instid = 0;
        EXPECT_EQ(ke_omci_tapi_port_pptpinstid_get(2, &instid), c.status);
        EXPECT_EQ(instid, c.instid);
    }
}

// ---- The line --------------------------------------------------------------

st_gem_map_param mapping(uint32_t vlan, uint32_t gemport, uint32_t tcont)
{
    return st_gem_map_param{0x6, vlan, 3, 1, gemport, tcont};
}

TEST_F(SimTest, TcontsGemportsAndMappingsExistBetweenSetAndDelete)
{
    start(with("tconts = 8\ngemports = 2\nonu_id = 77\n"));
    uint8_t attr[KE_GEMPORT_ATTR_LEN];
    for (size_t i = 0; i < sizeof attr; ++i)
        attr[i] = static_cast<uint8_t>(i + 1);
    uint8_t back[KE_GEMPORT_ATTR_LEN] = {};
    uint32_t allocid = 0, onu_id = 0, scratch = 0;
    st_gem_map_param got = mapping(200, 0, 0);
    auto map_set = [](uint32_t vlan, uint32_t tcont) {
        auto m = mapping(vlan, 0x101, tcont);
        return ke_omci_tapi_map_set(&m);
    };
    auto map_del = [] { auto m = mapping(200, 0x101, 1); return ke_omci_tapi_map_del(&m); };
    run_steps({
        {"T-CONT get before set", 1, [&] { return ke_omci_tapi_tcont_get(3, &scratch); }},
        {"T-CONT delete before set", kNoObject, [] { return ke_omci_tapi_tcont_del(3); }},
        {"T-CONT set", 0, [] { return ke_omci_tapi_tcont_set(3, 0x401); }},
        {"index beyond the line's T-CONTs", 1, [] { return ke_omci_tapi_tcont_set(8, 0x402); }},
        {"Alloc-ID beyond the range", 1, [] { return ke_omci_tapi_tcont_set(4, 0x4000); }},
        {"Alloc-ID of another T-CONT", 1, [] { return ke_omci_tapi_tcont_set(4, 0x401); }},
        {"set again, new Alloc-ID", 0, [] { return ke_omci_tapi_tcont_set(3, 0x402); }},
        {"T-CONT get", 0, [&] { return ke_omci_tapi_tcont_get(3, &allocid); }},
        {"T-CONT 0 reads the ONU-ID", 0, [&] { return ke_omci_tapi_tcont_get(0, &onu_id); }},
        {"T-CONT delete", 0, [] { return ke_omci_tapi_tcont_del(3); }},
        {"T-CONT get after delete", 1, [&] { return ke_omci_tapi_tcont_get(3, &scratch); }},
        {"GEM port get before set", 1, [&] { return ke_omci_tapi_gemport_get(0x101, back); }},
        {"mapping to a GEM port that does not exist", 1, [&] { return map_set(200, 1); }},
        {"GEM port set", 0, [&] { return ke_omci_tapi_gemport_set(0x101, attr); }},
        {"GEM port get", 0, [&] { return ke_omci_tapi_gemport_get(0x101, back); }},
        {"second GEM port", 0, [&] { return ke_omci_tapi_gemport_set(0x102, attr); }},
        {"third GEM port: the line offers two", 1, [&] { return ke_omci_tapi_gemport_set(0x103, attr); }},
        {"GEM port beyond the range", 1, [&] { return ke_omci_tapi_gemport_set(0xffff, attr); }},
        {"mapping get before set", kNoObject, [&] { return ke_omci_tapi_map_get(&got); }},
        {"mapping", 0, [&] { return map_set(200, 1); }},
        {"mapping to a T-CONT beyond the line's", 1, [&] { return map_set(201, 8); }},
        {"mapping get", 0, [&] { return ke_omci_tapi_map_get(&got); }},
        {"another key is another mapping", kNoObject,
         [] { auto m = mapping(201, 0, 0); return ke_omci_tapi_map_get(&m); }},
        {"the mapped GEM port cannot go", kInUse, [] { return ke_omci_tapi_gemport_del(0x101); }},
        {"mapping delete", 0, map_del},
        {"mapping delete again", kNoObject, map_del},
        {"GEM port delete", 0, [] { return ke_omci_tapi_gemport_del(0x101); }},
        {"GEM port delete again", kNoObject, [] { return ke_omci_tapi_gemport_del(0x101); }},
        {"room again for a new one", 0, [&] { return ke_omci_tapi_gemport_set(0x103, attr); }},
    });
    EXPECT_EQ(allocid, 0x402u);
    EXPECT_EQ(onu_id, 77u);
    EXPECT_EQ(std::memcmp(back, attr, sizeof attr), 0);
    EXPECT_EQ(got.ui_gemport, 0x101u);
    EXPECT_EQ(got.ui_tcont, 1u);
    EXPECT_TRUE(state().map.maps.empty());
    uint32_t num = 0;
    EXPECT_EQ(ke_omci_tapi_tcont_num_get(&num), 0u);
    EXPECT_EQ(num, 8u);
    EXPECT_EQ(ke_omci_tapi_gemport_num_get(&num), 0u);
    EXPECT_EQ(num, 2u);
}

TEST_F(SimTest, LineStartBringsOperationAlarmsAndOpticalStatus)
{
    uint32_t sta[5] = {7, 7, 7, 7, 7};
    uint8_t alarm[KE_ALARM_LEN];
    uint8_t param[KE_PON_START_LEN];
    std::memset(param, 0x3c, sizeof param);

    EXPECT_EQ(ke_omci_tapi_optical_attr_get(0, sta), KE_ERR_NOT_OPERATING);
    EXPECT_EQ(sta[0], 7u);
    ASSERT_EQ(ke_omci_tapi_gpon_alarm_get(alarm), 0u);
    EXPECT_EQ(ketest::u32_at(ketest::bytes_of(alarm), 0), 1u);  // loss of signal

    ASSERT_EQ(ke_omci_tapi_pon_start(param), 0u);
    EXPECT_EQ(state().line.regstate, REGSTATE_O5);
    EXPECT_EQ(state().line.start_param[63], 0x3c);
    EXPECT_EQ(ke_omci_tapi_optical_attr_get(0, sta), 0u);
    EXPECT_EQ(std::vector<uint32_t>(sta, sta + 5),
              (std::vector<uint32_t>{11520, 33000, 6000, 20000, 1000}));
    ASSERT_EQ(ke_omci_tapi_gpon_alarm_get(alarm), 0u);
    EXPECT_EQ(ketest::bytes_of(alarm), std::vector<uint8_t>(KE_ALARM_LEN, 0));

    EXPECT_EQ(ke_omci_tapi_pon_stop(), 0u);
    EXPECT_EQ(ke_omci_tapi_optical_attr_get(0, sta), KE_ERR_NOT_OPERATING);
    EXPECT_EQ(ke_omci_tapi_optical_attr_get(1, sta), 0u);  // forced

    uint8_t info[KE_OPTICAL_INFO_LEN];
    ASSERT_EQ(ke_omci_tapi_optical_info_get(info), 0u);
    EXPECT_STREQ(reinterpret_cast<const char *>(info), "KE OPTICS");
    EXPECT_EQ(ketest::u32_at(ketest::bytes_of(info), 48), 1310u);

    uint32_t word = 2;
    EXPECT_EQ(ke_omci_tapi_gpon_set_mode(&word), 0u);
    word = 0;
    EXPECT_EQ(ke_omci_tapi_gponmode_get(&word), 0u);
    EXPECT_EQ(word, 2u);
    EXPECT_EQ(ke_omci_tapi_gem_block_set(96), 0u);
    EXPECT_EQ(ke_omci_tapi_gem_block_set(0), kBadValue);
    EXPECT_EQ(ke_omci_tapi_gem_block_get(&word), 0u);
    EXPECT_EQ(word, 96u);
    EXPECT_EQ(ke_omci_tapi_gemport_loopback_set(1, 2, 3), 0u);
    EXPECT_EQ(state().pon.loopback, (std::array<uint32_t, 3>{1, 2, 3}));
}

TEST_F(SimTest, AesCmacMatchesTheKnownAnswers)
{
    const smlsim::Block key = {0x2b, 0x7e, 0x15, 0x16, 0x28, 0xae, 0xd2, 0xa6,
                               0xab, 0xf7, 0x15, 0x88, 0x09, 0xcf, 0x4f, 0x3c};
    std::vector<uint8_t> msg;
    ASSERT_TRUE(ketool::parse_hex("6bc1bee22e409f96e93d7e117393172aae2d8a571e03ac9c9eb76fac45af8e51"
                                  "30c81c46a35ce411e5fbc1191a0a52eff69f2445df4f9b17ad2b417be66c3710",
                                  &msg));
    const std::pair<size_t, const char *> cases[] = {
        {0, "bb 1d 69 29 e9 59 37 28 7f a3 7d 12 9b 75 67 46"},
        {16, "07 0a 16 b4 6b 4d 41 44 f7 9b dd 9d d0 4a 28 7c"},
        {40, "df a6 67 47 de 9a e6 30 30 ca 32 61 14 97 c8 27"},
        {64, "51 f0 be bf 7e 3b 9d 92 fc 49 74 17 79 36 3c fe"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(ketool::hex(smlsim::aes_cmac(key, msg.data(), c.first).data(), 16), c.second);
}

TEST_F(SimTest, KeysAndTimeOfDayAreKeptAndChecked)
{
    st_aes_cmac rec;
    for (size_t i = 0; i < sizeof rec; ++i)
        reinterpret_cast<uint8_t *>(&rec)[i] = static_cast<uint8_t>(i);
    const uint8_t msk[16] = {0x2b, 0x7e, 0x15, 0x16, 0x28, 0xae, 0xd2, 0xa6,
                             0xab, 0xf7, 0x15, 0x88, 0x09, 0xcf, 0x4f, 0x3c};
    const uint8_t key8[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    const uint8_t key17[17] = {};
    // 2^32 + 5 seconds, then nanoseconds of one second too many.
    const uint8_t tod[KE_TOD_LEN] = {0, 0, 1, 2, 0, 1, 0, 0, 0, 5, 0, 0, 2, 0};
    const uint8_t bad_tod[KE_TOD_LEN] = {0, 0, 1, 2, 0, 1, 0, 0, 0, 5, 0x3b, 0x9a, 0xca, 0x00};
    run_steps({
        {"CMAC before any master session key", 1, [&] { return ke_omci_tapi_aes_cmac(&rec); }},
        {"master session key", 0, [&] { return ke_omci_tapi_msk_set(msk); }},
        {"CMAC", 0, [&] { return ke_omci_tapi_aes_cmac(&rec); }},
        {"multicast key of 8 bytes", 0, [&] { return ke_omci_tapi_mckey_set(2, 8, key8); }},
        {"multicast key of 17 bytes", kBadValue, [&] { return ke_omci_tapi_mckey_set(3, 17, key17); }},
        {"delete of a key never set", kNoObject, [] { return ke_omci_tapi_mckey_del(3); }},
        {"time of day", 0, [&] { return ke_omci_tapi_time_set(tod); }},
        {"a second of nanoseconds", kBadValue, [&] { return ke_omci_tapi_time_set(bad_tod); }},
    });
    smlsim::Block want = smlsim::aes_cmac(state().line.msk, rec.auc_input, sizeof rec.auc_input);
    EXPECT_EQ(std::memcmp(rec.auc_cmac, want.data(), 16), 0);
    EXPECT_EQ(rec.auc_input[147], 147);  // the input comes back as sent
    ASSERT_EQ(state().line.mckeys.count(2), 1u);
    EXPECT_EQ(state().line.mckeys[2].first, 8u);
    EXPECT_EQ(state().line.mckeys[2].second[7], 8);
    EXPECT_EQ(state().line.mckeys[2].second[8], 0);
    EXPECT_EQ(ke_omci_tapi_mckey_del(2), 0u);
    EXPECT_TRUE(state().line.mckeys.empty());
    EXPECT_EQ(state().line.tod.ui_superframe, 258u);
    EXPECT_EQ(state().line.tod.ui_sec_upper, 1u);
    EXPECT_EQ(state().line.tod.ui_sec_lower, 5u);
}

// ---- Bridge and QoS --------------------------------------------------------

TEST_F(SimTest, BridgeLearningAgeingAndIsolation)
{
    uint32_t learn = 9;
    uint32_t age = 0;
    uint32_t isolate = 2;
    run_steps({
        {"learning is on at first", 0, [&] { return ke_omci_tapi_br_learn_get(1, &learn); }},
        {"switch it off", 0, [] { return ke_omci_tapi_br_learn_set(1, 0); }},
        {"limit", 0, [] { return ke_omci_tapi_br_num_set(1, 3); }},
        {"a port the unit does not have", 1, [] { return ke_omci_tapi_br_learn_set(4, 1); }},
        {"learning is a switch", 1, [] { return ke_omci_tapi_br_learn_set(1, 2); }},
        {"ageing below ten seconds", kBadValue, [] { return ke_omci_tapi_br_age_set(9); }},
        {"ageing", 0, [] { return ke_omci_tapi_br_age_set(600); }},
        {"ageing back", 0, [&] { return ke_omci_tapi_br_age_get(&age); }},
        {"isolation is a switch too", kBadValue, [&] { return ke_omci_tapi_br_enable(&isolate); }},
    });
    EXPECT_EQ(learn, 1u);
    EXPECT_EQ(state().bridge.ports[1].learn, 0u);     // kept by the limit's write
    EXPECT_EQ(state().bridge.ports[1].learn_num, 3u);  // kept by the switch's write
    EXPECT_EQ(age, 600u);
    isolate = 1;
    EXPECT_EQ(ke_omci_tapi_br_enable(&isolate), 0u);
    EXPECT_EQ(state().bridge.isolate, 1u);
}

TEST_F(SimTest, MacTablesShowWhatEachPortLearnedWithinItsLimit)
{
    ASSERT_EQ(ke_omci_tapi_br_num_set(2, 3), 0u);
    ASSERT_EQ(ke_omci_tapi_br_learn_set(3, 0), 0u);
    struct Case {
        uint32_t port;
        uint32_t capacity;
        uint32_t entries;
    };
    const std::vector<Case> cases = {
        {0, 32, 2}, {1, 32, 3}, {1, 2, 2}, {2, 32, 3}, {3, 32, 0}, {4, 32, 0},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.port);
        st_br_mac macs[BR_TABLE_MAX] = {};
        uint32_t n = c.capacity;
        EXPECT_EQ(ke_omci_tapi_br_table_get(c.port, &n, macs), 0u);
        ASSERT_EQ(n, c.entries);
        for (uint32_t i = 0; i < n; ++i) {
            const uint8_t mac[6] = {0x02, 0x1b, 0x21, 0x00, static_cast<uint8_t>(c.port),
                                    static_cast<uint8_t>(i + 1)};
            EXPECT_EQ(std::memcmp(macs[i].auc_mac, mac, 6), 0);
            EXPECT_EQ(macs[i].ui_info, 100u);
        }
    }
}

TEST_F(SimTest, MacFiltersAreKeyedByTheirAddress)
{
    auto filter = [](uint8_t last, uint8_t action) {
        std::array<uint8_t, KE_BR_FILTER_LEN> f{};
        f = {0x00, 0x11, 0x22, 0x33, 0x44, last, action};
        return f;
    };
    std::array<uint8_t, KE_BR_FILTER_LEN> got{};
    auto a = filter(1, 0), a2 = filter(1, 1), b = filter(2, 0);
    run_steps({
        {"get of a port without filters", 1, [&] { return ke_omci_tapi_br_filter_get(0, got.data()); }},
        {"A", 0, [&] { return ke_omci_tapi_br_filter_set(0, a.data()); }},
        {"B", 0, [&] { return ke_omci_tapi_br_filter_set(0, b.data()); }},
        {"A again, another action", 0, [&] { return ke_omci_tapi_br_filter_set(0, a2.data()); }},
        {"get: the first", 0, [&] { return ke_omci_tapi_br_filter_get(0, got.data()); }},
        {"delete A", 0, [&] { return ke_omci_tapi_br_filter_del(0, a.data()); }},
        {"delete A again", 1, [&] { return ke_omci_tapi_br_filter_del(0, a.data()); }},
    });
    EXPECT_EQ(state().bridge.ports[0].filters, (std::vector<smlsim::FilterEntry>{b}));
    ASSERT_EQ(ke_omci_tapi_br_filter_get(0, got.data()), 0u);
    EXPECT_EQ(got, b);
    for (uint8_t i = 3; i < 10; ++i) {
        auto f = filter(i, 0);
        EXPECT_EQ(ke_omci_tapi_br_filter_set(0, f.data()), 0u);
    }
    auto ninth = filter(10, 0);
    EXPECT_EQ(ke_omci_tapi_br_filter_set(0, ninth.data()), 1u);
    EXPECT_EQ(state().bridge.ports[0].filters.size(), 8u);
}

TEST_F(SimTest, RateLimitersAreNumberedByTheService)
{
    const uint32_t car_a[3] = {0, 0, 1000};
    const uint32_t car_b[3] = {0, 0, 2000};
    const uint32_t car_zero[3] = {0, 0, 0};
    uint32_t id_a = 0, id_b = 0, id_c = 0;
    uint32_t read[3] = {5, 5, 5};
    run_steps({
        {"create", 0, [&] { return ke_omci_tapi_car_set(&id_a, car_a); }},
        {"create another", 0, [&] { return ke_omci_tapi_car_set(&id_b, car_b); }},
        {"a rate of zero", 1, [&] { return ke_omci_tapi_car_set(&id_c, car_zero); }},
        {"read the first", 0, [&] { return ke_omci_tapi_car_get(id_a, read); }},
        {"release it", 0, [&] { return ke_omci_tapi_car_release(id_a); }},
        {"release it again", kNoObject, [&] { return ke_omci_tapi_car_release(id_a); }},
        {"read after release", 1, [&] { return ke_omci_tapi_car_get(id_a, read); }},
        {"create takes the freed number", 0, [&] { return ke_omci_tapi_car_set(&id_c, car_b); }},
    });
    EXPECT_EQ(id_a, 1u);
    EXPECT_EQ(id_b, 2u);
    EXPECT_EQ(id_c, 1u);
    EXPECT_EQ(std::vector<uint32_t>(read, read + 3), (std::vector<uint32_t>{5, 5, 1000}));
    for (uint32_t n = 3; n <= 64; ++n)
        ASSERT_EQ(ke_omci_tapi_car_set(&id_c, car_a), 0u) << n;
    EXPECT_EQ(ke_omci_tapi_car_set(&id_c, car_a), 1u);  // all 64 taken
}

TEST_F(SimTest, QueuesMarkingDscpAndPolicies)
{
    uint8_t attr[KE_QUEUE_ATTR_LEN];
    for (size_t i = 0; i < sizeof attr; ++i)
        attr[i] = static_cast<uint8_t>(0xa0 + i);
    uint8_t back[KE_QUEUE_ATTR_LEN];
    uint32_t num = 0;
    st_dscp dscp{};
    for (uint32_t point = 0; point < 64; ++point) {
        uint32_t priority = point >> 3;
        std::memcpy(dscp.auc_map + 4 * point, &priority, 4);
    }
    st_dscp bad_dscp = dscp;
    bad_dscp.auc_map[4 * 63] = 8;
    const uint8_t rule[KE_PRI_RULE_LEN] = {1, 2, 3};
    run_steps({
        {"a never-set queue reads zero", 0, [&] { return ke_omci_tapi_queue_get(1, 7, back); }},
        {"queue of a port", 0, [&] { return ke_omci_tapi_queue_set(1, 7, attr); }},
        {"queue beyond the owner's", 1, [&] { return ke_omci_tapi_queue_set(1, 8, attr); }},
        {"queue of a T-CONT", 0, [&] { return ke_omci_tapi_queue_set(0x8000 + 31, 0, attr); }},
        {"an owner that does not exist", 1, [&] { return ke_omci_tapi_queue_num_get(0x8000 + 32, &num); }},
        {"count", 0, [&] { return ke_omci_tapi_queue_num_get(0, &num); }},
        {"DSCP map", 0, [&] { return ke_omci_tapi_dscp_map_set(&dscp); }},
        {"DSCP map with priority 8", 1, [&] { return ke_omci_tapi_dscp_map_set(&bad_dscp); }},
        {"marking rule", 0, [&] { return ke_omci_tapi_pri_marking_set(2, rule); }},
        {"marking rule delete", 0, [&] { return ke_omci_tapi_pri_marking_del(2, rule); }},
        {"marking rule delete again", 1, [&] { return ke_omci_tapi_pri_marking_del(2, rule); }},
        {"T-CONT policy", 0, [] { return ke_omci_tapi_tcont_policy_set(3, 2); }},
        {"T-CONT policy beyond the known", 1, [] { return ke_omci_tapi_tcont_policy_set(3, 3); }},
    });
    EXPECT_EQ(num, 8u);
    ASSERT_EQ(ke_omci_tapi_queue_get(1, 7, back), 0u);
    EXPECT_EQ(std::memcmp(back, attr, sizeof attr), 0);
    EXPECT_EQ(state().qos.dscp[4 * 63], 7);
    EXPECT_EQ(state().qos.tcont_policy[3], 2u);
}

// ---- Counters and ports ----------------------------------------------------

TEST_F(SimTest, LineCountersAdvanceWhileTheLineOperates)
{
    uint8_t attr[KE_GEMPORT_ATTR_LEN] = {};
    ASSERT_EQ(ke_omci_tapi_gemport_set(0x120, attr), 0u);
    // FEC and TC stand for the line's counter sets, which share one rule.
    uint8_t fec[2][20];
    uint32_t tc[2][8];
    st_gemport_stat gem[2];
    auto read_all = [&](int i) {
        EXPECT_EQ(ke_omci_tapi_stat_fec_get(fec[i]), 0u);
        EXPECT_EQ(ke_omci_tapi_stat_tc_get(tc[i]), 0u);
        EXPECT_EQ(ke_omci_tapi_stat_gemport_get(0x120, &gem[i]), 0u);
    };
    read_all(0);
    read_all(1);
    EXPECT_EQ(std::memcmp(fec[0], fec[1], 20), 0);  // no traffic before the line starts
    EXPECT_EQ(tc[1][3], 0u);

    uint8_t param[KE_PON_START_LEN] = {};
    ASSERT_EQ(ke_omci_tapi_pon_start(param), 0u);
    read_all(0);
    read_all(1);
    EXPECT_GT(ketest::u32_at(ketest::bytes_of(fec[1]), 12), ketest::u32_at(ketest::bytes_of(fec[0]), 12));
    EXPECT_GT(tc[1][3], tc[0][3]);
    EXPECT_GT(gem[1].ui_counter_2, gem[0].ui_counter_2);
    // The 64-bit received bytes arrive big-endian, already past 2^32.
    auto be64 = [](const uint64_t &v) {
        const auto *b = reinterpret_cast<const uint8_t *>(&v);
        uint64_t out = 0;
        for (int i = 0; i < 8; ++i)
            out = (out << 8) | b[i];
        return out;
    };
    EXPECT_GT(be64(gem[0].ull_counter_1), 0xffffffffull);
    EXPECT_EQ(be64(gem[1].ull_counter_1) - be64(gem[0].ull_counter_1), 1536000u);
    EXPECT_EQ(be64(gem[1].ull_counter_2) - be64(gem[0].ull_counter_2), 768000u);
    EXPECT_EQ(ke_omci_tapi_stat_gemport_get(0x121, &gem[0]), 1u);  // no such GEM port
}

TEST_F(SimTest, PortCountersAdvanceWhileTheLinkIsUp)
{
    st_eth_stat eth[2];
    st_brport_stat br[2];
    ASSERT_EQ(ke_omci_tapi_stat_eth_get(2, &eth[0]), 0u);
    ASSERT_EQ(ke_omci_tapi_stat_brport_get(2, &br[0]), 0u);
    ASSERT_EQ(ke_omci_tapi_stat_eth_get(2, &eth[1]), 0u);
    ASSERT_EQ(ke_omci_tapi_stat_brport_get(2, &br[1]), 0u);
    EXPECT_EQ(eth[1].aull_counter[0] - eth[0].aull_counter[0], 2000u);  // two reads between
    EXPECT_GT(br[1].aui_counter[0], br[0].aui_counter[0]);
    EXPECT_GT(br[1].aui_counter[3], br[0].aui_counter[3]);

    ASSERT_EQ(ke_omci_tapi_port_state_set(2, 1), 0u);  // locked: the link goes down
    ASSERT_EQ(ke_omci_tapi_stat_eth_get(2, &eth[0]), 0u);
    ASSERT_EQ(ke_omci_tapi_stat_eth_get(2, &eth[1]), 0u);
    EXPECT_EQ(eth[1].aull_counter[0], eth[0].aull_counter[0]);
    EXPECT_EQ(ke_omci_tapi_stat_eth_get(4, &eth[0]), 1u);  // four user ports: 0 to 3
}

TEST_F(SimTest, PortReportsTheConfiguredModeOnceTheLinkIsUp)
{
    uint32_t word = 99;
    struct Case {
        const char *what;
        std::function<uint32_t()> change;
        uint32_t status;
        uint32_t link;
        uint32_t mode;
    };
    const std::vector<Case> cases = {
        {"unlocked, auto", [] { return 0u; }, 0, 1, 0x03},
        {"100 Mbit/s half duplex", [] { return ke_omci_tapi_port_ethmode_set(1, 0x12); }, 0, 1, 0x12},
        {"locked", [] { return ke_omci_tapi_port_state_set(1, 1); }, 0, 0, 0},
        {"mode while locked", [] { return ke_omci_tapi_port_ethmode_set(1, 0x02); }, 0, 0, 0},
        {"unlocked again", [] { return ke_omci_tapi_port_state_set(1, 0); }, 0, 1, 0x02},
        {"a mode that does not exist", [] { return ke_omci_tapi_port_ethmode_set(1, 0x05); }, 1, 1, 0x02},
        {"a state that does not exist", [] { return ke_omci_tapi_port_state_set(1, 2); }, 1, 1, 0x02},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(c.change(), c.status);
        EXPECT_EQ(ke_omci_tapi_port_link_get(1, &word), 0u);
        EXPECT_EQ(word, c.link);
        EXPECT_EQ(ke_omci_tapi_port_ethmode_get(1, &word), 0u);
        EXPECT_EQ(word, c.mode);
    }
    EXPECT_EQ(ke_omci_tapi_port_incar_set(1, 1, 2, 3, 4), 0u);
    EXPECT_EQ(ke_omci_tapi_port_outcar_set(1, 5), 0u);
    EXPECT_EQ(ke_omci_tapi_port_pause_set(1, 1), 0u);
    EXPECT_EQ(ke_omci_tapi_port_loopback_set(1, 3), 0u);
    const st_port_attr &a = state().port.ports[1];
    EXPECT_EQ(std::vector<uint32_t>(a.aui_incar, a.aui_incar + 4), (std::vector<uint32_t>{1, 2, 3, 4}));
    EXPECT_EQ(a.ui_outcar, 5u);
    EXPECT_EQ(a.ui_reserved, 1518u);
    EXPECT_EQ(ke_omci_tapi_port_pause_get(1, &word), 0u);
    EXPECT_EQ(word, 1u);
    EXPECT_EQ(ke_omci_tapi_port_loopback_get(1, &word), 0u);
    EXPECT_EQ(word, 3u);
    EXPECT_EQ(ke_omci_tapi_port_state_get(9, &word), 1u);
}

// ---- The flash --------------------------------------------------------

std::string image_of(size_t len, uint8_t seed)
{
    std::string image(len, '\0');
    for (size_t i = 0; i < len; ++i)
        image[i] = static_cast<char>(seed + i * 7 + (i >> 8));
    return image;
}

// Downloads image in shards of shard bytes; the status of the first
// call that failed, else 0.
uint32_t download(const std::string &image, size_t shard, uint32_t word)
{
    const uint8_t info[KE_UPGRADE_INFO_LEN] = {1, 2, 3};
    uint32_t status = ke_omci_tapi_upgrade_start(word, info);
    for (size_t at = 0; status == 0 && at < image.size(); at += shard)
        status = ke_omci_tapi_upgrade_write(image.data() + at,
                                            static_cast<uint32_t>(std::min(shard, image.size() - at)));
    return status;
}

TEST_F(SimTest, DownloadsWriteTheOtherSectionAndSwitchTheBootFlag)
{
    auto section = [&](uint32_t n) { return ketest::read_file(smlsim::section_path(state().flash, n)); };
    struct Case {
        size_t len;
        size_t shard;
        uint32_t section;
    };
    // The flag starts at 0: section 1 first, then 0, then 1 again.
    const std::vector<Case> cases = {
        {100000, UPGRADE_SHARD_MAX, 1},
        {3 * UPGRADE_SHARD_MAX, UPGRADE_SHARD_MAX, 0},
        {5000, 999, 1},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.len);
        std::string image = image_of(c.len, static_cast<uint8_t>(c.section + c.shard));
        EXPECT_EQ(download(image, c.shard, 0x77), 0u);
        EXPECT_TRUE(section(c.section) == image);
        std::string out = ketest::printed([] { EXPECT_EQ(ke_omci_tapi_upgrade_stop(), 0u); });
        EXPECT_EQ(out, "\r\n" + std::to_string(c.section) + " section will loading!!\r\n\n");
        EXPECT_EQ(ketest::read_file(state().flash.dir + "/boot_flag"), std::to_string(c.section) + "\n");
    }
    // The flash outlives the simulator: a new one boots section 1 and
    // downloads into section 0.
    start(smlsim::default_profile());
    uint32_t flag = 0;
    std::string last = section(1);
    EXPECT_EQ(download(image_of(10, 1), 10, 1), 0u);
    EXPECT_EQ(section(1), last);  // untouched
    EXPECT_EQ(section(0), image_of(10, 1));
    EXPECT_EQ(kestub::ipc_calls().back().name, "ke_ke_upgrade_image_sharding_write_call");
    ASSERT_EQ(ke_ipc_call("ke_ke_upgrade_flag_get_call", &flag, 4), 0u);
    EXPECT_EQ(flag, 1u);
}

TEST_F(SimTest, ShardsOutsideADownloadAreRefused)
{
    const uint8_t data[8] = {1};
    st_upgrade_start booted{0, 0, 0, {}};  // the flag is 0: section 0 runs
    st_upgrade_start other{1, 5, 0, {}};
    st_upgrade_shard stranger{6, 4, {}};
    st_upgrade_shard too_long{5, UPGRADE_SHARD_MAX + 1, {}};
    uint32_t flag = 2;
    run_steps({
        {"a shard before any start", 1, [&] { return ke_omci_tapi_upgrade_write(data, 8); }},
        {"the running section", kInUse,
         [&] { return ke_ipc_call("ke_ke_upgrade_sharding_start_call", &booted, sizeof booted); }},
        {"the other section", 0,
         [&] { return ke_ipc_call("ke_ke_upgrade_sharding_start_call", &other, sizeof other); }},
        {"a shard of another download", kBadValue,
         [&] { return ke_ipc_call("ke_ke_upgrade_image_sharding_write_call", &stranger, sizeof stranger); }},
        {"a shard longer than a shard", kBadValue,
         [&] { return ke_ipc_call("ke_ke_upgrade_image_sharding_write_call", &too_long, sizeof too_long); }},
        {"a flag naming no section", kBadValue,
         [&] { return ke_ipc_call("ke_ke_upgrade_flag_set_call", &flag, 4); }},
    });
    EXPECT_EQ(state().flash.written, 0u);
    EXPECT_EQ(ketest::read_file(smlsim::section_path(state().flash, 1)), "");
}

}  // namespace
