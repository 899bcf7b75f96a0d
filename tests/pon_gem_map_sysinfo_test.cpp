// A mapping set before the system information could ever be read: the
// mapping stays with the service, the set reports the failure, and the
// next set fetches again.
#include "gem_map_fixture.h"

namespace {

using ketest::call_names;

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
    EXPECT_EQ(call_names(), (std::vector<std::string>{"ke_ke_sml_gpon_map_set_call",
                                                      "ke_ke_board_info_get_call"}));
    EXPECT_TRUE(kestub::cm_calls().empty());
    // The last line is the set's own, reporting the reader's result.
    size_t last = out.rfind('\n', out.size() - 2);
    ASSERT_NE(last, std::string::npos) << out;
    std::string func;
    int line = 0;
    EXPECT_TRUE(ketest::parse_info_line(out.substr(last + 1), &func, &line, 1)) << out;
    EXPECT_EQ(func, "ke_omci_tapi_map_set");

    kestub::reset();
    kestub::ipc_script("ke_ke_sml_gpon_map_set_call", 0);
    ketest::script_sysinfo("hgu");
    EXPECT_EQ(ke_omci_tapi_map_set(&map), 0u);
    EXPECT_EQ(call_names(),
              (std::vector<std::string>{"ke_ke_sml_gpon_map_set_call", "ke_ke_board_info_get_call",
                                        "ke_ke_sysinfo_data_get_call"}));
    EXPECT_EQ(gst_sysinfo.ui_product_type, KE_PRODUCT_HGU);
    EXPECT_TRUE(kestub::cm_calls().empty());
}

}  // namespace
