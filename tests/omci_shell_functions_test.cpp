// omci-shell's function table against the library: one row for every
// exported function, each fitting the function's C type; and the kinds of
// arguments and results those rows use, typed and shown.
#include <dlfcn.h>
#include <unistd.h>

#include <set>

#include "export_lists.h"
#include "functions.h"
#include "ke_omci_tapi/bridge_qos.h"
#include "ke_omci_tapi/device.h"
#include "ke_omci_tapi/pon.h"
#include "platform.h"
#include "shell_fixture.h"

namespace {

using ketest::ShellTest;
using omcishell::Param;

TEST(ShellRows, EveryExportedFunctionHasOneRowThatFitsIt)
{
    std::set<std::string> rows;
    for (const omcishell::Function *f : omcishell::all_functions()) {
        SCOPED_TRACE(f->name);
        std::vector<Param> params;
        std::string why;
        EXPECT_TRUE(omcishell::parse_params(f->params, &params, &why)) << why;
        EXPECT_TRUE(omcishell::fits(*f, params, &why)) << why;
        EXPECT_TRUE(rows.insert(f->name).second) << "listed twice";
    }
    EXPECT_TRUE(ketest::one_row_each(
        ketest::exported_functions(KE_EXPORTS_DIR,
                                   [](const char *name) { return dlsym(RTLD_DEFAULT, name); }),
        rows));
}

// Functions of known shapes, for rows that do and do not fit them.
uint32_t by_value(uint32_t a) { return a; }
uint32_t by_pointer(uint32_t *p) { return p != nullptr ? *p : 0; }
uint32_t reads_record(const st_tcont *t) { return t != nullptr ? t->ui_tcont : 0; }
void does_nothing() {}
int with_int(char *text, int size) { return text != nullptr ? size : -1; }

TEST(ShellRows, RowsThatDoNotFitTheirFunctionAreRefused)
{
    struct Case {
        omcishell::Function row;
        const char *why;  // nullptr: fits
    };
    const Case cases[] = {
        {KE_SHELL_FN(by_value, "in u32 a"), nullptr},
        {KE_SHELL_FN(by_value, "in count:a b, in bytes[4] a"), "the function takes 1"},
        {KE_SHELL_FN(by_value, "out u32 a"), "a: passed by value"},
        {KE_SHELL_FN(by_value, "in bytes[4] a"), "a: passed by value"},
        {KE_SHELL_FN(by_value, ""), "the function takes 1 parameters"},
        {KE_SHELL_FN(by_value, "in u32 a, in u32 b"), "the function takes 1 parameters"},
        {KE_SHELL_FN(by_value, "return u32 r, in u32 a"), nullptr},
        {KE_SHELL_FN(by_value, "return u16 r, in u32 a"), "r: a result is one 4-byte value"},
        {KE_SHELL_FN(by_value, "return u32 r, return u32 s, in u32 a"), "s: a result is one"},
        {KE_SHELL_FN(does_nothing, "return u32 r"), "r: a result is one"},
        {KE_SHELL_FN(by_pointer, "inout u32 p"), nullptr},
        {KE_SHELL_FN(by_pointer, "out u32[2] p"), nullptr},
        {KE_SHELL_FN(by_pointer, "out u16 p"), "p: 2 bytes where the function takes 4"},
        {KE_SHELL_FN(by_pointer, "out bytes[3] p"), "p: 3 bytes where the function takes 4"},
        {KE_SHELL_FN(reads_record, "in rec:st_tcont t"), nullptr},
        {KE_SHELL_FN(reads_record, "inout rec:st_tcont t"), "t: the function does not write it"},
        {KE_SHELL_FN(reads_record, "in bytes[4] t"), "t: 4 bytes where the function takes 8"},
        {KE_SHELL_FN(with_int, "out text[8] t, in count:t n"), nullptr},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.row.params);
        std::vector<Param> params;
        std::string why;
        ASSERT_TRUE(omcishell::parse_params(c.row.params, &params, &why)) << why;
        bool fits = omcishell::fits(c.row, params, &why);
        if (c.why == nullptr) {
            EXPECT_TRUE(fits) << why;
        } else {
            EXPECT_FALSE(fits);
            EXPECT_EQ(why.rfind(c.why, 0), 0u) << why;
        }
    }
    EXPECT_EQ(KE_SHELL_FN(with_int, "").result, omcishell::Result::Int);
    EXPECT_EQ(KE_SHELL_FN(does_nothing, "").result, omcishell::Result::None);
    EXPECT_EQ(KE_SHELL_FN(by_value, "").result, omcishell::Result::Word);
}

TEST(ShellRows, ParameterTypesAndTheirSizes)
{
    struct Case {
        const char *text;
        omcishell::Type type;
        uint32_t size;
        uint32_t count;
    };
    const Case cases[] = {
        {"in u16 a", omcishell::Type::U16, 2, 1},
        {"in u8 a", omcishell::Type::U8, 1, 1},
        {"in ipv4 a", omcishell::Type::Ipv4, 4, 1},
        {"in u32[6] a", omcishell::Type::Words, 24, 6},
        {"in text[16] a", omcishell::Type::Text, 16, 16},
        {"out rec:st_br_mac[32] a", omcishell::Type::Rec, 384, 32},
        {"in rec:st_voip_codec a", omcishell::Type::Rec, 5, 1},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.text);
        std::vector<Param> params;
        std::string why;
        ASSERT_TRUE(omcishell::parse_params(c.text, &params, &why)) << why;
        EXPECT_EQ(params[0].type, c.type);
        EXPECT_EQ(params[0].size, c.size);
        EXPECT_EQ(params[0].count, c.count);
    }
    std::vector<Param> params;
    std::string why;
    ASSERT_TRUE(omcishell::parse_params("in count:b n, out bytes[9] b", &params, &why)) << why;
    EXPECT_EQ(params[0].bound, 1);
    for (const char *bad : {"in count:zz n, in u32 b", "in count:n n", "in u32[0] a",
                            "in u32[1000000] a", "in rec:st_tcont[0] a", "in text[-1] a",
                            "in rec:st_nothing a", "in rec:st_upgrade_shard[999] a", "return u32"}) {
        SCOPED_TRACE(bad);
        why.clear();
        EXPECT_FALSE(omcishell::parse_params(bad, &params, &why));
        EXPECT_FALSE(why.empty());
    }
}

TEST_F(ShellTest, ArgumentsAndResultsOfEveryKind)
{
    struct Case {
        const char *line;
        const char *printed;
    };
    const Case cases[] = {
        {"__omci_chartoip 192.168.1.10", "__omci_chartoip: address = 192.168.1.10\n"},
        {"__omci_chartoip 1.2.3.x", "__omci_chartoip: address = 255.255.255.255\n"},
        {"omci_iptochar 10.0.0.1 16", "omci_iptochar: status 0x0\n  text = \"10.0.0.1\"\n"},
        {"omci_iptochar null 16", "omci_iptochar: status 0x1\n  text = \"\"\n"},
        {"omci_iptochar 300.1.1.1 16", "error: addr: expected an address a.b.c.d: 300.1.1.1\n"},
        {"omci_iptochar 10.0.0.1 17", "error: size: at most 16 (the size of text)\n"},
        {"mac_increase_with_offset 0,0x11,0x22,0x33,0x44,0xff 0x102",
         "mac_increase_with_offset: done\n  mac = 0 17 34 51 70 1\n"},
        {"mac_increase_with_offset 1,2,3,4,5,6,7 1", "error: mac: more than 6 words\n"},
        {"mac_increase_with_offset 1,x 1", "error: mac: not a 32-bit number: x\n"},
        {"ke_omci_tapi_voip_cnfig_method_set 7", "ke_omci_tapi_voip_cnfig_method_set: status 0x0\n"},
        {"ke_omci_tapi_voip_cnfig_method_get", "ke_omci_tapi_voip_cnfig_method_get: method = 7\n"},
        {"ke_omci_tapi_exit", "ke_omci_tapi_exit: done\n"},
        // Nothing runs uci in this process: the read finds no value.
        {"omci_uci_get network.pon_1 8", "omci_uci_get: returned -1\n  value = \"\"\n"},
        {"cm-set 468 ulEmergencyState=1", "cm-set 468 IGD_CO_VOIP_GLOBAL_TAB: status 0x0\n"},
        {"ke_omci_tapi_voip_emergency_get", "ke_omci_tapi_voip_emergency_get: status 0x0\n  state = 1\n"},
        {"ke_omci_tapi_voip_codec_get 0102030405", "ke_omci_tapi_voip_codec_get: status 0x1\n  codec:\n"
                                                   "    uc_entry_id = 1\n    uc_codec = 2\n"
                                                   "    uc_priority = 3\n    uc_enable = 4\n"
                                                   "    uc_period = 5\n"},
        {"ke_omci_tapi_mckey_set 1 65 00", "error: key_len: at most 64 (the size of key)\n"},
        {"ke_omci_tapi_stat_galeth_get 1", "error: too many arguments: ke_omci_tapi_stat_galeth_get(out u32 counter)\n"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.line);
        EXPECT_EQ(run({c.line}), c.printed);
    }
}

TEST_F(ShellTest, RecordArraysShowTheirNonZeroElements)
{
    st_br_table reply{};
    reply.ui_entry_num = 2;
    reply.ast_entry[0] = {7, {0x02, 0, 0, 0, 0, 0x01}, {}};
    reply.ast_entry[1] = {9, {0x02, 0, 0, 0, 0, 0x02}, {}};
    kestub::ipc_script_reply("ke_ke_sml_br_table_get_call", reply);
    EXPECT_EQ(run({"ke_omci_tapi_br_table_get 3 4"}),
              "ke_omci_tapi_br_table_get: status 0x0\n"
              "  num = 2\n"
              "  macs[0].auc_mac = 02:00:00:00:00:01\n"
              "  macs[0].ui_info = 7\n"
              "  macs[1].auc_mac = 02:00:00:00:00:02\n"
              "  macs[1].ui_info = 9\n");
    EXPECT_EQ(kestub::ipc_calls().back().request, ketest::bytes_of(st_br_table{0, 0, 3, {}}));
    EXPECT_EQ(run({"ke_omci_tapi_br_table_get 3 33"}),
              "error: num: at most 32 (the size of macs)\n");
}

TEST_F(ShellTest, ExpectChecksOutputsByName)
{
    run({"ke_omci_tapi_tcont_set 1 0x400", "ke_omci_tapi_tcont_get 1"});
    struct Case {
        const char *line;
        const char *printed;  // "" when the expectation holds
    };
    const Case held[] = {
        {"expect allocid 1024", ""},
        {"expect allocid 0x400", ""},
        {"expect allocid 1024 (0x400)", ""},
        {"expect allocid 5", "error: expected allocid = 5, got 1024 (0x400)\n"},
        {"expect tcont 1", "error: expected tcont = 1, but the last call has no output tcont\n"},
        {"expect 0", ""},
        {"expect zero", "error: expect: not a status: zero\n"},
    };
    int errors = 0;
    for (const Case &c : held) {
        SCOPED_TRACE(c.line);
        EXPECT_EQ(run({c.line}), c.printed);
        errors += *c.printed != '\0';
        EXPECT_EQ(shell->errors(), errors);
    }
    EXPECT_EQ(run({"ke_omci_tapi_sysinfo_get", "expect info.auc_info_d KE-SIM-SFU",
                   "expect info.ui_user_port_num 4", "omci_uci_get a.b 8", "expect -1",
                   "expect value \"\""}),
              "ke_omci_tapi_sysinfo_get: status 0x0\n  info:\n"
                  "    auc_info_a = \"KEON\"\n    auc_info_b = \"V1.0.0\"\n    auc_info_c = \"HW1.0\"\n"
                  "    auc_info_d = \"KE-SIM-SFU\"\n    ui_info_e = 1\n    ui_product_type = 0\n"
                  "    ui_user_port_num = 4\n    ui_board_2 = 0\n    ui_board_3 = 0\n"
                  "    ui_board_0 = 1\n    auc_info_f = \"SIM-ONU\"\n    ui_info_g = 0\n"
                  "omci_uci_get: returned -1\n  value = \"\"\n");
    EXPECT_EQ(shell->errors(), errors);
}

TEST_F(ShellTest, TablesAreWrittenAndReadByFieldName)
{
    EXPECT_EQ(run({"cm-set 808 ui_port=1 ui_vid=100 ui_mask=12", "cm-get 808 ui_port=1 ui_vid=100",
                   "expect ui_mask 12"}),
              "cm-set 808 IGD_CO_VLAN_MEMBER_TAB: status 0x0\n"
              "cm-get 808 IGD_CO_VLAN_MEMBER_TAB: status 0x0\n"
              "  ui_head0 = 0\n  ui_head1 = 0\n  ui_port = 1\n  ui_vid = 100 (0x64)\n"
              "  ui_mask = 12 (0xc)\n");
    ASSERT_EQ(kestub::cm_calls().size(), 2u);
    EXPECT_EQ(kestub::cm_calls()[0].record, ketest::words({0, 0, 1, 100, 12}));
    EXPECT_EQ(run({"cm-get 808 ui_port=1 ui_vid=101"}),
              "cm-get 808 IGD_CO_VLAN_MEMBER_TAB: status 0x72300001\n");
    EXPECT_EQ(run({"cm-set 478 ucEntryId=2 ucCodec=3 acPacketizationPeriod=20 ulMask=31",
                   "cm-get 478 ucEntryId=2"}),
              "cm-set 478 IGD_CO_VOIP_CODEC_TAB: status 0x0\n"
              "cm-get 478 IGD_CO_VOIP_CODEC_TAB: status 0x0\n"
              "  ucEnable = 0\n  ucPriority = 0\n  ucEntryId = 2\n  ucCodec = 3\n"
              "  acPacketizationPeriod = \"20\"\n  ulMask = 31 (0x1f)\n");
    EXPECT_EQ(shell->errors(), 0);
    EXPECT_EQ(run({"cm-set 999 a=1", "cm-get 808 ui_vlan=1", "cm-set 808 ui_port=0x100000000"}),
              "error: cm-set: not a table of the library's index: 999\n"
              "error: cm-get: st_vlan_member_tab has no field ui_vlan\n"
              "error: cm-set: ui_port: not a number that fits 4 bytes: 0x100000000\n");
    EXPECT_EQ(shell->errors(), 3);
}

// A flash the download writes into, served in this process.
struct Flash {
    uint32_t flag = 0;
    std::vector<uint8_t> start;
    std::vector<uint32_t> lens;
    std::vector<uint8_t> image;
    int fail_write = -1;  // the write that fails
};
Flash g_flash;

uint32_t flag_get(void *buf, uint32_t)
{
    std::memcpy(buf, &g_flash.flag, 4);
    return 0;
}
uint32_t flag_set(void *buf, uint32_t)
{
    std::memcpy(&g_flash.flag, buf, 4);
    return 0;
}
uint32_t sharding_start(void *buf, uint32_t len)
{
    g_flash.start.assign(static_cast<uint8_t *>(buf), static_cast<uint8_t *>(buf) + len);
    return 0;
}
uint32_t shard_write(void *buf, uint32_t)
{
    if (static_cast<int>(g_flash.lens.size()) == g_flash.fail_write)
        return 5;
    st_upgrade_shard shard;
    std::memcpy(&shard, buf, sizeof shard);
    g_flash.lens.push_back(shard.ui_len);
    g_flash.image.insert(g_flash.image.end(), shard.auc_data, shard.auc_data + shard.ui_len);
    return 0;
}

class DownloadTest : public ShellTest {
protected:
    void SetUp() override
    {
        ShellTest::SetUp();
        g_flash = Flash{};
        kestub::ipc_serve("ke_ke_upgrade_flag_get_call", flag_get);
        kestub::ipc_serve("ke_ke_upgrade_flag_set_call", flag_set);
        kestub::ipc_serve("ke_ke_upgrade_sharding_start_call", sharding_start);
        kestub::ipc_serve("ke_ke_upgrade_image_sharding_write_call", shard_write);
        char tmpl[] = "/tmp/ke_image_XXXXXX";
        int fd = mkstemp(tmpl);
        path = tmpl;
        for (size_t i = 0; i < 2 * UPGRADE_SHARD_MAX + 100; ++i)
            image.push_back(static_cast<uint8_t>(i * 7 + i / 251));
        EXPECT_EQ(write(fd, image.data(), image.size()), static_cast<ssize_t>(image.size()));
        close(fd);
    }
    void TearDown() override
    {
        unlink(path.c_str());
        ShellTest::TearDown();
    }
    std::string path;
    std::vector<uint8_t> image;
};

TEST_F(DownloadTest, ImageGoesOutInShardsBetweenStartAndStop)
{
    char *bar = nullptr;
    size_t bar_len = 0;
    FILE *progress = open_memstream(&bar, &bar_len);
    shell->set_progress(progress);
    EXPECT_EQ(run({"download " + path + " 0x77 000102030405060708090a0b", "expect 0"}),
              "download: 12388 bytes in 3 shards, status 0x0\n");
    std::fclose(progress);
    std::string drawn(bar, bar_len);
    std::free(bar);
    EXPECT_EQ(drawn.substr(0, 10), "\rdownload ") << drawn;
    EXPECT_EQ(drawn.substr(drawn.size() - 21), "] 100%   0.0/0.0 MiB\n") << drawn;
    EXPECT_EQ(g_flash.lens, (std::vector<uint32_t>{6144, 6144, 100}));
    EXPECT_EQ(g_flash.image, image);
    EXPECT_EQ(g_flash.flag, 1u);  // section 1 written, then booted
    ASSERT_EQ(g_flash.start.size(), sizeof(st_upgrade_start));
    EXPECT_EQ(ketest::u32_at(g_flash.start, 0), 1u);
    EXPECT_EQ(ketest::u32_at(g_flash.start, 4), 0x77u);
    EXPECT_EQ(ketest::u32_at(g_flash.start, 8), 0x0b0a0908u);
    EXPECT_EQ(shell->errors(), 0);
}

TEST_F(DownloadTest, AFailedShardStopsTheDownloadBeforeTheFlagSwitches)
{
    g_flash.fail_write = 1;
    EXPECT_EQ(run({"download " + path}),
              "download: write of shard 1 failed, status 0x1; not stopped\n");
    EXPECT_EQ(shell->last_status(), 1u);
    EXPECT_EQ(g_flash.lens, (std::vector<uint32_t>{6144}));
    EXPECT_EQ(g_flash.flag, 0u);
    EXPECT_EQ(ketest::call_names().back(), "ke_ke_upgrade_image_sharding_write_call");
}

TEST_F(DownloadTest, BadArgumentsSendNothing)
{
    EXPECT_EQ(run({"download /nonexistent/image", "download " + path + " x",
                   "download " + path + " 1 " + std::string(50, '0')}),
              "error: download: cannot read /nonexistent/image\n"
              "error: download: not a 32-bit number: x\n"
              "error: download: expected up to 24 hex bytes of information: " +
                  std::string(50, '0') + "\n");
    EXPECT_TRUE(kestub::ipc_calls().empty());
}

}  // namespace
