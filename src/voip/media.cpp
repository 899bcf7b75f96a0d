// Media settings of a voice line: RTP port range and DSCP mark, silence
// suppression, fax mode; the digit map is accepted and ignored.
#include "ke_omci_tapi/voip.h"
#include "voip_record.h"

using namespace ke::voip;

extern "C" {

// The DSCP mark goes out twice: globally first, then with the line's port
// range.  A failed global write leaves the line untouched.
uint32_t ke_omci_tapi_voip_rtp_set(const st_voip_rtp *pst_rtp)
{
    if (pst_rtp == nullptr)
        return 1;
    Rtp::Rec global(KE_SITE);
    LineProfile::Rec line(KE_SITE);
    write(global, Rtp::kRtpDscp, pst_rtp->ui_dscp);
    if (store(KE_SITE, global) != 0)
        return 1;
    put(line, LineProfile::kLineId, pst_rtp->ui_line);
    write(line, LineProfile::kRtpPortMin, pst_rtp->ui_port_min);
    write(line, LineProfile::kRtpPortMax, pst_rtp->ui_port_max);
    write(line, LineProfile::kRtpDscp, pst_rtp->ui_dscp);
    return store(KE_SITE, line);
}

// The mark is read back from the global setting, never from the line's own
// field, and is delivered before the line is read.
uint32_t ke_omci_tapi_voip_rtp_get(st_voip_rtp *pst_rtp)
{
    if (pst_rtp == nullptr)
        return 1;
    Rtp::Rec global(KE_SITE);
    LineProfile::Rec line(KE_SITE);
    if (load(KE_SITE, global) != 0)
        return 1;
    pst_rtp->ui_dscp = get(global, Rtp::kRtpDscp);
    if (load_line<LineProfile>(KE_SITE, line, pst_rtp->ui_line) != 0)
        return 1;
    pst_rtp->ui_port_min = get(line, LineProfile::kRtpPortMin);
    pst_rtp->ui_port_max = get(line, LineProfile::kRtpPortMax);
    return 0;
}

uint32_t ke_omci_tapi_voip_silence_set(const st_voip_silence *pst_silence)
{
    if (pst_silence == nullptr)
        return 1;
    return store_line_field<LineProfile>(KE_SITE, pst_silence->ui_line,
                                         LineProfile::kSilenceSuppression,
                                         pst_silence->ui_silence);
}

uint32_t ke_omci_tapi_voip_faxmode_set(const uint32_t *pui_mode)
{
    if (pui_mode == nullptr)
        return 1;
    return store_field(KE_SITE, Fax::kFaxMode, *pui_mode);
}

uint32_t ke_omci_tapi_voip_digitmap_set(const void *pv_digitmap)
{
    (void)pv_digitmap;
    return 0;
}

}  // extern "C"
