// VoIP WAN: the uci toolkit, the WAN interface creation, the connection.
#include "functions.h"
#include "ke_omci_tapi/voip_wan.h"

namespace omcishell {
namespace {

constexpr std::array kRows = {
    // Texts longer than the 223 characters the toolkit takes, so that its
    // refusal can be tried.
    KE_SHELL_FN(omci_uci_get, "in text[256] name, out text[256] value, in count:value size"),
    KE_SHELL_FN(omci_uci_add, "in text[256] config_type, out text[64] name, in count:name size"),
    KE_SHELL_FN(omci_iptochar, "in ipv4 addr, out text[16] text, in count:text size"),
    KE_SHELL_FN(__omci_chartoip, "return ipv4 address, in text[64] text"),
    KE_SHELL_FN(mac_increase_with_offset, "inout u32[6] mac, in u32 offset"),
    KE_SHELL_FN(igdCmConfGetEntryNumByUci, "out u32 count"),
    KE_SHELL_FN(igdCmConfAddByUci, "in rec:st_wan_conn conn"),
    KE_SHELL_FN(ke_omci_tapi_voip_wan_set, "in rec:st_voip_wan_attr attr"),
    KE_SHELL_FN(ke_omci_tapi_voip_wan_get, "inout rec:st_voip_wan_attr attr"),
    KE_SHELL_FN(ke_omci_tapi_voip_wan_del, "in u32 service"),
};

}  // namespace

const FunctionList kVoipWanFunctions = ketool::rows_of(kRows);

}  // namespace omcishell
