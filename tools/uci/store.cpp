#include "store.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "parse.h"
#include "staging.h"

namespace uci {
namespace {

std::string path_of(const std::string &dir, const std::string &name) { return dir + "/" + name; }

bool read_file(const std::string &path, std::string *text)
{
    FILE *f = std::fopen(path.c_str(), "rb");
    if (f == nullptr)
        return false;
    char buf[4096];
    size_t n;
    while ((n = std::fread(buf, 1, sizeof buf, f)) > 0)
        text->append(buf, n);
    bool ok = std::ferror(f) == 0;
    std::fclose(f);
    return ok;
}

bool write_all(FILE *f, const std::string &text)
{
    bool ok = std::fwrite(text.data(), 1, text.size(), f) == text.size();
    return std::fclose(f) == 0 && ok;
}

bool is_regular_file(const std::string &path)
{
    struct stat st;
    return stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

// A commit in three steps, each safe to be killed after:
//   1. the new file is written beside the package's file (<name>.uci-new);
//   2. the staged changes are claimed (renamed to <name>.committing): from
//      here on the commit is decided and nothing replays them a second time;
//   3. the new file is renamed over the old one and the claim removed.
// A read that finds a claim finishes step 3 itself, so a kill anywhere
// leaves what reads show either as before the commit or as after it, and
// a change such as an added section never applies twice.  The temporary
// names are not package names.
//
// UCI_CRASH_AFTER=<step> ("written", "claimed", "renamed") kills the
// program right after that step, for the tests of what a kill leaves.
void crash_point(const char *step)
{
    const char *at = std::getenv("UCI_CRASH_AFTER");
    if (at != nullptr && std::strcmp(at, step) == 0)
        std::raise(SIGKILL);
}

std::string fresh_path(const Store &store, const std::string &name)
{
    return path_of(store.config_dir, name) + ".uci-new";
}

std::string claim_path(const Store &store, const std::string &name)
{
    return path_of(store.save_dir, name) + ".committing";
}

// Step 3, for the commit that claimed the changes or for a later read.
// True when no claimed change is left outside the package's file; false
// when the rename failed, so that a read must still replay the claim.
bool finish_commit(const Store &store, const std::string &name)
{
    std::string claim = claim_path(store, name);
    if (!is_regular_file(claim))
        return true;
    std::string fresh = fresh_path(store, name);
    // No new file: an earlier finish renamed it and was stopped before
    // it removed the claim.
    if (std::rename(fresh.c_str(), path_of(store.config_dir, name).c_str()) != 0 &&
        errno != ENOENT)
        return false;
    crash_point("renamed");
    std::remove(claim.c_str());
    return true;
}

// A parse error as a load reports it: what, and where in which file.
std::string located(const ParseError &err, const std::string &path)
{
    return err.what + " at line " + std::to_string(err.line) + " of " + path;
}

// Replays the staged changes in the file at path, if there is one.
bool replay(const std::string &path, Package *pkg, std::string *why)
{
    std::string staged;
    ParseError err;
    if (read_file(path, &staged) && !apply_staged(staged, pkg, &err)) {
        *why = located(err, path);
        return false;
    }
    return true;
}

}  // namespace

LoadResult load(const Store &store, const std::string &name, Package *pkg, std::string *why)
{
    if (!valid_package(name))
        return LoadResult::Invalid;
    const bool claim_in_file = finish_commit(store, name);
    std::string path = path_of(store.config_dir, name);
    std::string text;
    if (!is_regular_file(path) || !read_file(path, &text))
        return LoadResult::NotFound;
    pkg->name = name;
    ParseError err;
    if (!parse_package(text, pkg, &err)) {
        *why = located(err, path);
        return LoadResult::ParseFailed;
    }
    if ((!claim_in_file && !replay(claim_path(store, name), pkg, why)) ||
        !replay(path_of(store.save_dir, name), pkg, why))
        return LoadResult::ParseFailed;
    return LoadResult::Ok;
}

bool stage(const Store &store, const std::string &package, const std::vector<std::string> &words)
{
    mkdir(store.save_dir.c_str(), 0700);  // the first change creates the directory
    FILE *f = std::fopen(path_of(store.save_dir, package).c_str(), "ab");
    return f != nullptr && write_all(f, staged_line(words));
}

bool commit(const Store &store, const Package &pkg)
{
    std::string fresh = fresh_path(store, pkg.name);
    FILE *f = std::fopen(fresh.c_str(), "wb");
    if (f == nullptr || !write_all(f, format_package(pkg))) {
        std::remove(fresh.c_str());
        return false;
    }
    crash_point("written");
    std::string staged = path_of(store.save_dir, pkg.name);
    if (std::rename(staged.c_str(), claim_path(store, pkg.name).c_str()) != 0) {
        if (errno != ENOENT) {
            std::remove(fresh.c_str());
            return false;
        }
        // Nothing staged: the rename alone is the commit.
        if (std::rename(fresh.c_str(), path_of(store.config_dir, pkg.name).c_str()) == 0)
            return true;
        std::remove(fresh.c_str());
        return false;
    }
    crash_point("claimed");
    return finish_commit(store, pkg.name);
}

std::vector<std::string> packages_in(const std::string &dir)
{
    std::vector<std::string> names;
    DIR *d = opendir(dir.c_str());
    if (d == nullptr)
        return names;
    while (const dirent *e = readdir(d)) {
        std::string name = e->d_name;
        if (valid_package(name) && is_regular_file(path_of(dir, name)))
            names.push_back(name);
    }
    closedir(d);
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace uci
