// omci-shell's interpreter in process, against the simulator: the function
// table, typed arguments, decoded outputs, served calls by short name, and
// the trace.
#include <cstdio>
#include <cstring>

#include "functions.h"
#include "platform.h"
#include "shell_fixture.h"

namespace {

using ketest::ShellTest;

TEST_F(ShellTest, ParameterListsThatAreWrongAreRefused)
{
    for (const char *bad : {"in u32", "sideways u32 x", "in u64 x", "in bytes[] x", "in bytes[x] x",
                            "in bytes[28 x", "in rec:st_nothing x", "in u32 a,", "in u32 a b"}) {
        SCOPED_TRACE(bad);
        std::vector<omcishell::Param> params;
        std::string why;
        EXPECT_FALSE(omcishell::parse_params(bad, &params, &why));
        EXPECT_FALSE(why.empty());
    }
    std::vector<omcishell::Param> params;
    std::string why;
    ASSERT_TRUE(omcishell::parse_params("in u32 a, out bytes[28] b, inout rec:st_sn_loid c, in text[8] d",
                                        &params, &why));
    ASSERT_EQ(params.size(), 4u);
    EXPECT_EQ(params[1].size, 28u);
    EXPECT_EQ(params[2].size, 102u);
    EXPECT_EQ(params[2].dir, omcishell::Dir::InOut);
    EXPECT_EQ(params[3].type, omcishell::Type::Text);
}

TEST_F(ShellTest, CallsPrintTheStatusAndTheOutputsDecoded)
{
    struct Case {
        const char *line;
        const char *printed;
    };
    const std::vector<Case> cases = {
        {"ke_omci_tapi_tcont_set 1 0x400", "ke_omci_tapi_tcont_set: status 0x0\n"},
        {"ke_omci_tapi_tcont_get 1", "ke_omci_tapi_tcont_get: status 0x0\n  allocid = 1024 (0x400)\n"},
        {"ke_omci_tapi_tcont_get 0", "ke_omci_tapi_tcont_get: status 0x0\n  allocid = 1\n"},
        {"ke_omci_tapi_tcont_get 9", "ke_omci_tapi_tcont_get: status 0x1\n  allocid = 0\n"},
        {"ke_omci_tapi_tcont_del 9", "ke_omci_tapi_tcont_del: status 0x72400001\n"},
        {"ke_omci_tapi_gemport_set 257 01:02:03", "ke_omci_tapi_gemport_set: status 0x0\n"},
        {"ke_omci_tapi_gemport_get 257   # attributes back",
         "ke_omci_tapi_gemport_get: status 0x0\n  attr = 01 02 03 00 00 00 00 00 00 00 00 00 00 00 "
         "00 00 00 00 00 00 00 00 00 00 00 00 00 00\n"},
        {"ke_omci_tapi_gem_block_get 5", "ke_omci_tapi_gem_block_get: status 0x0\n  len = 48 (0x30)\n"},
        {"ke_omci_tapi_omcc_destory", "ke_omci_tapi_omcc_destory: status 0x0\n"},
        {"  # only a comment", ""},
        {"echo \"two words\" and more", "two words and more\n"},
        {"help ke_omci_tapi_tcont_get", "ke_omci_tapi_tcont_get(in u32 tcont, out u32 allocid)\n"},
        {"ke_omci_tapi_sysinfo_get",
         "ke_omci_tapi_sysinfo_get: status 0x0\n  info:\n    auc_info_a = \"KEON\"\n"
         "    auc_info_b = \"V1.0.0\"\n    auc_info_c = \"HW1.0\"\n    auc_info_d = \"KE-SIM-SFU\"\n"
         "    ui_info_e = 1\n    ui_product_type = 0\n    ui_user_port_num = 4\n    ui_board_2 = 0\n"
         "    ui_board_3 = 0\n    ui_board_0 = 1\n    auc_info_f = \"SIM-ONU\"\n    ui_info_g = 0\n"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.line);
        EXPECT_EQ(run({c.line}), c.printed);
    }
    EXPECT_EQ(shell->errors(), 0);
}

TEST_F(ShellTest, BadCommandsSayWhyAndCount)
{
    struct Case {
        const char *line;
        const char *printed;
    };
    const std::vector<Case> cases = {
        {"ke_omci_tapi_tcont_set 1",
         "error: too few arguments: ke_omci_tapi_tcont_set(in u32 tcont, in u32 allocid)\n"},
        {"ke_omci_tapi_tcont_del 1 2", "error: too many arguments: ke_omci_tapi_tcont_del(in u32 tcont)\n"},
        {"ke_omci_tapi_tcont_del -1", "error: tcont: not a 32-bit number: -1\n"},
        {"ke_omci_tapi_tcont_del 0x100000000", "error: tcont: not a 32-bit number: 0x100000000\n"},
        {"ke_omci_tapi_gemport_set 1 zz", "error: attr: expected up to 28 hex bytes: zz\n"},
        {"ke_omci_tapi_gemport_set 1 " "000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c",
         "error: attr: expected up to 28 hex bytes: "
         "000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c\n"},
        {"ke_omci_nothing 1", "error: unknown command or function (try help): ke_omci_nothing\n"},
        {"echo \"open", "error: unterminated quote: echo \"open\n"},
        {"call set_loid nofield=1", "error: st_sn_loid has no field nofield\n"},
        {"call some_call 0g", "error: some_call: the request of an unknown call is one word of hex bytes\n"},
    };
    int errors = 0;
    for (const Case &c : cases) {
        SCOPED_TRACE(c.line);
        EXPECT_EQ(run({c.line}), c.printed);
        EXPECT_EQ(shell->errors(), ++errors);
    }
    EXPECT_TRUE(kestub::ipc_calls().empty());  // nothing was called
}

TEST_F(ShellTest, ExpectChecksTheLastStatus)
{
    EXPECT_EQ(run({"ke_omci_tapi_tcont_del 4", "expect 0x72400001", "expect 0"}),
              "ke_omci_tapi_tcont_del: status 0x72400001\n"
              "error: expected status 0x0, got 0x72400001\n");
    EXPECT_EQ(shell->errors(), 1);
    EXPECT_FALSE(shell->run_line("quit"));
    EXPECT_TRUE(shell->run_line("list"));
}

TEST_F(ShellTest, NullPassesANullPointer)
{
    // The library copies a null attribute block as zeros.
    run({"ke_omci_tapi_gemport_set 7 null"});
    ASSERT_EQ(kestub::ipc_calls().size(), 1u);
    EXPECT_EQ(kestub::ipc_calls()[0].request, ketest::words({7, 0, 0, 0, 0, 0, 0, 0}));
}

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

}  // namespace
