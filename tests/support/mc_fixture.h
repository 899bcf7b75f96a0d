// Multicast test support.  The library's multicast state lives as long as
// the process, so every test starts from a baseline written through the
// exported functions: a board of kMcPorts user ports, every port's VLANs,
// ranges and IGMP settings cleared, and the stand-in's tables holding an
// empty range record and an HGU port-mode record for each port.
#ifndef KE_TEST_MC_FIXTURE_H
#define KE_TEST_MC_FIXTURE_H

#include <array>
#include <utility>

#include "ke_omci_tapi/mc.h"
#include "stub_test.h"

// The served multicast dump: server entry and client stub.
extern "C" uint32_t ke_ke_omci_mc_param_get_call(void *buf, uint32_t len);
extern "C" uint32_t ke_omci_mc_param_get(void *req);

namespace ketest {

inline constexpr uint32_t kMcPorts = 4;
inline constexpr uint32_t kRangeTab = 817;
inline constexpr uint32_t kRangeSize = 1744;
inline constexpr uint32_t kPortInfoTab = 834;

// A record of size bytes, zero but for the (offset, word) pairs given.
inline std::vector<uint8_t> record(size_t size,
                                   std::initializer_list<std::pair<uint32_t, uint32_t>> fields)
{
    std::vector<uint8_t> rec(size, 0);
    for (const auto &f : fields)
        std::memcpy(rec.data() + f.first, &f.second, 4);
    return rec;
}

inline void put_u32(std::vector<uint8_t> &rec, size_t off, uint32_t v)
{
    std::memcpy(rec.data() + off, &v, 4);
}

// The configuration-manager operations since reset, as (op, table).
inline std::vector<std::pair<kestub::CmOp, uint32_t>> cm_ops()
{
    std::vector<std::pair<kestub::CmOp, uint32_t>> ops;
    for (const auto &c : kestub::cm_calls())
        ops.emplace_back(c.op, c.table);
    return ops;
}

// The records handed to Set on table, in order.
inline std::vector<std::vector<uint8_t>> cm_sets(uint32_t table)
{
    std::vector<std::vector<uint8_t>> sets;
    for (const auto &c : kestub::cm_calls())
        if (c.op == kestub::CmOp::Set && c.table == table)
            sets.push_back(c.record);
    return sets;
}

// The stored record of a port-keyed table, or an empty vector.
inline std::vector<uint8_t> cm_entry(uint32_t table, uint32_t port)
{
    for (const auto &e : kestub::cm_entries(table))
        if (u32_at(e, 8) == port)
            return e;
    return {};
}

inline void preload_port_mode(uint32_t port, uint32_t sfu_mode)
{
    auto rec = record(52, {{8, port}, {44, sfu_mode}, {48, 16}});
    kestub::cm_preload(kPortInfoTab, rec.data(), rec.size());
}

inline void preload_empty_ranges(uint32_t port)
{
    auto rec = record(kRangeSize, {{8, port}, {kRangeSize - 4, 12}});
    kestub::cm_preload(kRangeTab, rec.data(), rec.size());
}

// Runs the first-use initialisation with a board of ports user ports;
// once the library holds a port count this makes no call.
inline void init_multicast(uint32_t ports)
{
    std::array<uint8_t, 956> board{};
    std::memcpy(board.data() + 4, &ports, 4);
    kestub::ipc_script("ke_ke_sysinfo_data_get_call", 0);
    kestub::ipc_script("ke_ke_board_info_get_call", 0, board.data(), board.size());
    for (uint32_t port = 0; port < MC_PORT_MAX; ++port)
        preload_empty_ranges(port);
    ke_omci_mc_data_init();
}

inline void preload_ports()
{
    for (uint32_t port = 0; port < MC_PORT_MAX; ++port) {
        preload_empty_ranges(port);
        preload_port_mode(port, 0);
    }
}

// What the dump of port prints, and its status in *ret.
inline std::string dump_port(uint32_t port, uint32_t *ret)
{
    return printed([&] { *ret = ke_ke_omci_mc_param_get_call(&port, sizeof port); });
}

class McTest : public StubTest {
protected:
    void SetUp() override
    {
        StubTest::SetUp();
        init_multicast(kMcPorts);
        kestub::reset();
        preload_ports();
        st_mc_attr attr = {2, 0, 0};
        ke_omci_tapi_mc_attr_set(&attr);
        for (uint32_t port = 0; port < MC_PORT_MAX; ++port) {
            st_mc_igmp_attr igmp = {0, 0, 0, 0};
            ke_omci_tapi_mc_igmp_attr_set(port, &igmp);
            ke_omci_tapi_mc_tagact_set(port, 0);
            ke_omci_tapi_mc_usr_vlan_set(port, 0);
            ke_omci_tapi_mc_uprate_set(port, 0);
            ke_omci_tapi_mc_group_num_set(port, 0);
            ke_omci_tapi_mc_range_clr(port);
        }
        kestub::reset();
        preload_ports();
    }
};

}  // namespace ketest

#endif
