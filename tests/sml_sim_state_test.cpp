// The simulator's state model, driven in process through the library's
// exported functions: mappings, the line, keys, bridge, QoS, counters,
// Ethernet ports and the flash, each a round trip a user would expect.
#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <iterator>

#include "aes_cmac.h"
#include "ke_omci_tapi/bridge_qos.h"
#include "ke_omci_tapi/device.h"
#include "ke_omci_tapi/pon.h"
#include "ke_omci_tapi/stat.h"
#include "platform.h"
#include "sim.h"
#include "stub_test.h"

namespace {

using smlsim::kBadValue;
using smlsim::kFull;
using smlsim::kInUse;
using smlsim::kNoObject;

class SimStateTest : public ketest::StubTest {
protected:
    void SetUp() override
    {
        StubTest::SetUp();
        start(smlsim::default_profile());
        for (const char *file : {"section0.bin", "section1.bin", "boot_flag"})
            std::remove((sim->state().flash.dir + "/" + file).c_str());
    }
    void start(const smlsim::Profile &profile)
    {
        sim = std::make_unique<smlsim::Sim>(profile);
        sim->attach();
    }
    smlsim::SimState &state() { return sim->state(); }

    std::unique_ptr<smlsim::Sim> sim;
};

// One call of a sequence: what it does and the status it must answer.
struct Step {
    const char *what;
    uint32_t status;
    std::function<uint32_t()> run;
};

void run_steps(const std::vector<Step> &steps)
{
    for (const Step &s : steps) {
        SCOPED_TRACE(s.what);
        EXPECT_EQ(s.run(), s.status);
    }
}

st_gem_map_param mapping(uint32_t vlan, uint32_t gemport, uint32_t tcont)
{
    return st_gem_map_param{0x6, vlan, 3, 1, gemport, tcont};
}

TEST_F(SimStateTest, MappingsNameExistingGemPortsAndHoldThem)
{
    uint8_t attr[KE_GEMPORT_ATTR_LEN] = {};
    st_gem_map_param got = mapping(200, 0, 0);
    run_steps({
        {"get before any set", kNoObject, [&] { return ke_omci_tapi_map_get(&got); }},
        {"set to a GEM port that does not exist", 1,
         [] { auto m = mapping(200, 0x101, 1); return ke_omci_tapi_map_set(&m); }},
        {"the GEM port", 0, [&] { return ke_omci_tapi_gemport_set(0x101, attr); }},
        {"set", 0, [] { auto m = mapping(200, 0x101, 1); return ke_omci_tapi_map_set(&m); }},
        {"T-CONT beyond the line's", 1,
         [] { auto m = mapping(201, 0x101, 32); return ke_omci_tapi_map_set(&m); }},
        {"get", 0, [&] { return ke_omci_tapi_map_get(&got); }},
        {"the mapped GEM port cannot go", kInUse, [] { return ke_omci_tapi_gemport_del(0x101); }},
        {"another key is another mapping", kNoObject,
         [] { auto m = mapping(201, 0, 0); return ke_omci_tapi_map_get(&m); }},
        {"delete", 0, [] { auto m = mapping(200, 0x101, 1); return ke_omci_tapi_map_del(&m); }},
        {"delete again", kNoObject,
         [] { auto m = mapping(200, 0x101, 1); return ke_omci_tapi_map_del(&m); }},
        {"now the GEM port goes", 0, [] { return ke_omci_tapi_gemport_del(0x101); }},
    });
    EXPECT_EQ(got.ui_gemport, 0x101u);
    EXPECT_EQ(got.ui_tcont, 1u);
    EXPECT_TRUE(state().map.maps.empty());
}

TEST_F(SimStateTest, LineStartBringsOperationAlarmsAndOpticalStatus)
{
    start(smlsim::default_profile());
    uint32_t sta[5] = {7, 7, 7, 7, 7};
    uint8_t alarm[KE_ALARM_LEN];
    uint8_t param[KE_PON_START_LEN];
    std::memset(param, 0x3c, sizeof param);

    EXPECT_EQ(ke_omci_tapi_optical_attr_get(0, sta), KE_ERR_NOT_OPERATING);
    EXPECT_EQ(sta[0], 7u);
    ASSERT_EQ(ke_omci_tapi_gpon_alarm_get(alarm), 0u);
    EXPECT_EQ(ketest::u32_at(ketest::bytes_of(alarm), 0), 1u);  // loss of signal

    ASSERT_EQ(ke_omci_tapi_pon_start(param), 0u);
    EXPECT_EQ(state().line.regstate, REGSTATE_O5);
    EXPECT_EQ(state().line.start_param[63], 0x3c);
    EXPECT_EQ(ke_omci_tapi_optical_attr_get(0, sta), 0u);
    EXPECT_EQ(std::vector<uint32_t>(sta, sta + 5),
              (std::vector<uint32_t>{11520, 33000, 6000, 20000, 1000}));
    ASSERT_EQ(ke_omci_tapi_gpon_alarm_get(alarm), 0u);
    EXPECT_EQ(ketest::bytes_of(alarm), std::vector<uint8_t>(KE_ALARM_LEN, 0));

    EXPECT_EQ(ke_omci_tapi_pon_stop(), 0u);
    EXPECT_EQ(ke_omci_tapi_optical_attr_get(0, sta), KE_ERR_NOT_OPERATING);
    EXPECT_EQ(ke_omci_tapi_optical_attr_get(1, sta), 0u);  // forced

    uint8_t info[KE_OPTICAL_INFO_LEN];
    ASSERT_EQ(ke_omci_tapi_optical_info_get(info), 0u);
    EXPECT_STREQ(reinterpret_cast<const char *>(info), "KE OPTICS");
    EXPECT_EQ(ketest::u32_at(ketest::bytes_of(info), 48), 1310u);

    uint32_t mode = 2;
    EXPECT_EQ(ke_omci_tapi_gpon_set_mode(&mode), 0u);
    mode = 0;
    EXPECT_EQ(ke_omci_tapi_gponmode_get(&mode), 0u);
    EXPECT_EQ(mode, 2u);
}

TEST_F(SimStateTest, AesCmacMatchesTheKnownAnswers)
{
    const smlsim::Block key = {0x2b, 0x7e, 0x15, 0x16, 0x28, 0xae, 0xd2, 0xa6,
                               0xab, 0xf7, 0x15, 0x88, 0x09, 0xcf, 0x4f, 0x3c};
    const std::vector<uint8_t> msg = {
        0x6b, 0xc1, 0xbe, 0xe2, 0x2e, 0x40, 0x9f, 0x96, 0xe9, 0x3d, 0x7e, 0x11, 0x73,
        0x93, 0x17, 0x2a, 0xae, 0x2d, 0x8a, 0x57, 0x1e, 0x03, 0xac, 0x9c, 0x9e, 0xb7,
        0x6f, 0xac, 0x45, 0xaf, 0x8e, 0x51, 0x30, 0xc8, 0x1c, 0x46, 0xa3, 0x5c, 0xe4,
        0x11, 0xe5, 0xfb, 0xc1, 0x19, 0x1a, 0x0a, 0x52, 0xef, 0xf6, 0x9f, 0x24, 0x45,
        0xdf, 0x4f, 0x9b, 0x17, 0xad, 0x2b, 0x41, 0x7b, 0xe6, 0x6c, 0x37, 0x10};
    struct Case {
        size_t len;
        smlsim::Block cmac;
    };
    const std::vector<Case> cases = {
        {0, {0xbb, 0x1d, 0x69, 0x29, 0xe9, 0x59, 0x37, 0x28, 0x7f, 0xa3, 0x7d, 0x12, 0x9b, 0x75,
             0x67, 0x46}},
        {16, {0x07, 0x0a, 0x16, 0xb4, 0x6b, 0x4d, 0x41, 0x44, 0xf7, 0x9b, 0xdd, 0x9d, 0xd0, 0x4a,
              0x28, 0x7c}},
        {40, {0xdf, 0xa6, 0x67, 0x47, 0xde, 0x9a, 0xe6, 0x30, 0x30, 0xca, 0x32, 0x61, 0x14, 0x97,
              0xc8, 0x27}},
        {64, {0x51, 0xf0, 0xbe, 0xbf, 0x7e, 0x3b, 0x9d, 0x92, 0xfc, 0x49, 0x74, 0x17, 0x79, 0x36,
              0x3c, 0xfe}},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.len);
        EXPECT_EQ(smlsim::aes_cmac(key, msg.data(), c.len), c.cmac);
    }
    // FIPS 197's example block.
    const smlsim::Block plain = {0x32, 0x43, 0xf6, 0xa8, 0x88, 0x5a, 0x30, 0x8d,
                                 0x31, 0x31, 0x98, 0xa2, 0xe0, 0x37, 0x07, 0x34};
    const smlsim::Block cipher = {0x39, 0x25, 0x84, 0x1d, 0x02, 0xdc, 0x09, 0xfb,
                                  0xdc, 0x11, 0x85, 0x97, 0x19, 0x6a, 0x0b, 0x32};
    EXPECT_EQ(smlsim::aes_encrypt(key, plain), cipher);
}

TEST_F(SimStateTest, KeysAndTimeOfDayAreKeptAndChecked)
{
    st_aes_cmac rec;
    for (size_t i = 0; i < sizeof rec; ++i)
        reinterpret_cast<uint8_t *>(&rec)[i] = static_cast<uint8_t>(i);
    const uint8_t msk[16] = {0x2b, 0x7e, 0x15, 0x16, 0x28, 0xae, 0xd2, 0xa6,
                             0xab, 0xf7, 0x15, 0x88, 0x09, 0xcf, 0x4f, 0x3c};
    const uint8_t key8[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    const uint8_t key17[17] = {};
    // 2^32 + 5 seconds, then nanoseconds of one second too many.
    const uint8_t tod[KE_TOD_LEN] = {0, 0, 1, 2, 0, 1, 0, 0, 0, 5, 0, 0, 2, 0};
    const uint8_t bad_tod[KE_TOD_LEN] = {0, 0, 1, 2, 0, 1, 0, 0, 0, 5, 0x3b, 0x9a, 0xca, 0x00};
    run_steps({
        {"CMAC before any master session key", 1, [&] { return ke_omci_tapi_aes_cmac(&rec); }},
        {"master session key", 0, [&] { return ke_omci_tapi_msk_set(msk); }},
        {"CMAC", 0, [&] { return ke_omci_tapi_aes_cmac(&rec); }},
        {"multicast key of 8 bytes", 0, [&] { return ke_omci_tapi_mckey_set(2, 8, key8); }},
        {"multicast key of 17 bytes", kBadValue, [&] { return ke_omci_tapi_mckey_set(3, 17, key17); }},
        {"delete of a key never set", kNoObject, [] { return ke_omci_tapi_mckey_del(3); }},
        {"time of day", 0, [&] { return ke_omci_tapi_time_set(tod); }},
        {"a second of nanoseconds", kBadValue, [&] { return ke_omci_tapi_time_set(bad_tod); }},
    });
    smlsim::Block want = smlsim::aes_cmac(state().line.msk, rec.auc_input, sizeof rec.auc_input);
    EXPECT_EQ(std::memcmp(rec.auc_cmac, want.data(), 16), 0);
    EXPECT_EQ(rec.auc_input[147], 147);  // the input comes back as sent
    ASSERT_EQ(state().line.mckeys.count(2), 1u);
    EXPECT_EQ(state().line.mckeys[2].first, 8u);
    EXPECT_EQ(state().line.mckeys[2].second[7], 8);
    EXPECT_EQ(state().line.mckeys[2].second[8], 0);
    EXPECT_EQ(ke_omci_tapi_mckey_del(2), 0u);
    EXPECT_TRUE(state().line.mckeys.empty());
    EXPECT_EQ(state().line.tod.ui_superframe, 258u);
    EXPECT_EQ(state().line.tod.ui_sec_upper, 1u);
    EXPECT_EQ(state().line.tod.ui_sec_lower, 5u);
}

TEST_F(SimStateTest, BridgeLearningAgeingAndIsolation)
{
    uint32_t learn = 9;
    uint32_t age = 0;
    uint32_t isolate = 2;
    run_steps({
        {"learning is on at first", 0, [&] { return ke_omci_tapi_br_learn_get(1, &learn); }},
        {"switch it off", 0, [] { return ke_omci_tapi_br_learn_set(1, 0); }},
        {"limit", 0, [] { return ke_omci_tapi_br_num_set(1, 3); }},
        {"a port the unit does not have", 1, [] { return ke_omci_tapi_br_learn_set(4, 1); }},
        {"learning is a switch", 1, [] { return ke_omci_tapi_br_learn_set(1, 2); }},
        {"ageing below ten seconds", kBadValue, [] { return ke_omci_tapi_br_age_set(9); }},
        {"ageing", 0, [] { return ke_omci_tapi_br_age_set(600); }},
        {"ageing back", 0, [&] { return ke_omci_tapi_br_age_get(&age); }},
        {"isolation is a switch too", kBadValue, [&] { return ke_omci_tapi_br_enable(&isolate); }},
    });
    EXPECT_EQ(learn, 1u);
    EXPECT_EQ(state().bridge.ports[1].learn, 0u);     // kept by the limit's write
    EXPECT_EQ(state().bridge.ports[1].learn_num, 3u);  // kept by the switch's write
    EXPECT_EQ(age, 600u);
    isolate = 1;
    EXPECT_EQ(ke_omci_tapi_br_enable(&isolate), 0u);
    EXPECT_EQ(state().bridge.isolate, 1u);
}

TEST_F(SimStateTest, MacTablesShowWhatEachPortLearnedWithinItsLimit)
{
    ASSERT_EQ(ke_omci_tapi_br_num_set(2, 3), 0u);
    ASSERT_EQ(ke_omci_tapi_br_learn_set(3, 0), 0u);
    struct Case {
        uint32_t port;
        uint32_t capacity;
        uint32_t entries;
    };
    const std::vector<Case> cases = {
        {0, 32, 2}, {1, 32, 3}, {1, 2, 2}, {2, 32, 3}, {3, 32, 0}, {4, 32, 0},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.port);
        st_br_mac macs[BR_TABLE_MAX] = {};
        uint32_t n = c.capacity;
        EXPECT_EQ(ke_omci_tapi_br_table_get(c.port, &n, macs), 0u);
        ASSERT_EQ(n, c.entries);
        for (uint32_t i = 0; i < n; ++i) {
            const uint8_t mac[6] = {0x02, 0x1b, 0x21, 0x00, static_cast<uint8_t>(c.port),
                                    static_cast<uint8_t>(i + 1)};
            EXPECT_EQ(std::memcmp(macs[i].auc_mac, mac, 6), 0);
            EXPECT_EQ(macs[i].ui_info, 100u);
        }
    }
}

TEST_F(SimStateTest, MacFiltersAreKeyedByTheirAddress)
{
    auto filter = [](uint8_t last, uint8_t action) {
        std::array<uint8_t, KE_BR_FILTER_LEN> f{};
        f = {0x00, 0x11, 0x22, 0x33, 0x44, last, action};
        return f;
    };
    std::array<uint8_t, KE_BR_FILTER_LEN> got{};
    auto a = filter(1, 0), a2 = filter(1, 1), b = filter(2, 0);
    run_steps({
        {"get of a port without filters", 1, [&] { return ke_omci_tapi_br_filter_get(0, got.data()); }},
        {"A", 0, [&] { return ke_omci_tapi_br_filter_set(0, a.data()); }},
        {"B", 0, [&] { return ke_omci_tapi_br_filter_set(0, b.data()); }},
        {"A again, another action", 0, [&] { return ke_omci_tapi_br_filter_set(0, a2.data()); }},
        {"get: the first", 0, [&] { return ke_omci_tapi_br_filter_get(0, got.data()); }},
        {"delete A", 0, [&] { return ke_omci_tapi_br_filter_del(0, a.data()); }},
        {"delete A again", 1, [&] { return ke_omci_tapi_br_filter_del(0, a.data()); }},
    });
    EXPECT_EQ(state().bridge.ports[0].filters, (std::vector<smlsim::FilterEntry>{b}));
    ASSERT_EQ(ke_omci_tapi_br_filter_get(0, got.data()), 0u);
    EXPECT_EQ(got, b);
    for (uint8_t i = 3; i < 10; ++i) {
        auto f = filter(i, 0);
        EXPECT_EQ(ke_omci_tapi_br_filter_set(0, f.data()), 0u);
    }
    auto ninth = filter(10, 0);
    EXPECT_EQ(ke_omci_tapi_br_filter_set(0, ninth.data()), 1u);
    EXPECT_EQ(state().bridge.ports[0].filters.size(), 8u);
}

TEST_F(SimStateTest, RateLimitersAreNumberedByTheService)
{
    const uint32_t car_a[3] = {0, 0, 1000};
    const uint32_t car_b[3] = {0, 0, 2000};
    const uint32_t car_zero[3] = {0, 0, 0};
    uint32_t id_a = 0, id_b = 0, id_c = 0;
    uint32_t read[3] = {5, 5, 5};
    run_steps({
        {"create", 0, [&] { return ke_omci_tapi_car_set(&id_a, car_a); }},
        {"create another", 0, [&] { return ke_omci_tapi_car_set(&id_b, car_b); }},
        {"a rate of zero", 1, [&] { return ke_omci_tapi_car_set(&id_c, car_zero); }},
        {"read the first", 0, [&] { return ke_omci_tapi_car_get(id_a, read); }},
        {"release it", 0, [&] { return ke_omci_tapi_car_release(id_a); }},
        {"release it again", kNoObject, [&] { return ke_omci_tapi_car_release(id_a); }},
        {"read after release", 1, [&] { return ke_omci_tapi_car_get(id_a, read); }},
        {"create takes the freed number", 0, [&] { return ke_omci_tapi_car_set(&id_c, car_b); }},
    });
    EXPECT_EQ(id_a, 1u);
    EXPECT_EQ(id_b, 2u);
    EXPECT_EQ(id_c, 1u);
    EXPECT_EQ(std::vector<uint32_t>(read, read + 3), (std::vector<uint32_t>{5, 5, 1000}));
    for (uint32_t n = 3; n <= 64; ++n)
        ASSERT_EQ(ke_omci_tapi_car_set(&id_c, car_a), 0u) << n;
    EXPECT_EQ(ke_omci_tapi_car_set(&id_c, car_a), 1u);  // all 64 taken
}

TEST_F(SimStateTest, QueuesMarkingDscpAndPolicies)
{
    uint8_t attr[KE_QUEUE_ATTR_LEN];
    for (size_t i = 0; i < sizeof attr; ++i)
        attr[i] = static_cast<uint8_t>(0xa0 + i);
    uint8_t back[KE_QUEUE_ATTR_LEN];
    uint32_t num = 0;
    st_dscp dscp{};
    for (uint32_t point = 0; point < 64; ++point) {
        uint32_t priority = point >> 3;
        std::memcpy(dscp.auc_map + 4 * point, &priority, 4);
    }
    st_dscp bad_dscp = dscp;
    bad_dscp.auc_map[4 * 63] = 8;
    const uint8_t rule[KE_PRI_RULE_LEN] = {1, 2, 3};
    run_steps({
        {"a never-set queue reads zero", 0, [&] { return ke_omci_tapi_queue_get(1, 7, back); }},
        {"queue of a port", 0, [&] { return ke_omci_tapi_queue_set(1, 7, attr); }},
        {"queue beyond the owner's", 1, [&] { return ke_omci_tapi_queue_set(1, 8, attr); }},
        {"queue of a T-CONT", 0, [&] { return ke_omci_tapi_queue_set(0x8000 + 31, 0, attr); }},
        {"an owner that does not exist", 1, [&] { return ke_omci_tapi_queue_num_get(0x8000 + 32, &num); }},
        {"count", 0, [&] { return ke_omci_tapi_queue_num_get(0, &num); }},
        {"DSCP map", 0, [&] { return ke_omci_tapi_dscp_map_set(&dscp); }},
        {"DSCP map with priority 8", 1, [&] { return ke_omci_tapi_dscp_map_set(&bad_dscp); }},
        {"marking rule", 0, [&] { return ke_omci_tapi_pri_marking_set(2, rule); }},
        {"marking rule delete", 0, [&] { return ke_omci_tapi_pri_marking_del(2, rule); }},
        {"marking rule delete again", 1, [&] { return ke_omci_tapi_pri_marking_del(2, rule); }},
        {"T-CONT policy", 0, [] { return ke_omci_tapi_tcont_policy_set(3, 2); }},
        {"T-CONT policy beyond the known", 1, [] { return ke_omci_tapi_tcont_policy_set(3, 3); }},
    });
    EXPECT_EQ(num, 8u);
    ASSERT_EQ(ke_omci_tapi_queue_get(1, 7, back), 0u);
    EXPECT_EQ(std::memcmp(back, attr, sizeof attr), 0);
    EXPECT_EQ(state().qos.dscp[4 * 63], 7);
    EXPECT_EQ(state().qos.tcont_policy[3], 2u);
}

TEST_F(SimStateTest, LineCountersAdvanceWhileTheLineOperates)
{
    uint8_t attr[KE_GEMPORT_ATTR_LEN] = {};
    ASSERT_EQ(ke_omci_tapi_gemport_set(0x120, attr), 0u);
    uint8_t fec[2][20];
    uint32_t tc[2][8], down[2][14], up[2][6], gal[2];
    st_gemport_stat gem[2];
    auto read_all = [&](int i) {
        EXPECT_EQ(ke_omci_tapi_stat_fec_get(fec[i]), 0u);
        EXPECT_EQ(ke_omci_tapi_stat_tc_get(tc[i]), 0u);
        EXPECT_EQ(ke_omci_tapi_stat_downmng_get(down[i]), 0u);
        EXPECT_EQ(ke_omci_tapi_stat_upmng_get(up[i]), 0u);
        EXPECT_EQ(ke_omci_tapi_stat_galeth_get(&gal[i]), 0u);
        EXPECT_EQ(ke_omci_tapi_stat_gemport_get(0x120, &gem[i]), 0u);
    };
    read_all(0);
    read_all(1);
    EXPECT_EQ(std::memcmp(fec[0], fec[1], 20), 0);  // no traffic before the line starts
    EXPECT_EQ(tc[1][3], 0u);

    uint8_t param[KE_PON_START_LEN] = {};
    ASSERT_EQ(ke_omci_tapi_pon_start(param), 0u);
    read_all(0);
    read_all(1);
    EXPECT_GT(ketest::u32_at(ketest::bytes_of(fec[1]), 12), ketest::u32_at(ketest::bytes_of(fec[0]), 12));
    EXPECT_GT(tc[1][3], tc[0][3]);
    EXPECT_GT(down[1][1], down[0][1]);
    EXPECT_GT(up[1][0], up[0][0]);
    EXPECT_GT(gal[1], gal[0]);
    EXPECT_GT(gem[1].ui_counter_2, gem[0].ui_counter_2);
    // The 64-bit received bytes arrive big-endian, already past 2^32.
    auto be64 = [](const uint64_t &v) {
        const auto *b = reinterpret_cast<const uint8_t *>(&v);
        uint64_t out = 0;
        for (int i = 0; i < 8; ++i)
            out = (out << 8) | b[i];
        return out;
    };
    EXPECT_GT(be64(gem[0].ull_counter_1), 0xffffffffull);
    EXPECT_EQ(be64(gem[1].ull_counter_1) - be64(gem[0].ull_counter_1), 1536000u);
    EXPECT_EQ(be64(gem[1].ull_counter_2) - be64(gem[0].ull_counter_2), 768000u);
    EXPECT_EQ(ke_omci_tapi_stat_gemport_get(0x121, &gem[0]), 1u);  // no such GEM port
}

TEST_F(SimStateTest, PortCountersAdvanceWhileTheLinkIsUp)
{
    st_eth_stat eth[2];
    st_brport_stat br[2];
    ASSERT_EQ(ke_omci_tapi_stat_eth_get(2, &eth[0]), 0u);
    ASSERT_EQ(ke_omci_tapi_stat_brport_get(2, &br[0]), 0u);
    ASSERT_EQ(ke_omci_tapi_stat_eth_get(2, &eth[1]), 0u);
    ASSERT_EQ(ke_omci_tapi_stat_brport_get(2, &br[1]), 0u);
    EXPECT_EQ(eth[1].aull_counter[0] - eth[0].aull_counter[0], 2000u);  // two reads between
    EXPECT_GT(br[1].aui_counter[0], br[0].aui_counter[0]);
    EXPECT_GT(br[1].aui_counter[3], br[0].aui_counter[3]);

    ASSERT_EQ(ke_omci_tapi_port_state_set(2, 1), 0u);  // locked: the link goes down
    ASSERT_EQ(ke_omci_tapi_stat_eth_get(2, &eth[0]), 0u);
    ASSERT_EQ(ke_omci_tapi_stat_eth_get(2, &eth[1]), 0u);
    EXPECT_EQ(eth[1].aull_counter[0], eth[0].aull_counter[0]);
    EXPECT_EQ(ke_omci_tapi_stat_eth_get(4, &eth[0]), 1u);  // four user ports: 0 to 3
}

TEST_F(SimStateTest, PortReportsTheConfiguredModeOnceTheLinkIsUp)
{
    uint32_t word = 99;
    struct Case {
        const char *what;
        std::function<uint32_t()> change;
        uint32_t status;
        uint32_t link;
        uint32_t mode;
    };
    const std::vector<Case> cases = {
        {"unlocked, auto", [] { return 0u; }, 0, 1, 0x03},
        {"100 Mbit/s half duplex", [] { return ke_omci_tapi_port_ethmode_set(1, 0x12); }, 0, 1, 0x12},
        {"locked", [] { return ke_omci_tapi_port_state_set(1, 1); }, 0, 0, 0},
        {"mode while locked", [] { return ke_omci_tapi_port_ethmode_set(1, 0x02); }, 0, 0, 0},
        {"unlocked again", [] { return ke_omci_tapi_port_state_set(1, 0); }, 0, 1, 0x02},
        {"a mode that does not exist", [] { return ke_omci_tapi_port_ethmode_set(1, 0x05); }, 1, 1, 0x02},
        {"a state that does not exist", [] { return ke_omci_tapi_port_state_set(1, 2); }, 1, 1, 0x02},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(c.change(), c.status);
        EXPECT_EQ(ke_omci_tapi_port_link_get(1, &word), 0u);
        EXPECT_EQ(word, c.link);
        EXPECT_EQ(ke_omci_tapi_port_ethmode_get(1, &word), 0u);
        EXPECT_EQ(word, c.mode);
    }
    EXPECT_EQ(ke_omci_tapi_port_incar_set(1, 1, 2, 3, 4), 0u);
    EXPECT_EQ(ke_omci_tapi_port_outcar_set(1, 5), 0u);
    EXPECT_EQ(ke_omci_tapi_port_pause_set(1, 1), 0u);
    EXPECT_EQ(ke_omci_tapi_port_loopback_set(1, 3), 0u);
    const st_port_attr &a = state().port.ports[1];
    EXPECT_EQ(std::vector<uint32_t>(a.aui_incar, a.aui_incar + 4), (std::vector<uint32_t>{1, 2, 3, 4}));
    EXPECT_EQ(a.ui_outcar, 5u);
    EXPECT_EQ(a.ui_reserved, 1518u);
    EXPECT_EQ(ke_omci_tapi_port_pause_get(1, &word), 0u);
    EXPECT_EQ(word, 1u);
    EXPECT_EQ(ke_omci_tapi_port_loopback_get(1, &word), 0u);
    EXPECT_EQ(word, 3u);
    EXPECT_EQ(ke_omci_tapi_port_state_get(9, &word), 1u);
}

TEST_F(SimStateTest, PortTypeComesFromTheProfile)
{
    struct Case {
        const char *type;
        uint32_t status;
        uint16_t instid;
    };
    const std::vector<Case> cases = {{"0", 0, 3}, {"2", 0, 0x103}, {"3", KE_PORT_TYPE_UNKNOWN, 0}};
    for (const Case &c : cases) {
        SCOPED_TRACE(c.type);
        smlsim::Profile p = smlsim::default_profile();
        std::string why;
        ASSERT_TRUE(smlsim::apply_profile(std::string("port_type = ") + c.type, &p, &why)) << why;
        start(p);
        uint16_t instid = 0;
        EXPECT_EQ(ke_omci_tapi_port_pptpinstid_get(2, &instid), c.status);
        EXPECT_EQ(instid, c.instid);
    }
}

// ---- The flash --------------------------------------------------------

std::vector<uint8_t> file_bytes(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    return std::vector<uint8_t>((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

std::vector<uint8_t> image_of(size_t len, uint8_t seed)
{
    std::vector<uint8_t> image(len);
    for (size_t i = 0; i < len; ++i)
        image[i] = static_cast<uint8_t>(seed + i * 7 + (i >> 8));
    return image;
}

// Downloads image in shards of shard bytes; the status of the first
// call that failed, else 0.
uint32_t download(const std::vector<uint8_t> &image, size_t shard, uint32_t word)
{
    const uint8_t info[KE_UPGRADE_INFO_LEN] = {1, 2, 3};
    uint32_t status = ke_omci_tapi_upgrade_start(word, info);
    for (size_t at = 0; status == 0 && at < image.size(); at += shard)
        status = ke_omci_tapi_upgrade_write(image.data() + at,
                                            static_cast<uint32_t>(std::min(shard, image.size() - at)));
    return status;
}

TEST_F(SimStateTest, DownloadsWriteTheOtherSectionAndSwitchTheBootFlag)
{
    const std::string dir = state().flash.dir;
    struct Case {
        size_t len;
        size_t shard;
        uint32_t section;
    };
    // The flag starts at 0: section 1 first, then 0, then 1 again.
    const std::vector<Case> cases = {
        {100000, UPGRADE_SHARD_MAX, 1},
        {3 * UPGRADE_SHARD_MAX, UPGRADE_SHARD_MAX, 0},
        {5000, 999, 1},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.len);
        std::vector<uint8_t> image = image_of(c.len, static_cast<uint8_t>(c.section + c.shard));
        EXPECT_EQ(download(image, c.shard, 0x77), 0u);
        EXPECT_EQ(file_bytes(smlsim::section_path(state().flash, c.section)), image);
        std::string out = ketest::printed([] { EXPECT_EQ(ke_omci_tapi_upgrade_stop(), 0u); });
        EXPECT_EQ(out, "\r\n" + std::to_string(c.section) + " section will loading!!\r\n\n");
        EXPECT_EQ(file_bytes(dir + "/boot_flag"), (std::vector<uint8_t>{uint8_t('0' + c.section), '\n'}));
    }
    // The flash outlives the simulator: a new one boots section 1 and
    // downloads into section 0.
    start(smlsim::default_profile());
    uint32_t flag = 0;
    std::vector<uint8_t> last = file_bytes(smlsim::section_path(state().flash, 1));
    EXPECT_EQ(download(image_of(10, 1), 10, 1), 0u);
    EXPECT_EQ(last, file_bytes(smlsim::section_path(state().flash, 1)));  // untouched
    EXPECT_EQ(file_bytes(smlsim::section_path(state().flash, 0)), image_of(10, 1));
    EXPECT_EQ(kestub::ipc_calls().back().name, "ke_ke_upgrade_image_sharding_write_call");
    ASSERT_EQ(ke_ipc_call("ke_ke_upgrade_flag_get_call", &flag, 4), 0u);
    EXPECT_EQ(flag, 1u);
}

TEST_F(SimStateTest, ShardsOutsideADownloadAreRefused)
{
    const uint8_t data[8] = {1};
    st_upgrade_start booted{};
    booted.ui_section = 0;  // the flag is 0: section 0 runs
    st_upgrade_start other{};
    other.ui_section = 1;
    other.ui_upgrade_word = 5;
    st_upgrade_shard stranger{};
    stranger.ui_upgrade_word = 6;
    stranger.ui_len = 4;
    st_upgrade_shard too_long{};
    too_long.ui_upgrade_word = 5;
    too_long.ui_len = UPGRADE_SHARD_MAX + 1;
    uint32_t flag = 2;
    run_steps({
        {"a shard before any start", 1, [&] { return ke_omci_tapi_upgrade_write(data, 8); }},
        {"the running section", kInUse,
         [&] { return ke_ipc_call("ke_ke_upgrade_sharding_start_call", &booted, sizeof booted); }},
        {"the other section", 0,
         [&] { return ke_ipc_call("ke_ke_upgrade_sharding_start_call", &other, sizeof other); }},
        {"a shard of another download", kBadValue,
         [&] { return ke_ipc_call("ke_ke_upgrade_image_sharding_write_call", &stranger, sizeof stranger); }},
        {"a shard longer than a shard", kBadValue,
         [&] { return ke_ipc_call("ke_ke_upgrade_image_sharding_write_call", &too_long, sizeof too_long); }},
        {"a flag naming no section", kBadValue,
         [&] { return ke_ipc_call("ke_ke_upgrade_flag_set_call", &flag, 4); }},
    });
    EXPECT_EQ(state().flash.written, 0u);
    EXPECT_EQ(file_bytes(smlsim::section_path(state().flash, 1)), std::vector<uint8_t>{});
}

}  // namespace
