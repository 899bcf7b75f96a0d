// Remote management: the TR-069 server record with its mask inside the
// record, the two configuration flags, the configuration method kept in
// memory and the TR-069 WAN status.
#include <functional>

#include "ke_omci_tapi/remote_mgmt.h"
#include "voip_test.h"

namespace {

using ketest::Bytes;
using ketest::Image;
using ketest::Info;

constexpr uint32_t kServer = 524, kServerSize = 2187;
constexpr uint32_t kConf = 668, kConfSize = 16;

class RemoteMgmt : public ketest::StubTest {};

// Text that fills n bytes with no terminator.
std::string filled(char first, size_t n)
{
    std::string s(n, ' ');
    for (size_t i = 0; i < n; ++i)
        s[i] = static_cast<char>(first + i % 29);
    return s;
}

st_tr069_server server(char first)
{
    st_tr069_server s;
    std::memcpy(s.auc_acs_url, filled(first, 256).data(), 256);
    std::memcpy(s.auc_acs_user_name, filled(first + 1, 64).data(), 64);
    std::memcpy(s.auc_acs_password, filled(first + 2, 64).data(), 64);
    return s;
}

// Run first in this program: the method starts at 0 when the library loads.
TEST_F(RemoteMgmt, ConfigurationMethodStartsAtZeroAndKeepsTheLastValueInMemory)
{
    EXPECT_EQ(ke_omci_tapi_voip_cnfig_method_get(), 0u);
    for (uint32_t method : {1u, 3u, 0x12345678u, 0u, 0xFFFFFFFFu}) {
        EXPECT_EQ(ke_omci_tapi_voip_cnfig_method_set(method), 0u);
        EXPECT_EQ(ke_omci_tapi_voip_cnfig_method_get(), method);
    }
    EXPECT_TRUE(kestub::cm_calls().empty());
}

TEST_F(RemoteMgmt, ServerSetSendsTheThreeTextsWithTheMaskInsideTheRecord)
{
    st_tr069_server req = server('a');
    EXPECT_EQ(ke_omci_tapi_tr069_server_set(&req), 0u);
    ASSERT_EQ(kestub::cm_calls().size(), 1u);
    EXPECT_EQ(kestub::cm_calls()[0].op, kestub::CmOp::Set);
    EXPECT_EQ(kestub::cm_calls()[0].table, kServer);
    EXPECT_EQ(kestub::cm_calls()[0].size, kServerSize);
    Bytes expected = Image(kServerSize)
                         .text(12, filled('a', 256))
                         .text(272, filled('b', 64))
                         .text(336, filled('c', 64))
                         .u32(2179, 0x250);
    EXPECT_EQ(kestub::cm_calls()[0].record, expected);
}

TEST_F(RemoteMgmt, ServerRoundTripsByteForByte)
{
    st_tr069_server req = server('A');
    ASSERT_EQ(ke_omci_tapi_tr069_server_set(&req), 0u);
    st_tr069_server out;
    std::memset(&out, 0x5A, sizeof out);
    EXPECT_EQ(ke_omci_tapi_tr069_server_get(&out), 0u);
    EXPECT_EQ(std::memcmp(&out, &req, sizeof out), 0);

    // A stored record is read from its own offsets, not from the request.
    kestub::reset();
    Image stored = Image(kServerSize)
                       .text(12, filled('k', 256))
                       .text(272, filled('l', 64))
                       .text(336, filled('m', 64))
                       .text(400, "tail")
                       .u32(2179, 0x250);
    kestub::cm_preload(kServer, stored.bytes().data(), kServerSize);
    EXPECT_EQ(ke_omci_tapi_tr069_server_get(&out), 0u);
    st_tr069_server expect = server('k');
    EXPECT_EQ(std::memcmp(&out, &expect, sizeof out), 0);
}

TEST_F(RemoteMgmt, ConfigurationFlagsStoreOneOnlyForOneAndEachSelectsItsOwnWord)
{
    struct Case {
        uint32_t (*set)(const uint32_t *);
        uint32_t value;
        uint32_t word_at;
        uint32_t stored;
        uint32_t mask;
    } cases[] = {
        {ke_omci_tapi_voip_conf_set, 1, 4, 1, 0x1},  {ke_omci_tapi_voip_conf_set, 3, 4, 0, 0x1},
        {ke_omci_tapi_voip_conf_set, 0, 4, 0, 0x1},  {ke_omci_tapi_voip_conf_set, 0x101, 4, 0, 0x1},
        {ke_omci_tapi_tr069_conf_set, 1, 8, 1, 0x2}, {ke_omci_tapi_tr069_conf_set, 2, 8, 0, 0x2},
    };
    for (const Case &c : cases) {
        kestub::reset();
        EXPECT_EQ(c.set(&c.value), 0u);
        ASSERT_EQ(ketest::cm_sets().size(), 1u);
        EXPECT_EQ(ketest::cm_sets()[0].first, kConf);
        EXPECT_EQ(ketest::cm_sets()[0].second,
                  Bytes(Image(kConfSize).u32(c.word_at, c.stored).u32(12, c.mask)))
            << c.value;
    }
}

TEST_F(RemoteMgmt, VoipFlagReadsBackAndTheTr069FlagDoesNotDisturbIt)
{
    uint32_t value = 3, out = 7;
    ASSERT_EQ(ke_omci_tapi_voip_conf_set(&value), 0u);
    EXPECT_EQ(ke_omci_tapi_voip_conf_get(&out), 0u);
    EXPECT_EQ(out, 0u);
    value = 1;
    ASSERT_EQ(ke_omci_tapi_voip_conf_set(&value), 0u);
    value = 0;
    ASSERT_EQ(ke_omci_tapi_tr069_conf_set(&value), 0u);
    EXPECT_EQ(ke_omci_tapi_voip_conf_get(&out), 0u);
    EXPECT_EQ(out, 1u);

    // The stored word is reported unchanged.
    kestub::reset();
    kestub::cm_preload(kConf, Image(kConfSize).u32(4, 0x2A).bytes().data(), kConfSize);
    EXPECT_EQ(ke_omci_tapi_voip_conf_get(&out), 0u);
    EXPECT_EQ(out, 0x2Au);
}

TEST_F(RemoteMgmt, TableFailuresReturnOneTraceAndLeaveOutputs)
{
    st_tr069_server req = server('x');
    st_tr069_server out = server('p');
    uint32_t value = 1, word = 0x33;
    struct Case {
        const char *name;
        uint32_t table;
        std::function<uint32_t()> call;
    } cases[] = {
        {"ke_omci_tapi_tr069_server_set", kServer,
         [&] { return ke_omci_tapi_tr069_server_set(&req); }},
        {"ke_omci_tapi_tr069_server_get", kServer,
         [&] { return ke_omci_tapi_tr069_server_get(&out); }},
        {"ke_omci_tapi_voip_conf_set", kConf, [&] { return ke_omci_tapi_voip_conf_set(&value); }},
        {"ke_omci_tapi_voip_conf_get", kConf, [&] { return ke_omci_tapi_voip_conf_get(&word); }},
        {"ke_omci_tapi_tr069_conf_set", kConf, [&] { return ke_omci_tapi_tr069_conf_set(&value); }},
    };
    for (const Case &c : cases) {
        for (bool gate : {true, false}) {
            kestub::reset();
            kestub::cm_preload(kConf, Image(kConfSize).u32(4, 1).bytes().data(), kConfSize);
            kestub::cm_fail(c.table, 0x72300040);
            kestub::log_set(gate);
            uint32_t ret = 0;
            std::string text = ketest::printed([&] { ret = c.call(); });
            EXPECT_EQ(ret, 1u) << c.name;
            if (gate)
                EXPECT_EQ(ketest::infos(text), (std::vector<Info>{{c.name, 0x72300040}}));
            else
                EXPECT_EQ(text, "") << c.name;
        }
    }
    st_tr069_server same = server('p');
    EXPECT_EQ(std::memcmp(&out, &same, sizeof out), 0);
    EXPECT_EQ(word, 0x33u);
}

TEST_F(RemoteMgmt, Tr069WanStatusIsZeroUntilATr069ConnectionIsSet)
{
    uint32_t status = 0xDEAD;
    EXPECT_EQ(ke_omci_tapi_tr069_status_get(&status), 0u);
    EXPECT_EQ(status, 0u);
    EXPECT_EQ(ke_omci_tapi_tr069_status_get(nullptr), 0u);
    EXPECT_TRUE(kestub::cm_calls().empty());
}

TEST_F(RemoteMgmt, NullArgumentsAreRefused)
{
    EXPECT_EQ(ke_omci_tapi_tr069_server_set(nullptr), 1u);
    EXPECT_EQ(ke_omci_tapi_tr069_server_get(nullptr), 1u);
    EXPECT_EQ(ke_omci_tapi_voip_conf_set(nullptr), 1u);
    EXPECT_EQ(ke_omci_tapi_voip_conf_get(nullptr), 1u);
    EXPECT_EQ(ke_omci_tapi_tr069_conf_set(nullptr), 1u);
    EXPECT_TRUE(kestub::cm_calls().empty());
}

}  // namespace
