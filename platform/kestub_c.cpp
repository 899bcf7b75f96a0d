// The C interface over the C++ test API.
#include "kestub_c.h"

#include <algorithm>
#include <cstring>

#include "kestub.h"

extern "C" {

void kestub_reset(void) { kestub::reset(); }

void kestub_ipc_script(const char *name, uint32_t status, const void *reply, size_t reply_len)
{
    kestub::ipc_script(name, status, reply, reply_len);
}

size_t kestub_ipc_call_count(void) { return kestub::ipc_calls().size(); }

long kestub_ipc_call_at(size_t i, const char **name, void *buf, size_t cap)
{
    const auto &calls = kestub::ipc_calls();
    if (i >= calls.size())
        return -1;
    const kestub::IpcCall &c = calls[i];
    if (name != nullptr)
        *name = c.name.c_str();
    if (buf != nullptr)
        std::memcpy(buf, c.request.data(), std::min(cap, c.request.size()));
    return static_cast<long>(c.len);
}

void kestub_log_set(int open) { kestub::log_set(open != 0); }

}  // extern "C"
