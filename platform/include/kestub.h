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

// Keep (true, the default after reset()) or stop keeping the record that
// ipc_calls() returns; ipc_fail_nth counts every call either way.  For
// benchmarks, where copying each request would be the stand-in's cost.
void ipc_record(bool on);

// Hand every call straight to handler: no record, script, failure, lookup
// or observer (a transport that answers at once, for benchmarks).  nullptr,
// or reset(), ends it.
void ipc_answer_all(IpcHandler handler);

// Make the nth next call (1 = the next one), whatever its name, answer
// status without reaching any handler; for sweeping every failure site.
void ipc_fail_nth(unsigned nth, uint32_t status);

// ---- IPC between processes --------------------------------------------
//
// A name nobody serves in this process goes to whichever process serves it
// over Unix-domain sockets in the run directory: one listening socket per
// served name, the file <run dir>/ipc/<name>.  Request frame: magic, name
// length, buffer length, null-buffer flag (four u32), the name, the bytes;
// reply frame: status and length (two u32), the bytes.  The transport
// passes the length through untouched; refusing a wrong length (0x72200008)
// is the serving entry's own business.

// A serving process that went away mid-call (connection closed before the
// reply).
inline constexpr uint32_t kIpcLost = 0x72200005;
// No reply within the time-out (the serving process hangs or is stopped).
inline constexpr uint32_t kIpcTimeout = 0x72200006;
// A request the transport cannot carry (longer than kIpcMaxLen).
inline constexpr uint32_t kIpcTooLong = 0x72200007;

inline constexpr uint32_t kIpcMaxLen = 16u << 20;

// Every remote call across processes ends within this bound, from connect
// to the last reply byte; KE_IPC_TIMEOUT_MS or ipc_set_timeout change it.
inline constexpr unsigned kIpcTimeoutMs = 5000;
void ipc_set_timeout(unsigned ms);

// What a caller waits at most.  A serving process that dies mid-call takes
// its end of the connection with it, and the call ends with kIpcLost within
// kIpcLateMs of the death; one that hangs or is stopped ends it with
// kIpcTimeout when the time-out runs out.  Either way no remote call across
// processes takes longer than the time-out (kIpcTimeoutMs unless changed)
// plus kIpcLateMs, the allowance for waking the caller and for the kernel
// to tear a dead process's connections down.
inline constexpr unsigned kIpcLateMs = 200;

// The run directory: KE_RUN_DIR, else /tmp/ke_omci_run-<uid>.
std::string run_dir();

// Served-call names listed in the .ke_ipc_section of every object loaded
// in this process, in load order and slot order.
struct SectionName {
    std::string object;  // path of the shared object ("" for the program)
    std::string name;
};
std::vector<SectionName> section_names();

// Start answering remote calls from other processes, on a thread of its
// own: every name served here with ipc_serve, and every name of a loaded
// .ke_ipc_section, dispatched to the exported function of that name.
// Returns the number of names served, or -1 (reason on stderr) when the
// run directory cannot be made or a name is served by a live process.
int serve_start();
// Stop answering and remove this process's sockets.
void serve_stop();
// The names serve_start took on.
std::vector<std::string> served_names();

// Incoming calls are dispatched while this lock is held; a program that
// calls the library on its own thread holds it too, so a served call never
// interleaves with its own (the library takes no lock of its own).
void serve_lock();
void serve_unlock();

// ---- Observer ----------------------------------------------------------

// What happens, as it happens: for tracing tools.
enum class EventKind { IpcCall, IpcServed, CmOp };
enum class CmOp;
struct Event {
    EventKind kind;
    const char *name;      // remote name (IpcCall, IpcServed)
    CmOp cm_op;            // CmOp
    uint32_t table;        // CmOp: table (control code for OamCtrl)
    const uint8_t *bytes;  // request (IpcCall, IpcServed) or record (CmOp)
    const uint8_t *reply;  // reply bytes after the call (IpcCall, IpcServed, Get)
    uint32_t len;
    uint32_t status;
};
using Observer = void (*)(const Event &event);
// One observer per process (nullptr: none).
void set_observer(Observer observer);

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

// True for a uci command made only of what the library's own uci commands
// hold (letters, digits, blanks and . _ @ [ ] : = -), optionally redirected
// into the library's scratch file /tmp/tmp_uci_value: nothing the shell
// would act on besides running uci.  For handlers that let those run and
// nothing else.
bool is_plain_uci_command(std::string command);

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

// Answer every Get, Set, Add and Del with handler alone: no tables, no
// injected failure, no record, no observer (a store that answers at once,
// for benchmarks).  nullptr, or reset(), brings the tables back.
using CmHandler = uint32_t (*)(CmOp op, uint32_t table, void *record, uint32_t size);
void cm_serve(CmHandler handler);

// A key field of a table's records: bytes [offset, offset + len).
struct CmKeyField {
    uint32_t offset;
    uint32_t len;
};

// The VoIP and TR-069 tables are keyed as the library keys them (the line
// byte at 4, the entry byte at 6 of the codec entries, no key in the global
// tables), and the ones the library writes merge a Set field by field under
// its mask, unless a test replaces the key or the rule.

// Replace a table's key (by default the user port at offset 8 for the
// VLAN, multicast and port tables, with the VLAN ID after it for 808 and
// the three match words after it for 813 and 814, the port at offset 4
// for 815 and 816, bytes 4 to 6 for the WAN tables, the line byte at 4
// for the others).
void cm_set_key(uint32_t table, std::vector<CmKeyField> key);

// How a Set folds an incoming record into the stored one of the same key.
using CmMerge = void (*)(uint8_t *stored, const uint8_t *incoming, uint32_t size);
void cm_set_merge(uint32_t table, CmMerge merge);

// Status of an operation the persistent store could not carry out.
inline constexpr uint32_t kCmStoreFailed = 0x72300002;

// Keep the tables in the SQLite database at path, shared by every process
// that opens it ("" or nullptr: back to this process's memory).  Without
// a call the store is KE_CM_DB when set, else memory.  False (reason on
// stderr) when the database cannot be opened.
bool cm_use_db(const char *path);
// False when the stand-in was built without SQLite: tables in memory only.
bool cm_db_supported();
// Where the tables are kept: the database path, "" for memory.
std::string cm_store_path();

// Tables that hold entries, in ascending order.
std::vector<uint32_t> cm_tables();

// Store a record as a Set would, without logging an operation.
void cm_preload(uint32_t table, const void *record, size_t size);

// The records a table holds, in insertion order.
std::vector<std::vector<uint8_t>> cm_entries(uint32_t table);

}  // namespace kestub

#endif
