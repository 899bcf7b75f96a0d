// The VoIP and TR-069 tables of the configuration manager: their keys, and
// Sets merged field by field under the record's mask, so that a Get after
// several setters of one record returns every field last written.  The
// field places and bits are the library's own table descriptions.
#include "cm_voip.h"

#include <array>
#include <cstring>

#include "../src/voip/voip_tables.h"

namespace kestub {
namespace {

using namespace ke::voip;

// Copies the fields whose bits are all set in the incoming mask and adds
// the bits to the stored mask.  A record that selects nothing (mask 0), or
// is not of the table's size, replaces the stored one whole.
template <class L>
void merge_by_mask(uint8_t *stored, const uint8_t *incoming, uint32_t size)
{
    constexpr uint32_t kAt = kMaskAt<L::kTable>;
    uint32_t mask = 0;
    if (size == Record<L::kTable>::kSize)
        std::memcpy(&mask, incoming + kAt, sizeof mask);
    if (mask == 0) {
        std::memcpy(stored, incoming, size);
        return;
    }
    for (const Span &f : L::kSpans)
        if (f.mask != 0 && (mask & f.mask) == f.mask)
            std::memcpy(stored + f.offset, incoming + f.offset, f.width);
    uint32_t held = 0;
    std::memcpy(&held, stored + kAt, sizeof held);
    held |= mask;
    std::memcpy(stored + kAt, &held, sizeof held);
}

struct Rule {
    uint32_t table;
    const Span *key;
    size_t key_fields;
    CmMerge merge;  // nullptr for the tables the library only reads
};

template <class L>
constexpr Rule read_only()
{
    return {L::kTable, L::kKey.data(), L::kKey.size(), nullptr};
}

template <class L>
constexpr Rule written()
{
    return {L::kTable, L::kKey.data(), L::kKey.size(), merge_by_mask<L>};
}

constexpr std::array<Rule, 15> kRules{{
    read_only<CodecList>(),
    read_only<UserRegInfo>(),
    read_only<LineRtpStats>(),
    read_only<LineCallStats>(),
    read_only<SipStats>(),
    written<Global>(),
    written<SipServer>(),
    written<SipUser>(),
    written<LineProfile>(),
    written<LineGain>(),
    written<Rtp>(),
    written<Fax>(),
    written<Codec>(),
    written<Tr069Server>(),
    written<ConfMethod>(),
}};

const Rule *rule_of(uint32_t table)
{
    for (const Rule &r : kRules)
        if (r.table == table)
            return &r;
    return nullptr;
}

}  // namespace

bool voip_key(uint32_t table, std::vector<CmKeyField> *key)
{
    const Rule *r = rule_of(table);
    if (r == nullptr)
        return false;
    key->clear();
    for (size_t i = 0; i < r->key_fields; ++i)
        key->push_back({r->key[i].offset, r->key[i].width});
    return true;
}

CmMerge voip_merge(uint32_t table)
{
    const Rule *r = rule_of(table);
    return r == nullptr ? nullptr : r->merge;
}

}  // namespace kestub
