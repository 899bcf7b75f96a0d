// A shell in process, writing to memory, with the simulated sml service
// serving in the same process: for the tests of omci-shell's commands.
#ifndef KE_TEST_SHELL_FIXTURE_H
#define KE_TEST_SHELL_FIXTURE_H

#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <memory>
#include <string>

#include "shell.h"
#include "sim.h"
#include "stub_test.h"

namespace ketest {

class ShellTest : public StubTest {
protected:
    void SetUp() override
    {
        StubTest::SetUp();
        out = open_memstream(&text, &len);
        sim = std::make_unique<smlsim::Sim>(smlsim::default_profile());
        sim->attach();
        shell = std::make_unique<omcishell::Shell>(out);
    }
    void TearDown() override
    {
        omcishell::trace_to(nullptr);
        std::fclose(out);
        std::free(text);
        StubTest::TearDown();
    }
    // Runs the lines and returns what they printed.
    std::string run(std::initializer_list<std::string> lines)
    {
        std::fflush(out);
        size_t from = len;
        for (const std::string &l : lines)
            shell->run_line(l);
        std::fflush(out);
        return std::string(text + from, len - from);
    }

    FILE *out = nullptr;
    char *text = nullptr;
    size_t len = 0;
    std::unique_ptr<smlsim::Sim> sim;
    std::unique_ptr<omcishell::Shell> shell;
};

}  // namespace ketest

#endif
