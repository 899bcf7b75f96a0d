// GEM port mappings: which upstream traffic of a user port, selected by
// mask, VLAN and priority, goes into which GEM port and T-CONT.  A mapping
// names a GEM port that exists, and that GEM port cannot be deleted while
// a mapping uses it.
#include "sim.h"

namespace smlsim {
namespace {

using ketool::Field;
using ketool::Kind;

constexpr size_t kMapMax = 256;

constexpr std::array<Field, 7> kMapFields = {{
    {"mask", 0, 4, Kind::U32},
    {"vlan", 4, 4, Kind::U32},
    {"pri", 8, 4, Kind::U32},
    {"port", 12, 4, Kind::U32},
    {"rsv", 16, 4, Kind::U32},
    {"gemport", 20, 4, Kind::U32},
    {"tcont", 24, 4, Kind::U32},
}};
constexpr ketool::Layout kMap = ketool::make_layout("st_gem_map", sizeof(st_gem_map), kMapFields);

MapKey key_of(const st_gem_map &m) { return MapKey{m.ui_mask, m.ui_vlan, m.ui_pri, m.em_port}; }

uint32_t map_set(SimState &s, st_gem_map &m)
{
    if (s.pon.gemports.count(m.ui_gemport) == 0)
        return kNoObject;
    if (m.ui_tcont >= s.profile.tcont_capacity())
        return kBadValue;
    MapKey key = key_of(m);
    if (s.map.maps.count(key) == 0 && s.map.maps.size() >= kMapMax)
        return kFull;
    s.map.maps[key] = MapTarget{m.ui_gemport, m.ui_tcont};
    return 0;
}

uint32_t map_get(SimState &s, st_gem_map &m)
{
    auto found = s.map.maps.find(key_of(m));
    if (found == s.map.maps.end())
        return kNoObject;
    m.ui_gemport = found->second.gemport;
    m.ui_tcont = found->second.tcont;
    return 0;
}

uint32_t map_del(SimState &s, st_gem_map &m)
{
    return s.map.maps.erase(key_of(m)) == 1 ? 0 : kNoObject;
}

constexpr std::array<Procedure, 3> kRows = {{
    row<st_gem_map, map_set>("ke_ke_sml_gpon_map_set_call", &kMap),
    row<st_gem_map, map_get>("ke_ke_sml_gpon_map_get_call", &kMap),
    row<st_gem_map, map_del>("ke_ke_sml_gpon_map_del_call", &kMap),
}};

}  // namespace

bool gemport_mapped(const SimState &s, uint32_t gemport)
{
    for (const auto &m : s.map.maps)
        if (m.second.gemport == gemport)
            return true;
    return false;
}

const ProcedureList kMapProcedures = ketool::rows_of(kRows);

}  // namespace smlsim
