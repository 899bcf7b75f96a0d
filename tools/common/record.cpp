#include "record.h"

#include <cstdio>
#include <cstring>

#include "text.h"

namespace ketool {

namespace {

// Sub-records nest this deep at most, so a layout that names itself by
// mistake is refused instead of recursing without end.
constexpr int kMaxDepth = 4;

bool is_number(Kind kind)
{
    return kind == Kind::U8 || kind == Kind::U16 || kind == Kind::U32 || kind == Kind::U64 ||
           kind == Kind::U64Be;
}

// The width a kind requires, 0 when any width will do.
uint32_t width_of(const Field &f)
{
    switch (f.kind) {
    case Kind::U8:
        return 1;
    case Kind::U16:
        return 2;
    case Kind::U32:
    case Kind::Ipv4:
        return 4;
    case Kind::U64:
    case Kind::U64Be:
        return 8;
    case Kind::Mac:
        return 6;
    case Kind::Rec:
        return f.sub != nullptr ? f.sub->size : 0;
    case Kind::Bytes:
    case Kind::Text:
        break;
    }
    return 0;
}

uint64_t read_uint(const uint8_t *p, Kind kind)
{
    if (kind == Kind::U64Be) {
        uint64_t v = 0;
        for (int i = 0; i < 8; ++i)
            v = v << 8 | p[i];
        return v;
    }
    uint8_t b1;
    uint16_t b2;
    uint32_t b4;
    uint64_t b8;
    switch (kind) {
    case Kind::U8:
        std::memcpy(&b1, p, 1);
        return b1;
    case Kind::U16:
        std::memcpy(&b2, p, 2);
        return b2;
    case Kind::U32:
        std::memcpy(&b4, p, 4);
        return b4;
    default:
        std::memcpy(&b8, p, 8);
        return b8;
    }
}

void write_uint(uint8_t *p, Kind kind, uint64_t v)
{
    if (kind == Kind::U64Be) {
        for (int i = 7; i >= 0; --i, v >>= 8)
            p[i] = static_cast<uint8_t>(v);
        return;
    }
    auto b1 = static_cast<uint8_t>(v);
    auto b2 = static_cast<uint16_t>(v);
    auto b4 = static_cast<uint32_t>(v);
    switch (kind) {
    case Kind::U8:
        std::memcpy(p, &b1, 1);
        break;
    case Kind::U16:
        std::memcpy(p, &b2, 2);
        break;
    case Kind::U32:
        std::memcpy(p, &b4, 4);
        break;
    default:
        std::memcpy(p, &v, 8);
        break;
    }
}

bool all_zero(const uint8_t *p, size_t n)
{
    for (size_t i = 0; i < n; ++i)
        if (p[i] != 0)
            return false;
    return true;
}

bool valid_at(const Layout &layout, int depth)
{
    if (depth > kMaxDepth)
        return false;
    for (size_t i = 0; i < layout.count; ++i) {
        const Field &f = layout.fields[i];
        uint32_t w = width_of(f);
        if (f.width == 0 || (w != 0 && f.width != w) || f.count == 0 || f.offset > layout.size ||
            static_cast<uint64_t>(f.width) * f.count > layout.size - f.offset)
            return false;
        if (f.kind == Kind::Rec && (f.sub == nullptr || !valid_at(*f.sub, depth + 1)))
            return false;
    }
    return true;
}

// "42", or "1024 (0x400)" from 10 on.
std::string number_text(uint64_t v)
{
    char buf[48];
    if (v < 10)
        std::snprintf(buf, sizeof buf, "%llu", static_cast<unsigned long long>(v));
    else
        std::snprintf(buf, sizeof buf, "%llu (0x%llx)", static_cast<unsigned long long>(v),
                      static_cast<unsigned long long>(v));
    return buf;
}

// Walks the fields of layout over the record at rec + base; Rec fields
// descend into their non-zero elements.  leaf(field, element, path) is
// called for every other field, whole.
template <class Leaf>
void walk(const Layout &layout, const uint8_t *rec, size_t len, size_t base, const std::string &prefix,
          int depth, Leaf &leaf)
{
    for (size_t i = 0; i < layout.count; ++i) {
        const Field &f = layout.fields[i];
        uint64_t end = base + f.offset + static_cast<uint64_t>(f.width) * f.count;
        if (end > len)
            continue;
        if (f.kind != Kind::Rec || f.sub == nullptr) {
            leaf(f, rec + base, prefix + f.name);
            continue;
        }
        if (depth >= kMaxDepth)
            continue;
        for (uint32_t e = 0; e < f.count; ++e) {
            size_t at = base + f.offset + static_cast<size_t>(e) * f.width;
            if (all_zero(rec + at, f.width))
                continue;
            std::string path = prefix + f.name;
            if (f.count > 1)
                path += "[" + std::to_string(e) + "]";
            walk(*f.sub, rec, len, at, path + ".", depth + 1, leaf);
        }
    }
}

// An element as one line shows it: a number from 10 on in its hex form alone.
std::string shown(const Field &field, const uint8_t *rec, uint32_t index)
{
    std::string v = show_element(field, rec, index);
    size_t paren = v.find(" (0x");
    if (!is_number(field.kind) || paren == std::string::npos)
        return v;
    return v.substr(paren + 2, v.size() - paren - 3);
}

bool parse_ipv4(const std::string &text, uint8_t out[4])
{
    unsigned a[4];
    char tail;
    if (std::sscanf(text.c_str(), "%3u.%3u.%3u.%3u%c", &a[0], &a[1], &a[2], &a[3], &tail) != 4 ||
        text.find_first_not_of("0123456789.") != std::string::npos)
        return false;
    for (int i = 0; i < 4; ++i) {
        if (a[i] > 255)
            return false;
        out[i] = static_cast<uint8_t>(a[i]);
    }
    return true;
}

bool put_element(const Field &field, uint8_t *p, const std::string &text, std::string *why)
{
    if (is_number(field.kind)) {
        uint64_t v;
        uint64_t max = field.width == 8 ? ~0ull : (1ull << (8 * field.width)) - 1;
        if (!parse_u64(text, &v) || v > max) {
            *why = std::string(field.name) + ": not a number that fits " +
                   std::to_string(field.width) + " bytes: " + text;
            return false;
        }
        write_uint(p, field.kind, v);
        return true;
    }
    if (field.kind == Kind::Text) {
        if (text.size() > field.width) {
            *why = std::string(field.name) + ": longer than " + std::to_string(field.width) +
                   " characters";
            return false;
        }
        std::memset(p, 0, field.width);
        std::memcpy(p, text.data(), text.size());
        return true;
    }
    if (field.kind == Kind::Ipv4) {
        if (!parse_ipv4(text, p)) {
            *why = std::string(field.name) + ": expected an address a.b.c.d: " + text;
            return false;
        }
        return true;
    }
    if (field.kind == Kind::Rec) {
        *why = std::string(field.name) + " is a record: name it " + field.name + ".FIELD=VALUE";
        return false;
    }
    std::vector<uint8_t> bytes;
    bool exact = field.kind == Kind::Mac;
    if (!parse_hex(text, &bytes) || bytes.size() > field.width ||
        (exact && bytes.size() != field.width)) {
        *why = std::string(field.name) + ": expected " + (exact ? "" : "up to ") +
               std::to_string(field.width) + " hex bytes: " + text;
        return false;
    }
    std::memset(p, 0, field.width);
    if (!bytes.empty())
        std::memcpy(p, bytes.data(), bytes.size());
    return true;
}

bool assign_at(const Layout &layout, uint8_t *rec, const std::string &path, const std::string &value,
               int depth, std::string *why)
{
    size_t stop = path.find_first_of("[.");
    std::string name = path.substr(0, stop);
    const Field *f = nullptr;
    for (size_t i = 0; i < layout.count && f == nullptr; ++i)
        if (name == layout.fields[i].name)
            f = &layout.fields[i];
    if (f == nullptr) {
        *why = std::string(layout.name) + " has no field " + name;
        return false;
    }
    uint32_t index = 0;
    std::string rest = stop == std::string::npos ? "" : path.substr(stop);
    if (!rest.empty() && rest[0] == '[') {
        size_t close = rest.find(']');
        if (close == std::string::npos || !parse_u32(rest.substr(1, close - 1), &index) ||
            index >= f->count) {
            *why = name + ": index out of 0.." + std::to_string(f->count - 1) + ": " + path;
            return false;
        }
        rest = rest.substr(close + 1);
    } else if (f->count > 1) {
        *why = name + " has " + std::to_string(f->count) + " elements: name one as " + name +
               "[i]";
        return false;
    }
    uint8_t *element = rec + f->offset + static_cast<size_t>(index) * f->width;
    if (f->kind == Kind::Rec && f->sub != nullptr && rest.size() > 1 && rest[0] == '.' &&
        depth < kMaxDepth)
        return assign_at(*f->sub, element, rest.substr(1), value, depth + 1, why);
    if (!rest.empty()) {
        *why = "no such field: " + path;
        return false;
    }
    return put_element(*f, element, value, why);
}

}  // namespace

bool layout_valid(const Layout &layout) { return valid_at(layout, 0); }

std::string show_element(const Field &field, const uint8_t *rec, uint32_t index)
{
    const uint8_t *p = rec + field.offset + static_cast<size_t>(index) * field.width;
    char buf[64];
    switch (field.kind) {
    case Kind::U8:
    case Kind::U16:
    case Kind::U32:
    case Kind::U64:
    case Kind::U64Be:
        return number_text(read_uint(p, field.kind));
    case Kind::Text:
        return "\"" + printable(p, field.width) + "\"";
    case Kind::Mac:
        std::snprintf(buf, sizeof buf, "%02x:%02x:%02x:%02x:%02x:%02x", p[0], p[1], p[2], p[3],
                      p[4], p[5]);
        return buf;
    case Kind::Ipv4:
        std::snprintf(buf, sizeof buf, "%u.%u.%u.%u", p[0], p[1], p[2], p[3]);
        return buf;
    case Kind::Rec:
        return field.sub != nullptr ? "{" + decode_line(*field.sub, p, field.width) + "}" : "{}";
    case Kind::Bytes:
        break;
    }
    return hex(p, field.width);
}

std::string show_field(const Field &field, const uint8_t *rec)
{
    if (field.count <= 1)
        return show_element(field, rec, 0);
    std::string out;
    for (uint32_t i = 0; i < field.count; ++i) {
        std::string v = show_element(field, rec, i);
        if (is_number(field.kind))
            v = std::to_string(read_uint(rec + field.offset + static_cast<size_t>(i) * field.width,
                                         field.kind));
        out += (i != 0 ? " " : "") + v;
    }
    return out;
}

std::vector<std::string> decode(const Layout &layout, const uint8_t *rec, size_t len)
{
    std::vector<std::string> lines;
    std::vector<bool> covered(len, false);
    auto leaf = [&](const Field &f, const uint8_t *base, const std::string &path) {
        lines.push_back(path + " = " + show_field(f, base));
        size_t from = static_cast<size_t>(base - rec) + f.offset;
        for (size_t b = 0; b < static_cast<size_t>(f.width) * f.count; ++b)
            covered[from + b] = true;
    };
    walk(layout, rec, len, 0, "", 0, leaf);
    // Nonzero bytes no field names, in runs of at most 16.
    size_t i = 0;
    while (i < len) {
        if (covered[i] || rec[i] == 0) {
            ++i;
            continue;
        }
        size_t end = i;
        while (end < len && end - i < 16 && !covered[end] && rec[end] != 0)
            ++end;
        char head[24];
        std::snprintf(head, sizeof head, "+%zu: ", i);
        lines.push_back(head + hex(rec + i, end - i));
        i = end;
    }
    return lines;
}

std::string decode_line(const Layout &layout, const uint8_t *rec, size_t len)
{
    constexpr uint32_t kShown = 8;
    std::string out;
    auto leaf = [&](const Field &f, const uint8_t *base, const std::string &path) {
        std::string v;
        if (f.count > 1) {
            uint32_t n = f.count < kShown ? f.count : kShown;
            for (uint32_t i = 0; i < n; ++i)
                v += (i != 0 ? " " : "") + shown(f, base, i);
            v = "[" + v + (n < f.count ? " ...]" : "]");
        } else if (f.kind == Kind::Bytes) {
            v = "[" + hex(base + f.offset, f.width, kShown) + "]";
        } else {
            v = shown(f, base, 0);
        }
        if (!out.empty())
            out += ' ';
        out += path + "=" + v;
    };
    walk(layout, rec, len, 0, "", 0, leaf);
    return out;
}

bool put_field(const Field &field, uint8_t *rec, const std::string &text, std::string *why)
{
    return put_element(field, rec + field.offset, text, why);
}

bool assign(const Layout &layout, uint8_t *rec, const std::string &assignment, std::string *why)
{
    size_t eq = assignment.find('=');
    if (eq == std::string::npos) {
        *why = "expected field=value: " + assignment;
        return false;
    }
    return assign_at(layout, rec, assignment.substr(0, eq), assignment.substr(eq + 1), 0, why);
}

}  // namespace ketool
