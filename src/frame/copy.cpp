#include "copy.h"

#include "platform.h"

namespace ke {

int copy(Site site, void *dst, size_t dst_size, const void *src, size_t count)
{
    int err = memcpy_s(dst, dst_size, src, count);
    if (err != 0)
        trace_copy_failed(site, "memcpy_s", err);
    return err;
}

int copy_text(Site site, char *dst, size_t dst_size, const char *src)
{
    int err = strcpy_s(dst, dst_size, src);
    if (err != 0)
        trace_copy_failed(site, "strcpy_s", err);
    return err;
}

int fill_zero(Site site, void *dst, size_t size)
{
    int err = memset_s(dst, size, 0, size);
    if (err != 0)
        trace_copy_failed(site, "memset_s", err);
    return err;
}

}  // namespace ke
