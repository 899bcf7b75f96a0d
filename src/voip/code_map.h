// A constant mapping between the caller's codes and the codes a table
// stores, written once and read in either direction.
#ifndef KE_VOIP_CODE_MAP_H
#define KE_VOIP_CODE_MAP_H

#include <array>
#include <cstddef>
#include <cstdint>

namespace ke::voip {

struct CodePair {
    uint32_t caller;
    uint32_t stored;
};

// Each direction takes the first pair that matches, else its default; so a
// stored code listed for two caller values reads back as the first one.
template <size_t N>
struct CodeMap {
    std::array<CodePair, N> pairs;
    uint32_t stored_default;  // stored for a caller value not listed
    uint32_t caller_default;  // reported for a stored code not listed

    constexpr uint32_t to_stored(uint32_t caller) const
    {
        for (const CodePair &p : pairs)
            if (p.caller == caller)
                return p.stored;
        return stored_default;
    }
    constexpr uint32_t to_caller(uint32_t stored) const
    {
        for (const CodePair &p : pairs)
            if (p.stored == stored)
                return p.caller;
        return caller_default;
    }
};

}  // namespace ke::voip

#endif
