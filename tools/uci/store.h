// Where packages live: the configuration directory holds one file per
// package, the staging directory one file of staged changes per package.
#ifndef UCI_STORE_H
#define UCI_STORE_H

#include <string>
#include <vector>

#include "model.h"

namespace uci {

struct Store {
    std::string config_dir;
    std::string save_dir;
};

enum class LoadResult { Ok, NotFound, Invalid, ParseFailed };

// Reads a package's file and replays its staged changes over it; on
// ParseFailed, *why tells where.
LoadResult load(const Store &store, const std::string &name, Package *pkg, std::string *why);

// Appends one change to the package's staged changes.
bool stage(const Store &store, const std::string &package, const std::vector<std::string> &words);

// Replaces the package's file with the package (as loaded, staged changes
// included) and drops its staged changes, so that a kill at any moment
// leaves reads showing either the old state or the new one.
bool commit(const Store &store, const Package &pkg);

// The valid package names that have a file in dir, sorted.
std::vector<std::string> packages_in(const std::string &dir);

}  // namespace uci

#endif
