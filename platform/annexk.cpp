// The C11 Annex K names the library binds to, forwarded to libsafec (the
// copies and fills no check can refuse excepted, see plain_copy).
//
// libsafec exports only its checking entry points (_memcpy_s_chk and
// friends; its headers turn memcpy_s into a macro), so its headers are not
// included here: the entry points are declared with "object size unknown"
// for the checks that need the compiler's view of the buffers.
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "platform.h"

extern "C" {

int _memcpy_s_chk(void *dest, size_t dmax, const void *src, size_t slen, size_t destbos,
                  size_t srcbos);
int _memset_s_chk(void *dest, size_t dmax, int value, size_t n, size_t destbos);
int _strcpy_s_chk(char *dest, size_t dmax, const char *src, size_t destbos);
int _vsprintf_s_chk(char *dest, size_t dmax, size_t destbos, const char *fmt, va_list ap);

}

namespace {
constexpr size_t kSizeUnknown = static_cast<size_t>(-1);

// Copies and fills that no check can refuse go straight to the C library:
// libsafec's own loops cost several times more, and every record the
// library builds passes through here.  Anything else (null pointers, a
// zero or oversized count, overlap, sizes near libsafec's limit) is left
// to libsafec for its exact error code and clearing.
constexpr size_t kPlainMax = 1u << 20;

bool plain_copy(const void *dest, size_t destsz, const void *src, size_t count)
{
    if (dest == nullptr || src == nullptr || count == 0 || count > destsz || destsz > kPlainMax)
        return false;
    auto d = reinterpret_cast<uintptr_t>(dest), s = reinterpret_cast<uintptr_t>(src);
    return s + count <= d || d + destsz <= s;
}

bool plain_fill(const void *dest, size_t destsz, int ch, size_t count)
{
    return dest != nullptr && count != 0 && count <= destsz && destsz <= kPlainMax && ch >= 0 &&
           ch <= 0xff;
}
}  // namespace

extern "C" {

int memcpy_s(void *dest, size_t destsz, const void *src, size_t count)
{
    if (plain_copy(dest, destsz, src, count)) {
        std::memcpy(dest, src, count);
        return 0;
    }
    return _memcpy_s_chk(dest, destsz, src, count, kSizeUnknown, kSizeUnknown);
}

int memset_s(void *dest, size_t destsz, int ch, size_t count)
{
    if (plain_fill(dest, destsz, ch, count)) {
        std::memset(dest, ch, count);
        return 0;
    }
    return _memset_s_chk(dest, destsz, ch, count, kSizeUnknown);
}

int strcpy_s(char *dest, size_t destsz, const char *src)
{
    return _strcpy_s_chk(dest, destsz, src, kSizeUnknown);
}

int sprintf_s(char *dest, size_t destsz, const char *fmt, ...)
{
    va_list ap;
    va_start(ap, fmt);
    int n = _vsprintf_s_chk(dest, destsz, kSizeUnknown, fmt, ap);
    va_end(ap);
    return n;
}

}  // extern "C"
