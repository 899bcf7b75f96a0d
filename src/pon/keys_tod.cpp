// Line security keys and time of day.  Keys only pass through on their way
// to the line; the library keeps none of them.
#include <cstddef>
#include <cstdio>

#include "ke_omci_tapi/pon.h"

#include "../frame/call.h"

namespace {

// Key material goes to the console whenever the level-7 gate is open;
// whether it ever opens in the field is the log configuration's call.  The
// bytes are formatted first (" %x" each), so the line is one printf with
// few arguments: sixteen more would cost the frame 64 bytes of outgoing
// arguments.
void trace_msk(ke::Site site, const st_msk &msk)
{
    if (!ke::log_gate_open())
        return;
    char hex[KE_KEY_LEN * 3 + 1] = "";
    size_t used = 0;
    for (uint8_t b : msk.auc_key)
        used += static_cast<size_t>(
            std::snprintf(hex + used, sizeof hex - used, " %x", unsigned{b}));
    std::printf("[%s(%d)]st_msk.auc_key:%s\n", site.func, site.line, hex);
}

uint32_t big_endian(const uint8_t *b, int bytes)
{
    uint32_t v = 0;
    for (int i = 0; i < bytes; ++i)
        v = (v << 8) | b[i];
    return v;
}

// OLT-G time of day: a 4-byte superframe count, then an IEEE 1588 stamp of
// 6 bytes of seconds and 4 of nanoseconds, all most significant byte first.
st_tod tod_from_wire(const uint8_t *b)
{
    st_tod tod;
    ke::zero(tod);
    tod.ui_superframe = big_endian(b, 4);
    tod.ui_sec_upper = big_endian(b + 4, 2);
    tod.ui_sec_lower = big_endian(b + 6, 4);
    tod.ui_nsec = big_endian(b + 10, 4);
    return tod;
}

}  // namespace

extern "C" {

uint32_t ke_omci_tapi_msk_set(const void *pv_key)
{
    st_msk msk;
    ke::zero(msk);
    ke::copy(KE_SITE, msk.auc_key, sizeof msk.auc_key, pv_key, KE_KEY_LEN);
    trace_msk(KE_SITE, msk);
    return ke::pass_through("ke_ke_sml_xgpon_msk_set_call", msk);
}

uint32_t ke_omci_tapi_aes_cmac(st_aes_cmac *pst_cmac)
{
    st_aes_cmac rec;
    ke::zero(rec);
    ke::copy(KE_SITE, &rec, sizeof rec, pst_cmac, sizeof rec);
    if (ke::call(KE_SITE, "ke_ke_sml_xgpon_aes_cmac_set_call", rec) != 0)
        return 1;
    ke::copy(KE_SITE, ke::bytes_at(pst_cmac, offsetof(st_aes_cmac, auc_cmac)), sizeof rec.auc_cmac,
             rec.auc_cmac, sizeof rec.auc_cmac);
    return 0;
}

// The copy is bounded by the record, not by the caller's length: a longer
// key is refused by the copy, and the request still carries that length.
uint32_t ke_omci_tapi_mckey_set(uint32_t ui_key_id, uint32_t ui_key_len, const void *pv_key)
{
    st_mckey rec;
    ke::zero(rec);
    rec.ui_key_id = ui_key_id;
    rec.ui_key_len = ui_key_len;
    ke::copy(KE_SITE, rec.auc_key, sizeof rec.auc_key, pv_key, ui_key_len);
    return ke::pass_through("ke_ke_sml_xgpon_mckey_set_call", rec);
}

uint32_t ke_omci_tapi_mckey_del(uint32_t ui_key_id)
{
    st_mckey rec;
    ke::zero(rec);
    rec.ui_key_id = ui_key_id;
    return ke::pass_through("ke_ke_sml_xgpon_mckey_del_call", rec);
}

// A missing time stamp is sent as zero, as a missing block is everywhere.
uint32_t ke_omci_tapi_time_set(const void *pv_tod)
{
    static constexpr uint8_t kNoTime[KE_TOD_LEN] = {};
    const auto *wire = pv_tod != nullptr ? static_cast<const uint8_t *>(pv_tod) : kNoTime;
    st_tod tod = tod_from_wire(wire);
    return ke::pass_through("ke_ke_sml_gpon_time_set_call", tod);
}

}  // extern "C"
