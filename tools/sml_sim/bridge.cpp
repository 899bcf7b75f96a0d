// The MAC bridge: per-port learning and its limit, ageing, port
// isolation, MAC filters and the learned MAC table.  Every user port has
// learned a few hosts (port p: 2 + p of them), as many as its learning
// switch and limit allow; a filter entry is keyed by its MAC address, its
// first six bytes.
#include <algorithm>
#include <cstring>

#include "sim.h"

namespace smlsim {
namespace {

using ketool::Field;
using ketool::Kind;
using ketool::Layout;

// Ageing times the bridge accepts, in seconds.
constexpr uint32_t kAgeMin = 10;
constexpr uint32_t kAgeMax = 1000000;
constexpr size_t kFiltersPerPort = 8;
constexpr uint32_t kLearnedVlan = 100;

constexpr std::array<Field, 3> kLearnFields = {{
    {"port", 0, 4, Kind::U32},
    {"learn", 4, 4, Kind::U32},
    {"learn_num", 8, 4, Kind::U32},
}};
constexpr std::array<Field, 1> kAgeFields = {{{"age", 0, 4, Kind::U32}}};
constexpr std::array<Field, 1> kIsolateFields = {{{"isolate", 0, 4, Kind::U32}}};
constexpr std::array<Field, 3> kFilterFields = {{
    {"port", 0, 4, Kind::U32},
    {"mac", 4, 6, Kind::Mac},
    {"rest", 4 + KE_MAC_LEN, KE_BR_FILTER_LEN - KE_MAC_LEN, Kind::Bytes},
}};
constexpr std::array<Field, 4> kTableFields = {{
    {"entries", 4, 4, Kind::U32},
    {"port", 8, 4, Kind::U32},
    {"mac0", 16, 6, Kind::Mac},
    {"info0", 12, 4, Kind::U32},
}};

constexpr Layout kLearn = ketool::make_layout("st_br_learn", sizeof(st_br_learn), kLearnFields);
constexpr Layout kAge = ketool::make_layout("age", 4, kAgeFields);
constexpr Layout kIsolate = ketool::make_layout("isolate", 4, kIsolateFields);
constexpr Layout kFilter = ketool::make_layout("st_br_filter", sizeof(st_br_filter), kFilterFields);
constexpr Layout kTable = ketool::make_layout("st_br_table", sizeof(st_br_table), kTableFields);

BridgePort *port_of(SimState &s, uint32_t port)
{
    return is_user_port(s, port) ? &s.bridge.ports[port] : nullptr;
}

uint32_t learn_get(SimState &s, st_br_learn &rec)
{
    BridgePort *p = port_of(s, rec.ui_port);
    if (p == nullptr)
        return kBadValue;
    rec.ui_learn = p->learn;
    rec.ui_learn_num = p->learn_num;
    return 0;
}

uint32_t learn_set(SimState &s, st_br_learn &rec)
{
    BridgePort *p = port_of(s, rec.ui_port);
    if (p == nullptr || rec.ui_learn > 1)
        return kBadValue;
    p->learn = rec.ui_learn;
    p->learn_num = rec.ui_learn_num;
    return 0;
}

uint32_t age_get(SimState &s, uint32_t &age)
{
    age = s.bridge.age;
    return 0;
}

uint32_t age_set(SimState &s, uint32_t &age)
{
    if (age < kAgeMin || age > kAgeMax)
        return kBadValue;
    s.bridge.age = age;
    return 0;
}

uint32_t port_isolate(SimState &s, uint32_t &isolate)
{
    if (isolate > 1)
        return kBadValue;
    s.bridge.isolate = isolate;
    return 0;
}

FilterEntry entry_of(const st_br_filter &rec)
{
    FilterEntry e;
    std::memcpy(e.data(), rec.auc_filter, e.size());
    return e;
}

std::vector<FilterEntry>::iterator same_mac(std::vector<FilterEntry> &filters,
                                            const FilterEntry &e)
{
    return std::find_if(filters.begin(), filters.end(), [&](const FilterEntry &f) {
        return std::memcmp(f.data(), e.data(), KE_MAC_LEN) == 0;
    });
}

uint32_t filter_set(SimState &s, st_br_filter &rec)
{
    BridgePort *p = port_of(s, rec.ui_port);
    if (p == nullptr)
        return kBadValue;
    FilterEntry e = entry_of(rec);
    auto found = same_mac(p->filters, e);
    if (found != p->filters.end())
        *found = e;
    else if (p->filters.size() >= kFiltersPerPort)
        return kFull;
    else
        p->filters.push_back(e);
    return 0;
}

// The port's first filter: the request names only the port.
uint32_t filter_get(SimState &s, st_br_filter &rec)
{
    BridgePort *p = port_of(s, rec.ui_port);
    if (p == nullptr)
        return kBadValue;
    if (p->filters.empty())
        return kNoObject;
    std::memcpy(rec.auc_filter, p->filters.front().data(), KE_BR_FILTER_LEN);
    return 0;
}

uint32_t filter_del(SimState &s, st_br_filter &rec)
{
    BridgePort *p = port_of(s, rec.ui_port);
    if (p == nullptr)
        return kBadValue;
    auto found = same_mac(p->filters, entry_of(rec));
    if (found == p->filters.end())
        return kNoObject;
    p->filters.erase(found);
    return 0;
}

uint32_t table_get(SimState &s, st_br_table &rec)
{
    BridgePort *p = port_of(s, rec.ui_port);
    if (p == nullptr)
        return kBadValue;
    uint32_t n = p->learn == 0 ? 0 : std::min({2 + rec.ui_port, p->learn_num, uint32_t{BR_TABLE_MAX}});
    std::memset(rec.ast_entry, 0, sizeof rec.ast_entry);
    rec.ui_entry_num = n;
    for (uint32_t i = 0; i < n; ++i) {
        st_br_table_entry &e = rec.ast_entry[i];
        e.ui_info = kLearnedVlan;
        const uint8_t mac[KE_MAC_LEN] = {0x02, 0x1b, 0x21, 0x00, static_cast<uint8_t>(rec.ui_port),
                                         static_cast<uint8_t>(i + 1)};
        std::memcpy(e.auc_mac, mac, sizeof mac);
    }
    return 0;
}

constexpr std::array<Procedure, 9> kRows = {{
    row<st_br_learn, learn_get>("ke_ke_sml_br_learn_get_call", &kLearn),
    row<st_br_learn, learn_set>("ke_ke_sml_br_learn_set_call", &kLearn),
    row<uint32_t, age_get>("ke_ke_sml_br_age_get_call", &kAge),
    row<uint32_t, age_set>("ke_ke_sml_br_age_set_call", &kAge),
    row<uint32_t, port_isolate>("ke_ke_sml_br_port_isolate_call", &kIsolate),
    row<st_br_filter, filter_set>("ke_ke_sml_br_filter_set_call", &kFilter),
    row<st_br_filter, filter_get>("ke_ke_sml_br_filter_get_call", &kFilter),
    row<st_br_filter, filter_del>("ke_ke_sml_br_filter_del_call", &kFilter),
    row<st_br_table, table_get>("ke_ke_sml_br_table_get_call", &kTable),
}};

}  // namespace

const ProcedureList kBridgeProcedures = ketool::rows_of(kRows);

}  // namespace smlsim
