// The multicast VLAN slots as they are at load, before the first
// initialisation empties them: every slot holds 0, so VLAN 0 sits in all
// eight.  This program never initialises the multicast state.
#include "mc_fixture.h"

namespace {

using ketest::cm_sets;
using ketest::Records;
using ketest::vlan;
using ketest::vlan_list;
constexpr uint32_t kNone = MC_VLAN_NONE;

class McSlotsAtLoad : public ketest::StubTest {};

// A removal writes the list without every slot that held the VLAN, but
// empties in the port's slots only the last of them.
TEST_F(McSlotsAtLoad, RemovalEmptiesOnlyTheLastMatchingSlot)
{
    const uint32_t port = 1;
    EXPECT_EQ(vlan(ke_omci_tapi_mc_vlan_del, port, 0), 0u);
    EXPECT_EQ(vlan(ke_omci_tapi_mc_vlan_set, port, 5), 0u);
    EXPECT_EQ(vlan(ke_omci_tapi_mc_vlan_del, port, 0), 0u);
    const uint32_t x = kNone;
    EXPECT_EQ(cm_sets(824), (Records{
                                vlan_list(port, {x, x, x, x, x, x, x, x}),
                                vlan_list(port, {0, 0, 0, 0, 0, 0, 0, 5}),
                                vlan_list(port, {x, x, x, x, x, x, x, 5}),
                            }));

    kestub::reset();
    EXPECT_EQ(vlan(ke_omci_tapi_mc_vlan_set, port, 6), 0u);
    EXPECT_EQ(cm_sets(824), Records{vlan_list(port, {0, 0, 0, 0, 0, 0, 6, 5})});
}

}  // namespace
