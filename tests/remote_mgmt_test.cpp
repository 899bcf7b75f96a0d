// Remote management: the TR-069 server record with its mask inside the
// record, the two configuration flags, the configuration method kept in
// memory and the TR-069 WAN status.
#include <functional>

#include "ke_omci_tapi/remote_mgmt.h"
#include "voip_test.h"

namespace {

using ketest::Bytes;
using ketest::filled;
using ketest::Image;

class RemoteMgmt : public ketest::StubTest {};

st_tr069_server server(char first)
{
    st_tr069_server s;
    std::memcpy(s.auc_acs_url, filled(first, 256).data(), 256);
    std::memcpy(s.auc_acs_user_name, filled(first + 1, 64).data(), 64);
    std::memcpy(s.auc_acs_password, filled(first + 2, 64).data(), 64);
    return s;
}

// First in this program: the method is 0 from load until it is set.
TEST_F(RemoteMgmt, ConfigurationMethodStartsAtZeroAndKeepsTheLastValueInMemory)
{
    EXPECT_EQ(ke_omci_tapi_voip_cnfig_method_get(), 0u);
    for (uint32_t method : {1u, 3u, 0x12345678u, 0u, 0xFFFFFFFFu}) {
        EXPECT_EQ(ke_omci_tapi_voip_cnfig_method_set(method), 0u);
        EXPECT_EQ(ke_omci_tapi_voip_cnfig_method_get(), method);
    }
    uint32_t status = 0xDEAD;  // no TR-069 connection has been set
    EXPECT_EQ(ke_omci_tapi_tr069_status_get(&status), 0u);
    EXPECT_EQ(status, 0u);
    EXPECT_EQ(ke_omci_tapi_tr069_status_get(nullptr), 0u);
    EXPECT_TRUE(kestub::cm_calls().empty());
}

// The URL fills its 256 bytes with no terminator; the mask sits at 2179
// with four zero bytes after it.
TEST_F(RemoteMgmt, ServerTextsAreStoredAndReadBackByteForByte)
{
    st_tr069_server req = server('a');
    EXPECT_EQ(ke_omci_tapi_tr069_server_set(&req), 0u);
    Bytes expected = Image(2187)
                         .text(12, filled('a', 256))
                         .text(272, filled('b', 64))
                         .text(336, filled('c', 64))
                         .u32(2179, 0x250);
    EXPECT_EQ(ketest::cm_sets(), (std::vector<std::pair<uint32_t, Bytes>>{{524, expected}}));

    st_tr069_server out;
    std::memset(&out, 0x5A, sizeof out);
    EXPECT_EQ(ke_omci_tapi_tr069_server_get(&out), 0u);
    EXPECT_EQ(std::memcmp(&out, &req, sizeof out), 0);
}

TEST_F(RemoteMgmt, FlagsStoreOneOnlyForOneAndEachWritesOnlyItsOwnWord)
{
    struct Case {
        uint32_t (*set)(const uint32_t *);
        uint32_t value, word_at, stored, mask;
    } cases[] = {
        {ke_omci_tapi_voip_conf_set, 1, 4, 1, 0x1},     {ke_omci_tapi_voip_conf_set, 3, 4, 0, 0x1},
        {ke_omci_tapi_voip_conf_set, 0x101, 4, 0, 0x1}, {ke_omci_tapi_tr069_conf_set, 1, 8, 1, 0x2},
        {ke_omci_tapi_tr069_conf_set, 2, 8, 0, 0x2},
    };
    for (const Case &c : cases) {
        kestub::reset();
        EXPECT_EQ(c.set(&c.value), 0u);
        Bytes expected = Image(16).u32(c.word_at, c.stored).u32(12, c.mask);
        EXPECT_EQ(ketest::cm_sets(), (std::vector<std::pair<uint32_t, Bytes>>{{668, expected}}))
            << c.value;
    }
    // Through the store: the VoIP flag reads back, the TR-069 flag leaves it.
    kestub::reset();
    uint32_t one = 1, zero = 0, out = 7;
    ASSERT_EQ(ke_omci_tapi_voip_conf_set(&one), 0u);
    ASSERT_EQ(ke_omci_tapi_tr069_conf_set(&zero), 0u);
    EXPECT_EQ(ke_omci_tapi_voip_conf_get(&out), 0u);
    EXPECT_EQ(out, 1u);
}

TEST_F(RemoteMgmt, TableFailuresReturnOneTraceAndLeaveOutputs)
{
    st_tr069_server req = server('x'), out = server('p');
    uint32_t value = 1, word = 0x33;
    struct Case {
        const char *name;
        uint32_t table;
        std::function<uint32_t()> call;
    } cases[] = {
#define CASE(fn, table, arg)                                                                       \
    {                                                                                              \
#fn, table, [&] { return fn(arg); }                                                        \
    }
        CASE(ke_omci_tapi_tr069_server_set, 524, &req),
        CASE(ke_omci_tapi_tr069_server_get, 524, &out),
        CASE(ke_omci_tapi_voip_conf_set, 668, &value),
        CASE(ke_omci_tapi_voip_conf_get, 668, &word),
        CASE(ke_omci_tapi_tr069_conf_set, 668, &value),
#undef CASE
    };
    for (const Case &c : cases) {
        kestub::reset();
        ketest::preload(668, Image(16).u32(4, 1));
        ketest::preload(524, Image(2187));
        kestub::cm_fail(c.table, 0x72300040);
        kestub::log_set(true);
        uint32_t ret = 0;
        std::string text = ketest::printed([&] { ret = c.call(); });
        EXPECT_EQ(ret, 1u) << c.name;
        EXPECT_EQ(ketest::infos(text),
                  std::vector<std::string>{std::string(c.name) + "/0x72300040"});
    }
    st_tr069_server same = server('p');
    EXPECT_EQ(std::memcmp(&out, &same, sizeof out), 0);
    EXPECT_EQ(word, 0x33u);

    kestub::reset();
    const uint32_t refused[] = {
        ke_omci_tapi_tr069_server_set(nullptr), ke_omci_tapi_tr069_server_get(nullptr),
        ke_omci_tapi_voip_conf_set(nullptr), ke_omci_tapi_voip_conf_get(nullptr),
        ke_omci_tapi_tr069_conf_set(nullptr)};
    for (uint32_t r : refused)
        EXPECT_EQ(r, 1u);
    EXPECT_TRUE(kestub::cm_calls().empty());
}

}  // namespace
