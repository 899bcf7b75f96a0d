// What the benchmarks across processes share: a run directory of their own
// under /tmp, and the bench's programs started in it.
#ifndef KE_BENCH_ENV_H
#define KE_BENCH_ENV_H

#include <chrono>
#include <string>

#include "process.h"

namespace kebench {

using Clock = std::chrono::steady_clock;

inline double seconds_since(Clock::time_point t)
{
    return std::chrono::duration<double>(Clock::now() - t).count();
}

// A fresh directory under /tmp, named by KE_RUN_DIR for this process (and
// the programs it starts), removed with everything in it.
class RunDir {
public:
    explicit RunDir(const char *name);
    ~RunDir();
    RunDir(const RunDir &) = delete;
    RunDir &operator=(const RunDir &) = delete;
    const std::string &path() const { return path_; }
    std::string operator/(const std::string &name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

// Starts sml-sim in run as the main job does (its call log in
// sml-sim.log) and waits until it serves; false when it does not.
bool start_sim(ketest::Process &sim, const RunDir &run);

}  // namespace kebench

#endif
