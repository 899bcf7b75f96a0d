#include <cstdint>

#include "copy.h"
#include "wan_conn.h"

namespace ke::voip_wan {
namespace {

const uint8_t *first_with_service(const uint8_t *list, uint32_t count, uint8_t service_bit)
{
    for (uint32_t i = 0; i < count; ++i) {
        const uint8_t *entry = list + static_cast<size_t>(i) * list::kEntrySize;
        if ((entry[list::kService] & service_bit) != 0)
            return entry;
    }
    return nullptr;
}

}  // namespace

LookupResult find_connection(const char *log_name, uint32_t count, uint8_t service_bit,
                             const Heap &heap, WanConn &rec)
{
    if (count == 0)
        return {Lookup::NotFound, 0};
    if (count > UINT32_MAX / list::kEntrySize)
        return {Lookup::NoMemory, 0};
    uint32_t size = count * list::kEntrySize;
    auto *entries = static_cast<uint8_t *>(heap.alloc(size));
    if (entries == nullptr)
        return {Lookup::NoMemory, 0};
    fill_zero(Site{log_name, __LINE__}, entries, size);

    LookupResult out{Lookup::NotFound, 0};
    uint32_t ret = igdCmConfGetAllEntry(cm::IGD_CO_WAN_CONN_LIST_TAB, entries, size, count);
    if (ret != 0) {
        out = {Lookup::ListFailed, ret};
    } else if (const uint8_t *entry = first_with_service(entries, count, service_bit)) {
        rec.put(conn::kKey, entry + list::kKey, conn::kKeyLen);
        copy_text(Site{log_name, __LINE__}, reinterpret_cast<char *>(rec.data() + conn::kName),
                  conn::kNameLen, reinterpret_cast<const char *>(entry + list::kName));
        rec.put_u32(conn::kMask1, conn::kMaskAll);
        rec.put_u32(conn::kMask2, conn::kMaskAll);
        ret = cm::get(rec);
        out = ret == 0 ? LookupResult{Lookup::Found, 0} : LookupResult{Lookup::ReadFailed, ret};
    }
    heap.release(entries);
    return out;
}

}  // namespace ke::voip_wan
