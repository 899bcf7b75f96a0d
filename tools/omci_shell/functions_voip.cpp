// VoIP service: SIP servers, codecs, line settings, media, line status.
#include "functions.h"
#include "ke_omci_tapi/voip.h"

namespace omcishell {
namespace {

constexpr std::array kRows = {
    KE_SHELL_FN(ke_omci_tapi_voip_udptcp_set, "in rec:st_voip_udptcp udptcp"),
    KE_SHELL_FN(ke_omci_tapi_voip_proxyserver_set, "in rec:st_voip_server server"),
    KE_SHELL_FN(ke_omci_tapi_voip_regserver_set, "in rec:st_voip_server server"),
    KE_SHELL_FN(ke_omci_tapi_voip_outbserver_set, "in rec:st_voip_server server"),
    KE_SHELL_FN(ke_omci_tapi_voip_agent_set, "in rec:st_voip_agent agent"),
    KE_SHELL_FN(ke_omci_tapi_voip_codec_set, "in rec:st_voip_codec codec"),
    KE_SHELL_FN(ke_omci_tapi_voip_codec_get, "inout rec:st_voip_codec codec"),
    KE_SHELL_FN(ke_omci_tapi_voip_codec_priority_reorder, ""),
    KE_SHELL_FN(ke_omci_tapi_voip_regtime_set, "in rec:st_voip_regtime regtime"),
    KE_SHELL_FN(ke_omci_tapi_voip_regtime_get, "inout rec:st_voip_regtime regtime"),
    KE_SHELL_FN(ke_omci_tapi_voip_offhooktime_set, "in u32 time"),
    KE_SHELL_FN(ke_omci_tapi_voip_offhooktime_get, "out u32 time"),
    KE_SHELL_FN(ke_omci_tapi_voip_sipauth_set, "in rec:st_voip_sipauth auth"),
    KE_SHELL_FN(ke_omci_tapi_voip_sipauth_get, "inout rec:st_voip_sipauth auth"),
    KE_SHELL_FN(ke_omci_tapi_voip_gain_set, "in rec:st_voip_gain gain"),
    KE_SHELL_FN(ke_omci_tapi_voip_gain_get, "inout rec:st_voip_gain gain"),
    KE_SHELL_FN(ke_omci_tapi_voip_hookstatus_get, "inout rec:st_voip_hook hook"),
    KE_SHELL_FN(ke_omci_tapi_voip_type_set, "in u32 type"),
    KE_SHELL_FN(ke_omci_tapi_voip_type_get, "out u32 type"),
    KE_SHELL_FN(ke_omci_tapi_voip_adminstate_set, "in rec:st_voip_admin admin"),
    KE_SHELL_FN(ke_omci_tapi_voip_adminstate_get, "inout rec:st_voip_admin admin"),
    KE_SHELL_FN(ke_omci_tapi_voip_rtp_set, "in rec:st_voip_rtp rtp"),
    KE_SHELL_FN(ke_omci_tapi_voip_rtp_get, "inout rec:st_voip_rtp rtp"),
    KE_SHELL_FN(ke_omci_tapi_voip_silence_set, "in rec:st_voip_silence silence"),
    KE_SHELL_FN(ke_omci_tapi_voip_faxmode_set, "in u32 mode"),
    KE_SHELL_FN(ke_omci_tapi_voip_digitmap_set, "in bytes[64] digitmap"),
    KE_SHELL_FN(ke_omci_tapi_voip_line_status_get, "inout rec:st_voip_line_status status"),
    KE_SHELL_FN(ke_omci_tapi_voip_rtppm_get, "inout rec:st_voip_rtp_pm pm"),
    KE_SHELL_FN(ke_omci_tapi_voip_callctrlpm_get, "inout rec:st_voip_callctrl_pm pm"),
    KE_SHELL_FN(ke_omci_tapi_voip_sip_agentpm_get, "inout rec:st_voip_sip_agent_pm pm"),
    KE_SHELL_FN(ke_omci_tapi_voip_sip_callinitpm_get, "inout rec:st_voip_sip_callinit_pm pm"),
    KE_SHELL_FN(ke_omci_tapi_voip_emergency_get, "out u8 state"),
};

}  // namespace

const FunctionList kVoipFunctions = ketool::rows_of(kRows);

}  // namespace omcishell
