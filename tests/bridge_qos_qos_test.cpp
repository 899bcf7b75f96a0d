// QoS: records and status rules, the DSCP map behind the caller's first
// word, the rate-limiter word 2 and the 36-byte queue block.
#include "call_cases.h"
#include "ke_omci_tapi/bridge_qos.h"

namespace {

using ketest::cat;
using ketest::counting;
using ketest::StatusRule;
using ketest::words;
using ketest::zeros;

class Qos : public ketest::StubTest {};

TEST_F(Qos, EachFunctionSendsItsRecordAndMapsItsStatus)
{
    static std::vector<uint8_t> dscp, rule, attr;
    static uint32_t word;
    static uint32_t car[3];
    dscp = cat({words({0xFFFFFFFF}), counting(KE_DSCP_MAP_LEN)});
    rule = counting(KE_PRI_RULE_LEN, 0x30);
    attr = counting(KE_QUEUE_ATTR_LEN, 0x50);
    ketest::check_call_cases({
        {"ke_omci_tapi_dscp_map_set", "ke_ke_sml_dscp_map_set_call",
         [] { return ke_omci_tapi_dscp_map_set(dscp.data()); }, counting(KE_DSCP_MAP_LEN),
         StatusRule::Plain},
        {"ke_omci_tapi_pri_marking_set", "ke_ke_sml_pri_marking_set_call",
         [] { return ke_omci_tapi_pri_marking_set(3, rule.data()); }, cat({words({3}), rule}),
         StatusRule::Plain},
        {"ke_omci_tapi_pri_marking_del", "ke_ke_sml_pri_marking_del_call",
         [] { return ke_omci_tapi_pri_marking_del(4, rule.data()); }, cat({words({4}), rule}),
         StatusRule::Plain},
        {"ke_omci_tapi_car_set", "ke_ke_sml_car_set_call",
         [] {
             car[0] = 0x11, car[1] = 0x22, car[2] = 1000;
             return ke_omci_tapi_car_set(&word, car);
         },
         words({0, 0, 0, 1000, 0, 0}), StatusRule::Plain},
        {"ke_omci_tapi_car_get", "ke_ke_sml_car_get_call",
         [] { return ke_omci_tapi_car_get(6, car); }, words({6, 0, 0, 0, 0, 0}),
         StatusRule::Plain},
        {"ke_omci_tapi_car_release", "ke_ke_sml_car_release_call",
         [] { return ke_omci_tapi_car_release(6); }, words({6}), StatusRule::PassThrough},
        {"ke_omci_tapi_queue_set", "ke_ke_sml_queue_set_call",
         [] { return ke_omci_tapi_queue_set(2, 7, attr.data()); },
         cat({words({2, 7}), attr, zeros(4)}), StatusRule::Plain},
        {"ke_omci_tapi_queue_get", "ke_ke_sml_queue_get_call",
         [] {
             std::vector<uint8_t> out(KE_QUEUE_ATTR_LEN);
             return ke_omci_tapi_queue_get(2, 7, out.data());
         },
         cat({words({2, 7}), zeros(40)}), StatusRule::Plain},
        {"ke_omci_tapi_queue_num_get", "ke_ke_sml_queue_num_get_call",
         [] { word = 0xBAD; return ke_omci_tapi_queue_num_get(8, &word); }, words({8, 0}),
         StatusRule::Plain},
        {"ke_omci_tapi_tcont_policy_set", "ke_ke_sml_gpon_tcont_policy_set_call",
         [] { return ke_omci_tapi_tcont_policy_set(1, 0xC0FFEE); }, words({1, 0xC0FFEE, 0}),
         StatusRule::Plain},
    });
}

TEST_F(Qos, DscpMapIgnoresTheCallersFirstWord)
{
    std::vector<uint8_t> map = counting(KE_DSCP_MAP_LEN, 0x77);
    for (uint32_t head : {0u, 1u, 0xDEADBEEFu}) {
        kestub::reset();
        kestub::ipc_script("ke_ke_sml_dscp_map_set_call", 0);
        std::vector<uint8_t> record = cat({words({head}), map});
        EXPECT_EQ(ke_omci_tapi_dscp_map_set(record.data()), 0u);
        EXPECT_EQ(kestub::ipc_calls()[0].request, map) << head;
    }
}

TEST_F(Qos, MissingDscpRecordSendsAZeroMapWithTheCopyLine)
{
    kestub::ipc_script("ke_ke_sml_dscp_map_set_call", 0);
    std::string out = ketest::printed([] { EXPECT_EQ(ke_omci_tapi_dscp_map_set(nullptr), 0u); });
    EXPECT_TRUE(ketest::is_copy_line(out, "ke_omci_tapi_dscp_map_set", "memcpy_s",
                                     ketest::kEsNullPtr))
        << out;
    EXPECT_EQ(kestub::ipc_calls()[0].request, zeros(KE_DSCP_MAP_LEN));
}

TEST_F(Qos, RateLimiterCreateKeepsTheIdentifierOnlyOnSuccess)
{
    uint32_t car[3] = {0, 0, 512};
    uint32_t id = 0x5A5A;
    kestub::ipc_script("ke_ke_sml_car_set_call", 4);
    EXPECT_EQ(ke_omci_tapi_car_set(&id, car), 1u);
    EXPECT_EQ(id, 0x5A5Au);

    st_car reply = {21, {0, 0}, 512, {0, 0}};
    kestub::ipc_script_reply("ke_ke_sml_car_set_call", reply);
    EXPECT_EQ(ke_omci_tapi_car_set(&id, car), 0u);
    EXPECT_EQ(id, 21u);
    EXPECT_EQ(car[2], 512u);
}

TEST_F(Qos, RateLimiterReadFillsOnlyWordTwo)
{
    st_car reply = {21, {0xA1, 0xA2}, 768, {0xA4, 0xA5}};
    kestub::ipc_script_reply("ke_ke_sml_car_get_call", reply);
    uint32_t car[6] = {1, 2, 3, 4, 5, 6};
    EXPECT_EQ(ke_omci_tapi_car_get(21, car), 0u);
    EXPECT_EQ(std::vector<uint32_t>(car, car + 6), (std::vector<uint32_t>{1, 2, 768, 4, 5, 6}));

    kestub::ipc_script("ke_ke_sml_car_get_call", 4);
    EXPECT_EQ(ke_omci_tapi_car_get(21, car), 1u);
    EXPECT_EQ(car[2], 768u);
}

TEST_F(Qos, QueueBlockIsThirtySixBytesInAFortyByteField)
{
    // The caller's memory goes on after its block; none of it is sent.
    std::vector<uint8_t> caller = cat({counting(KE_QUEUE_ATTR_LEN, 0x50), {0xFF, 0xFF, 0xFF, 0xFF}});
    kestub::ipc_script("ke_ke_sml_queue_set_call", 0);
    EXPECT_EQ(ke_omci_tapi_queue_set(1, 2, caller.data()), 0u);
    const auto &sent = kestub::ipc_calls()[0].request;
    ASSERT_EQ(sent.size(), 48u);
    EXPECT_EQ(std::vector<uint8_t>(sent.begin() + 44, sent.end()), zeros(4));

    // Nor does the reply's tail reach the caller.
    st_queue reply;
    reply.ui_queue_owner = 1;
    reply.ui_queue_id = 2;
    std::vector<uint8_t> tail = counting(40, 0x90);
    std::memcpy(reply.auc_attr, tail.data(), tail.size());
    kestub::ipc_script_reply("ke_ke_sml_queue_get_call", reply);
    std::vector<uint8_t> out(40, 0xEE);
    EXPECT_EQ(ke_omci_tapi_queue_get(1, 2, out.data()), 0u);
    EXPECT_EQ(out, cat({counting(KE_QUEUE_ATTR_LEN, 0x90), {0xEE, 0xEE, 0xEE, 0xEE}}));
}

TEST_F(Qos, GettersLeaveOutputsAloneOnFailureAndDeliverOnSuccess)
{
    kestub::ipc_script("ke_ke_sml_queue_get_call", 3);
    std::vector<uint8_t> attr(KE_QUEUE_ATTR_LEN, 0xEE);
    EXPECT_EQ(ke_omci_tapi_queue_get(1, 2, attr.data()), 1u);
    EXPECT_EQ(attr, std::vector<uint8_t>(KE_QUEUE_ATTR_LEN, 0xEE));

    uint32_t num = 99;
    kestub::ipc_script("ke_ke_sml_queue_num_get_call", 3);
    EXPECT_EQ(ke_omci_tapi_queue_num_get(1, &num), 1u);
    EXPECT_EQ(num, 99u);
    kestub::ipc_script_reply("ke_ke_sml_queue_num_get_call", st_queue_num{1, 8});
    EXPECT_EQ(ke_omci_tapi_queue_num_get(1, &num), 0u);
    EXPECT_EQ(num, 8u);
}

}  // namespace
