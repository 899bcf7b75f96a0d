// The layouts of the configuration tables whose records the library
// knows, for cm-dump and the shell: taken from the public records (VLAN,
// port and WAN tables) and from the library's own field tables
// (multicast, VoIP and TR-069).
#ifndef KE_TOOLS_TABLES_H
#define KE_TOOLS_TABLES_H

#include <cstdint>

#include "record.h"

namespace ketool {

// The layout of a table's records, or nullptr when none is known.
const Layout *table_layout(uint32_t table);

}  // namespace ketool

#endif
