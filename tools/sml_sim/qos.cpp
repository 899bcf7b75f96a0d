// QoS: the DSCP map, priority marking rules per port, rate limiters that
// the service numbers itself, queues and T-CONT policies.
//
// The DSCP map is 64 words, the priority (0 to 7) of each code point.
// Queue owners are the user ports (0, 1, ...) and the T-CONTs
// (kTcontOwner + index); each owner has kQueuesPerOwner queues.
#include <cstring>

#include "sim.h"

namespace smlsim {
namespace {

using ketool::Field;
using ketool::Kind;
using ketool::Layout;

constexpr uint32_t kDscpPoints = 64;
constexpr uint32_t kPriorityMax = 7;
constexpr size_t kRulesPerPort = 16;
constexpr uint32_t kCarFirst = 1;
constexpr uint32_t kCarMax = 64;  // identifiers kCarFirst .. kCarMax
constexpr uint32_t kTcontOwner = 0x8000;
constexpr uint32_t kQueuesPerOwner = 8;
constexpr uint32_t kPolicyMax = 2;  // null, strict priority, weighted round robin

constexpr std::array<Field, 1> kDscpFields = {{{"map", 0, KE_DSCP_MAP_LEN, Kind::Bytes}}};
constexpr std::array<Field, 2> kMarkingFields = {{
    {"port", 0, 4, Kind::U32},
    {"rule", 4, KE_PRI_RULE_LEN, Kind::Bytes},
}};
constexpr std::array<Field, 2> kCarFields = {{
    {"car_id", 0, 4, Kind::U32},
    {"rate", 12, 4, Kind::U32},
}};
constexpr std::array<Field, 1> kCarIdFields = {{{"car_id", 0, 4, Kind::U32}}};
constexpr std::array<Field, 3> kQueueFields = {{
    {"owner", 0, 4, Kind::U32},
    {"queue", 4, 4, Kind::U32},
    {"attr", 8, KE_QUEUE_ATTR_LEN, Kind::Bytes},
}};
constexpr std::array<Field, 2> kQueueNumFields = {{
    {"owner", 0, 4, Kind::U32},
    {"queues", 4, 4, Kind::U32},
}};
constexpr std::array<Field, 2> kPolicyFields = {{
    {"tcont", 0, 4, Kind::U32},
    {"policy", 4, 4, Kind::U32},
}};

constexpr Layout kDscp = ketool::make_layout("st_dscp_map", sizeof(st_dscp_map), kDscpFields);
constexpr Layout kMarking =
    ketool::make_layout("st_pri_marking", sizeof(st_pri_marking), kMarkingFields);
constexpr Layout kCar = ketool::make_layout("st_car", sizeof(st_car), kCarFields);
constexpr Layout kCarId = ketool::make_layout("car_id", 4, kCarIdFields);
constexpr Layout kQueue = ketool::make_layout("st_queue", sizeof(st_queue), kQueueFields);
constexpr Layout kQueueNum =
    ketool::make_layout("st_queue_num", sizeof(st_queue_num), kQueueNumFields);
constexpr Layout kPolicy =
    ketool::make_layout("st_tcont_policy", sizeof(st_tcont_policy), kPolicyFields);

uint32_t dscp_map_set(SimState &s, st_dscp_map &map)
{
    for (uint32_t point = 0; point < kDscpPoints; ++point)
        if (word_at(map.auc_map, 4 * point) > kPriorityMax)
            return kBadValue;
    std::memcpy(s.qos.dscp.data(), map.auc_map, KE_DSCP_MAP_LEN);
    return 0;
}

MarkingRule rule_of(const st_pri_marking &rec)
{
    MarkingRule r;
    std::memcpy(r.data(), rec.auc_rule, r.size());
    return r;
}

uint32_t marking_set(SimState &s, st_pri_marking &rec)
{
    if (!is_user_port(s, rec.ui_port))
        return kBadValue;
    std::vector<MarkingRule> &rules = s.qos.marking[rec.ui_port];
    MarkingRule r = rule_of(rec);
    for (const MarkingRule &have : rules)
        if (have == r)
            return 0;
    if (rules.size() >= kRulesPerPort)
        return kFull;
    rules.push_back(r);
    return 0;
}

uint32_t marking_del(SimState &s, st_pri_marking &rec)
{
    if (!is_user_port(s, rec.ui_port))
        return kBadValue;
    std::vector<MarkingRule> &rules = s.qos.marking[rec.ui_port];
    MarkingRule r = rule_of(rec);
    for (auto it = rules.begin(); it != rules.end(); ++it)
        if (*it == r) {
            rules.erase(it);
            return 0;
        }
    return kNoObject;
}

// Creates a rate limiter under the lowest free identifier.
uint32_t car_set(SimState &s, st_car &car)
{
    if (car.ui_rate == 0)
        return kBadValue;
    for (uint32_t id = kCarFirst; id <= kCarMax; ++id)
        if (s.qos.cars.count(id) == 0) {
            s.qos.cars[id] = car.ui_rate;
            car.ui_car_id = id;
            return 0;
        }
    return kFull;
}

uint32_t car_get(SimState &s, st_car &car)
{
    auto found = s.qos.cars.find(car.ui_car_id);
    if (found == s.qos.cars.end())
        return kNoObject;
    car.ui_rate = found->second;
    return 0;
}

uint32_t car_release(SimState &s, uint32_t &id)
{
    return s.qos.cars.erase(id) == 1 ? 0 : kNoObject;
}

bool is_owner(const SimState &s, uint32_t owner)
{
    return is_user_port(s, owner) ||
           (owner >= kTcontOwner && owner - kTcontOwner < s.profile.tcont_capacity());
}

uint32_t queue_set(SimState &s, st_queue &q)
{
    if (!is_owner(s, q.ui_queue_owner) || q.ui_queue_id >= kQueuesPerOwner)
        return kBadValue;
    std::memcpy(s.qos.queues[{q.ui_queue_owner, q.ui_queue_id}].data(), q.auc_attr,
                sizeof q.auc_attr);
    return 0;
}

// A queue never set has its default attributes: all zero.
uint32_t queue_get(SimState &s, st_queue &q)
{
    if (!is_owner(s, q.ui_queue_owner) || q.ui_queue_id >= kQueuesPerOwner)
        return kBadValue;
    auto found = s.qos.queues.find({q.ui_queue_owner, q.ui_queue_id});
    std::memset(q.auc_attr, 0, sizeof q.auc_attr);
    if (found != s.qos.queues.end())
        std::memcpy(q.auc_attr, found->second.data(), sizeof q.auc_attr);
    return 0;
}

uint32_t queue_num_get(SimState &s, st_queue_num &rec)
{
    if (!is_owner(s, rec.ui_queue_owner))
        return kBadValue;
    rec.ui_queue_num = kQueuesPerOwner;
    return 0;
}

uint32_t tcont_policy_set(SimState &s, st_tcont_policy &rec)
{
    if (rec.ui_tcont >= s.profile.tcont_capacity() || rec.ui_policy > kPolicyMax)
        return kBadValue;
    s.qos.tcont_policy[rec.ui_tcont] = rec.ui_policy;
    return 0;
}

constexpr std::array<Procedure, 10> kRows = {{
    row<st_dscp_map, dscp_map_set>("ke_ke_sml_dscp_map_set_call", &kDscp),
    row<st_pri_marking, marking_set>("ke_ke_sml_pri_marking_set_call", &kMarking),
    row<st_pri_marking, marking_del>("ke_ke_sml_pri_marking_del_call", &kMarking),
    row<st_car, car_set>("ke_ke_sml_car_set_call", &kCar),
    row<st_car, car_get>("ke_ke_sml_car_get_call", &kCar),
    row<uint32_t, car_release>("ke_ke_sml_car_release_call", &kCarId),
    row<st_queue, queue_set>("ke_ke_sml_queue_set_call", &kQueue),
    row<st_queue, queue_get>("ke_ke_sml_queue_get_call", &kQueue),
    row<st_queue_num, queue_num_get>("ke_ke_sml_queue_num_get_call", &kQueueNum),
    row<st_tcont_policy, tcont_policy_set>("ke_ke_sml_gpon_tcont_policy_set_call", &kPolicy),
}};

}  // namespace

const ProcedureList kQosProcedures = ketool::rows_of(kRows);

}  // namespace smlsim
