// Global multicast attributes: the code mappings both ways, the four
// records, and what a rejected version or a failed write leaves behind.
#include "mc_fixture.h"

namespace {

using kestub::CmOp;
using ketest::cm_sets;
using ketest::info;
using ketest::record;

class McAttr : public ketest::McTest {};

TEST_F(McAttr, EachVersionAndModeWritesItsFourRecordsAndReadsBack)
{
    struct {
        st_mc_attr in;
        uint32_t ctrl_type, ver, flags[4], quickleave_off;  // tables 819, 820, 826, 821
        uint32_t ver_read, mode_read;
    } cases[] = {
        {{1, 0, 0}, 1, 1, {1, 1, 0, 0}, 1, 2, 0}, {{2, 1, 1}, 0, 1, {0, 0, 1, 1}, 0, 2, 1},
        {{3, 5, 7}, 0, 2, {1, 1, 1, 1}, 0, 3, 0}, {{16, 2, 0}, 0, 1, {1, 1, 1, 1}, 1, 16, 0},
        {{17, ~0u, 1}, 0, 1, {1, 1, 1, 1}, 0, 17, 0},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.in.ui_igmp_ver);
        kestub::reset();
        ASSERT_EQ(ke_omci_tapi_mc_attr_set(&c.in), 0u);
        EXPECT_EQ(ketest::cm_ops(), (ketest::Ops{{CmOp::Set, 819}, {CmOp::Set, 820},
                                                 {CmOp::Set, 826}, {CmOp::Set, 821}}));
        EXPECT_EQ(cm_sets(819)[0], record(16, {{8, c.ctrl_type}, {12, 4}}));
        EXPECT_EQ(cm_sets(820)[0], record(16, {{8, c.ver}, {12, 4}}));
        EXPECT_EQ(cm_sets(826)[0], record(36, {{8, c.flags[0]}, {12, c.flags[1]}, {16, c.flags[2]},
                                               {20, c.flags[3]}, {32, 60}}));
        EXPECT_EQ(cm_sets(821)[0], record(20, {{12, c.quickleave_off}, {16, 8}}));
        st_mc_attr out = {0, 0, 0xCC};
        EXPECT_EQ(ke_omci_tapi_mc_attr_get(&out), 0u);
        EXPECT_EQ(ketest::bytes_of(out), ketest::words({c.ver_read, c.mode_read, 0xCC}));
    }
}

// A rejected version writes nothing and keeps what is stored (failed
// writes are the fault sweep's).
TEST_F(McAttr, RejectedVersionsKeepTheStoredAttributes)
{
    const std::string rejected = info("ke_omci_tapi_mc_attr_set", 0x70000012);
    st_mc_attr before = {17, 1, 1};
    ASSERT_EQ(ke_omci_tapi_mc_attr_set(&before), 0u);
    for (uint32_t version : {0u, 4u, 18u}) {
        for (bool gate : {true, false}) {
            SCOPED_TRACE(testing::Message() << version << " " << gate);
            kestub::reset();
            kestub::log_set(gate);
            st_mc_attr in = {version, 0, 0};
            uint32_t ret = 0;
            std::string out = ketest::printed([&] { ret = ke_omci_tapi_mc_attr_set(&in); });
            EXPECT_EQ(ret, 1u);
            EXPECT_TRUE(kestub::cm_calls().empty());
            EXPECT_EQ(ketest::traced(out), gate ? rejected : "");
            st_mc_attr read = {};
            EXPECT_EQ(ke_omci_tapi_mc_attr_get(&read), 0u);
            EXPECT_EQ(ketest::bytes_of(read), ketest::words({17, 1, 0}));
        }
    }
    EXPECT_EQ(ke_omci_tapi_mc_attr_set(nullptr), 1u);
    EXPECT_EQ(ke_omci_tapi_mc_attr_get(nullptr), 1u);
}

}  // namespace
