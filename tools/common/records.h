// How the records of the public headers are described: one layout per
// record, its fields read off the header with offsetof and sizeof, and one
// list of layouts per family.
#ifndef KE_TOOLS_RECORDS_H
#define KE_TOOLS_RECORDS_H

#include <cstddef>
#include <type_traits>

#include "record.h"
#include "rows.h"

namespace ketool {

using LayoutList = Rows<const Layout *>;

extern const LayoutList kPonRecords;
extern const LayoutList kDeviceRecords;
extern const LayoutList kBridgeQosRecords;
extern const LayoutList kStatRecords;
extern const LayoutList kMcRecords;
extern const LayoutList kVlanRecords;
extern const LayoutList kVoipRecords;
extern const LayoutList kVoipWanRecords;
extern const LayoutList kRemoteMgmtRecords;

}  // namespace ketool

// A field of a public record, of the given kind.
#define KE_FIELD(type, field, kind) \
    ketool::Field { #field, offsetof(type, field), sizeof(type::field), kind }
// An array field: one element of kind per array element.
#define KE_ARRAY(type, field, kind)                                                        \
    ketool::Field                                                                          \
    {                                                                                      \
        #field, offsetof(type, field), sizeof(type::field[0]), kind,                       \
            static_cast<uint32_t>(std::extent<decltype(type::field)>::value)               \
    }
// An array of records described by layout.
#define KE_RECORDS(type, field, layout)                                                    \
    ketool::Field                                                                          \
    {                                                                                      \
        #field, offsetof(type, field), sizeof(type::field[0]), ketool::Kind::Rec,          \
            static_cast<uint32_t>(std::extent<decltype(type::field)>::value), &layout      \
    }
// The layout of a public record.
#define KE_LAYOUT(type, fields) ketool::make_layout(#type, sizeof(type), fields)

#endif
