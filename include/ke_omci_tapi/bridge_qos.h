/* Bridge and QoS: MAC learning and its limit, ageing, port isolation, MAC
 * filters and the learned MAC table; DSCP mapping, priority marking, rate
 * limiters, queues and T-CONT policy.
 *
 * Each function is a remote call to the sml service, which owns the bridge
 * and the queues; the library keeps no bridge or QoS state. */
#ifndef KE_OMCI_TAPI_BRIDGE_QOS_H
#define KE_OMCI_TAPI_BRIDGE_QOS_H

#include "types.h"

KE_EXTERN_C_BEGIN

/* ---- Bridge ----------------------------------------------------------- */

#define KE_BR_FILTER_LEN 16 /* MAC filter entry, the service's layout */
#define KE_MAC_LEN 6
#define BR_TABLE_MAX 32 /* entries in one MAC table reply */

/* A port's learning record, held by the service as a whole. */
typedef struct {
    uint32_t ui_port;
    uint32_t ui_learn;     /* MAC address learning enable */
    uint32_t ui_learn_num; /* limit on the addresses learned on the port */
} st_br_learn;
KE_ASSERT_SIZE(st_br_learn, 12);
KE_ASSERT_OFFSET(st_br_learn, ui_learn, 4);
KE_ASSERT_OFFSET(st_br_learn, ui_learn_num, 8);

typedef struct {
    uint32_t ui_port;
    uint8_t auc_filter[KE_BR_FILTER_LEN];
} st_br_filter;
KE_ASSERT_SIZE(st_br_filter, 20);
KE_ASSERT_OFFSET(st_br_filter, auc_filter, 4);

/* One learned address as the service reports it. */
typedef struct {
    uint32_t ui_info; /* the word that accompanies the address */
    uint8_t auc_mac[KE_MAC_LEN];
    uint8_t auc_rsv[6]; /* not read */
} st_br_table_entry;
KE_ASSERT_SIZE(st_br_table_entry, 16);
KE_ASSERT_OFFSET(st_br_table_entry, auc_mac, 4);

typedef struct {
    uint32_t ui_rsv;       /* zero */
    uint32_t ui_entry_num; /* out: valid entries */
    uint32_t ui_port;      /* in */
    st_br_table_entry ast_entry[BR_TABLE_MAX];
} st_br_table;
KE_ASSERT_SIZE(st_br_table, 524);
KE_ASSERT_OFFSET(st_br_table, ui_entry_num, 4);
KE_ASSERT_OFFSET(st_br_table, ui_port, 8);
KE_ASSERT_OFFSET(st_br_table, ast_entry, 12);

/* One learned address as the caller receives it. */
typedef struct {
    uint8_t auc_mac[KE_MAC_LEN];
    uint8_t auc_rsv[2]; /* never written */
    uint32_t ui_info;
} st_br_mac;
KE_ASSERT_SIZE(st_br_mac, 12);
KE_ASSERT_OFFSET(st_br_mac, ui_info, 8);

/* The setters change one field of the port's learning record (read,
 * change, write back); no write follows a failed read. */

/* Sets the port's learning enable.  0, or 1 traced. */
KE_API uint32_t ke_omci_tapi_br_learn_set(uint32_t ui_port, uint32_t ui_learn);
/* Sets the port's learning limit; on an HGU (product type of gst_sysinfo
 * as it stands) 0 without any call.  0, or 1 traced. */
KE_API uint32_t ke_omci_tapi_br_num_set(uint32_t ui_port, uint32_t ui_learn_num);

/* The port's learning enable into *pui_learn.  0, or 1 traced. */
KE_API uint32_t ke_omci_tapi_br_learn_get(uint32_t ui_port, uint32_t *pui_learn);

/* Sets the ageing time.  Remote status. */
KE_API uint32_t ke_omci_tapi_br_age_set(uint32_t ui_age);
/* Ageing time, read into *pui_age in place.  Remote status. */
KE_API uint32_t ke_omci_tapi_br_age_get(uint32_t *pui_age);
/* Sends the bridging/isolation word *pui_enable unchanged; it holds the
 * reply afterwards.  Remote status. */
KE_API uint32_t ke_omci_tapi_br_enable(uint32_t *pui_enable);

/* Sets a KE_BR_FILTER_LEN-byte filter entry of the port, copied unchanged.
 * 0, or 1 traced. */
KE_API uint32_t ke_omci_tapi_br_filter_set(uint32_t ui_port, const void *pv_filter);
/* Reads the port's filter entry into pv_filter, written only on success.
 * 0, or 1 traced. */
KE_API uint32_t ke_omci_tapi_br_filter_get(uint32_t ui_port, void *pv_filter);
/* Deletes the port's filter entry pv_filter.  0, or 1 traced. */
KE_API uint32_t ke_omci_tapi_br_filter_del(uint32_t ui_port, const void *pv_filter);

/* The port's learned addresses.  *pui_num holds the capacity of pst_mac
 * on the way in and the entries written on the way out (at most
 * BR_TABLE_MAX).  Always 0: a failed read is an empty table. */
KE_API uint32_t ke_omci_tapi_br_table_get(uint32_t ui_port, uint32_t *pui_num,
                                          st_br_mac *pst_mac);

/* ---- QoS -------------------------------------------------------------- */

#define KE_DSCP_MAP_LEN 256
#define KE_PRI_RULE_LEN 16
#define KE_QUEUE_ATTR_LEN 36

/* The caller's DSCP record; only the map is sent. */
typedef struct {
    uint32_t ui_head; /* not sent */
    uint8_t auc_map[KE_DSCP_MAP_LEN];
} st_dscp;
KE_ASSERT_SIZE(st_dscp, 260);
KE_ASSERT_OFFSET(st_dscp, auc_map, 4);

typedef struct {
    uint8_t auc_map[KE_DSCP_MAP_LEN];
} st_dscp_map;
KE_ASSERT_SIZE(st_dscp_map, 256);

typedef struct {
    uint32_t ui_port;
    uint8_t auc_rule[KE_PRI_RULE_LEN];
} st_pri_marking;
KE_ASSERT_SIZE(st_pri_marking, 20);
KE_ASSERT_OFFSET(st_pri_marking, auc_rule, 4);

/* Rate limiter (CAR).  The caller's record has at least three words; its
 * word 2 is the rate. */
typedef struct {
    uint32_t ui_car_id; /* out on create, in on read */
    uint32_t aui_rsv1[2];
    uint32_t ui_rate; /* in on create, out on read */
    uint32_t aui_rsv2[2];
} st_car;
KE_ASSERT_SIZE(st_car, 24);
KE_ASSERT_OFFSET(st_car, ui_rate, 12);

typedef struct {
    uint32_t ui_queue_owner;
    uint32_t ui_queue_id;
    uint8_t auc_attr[KE_QUEUE_ATTR_LEN + 4]; /* last 4 bytes always zero */
} st_queue;
KE_ASSERT_SIZE(st_queue, 48);
KE_ASSERT_OFFSET(st_queue, ui_queue_id, 4);
KE_ASSERT_OFFSET(st_queue, auc_attr, 8);

typedef struct {
    uint32_t ui_queue_owner;
    uint32_t ui_queue_num; /* out */
} st_queue_num;
KE_ASSERT_SIZE(st_queue_num, 8);
KE_ASSERT_OFFSET(st_queue_num, ui_queue_num, 4);

typedef struct {
    uint32_t ui_tcont;
    uint32_t ui_policy;
    uint32_t ui_rsv; /* zero */
} st_tcont_policy;
KE_ASSERT_SIZE(st_tcont_policy, 12);
KE_ASSERT_OFFSET(st_tcont_policy, ui_policy, 4);

/* Unless noted, 0 or 1 traced. */

/* Sends the map of an st_dscp record, skipping its first word. */
KE_API uint32_t ke_omci_tapi_dscp_map_set(const void *pv_dscp);

/* Sets a KE_PRI_RULE_LEN-byte marking rule of the port, copied unchanged. */
KE_API uint32_t ke_omci_tapi_pri_marking_set(uint32_t ui_port, const void *pv_rule);
/* Deletes the port's marking rule pv_rule. */
KE_API uint32_t ke_omci_tapi_pri_marking_del(uint32_t ui_port, const void *pv_rule);

/* Creates a rate limiter with the rate in word 2 of pv_car; the service
 * allocates the identifier. */
KE_API uint32_t ke_omci_tapi_car_set(uint32_t *pui_car_id, const void *pv_car);
/* Reads a rate limiter's rate into word 2 of pv_car, nothing else. */
KE_API uint32_t ke_omci_tapi_car_get(uint32_t ui_car_id, void *pv_car);
/* Releases rate limiter ui_car_id.  Remote status, untraced. */
KE_API uint32_t ke_omci_tapi_car_release(uint32_t ui_car_id);

/* Sets a queue's KE_QUEUE_ATTR_LEN-byte attribute block, copied unchanged. */
KE_API uint32_t ke_omci_tapi_queue_set(uint32_t ui_queue_owner, uint32_t ui_queue_id,
                                       const void *pv_attr);
/* Reads a queue's attribute block into pv_attr, written only on success. */
KE_API uint32_t ke_omci_tapi_queue_get(uint32_t ui_queue_owner, uint32_t ui_queue_id,
                                       void *pv_attr);
/* Number of queues of ui_queue_owner into *pui_num. */
KE_API uint32_t ke_omci_tapi_queue_num_get(uint32_t ui_queue_owner, uint32_t *pui_num);

/* Sets T-CONT ui_tcont's scheduling policy, passed unchanged. */
KE_API uint32_t ke_omci_tapi_tcont_policy_set(uint32_t ui_tcont, uint32_t ui_policy);

KE_EXTERN_C_END

#endif
