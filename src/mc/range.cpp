// Group table rows: address ranges in table 817 (48 entries per port,
// read, changed and written back whole) and the count of ranges added
// under each multicast VLAN of the port.
#include <cstring>

#include "cm_table.h"
#include "copy.h"
#include "mc_state.h"
#include "mc_tables.h"

using namespace ke::cm;
using namespace ke::mc;
using ke::Site;

namespace {

using RangeRecord = Record<IGD_CO_MC_RANGE_TAB>;
static_assert(RangeTab::entry(MC_RANGE_MAX) + 4 == RangeRecord::kSize,
              "the range entries fill the record up to its mask");

constexpr uint32_t kNoEntry = MC_RANGE_MAX;

// Reads the port's ranges; a failure is reported under site's name.
uint32_t read_ranges(Site site, RangeRecord &rec, uint32_t port, uint32_t mask)
{
    rec.put_port(port);
    rec.put_tail_mask(mask);
    return report_info(site, get(rec));
}

uint32_t write_ranges(Site site, RangeRecord &rec)
{
    rec.put_tail_mask(RangeTab::kMask);
    return report_info(site, set(rec));
}

uint32_t valid_word(const RangeRecord &rec, uint32_t i)
{
    return rec.u32(RangeTab::entry(i) + RangeTab::ui_valid);
}

bool entry_holds(const RangeRecord &rec, uint32_t i, const st_mc_table &row)
{
    const uint8_t *e = rec.data() + RangeTab::entry(i);
    return std::memcmp(e + RangeTab::auc_ip_start, row.auc_ip_start, MC_IP_LEN) == 0 &&
           std::memcmp(e + RangeTab::auc_ip_end, row.auc_ip_end, MC_IP_LEN) == 0;
}

void put_entry(Site site, RangeRecord &rec, uint32_t i, const st_mc_table &row, uint32_t valid)
{
    uint8_t *e = rec.data() + RangeTab::entry(i);
    ke::copy(site, e + RangeTab::auc_ip_start, MC_IP_LEN, row.auc_ip_start, MC_IP_LEN);
    ke::copy(site, e + RangeTab::auc_ip_end, MC_IP_LEN, row.auc_ip_end, MC_IP_LEN);
    rec.put_u32(RangeTab::entry(i) + RangeTab::ui_valid, valid);
}

// An entry is free when its valid word is 0 and in use when it is 1; a
// removal matches only entries in use.  With every entry in use the range
// is not stored, and that is no failure.
uint32_t ke_omci_mc_range_add_proc(uint32_t port, const st_mc_table &row)
{
    RangeRecord rec;
    if (read_ranges(KE_SITE, rec, port, RangeTab::kMask) != 0)
        return 1;
    uint32_t i = 0;
    while (i < MC_RANGE_MAX && valid_word(rec, i) != 0)
        ++i;
    if (i == kNoEntry)
        return 0;
    put_entry(KE_SITE, rec, i, row, 1);
    return write_ranges(KE_SITE, rec);
}

uint32_t ke_omci_mc_range_del_proc(uint32_t port, const st_mc_table &row)
{
    RangeRecord rec;
    if (read_ranges(KE_SITE, rec, port, RangeTab::kMask) != 0)
        return 1;
    uint32_t i = 0;
    while (i < MC_RANGE_MAX && !(valid_word(rec, i) == 1 && entry_holds(rec, i, row)))
        ++i;
    if (i == kNoEntry)
        return 0;
    put_entry(KE_SITE, rec, i, row, 0);
    return write_ranges(KE_SITE, rec);
}

// The range count of the slot holding vlan, or nullptr when no slot does.
// The empty-slot mark is held by the first empty slot.
uint32_t *range_count(st_mc_port_param &entry, uint32_t vlan)
{
    for (size_t i = 0; i < entry.aui_vlan.size(); ++i)
        if (entry.aui_vlan[i] == vlan)
            return &entry.aui_area_cnt[i];
    return nullptr;
}

}  // namespace

extern "C" {

// The VLAN is added first and stays even when the range cannot be added.
uint32_t ke_omci_tapi_mc_table_set(const st_mc_table *pst_row)
{
    if (pst_row == nullptr)
        return reject(KE_SITE);
    st_mc_vlan vlan = {pst_row->ui_port, pst_row->ui_vlan};
    uint32_t ret = ke_omci_tapi_mc_vlan_set(&vlan);
    if (ret != 0) {
        ke::trace_failed_call(KE_SITE, ret);
        return 1;
    }
    ret = ke_omci_mc_range_add_proc(pst_row->ui_port, *pst_row);
    if (ret != 0)
        return ret;
    // The VLAN was accepted above, so the port is one the cache holds.
    st_mc_port_param *entry = port_param(KE_SITE, pst_row->ui_port);
    uint32_t *count = entry != nullptr ? range_count(*entry, pst_row->ui_vlan) : nullptr;
    if (count != nullptr && *count != UINT32_MAX)
        ++*count;
    return 0;
}

// A removal under a count of 0 leaves the count (and the VLAN) as they are.
uint32_t ke_omci_tapi_mc_table_del(const st_mc_table *pst_row)
{
    if (pst_row == nullptr) {
        reject(KE_SITE);
        return 0;
    }
    st_mc_port_param *entry = port_param(KE_SITE, pst_row->ui_port);
    if (entry == nullptr || ke_omci_mc_range_del_proc(pst_row->ui_port, *pst_row) != 0)
        return 0;
    uint32_t *count = range_count(*entry, pst_row->ui_vlan);
    if (count == nullptr || *count == 0)
        return 0;
    if (--*count == 0) {
        st_mc_vlan vlan = {pst_row->ui_port, pst_row->ui_vlan};
        ke_omci_tapi_mc_vlan_del(&vlan);
    }
    return 0;
}

uint32_t ke_omci_tapi_mc_range_clr(uint32_t ui_port)
{
    if (port_param(KE_SITE, ui_port) == nullptr)
        return 1;
    ke_omci_tapi_mc_vlan_clr(ui_port);

    RangeRecord rec;
    if (read_ranges(KE_SITE, rec, ui_port, RangeTab::kClearGetMask) != 0)
        return 1;
    for (uint32_t i = 0; i < MC_RANGE_MAX; ++i)
        rec.put_u32(RangeTab::entry(i) + RangeTab::ui_valid, 0);
    rec.put_port(ui_port);
    if (write_ranges(KE_SITE, rec) != 0)
        return 1;

    RangeRecord empty;
    empty.put_port(ui_port);
    return write_ranges(KE_SITE, empty);
}

}  // extern "C"
