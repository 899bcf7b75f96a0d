// What cm-dump knows of each table's records: the table's name and size
// from the library's index, and its fields where a layout is written.
#ifndef KE_CM_DUMP_LAYOUTS_H
#define KE_CM_DUMP_LAYOUTS_H

#include <cstdint>

#include "record.h"

namespace cmdump {

// The layout of a table's records, or nullptr when none is written.
const ketool::Layout *table_layout(uint32_t table);

}  // namespace cmdump

#endif
