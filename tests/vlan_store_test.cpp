// Membership bounds and its gated bracket lines, the filter-mode and
// port-mode reads.
#include <string>

#include "../src/vlan/port_mode.h"
#include "ke_omci_tapi/vlan.h"
#include "stub_test.h"

namespace {

using kestub::CmOp;
using ketest::cm_record;
using ketest::matches_at_line;
using ketest::one_cm_call;
using ketest::printed;

class VlanStore : public ketest::StubTest {};

const std::string kNoEntry = std::to_string(static_cast<int>(kestub::kCmNoEntry));

TEST_F(VlanStore, MembershipTakesPortsUpToEightAndTwelveBitVlans)
{
    struct Case {
        uint32_t port, vid;
        bool accepted;
    } const cases[] = {{8, 4095, true}, {9, 0, false}, {0xFFFFFFFF, 1, false},
                       {1, 0xFFFFFFFF, false}};
    for (const Case &c : cases) {
        for (bool del : {false, true}) {
            const std::string name = del ? "ke_omci_tapi_vlan_del" : "ke_omci_tapi_vlan_set";
            SCOPED_TRACE(name + " " + std::to_string(c.port) + "/" + std::to_string(c.vid));
            std::vector<uint8_t> rec = cm_record(20, {{8, c.port}, {12, c.vid}});
            for (bool open : {true, false}) {
                kestub::reset();
                kestub::cm_preload(808, rec.data(), rec.size());  // for the removal to find
                kestub::log_set(open);
                uint32_t ret = 9;
                std::string out = printed([&] {
                    ret = del ? ke_omci_tapi_vlan_del(c.port, c.vid)
                              : ke_omci_tapi_vlan_set(c.port, c.vid);
                });
                if (c.accepted) {
                    EXPECT_EQ(ret, 0u);
                    EXPECT_TRUE(one_cm_call(del ? CmOp::Del : CmOp::Set, 808, rec));
                    EXPECT_EQ(out, "");
                    continue;
                }
                EXPECT_EQ(ret, 0x70000000u);
                EXPECT_TRUE(kestub::cm_calls().empty());
                std::string line = "[" + name + "(%d)]" + name +
                                   "[%d] parameter error, config port=" +
                                   std::to_string(c.port) + ",vid=" + std::to_string(c.vid) + "\n";
                EXPECT_TRUE(matches_at_line(out, open ? line : "")) << out;
            }
        }
    }
}

TEST_F(VlanStore, MembershipFailureIsABracketLineBehindTheGateAndStillZero)
{
    for (bool open : {true, false}) {
        kestub::reset();
        kestub::log_set(open);
        kestub::cm_fail(808, 0xFFFFFFFE);
        uint32_t set = 9, del = 9;
        std::string set_out = printed([&] { set = ke_omci_tapi_vlan_set(2, 100); });
        std::string del_out = printed([&] { del = ke_omci_tapi_vlan_del(2, 100); });
        EXPECT_EQ(set, 0u);
        EXPECT_EQ(del, 0u);  // nothing stored: the store refuses the removal
        EXPECT_EQ(kestub::log_queries(), 2u);
        EXPECT_TRUE(matches_at_line(set_out, open ? "[ke_omci_tapi_vlan_set(%d)]ke_omci_tapi_"
                                                    "vlan_set[%d] config port=2,vid=100\n"
                                                  : ""))
            << set_out;
        EXPECT_TRUE(matches_at_line(del_out, open ? "[ke_omci_tapi_vlan_del(%d)]ke_omci_tapi_"
                                                    "vlan_del[%d] del port=2,vid=100 fail, ret=" +
                                                        kNoEntry + "\n"
                                                  : ""))
            << del_out;
    }
}

TEST_F(VlanStore, FilterModeReadsBackAndAFailedReadLeavesTheOutput)
{
    ke_omci_tapi_vlan_filter_set(3, 0x10);
    ke_omci_tapi_vlan_filter_set(4, 0x20);
    uint32_t mode = 0;
    EXPECT_EQ(ke_omci_tapi_vlan_filter_get(4, &mode), 0u);
    EXPECT_EQ(mode, 0x20u);
    EXPECT_EQ(kestub::cm_calls().back().record, cm_record(20, {{8, 4}}));  // key, zero mask

    kestub::log_set(false);
    mode = 0xCAFEF00D;
    uint32_t ret = 9;
    std::string out = printed([&] { ret = ke_omci_tapi_vlan_filter_get(5, &mode); });
    EXPECT_EQ(ret, 0u);
    EXPECT_EQ(mode, 0xCAFEF00Du);
    EXPECT_TRUE(matches_at_line(out, "ke_omci_tapi_vlan_filter_get[%d] fail, ret=" + kNoEntry +
                                         "\n"))
        << out;
    EXPECT_EQ(ke_omci_tapi_vlan_filter_get(3, nullptr), 0u);
}

TEST_F(VlanStore, OnlyAStoredModeOfOneIsSfuAndAFailedReadIsHgu)
{
    for (uint32_t mode : {1u, 0u, 2u, 0x101u}) {
        kestub::reset();
        std::vector<uint8_t> rec = cm_record(52, {{8, 2}, {44, mode}, {48, 16}});
        kestub::cm_preload(834, rec.data(), rec.size());
        EXPECT_EQ(ke_omci_tapi_check_port_mode_is_sfu(2), mode == 1 ? 1u : 0u) << mode;
        EXPECT_EQ(ke::vlan::port_is_sfu(2), mode == 1) << mode;
        // The read carries the port and the mode's mask.
        EXPECT_EQ(kestub::cm_calls()[0].op, CmOp::Get);
        EXPECT_EQ(kestub::cm_calls()[0].record, cm_record(52, {{8, 2}, {48, 16}}));
    }
    kestub::cm_fail(834, 0xFFFFFFFF);
    bool sfu = true;
    std::string out = printed([&] { sfu = ke::vlan::port_is_sfu(2); });
    EXPECT_FALSE(sfu);
    EXPECT_TRUE(
        matches_at_line(out, "ke_omci_tapi_check_port_mode_is_sfu[%d] fail, port_id=2, ret=-1\n"))
        << out;
    EXPECT_EQ(kestub::log_queries(), 0u);
}

}  // namespace
