// Whole reads and writes on a blocking descriptor, for the floors' own
// socket and file traffic.
#ifndef KE_BENCH_IO_ALL_H
#define KE_BENCH_IO_ALL_H

#include <unistd.h>

#include <cstddef>
#include <cstdint>

namespace kebench {

// Calls io until len bytes went through; false when the descriptor ends
// or fails first.
template <class Io, class Byte>
bool whole(Io io, int fd, Byte *p, size_t len)
{
    while (len > 0) {
        ssize_t n = io(fd, p, len);
        if (n <= 0)
            return false;
        p += n;
        len -= static_cast<size_t>(n);
    }
    return true;
}

inline bool write_all(int fd, const void *data, size_t len)
{
    return whole(::write, fd, static_cast<const uint8_t *>(data), len);
}

inline bool read_all(int fd, void *data, size_t len)
{
    return whole(::read, fd, static_cast<uint8_t *>(data), len);
}

}  // namespace kebench

#endif
