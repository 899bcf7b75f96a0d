// Per-line and global voice settings, set and read one value at a time:
// registration and off-hook timers, SIP authentication, gains, hook state,
// signalling type and administrative state.
#include "code_map.h"
#include "ke_omci_tapi/voip.h"
#include "voip_record.h"

namespace ke::voip {
namespace {

// Signalling type: caller 1 is stored as 0, 2 as 2, anything else as 1;
// a stored code other than 0 and 2 reads back as 0.
constexpr CodeMap<2> kSignalType{{{{1, 0}, {2, 2}}}, 1, 0};

// Administrative state to the line-enable flag: locked (1, and 2 as well)
// disables the line; a disabled line reads back as locked (1).
constexpr CodeMap<2> kAdminState{{{{1, 0}, {2, 0}}}, 1, 0};

static_assert(kSignalType.to_caller(kSignalType.to_stored(1)) == 1);
static_assert(kSignalType.to_caller(kSignalType.to_stored(5)) == 0);
static_assert(kAdminState.to_caller(kAdminState.to_stored(2)) == 1);

}  // namespace
}  // namespace ke::voip

using namespace ke::voip;

extern "C" {

uint32_t ke_omci_tapi_voip_regtime_set(const st_voip_regtime *pst_regtime)
{
    if (pst_regtime == nullptr)
        return 1;
    LineProfile::Rec rec(KE_SITE);
    put(rec, LineProfile::kLineId, pst_regtime->ui_line);
    write(rec, LineProfile::kRegExpTime, pst_regtime->us_reg_exp_time);
    write(rec, LineProfile::kReregHeadStartTime, pst_regtime->us_rereg_head_start_time);
    return store(KE_SITE, rec);
}

uint32_t ke_omci_tapi_voip_regtime_get(st_voip_regtime *pst_regtime)
{
    if (pst_regtime == nullptr)
        return 1;
    LineProfile::Rec rec(KE_SITE);
    if (load_line<LineProfile>(KE_SITE, rec, pst_regtime->ui_line) != 0)
        return 1;
    pst_regtime->us_reg_exp_time = static_cast<uint16_t>(get(rec, LineProfile::kRegExpTime));
    pst_regtime->us_rereg_head_start_time =
        static_cast<uint16_t>(get(rec, LineProfile::kReregHeadStartTime));
    return 0;
}

uint32_t ke_omci_tapi_voip_offhooktime_set(const uint32_t *pui_time)
{
    if (pui_time == nullptr)
        return 1;
    return store_field(KE_SITE, Global::kOffHookTime, *pui_time);
}

uint32_t ke_omci_tapi_voip_offhooktime_get(uint32_t *pui_time)
{
    uint8_t time = 0;
    if (pui_time == nullptr || load_field(KE_SITE, Global::kOffHookTime, &time) != 0)
        return 1;
    *pui_time = time;
    return 0;
}

uint32_t ke_omci_tapi_voip_sipauth_set(const st_voip_sipauth *pst_auth)
{
    if (pst_auth == nullptr)
        return 1;
    SipUser::Rec rec(KE_SITE);
    put(rec, SipUser::kLineId, pst_auth->ui_line);
    write(KE_SITE, rec, SipUser::kUserName, pst_auth->auc_user_name);
    write(KE_SITE, rec, SipUser::kPassword, pst_auth->auc_password);
    write(KE_SITE, rec, SipUser::kRealm, pst_auth->auc_realm);
    return store(KE_SITE, rec);
}

uint32_t ke_omci_tapi_voip_sipauth_get(st_voip_sipauth *pst_auth)
{
    if (pst_auth == nullptr)
        return 1;
    SipUser::Rec rec(KE_SITE);
    if (load_line<SipUser>(KE_SITE, rec, pst_auth->ui_line) != 0)
        return 1;
    get(KE_SITE, rec, SipUser::kUserName, pst_auth->auc_user_name);
    get(KE_SITE, rec, SipUser::kPassword, pst_auth->auc_password);
    get(KE_SITE, rec, SipUser::kRealm, pst_auth->auc_realm);
    return 0;
}

uint32_t ke_omci_tapi_voip_gain_set(const st_voip_gain *pst_gain)
{
    if (pst_gain == nullptr)
        return 1;
    LineGain::Rec rec(KE_SITE);
    put(rec, LineGain::kLineId, pst_gain->ui_line);
    write(rec, LineGain::kRxGain, pst_gain->ui_rx_gain);
    write(rec, LineGain::kTxGain, pst_gain->ui_tx_gain);
    return store(KE_SITE, rec);
}

uint32_t ke_omci_tapi_voip_gain_get(st_voip_gain *pst_gain)
{
    if (pst_gain == nullptr)
        return 1;
    LineGain::Rec rec(KE_SITE);
    if (load_line<LineGain>(KE_SITE, rec, pst_gain->ui_line) != 0)
        return 1;
    pst_gain->ui_rx_gain = get(rec, LineGain::kRxGain);
    pst_gain->ui_tx_gain = get(rec, LineGain::kTxGain);
    return 0;
}

uint32_t ke_omci_tapi_voip_hookstatus_get(st_voip_hook *pst_hook)
{
    uint8_t hook = 0;
    if (pst_hook == nullptr ||
        load_line_field<UserRegInfo>(KE_SITE, pst_hook->ui_line, UserRegInfo::kHookState,
                                     &hook) != 0)
        return 1;
    pst_hook->ui_hook_state = hook;
    return 0;
}

uint32_t ke_omci_tapi_voip_type_set(const uint32_t *pui_type)
{
    if (pui_type == nullptr)
        return 1;
    return store_field(KE_SITE, Global::kSignalType, kSignalType.to_stored(*pui_type));
}

uint32_t ke_omci_tapi_voip_type_get(uint32_t *pui_type)
{
    uint8_t type = 0;
    if (pui_type == nullptr || load_field(KE_SITE, Global::kSignalType, &type) != 0)
        return 1;
    *pui_type = kSignalType.to_caller(type);
    return 0;
}

uint32_t ke_omci_tapi_voip_adminstate_set(const st_voip_admin *pst_admin)
{
    if (pst_admin == nullptr)
        return 1;
    return store_line_field<SipUser>(KE_SITE, pst_admin->ui_line, SipUser::kLineEnable,
                                     kAdminState.to_stored(pst_admin->ui_admin_state));
}

uint32_t ke_omci_tapi_voip_adminstate_get(st_voip_admin *pst_admin)
{
    uint8_t enable = 0;
    if (pst_admin == nullptr ||
        load_line_field<SipUser>(KE_SITE, pst_admin->ui_line, SipUser::kLineEnable, &enable) != 0)
        return 1;
    pst_admin->ui_admin_state = kAdminState.to_caller(enable);
    return 0;
}

}  // extern "C"
