// Ethernet port attributes.  The service keeps all of a user port's
// attributes in one st_port_attr record: getters read it and keep one
// word, setters read it, change their own words and write it back whole,
// so every word they do not own returns to the service as it came.
#include "call.h"
#include "ke_omci_tapi/device.h"

namespace {

constexpr const char *kAttrGet = "ke_ke_sml_port_attr_get_call";
constexpr const char *kAttrSet = "ke_ke_sml_port_attr_set_call";

// The record keyed by port, as the read goes out.
st_port_attr keyed_record(uint32_t port)
{
    st_port_attr rec;
    ke::zero(rec);
    rec.ui_port = port;
    return rec;
}

uint32_t get_word(ke::Site site, uint32_t port, uint32_t st_port_attr::*field, uint32_t *out)
{
    st_port_attr rec = keyed_record(port);
    if (ke::call(site, kAttrGet, rec) != 0)
        return 1;
    if (out != nullptr)
        *out = rec.*field;
    return 0;
}

template <class Change>
uint32_t change(ke::Site read_site, ke::Site write_site, uint32_t port, Change change_words)
{
    st_port_attr rec = keyed_record(port);
    return ke::read_modify_write(read_site, kAttrGet, write_site, kAttrSet, rec, change_words);
}

// Setters of one word.  Each setter passes its read site and its write
// site on two lines, so the two failures trace different lines.
uint32_t set_word(ke::Site read_site, ke::Site write_site, uint32_t port,
                  uint32_t st_port_attr::*field, uint32_t value)
{
    return change(read_site, write_site, port, [&](st_port_attr &rec) { rec.*field = value; });
}

// The instance identifier's base per type of the first port; types not
// listed have no identifier.
constexpr uint32_t kNoInstance = 0;
constexpr uint32_t instance_base(uint32_t type)
{
    switch (type) {
    case 0:
        return 1;
    case 1:
    case 2:
        return 0x101;
    default:
        return kNoInstance;
    }
}

}  // namespace

extern "C" {

uint32_t ke_omci_tapi_port_type_get(uint32_t ui_port, uint32_t *pui_type)
{
    return get_word(KE_SITE, ui_port, &st_port_attr::ui_type, pui_type);
}

uint32_t ke_omci_tapi_port_state_get(uint32_t ui_port, uint32_t *pui_state)
{
    return get_word(KE_SITE, ui_port, &st_port_attr::ui_state, pui_state);
}

uint32_t ke_omci_tapi_port_ethmode_get(uint32_t ui_port, uint32_t *pui_mode)
{
    return get_word(KE_SITE, ui_port, &st_port_attr::ui_ethmode, pui_mode);
}

uint32_t ke_omci_tapi_port_link_get(uint32_t ui_port, uint32_t *pui_link)
{
    return get_word(KE_SITE, ui_port, &st_port_attr::ui_link, pui_link);
}

uint32_t ke_omci_tapi_port_loopback_get(uint32_t ui_port, uint32_t *pui_loopback)
{
    return get_word(KE_SITE, ui_port, &st_port_attr::ui_loopback, pui_loopback);
}

uint32_t ke_omci_tapi_port_pause_get(uint32_t ui_port, uint32_t *pui_pause)
{
    return get_word(KE_SITE, ui_port, &st_port_attr::ui_pause, pui_pause);
}

uint32_t ke_omci_tapi_port_state_set(uint32_t ui_port, uint32_t ui_state)
{
    return set_word(KE_SITE,
                    KE_SITE, ui_port, &st_port_attr::ui_state, ui_state);
}

uint32_t ke_omci_tapi_port_ethmode_set(uint32_t ui_port, uint32_t ui_mode)
{
    return set_word(KE_SITE,
                    KE_SITE, ui_port, &st_port_attr::ui_ethmode_cfg, ui_mode);
}

uint32_t ke_omci_tapi_port_loopback_set(uint32_t ui_port, uint32_t ui_loopback)
{
    return set_word(KE_SITE,
                    KE_SITE, ui_port, &st_port_attr::ui_loopback, ui_loopback);
}

uint32_t ke_omci_tapi_port_pause_set(uint32_t ui_port, uint32_t ui_pause)
{
    return set_word(KE_SITE,
                    KE_SITE, ui_port, &st_port_attr::ui_pause, ui_pause);
}

uint32_t ke_omci_tapi_port_outcar_set(uint32_t ui_port, uint32_t ui_outcar)
{
    return set_word(KE_SITE,
                    KE_SITE, ui_port, &st_port_attr::ui_outcar, ui_outcar);
}

uint32_t ke_omci_tapi_port_incar_set(uint32_t ui_port, uint32_t ui_incar0, uint32_t ui_incar1,
                                     uint32_t ui_incar2, uint32_t ui_incar3)
{
    return change(KE_SITE,
                  KE_SITE, ui_port, [&](st_port_attr &rec) {
                      rec.aui_incar[0] = ui_incar0;
                      rec.aui_incar[1] = ui_incar1;
                      rec.aui_incar[2] = ui_incar2;
                      rec.aui_incar[3] = ui_incar3;
                  });
}

uint32_t ke_omci_tapi_port_mtu_set(uint32_t ui_port, uint32_t ui_mtu)
{
    (void)ui_port;
    (void)ui_mtu;
    return 0;
}

uint32_t ke_omci_tapi_port_mtu_get(uint32_t ui_port, uint32_t *pui_mtu)
{
    (void)ui_port;
    (void)pui_mtu;
    return 0;
}

// The type of port 0 decides for every port.
uint32_t ke_omci_tapi_port_pptpinstid_get(uint32_t ui_port, uint16_t *pus_instid)
{
    uint32_t type = 0;
    uint32_t ret = ke_omci_tapi_port_type_get(0, &type);
    if (ret != 0) {
        ke::trace_failed_call(KE_SITE, ret);
        return 1;
    }
    uint32_t base = instance_base(type);
    if (base == kNoInstance)
        return KE_PORT_TYPE_UNKNOWN;
    if (pus_instid != nullptr)
        *pus_instid = static_cast<uint16_t>(ui_port + base);
    return 0;
}

}  // extern "C"
