// The bench's programs in real processes: what each says about itself,
// sml-sim's profile file and its stop, a loaded library's served calls
// from a second omci-shell, and cm-dump reading what a process stored.
// The whole bench together is the demo's test (e2e_sfu_test.cpp).
#include "platform.h"
#include "sim_run.h"

namespace {

using ketest::Process;

class BenchTest : public ketest::SimRunTest {
protected:
    // Runs a tool to its end; its output in *out, its exit status back.
    int tool(const std::vector<std::string> &argv, std::string *out, long timeout_ms = 20000)
    {
        std::string path = run / ("out." + std::to_string(++runs));
        Process p;
        if (!p.start(argv, path))
            return -3;
        int status = p.wait(timeout_ms);
        *out = ketest::read_file(path);
        return status;
    }

    int shell(std::vector<std::string> args, std::string *out)
    {
        args.insert(args.begin(), {KE_PATH_OMCI_SHELL, "--run-dir", run.path()});
        return tool(args, out);
    }

    int runs = 0;
};

bool has(const std::string &text, const std::string &part)
{
    return text.find(part) != std::string::npos;
}

TEST_F(BenchTest, EveryToolExplainsItself)
{
    for (const char *path : {KE_PATH_SML_SIM, KE_PATH_OMCI_SHELL, KE_PATH_CM_DUMP}) {
        SCOPED_TRACE(path);
        std::string out;
        EXPECT_EQ(tool({path, "--help"}, &out), 0);
        EXPECT_TRUE(has(out, "usage: ")) << out;
        EXPECT_EQ(tool({path, "--no-such-option"}, &out), 2);
        EXPECT_TRUE(has(out, "unknown option")) << out;
    }
}

TEST_F(BenchTest, ServedCallFromASecondProcessReachesTheFirst)
{
    Process first;
    ASSERT_TRUE(first.start({KE_PATH_OMCI_SHELL, "--run-dir", run.path(), "--cm-memory", "--trace",
                             "--load", KE_PATH_IPC_FIXTURE_SERVED},
                            run / "first.out", true));
    ASSERT_TRUE(ketest::wait_until(
        [&] { return ketest::exists(run / "ipc/ke_ke_fixture_store_call"); }, 10000))
        << ketest::read_file(run / "first.out");
    std::string record = "000102030405060708090a0b0c0d0e0f1011121314151617";
    std::string out;
    EXPECT_EQ(shell({"--call", "ke_ke_fixture_store_call", record}, &out), 0);
    EXPECT_EQ(out, "ke_ke_fixture_store_call: status 0x0\n  reply = 00 01 02 03 04 05 06 07 08 09 "
                   "0a 0b 0c 0d 0e 0f 10 11 12 13 14 15 16 17\n");
    EXPECT_EQ(shell({"--call", "ke_ke_fixture_store_call", "0001"}, &out), 1);
    EXPECT_EQ(out, "ke_ke_fixture_store_call: status 0x72200008\n");
    EXPECT_EQ(shell({"--call", "ke_ke_fixture_fetch_call", std::string(48, '0')}, &out), 0);
    EXPECT_TRUE(has(out, "reply = 00 01 02 03")) << out;
    // A failed expectation is the shell's exit status.
    first.send("served\nexpect 1\nquit\n");
    EXPECT_EQ(first.wait(5000), 1);
    std::string served = ketest::read_file(run / "first.out");
    EXPECT_TRUE(has(served, "[served] ke_ke_fixture_store_call len=24 -> 0x0 | 00 01 02")) << served;
    EXPECT_TRUE(has(served, "[served] ke_ke_fixture_store_call len=2 -> 0x72200008")) << served;
    EXPECT_TRUE(has(served, "\nke_ke_fixture_count_call\n")) << served;
}

TEST_F(BenchTest, ProfileFileChangesWhatTheSimulatorReportsUntilItStops)
{
    ketest::write_file(run / "profile", "user_ports = 2\nproduct_type = HGU\n");
    Process sim;
    start_sim(sim, {"--profile", run / "profile"});
    std::string out;
    EXPECT_EQ(shell({"--call", "ke_ke_board_info_get_call", std::string(956 * 2, '0')}, &out), 0);
    EXPECT_TRUE(has(out, "reply = 01 00 00 00 02 00 00 00 00 00")) << out;
    // A stopped simulator takes its sockets with it.
    ASSERT_TRUE(ketest::exists(run / "ipc/ke_ke_board_info_get_call"));
    sim.signal(SIGTERM);
    EXPECT_EQ(sim.wait(5000), 0);
    EXPECT_FALSE(ketest::exists(run / "ipc/ke_ke_board_info_get_call"));
    EXPECT_EQ(tool({KE_PATH_SML_SIM, "--profile", run / "profile", "--print-profile"}, &out), 0);
    EXPECT_TRUE(has(out, "\nuser_ports = 2\n") && has(out, "\nproduct_type = HGU\n")) << out;
    ketest::write_file(run / "bad", "user_ports = 2\nports = 3\n");
    EXPECT_EQ(tool({KE_PATH_SML_SIM, "--profile", run / "bad"}, &out), 2);
    EXPECT_TRUE(has(out, "line 2: unknown key ports")) << out;
}

TEST_F(BenchTest, CmDumpDecodesWhatAnotherProcessStored)
{
    std::string db = run / "cm.db";
    std::string out;
    EXPECT_EQ(tool({KE_PATH_CM_DUMP, "--db", db}, &out), 1);
    EXPECT_TRUE(has(out, "no database at " + db)) << out;

    ASSERT_TRUE(kestub::cm_use_db(db.c_str()));
    std::vector<uint8_t> port(116, 0);
    std::vector<uint8_t> head = ketest::words({0, 0, 3, 0x0102});
    std::copy(head.begin(), head.end(), port.begin());
    port[112] = 124;
    ASSERT_EQ(igdCmConfSet(822, port.data(), 116), 0u);
    std::vector<uint8_t> odd(7, 0x31);
    ASSERT_EQ(igdCmConfSet(9999, odd.data(), 7), 0u);
    EXPECT_EQ(tool({KE_PATH_CM_DUMP, "--run-dir", run.path()}, &out), 0);
    EXPECT_EQ(out, "database " + db + "\n"
                   "table 822 IGD_CO_MC_PORT_TAB: 1 entry\n"
                   "  entry 0: 116 bytes\n"
                   "    ui_port = 3\n"
                   "    ui_port_mode = 258 (0x102)\n"
                   "    ui_up_transparent = 0\n"
                   "    ui_upvlan = 0\n"
                   "    ui_uppri = 0\n"
                   "    ui_upgemport = 0\n"
                   "    ui_down_tagact = 0\n"
                   "    ui_usrvlan = 0\n"
                   "    ui_mask = 124 (0x7c)\n"
                   "table 9999 (not in the library's index): 1 entry\n"
                   "  entry 0: 7 bytes\n"
                   "    0000: 31 31 31 31 31 31 31\n");
    EXPECT_EQ(tool({KE_PATH_CM_DUMP, "--db", db, "--raw", "9999", "1"}, &out), 0);
    EXPECT_TRUE(has(out, "table 1 (not in the library's index): 0 entries\n")) << out;
}

}  // namespace
