// The remote-call frame, seen through exported functions: tracing and the
// log gate, the request of a missing block, unserved names.
#include <string>

#include "ke_omci_tapi/pon.h"
#include "stub_test.h"

namespace {

using ketest::parse_info_line;
using ketest::printed;

class Frame : public ketest::StubTest {};



TEST_F(Frame, GateIsAskedAgainBeforeEveryLine)
{
    for (bool open : {true, false, true}) {
        kestub::log_set(open);
        kestub::ipc_script("ke_ke_sml_gpon_mode_get_call", 5);
        uint32_t mode = 0;
        std::string out = printed([&] { ke_omci_tapi_gponmode_get(&mode); });
        EXPECT_EQ(out.empty(), !open) << "gate " << open;
    }
    EXPECT_EQ(kestub::log_queries(), 3u);
}

TEST_F(Frame, EachFailureSiteTracesItsOwnLine)
{
    kestub::log_set(true);
    kestub::ipc_script("ke_ke_sml_gpon_onuid_get_call", 9);
    kestub::ipc_script("ke_ke_sml_gpon_tcont_get_call", 9);
    uint32_t id = 0;
    std::string first = printed([&] { ke_omci_tapi_tcont_get(0, &id); });
    std::string second = printed([&] { ke_omci_tapi_tcont_get(1, &id); });
    std::string f1, f2;
    int l1 = 0, l2 = 0;
    ASSERT_TRUE(parse_info_line(first, &f1, &l1, 9)) << first;
    ASSERT_TRUE(parse_info_line(second, &f2, &l2, 9)) << second;
    EXPECT_EQ(f1, "ke_omci_tapi_tcont_get");
    EXPECT_EQ(f2, "ke_omci_tapi_tcont_get");
    EXPECT_NE(l1, l2);
}



TEST_F(Frame, NullInputBlockSendsAZeroBlockAndPrintsTheCopyLine)
{
    kestub::log_set(false);
    kestub::ipc_script("ke_ke_sml_gpon_gemport_set_call", 0);
    uint32_t ret = 9;
    std::string out = printed([&] { ret = ke_omci_tapi_gemport_set(0x1FF, nullptr); });
    EXPECT_EQ(ret, 0u);
    ASSERT_EQ(kestub::ipc_calls().size(), 1u);
    std::vector<uint8_t> expected(32, 0);
    expected[0] = 0xFF;
    expected[1] = 0x01;
    EXPECT_EQ(kestub::ipc_calls()[0].request, expected);
    EXPECT_TRUE(ketest::is_copy_line(out, "ke_omci_tapi_gemport_set", "memcpy_s",
                                     ketest::kEsNullPtr))
        << out;
}


TEST_F(Frame, UnservedNameIsAFailedCall)
{
    uint32_t mode = 77;
    EXPECT_EQ(ke_omci_tapi_gponmode_get(&mode), 1u);
    EXPECT_EQ(mode, 77u);
    ASSERT_EQ(kestub::ipc_calls().size(), 1u);
    EXPECT_EQ(kestub::ipc_calls()[0].status, kestub::kIpcNoServer);
}

}  // namespace
