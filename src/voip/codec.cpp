// The codec list shared by all lines: entries set and read as RTP/AVP
// payload types, a codec kept in at most one entry, priorities reset to
// entry order.
#include <cstdarg>
#include <cstdio>

#include "ke_omci_tapi/voip.h"
#include "voip_record.h"

namespace ke::voip {
namespace {

// A payload type, the configuration manager's code for it, and whether it
// is written enabled (only the four mandatory voice codecs are).
struct CodecCode {
    uint8_t payload_type;
    uint8_t code;
    uint8_t enable;
};

constexpr std::array<CodecCode, 17> kCodecCodes{{
    {0, 2, 1},    // PCMU
    {3, 12, 0},   // GSM
    {4, 9, 0},    // G723
    {5, 16, 0},   // DVI4, 8 kHz
    {6, 17, 0},   // DVI4, 16 kHz
    {7, 20, 0},   // LPC
    {8, 1, 1},    // PCMA
    {9, 4, 1},    // G722
    {10, 21, 0},  // L16, 2 channels
    {11, 22, 0},  // L16, 1 channel
    {12, 23, 0},  // QCELP
    {13, 24, 0},  // CN
    {14, 25, 0},  // MPA
    {15, 8, 0},   // G728
    {16, 18, 0},  // DVI4, 11.025 kHz
    {17, 19, 0},  // DVI4, 22.05 kHz
    {18, 3, 1},   // G729
}};

// A payload type with no code is stored as "none", disabled.
constexpr CodecCode kNoCodec{0, 0, 0};

constexpr const CodecCode &by_payload_type(uint8_t payload_type)
{
    for (const CodecCode &c : kCodecCodes)
        if (c.payload_type == payload_type)
            return c;
    return kNoCodec;
}

// The entry of a stored code, or nullptr for "none" and unknown codes.
constexpr const CodecCode *by_code(uint8_t code)
{
    for (const CodecCode &c : kCodecCodes)
        if (c.code == code)
            return &c;
    return nullptr;
}

static_assert(by_payload_type(18).code == 3 && by_code(3)->payload_type == 18);
static_assert(by_payload_type(2).code == 0 && by_code(0) == nullptr);

// The packetisation period is kept as decimal text.
constexpr uint32_t kPeriodTextLen = Codec::kPacketizationPeriod.kWidth;

struct PeriodText {
    char text[kPeriodTextLen + 1] = {};  // always terminated, whatever is stored
};

PeriodText period_of(const Codec::Rec &rec)
{
    PeriodText p;
    get(rec, Codec::kPacketizationPeriod, p.text);
    return p;
}

// A gated trace line of the codec procedures: "[name(line)]" and the text.
__attribute__((format(printf, 2, 3))) void trace(Site site, const char *fmt, ...)
{
    if (!log_gate_open())
        return;
    std::printf("[%s(%d)]", site.func, site.line);
    va_list ap;
    va_start(ap, fmt);
    std::vprintf(fmt, ap);
    va_end(ap);
}

#define CHECK_SITE KE_SITE_AS("CheckCodecListPriority")

// Length of the codec list; a failed read counts as an empty list.
uint8_t codec_list_length()
{
    CodecList::Rec list;
    if (cm::get(list) != 0)
        return 0;
    return get(list, CodecList::kTotalNum);
}

// Reads entry into rec (zeroed, keyed); false when it cannot be read, and
// rec is then left as an entry holding no codec.
bool read_entry(Codec::Rec &rec, uint32_t entry)
{
    rec = Codec::Rec{};
    put(rec, Codec::kEntryId, entry);
    if (cm::get(rec) == 0)
        return true;
    rec = Codec::Rec{};
    put(rec, Codec::kEntryId, entry);
    return false;
}

// Keeps the new codec in one entry (log name CheckCodecListPriority).
// When the entry changes codec and another entry holds the new one, that
// entry (the lowest-numbered) takes the changed entry's previous codec,
// enable flag and period, with a priority equal to its own number; then
// the new entry is written.  Sets *written when it wrote the new entry; a
// nonzero result is the failure to report (1 after a traced call,
// 0x70000000 for an empty list).
uint32_t check_codec_list_priority(Codec::Rec &entry, bool *written)
{
    const uint8_t entry_id = get(entry, Codec::kEntryId);
    const uint8_t codec = get(entry, Codec::kCodec);

    Codec::Rec old;
    put(old, Codec::kEntryId, entry_id);
    if (load(CHECK_SITE, old) != 0)
        return 1;
    if (get(old, Codec::kCodec) == codec)
        return 0;

    const uint8_t total = codec_list_length();
    if (total == 0) {
        trace(CHECK_SITE, "totalNum=%d.\n", int{total});
        return 0x70000000;
    }
    trace(CHECK_SITE, "totalNum=%d\n", int{total});

    for (uint32_t i = 1; i <= total; ++i) {
        if (i == entry_id)
            continue;
        Codec::Rec other;
        const bool readable = read_entry(other, i);
        trace(CHECK_SITE, "Priority=%hhu,EntryID=%hhu,Codec=%hhu,PacketizationPeriod=%s\n",
              get(other, Codec::kPriority), get(other, Codec::kEntryId), get(other, Codec::kCodec),
              period_of(other).text);
        if (!readable || get(other, Codec::kCodec) != codec)
            continue;

        trace(CHECK_SITE, "ucPriority is repeat.\n");
        other = old;
        put(other, Codec::kEntryId, i);
        put(other, Codec::kPriority, i);
        put(other, kMask<Codec::kTable>, Codec::kWholeEntry);
        if (store(CHECK_SITE, other) != 0)
            return 1;
        break;
    }

    put(entry, kMask<Codec::kTable>, Codec::kWholeEntry);
    if (store(CHECK_SITE, entry) != 0)
        return 1;
    *written = true;
    return 0;
}

}  // namespace
}  // namespace ke::voip

using namespace ke::voip;

extern "C" {

uint32_t ke_omci_tapi_voip_codec_set(const st_voip_codec *pst_codec)
{
    if (pst_codec == nullptr)
        return 1;
    const CodecCode &code = by_payload_type(pst_codec->uc_codec);
    Codec::Rec entry(KE_SITE);
    put(entry, Codec::kPriority, pst_codec->uc_priority);
    put(entry, Codec::kEntryId, pst_codec->uc_entry_id);
    put(entry, Codec::kCodec, code.code);
    put(entry, Codec::kEnable, pst_codec->uc_period == 0 ? 0 : code.enable);
    char period[kPeriodTextLen] = {};
    sprintf_s(period, sizeof period, "%u", static_cast<unsigned>(pst_codec->uc_period));
    put(entry, Codec::kPacketizationPeriod, period);

    bool written = false;
    uint32_t ret = check_codec_list_priority(entry, &written);
    if (ret != 0) {
        ke::trace_failed_call(KE_SITE, ret);
        return 1;
    }
    if (written)
        return 0;
    // The entry keeps its codec: write it alone.
    put(entry, kMask<Codec::kTable>, Codec::kWholeEntry);
    return store(KE_SITE, entry);
}

uint32_t ke_omci_tapi_voip_codec_get(st_voip_codec *pst_codec)
{
    if (pst_codec == nullptr)
        return 1;
    Codec::Rec entry(KE_SITE);
    put(entry, Codec::kEntryId, pst_codec->uc_entry_id);
    if (load(KE_SITE, entry) != 0)
        return 1;
    pst_codec->uc_enable = get(entry, Codec::kEnable);
    pst_codec->uc_priority = get(entry, Codec::kPriority);
    if (const CodecCode *code = by_code(get(entry, Codec::kCodec)))
        pst_codec->uc_codec = code->payload_type;
    uint32_t period = 0;
    ke_os_atoi(period_of(entry).text, &period);
    pst_codec->uc_period = static_cast<uint8_t>(period);
    return 0;
}

// One record serves every entry: each is read (failures ignored, since
// only the priority is selected) and written back with its priority equal
// to its number.
uint32_t ke_omci_tapi_voip_codec_priority_reorder(void)
{
    const uint8_t total = codec_list_length();
    if (total == 0) {
        trace(KE_SITE, "totalNum=%d.\n", 0);
        return 0;
    }
    trace(KE_SITE, "totalNum=%d\n", int{total});
    Codec::Rec entry;
    uint32_t ret = 0;
    for (uint32_t i = 1; i <= total; ++i) {
        put(entry, Codec::kEntryId, i);
        ke::cm::get(entry);
        put(entry, Codec::kEntryId, i);
        put(entry, Codec::kPriority, i);
        put(entry, kMask<Codec::kTable>, Codec::kPriority.mask);
        ret = ke::cm::set(entry);
    }
    return ret;
}

}  // extern "C"
