// Selection of the configuration manager's store, and the per-operation
// scope that brings a table in from it and writes it back.
#include "cm_store.h"

#include <cstdio>
#include <cstdlib>
#include <memory>

#include "kestub.h"

namespace kestub {

std::unique_ptr<CmStore> open_sqlite_store(const std::string &path);

namespace {

struct Selection {
    bool chosen = false;  // false: KE_CM_DB decides on first use
    std::unique_ptr<CmStore> store;
};

Selection &selection()
{
    static Selection state;
    return state;
}

}  // namespace

CmStore *cm_store()
{
    Selection &sel = selection();
    if (!sel.chosen) {
        sel.chosen = true;
        const char *env = std::getenv("KE_CM_DB");
        if (env != nullptr && env[0] != '\0') {
            sel.store = open_sqlite_store(env);
            if (sel.store == nullptr)
                std::fprintf(stderr, "cm: cannot open %s; tables stay in memory\n", env);
        }
    }
    return sel.store.get();
}

void cm_store_reset() { selection() = Selection{}; }

bool cm_use_db(const char *path)
{
    Selection &sel = selection();
    sel.chosen = true;
    sel.store.reset();
    if (path == nullptr || path[0] == '\0')
        return true;
    sel.store = open_sqlite_store(path);
    return sel.store != nullptr;
}

std::string cm_store_path()
{
    CmStore *store = cm_store();
    return store != nullptr ? store->path() : std::string();
}

uint32_t CmScope::open()
{
    if (store_ == nullptr || open_)
        return 0;
    if (!store_->begin(table_, write_, entries_))
        return kCmStoreFailed;
    open_ = true;
    return 0;
}

uint32_t CmScope::close(uint32_t status)
{
    if (!open_)
        return status;
    open_ = false;
    bool commit = write_ && status == 0;
    if (!store_->end(table_, commit, *entries_) && commit)
        return kCmStoreFailed;
    return status;
}

}  // namespace kestub
