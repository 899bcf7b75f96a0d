// Reading a fuzz input as a sequence of choices: bytes, words, texts.
// Past the end every read answers zero or empty, so a harness never has
// to check the length itself.
#ifndef KE_FUZZ_INPUT_H
#define KE_FUZZ_INPUT_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace kefuzz {

class Input {
public:
    Input(const uint8_t *data, size_t size) : p_(data), end_(data + size) {}

    bool empty() const { return p_ == end_; }
    size_t left() const { return static_cast<size_t>(end_ - p_); }

    uint8_t byte() { return empty() ? 0 : *p_++; }

    uint32_t u32()
    {
        uint32_t v = 0;
        for (int i = 0; i < 4; ++i)
            v |= static_cast<uint32_t>(byte()) << (8 * i);
        return v;
    }

    // Up to n bytes.
    std::string bytes(size_t n)
    {
        n = n < left() ? n : left();
        std::string out(reinterpret_cast<const char *>(p_), n);
        p_ += n;
        return out;
    }

    // The bytes up to the next end byte (consumed, not returned), or to
    // the end of the input.
    std::string until(char end)
    {
        const void *hit = std::memchr(p_, end, left());
        size_t n = hit != nullptr ? static_cast<size_t>(static_cast<const uint8_t *>(hit) - p_)
                                  : left();
        std::string out = bytes(n);
        if (hit != nullptr)
            ++p_;
        return out;
    }

    std::string rest() { return bytes(left()); }

private:
    const uint8_t *p_;
    const uint8_t *end_;
};

// Stops the run with a message: the oracle of a harness found a fault.
[[noreturn]] void fail(const char *what, const std::string &detail);

// Sends standard output to /dev/null: the library and the tools print
// traces that would drown the fuzzer's own report.
void quiet_stdout();

}  // namespace kefuzz

#endif
