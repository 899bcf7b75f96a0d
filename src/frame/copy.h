// Bounded copies into and out of records.  A failed copy is traced with
// the always-printed copy line and never stops the caller: Annex K leaves
// a valid destination zero-filled, and the caller goes on with it.
#ifndef KE_FRAME_COPY_H
#define KE_FRAME_COPY_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "trace.h"

namespace ke {

// memcpy_s(dst, dst_size, src, count); returns its result.
int copy(Site site, void *dst, size_t dst_size, const void *src, size_t count);

// strcpy_s(dst, dst_size, src); returns its result.
int copy_text(Site site, char *dst, size_t dst_size, const char *src);

// memset_s(dst, size, 0, size); returns its result.
int fill_zero(Site site, void *dst, size_t size);

// The bytes at offset off of a caller's block that may be null.  A null
// block gives null, so the bounded copy reports it with its copy line
// instead of an address being formed from a null pointer.
inline const uint8_t *bytes_at(const void *block, size_t off)
{
    return block == nullptr ? nullptr : static_cast<const uint8_t *>(block) + off;
}

inline uint8_t *bytes_at(void *block, size_t off)
{
    return block == nullptr ? nullptr : static_cast<uint8_t *>(block) + off;
}

// Plain zeroing of a record built on the stack (padding included).
template <class Record>
inline void zero(Record &rec)
{
    std::memset(static_cast<void *>(&rec), 0, sizeof rec);
}

}  // namespace ke

#endif
