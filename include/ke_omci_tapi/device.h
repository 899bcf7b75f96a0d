/* Device management: system information, serial number and LOID, reboot;
 * firmware upgrade; Ethernet port attributes. */
#ifndef KE_OMCI_TAPI_DEVICE_H
#define KE_OMCI_TAPI_DEVICE_H

#include "types.h"

KE_EXTERN_C_BEGIN

/* ui_product_type codes. */
#define KE_PRODUCT_SFU 0u
#define KE_PRODUCT_HGU 1u
#define KE_PRODUCT_SBU 2u
#define KE_PRODUCT_OTHER 15u

/* Cached system information: filled once per process by the first
 * successful ke_omci_tapi_sysinfo_get; all zero before that. */
typedef struct {
    uint8_t auc_info_a[4];
    uint8_t auc_info_b[14];
    uint8_t auc_info_c[14];
    uint8_t auc_info_d[20];
    uint32_t ui_info_e;
    uint32_t ui_product_type; /* KE_PRODUCT_* */
    uint32_t ui_user_port_num;
    uint32_t ui_board_2;
    uint32_t ui_board_3;
    uint32_t ui_board_0;
    uint8_t auc_info_f[12];
    uint32_t ui_info_g;
} st_sysinfo;
KE_ASSERT_SIZE(st_sysinfo, 92);
KE_ASSERT_OFFSET(st_sysinfo, auc_info_b, 4);
KE_ASSERT_OFFSET(st_sysinfo, auc_info_c, 18);
KE_ASSERT_OFFSET(st_sysinfo, auc_info_d, 32);
KE_ASSERT_OFFSET(st_sysinfo, ui_info_e, 52);
KE_ASSERT_OFFSET(st_sysinfo, ui_product_type, 56);
KE_ASSERT_OFFSET(st_sysinfo, ui_user_port_num, 60);
KE_ASSERT_OFFSET(st_sysinfo, ui_board_2, 64);
KE_ASSERT_OFFSET(st_sysinfo, ui_board_3, 68);
KE_ASSERT_OFFSET(st_sysinfo, ui_board_0, 72);
KE_ASSERT_OFFSET(st_sysinfo, auc_info_f, 76);
KE_ASSERT_OFFSET(st_sysinfo, ui_info_g, 88);

/* Serial number and LOID; also the request of the LOID served calls and
 * the layout of the LOID store. */
typedef struct {
    uint8_t auc_id_a[6];
    uint8_t auc_sn[8];
    uint8_t auc_loid[24];
    uint8_t auc_loid_pwd[12];
    uint8_t auc_id_b[16];
    uint8_t auc_id_c[36];
} st_sn_loid;
KE_ASSERT_SIZE(st_sn_loid, 102);
KE_ASSERT_OFFSET(st_sn_loid, auc_sn, 6);
KE_ASSERT_OFFSET(st_sn_loid, auc_loid, 14);
KE_ASSERT_OFFSET(st_sn_loid, auc_loid_pwd, 38);
KE_ASSERT_OFFSET(st_sn_loid, auc_id_b, 50);
KE_ASSERT_OFFSET(st_sn_loid, auc_id_c, 66);

/* The cache itself; readers that do not fetch first see it as it stands. */
KE_API extern st_sysinfo gst_sysinfo;

/* Copies the cached system information into *pst_info, fetching it first
 * (two remote calls) while the cache is not filled.  0, also when the copy
 * into *pst_info fails (copy line printed); 1 traced when a fetch call
 * failed, with the cache and *pst_info unchanged. */
KE_API uint32_t ke_omci_tapi_sysinfo_get(st_sysinfo *pst_info);

/* Serial number and identity fields from a fresh system-information reply,
 * LOID and LOID password from the LOID store.  0, or 1 traced when the
 * remote call failed (*pst_sn_loid untouched). */
KE_API uint32_t ke_omci_tapi_sn_loid_get(st_sn_loid *pst_sn_loid);

/* Asks the configuration manager to reboot the device (control code
 * KE_OAM_CTRL_REBOOT).  0, or 1 traced when it refused. */
#define KE_OAM_CTRL_REBOOT 0x20000001u
KE_API uint32_t ke_omci_tapi_reboot(void);

/* ---- Firmware upgrade ------------------------------------------------
 *
 * The device keeps two image sections and a boot flag held by the service.
 * A download goes to section 0 when the flag is 1 and to section 1
 * otherwise; stop sets the flag the same way (0 when it was 1, else 1),
 * so the next start loads the section just written. */

#define UPGRADE_SHARD_MAX 6144        /* the largest shard, in bytes */
#define KE_UPGRADE_INFO_LEN 24        /* the caller's information block */
#define KE_UPGRADE_SHARD_REFUSED 0x70000000u

typedef struct {
    uint32_t ui_section;      /* 0 when the boot flag is 1, otherwise 1 */
    uint32_t ui_upgrade_word; /* the start's first argument */
    uint32_t ui_info_2;       /* word 2 of the information block */
    uint8_t auc_info[KE_UPGRADE_INFO_LEN];
} st_upgrade_start;
KE_ASSERT_SIZE(st_upgrade_start, 36);
KE_ASSERT_OFFSET(st_upgrade_start, ui_upgrade_word, 4);
KE_ASSERT_OFFSET(st_upgrade_start, ui_info_2, 8);
KE_ASSERT_OFFSET(st_upgrade_start, auc_info, 12);

typedef struct {
    uint32_t ui_upgrade_word; /* saved by the last start; 0 before any */
    uint32_t ui_len;          /* image bytes in this shard */
    uint8_t auc_data[UPGRADE_SHARD_MAX]; /* the shard, the rest zero */
} st_upgrade_shard;
KE_ASSERT_SIZE(st_upgrade_shard, 6152);
KE_ASSERT_OFFSET(st_upgrade_shard, ui_len, 4);
KE_ASSERT_OFFSET(st_upgrade_shard, auc_data, 8);

/* Opens a download into the section that is not booted and saves
 * ui_upgrade_word for the shards that follow.  pv_info points at the
 * KE_UPGRADE_INFO_LEN-byte information block.  0, or 1 traced. */
KE_API uint32_t ke_omci_tapi_upgrade_start(uint32_t ui_upgrade_word, const void *pv_info);

/* Sends one shard of ui_len bytes (at most UPGRADE_SHARD_MAX) as a full
 * st_upgrade_shard.  0, or 1 traced when the remote call failed.  A longer
 * shard is refused with KE_UPGRADE_SHARD_REFUSED, without a remote call
 * and without printing. */
KE_API uint32_t ke_omci_tapi_upgrade_write(const void *pv_data, uint32_t ui_len);

/* Switches the boot flag to the other section and prints
 * "\r\n%d section will loading!!\r\n\n" with the new flag.  0, or 1 traced. */
KE_API uint32_t ke_omci_tapi_upgrade_stop(void);

/* ---- Ethernet port attributes ------------------------------------------
 *
 * The service keeps a user port's attributes in one record; getters read
 * it, setters read it, change their own words and write the whole record
 * back.  Every function returns 0, or 1 traced when a remote call failed;
 * a setter whose read fails does not write.  Codes and units are the
 * service's and pass through unchanged. */

typedef struct {
    uint32_t ui_port;        /* user port, the key */
    uint32_t ui_type;
    uint32_t ui_state;
    uint32_t ui_ethmode_cfg; /* Ethernet mode to configure */
    uint32_t ui_ethmode;     /* Ethernet mode the port reports */
    uint32_t ui_link;
    uint32_t ui_loopback;
    uint32_t ui_pause;
    uint32_t aui_incar[4];   /* ingress rate limit parameters */
    uint32_t ui_reserved;    /* the service's; sent back as read */
    uint32_t ui_outcar;      /* egress rate limit parameter */
} st_port_attr;
KE_ASSERT_SIZE(st_port_attr, 56);
KE_ASSERT_OFFSET(st_port_attr, ui_type, 4);
KE_ASSERT_OFFSET(st_port_attr, ui_state, 8);
KE_ASSERT_OFFSET(st_port_attr, ui_ethmode_cfg, 12);
KE_ASSERT_OFFSET(st_port_attr, ui_ethmode, 16);
KE_ASSERT_OFFSET(st_port_attr, ui_link, 20);
KE_ASSERT_OFFSET(st_port_attr, ui_loopback, 24);
KE_ASSERT_OFFSET(st_port_attr, ui_pause, 28);
KE_ASSERT_OFFSET(st_port_attr, aui_incar, 32);
KE_ASSERT_OFFSET(st_port_attr, ui_reserved, 48);
KE_ASSERT_OFFSET(st_port_attr, ui_outcar, 52);

/* Getters store one word of the record; a null output pointer makes the
 * call and stores nothing. */

/* The port's type (ui_type) into *pui_type. */
KE_API uint32_t ke_omci_tapi_port_type_get(uint32_t ui_port, uint32_t *pui_type);
/* The port's state (ui_state) into *pui_state. */
KE_API uint32_t ke_omci_tapi_port_state_get(uint32_t ui_port, uint32_t *pui_state);
/* The Ethernet mode the port reports (ui_ethmode) into *pui_mode. */
KE_API uint32_t ke_omci_tapi_port_ethmode_get(uint32_t ui_port, uint32_t *pui_mode);
/* The port's link state (ui_link) into *pui_link. */
KE_API uint32_t ke_omci_tapi_port_link_get(uint32_t ui_port, uint32_t *pui_link);
/* The port's loopback setting (ui_loopback) into *pui_loopback. */
KE_API uint32_t ke_omci_tapi_port_loopback_get(uint32_t ui_port, uint32_t *pui_loopback);
/* The port's pause setting (ui_pause) into *pui_pause. */
KE_API uint32_t ke_omci_tapi_port_pause_get(uint32_t ui_port, uint32_t *pui_pause);

/* Sets the port's state (ui_state). */
KE_API uint32_t ke_omci_tapi_port_state_set(uint32_t ui_port, uint32_t ui_state);
/* Sets the Ethernet mode to configure (ui_ethmode_cfg, not ui_ethmode). */
KE_API uint32_t ke_omci_tapi_port_ethmode_set(uint32_t ui_port, uint32_t ui_mode);
/* Sets the port's loopback (ui_loopback). */
KE_API uint32_t ke_omci_tapi_port_loopback_set(uint32_t ui_port, uint32_t ui_loopback);
/* Sets the port's pause (ui_pause). */
KE_API uint32_t ke_omci_tapi_port_pause_set(uint32_t ui_port, uint32_t ui_pause);
/* Sets the four ingress rate-limit words (aui_incar), in argument order. */
KE_API uint32_t ke_omci_tapi_port_incar_set(uint32_t ui_port, uint32_t ui_incar0,
                                            uint32_t ui_incar1, uint32_t ui_incar2,
                                            uint32_t ui_incar3);
/* Sets the egress rate-limit word (ui_outcar). */
KE_API uint32_t ke_omci_tapi_port_outcar_set(uint32_t ui_port, uint32_t ui_outcar);

/* MTU set: arguments ignored, no remote call, always 0. */
KE_API uint32_t ke_omci_tapi_port_mtu_set(uint32_t ui_port, uint32_t ui_mtu);
/* MTU get: arguments ignored, nothing written, always 0. */
KE_API uint32_t ke_omci_tapi_port_mtu_get(uint32_t ui_port, uint32_t *pui_mtu);

/* Managed-entity instance identifier of a user port.  The type of port 0
 * decides for every port: type 0 gives port + 1, types 1 and 2 give
 * port + 0x101.  0; 1 traced when the type read failed; KE_PORT_TYPE_UNKNOWN
 * for any other type, with *pus_instid untouched. */
#define KE_PORT_TYPE_UNKNOWN 0x70000000u
KE_API uint32_t ke_omci_tapi_port_pptpinstid_get(uint32_t ui_port, uint16_t *pus_instid);

KE_EXTERN_C_END

#endif
