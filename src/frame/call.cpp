#include "call.h"

namespace ke {

uint32_t call_failed(Site site, uint32_t ret)
{
    trace_failed_call(site, ret);
    return 1;
}

uint32_t pass_word(const char *name, uint32_t word)
{
    return ke_ipc_call(name, &word, sizeof word);
}

}  // namespace ke
