// Line security keys and time of day.  The line keeps the master session
// key and the multicast keys it is given, and computes AES-CMAC values
// with the master session key: the CMAC of the 148 input bytes.  The time
// of day is kept as the OLT sent it.
#include <cstring>

#include "aes_cmac.h"
#include "sim.h"

namespace smlsim {
namespace {

using ketool::Field;
using ketool::Kind;
using ketool::Layout;

constexpr uint32_t kNsecPerSec = 1000000000;
constexpr size_t kMcKeyMax = 8;

constexpr std::array<Field, 1> kMskFields = {{{"key", 0, KE_KEY_LEN, Kind::Bytes}}};
constexpr std::array<Field, 2> kCmacFields = {{
    {"input", 0, KE_AES_CMAC_IN_LEN, Kind::Bytes},
    {"cmac", KE_AES_CMAC_IN_LEN, 16, Kind::Bytes},
}};
constexpr std::array<Field, 3> kMcKeyFields = {{
    {"key_id", 0, 4, Kind::U32},
    {"key_len", 4, 4, Kind::U32},
    {"key", 8, KE_KEY_LEN, Kind::Bytes},
}};
constexpr std::array<Field, 4> kTodFields = {{
    {"superframe", 0, 4, Kind::U32},
    {"sec_upper", 4, 4, Kind::U32},
    {"sec_lower", 8, 4, Kind::U32},
    {"nsec", 12, 4, Kind::U32},
}};

constexpr Layout kMsk = ketool::make_layout("st_msk", sizeof(st_msk), kMskFields);
constexpr Layout kCmac = ketool::make_layout("st_aes_cmac", sizeof(st_aes_cmac), kCmacFields);
constexpr Layout kMcKey = ketool::make_layout("st_mckey", sizeof(st_mckey), kMcKeyFields);
constexpr Layout kTod = ketool::make_layout("st_tod", sizeof(st_tod), kTodFields);

uint32_t msk_set(SimState &s, st_msk &msk)
{
    std::memcpy(s.line.msk.data(), msk.auc_key, KE_KEY_LEN);
    s.line.has_msk = true;
    return 0;
}

// Without a master session key there is nothing to compute with.
uint32_t aes_cmac_set(SimState &s, st_aes_cmac &rec)
{
    if (!s.line.has_msk)
        return kNoObject;
    Block cmac = aes_cmac(s.line.msk, rec.auc_input, sizeof rec.auc_input);
    std::memcpy(rec.auc_cmac, cmac.data(), cmac.size());
    return 0;
}

uint32_t mckey_set(SimState &s, st_mckey &rec)
{
    if (rec.ui_key_len == 0 || rec.ui_key_len > KE_KEY_LEN)
        return kBadValue;
    if (s.line.mckeys.count(rec.ui_key_id) == 0 && s.line.mckeys.size() >= kMcKeyMax)
        return kFull;
    auto &key = s.line.mckeys[rec.ui_key_id];
    key.first = rec.ui_key_len;
    std::memcpy(key.second.data(), rec.auc_key, KE_KEY_LEN);
    return 0;
}

uint32_t mckey_del(SimState &s, st_mckey &rec)
{
    return s.line.mckeys.erase(rec.ui_key_id) == 1 ? 0 : kNoObject;
}

// Seconds are 48 bits; nanoseconds stay below one second.
uint32_t time_set(SimState &s, st_tod &tod)
{
    if (tod.ui_sec_upper > 0xffff || tod.ui_nsec >= kNsecPerSec)
        return kBadValue;
    s.line.tod = tod;
    s.line.has_tod = true;
    return 0;
}

constexpr std::array<Procedure, 5> kRows = {{
    row<st_msk, msk_set>("ke_ke_sml_xgpon_msk_set_call", &kMsk),
    row<st_aes_cmac, aes_cmac_set>("ke_ke_sml_xgpon_aes_cmac_set_call", &kCmac),
    row<st_mckey, mckey_set>("ke_ke_sml_xgpon_mckey_set_call", &kMcKey),
    row<st_mckey, mckey_del>("ke_ke_sml_xgpon_mckey_del_call", &kMcKey),
    row<st_tod, time_set>("ke_ke_sml_gpon_time_set_call", &kTod),
}};

}  // namespace

const ProcedureList kKeyProcedures = ketool::rows_of(kRows);

}  // namespace smlsim
