// System and board information: the replies the profile built.
#include <cstring>

#include "sim.h"

namespace smlsim {
namespace {

using ketool::Field;
using ketool::Kind;

// What the log shows of the two replies: the fields the library reads.
constexpr std::array<Field, 4> kSysinfoFields = {{
    {"sn", 48, 8, Kind::Bytes},
    {"mac", 66, 6, Kind::Mac},
    {"product_type", 255, 12, Kind::Text},
    {"info_b", 387, 14, Kind::Text},
}};
constexpr std::array<Field, 4> kBoardFields = {{
    {"board_0", 0, 4, Kind::U32},
    {"user_ports", 4, 4, Kind::U32},
    {"board_2", 8, 4, Kind::U32},
    {"board_3", 12, 4, Kind::U32},
}};

constexpr ketool::Layout kSysinfo = ketool::make_layout("sysinfo", kSysinfoLen, kSysinfoFields);
constexpr ketool::Layout kBoard = ketool::make_layout("board_info", kBoardInfoLen, kBoardFields);

uint32_t sysinfo_get(SimState &s, uint8_t *buf)
{
    std::memcpy(buf, s.profile.sysinfo.data(), kSysinfoLen);
    return 0;
}

uint32_t board_info_get(SimState &s, uint8_t *buf)
{
    std::memcpy(buf, s.profile.board.data(), kBoardInfoLen);
    return 0;
}

constexpr std::array<Procedure, 2> kRows = {{
    {"ke_ke_sysinfo_data_get_call", kSysinfoLen, sysinfo_get, &kSysinfo},
    {"ke_ke_board_info_get_call", kBoardInfoLen, board_info_get, &kBoard},
}};

}  // namespace

const ProcedureList kDeviceProcedures = ketool::rows_of(kRows);

}  // namespace smlsim
