// T-CONTs and GEM ports: thin remote calls to the sml service.
#include "ke_omci_tapi/pon.h"

#include "../frame/call.h"
#include "../frame/output.h"

using ke::call;
using ke::pass_through;
using ke::pass_word;

extern "C" {

uint32_t ke_omci_tapi_omcc_create(void) { return 0; }

uint32_t ke_omci_tapi_omcc_destory(void) { return 0; }

uint32_t ke_omci_tapi_gponmode_get(uint32_t *pui_mode)
{
    uint32_t mode = 0;
    if (call(KE_SITE, "ke_ke_sml_gpon_mode_get_call", mode) != 0)
        return 1;
    ke::store(pui_mode, mode);
    return 0;
}

// The caller's word is the buffer, yet the status is mapped like a plain call.
uint32_t ke_omci_tapi_tcont_num_get(uint32_t *pui_num)
{
    return call(KE_SITE, "ke_ke_sml_gpon_tcont_num_get_call", pui_num, sizeof *pui_num);
}

uint32_t ke_omci_tapi_tcont_set(uint32_t ui_tcont, uint32_t ui_allocid)
{
    st_tcont rec;
    ke::zero(rec);
    rec.ui_tcont = ui_tcont;
    rec.ui_allocid = ui_allocid;
    return call(KE_SITE, "ke_ke_sml_gpon_tcont_set_call", rec);
}

// The default T-CONT's Alloc-ID is the ONU-ID, so index 0 reads the ONU-ID.
uint32_t ke_omci_tapi_tcont_get(uint32_t ui_tcont, uint32_t *pui_allocid)
{
    if (ui_tcont == 0) {
        uint32_t onuid = 0;
        if (call(KE_SITE, "ke_ke_sml_gpon_onuid_get_call", onuid) != 0)
            return 1;
        ke::store(pui_allocid, onuid);
        return 0;
    }
    st_tcont rec;
    ke::zero(rec);
    rec.ui_tcont = ui_tcont;
    if (call(KE_SITE, "ke_ke_sml_gpon_tcont_get_call", rec) != 0)
        return 1;
    ke::store(pui_allocid, rec.ui_allocid);
    return 0;
}

uint32_t ke_omci_tapi_tcont_del(uint32_t ui_tcont)
{
    return pass_word("ke_ke_sml_gpon_tcont_del_call", ui_tcont);
}

uint32_t ke_omci_tapi_dba_mode_get(uint32_t *pui_mode)
{
    return pass_through("ke_ke_sml_gpon_dba_mode_get_call", pui_mode, sizeof *pui_mode);
}

uint32_t ke_omci_tapi_gem_block_set(uint32_t ui_len)
{
    return pass_word("ke_ke_sml_gpon_gemblock_set_call", ui_len);
}

uint32_t ke_omci_tapi_gem_block_get(uint32_t *pui_len)
{
    return pass_through("ke_ke_sml_gpon_gemblock_get_call", pui_len, sizeof *pui_len);
}

uint32_t ke_omci_tapi_gemport_num_get(uint32_t *pui_num)
{
    return pass_through("ke_ke_sml_gpon_gemport_num_get_call", pui_num, sizeof *pui_num);
}

uint32_t ke_omci_tapi_gemport_set(uint32_t ui_gemport, const void *pv_attr)
{
    st_gemport rec;
    ke::zero(rec);
    rec.ui_gemport = ui_gemport;
    ke::copy(KE_SITE, rec.st_gemport_attr, sizeof rec.st_gemport_attr, pv_attr,
             KE_GEMPORT_ATTR_LEN);
    return call(KE_SITE, "ke_ke_sml_gpon_gemport_set_call", rec);
}

uint32_t ke_omci_tapi_gemport_get(uint32_t ui_gemport, void *pv_attr)
{
    st_gemport rec;
    ke::zero(rec);
    rec.ui_gemport = ui_gemport;
    if (call(KE_SITE, "ke_ke_sml_gpon_gemport_get_call", rec) != 0)
        return 1;
    ke::copy(KE_SITE, pv_attr, KE_GEMPORT_ATTR_LEN, rec.st_gemport_attr, KE_GEMPORT_ATTR_LEN);
    return 0;
}

uint32_t ke_omci_tapi_gemport_del(uint32_t ui_gemport)
{
    return pass_word("ke_ke_sml_gpon_gemport_del_call", ui_gemport);
}

uint32_t ke_omci_tapi_gemport_loopback_set(uint32_t ui_word0, uint32_t ui_word1,
                                           uint32_t ui_word2)
{
    st_gemport_loopback rec = {{ui_word0, ui_word1, ui_word2}};
    return pass_through("ke_ke_sml_gpon_gemport_loopback_set_call", rec);
}

}  // extern "C"
