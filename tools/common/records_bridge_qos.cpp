// Bridge and QoS: learning, filters, the learned MAC table, DSCP map,
// marking, rate limiters, queues, T-CONT policy.
#include "ke_omci_tapi/bridge_qos.h"
#include "records.h"

namespace ketool {
namespace {

constexpr std::array kBrLearn = {
    KE_FIELD(st_br_learn, ui_port, Kind::U32),
    KE_FIELD(st_br_learn, ui_learn, Kind::U32),
    KE_FIELD(st_br_learn, ui_learn_num, Kind::U32),
};
constexpr std::array kBrFilter = {
    KE_FIELD(st_br_filter, ui_port, Kind::U32),
    KE_FIELD(st_br_filter, auc_filter, Kind::Bytes),
};
constexpr std::array kBrTableEntry = {
    KE_FIELD(st_br_table_entry, ui_info, Kind::U32),
    KE_FIELD(st_br_table_entry, auc_mac, Kind::Mac),
};
constexpr Layout kBrTableEntryLayout = KE_LAYOUT(st_br_table_entry, kBrTableEntry);
constexpr std::array kBrTable = {
    KE_FIELD(st_br_table, ui_rsv, Kind::U32),
    KE_FIELD(st_br_table, ui_entry_num, Kind::U32),
    KE_FIELD(st_br_table, ui_port, Kind::U32),
    KE_RECORDS(st_br_table, ast_entry, kBrTableEntryLayout),
};
constexpr std::array kBrMac = {
    KE_FIELD(st_br_mac, auc_mac, Kind::Mac),
    KE_FIELD(st_br_mac, ui_info, Kind::U32),
};
constexpr std::array kDscp = {
    KE_FIELD(st_dscp, ui_head, Kind::U32),
    KE_FIELD(st_dscp, auc_map, Kind::Bytes),
};
constexpr std::array kDscpMap = {KE_FIELD(st_dscp_map, auc_map, Kind::Bytes)};
constexpr std::array kPriMarking = {
    KE_FIELD(st_pri_marking, ui_port, Kind::U32),
    KE_FIELD(st_pri_marking, auc_rule, Kind::Bytes),
};
constexpr std::array kCar = {
    KE_FIELD(st_car, ui_car_id, Kind::U32),
    KE_ARRAY(st_car, aui_rsv1, Kind::U32),
    KE_FIELD(st_car, ui_rate, Kind::U32),
    KE_ARRAY(st_car, aui_rsv2, Kind::U32),
};
constexpr std::array kQueue = {
    KE_FIELD(st_queue, ui_queue_owner, Kind::U32),
    KE_FIELD(st_queue, ui_queue_id, Kind::U32),
    KE_FIELD(st_queue, auc_attr, Kind::Bytes),
};
constexpr std::array kQueueNum = {
    KE_FIELD(st_queue_num, ui_queue_owner, Kind::U32),
    KE_FIELD(st_queue_num, ui_queue_num, Kind::U32),
};
constexpr std::array kTcontPolicy = {
    KE_FIELD(st_tcont_policy, ui_tcont, Kind::U32),
    KE_FIELD(st_tcont_policy, ui_policy, Kind::U32),
    KE_FIELD(st_tcont_policy, ui_rsv, Kind::U32),
};

constexpr Layout kBrLearnLayout = KE_LAYOUT(st_br_learn, kBrLearn);
constexpr Layout kBrFilterLayout = KE_LAYOUT(st_br_filter, kBrFilter);
constexpr Layout kBrTableLayout = KE_LAYOUT(st_br_table, kBrTable);
constexpr Layout kBrMacLayout = KE_LAYOUT(st_br_mac, kBrMac);
constexpr Layout kDscpLayout = KE_LAYOUT(st_dscp, kDscp);
constexpr Layout kDscpMapLayout = KE_LAYOUT(st_dscp_map, kDscpMap);
constexpr Layout kPriMarkingLayout = KE_LAYOUT(st_pri_marking, kPriMarking);
constexpr Layout kCarLayout = KE_LAYOUT(st_car, kCar);
constexpr Layout kQueueLayout = KE_LAYOUT(st_queue, kQueue);
constexpr Layout kQueueNumLayout = KE_LAYOUT(st_queue_num, kQueueNum);
constexpr Layout kTcontPolicyLayout = KE_LAYOUT(st_tcont_policy, kTcontPolicy);

constexpr std::array kLayouts = {
    &kBrLearnLayout,    &kBrFilterLayout, &kBrTableEntryLayout, &kBrTableLayout,
    &kBrMacLayout,      &kDscpLayout,     &kDscpMapLayout,      &kPriMarkingLayout,
    &kCarLayout,        &kQueueLayout,    &kQueueNumLayout,     &kTcontPolicyLayout,
};

}  // namespace

const LayoutList kBridgeQosRecords = rows_of(kLayouts);

}  // namespace ketool
