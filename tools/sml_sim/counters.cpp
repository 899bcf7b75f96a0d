// Counters: FEC, GEM port, XG-PON TC and management channel counters of
// the line, and the 46 counters of each user port.  A read advances its
// set by one step while the set carries traffic (the line in operation,
// the port's link up), so two reads show the counters moving; each counter
// advances by its own rate, error counters slowly or not at all.
#include <cstring>

#include "ke_omci_tapi/stat.h"
#include "sim.h"

namespace smlsim {
namespace {

using ketool::Field;
using ketool::Kind;
using ketool::Layout;

// FEC: corrected bytes, corrected code words, uncorrectable code words,
// total code words, FEC seconds.
constexpr std::array<uint32_t, 5> kFecRates = {37, 5, 0, 152000, 0};
// XG-PON TC: PSBd HEC errors, XGTC HEC errors, unknown profiles,
// transmitted XGEM frames, XGEM fragments, XGEM HEC lost words, XGEM key
// errors, XGEM HEC errors.
constexpr std::array<uint32_t, KE_XGPON_TC_WORDS> kTcRates = {1, 0, 0, 1500, 40, 3, 1, 2};
// Downstream management: PLOAM MIC errors, downstream PLOAMs, profile,
// ranging time, deactivate ONU-ID, disable serial number, request
// registration, assign Alloc-ID, key control, sleep allow, baseline OMCI,
// extended OMCI, assign ONU-ID, OMCI MIC errors.
constexpr std::array<uint32_t, KE_XGPON_DOWNMNG_WORDS> kDownRates = {0, 12, 1, 0, 0, 0, 0,
                                                                     1, 1, 0, 20, 4, 0, 0};
// Upstream management: upstream PLOAMs, serial number ONU, registration,
// key report, acknowledge, sleep request.
constexpr std::array<uint32_t, KE_XGPON_UPMNG_WORDS> kUpRates = {12, 0, 0, 1, 10, 0};

// GEM port: transmitted and received frames, received and transmitted
// payload bytes (64-bit), encryption key errors.  The received bytes start
// just below 2^32, so the first read already needs the high word.
constexpr uint32_t kGemTxFrames = 500;
constexpr uint32_t kGemRxFrames = 1000;
constexpr uint64_t kGemRxBytesBase = 0xfff00000;
constexpr uint64_t kGemRxBytes = 1536000;
constexpr uint64_t kGemTxBytes = 768000;

// A user port's service counters: frames and octets advance, errors stay.
constexpr std::array<uint32_t, KE_PORT_STAT_COUNTERS> kPortRates = {
    1000, 1536000, 800, 1228800, 50, 30, 20, 10,  // 0-7
    0,    0,       0,   0,       0,  0,  0,  0,   // 8-15
    900,  1382400, 40,  25,      0,  0,  0,  0,   // 16-23
    0,    0,       0,   0,       0,  0,  0,  0,   // 24-31
    1000, 1536000, 0,   0,       0,  0,  0,  0,   // 32-39
    0,    0,       0,   0,       0,  0,           // 40-45
};

uint64_t advance(uint64_t &steps, bool traffic)
{
    if (traffic)
        ++steps;
    return steps;
}

bool operating(const SimState &s) { return s.line.regstate == kRegOperation; }

template <size_t N>
void fill(uint32_t *out, const std::array<uint32_t, N> &rates, uint64_t steps)
{
    for (size_t k = 0; k < N; ++k)
        out[k] = static_cast<uint32_t>(steps * rates[k]);
}

// A line counter set: words advanced while the line operates.
template <class Record, size_t N, const std::array<uint32_t, N> &Rates,
          uint64_t CounterState::*Steps>
uint32_t line_counters_get(SimState &s, Record &rec)
{
    fill(rec.aui_counter, Rates, advance(s.counters.*Steps, operating(s)));
    return 0;
}

uint32_t gemport_stat_get(SimState &s, st_gemport_stat &rec)
{
    if (s.pon.gemports.count(rec.ui_gemport) == 0)
        return kNoObject;
    uint64_t steps = advance(s.counters.gemport[rec.ui_gemport], operating(s));
    rec.ui_counter_1 = static_cast<uint32_t>(steps * kGemTxFrames);
    rec.ui_counter_2 = static_cast<uint32_t>(steps * kGemRxFrames);
    rec.ull_counter_1 = kGemRxBytesBase + steps * kGemRxBytes;
    rec.ull_counter_2 = steps * kGemTxBytes;
    rec.ui_counter_3 = 0;
    return 0;
}

// The link is up while the port is unlocked (its attributes say so).
uint32_t port_stat_get(SimState &s, st_port_stat &rec)
{
    if (!is_user_port(s, rec.ui_port))
        return kBadValue;
    uint64_t steps = advance(s.counters.port[rec.ui_port], port_link_up(s, rec.ui_port));
    for (size_t k = 0; k < KE_PORT_STAT_COUNTERS; ++k)
        rec.aull_counter[k] = steps * kPortRates[k];
    return 0;
}

constexpr std::array<Field, 5> kFecFields = {{
    {"corrected_bytes", 0, 4, Kind::U32},
    {"corrected_words", 4, 4, Kind::U32},
    {"uncorrectable", 8, 4, Kind::U32},
    {"total_words", 12, 4, Kind::U32},
    {"fec_seconds", 16, 4, Kind::U32},
}};
constexpr std::array<Field, 6> kGemFields = {{
    {"gemport", 0, 4, Kind::U32},
    {"tx_frames", 4, 4, Kind::U32},
    {"rx_frames", 8, 4, Kind::U32},
    {"rx_bytes_lo", 16, 4, Kind::U32},
    {"rx_bytes_hi", 20, 4, Kind::U32},
    {"key_errors", 32, 4, Kind::U32},
}};
constexpr std::array<Field, 3> kTcFields = {{
    {"tx_xgem", 12, 4, Kind::U32},
    {"key_errors", 24, 4, Kind::U32},
    {"hec_errors", 28, 4, Kind::U32},
}};
constexpr std::array<Field, 2> kDownFields = {{
    {"ploams", 4, 4, Kind::U32},
    {"omci", 40, 4, Kind::U32},
}};
constexpr std::array<Field, 2> kUpFields = {{
    {"ploams", 0, 4, Kind::U32},
    {"acks", 16, 4, Kind::U32},
}};
constexpr std::array<Field, 3> kPortFields = {{
    {"port", 0, 4, Kind::U32},
    {"c0", 8, 4, Kind::U32},
    {"c1", 16, 4, Kind::U32},
}};

constexpr Layout kFec = ketool::make_layout("st_fec_stat", sizeof(st_fec_stat), kFecFields);
constexpr Layout kGem = ketool::make_layout("st_gemport_stat", sizeof(st_gemport_stat), kGemFields);
constexpr Layout kTc = ketool::make_layout("st_xgpon_tc_stat", sizeof(st_xgpon_tc_stat), kTcFields);
constexpr Layout kDown =
    ketool::make_layout("st_xgpon_downmng_stat", sizeof(st_xgpon_downmng_stat), kDownFields);
constexpr Layout kUp =
    ketool::make_layout("st_xgpon_upmng_stat", sizeof(st_xgpon_upmng_stat), kUpFields);
constexpr Layout kPort = ketool::make_layout("st_port_stat", sizeof(st_port_stat), kPortFields);

constexpr std::array<Procedure, 6> kRows = {{
    row<st_fec_stat, line_counters_get<st_fec_stat, 5, kFecRates, &CounterState::fec>>(
        "ke_ke_sml_gpon_fec_stat_get_call", &kFec),
    row<st_gemport_stat, gemport_stat_get>("ke_ke_sml_gpon_gemport_stat_get_call", &kGem),
    row<st_xgpon_tc_stat,
        line_counters_get<st_xgpon_tc_stat, KE_XGPON_TC_WORDS, kTcRates, &CounterState::tc>>(
        "ke_ke_sml_xgpon_tc_get_call", &kTc),
    row<st_xgpon_downmng_stat, line_counters_get<st_xgpon_downmng_stat, KE_XGPON_DOWNMNG_WORDS,
                                                 kDownRates, &CounterState::downmng>>(
        "ke_ke_sml_xgpon_downmng_get_call", &kDown),
    row<st_xgpon_upmng_stat, line_counters_get<st_xgpon_upmng_stat, KE_XGPON_UPMNG_WORDS,
                                               kUpRates, &CounterState::upmng>>(
        "ke_ke_sml_xgpon_upmng_get_call", &kUp),
    row<st_port_stat, port_stat_get>("ke_ke_sml_port_stat_get_call", &kPort),
}};

}  // namespace

const ProcedureList kCounterProcedures = ketool::rows_of(kRows);

}  // namespace smlsim
