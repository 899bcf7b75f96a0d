// The configuration manager's defaults for the VoIP and TR-069 tables.
#ifndef KESTUB_CM_VOIP_H
#define KESTUB_CM_VOIP_H

#include <cstdint>
#include <vector>

#include "kestub.h"

namespace kestub {

// The key of a VoIP or TR-069 table as the library keys it; false for any
// other table.
bool voip_key(uint32_t table, std::vector<CmKeyField> *key);

// The merge rule of a table the library writes field by field, or nullptr.
CmMerge voip_merge(uint32_t table);

}  // namespace kestub

#endif
