// Firmware upgrade: a download goes, shard by shard, into the image
// section that is not booted; stop then points the boot flag at it.
#include <cstring>

#include "call.h"
#include "ke_omci_tapi/device.h"
#include "platform.h"

namespace {

constexpr const char *kFlagGet = "ke_ke_upgrade_flag_get_call";
constexpr const char *kFlagSet = "ke_ke_upgrade_flag_set_call";
constexpr const char *kShardingStart = "ke_ke_upgrade_sharding_start_call";
constexpr const char *kShardWrite = "ke_ke_upgrade_image_sharding_write_call";

// Sent with every shard; set by every start, 0 before the first.
uint32_t g_upgrade_word;

// Start and stop agree on this, so stop boots exactly what start wrote
// as long as the flag does not change in between.
constexpr uint32_t other_section(uint32_t boot_flag) { return boot_flag == 1 ? 0 : 1; }

// Word 2 (bytes 8 to 11) of the caller's information block; a missing
// block reads as 0 and its copy reports it.
uint32_t info_word_2(const void *info)
{
    uint32_t w = 0;
    if (info != nullptr)
        std::memcpy(&w, static_cast<const uint8_t *>(info) + 8, sizeof w);
    return w;
}

}  // namespace

extern "C" {

uint32_t ke_omci_tapi_upgrade_start(uint32_t ui_upgrade_word, const void *pv_info)
{
    uint32_t flag = 0;
    if (ke::call(KE_SITE, kFlagGet, flag) != 0)
        return 1;

    st_upgrade_start req;
    ke::zero(req);
    req.ui_section = other_section(flag);
    req.ui_upgrade_word = ui_upgrade_word;
    req.ui_info_2 = info_word_2(pv_info);
    ke::copy(KE_SITE, req.auc_info, sizeof req.auc_info, pv_info, KE_UPGRADE_INFO_LEN);
    // Saved whatever the start call answers: the shards carry it.
    g_upgrade_word = ui_upgrade_word;
    return ke::call(KE_SITE, kShardingStart, req);
}

uint32_t ke_omci_tapi_upgrade_write(const void *pv_data, uint32_t ui_len)
{
    // The caller splits the image; a longer shard could not be copied
    // whole, and a partial one must never reach the flash.
    if (ui_len > UPGRADE_SHARD_MAX)
        return KE_UPGRADE_SHARD_REFUSED;

    st_upgrade_shard req;
    req.ui_upgrade_word = g_upgrade_word;
    req.ui_len = ui_len;
    ke::fill_zero(KE_SITE, req.auc_data, sizeof req.auc_data);
    ke::copy(KE_SITE, req.auc_data, sizeof req.auc_data, pv_data, ui_len);
    return ke::call(KE_SITE, kShardWrite, req);
}

uint32_t ke_omci_tapi_upgrade_stop(void)
{
    uint32_t flag = 0;
    if (ke::call(KE_SITE, kFlagGet, flag) != 0)
        return 1;
    flag = other_section(flag);
    if (ke::call(KE_SITE, kFlagSet, flag) != 0)
        return 1;
    // The buffer now holds what the service answered to the write.
    ke_os_printf("\r\n%d section will loading!!\r\n\n", static_cast<int>(flag));
    return 0;
}

}  // extern "C"
