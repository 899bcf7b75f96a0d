// MAC bridge: learning and its limit, ageing, port isolation, MAC filters
// and the learned MAC table.
#include "ke_omci_tapi/bridge_qos.h"
#include "ke_omci_tapi/device.h"

#include "../frame/call.h"
#include "../frame/output.h"
#include "port_block.h"

namespace {

// The service holds a port's learning record as a whole, so one field is
// changed by reading the record, changing that field and writing it all
// back; the other fields return exactly as the service gave them.
uint32_t learn_field_set(ke::Site read, ke::Site write, uint32_t port,
                         uint32_t st_br_learn::*field, uint32_t value)
{
    st_br_learn rec;
    ke::zero(rec);
    rec.ui_port = port;
    return ke::read_modify_write(read, "ke_ke_sml_br_learn_get_call", write,
                                 "ke_ke_sml_br_learn_set_call", rec,
                                 [&](st_br_learn &r) { r.*field = value; });
}

// Moves one reply entry into the caller's entry layout; bytes 6 and 7 of
// the caller's entry are left alone.
void deliver_mac(ke::Site site, const st_br_table_entry &from, st_br_mac &to)
{
    ke::copy(site, to.auc_mac, sizeof to.auc_mac, from.auc_mac, sizeof from.auc_mac);
    to.ui_info = from.ui_info;
}

}  // namespace

extern "C" {

uint32_t ke_omci_tapi_br_learn_set(uint32_t ui_port, uint32_t ui_learn)
{
    ke::Site read = KE_SITE;
    ke::Site write = KE_SITE;
    return learn_field_set(read, write, ui_port, &st_br_learn::ui_learn, ui_learn);
}

// An HGU leaves the limit to its own stack.  The product type is taken from
// the cache as it stands, without fetching: until the system information
// has been read it is 0 (SFU) and the limit is applied.
uint32_t ke_omci_tapi_br_num_set(uint32_t ui_port, uint32_t ui_learn_num)
{
    if (gst_sysinfo.ui_product_type == KE_PRODUCT_HGU)
        return 0;
    ke::Site read = KE_SITE;
    ke::Site write = KE_SITE;
    return learn_field_set(read, write, ui_port, &st_br_learn::ui_learn_num, ui_learn_num);
}

uint32_t ke_omci_tapi_br_learn_get(uint32_t ui_port, uint32_t *pui_learn)
{
    st_br_learn rec;
    ke::zero(rec);
    rec.ui_port = ui_port;
    if (ke::call(KE_SITE, "ke_ke_sml_br_learn_get_call", rec) != 0)
        return 1;
    ke::store(pui_learn, rec.ui_learn);
    return 0;
}

uint32_t ke_omci_tapi_br_age_set(uint32_t ui_age)
{
    return ke::pass_word("ke_ke_sml_br_age_set_call", ui_age);
}

uint32_t ke_omci_tapi_br_age_get(uint32_t *pui_age)
{
    return ke::pass_through("ke_ke_sml_br_age_get_call", pui_age, sizeof *pui_age);
}

uint32_t ke_omci_tapi_br_enable(uint32_t *pui_enable)
{
    return ke::pass_through("ke_ke_sml_br_port_isolate_call", pui_enable, sizeof *pui_enable);
}

uint32_t ke_omci_tapi_br_filter_set(uint32_t ui_port, const void *pv_filter)
{
    return ke::send_port_block(KE_SITE, "ke_ke_sml_br_filter_set_call", ui_port,
                               &st_br_filter::auc_filter, pv_filter);
}

uint32_t ke_omci_tapi_br_filter_del(uint32_t ui_port, const void *pv_filter)
{
    return ke::send_port_block(KE_SITE, "ke_ke_sml_br_filter_del_call", ui_port,
                               &st_br_filter::auc_filter, pv_filter);
}

uint32_t ke_omci_tapi_br_filter_get(uint32_t ui_port, void *pv_filter)
{
    st_br_filter rec;
    ke::zero(rec);
    rec.ui_port = ui_port;
    if (ke::call(KE_SITE, "ke_ke_sml_br_filter_get_call", rec) != 0)
        return 1;
    ke::copy(KE_SITE, pv_filter, KE_BR_FILTER_LEN, rec.auc_filter, sizeof rec.auc_filter);
    return 0;
}

// Copies as many entries as the reply holds, the caller has room for and a
// reply can carry.  A failed read is not traced: it is an empty table.
uint32_t ke_omci_tapi_br_table_get(uint32_t ui_port, uint32_t *pui_num, st_br_mac *pst_mac)
{
    st_br_table rec;
    ke::zero(rec);
    rec.ui_port = ui_port;
    uint32_t n = 0;
    if (ke::pass_through("ke_ke_sml_br_table_get_call", rec) == 0 && rec.ui_entry_num != 0) {
        uint32_t capacity = (pui_num != nullptr && pst_mac != nullptr) ? *pui_num : 0;
        n = rec.ui_entry_num;
        if (n > capacity)
            n = capacity;
        if (n > BR_TABLE_MAX)
            n = BR_TABLE_MAX;
        for (uint32_t i = 0; i < n; ++i)
            deliver_mac(KE_SITE, rec.ast_entry[i], pst_mac[i]);
    }
    ke::store(pui_num, n);
    return 0;
}

}  // extern "C"
