// A sandbox for suites that run uci: fresh configuration and staging
// directories named by UCI_CONFIG_DIR and UCI_SAVE_DIR, the uci stand-in
// (KE_UCI_TOOL, given by the build) first on PATH, and a shell handler
// that runs the uci commands the library issues and only records the
// others (the delayed reload of the services).  Nothing reaches the
// machine's own /etc/config.
#ifndef KE_TEST_UCI_SANDBOX_H
#define KE_TEST_UCI_SANDBOX_H

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "process.h"
#include "stub_test.h"

#ifndef KE_UCI_TOOL
#error "KE_UCI_TOOL must name the uci stand-in"
#endif

namespace ketest {

// The fixed file through which the library reads uci's output.
inline constexpr char kScratchFile[] = "/tmp/tmp_uci_value";

inline bool file_exists(const std::string &path) { return exists(path); }

// A uci command made only of what the library's commands hold: no
// character the shell would act on, beyond the redirection into the
// scratch file.
inline bool is_plain_uci_command(const std::string &command)
{
    return kestub::is_plain_uci_command(command);
}

// Runs the plain uci commands through the shell and only records the
// rest: the delayed reload of the services, and (as a safety net for the
// tests of hostile input, which then fail on the recorded command) any
// command that would make the shell do more than run uci.
inline int run_uci_commands_only(const char *command)
{
    return is_plain_uci_command(command) ? kestub::shell_run(command) : 0;
}

struct ToolRun {
    int status;  // exit status, -1 when it did not exit
    std::string out;
    std::string err;
};

class UciSandbox : public StubTest {
protected:
    void SetUp() override
    {
        StubTest::SetUp();
        char tmpl[] = "/tmp/ke_uci_XXXXXX";
        ASSERT_NE(mkdtemp(tmpl), nullptr);
        dir_ = tmpl;
        config_dir_ = dir_ + "/config";
        save_dir_ = dir_ + "/save";
        std::filesystem::create_directory(config_dir_);
        std::filesystem::create_directory(save_dir_);
        const char *path = std::getenv("PATH");
        old_path_ = path != nullptr ? path : "/usr/bin:/bin";
        std::string tool_dir = std::filesystem::path(KE_UCI_TOOL).parent_path();
        setenv("PATH", (tool_dir + ":" + old_path_).c_str(), 1);
        setenv("UCI_CONFIG_DIR", config_dir_.c_str(), 1);
        setenv("UCI_SAVE_DIR", save_dir_.c_str(), 1);
        std::filesystem::remove(kScratchFile);
        kestub::shell_serve(run_uci_commands_only);
    }

    void TearDown() override
    {
        setenv("PATH", old_path_.c_str(), 1);
        unsetenv("UCI_CONFIG_DIR");
        unsetenv("UCI_SAVE_DIR");
        std::filesystem::remove(kScratchFile);
        std::filesystem::remove_all(dir_);
        StubTest::TearDown();
    }

    // A fresh platform stand-in that still runs uci.
    void restart()
    {
        kestub::reset();
        kestub::shell_serve(run_uci_commands_only);
    }

    void write_config(const std::string &name, const std::string &text)
    {
        write_file(config_dir_ + "/" + name, text);
    }

    std::string config(const std::string &name) { return read_file(config_dir_ + "/" + name); }

    // Runs the uci stand-in with args (shell words) and collects its output.
    ToolRun uci(const std::string &args)
    {
        std::string out = dir_ + "/out", err = dir_ + "/err";
        int status = kestub::shell_run(
            (std::string(KE_UCI_TOOL) + " " + args + " >" + out + " 2>" + err).c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, read_file(out), read_file(err)};
    }

    // What `uci get` answers, without its line feed ("" when it fails).
    std::string uci_get(const std::string &ref)
    {
        std::string out = uci("-q get '" + ref + "'").out;
        if (!out.empty() && out.back() == '\n')
            out.pop_back();
        return out;
    }

    std::string dir_, config_dir_, save_dir_, old_path_;
};

}  // namespace ketest

#endif
