// The records of the public headers, field by field.  A family adds its
// records here as it lands; offsets come from the headers themselves.
#include <cstddef>
#include <cstring>

#include "ke_omci_tapi/device.h"
#include "ke_omci_tapi/pon.h"
#include "record.h"

namespace ketool {
namespace {

#define KE_FIELD(type, field, kind) \
    Field { #field, offsetof(type, field), sizeof(((type *)nullptr)->field), kind }

constexpr std::array<Field, 2> kTcont = {{
    KE_FIELD(st_tcont, ui_tcont, Kind::U32),
    KE_FIELD(st_tcont, ui_allocid, Kind::U32),
}};

constexpr std::array<Field, 2> kGemport = {{
    KE_FIELD(st_gemport, ui_gemport, Kind::U32),
    KE_FIELD(st_gemport, st_gemport_attr, Kind::Bytes),
}};

constexpr std::array<Field, 3> kLoopback = {{
    {"ui_word0", 0, 4, Kind::U32},
    {"ui_word1", 4, 4, Kind::U32},
    {"ui_word2", 8, 4, Kind::U32},
}};

constexpr std::array<Field, 12> kSysinfo = {{
    KE_FIELD(st_sysinfo, auc_info_a, Kind::Text),
    KE_FIELD(st_sysinfo, auc_info_b, Kind::Text),
    KE_FIELD(st_sysinfo, auc_info_c, Kind::Text),
    KE_FIELD(st_sysinfo, auc_info_d, Kind::Text),
    KE_FIELD(st_sysinfo, ui_info_e, Kind::U32),
    KE_FIELD(st_sysinfo, ui_product_type, Kind::U32),
    KE_FIELD(st_sysinfo, ui_user_port_num, Kind::U32),
    KE_FIELD(st_sysinfo, ui_board_2, Kind::U32),
    KE_FIELD(st_sysinfo, ui_board_3, Kind::U32),
    KE_FIELD(st_sysinfo, ui_board_0, Kind::U32),
    KE_FIELD(st_sysinfo, auc_info_f, Kind::Text),
    KE_FIELD(st_sysinfo, ui_info_g, Kind::U32),
}};

constexpr std::array<Field, 6> kSnLoid = {{
    KE_FIELD(st_sn_loid, auc_id_a, Kind::Bytes),
    KE_FIELD(st_sn_loid, auc_sn, Kind::Bytes),
    KE_FIELD(st_sn_loid, auc_loid, Kind::Text),
    KE_FIELD(st_sn_loid, auc_loid_pwd, Kind::Text),
    KE_FIELD(st_sn_loid, auc_id_b, Kind::Text),
    KE_FIELD(st_sn_loid, auc_id_c, Kind::Text),
}};

#undef KE_FIELD

constexpr Layout kTcontLayout = make_layout("st_tcont", sizeof(st_tcont), kTcont);
constexpr Layout kGemportLayout = make_layout("st_gemport", sizeof(st_gemport), kGemport);
constexpr Layout kLoopbackLayout =
    make_layout("st_gemport_loopback", sizeof(st_gemport_loopback), kLoopback);
constexpr Layout kSysinfoLayout = make_layout("st_sysinfo", sizeof(st_sysinfo), kSysinfo);
constexpr Layout kSnLoidLayout = make_layout("st_sn_loid", sizeof(st_sn_loid), kSnLoid);

}  // namespace

const std::vector<const Layout *> &known_records()
{
    static const std::vector<const Layout *> all = {
        &kTcontLayout, &kGemportLayout, &kLoopbackLayout, &kSysinfoLayout, &kSnLoidLayout,
    };
    return all;
}

const Layout *find_record(const std::string &name)
{
    for (const Layout *l : known_records())
        if (name == l->name)
            return l;
    return nullptr;
}

}  // namespace ketool
