// The export lists of tests/exports/: one file per family, one exported
// name per line, "#" starting a comment.  Suites that must have a row for
// every exported function read them here.
#ifndef KE_TEST_EXPORT_LISTS_H
#define KE_TEST_EXPORT_LISTS_H

#include <dirent.h>
#include <dlfcn.h>
#include <elf.h>
#include <link.h>

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>

namespace ketest {

// Every listed name with its family (the list's file name without ".txt").
inline std::map<std::string, std::string> exported_names(const std::string &dir)
{
    std::map<std::string, std::string> family;
    DIR *d = opendir(dir.c_str());
    if (d == nullptr)
        return family;
    // A 32-bit build reads the directories of a 64-bit host (under
    // emulation) only with 64-bit directory offsets.
    while (const dirent64 *entry = readdir64(d)) {
        std::string file = entry->d_name;
        if (file.size() < 4 || file.compare(file.size() - 4, 4, ".txt") != 0)
            continue;
        std::ifstream in(dir + "/" + file);
        std::string line;
        while (std::getline(in, line)) {
            std::istringstream words(line.substr(0, line.find('#')));
            std::string name;
            if (words >> name)
                family[name] = file.substr(0, file.size() - 4);
        }
    }
    closedir(d);
    return family;
}

// Every listed name.
inline std::set<std::string> export_list_names(const std::string &dir)
{
    std::set<std::string> names;
    for (const auto &listed : exported_names(dir))
        names.insert(listed.first);
    return names;
}

// The listed names that are functions, by the loaded library's own symbol
// table; lookup finds a name's address (nullptr when it has none).  A name
// that is not found counts as a function: it needs a row.
template <class Lookup>
inline std::set<std::string> exported_functions(const std::string &dir, Lookup lookup)
{
    std::set<std::string> names;
    for (const auto &listed : exported_names(dir)) {
        void *addr = lookup(listed.first.c_str());
        Dl_info info;
        void *sym = nullptr;
        // st_info holds the type in its low bits in both ELF classes.
        if (addr == nullptr || dladdr1(addr, &info, &sym, RTLD_DL_SYMENT) == 0 || sym == nullptr ||
            ELF32_ST_TYPE(static_cast<const ElfW(Sym) *>(sym)->st_info) == STT_FUNC)
            names.insert(listed.first);
    }
    return names;
}

// Every exported function has a row, and every row names one.
inline ::testing::AssertionResult one_row_each(const std::set<std::string> &functions,
                                               const std::set<std::string> &rows)
{
    std::string wrong;
    if (functions.empty())
        wrong = " no exported function found;";
    for (const std::string &name : functions)
        if (rows.count(name) == 0)
            wrong += " " + name + " has no row;";
    for (const std::string &name : rows)
        if (functions.count(name) == 0)
            wrong += " " + name + " is not an exported function;";
    if (wrong.empty())
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << wrong;
}

}  // namespace ketest

#endif
