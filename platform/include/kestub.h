// Test and tool API of the platform stand-in.
//
// The stand-in library provides, off the device, the platform functions
// the library is bound to (IPC, log, OS, configuration manager, board
// information, Annex K, the shell).  This header is how a test or a tool drives it:
// serve or script remote calls, open the log gate, capture standard
// output, and read back every operation the library made.
#ifndef KESTUB_H
#define KESTUB_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace kestub {

// Back to the state of a fresh process: no handlers, no scripts, empty
// logs and stores, log gate as the environment says (KE_LOG).
void reset();

// ---- IPC ---------------------------------------------------------------

// Status of a call whose name nobody serves.
inline constexpr uint32_t kIpcNoServer = 0x72200004;

// A remote procedure's handler, the serving side's signature: the request
// bytes (reply written in place) and their length.
using IpcHandler = uint32_t (*)(void *buf, uint32_t len);

// Serve name in this process (nullptr stops serving it).
void ipc_serve(const char *name, IpcHandler handler);

// Handler for every name nobody serves (nullptr: answer kIpcNoServer).
void ipc_serve_default(IpcHandler handler);

// Script the next call of name: it answers status and, when status is 0,
// its reply bytes overwrite the buffer (none given: the buffer is left as
// the request).  A failed call scribbles 0xEE over the buffer, since its
// content is undefined then.  Scripts queue per name, ahead of handlers.
void ipc_script(const char *name, uint32_t status, const void *reply = nullptr,
                size_t reply_len = 0);

template <class Record>
inline void ipc_script_reply(const char *name, const Record &reply)
{
    ipc_script(name, 0, &reply, sizeof reply);
}

struct IpcCall {
    std::string name;
    std::vector<uint8_t> request;  // the bytes sent (empty for a null buffer)
    uint32_t len;                  // the length argument
    bool null_buf;
    uint32_t status;               // what the call answered
};

// Every call since reset(), in order.
const std::vector<IpcCall> &ipc_calls();

// Make the nth next call (1 = the next one), whatever its name, answer
// status without reaching any handler; for sweeping every failure site.
void ipc_fail_nth(unsigned nth, uint32_t status);

// ---- Log gate ----------------------------------------------------------

// Open (true) or close the gate for every module and level.
void log_set(bool open);

// How often ke_log_print_on was asked since reset().
unsigned log_queries();

// ---- Standard output ---------------------------------------------------

// Everything written to file descriptor 1 between begin and end.
void capture_begin();
std::string capture_end();

// ---- OS ----------------------------------------------------------------

// Make the nth next ke_os_malloc (1 = the next one) answer null.
void os_fail_malloc(unsigned nth);
unsigned os_malloc_calls();

// Board information: what bdinfo_get_value answers for key ("mac" is
// "021018000001" after reset()).
void bdinfo_set(const char *key, const char *value);

// ---- Shell -------------------------------------------------------------
//
// system() is the stand-in's: each command is recorded and handed to the
// shell handler, whose result system() returns.  Without a handler nothing
// runs and system() answers 0, so no test reaches the machine's own
// configuration or services by accident.  (Tests themselves must not use
// system() for their own work: it lands here too.)

using ShellHandler = int (*)(const char *command);
void shell_serve(ShellHandler handler);

// Every command given to system() since reset(), in order.
const std::vector<std::string> &shell_commands();

// Runs command with /bin/sh -c, as the C library's system() would, and
// returns its wait status; for handlers that let a command really run.
int shell_run(const char *command);

// ---- Configuration manager ---------------------------------------------
//
// Records are kept per table and key.  A Set replaces the keyed entry (or
// merges into it, where a table has a merge rule), an Add appends, a Del
// removes the keyed entry, a Get copies the keyed entry out.

// Status of a Get or Del whose key matches no entry.
inline constexpr uint32_t kCmNoEntry = 0x72300001;

enum class CmOp { Get, Set, Add, Del, GetEntryNum, GetAllEntry, OamCtrl };

struct CmCall {
    CmOp op;
    uint32_t table;                // the control code for OamCtrl
    std::vector<uint8_t> record;   // bytes handed in, a Get's key and mask
                                   // included (empty for counts)
    uint32_t size;                 // the size argument
    uint32_t count;                // count argument of GetAllEntry
    uint32_t status;
};

// Every operation since reset(), in order.
const std::vector<CmCall> &cm_calls();

// Make the nth next operation on table (1 = the next one) fail with code.
void cm_fail(uint32_t table, uint32_t code, unsigned nth = 1);

// Make the nth next operation on any table fail with code.
void cm_fail_nth(unsigned nth, uint32_t code);

// A key field of a table's records: bytes [offset, offset + len).
struct CmKeyField {
    uint32_t offset;
    uint32_t len;
};

// Replace a table's key (by default the user port at offset 8 for the
// VLAN, multicast and port tables, with the VLAN ID after it for 808 and
// the three match words after it for 813 and 814, the port at offset 4
// for 815 and 816, bytes 4 to 6 for the WAN tables, the line byte at 4
// for the others).
void cm_set_key(uint32_t table, std::vector<CmKeyField> key);

// How a Set folds an incoming record into the stored one of the same key.
using CmMerge = void (*)(uint8_t *stored, const uint8_t *incoming, uint32_t size);
void cm_set_merge(uint32_t table, CmMerge merge);

// Store a record as a Set would, without logging an operation.
void cm_preload(uint32_t table, const void *record, size_t size);

// The records a table holds, in insertion order.
std::vector<std::vector<uint8_t>> cm_entries(uint32_t table);

}  // namespace kestub

#endif
