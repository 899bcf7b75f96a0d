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
    for (uint32_t method : {3u, 0xFFFFFFFFu, 0u}) {
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
        {ke_omci_tapi_voip_conf_set, 0x101, 4, 0, 0x1},
        {ke_omci_tapi_tr069_conf_set, 1, 8, 1, 0x2},    {ke_omci_tapi_tr069_conf_set, 2, 8, 0, 0x2},
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

TEST_F(RemoteMgmt, NullRecordsAreRefusedWithoutATableOperation)
{
    const uint32_t refused[] = {
        ke_omci_tapi_tr069_server_set(nullptr), ke_omci_tapi_tr069_server_get(nullptr),
        ke_omci_tapi_voip_conf_set(nullptr), ke_omci_tapi_voip_conf_get(nullptr),
        ke_omci_tapi_tr069_conf_set(nullptr)};
    for (uint32_t r : refused)
        EXPECT_EQ(r, 1u);
    EXPECT_TRUE(kestub::cm_calls().empty());
}

}  // namespace
