// The multicast code mappings: caller's codes to internal codes, and
// internal codes to the values written to the tables.
#ifndef KE_MC_CODES_H
#define KE_MC_CODES_H

#include <array>
#include <cstddef>
#include <cstdint>

namespace ke::mc {

struct CodeMap {
    uint32_t from;
    uint32_t to;
};

// The result for a code that a map does not list and that is rejected.
inline constexpr uint32_t kRejected = 0xFFFFFFFF;
// A tag action code that keeps the port's current action.
inline constexpr uint32_t kKeep = 0xFFFFFFFE;

template <size_t N>
constexpr uint32_t map_code(const std::array<CodeMap, N> &map, uint32_t from,
                            uint32_t otherwise = kRejected)
{
    for (const CodeMap &m : map)
        if (m.from == from)
            return m.to;
    return otherwise;
}

// IGMP/MLD version: IGMPv1 and v2 are one internal version.
inline constexpr std::array<CodeMap, 5> kVersionIn = {{{1, 0}, {2, 0}, {3, 1}, {16, 2}, {17, 3}}};
// Read back; any other internal value reads as IGMPv2.
inline constexpr std::array<CodeMap, 3> kVersionOut = {{{1, 3}, {2, 16}, {3, 17}}};
inline constexpr uint32_t kVersionOutOther = 2;

// Multicast mode: 0 and 1 are kept, anything else is mode 2.
inline constexpr std::array<CodeMap, 2> kModeIn = {{{0, 0}, {1, 1}}};
inline constexpr uint32_t kModeInOther = 2;
// Read back: only mode 1 reads as itself.
inline constexpr std::array<CodeMap, 1> kModeOut = {{{1, 1}}};

// Table 819: the control type is set for mode 0 only.
inline constexpr std::array<CodeMap, 1> kCtrlType = {{{0, 1}}};
// Table 820: IGMPv3 is 2, every other version 1.
inline constexpr std::array<CodeMap, 1> kVerTable = {{{1, 2}}};
inline constexpr uint32_t kVerTableOther = 1;

// Table 826: the four mode flags of each internal mode.
using ModeFlags = std::array<uint32_t, 4>;
inline constexpr std::array<ModeFlags, 3> kModeFlags = {{{1, 1, 0, 0}, {0, 0, 1, 1}, {1, 1, 1, 1}}};

// Upstream IGMP tag control: caller codes 2 and 3 are one internal code,
// which reads back as 3.
inline constexpr std::array<CodeMap, 4> kUpmodeIn = {{{0, 0}, {1, 1}, {2, 2}, {3, 2}}};
inline constexpr std::array<CodeMap, 3> kUpmodeOut = {{{0, 0}, {1, 1}, {2, 3}}};

// Table 822: upstream messages pass transparently only with tag control 0.
inline constexpr std::array<CodeMap, 4> kUpTransparent = {{{0, 1}, {1, 0}, {2, 0}, {3, 0}}};
// Table 822: the downstream tag action as the table codes it.
inline constexpr std::array<CodeMap, 3> kDownTagact = {{{0, 0}, {1, 4}, {2, 1}}};

// Downstream tag action: caller code 0 to 7 to internal code.
inline constexpr std::array<CodeMap, 8> kTagactIn = {
    {{0, 0}, {1, 1}, {2, kKeep}, {3, 2}, {4, 2}, {5, kKeep}, {6, 2}, {7, 2}}};

static_assert(map_code(kVersionIn, 2) == 0 && map_code(kVersionIn, 4) == kRejected);
static_assert(map_code(kModeIn, 5, kModeInOther) == 2);
static_assert(map_code(kTagactIn, 8) == kRejected);

}  // namespace ke::mc

#endif
