// omci-shell against the library and the simulator, in process: its
// function table (one row for every export, each fitting the function's C
// type), the parser's answers, decoded outputs, expectations, served calls
// by short name, the trace, the download, waiting for served calls and the
// commands the library hands to the shell.
#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <set>

#include "export_lists.h"
#include "functions.h"
#include "ke_omci_tapi/bridge_qos.h"
#include "ke_omci_tapi/device.h"
#include "ke_omci_tapi/lifecycle.h"
#include "ke_omci_tapi/pon.h"
#include "platform.h"
#include "process.h"
#include "shell_fixture.h"

namespace {

using ketest::ShellTest;
using omcishell::Param;

// ---- The function table ----------------------------------------------------

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
        EXPECT_EQ(fits, c.why == nullptr) << why;
        if (c.why != nullptr) {
            EXPECT_EQ(why.rfind(c.why, 0), 0u) << why;
        }
    }
    EXPECT_EQ(KE_SHELL_FN(with_int, "").result, omcishell::Result::Int);
    EXPECT_EQ(KE_SHELL_FN(does_nothing, "").result, omcishell::Result::None);
    EXPECT_EQ(KE_SHELL_FN(by_value, "").result, omcishell::Result::Word);
}

TEST(ShellRows, ParameterListsAreTypedOrRefused)
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
        {"out bytes[28] a", omcishell::Type::Bytes, 28, 28},
        {"out rec:st_br_mac[32] a", omcishell::Type::Rec, 384, 32},
        {"in rec:st_voip_codec a", omcishell::Type::Rec, 5, 1},
    };
    std::vector<Param> params;
    std::string why;
    for (const Case &c : cases) {
        SCOPED_TRACE(c.text);
        ASSERT_TRUE(omcishell::parse_params(c.text, &params, &why)) << why;
        EXPECT_EQ(params[0].type, c.type);
        EXPECT_EQ(params[0].size, c.size);
        EXPECT_EQ(params[0].count, c.count);
    }
    ASSERT_TRUE(omcishell::parse_params("in count:b n, out bytes[9] b", &params, &why)) << why;
    EXPECT_EQ(params[0].bound, 1);
    for (const char *bad : {"in u32", "sideways u32 x", "in u64 x", "in bytes[] x", "in bytes[28 x",
                            "in u32 a,", "in u32 a b", "in count:zz n, in u32 b", "in count:n n",
                            "in u32[0] a", "in u32[1000000] a", "in text[-1] a", "in rec:st_nothing a",
                            "in rec:st_upgrade_shard[999] a"}) {
        SCOPED_TRACE(bad);
        why.clear();
        EXPECT_FALSE(omcishell::parse_params(bad, &params, &why));
        EXPECT_FALSE(why.empty());
    }
}

// ---- Lines and what they print ---------------------------------------------

TEST_F(ShellTest, EveryLinePrintsItsOutcomeAndBadOnesCount)
{
    struct Case {
        const char *line;
        const char *printed;  // starting with "error: " when the line is refused
    };
    const Case cases[] = {
        // Calls: the status, then the outputs decoded (shown after a failure too).
        {"ke_omci_tapi_tcont_set 1 0x400", "ke_omci_tapi_tcont_set: status 0x0\n"},
        {"ke_omci_tapi_tcont_get 1", "ke_omci_tapi_tcont_get: status 0x0\n  allocid = 1024 (0x400)\n"},
        // Expectations: of the last status, or of an output by name.
        {"expect allocid 1024", ""},
        {"expect allocid 0x400", ""},
        {"expect allocid 1024 (0x400)", ""},
        {"expect allocid 5", "error: expected allocid = 5, got 1024 (0x400)\n"},
        {"expect tcont 1", "error: expected tcont = 1, but the last call has no output tcont\n"},
        {"expect 0", ""},
        {"expect zero", "error: expect: not a status: zero\n"},
        {"ke_omci_tapi_tcont_del 4", "ke_omci_tapi_tcont_del: status 0x72400001\n"},
        {"expect 0x72400001", ""},
        {"expect 0", "error: expected status 0x0, got 0x72400001\n"},
        {"ke_omci_tapi_tcont_get 0", "ke_omci_tapi_tcont_get: status 0x0\n  allocid = 1\n"},
        {"ke_omci_tapi_tcont_get 9", "ke_omci_tapi_tcont_get: status 0x1\n  allocid = 0\n"},
        {"ke_omci_tapi_gemport_set 257 01:02:03", "ke_omci_tapi_gemport_set: status 0x0\n"},
        {"ke_omci_tapi_gemport_get 257   # attributes back",
         "ke_omci_tapi_gemport_get: status 0x0\n  attr = 01 02 03 00 00 00 00 00 00 00 00 00 00 00 "
         "00 00 00 00 00 00 00 00 00 00 00 00 00 00\n"},
        {"ke_omci_tapi_gem_block_get 5", "ke_omci_tapi_gem_block_get: status 0x0\n  len = 48 (0x30)\n"},
        {"ke_omci_tapi_omcc_destory", "ke_omci_tapi_omcc_destory: status 0x0\n"},
        // Arguments and results of every kind.
        {"__omci_chartoip 192.168.1.10", "__omci_chartoip: address = 192.168.1.10\n"},
        {"omci_iptochar 10.0.0.1 16", "omci_iptochar: status 0x0\n  text = \"10.0.0.1\"\n"},
        {"omci_iptochar null 16", "omci_iptochar: status 0x1\n  text = \"\"\n"},
        {"mac_increase_with_offset 0,0x11,0x22,0x33,0x44,0xff 0x102",
         "mac_increase_with_offset: done\n  mac = 0 17 34 51 70 1\n"},
        {"ke_omci_tapi_voip_cnfig_method_set 7", "ke_omci_tapi_voip_cnfig_method_set: status 0x0\n"},
        {"ke_omci_tapi_voip_cnfig_method_get", "ke_omci_tapi_voip_cnfig_method_get: method = 7\n"},
        {"ke_omci_tapi_exit", "ke_omci_tapi_exit: done\n"},
        // Nothing runs uci in this process: the read finds no value.
        {"omci_uci_get network.pon_1 8", "omci_uci_get: returned -1\n  value = \"\"\n"},
        {"ke_omci_tapi_voip_codec_get 0102030405", "ke_omci_tapi_voip_codec_get: status 0x1\n  codec:\n"
                                                   "    uc_entry_id = 1\n    uc_codec = 2\n"
                                                   "    uc_priority = 3\n    uc_enable = 4\n"
                                                   "    uc_period = 5\n"},
        // Built-in commands.
        {"  # only a comment", ""},
        {"echo \"two words\" and more", "two words and more\n"},
        {"help ke_omci_tapi_tcont_get", "ke_omci_tapi_tcont_get(in u32 tcont, out u32 allocid)\n"},
        // Refusals: nothing is called.
        {"ke_omci_tapi_tcont_set 1",
         "error: too few arguments: ke_omci_tapi_tcont_set(in u32 tcont, in u32 allocid)\n"},
        {"ke_omci_tapi_tcont_del 1 2", "error: too many arguments: ke_omci_tapi_tcont_del(in u32 tcont)\n"},
        {"ke_omci_tapi_tcont_del -1", "error: tcont: not a 32-bit number: -1\n"},
        {"ke_omci_tapi_gemport_set 1 zz", "error: attr: expected up to 28 hex bytes: zz\n"},
        {"ke_omci_tapi_gemport_set 1 " "000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c",
         "error: attr: expected up to 28 hex bytes: "
         "000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c\n"},
        {"omci_iptochar 300.1.1.1 16", "error: addr: expected an address a.b.c.d: 300.1.1.1\n"},
        {"omci_iptochar 10.0.0.1 17", "error: size: at most 16 (the size of text)\n"},
        {"mac_increase_with_offset 1,2,3,4,5,6,7 1", "error: mac: more than 6 words\n"},
        {"mac_increase_with_offset 1,x 1", "error: mac: not a 32-bit number: x\n"},
        {"ke_omci_tapi_stat_galeth_get 1", "error: too many arguments: ke_omci_tapi_stat_galeth_get(out u32 counter)\n"},
        {"ke_omci_nothing 1", "error: unknown command or function (try help): ke_omci_nothing\n"},
        {"echo \"open", "error: unterminated quote: echo \"open\n"},
        {"call set_loid nofield=1", "error: st_sn_loid has no field nofield\n"},
        {"call some_call 0g", "error: some_call: the request of an unknown call is one word of hex bytes\n"},
    };
    int errors = 0;
    for (const Case &c : cases) {
        SCOPED_TRACE(c.line);
        size_t calls = kestub::ipc_calls().size() + kestub::cm_calls().size();
        EXPECT_EQ(run({c.line}), c.printed);
        bool refused = std::strncmp(c.printed, "error: ", 7) == 0;
        errors += refused;
        EXPECT_EQ(shell->errors(), errors);
        if (refused) {
            EXPECT_EQ(kestub::ipc_calls().size() + kestub::cm_calls().size(), calls);
        }
    }
    EXPECT_FALSE(shell->run_line("quit"));
    EXPECT_TRUE(shell->run_line("list"));
}

TEST_F(ShellTest, ExpectReadsRecordFieldsAndTextByName)
{
    EXPECT_EQ(run({"ke_omci_tapi_sysinfo_get", "expect info.auc_info_d KE-SIM-SFU",
                   "expect info.ui_user_port_num 4", "omci_uci_get a.b 8", "expect -1",
                   "expect value \"\""}),
              "ke_omci_tapi_sysinfo_get: status 0x0\n  info:\n"
                  "    auc_info_a = \"KEON\"\n    auc_info_b = \"V1.0.0\"\n    auc_info_c = \"HW1.0\"\n"
                  "    auc_info_d = \"KE-SIM-SFU\"\n    ui_info_e = 1\n    ui_product_type = 0\n"
                  "    ui_user_port_num = 4\n    ui_board_2 = 0\n    ui_board_3 = 0\n"
                  "    ui_board_0 = 1\n    auc_info_f = \"SIM-ONU\"\n    ui_info_g = 0\n"
                  "omci_uci_get: returned -1\n  value = \"\"\n");
    EXPECT_EQ(shell->errors(), 0);
}

TEST_F(ShellTest, NullPassesANullPointer)
{
    // The library copies a null attribute block as zeros.
    run({"ke_omci_tapi_gemport_set 7 null"});
    ASSERT_EQ(kestub::ipc_calls().size(), 1u);
    EXPECT_EQ(kestub::ipc_calls()[0].request, ketest::words({7, 0, 0, 0, 0, 0, 0, 0}));
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

TEST_F(ShellTest, TablesAreWrittenAndReadByFieldName)
{
    EXPECT_EQ(run({"cm-set 808 ui_port=1 ui_vid=100 ui_mask=12", "cm-get 808 ui_port=1 ui_vid=100",
                   "expect ui_mask 12", "cm-get 808 ui_port=1 ui_vid=101"}),
              "cm-set 808 IGD_CO_VLAN_MEMBER_TAB: status 0x0\n"
              "cm-get 808 IGD_CO_VLAN_MEMBER_TAB: status 0x0\n"
              "  ui_head0 = 0\n  ui_head1 = 0\n  ui_port = 1\n  ui_vid = 100 (0x64)\n"
              "  ui_mask = 12 (0xc)\n"
              "cm-get 808 IGD_CO_VLAN_MEMBER_TAB: status 0x72300001\n");
    EXPECT_EQ(kestub::cm_calls()[0].record, ketest::words({0, 0, 1, 100, 12}));
    EXPECT_EQ(shell->errors(), 0);
    EXPECT_EQ(run({"cm-set 999 a=1", "cm-get 808 ui_vlan=1", "cm-set 808 ui_port=0x100000000"}),
              "error: cm-set: not a table of the library's index: 999\n"
              "error: cm-get: st_vlan_member_tab has no field ui_vlan\n"
              "error: cm-set: ui_port: not a number that fits 4 bytes: 0x100000000\n");
    EXPECT_EQ(kestub::cm_calls().size(), 3u);
}

// ---- Served calls and the trace --------------------------------------------

uint32_t keep_request(void *buf, uint32_t len)
{
    return buf != nullptr && len > 0 ? static_cast<uint8_t *>(buf)[0] : 0x42;
}

TEST_F(ShellTest, ServedCallsByShortNameBuildTheirRecords)
{
    std::vector<uint8_t> loid(102, 0);
    std::memcpy(loid.data() + 14, "LOID-1", 6);
    std::vector<uint8_t> both = loid;
    std::memcpy(both.data() + 38, "pw", 2);
    struct Case {
        const char *line;
        const char *name;
        std::vector<uint8_t> request;
        const char *first_line;
    };
    const std::vector<Case> cases = {
        {"call set_loid LOID-1", "ke_ke_omci_set_loid_call", loid, "ke_ke_omci_set_loid_call: status 0x0\n"},
        {"call ke_ke_omci_set_loid_call auc_loid=LOID-1 auc_loid_pwd=pw", "ke_ke_omci_set_loid_call",
         both, "ke_ke_omci_set_loid_call: status 0x0\n"},
        {"call mc_param_get 3", "ke_ke_omci_mc_param_get_call", ketest::words({3}),
         "ke_ke_omci_mc_param_get_call: status 0x3\n"},
        {"call t_raw_call 0102", "t_raw_call", {1, 2}, "t_raw_call: status 0x1\n"},
        {"call t_raw_call", "t_raw_call", {}, "t_raw_call: status 0x42\n"},
        {"call t_nobody_call", "t_nobody_call", {}, "t_nobody_call: status 0x72200004\n"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.line);
        kestub::reset();
        kestub::ipc_serve("ke_ke_omci_set_loid_call", keep_request);
        kestub::ipc_serve("ke_ke_omci_mc_param_get_call", keep_request);
        kestub::ipc_serve("t_raw_call", keep_request);
        std::string printed = run({c.line});
        EXPECT_EQ(printed.substr(0, printed.find('\n') + 1), c.first_line);
        ASSERT_EQ(kestub::ipc_calls().size(), 1u);
        EXPECT_EQ(kestub::ipc_calls()[0].name, c.name);
        EXPECT_EQ(kestub::ipc_calls()[0].request, c.request);
        EXPECT_EQ(kestub::ipc_calls()[0].len, c.request.size());
    }
    EXPECT_EQ(shell->last_status(), kestub::kIpcNoServer);
}

TEST_F(ShellTest, TraceShowsCommandsRemoteCallsAndTableOperations)
{
    omcishell::trace_to(out);
    std::string printed = run({"ke_omci_tapi_tcont_get 0"});
    EXPECT_EQ(printed,
              "[cmd] ke_omci_tapi_tcont_get 0\n"
              "[ipc] ke_ke_sml_gpon_onuid_get_call len=4 -> 0x0 | 00 00 00 00\n"
              "      reply | 01 00 00 00\n"
              "ke_omci_tapi_tcont_get: status 0x0\n  allocid = 1\n");
    std::vector<uint8_t> rec = ketest::words({0, 0, 2, 0, 0});
    std::fflush(out);
    size_t from = len;
    igdCmConfSet(807, rec.data(), 20);
    igdCmConfGet(811, rec.data(), 20);
    std::fflush(out);
    EXPECT_EQ(std::string(text + from, len - from),
              "[cm] Set 807 IGD_CO_VLAN_FILTER_TAB size=20 -> 0x0 | 00 00 00 00 00 00 00 00 02 00 "
              "00 00 00 00 00 00 00 00 00 00\n"
              "[cm] Get 811 IGD_CO_VLAN_DEFPRI_TAB size=20 -> 0x72300001 | 00 00 00 00 00 00 00 "
              "00 02 00 00 00 00 00 00 00 00 00 00 00\n");
    omcishell::trace_to(nullptr);
    EXPECT_EQ(run({"echo quiet"}), "quiet\n");
}

TEST_F(ShellTest, AwaitWaitsForTheNextServedCall)
{
    KE_SKIP_WITHOUT_THREADS();
    ketest::TempDir run_dir;
    setenv("KE_RUN_DIR", run_dir.path().c_str(), 1);
    ASSERT_GT(kestub::serve_start(), 0);
    EXPECT_EQ(run({"await ke_ke_omci_set_loid_call 50"}),
              "error: await: ke_ke_omci_set_loid_call was not served within 50 ms\n");
    std::vector<uint8_t> request(KE_SET_LOID_REQ_LEN, 0);
    std::memcpy(request.data() + 14, "LOID-A", 6);
    // This process's own calls reach the entry directly; without that
    // shortcut the call goes over the socket, as another process's does,
    // and the serving thread counts it.
    kestub::ipc_serve("ke_ke_omci_set_loid_call", nullptr);
    ASSERT_EQ(ke_ipc_call("ke_ke_omci_set_loid_call", request.data(), KE_SET_LOID_REQ_LEN), 0u);
    EXPECT_EQ(run({"await ke_ke_omci_set_loid_call 5000", "ke_omci_tapi_sn_loid_get",
                   "expect sn_loid.auc_loid LOID-A"})
                  .substr(0, 32),
              "served ke_ke_omci_set_loid_call\n");
    // One call is awaited once.
    EXPECT_EQ(run({"await ke_ke_omci_set_loid_call 50"}),
              "error: await: ke_ke_omci_set_loid_call was not served within 50 ms\n");
    EXPECT_EQ(run({"await ke_ke_omci_set_loid_call soon"}),
              "error: await: not a number of milliseconds: soon\n");
    EXPECT_EQ(shell->errors(), 3);
    kestub::serve_stop();
}

// ---- The download ----------------------------------------------------------

// An image of two whole shards and a ragged tail, downloaded into the
// simulator's flash.
class DownloadTest : public ShellTest {
protected:
    void SetUp() override
    {
        ShellTest::SetUp();
        for (const char *file : {"section0.bin", "section1.bin", "boot_flag"})
            std::remove((sim->state().flash.dir + "/" + file).c_str());
        ASSERT_FALSE(dir.path().empty());
        for (size_t i = 0; i < 2 * UPGRADE_SHARD_MAX + 100; ++i)
            image.push_back(static_cast<char>(i * 7 + i / 251));
        ketest::write_file(path, image);
    }
    ketest::TempDir dir;
    std::string path = dir / "image";
    std::string image;
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
    EXPECT_TRUE(ketest::read_file(smlsim::section_path(sim->state().flash, 1)) == image);
    EXPECT_EQ(sim->state().flash.boot_flag, 1u);  // section 1 written, then booted
    const auto &calls = kestub::ipc_calls();
    auto start = std::find_if(calls.begin(), calls.end(), [](const kestub::IpcCall &c) {
        return c.name == "ke_ke_upgrade_sharding_start_call";
    });
    ASSERT_NE(start, calls.end());
    EXPECT_EQ(start->request, ketest::words({1, 0x77, 0x0b0a0908, 0x03020100, 0x07060504, 0x0b0a0908, 0, 0, 0}));
    EXPECT_EQ(shell->errors(), 0);
}

TEST_F(DownloadTest, AFailedShardStopsTheDownloadBeforeTheFlagSwitches)
{
    kestub::ipc_script("ke_ke_upgrade_image_sharding_write_call", 0);
    kestub::ipc_script("ke_ke_upgrade_image_sharding_write_call", 1);
    EXPECT_EQ(run({"download " + path}),
              "download: write of shard 1 failed, status 0x1; not stopped\n");
    EXPECT_EQ(shell->last_status(), 1u);
    EXPECT_EQ(ketest::call_names().back(), "ke_ke_upgrade_image_sharding_write_call");
    EXPECT_EQ(sim->state().flash.boot_flag, 0u);
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

// ---- Commands the library hands to the shell -------------------------------

// A directory with a stand-in uci that writes its arguments to a file.
class ShellCommandsTest : public ShellTest {
protected:
    void SetUp() override
    {
        ShellTest::SetUp();
        ASSERT_FALSE(dir.path().empty());
        ketest::write_file(dir / "uci", "#!/bin/sh\necho \"$@\" >>" + (dir / "args") + "\n");
        chmod((dir / "uci").c_str(), 0700);
        const char *path = std::getenv("PATH");
        old_path = path != nullptr ? path : "/usr/bin:/bin";
        setenv("PATH", (dir.path() + ":" + old_path).c_str(), 1);
        omcishell::trace_to(out);
    }
    void TearDown() override
    {
        setenv("PATH", old_path.c_str(), 1);
        ShellTest::TearDown();
    }
    // Hands command to system() and returns the trace it printed.
    std::string give(const char *command)
    {
        std::fflush(out);
        size_t from = len;
        EXPECT_EQ(system(command), 0);
        std::fflush(out);
        return std::string(text + from, len - from);
    }

    ketest::TempDir dir;
    std::string old_path;
};

TEST_F(ShellCommandsTest, PlainUciCommandsRunAndEverythingElseIsOnlyTraced)
{
    omcishell::serve_shell_commands(true);
    struct Case {
        const char *command;
        bool runs;
    };
    const Case cases[] = {
        {"uci set network.pon_1.proto=static", true},
        {"uci add_list network.@device[1].egress_qos_mapping=0:5", true},
        {"uci commit network", true},
        {"( sleep 5; /etc/init.d/network reload >/dev/null 2>&1 ) &", false},
        {"uci set network.a=b; touch /tmp/ke_never", false},
        {"uci set network.a=`id`", false},
        {"uci get x > /tmp/elsewhere", false},
        {"ucix set a.b=c", false},
    };
    std::string ran;
    for (const Case &c : cases) {
        SCOPED_TRACE(c.command);
        EXPECT_EQ(give(c.command),
                  std::string("[sh] ") + (c.runs ? "ran: " : "not run: ") + c.command + "\n");
        if (c.runs)
            ran += std::string(c.command).substr(4) + "\n";
    }
    EXPECT_EQ(ketest::read_file(dir / "args"), ran);
    EXPECT_FALSE(ketest::exists("/tmp/ke_never"));

    // Without a configuration directory to write to, nothing runs.
    omcishell::serve_shell_commands(false);
    EXPECT_EQ(give("uci commit network"), "[sh] not run: uci commit network\n");
    EXPECT_EQ(ketest::read_file(dir / "args"), ran);
    EXPECT_EQ(kestub::shell_commands().size(), std::size(cases) + 1);
}

}  // namespace
