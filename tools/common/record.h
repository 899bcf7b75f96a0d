// Field-by-field layouts of byte records, for showing and filling records
// by name: the records of the public headers, configuration tables, the
// service's replies.  A layout is a constexpr table; fields may leave gaps,
// and bytes a layout does not name are still shown when they are not zero.
//
// A field may repeat (count elements, width bytes apart): numbers are then
// shown on one line and typed one element at a time ("name[2]=5"); records
// (Kind::Rec) are shown element by element, all-zero elements left out,
// and typed by path ("name[2].field=5").
#ifndef KE_TOOLS_RECORD_H
#define KE_TOOLS_RECORD_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace ketool {

enum class Kind {
    U8,
    U16,
    U32,    // host byte order
    U64,    // host byte order
    U64Be,  // eight bytes, most significant first
    Bytes,  // shown and typed as hex
    Text,   // NUL-padded characters
    Mac,    // six bytes as aa:bb:cc:dd:ee:ff
    Ipv4,   // four bytes in network order, as a.b.c.d
    Rec,    // a record of its own layout (Field::sub)
};

struct Layout;

struct Field {
    const char *name;
    uint32_t offset;
    uint32_t width;  // bytes of one element
    Kind kind;
    uint32_t count = 1;             // elements, width bytes apart
    const Layout *sub = nullptr;    // Kind::Rec: the element's layout
};

struct Layout {
    const char *name;
    uint32_t size;
    const Field *fields;
    size_t count;
};

template <size_t N>
constexpr Layout make_layout(const char *name, uint32_t size, const std::array<Field, N> &fields)
{
    return Layout{name, size, fields.data(), N};
}

// True when every field (and every field of a sub-record) lies inside the
// record and has a width its kind allows.
bool layout_valid(const Layout &layout);

// The value of one element of field in rec (element 0 unless told): a
// number, quoted text, hex bytes, a MAC or an address.  For a number array
// without an index: every element, blank-separated.
std::string show_field(const Field &field, const uint8_t *rec);
std::string show_element(const Field &field, const uint8_t *rec, uint32_t index);

// One line per field ("name = value"; "name[i].field = value" for the
// non-zero elements of a sub-record), then one per run of nonzero bytes
// that no field covers ("+offset: hex").  Fields beyond len are left out.
std::vector<std::string> decode(const Layout &layout, const uint8_t *rec, size_t len);

// The fields as one line: "name=value name=value ...", numbers in hex
// from 10 on, bytes as [hex] cut after 8, arrays as [v v ...] cut after 8.
std::string decode_line(const Layout &layout, const uint8_t *rec, size_t len);

// Writes "path=value" into rec (layout.size bytes); false with a reason.
// The path is a field name, with [index] for an element and .name for a
// field of a sub-record.
bool assign(const Layout &layout, uint8_t *rec, const std::string &assignment, std::string *why);
// Writes text as the value of field (element 0), as assign does.
bool put_field(const Field &field, uint8_t *rec, const std::string &text, std::string *why);

// The records people may name: those of the public headers.
const Layout *find_record(const std::string &name);
const std::vector<const Layout *> &known_records();

}  // namespace ketool

#endif
