#include "floors.h"

#include <cstring>

#include "ke_omci_tapi/device.h"
#include "platform.h"

namespace {

// The Ethernet counters in terms of the service's counters; the mapping is
// part of the copy.
constexpr int kEthSource[KE_ETH_STAT_COUNTERS] = {
    0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 20, 14, 15, 16, 17, 18, 13, 19,
    21, 22, 23, 24, 25, 26, 27, 30, 31, 32, 33, 34, -1, 35, 36, 37, 38, 39, 40, 41, 42,
};

// The line profile record: line byte, the two times and the mask word.
constexpr uint32_t kLineProfileTable = 473;
constexpr uint32_t kLineProfileSize = 4171;

// Zero-fills rec, sets its port and calls name with it: the call's status.
template <class Record>
uint32_t fetch(const char *name, uint32_t port, Record &rec)
{
    std::memset(&rec, 0, sizeof rec);
    rec.ui_port = port;
    return ke_ipc_call(name, &rec, sizeof rec);
}

}  // namespace

uint32_t floor_get(uint32_t port, uint32_t *out)
{
    st_br_learn rec;
    if (fetch("ke_ke_sml_br_learn_get_call", port, rec) != 0)
        return 1;
    *out = rec.ui_learn;
    return 0;
}

uint32_t floor_pass_through(uint32_t *word)
{
    return ke_ipc_call("ke_ke_sml_br_age_get_call", word, sizeof *word);
}

uint32_t floor_read_modify_write(uint32_t port, uint32_t learn)
{
    st_br_learn rec;
    if (fetch("ke_ke_sml_br_learn_get_call", port, rec) != 0)
        return 1;
    rec.ui_learn = learn;
    return ke_ipc_call("ke_ke_sml_br_learn_set_call", &rec, sizeof rec) != 0 ? 1 : 0;
}

uint32_t floor_table(uint32_t port, uint32_t *num, st_br_mac *out)
{
    st_br_table rec;
    uint32_t n = 0;
    if (fetch("ke_ke_sml_br_table_get_call", port, rec) == 0) {
        n = rec.ui_entry_num < *num ? rec.ui_entry_num : *num;
        for (uint32_t i = 0; i < n; ++i) {
            std::memcpy(out[i].auc_mac, rec.ast_entry[i].auc_mac, KE_MAC_LEN);
            out[i].ui_info = rec.ast_entry[i].ui_info;
        }
    }
    *num = n;
    return 0;
}

uint32_t floor_eth_stat(uint32_t port, st_eth_stat *out)
{
    st_port_stat rec;
    if (fetch("ke_ke_sml_port_stat_get_call", port, rec) != 0)
        return 1;
    for (int i = 0; i < KE_ETH_STAT_COUNTERS; ++i)
        out->aull_counter[i] = kEthSource[i] < 0 ? 0 : rec.aull_counter[kEthSource[i]];
    return 0;
}

uint32_t floor_shard(uint32_t word, const void *data, uint32_t len)
{
    st_upgrade_shard rec;
    rec.ui_upgrade_word = word;
    rec.ui_len = len;
    std::memset(rec.auc_data, 0, sizeof rec.auc_data);
    std::memcpy(rec.auc_data, data, len);
    return ke_ipc_call("ke_ke_upgrade_image_sharding_write_call", &rec, sizeof rec) != 0 ? 1 : 0;
}

uint32_t floor_voip_write(const st_voip_regtime *t)
{
    uint8_t rec[kLineProfileSize];
    std::memset(rec, 0, sizeof rec);
    rec[4] = static_cast<uint8_t>(t->ui_line);
    uint32_t exp = t->us_reg_exp_time, head = t->us_rereg_head_start_time, mask = 0x60;
    std::memcpy(rec + 13, &exp, 4);
    std::memcpy(rec + 17, &head, 4);
    std::memcpy(rec + kLineProfileSize - 4, &mask, 4);
    return igdCmConfSet(kLineProfileTable, rec, sizeof rec) != 0 ? 1 : 0;
}
