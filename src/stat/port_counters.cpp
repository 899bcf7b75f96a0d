// Ethernet and bridge-port counters, both taken from one read of a port's
// 46 service counters.
#include <array>
#include <cstddef>

#include "ke_omci_tapi/stat.h"

#include "../frame/call.h"

namespace {

// Marks a counter that no service counter feeds: it is delivered as 0.
constexpr int kNone = -1;

// Ethernet counter j is service counter kEthFromService[j].  Four groups:
// 0-13, 14, 15-28 and 29-42; the sixth counter of the third group repeats
// service counter 13, the sixth of the fourth has no source.  Service
// counters 28, 29, 43, 44 and 45 are not delivered.
constexpr std::array<int, KE_ETH_STAT_COUNTERS> kEthFromService = {
    0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13,     // 0-13
    20,                                                         // 14
    14, 15, 16, 17, 18, 13, 19, 21, 22, 23, 24, 25, 26, 27,     // 15-28
    30, 31, 32, 33, 34, kNone, 35, 36, 37, 38, 39, 40, 41, 42,  // 29-42
};

// Bridge-port word w is the low 32 bits of service counter kBrportFromService[w].
constexpr std::array<int, KE_BRPORT_STAT_WORDS> kBrportFromService = {32, kNone, kNone, 16,
                                                                      kNone};

template <size_t N>
constexpr bool sources_valid(const std::array<int, N> &table)
{
    for (int k : table)
        if (k != kNone && (k < 0 || k >= KE_PORT_STAT_COUNTERS))
            return false;
    return true;
}
static_assert(sources_valid(kEthFromService), "Ethernet counter source out of range");
static_assert(sources_valid(kBrportFromService), "bridge-port counter source out of range");

uint64_t service_counter(const st_port_stat &rec, int k)
{
    return k == kNone ? 0 : rec.aull_counter[k];
}

// Delivers out[i] = the counter that sources[i] names, narrowed to the
// caller's width by truncation.  Out of line: folded into its caller, the
// loop would share the caller's null test and take two branches a counter.
template <class Out, size_t N>
__attribute__((noinline)) void deliver(const st_port_stat &rec, const std::array<int, N> &sources,
                                       Out *out)
{
    for (size_t i = 0; i < N; ++i)
        out[i] = static_cast<Out>(service_counter(rec, sources[i]));
}

// Reads the port's service counters and delivers those sources names.
template <class Out, size_t N>
uint32_t read_mapped(ke::Site site, uint32_t port, const std::array<int, N> &sources, Out *out)
{
    st_port_stat rec;
    ke::zero(rec);
    rec.ui_port = port;
    if (ke::call(site, "ke_ke_sml_port_stat_get_call", rec) != 0)
        return 1;
    if (out != nullptr)
        deliver(rec, sources, out);
    return 0;
}

}  // namespace

extern "C" {

uint32_t ke_omci_tapi_stat_eth_get(uint32_t ui_port, st_eth_stat *pst_stat)
{
    return read_mapped(KE_SITE, ui_port, kEthFromService,
                       pst_stat != nullptr ? pst_stat->aull_counter : nullptr);
}

// The low 32 bits, without saturation.
uint32_t ke_omci_tapi_stat_brport_get(uint32_t ui_port, st_brport_stat *pst_stat)
{
    return read_mapped(KE_SITE, ui_port, kBrportFromService,
                       pst_stat != nullptr ? pst_stat->aui_counter : nullptr);
}

uint32_t ke_omci_tapi_stat_eth_clr(KE_ANY_ARGS) { return 0; }

uint32_t ke_omci_tapi_stat_bridge_get(KE_ANY_ARGS) { return 0; }

}  // extern "C"
