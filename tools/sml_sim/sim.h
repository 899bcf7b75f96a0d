// The sml service simulator: the state a believable service keeps, and the
// table of remote procedures it serves, one row per remote name.
//
// A family adds its procedures as a ProcedureList of rows (name, record
// length, handler, layout for the log) and its state as a member of
// SimState.  The dispatcher applies the serving convention before any
// handler runs: a null buffer or a length other than the row's is refused
// with 0x72200008, so a handler always gets exactly its record.
#ifndef KE_SML_SIM_H
#define KE_SML_SIM_H

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "profile.h"
#include "record.h"
#include "rows.h"
#include "state.h"

namespace smlsim {

// Statuses the service answers besides 0.
inline constexpr uint32_t kRefused = 0x72200008;   // null buffer or wrong length
inline constexpr uint32_t kNoObject = 0x72400001;  // no such T-CONT, GEM port, ...
inline constexpr uint32_t kBadValue = 0x72400002;  // index or value out of range
inline constexpr uint32_t kInUse = 0x72400003;     // value held by another object
inline constexpr uint32_t kFull = 0x72400004;      // no room for one more object

inline constexpr uint32_t kGemAttrLen = 28;

// T-CONTs and GEM ports exist from their set until their delete.
struct PonState {
    std::map<uint32_t, uint32_t> tconts;  // T-CONT index -> Alloc-ID
    std::map<uint32_t, std::array<uint8_t, kGemAttrLen>> gemports;
    std::array<uint32_t, 3> loopback{};
    uint32_t pon_mode = 0;
    uint32_t dba_mode = 0;
    uint32_t gem_block = 48;
};

struct SimState {
    Profile profile;
    PonState pon;
    MapState map;
    LineState line;
    BridgeState bridge;
    QosState qos;
    CounterState counters;
    PortState port;
    FlashState flash;
};

struct Procedure {
    const char *name;
    uint32_t len;
    uint32_t (*handle)(SimState &state, uint8_t *buf);
    const ketool::Layout *layout;  // how the log shows the record; nullptr: hex
};

using ProcedureList = ketool::Rows<Procedure>;

// The families' procedures.
extern const ProcedureList kPonProcedures;
extern const ProcedureList kDeviceProcedures;
extern const ProcedureList kMapProcedures;
extern const ProcedureList kLineProcedures;
extern const ProcedureList kKeyProcedures;
extern const ProcedureList kBridgeProcedures;
extern const ProcedureList kQosProcedures;
extern const ProcedureList kCounterProcedures;
extern const ProcedureList kPortProcedures;
extern const ProcedureList kFlashProcedures;

// Every procedure of every family, in table order.
std::vector<const Procedure *> all_procedures();

class Sim {
public:
    explicit Sim(const Profile &profile);

    // One call of p: the serving convention, the handler, the log line.
    uint32_t serve(const Procedure &p, void *buf, uint32_t len);

    // Serves every procedure in this process (kestub::ipc_serve); the
    // socket transport then carries them to other processes.
    size_t attach();

    // Where the log goes (nullptr: nowhere); a delay before every reply.
    void set_log(FILE *log) { log_ = log; }
    void set_delay_ms(unsigned ms) { delay_ms_ = ms; }
    // A procedure that is never answered: its call is announced on
    // standard error and then hangs until the process is killed, so a
    // test can kill the service while a caller waits on that call.
    void set_stall(const std::string &name) { stall_ = name; }

    SimState &state() { return state_; }

private:
    void log(const Procedure &p, const uint8_t *buf, uint32_t len, uint32_t status);

    SimState state_;
    FILE *log_ = nullptr;
    unsigned delay_ms_ = 0;
    std::string stall_;
};

// Reads a record's u32 word at off.
uint32_t word_at(const uint8_t *buf, uint32_t off);
void put_word(uint8_t *buf, uint32_t off, uint32_t value);

// True when port is one of the profile's user ports.
inline bool is_user_port(const SimState &s, uint32_t port) { return port < s.profile.user_ports(); }

// True when the user port's link is up (it is unlocked).
bool port_link_up(SimState &s, uint32_t port);

// The file that holds an image section of the flash.
std::string section_path(const FlashState &f, uint32_t section);

// True when a GEM port mapping sends traffic to gemport.
bool gemport_mapped(const SimState &s, uint32_t gemport);

// A handler over the record as its structure: the buffer is read into a
// Record, handed to fn and written back, so a row's length is
// sizeof(Record) and its handler reads fields by name.
template <class Record, uint32_t (*Fn)(SimState &, Record &)>
uint32_t on_record(SimState &s, uint8_t *buf)
{
    Record rec;
    std::memcpy(&rec, buf, sizeof rec);
    uint32_t status = Fn(s, rec);
    std::memcpy(buf, &rec, sizeof rec);
    return status;
}

// A row whose handler takes its Record: name, length from the record.
template <class Record, uint32_t (*Fn)(SimState &, Record &)>
constexpr Procedure row(const char *name, const ketool::Layout *layout)
{
    return Procedure{name, static_cast<uint32_t>(sizeof(Record)), on_record<Record, Fn>, layout};
}

}  // namespace smlsim

#endif
