// The multicast VLAN slots as they are at load, before the first
// initialisation empties them: every slot holds 0, so VLAN 0 sits in all
// eight.  This program never initialises the multicast state.
#include "mc_fixture.h"

namespace {

using ketest::Bytes;
using ketest::cm_sets;
using ketest::Records;
constexpr uint32_t kNone = MC_VLAN_NONE;

class McSlotsAtLoad : public ketest::StubTest {};

Bytes vlan_list(uint32_t port, std::array<uint32_t, MC_VLAN_MAX> slots)
{
    Bytes rec = ketest::record(48, {{8, port}, {44, 12}});
    std::memcpy(rec.data() + 12, slots.data(), sizeof slots);
    return rec;
}

uint32_t vlan(uint32_t (*fn)(const st_mc_vlan *), uint32_t port, uint32_t vid)
{
    st_mc_vlan v = {port, vid};
    return fn(&v);
}

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

    // A removal whose list write fails empties no slot.
    kestub::reset();
    kestub::cm_fail(824, 0x31);
    EXPECT_EQ(vlan(ke_omci_tapi_mc_vlan_del, port, 0), 1u);
    kestub::reset();
    EXPECT_EQ(vlan(ke_omci_tapi_mc_vlan_set, port, 6), 0u);
    EXPECT_EQ(cm_sets(824), Records{vlan_list(port, {0, 0, 0, 0, 0, 0, 6, 5})});
}

}  // namespace
