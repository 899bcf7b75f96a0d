// What omci-shell does for and around the library besides calling it:
// waiting for served calls from other processes, and the commands the
// library hands to the shell.
#include <sys/stat.h>
#include <unistd.h>

#include "ke_omci_tapi/lifecycle.h"
#include "platform.h"
#include "process.h"
#include "shell_fixture.h"

namespace {

using ketest::ShellTest;

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
