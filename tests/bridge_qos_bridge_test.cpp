// Bridge: records and status rules, learning by read-modify-write, the HGU
// rule of the learning limit and the MAC table copy.
#include "call_cases.h"
#include "ke_omci_tapi/bridge_qos.h"
#include "ke_omci_tapi/device.h"

namespace {

using ketest::call_names;
using ketest::cat;
using ketest::counting;
using ketest::parse_info_line;
using ketest::printed;
using ketest::StatusRule;
using ketest::words;
using ketest::zeros;

constexpr const char *kLearnGet = "ke_ke_sml_br_learn_get_call";
constexpr const char *kLearnSet = "ke_ke_sml_br_learn_set_call";
constexpr const char *kTableGet = "ke_ke_sml_br_table_get_call";

class Bridge : public ketest::StubTest {
protected:
    void TearDown() override
    {
        gst_sysinfo.ui_product_type = 0;
        StubTest::TearDown();
    }
};

TEST_F(Bridge, EachFunctionSendsItsRecordAndMapsItsStatus)
{
    static uint32_t word;
    static std::vector<uint8_t> filter;
    filter = counting(KE_BR_FILTER_LEN, 0x61);
    ketest::check_call_cases({
        {"ke_omci_tapi_br_age_set", "ke_ke_sml_br_age_set_call",
         [] { return ke_omci_tapi_br_age_set(300); }, words({300}), StatusRule::PassThrough},
        {"ke_omci_tapi_br_age_get", "ke_ke_sml_br_age_get_call",
         [] { word = 0x44; return ke_omci_tapi_br_age_get(&word); }, words({0x44}),
         StatusRule::PassThrough},
        {"ke_omci_tapi_br_enable", "ke_ke_sml_br_port_isolate_call",
         [] { word = 0x0101; return ke_omci_tapi_br_enable(&word); }, words({0x0101}),
         StatusRule::PassThrough},
        {"ke_omci_tapi_br_learn_get", kLearnGet,
         [] { return ke_omci_tapi_br_learn_get(3, &word); }, words({3, 0, 0}), StatusRule::Plain},
        {"ke_omci_tapi_br_filter_set", "ke_ke_sml_br_filter_set_call",
         [] { return ke_omci_tapi_br_filter_set(2, filter.data()); }, cat({words({2}), filter}),
         StatusRule::Plain},
        {"ke_omci_tapi_br_filter_del", "ke_ke_sml_br_filter_del_call",
         [] { return ke_omci_tapi_br_filter_del(4, filter.data()); }, cat({words({4}), filter}),
         StatusRule::Plain},
        {"ke_omci_tapi_br_filter_get", "ke_ke_sml_br_filter_get_call",
         [] {
             std::vector<uint8_t> out(KE_BR_FILTER_LEN);
             return ke_omci_tapi_br_filter_get(5, out.data());
         },
         cat({words({5}), zeros(KE_BR_FILTER_LEN)}), StatusRule::Plain},
    });
}

TEST_F(Bridge, InOutWordsHoldTheReply)
{
    struct {
        const char *remote;
        uint32_t (*fn)(uint32_t *);
    } cases[] = {
        {"ke_ke_sml_br_age_get_call", ke_omci_tapi_br_age_get},
        {"ke_ke_sml_br_port_isolate_call", ke_omci_tapi_br_enable},
    };
    for (const auto &c : cases) {
        kestub::ipc_script_reply(c.remote, uint32_t{0x600D});
        uint32_t word = 1;
        EXPECT_EQ(c.fn(&word), 0u) << c.remote;
        EXPECT_EQ(word, 0x600Du) << c.remote;
    }
}

TEST_F(Bridge, LearnGetDeliversTheEnableOnlyOnSuccess)
{
    kestub::ipc_script_reply(kLearnGet, st_br_learn{3, 1, 64});
    uint32_t learn = 9;
    EXPECT_EQ(ke_omci_tapi_br_learn_get(3, &learn), 0u);
    EXPECT_EQ(learn, 1u);

    kestub::ipc_script(kLearnGet, 2);
    EXPECT_EQ(ke_omci_tapi_br_learn_get(3, &learn), 1u);
    EXPECT_EQ(learn, 1u);
}

TEST_F(Bridge, FilterEntryIsCopiedOutOnSuccessAndMissingEntrySendsZero)
{
    st_br_filter reply;
    reply.ui_port = 5;
    std::vector<uint8_t> entry = counting(KE_BR_FILTER_LEN, 0x90);
    std::memcpy(reply.auc_filter, entry.data(), entry.size());
    kestub::ipc_script_reply("ke_ke_sml_br_filter_get_call", reply);
    std::vector<uint8_t> out(KE_BR_FILTER_LEN + 2, 0xEA);
    EXPECT_EQ(ke_omci_tapi_br_filter_get(5, out.data()), 0u);
    EXPECT_EQ(out, cat({entry, {0xEA, 0xEA}}));

    kestub::ipc_script("ke_ke_sml_br_filter_set_call", 0);
    std::string text = printed([] { EXPECT_EQ(ke_omci_tapi_br_filter_set(6, nullptr), 0u); });
    EXPECT_TRUE(ketest::is_copy_line(text, "ke_omci_tapi_br_filter_set", "memcpy_s",
                                     ketest::kEsNullPtr))
        << text;
    EXPECT_EQ(kestub::ipc_calls().back().request, cat({words({6}), zeros(16)}));
}

// Both setters change only their own field and send the others back as
// the service returned them.
struct LearnSetter {
    const char *func;
    uint32_t (*fn)(uint32_t, uint32_t);
    std::vector<uint8_t> written;  // for port 7, value 0x55, read {7, 1, 64}
};

const LearnSetter kSetters[] = {
    {"ke_omci_tapi_br_learn_set", ke_omci_tapi_br_learn_set, words({7, 0x55, 64})},
    {"ke_omci_tapi_br_num_set", ke_omci_tapi_br_num_set, words({7, 1, 0x55})},
};

TEST_F(Bridge, LearningSettersReadThenWriteBackTheWholeRecord)
{
    for (const auto &s : kSetters) {
        kestub::reset();
        kestub::ipc_script_reply(kLearnGet, st_br_learn{7, 1, 64});
        kestub::ipc_script(kLearnSet, 0);
        EXPECT_EQ(s.fn(7, 0x55), 0u) << s.func;
        ASSERT_EQ(call_names(), (std::vector<std::string>{kLearnGet, kLearnSet})) << s.func;
        EXPECT_EQ(kestub::ipc_calls()[0].request, words({7, 0, 0})) << s.func;
        EXPECT_EQ(kestub::ipc_calls()[1].request, s.written) << s.func;
    }
}

TEST_F(Bridge, FailedReadMakesNoWriteAndEachFailureTracesItsOwnLine)
{
    for (const auto &s : kSetters) {
        kestub::reset();
        kestub::log_set(true);
        kestub::ipc_script(kLearnGet, 0x21);
        uint32_t ret = 0;
        std::string read_fail = printed([&] { ret = s.fn(1, 2); });
        EXPECT_EQ(ret, 1u) << s.func;
        EXPECT_EQ(call_names(), std::vector<std::string>{kLearnGet}) << s.func;

        kestub::ipc_script_reply(kLearnGet, st_br_learn{1, 0, 0});
        kestub::ipc_script(kLearnSet, 0x21);
        std::string write_fail = printed([&] { ret = s.fn(1, 2); });
        EXPECT_EQ(ret, 1u) << s.func;
        EXPECT_EQ(kestub::ipc_calls().size(), 3u) << s.func;

        std::string f1, f2;
        int l1 = 0, l2 = 0;
        EXPECT_TRUE(parse_info_line(read_fail, &f1, &l1, 0x21)) << read_fail;
        EXPECT_TRUE(parse_info_line(write_fail, &f2, &l2, 0x21)) << write_fail;
        EXPECT_EQ(f1, s.func);
        EXPECT_EQ(f2, s.func);
        EXPECT_NE(l1, l2) << s.func;
    }
}

TEST_F(Bridge, LearningLimitIsSkippedOnAnHguOnly)
{
    struct {
        uint32_t product;
        size_t num_set_calls;
    } cases[] = {{KE_PRODUCT_SFU, 2}, {KE_PRODUCT_HGU, 0}, {KE_PRODUCT_SBU, 2},
                 {KE_PRODUCT_OTHER, 2}, {7, 2}};
    for (const auto &c : cases) {
        kestub::reset();
        gst_sysinfo.ui_product_type = c.product;
        kestub::ipc_serve(kLearnGet, [](void *, uint32_t) { return 0u; });
        kestub::ipc_serve(kLearnSet, [](void *, uint32_t) { return 0u; });
        EXPECT_EQ(ke_omci_tapi_br_num_set(1, 16), 0u) << c.product;
        EXPECT_EQ(kestub::ipc_calls().size(), c.num_set_calls) << c.product;
        // The enable is applied whatever the product.
        EXPECT_EQ(ke_omci_tapi_br_learn_set(1, 1), 0u) << c.product;
        EXPECT_EQ(kestub::ipc_calls().size(), c.num_set_calls + 2) << c.product;
    }
}

TEST_F(Bridge, HguRuleReadsTheCacheWithoutFetchingIt)
{
    gst_sysinfo.ui_product_type = KE_PRODUCT_HGU;
    EXPECT_EQ(ke_omci_tapi_br_num_set(1, 16), 0u);
    EXPECT_TRUE(kestub::ipc_calls().empty());
    EXPECT_EQ(gst_sysinfo.ui_product_type, KE_PRODUCT_HGU);
}

// A table reply of n entries whose every byte tells entry and field apart.
st_br_table table_reply(uint32_t n)
{
    st_br_table t;
    std::memset(&t, 0xD0, sizeof t);
    t.ui_entry_num = n;
    for (uint32_t i = 0; i < BR_TABLE_MAX; ++i) {
        t.ast_entry[i].ui_info = 0x1000 + i;
        for (int b = 0; b < KE_MAC_LEN; ++b)
            t.ast_entry[i].auc_mac[b] = static_cast<uint8_t>(i * 8 + b);
    }
    return t;
}

TEST_F(Bridge, MacTableCopiesWithinTheReplyTheCapacityAndTheRecord)
{
    struct {
        uint32_t reply_count;
        uint32_t capacity;
        uint32_t written;
    } cases[] = {{10, 4, 4}, {10, 20, 10}, {10, 0, 0}, {10, 10, 10},
                 {32, 40, 32}, {40, 40, 32}, {0xFFFFFFFF, 40, 32}, {0, 20, 0}};
    constexpr size_t kRoom = 40;
    for (const auto &c : cases) {
        SCOPED_TRACE("reply " + std::to_string(c.reply_count) + " capacity " +
                     std::to_string(c.capacity));
        kestub::reset();
        kestub::log_set(true);
        kestub::ipc_script_reply(kTableGet, table_reply(c.reply_count));
        st_br_mac mac[kRoom];
        std::memset(mac, 0xAA, sizeof mac);
        uint32_t count = c.capacity;
        std::string out = printed([&] { EXPECT_EQ(ke_omci_tapi_br_table_get(9, &count, mac), 0u); });
        EXPECT_EQ(out, "");
        EXPECT_EQ(count, c.written);
        for (uint32_t i = 0; i < kRoom; ++i) {
            const auto *b = reinterpret_cast<const uint8_t *>(&mac[i]);
            if (i < c.written) {
                // MAC from reply offset 16 + 16i, the word from 12 + 16i.
                for (int k = 0; k < KE_MAC_LEN; ++k)
                    EXPECT_EQ(mac[i].auc_mac[k], i * 8 + k) << i;
                EXPECT_EQ(mac[i].ui_info, 0x1000 + i) << i;
                EXPECT_EQ(b[6], 0xAA) << i;
                EXPECT_EQ(b[7], 0xAA) << i;
            } else {
                for (size_t k = 0; k < sizeof mac[i]; ++k)
                    EXPECT_EQ(b[k], 0xAA) << i;
            }
        }
        ASSERT_EQ(kestub::ipc_calls().size(), 1u);
        std::vector<uint8_t> request = zeros(sizeof(st_br_table));
        request[8] = 9;
        EXPECT_EQ(kestub::ipc_calls()[0].request, request);
    }
}

TEST_F(Bridge, FailedMacTableReadIsAnEmptyTableWithoutTrace)
{
    kestub::log_set(true);
    kestub::ipc_script(kTableGet, 0x77);
    st_br_mac mac[2];
    std::memset(mac, 0xAA, sizeof mac);
    uint32_t count = 2;
    uint32_t ret = 9;
    std::string out = printed([&] { ret = ke_omci_tapi_br_table_get(1, &count, mac); });
    EXPECT_EQ(ret, 0u);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(out, "");
    const auto *b = reinterpret_cast<const uint8_t *>(mac);
    for (size_t k = 0; k < sizeof mac; ++k)
        EXPECT_EQ(b[k], 0xAA);
}

TEST_F(Bridge, MacTableWithoutAnArrayWritesNoEntry)
{
    kestub::ipc_script_reply(kTableGet, table_reply(3));
    uint32_t count = 5;
    EXPECT_EQ(ke_omci_tapi_br_table_get(1, &count, nullptr), 0u);
    EXPECT_EQ(count, 0u);
    kestub::ipc_script_reply(kTableGet, table_reply(3));
    EXPECT_EQ(ke_omci_tapi_br_table_get(1, nullptr, nullptr), 0u);
}

}  // namespace
