// Test support for the VoIP and remote-management tables: expected record
// images built byte by byte, the configuration-manager operations the
// library made, and the INFO lines it printed.
#ifndef KE_TEST_VOIP_TEST_H
#define KE_TEST_VOIP_TEST_H

#include <cstdint>
#include <cstring>
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
        if (off + n <= bytes_.size())
            std::memcpy(bytes_.data() + off, src, n);
        else
            ADD_FAILURE() << "image write past " << bytes_.size() << " at " << off;
        return *this;
    }
    const Bytes &bytes() const { return bytes_; }
    operator const Bytes &() const { return bytes_; }

private:
    Bytes bytes_;
};

inline uint8_t u8_at(const Bytes &b, size_t off) { return off < b.size() ? b[off] : 0xFF; }

// The configuration-manager operations since reset, as (op, table).
inline std::vector<std::pair<kestub::CmOp, uint32_t>> cm_ops()
{
    std::vector<std::pair<kestub::CmOp, uint32_t>> ops;
    for (const auto &c : kestub::cm_calls())
        ops.emplace_back(c.op, c.table);
    return ops;
}

// The records handed to igdCmConfSet, in order, with their tables.
inline std::vector<std::pair<uint32_t, Bytes>> cm_sets()
{
    std::vector<std::pair<uint32_t, Bytes>> sets;
    for (const auto &c : kestub::cm_calls())
        if (c.op == kestub::CmOp::Set)
            sets.emplace_back(c.table, c.record);
    return sets;
}

// The one stored record of a global table (or the first of a keyed one).
inline Bytes stored(uint32_t table)
{
    auto entries = kestub::cm_entries(table);
    return entries.empty() ? Bytes{} : entries.front();
}

// Splits printed output into its lines, each with its "\n".
inline std::vector<std::string> lines_of(const std::string &out)
{
    std::vector<std::string> lines;
    size_t start = 0;
    while (start < out.size()) {
        size_t end = out.find('\n', start);
        end = end == std::string::npos ? out.size() : end + 1;
        lines.push_back(out.substr(start, end - start));
        start = end;
    }
    return lines;
}

// The (log name, ui_ret) of every INFO line in out; a line that is not a
// well-formed INFO line is reported as ("?", 0) with the text.
struct Info {
    std::string func;
    uint32_t ret;
    bool operator==(const Info &o) const { return func == o.func && ret == o.ret; }
};

inline std::ostream &operator<<(std::ostream &os, const Info &i)
{
    return os << i.func << "/0x" << std::hex << i.ret << std::dec;
}

inline std::vector<Info> infos(const std::string &out)
{
    std::vector<Info> found;
    for (const std::string &line : lines_of(out)) {
        size_t at = line.find("ui_ret =0x");
        uint32_t ret =
            at == std::string::npos
                ? 0
                : static_cast<uint32_t>(std::strtoul(line.c_str() + at + 10, nullptr, 16));
        std::string func;
        int n = 0;
        if (parse_info_line(line, &func, &n, ret))
            found.push_back({func, ret});
        else
            found.push_back({"? " + line, 0});
    }
    return found;
}

// out with every "[name(line)]" turned into "[name(L)]", so that lines can
// be compared whatever the source lines.
inline std::string without_lines(const std::string &out)
{
    std::string s;
    size_t i = 0;
    while (i < out.size()) {
        size_t open = out.find('(', i);
        if (open == std::string::npos)
            break;
        size_t close = open + 1;
        while (close < out.size() && out[close] >= '0' && out[close] <= '9')
            ++close;
        bool line = close > open + 1 && out.compare(close, 2, ")]") == 0;
        s += out.substr(i, open + 1 - i);
        s += line ? "L" : "";
        i = line ? close : open + 1;
    }
    return s + out.substr(i);
}

}  // namespace ketest

#endif
