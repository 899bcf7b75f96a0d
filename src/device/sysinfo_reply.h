// The service's system-information and board-information replies, and how
// their bytes land in the library's records.  The library reads only the
// bytes it names; the rest of each reply is the service's.
#ifndef KE_DEVICE_SYSINFO_REPLY_H
#define KE_DEVICE_SYSINFO_REPLY_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "call.h"

namespace ke::device {

inline constexpr const char *kBoardInfoGet = "ke_ke_board_info_get_call";
inline constexpr const char *kSysinfoDataGet = "ke_ke_sysinfo_data_get_call";

// A whole reply of len bytes, plus one NUL after it so that a text field
// without a terminator still ends inside the buffer.
template <size_t Len>
struct Reply {
    uint8_t bytes[Len];
    uint8_t end;

    static constexpr uint32_t len = Len;

    uint32_t word_at(size_t off) const
    {
        static_assert(Len >= 4);
        uint32_t w = 0;
        if (off <= Len - 4)
            std::memcpy(&w, bytes + off, sizeof w);
        return w;
    }
    const char *text_at(size_t off) const { return reinterpret_cast<const char *>(bytes + off); }
};

using BoardReply = Reply<956>;
using SysinfoReply = Reply<720>;

// Makes the remote call into a zeroed reply; traced from site, 0 or 1.
template <size_t Len>
inline uint32_t fetch(Site site, const char *name, Reply<Len> &reply)
{
    zero(reply);
    return call(site, name, reply.bytes, reply.len);
}

// A byte field copied whole from a reply into a record.
struct ByteField {
    size_t record_off;
    size_t width;
    size_t reply_off;
};

// Copies the fields in table order, each with its width as destination
// size and count; a failed copy prints its line and the next one goes on.
template <size_t Len, size_t N>
inline void copy_fields(Site site, void *record, const Reply<Len> &reply,
                        const std::array<ByteField, N> &fields)
{
    for (const ByteField &f : fields)
        copy(site, bytes_at(record, f.record_off), f.width, reply.bytes + f.reply_off, f.width);
}

}  // namespace ke::device

#endif
