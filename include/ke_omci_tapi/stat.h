/* Statistics: PON and XG-PON line counters, Ethernet and bridge-port
 * counters.
 *
 * Each read is one remote call to the sml service, which keeps the
 * counters; the library moves them by position and never clears them.
 * 64-bit counters sit on 8-byte boundaries on every target. */
#ifndef KE_OMCI_TAPI_STAT_H
#define KE_OMCI_TAPI_STAT_H

#include "types.h"

KE_EXTERN_C_BEGIN

/* ---- PON line counters ------------------------------------------------ */

typedef struct {
    uint32_t aui_counter[5];
} st_fec_stat;
KE_ASSERT_SIZE(st_fec_stat, 20);

/* GEM port counters; the caller's record has the same layout and receives
 * the two 64-bit counters as big-endian byte strings. */
typedef struct {
    uint32_t ui_gemport; /* in; never written back */
    uint32_t ui_counter_1;
    uint32_t ui_counter_2;
    uint32_t ui_align; /* never written */
    uint64_t ull_counter_1 KE_ALIGNED(8);
    uint64_t ull_counter_2;
    uint32_t ui_counter_3;
    uint32_t ui_end; /* never written */
} st_gemport_stat;
KE_ASSERT_SIZE(st_gemport_stat, 40);
KE_ASSERT_ALIGN(st_gemport_stat, 8);
KE_ASSERT_OFFSET(st_gemport_stat, ui_counter_1, 4);
KE_ASSERT_OFFSET(st_gemport_stat, ui_counter_2, 8);
KE_ASSERT_OFFSET(st_gemport_stat, ull_counter_1, 16);
KE_ASSERT_OFFSET(st_gemport_stat, ull_counter_2, 24);
KE_ASSERT_OFFSET(st_gemport_stat, ui_counter_3, 32);
KE_ASSERT_OFFSET(st_gemport_stat, ui_end, 36);

#define KE_XGPON_TC_WORDS 8
#define KE_XGPON_DOWNMNG_WORDS 14
#define KE_XGPON_UPMNG_WORDS 6

typedef struct {
    uint32_t aui_counter[KE_XGPON_TC_WORDS];
} st_xgpon_tc_stat;
KE_ASSERT_SIZE(st_xgpon_tc_stat, 32);

typedef struct {
    uint32_t aui_counter[KE_XGPON_DOWNMNG_WORDS];
} st_xgpon_downmng_stat;
KE_ASSERT_SIZE(st_xgpon_downmng_stat, 56);

typedef struct {
    uint32_t aui_counter[KE_XGPON_UPMNG_WORDS];
} st_xgpon_upmng_stat;
KE_ASSERT_SIZE(st_xgpon_upmng_stat, 24);

/* Every read: 0, or 1 traced with the caller's memory untouched. */

/* 20 bytes of FEC counters into pv_stat.  0, or 1 traced. */
KE_API uint32_t ke_omci_tapi_stat_fec_get(void *pv_stat);

/* GEM port ui_gemport's counters: writes offsets 4, 8 and 32 as they come
 * and the 64-bit counters at 16 and 24 byte-reversed; offsets 0, 12 and
 * 36 are left alone.  0, or 1 traced. */
KE_API uint32_t ke_omci_tapi_stat_gemport_get(uint32_t ui_gemport, st_gemport_stat *pst_stat);

/* The 8 XG-PON TC counter words into pui_counter.  0, or 1 traced. */
KE_API uint32_t ke_omci_tapi_stat_tc_get(uint32_t *pui_counter);
/* The 14 downstream management counter words.  0, or 1 traced. */
KE_API uint32_t ke_omci_tapi_stat_downmng_get(uint32_t *pui_counter);
/* The 6 upstream management counter words.  0, or 1 traced. */
KE_API uint32_t ke_omci_tapi_stat_upmng_get(uint32_t *pui_counter);

/* GAL Ethernet: the sum of XG-PON TC words 6 and 7, modulo 2^32.  0, or 1
 * traced. */
KE_API uint32_t ke_omci_tapi_stat_galeth_get(uint32_t *pui_counter);

/* ---- Ethernet and bridge-port counters -------------------------------- */

#define KE_PORT_STAT_COUNTERS 46
#define KE_ETH_STAT_COUNTERS 43
#define KE_BRPORT_STAT_WORDS 5

/* A port's counters as the service keeps them. */
typedef struct {
    uint32_t ui_port;
    uint32_t ui_align; /* zero */
    uint64_t aull_counter[KE_PORT_STAT_COUNTERS] KE_ALIGNED(8);
} st_port_stat;
KE_ASSERT_SIZE(st_port_stat, 376);
KE_ASSERT_ALIGN(st_port_stat, 8);
KE_ASSERT_OFFSET(st_port_stat, aull_counter, 8);

typedef struct {
    uint64_t aull_counter[KE_ETH_STAT_COUNTERS] KE_ALIGNED(8);
} st_eth_stat;
KE_ASSERT_SIZE(st_eth_stat, 344);
KE_ASSERT_ALIGN(st_eth_stat, 8);

typedef struct {
    uint32_t aui_counter[KE_BRPORT_STAT_WORDS];
} st_brport_stat;
KE_ASSERT_SIZE(st_brport_stat, 20);

/* The port's counters rearranged into the Ethernet record.  0, or 1 traced. */
KE_API uint32_t ke_omci_tapi_stat_eth_get(uint32_t ui_port, st_eth_stat *pst_stat);

/* Bridge-port counters derived from the same read.  0, or 1 traced. */
KE_API uint32_t ke_omci_tapi_stat_brport_get(uint32_t ui_port, st_brport_stat *pst_stat);

/* Ethernet counter clear: no action (counters are never reset), always 0. */
KE_API uint32_t ke_omci_tapi_stat_eth_clr(KE_ANY_ARGS);
/* Bridge counter read: no action, always 0. */
KE_API uint32_t ke_omci_tapi_stat_bridge_get(KE_ANY_ARGS);

KE_EXTERN_C_END

#endif
