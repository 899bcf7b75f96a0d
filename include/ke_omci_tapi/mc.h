/* Multicast: global IGMP/MLD attributes, per-port IGMP settings, multicast
 * VLANs, group address ranges, and the port dump.
 *
 * The library keeps the global attributes and a cache of MC_PORT_MAX user
 * ports; every change is written to the configuration manager first and
 * enters the cache only when that write succeeded.  The user-port count
 * comes from the board on the first ke_omci_mc_data_init, which also
 * clears every port's VLANs and address ranges.
 *
 * Results: 0 success, 1 a table write failed or an argument was refused.
 * A failed write, a rejected code and a refused port are reported by the
 * gated INFO line "[name(line)][INFO]:ui_ret =0x..., ui_line =line"; a
 * rejected code or port carries ui_ret MC_ERR_VALUE there, while the
 * function still returns 1.
 *
 * Ports: the cache holds ports 0 to MC_PORT_MAX - 1.  A port at or above
 * MC_PORT_MAX is refused by every function below that takes one, unless
 * the function says otherwise: nothing is written, the cache is not
 * touched, the INFO line reports MC_ERR_VALUE and the result is 1.  A
 * board that reports more than MC_PORT_MAX user ports is served as one of
 * MC_PORT_MAX ports.  A null record is refused the same way
 * (ke_omci_tapi_mc_table_del still answers 0). */
#ifndef KE_OMCI_TAPI_MC_H
#define KE_OMCI_TAPI_MC_H

#include "types.h"

KE_EXTERN_C_BEGIN

#define MC_PORT_MAX 8      /* user ports the multicast cache holds */
#define MC_VLAN_MAX 8      /* multicast VLAN slots per port */
#define MC_VLAN_NONE 65535 /* an empty VLAN slot */
#define MC_RANGE_MAX 48    /* group address ranges per port */
#define MC_IP_LEN 16       /* one group address, IPv4 or IPv6 */

#define MC_ERR_VALUE 0x70000012u /* INFO-line code of a rejected value or port */
#define MC_ERR_STATE 0x70000000u /* state error returned by the readers below */

/* IGMP/MLD version and multicast mode of the ONU. */
typedef struct {
    uint32_t ui_igmp_ver;   /* 1 or 2 IGMPv2, 3 IGMPv3, 16 MLDv1, 17 MLDv2 */
    uint32_t ui_mc_mode;    /* 0, 1; any other value is mode 2 */
    uint32_t ui_quickleave; /* 0 off, non-zero on (set only) */
} st_mc_attr;
KE_ASSERT_SIZE(st_mc_attr, 12);
KE_ASSERT_OFFSET(st_mc_attr, ui_mc_mode, 4);
KE_ASSERT_OFFSET(st_mc_attr, ui_quickleave, 8);

/* How a user port sends IGMP messages upstream. */
typedef struct {
    uint32_t ui_upmode;    /* tag control 0 (pass unchanged) to 3; 2 and 3 alike */
    uint32_t ui_upvlan;    /* VLAN ID */
    uint32_t ui_uppri;     /* priority */
    uint32_t ui_upgemport; /* GEM port */
} st_mc_igmp_attr;
KE_ASSERT_SIZE(st_mc_igmp_attr, 16);
KE_ASSERT_OFFSET(st_mc_igmp_attr, ui_upvlan, 4);
KE_ASSERT_OFFSET(st_mc_igmp_attr, ui_uppri, 8);
KE_ASSERT_OFFSET(st_mc_igmp_attr, ui_upgemport, 12);

/* A multicast VLAN of a user port. */
typedef struct {
    uint32_t ui_port;
    uint32_t ui_vlan;
} st_mc_vlan;
KE_ASSERT_SIZE(st_mc_vlan, 8);
KE_ASSERT_OFFSET(st_mc_vlan, ui_vlan, 4);

/* A multicast group table row: a VLAN and a range of group addresses.
 * The words marked "row" belong to the OMCI stack and are not read. */
typedef struct {
    uint32_t ui_row_0;
    uint32_t ui_row_1;
    uint32_t ui_vlan;
    uint32_t ui_row_3;
    uint8_t auc_ip_start[MC_IP_LEN]; /* first group address */
    uint8_t auc_ip_end[MC_IP_LEN];   /* last group address */
    uint32_t ui_port;
} st_mc_table;
KE_ASSERT_SIZE(st_mc_table, 52);
KE_ASSERT_OFFSET(st_mc_table, ui_vlan, 8);
KE_ASSERT_OFFSET(st_mc_table, auc_ip_start, 16);
KE_ASSERT_OFFSET(st_mc_table, auc_ip_end, 32);
KE_ASSERT_OFFSET(st_mc_table, ui_port, 48);

/* First use: reads the board's user-port count (at most MC_PORT_MAX) and
 * clears every port's VLANs and ranges.  Does nothing once a non-zero
 * count was obtained; a board that could not be read, or reports no
 * port, is asked again on the next call. */
KE_API void ke_omci_mc_data_init(void);

/* Version, mode and quick leave.  0, or 1: a version other than 1, 2, 3,
 * 16, 17 (nothing written), or a failed write (earlier tables stay
 * written, the stored attributes are unchanged).  A null record: 1. */
KE_API uint32_t ke_omci_tapi_mc_attr_set(const st_mc_attr *pst_attr);

/* Fills ui_igmp_ver (2, 3, 16 or 17) and ui_mc_mode (0 or 1; mode 2
 * reads as 0).  Always 0 (a null record is only traced). */
KE_API uint32_t ke_omci_tapi_mc_attr_get(st_mc_attr *pst_attr);

/* Upstream IGMP settings of a port.  0 or 1. */
KE_API uint32_t ke_omci_tapi_mc_igmp_attr_set(uint32_t ui_port, const st_mc_igmp_attr *pst_attr);

/* Runs ke_omci_mc_data_init, then reads the cached settings; ui_upmode
 * reads as 0, 1 or 3.  A port at or above the port count (any port
 * before the first successful initialisation) reads as all zero.  0, or
 * MC_ERR_STATE with the record untouched when the cached mode is not
 * valid or the record is null. */
KE_API uint32_t ke_omci_tapi_mc_igmp_attr_get(uint32_t ui_port, st_mc_igmp_attr *pst_attr);

/* Downstream tag action code 0 to 7 (2 and 5 keep the current action,
 * yet the port is written again); a code above 7: 1.  0 or 1. */
KE_API uint32_t ke_omci_tapi_mc_tagact_set(uint32_t ui_port, uint32_t ui_tagact);

/* User VLAN of a port, written with the port's other settings.  0 or 1. */
KE_API uint32_t ke_omci_tapi_mc_usr_vlan_set(uint32_t ui_port, uint32_t ui_usrvlan);

/* Upstream IGMP rate limit of a port, written to its own table.  0 or 1. */
KE_API uint32_t ke_omci_tapi_mc_uprate_set(uint32_t ui_port, uint32_t ui_uprate);

/* Maximum number of groups of a port.  A port at or above the port count
 * is ignored: 0, nothing written.  0 or 1. */
KE_API uint32_t ke_omci_tapi_mc_group_num_set(uint32_t ui_port, uint32_t ui_group_num);

/* Writes the group number table only: no port check, cache untouched.
 * 0 or 1. */
KE_API uint32_t ke_omci_tapi_mc_group_num_set_proc(uint32_t ui_port, uint32_t ui_group_num);

/* Writes a port's whole VLAN list (pui_vlan[0 .. ui_num - 1], at most
 * MC_VLAN_MAX entries, MC_VLAN_NONE for an empty slot) and adds each VLAN
 * as a member of the port and of port 8.  The cache is not touched.  0,
 * or 1 when the list write failed; a null list or more than MC_VLAN_MAX
 * entries: 1, nothing written. */
KE_API uint32_t ke_omci_mc_vlan_set_proc(uint32_t ui_port, const uint32_t *pui_vlan,
                                         uint32_t ui_num);

/* Adds a multicast VLAN to the port's first empty slot.  A VLAN already
 * present, or no empty slot: 0, nothing written.  0 or 1. */
KE_API uint32_t ke_omci_tapi_mc_vlan_set(const st_mc_vlan *pst_vlan);

/* Removes a multicast VLAN; its range count stays.  Absent: 0. */
KE_API uint32_t ke_omci_tapi_mc_vlan_del(const st_mc_vlan *pst_vlan);

/* Empties every VLAN slot of the port and zeroes its range counts.  0 or 1. */
KE_API uint32_t ke_omci_tapi_mc_vlan_clr(uint32_t ui_port);

/* Adds the row's VLAN (when a slot is free) and its address range, and
 * counts the range under the VLAN's slot (a row whose VLAN is
 * MC_VLAN_NONE counts under the first empty slot).  With all MC_RANGE_MAX
 * ranges in use the range is not stored but still counted.  0 or 1. */
KE_API uint32_t ke_omci_tapi_mc_table_set(const st_mc_table *pst_row);

/* Removes the row's address range and uncounts it; the VLAN goes when
 * its count reaches 0 (a count never drops below 0).  Always 0. */
KE_API uint32_t ke_omci_tapi_mc_table_del(const st_mc_table *pst_row);

/* Clears the port's VLANs and all MC_RANGE_MAX address ranges.  0 or 1. */
KE_API uint32_t ke_omci_tapi_mc_range_clr(uint32_t ui_port);

/* Accepted, no action, always 0. */
KE_API uint32_t ke_omci_tapi_mc_filter_set(KE_ANY_ARGS);
/* Accepted, no action, always 0. */
KE_API uint32_t ke_omci_tapi_mc_filter_del(KE_ANY_ARGS);

/* The port dump served as "ke_ke_omci_mc_param_get_call" (its server entry
 * and client stub are in lifecycle.h): prints the multicast state of the
 * user port in the 4-byte request.  0, or MC_ERR_STATE with nothing
 * printed for a port at or above the board's port count (every port
 * before the first initialisation); a null request: 0x72200008. */
KE_API uint32_t ke_ke_omci_mc_param_get_ipc(void *pv_request);

KE_EXTERN_C_END

#endif
