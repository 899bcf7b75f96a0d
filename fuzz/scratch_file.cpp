// Built without _FILE_OFFSET_BITS=64 (see CMakeLists.txt), so that fopen
// and fopen64 below are the two symbols they name on every target.
#include "scratch_file.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace kefuzz::scratch {
namespace {

struct State {
    bool exists = false;
    std::string text;
    unsigned opens = 0;
    unsigned unlinks = 0;
};

State g_state;

bool is_scratch(const char *path) { return path != nullptr && std::strcmp(path, kPath) == 0; }

template <class Fn>
Fn next_symbol(const char *name)
{
    return reinterpret_cast<Fn>(dlsym(RTLD_NEXT, name));
}

using OpenFn = FILE *(*)(const char *, const char *);

FILE *open_scratch(const char *path, const char *mode, const char *real_name)
{
    static OpenFn real_open = next_symbol<OpenFn>("fopen");
    static OpenFn real_open64 = next_symbol<OpenFn>("fopen64");
    OpenFn real = std::strcmp(real_name, "fopen") == 0 ? real_open : real_open64;
    if (!is_scratch(path))
        return real(path, mode);
    ++g_state.opens;
    if (!g_state.exists || std::strcmp(mode, "r") != 0) {
        errno = ENOENT;
        return nullptr;
    }
    if (g_state.text.empty())
        return real("/dev/null", "r");
    // fmemopen reads straight from the string; it stays unchanged until
    // the next command of the shell writes the file again.
    return fmemopen(g_state.text.data(), g_state.text.size(), "r");
}

}  // namespace

void write(const std::string &text)
{
    g_state.exists = true;
    g_state.text = text;
}

void remove()
{
    g_state.exists = false;
    g_state.text.clear();
}

bool exists() { return g_state.exists; }
unsigned opens() { return g_state.opens; }
unsigned unlinks() { return g_state.unlinks; }
void reset() { g_state = State{}; }

}  // namespace kefuzz::scratch

using namespace kefuzz::scratch;

extern "C" FILE *fopen(const char *path, const char *mode)
{
    return open_scratch(path, mode, "fopen");
}

extern "C" FILE *fopen64(const char *path, const char *mode)
{
    return open_scratch(path, mode, "fopen64");
}

extern "C" int unlink(const char *path)
{
    using UnlinkFn = int (*)(const char *);
    static UnlinkFn real = next_symbol<UnlinkFn>("unlink");
    if (!is_scratch(path))
        return real(path);
    ++g_state.unlinks;
    if (!g_state.exists) {
        errno = ENOENT;
        return -1;
    }
    remove();
    return 0;
}
