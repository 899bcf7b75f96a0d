#include "bench_env.h"

#include <cstdlib>
#include <filesystem>

namespace kebench {

RunDir::RunDir(const char *name)
{
    std::string tmpl = std::string("/tmp/") + name + ".XXXXXX";
    if (mkdtemp(tmpl.data()) != nullptr)
        path_ = tmpl;
    setenv("KE_RUN_DIR", path_.c_str(), 1);
}

RunDir::~RunDir()
{
    std::error_code ignored;
    if (!path_.empty())
        std::filesystem::remove_all(path_, ignored);
}

bool start_sim(ketest::Process &sim, const RunDir &run)
{
    if (run.path().empty() ||
        !sim.start({KE_SML_SIM_PATH, "--run-dir", run.path(), "--log", run / "sml-sim.log"},
                   run / "sml-sim.out"))
        return false;
    // Its first line comes once every name is served.
    return ketest::wait_until(
        [&] { return ketest::read_file(run / "sml-sim.out").find("serving") != std::string::npos; },
        10000);
}

}  // namespace kebench
