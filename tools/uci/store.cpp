#include "store.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>

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

}  // namespace

LoadResult load(const Store &store, const std::string &name, Package *pkg, std::string *why)
{
    if (!valid_package(name))
        return LoadResult::Invalid;
    std::string path = path_of(store.config_dir, name);
    std::string text;
    if (!is_regular_file(path) || !read_file(path, &text))
        return LoadResult::NotFound;
    pkg->name = name;
    ParseError err;
    if (!parse_package(text, pkg, &err)) {
        *why = err.what + " at line " + std::to_string(err.line) + " of " + path;
        return LoadResult::ParseFailed;
    }
    std::string staged_path = path_of(store.save_dir, name);
    std::string staged;
    if (read_file(staged_path, &staged) && !apply_staged(staged, pkg, &err)) {
        *why = err.what + " at line " + std::to_string(err.line) + " of " + staged_path;
        return LoadResult::ParseFailed;
    }
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
    // Written beside the file and renamed over it, so that a reader never
    // sees half a file.  The temporary name is not a package name.
    std::string path = path_of(store.config_dir, pkg.name);
    std::string tmp = path + ".uci-new";
    FILE *f = std::fopen(tmp.c_str(), "wb");
    if (f == nullptr || !write_all(f, format_package(pkg)) ||
        std::rename(tmp.c_str(), path.c_str()) != 0) {
        std::remove(tmp.c_str());
        return false;
    }
    std::remove(path_of(store.save_dir, pkg.name).c_str());
    return true;
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
