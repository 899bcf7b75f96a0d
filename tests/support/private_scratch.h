// A private scratch file for the uci reads of one loaded library.
//
// The library reads every uci output through one fixed file,
// "/tmp/tmp_uci_value", shared by every process on the machine.  A suite
// that redirects the library's opening and deleting of that file to a file
// of its own can run at the same time as any other suite: the shell
// handler writes the private file, the library reads and deletes it.
#ifndef KE_TEST_PRIVATE_SCRATCH_H
#define KE_TEST_PRIVATE_SCRATCH_H

#include <cstdio>
#include <cstring>
#include <string>

#include "import_hook.h"

namespace ketest {

inline constexpr char kSharedScratchFile[] = "/tmp/tmp_uci_value";

namespace private_scratch_detail {

struct State {
    std::string path;
    FILE *(*fopen)(const char *, const char *) = nullptr;
    int (*unlink)(const char *) = nullptr;
};

inline State &state()
{
    static State s;
    return s;
}

inline const char *mapped(const char *path)
{
    return path != nullptr && std::strcmp(path, kSharedScratchFile) == 0 ? state().path.c_str()
                                                                         : path;
}

inline FILE *open_file(const char *path, const char *mode)
{
    return state().fopen(mapped(path), mode);
}

inline int remove_file(const char *path) { return state().unlink(mapped(path)); }

}  // namespace private_scratch_detail

// Makes the loaded object whose path contains path_part open and delete
// path wherever it names the shared scratch file.  True when both are
// redirected.
inline bool use_private_scratch(const char *path_part, const std::string &path)
{
    using namespace private_scratch_detail;
    state().path = path;
    // Built with 64-bit file offsets, a 32-bit library opens with fopen64.
    const char *fopen_name = imports(path_part, "fopen64") ? "fopen64" : "fopen";
    void *open = redirect_import(path_part, fopen_name, reinterpret_cast<void *>(open_file));
    void *remove = redirect_import(path_part, "unlink", reinterpret_cast<void *>(remove_file));
    if (open != nullptr)
        state().fopen = reinterpret_cast<decltype(state().fopen)>(open);
    if (remove != nullptr)
        state().unlink = reinterpret_cast<decltype(state().unlink)>(remove);
    return open != nullptr && remove != nullptr;
}

// The file the redirected library uses instead of the shared one.
inline const std::string &private_scratch_file() { return private_scratch_detail::state().path; }

}  // namespace ketest

#endif
