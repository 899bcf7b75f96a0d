// Records of a port word followed by a block that travels unchanged
// between the caller and the service (MAC filter entries, priority
// marking rules).
#ifndef KE_BRIDGE_QOS_PORT_BLOCK_H
#define KE_BRIDGE_QOS_PORT_BLOCK_H

#include <cstddef>
#include <cstdint>

#include "../frame/call.h"

namespace ke {

// Sends the port and a copy of the caller's block.  A failed copy leaves
// the block zero and the record still goes out.
template <class Record, size_t N>
inline uint32_t send_port_block(Site site, const char *name, uint32_t port,
                                uint8_t (Record::*block)[N], const void *src)
{
    Record rec;
    zero(rec);
    rec.ui_port = port;
    copy(site, rec.*block, N, src, N);
    return call(site, name, rec);
}

}  // namespace ke

#endif
