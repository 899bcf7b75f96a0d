// Statistics: PON line, XG-PON, Ethernet and bridge-port counters.
#include "ke_omci_tapi/stat.h"
#include "records.h"

namespace ketool {
namespace {

constexpr std::array kFec = {KE_ARRAY(st_fec_stat, aui_counter, Kind::U32)};
// The caller receives the two 64-bit counters most significant byte first.
constexpr std::array kGemportStat = {
    KE_FIELD(st_gemport_stat, ui_gemport, Kind::U32),
    KE_FIELD(st_gemport_stat, ui_counter_1, Kind::U32),
    KE_FIELD(st_gemport_stat, ui_counter_2, Kind::U32),
    KE_FIELD(st_gemport_stat, ui_align, Kind::U32),
    KE_FIELD(st_gemport_stat, ull_counter_1, Kind::U64Be),
    KE_FIELD(st_gemport_stat, ull_counter_2, Kind::U64Be),
    KE_FIELD(st_gemport_stat, ui_counter_3, Kind::U32),
    KE_FIELD(st_gemport_stat, ui_end, Kind::U32),
};
constexpr std::array kXgponTc = {KE_ARRAY(st_xgpon_tc_stat, aui_counter, Kind::U32)};
constexpr std::array kXgponDownmng = {KE_ARRAY(st_xgpon_downmng_stat, aui_counter, Kind::U32)};
constexpr std::array kXgponUpmng = {KE_ARRAY(st_xgpon_upmng_stat, aui_counter, Kind::U32)};
constexpr std::array kPortStat = {
    KE_FIELD(st_port_stat, ui_port, Kind::U32),
    KE_FIELD(st_port_stat, ui_align, Kind::U32),
    KE_ARRAY(st_port_stat, aull_counter, Kind::U64),
};
constexpr std::array kEthStat = {KE_ARRAY(st_eth_stat, aull_counter, Kind::U64)};
constexpr std::array kBrportStat = {KE_ARRAY(st_brport_stat, aui_counter, Kind::U32)};

constexpr Layout kFecLayout = KE_LAYOUT(st_fec_stat, kFec);
constexpr Layout kGemportStatLayout = KE_LAYOUT(st_gemport_stat, kGemportStat);
constexpr Layout kXgponTcLayout = KE_LAYOUT(st_xgpon_tc_stat, kXgponTc);
constexpr Layout kXgponDownmngLayout = KE_LAYOUT(st_xgpon_downmng_stat, kXgponDownmng);
constexpr Layout kXgponUpmngLayout = KE_LAYOUT(st_xgpon_upmng_stat, kXgponUpmng);
constexpr Layout kPortStatLayout = KE_LAYOUT(st_port_stat, kPortStat);
constexpr Layout kEthStatLayout = KE_LAYOUT(st_eth_stat, kEthStat);
constexpr Layout kBrportStatLayout = KE_LAYOUT(st_brport_stat, kBrportStat);

constexpr std::array kLayouts = {
    &kFecLayout,          &kGemportStatLayout, &kXgponTcLayout, &kXgponDownmngLayout,
    &kXgponUpmngLayout,   &kPortStatLayout,    &kEthStatLayout, &kBrportStatLayout,
};

}  // namespace

const LayoutList kStatRecords = rows_of(kLayouts);

}  // namespace ketool
