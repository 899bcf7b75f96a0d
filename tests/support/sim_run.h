// Tests against sml-sim in a process of its own: a run directory of their
// own (KE_RUN_DIR), and the simulator started in it.
#ifndef KE_TEST_SIM_RUN_H
#define KE_TEST_SIM_RUN_H

#include <cstdlib>
#include <string>
#include <vector>

#include "process.h"
#include "stub_test.h"

namespace ketest {

inline size_t count_of(const std::string &text, const std::string &part)
{
    size_t n = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++n;
    return n;
}

class SimRunTest : public StubTest {
protected:
    void SetUp() override
    {
        StubTest::SetUp();
        KE_SKIP_WITHOUT_THREADS();
        ASSERT_FALSE(run.path().empty());
        setenv("KE_RUN_DIR", run.path().c_str(), 1);
    }

    // Starts sml-sim in the run directory with extra options, its output
    // appended to the run directory's file out, and waits until it serves
    // every procedure.  Started again after a kill, it takes the dead
    // one's sockets over.
    void start_sim(Process &sim, const std::vector<std::string> &extra = {},
                   const std::string &out = "sim.out")
    {
        std::vector<std::string> argv = {KE_PATH_SML_SIM, "--run-dir", run.path(), "--log",
                                         run / "sim.log"};
        argv.insert(argv.end(), extra.begin(), extra.end());
        const std::string path = run / out;
        const char ready[] = "sml-sim: serving ";
        size_t before = count_of(read_file(path), ready);
        ASSERT_TRUE(sim.start(argv, path));
        ASSERT_TRUE(wait_until([&] { return count_of(read_file(path), ready) > before; }, 10000))
            << read_file(path);
    }

    TempDir run;
};

}  // namespace ketest

#endif
