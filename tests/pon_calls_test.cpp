// T-CONTs and GEM ports, line security keys, time of day, line control,
// alarms and the optical module: the procedure each function calls, the
// record it sends and what reaches the caller, then each function's own
// difference.
#include "call_cases.h"
#include "ke_omci_tapi/pon.h"

extern "C" int memcpy_s(void *dest, size_t destsz, const void *src, size_t count);

namespace {

using namespace ketest;

class PonLine : public StubTest {};

constexpr const char *kRegState = "ke_ke_sml_gpon_regstate_get_call";
constexpr const char *kOpticalSta = "ke_ke_sml_optical_sta_get_call";
constexpr const char *kOpticalInfo = "ke_ke_sml_optical_info_get_call";

TEST_F(PonLine, TcontsAndGemPortsSendTheirRecordsAndDeliver)
{
    static uint32_t word;
    static uint8_t attr[KE_GEMPORT_ATTR_LEN];
    static const Bytes block = counting(KE_GEMPORT_ATTR_LEN, 0x40);
    auto word_out = [] { return bytes_of(word); };
    auto in_out = [](uint32_t (*fn)(uint32_t *)) {
        return [fn] { word = 0x11; return fn(&word); };
    };
    const Bytes reply = words({0xA1B2C3D4});
    check_call_cases({
        {"ke_ke_sml_gpon_tcont_del_call", [] { return ke_omci_tapi_tcont_del(5); }, words({5})},
        {"ke_ke_sml_gpon_gemblock_set_call", [] { return ke_omci_tapi_gem_block_set(48); },
         words({48})},
        {"ke_ke_sml_gpon_gemport_del_call", [] { return ke_omci_tapi_gemport_del(1024); },
         words({1024})},
        {"ke_ke_sml_gpon_gemport_loopback_set_call",
         [] { return ke_omci_tapi_gemport_loopback_set(1, 2, 3); }, words({1, 2, 3})},
        {"ke_ke_sml_gpon_tcont_set_call", [] { return ke_omci_tapi_tcont_set(2, 0x4321); },
         words({2, 0x4321})},
        // The caller's word goes out and the reply comes back in it.
        {"ke_ke_sml_gpon_dba_mode_get_call", in_out(ke_omci_tapi_dba_mode_get), words({0x11}),
         reply, word_out, reply},
        {"ke_ke_sml_gpon_gemblock_get_call", in_out(ke_omci_tapi_gem_block_get), words({0x11}),
         reply, word_out, reply},
        {"ke_ke_sml_gpon_gemport_num_get_call", in_out(ke_omci_tapi_gemport_num_get),
         words({0x11}), reply, word_out, reply},
        {"ke_ke_sml_gpon_tcont_num_get_call", in_out(ke_omci_tapi_tcont_num_get), words({0x11}),
         reply, word_out, reply},
        {"ke_ke_sml_gpon_mode_get_call", [] { return ke_omci_tapi_gponmode_get(fresh(word)); },
         zeros(4), words({3}), word_out, words({3})},
        // T-CONT 0 is the ONU ID, every other one its alloc ID.
        {"ke_ke_sml_gpon_onuid_get_call", [] { return ke_omci_tapi_tcont_get(0, fresh(word)); },
         words({0}), words({42}), word_out, words({42})},
        {"ke_ke_sml_gpon_tcont_get_call", [] { return ke_omci_tapi_tcont_get(7, fresh(word)); },
         words({7, 0}), words({7, 0x0BEE}), word_out, words({0x0BEE})},
        // GEM port attributes travel unchanged both ways.
        {"ke_ke_sml_gpon_gemport_set_call",
         [] { return ke_omci_tapi_gemport_set(0x1001, block.data()); },
         cat({words({0x1001}), block})},
        {"ke_ke_sml_gpon_gemport_get_call",
         [] { return ke_omci_tapi_gemport_get(0x1001, fresh(attr)); },
         cat({words({0x1001}), zeros(28)}), cat({words({0x1001}), block}),
         [] { return bytes_of(attr); }, block},
    });
}

// A missing output word receives nothing: the call is made and its status
// stands.
TEST_F(PonLine, WordGettersWithoutAnOutputMakeTheCall)
{
    struct { const char *remote; Bytes reply; uint32_t (*invoke)(); } cases[] = {
        {"ke_ke_sml_gpon_mode_get_call", words({2}),
         [] { return ke_omci_tapi_gponmode_get(nullptr); }},
        {"ke_ke_sml_gpon_onuid_get_call", words({9}),
         [] { return ke_omci_tapi_tcont_get(0, nullptr); }},
        {"ke_ke_sml_gpon_tcont_get_call", words({3, 9}),
         [] { return ke_omci_tapi_tcont_get(3, nullptr); }},
    };
    for (const auto &c : cases) {
        kestub::reset();
        kestub::ipc_script(c.remote, 0, c.reply.data(), c.reply.size());
        EXPECT_EQ(c.invoke(), 0u) << c.remote;
        EXPECT_EQ(call_names(), std::vector<std::string>{c.remote});
    }
}

TEST_F(PonLine, EachFunctionSendsItsRecordAndDelivers)
{
    static const Bytes key = counting(16, 0xA0), start = counting(KE_PON_START_LEN);
    // Time of day, most significant byte first; high bits set in every
    // byte, so that any sign extension or swapped byte shows.
    static const Bytes tod = counting(KE_TOD_LEN, 0x80);
    static Bytes cmac, param;
    static uint32_t mode;
    static uint8_t alarm[KE_ALARM_LEN];
    check_call_cases({
        {"ke_ke_sml_xgpon_msk_set_call", [] { return ke_omci_tapi_msk_set(key.data()); }, key},
        {"ke_ke_sml_xgpon_mckey_set_call", [] { return ke_omci_tapi_mckey_set(3, 8, key.data()); },
         cat({words({3, 8}), Bytes(key.begin(), key.begin() + 8), zeros(8)})},
        {"ke_ke_sml_xgpon_mckey_set_call", [] { return ke_omci_tapi_mckey_set(3, 16, key.data()); },
         cat({words({3, 16}), key})},
        {"ke_ke_sml_xgpon_mckey_del_call", [] { return ke_omci_tapi_mckey_del(0x0102); },
         cat({words({0x0102}), zeros(20)})},
        {"ke_ke_sml_gpon_time_set_call", [] { return ke_omci_tapi_time_set(tod.data()); },
         words({0x80818283, 0x00008485, 0x86878889, 0x8A8B8C8D})},
        // Only the result, bytes 148 to 163, comes back.
        {"ke_ke_sml_xgpon_aes_cmac_set_call",
         [] {
             cmac = counting(164);
             return ke_omci_tapi_aes_cmac(reinterpret_cast<st_aes_cmac *>(cmac.data()));
         },
         counting(164), counting(164, 0x80), [] { return cmac; },
         cat({counting(148), counting(16, (0x80 + 148) & 0xFF)})},
        {"ke_ke_sml_gpon_mode_set_call",
         [] { mode = 0x0203; return ke_omci_tapi_gpon_set_mode(&mode); }, words({0x0203}),
         words({9}), [] { return bytes_of(mode); }, words({9})},
        {"ke_ke_sml_gpon_pon_start_call",
         [] { param = start; return ke_omci_tapi_pon_start(param.data()); }, start},
        // No record: a null buffer of length 0.
        {"ke_ke_sml_gpon_pon_stop_call", [] { return ke_omci_tapi_pon_stop(); }, {}, {}, nullptr,
         {}, true},
        {"ke_ke_sml_gpon_alarm_get_call", [] { return ke_omci_tapi_gpon_alarm_get(fresh(alarm)); },
         zeros(KE_ALARM_LEN), counting(KE_ALARM_LEN), [] { return bytes_of(alarm); },
         counting(KE_ALARM_LEN)},
    });
}

TEST_F(PonLine, MulticastKeyAboveSixteenBytesFailsTheCopyYetIsSent)
{
    Bytes key = counting(17, 0x10);
    uint8_t scratch[16];
    const int refused = memcpy_s(scratch, sizeof scratch, key.data(), key.size());
    ASSERT_NE(refused, 0);
    kestub::ipc_script("ke_ke_sml_xgpon_mckey_set_call", 0);
    std::string out = printed([&] { EXPECT_EQ(ke_omci_tapi_mckey_set(2, 17, key.data()), 0u); });
    EXPECT_TRUE(is_copy_line(out, "ke_omci_tapi_mckey_set", "memcpy_s", refused)) << out;
    ASSERT_EQ(kestub::ipc_calls().size(), 1u);
    EXPECT_EQ(kestub::ipc_calls()[0].request, cat({words({2, 17}), zeros(16)}));
}

uint32_t print_call(void *, uint32_t)
{
    std::printf("<call>\n");
    return 0x66;
}

TEST_F(PonLine, MskLineShowsTheKeyBeforeTheCallOnlyWithTheGateOpen)
{
    const uint8_t key[16] = {0x00, 0x01, 0x0A, 0xFF, 0x10, 0x7F, 0x80, 0xAB,
                             0x0F, 0xF0, 0x22, 0x33, 0x44, 0x55, 0x66, 0x99};
    kestub::ipc_serve("ke_ke_sml_xgpon_msk_set_call", print_call);
    kestub::log_set(false);
    EXPECT_EQ(printed([&] { EXPECT_EQ(ke_omci_tapi_msk_set(key), 0x66u); }), "<call>\n");

    kestub::log_set(true);
    std::string out = printed([&] { EXPECT_EQ(ke_omci_tapi_msk_set(key), 0x66u); });
    EXPECT_TRUE(matches_at_line(out, "[ke_omci_tapi_msk_set(%d)]st_msk.auc_key: "
                                     "0 1 a ff 10 7f 80 ab f f0 22 33 44 55 66 99\n<call>\n"))
        << out;
}

// The registration state service: it writes its state even when failing.
uint32_t g_state, g_state_status;
uint32_t serve_state(void *buf, uint32_t len)
{
    std::memcpy(buf, &g_state, std::min<uint32_t>(len, 4));
    return g_state_status;
}

// Which calls the optical status read makes, what it returns and the words
// the caller ends with, by force flag, registration state and statuses.
TEST_F(PonLine, OpticalStatusIsReadOnlyInOperationStateUnlessForced)
{
    const std::vector<uint32_t> kept(5, 7), read = {11, 22, 33, 44, 55}, none(5, 0);
    struct Case {
        uint32_t force, state, state_status, sta_status;
        std::vector<std::string> calls;
        uint32_t ret;
        std::vector<uint32_t> words;
    } cases[] = {
        {0, 5, 0, 0, {kRegState, kOpticalSta}, 0, read},
        {0, 4, 0, 0, {kRegState}, KE_ERR_NOT_OPERATING, kept},
        {0, 6, 0, 0, {kRegState}, KE_ERR_NOT_OPERATING, kept},
        {1, 4, 0, 0, {kOpticalSta}, 0, read},
        {0xFFFFFFFF, 0, 0, 0, {kOpticalSta}, 0, read},
        // Statuses are not examined: a failed state read is state 0 (even
        // when the reply says 5), a failed status read five zero words.
        {0, 5, 0x1234, 0, {kRegState}, KE_ERR_NOT_OPERATING, kept},
        {0, 5, 0, 0x1234, {kRegState, kOpticalSta}, 0, none},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE("force " + std::to_string(c.force) + " state " + std::to_string(c.state));
        kestub::reset();
        kestub::log_set(true);
        g_state = c.state;
        g_state_status = c.state_status;
        kestub::ipc_serve(kRegState, serve_state);
        kestub::ipc_script(kOpticalSta, c.sta_status, read.data(), 20);
        std::vector<uint32_t> out = kept;
        uint32_t ret = 0;
        EXPECT_EQ(printed([&] { ret = ke_omci_tapi_optical_attr_get(c.force, out.data()); }), "");
        EXPECT_EQ(ret, c.ret);
        EXPECT_EQ(out, c.words);
        EXPECT_EQ(call_names(), c.calls);
        for (const auto &call : kestub::ipc_calls())
            EXPECT_EQ(call.request, zeros(call.name == kRegState ? 4 : 20)) << call.name;
    }
}

int line_of(const std::string &optical_info_line)
{
    return std::atoi(optical_info_line.c_str() + std::strlen("ke_omci_tapi_optical_info_get["));
}

// Failures answer with their own code and print their own line, gate or not.
TEST_F(PonLine, OpticalInfoReturnsTheFailingCodeItself)
{
    kestub::log_set(false);
    Bytes info(KE_OPTICAL_INFO_LEN, 0x3C), reply = counting(KE_OPTICAL_INFO_LEN);
    kestub::ipc_script(kOpticalInfo, 0xFFFFFFF9);
    uint32_t ret = 0;
    std::string call_failed = printed([&] { ret = ke_omci_tapi_optical_info_get(info.data()); });
    EXPECT_EQ(ret, 0xFFFFFFF9u);
    EXPECT_TRUE(matches_at_line(call_failed, "ke_omci_tapi_optical_info_get[%d] fail, ret=-7\n"))
        << call_failed;

    kestub::ipc_script(kOpticalInfo, 0);
    std::string copy_failed = printed([&] { ret = ke_omci_tapi_optical_info_get(nullptr); });
    EXPECT_EQ(ret, static_cast<uint32_t>(kEsNullPtr));
    EXPECT_TRUE(matches_at_line(copy_failed, "ke_omci_tapi_optical_info_get[%d] fail, ret=" +
                                                 std::to_string(kEsNullPtr) + "\n"))
        << copy_failed;
    EXPECT_NE(line_of(copy_failed), line_of(call_failed));
    EXPECT_EQ(kestub::log_queries(), 0u);

    kestub::ipc_script(kOpticalInfo, 0, reply.data(), reply.size());
    EXPECT_EQ(printed([&] { EXPECT_EQ(ke_omci_tapi_optical_info_get(info.data()), 0u); }), "");
    EXPECT_EQ(info, reply);
    EXPECT_EQ(kestub::ipc_calls().back().request, zeros(KE_OPTICAL_INFO_LEN));
}

}  // namespace
