#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "input.h"

namespace kefuzz {

void fail(const char *what, const std::string &detail)
{
    std::fprintf(stderr, "fuzz oracle: %s: %s\n", what, detail.c_str());
    std::fflush(stderr);
    std::abort();
}

std::string work_dir(const char *name)
{
    const char *run = std::getenv("KE_RUN_DIR");
    if (run == nullptr || run[0] == '\0') {
        std::string tmpl = std::string("/tmp/ke_fuzz_") + name + "_XXXXXX";
        if (mkdtemp(&tmpl[0]) == nullptr)
            fail("set-up", "cannot make a directory under /tmp");
        return tmpl;
    }
    std::string dir = std::string(run) + "/" + name;
    for (size_t slash = dir.find('/', 1);; slash = dir.find('/', slash + 1)) {
        mkdir(dir.substr(0, slash).c_str(), 0700);
        if (slash == std::string::npos)
            break;
    }
    struct stat st;
    if (stat(dir.c_str(), &st) != 0 || !S_ISDIR(st.st_mode))
        fail("set-up", "cannot make " + dir);
    return dir;
}

void quiet_stdout()
{
    std::fflush(stdout);
    int fd = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (fd >= 0) {
        dup2(fd, STDOUT_FILENO);
        close(fd);
    }
}

}  // namespace kefuzz
