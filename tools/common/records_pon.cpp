// PON line: T-CONTs, GEM ports, keys, time of day, line control, mapping.
#include "ke_omci_tapi/pon.h"
#include "records.h"

namespace ketool {
namespace {

constexpr std::array kTcont = {
    KE_FIELD(st_tcont, ui_tcont, Kind::U32),
    KE_FIELD(st_tcont, ui_allocid, Kind::U32),
};
constexpr std::array kGemport = {
    KE_FIELD(st_gemport, ui_gemport, Kind::U32),
    KE_FIELD(st_gemport, st_gemport_attr, Kind::Bytes),
};
constexpr std::array kLoopback = {KE_ARRAY(st_gemport_loopback, ui_word, Kind::U32)};
constexpr std::array kMsk = {KE_FIELD(st_msk, auc_key, Kind::Bytes)};
constexpr std::array kAesCmac = {
    KE_FIELD(st_aes_cmac, auc_input, Kind::Bytes),
    KE_FIELD(st_aes_cmac, auc_cmac, Kind::Bytes),
};
constexpr std::array kMckey = {
    KE_FIELD(st_mckey, ui_key_id, Kind::U32),
    KE_FIELD(st_mckey, ui_key_len, Kind::U32),
    KE_FIELD(st_mckey, auc_key, Kind::Bytes),
};
constexpr std::array kTod = {
    KE_FIELD(st_tod, ui_superframe, Kind::U32),
    KE_FIELD(st_tod, ui_sec_upper, Kind::U32),
    KE_FIELD(st_tod, ui_sec_lower, Kind::U32),
    KE_FIELD(st_tod, ui_nsec, Kind::U32),
};
constexpr std::array kAlarm = {KE_FIELD(st_alarm, auc_alarm, Kind::Bytes)};
constexpr std::array kOpticalSta = {KE_ARRAY(st_optical_sta, aui_word, Kind::U32)};
constexpr std::array kOpticalInfo = {KE_FIELD(st_optical_info, auc_info, Kind::Bytes)};
constexpr std::array kGemMapParam = {
    KE_FIELD(st_gem_map_param, ui_mask, Kind::U32),
    KE_FIELD(st_gem_map_param, ui_vlan, Kind::U32),
    KE_FIELD(st_gem_map_param, ui_pri, Kind::U32),
    KE_FIELD(st_gem_map_param, em_port, Kind::U32),
    KE_FIELD(st_gem_map_param, ui_gemport, Kind::U32),
    KE_FIELD(st_gem_map_param, ui_tcont, Kind::U32),
};
constexpr std::array kGemMap = {
    KE_FIELD(st_gem_map, ui_mask, Kind::U32),
    KE_FIELD(st_gem_map, ui_vlan, Kind::U32),
    KE_FIELD(st_gem_map, ui_pri, Kind::U32),
    KE_FIELD(st_gem_map, em_port, Kind::U32),
    KE_FIELD(st_gem_map, ui_map_rsv, Kind::U32),
    KE_FIELD(st_gem_map, ui_gemport, Kind::U32),
    KE_FIELD(st_gem_map, ui_tcont, Kind::U32),
};

constexpr Layout kTcontLayout = KE_LAYOUT(st_tcont, kTcont);
constexpr Layout kGemportLayout = KE_LAYOUT(st_gemport, kGemport);
constexpr Layout kLoopbackLayout = KE_LAYOUT(st_gemport_loopback, kLoopback);
constexpr Layout kMskLayout = KE_LAYOUT(st_msk, kMsk);
constexpr Layout kAesCmacLayout = KE_LAYOUT(st_aes_cmac, kAesCmac);
constexpr Layout kMckeyLayout = KE_LAYOUT(st_mckey, kMckey);
constexpr Layout kTodLayout = KE_LAYOUT(st_tod, kTod);
constexpr Layout kAlarmLayout = KE_LAYOUT(st_alarm, kAlarm);
constexpr Layout kOpticalStaLayout = KE_LAYOUT(st_optical_sta, kOpticalSta);
constexpr Layout kOpticalInfoLayout = KE_LAYOUT(st_optical_info, kOpticalInfo);
constexpr Layout kGemMapParamLayout = KE_LAYOUT(st_gem_map_param, kGemMapParam);
constexpr Layout kGemMapLayout = KE_LAYOUT(st_gem_map, kGemMap);

constexpr std::array kLayouts = {
    &kTcontLayout, &kGemportLayout, &kLoopbackLayout, &kMskLayout, &kAesCmacLayout,
    &kMckeyLayout, &kTodLayout, &kAlarmLayout, &kOpticalStaLayout, &kOpticalInfoLayout,
    &kGemMapParamLayout, &kGemMapLayout,
};

}  // namespace

const LayoutList kPonRecords = rows_of(kLayouts);

}  // namespace ketool
