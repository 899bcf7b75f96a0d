// T-CONT and GEM port provisioning: the procedure each function calls,
// the record it sends and what reaches the caller.
#include "call_cases.h"
#include "ke_omci_tapi/pon.h"

namespace {

using namespace ketest;

class Pon : public StubTest {};

TEST_F(Pon, EachFunctionSendsItsRecordAndDelivers)
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
TEST_F(Pon, WordGettersWithoutAnOutputMakeTheCall)
{
    struct {
        const char *remote;
        Bytes reply;
        uint32_t (*invoke)();
    } cases[] = {
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

}  // namespace
