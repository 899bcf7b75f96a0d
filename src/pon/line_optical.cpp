// Line control, alarms and the optical module.
#include <cstdio>

#include "ke_omci_tapi/pon.h"

#include "../frame/call.h"
#include "../frame/platform.h"

namespace {

// The optical information read reports its own failures on this line,
// printed whatever the log gate says.
void trace_fail(ke::Site site, int ret)
{
    std::printf("%s[%d] fail, ret=%d\n", site.func, site.line, ret);
}

// A read whose status is not examined: after a failure the record reads as
// it was sent (all zero), whatever the IPC layer left in it.
template <class Record>
void read_unchecked(const char *name, Record &rec)
{
    ke::zero(rec);
    if (ke::pass_through(name, rec) != 0)
        ke::zero(rec);
}

}  // namespace

extern "C" {

// The alarm record is handed over whole: a plain copy, not a bounded one.
uint32_t ke_omci_tapi_gpon_alarm_get(void *pv_alarm)
{
    st_alarm rec;
    ke::zero(rec);
    if (ke::call(KE_SITE, "ke_ke_sml_gpon_alarm_get_call", rec) != 0)
        return 1;
    if (pv_alarm != nullptr)
        *static_cast<st_alarm *>(pv_alarm) = rec;
    return 0;
}

uint32_t ke_omci_tapi_gpon_set_mode(uint32_t *pui_mode)
{
    return ke::pass_through("ke_ke_sml_gpon_mode_set_call", pui_mode, sizeof *pui_mode);
}

uint32_t ke_omci_tapi_pon_start(void *pv_param)
{
    return ke::pass_through("ke_ke_sml_gpon_pon_start_call", pv_param, KE_PON_START_LEN);
}

uint32_t ke_omci_tapi_pon_stop(void)
{
    return ke::pass_through("ke_ke_sml_gpon_pon_stop_call", nullptr, 0);
}

// The status is read only in operation state (O5) unless forced; neither
// call's status is examined and nothing is traced.
uint32_t ke_omci_tapi_optical_attr_get(uint32_t ui_force, uint32_t *pui_sta)
{
    if (ui_force == 0) {
        uint32_t state;
        read_unchecked("ke_ke_sml_gpon_regstate_get_call", state);
        if (state != REGSTATE_O5)
            return KE_ERR_NOT_OPERATING;
    }
    st_optical_sta sta;
    read_unchecked("ke_ke_sml_optical_sta_get_call", sta);
    if (pui_sta != nullptr)
        for (int i = 0; i < KE_OPTICAL_STA_WORDS; ++i)
            pui_sta[i] = sta.aui_word[i];
    return 0;
}

// Unlike the other reads, this one answers with the failing code itself
// (the remote status or the copy's error) and prints its own line.
uint32_t ke_omci_tapi_optical_info_get(void *pv_info)
{
    st_optical_info rec;
    ke::zero(rec);
    uint32_t ret = ke::pass_through("ke_ke_sml_optical_info_get_call", rec);
    if (ret != 0) {
        trace_fail(KE_SITE, static_cast<int>(ret));
        return ret;
    }
    int err = memcpy_s(pv_info, sizeof rec, &rec, sizeof rec);
    if (err != 0) {
        trace_fail(KE_SITE, err);
        return static_cast<uint32_t>(err);
    }
    return 0;
}

uint32_t ke_omci_tapi_pmu_attr_set(KE_ANY_ARGS) { return 0; }

uint32_t ke_omci_tapi_pmu_attr_get(KE_ANY_ARGS) { return 0; }

}  // extern "C"
