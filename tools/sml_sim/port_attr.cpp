// Ethernet port attributes, one record per user port.  A port is unlocked
// (state 0) or locked (1); its link is up while it is unlocked, and then
// it reports the mode it was configured with (auto-negotiation reports
// the mode it settles on); a port whose link is down reports mode 0.
// Mode codes: 0x00 auto, 0x01/0x02/0x03 10/100/1000 Mbit/s full duplex,
// 0x11/0x12/0x13 the same at half duplex, 0x04 auto full duplex, 0x14
// auto half duplex, 0x10/0x30/0x20 auto at 10/100/1000 Mbit/s.
//
// Type, reported mode, link and the word at 48 (the largest frame) are
// the port's own: a set that changes them is refused.
#include <cstring>

#include "sim.h"

namespace smlsim {
namespace {

using ketool::Field;
using ketool::Kind;

constexpr uint32_t kUnlocked = 0;
constexpr uint32_t kLocked = 1;
constexpr uint32_t kFrameMax = 1518;

struct ModeRow {
    uint32_t configured;
    uint32_t reported;
};
constexpr std::array<ModeRow, 12> kModes = {{
    {0x00, 0x03}, {0x01, 0x01}, {0x02, 0x02}, {0x03, 0x03}, {0x04, 0x03}, {0x10, 0x01},
    {0x11, 0x11}, {0x12, 0x12}, {0x13, 0x13}, {0x14, 0x13}, {0x20, 0x03}, {0x30, 0x02},
}};

const ModeRow *mode_of(uint32_t configured)
{
    for (const ModeRow &m : kModes)
        if (m.configured == configured)
            return &m;
    return nullptr;
}

// The words the port itself decides, from the ones that are configured.
void settle(st_port_attr &a)
{
    a.ui_link = a.ui_state == kUnlocked ? 1 : 0;
    const ModeRow *mode = mode_of(a.ui_ethmode_cfg);
    a.ui_ethmode = a.ui_link != 0 && mode != nullptr ? mode->reported : 0;
}

st_port_attr *port_of(SimState &s, uint32_t port)
{
    if (!is_user_port(s, port))
        return nullptr;
    auto found = s.port.ports.find(port);
    if (found != s.port.ports.end())
        return &found->second;
    st_port_attr &a = s.port.ports[port];
    std::memset(&a, 0, sizeof a);
    a.ui_port = port;
    a.ui_type = s.profile.port_type();
    a.ui_state = kUnlocked;
    a.ui_reserved = kFrameMax;
    settle(a);
    return &a;
}

uint32_t attr_get(SimState &s, st_port_attr &rec)
{
    st_port_attr *a = port_of(s, rec.ui_port);
    if (a == nullptr)
        return kBadValue;
    rec = *a;
    return 0;
}

uint32_t attr_set(SimState &s, st_port_attr &rec)
{
    st_port_attr *a = port_of(s, rec.ui_port);
    if (a == nullptr || rec.ui_type != a->ui_type || rec.ui_ethmode != a->ui_ethmode ||
        rec.ui_link != a->ui_link || rec.ui_reserved != a->ui_reserved)
        return kBadValue;
    if ((rec.ui_state != kUnlocked && rec.ui_state != kLocked) ||
        mode_of(rec.ui_ethmode_cfg) == nullptr)
        return kBadValue;
    *a = rec;
    settle(*a);
    return 0;
}

constexpr std::array<Field, 12> kAttrFields = {{
    {"port", 0, 4, Kind::U32},
    {"type", 4, 4, Kind::U32},
    {"state", 8, 4, Kind::U32},
    {"ethmode_cfg", 12, 4, Kind::U32},
    {"ethmode", 16, 4, Kind::U32},
    {"link", 20, 4, Kind::U32},
    {"loopback", 24, 4, Kind::U32},
    {"pause", 28, 4, Kind::U32},
    {"incar0", 32, 4, Kind::U32},
    {"incar1", 36, 4, Kind::U32},
    {"frame_max", 48, 4, Kind::U32},
    {"outcar", 52, 4, Kind::U32},
}};
constexpr ketool::Layout kAttr =
    ketool::make_layout("st_port_attr", sizeof(st_port_attr), kAttrFields);

constexpr std::array<Procedure, 2> kRows = {{
    row<st_port_attr, attr_get>("ke_ke_sml_port_attr_get_call", &kAttr),
    row<st_port_attr, attr_set>("ke_ke_sml_port_attr_set_call", &kAttr),
}};

}  // namespace

bool port_link_up(SimState &s, uint32_t port)
{
    st_port_attr *a = port_of(s, port);
    return a != nullptr && a->ui_link != 0;
}

const ProcedureList kPortProcedures = ketool::rows_of(kRows);

}  // namespace smlsim
