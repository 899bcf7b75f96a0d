// Field-by-field layouts of byte records, for showing and filling records
// by name: the records of the public headers, configuration tables, the
// service's replies.  A layout is a constexpr table; fields may leave gaps,
// and bytes a layout does not name are still shown when they are not zero.
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
    Bytes,  // shown and typed as hex
    Text,   // NUL-padded characters
    Mac,    // six bytes as aa:bb:cc:dd:ee:ff
};

struct Field {
    const char *name;
    uint32_t offset;
    uint32_t width;  // bytes
    Kind kind;
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

// True when every field lies inside the record and has a width its kind
// allows.
bool layout_valid(const Layout &layout);

// The value of one field of rec as text.
std::string show_field(const Field &field, const uint8_t *rec);

// One line per field ("name = value"), then one per run of nonzero bytes
// that no field covers ("+offset: hex").  Fields beyond len are left out.
std::vector<std::string> decode(const Layout &layout, const uint8_t *rec, size_t len);

// The fields as one line: "name=value name=value ...", numbers in hex
// from 10 on, bytes as [hex] cut after 8.
std::string decode_line(const Layout &layout, const uint8_t *rec, size_t len);

// Writes "name=value" into rec (layout.size bytes); false with a reason.
bool assign(const Layout &layout, uint8_t *rec, const std::string &assignment, std::string *why);
// Writes text as the value of field (as assign does).
bool put_field(const Field &field, uint8_t *rec, const std::string &text, std::string *why);

// The records people may name: those of the public headers.
const Layout *find_record(const std::string &name);
const std::vector<const Layout *> &known_records();

}  // namespace ketool

#endif
