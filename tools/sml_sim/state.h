// What the simulated service remembers beyond T-CONTs and GEM ports, one
// structure per family.  A family's rows (<family>.cpp) read and change
// their own part, and read the profile and the line for what they depend
// on (the user ports, the registration state).
#ifndef KE_SML_SIM_STATE_H
#define KE_SML_SIM_STATE_H

#include <unistd.h>

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "ke_omci_tapi/bridge_qos.h"
#include "ke_omci_tapi/device.h"
#include "ke_omci_tapi/pon.h"

namespace smlsim {

// Registration (activation) states of the line: initial, and operation.
inline constexpr uint32_t kRegInitial = 1;
inline constexpr uint32_t kRegOperation = REGSTATE_O5;

// GEM port mappings, keyed as the service keys them.
struct MapKey {
    uint32_t mask, vlan, pri, port;
    bool operator<(const MapKey &o) const
    {
        return std::tie(mask, vlan, pri, port) < std::tie(o.mask, o.vlan, o.pri, o.port);
    }
};
struct MapTarget {
    uint32_t gemport, tcont;
};
struct MapState {
    std::map<MapKey, MapTarget> maps;
};

using Key16 = std::array<uint8_t, KE_KEY_LEN>;

// The line: registration, the last start parameters, keys, time of day.
struct LineState {
    uint32_t regstate = kRegInitial;
    std::array<uint8_t, KE_PON_START_LEN> start_param{};
    bool has_msk = false;
    Key16 msk{};
    std::map<uint32_t, std::pair<uint32_t, Key16>> mckeys;  // id -> length, key
    bool has_tod = false;
    st_tod tod{};
};

using FilterEntry = std::array<uint8_t, KE_BR_FILTER_LEN>;

struct BridgePort {
    uint32_t learn = 1;
    uint32_t learn_num = 64;
    std::vector<FilterEntry> filters;  // in the order they were set
};
struct BridgeState {
    std::map<uint32_t, BridgePort> ports;  // user ports, made on first use
    uint32_t age = 300;                    // seconds
    uint32_t isolate = 0;
};

using MarkingRule = std::array<uint8_t, KE_PRI_RULE_LEN>;
using QueueAttr = std::array<uint8_t, KE_QUEUE_ATTR_LEN + 4>;

struct QosState {
    std::array<uint8_t, KE_DSCP_MAP_LEN> dscp{};  // as last set
    std::map<uint32_t, std::vector<MarkingRule>> marking;  // port -> rules
    std::map<uint32_t, uint32_t> cars;                     // identifier -> rate
    std::map<std::pair<uint32_t, uint32_t>, QueueAttr> queues;  // (owner, queue)
    std::map<uint32_t, uint32_t> tcont_policy;
};

// Counters advance by one step per read while their object carries
// traffic; a set's values are its base plus steps times its rates.
struct CounterState {
    uint64_t fec = 0, tc = 0, downmng = 0, upmng = 0;
    std::map<uint32_t, uint64_t> gemport;  // steps per GEM port
    std::map<uint32_t, uint64_t> port;     // steps per user port
};

struct PortState {
    std::map<uint32_t, st_port_attr> ports;  // user ports, made on first use
};

// A file descriptor, closed with its holder.
class OpenFile {
public:
    OpenFile() = default;
    ~OpenFile() { reset(); }
    OpenFile(const OpenFile &) = delete;
    OpenFile &operator=(const OpenFile &) = delete;
    int fd() const { return fd_; }
    void reset(int fd = -1)
    {
        if (fd_ >= 0)
            ::close(fd_);
        fd_ = fd;
    }

private:
    int fd_ = -1;
};

// The flash: two image sections and the boot flag, files in dir.
struct FlashState {
    std::string dir;
    bool flag_loaded = false;  // the flag file read (or found missing)
    uint32_t boot_flag = 0;
    int open_section = -1;     // the download's section, -1: none open
    OpenFile section;          // its file, open from the start to the flag
    uint32_t word = 0;         // the download's word, sent with every shard
    uint64_t written = 0;
};

}  // namespace smlsim

#endif
