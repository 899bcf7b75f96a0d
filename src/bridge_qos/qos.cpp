// QoS: DSCP mapping, priority marking, rate limiters, queues and T-CONT
// policy.
#include <cstddef>
#include <cstring>

#include "ke_omci_tapi/bridge_qos.h"

#include "../frame/call.h"
#include "../frame/output.h"
#include "port_block.h"

namespace {

// The caller's rate-limiter record is only known to hold at least three
// words; the rate is its word 2, read and written bytewise.
constexpr size_t kCallerRateOffset = 2 * sizeof(uint32_t);

st_queue queue_record(ke::Site zero_site, uint32_t owner, uint32_t queue)
{
    st_queue rec;
    ke::fill_zero(zero_site, &rec, sizeof rec);
    rec.ui_queue_owner = owner;
    rec.ui_queue_id = queue;
    return rec;
}

}  // namespace

extern "C" {

// The caller's first word stays home: the request is the 256-byte map alone.
uint32_t ke_omci_tapi_dscp_map_set(const void *pv_dscp)
{
    st_dscp_map rec;
    ke::zero(rec);
    const uint8_t *map = ke::bytes_at(pv_dscp, offsetof(st_dscp, auc_map));
    ke::copy(KE_SITE, rec.auc_map, sizeof rec.auc_map, map, KE_DSCP_MAP_LEN);
    return ke::call(KE_SITE, "ke_ke_sml_dscp_map_set_call", rec);
}

uint32_t ke_omci_tapi_pri_marking_set(uint32_t ui_port, const void *pv_rule)
{
    return ke::send_port_block(KE_SITE, "ke_ke_sml_pri_marking_set_call", ui_port,
                               &st_pri_marking::auc_rule, pv_rule);
}

uint32_t ke_omci_tapi_pri_marking_del(uint32_t ui_port, const void *pv_rule)
{
    return ke::send_port_block(KE_SITE, "ke_ke_sml_pri_marking_del_call", ui_port,
                               &st_pri_marking::auc_rule, pv_rule);
}

// A create: only the rate goes out, the service answers with the
// identifier that the caller keeps for later reads and the release.
uint32_t ke_omci_tapi_car_set(uint32_t *pui_car_id, const void *pv_car)
{
    st_car rec;
    ke::zero(rec);
    if (pv_car != nullptr)
        std::memcpy(&rec.ui_rate, ke::bytes_at(pv_car, kCallerRateOffset), sizeof rec.ui_rate);
    if (ke::call(KE_SITE, "ke_ke_sml_car_set_call", rec) != 0)
        return 1;
    ke::store(pui_car_id, rec.ui_car_id);
    return 0;
}

uint32_t ke_omci_tapi_car_get(uint32_t ui_car_id, void *pv_car)
{
    st_car rec;
    ke::zero(rec);
    rec.ui_car_id = ui_car_id;
    if (ke::call(KE_SITE, "ke_ke_sml_car_get_call", rec) != 0)
        return 1;
    if (pv_car != nullptr)
        std::memcpy(ke::bytes_at(pv_car, kCallerRateOffset), &rec.ui_rate, sizeof rec.ui_rate);
    return 0;
}

uint32_t ke_omci_tapi_car_release(uint32_t ui_car_id)
{
    return ke::pass_word("ke_ke_sml_car_release_call", ui_car_id);
}

// The caller's block is 36 bytes; the record's field is 40, and its last 4
// bytes travel as zero both ways.
uint32_t ke_omci_tapi_queue_set(uint32_t ui_queue_owner, uint32_t ui_queue_id,
                                const void *pv_attr)
{
    st_queue rec = queue_record(KE_SITE, ui_queue_owner, ui_queue_id);
    ke::copy(KE_SITE, rec.auc_attr, sizeof rec.auc_attr, pv_attr, KE_QUEUE_ATTR_LEN);
    return ke::call(KE_SITE, "ke_ke_sml_queue_set_call", rec);
}

uint32_t ke_omci_tapi_queue_get(uint32_t ui_queue_owner, uint32_t ui_queue_id, void *pv_attr)
{
    st_queue rec = queue_record(KE_SITE, ui_queue_owner, ui_queue_id);
    if (ke::call(KE_SITE, "ke_ke_sml_queue_get_call", rec) != 0)
        return 1;
    ke::copy(KE_SITE, pv_attr, KE_QUEUE_ATTR_LEN, rec.auc_attr, KE_QUEUE_ATTR_LEN);
    return 0;
}

uint32_t ke_omci_tapi_queue_num_get(uint32_t ui_queue_owner, uint32_t *pui_num)
{
    st_queue_num rec;
    ke::zero(rec);
    rec.ui_queue_owner = ui_queue_owner;
    if (ke::call(KE_SITE, "ke_ke_sml_queue_num_get_call", rec) != 0)
        return 1;
    ke::store(pui_num, rec.ui_queue_num);
    return 0;
}

uint32_t ke_omci_tapi_tcont_policy_set(uint32_t ui_tcont, uint32_t ui_policy)
{
    st_tcont_policy rec;
    ke::zero(rec);
    rec.ui_tcont = ui_tcont;
    rec.ui_policy = ui_policy;
    return ke::call(KE_SITE, "ke_ke_sml_gpon_tcont_policy_set_call", rec);
}

}  // extern "C"
