// The configuration manager: records kept per table and key.
#include <algorithm>
#include <cstring>
#include <map>

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
};

CmState &cm()
{
    static CmState state;
    return state;
}

std::vector<CmKeyField> default_key(uint32_t table)
{
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

uint32_t log_op(CmOp op, uint32_t table, const void *rec, uint32_t size, uint32_t count,
                uint32_t status)
{
    CmCall c{op, table, {}, size, count, status};
    if (rec != nullptr && op != CmOp::GetAllEntry) {
        const auto *b = static_cast<const uint8_t *>(rec);
        c.record.assign(b, b + size);
    }
    cm().calls.push_back(std::move(c));
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
    auto merge = cm().merges.find(table);
    if (merge != cm().merges.end())
        merge->second(e->data(), rec, size);
    else
        e->assign(rec, rec + size);
}

}  // namespace

void cm_reset() { cm() = CmState{}; }

const std::vector<CmCall> &cm_calls() { return cm().calls; }

void cm_fail(uint32_t table, uint32_t code, unsigned nth)
{
    cm().faults[table] = Fault{cm().ops_on[table] + nth, code};
}

void cm_fail_nth(unsigned nth, uint32_t code)
{
    cm().any_fault = Fault{nth == 0 ? 0 : static_cast<unsigned>(cm().calls.size()) + nth, code};
}

void cm_set_key(uint32_t table, std::vector<CmKeyField> key) { cm().keys[table] = std::move(key); }

void cm_set_merge(uint32_t table, CmMerge merge) { cm().merges[table] = merge; }

void cm_preload(uint32_t table, const void *record, size_t size)
{
    store(table, static_cast<const uint8_t *>(record), static_cast<uint32_t>(size));
}

std::vector<std::vector<uint8_t>> cm_entries(uint32_t table)
{
    auto it = cm().tables.find(table);
    return it == cm().tables.end() ? std::vector<Bytes>{} : it->second;
}

}  // namespace kestub

using kestub::CmOp;

extern "C" {

uint32_t igdCmConfGet(uint32_t table, void *record, uint32_t size)
{
    uint32_t status = kestub::fault_for(table);
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
    kestub::cm().calls.back().status = status;
    return status;
}

uint32_t igdCmConfSet(uint32_t table, void *record, uint32_t size)
{
    uint32_t status = kestub::fault_for(table);
    if (status == 0 && record != nullptr)
        kestub::store(table, static_cast<const uint8_t *>(record), size);
    return kestub::log_op(CmOp::Set, table, record, size, 0, status);
}

uint32_t igdCmConfAdd(uint32_t table, void *record, uint32_t size)
{
    uint32_t status = kestub::fault_for(table);
    if (status == 0 && record != nullptr) {
        const auto *rec = static_cast<const uint8_t *>(record);
        kestub::cm().tables[table].emplace_back(rec, rec + size);
    }
    return kestub::log_op(CmOp::Add, table, record, size, 0, status);
}

uint32_t igdCmConfDel(uint32_t table, void *record, uint32_t size)
{
    uint32_t status = kestub::fault_for(table);
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
    return kestub::log_op(CmOp::Del, table, record, size, 0, status);
}

uint32_t igdCmConfGetEntryNum(uint32_t table, uint32_t *count)
{
    uint32_t status = kestub::fault_for(table);
    if (status == 0 && count != nullptr)
        *count = static_cast<uint32_t>(kestub::cm().tables[table].size());
    return kestub::log_op(CmOp::GetEntryNum, table, nullptr, 0, 0, status);
}

uint32_t igdCmConfGetAllEntry(uint32_t table, void *buf, uint32_t size, uint32_t count)
{
    uint32_t status = kestub::fault_for(table);
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
    return kestub::log_op(CmOp::GetAllEntry, table, nullptr, size, count, status);
}

uint32_t igdCmOamCtrl(uint32_t code)
{
    uint32_t status = kestub::fault_for(0);
    return kestub::log_op(CmOp::OamCtrl, code, nullptr, 0, 0, status);
}

}  // extern "C"
