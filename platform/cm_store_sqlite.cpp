// The configuration manager's tables in an SQLite database, shared by every
// process that opens it.
//
// One row per entry: table, position, record bytes.  An operation reads the
// table's rows and, when it changed them, replaces them, inside one
// transaction; a write takes the database's write lock at BEGIN IMMEDIATE so
// two writers never both read and then collide on the upgrade.  WAL lets
// readers go on while one process writes, and the busy time-out makes a
// writer wait for another instead of failing.
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <mutex>

#include "cm_store.h"

#ifdef KE_HAVE_SQLITE
#include <sqlite3.h>

namespace kestub {
namespace {

constexpr int kBusyTimeoutMs = 5000;

constexpr char kSchema[] =
    "CREATE TABLE IF NOT EXISTS entry ("
    " tab INTEGER NOT NULL, seq INTEGER NOT NULL, rec BLOB NOT NULL,"
    " PRIMARY KEY (tab, seq))";

class SqliteStore : public CmStore {
public:
    explicit SqliteStore(std::string path) : path_(std::move(path)) {}
    ~SqliteStore() override
    {
        // A connection inherited across fork belongs to the parent.
        if (db_ != nullptr && pid_ == getpid())
            sqlite3_close(db_);
    }

    bool open()
    {
        pid_ = getpid();
        if (sqlite3_open_v2(path_.c_str(), &db_,
                            SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX,
                            nullptr) != SQLITE_OK) {
            report("open");
            return false;
        }
        sqlite3_busy_timeout(db_, kBusyTimeoutMs);
        return exec("PRAGMA journal_mode=WAL") && exec("PRAGMA synchronous=NORMAL") &&
               exec(kSchema);
    }

    bool begin(uint32_t table, bool write, CmEntries *entries) override
    {
        mutex_.lock();
        if ((pid_ != getpid() && !reopen()) ||
            !exec(write ? "BEGIN IMMEDIATE" : "BEGIN") || !read(table, entries)) {
            exec("ROLLBACK");
            mutex_.unlock();
            return false;
        }
        return true;
    }

    bool end(uint32_t table, bool commit, const CmEntries &entries) override
    {
        bool ok = !commit || (write(table, entries) && exec("COMMIT"));
        if (!commit || !ok)
            exec("ROLLBACK");
        mutex_.unlock();
        return ok;
    }

    std::vector<uint32_t> tables() override
    {
        std::lock_guard<std::mutex> hold(mutex_);
        std::vector<uint32_t> out;
        sqlite3_stmt *st = prepare("SELECT DISTINCT tab FROM entry ORDER BY tab");
        while (st != nullptr && sqlite3_step(st) == SQLITE_ROW)
            out.push_back(static_cast<uint32_t>(sqlite3_column_int64(st, 0)));
        sqlite3_finalize(st);
        return out;
    }

    std::string path() const override { return path_; }

private:
    bool reopen()
    {
        db_ = nullptr;  // the parent's connection: left alone, never closed here
        return open();
    }

    void report(const char *what)
    {
        std::fprintf(stderr, "cm: %s %s: %s\n", what, path_.c_str(),
                     db_ != nullptr ? sqlite3_errmsg(db_) : "out of memory");
    }

    bool exec(const char *sql)
    {
        if (sqlite3_exec(db_, sql, nullptr, nullptr, nullptr) == SQLITE_OK)
            return true;
        report(sql);
        return false;
    }

    sqlite3_stmt *prepare(const char *sql)
    {
        sqlite3_stmt *st = nullptr;
        if (sqlite3_prepare_v2(db_, sql, -1, &st, nullptr) != SQLITE_OK) {
            report(sql);
            return nullptr;
        }
        return st;
    }

    bool read(uint32_t table, CmEntries *entries)
    {
        sqlite3_stmt *st = prepare("SELECT rec FROM entry WHERE tab = ?1 ORDER BY seq");
        if (st == nullptr)
            return false;
        sqlite3_bind_int64(st, 1, table);
        entries->clear();
        int rc;
        while ((rc = sqlite3_step(st)) == SQLITE_ROW) {
            const auto *b = static_cast<const uint8_t *>(sqlite3_column_blob(st, 0));
            int n = sqlite3_column_bytes(st, 0);
            entries->emplace_back(b, b + (b != nullptr ? n : 0));
        }
        sqlite3_finalize(st);
        return rc == SQLITE_DONE;
    }

    bool write(uint32_t table, const CmEntries &entries)
    {
        sqlite3_stmt *del = prepare("DELETE FROM entry WHERE tab = ?1");
        sqlite3_stmt *ins = prepare("INSERT INTO entry (tab, seq, rec) VALUES (?1, ?2, ?3)");
        bool ok = del != nullptr && ins != nullptr;
        if (ok) {
            sqlite3_bind_int64(del, 1, table);
            ok = sqlite3_step(del) == SQLITE_DONE;
        }
        for (size_t i = 0; ok && i < entries.size(); ++i) {
            sqlite3_reset(ins);
            sqlite3_bind_int64(ins, 1, table);
            sqlite3_bind_int64(ins, 2, static_cast<sqlite3_int64>(i));
            if (entries[i].empty())
                sqlite3_bind_zeroblob(ins, 3, 0);
            else
                sqlite3_bind_blob(ins, 3, entries[i].data(), static_cast<int>(entries[i].size()),
                                  SQLITE_TRANSIENT);
            ok = sqlite3_step(ins) == SQLITE_DONE;
        }
        if (!ok)
            report("write");
        sqlite3_finalize(del);
        sqlite3_finalize(ins);
        return ok;
    }

    std::string path_;
    sqlite3 *db_ = nullptr;
    pid_t pid_ = 0;
    std::mutex mutex_;
};

}  // namespace

std::unique_ptr<CmStore> open_sqlite_store(const std::string &path)
{
    auto store = std::make_unique<SqliteStore>(path);
    if (!store->open())
        return nullptr;
    return store;
}

bool cm_db_supported() { return true; }

}  // namespace kestub

#else

namespace kestub {

std::unique_ptr<CmStore> open_sqlite_store(const std::string &path)
{
    std::fprintf(stderr, "cm: built without SQLite, cannot keep tables in %s\n", path.c_str());
    return nullptr;
}

bool cm_db_supported() { return false; }

}  // namespace kestub

#endif
