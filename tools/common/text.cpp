#include "text.h"

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace ketool {

bool parse_u64(const std::string &text, uint64_t *value)
{
    if (text.empty() || text[0] == '-' || text[0] == '+' ||
        std::isspace(static_cast<unsigned char>(text[0])))
        return false;
    int base = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X') ? 16 : 10;
    const char *digits = text.c_str() + (base == 16 ? 2 : 0);
    if (*digits == '-' || *digits == '+' || std::isspace(static_cast<unsigned char>(*digits)))
        return false;
    char *end = nullptr;
    errno = 0;
    unsigned long long v = std::strtoull(digits, &end, base);
    if (end == digits || *end != '\0' || errno == ERANGE)
        return false;
    *value = v;
    return true;
}

bool parse_u32(const std::string &text, uint32_t *value)
{
    uint64_t v;
    if (!parse_u64(text, &v) || v > 0xffffffffull)
        return false;
    *value = static_cast<uint32_t>(v);
    return true;
}

namespace {

int nibble(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

}  // namespace

bool parse_hex(const std::string &text, std::vector<uint8_t> *bytes)
{
    std::vector<uint8_t> out;
    size_t i = 0;
    while (i < text.size()) {
        if (i + 1 >= text.size())
            return false;
        int hi = nibble(text[i]);
        int lo = nibble(text[i + 1]);
        if (hi < 0 || lo < 0)
            return false;
        out.push_back(static_cast<uint8_t>(hi << 4 | lo));
        i += 2;
        if (i < text.size() && (text[i] == ':' || text[i] == '-')) {
            if (++i == text.size())
                return false;
        }
    }
    *bytes = std::move(out);
    return true;
}

std::string hex(const uint8_t *bytes, size_t len, size_t limit)
{
    std::string out;
    size_t n = limit != 0 && len > limit ? limit : len;
    char b[4];
    for (size_t i = 0; i < n; ++i) {
        std::snprintf(b, sizeof b, "%02x", bytes[i]);
        if (i != 0)
            out += ' ';
        out += b;
    }
    if (n < len)
        out += " ...";
    return out;
}

bool split_words(const std::string &line, std::vector<std::string> *words)
{
    words->clear();
    size_t i = 0;
    while (i < line.size()) {
        char c = line[i];
        if (std::isspace(static_cast<unsigned char>(c))) {
            ++i;
            continue;
        }
        if (c == '#')
            break;
        std::string word;
        bool quoted = false;
        while (i < line.size() && (quoted || !std::isspace(static_cast<unsigned char>(line[i])))) {
            if (line[i] == '"')
                quoted = !quoted;
            else
                word += line[i];
            ++i;
        }
        if (quoted)
            return false;
        words->push_back(word);
    }
    return true;
}

std::string printable(const uint8_t *bytes, size_t len)
{
    std::string out;
    char b[8];
    for (size_t i = 0; i < len && bytes[i] != 0; ++i) {
        if (bytes[i] >= 0x20 && bytes[i] < 0x7f && bytes[i] != '\\') {
            out += static_cast<char>(bytes[i]);
        } else {
            std::snprintf(b, sizeof b, "\\x%02x", bytes[i]);
            out += b;
        }
    }
    return out;
}

}  // namespace ketool
