// T-CONTs and GEM ports: objects that exist from their set until their
// delete; a get or delete of one that does not exist is refused, and so is
// the delete of a GEM port that a mapping still uses.
#include <cstring>

#include "ke_omci_tapi/pon.h"
#include "sim.h"

namespace smlsim {
namespace {

using ketool::Field;
using ketool::Kind;
using ketool::Layout;

// Alloc-IDs and GEM port IDs of an XG-PON line; G-PON uses the low part.
constexpr uint32_t kMaxAllocId = 0x3fff;
constexpr uint32_t kMaxGemport = 0xfffe;

constexpr std::array<Field, 2> kTcontFields = {{
    {"tcont", 0, 4, Kind::U32},
    {"allocid", 4, 4, Kind::U32},
}};
constexpr std::array<Field, 2> kGemportFields = {{
    {"gemport", 0, 4, Kind::U32},
    {"attr", 4, kGemAttrLen, Kind::Bytes},
}};
constexpr std::array<Field, 3> kLoopbackFields = {{
    {"word0", 0, 4, Kind::U32},
    {"word1", 4, 4, Kind::U32},
    {"word2", 8, 4, Kind::U32},
}};
constexpr std::array<Field, 1> kTcontIndex = {{{"tcont", 0, 4, Kind::U32}}};
constexpr std::array<Field, 1> kGemportId = {{{"gemport", 0, 4, Kind::U32}}};
constexpr std::array<Field, 1> kValue = {{{"value", 0, 4, Kind::U32}}};

constexpr Layout kTcont = ketool::make_layout("st_tcont", sizeof(st_tcont), kTcontFields);
constexpr Layout kGemport = ketool::make_layout("st_gemport", sizeof(st_gemport), kGemportFields);
constexpr Layout kLoopback =
    ketool::make_layout("st_gemport_loopback", sizeof(st_gemport_loopback), kLoopbackFields);
constexpr Layout kTcontWord = ketool::make_layout("tcont", 4, kTcontIndex);
constexpr Layout kGemportWord = ketool::make_layout("gemport", 4, kGemportId);
constexpr Layout kWord = ketool::make_layout("word", 4, kValue);

uint32_t tcont_set(SimState &s, uint8_t *buf)
{
    uint32_t tcont = word_at(buf, 0);
    uint32_t allocid = word_at(buf, 4);
    if (tcont >= s.profile.tcont_capacity() || allocid > kMaxAllocId)
        return kBadValue;
    for (const auto &t : s.pon.tconts)
        if (t.first != tcont && t.second == allocid)
            return kInUse;
    s.pon.tconts[tcont] = allocid;
    return 0;
}

uint32_t tcont_get(SimState &s, uint8_t *buf)
{
    auto t = s.pon.tconts.find(word_at(buf, 0));
    if (t == s.pon.tconts.end())
        return kNoObject;
    put_word(buf, 4, t->second);
    return 0;
}

uint32_t tcont_del(SimState &s, uint8_t *buf)
{
    return s.pon.tconts.erase(word_at(buf, 0)) == 1 ? 0 : kNoObject;
}

uint32_t tcont_num_get(SimState &s, uint8_t *buf)
{
    put_word(buf, 0, s.profile.tcont_capacity());
    return 0;
}

uint32_t onuid_get(SimState &s, uint8_t *buf)
{
    put_word(buf, 0, s.profile.onu_id());
    return 0;
}

uint32_t gemport_set(SimState &s, uint8_t *buf)
{
    uint32_t gemport = word_at(buf, 0);
    if (gemport > kMaxGemport)
        return kBadValue;
    if (s.pon.gemports.count(gemport) == 0 &&
        s.pon.gemports.size() >= s.profile.gemport_capacity())
        return kFull;
    std::memcpy(s.pon.gemports[gemport].data(), buf + 4, kGemAttrLen);
    return 0;
}

uint32_t gemport_get(SimState &s, uint8_t *buf)
{
    auto g = s.pon.gemports.find(word_at(buf, 0));
    if (g == s.pon.gemports.end())
        return kNoObject;
    std::memcpy(buf + 4, g->second.data(), kGemAttrLen);
    return 0;
}

uint32_t gemport_del(SimState &s, uint8_t *buf)
{
    uint32_t gemport = word_at(buf, 0);
    if (s.pon.gemports.count(gemport) != 0 && gemport_mapped(s, gemport))
        return kInUse;
    s.counters.gemport.erase(gemport);
    return s.pon.gemports.erase(gemport) == 1 ? 0 : kNoObject;
}

uint32_t gemport_num_get(SimState &s, uint8_t *buf)
{
    put_word(buf, 0, s.profile.gemport_capacity());
    return 0;
}

uint32_t gemport_loopback_set(SimState &s, uint8_t *buf)
{
    for (uint32_t i = 0; i < 3; ++i)
        s.pon.loopback[i] = word_at(buf, 4 * i);
    return 0;
}

uint32_t mode_get(SimState &s, uint8_t *buf)
{
    put_word(buf, 0, s.pon.pon_mode);
    return 0;
}

uint32_t dba_mode_get(SimState &s, uint8_t *buf)
{
    put_word(buf, 0, s.pon.dba_mode);
    return 0;
}

uint32_t gemblock_set(SimState &s, uint8_t *buf)
{
    uint32_t len = word_at(buf, 0);
    if (len == 0)
        return kBadValue;
    s.pon.gem_block = len;
    return 0;
}

uint32_t gemblock_get(SimState &s, uint8_t *buf)
{
    put_word(buf, 0, s.pon.gem_block);
    return 0;
}

constexpr std::array<Procedure, 14> kRows = {{
    {"ke_ke_sml_gpon_tcont_set_call", 8, tcont_set, &kTcont},
    {"ke_ke_sml_gpon_tcont_get_call", 8, tcont_get, &kTcont},
    {"ke_ke_sml_gpon_tcont_del_call", 4, tcont_del, &kTcontWord},
    {"ke_ke_sml_gpon_tcont_num_get_call", 4, tcont_num_get, &kWord},
    {"ke_ke_sml_gpon_onuid_get_call", 4, onuid_get, &kWord},
    {"ke_ke_sml_gpon_gemport_set_call", 32, gemport_set, &kGemport},
    {"ke_ke_sml_gpon_gemport_get_call", 32, gemport_get, &kGemport},
    {"ke_ke_sml_gpon_gemport_del_call", 4, gemport_del, &kGemportWord},
    {"ke_ke_sml_gpon_gemport_num_get_call", 4, gemport_num_get, &kWord},
    {"ke_ke_sml_gpon_gemport_loopback_set_call", 12, gemport_loopback_set, &kLoopback},
    {"ke_ke_sml_gpon_mode_get_call", 4, mode_get, &kWord},
    {"ke_ke_sml_gpon_dba_mode_get_call", 4, dba_mode_get, &kWord},
    {"ke_ke_sml_gpon_gemblock_set_call", 4, gemblock_set, &kWord},
    {"ke_ke_sml_gpon_gemblock_get_call", 4, gemblock_get, &kWord},
}};

}  // namespace

const ProcedureList kPonProcedures = ketool::rows_of(kRows);

}  // namespace smlsim
