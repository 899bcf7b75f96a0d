// The floors of the per-call benchmark: for each measured function, only
// the work no implementation can skip: zero-fill the same record, copy its
// inputs in and its outputs out, and one call of the transport per remote
// call (ke_ipc_call or igdCmConfSet, which the benchmark makes answer at
// once).  They live in a shared library of their own, built with the
// library's flags, so that a floor is reached as an exported function is
// (through the PLT), reaches the platform as the library does, and is
// compiled as the library is.
#ifndef KE_BENCH_FLOORS_H
#define KE_BENCH_FLOORS_H

#include <cstdint>

#include "ke_omci_tapi/bridge_qos.h"
#include "ke_omci_tapi/stat.h"
#include "ke_omci_tapi/voip.h"

#define KE_FLOOR extern "C" __attribute__((visibility("default")))

KE_FLOOR uint32_t floor_get(uint32_t port, uint32_t *out);
KE_FLOOR uint32_t floor_pass_through(uint32_t *word);
// Two remote calls: the read and the write back.
KE_FLOOR uint32_t floor_read_modify_write(uint32_t port, uint32_t learn);
KE_FLOOR uint32_t floor_table(uint32_t port, uint32_t *num, st_br_mac *out);
KE_FLOOR uint32_t floor_eth_stat(uint32_t port, st_eth_stat *out);
KE_FLOOR uint32_t floor_shard(uint32_t word, const void *data, uint32_t len);
KE_FLOOR uint32_t floor_voip_write(const st_voip_regtime *t);

#endif
