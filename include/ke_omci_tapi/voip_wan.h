/* VoIP WAN provisioning: the uci toolkit, the creation of a WAN interface
 * in the OpenWrt configuration, and the set, read and delete of the WAN
 * connection that carries voice (or TR-069, or internet) traffic.
 *
 * The toolkit and the creation run `uci` through the shell and read its
 * output back through the scratch file /tmp/tmp_uci_value, so callers must
 * make one call at a time.  IPv4 addresses are four bytes in network
 * order, also when held in a 32-bit field. */
#ifndef KE_OMCI_TAPI_VOIP_WAN_H
#define KE_OMCI_TAPI_VOIP_WAN_H

#include "types.h"

KE_EXTERN_C_BEGIN

#define WAN_IF_MAX 4 /* WAN interface slots network.pon_1 .. pon_4 */

/* Service bits of a WAN connection (list table byte, ui_service). */
#define KE_WAN_SERVICE_TR069 1u
#define KE_WAN_SERVICE_VOICE 2u
#define KE_WAN_SERVICE_INTERNET 4u

/* uc_addr_mode values. */
#define KE_WAN_ADDR_STATIC 1u
#define KE_WAN_ADDR_DHCP 2u

/* The caller's IP host settings.  Each settable value has a presence word
 * beside it: nonzero means the value is to be applied. */
typedef struct {
    uint16_t us_ip_options;     /* bit 0: DHCP; in, and out of get */
    uint16_t us_ip_options_set;
    uint32_t ui_vlan_id;
    uint32_t ui_vlan_id_set;
    uint8_t uc_priority;        /* 802.1p; 15 means none */
    uint16_t us_priority_set;
    uint32_t ui_netmask;        /* in, and out of get (in use) */
    uint32_t ui_netmask_set;
    uint32_t ui_gateway;        /* in, and out of get (in use) */
    uint32_t ui_gateway_set;
    uint32_t ui_ipaddr;         /* in, and out of get (in use) */
    uint32_t ui_dns1;           /* out of get: first DNS server in use */
    uint32_t ui_dns2;           /* out of get: second DNS server in use */
    uint32_t ui_ipaddr_set;
    char ac_dns[256];           /* DNS servers, comma separated; in and out */
    uint32_t ui_dns_set;
    uint8_t auc_mac[6];         /* out of get */
    uint16_t us_service;        /* 0 voice, 1 TR-069, other internet */
} st_voip_wan_attr;
KE_ASSERT_SIZE(st_voip_wan_attr, 316);
KE_ASSERT_OFFSET(st_voip_wan_attr, us_ip_options_set, 2);
KE_ASSERT_OFFSET(st_voip_wan_attr, ui_vlan_id, 4);
KE_ASSERT_OFFSET(st_voip_wan_attr, ui_vlan_id_set, 8);
KE_ASSERT_OFFSET(st_voip_wan_attr, uc_priority, 12);
KE_ASSERT_OFFSET(st_voip_wan_attr, us_priority_set, 14);
KE_ASSERT_OFFSET(st_voip_wan_attr, ui_netmask, 16);
KE_ASSERT_OFFSET(st_voip_wan_attr, ui_netmask_set, 20);
KE_ASSERT_OFFSET(st_voip_wan_attr, ui_gateway, 24);
KE_ASSERT_OFFSET(st_voip_wan_attr, ui_gateway_set, 28);
KE_ASSERT_OFFSET(st_voip_wan_attr, ui_ipaddr, 32);
KE_ASSERT_OFFSET(st_voip_wan_attr, ui_dns1, 36);
KE_ASSERT_OFFSET(st_voip_wan_attr, ui_dns2, 40);
KE_ASSERT_OFFSET(st_voip_wan_attr, ui_ipaddr_set, 44);
KE_ASSERT_OFFSET(st_voip_wan_attr, ac_dns, 48);
KE_ASSERT_OFFSET(st_voip_wan_attr, ui_dns_set, 304);
KE_ASSERT_OFFSET(st_voip_wan_attr, auc_mac, 308);
KE_ASSERT_OFFSET(st_voip_wan_attr, us_service, 314);

/* WAN connection record, configuration table 448 (IGD_CO_WAN_CONN_TAB).
 * Only the named fields are used here; every other byte is zero in a
 * record the library builds.  The creation marks are set to 1 in a
 * record built to create a connection. */
typedef struct {
    uint32_t ui_head;
    uint8_t auc_key[3];          /* the connection's key bytes */
    uint8_t uc_create_mark_1;
    uint8_t uc_rsv_8;
    uint8_t uc_vlan_mode;        /* 2 when a VLAN ID is set */
    uint8_t uc_priority;         /* 802.1p priority, 0 when none */
    uint8_t auc_rsv_11[5];
    uint32_t ui_vlan_id;
    uint8_t uc_create_mark_2;
    uint8_t uc_create_mark_3;
    uint8_t uc_addr_mode;        /* KE_WAN_ADDR_* */
    uint8_t uc_rsv_23;
    uint32_t ui_service;         /* KE_WAN_SERVICE_* */
    uint8_t auc_rsv_28[64];
    char ac_name[64];            /* connection name */
    uint8_t auc_rsv_156[220];
    uint8_t auc_netmask[4];
    uint8_t auc_gateway[4];
    uint8_t auc_ipaddr[4];
    uint32_t ui_mtu;             /* 1492 in a record built for creation */
    uint8_t uc_create_mark_4;
    uint8_t auc_rsv_393[2];
    uint8_t uc_priority_enable;  /* 1 when uc_priority is in force */
    char ac_dns[256];            /* DNS servers, comma separated */
    uint8_t auc_mac[6];          /* the connection's MAC address */
    uint8_t auc_rsv_658[203];
    uint8_t uc_create_mark_5;
    uint8_t auc_rsv_862[1806];
    uint32_t ui_mask1;           /* field masks; all ones select every field */
    uint32_t ui_mask2;
    uint8_t auc_rsv_2676[4];
} st_wan_conn;
KE_ASSERT_SIZE(st_wan_conn, 2680);
KE_ASSERT_OFFSET(st_wan_conn, auc_key, 4);
KE_ASSERT_OFFSET(st_wan_conn, uc_create_mark_1, 7);
KE_ASSERT_OFFSET(st_wan_conn, uc_vlan_mode, 9);
KE_ASSERT_OFFSET(st_wan_conn, uc_priority, 10);
KE_ASSERT_OFFSET(st_wan_conn, ui_vlan_id, 16);
KE_ASSERT_OFFSET(st_wan_conn, uc_create_mark_2, 20);
KE_ASSERT_OFFSET(st_wan_conn, uc_create_mark_3, 21);
KE_ASSERT_OFFSET(st_wan_conn, uc_addr_mode, 22);
KE_ASSERT_OFFSET(st_wan_conn, ui_service, 24);
KE_ASSERT_OFFSET(st_wan_conn, ac_name, 92);
KE_ASSERT_OFFSET(st_wan_conn, auc_netmask, 376);
KE_ASSERT_OFFSET(st_wan_conn, auc_gateway, 380);
KE_ASSERT_OFFSET(st_wan_conn, auc_ipaddr, 384);
KE_ASSERT_OFFSET(st_wan_conn, ui_mtu, 388);
KE_ASSERT_OFFSET(st_wan_conn, uc_create_mark_4, 392);
KE_ASSERT_OFFSET(st_wan_conn, uc_priority_enable, 395);
KE_ASSERT_OFFSET(st_wan_conn, ac_dns, 396);
KE_ASSERT_OFFSET(st_wan_conn, auc_mac, 652);
KE_ASSERT_OFFSET(st_wan_conn, uc_create_mark_5, 861);
KE_ASSERT_OFFSET(st_wan_conn, ui_mask1, 2668);
KE_ASSERT_OFFSET(st_wan_conn, ui_mask2, 2672);

/* Current state of a WAN connection, table 449 (IGD_CO_WAN_CONN_STATE_TAB),
 * 559 bytes, every field a byte or text. */
typedef struct {
    uint8_t auc_head[4];
    uint8_t uc_key;              /* key byte 0 of the connection */
    uint8_t auc_rsv_5[3];
    char ac_name[64];            /* connection name */
    uint8_t auc_rsv_72[36];
    char ac_ipaddr[16];          /* dotted texts of the values in use */
    char ac_netmask[16];
    char ac_gateway[16];
    char ac_dns1[16];
    char ac_dns2[16];
    uint8_t auc_rsv_188[367];
    uint8_t auc_mask[4];         /* little-endian; bits 0 to 29 used */
} st_wan_conn_state;
KE_ASSERT_SIZE(st_wan_conn_state, 559);
KE_ASSERT_OFFSET(st_wan_conn_state, uc_key, 4);
KE_ASSERT_OFFSET(st_wan_conn_state, ac_name, 8);
KE_ASSERT_OFFSET(st_wan_conn_state, ac_ipaddr, 108);
KE_ASSERT_OFFSET(st_wan_conn_state, ac_netmask, 124);
KE_ASSERT_OFFSET(st_wan_conn_state, ac_gateway, 140);
KE_ASSERT_OFFSET(st_wan_conn_state, ac_dns1, 156);
KE_ASSERT_OFFSET(st_wan_conn_state, ac_dns2, 172);
KE_ASSERT_OFFSET(st_wan_conn_state, auc_mask, 555);

/* One entry of the WAN connection list, table 458
 * (IGD_CO_WAN_CONN_LIST_TAB), read whole. */
typedef struct {
    uint8_t auc_head[4];
    uint8_t auc_key[3];          /* the connection's key bytes */
    uint8_t auc_rsv_7[3];
    uint8_t uc_service;          /* KE_WAN_SERVICE_* bits, several may be set */
    uint8_t auc_rsv_11[5];
    char ac_name[64];            /* connection name */
    uint8_t auc_rsv_80[68];
} st_wan_conn_list_entry;
KE_ASSERT_SIZE(st_wan_conn_list_entry, 148);
KE_ASSERT_OFFSET(st_wan_conn_list_entry, auc_key, 4);
KE_ASSERT_OFFSET(st_wan_conn_list_entry, uc_service, 10);
KE_ASSERT_OFFSET(st_wan_conn_list_entry, ac_name, 16);

/* ---- uci toolkit ---------------------------------------------------- */

/* Reads one uci value ("network.pon_1", "network.@device[0].name") into
 * value (at most size - 1 characters of the first line, without its line
 * feed).  0 when a value was read; -1 otherwise, and, without running
 * anything, for a text longer than 223 characters or holding anything but
 * letters, digits, blanks and . _ @ [ ] -. */
KE_API int omci_uci_get(const char *name, char *value, int size);

/* Adds an anonymous section ("network device") and reads its name into
 * name.  0 when a name made of letters, digits and '_' was read; -1
 * otherwise, and for a text refused as by omci_uci_get. */
KE_API int omci_uci_add(const char *config_type, char *name, int size);

/* The four address bytes as dotted text (text of at least 16 bytes).
 * 0, or 1 when a pointer is null. */
KE_API uint32_t omci_iptochar(const uint8_t *addr, char *text, uint32_t size);

/* Dotted text to the address word (bytes in network order); 0 for a null
 * or empty text, all ones for a malformed one. */
KE_API uint32_t __omci_chartoip(const char *text);

/* Adds offset to a MAC held as six words of one byte value each, most
 * significant first; the carry wraps within 48 bits. */
KE_API void mac_increase_with_offset(uint32_t *mac, uint32_t offset);

/* Number of WAN interface slots (0 to WAN_IF_MAX) that uci knows.
 * 0, or 0x70000000 for a null pointer. */
KE_API uint32_t igdCmConfGetEntryNumByUci(uint32_t *count);

/* ---- WAN interface creation ------------------------------------------ */

/* Creates the WAN interface of conn in the first free slot: VLAN device,
 * interface, firewall zone, IGMP proxy binding, commit and a delayed
 * reload of the services.  Always 0, also when it refuses (no free slot,
 * VLAN already used, static mode without address or mask) and for a null
 * conn (nothing run).  Of the DNS text (split at commas, empty entries
 * skipped) only dotted IPv4 addresses ("a.b.c.d", four numbers 0 to 255
 * and nothing else) reach the shell; any other entry is skipped, traced
 * with the log gate open as "DNS server [entry] is not an IPv4 address,
 * skipped", and the creation goes on. */
KE_API uint32_t igdCmConfAddByUci(const st_wan_conn *conn);

/* ---- VoIP WAN connection ---------------------------------------------- */

/* Applies the values whose presence word is set to the connection of the
 * service, or creates it when there is none and a VLAN ID is given.
 * 0; 1 a configuration-manager call failed; 0x70000000 no memory (and a
 * null attr). */
KE_API uint32_t ke_omci_tapi_voip_wan_set(const st_voip_wan_attr *attr);

/* Reads the connection of attr->us_service (0 voice, other TR-069): its
 * DHCP bit, addresses in use, DNS text and MAC.  0; 1 a read failed;
 * 0x70000000 no such connection (and a null attr); 0x7000001b no memory. */
KE_API uint32_t ke_omci_tapi_voip_wan_get(st_voip_wan_attr *attr);

/* Deletes the connection of the service (0 voice, other TR-069) from the
 * configuration manager.  0 (also when there is none); 1 the read or the
 * delete failed; 0x7000001b no memory. */
KE_API uint32_t ke_omci_tapi_voip_wan_del(uint32_t ui_service);

KE_EXTERN_C_END

#endif
