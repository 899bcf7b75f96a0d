// Bridge and QoS: records and deliveries, learning by read-modify-write,
// the HGU rule of the learning limit.  The MAC table copy is bounds_test's.
#include "call_cases.h"
#include "ke_omci_tapi/bridge_qos.h"
#include "ke_omci_tapi/device.h"

namespace {

using namespace ketest;

constexpr const char *kLearnGet = "ke_ke_sml_br_learn_get_call";
constexpr const char *kLearnSet = "ke_ke_sml_br_learn_set_call";

class BridgeQos : public StubTest {
protected:
    void TearDown() override
    {
        gst_sysinfo.ui_product_type = 0;
        StubTest::TearDown();
    }
};

TEST_F(BridgeQos, EachFunctionSendsItsRecordAndDelivers)
{
    // The DSCP record's first word is not sent, nor the caller's memory
    // after the 36-byte queue block.
    static const Bytes filter = counting(KE_BR_FILTER_LEN, 0x61), rule = counting(16, 0x30),
                       dscp = cat({words({0xFFFFFFFF}), counting(256)}),
                       attr = cat({counting(36, 0x50), {0xFF, 0xFF, 0xFF, 0xFF}});
    static uint32_t word, car_in[3] = {0x11, 0x22, 1000}, car[6];
    static uint8_t entry[KE_BR_FILTER_LEN], queue[40];
    auto word_out = [] { return bytes_of(word); };
    check_call_cases({
        {"ke_ke_sml_br_age_set_call", [] { return ke_omci_tapi_br_age_set(300); }, words({300})},
        {"ke_ke_sml_br_age_get_call", [] { word = 0x44; return ke_omci_tapi_br_age_get(&word); },
         words({0x44}), words({0x600D}), word_out, words({0x600D})},
        {"ke_ke_sml_br_port_isolate_call",
         [] { word = 0x0101; return ke_omci_tapi_br_enable(&word); }, words({0x0101}),
         words({0x600D}), word_out, words({0x600D})},
        {kLearnGet, [] { return ke_omci_tapi_br_learn_get(3, fresh(word)); }, words({3, 0, 0}),
         words({3, 1, 64}), word_out, words({1})},
        {"ke_ke_sml_br_filter_set_call",
         [] { return ke_omci_tapi_br_filter_set(2, filter.data()); }, cat({words({2}), filter})},
        {"ke_ke_sml_br_filter_del_call",
         [] { return ke_omci_tapi_br_filter_del(4, filter.data()); }, cat({words({4}), filter})},
        {"ke_ke_sml_br_filter_get_call", [] { return ke_omci_tapi_br_filter_get(5, fresh(entry)); },
         cat({words({5}), zeros(16)}), cat({words({5}), filter}), [] { return bytes_of(entry); },
         filter},
        {"ke_ke_sml_dscp_map_set_call", [] { return ke_omci_tapi_dscp_map_set(dscp.data()); },
         counting(256)},
        {"ke_ke_sml_pri_marking_set_call",
         [] { return ke_omci_tapi_pri_marking_set(3, rule.data()); }, cat({words({3}), rule})},
        {"ke_ke_sml_pri_marking_del_call",
         [] { return ke_omci_tapi_pri_marking_del(4, rule.data()); }, cat({words({4}), rule})},
        // The create sends only the caller's word 2, at offset 12.
        {"ke_ke_sml_car_set_call", [] { return ke_omci_tapi_car_set(fresh(word), car_in); },
         words({0, 0, 0, 1000, 0, 0}), words({21, 0, 0, 1000, 0, 0}), word_out, words({21})},
        // The read fills only the caller's word 2.
        {"ke_ke_sml_car_get_call", [] { return ke_omci_tapi_car_get(6, fresh(car)); },
         words({6, 0, 0, 0, 0, 0}), words({6, 1, 2, 768, 3, 4}), [] { return bytes_of(car); },
         cat({Bytes(8, kUntouched), words({768}), Bytes(12, kUntouched)})},
        {"ke_ke_sml_car_release_call", [] { return ke_omci_tapi_car_release(6); }, words({6})},
        {"ke_ke_sml_queue_set_call", [] { return ke_omci_tapi_queue_set(2, 7, attr.data()); },
         cat({words({2, 7}), counting(36, 0x50), zeros(4)})},
        {"ke_ke_sml_queue_get_call", [] { return ke_omci_tapi_queue_get(2, 7, fresh(queue)); },
         cat({words({2, 7}), zeros(40)}), cat({words({2, 7}), counting(40, 0x90)}),
         [] { return bytes_of(queue); }, cat({counting(36, 0x90), Bytes(4, kUntouched)})},
        {"ke_ke_sml_queue_num_get_call", [] { return ke_omci_tapi_queue_num_get(8, fresh(word)); },
         words({8, 0}), words({8, 5}), word_out, words({5})},
        {"ke_ke_sml_gpon_tcont_policy_set_call",
         [] { return ke_omci_tapi_tcont_policy_set(1, 0xC0FFEE); }, words({1, 0xC0FFEE, 0})},
    });
}

// Each setter changes its own field and sends the others back as read.
TEST_F(BridgeQos, LearningSettersReadModifyWrite)
{
    struct {
        uint32_t (*fn)(uint32_t, uint32_t);
        Bytes written;  // for port 7, value 0x55, read {7, 1, 64}
    } setters[] = {
        {ke_omci_tapi_br_learn_set, words({7, 0x55, 64})},
        {ke_omci_tapi_br_num_set, words({7, 1, 0x55})},
    };
    for (const auto &s : setters) {
        kestub::reset();
        kestub::ipc_script_reply(kLearnGet, st_br_learn{7, 1, 64});
        kestub::ipc_script(kLearnSet, 0);
        EXPECT_EQ(s.fn(7, 0x55), 0u);
        ASSERT_EQ(call_names(), (std::vector<std::string>{kLearnGet, kLearnSet}));
        EXPECT_EQ(kestub::ipc_calls()[0].request, words({7, 0, 0}));
        EXPECT_EQ(kestub::ipc_calls()[1].request, s.written);
    }
}

// A failed table call is an empty table (its status is the fault sweep's).
TEST_F(BridgeQos, FailedMacTableReadCountsNothing)
{
    kestub::ipc_script("ke_ke_sml_br_table_get_call", 0x77);
    st_br_mac mac[4];
    uint32_t count = 4;
    ke_omci_tapi_br_table_get(9, &count, mac);
    EXPECT_EQ(count, 0u);
}

// On an HGU the learning limit makes no call (the fault sweep's); the
// learning flag still does, and on any other product both do.
TEST_F(BridgeQos, LearningLimitIsSkippedOnAnHguOnly)
{
    for (uint32_t product : {KE_PRODUCT_HGU, KE_PRODUCT_SBU}) {
        kestub::reset();
        gst_sysinfo.ui_product_type = product;
        kestub::ipc_serve_default([](void *, uint32_t) { return 0u; });
        EXPECT_EQ(ke_omci_tapi_br_num_set(1, 16), 0u) << product;
        EXPECT_EQ(ke_omci_tapi_br_learn_set(1, 1), 0u) << product;
        EXPECT_EQ(kestub::ipc_calls().size(), product == KE_PRODUCT_HGU ? 2u : 4u) << product;
        EXPECT_EQ(gst_sysinfo.ui_product_type, product);  // read, never fetched
    }
}

}  // namespace
