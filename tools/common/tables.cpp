// Table layouts.  The VLAN, port and WAN tables have public records; the
// multicast tables take their offsets from the multicast field table, the
// VoIP and TR-069 tables their fields from the VoIP descriptors, named here
// in the voice application's style (type prefix, CamelCase).
#include "tables.h"

#include <string>

#include "cm_table.h"
#include "ke_omci_tapi/mc.h"
#include "mc/mc_tables.h"
#include "voip/voip_tables.h"

namespace ketool {
namespace {

namespace mc = ke::mc;
namespace voip = ke::voip;
using ke::cm::record_size;

// ---- Multicast tables ------------------------------------------------------

constexpr Field port_field() { return {"ui_port", ke::cm::kPortOffset, 4, Kind::U32}; }
template <uint32_t Table>
constexpr Field tail_mask() { return {"ui_mask", record_size(Table) - 4, 4, Kind::U32}; }
template <uint32_t Table>
constexpr Layout mc_layout(const Field *fields, size_t n)
{
    return Layout{ke::cm::table_info(Table).name, record_size(Table), fields, n};
}
#define KE_MC_LAYOUT(table, fields) mc_layout<table>(fields.data(), fields.size())

constexpr std::array kRangeEntry = {
    Field{"auc_ip_start", mc::RangeTab::auc_ip_start, MC_IP_LEN, Kind::Bytes},
    Field{"auc_ip_end", mc::RangeTab::auc_ip_end, MC_IP_LEN, Kind::Bytes},
    Field{"ui_valid", mc::RangeTab::ui_valid, 4, Kind::U32},
};
constexpr Layout kRangeEntryLayout = make_layout("range", mc::RangeTab::kEntrySize, kRangeEntry);

constexpr std::array kMcRange = {
    port_field(),
    Field{"ast_range", mc::RangeTab::ast_range, mc::RangeTab::kEntrySize, Kind::Rec, MC_RANGE_MAX,
          &kRangeEntryLayout},
    tail_mask<817>(),
};
constexpr std::array kMcGroupNum = {
    port_field(),
    Field{"ui_group_num", mc::GroupNumTab::ui_group_num, 4, Kind::U32},
    tail_mask<818>(),
};
constexpr std::array kMcCtrlType = {
    Field{"ui_ctrl_type", mc::CtrlTypeTab::ui_ctrl_type, 4, Kind::U32},
    tail_mask<819>(),
};
constexpr std::array kMcVer = {
    Field{"ui_ver", mc::VerTab::ui_ver, 4, Kind::U32},
    tail_mask<820>(),
};
constexpr std::array kMcGlbAttr = {
    Field{"ui_quickleave_off", mc::GlbAttrTab::ui_quickleave_off, 4, Kind::U32},
    tail_mask<821>(),
};
constexpr std::array kMcPort = {
    port_field(),
    Field{"ui_port_mode", mc::PortTab::ui_port_mode, 4, Kind::U32},
    Field{"ui_up_transparent", mc::PortTab::ui_up_transparent, 4, Kind::U32},
    Field{"ui_upvlan", mc::PortTab::ui_upvlan, 4, Kind::U32},
    Field{"ui_uppri", mc::PortTab::ui_uppri, 4, Kind::U32},
    Field{"ui_upgemport", mc::PortTab::ui_upgemport, 4, Kind::U32},
    Field{"ui_down_tagact", mc::PortTab::ui_down_tagact, 4, Kind::U32},
    Field{"ui_usrvlan", mc::PortTab::ui_usrvlan, 4, Kind::U32},
    tail_mask<822>(),
};
constexpr std::array kMcVlan = {
    port_field(),
    Field{"aui_vlan", mc::VlanTab::aui_vlan, 4, Kind::U32, MC_VLAN_MAX},
    tail_mask<824>(),
};
constexpr std::array kMcUprate = {
    port_field(),
    Field{"ui_uprate", mc::UprateTab::ui_uprate, 4, Kind::U32},
    Field{"ui_fixed", mc::UprateTab::ui_fixed, 4, Kind::U32},
    tail_mask<825>(),
};
constexpr std::array kMcMode = {
    Field{"ui_flag", mc::ModeTab::ui_flag0, 4, Kind::U32, 4},
    tail_mask<826>(),
};

constexpr Layout kMcRangeLayout = KE_MC_LAYOUT(817, kMcRange);
constexpr Layout kMcGroupNumLayout = KE_MC_LAYOUT(818, kMcGroupNum);
constexpr Layout kMcCtrlTypeLayout = KE_MC_LAYOUT(819, kMcCtrlType);
constexpr Layout kMcVerLayout = KE_MC_LAYOUT(820, kMcVer);
constexpr Layout kMcGlbAttrLayout = KE_MC_LAYOUT(821, kMcGlbAttr);
constexpr Layout kMcPortLayout = KE_MC_LAYOUT(822, kMcPort);
constexpr Layout kMcVlanLayout = KE_MC_LAYOUT(824, kMcVlan);
constexpr Layout kMcUprateLayout = KE_MC_LAYOUT(825, kMcUprate);
constexpr Layout kMcModeLayout = KE_MC_LAYOUT(826, kMcMode);

// ---- VoIP and TR-069 tables ------------------------------------------------

template <class T>
constexpr Kind kind_of()
{
    return sizeof(T) == 1 ? Kind::U8 : sizeof(T) == 2 ? Kind::U16 : Kind::U32;
}
template <uint32_t Table, class T>
constexpr Field num(const char *name, voip::Field<Table, T> f)
{
    return {name, f.offset, sizeof(T), kind_of<T>()};
}
template <uint32_t Table, uint32_t W>
constexpr Field text(const char *name, voip::Block<Table, W> b)
{
    return {name, b.offset, W, Kind::Text};
}
template <uint32_t Table, uint32_t W>
constexpr Field counters(const char *name, voip::Block<Table, W> b)
{
    static_assert(W % 4 == 0, "a run of 32-bit counters");
    return {name, b.offset, 4, Kind::U32, W / 4};
}
template <uint32_t Table>
constexpr Field voip_mask()
{
    return {"ulMask", voip::kMaskAt<Table>, 4, Kind::U32};
}
#define KE_VOIP_LAYOUT(L, fields) mc_layout<L::kTable>(fields.data(), fields.size())

using voip::CodecList;
using voip::Global;
using voip::SipServer;
using voip::SipUser;
using voip::LineProfile;
using voip::LineGain;
using voip::Rtp;
using voip::Fax;
using voip::Codec;
using voip::Tr069Server;
using voip::ConfMethod;
using voip::LineRtpStats;
using voip::LineCallStats;
using voip::SipStats;
using voip::UserRegInfo;

constexpr std::array kCodecList = {
    num("ucTotalNum", CodecList::kTotalNum),
    voip_mask<CodecList::kTable>(),
};
constexpr std::array kUserRegInfo = {
    num("ucLineId", UserRegInfo::kLineId),
    num("ucRegState", UserRegInfo::kRegState),
    num("ucHookState", UserRegInfo::kHookState),
    num("ucRegFailReason", UserRegInfo::kRegFailReason),
    voip_mask<UserRegInfo::kTable>(),
};
constexpr std::array kGlobal = {
    num("ucSignalType", Global::kSignalType),
    num("ucOffHookTime", Global::kOffHookTime),
    num("ulEmergencyState", Global::kEmergencyState),
    voip_mask<Global::kTable>(),
};
#define KE_SIP_SERVER(prefix, server)                          \
    text("ac" prefix "Address", SipServer::server.address),    \
        num("ul" prefix "Port", SipServer::server.port),       \
        num("uc" prefix "Transport", SipServer::server.transport)
constexpr std::array kSipServer = {
    KE_SIP_SERVER("Proxy", kProxy),
    KE_SIP_SERVER("Registrar", kRegistrar),
    KE_SIP_SERVER("Outbound", kOutbound),
    KE_SIP_SERVER("UserAgent", kAgent),
    voip_mask<SipServer::kTable>(),
};
#undef KE_SIP_SERVER
constexpr std::array kSipUser = {
    num("ucLineId", SipUser::kLineId),
    num("ucLineEnable", SipUser::kLineEnable),
    text("acUserName", SipUser::kUserName),
    text("acPassword", SipUser::kPassword),
    text("acRealm", SipUser::kRealm),
    voip_mask<SipUser::kTable>(),
};
constexpr std::array kLineProfile = {
    num("ucLineId", LineProfile::kLineId),
    num("ucSipTos", LineProfile::kSipTos),
    num("ucRtpDscp", LineProfile::kRtpDscp),
    num("ulSipLocalPort", LineProfile::kSipLocalPort),
    num("ulRegExpTime", LineProfile::kRegExpTime),
    num("ulReregHeadStartTime", LineProfile::kReregHeadStartTime),
    num("ulRtpPortMin", LineProfile::kRtpPortMin),
    num("ulRtpPortMax", LineProfile::kRtpPortMax),
    num("ucSilenceSuppression", LineProfile::kSilenceSuppression),
    voip_mask<LineProfile::kTable>(),
};
constexpr std::array kLineGain = {
    num("ucLineId", LineGain::kLineId),
    num("ulRxGain", LineGain::kRxGain),
    num("ulTxGain", LineGain::kTxGain),
    voip_mask<LineGain::kTable>(),
};
constexpr std::array kRtp = {num("ucRtpDscp", Rtp::kRtpDscp), voip_mask<Rtp::kTable>()};
constexpr std::array kFax = {num("ucFaxMode", Fax::kFaxMode), voip_mask<Fax::kTable>()};
constexpr std::array kCodec = {
    num("ucEnable", Codec::kEnable),
    num("ucPriority", Codec::kPriority),
    num("ucEntryId", Codec::kEntryId),
    num("ucCodec", Codec::kCodec),
    text("acPacketizationPeriod", Codec::kPacketizationPeriod),
    voip_mask<Codec::kTable>(),
};
constexpr std::array kTr069Server = {
    text("acAcsUrl", Tr069Server::kAcsUrl),
    text("acAcsUserName", Tr069Server::kAcsUserName),
    text("acAcsPassword", Tr069Server::kAcsPassword),
    voip_mask<Tr069Server::kTable>(),
};
constexpr std::array kConfMethod = {
    num("ulVoipConf", ConfMethod::kVoipConf),
    num("ulTr069Conf", ConfMethod::kTr069Conf),
    voip_mask<ConfMethod::kTable>(),
};
constexpr std::array kLineRtpStats = {
    num("ucLineId", LineRtpStats::kLineId),
    counters("aulRtpCounters", LineRtpStats::kRtpCounters),
    counters("aulCallCtrlCounters", LineRtpStats::kCallCtrlCounters),
    num("ulCodecUsed", LineRtpStats::kCodecUsed),
    voip_mask<LineRtpStats::kTable>(),
};
constexpr std::array kLineCallStats = {
    num("ucLineId", LineCallStats::kLineId),
    counters("aulCallStats", LineCallStats::kCallStats),
    voip_mask<LineCallStats::kTable>(),
};
constexpr std::array kSipStats = {
    num("ucLineId", SipStats::kLineId),
    counters("aulAgentCounters", SipStats::kAgentCounters),
    counters("aulCallInitCounters", SipStats::kCallInitCounters),
    voip_mask<SipStats::kTable>(),
};

constexpr Layout kCodecListLayout = KE_VOIP_LAYOUT(CodecList, kCodecList);
constexpr Layout kUserRegInfoLayout = KE_VOIP_LAYOUT(UserRegInfo, kUserRegInfo);
constexpr Layout kGlobalLayout = KE_VOIP_LAYOUT(Global, kGlobal);
constexpr Layout kSipServerLayout = KE_VOIP_LAYOUT(SipServer, kSipServer);
constexpr Layout kSipUserLayout = KE_VOIP_LAYOUT(SipUser, kSipUser);
constexpr Layout kLineProfileLayout = KE_VOIP_LAYOUT(LineProfile, kLineProfile);
constexpr Layout kLineGainLayout = KE_VOIP_LAYOUT(LineGain, kLineGain);
constexpr Layout kRtpLayout = KE_VOIP_LAYOUT(Rtp, kRtp);
constexpr Layout kFaxLayout = KE_VOIP_LAYOUT(Fax, kFax);
constexpr Layout kCodecLayout = KE_VOIP_LAYOUT(Codec, kCodec);
constexpr Layout kTr069ServerLayout = KE_VOIP_LAYOUT(Tr069Server, kTr069Server);
constexpr Layout kConfMethodLayout = KE_VOIP_LAYOUT(ConfMethod, kConfMethod);
constexpr Layout kLineRtpStatsLayout = KE_VOIP_LAYOUT(LineRtpStats, kLineRtpStats);
constexpr Layout kLineCallStatsLayout = KE_VOIP_LAYOUT(LineCallStats, kLineCallStats);
constexpr Layout kSipStatsLayout = KE_VOIP_LAYOUT(SipStats, kSipStats);

// ---- Every table ----------------------------------------------------------

// A table's layout: one of the above, or a public record by name.
struct Row {
    uint32_t table;
    const Layout *layout;
    const char *record;
};

constexpr std::array kRows = {
    Row{807, nullptr, "st_vlan_filter_tab"},
    Row{808, nullptr, "st_vlan_member_tab"},
    Row{809, nullptr, "st_vlan_tagact_tab"},
    Row{810, nullptr, "st_vlan_deftag_tab"},
    Row{811, nullptr, "st_vlan_defpri_tab"},
    Row{813, nullptr, "st_vlan_rule_tab"},
    Row{814, nullptr, "st_vlan_rule_tab"},
    Row{815, nullptr, "st_vlan_flush_all_tab"},
    Row{816, nullptr, "st_vlan_trunk_tab"},
    Row{817, &kMcRangeLayout, nullptr},
    Row{818, &kMcGroupNumLayout, nullptr},
    Row{819, &kMcCtrlTypeLayout, nullptr},
    Row{820, &kMcVerLayout, nullptr},
    Row{821, &kMcGlbAttrLayout, nullptr},
    Row{822, &kMcPortLayout, nullptr},
    Row{824, &kMcVlanLayout, nullptr},
    Row{825, &kMcUprateLayout, nullptr},
    Row{826, &kMcModeLayout, nullptr},
    Row{834, nullptr, "st_port_info_tab"},
    Row{448, nullptr, "st_wan_conn"},
    Row{449, nullptr, "st_wan_conn_state"},
    Row{458, nullptr, "st_wan_conn_list_entry"},
    Row{465, &kCodecListLayout, nullptr},
    Row{467, &kUserRegInfoLayout, nullptr},
    Row{468, &kGlobalLayout, nullptr},
    Row{470, &kSipServerLayout, nullptr},
    Row{471, &kSipUserLayout, nullptr},
    Row{473, &kLineProfileLayout, nullptr},
    Row{474, &kLineGainLayout, nullptr},
    Row{476, &kRtpLayout, nullptr},
    Row{477, &kFaxLayout, nullptr},
    Row{478, &kCodecLayout, nullptr},
    Row{524, &kTr069ServerLayout, nullptr},
    Row{668, &kConfMethodLayout, nullptr},
    Row{669, &kLineRtpStatsLayout, nullptr},
    Row{671, &kLineCallStatsLayout, nullptr},
    Row{673, &kSipStatsLayout, nullptr},
};
static_assert(kRows.size() == ke::cm::kTables.size(), "a layout for every table of the index");

}  // namespace

const Layout *table_layout(uint32_t table)
{
    for (const Row &r : kRows)
        if (r.table == table)
            return r.layout != nullptr ? r.layout : find_record(r.record);
    return nullptr;
}

}  // namespace ketool
