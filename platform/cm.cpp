// The configuration manager: records kept per table and key.
#include <algorithm>
#include <cstring>
#include <map>

#include "cm_store.h"
#include "cm_voip.h"
#include "kestub.h"
#include "platform.h"
#include "state.h"

namespace kestub {
namespace {

using Bytes = std::vector<uint8_t>;

struct Fault {
    unsigned at;  // operation number on the table (or overall) that fails
    uint32_t code;
};

struct CmState {
    std::map<uint32_t, std::vector<Bytes>> tables;
    std::map<uint32_t, std::vector<CmKeyField>> keys;
    std::map<uint32_t, CmMerge> merges;
    std::map<uint32_t, unsigned> ops_on;  // operations seen per table
    std::map<uint32_t, Fault> faults;     // per table
    Fault any_fault{0, 0};
    std::vector<CmCall> calls;
    CmHandler served = nullptr;  // answers alone when set
};

CmState &cm()
{
    static CmState state;
    return state;
}

std::vector<CmKeyField> default_key(uint32_t table)
{
    std::vector<CmKeyField> voip;
    if (voip_key(table, &voip))
        return voip;
    if (table == 815 || table == 816)
        return {{4, 4}};
    if (table == 808)  // one membership per port and VLAN
        return {{8, 8}};
    if (table == 813 || table == 814)  // a rule: the port and its three match words
        return {{8, 28}};
    if (table >= 807 && table <= 834)
        return {{8, 4}};
    if (table == 448 || table == 458)
        return {{4, 3}};
    if (table == 449)
        return {{4, 1}};  // the state of a connection is keyed by its first key byte
    return {{4, 1}};
}

const std::vector<CmKeyField> &key_of(uint32_t table)
{
    auto it = cm().keys.find(table);
    if (it == cm().keys.end())
        it = cm().keys.emplace(table, default_key(table)).first;
    return it->second;
}

bool same_key(uint32_t table, const Bytes &a, const uint8_t *b, uint32_t size)
{
    for (const CmKeyField &k : key_of(table)) {
        if (k.offset + k.len > a.size() || k.offset + k.len > size)
            return false;
        if (std::memcmp(a.data() + k.offset, b + k.offset, k.len) != 0)
            return false;
    }
    return true;
}

Bytes *find(uint32_t table, const uint8_t *rec, uint32_t size)
{
    for (Bytes &e : cm().tables[table])
        if (same_key(table, e, rec, size))
            return &e;
    return nullptr;
}

// The injected failure for this operation, if any (0: none).
uint32_t fault_for(uint32_t table)
{
    CmState &st = cm();
    unsigned n = ++st.ops_on[table];
    auto f = st.faults.find(table);
    if (f != st.faults.end() && f->second.at == n) {
        uint32_t code = f->second.code;
        st.faults.erase(f);
        return code;
    }
    if (st.any_fault.at != 0 && st.any_fault.at == st.calls.size() + 1) {
        uint32_t code = st.any_fault.code;
        st.any_fault = {0, 0};
        return code;
    }
    return 0;
}

// Tells the observer of an operation, with the record as it is now.
void tell(const CmCall &c, const void *rec)
{
    notify(Event{EventKind::CmOp, "", c.op, c.table, c.record.data(),
                 static_cast<const uint8_t *>(rec), c.size, c.status});
}

uint32_t log_op(CmOp op, uint32_t table, const void *rec, uint32_t size, uint32_t count,
                uint32_t status)
{
    CmCall c{op, table, {}, size, count, status};
    if (rec != nullptr && op != CmOp::GetAllEntry) {
        const auto *b = static_cast<const uint8_t *>(rec);
        c.record.assign(b, b + size);
    }
    cm().calls.push_back(std::move(c));
    if (op != CmOp::Get)  // a Get is told once its reply is in
        tell(cm().calls.back(), rec);
    return status;
}

void store(uint32_t table, const uint8_t *rec, uint32_t size)
{
    Bytes *e = find(table, rec, size);
    if (e == nullptr) {
        cm().tables[table].emplace_back(rec, rec + size);
        return;
    }
    e->resize(std::max<size_t>(e->size(), size));
    auto set = cm().merges.find(table);
    CmMerge merge = set != cm().merges.end() ? set->second : voip_merge(table);
    if (merge != nullptr)
        merge(e->data(), rec, size);
    else
        e->assign(rec, rec + size);
}

}  // namespace

// The table's entries for one operation, brought in from the store.
struct TableScope : CmScope {
    TableScope(uint32_t table, bool write) : CmScope(table, write, &cm().tables[table]) {}
};

void cm_reset()
{
    cm() = CmState{};
    cm_store_reset();
}

const std::vector<CmCall> &cm_calls() { return cm().calls; }

void cm_fail(uint32_t table, uint32_t code, unsigned nth)
{
    cm().faults[table] = Fault{cm().ops_on[table] + nth, code};
}

void cm_fail_nth(unsigned nth, uint32_t code)
{
    cm().any_fault = Fault{nth == 0 ? 0 : static_cast<unsigned>(cm().calls.size()) + nth, code};
}

void cm_serve(CmHandler handler) { cm().served = handler; }

void cm_set_key(uint32_t table, std::vector<CmKeyField> key) { cm().keys[table] = std::move(key); }

void cm_set_merge(uint32_t table, CmMerge merge) { cm().merges[table] = merge; }

void cm_preload(uint32_t table, const void *record, size_t size)
{
    TableScope scope(table, true);
    if (scope.open() == 0)
        store(table, static_cast<const uint8_t *>(record), static_cast<uint32_t>(size));
    scope.close(0);
}

std::vector<std::vector<uint8_t>> cm_entries(uint32_t table)
{
    TableScope scope(table, false);
    if (scope.open() != 0)
        return {};
    auto it = cm().tables.find(table);
    return it == cm().tables.end() ? std::vector<Bytes>{} : it->second;
}

std::vector<uint32_t> cm_tables()
{
    if (CmStore *db = cm_store())
        return db->tables();
    std::vector<uint32_t> ids;
    for (const auto &t : cm().tables)
        if (!t.second.empty())
            ids.push_back(t.first);
    return ids;
}

}  // namespace kestub

using kestub::CmOp;

extern "C" {

uint32_t igdCmConfGet(uint32_t table, void *record, uint32_t size)
{
    if (kestub::CmHandler served = kestub::cm().served)
        return served(CmOp::Get, table, record, size);
    kestub::TableScope scope(table, false);
    uint32_t status = scope.open(kestub::fault_for(table));
    // Logged before the reply overwrites it: the bytes are the request.
    kestub::log_op(CmOp::Get, table, record, size, 0, status);
    if (status == 0 && record != nullptr) {
        auto *rec = static_cast<uint8_t *>(record);
        kestub::Bytes *e = kestub::find(table, rec, size);
        if (e == nullptr)
            status = kestub::kCmNoEntry;
        else
            std::memcpy(rec, e->data(), std::min<size_t>(size, e->size()));
    }
    status = scope.close(status);
    kestub::cm().calls.back().status = status;
    kestub::tell(kestub::cm().calls.back(), record);
    return status;
}

uint32_t igdCmConfSet(uint32_t table, void *record, uint32_t size)
{
    if (kestub::CmHandler served = kestub::cm().served)
        return served(CmOp::Set, table, record, size);
    kestub::TableScope scope(table, true);
    uint32_t status = scope.open(kestub::fault_for(table));
    if (status == 0 && record != nullptr)
        kestub::store(table, static_cast<const uint8_t *>(record), size);
    status = scope.close(status);
    return kestub::log_op(CmOp::Set, table, record, size, 0, status);
}

uint32_t igdCmConfAdd(uint32_t table, void *record, uint32_t size)
{
    if (kestub::CmHandler served = kestub::cm().served)
        return served(CmOp::Add, table, record, size);
    kestub::TableScope scope(table, true);
    uint32_t status = scope.open(kestub::fault_for(table));
    if (status == 0 && record != nullptr) {
        const auto *rec = static_cast<const uint8_t *>(record);
        kestub::cm().tables[table].emplace_back(rec, rec + size);
    }
    status = scope.close(status);
    return kestub::log_op(CmOp::Add, table, record, size, 0, status);
}

uint32_t igdCmConfDel(uint32_t table, void *record, uint32_t size)
{
    if (kestub::CmHandler served = kestub::cm().served)
        return served(CmOp::Del, table, record, size);
    kestub::TableScope scope(table, true);
    uint32_t status = scope.open(kestub::fault_for(table));
    if (status == 0 && record != nullptr) {
        auto &entries = kestub::cm().tables[table];
        const auto *rec = static_cast<const uint8_t *>(record);
        auto it = std::find_if(entries.begin(), entries.end(), [&](const kestub::Bytes &e) {
            return kestub::same_key(table, e, rec, size);
        });
        if (it == entries.end())
            status = kestub::kCmNoEntry;
        else
            entries.erase(it);
    }
    status = scope.close(status);
    return kestub::log_op(CmOp::Del, table, record, size, 0, status);
}

uint32_t igdCmConfGetEntryNum(uint32_t table, uint32_t *count)
{
    kestub::TableScope scope(table, false);
    uint32_t status = scope.open(kestub::fault_for(table));
    if (status == 0 && count != nullptr)
        *count = static_cast<uint32_t>(kestub::cm().tables[table].size());
    status = scope.close(status);
    return kestub::log_op(CmOp::GetEntryNum, table, nullptr, 0, 0, status);
}

uint32_t igdCmConfGetAllEntry(uint32_t table, void *buf, uint32_t size, uint32_t count)
{
    kestub::TableScope scope(table, false);
    uint32_t status = scope.open(kestub::fault_for(table));
    if (status == 0 && buf != nullptr) {
        auto *out = static_cast<uint8_t *>(buf);
        uint32_t done = 0;
        size_t used = 0;
        for (const kestub::Bytes &e : kestub::cm().tables[table]) {
            if (done >= count || used + e.size() > size)
                break;
            std::memcpy(out + used, e.data(), e.size());
            used += e.size();
            ++done;
        }
    }
    status = scope.close(status);
    return kestub::log_op(CmOp::GetAllEntry, table, nullptr, size, count, status);
}

uint32_t igdCmOamCtrl(uint32_t code)
{
    uint32_t status = kestub::fault_for(0);
    return kestub::log_op(CmOp::OamCtrl, code, nullptr, 0, 0, status);
}

}  // extern "C"
