// Reading and writing the values people type: numbers, hex bytes, MAC
// addresses, and words of a command line.
#ifndef KE_TOOLS_TEXT_H
#define KE_TOOLS_TEXT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace ketool {

// Decimal, or hexadecimal after 0x; the whole text, within 32 bits.
bool parse_u32(const std::string &text, uint32_t *value);
// The same within 64 bits.
bool parse_u64(const std::string &text, uint64_t *value);

// Hex digits, optionally separated by ':' or '-' between bytes ("00a1ff",
// "00:a1:ff").  Empty text is no bytes.
bool parse_hex(const std::string &text, std::vector<uint8_t> *bytes);

// "00 a1 ff": every byte, or with limit > 0 at most limit then "...".
std::string hex(const uint8_t *bytes, size_t len, size_t limit = 0);

// The words of a line: blanks separate, double quotes group (a quoted
// word may be empty), # outside quotes starts a comment.  False on an
// unterminated quote.
bool split_words(const std::string &line, std::vector<std::string> *words);

// Printable text of a fixed byte field: up to the first NUL, other bytes
// shown as \xNN.
std::string printable(const uint8_t *bytes, size_t len);

}  // namespace ketool

#endif
