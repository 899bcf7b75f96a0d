// Line security keys and time of day: records, the key trace line, the
// multicast key bound and the big-endian time of day.
#include <cstdio>

#include "call_cases.h"
#include "ke_omci_tapi/pon.h"

extern "C" int memcpy_s(void *dest, size_t destsz, const void *src, size_t count);

namespace {

using ketest::cat;
using ketest::counting;
using ketest::printed;
using ketest::StatusRule;
using ketest::words;
using ketest::zeros;

class KeysTod : public ketest::StubTest {};

TEST_F(KeysTod, EachFunctionSendsItsRecordAndMapsItsStatus)
{
    static std::vector<uint8_t> key;
    static std::vector<uint8_t> cmac;
    key = counting(16, 0xA0);
    cmac = counting(164);
    const uint8_t tod[KE_TOD_LEN] = {0x00, 0x00, 0x01, 0x02, 0x00, 0x01, 0x00,
                                     0x00, 0x00, 0x05, 0x00, 0x00, 0x02, 0x00};
    static std::vector<uint8_t> tod_bytes;
    tod_bytes.assign(tod, tod + sizeof tod);

    ketest::check_call_cases({
        {"ke_omci_tapi_msk_set", "ke_ke_sml_xgpon_msk_set_call",
         [] { return ke_omci_tapi_msk_set(key.data()); }, key, StatusRule::PassThrough},
        {"ke_omci_tapi_mckey_set", "ke_ke_sml_xgpon_mckey_set_call",
         [] { return ke_omci_tapi_mckey_set(3, 8, key.data()); },
         cat({words({3, 8}), std::vector<uint8_t>(key.begin(), key.begin() + 8), zeros(8)}),
         StatusRule::PassThrough},
        {"ke_omci_tapi_mckey_del", "ke_ke_sml_xgpon_mckey_del_call",
         [] { return ke_omci_tapi_mckey_del(0x0102); }, cat({words({0x0102}), zeros(20)}),
         StatusRule::PassThrough},
        {"ke_omci_tapi_time_set", "ke_ke_sml_gpon_time_set_call",
         [] { return ke_omci_tapi_time_set(tod_bytes.data()); }, words({258, 1, 5, 512}),
         StatusRule::PassThrough},
        {"ke_omci_tapi_aes_cmac", "ke_ke_sml_xgpon_aes_cmac_set_call",
         [] {
             std::vector<uint8_t> caller = cmac;
             return ke_omci_tapi_aes_cmac(reinterpret_cast<st_aes_cmac *>(caller.data()));
         },
         cmac, StatusRule::Plain},
    });
}

TEST_F(KeysTod, TimeOfDayIsAssembledMostSignificantByteFirst)
{
    // High bits set in every byte: any sign extension or swapped byte shows.
    std::vector<uint8_t> wire = counting(KE_TOD_LEN, 0x80);
    kestub::ipc_script("ke_ke_sml_gpon_time_set_call", 0);
    EXPECT_EQ(ke_omci_tapi_time_set(wire.data()), 0u);
    EXPECT_EQ(kestub::ipc_calls()[0].request,
              words({0x80818283, 0x00008485, 0x86878889, 0x8A8B8C8D}));
}

TEST_F(KeysTod, MissingTimeOfDayIsSentAsZero)
{
    kestub::ipc_script("ke_ke_sml_gpon_time_set_call", 0);
    EXPECT_EQ(ke_omci_tapi_time_set(nullptr), 0u);
    ASSERT_EQ(kestub::ipc_calls().size(), 1u);
    EXPECT_EQ(kestub::ipc_calls()[0].request, zeros(16));
}

TEST_F(KeysTod, MulticastKeyCopiesOnlyTheGivenLength)
{
    std::vector<uint8_t> key = counting(16, 0x10);
    for (uint32_t len : {0u, 1u, 8u, 16u}) {
        kestub::reset();
        kestub::ipc_script("ke_ke_sml_xgpon_mckey_set_call", 0);
        std::string out = printed([&] { EXPECT_EQ(ke_omci_tapi_mckey_set(9, len, key.data()), 0u); });
        EXPECT_EQ(out, "") << len;
        std::vector<uint8_t> sent_key(key.begin(), key.begin() + len);
        sent_key.resize(16, 0);
        EXPECT_EQ(kestub::ipc_calls()[0].request, cat({words({9, len}), sent_key})) << len;
    }
}

TEST_F(KeysTod, MulticastKeyAboveSixteenBytesFailsTheCopyYetIsSent)
{
    std::vector<uint8_t> key = counting(17, 0x10);
    uint8_t scratch[16];
    const int refused = memcpy_s(scratch, sizeof scratch, key.data(), key.size());
    ASSERT_NE(refused, 0);

    kestub::ipc_script("ke_ke_sml_xgpon_mckey_set_call", 0x55);
    uint32_t ret = 0;
    std::string out = printed([&] { ret = ke_omci_tapi_mckey_set(2, 17, key.data()); });
    EXPECT_EQ(ret, 0x55u);
    EXPECT_TRUE(ketest::is_copy_line(out, "ke_omci_tapi_mckey_set", "memcpy_s", refused)) << out;
    ASSERT_EQ(kestub::ipc_calls().size(), 1u);
    EXPECT_EQ(kestub::ipc_calls()[0].request, cat({words({2, 17}), zeros(16)}));
}

// The key line as it must read for key at the line number it carries.
std::string msk_line(const std::string &printed_text, const uint8_t *key)
{
    int line = std::atoi(printed_text.c_str() + std::strlen("[ke_omci_tapi_msk_set("));
    std::string text = "[ke_omci_tapi_msk_set(" + std::to_string(line) + ")]st_msk.auc_key:";
    char hex[8];
    for (int i = 0; i < 16; ++i) {
        std::snprintf(hex, sizeof hex, " %x", unsigned{key[i]});
        text += hex;
    }
    return text + "\n";
}

uint32_t print_call(void *, uint32_t)
{
    std::printf("<call>\n");
    return 0x66;
}

TEST_F(KeysTod, MskLineShowsTheKeyBeforeTheCallWhenTheGateIsOpen)
{
    const uint8_t key[16] = {0x00, 0x01, 0x0A, 0xFF, 0x10, 0x7F, 0x80, 0xAB,
                             0x0F, 0xF0, 0x22, 0x33, 0x44, 0x55, 0x66, 0x99};
    kestub::ipc_serve("ke_ke_sml_xgpon_msk_set_call", print_call);

    kestub::log_set(false);
    uint32_t ret = 0;
    std::string closed = printed([&] { ret = ke_omci_tapi_msk_set(key); });
    EXPECT_EQ(closed, "<call>\n");
    EXPECT_EQ(ret, 0x66u);

    kestub::log_set(true);
    std::string open = printed([&] { ret = ke_omci_tapi_msk_set(key); });
    EXPECT_EQ(ret, 0x66u);
    size_t end = open.find('\n');
    ASSERT_NE(end, std::string::npos);
    std::string line = open.substr(0, end + 1);
    EXPECT_EQ(line, msk_line(line, key));
    EXPECT_EQ(open.substr(end + 1), "<call>\n");
    EXPECT_EQ(line.find("[INFO]"), std::string::npos);
    EXPECT_EQ(kestub::ipc_calls().back().request, std::vector<uint8_t>(key, key + 16));
}

TEST_F(KeysTod, MissingMskIsSentAsZeroWithTheCopyLine)
{
    kestub::ipc_script("ke_ke_sml_xgpon_msk_set_call", 0);
    std::string out = printed([&] { EXPECT_EQ(ke_omci_tapi_msk_set(nullptr), 0u); });
    EXPECT_TRUE(ketest::is_copy_line(out, "ke_omci_tapi_msk_set", "memcpy_s", ketest::kEsNullPtr))
        << out;
    EXPECT_EQ(kestub::ipc_calls()[0].request, zeros(16));
}

TEST_F(KeysTod, AesCmacWritesBackOnlyTheResult)
{
    std::vector<uint8_t> caller = counting(164);
    std::vector<uint8_t> reply = counting(164, 0x80);
    kestub::ipc_script("ke_ke_sml_xgpon_aes_cmac_set_call", 0, reply.data(), reply.size());
    EXPECT_EQ(ke_omci_tapi_aes_cmac(reinterpret_cast<st_aes_cmac *>(caller.data())), 0u);

    std::vector<uint8_t> expected = counting(164);
    std::copy(reply.begin() + 148, reply.end(), expected.begin() + 148);
    EXPECT_EQ(caller, expected);
}

TEST_F(KeysTod, FailedAesCmacLeavesTheCallersRecord)
{
    std::vector<uint8_t> caller = counting(164);
    kestub::ipc_script("ke_ke_sml_xgpon_aes_cmac_set_call", 3);
    EXPECT_EQ(ke_omci_tapi_aes_cmac(reinterpret_cast<st_aes_cmac *>(caller.data())), 1u);
    EXPECT_EQ(caller, counting(164));
}

TEST_F(KeysTod, AesCmacWithoutARecordSendsZeroAndReportsBothCopies)
{
    kestub::ipc_script("ke_ke_sml_xgpon_aes_cmac_set_call", 0);
    std::string out = printed([&] { EXPECT_EQ(ke_omci_tapi_aes_cmac(nullptr), 0u); });
    EXPECT_EQ(kestub::ipc_calls()[0].request, zeros(164));
    size_t first_end = out.find('\n');
    ASSERT_NE(first_end, std::string::npos);
    EXPECT_TRUE(ketest::is_copy_line(out.substr(0, first_end + 1), "ke_omci_tapi_aes_cmac",
                                     "memcpy_s", ketest::kEsNullPtr))
        << out;
    EXPECT_TRUE(ketest::is_copy_line(out.substr(first_end + 1), "ke_omci_tapi_aes_cmac",
                                     "memcpy_s", ketest::kEsNullPtr))
        << out;
}

}  // namespace
