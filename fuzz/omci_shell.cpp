// omci-shell's command and argument parser: arbitrary lines, run in
// process against a stand-in that answers every remote call.  Every
// exported function the shell knows is reached with whatever arguments
// the parser makes of the words (numbers, hex, field=value records,
// texts, null pointers).  Oracle: the sanitizers, and the shell's own
// account: a line it could not run counts one error and leaves the last
// status alone.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "input.h"
#include "kestub.h"
#include "shell.h"

namespace {

constexpr int kMaxLines = 16;

FILE *g_out = nullptr;
uint32_t g_reply_status = 0;

// Every remote call answers the status the input chose, leaving its
// buffer as the request.
uint32_t answer(void *, uint32_t) { return g_reply_status; }

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    kefuzz::quiet_stdout();
    g_out = std::fopen("/dev/null", "w");
    // No served call of another process can be reached from here.
    char tmpl[] = "/tmp/ke_fuzz_shell_XXXXXX";
    if (g_out == nullptr || mkdtemp(tmpl) == nullptr)
        kefuzz::fail("omci shell", "set-up");
    setenv("KE_RUN_DIR", tmpl, 1);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    kefuzz::Input in(data, size);
    uint8_t how = in.byte();
    kestub::reset();
    kestub::log_set((how & 1) != 0);
    g_reply_status = (how & 2) != 0 ? 1 : 0;
    // Calls nobody serves here go nowhere (no socket in the run
    // directory) unless the default handler takes them.
    if ((how & 4) == 0)
        kestub::ipc_serve_default(answer);

    omcishell::Shell shell(g_out);
    for (int i = 0; i < kMaxLines && !in.empty(); ++i) {
        std::string line = in.until('\n');
        // A sleep would only slow the fuzzer down.
        if (line.find("sleep") != std::string::npos)
            continue;
        int errors = shell.errors();
        uint32_t status = shell.last_status();
        bool more = shell.run_line(line);
        if (shell.errors() > errors + 1)
            kefuzz::fail("omci shell", "one line counted several errors: " + line);
        if (shell.errors() == errors + 1 && shell.last_status() != status &&
            line.find("call") == std::string::npos)
            kefuzz::fail("omci shell", "a line that failed changed the status: " + line);
        if (!more)
            break;
    }
    return 0;
}
