// A mapping set before the system information could ever be read: the
// set reports the failure, last as its own, without a follow-up.
#include "gem_map_fixture.h"
#include "mc_fixture.h"

namespace {

class GemMapSysinfo : public ketest::StubTest {};

TEST_F(GemMapSysinfo, UnreadableSystemInformationFailsTheSetWithoutFollowUp)
{
    kestub::log_set(true);
    kestub::ipc_script("ke_ke_sml_gpon_map_set_call", 0);
    kestub::ipc_script("ke_ke_board_info_get_call", 0x72200004);
    st_gem_map_param map = {0x1, 0, 0, 0, 0x400, 3};
    uint32_t ret = 0;
    std::string out = ketest::printed([&] { ret = ke_omci_tapi_map_set(&map); });
    EXPECT_EQ(ret, 1u);
    EXPECT_EQ(ketest::call_names(), (std::vector<std::string>{"ke_ke_sml_gpon_map_set_call",
                                                              "ke_ke_board_info_get_call"}));
    EXPECT_TRUE(kestub::cm_calls().empty());
    std::string last = out.substr(out.rfind('\n', out.size() - 2) + 1);
    EXPECT_EQ(ketest::traced(last), ketest::info("ke_omci_tapi_map_set", 1)) << out;
}

}  // namespace
