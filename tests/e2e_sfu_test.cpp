// The main job across real processes: scripts/demo.sh runs the SFU
// scenario against this build tree (sml-sim, omci-shell serving, a second
// omci-shell handing over the LOID, uci, cm-dump) and must end with every
// check held; a scenario whose check fails must fail the run, and either
// way no process of the run may outlive it.
#include <signal.h>

#include "process.h"
#include "stub_test.h"

namespace {

using ketest::Process;
using ketest::TempDir;

// The tree this test was built in and the sources it was built from.
std::string build_dir()
{
    std::string sim = KE_PATH_SML_SIM;
    return sim.substr(0, sim.rfind("/tools/"));
}
std::string source_dir()
{
    std::string self = __FILE__;
    return self.substr(0, self.rfind("/tests/"));
}

bool has(const std::string &text, const std::string &part)
{
    return text.find(part) != std::string::npos;
}

class SfuTest : public ketest::StubTest {
protected:
    void SetUp() override
    {
        StubTest::SetUp();
        KE_SKIP_WITHOUT_THREADS();
        ASSERT_FALSE(tmp.path().empty());
    }
    void TearDown() override
    {
        if (!kept.empty())
            std::system(("rm -rf '" + kept + "'").c_str());
        StubTest::TearDown();
    }

    // Starts the demo with args, its output going to demo.out.
    bool start(Process &p, std::vector<std::string> args)
    {
        args.insert(args.begin(), {"sh", source_dir() + "/scripts/demo.sh", "--build-dir",
                                   build_dir(), "--image-kib", "700", "--keep"});
        return p.start(args, tmp / "demo.out");
    }

    // Waits for the demo's end; its output in out, its exit status back.
    int finish(Process &p)
    {
        int status = p.wait(240000);
        out = ketest::read_file(tmp / "demo.out");
        size_t at = out.find("run directory kept: ");
        if (at != std::string::npos)
            kept = out.substr(at + 20, out.find('\n', at) - at - 20);
        return status;
    }

    int demo(std::vector<std::string> args)
    {
        Process p;
        return start(p, std::move(args)) ? finish(p) : -3;
    }

    // True when the process whose pid the demo wrote to file is gone.
    bool gone(const std::string &file)
    {
        std::string pid = ketest::read_file(kept + "/" + file);
        return !pid.empty() && kill(std::stoi(pid), 0) != 0;
    }

    TempDir tmp;
    std::string out;
    std::string kept;
};

TEST_F(SfuTest, ScenarioProvisionsTheSfuAndEveryCheckHolds)
{
    EXPECT_EQ(demo({}), 0) << out;
    for (const char *line :
         {"  ok    scenario: every command ran and every expect held",
          "  ok    boot flag switched to the section written\n",
          "  ok    section 1 holds the image byte for byte (sha256)\n",
          "  ok    network.pon_1 on the VLAN device\n",
          "  ok    service reload asked for, and only logged\n",
          "  ok    configuration tables written by the scenario\n",
          "device='pon.200'",
          "  firmware     700 KiB in 117 shards, section 1, boot flag 00 -> 01\n",
          "Every check held.\n"}) {
        EXPECT_TRUE(has(out, line)) << line << "\n" << out;
    }
    EXPECT_FALSE(has(out, "FAIL")) << out;
    ASSERT_FALSE(kept.empty()) << out;
    EXPECT_TRUE(gone("sml-sim.pid"));
    EXPECT_TRUE(gone("omci-shell.pid"));
    // The service saw the whole image, shard by shard, in order.
    std::string log = ketest::read_file(kept + "/sml-sim.log");
    EXPECT_TRUE(has(log, "ke_ke_upgrade_image_sharding_write_call len=6152 status=0x0")) << log;
}

TEST_F(SfuTest, AFailedCheckFailsTheRunAndStopsItsProcesses)
{
    std::string scenario = ketest::read_file(source_dir() + "/scenarios/sfu.omci");
    ASSERT_FALSE(scenario.empty());
    ketest::write_file(tmp / "wrong.omci",
                       scenario + "ke_omci_tapi_tcont_get 1\nexpect allocid 0x999\n");
    EXPECT_EQ(demo({"--scenario", tmp / "wrong.omci"}), 1) << out;
    EXPECT_TRUE(has(out, "  error: expected allocid = 0x999, got 1025 (0x401)\n")) << out;
    EXPECT_TRUE(has(out, "  FAIL  scenario: every command ran and every expect held")) << out;
    EXPECT_TRUE(has(out, "1 checks failed.\n")) << out;
    ASSERT_FALSE(kept.empty()) << out;
    EXPECT_TRUE(gone("sml-sim.pid"));
    EXPECT_TRUE(gone("omci-shell.pid"));
}

TEST_F(SfuTest, AStoppedRunStopsItsProcesses)
{
    ketest::write_file(tmp / "slow.omci", "echo == waiting\nsleep 30000\n");
    Process p;
    ASSERT_TRUE(start(p, {"--scenario", tmp / "slow.omci"}));
    ASSERT_TRUE(ketest::wait_until(
        [&] { return has(ketest::read_file(tmp / "demo.out"), "  waiting\n"); }, 60000))
        << ketest::read_file(tmp / "demo.out");
    p.signal(SIGTERM);
    EXPECT_EQ(finish(p), 143) << out;
    ASSERT_FALSE(kept.empty()) << out;
    EXPECT_TRUE(gone("sml-sim.pid"));
    EXPECT_TRUE(gone("omci-shell.pid"));
}

TEST_F(SfuTest, BadCommandLinesStopBeforeAnythingRuns)
{
    EXPECT_EQ(demo({"--scenario", tmp / "missing.omci"}), 2);
    EXPECT_TRUE(has(out, "demo: cannot read " + (tmp / "missing.omci"))) << out;
    EXPECT_EQ(demo({"--frobnicate"}), 2);
    EXPECT_TRUE(has(out, "usage: scripts/demo.sh")) << out;
    EXPECT_TRUE(kept.empty()) << out;
}

}  // namespace
