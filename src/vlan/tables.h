// The VLAN and port tables as this family builds them: frame records
// (zeroed byte images of the table's full size) whose field offsets are
// read off the public layouts in ke_omci_tapi/vlan.h.
#ifndef KE_VLAN_TABLES_H
#define KE_VLAN_TABLES_H

#include <cstddef>
#include <cstdint>

#include "ke_omci_tapi/vlan.h"
#include "../frame/cm_report.h"
#include "../frame/cm_table.h"

namespace ke::vlan {

// Offset of a field of a public table layout.
#define KE_VLAN_AT(layout, field) static_cast<uint32_t>(offsetof(layout, field))

// A table's record, checked against the layout it must have.
template <uint32_t Id, class Layout>
struct TableRecord : cm::Record<Id> {
    static_assert(sizeof(Layout) == cm::Record<Id>::kSize, "layout and table index disagree");
};

using FilterRecord = TableRecord<cm::IGD_CO_VLAN_FILTER_TAB, st_vlan_filter_tab>;
using MemberRecord = TableRecord<cm::IGD_CO_VLAN_MEMBER_TAB, st_vlan_member_tab>;
using TagActRecord = TableRecord<cm::IGD_CO_VLAN_TAGACT_TAB, st_vlan_tagact_tab>;
using DefTagRecord = TableRecord<cm::IGD_CO_VLAN_DEFTAG_TAB, st_vlan_deftag_tab>;
using DefPriRecord = TableRecord<cm::IGD_CO_VLAN_DEFPRI_TAB, st_vlan_defpri_tab>;
using FlushAllRecord = TableRecord<cm::IGD_CO_VLAN_FLUSH_ALL_TAB, st_vlan_flush_all_tab>;
using TrunkRecord = TableRecord<cm::IGD_CO_VLAN_TRUNK_TAB, st_vlan_trunk_tab>;
using PortInfoRecord = TableRecord<cm::IGD_CO_PORT_INFO_TAB, st_port_info_tab>;
template <uint32_t Id>
using RuleRecord = TableRecord<Id, st_vlan_rule_tab>;

static_assert(KE_VLAN_AT(st_vlan_filter_tab, ui_port) == cm::kPortOffset, "port key");
static_assert(KE_VLAN_AT(st_vlan_rule_tab, ui_port) == cm::kPortOffset, "port key");
static_assert(KE_VLAN_AT(st_port_info_tab, ui_port) == cm::kPortOffset, "port key");
static_assert(cm::kRefused == KE_VLAN_REFUSED, "one refusal status");

}  // namespace ke::vlan

#endif
