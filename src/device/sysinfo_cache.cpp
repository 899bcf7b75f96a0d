// The system information record: fetched from the service by the first
// ke_omci_tapi_sysinfo_get of the process, then served from the cache.
#include <array>
#include <cstddef>

#include "ke_omci_tapi/device.h"
#include "platform.h"
#include "sysinfo_reply.h"

using ke::device::ByteField;

extern "C" {
st_sysinfo gst_sysinfo;
}

namespace {

// 1 until the first complete fetch; nothing sets it back, so a change of
// the device's identity data while the process runs is not seen.
uint32_t g_sysinfo_refresh = 1;

constexpr std::array<ByteField, 5> kCacheBytes = {{
    {offsetof(st_sysinfo, auc_info_a), sizeof(st_sysinfo::auc_info_a), 215},
    {offsetof(st_sysinfo, auc_info_b), sizeof(st_sysinfo::auc_info_b), 387},
    {offsetof(st_sysinfo, auc_info_c), sizeof(st_sysinfo::auc_info_c), 267},
    {offsetof(st_sysinfo, auc_info_d), sizeof(st_sysinfo::auc_info_d), 455},
    {offsetof(st_sysinfo, auc_info_f), sizeof(st_sysinfo::auc_info_f), 564},
}};

constexpr size_t kInfoEWord = 484;
constexpr size_t kInfoGWord = 684;
constexpr size_t kProductTypeText = 255;

struct ProductType {
    const char *text;
    uint32_t code;
};

// Matched without regard to case, first match wins.
constexpr std::array<ProductType, 3> kProductTypes = {{
    {"SFU", KE_PRODUCT_SFU},
    {"HGU", KE_PRODUCT_HGU},
    {"SBU", KE_PRODUCT_SBU},
}};

uint32_t product_type(const char *text)
{
    for (const ProductType &p : kProductTypes)
        if (ke_os_strcasecmp(text, p.text) == 0)
            return p.code;
    return KE_PRODUCT_OTHER;
}

}  // namespace

extern "C" uint32_t ke_omci_tapi_sysinfo_get(st_sysinfo *pst_info)
{
    if (g_sysinfo_refresh == 1) {
        ke::device::BoardReply board;
        if (ke::device::fetch(KE_SITE, ke::device::kBoardInfoGet, board) != 0)
            return 1;
        ke::device::SysinfoReply info;
        if (ke::device::fetch(KE_SITE, ke::device::kSysinfoDataGet, info) != 0)
            return 1;

        ke::device::copy_fields(KE_SITE, &gst_sysinfo, info, kCacheBytes);
        gst_sysinfo.ui_info_e = info.word_at(kInfoEWord);
        gst_sysinfo.ui_info_g = info.word_at(kInfoGWord);
        gst_sysinfo.ui_user_port_num = board.word_at(4);
        gst_sysinfo.ui_board_2 = board.word_at(8);
        gst_sysinfo.ui_board_3 = board.word_at(12);
        gst_sysinfo.ui_board_0 = board.word_at(0);
        gst_sysinfo.ui_product_type = product_type(info.text_at(kProductTypeText));
        g_sysinfo_refresh = 0;
    }
    ke::copy(KE_SITE, pst_info, sizeof *pst_info, &gst_sysinfo, sizeof gst_sysinfo);
    return 0;
}
