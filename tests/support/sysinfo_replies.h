// Replies of the system- and board-information calls for tests.
#ifndef KE_TEST_SYSINFO_REPLIES_H
#define KE_TEST_SYSINFO_REPLIES_H

#include <cstring>
#include <string>
#include <vector>

#include "kestub.h"

namespace ketest {

using Bytes = std::vector<uint8_t>;

// Pseudo-random bytes, so a field read from a wrong offset shows.
inline Bytes patterned(size_t len, uint32_t seed)
{
    Bytes out(len);
    for (uint8_t &b : out)
        b = static_cast<uint8_t>((seed = seed * 1103515245u + 12345u) >> 16);
    return out;
}

inline Bytes sysinfo_reply(const std::string &product, uint32_t seed)
{
    Bytes r = patterned(720, seed);
    std::memcpy(r.data() + 255, product.c_str(), product.size() + 1);
    return r;
}

inline void script(const char *name, const Bytes &reply)
{
    kestub::ipc_script(name, 0, reply.data(), reply.size());
}

}  // namespace ketest

#endif
