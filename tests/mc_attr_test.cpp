// Global multicast attributes: version and mode codes, the four table
// writes, and what a failure leaves behind.
#include "mc_fixture.h"

namespace {

using kestub::CmOp;
using ketest::cm_ops;
using ketest::cm_sets;
using ketest::parse_info_line;
using ketest::record;

class McAttr : public ketest::McTest {};

struct AttrCase {
    st_mc_attr in;
    uint32_t ctrl_type;                    // table 819
    uint32_t ver;                          // table 820
    std::array<uint32_t, 4> flags;         // table 826
    uint32_t quickleave_off;               // table 821
    uint32_t ver_read, mode_read;          // ke_omci_tapi_mc_attr_get
    uint32_t ver_internal, mode_internal;  // as the dump shows them
};

const AttrCase kAttrCases[] = {
    {{1, 0, 0}, 1, 1, {1, 1, 0, 0}, 1, 2, 0, 0, 0},
    {{2, 1, 1}, 0, 1, {0, 0, 1, 1}, 0, 2, 1, 0, 1},
    {{3, 5, 7}, 0, 2, {1, 1, 1, 1}, 0, 3, 0, 1, 2},
    {{16, 2, 0}, 0, 1, {1, 1, 1, 1}, 1, 16, 0, 2, 2},
    {{17, 0xFFFFFFFF, 1}, 0, 1, {1, 1, 1, 1}, 0, 17, 0, 3, 2},
};

TEST_F(McAttr, EachVersionAndModeWritesItsFourRecordsAndReadsBack)
{
    for (const AttrCase &c : kAttrCases) {
        SCOPED_TRACE(testing::Message()
                     << "version " << c.in.ui_igmp_ver << " mode " << c.in.ui_mc_mode);
        kestub::reset();
        ketest::preload_ports();
        ASSERT_EQ(ke_omci_tapi_mc_attr_set(&c.in), 0u);

        using Ops = std::vector<std::pair<CmOp, uint32_t>>;
        EXPECT_EQ(cm_ops(),
                  (Ops{{CmOp::Set, 819}, {CmOp::Set, 820}, {CmOp::Set, 826}, {CmOp::Set, 821}}));
        EXPECT_EQ(cm_sets(819).at(0), record(16, {{8, c.ctrl_type}, {12, 4}}));
        EXPECT_EQ(cm_sets(820).at(0), record(16, {{8, c.ver}, {12, 4}}));
        EXPECT_EQ(
            cm_sets(826).at(0),
            record(
                36,
                {{8, c.flags[0]}, {12, c.flags[1]}, {16, c.flags[2]}, {20, c.flags[3]}, {32, 60}}));
        EXPECT_EQ(cm_sets(821).at(0), record(20, {{12, c.quickleave_off}, {16, 8}}));

        st_mc_attr out = {0xAA, 0xBB, 0xCC};
        EXPECT_EQ(ke_omci_tapi_mc_attr_get(&out), 0u);
        EXPECT_EQ(out.ui_igmp_ver, c.ver_read);
        EXPECT_EQ(out.ui_mc_mode, c.mode_read);
        EXPECT_EQ(out.ui_quickleave, 0xCCu) << "the getter fills two words only";

        uint32_t ret = 1;
        std::string dump = ketest::dump_port(0, &ret);
        char expect[128];
        std::snprintf(expect, sizeof expect,
                      "igmp ver [%u]\nigmp mode [%u]\nigmp quickleave [%u]\n", c.ver_internal,
                      c.mode_internal, c.in.ui_quickleave);
        EXPECT_NE(dump.find(expect), std::string::npos) << dump;
    }
}

TEST_F(McAttr, UnknownVersionIsRejectedBeforeAnyWrite)
{
    kestub::log_set(true);
    for (uint32_t ver : {0u, 4u, 15u, 18u, 0xFFFFFFFFu}) {
        kestub::reset();
        kestub::log_set(true);
        st_mc_attr in = {ver, 0, 0};
        uint32_t ret = 0;
        std::string out = ketest::printed([&] { ret = ke_omci_tapi_mc_attr_set(&in); });
        EXPECT_EQ(ret, 1u) << ver;
        EXPECT_TRUE(kestub::cm_calls().empty()) << ver;
        std::string func;
        int line = 0;
        EXPECT_TRUE(parse_info_line(out, &func, &line, 0x70000012)) << out;
        EXPECT_EQ(func, "ke_omci_tapi_mc_attr_set");
    }
}

// A failed write stops the sequence, keeps the earlier tables and the
// stored attributes, and reports under the procedure that made the call.
TEST_F(McAttr, FailedWriteKeepsEarlierTablesAndTheStoredAttributes)
{
    struct {
        uint32_t table;
        size_t writes;  // Set operations made, the failed one included
        std::vector<std::pair<std::string, uint32_t>> lines;
    } cases[] = {
        {819, 1, {{"ke_omci_mc_ctrl_type_set_proc", 0x55}, {"ke_omci_mc_glb_attr_set_proc", 1}}},
        {820, 2, {{"ke_omci_mc_ver_mode_set_proc", 0x55}, {"ke_omci_mc_glb_attr_set_proc", 1}}},
        {826, 3, {{"ke_omci_mc_ver_mode_set_proc", 0x55}, {"ke_omci_mc_glb_attr_set_proc", 1}}},
        {821, 4, {{"ke_omci_mc_glb_attr_set_proc", 0x55}}},
    };
    st_mc_attr before = {17, 1, 1};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.table);
        ASSERT_EQ(ke_omci_tapi_mc_attr_set(&before), 0u);
        for (bool gate : {true, false}) {
            kestub::reset();
            ketest::preload_ports();
            kestub::log_set(gate);
            kestub::cm_fail(c.table, 0x55);
            st_mc_attr in = {3, 0, 0};
            uint32_t ret = 0;
            std::string out = ketest::printed([&] { ret = ke_omci_tapi_mc_attr_set(&in); });
            EXPECT_EQ(ret, 1u);
            ASSERT_EQ(kestub::cm_calls().size(), c.writes);
            EXPECT_EQ(kestub::cm_calls().back().table, c.table);

            if (gate) {
                std::string expect;
                size_t pos = 0;
                for (const auto &l : c.lines) {
                    size_t end = out.find('\n', pos);
                    ASSERT_NE(end, std::string::npos) << out;
                    std::string func;
                    int line = 0;
                    EXPECT_TRUE(
                        parse_info_line(out.substr(pos, end + 1 - pos), &func, &line, l.second))
                        << out;
                    EXPECT_EQ(func, l.first);
                    pos = end + 1;
                }
                EXPECT_EQ(pos, out.size()) << out;
            } else {
                EXPECT_EQ(out, "");
            }

            st_mc_attr read = {};
            EXPECT_EQ(ke_omci_tapi_mc_attr_get(&read), 0u);
            EXPECT_EQ(read.ui_igmp_ver, 17u);
            EXPECT_EQ(read.ui_mc_mode, 1u);
            uint32_t status = 1;
            EXPECT_NE(ketest::dump_port(0, &status).find("igmp quickleave [1]\n"),
                      std::string::npos);
        }
    }
}

TEST_F(McAttr, NullRecordsAreRefused)
{
    EXPECT_EQ(ke_omci_tapi_mc_attr_set(nullptr), 1u);
    EXPECT_EQ(ke_omci_tapi_mc_attr_get(nullptr), 1u);
    EXPECT_TRUE(kestub::cm_calls().empty());
}

}  // namespace
