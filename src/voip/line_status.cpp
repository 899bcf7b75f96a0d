// State and performance counters of a voice line, read from the voice
// application's tables and reported in the OMCI stack's codes.
#include <array>
#include <cstddef>

#include "code_map.h"
#include "ke_omci_tapi/voip.h"
#include "voip_record.h"

namespace ke::voip {
namespace {

// Codec of the current call to its RTP/AVP payload type; any code not
// listed (0 included) reports PCMA.
constexpr CodeMap<5> kCodecUsed{{{{0, 1}, {18, 2}, {4, 3}, {4, 4}, {9, 7}}}, 0, 8};

// Registration state and failure reason to the voice server status.
constexpr int kAnyReason = -1;
struct ServerStatusRule {
    uint8_t reg_state;
    int fail_reason;  // or kAnyReason
    uint32_t status;
};
constexpr std::array<ServerStatusRule, 6> kServerStatus{{
    {0, kAnyReason, 13},  // port not configured
    {1, kAnyReason, 15},  // disabled by switch
    {3, kAnyReason, 1},   // registered
    {4, 7, 6},            // failed registration: timeout
    {4, 8, 7},            // failed registration: server fail code
    {4, kAnyReason, 5},   // failed registration: failed authentication
}};
constexpr uint32_t kStatusInitial = 0;
constexpr uint32_t kStatusInSession = 2;
constexpr uint8_t kOffHook = 1;

// An off-hook line is in session whatever its registration.
uint32_t server_status(const UserRegInfo::Rec &reg)
{
    if (get(reg, UserRegInfo::kHookState) == kOffHook)
        return kStatusInSession;
    const uint8_t state = get(reg, UserRegInfo::kRegState);
    const uint8_t reason = get(reg, UserRegInfo::kRegFailReason);
    for (const ServerStatusRule &r : kServerStatus)
        if (r.reg_state == state && (r.fail_reason == kAnyReason || r.fail_reason == reason))
            return r.status;
    return kStatusInitial;
}

// Reads the caller's line from table L and copies one run of counters,
// unchanged, into the caller's record from byte offset `to` on.
template <class L, uint32_t W>
uint32_t read_counters(Site site, void *out, uint32_t line, Block<L::kTable, W> counters, size_t to)
{
    typename L::Rec rec(site);
    if (load_line<L>(site, rec, line) != 0)
        return 1;
    get(rec, counters, static_cast<uint8_t *>(out) + to);
    return 0;
}

// Each run of counters fills its caller record to the end.
static_assert(offsetof(st_voip_rtp_pm, ui_rtp_errors) + LineRtpStats::kRtpCounters.kWidth ==
              sizeof(st_voip_rtp_pm));
static_assert(offsetof(st_voip_callctrl_pm, ui_setup_failures) +
                  LineRtpStats::kCallCtrlCounters.kWidth ==
              sizeof(st_voip_callctrl_pm));
static_assert(offsetof(st_voip_sip_agent_pm, ui_transactions) + SipStats::kAgentCounters.kWidth ==
              sizeof(st_voip_sip_agent_pm));
static_assert(offsetof(st_voip_sip_callinit_pm, ui_failed_to_connect) +
                  SipStats::kCallInitCounters.kWidth ==
              sizeof(st_voip_sip_callinit_pm));
static_assert(offsetof(st_voip_line_status, ui_call_stats) + LineCallStats::kCallStats.kWidth ==
              sizeof(st_voip_line_status));

}  // namespace
}  // namespace ke::voip

using namespace ke::voip;

extern "C" {

// Three reads, each output written as soon as its read succeeds; a failed
// read is reported under its own procedure's name, then as 1 here.
uint32_t ke_omci_tapi_voip_line_status_get(st_voip_line_status *pst_status)
{
    if (pst_status == nullptr)
        return 1;
    const uint32_t line = pst_status->ui_line;

    LineRtpStats::Rec rtp;
    if (load_line<LineRtpStats>(KE_SITE_AS("ke_omci_tapi_voip_line_rtp_stats_get"), rtp, line) != 0)
        return ke::cm::report_info(KE_SITE, 1);
    pst_status->ui_codec_used = kCodecUsed.to_caller(get(rtp, LineRtpStats::kCodecUsed));

    UserRegInfo::Rec reg;
    if (load_line<UserRegInfo>(KE_SITE_AS("ke_omci_tapi_voip_user_reg_info_get"), reg, line) != 0)
        return ke::cm::report_info(KE_SITE, 1);
    pst_status->ui_server_status = server_status(reg);

    LineCallStats::Rec calls;
    if (load_line<LineCallStats>(KE_SITE_AS("ke_omci_tapi_voip_line_call_stats_get"), calls,
                                 line) != 0)
        return ke::cm::report_info(KE_SITE, 1);
    get(calls, LineCallStats::kCallStats, pst_status->ui_call_stats);
    return 0;
}

uint32_t ke_omci_tapi_voip_rtppm_get(st_voip_rtp_pm *pst_pm)
{
    if (pst_pm == nullptr)
        return 1;
    return read_counters<LineRtpStats>(KE_SITE, pst_pm, pst_pm->ui_line, LineRtpStats::kRtpCounters,
                                       offsetof(st_voip_rtp_pm, ui_rtp_errors));
}

uint32_t ke_omci_tapi_voip_callctrlpm_get(st_voip_callctrl_pm *pst_pm)
{
    if (pst_pm == nullptr)
        return 1;
    return read_counters<LineRtpStats>(KE_SITE, pst_pm, pst_pm->ui_line,
                                       LineRtpStats::kCallCtrlCounters,
                                       offsetof(st_voip_callctrl_pm, ui_setup_failures));
}

uint32_t ke_omci_tapi_voip_sip_agentpm_get(st_voip_sip_agent_pm *pst_pm)
{
    if (pst_pm == nullptr)
        return 1;
    return read_counters<SipStats>(KE_SITE, pst_pm, pst_pm->ui_line, SipStats::kAgentCounters,
                                   offsetof(st_voip_sip_agent_pm, ui_transactions));
}

uint32_t ke_omci_tapi_voip_sip_callinitpm_get(st_voip_sip_callinit_pm *pst_pm)
{
    if (pst_pm == nullptr)
        return 1;
    return read_counters<SipStats>(KE_SITE, pst_pm, pst_pm->ui_line, SipStats::kCallInitCounters,
                                   offsetof(st_voip_sip_callinit_pm, ui_failed_to_connect));
}

uint32_t ke_omci_tapi_voip_emergency_get(uint8_t *puc_state)
{
    uint32_t state = 0;
    if (puc_state == nullptr || load_field(KE_SITE, Global::kEmergencyState, &state) != 0)
        return 1;
    *puc_state = state == 1 ? 1 : 0;
    return 0;
}

}  // extern "C"
