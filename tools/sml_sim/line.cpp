// The line: start and stop, PON mode, registration state, alarms and the
// optical module.  Starting the line brings the ONU to operation (O5);
// stopping it returns it to the initial state, where the alarm record
// shows loss of signal and frame.  The optical module is the profile's.
#include <cstring>

#include "sim.h"

namespace smlsim {
namespace {

using ketool::Field;
using ketool::Kind;
using ketool::Layout;

// Words of the alarm record: loss of signal, loss of frame.
constexpr uint32_t kAlarmLos = 0;
constexpr uint32_t kAlarmLof = 4;

using StartParam = std::array<uint8_t, KE_PON_START_LEN>;

constexpr std::array<Field, 1> kModeFields = {{{"mode", 0, 4, Kind::U32}}};
constexpr std::array<Field, 1> kRegFields = {{{"regstate", 0, 4, Kind::U32}}};
constexpr std::array<Field, 1> kStartFields = {{{"param", 0, KE_PON_START_LEN, Kind::Bytes}}};
constexpr std::array<Field, 2> kAlarmFields = {{
    {"los", kAlarmLos, 4, Kind::U32},
    {"lof", kAlarmLof, 4, Kind::U32},
}};
constexpr std::array<Field, 5> kStaFields = {{
    {"temperature", 0, 4, Kind::U32},
    {"voltage", 4, 4, Kind::U32},
    {"bias", 8, 4, Kind::U32},
    {"tx_power", 12, 4, Kind::U32},
    {"rx_power", 16, 4, Kind::U32},
}};
constexpr std::array<Field, 5> kInfoFields = {{
    {"vendor", 0, 16, Kind::Text},
    {"part", 16, 16, Kind::Text},
    {"sn", 32, 16, Kind::Text},
    {"wavelength", 48, 4, Kind::U32},
    {"rate", 52, 4, Kind::U32},
}};

constexpr Layout kMode = ketool::make_layout("mode", 4, kModeFields);
constexpr Layout kReg = ketool::make_layout("regstate", 4, kRegFields);
constexpr Layout kStart = ketool::make_layout("pon_start", KE_PON_START_LEN, kStartFields);
constexpr Layout kAlarm = ketool::make_layout("st_alarm", sizeof(st_alarm), kAlarmFields);
constexpr Layout kSta = ketool::make_layout("st_optical_sta", sizeof(st_optical_sta), kStaFields);
constexpr Layout kInfo =
    ketool::make_layout("st_optical_info", sizeof(st_optical_info), kInfoFields);

uint32_t mode_set(SimState &s, uint32_t &mode)
{
    s.pon.pon_mode = mode;
    return 0;
}

// The parameters are the OLT's view of the line; the service keeps them
// and hands them back as it applied them.
uint32_t pon_start(SimState &s, StartParam &param)
{
    s.line.start_param = param;
    s.line.regstate = kRegOperation;
    return 0;
}

uint32_t pon_stop(SimState &s, uint8_t *)
{
    s.line.regstate = kRegInitial;
    return 0;
}

uint32_t regstate_get(SimState &s, uint32_t &state)
{
    state = s.line.regstate;
    return 0;
}

uint32_t alarm_get(SimState &s, st_alarm &alarm)
{
    std::memset(&alarm, 0, sizeof alarm);
    uint32_t down = s.line.regstate == kRegOperation ? 0 : 1;
    put_word(alarm.auc_alarm, kAlarmLos, down);
    put_word(alarm.auc_alarm, kAlarmLof, down);
    return 0;
}

uint32_t optical_sta_get(SimState &s, st_optical_sta &sta)
{
    std::memcpy(&sta, s.profile.optical.data() + kOpticalInfoLen, sizeof sta);
    return 0;
}

uint32_t optical_info_get(SimState &s, st_optical_info &info)
{
    std::memcpy(&info, s.profile.optical.data(), sizeof info);
    return 0;
}

constexpr std::array<Procedure, 7> kRows = {{
    row<uint32_t, mode_set>("ke_ke_sml_gpon_mode_set_call", &kMode),
    row<StartParam, pon_start>("ke_ke_sml_gpon_pon_start_call", &kStart),
    {"ke_ke_sml_gpon_pon_stop_call", 0, pon_stop, nullptr},
    row<uint32_t, regstate_get>("ke_ke_sml_gpon_regstate_get_call", &kReg),
    row<st_alarm, alarm_get>("ke_ke_sml_gpon_alarm_get_call", &kAlarm),
    row<st_optical_sta, optical_sta_get>("ke_ke_sml_optical_sta_get_call", &kSta),
    row<st_optical_info, optical_info_get>("ke_ke_sml_optical_info_get_call", &kInfo),
}};

}  // namespace

const ProcedureList kLineProcedures = ketool::rows_of(kRows);

}  // namespace smlsim
