// Shared test support: a fixture that gives every test a fresh platform
// stand-in, and readers for the bytes the library sent.
#ifndef KE_TEST_STUB_TEST_H
#define KE_TEST_STUB_TEST_H

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "kestub.h"

namespace ketest {

class StubTest : public ::testing::Test {
protected:
    void SetUp() override { kestub::reset(); }
    void TearDown() override { kestub::reset(); }
};

inline uint32_t u32_at(const std::vector<uint8_t> &bytes, size_t off)
{
    uint32_t v = 0;
    if (off + 4 <= bytes.size())
        std::memcpy(&v, bytes.data() + off, 4);
    return v;
}

// The request bytes of a record as the library must send them.
template <class Record>
inline std::vector<uint8_t> bytes_of(const Record &rec)
{
    const auto *b = reinterpret_cast<const uint8_t *>(&rec);
    return std::vector<uint8_t>(b, b + sizeof rec);
}

inline std::vector<uint8_t> words(std::initializer_list<uint32_t> ws)
{
    std::vector<uint8_t> out(ws.size() * 4);
    size_t off = 0;
    for (uint32_t w : ws) {
        std::memcpy(out.data() + off, &w, 4);
        off += 4;
    }
    return out;
}

// The names of every remote call made since reset, in order.
inline std::vector<std::string> call_names()
{
    std::vector<std::string> names;
    for (const auto &c : kestub::ipc_calls())
        names.push_back(c.name);
    return names;
}

// Runs fn with standard output captured and returns what it printed.
template <class Fn>
inline std::string printed(Fn fn)
{
    kestub::capture_begin();
    fn();
    return kestub::capture_end();
}

// The failed-call trace line as the library prints it for func at line.
inline std::string info_line(const std::string &func, int line, uint32_t ret)
{
    char buf[256];
    std::snprintf(buf, sizeof buf, "[%s(%d)][INFO]:ui_ret =0x%x, ui_line =%d\n", func.c_str(),
                  line, static_cast<unsigned>(ret), line);
    return buf;
}

// Parses one failed-call line: the function name and its line number.
// Returns false when text is not exactly one such line for status ret.
inline bool parse_info_line(const std::string &text, std::string *func, int *line, uint32_t ret)
{
    size_t open = text.find('(');
    if (text.empty() || text[0] != '[' || open == std::string::npos)
        return false;
    *func = text.substr(1, open - 1);
    *line = std::atoi(text.c_str() + open + 1);
    return *line > 0 && text == info_line(*func, *line, ret);
}

// True when text is exactly one always-printed copy line of func for op
// ("memcpy_s", "memset_s", "strcpy_s") with any line number and err.
inline bool is_copy_line(const std::string &text, const std::string &func, const std::string &op,
                         int err)
{
    std::string head = func + ", ";
    if (text.rfind(head, 0) != 0)
        return false;
    int line = std::atoi(text.c_str() + head.size());
    char buf[256];
    std::snprintf(buf, sizeof buf, "%s, %d:%s return[%d] failed \r\n", func.c_str(), line,
                  op.c_str(), err);
    return line > 0 && text == buf;
}

// A zeroed record of size bytes with the given 32-bit words (offset,
// value) set: what a table writer must send.
inline std::vector<uint8_t> cm_record(size_t size,
                                      std::initializer_list<std::pair<size_t, uint32_t>> fields)
{
    std::vector<uint8_t> out(size, 0);
    for (const auto &f : fields)
        if (f.first + 4 <= size)
            std::memcpy(out.data() + f.first, &f.second, 4);
    return out;
}

// Success when exactly one configuration-manager operation was made
// since reset: op on table, carrying exactly record at its size.
inline ::testing::AssertionResult one_cm_call(kestub::CmOp op, uint32_t table,
                                              const std::vector<uint8_t> &record)
{
    const auto &calls = kestub::cm_calls();
    if (calls.size() != 1)
        return ::testing::AssertionFailure() << calls.size() << " table operations";
    const kestub::CmCall &c = calls[0];
    if (c.op != op || c.table != table)
        return ::testing::AssertionFailure()
               << "operation " << static_cast<int>(c.op) << " on table " << c.table;
    if (c.size != record.size() || c.record != record)
        return ::testing::AssertionFailure() << "record of " << c.size << " bytes differs";
    return ::testing::AssertionSuccess();
}

// True when text is pattern with every "%d" standing for one and the same
// source line number (> 0): a trace line whose line number is the
// implementation's own.
inline bool matches_at_line(const std::string &text, const std::string &pattern)
{
    size_t at = pattern.find("%d");
    if (at == std::string::npos)
        return text == pattern;
    if (text.compare(0, at, pattern, 0, at) != 0)
        return false;
    int line = std::atoi(text.c_str() + at);
    if (line <= 0)
        return false;
    std::string expected = pattern;
    const std::string number = std::to_string(line);
    for (size_t p = expected.find("%d"); p != std::string::npos; p = expected.find("%d", p))
        expected.replace(p, 2, number);
    return text == expected;
}

// libsafec's code for a null source or destination.
inline constexpr int kEsNullPtr = 400;

}  // namespace ketest

#endif
