// The VoIP and TR-069 configuration tables, each record described once:
// where every field sits, how wide it is, and the mask bits that select it.
//
// These records are packed: 32-bit fields sit at odd offsets and sizes are
// odd (4171, 2187 bytes).  A field descriptor is bound to its table, so it
// can only be used on a record of that table, and fields are written and
// read only through the accessors below, which copy bytes at the field's
// offset (never an unaligned access).  Every layout is checked at compile
// time: each field inside its record, no two fields overlapping.
//
// The configuration-manager stand-in merges Sets by these same
// descriptors, so this header has no dependency beyond the frame.
#ifndef KE_VOIP_TABLES_H
#define KE_VOIP_TABLES_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "../frame/cm_table.h"
#include "../frame/copy.h"

namespace ke::voip {

// Bytes [offset, offset + width) of a record, and the mask bits that select
// them in a Set; 0 for a key or a field the library only reads.  Fields
// that share bits are always sent together (a group).
struct Span {
    uint32_t offset;
    uint32_t width;
    uint32_t mask;
};

// A 1-, 2- or 4-byte number of table Table, in host byte order.
template <uint32_t Table, class T>
struct Field {
    static_assert(sizeof(T) == 1 || sizeof(T) == 2 || sizeof(T) == 4, "a number field");
    static constexpr uint32_t kTable = Table;
    uint32_t offset;
    uint32_t mask;
    constexpr Span span() const { return {offset, sizeof(T), mask}; }
};

// A fixed-size byte array (text, or a run of counters) of table Table.
template <uint32_t Table, uint32_t Width>
struct Block {
    static constexpr uint32_t kTable = Table;
    static constexpr uint32_t kWidth = Width;
    uint32_t offset;
    uint32_t mask;
    constexpr Span span() const { return {offset, Width, mask}; }
};

template <uint32_t Table>
using Record = cm::Record<Table>;

// The mask word: the record's last four bytes, except in the two tables
// where four zero bytes follow it.
template <uint32_t Table>
inline constexpr uint32_t kMaskAt = Record<Table>::kSize - 4;
template <>
inline constexpr uint32_t kMaskAt<cm::IGD_CO_VOIP_SIP_SERVER_TAB> = 1000;
template <>
inline constexpr uint32_t kMaskAt<cm::IGD_CO_TR069_SERVER_TAB> = 2179;

template <uint32_t Table>
inline constexpr Field<Table, uint32_t> kMask{kMaskAt<Table>, 0};

// True when every span lies inside a record of size bytes and no two
// spans share a byte.
template <size_t N>
constexpr bool fit_apart(const std::array<Span, N> &spans, uint32_t size)
{
    for (size_t i = 0; i < N; ++i) {
        const Span &a = spans[i];
        if (a.width == 0 || a.offset > size || a.width > size - a.offset)
            return false;
        for (size_t j = i + 1; j < N; ++j) {
            const Span &b = spans[j];
            if (a.offset < b.offset + b.width && b.offset < a.offset + a.width)
                return false;
        }
    }
    return true;
}

// ---- Accessors -------------------------------------------------------------

// Bytes [offset, offset + width) of rec, or null when they do not lie inside
// it.  Every accessor below reaches the record through here; with constant
// descriptors the check folds away.
template <uint32_t Table>
inline uint8_t *bytes_at(Record<Table> &rec, uint32_t offset, uint32_t width)
{
    constexpr uint32_t kSize = Record<Table>::kSize;
    return offset <= kSize && width <= kSize - offset ? rec.data() + offset : nullptr;
}

template <uint32_t Table>
inline const uint8_t *bytes_at(const Record<Table> &rec, uint32_t offset, uint32_t width)
{
    return bytes_at(const_cast<Record<Table> &>(rec), offset, width);
}

// Stores value in the field's width: a narrower field keeps the low bytes.
template <uint32_t Table, class T>
inline void put(Record<Table> &rec, Field<Table, T> f, uint32_t value)
{
    const T v = static_cast<T>(value);
    if (uint8_t *at = bytes_at(rec, f.offset, sizeof v))
        std::memcpy(at, &v, sizeof v);
}

template <uint32_t Table, class T>
inline T get(const Record<Table> &rec, Field<Table, T> f)
{
    T v{};
    if (const uint8_t *at = bytes_at(rec, f.offset, sizeof v))
        std::memcpy(&v, at, sizeof v);
    return v;
}

// Copies W bytes of src into the block with memcpy_s; a failure prints the
// copy line under site and leaves the block zero.
template <uint32_t Table, uint32_t W>
inline void put(Site site, Record<Table> &rec, Block<Table, W> b, const void *src)
{
    ke::copy(site, bytes_at(rec, b.offset, W), W, src, W);
}

// Copies the block's W bytes out to dst with memcpy_s (copy line on failure).
template <uint32_t Table, uint32_t W>
inline void get(Site site, const Record<Table> &rec, Block<Table, W> b, void *dst)
{
    ke::copy(site, dst, W, bytes_at(rec, b.offset, W), W);
}

// Copies W bytes of src into the block as they are.
template <uint32_t Table, uint32_t W>
inline void put(Record<Table> &rec, Block<Table, W> b, const void *src)
{
    if (uint8_t *at = bytes_at(rec, b.offset, W))
        std::memcpy(at, src, W);
}

// Copies the block's W bytes out to dst as they are.
template <uint32_t Table, uint32_t W>
inline void get(const Record<Table> &rec, Block<Table, W> b, void *dst)
{
    if (const uint8_t *at = bytes_at(rec, b.offset, W))
        std::memcpy(dst, at, W);
}

// ORs the field's bits into the zeroed mask word.
template <class F>
inline void select(Record<F::kTable> &rec, F f)
{
    put(rec, kMask<F::kTable>, get(rec, kMask<F::kTable>) | f.mask);
}

// A field written and selected.
template <uint32_t Table, class T>
inline void write(Record<Table> &rec, Field<Table, T> f, uint32_t value)
{
    put(rec, f, value);
    select(rec, f);
}

template <uint32_t Table, uint32_t W>
inline void write(Site site, Record<Table> &rec, Block<Table, W> b, const void *src)
{
    put(site, rec, b, src);
    select(rec, b);
}

// ---- Layouts ---------------------------------------------------------------
//
// Each layout names its table, its fields, its key (kKey, empty for the
// global tables) and the list of every span it defines, mask word included
// (kSpans), which the compile-time check below walks.

// Per-line tables carry the line number's low byte at offset 4.
template <uint32_t Table>
inline constexpr Field<Table, uint8_t> kLineIdAt4{4, 0};

// 465: the codec list header (global, read only).
struct CodecList {
    static constexpr uint32_t kTable = cm::IGD_CO_VOIP_CODEC_LIST_TAB;
    using Rec = Record<kTable>;
    static constexpr Field<kTable, uint8_t> kTotalNum{9, 0};
    static constexpr std::array<Span, 0> kKey{};
    static constexpr std::array<Span, 2> kSpans{{kTotalNum.span(), kMask<kTable>.span()}};
};

// 467: registration and hook state of a line (read only).
struct UserRegInfo {
    static constexpr uint32_t kTable = cm::IGD_CO_VOIP_USER_REG_INFO_TAB;
    using Rec = Record<kTable>;
    static constexpr Field<kTable, uint8_t> kLineId = kLineIdAt4<kTable>;
    static constexpr Field<kTable, uint8_t> kRegState{5, 0};
    static constexpr Field<kTable, uint8_t> kHookState{6, 0};  // 0 on hook, 1 off hook
    static constexpr Field<kTable, uint8_t> kRegFailReason{7, 0};
    static constexpr std::array<Span, 1> kKey{{kLineId.span()}};
    static constexpr std::array<Span, 5> kSpans{{kLineId.span(), kRegState.span(),
                                                 kHookState.span(), kRegFailReason.span(),
                                                 kMask<kTable>.span()}};
};

// 468: global voice settings.
struct Global {
    static constexpr uint32_t kTable = cm::IGD_CO_VOIP_GLOBAL_TAB;
    using Rec = Record<kTable>;
    static constexpr Field<kTable, uint8_t> kSignalType{4, 0x1};
    static constexpr Field<kTable, uint8_t> kOffHookTime{8, 0x10};
    static constexpr Field<kTable, uint32_t> kEmergencyState{4248, 0};
    static constexpr std::array<Span, 0> kKey{};
    static constexpr std::array<Span, 4> kSpans{{kSignalType.span(), kOffHookTime.span(),
                                                 kEmergencyState.span(),
                                                 kMask<kTable>.span()}};
};

// 470: SIP proxy, registrar, outbound proxy and user agent (global).
struct SipServer {
    static constexpr uint32_t kTable = cm::IGD_CO_VOIP_SIP_SERVER_TAB;
    using Rec = Record<kTable>;
    // A server: 128-byte address, 32-bit port, one-byte transport code,
    // three zero bytes.
    struct Server {
        Block<kTable, 128> address;
        Field<kTable, uint32_t> port;
        Field<kTable, uint8_t> transport;
    };
    static constexpr Server kProxy{{4, 0x1}, {132, 0x2}, {136, 0x4}};
    static constexpr Server kRegistrar{{140, 0x8}, {268, 0x10}, {272, 0x20}};
    static constexpr Server kOutbound{{276, 0x40}, {404, 0x80}, {408, 0x100}};
    // The agent's three fields are always sent together.
    static constexpr Server kAgent{{820, 0x1C0000}, {948, 0x1C0000}, {952, 0x1C0000}};
    static constexpr std::array<Span, 0> kKey{};
    static constexpr std::array<Span, 13> kSpans{{
        kProxy.address.span(), kProxy.port.span(), kProxy.transport.span(),
        kRegistrar.address.span(), kRegistrar.port.span(), kRegistrar.transport.span(),
        kOutbound.address.span(), kOutbound.port.span(), kOutbound.transport.span(),
        kAgent.address.span(), kAgent.port.span(), kAgent.transport.span(),
        kMask<kTable>.span(),
    }};
};

// 471: SIP user of a line.
struct SipUser {
    static constexpr uint32_t kTable = cm::IGD_CO_VOIP_SIP_USER_TAB;
    using Rec = Record<kTable>;
    static constexpr Field<kTable, uint8_t> kLineId = kLineIdAt4<kTable>;
    static constexpr Field<kTable, uint8_t> kLineEnable{5, 0x1};  // 1 enabled, 0 disabled
    // The three authentication strings are always sent together.
    static constexpr Block<kTable, 128> kUserName{8, 0xE};
    static constexpr Block<kTable, 128> kPassword{136, 0xE};
    static constexpr Block<kTable, 128> kRealm{264, 0xE};
    static constexpr std::array<Span, 1> kKey{{kLineId.span()}};
    static constexpr std::array<Span, 6> kSpans{{kLineId.span(), kLineEnable.span(),
                                                 kUserName.span(), kPassword.span(),
                                                 kRealm.span(), kMask<kTable>.span()}};
};

// 473: the line profile.  Each writer sends its fields as one group.
struct LineProfile {
    static constexpr uint32_t kTable = cm::IGD_CO_VOIP_LINE_PROFILE_TAB;
    using Rec = Record<kTable>;
    static constexpr Field<kTable, uint8_t> kLineId = kLineIdAt4<kTable>;
    static constexpr Field<kTable, uint8_t> kSipTos{7, 0x14};
    static constexpr Field<kTable, uint8_t> kRtpDscp{8, 0x308};
    static constexpr Field<kTable, uint32_t> kSipLocalPort{9, 0x14};
    static constexpr Field<kTable, uint32_t> kRegExpTime{13, 0x60};
    static constexpr Field<kTable, uint32_t> kReregHeadStartTime{17, 0x60};
    static constexpr Field<kTable, uint32_t> kRtpPortMin{21, 0x308};
    static constexpr Field<kTable, uint32_t> kRtpPortMax{25, 0x308};
    static constexpr Field<kTable, uint8_t> kSilenceSuppression{39, 0x4000};
    static constexpr std::array<Span, 1> kKey{{kLineId.span()}};
    static constexpr std::array<Span, 10> kSpans{{
        kLineId.span(), kSipTos.span(), kRtpDscp.span(), kSipLocalPort.span(),
        kRegExpTime.span(), kReregHeadStartTime.span(), kRtpPortMin.span(),
        kRtpPortMax.span(), kSilenceSuppression.span(), kMask<kTable>.span(),
    }};
};

// 474: receive and transmit gain of a line, sent together.
struct LineGain {
    static constexpr uint32_t kTable = cm::IGD_CO_VOIP_LINE_GAIN_TAB;
    using Rec = Record<kTable>;
    static constexpr Field<kTable, uint8_t> kLineId = kLineIdAt4<kTable>;
    static constexpr Field<kTable, uint32_t> kRxGain{8, 0xC};
    static constexpr Field<kTable, uint32_t> kTxGain{12, 0xC};
    static constexpr std::array<Span, 1> kKey{{kLineId.span()}};
    static constexpr std::array<Span, 4> kSpans{{kLineId.span(), kRxGain.span(),
                                                 kTxGain.span(), kMask<kTable>.span()}};
};

// 476: global RTP settings.
struct Rtp {
    static constexpr uint32_t kTable = cm::IGD_CO_VOIP_RTP_TAB;
    using Rec = Record<kTable>;
    static constexpr Field<kTable, uint8_t> kRtpDscp{5, 0x2};
    static constexpr std::array<Span, 0> kKey{};
    static constexpr std::array<Span, 2> kSpans{{kRtpDscp.span(), kMask<kTable>.span()}};
};

// 477: global fax settings.
struct Fax {
    static constexpr uint32_t kTable = cm::IGD_CO_VOIP_FAX_TAB;
    using Rec = Record<kTable>;
    static constexpr Field<kTable, uint8_t> kFaxMode{4, 0x1};
    static constexpr std::array<Span, 0> kKey{};
    static constexpr std::array<Span, 2> kSpans{{kFaxMode.span(), kMask<kTable>.span()}};
};

// 478: one codec list entry, keyed by its entry number.  Its mask word is
// assigned a whole value: 31 writes the whole entry, 2 the priority alone.
struct Codec {
    static constexpr uint32_t kTable = cm::IGD_CO_VOIP_CODEC_TAB;
    using Rec = Record<kTable>;
    static constexpr uint32_t kWholeEntry = 31;
    static constexpr Field<kTable, uint8_t> kEnable{4, kWholeEntry};
    static constexpr Field<kTable, uint8_t> kPriority{5, 0x2};
    static constexpr Field<kTable, uint8_t> kEntryId{6, 0};
    static constexpr Field<kTable, uint8_t> kCodec{7, kWholeEntry};  // 0: none
    // Decimal text, NUL-terminated.
    static constexpr Block<kTable, 32> kPacketizationPeriod{12, kWholeEntry};
    static constexpr std::array<Span, 1> kKey{{kEntryId.span()}};
    static constexpr std::array<Span, 6> kSpans{{kEnable.span(), kPriority.span(),
                                                 kEntryId.span(), kCodec.span(),
                                                 kPacketizationPeriod.span(),
                                                 kMask<kTable>.span()}};
};

// 524: the TR-069 management server (global; its first twelve bytes zero).
struct Tr069Server {
    static constexpr uint32_t kTable = cm::IGD_CO_TR069_SERVER_TAB;
    using Rec = Record<kTable>;
    // The three texts are always sent together.
    static constexpr Block<kTable, 256> kAcsUrl{12, 0x250};
    static constexpr Block<kTable, 64> kAcsUserName{272, 0x250};
    static constexpr Block<kTable, 64> kAcsPassword{336, 0x250};
    static constexpr std::array<Span, 0> kKey{};
    static constexpr std::array<Span, 4> kSpans{{kAcsUrl.span(), kAcsUserName.span(),
                                                 kAcsPassword.span(), kMask<kTable>.span()}};
};

// 668: how the voice service is configured (global).
struct ConfMethod {
    static constexpr uint32_t kTable = cm::IGD_CO_VOIP_CONF_METHOD_TAB;
    using Rec = Record<kTable>;
    static constexpr Field<kTable, uint32_t> kVoipConf{4, 0x1};
    static constexpr Field<kTable, uint32_t> kTr069Conf{8, 0x2};
    static constexpr std::array<Span, 0> kKey{};
    static constexpr std::array<Span, 3> kSpans{{kVoipConf.span(), kTr069Conf.span(),
                                                 kMask<kTable>.span()}};
};

// 669: RTP and call-control counters of a line, and the codec in use.
struct LineRtpStats {
    static constexpr uint32_t kTable = cm::IGD_CO_VOIP_LINE_RTP_STATS_TAB;
    using Rec = Record<kTable>;
    static constexpr Field<kTable, uint8_t> kLineId = kLineIdAt4<kTable>;
    static constexpr Block<kTable, 6 * 4> kRtpCounters{8, 0};
    static constexpr Block<kTable, 5 * 4> kCallCtrlCounters{32, 0};
    static constexpr Field<kTable, uint32_t> kCodecUsed{52, 0};
    static constexpr std::array<Span, 1> kKey{{kLineId.span()}};
    static constexpr std::array<Span, 5> kSpans{{kLineId.span(), kRtpCounters.span(),
                                                 kCallCtrlCounters.span(), kCodecUsed.span(),
                                                 kMask<kTable>.span()}};
};

// 671: call statistics of a line.
struct LineCallStats {
    static constexpr uint32_t kTable = cm::IGD_CO_VOIP_LINE_CALL_STATS_TAB;
    using Rec = Record<kTable>;
    static constexpr Field<kTable, uint8_t> kLineId = kLineIdAt4<kTable>;
    static constexpr Block<kTable, 2 * 4> kCallStats{8, 0};
    static constexpr std::array<Span, 1> kKey{{kLineId.span()}};
    static constexpr std::array<Span, 3> kSpans{{kLineId.span(), kCallStats.span(),
                                                 kMask<kTable>.span()}};
};

// 673: SIP agent and call-initiation counters of a line.
struct SipStats {
    static constexpr uint32_t kTable = cm::IGD_CO_VOIP_SIP_STATS_TAB;
    using Rec = Record<kTable>;
    static constexpr Field<kTable, uint8_t> kLineId = kLineIdAt4<kTable>;
    static constexpr Block<kTable, 13 * 4> kAgentCounters{8, 0};
    static constexpr Block<kTable, 5 * 4> kCallInitCounters{60, 0};
    static constexpr std::array<Span, 1> kKey{{kLineId.span()}};
    static constexpr std::array<Span, 4> kSpans{{kLineId.span(), kAgentCounters.span(),
                                                 kCallInitCounters.span(),
                                                 kMask<kTable>.span()}};
};

template <class L>
constexpr bool well_formed()
{
    return fit_apart(L::kSpans, Record<L::kTable>::kSize);
}

static_assert(well_formed<CodecList>());
static_assert(well_formed<UserRegInfo>());
static_assert(well_formed<Global>());
static_assert(well_formed<SipServer>());
static_assert(well_formed<SipUser>());
static_assert(well_formed<LineProfile>());
static_assert(well_formed<LineGain>());
static_assert(well_formed<Rtp>());
static_assert(well_formed<Fax>());
static_assert(well_formed<Codec>());
static_assert(well_formed<Tr069Server>());
static_assert(well_formed<ConfMethod>());
static_assert(well_formed<LineRtpStats>());
static_assert(well_formed<LineCallStats>());
static_assert(well_formed<SipStats>());

// The record sizes and mask places the voice application expects.
static_assert(Global::Rec::kSize == 4460 && kMaskAt<Global::kTable> == 4456);
static_assert(SipServer::Rec::kSize == 1008 && kMaskAt<SipServer::kTable> == 1000);
static_assert(LineProfile::Rec::kSize == 4171 && kMaskAt<LineProfile::kTable> == 4167);
static_assert(SipUser::Rec::kSize == 604 && kMaskAt<SipUser::kTable> == 600);
static_assert(Codec::Rec::kSize == 48 && kMaskAt<Codec::kTable> == 44);
static_assert(Tr069Server::Rec::kSize == 2187 && kMaskAt<Tr069Server::kTable> == 2179);
static_assert(LineRtpStats::Rec::kSize == 60 && SipStats::Rec::kSize == 84);

}  // namespace ke::voip

#endif
