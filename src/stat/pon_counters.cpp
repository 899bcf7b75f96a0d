// PON and XG-PON line counters, moved by position from the service's
// records into the caller's memory.
#include <cstddef>

#include "ke_omci_tapi/stat.h"

#include "../frame/call.h"
#include "../frame/output.h"

namespace {

// Both the TC counters and the GAL Ethernet counter come from this record.
constexpr const char *kTcStatCall = "ke_ke_sml_xgpon_tc_get_call";

// Reads a record of counter words, zeroed by the caller, and delivers the
// words in order.
template <class Record>
uint32_t read_counter_words(ke::Site site, const char *name, Record &rec, uint32_t *out)
{
    if (ke::call(site, name, rec) != 0)
        return 1;
    constexpr size_t kWords = sizeof rec.aui_counter / sizeof rec.aui_counter[0];
    if (out != nullptr)
        for (size_t i = 0; i < kWords; ++i)
            out[i] = rec.aui_counter[i];
    return 0;
}

// The 8 bytes of a counter in reverse order: on the little-endian target
// the caller receives the counter as a big-endian byte string.
uint64_t byte_reversed(uint64_t v) { return __builtin_bswap64(v); }

}  // namespace

extern "C" {

uint32_t ke_omci_tapi_stat_fec_get(void *pv_stat)
{
    st_fec_stat rec;
    ke::zero(rec);
    if (ke::call(KE_SITE, "ke_ke_sml_gpon_fec_stat_get_call", rec) != 0)
        return 1;
    ke::copy(KE_SITE, pv_stat, sizeof rec, &rec, sizeof rec);
    return 0;
}

uint32_t ke_omci_tapi_stat_gemport_get(uint32_t ui_gemport, st_gemport_stat *pst_stat)
{
    st_gemport_stat rec;
    ke::zero(rec);
    rec.ui_gemport = ui_gemport;
    if (ke::call(KE_SITE, "ke_ke_sml_gpon_gemport_stat_get_call", rec) != 0)
        return 1;
    if (pst_stat == nullptr)
        return 0;
    pst_stat->ui_counter_1 = rec.ui_counter_1;
    pst_stat->ui_counter_2 = rec.ui_counter_2;
    pst_stat->ull_counter_1 = byte_reversed(rec.ull_counter_1);
    pst_stat->ull_counter_2 = byte_reversed(rec.ull_counter_2);
    pst_stat->ui_counter_3 = rec.ui_counter_3;
    return 0;
}

uint32_t ke_omci_tapi_stat_tc_get(uint32_t *pui_counter)
{
    st_xgpon_tc_stat rec;
    ke::zero(rec);
    return read_counter_words(KE_SITE, kTcStatCall, rec, pui_counter);
}

uint32_t ke_omci_tapi_stat_downmng_get(uint32_t *pui_counter)
{
    st_xgpon_downmng_stat rec;
    ke::fill_zero(KE_SITE, &rec, sizeof rec);
    return read_counter_words(KE_SITE, "ke_ke_sml_xgpon_downmng_get_call", rec, pui_counter);
}

uint32_t ke_omci_tapi_stat_upmng_get(uint32_t *pui_counter)
{
    st_xgpon_upmng_stat rec;
    ke::fill_zero(KE_SITE, &rec, sizeof rec);
    return read_counter_words(KE_SITE, "ke_ke_sml_xgpon_upmng_get_call", rec, pui_counter);
}

// GAL Ethernet counts what the TC layer counts in its words 6 and 7; the
// sum wraps at 32 bits like the counters themselves.
uint32_t ke_omci_tapi_stat_galeth_get(uint32_t *pui_counter)
{
    st_xgpon_tc_stat rec;
    ke::zero(rec);
    if (ke::call(KE_SITE, kTcStatCall, rec) != 0)
        return 1;
    ke::store(pui_counter, static_cast<uint32_t>(rec.aui_counter[6] + rec.aui_counter[7]));
    return 0;
}

}  // extern "C"
