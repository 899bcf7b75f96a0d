// PON line: T-CONTs and GEM ports, keys and time of day, line control,
// alarms, optical module, GEM port mapping.
#include "functions.h"
#include "ke_omci_tapi/pon.h"

namespace omcishell {
namespace {

constexpr std::array kRows = {
    KE_SHELL_FN(ke_omci_tapi_omcc_create, ""),
    KE_SHELL_FN(ke_omci_tapi_omcc_destory, ""),
    KE_SHELL_FN(ke_omci_tapi_gponmode_get, "out u32 mode"),
    KE_SHELL_FN(ke_omci_tapi_tcont_num_get, "inout u32 num"),
    KE_SHELL_FN(ke_omci_tapi_tcont_set, "in u32 tcont, in u32 allocid"),
    KE_SHELL_FN(ke_omci_tapi_tcont_get, "in u32 tcont, out u32 allocid"),
    KE_SHELL_FN(ke_omci_tapi_tcont_del, "in u32 tcont"),
    KE_SHELL_FN(ke_omci_tapi_dba_mode_get, "inout u32 mode"),
    KE_SHELL_FN(ke_omci_tapi_gem_block_set, "in u32 len"),
    KE_SHELL_FN(ke_omci_tapi_gem_block_get, "inout u32 len"),
    KE_SHELL_FN(ke_omci_tapi_gemport_num_get, "inout u32 num"),
    KE_SHELL_FN(ke_omci_tapi_gemport_set, "in u32 gemport, in bytes[28] attr"),
    KE_SHELL_FN(ke_omci_tapi_gemport_get, "in u32 gemport, out bytes[28] attr"),
    KE_SHELL_FN(ke_omci_tapi_gemport_del, "in u32 gemport"),
    KE_SHELL_FN(ke_omci_tapi_gemport_loopback_set, "in u32 word0, in u32 word1, in u32 word2"),
    KE_SHELL_FN(ke_omci_tapi_msk_set, "in bytes[16] key"),
    KE_SHELL_FN(ke_omci_tapi_aes_cmac, "inout rec:st_aes_cmac cmac"),
    // A key buffer larger than the 16 bytes sent, so that a longer length
    // can be tried.
    KE_SHELL_FN(ke_omci_tapi_mckey_set, "in u32 key_id, in count:key key_len, in bytes[64] key"),
    KE_SHELL_FN(ke_omci_tapi_mckey_del, "in u32 key_id"),
    KE_SHELL_FN(ke_omci_tapi_time_set, "in bytes[14] tod"),
    KE_SHELL_FN(ke_omci_tapi_gpon_alarm_get, "out rec:st_alarm alarm"),
    KE_SHELL_FN(ke_omci_tapi_gpon_set_mode, "inout u32 mode"),
    KE_SHELL_FN(ke_omci_tapi_pon_start, "inout bytes[64] param"),
    KE_SHELL_FN(ke_omci_tapi_pon_stop, ""),
    KE_SHELL_FN(ke_omci_tapi_optical_attr_get, "in u32 force, out rec:st_optical_sta sta"),
    KE_SHELL_FN(ke_omci_tapi_optical_info_get, "out rec:st_optical_info info"),
    KE_SHELL_FN(ke_omci_tapi_pmu_attr_set, ""),
    KE_SHELL_FN(ke_omci_tapi_pmu_attr_get, ""),
    KE_SHELL_FN(ke_omci_tapi_map_set, "in rec:st_gem_map_param map"),
    KE_SHELL_FN(ke_omci_tapi_map_get, "inout rec:st_gem_map_param map"),
    KE_SHELL_FN(ke_omci_tapi_map_del, "in rec:st_gem_map_param map"),
};

}  // namespace

const FunctionList kPonFunctions = ketool::rows_of(kRows);

}  // namespace omcishell
