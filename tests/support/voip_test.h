// Test support for the VoIP and remote-management tables: expected record
// images built byte by byte, the configuration-manager operations made,
// and the INFO lines printed.
#ifndef KE_TEST_VOIP_TEST_H
#define KE_TEST_VOIP_TEST_H

#include <cstdint>
#include <algorithm>
#include <cstring>
#include <regex>
#include <string>
#include <utility>
#include <vector>

#include "stub_test.h"

namespace ketest {

using Bytes = std::vector<uint8_t>;

// A record image of size bytes, zero except where a test writes it.
class Image {
public:
    explicit Image(size_t size) : bytes_(size, 0) {}
    Image &u8(size_t off, uint8_t v) { return raw(off, &v, 1); }
    Image &u32(size_t off, uint32_t v) { return raw(off, &v, 4); }
    Image &text(size_t off, const std::string &s) { return raw(off, s.data(), s.size()); }
    Image &raw(size_t off, const void *src, size_t n)
    {
        EXPECT_LE(off + n, bytes_.size());
        if (off + n <= bytes_.size())
            std::memcpy(bytes_.data() + off, src, n);
        return *this;
    }
    operator const Bytes &() const { return bytes_; }

private:
    Bytes bytes_;
};

// Stores a record in the configuration manager as if it had been set.
inline void preload(uint32_t table, const Bytes &rec)
{
    kestub::cm_preload(table, rec.data(), rec.size());
}

// Printable text that fills n bytes, with no terminator.
inline std::string filled(char first, size_t n)
{
    std::string s(n, ' ');
    for (size_t i = 0; i < n; ++i)
        s[i] = static_cast<char>(first + i % 23);
    return s;
}

inline uint8_t u8_at(const Bytes &b, size_t off) { return off < b.size() ? b[off] : 0xFF; }

// Every configuration-manager operation since reset as (op, table).
inline std::vector<std::pair<kestub::CmOp, uint32_t>> cm_ops()
{
    std::vector<std::pair<kestub::CmOp, uint32_t>> ops;
    for (const auto &c : kestub::cm_calls())
        ops.emplace_back(c.op, c.table);
    return ops;
}

// Every record handed to igdCmConfSet, in order, with its table.
inline std::vector<std::pair<uint32_t, Bytes>> cm_sets()
{
    std::vector<std::pair<uint32_t, Bytes>> sets;
    for (const auto &c : kestub::cm_calls())
        if (c.op == kestub::CmOp::Set)
            sets.emplace_back(c.table, c.record);
    return sets;
}

// The stored record of table whose byte at key_at is key.
inline Bytes stored(uint32_t table, size_t key_at = 4, uint8_t key = 0)
{
    for (const Bytes &e : kestub::cm_entries(table))
        if (key_at == 0 || u8_at(e, key_at) == key)
            return e;
    return {};
}

// out with every "[name(digits)]" turned into "[name(L)]".
inline std::string without_lines(const std::string &out)
{
    return std::regex_replace(out, std::regex(R"(\((\d+)\)\])"), "(L)]");
}

// The "name/0xret" of each INFO line in out, or "? " and the line's text.
inline std::vector<std::string> infos(const std::string &out)
{
    static const std::regex info(
        R"(\[(\w+)\((\d+)\)\]\[INFO\]:ui_ret =(0x[0-9a-f]+), ui_line =(\d+)\n)");
    std::vector<std::string> found;
    std::smatch m;
    for (size_t start = 0, end; start < out.size(); start = end) {
        end = std::min(out.find('\n', start), out.size() - 1) + 1;
        std::string line = out.substr(start, end - start);
        bool ok = std::regex_match(line, m, info) && m[2] == m[4];
        found.push_back(ok ? m[1].str() + "/" + m[3].str() : "? " + line);
    }
    return found;
}

}  // namespace ketest

#endif
