// PON line counters: records and status rules, the byte-reversed 64-bit
// GEM port counters and the wrapping GAL Ethernet sum.
#include "call_cases.h"
#include "ke_omci_tapi/stat.h"

namespace {

using ketest::counting;
using ketest::StatusRule;
using ketest::words;
using ketest::zeros;

class PonCounters : public ketest::StubTest {};

constexpr const char *kTc = "ke_ke_sml_xgpon_tc_get_call";

TEST_F(PonCounters, EachFunctionSendsItsRecordAndMapsItsStatus)
{
    static uint32_t out[16];
    static st_gemport_stat gem;
    ketest::check_call_cases({
        {"ke_omci_tapi_stat_fec_get", "ke_ke_sml_gpon_fec_stat_get_call",
         [] { return ke_omci_tapi_stat_fec_get(out); }, zeros(20), StatusRule::Plain},
        {"ke_omci_tapi_stat_gemport_get", "ke_ke_sml_gpon_gemport_stat_get_call",
         [] { return ke_omci_tapi_stat_gemport_get(0x0123, &gem); },
         ketest::cat({words({0x0123}), zeros(36)}), StatusRule::Plain},
        {"ke_omci_tapi_stat_tc_get", kTc, [] { return ke_omci_tapi_stat_tc_get(out); }, zeros(32),
         StatusRule::Plain},
        {"ke_omci_tapi_stat_downmng_get", "ke_ke_sml_xgpon_downmng_get_call",
         [] { return ke_omci_tapi_stat_downmng_get(out); }, zeros(56), StatusRule::Plain},
        {"ke_omci_tapi_stat_upmng_get", "ke_ke_sml_xgpon_upmng_get_call",
         [] { return ke_omci_tapi_stat_upmng_get(out); }, zeros(24), StatusRule::Plain},
        {"ke_omci_tapi_stat_galeth_get", kTc, [] { return ke_omci_tapi_stat_galeth_get(out); },
         zeros(32), StatusRule::Plain},
    });
}

// Word-for-word reads: every word arrives in its place, nothing beyond the
// record is written, and a failed read writes nothing at all.
TEST_F(PonCounters, CounterWordsArriveInOrderAndOnlyOnSuccess)
{
    struct {
        const char *remote;
        uint32_t (*fn)(uint32_t *);
        size_t words;
    } cases[] = {
        {kTc, ke_omci_tapi_stat_tc_get, 8},
        {"ke_ke_sml_xgpon_downmng_get_call", ke_omci_tapi_stat_downmng_get, 14},
        {"ke_ke_sml_xgpon_upmng_get_call", ke_omci_tapi_stat_upmng_get, 6},
        {"ke_ke_sml_gpon_fec_stat_get_call",
         [](uint32_t *p) { return ke_omci_tapi_stat_fec_get(p); }, 5},
    };
    for (const auto &c : cases) {
        std::vector<uint32_t> reply(c.words);
        for (size_t i = 0; i < c.words; ++i)
            reply[i] = 0x01010101u * static_cast<uint32_t>(i + 1);
        kestub::ipc_script(c.remote, 0, reply.data(), reply.size() * 4);
        std::vector<uint32_t> out(c.words + 2, 0xEEEEEEEE);
        EXPECT_EQ(c.fn(out.data()), 0u) << c.remote;
        std::vector<uint32_t> expected = reply;
        expected.insert(expected.end(), {0xEEEEEEEE, 0xEEEEEEEE});
        EXPECT_EQ(out, expected) << c.remote;

        kestub::ipc_script(c.remote, 5);
        std::vector<uint32_t> kept(c.words, 0x5A5A5A5A);
        EXPECT_EQ(c.fn(kept.data()), 1u) << c.remote;
        EXPECT_EQ(kept, std::vector<uint32_t>(c.words, 0x5A5A5A5A)) << c.remote;
    }
}

std::vector<uint8_t> bytes_at(const st_gemport_stat &s, size_t off, size_t n)
{
    const auto *b = reinterpret_cast<const uint8_t *>(&s);
    return std::vector<uint8_t>(b + off, b + off + n);
}

TEST_F(PonCounters, GemportCountersDeliverSixtyFourBitValuesByteReversed)
{
    st_gemport_stat reply;
    std::vector<uint8_t> distinct = counting(sizeof reply, 0x10);
    std::memcpy(&reply, distinct.data(), sizeof reply);
    kestub::ipc_script_reply("ke_ke_sml_gpon_gemport_stat_get_call", reply);

    st_gemport_stat out;
    std::memset(&out, 0xCC, sizeof out);
    EXPECT_EQ(ke_omci_tapi_stat_gemport_get(3, &out), 0u);

    auto reversed = [&](size_t off) {
        std::vector<uint8_t> r = bytes_at(reply, off, 8);
        return std::vector<uint8_t>(r.rbegin(), r.rend());
    };
    const std::vector<uint8_t> untouched(4, 0xCC);
    EXPECT_EQ(bytes_at(out, 0, 4), untouched);
    EXPECT_EQ(bytes_at(out, 4, 8), bytes_at(reply, 4, 8));
    EXPECT_EQ(bytes_at(out, 12, 4), untouched);
    EXPECT_EQ(bytes_at(out, 16, 8), reversed(16));
    EXPECT_EQ(bytes_at(out, 24, 8), reversed(24));
    EXPECT_EQ(bytes_at(out, 32, 4), bytes_at(reply, 32, 4));
    EXPECT_EQ(bytes_at(out, 36, 4), untouched);
}

TEST_F(PonCounters, GemportCounterBecomesItsBigEndianByteString)
{
    st_gemport_stat reply{};
    reply.ull_counter_1 = 0x0000000100000002ull;
    reply.ull_counter_2 = 0x1122334455667788ull;
    kestub::ipc_script_reply("ke_ke_sml_gpon_gemport_stat_get_call", reply);
    st_gemport_stat out{};
    EXPECT_EQ(ke_omci_tapi_stat_gemport_get(3, &out), 0u);
    EXPECT_EQ(bytes_at(out, 16, 8), (std::vector<uint8_t>{0, 0, 0, 1, 0, 0, 0, 2}));
    EXPECT_EQ(bytes_at(out, 24, 8),
              (std::vector<uint8_t>{0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88}));
}

TEST_F(PonCounters, FailedGemportReadWritesNothing)
{
    kestub::ipc_script("ke_ke_sml_gpon_gemport_stat_get_call", 2);
    st_gemport_stat out;
    std::memset(&out, 0xCC, sizeof out);
    EXPECT_EQ(ke_omci_tapi_stat_gemport_get(3, &out), 1u);
    EXPECT_EQ(bytes_at(out, 0, sizeof out), std::vector<uint8_t>(sizeof out, 0xCC));
}

TEST_F(PonCounters, GalEthernetIsTheWrappingSumOfTcWordsSixAndSeven)
{
    struct {
        uint32_t w6, w7, sum;
    } cases[] = {{5, 7, 12}, {0xFFFFFFFF, 2, 1}, {0x80000000, 0x80000000, 0}, {0, 0, 0}};
    for (const auto &c : cases) {
        st_xgpon_tc_stat tc = {{100, 200, 300, 400, 500, 600, c.w6, c.w7}};
        kestub::ipc_script_reply(kTc, tc);
        uint32_t gal = 0xABCD;
        EXPECT_EQ(ke_omci_tapi_stat_galeth_get(&gal), 0u);
        EXPECT_EQ(gal, c.sum) << c.w6 << " + " << c.w7;
    }
    kestub::ipc_script(kTc, 2);
    uint32_t gal = 0xABCD;
    EXPECT_EQ(ke_omci_tapi_stat_galeth_get(&gal), 1u);
    EXPECT_EQ(gal, 0xABCDu);
}

}  // namespace
