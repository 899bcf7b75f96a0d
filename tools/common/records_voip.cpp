// VoIP service: SIP servers, codecs, line settings, media, line status
// and counters.
#include "ke_omci_tapi/voip.h"
#include "records.h"

namespace ketool {
namespace {

constexpr std::array kUdptcp = {
    KE_FIELD(st_voip_udptcp, us_line, Kind::U16),
    KE_FIELD(st_voip_udptcp, us_port, Kind::U16),
    KE_FIELD(st_voip_udptcp, us_protocol, Kind::U16),
    KE_FIELD(st_voip_udptcp, us_tos, Kind::U16),
};
constexpr std::array kServer = {
    KE_FIELD(st_voip_server, auc_address, Kind::Text),
    KE_FIELD(st_voip_server, us_port, Kind::U16),
    KE_FIELD(st_voip_server, us_protocol, Kind::U16),
};
constexpr std::array kAgent = {
    KE_FIELD(st_voip_agent, auc_address, Kind::Text),
    KE_FIELD(st_voip_agent, us_value, Kind::U16),
};
constexpr std::array kCodec = {
    KE_FIELD(st_voip_codec, uc_entry_id, Kind::U8),
    KE_FIELD(st_voip_codec, uc_codec, Kind::U8),
    KE_FIELD(st_voip_codec, uc_priority, Kind::U8),
    KE_FIELD(st_voip_codec, uc_enable, Kind::U8),
    KE_FIELD(st_voip_codec, uc_period, Kind::U8),
};
constexpr std::array kRegtime = {
    KE_FIELD(st_voip_regtime, ui_line, Kind::U32),
    KE_FIELD(st_voip_regtime, us_reg_exp_time, Kind::U16),
    KE_FIELD(st_voip_regtime, us_rereg_head_start_time, Kind::U16),
};
constexpr std::array kSipauth = {
    KE_FIELD(st_voip_sipauth, ui_line, Kind::U32),
    KE_FIELD(st_voip_sipauth, auc_user_name, Kind::Text),
    KE_FIELD(st_voip_sipauth, auc_password, Kind::Text),
    KE_FIELD(st_voip_sipauth, auc_realm, Kind::Text),
};
constexpr std::array kGain = {
    KE_FIELD(st_voip_gain, ui_line, Kind::U32),
    KE_FIELD(st_voip_gain, ui_rx_gain, Kind::U32),
    KE_FIELD(st_voip_gain, ui_tx_gain, Kind::U32),
};
constexpr std::array kHook = {
    KE_FIELD(st_voip_hook, ui_line, Kind::U32),
    KE_FIELD(st_voip_hook, ui_hook_state, Kind::U32),
};
constexpr std::array kAdmin = {
    KE_FIELD(st_voip_admin, ui_line, Kind::U32),
    KE_FIELD(st_voip_admin, ui_admin_state, Kind::U32),
};
constexpr std::array kRtp = {
    KE_FIELD(st_voip_rtp, ui_line, Kind::U32),
    KE_FIELD(st_voip_rtp, ui_port_min, Kind::U32),
    KE_FIELD(st_voip_rtp, ui_port_max, Kind::U32),
    KE_FIELD(st_voip_rtp, ui_dscp, Kind::U32),
};
constexpr std::array kSilence = {
    KE_FIELD(st_voip_silence, ui_line, Kind::U32),
    KE_FIELD(st_voip_silence, ui_silence, Kind::U32),
};
constexpr std::array kLineStatus = {
    KE_FIELD(st_voip_line_status, ui_line, Kind::U32),
    KE_FIELD(st_voip_line_status, ui_codec_used, Kind::U32),
    KE_FIELD(st_voip_line_status, ui_server_status, Kind::U32),
    KE_ARRAY(st_voip_line_status, ui_call_stats, Kind::U32),
};
constexpr std::array kRtpPm = {
    KE_FIELD(st_voip_rtp_pm, ui_line, Kind::U32),
    KE_FIELD(st_voip_rtp_pm, ui_reserved, Kind::U32),
    KE_FIELD(st_voip_rtp_pm, ui_rtp_errors, Kind::U32),
    KE_FIELD(st_voip_rtp_pm, ui_packet_loss, Kind::U32),
    KE_FIELD(st_voip_rtp_pm, ui_max_jitter, Kind::U32),
    KE_FIELD(st_voip_rtp_pm, ui_max_rtcp_interval, Kind::U32),
    KE_FIELD(st_voip_rtp_pm, ui_buffer_underflows, Kind::U32),
    KE_FIELD(st_voip_rtp_pm, ui_buffer_overflows, Kind::U32),
};
constexpr std::array kCallctrlPm = {
    KE_FIELD(st_voip_callctrl_pm, ui_line, Kind::U32),
    KE_FIELD(st_voip_callctrl_pm, ui_setup_failures, Kind::U32),
    KE_FIELD(st_voip_callctrl_pm, ui_setup_timer, Kind::U32),
    KE_FIELD(st_voip_callctrl_pm, ui_terminate_failures, Kind::U32),
    KE_FIELD(st_voip_callctrl_pm, ui_port_releases, Kind::U32),
    KE_FIELD(st_voip_callctrl_pm, ui_port_offhook_timer, Kind::U32),
};
constexpr std::array kSipAgentPm = {
    KE_FIELD(st_voip_sip_agent_pm, ui_line, Kind::U32),
    KE_FIELD(st_voip_sip_agent_pm, ui_transactions, Kind::U32),
    KE_FIELD(st_voip_sip_agent_pm, ui_rx_invite_reqs, Kind::U32),
    KE_FIELD(st_voip_sip_agent_pm, ui_rx_invite_retrans, Kind::U32),
    KE_FIELD(st_voip_sip_agent_pm, ui_rx_noninvite_reqs, Kind::U32),
    KE_FIELD(st_voip_sip_agent_pm, ui_rx_noninvite_retrans, Kind::U32),
    KE_FIELD(st_voip_sip_agent_pm, ui_rx_response, Kind::U32),
    KE_FIELD(st_voip_sip_agent_pm, ui_rx_response_retrans, Kind::U32),
    KE_FIELD(st_voip_sip_agent_pm, ui_tx_invite_reqs, Kind::U32),
    KE_FIELD(st_voip_sip_agent_pm, ui_tx_invite_retrans, Kind::U32),
    KE_FIELD(st_voip_sip_agent_pm, ui_tx_noninvite_reqs, Kind::U32),
    KE_FIELD(st_voip_sip_agent_pm, ui_tx_noninvite_retrans, Kind::U32),
    KE_FIELD(st_voip_sip_agent_pm, ui_tx_response, Kind::U32),
    KE_FIELD(st_voip_sip_agent_pm, ui_tx_response_retrans, Kind::U32),
};
constexpr std::array kSipCallinitPm = {
    KE_FIELD(st_voip_sip_callinit_pm, ui_line, Kind::U32),
    KE_FIELD(st_voip_sip_callinit_pm, ui_failed_to_connect, Kind::U32),
    KE_FIELD(st_voip_sip_callinit_pm, ui_failed_to_validate, Kind::U32),
    KE_FIELD(st_voip_sip_callinit_pm, ui_timeout, Kind::U32),
    KE_FIELD(st_voip_sip_callinit_pm, ui_failure_received, Kind::U32),
    KE_FIELD(st_voip_sip_callinit_pm, ui_failed_to_authenticate, Kind::U32),
};

constexpr Layout kUdptcpLayout = KE_LAYOUT(st_voip_udptcp, kUdptcp);
constexpr Layout kServerLayout = KE_LAYOUT(st_voip_server, kServer);
constexpr Layout kAgentLayout = KE_LAYOUT(st_voip_agent, kAgent);
constexpr Layout kCodecLayout = KE_LAYOUT(st_voip_codec, kCodec);
constexpr Layout kRegtimeLayout = KE_LAYOUT(st_voip_regtime, kRegtime);
constexpr Layout kSipauthLayout = KE_LAYOUT(st_voip_sipauth, kSipauth);
constexpr Layout kGainLayout = KE_LAYOUT(st_voip_gain, kGain);
constexpr Layout kHookLayout = KE_LAYOUT(st_voip_hook, kHook);
constexpr Layout kAdminLayout = KE_LAYOUT(st_voip_admin, kAdmin);
constexpr Layout kRtpLayout = KE_LAYOUT(st_voip_rtp, kRtp);
constexpr Layout kSilenceLayout = KE_LAYOUT(st_voip_silence, kSilence);
constexpr Layout kLineStatusLayout = KE_LAYOUT(st_voip_line_status, kLineStatus);
constexpr Layout kRtpPmLayout = KE_LAYOUT(st_voip_rtp_pm, kRtpPm);
constexpr Layout kCallctrlPmLayout = KE_LAYOUT(st_voip_callctrl_pm, kCallctrlPm);
constexpr Layout kSipAgentPmLayout = KE_LAYOUT(st_voip_sip_agent_pm, kSipAgentPm);
constexpr Layout kSipCallinitPmLayout = KE_LAYOUT(st_voip_sip_callinit_pm, kSipCallinitPm);

constexpr std::array kLayouts = {
    &kUdptcpLayout,     &kServerLayout,     &kAgentLayout,        &kCodecLayout,
    &kRegtimeLayout,    &kSipauthLayout,    &kGainLayout,         &kHookLayout,
    &kAdminLayout,      &kRtpLayout,        &kSilenceLayout,      &kLineStatusLayout,
    &kRtpPmLayout,      &kCallctrlPmLayout, &kSipAgentPmLayout,   &kSipCallinitPmLayout,
};

}  // namespace

const LayoutList kVoipRecords = rows_of(kLayouts);

}  // namespace ketool
