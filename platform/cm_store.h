// Where the configuration manager keeps its tables.
//
// The manager's logic (keys, merge rules, failure injection, the operation
// log) works on one table's entries in memory.  With a store selected, each
// operation brings the table in from the store first and, when it changed
// something, writes it back, as one transaction: every process that opens
// the same store sees one consistent set of tables.  Without one, the
// entries in memory are the tables.
#ifndef KESTUB_CM_STORE_H
#define KESTUB_CM_STORE_H

#include <cstdint>
#include <string>
#include <vector>

namespace kestub {

using CmEntries = std::vector<std::vector<uint8_t>>;

class CmStore {
public:
    virtual ~CmStore() = default;
    // Starts a transaction on table and reads its entries, in insertion
    // order.  write: the transaction will change the table.
    virtual bool begin(uint32_t table, bool write, CmEntries *entries) = 0;
    // Ends it: entries become the table when commit is true, otherwise
    // nothing changes.
    virtual bool end(uint32_t table, bool commit, const CmEntries &entries) = 0;
    // Tables that hold entries, ascending.
    virtual std::vector<uint32_t> tables() = 0;
    virtual std::string path() const = 0;
};

// The selected store, or nullptr for memory.  KE_CM_DB selects a database
// on first use after a reset.
CmStore *cm_store();
void cm_store_reset();

// One operation's view of a table, in the selected store.
class CmScope {
public:
    CmScope(uint32_t table, bool write, CmEntries *entries)
        : table_(table), write_(write), entries_(entries), store_(cm_store())
    {
    }
    ~CmScope() { close(1); }
    CmScope(const CmScope &) = delete;
    CmScope &operator=(const CmScope &) = delete;

    // 0, or the status of a store that could not be read.
    uint32_t open();
    // Opens unless the operation already failed with status.
    uint32_t open(uint32_t status) { return status != 0 ? status : open(); }
    // Commits a successful write; returns status, or the status of a store
    // that could not be written.
    uint32_t close(uint32_t status);

private:
    uint32_t table_;
    bool write_;
    CmEntries *entries_;
    CmStore *store_;
    bool open_ = false;
};

}  // namespace kestub

#endif
