#include "call.h"

#include "platform.h"

namespace ke {

uint32_t call(Site site, const char *name, void *buf, uint32_t len)
{
    uint32_t ret = ke_ipc_call(name, buf, len);
    if (ret == 0)
        return 0;
    trace_failed_call(site, ret);
    return 1;
}

uint32_t pass_through(const char *name, void *buf, uint32_t len)
{
    return ke_ipc_call(name, buf, len);
}

uint32_t pass_word(const char *name, uint32_t word)
{
    return ke_ipc_call(name, &word, sizeof word);
}

}  // namespace ke
