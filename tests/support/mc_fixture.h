// Multicast test support.  The library's multicast state lives as long as
// the process, so every test starts from a baseline written through the
// exported functions: a board of kMcPorts user ports, every port's
// settings, VLANs and ranges cleared, and the stand-in holding an empty
// range record and an HGU port-mode record for each port.
#ifndef KE_TEST_MC_FIXTURE_H
#define KE_TEST_MC_FIXTURE_H

#include <array>
#include <regex>
#include <utility>

#include "ke_omci_tapi/lifecycle.h"
#include "ke_omci_tapi/mc.h"
#include "stub_test.h"

namespace ketest {

inline constexpr uint32_t kMcPorts = 4;
using Bytes = std::vector<uint8_t>;
using Records = std::vector<Bytes>;
using Ops = std::vector<std::pair<kestub::CmOp, uint32_t>>;

inline Bytes ranges(uint32_t port) { return cm_record(1744, {{8, port}, {1740, 12}}); }

// The VLAN list record of a port (table 824) holding these slots.
inline Bytes vlan_list(uint32_t port, std::array<uint32_t, MC_VLAN_MAX> slots)
{
    Bytes rec = cm_record(48, {{8, port}, {44, 12}});
    std::memcpy(rec.data() + 12, slots.data(), sizeof slots);
    return rec;
}

// Adds (set) or removes (del) a multicast VLAN of a port.
inline uint32_t vlan(uint32_t (*fn)(const st_mc_vlan *), uint32_t port, uint32_t vid)
{
    st_mc_vlan v = {port, vid};
    return fn(&v);
}

inline Ops cm_ops()
{
    Ops ops;
    for (const auto &c : kestub::cm_calls())
        ops.emplace_back(c.op, c.table);
    return ops;
}

inline Records cm_sets(uint32_t table)
{
    Records sets;
    for (const auto &c : kestub::cm_calls())
        if (c.op == kestub::CmOp::Set && c.table == table)
            sets.push_back(c.record);
    return sets;
}

inline void preload(const Bytes &rec, uint32_t table)
{
    kestub::cm_preload(table, rec.data(), rec.size());
}

inline void preload_port_mode(uint32_t port, uint32_t sfu_mode)
{
    preload(cm_record(52, {{8, port}, {44, sfu_mode}, {48, 16}}), 834);
}

inline void preload_ports()
{
    for (uint32_t port = 0; port < MC_PORT_MAX; ++port) {
        preload(ranges(port), 817);
        preload_port_mode(port, 0);
    }
}

inline void script_board(uint32_t ports)
{
    std::array<uint8_t, 956> board{};
    std::memcpy(board.data() + 4, &ports, 4);
    kestub::ipc_script("ke_ke_board_info_get_call", 0, board.data(), board.size());
}

inline std::string dump_port(uint32_t port, uint32_t *ret)
{
    return printed([&] { *ret = ke_ke_omci_mc_param_get_call(&port, sizeof port); });
}

// Printed text with the source lines of the "[name(line)][INFO]:" lines
// shown as N; a failed-call line keeps its numbers unless they agree.
inline std::string traced(const std::string &out)
{
    static const std::regex failed(R"(\((\d+)\)\]\[INFO\]:ui_ret =(0x[0-9a-f]+), ui_line =\1\n)");
    static const std::regex other(R"(\(\d+\)\]\[INFO\]:(?!ui_ret))");
    std::string text = std::regex_replace(out, failed, "(N)][INFO]:ui_ret =$2, ui_line =N\n");
    return std::regex_replace(text, other, "(N)][INFO]:");
}

// A failed-call line as traced() shows it.
inline std::string info(const std::string &func, uint32_t ret)
{
    char buf[160];
    std::snprintf(buf, sizeof buf, "[%s(N)][INFO]:ui_ret =0x%x, ui_line =N\n", func.c_str(), ret);
    return buf;
}

class McTest : public StubTest {
protected:
    void SetUp() override
    {
        StubTest::SetUp();
        preload_ports();
        script_board(kMcPorts);  // used by the first test of the process only
        ke_omci_mc_data_init();
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
