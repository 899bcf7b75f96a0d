// Bridge and QoS.
#include "functions.h"
#include "ke_omci_tapi/bridge_qos.h"

namespace omcishell {
namespace {

constexpr std::array kRows = {
    KE_SHELL_FN(ke_omci_tapi_br_learn_set, "in u32 port, in u32 learn"),
    KE_SHELL_FN(ke_omci_tapi_br_num_set, "in u32 port, in u32 learn_num"),
    KE_SHELL_FN(ke_omci_tapi_br_learn_get, "in u32 port, out u32 learn"),
    KE_SHELL_FN(ke_omci_tapi_br_age_set, "in u32 age"),
    KE_SHELL_FN(ke_omci_tapi_br_age_get, "inout u32 age"),
    KE_SHELL_FN(ke_omci_tapi_br_enable, "inout u32 enable"),
    KE_SHELL_FN(ke_omci_tapi_br_filter_set, "in u32 port, in bytes[16] filter"),
    KE_SHELL_FN(ke_omci_tapi_br_filter_get, "in u32 port, out bytes[16] filter"),
    KE_SHELL_FN(ke_omci_tapi_br_filter_del, "in u32 port, in bytes[16] filter"),
    KE_SHELL_FN(ke_omci_tapi_br_table_get,
                "in u32 port, inout count:macs num, out rec:st_br_mac[32] macs"),
    KE_SHELL_FN(ke_omci_tapi_dscp_map_set, "in rec:st_dscp dscp"),
    KE_SHELL_FN(ke_omci_tapi_pri_marking_set, "in u32 port, in bytes[16] rule"),
    KE_SHELL_FN(ke_omci_tapi_pri_marking_del, "in u32 port, in bytes[16] rule"),
    // The caller's rate-limiter record: three words, the rate in word 2.
    KE_SHELL_FN(ke_omci_tapi_car_set, "out u32 car_id, in u32[3] car"),
    KE_SHELL_FN(ke_omci_tapi_car_get, "in u32 car_id, inout u32[3] car"),
    KE_SHELL_FN(ke_omci_tapi_car_release, "in u32 car_id"),
    KE_SHELL_FN(ke_omci_tapi_queue_set, "in u32 owner, in u32 queue_id, in bytes[36] attr"),
    KE_SHELL_FN(ke_omci_tapi_queue_get, "in u32 owner, in u32 queue_id, out bytes[36] attr"),
    KE_SHELL_FN(ke_omci_tapi_queue_num_get, "in u32 owner, out u32 num"),
    KE_SHELL_FN(ke_omci_tapi_tcont_policy_set, "in u32 tcont, in u32 policy"),
};

}  // namespace

const FunctionList kBridgeQosFunctions = ketool::rows_of(kRows);

}  // namespace omcishell
