// SFU and HGU port mode: the port's mode in the port-information table,
// and the two command-like tables that switch a port's behaviour.
#include "tables.h"

#include <cstring>

namespace cm = ke::cm;
using namespace ke::vlan;

namespace {

constexpr uint32_t kSfuMode = KE_VLAN_AT(st_port_info_tab, ui_sfu_mode);
constexpr uint32_t kSfu = 1;
constexpr uint32_t kFlushPort = KE_VLAN_AT(st_vlan_flush_all_tab, ui_port);
constexpr uint32_t kTrunkPort = KE_VLAN_AT(st_vlan_trunk_tab, ui_port);
constexpr uint32_t kTrunk = KE_VLAN_AT(st_vlan_trunk_tab, ui_trunk);

// The mode record of port: the port as key and the mode's mask.
void key_port_info(PortInfoRecord &rec, uint32_t port)
{
    rec.put_port(port);
    rec.put_tail_mask(KE_PORT_INFO_MASK_SFU_MODE);
}

}  // namespace

extern "C" {

uint32_t ke_omci_tapi_check_port_mode_is_sfu(uint32_t ui_port)
{
    PortInfoRecord rec;
    key_port_info(rec, ui_port);
    uint32_t ret = cm::get(rec);
    if (ret != 0)
        return cm::report_ungated(KE_SITE, ret, "%s[%d] fail, port_id=%u, ret=%d\n", ui_port);
    return rec.u32(kSfuMode) == kSfu ? 1 : 0;
}

// The caller's block is read byte-wise at its two fields only: it may be
// as short as 10 bytes and need not be aligned.
uint32_t ke_omci_update_the_cm_table(const st_port_mode_update *pst_update)
{
    if (pst_update == nullptr)
        return cm::kRefused;
    const auto *bytes = reinterpret_cast<const uint8_t *>(pst_update);
    uint32_t mode = 0;
    std::memcpy(&mode, bytes + offsetof(st_port_mode_update, ui_sfu_mode), sizeof mode);

    PortInfoRecord rec;
    key_port_info(rec, bytes[offsetof(st_port_mode_update, uc_port)]);
    rec.put_u32(kSfuMode, mode);
    return cm::report_error_word(cm::set(rec), "set", cm::IGD_CO_PORT_INFO_TAB);
}

uint32_t ke_omci_init_the_port_to_sfu(uint32_t ui_port)
{
    FlushAllRecord rec;
    rec.put_u32(kFlushPort, ui_port);
    return cm::report_error_word(cm::add(rec), "Add", cm::IGD_CO_VLAN_FLUSH_ALL_TAB);
}

uint32_t ke_omci_restore_the_port_to_hgu(uint32_t ui_port)
{
    FlushAllRecord rec;
    rec.put_u32(kFlushPort, ui_port);
    return cm::report_error_word(cm::del(rec), "Del", cm::IGD_CO_VLAN_FLUSH_ALL_TAB);
}

uint32_t ke_omci_notify_sfu_trunk(uint32_t ui_port, uint32_t ui_trunk)
{
    TrunkRecord rec;
    rec.put_u32(kTrunkPort, ui_port);
    rec.put_u32(kTrunk, ui_trunk);
    return cm::report_error_word(cm::set(rec), "Set", cm::IGD_CO_VLAN_TRUNK_TAB);
}

}  // extern "C"
