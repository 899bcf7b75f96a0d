/* VoIP service: SIP servers and user agent, codec list, line settings,
 * RTP and fax, line status and performance counters.
 *
 * Every setting is written into, and every status read from, a
 * configuration-manager table that the voice application consumes; no
 * function calls the service process.  Each function returns 0, or 1 when
 * its table operation failed (traced when the log gate is open); a getter
 * writes its outputs only after a successful read.  Values are not
 * range-checked: they are stored unchanged, truncated to the field's
 * width.  A null argument pointer is refused with 1 before any table is
 * touched (ke_omci_tapi_voip_digitmap_set excepted). */
#ifndef KE_OMCI_TAPI_VOIP_H
#define KE_OMCI_TAPI_VOIP_H

#include "types.h"

KE_EXTERN_C_BEGIN

#define KE_VOIP_TEXT_LEN 128 /* address, user name, password and realm texts */

/* ---- SIP servers and user agent ---------------------------------------- */

/* Local SIP signalling of a line. */
typedef struct {
    uint16_t us_line;
    uint16_t us_port;     /* local SIP signalling port */
    uint16_t us_protocol; /* transport protocol number; not used */
    uint16_t us_tos;      /* TOS/DiffServ byte for signalling */
} st_voip_udptcp;
KE_ASSERT_SIZE(st_voip_udptcp, 8);
KE_ASSERT_OFFSET(st_voip_udptcp, us_port, 2);
KE_ASSERT_OFFSET(st_voip_udptcp, us_protocol, 4);
KE_ASSERT_OFFSET(st_voip_udptcp, us_tos, 6);

/* Value of us_protocol that leaves the stored transport unchanged. */
#define KE_VOIP_PROTOCOL_KEEP 0xFFFFu

/* The SIP proxy, the registrar or the outbound proxy. */
typedef struct {
    uint8_t auc_address[KE_VOIP_TEXT_LEN]; /* copied whole, not terminated */
    uint16_t us_port;                      /* 0 leaves the stored port unchanged */
    uint16_t us_protocol; /* IP protocol number (6, 17, 56, 132), or KE_VOIP_PROTOCOL_KEEP */
} st_voip_server;
KE_ASSERT_SIZE(st_voip_server, 132);
KE_ASSERT_OFFSET(st_voip_server, us_port, 128);
KE_ASSERT_OFFSET(st_voip_server, us_protocol, 130);

/* The user agent: us_value is stored as the agent port and, mapped as a
 * protocol number, as the agent transport. */
typedef struct {
    uint8_t auc_address[KE_VOIP_TEXT_LEN];
    uint16_t us_value;
} st_voip_agent;
KE_ASSERT_SIZE(st_voip_agent, 130);
KE_ASSERT_OFFSET(st_voip_agent, us_value, 128);

/* Local SIP port and TOS byte of a line (us_protocol unused).  0 or 1. */
KE_API uint32_t ke_omci_tapi_voip_udptcp_set(const st_voip_udptcp *pst_udptcp);
/* SIP proxy: address always, port unless 0, transport unless
 * KE_VOIP_PROTOCOL_KEEP (an unknown protocol is stored as UDP).  0 or 1. */
KE_API uint32_t ke_omci_tapi_voip_proxyserver_set(const st_voip_server *pst_server);
/* SIP registrar, as ke_omci_tapi_voip_proxyserver_set.  0 or 1. */
KE_API uint32_t ke_omci_tapi_voip_regserver_set(const st_voip_server *pst_server);
/* SIP outbound proxy, as ke_omci_tapi_voip_proxyserver_set.  0 or 1. */
KE_API uint32_t ke_omci_tapi_voip_outbserver_set(const st_voip_server *pst_server);
/* User agent address, port and transport, always all three.  0 or 1. */
KE_API uint32_t ke_omci_tapi_voip_agent_set(const st_voip_agent *pst_agent);

/* ---- Codec list --------------------------------------------------------- */

/* One entry of the codec list shared by all lines. */
typedef struct {
    uint8_t uc_entry_id; /* entry number, 1 to the list length */
    uint8_t uc_codec;    /* RTP/AVP static payload type */
    uint8_t uc_priority;
    uint8_t uc_enable;   /* out only: the stored enable flag */
    uint8_t uc_period;   /* packetisation period in ms; 0 disables the entry */
} st_voip_codec;
KE_ASSERT_SIZE(st_voip_codec, 5);
KE_ASSERT_OFFSET(st_voip_codec, uc_codec, 1);
KE_ASSERT_OFFSET(st_voip_codec, uc_priority, 2);
KE_ASSERT_OFFSET(st_voip_codec, uc_enable, 3);
KE_ASSERT_OFFSET(st_voip_codec, uc_period, 4);

/* Sets an entry; when another entry holds the new codec, the two entries
 * exchange codecs.  0, or 1 on any failure (an empty list included). */
KE_API uint32_t ke_omci_tapi_voip_codec_set(const st_voip_codec *pst_codec);
/* uc_entry_id in, the rest out; a stored codec with no payload type
 * leaves uc_codec as the caller set it. */
KE_API uint32_t ke_omci_tapi_voip_codec_get(st_voip_codec *pst_codec);
/* Sets every entry's priority to its entry number; returns the status of
 * the last entry write (0 for an empty list). */
KE_API uint32_t ke_omci_tapi_voip_codec_priority_reorder(void);

/* ---- Line settings ------------------------------------------------------ */

typedef struct {
    uint32_t ui_line;
    uint16_t us_reg_exp_time;          /* registration expiry time */
    uint16_t us_rereg_head_start_time; /* re-registration head-start time */
} st_voip_regtime;
KE_ASSERT_SIZE(st_voip_regtime, 8);
KE_ASSERT_OFFSET(st_voip_regtime, us_reg_exp_time, 4);
KE_ASSERT_OFFSET(st_voip_regtime, us_rereg_head_start_time, 6);

/* SIP authentication strings, each copied whole, not terminated. */
typedef struct {
    uint32_t ui_line;
    uint8_t auc_user_name[KE_VOIP_TEXT_LEN];
    uint8_t auc_password[KE_VOIP_TEXT_LEN];
    uint8_t auc_realm[KE_VOIP_TEXT_LEN];
} st_voip_sipauth;
KE_ASSERT_SIZE(st_voip_sipauth, 388);
KE_ASSERT_OFFSET(st_voip_sipauth, auc_user_name, 4);
KE_ASSERT_OFFSET(st_voip_sipauth, auc_password, 132);
KE_ASSERT_OFFSET(st_voip_sipauth, auc_realm, 260);

typedef struct {
    uint32_t ui_line;
    uint32_t ui_rx_gain;
    uint32_t ui_tx_gain;
} st_voip_gain;
KE_ASSERT_SIZE(st_voip_gain, 12);
KE_ASSERT_OFFSET(st_voip_gain, ui_rx_gain, 4);
KE_ASSERT_OFFSET(st_voip_gain, ui_tx_gain, 8);

typedef struct {
    uint32_t ui_line;       /* in */
    uint32_t ui_hook_state; /* out: 0 on hook, 1 off hook */
} st_voip_hook;
KE_ASSERT_SIZE(st_voip_hook, 8);
KE_ASSERT_OFFSET(st_voip_hook, ui_hook_state, 4);

/* ui_admin_state: 0 unlocked, 1 locked; a set with 2 also locks. */
typedef struct {
    uint32_t ui_line;
    uint32_t ui_admin_state;
} st_voip_admin;
KE_ASSERT_SIZE(st_voip_admin, 8);
KE_ASSERT_OFFSET(st_voip_admin, ui_admin_state, 4);

/* Registration expiry and re-registration head-start times of a line.
 * 0 or 1. */
KE_API uint32_t ke_omci_tapi_voip_regtime_set(const st_voip_regtime *pst_regtime);
/* ui_line in; the two times out (low 16 bits of the stored words).  0 or 1. */
KE_API uint32_t ke_omci_tapi_voip_regtime_get(st_voip_regtime *pst_regtime);
/* Receiver off-hook timer; the low byte is stored.  0 or 1. */
KE_API uint32_t ke_omci_tapi_voip_offhooktime_set(const uint32_t *pui_time);
/* Receiver off-hook timer as stored.  0 or 1. */
KE_API uint32_t ke_omci_tapi_voip_offhooktime_get(uint32_t *pui_time);
/* SIP user name, password and realm of a line, always all three.  0 or 1. */
KE_API uint32_t ke_omci_tapi_voip_sipauth_set(const st_voip_sipauth *pst_auth);
/* ui_line in; the three strings out, whole.  0 or 1. */
KE_API uint32_t ke_omci_tapi_voip_sipauth_get(st_voip_sipauth *pst_auth);
/* Receive and transmit gains of a line, stored unchanged.  0 or 1. */
KE_API uint32_t ke_omci_tapi_voip_gain_set(const st_voip_gain *pst_gain);
/* ui_line in; both gains out.  0 or 1. */
KE_API uint32_t ke_omci_tapi_voip_gain_get(st_voip_gain *pst_gain);
/* ui_line in; ui_hook_state out (0 on hook, 1 off hook).  0 or 1. */
KE_API uint32_t ke_omci_tapi_voip_hookstatus_get(st_voip_hook *pst_hook);
/* Signalling type: a set with 1 or 2 reads back the same; any other value
 * reads back as 0.  0 or 1. */
KE_API uint32_t ke_omci_tapi_voip_type_set(const uint32_t *pui_type);
/* Signalling type: 1, 2, or 0 for any other stored code.  0 or 1. */
KE_API uint32_t ke_omci_tapi_voip_type_get(uint32_t *pui_type);
/* Administrative state of a line: 1 or 2 disables it, any other value
 * enables it.  0 or 1. */
KE_API uint32_t ke_omci_tapi_voip_adminstate_set(const st_voip_admin *pst_admin);
/* ui_line in; ui_admin_state out: 1 for a disabled line, else 0.  0 or 1. */
KE_API uint32_t ke_omci_tapi_voip_adminstate_get(st_voip_admin *pst_admin);

/* ---- RTP, silence suppression and fax ----------------------------------- */

typedef struct {
    uint32_t ui_line;
    uint32_t ui_port_min; /* lowest local RTP port */
    uint32_t ui_port_max; /* highest local RTP port */
    uint32_t ui_dscp;     /* DSCP mark of the media; read back from the global setting */
} st_voip_rtp;
KE_ASSERT_SIZE(st_voip_rtp, 16);
KE_ASSERT_OFFSET(st_voip_rtp, ui_port_min, 4);
KE_ASSERT_OFFSET(st_voip_rtp, ui_port_max, 8);
KE_ASSERT_OFFSET(st_voip_rtp, ui_dscp, 12);

typedef struct {
    uint32_t ui_line;
    uint32_t ui_silence; /* 0 off, 1 on */
} st_voip_silence;
KE_ASSERT_SIZE(st_voip_silence, 8);
KE_ASSERT_OFFSET(st_voip_silence, ui_silence, 4);

/* Writes the DSCP mark globally and the port range and mark for the line;
 * a failed global write leaves the line untouched. */
KE_API uint32_t ke_omci_tapi_voip_rtp_set(const st_voip_rtp *pst_rtp);
/* ui_line in; ui_dscp is written before the line is read, so it holds the
 * global mark even when the line read fails. */
KE_API uint32_t ke_omci_tapi_voip_rtp_get(st_voip_rtp *pst_rtp);
/* Silence suppression of a line; the low byte is stored.  0 or 1. */
KE_API uint32_t ke_omci_tapi_voip_silence_set(const st_voip_silence *pst_silence);
/* Fax mode (0 pass-through, 1 T.38); the low byte is stored.  0 or 1. */
KE_API uint32_t ke_omci_tapi_voip_faxmode_set(const uint32_t *pui_mode);
/* Accepted and ignored: always 0. */
KE_API uint32_t ke_omci_tapi_voip_digitmap_set(const void *pv_digitmap);

/* ---- Line status and performance counters ------------------------------- */

/* ui_line in; ui_codec_used is an RTP/AVP payload type; ui_server_status
 * the voice server status (2 while the line is off hook).  A failed read
 * leaves the words of the earlier reads written. */
typedef struct {
    uint32_t ui_line;
    uint32_t ui_codec_used;
    uint32_t ui_server_status;
    uint32_t ui_call_stats[2];
} st_voip_line_status;
KE_ASSERT_SIZE(st_voip_line_status, 20);
KE_ASSERT_OFFSET(st_voip_line_status, ui_codec_used, 4);
KE_ASSERT_OFFSET(st_voip_line_status, ui_server_status, 8);
KE_ASSERT_OFFSET(st_voip_line_status, ui_call_stats, 12);

typedef struct {
    uint32_t ui_line;
    uint32_t ui_reserved; /* never written */
    uint32_t ui_rtp_errors;
    uint32_t ui_packet_loss;
    uint32_t ui_max_jitter;
    uint32_t ui_max_rtcp_interval; /* maximum time between RTCP packets */
    uint32_t ui_buffer_underflows;
    uint32_t ui_buffer_overflows;
} st_voip_rtp_pm;
KE_ASSERT_SIZE(st_voip_rtp_pm, 32);
KE_ASSERT_OFFSET(st_voip_rtp_pm, ui_rtp_errors, 8);
KE_ASSERT_OFFSET(st_voip_rtp_pm, ui_buffer_overflows, 28);

typedef struct {
    uint32_t ui_line;
    uint32_t ui_setup_failures;
    uint32_t ui_setup_timer;
    uint32_t ui_terminate_failures;
    uint32_t ui_port_releases;
    uint32_t ui_port_offhook_timer;
} st_voip_callctrl_pm;
KE_ASSERT_SIZE(st_voip_callctrl_pm, 24);
KE_ASSERT_OFFSET(st_voip_callctrl_pm, ui_setup_failures, 4);
KE_ASSERT_OFFSET(st_voip_callctrl_pm, ui_port_offhook_timer, 20);

typedef struct {
    uint32_t ui_line;
    uint32_t ui_transactions;
    uint32_t ui_rx_invite_reqs;
    uint32_t ui_rx_invite_retrans;
    uint32_t ui_rx_noninvite_reqs;
    uint32_t ui_rx_noninvite_retrans;
    uint32_t ui_rx_response;
    uint32_t ui_rx_response_retrans;
    uint32_t ui_tx_invite_reqs;
    uint32_t ui_tx_invite_retrans;
    uint32_t ui_tx_noninvite_reqs;
    uint32_t ui_tx_noninvite_retrans;
    uint32_t ui_tx_response;
    uint32_t ui_tx_response_retrans;
} st_voip_sip_agent_pm;
KE_ASSERT_SIZE(st_voip_sip_agent_pm, 56);
KE_ASSERT_OFFSET(st_voip_sip_agent_pm, ui_transactions, 4);
KE_ASSERT_OFFSET(st_voip_sip_agent_pm, ui_tx_response_retrans, 52);

typedef struct {
    uint32_t ui_line;
    uint32_t ui_failed_to_connect;
    uint32_t ui_failed_to_validate;
    uint32_t ui_timeout;
    uint32_t ui_failure_received;
    uint32_t ui_failed_to_authenticate;
} st_voip_sip_callinit_pm;
KE_ASSERT_SIZE(st_voip_sip_callinit_pm, 24);
KE_ASSERT_OFFSET(st_voip_sip_callinit_pm, ui_failed_to_connect, 4);
KE_ASSERT_OFFSET(st_voip_sip_callinit_pm, ui_failed_to_authenticate, 20);

/* ui_line in; codec in use, server status and call statistics out.  0, or
 * 1 when any of its three reads fails. */
KE_API uint32_t ke_omci_tapi_voip_line_status_get(st_voip_line_status *pst_status);
/* RTP counters as the voice application stored them; ui_line in, word 1
 * never written.  0 or 1. */
KE_API uint32_t ke_omci_tapi_voip_rtppm_get(st_voip_rtp_pm *pst_pm);
/* Call control counters as stored; ui_line in.  0 or 1. */
KE_API uint32_t ke_omci_tapi_voip_callctrlpm_get(st_voip_callctrl_pm *pst_pm);
/* SIP agent counters as stored; ui_line in.  0 or 1. */
KE_API uint32_t ke_omci_tapi_voip_sip_agentpm_get(st_voip_sip_agent_pm *pst_pm);
/* SIP call initiation counters as stored; ui_line in.  0 or 1. */
KE_API uint32_t ke_omci_tapi_voip_sip_callinitpm_get(st_voip_sip_callinit_pm *pst_pm);
/* *puc_state: 1 while an emergency call is in progress, else 0.  0 or 1. */
KE_API uint32_t ke_omci_tapi_voip_emergency_get(uint8_t *puc_state);

KE_EXTERN_C_END

#endif
