#include <fcntl.h>
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
