// Configuration-manager tables: the index of every table the library
// writes, the record every writer builds, and the INFO-line report.
//
// A record is a packed byte image of the table's full size, zero at
// birth; fields are written and read through memcpy at their byte offset,
// so odd sizes and unaligned fields are never an unaligned access.
#ifndef KE_FRAME_CM_TABLE_H
#define KE_FRAME_CM_TABLE_H

#include <array>
#include <cstdint>
#include <cstring>

#include "copy.h"
#include "platform.h"
#include "trace.h"

namespace ke::cm {

// Table identifiers.
inline constexpr uint32_t IGD_CO_VLAN_FILTER_TAB = 807;
inline constexpr uint32_t IGD_CO_VLAN_MEMBER_TAB = 808;
inline constexpr uint32_t IGD_CO_VLAN_TAGACT_TAB = 809;
inline constexpr uint32_t IGD_CO_VLAN_DEFTAG_TAB = 810;
inline constexpr uint32_t IGD_CO_VLAN_DEFPRI_TAB = 811;
inline constexpr uint32_t IGD_CO_VLAN_TRANSLATION_TAB = 813;
inline constexpr uint32_t IGD_CO_VLAN_QINQ_TAB = 814;
inline constexpr uint32_t IGD_CO_VLAN_FLUSH_ALL_TAB = 815;
inline constexpr uint32_t IGD_CO_VLAN_TRUNK_TAB = 816;
inline constexpr uint32_t IGD_CO_MC_RANGE_TAB = 817;
inline constexpr uint32_t IGD_CO_MC_GROUP_NUM_TAB = 818;
inline constexpr uint32_t IGD_CO_MC_CTRL_TYPE_TAB = 819;
inline constexpr uint32_t IGD_CO_MC_VER_TAB = 820;
inline constexpr uint32_t IGD_CO_MC_GLB_ATTR_TAB = 821;
inline constexpr uint32_t IGD_CO_MC_PORT_TAB = 822;
inline constexpr uint32_t IGD_CO_MC_VLAN_TAB = 824;
inline constexpr uint32_t IGD_CO_MC_UPRATE_TAB = 825;
inline constexpr uint32_t IGD_CO_MC_MODE_TAB = 826;
inline constexpr uint32_t IGD_CO_PORT_INFO_TAB = 834;
inline constexpr uint32_t IGD_CO_WAN_CONN_TAB = 448;
inline constexpr uint32_t IGD_CO_WAN_CONN_STATE_TAB = 449;
inline constexpr uint32_t IGD_CO_WAN_CONN_LIST_TAB = 458;
inline constexpr uint32_t IGD_CO_VOIP_CODEC_LIST_TAB = 465;
inline constexpr uint32_t IGD_CO_VOIP_USER_REG_INFO_TAB = 467;
inline constexpr uint32_t IGD_CO_VOIP_GLOBAL_TAB = 468;
inline constexpr uint32_t IGD_CO_VOIP_SIP_SERVER_TAB = 470;
inline constexpr uint32_t IGD_CO_VOIP_SIP_USER_TAB = 471;
inline constexpr uint32_t IGD_CO_VOIP_LINE_PROFILE_TAB = 473;
inline constexpr uint32_t IGD_CO_VOIP_LINE_GAIN_TAB = 474;
inline constexpr uint32_t IGD_CO_VOIP_RTP_TAB = 476;
inline constexpr uint32_t IGD_CO_VOIP_FAX_TAB = 477;
inline constexpr uint32_t IGD_CO_VOIP_CODEC_TAB = 478;
inline constexpr uint32_t IGD_CO_TR069_SERVER_TAB = 524;
inline constexpr uint32_t IGD_CO_VOIP_CONF_METHOD_TAB = 668;
inline constexpr uint32_t IGD_CO_VOIP_LINE_RTP_STATS_TAB = 669;
inline constexpr uint32_t IGD_CO_VOIP_LINE_CALL_STATS_TAB = 671;
inline constexpr uint32_t IGD_CO_VOIP_SIP_STATS_TAB = 673;

struct TableInfo {
    uint32_t id;
    const char *name;
    uint32_t size;  // full record size in bytes (per entry for the list table)
};

inline constexpr std::array<TableInfo, 37> kTables = {{
    {IGD_CO_VLAN_FILTER_TAB, "IGD_CO_VLAN_FILTER_TAB", 20},
    {IGD_CO_VLAN_MEMBER_TAB, "IGD_CO_VLAN_MEMBER_TAB", 20},
    {IGD_CO_VLAN_TAGACT_TAB, "IGD_CO_VLAN_TAGACT_TAB", 28},
    {IGD_CO_VLAN_DEFTAG_TAB, "IGD_CO_VLAN_DEFTAG_TAB", 36},
    {IGD_CO_VLAN_DEFPRI_TAB, "IGD_CO_VLAN_DEFPRI_TAB", 20},
    {IGD_CO_VLAN_TRANSLATION_TAB, "IGD_CO_VLAN_TRANSLATION_TAB", 68},
    {IGD_CO_VLAN_QINQ_TAB, "IGD_CO_VLAN_QINQ_TAB", 68},
    {IGD_CO_VLAN_FLUSH_ALL_TAB, "IGD_CO_VLAN_FLUSH_ALL_TAB", 8},
    {IGD_CO_VLAN_TRUNK_TAB, "IGD_CO_VLAN_TRUNK_TAB", 12},
    {IGD_CO_MC_RANGE_TAB, "IGD_CO_MC_RANGE_TAB", 1744},
    {IGD_CO_MC_GROUP_NUM_TAB, "IGD_CO_MC_GROUP_NUM_TAB", 24},
    {IGD_CO_MC_CTRL_TYPE_TAB, "IGD_CO_MC_CTRL_TYPE_TAB", 16},
    {IGD_CO_MC_VER_TAB, "IGD_CO_MC_VER_TAB", 16},
    {IGD_CO_MC_GLB_ATTR_TAB, "IGD_CO_MC_GLB_ATTR_TAB", 20},
    {IGD_CO_MC_PORT_TAB, "IGD_CO_MC_PORT_TAB", 116},
    {IGD_CO_MC_VLAN_TAB, "IGD_CO_MC_VLAN_TAB", 48},
    {IGD_CO_MC_UPRATE_TAB, "IGD_CO_MC_UPRATE_TAB", 24},
    {IGD_CO_MC_MODE_TAB, "IGD_CO_MC_MODE_TAB", 36},
    {IGD_CO_PORT_INFO_TAB, "IGD_CO_PORT_INFO_TAB", 52},
    {IGD_CO_WAN_CONN_TAB, "IGD_CO_WAN_CONN_TAB", 2680},
    {IGD_CO_WAN_CONN_STATE_TAB, "IGD_CO_WAN_CONN_STATE_TAB", 559},
    {IGD_CO_WAN_CONN_LIST_TAB, "IGD_CO_WAN_CONN_LIST_TAB", 148},
    {IGD_CO_VOIP_CODEC_LIST_TAB, "IGD_CO_VOIP_CODEC_LIST_TAB", 304},
    {IGD_CO_VOIP_USER_REG_INFO_TAB, "IGD_CO_VOIP_USER_REG_INFO_TAB", 12},
    {IGD_CO_VOIP_GLOBAL_TAB, "IGD_CO_VOIP_GLOBAL_TAB", 4460},
    {IGD_CO_VOIP_SIP_SERVER_TAB, "IGD_CO_VOIP_SIP_SERVER_TAB", 1008},
    {IGD_CO_VOIP_SIP_USER_TAB, "IGD_CO_VOIP_SIP_USER_TAB", 604},
    {IGD_CO_VOIP_LINE_PROFILE_TAB, "IGD_CO_VOIP_LINE_PROFILE_TAB", 4171},
    {IGD_CO_VOIP_LINE_GAIN_TAB, "IGD_CO_VOIP_LINE_GAIN_TAB", 32},
    {IGD_CO_VOIP_RTP_TAB, "IGD_CO_VOIP_RTP_TAB", 100},
    {IGD_CO_VOIP_FAX_TAB, "IGD_CO_VOIP_FAX_TAB", 40},
    {IGD_CO_VOIP_CODEC_TAB, "IGD_CO_VOIP_CODEC_TAB", 48},
    {IGD_CO_TR069_SERVER_TAB, "IGD_CO_TR069_SERVER_TAB", 2187},
    {IGD_CO_VOIP_CONF_METHOD_TAB, "IGD_CO_VOIP_CONF_METHOD_TAB", 16},
    {IGD_CO_VOIP_LINE_RTP_STATS_TAB, "IGD_CO_VOIP_LINE_RTP_STATS_TAB", 60},
    {IGD_CO_VOIP_LINE_CALL_STATS_TAB, "IGD_CO_VOIP_LINE_CALL_STATS_TAB", 24},
    {IGD_CO_VOIP_SIP_STATS_TAB, "IGD_CO_VOIP_SIP_STATS_TAB", 84},
}};

inline constexpr TableInfo kUnknownTable = {0, "", 0};

// The index entry of a table, or kUnknownTable (size 0).
constexpr const TableInfo &table_info(uint32_t id)
{
    for (const TableInfo &t : kTables)
        if (t.id == id)
            return t;
    return kUnknownTable;
}

constexpr uint32_t record_size(uint32_t id) { return table_info(id).size; }

// Offset of the user-port key in the VLAN, multicast and port records.
inline constexpr uint32_t kPortOffset = 8;

// One record of table Id: every byte zero until a field is written.
template <uint32_t Id>
class Record {
public:
    static constexpr uint32_t kTable = Id;
    static constexpr uint32_t kSize = record_size(Id);
    static_assert(kSize != 0, "table missing from the index");

    Record() : bytes_{} {}
    // Zeroed with memset_s instead (a failure prints the copy line and
    // goes on), for the writers whose records are cleared that way: the
    // bytes are filled once, not twice.
    explicit Record(Site site) { fill_zero(site, bytes_.data(), kSize); }

    uint8_t *data() { return bytes_.data(); }
    const uint8_t *data() const { return bytes_.data(); }
    static constexpr uint32_t size() { return kSize; }

    void put_u8(uint32_t off, uint8_t v) { put(off, &v, 1); }
    void put_u16(uint32_t off, uint16_t v) { put(off, &v, 2); }
    void put_u32(uint32_t off, uint32_t v) { put(off, &v, 4); }
    void put(uint32_t off, const void *src, uint32_t n)
    {
        if (in_bounds(off, n))
            std::memcpy(bytes_.data() + off, src, n);
    }

    uint8_t u8(uint32_t off) const { return get<uint8_t>(off); }
    uint16_t u16(uint32_t off) const { return get<uint16_t>(off); }
    uint32_t u32(uint32_t off) const { return get<uint32_t>(off); }
    void get(uint32_t off, void *dst, uint32_t n) const
    {
        if (in_bounds(off, n))
            std::memcpy(dst, bytes_.data() + off, n);
    }

    // The common head: two zero words, then the user port.
    void put_port(uint32_t port) { put_u32(kPortOffset, port); }
    // The field mask in the record's last four bytes.
    void put_tail_mask(uint32_t mask) { put_u32(kSize - 4, mask); }

private:
    template <class T>
    T get(uint32_t off) const
    {
        T v{};
        get(off, &v, sizeof v);
        return v;
    }
    static constexpr bool in_bounds(uint32_t off, uint32_t n)
    {
        return off <= kSize && n <= kSize - off;
    }

    std::array<uint8_t, kSize> bytes_;
};

// The record operations, always with the table's full record size.
template <class R>
inline uint32_t get(R &rec)
{
    return igdCmConfGet(R::kTable, rec.data(), R::kSize);
}
template <class R>
inline uint32_t set(R &rec)
{
    return igdCmConfSet(R::kTable, rec.data(), R::kSize);
}
template <class R>
inline uint32_t add(R &rec)
{
    return igdCmConfAdd(R::kTable, rec.data(), R::kSize);
}
template <class R>
inline uint32_t del(R &rec)
{
    return igdCmConfDel(R::kTable, rec.data(), R::kSize);
}

// INFO-line style: a failed operation is traced (gated) under the
// reporting procedure's log name and becomes 1; success stays 0.
inline uint32_t report_info(Site site, uint32_t ret)
{
    if (ret == 0)
        return 0;
    trace_failed_call(site, ret);
    return 1;
}

}  // namespace ke::cm

#endif
