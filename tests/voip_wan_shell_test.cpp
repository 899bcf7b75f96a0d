// The uci toolkit: reading a value and adding a section through the
// shell and the scratch file, address and MAC arithmetic, slot counting.
#include <arpa/inet.h>

#include <cstring>

#include "ke_omci_tapi/voip_wan.h"
#include "uci_sandbox.h"

namespace {

using ketest::file_exists;
using ketest::kScratchFile;

class UciToolkit : public ketest::UciSandbox {
protected:
    void SetUp() override
    {
        UciSandbox::SetUp();
        write_config("network", "config interface 'lan'\n"
                                "\toption proto 'static'\n"
                                "\toption long 'abcdefghijklmnopqrstuvwxyz'\n"
                                "\toption empty ''\n");
    }
};

TEST_F(UciToolkit, GetReadsTheFirstLineAndRemovesTheScratchFile)
{
    char value[16];
    std::memset(value, 'x', sizeof value);
    EXPECT_EQ(omci_uci_get("network.lan.proto", value, sizeof value), 0);
    EXPECT_STREQ(value, "static");
    EXPECT_EQ(kestub::shell_commands(),
              std::vector<std::string>{"uci -q get network.lan.proto > /tmp/tmp_uci_value"});
    EXPECT_FALSE(file_exists(kScratchFile));

    // A section reads as its type; an empty value is still a value.
    EXPECT_EQ(omci_uci_get("network.lan", value, sizeof value), 0);
    EXPECT_STREQ(value, "interface");
    EXPECT_EQ(omci_uci_get("network.@interface[-1].empty", value, sizeof value), 0);
    EXPECT_STREQ(value, "");
}

TEST_F(UciToolkit, GetOfAMissingOptionFailsAndLeavesNoFileOpen)
{
    auto open_files = [] {
        namespace fs = std::filesystem;
        return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator{});
    };
    const auto before = open_files();
    char value[16];
    EXPECT_EQ(omci_uci_get("network.lan.nope", value, sizeof value), -1);
    EXPECT_EQ(open_files(), before);
}

TEST_F(UciToolkit, GetCutsALongValueAtTheBufferSize)
{
    struct { int size; const char *name; const char *value; } cases[] = {
        {27, "network.lan.long", "abcdefghijklmnopqrstuvwxyz"},  // line feed read and dropped
        {26, "network.lan.long", "abcdefghijklmnopqrstuvwxy"},   // cut, no line feed read
        {1, "network.lan.proto", ""},
    };
    for (const auto &c : cases) {
        char value[32];
        std::memset(value, 'x', sizeof value);
        EXPECT_EQ(omci_uci_get(c.name, value, c.size), 0) << c.size;
        EXPECT_STREQ(value, c.value) << c.size;
        EXPECT_EQ(value[c.size], 'x') << "wrote past the buffer, size " << c.size;
        EXPECT_FALSE(file_exists(kScratchFile)) << c.size;
    }
}

TEST_F(UciToolkit, TextThatMeansSomethingToTheShellRunsNothing)
{
    const char *hostile[] = {
        "network.lan;reboot", "network.lan|cat",  "network.lan&",      "$(reboot)",
        "`reboot`",           "network.lan>x",    "network.lan<x",     "network.'lan'",
        "network.\"lan\"",    "network\\.lan",    "network.l*",        "network.l?n",
        "network.lan\nid",    "network.lan\tx",   "network.{lan}",     "network.lan#",
        "~root",              "network.lan!",     "1.1.1.1;touch /tmp/pwned",
    };
    char value[16] = "untouched";
    for (const char *text : hostile) {
        EXPECT_EQ(omci_uci_get(text, value, sizeof value), -1) << text;
        EXPECT_EQ(omci_uci_add(text, value, sizeof value), -1) << text;
    }
    EXPECT_EQ(omci_uci_get(nullptr, value, sizeof value), -1);
    EXPECT_EQ(omci_uci_add(nullptr, value, sizeof value), -1);
    EXPECT_EQ(omci_uci_get("network.lan", nullptr, 16), -1);
    EXPECT_EQ(omci_uci_get("network.lan", value, 0), -1);
    EXPECT_EQ(omci_uci_add("network device", value, -1), -1);
    EXPECT_STREQ(value, "untouched");
    EXPECT_TRUE(kestub::shell_commands().empty());
}

TEST_F(UciToolkit, AddStagesASectionAndReadsItsName)
{
    char name[16];
    ASSERT_EQ(omci_uci_add("network device", name, sizeof name), 0);
    EXPECT_EQ(kestub::shell_commands(),
              std::vector<std::string>{"uci -q add network device > /tmp/tmp_uci_value"});
    EXPECT_FALSE(file_exists(kScratchFile));
    EXPECT_EQ(uci_get(std::string("network.") + name), "device");
    EXPECT_EQ(uci_get("network.@device[0]"), "device");
    EXPECT_EQ(config("network").find("device"), std::string::npos);  // not committed

    // A configuration uci does not know gives no name.
    EXPECT_EQ(omci_uci_add("nope device", name, sizeof name), -1);
}

// Stands in for a uci whose add answers with a scripted line.
std::string g_add_answer;
int answer_add(const char *command)
{
    if (std::strstr(command, "uci -q add ") == command)
        ketest::write_file(kScratchFile, g_add_answer);
    return 0;
}

TEST_F(UciToolkit, AddTakesOnlyAPlainSectionName)
{
    kestub::shell_serve(answer_add);
    struct { const char *answer; int ret; const char *name; } cases[] = {
        {"cfg01a2b3\n", 0, "cfg01a2b3"},
        {"pon_dev_7", 0, "pon_dev_7"},
        {"cfg01;reboot\n", -1, ""},
        {"cfg 01\n", -1, ""},
        {"cfg.01\n", -1, ""},
        {"\n", -1, ""},
        {"", -1, ""},
    };
    for (const auto &c : cases) {
        g_add_answer = c.answer;
        char name[16] = "untouched";
        EXPECT_EQ(omci_uci_add("network device", name, sizeof name), c.ret) << c.answer;
        // Nothing read leaves the buffer as it was; a refused name is cleared.
        EXPECT_STREQ(name, c.answer[0] == '\0' ? "untouched" : c.name) << c.answer;
    }
}

TEST(UciAddress, BytesAndDottedTextBothWays)
{
    struct {
        uint8_t addr[4];
        const char *text;
    } cases[] = {{{192, 168, 1, 10}, "192.168.1.10"},
                 {{0, 0, 0, 0}, "0.0.0.0"},
                 {{255, 255, 255, 255}, "255.255.255.255"}};
    for (const auto &c : cases) {
        char text[20];
        std::memset(text, 'x', sizeof text);
        EXPECT_EQ(omci_iptochar(c.addr, text, 16), 0u);
        EXPECT_STREQ(text, c.text);
        EXPECT_EQ(text[16], 'x');
        uint32_t word = __omci_chartoip(c.text);
        EXPECT_EQ(std::memcmp(&word, c.addr, 4), 0) << c.text;
    }
    char text[16] = "untouched";
    EXPECT_EQ(omci_iptochar(nullptr, text, sizeof text), 1u);
    EXPECT_EQ(omci_iptochar(cases[0].addr, nullptr, sizeof text), 1u);
    EXPECT_STREQ(text, "untouched");
    // A buffer one byte short of the text is left empty, never written past.
    char small[19];
    std::memset(small, 'x', sizeof small);
    EXPECT_EQ(omci_iptochar(cases[2].addr, small, 15), 0u);
    EXPECT_EQ(small[0], '\0');
    EXPECT_EQ(std::string(small + 15, 4), "xxxx");

    EXPECT_EQ(__omci_chartoip(nullptr), 0u);
    EXPECT_EQ(__omci_chartoip(""), 0u);
    EXPECT_EQ(__omci_chartoip("not an address"), 0xFFFFFFFFu);
    EXPECT_EQ(__omci_chartoip("1.2.3.256"), 0xFFFFFFFFu);
}

TEST(UciMac, OffsetCarriesIntoHigherBytesAndWrapsWithin48Bits)
{
    struct { uint32_t mac[6]; uint32_t offset; uint32_t want[6]; } cases[] = {
        {{0x00, 0x11, 0x22, 0x33, 0x44, 0xFF}, 1, {0x00, 0x11, 0x22, 0x33, 0x45, 0x00}},
        {{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, 1, {0, 0, 0, 0, 0, 0}},
        {{0x00, 0x11, 0x22, 0x33, 0x44, 0xFF}, 0x102, {0x00, 0x11, 0x22, 0x33, 0x46, 0x01}},
        {{0x02, 0x10, 0x18, 0x00, 0x00, 0x01}, 0, {0x02, 0x10, 0x18, 0x00, 0x00, 0x01}},
        {{0x00, 0x00, 0x00, 0xFF, 0xFF, 0xFE}, 0x10002, {0x00, 0x00, 0x01, 0x01, 0x00, 0x00}},
        {{0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC}, 0xFFFFFFFF, {0x12, 0x35, 0x56, 0x78, 0x9A, 0xBB}},
    };
    for (auto &c : cases) {
        mac_increase_with_offset(c.mac, c.offset);
        for (int i = 0; i < 6; ++i)
            EXPECT_EQ(c.mac[i], c.want[i]) << "offset " << c.offset << " byte " << i;
    }
    mac_increase_with_offset(nullptr, 1);  // no crash
}

TEST_F(UciToolkit, SlotCountReadsAllFourSlots)
{
    struct { const char *sections; uint32_t count; } cases[] = {
        {"", 0},
        {"config interface 'pon_1'\nconfig interface 'pon_3'\n", 2},
        {"config interface 'pon_3'\n", 1},
        {"config interface 'pon_4'\nconfig interface 'pon_2'\nconfig interface 'pon_1'\n"
         "config interface 'pon_3'\nconfig interface 'pon_5'\n",
         4},
    };
    std::vector<std::string> reads;
    for (int n = 1; n <= 4; ++n)
        reads.push_back("uci -q get network.pon_" + std::to_string(n) + " > /tmp/tmp_uci_value");
    for (const auto &c : cases) {
        restart();
        write_config("network", c.sections);
        uint32_t count = 99;
        EXPECT_EQ(igdCmConfGetEntryNumByUci(&count), 0u);
        EXPECT_EQ(count, c.count) << c.sections;
        EXPECT_EQ(kestub::shell_commands(), reads) << c.sections;
    }
    kestub::reset();
    EXPECT_EQ(igdCmConfGetEntryNumByUci(nullptr), 0x70000000u);
    EXPECT_TRUE(kestub::shell_commands().empty());
}

}  // namespace
