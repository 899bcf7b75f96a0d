#include "record.h"

#include <cstdio>
#include <cstring>

#include "text.h"

namespace ketool {

namespace {

uint32_t read_uint(const uint8_t *p, uint32_t width)
{
    uint32_t v = 0;
    if (width == 1)
        v = p[0];
    else if (width == 2) {
        uint16_t h;
        std::memcpy(&h, p, 2);
        v = h;
    } else
        std::memcpy(&v, p, 4);
    return v;
}

void write_uint(uint8_t *p, uint32_t width, uint32_t v)
{
    if (width == 1)
        p[0] = static_cast<uint8_t>(v);
    else if (width == 2) {
        auto h = static_cast<uint16_t>(v);
        std::memcpy(p, &h, 2);
    } else
        std::memcpy(p, &v, 4);
}

uint32_t width_of(Kind kind)
{
    switch (kind) {
    case Kind::U8:
        return 1;
    case Kind::U16:
        return 2;
    case Kind::U32:
        return 4;
    case Kind::Mac:
        return 6;
    default:
        return 0;  // any
    }
}

bool is_uint(Kind kind) { return kind == Kind::U8 || kind == Kind::U16 || kind == Kind::U32; }

}  // namespace

bool layout_valid(const Layout &layout)
{
    for (size_t i = 0; i < layout.count; ++i) {
        const Field &f = layout.fields[i];
        uint32_t w = width_of(f.kind);
        if (f.width == 0 || (w != 0 && f.width != w) || f.offset > layout.size ||
            f.width > layout.size - f.offset)
            return false;
    }
    return true;
}

std::string show_field(const Field &field, const uint8_t *rec)
{
    const uint8_t *p = rec + field.offset;
    char buf[64];
    switch (field.kind) {
    case Kind::U8:
    case Kind::U16:
    case Kind::U32: {
        uint32_t v = read_uint(p, field.width);
        if (v < 10)
            std::snprintf(buf, sizeof buf, "%u", static_cast<unsigned>(v));
        else
            std::snprintf(buf, sizeof buf, "%u (0x%x)", static_cast<unsigned>(v),
                          static_cast<unsigned>(v));
        return buf;
    }
    case Kind::Text:
        return "\"" + printable(p, field.width) + "\"";
    case Kind::Mac:
        std::snprintf(buf, sizeof buf, "%02x:%02x:%02x:%02x:%02x:%02x", p[0], p[1], p[2], p[3],
                      p[4], p[5]);
        return buf;
    case Kind::Bytes:
        break;
    }
    return hex(p, field.width);
}

std::vector<std::string> decode(const Layout &layout, const uint8_t *rec, size_t len)
{
    std::vector<std::string> lines;
    std::vector<bool> covered(len, false);
    for (size_t i = 0; i < layout.count; ++i) {
        const Field &f = layout.fields[i];
        if (f.offset > len || f.width > len - f.offset)
            continue;
        lines.push_back(std::string(f.name) + " = " + show_field(f, rec));
        for (uint32_t b = 0; b < f.width; ++b)
            covered[f.offset + b] = true;
    }
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
    std::string out;
    for (size_t i = 0; i < layout.count; ++i) {
        const Field &f = layout.fields[i];
        if (f.offset > len || f.width > len - f.offset)
            continue;
        std::string v = f.kind == Kind::Bytes ? hex(rec + f.offset, f.width, 8) : show_field(f, rec);
        size_t paren = v.find(" (0x");
        if (paren != std::string::npos)
            v = v.substr(paren + 2, v.size() - paren - 3);  // the hex form alone
        if (f.kind == Kind::Bytes)
            v = "[" + v + "]";
        if (!out.empty())
            out += ' ';
        out += std::string(f.name) + "=" + v;
    }
    return out;
}

bool put_field(const Field &field, uint8_t *rec, const std::string &text, std::string *why)
{
    uint8_t *p = rec + field.offset;
    if (is_uint(field.kind)) {
        uint32_t v;
        uint32_t max = field.width == 4 ? 0xffffffffu : (1u << (8 * field.width)) - 1;
        if (!parse_u32(text, &v) || v > max) {
            *why = std::string(field.name) + ": not a number that fits " +
                   std::to_string(field.width) + " bytes: " + text;
            return false;
        }
        write_uint(p, field.width, v);
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

bool assign(const Layout &layout, uint8_t *rec, const std::string &assignment, std::string *why)
{
    size_t eq = assignment.find('=');
    if (eq == std::string::npos) {
        *why = "expected field=value: " + assignment;
        return false;
    }
    std::string name = assignment.substr(0, eq);
    for (size_t i = 0; i < layout.count; ++i)
        if (name == layout.fields[i].name)
            return put_field(layout.fields[i], rec, assignment.substr(eq + 1), why);
    *why = std::string(layout.name) + " has no field " + name;
    return false;
}

}  // namespace ketool
