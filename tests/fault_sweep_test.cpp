// Fault sweep: every exported function, every back end it reaches, failed
// one operation at a time.
//
// For each row of the table below the sweep first makes a clean run and
// records, in order, every back-end operation the library makes: remote
// calls, configuration-manager operations, shell commands, allocations
// (ke_os_malloc and the C heap) and bounded copies.  Then it repeats the
// run once per recorded operation, failing that one, and checks what the
// function's family promises for that site: the status, the caller's
// memory (pre-filled with a sentinel, compared byte for byte), that no
// operation follows a failure that ends the function and that every
// operation a function still owes after a failure it survives is made, the
// trace (with the log gate open and closed), the state the library keeps
// between calls, and the heap: none at all taken, by the library or by the
// C library on its behalf (fopen, strdup, ...), except by the few
// functions that must give it all back before they return.  The sanitizers
// watch every run.  docs/reliability.md gives the figures it prints.
//
// Each run gets a fresh copy of the library (its own static state: the
// system-information cache, the multicast state, the LOID store) and a
// fresh stand-in, so a run never sees what an earlier one left behind.
// The library's platform calls are redirected, in that copy only, through
// the recorder below; the program does not link the library itself.
#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "ke_omci_tapi/bridge_qos.h"
#include "ke_omci_tapi/device.h"
#include "ke_omci_tapi/lifecycle.h"
#include "ke_omci_tapi/mc.h"
#include "ke_omci_tapi/pon.h"
#include "ke_omci_tapi/remote_mgmt.h"
#include "ke_omci_tapi/stat.h"
#include "ke_omci_tapi/vlan.h"
#include "ke_omci_tapi/voip.h"
#include "ke_omci_tapi/voip_wan.h"
#include "../src/mc/param_dump.h"
#include "export_lists.h"
#include "import_hook.h"
#include "private_scratch.h"
#include "platform.h"
#include "stub_test.h"

namespace {

// What an injected failure answers, per back end.
constexpr uint32_t kRemoteFailure = 0x72200011;
constexpr uint32_t kTableFailure = 0x72300011;
constexpr int kCopyFailure = 406;   // the Annex K library's "no space" code
constexpr int kShellFailure = 256;  // exit status 1, as system() reports it

// The library reads uci's output through one fixed file; in the copy under
// test it is a file of this program's own (private_scratch.h).
constexpr char kRedirect[] = " > /tmp/tmp_uci_value";

std::string hex(uint32_t v)
{
    char buf[16];
    std::snprintf(buf, sizeof buf, "0x%x", static_cast<unsigned>(v));
    return buf;
}

// ---- Back-end operations -----------------------------------------------

enum class Kind { kRemote, kTable, kShell, kOsHeap, kCHeap, kCopy };
constexpr size_t kKinds = 6;
constexpr const char *kKindNames[kKinds] = {"remote calls", "table operations", "shell commands",
                                            "ke_os_malloc", "C heap",           "bounded copies"};

struct Op {
    Kind kind;
    std::string label;  // remote name, "Get 834", the command, "memcpy_s(16)", ...
    bool failed;        // the operation was made to fail
};

// Everything the library asked of its back ends during one measured call.
struct Recorder {
    bool on = false;
    std::vector<Op> ops;
    // Our own injections (the stand-in injects remote, table and
    // ke_os_malloc failures itself).
    bool inject = false;
    Kind fail_kind = Kind::kRemote;
    unsigned fail_nth = 0;
    unsigned seen[kKinds] = {};
    unsigned os_taken = 0, os_given = 0, c_taken = 0, c_given = 0;
    // Heap taken and given back by anything else while the library runs:
    // the C library's allocations on its behalf.  The platform's work and
    // this program's own (in the hooks below) are not counted.
    unsigned others_taken = 0, others_given = 0;
    unsigned uncounted = 0;  // depth of Uncounted scopes

    // Records an operation; true when it is the one to fail here.
    bool note(Kind kind, std::string label)
    {
        if (!on)
            return false;
        unsigned n = ++seen[static_cast<size_t>(kind)];
        bool fail = inject && kind == fail_kind && n == fail_nth;
        ops.push_back({kind, std::move(label), fail});
        return fail;
    }
    void mark_failed(uint32_t status)
    {
        if (on && status != 0)
            ops.back().failed = true;
    }
};

Recorder g_rec;

bool counting() { return g_rec.on && g_rec.uncounted == 0; }

void note_allocation()
{
    if (counting())
        ++g_rec.others_taken;
}

void note_release(const volatile void *ptr)
{
    if (ptr != nullptr && counting())
        ++g_rec.others_given;
}

// Work of the platform or of this program, not of the library: whatever
// it allocates is not counted.
struct Uncounted {
    Uncounted() { ++g_rec.uncounted; }
    ~Uncounted() { --g_rec.uncounted; }
    Uncounted(const Uncounted &) = delete;
    Uncounted &operator=(const Uncounted &) = delete;
};

}  // namespace

// ---- Allocator entry points --------------------------------------------
//
// Under AddressSanitizer its allocator reports through these hooks;
// otherwise this program's malloc family wraps the C library's.

#if defined(__SANITIZE_ADDRESS__)
extern "C" void __sanitizer_malloc_hook(const volatile void *, size_t) { note_allocation(); }
extern "C" void __sanitizer_free_hook(const volatile void *ptr) { note_release(ptr); }
#else
extern "C" {
void *__libc_malloc(size_t size);
void *__libc_calloc(size_t count, size_t size);
void *__libc_realloc(void *ptr, size_t size);
void *__libc_memalign(size_t alignment, size_t size);
void __libc_free(void *ptr);

void *malloc(size_t size) noexcept
{
    note_allocation();
    return __libc_malloc(size);
}

void *calloc(size_t count, size_t size) noexcept
{
    note_allocation();
    return __libc_calloc(count, size);
}

// As the sanitizer reports it: a new block, and the old one released.
void *realloc(void *ptr, size_t size) noexcept
{
    if (size != 0 || ptr == nullptr)
        note_allocation();
    note_release(ptr);
    return __libc_realloc(ptr, size);
}

void *memalign(size_t alignment, size_t size) noexcept
{
    note_allocation();
    return __libc_memalign(alignment, size);
}

void *aligned_alloc(size_t alignment, size_t size) noexcept
{
    note_allocation();
    return __libc_memalign(alignment, size);
}

int posix_memalign(void **out, size_t alignment, size_t size) noexcept
{
    note_allocation();
    *out = __libc_memalign(alignment, size);
    return *out != nullptr ? 0 : ENOMEM;
}

void free(void *ptr) noexcept
{
    note_release(ptr);
    __libc_free(ptr);
}
}  // extern "C"
#endif

namespace {

// The platform's own definitions, which the hooks forward to.
struct Next {
    decltype(&ke_ipc_call) ipc;
    decltype(&igdCmConfGet) cm_get;
    decltype(&igdCmConfSet) cm_set;
    decltype(&igdCmConfAdd) cm_add;
    decltype(&igdCmConfDel) cm_del;
    decltype(&igdCmConfGetEntryNum) cm_num;
    decltype(&igdCmConfGetAllEntry) cm_all;
    decltype(&igdCmOamCtrl) oam;
    int (*system)(const char *);
    decltype(&ke_os_malloc) os_malloc;
    decltype(&ke_os_free) os_free;
    void *(*malloc)(size_t);
    void (*free)(void *);
    decltype(&memcpy_s) copy;
    decltype(&memset_s) fill;
    decltype(&strcpy_s) copy_text;
    int (*vsprintf_s_chk)(char *, size_t, size_t, const char *, va_list);
};
Next g_next;

std::string table_label(const char *op, uint32_t table)
{
    return op + (" " + std::to_string(table));
}

// Records one operation of kind, makes it through next, notes a failure.
template <class... Args>
uint32_t forward(Kind kind, std::string label, uint32_t (*next)(Args...), Args... args)
{
    g_rec.note(kind, std::move(label));
    uint32_t ret = next(args...);
    g_rec.mark_failed(ret);
    return ret;
}

// What a failed read leaves is nothing the library may use: scribble
// over it.
uint32_t scribble_if_failed(void *buf, uint32_t size, uint32_t ret)
{
    if (ret != 0 && buf != nullptr)
        std::memset(buf, 0xEE, size);
    return ret;
}

uint32_t hook_ipc(const char *name, void *buf, uint32_t len)
{
    Uncounted scope;
    return forward(Kind::kRemote, name != nullptr ? name : "", g_next.ipc, name, buf, len);
}

uint32_t hook_cm_get(uint32_t table, void *rec, uint32_t size)
{
    Uncounted scope;
    uint32_t ret =
        forward(Kind::kTable, table_label("Get", table), g_next.cm_get, table, rec, size);
    return scribble_if_failed(rec, size, ret);
}

uint32_t hook_cm_set(uint32_t table, void *rec, uint32_t size)
{
    Uncounted scope;
    return forward(Kind::kTable, table_label("Set", table), g_next.cm_set, table, rec, size);
}

uint32_t hook_cm_add(uint32_t table, void *rec, uint32_t size)
{
    Uncounted scope;
    return forward(Kind::kTable, table_label("Add", table), g_next.cm_add, table, rec, size);
}

uint32_t hook_cm_del(uint32_t table, void *rec, uint32_t size)
{
    Uncounted scope;
    return forward(Kind::kTable, table_label("Del", table), g_next.cm_del, table, rec, size);
}

uint32_t hook_cm_num(uint32_t table, uint32_t *count)
{
    Uncounted scope;
    uint32_t ret =
        forward(Kind::kTable, table_label("GetEntryNum", table), g_next.cm_num, table, count);
    return scribble_if_failed(count, sizeof *count, ret);
}

uint32_t hook_cm_all(uint32_t table, void *buf, uint32_t size, uint32_t count)
{
    Uncounted scope;
    uint32_t ret = forward(Kind::kTable, table_label("GetAllEntry", table), g_next.cm_all, table,
                           buf, size, count);
    return scribble_if_failed(buf, size, ret);
}

uint32_t hook_oam(uint32_t code)
{
    Uncounted scope;
    return forward(Kind::kTable, "OamCtrl", g_next.oam, code);
}

// A failing command still has its output redirected: the shell empties
// the scratch file before the command fails.
int hook_system(const char *command)
{
    Uncounted scope;
    if (command == nullptr || !g_rec.note(Kind::kShell, command))
        return g_next.system(command);
    std::string text = command;
    if (text.size() > std::strlen(kRedirect) &&
        text.compare(text.size() - std::strlen(kRedirect), std::string::npos, kRedirect) == 0)
        std::ofstream(ketest::private_scratch_file(), std::ios::trunc);
    return kShellFailure;
}

void *hook_os_malloc(uint32_t size)
{
    Uncounted scope;
    g_rec.note(Kind::kOsHeap, "ke_os_malloc");
    void *p = g_next.os_malloc(size);
    if (g_rec.on && p != nullptr)
        ++g_rec.os_taken;
    else if (g_rec.on)
        g_rec.ops.back().failed = true;
    return p;
}

void hook_os_free(void *p)
{
    Uncounted scope;
    if (g_rec.on && p != nullptr)
        ++g_rec.os_given;
    g_next.os_free(p);
}

void *hook_malloc(size_t size)
{
    Uncounted scope;
    if (g_rec.note(Kind::kCHeap, "malloc"))
        return nullptr;
    void *p = g_next.malloc(size);
    if (g_rec.on && p != nullptr)
        ++g_rec.c_taken;
    return p;
}

void hook_free(void *p)
{
    Uncounted scope;
    if (g_rec.on && p != nullptr)
        ++g_rec.c_given;
    g_next.free(p);
}

std::string copy_label(const char *op, size_t destsz)
{
    return op + ("(" + std::to_string(destsz) + ")");
}

// Failed copies behave as Annex K says: a valid destination is cleared
// (memset_s fills it with its value), and the error code is returned.
bool valid_dest(const void *dest, size_t destsz)
{
    return dest != nullptr && destsz <= (SIZE_MAX >> 1);
}

int hook_memcpy_s(void *dest, size_t destsz, const void *src, size_t count)
{
    Uncounted scope;
    if (!g_rec.note(Kind::kCopy, copy_label("memcpy_s", destsz)))
        return g_next.copy(dest, destsz, src, count);
    if (valid_dest(dest, destsz))
        std::memset(dest, 0, destsz);
    return kCopyFailure;
}

int hook_memset_s(void *dest, size_t destsz, int ch, size_t count)
{
    Uncounted scope;
    if (!g_rec.note(Kind::kCopy, copy_label("memset_s", destsz)))
        return g_next.fill(dest, destsz, ch, count);
    if (valid_dest(dest, destsz))
        std::memset(dest, ch, destsz);
    return kCopyFailure;
}

int hook_strcpy_s(char *dest, size_t destsz, const char *src)
{
    Uncounted scope;
    if (!g_rec.note(Kind::kCopy, copy_label("strcpy_s", destsz)))
        return g_next.copy_text(dest, destsz, src);
    if (valid_dest(dest, destsz) && destsz > 0)
        dest[0] = '\0';
    return kCopyFailure;
}

int hook_sprintf_s(char *dest, size_t destsz, const char *fmt, ...)
{
    Uncounted scope;
    if (g_rec.note(Kind::kCopy, copy_label("sprintf_s", destsz))) {
        if (valid_dest(dest, destsz) && destsz > 0)
            dest[0] = '\0';
        return -kCopyFailure;
    }
    va_list ap;
    va_start(ap, fmt);
    int n = g_next.vsprintf_s_chk(dest, destsz, static_cast<size_t>(-1), fmt, ap);
    va_end(ap);
    return n;
}

// ---- The uci the library runs ------------------------------------------
//
// Answers the library's uci commands from a small model of the OpenWrt
// configuration: a get prints the value it knows (nothing for others), an
// add prints a new section name, everything else succeeds silently.

std::map<std::string, std::string> g_uci;
unsigned g_uci_added;

bool cut(std::string &text, const std::string &prefix, const std::string &suffix)
{
    if (text.size() < prefix.size() + suffix.size() ||
        text.compare(0, prefix.size(), prefix) != 0 ||
        text.compare(text.size() - suffix.size(), std::string::npos, suffix) != 0)
        return false;
    text = text.substr(prefix.size(), text.size() - prefix.size() - suffix.size());
    return true;
}

int fake_uci(const char *command)
{
    std::string key = command;
    std::ofstream scratch;
    if (cut(key, "uci -q get ", kRedirect)) {
        scratch.open(ketest::private_scratch_file(), std::ios::trunc);
        auto it = g_uci.find(key);
        if (it != g_uci.end())
            scratch << it->second << "\n";
    } else if (cut(key, "uci -q add ", kRedirect)) {
        scratch.open(ketest::private_scratch_file(), std::ios::trunc);
        char name[16];
        std::snprintf(name, sizeof name, "cfg%02x%04x", ++g_uci_added, 0xbeefu);
        scratch << name << "\n";
    }
    return 0;
}

// ---- The library, a fresh copy per run ---------------------------------

class Library {
public:
    // Copies the library file once: each load of the copy starts from the
    // library's state at load.
    Library()
    {
        char name[] = "/tmp/ke_fault_sweep_XXXXXX";
        int fd = mkstemp(name);
        if (fd < 0)
            return;
        ::close(fd);
        path_ = name;
        std::ifstream in(KE_LIBRARY_PATH, std::ios::binary);
        std::ofstream(path_, std::ios::binary) << in.rdbuf();
    }
    ~Library()
    {
        close();
        if (!path_.empty()) {
            unlink(path_.c_str());
            unlink((path_ + ".uci").c_str());
        }
    }
    Library(const Library &) = delete;
    Library &operator=(const Library &) = delete;

    // Loads the copy and routes its platform calls through the recorder.
    // Empty on success, else what went wrong.
    std::string open()
    {
        handle_ = dlopen(path_.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (handle_ == nullptr)
            return std::string("cannot load the library: ") + dlerror();
        std::string missing;
        auto hook = [&](const char *name, void *replacement, auto &next) {
            void *target = ketest::redirect_import(path_.c_str(), name, replacement);
            if (target == nullptr)
                missing += std::string(" ") + name;
            else
                next = reinterpret_cast<std::remove_reference_t<decltype(next)>>(target);
        };
        // A variadic function cannot be forwarded as it stands: the hook
        // goes through the checking entry point below instead.
        void *sprintf_target = nullptr;
        hook("ke_ipc_call", reinterpret_cast<void *>(hook_ipc), g_next.ipc);
        hook("igdCmConfGet", reinterpret_cast<void *>(hook_cm_get), g_next.cm_get);
        hook("igdCmConfSet", reinterpret_cast<void *>(hook_cm_set), g_next.cm_set);
        hook("igdCmConfAdd", reinterpret_cast<void *>(hook_cm_add), g_next.cm_add);
        hook("igdCmConfDel", reinterpret_cast<void *>(hook_cm_del), g_next.cm_del);
        hook("igdCmConfGetEntryNum", reinterpret_cast<void *>(hook_cm_num), g_next.cm_num);
        hook("igdCmConfGetAllEntry", reinterpret_cast<void *>(hook_cm_all), g_next.cm_all);
        hook("igdCmOamCtrl", reinterpret_cast<void *>(hook_oam), g_next.oam);
        hook("system", reinterpret_cast<void *>(hook_system), g_next.system);
        if (!ketest::use_private_scratch(path_.c_str(), path_ + ".uci"))
            missing += " fopen unlink";
        hook("ke_os_malloc", reinterpret_cast<void *>(hook_os_malloc), g_next.os_malloc);
        hook("ke_os_free", reinterpret_cast<void *>(hook_os_free), g_next.os_free);
        hook("malloc", reinterpret_cast<void *>(hook_malloc), g_next.malloc);
        hook("free", reinterpret_cast<void *>(hook_free), g_next.free);
        hook("memcpy_s", reinterpret_cast<void *>(hook_memcpy_s), g_next.copy);
        hook("memset_s", reinterpret_cast<void *>(hook_memset_s), g_next.fill);
        hook("strcpy_s", reinterpret_cast<void *>(hook_strcpy_s), g_next.copy_text);
        hook("sprintf_s", reinterpret_cast<void *>(hook_sprintf_s), sprintf_target);
        g_next.vsprintf_s_chk = reinterpret_cast<decltype(g_next.vsprintf_s_chk)>(
            dlsym(RTLD_DEFAULT, "_vsprintf_s_chk"));
        if (g_next.vsprintf_s_chk == nullptr)
            missing += " _vsprintf_s_chk";
        return missing.empty() ? "" : "imports not redirected:" + missing;
    }

    void close()
    {
        if (handle_ != nullptr)
            dlclose(handle_);
        handle_ = nullptr;
    }

    // True while a copy of the file is still mapped after close().
    bool lingers() const { return dlopen(path_.c_str(), RTLD_NOW | RTLD_NOLOAD) != nullptr; }

    void *symbol(const char *name) const
    {
        return handle_ != nullptr ? dlsym(handle_, name) : nullptr;
    }

    template <class F>
    F *function(const char *name) const
    {
        Uncounted scope;
        void *sym = symbol(name);
        if (sym == nullptr) {
            std::fprintf(stderr, "no exported function %s\n", name);
            std::abort();
        }
        return reinterpret_cast<F *>(sym);
    }

private:
    std::string path_;
    void *handle_ = nullptr;
};

Library *g_lib;

// The library's function f, from the copy loaded for this run.
#define FN(f) (g_lib->function<decltype(f)>(#f))

// ---- The caller's memory -----------------------------------------------
//
// Every argument a row passes points into one Ctx.  Before each run it is
// filled with a sentinel, the inputs are written, and a snapshot is taken:
// after a failure every byte the function may not write must be as it was.

struct Ctx {
    uint32_t word;
    uint16_t half;
    uint8_t byte;
    alignas(8) uint8_t block[512];  // blocks, counters, MAC entries
    uint32_t words[16];
    uint8_t shard[UPGRADE_SHARD_MAX];
    st_sysinfo sysinfo;
    st_sn_loid loid;
    st_gem_map_param map;
    st_mc_attr mc_attr;
    st_mc_igmp_attr igmp;
    st_mc_vlan mc_vlan;
    st_mc_table mc_row;
    uint32_t vlans[MC_VLAN_MAX];
    st_vlan_rule rule;
    st_port_mode_update port_mode;
    char text[64];
    uint32_t mac[6];
    st_wan_conn wan_conn;
    st_voip_wan_attr wan_attr;
    st_voip_udptcp udptcp;
    st_voip_server server;
    st_voip_agent agent;
    st_voip_codec codec;
    st_voip_codec codec_same;
    st_voip_regtime regtime;
    st_voip_sipauth sipauth;
    st_voip_gain gain;
    st_voip_hook hook;
    st_voip_admin admin;
    st_voip_rtp rtp;
    st_voip_silence silence;
    st_voip_line_status line_status;
    st_voip_rtp_pm rtp_pm;
    st_voip_callctrl_pm callctrl_pm;
    st_voip_sip_agent_pm sip_agent_pm;
    st_voip_sip_callinit_pm sip_callinit_pm;
    st_tr069_server tr069;
};

Ctx g_ctx;
constexpr uint8_t kSentinel = 0xA5;

template <class T>
void zero(T &v)
{
    std::memset(static_cast<void *>(&v), 0, sizeof v);
}

void put_ip(uint8_t *dst, uint8_t a, uint8_t b, uint8_t c, uint8_t d)
{
    dst[0] = a;
    dst[1] = b;
    dst[2] = c;
    dst[3] = d;
}

uint32_t ip_word(uint8_t a, uint8_t b, uint8_t c, uint8_t d)
{
    uint32_t w;
    uint8_t bytes[4] = {a, b, c, d};
    std::memcpy(&w, bytes, 4);
    return w;
}

// Representative inputs; output-only memory keeps the sentinel.
void write_inputs(Ctx &c)
{
    std::memset(static_cast<void *>(&c), kSentinel, sizeof c);
    for (size_t i = 0; i < sizeof c.block; ++i)
        c.block[i] = static_cast<uint8_t>(i);
    for (size_t i = 0; i < sizeof c.shard; ++i)
        c.shard[i] = static_cast<uint8_t>(i * 7);
    c.map = {1, 100, 5, 1, 0x400, 3};
    c.mc_attr = {3, 1, 1};
    c.igmp = {1, 100, 5, 0x300};
    c.mc_vlan = {1, 100};
    zero(c.mc_row);
    c.mc_row.ui_vlan = 100;
    c.mc_row.auc_ip_start[0] = 0xE0;
    c.mc_row.auc_ip_end[0] = 0xE0;
    c.mc_row.auc_ip_end[3] = 0xFF;
    c.mc_row.ui_port = 1;
    uint32_t vlans[MC_VLAN_MAX] = {100,          200,          MC_VLAN_NONE, MC_VLAN_NONE,
                                   MC_VLAN_NONE, MC_VLAN_NONE, MC_VLAN_NONE, MC_VLAN_NONE};
    std::memcpy(c.vlans, vlans, sizeof vlans);
    c.rule = {100, KE_VLAN_NO_MATCH, 7, 200, 3, 1};
    zero(c.port_mode);
    c.port_mode.ui_sfu_mode = 1;
    c.port_mode.uc_port = 1;
    std::snprintf(c.text, sizeof c.text, "%s", "");
    uint32_t mac[6] = {0x02, 0x10, 0x18, 0x00, 0x00, 0xFF};
    std::memcpy(c.mac, mac, sizeof mac);

    zero(c.wan_conn);
    c.wan_conn.ui_service = KE_WAN_SERVICE_VOICE;
    c.wan_conn.uc_addr_mode = KE_WAN_ADDR_STATIC;
    c.wan_conn.ui_vlan_id = 100;
    c.wan_conn.uc_priority = 5;
    put_ip(c.wan_conn.auc_ipaddr, 192, 168, 10, 2);
    put_ip(c.wan_conn.auc_netmask, 255, 255, 255, 0);
    put_ip(c.wan_conn.auc_gateway, 192, 168, 10, 1);
    std::snprintf(c.wan_conn.ac_dns, sizeof c.wan_conn.ac_dns, "%s", "8.8.8.8,8.8.4.4");

    // A static voice connection with every value given.
    zero(c.wan_attr);
    c.wan_attr.us_ip_options_set = 1;
    c.wan_attr.ui_vlan_id = 100;
    c.wan_attr.ui_vlan_id_set = 1;
    c.wan_attr.uc_priority = 5;
    c.wan_attr.us_priority_set = 1;
    c.wan_attr.ui_netmask = ip_word(255, 255, 255, 0);
    c.wan_attr.ui_netmask_set = 1;
    c.wan_attr.ui_gateway = ip_word(192, 168, 10, 1);
    c.wan_attr.ui_gateway_set = 1;
    c.wan_attr.ui_ipaddr = ip_word(192, 168, 10, 2);
    c.wan_attr.ui_ipaddr_set = 1;
    std::snprintf(c.wan_attr.ac_dns, sizeof c.wan_attr.ac_dns, "%s", "8.8.8.8,8.8.4.4");
    c.wan_attr.ui_dns_set = 1;
    c.wan_attr.us_service = 0;

    c.udptcp = {1, 5060, 17, 0xB8};
    zero(c.server);
    std::memcpy(c.server.auc_address, "sip.example.net", 15);
    c.server.us_port = 5060;
    c.server.us_protocol = 17;
    zero(c.agent);
    std::memcpy(c.agent.auc_address, "agent", 5);
    c.agent.us_value = 5060;
    c.codec = {1, 18, 7, 0, 20};      // G729 into entry 1, which holds PCMU
    c.codec_same = {2, 8, 4, 0, 30};  // PCMA into entry 2, which holds it
    c.regtime = {1, 3600, 300};
    zero(c.sipauth);
    c.sipauth.ui_line = 1;
    std::memcpy(c.sipauth.auc_user_name, "user", 4);
    c.gain.ui_line = 1;
    c.gain.ui_rx_gain = 2;
    c.gain.ui_tx_gain = 3;
    c.hook.ui_line = 1;
    c.admin = {1, 1};
    c.rtp = {1, 50000, 50100, 46};
    c.silence = {1, 1};
    c.line_status.ui_line = 1;
    c.rtp_pm.ui_line = 1;
    c.callctrl_pm.ui_line = 1;
    c.sip_agent_pm.ui_line = 1;
    c.sip_callinit_pm.ui_line = 1;
    zero(c.tr069);
    std::memcpy(c.tr069.auc_acs_url, "http://acs", 10);
}

// Bytes [off, off + len) of the caller's memory.
struct Region {
    size_t off;
    size_t len;
};
constexpr Region kNothing{0, 0};
constexpr Region kAnything{0, SIZE_MAX};
#define FIELD(m) (Region{offsetof(Ctx, m), sizeof(g_ctx.m)})

// ---- The world every run starts from -----------------------------------

// A record image to preload into the configuration manager.
class Image {
public:
    explicit Image(size_t size) : bytes_(size, 0) {}
    Image &u8(size_t off, uint8_t v) { return raw(off, &v, 1); }
    Image &u32(size_t off, uint32_t v) { return raw(off, &v, 4); }
    Image &text(size_t off, const char *s) { return raw(off, s, std::strlen(s)); }
    Image &raw(size_t off, const void *src, size_t n)
    {
        std::memcpy(bytes_.data() + off, src, n);
        return *this;
    }
    void preload(uint32_t table) const { kestub::cm_preload(table, bytes_.data(), bytes_.size()); }

private:
    std::vector<uint8_t> bytes_;
};

// Sizes of the VoIP tables the world preloads.
size_t voip_record_size(uint32_t table)
{
    static const std::map<uint32_t, size_t> kSizes = {
        {467, 12}, {468, 4460}, {471, 604}, {473, 4171}, {474, 32}, {476, 100},
        {477, 40}, {524, 2187}, {668, 16},  {669, 60},   {671, 24}, {673, 84}};
    return kSizes.at(table);
}

uint32_t answer_ok(void *, uint32_t) { return 0; }

template <size_t Off, uint32_t Value>
uint32_t answer_word(void *buf, uint32_t len)
{
    const uint32_t value = Value;
    if (buf != nullptr && len >= Off + 4)
        std::memcpy(static_cast<uint8_t *>(buf) + Off, &value, 4);
    return 0;
}

uint32_t answer_sysinfo(void *buf, uint32_t len)
{
    if (buf != nullptr && len > 258)
        std::memcpy(static_cast<uint8_t *>(buf) + 255, "SFU", 4);
    return 0;
}

uint32_t answer_sysinfo_hgu(void *buf, uint32_t len)
{
    if (buf != nullptr && len > 258)
        std::memcpy(static_cast<uint8_t *>(buf) + 255, "HGU", 4);
    return 0;
}

// Two learned addresses.
uint32_t answer_br_table(void *buf, uint32_t len)
{
    if (buf == nullptr || len != sizeof(st_br_table))
        return 0x72200008;
    auto *t = static_cast<st_br_table *>(buf);
    t->ui_entry_num = 2;
    for (int i = 0; i < 2; ++i) {
        t->ast_entry[i].ui_info = static_cast<uint32_t>(10 + i);
        std::memset(t->ast_entry[i].auc_mac, 0x20 + i, KE_MAC_LEN);
    }
    return 0;
}

constexpr unsigned kBoardPorts = 2;

void world()
{
    kestub::reset();
    kestub::log_set(true);
    kestub::ipc_serve_default(answer_ok);
    kestub::ipc_serve("ke_ke_sml_gpon_regstate_get_call", answer_word<0, REGSTATE_O5>);
    kestub::ipc_serve("ke_ke_board_info_get_call", answer_word<4, kBoardPorts>);
    kestub::ipc_serve("ke_ke_sysinfo_data_get_call", answer_sysinfo);
    kestub::ipc_serve("ke_ke_sml_br_table_get_call", answer_br_table);
    kestub::ipc_serve("ke_ke_upgrade_flag_get_call", answer_word<0, 1>);

    // VLAN and port tables of user port 1; the range tables of every port.
    Image(20).u32(8, 1).u32(12, 2).preload(807);
    Image(20).u32(8, 1).u32(12, 100).preload(808);
    Image(8).u32(4, 1).preload(815);
    Image(52).u32(8, 1).u32(44, 1).preload(834);
    for (uint32_t port = 0; port < MC_PORT_MAX; ++port)
        Image(1744).u32(8, port).preload(817);

    // VoIP: line 1 of every per-line table, the global tables, a codec
    // list of three entries (PCMU, PCMA, G729).
    for (uint32_t table : {467u, 471u, 473u, 474u, 669u, 671u, 673u}) {
        Image(voip_record_size(table)).u8(4, 1).preload(table);
    }
    for (uint32_t table : {468u, 476u, 477u, 524u, 668u})
        Image(voip_record_size(table)).preload(table);
    Image(304).u8(9, 3).preload(465);
    const uint8_t codes[] = {2, 1, 3};
    for (uint8_t entry = 1; entry <= 3; ++entry)
        Image(48)
            .u8(4, 1)
            .u8(5, entry)
            .u8(6, entry)
            .u8(7, codes[entry - 1])
            .text(12, "20")
            .preload(478);

    // WAN: a static voice connection and a TR-069 one, listed in that
    // order, with their states.
    struct Conn {
        uint8_t key;
        uint8_t service;
        const char *name;
    };
    for (const Conn &w :
         {Conn{1, KE_WAN_SERVICE_VOICE, "voice"}, Conn{2, KE_WAN_SERVICE_TR069, "tr069"}}) {
        Image(148).u8(4, w.key).u8(10, w.service).text(16, w.name).preload(458);
        Image(2680)
            .u8(4, w.key)
            .u8(9, 2)
            .u32(16, 90 + w.key)
            .u8(22, KE_WAN_ADDR_STATIC)
            .u32(24, w.service)
            .text(92, w.name)
            .u8(384, 10)
            .text(396, "1.1.1.1")
            .raw(652, "\x02\x10\x18\x00\x00\x07", 6)
            .preload(448);
        Image(559)
            .u8(4, w.key)
            .text(8, w.name)
            .text(108, "192.168.1.2")
            .text(124, "255.255.255.0")
            .text(140, "192.168.1.1")
            .text(156, "8.8.8.8")
            .text(172, "8.8.4.4")
            .preload(449);
    }

    // uci knows one WAN interface slot and one VLAN device.
    g_uci = {{"network.pon_1", "interface"}, {"network.@device[0].name", "pon.7"}};
    g_uci_added = 0;
    kestub::shell_serve(fake_uci);
}

// ---- Rules -------------------------------------------------------------

// How a family answers a failed remote call or table operation.
enum class Rule {
    kTraced,     // 1, traced (gated), nothing after it, outputs untouched
    kSilent,     // 1 as above, but without a trace line
    kPassed,     // the failing status itself, untraced
    kZero,       // 0 whatever happened
    kErrorWord,  // 0x70000000
    kShell,      // -1: the shell toolkit
    kNone,       // no back-end operation at all
};

enum class Trace {
    kNone,      // not checked
    kCode,      // the failing status appears in the output (hexadecimal)
    kSilent,    // it does not
    kCopyLine,  // the always-printed copy line of the failed copy
};

// Status values that depend on the run.
constexpr uint32_t kInjected = 0xFFFFFF01;  // the failing operation's own code
constexpr uint32_t kClean = 0xFFFFFF02;     // what the clean run returned
constexpr uint32_t kNoRule = 0xFFFFFF03;    // the row must say

// After a failure the function stops, or goes on with the operations of
// the clean run that follow the failing one, less `skip` of them (the ones
// the failure made unnecessary), or with just the first `after` of them.
struct Expect {
    uint32_t status;
    unsigned skip;
    bool stop;
    Trace trace;
    Region written;  // caller memory the run may change
    int after = -1;
    // A failure that ends the function leaves the library's own state
    // (state_of() below) as it was before the call.
    bool keeps_state = true;
};

constexpr Expect kStop(uint32_t status, Trace trace = Trace::kNone)
{
    return {status, 0, true, trace, kNothing};
}
constexpr Expect kGoesOn(uint32_t status = kClean, unsigned skip = 0, Region written = kAnything)
{
    return {status, skip, false, Trace::kNone, written};
}

struct Site {
    Kind kind;
    unsigned nth;  // among the operations of its kind, from 1
    size_t pos;    // among all operations, from 0
    std::string label;
    const std::vector<Op> *clean;  // every operation of the clean run
};

Expect rule_expect(Rule rule, const Site &site)
{
    switch (site.kind) {
    case Kind::kRemote:
    case Kind::kTable:
        switch (rule) {
        case Rule::kTraced:
            return kStop(1, Trace::kCode);
        case Rule::kSilent:
            return kStop(1, Trace::kSilent);
        case Rule::kPassed:
            return kStop(kInjected, Trace::kSilent);
        case Rule::kZero:
            return kStop(0);
        case Rule::kErrorWord:
            return kStop(0x70000000);
        case Rule::kShell:
        case Rule::kNone:
            break;
        }
        return kStop(kNoRule);
    case Kind::kCopy: {
        // A failed copy is printed (except sprintf_s, whose result nobody
        // reads) and the function goes on.
        Expect e = kGoesOn();
        if (site.label.rfind("sprintf_s", 0) != 0)
            e.trace = Trace::kCopyLine;
        return e;
    }
    case Kind::kShell:
        if (rule == Rule::kShell)
            return {0xFFFFFFFF, 0, true, Trace::kNone, kAnything};
        return kGoesOn();  // no command's exit status is examined
    case Kind::kOsHeap:
    case Kind::kCHeap:
        break;
    }
    return kStop(kNoRule);
}

using Adjust = Expect (*)(const Site &, Expect);

struct Row {
    const char *function;
    const char *what;  // the path, when a function has several rows
    Rule rule;
    void (*setup)(Ctx &);  // state before the call (may call the library)
    uint32_t (*call)(Ctx &);
    uint32_t clean_status;
    Adjust adjust;  // the sites where the function differs from its rule
};

bool has(const Site &s, const char *text) { return s.label.find(text) != std::string::npos; }

// ---- Setups ------------------------------------------------------------

void no_setup(Ctx &) {}

void mc_ready(Ctx &) { FN(ke_omci_mc_data_init)(); }

void igmp_on_port_1(Ctx &c)
{
    mc_ready(c);
    st_mc_igmp_attr igmp = {1, 100, 5, 0x300};
    FN(ke_omci_tapi_mc_igmp_attr_set)(1, &igmp);
}

void two_mc_vlans(Ctx &c)
{
    mc_ready(c);
    st_mc_vlan a = {1, 100}, b = {1, 200};
    FN(ke_omci_tapi_mc_vlan_set)(&a);
    FN(ke_omci_tapi_mc_vlan_set)(&b);
}

void group_row_added(Ctx &c)
{
    mc_ready(c);
    FN(ke_omci_tapi_mc_table_set)(&c.mc_row);
}

void sysinfo_cached(Ctx &c) { FN(ke_omci_tapi_sysinfo_get)(&c.sysinfo); }

void hgu_cached(Ctx &c)
{
    kestub::ipc_serve("ke_ke_sysinfo_data_get_call", answer_sysinfo_hgu);
    sysinfo_cached(c);
    write_inputs(c);
}

// The rule a removal finds.
void translation_in_place(Ctx &) { FN(ke_omci_tapi_vlan_translation_set)(1, 100, 200, 1); }
void opt_rule_in_place(Ctx &c) { FN(ke_omci_tapi_vlan_translation_opt_set)(1, &c.rule); }
void qinq_in_place(Ctx &) { FN(ke_omci_tapi_qinq_set)(1, 100, 200, 1); }
void full_rule_in_place(Ctx &c) { FN(ke_omci_tapi_qinq_full_set)(1, &c.rule); }
void vlan_rule_in_place(Ctx &c) { FN(ke_omci_tapi_qinq_vlan_set)(1, &c.rule); }

void two_wan_slots(Ctx &) { g_uci["network.pon_2"] = "interface"; }

void no_wan_slot(Ctx &) { g_uci.erase("network.pon_1"); }

// The TR-069 connection, second in the list: set, it marks the TR-069 WAN
// status.  Three slots in use, so that a slot read that fails still counts
// it in.
void tr069_update(Ctx &c)
{
    two_wan_slots(c);
    g_uci["network.pon_3"] = "interface";
    c.wan_attr.us_service = 1;
}

void dhcp_internet(Ctx &c)
{
    c.wan_conn.ui_service = KE_WAN_SERVICE_INTERNET;
    c.wan_conn.uc_addr_mode = KE_WAN_ADDR_DHCP;
}

void create_without_vlan(Ctx &c)
{
    no_wan_slot(c);
    c.wan_attr.ui_vlan_id_set = 0;
}

// ---- Sites that differ from their family's rule ------------------------

// The caller's own memory is the request: after a failure it holds
// whatever the transport left there.
Expect caller_buffer(const Site &s, Expect e)
{
    if (s.kind == Kind::kRemote)
        e.written = kAnything;
    return e;
}

// The follow-up of a GEM port mapping on an SFU is best effort.
Expect mapping_follow_up(const Site &s, Expect e)
{
    if (s.kind == Kind::kTable)
        return kGoesOn(0);
    return e;
}

// The port's mode is read before table 822 is written; a failed read is
// printed and counts as HGU.
Expect mode_read_goes_on(const Site &s, Expect e)
{
    if (has(s, "Get 834"))
        return kGoesOn(kClean, 0, kNothing);
    return e;
}

// Table 808 writes of a multicast VLAN list are not checked.
Expect member_writes_unchecked(const Site &s, Expect e)
{
    if (has(s, "Set 808"))
        return kGoesOn(kClean, 0, kNothing);
    return e;
}

// The first-use initialisation: the system information is not used, a
// failed board read leaves the count 0, and each port's clearing goes on
// as far as it can: [824 list, 817 read, 817 write, 817 write] per port.
Expect init_sites(const Site &s, Expect e)
{
    if (s.kind == Kind::kRemote)
        return s.nth == 1 ? kGoesOn(kClean) : kStop(kClean);
    if (s.kind != Kind::kTable)
        return e;
    switch ((s.nth - 1) % 4) {
    case 1:
        return kGoesOn(kClean, 2);  // no read, no writes
    case 2:
        return kGoesOn(kClean, 1);  // the second write is not made
    default:
        return kGoesOn(kClean);
    }
}

// Clearing a port: its VLAN list is cleared first, unchecked.
Expect range_clr_sites(const Site &s, Expect e)
{
    if (has(s, "Set 824") && s.nth == 1)
        return kGoesOn(0, 0, kNothing);
    return e;
}

// A group row: its VLAN goes in first (808 writes unchecked).
// Nothing is rolled back: once the VLAN is in, a failed range read or
// write leaves it there.
Expect table_set_sites(const Site &s, Expect e)
{
    e = member_writes_unchecked(s, e);
    if (has(s, "817"))
        e.keeps_state = false;
    return e;
}

// Removing a row: the range is gone and counted down before the VLAN list
// is written without the VLAN; a failed list write leaves them so.
Expect table_del_sites(const Site &s, Expect e)
{
    if (has(s, "Set 824"))
        e.keeps_state = false;
    return e;
}

// The word the shards carry is saved before the start call, whatever it
// answers.
Expect upgrade_start_sites(const Site &s, Expect e)
{
    if (has(s, "sharding_start"))
        e.keeps_state = false;
    return e;
}

// The optical status read: only a failed registration-state read stops it.
Expect optical_attr_sites(const Site &s, Expect e)
{
    if (s.kind == Kind::kRemote && has(s, "regstate"))
        return kStop(KE_ERR_NOT_OPERATING);
    if (s.kind == Kind::kRemote)
        return kGoesOn(0);
    return e;
}

// The optical information read answers the failing code, copy included.
Expect optical_info_sites(const Site &s, Expect e)
{
    if (s.kind == Kind::kCopy)
        return {kInjected, 0, true, Trace::kNone, kAnything};
    return e;
}

// A failed remote call of the MAC table read is an empty table.
Expect br_table_sites(const Site &s, Expect e)
{
    if (s.kind == Kind::kRemote)
        e.written = FIELD(word);
    return e;
}

// The LOID store's fields are copied unchecked and silently.
Expect store_copies_silent(const Site &s, Expect e)
{
    if (s.kind == Kind::kCopy && (has(s, "(24)") || has(s, "(12)")))
        e.trace = Trace::kNone;
    return e;
}

Expect loid_copy_silent(const Site &s, Expect e)
{
    if (s.kind == Kind::kCopy)
        e.trace = Trace::kNone;
    return e;
}

// The codec list: a codec that changes entry scans the list.  Read of the
// entry (1), list length (2, a failed read is an empty list: refused),
// entries 2 and 3 (unreadable ones hold no codec), the exchange write and
// the entry's own write.
Expect codec_exchange_sites(const Site &s, Expect e)
{
    if (s.kind != Kind::kTable)
        return e;
    if (has(s, "Get 465"))
        return kStop(1, Trace::kNone);
    if (has(s, "Get 478") && s.nth == 3)
        return kGoesOn(0, 0, kNothing);
    if (has(s, "Get 478") && s.nth == 4)
        return kGoesOn(0, 1, kNothing);  // entry 3 unreadable: no exchange
    return e;
}

// The reorder answers the status of its last write; its reads and the
// other writes do not stop it.
Expect reorder_sites(const Site &s, Expect e)
{
    if (s.kind != Kind::kTable)
        return e;
    if (has(s, "Get 465"))
        return kStop(0);
    if (has(s, "Set 478") && s.nth == 7)
        return kStop(kInjected);
    return kGoesOn(0, 0, kNothing);
}

Expect rtp_get_sites(const Site &s, Expect e)
{
    if (has(s, "Get 473"))
        e.written = FIELD(rtp.ui_dscp);
    return e;
}

// Each output is written as soon as its read succeeded.
Expect line_status_sites(const Site &s, Expect e)
{
    if (has(s, "Get 467"))
        e.written = FIELD(line_status.ui_codec_used);
    if (has(s, "Get 671"))
        e.written = Region{offsetof(Ctx, line_status.ui_codec_used), 8};
    return e;
}

// The slot count reads each slot; a failed read is a free slot.
Expect slot_count_sites(const Site &s, Expect e)
{
    if (s.kind == Kind::kShell)
        return kGoesOn(0, 0, FIELD(word));
    return e;
}

// The DNS text of a creation: when it cannot be copied no server is
// added.  A server that cannot be copied into the value buffer is still
// added, so that copy's failure is like any other.
Expect dns_copies(const Site &s, Expect e)
{
    if (s.kind == Kind::kCopy && has(s, "strcpy_s(64)"))
        return kGoesOn(0, 4);  // two servers: a copy and a command each
    return e;
}

// Creation of a WAN interface (uci knows pon_1 and device pon.7): a slot
// read that fails makes that slot the free one, a device read that fails
// ends the conflict check, a section that cannot be added loses its
// settings, a DNS text that cannot be copied adds no server.  Nothing
// changes the result.
Expect create_sites(const Site &s, Expect e)
{
    if (s.kind == Kind::kShell) {
        if (has(s, "get network.pon_1 ") || has(s, "get network.@device[0].name"))
            return kGoesOn(0, 1);
        if (has(s, "add network device"))
            return kGoesOn(0, 13);
        if (has(s, "add igmpproxy phyint"))
            return kGoesOn(0, 3);
        return kGoesOn(0);
    }
    return dns_copies(s, e);
}

// The update of an existing connection, with two slots in use.
Expect wan_update_sites(const Site &s, Expect e)
{
    if (s.kind == Kind::kCHeap)
        return kStop(0x70000000, Trace::kNone);
    if (s.kind == Kind::kShell)
        return kGoesOn(0, 0, kNothing);  // one slot is still counted
    return e;
}

// Creation when no slot is in use (uci knows only device pon.7).  The
// caller's values are applied to the record first: without its address or
// mask a static connection is refused after the slot and device reads,
// without its gateway or DNS text it is created without them.
Expect wan_create_sites(const Site &s, Expect e)
{
    e = dns_copies(s, e);
    e.written = kNothing;
    if (s.kind == Kind::kShell) {
        if (has(s, "get network.@device[0].name"))
            return kGoesOn(0, 1, kNothing);
        if (has(s, "add network device"))
            return kGoesOn(0, 13, kNothing);
        if (has(s, "add igmpproxy phyint"))
            return kGoesOn(0, 3, kNothing);
        return kGoesOn(0, 0, kNothing);
    }
    if (has(s, "memcpy_s(4)") && s.nth == 2)
        e.after = 6;  // the address: the other copies, then 1 slot and 2 device reads
    if (has(s, "memcpy_s(4)") && s.nth == 3)
        e.after = 5;  // the mask
    if (has(s, "memcpy_s(4)") && s.nth == 4)
        e.skip = 2;  // the gateway: its text and its command
    if (has(s, "memcpy_s(256)"))
        e.skip = 5;  // the DNS text: its copy, and a copy and a command per server
    return e;
}

// A count that cannot be read is an empty table: nothing found.
Expect wan_get_sites(const Site &s, Expect e)
{
    if (has(s, "GetEntryNum"))
        return kStop(0x70000000, Trace::kNone);
    if (s.kind == Kind::kOsHeap)
        return kStop(0x7000001b, Trace::kNone);
    return e;
}

Expect wan_del_sites(const Site &s, Expect e)
{
    if (has(s, "GetEntryNum"))
        return kStop(0);
    if (has(s, "GetAllEntry"))
        return kStop(0, Trace::kCode);
    if (s.kind == Kind::kOsHeap)
        return kStop(0x7000001b);
    return e;
}

// ---- The rows ----------------------------------------------------------

// One row: the exported function f called with args (an expression in
// c, the caller's memory), the status of its clean run, and its sites.
// clang-format off
#define ROW(f, what, rule, setup, args, clean, adjust)                        \
    {#f, what, Rule::rule, setup,                                             \
     []([[maybe_unused]] Ctx &c) { return static_cast<uint32_t>(FN(f) args); }, \
     clean, adjust}
#define VOID_ROW(f, what, rule, setup, args, adjust)                          \
    {#f, what, Rule::rule, setup,                                             \
     []([[maybe_unused]] Ctx &c) { FN(f) args; return uint32_t{0}; },         \
     0, adjust}
// clang-format on

const Row kRows[] = {
    // T-CONTs and GEM ports.
    ROW(ke_omci_tapi_omcc_create, "", kNone, no_setup, (), 0, nullptr),
    ROW(ke_omci_tapi_omcc_destory, "", kNone, no_setup, (), 0, nullptr),
    ROW(ke_omci_tapi_gponmode_get, "", kTraced, no_setup, (&c.word), 0, nullptr),
    ROW(ke_omci_tapi_tcont_num_get, "", kTraced, no_setup, (&c.word), 0, caller_buffer),
    ROW(ke_omci_tapi_tcont_set, "", kTraced, no_setup, (3, 1025), 0, nullptr),
    ROW(ke_omci_tapi_tcont_get, "default T-CONT", kTraced, no_setup, (0, &c.word), 0, nullptr),
    ROW(ke_omci_tapi_tcont_get, "T-CONT 2", kTraced, no_setup, (2, &c.word), 0, nullptr),
    ROW(ke_omci_tapi_tcont_del, "", kPassed, no_setup, (3), 0, nullptr),
    ROW(ke_omci_tapi_dba_mode_get, "", kPassed, no_setup, (&c.word), 0, caller_buffer),
    ROW(ke_omci_tapi_gem_block_set, "", kPassed, no_setup, (48), 0, nullptr),
    ROW(ke_omci_tapi_gem_block_get, "", kPassed, no_setup, (&c.word), 0, caller_buffer),
    ROW(ke_omci_tapi_gemport_num_get, "", kPassed, no_setup, (&c.word), 0, caller_buffer),
    ROW(ke_omci_tapi_gemport_set, "", kTraced, no_setup, (5, c.block), 0, nullptr),
    ROW(ke_omci_tapi_gemport_get, "", kTraced, no_setup, (5, c.block), 0, nullptr),
    ROW(ke_omci_tapi_gemport_del, "", kPassed, no_setup, (5), 0, nullptr),
    ROW(ke_omci_tapi_gemport_loopback_set, "", kPassed, no_setup, (1, 2, 3), 0, nullptr),

    // Line keys, time of day, line control, optical module.
    ROW(ke_omci_tapi_msk_set, "", kPassed, no_setup, (c.block), 0, nullptr),
    ROW(ke_omci_tapi_aes_cmac, "", kTraced, no_setup,
        (reinterpret_cast<st_aes_cmac *>(c.block)), 0, nullptr),
    ROW(ke_omci_tapi_mckey_set, "", kPassed, no_setup, (1, 16, c.block), 0, nullptr),
    ROW(ke_omci_tapi_mckey_del, "", kPassed, no_setup, (1), 0, nullptr),
    ROW(ke_omci_tapi_time_set, "", kPassed, no_setup, (c.block), 0, nullptr),
    ROW(ke_omci_tapi_gpon_alarm_get, "", kTraced, no_setup, (c.block), 0, nullptr),
    ROW(ke_omci_tapi_gpon_set_mode, "", kPassed, no_setup, (&c.word), 0, caller_buffer),
    ROW(ke_omci_tapi_pon_start, "", kPassed, no_setup, (c.block), 0, caller_buffer),
    ROW(ke_omci_tapi_pon_stop, "", kPassed, no_setup, (), 0, nullptr),
    ROW(ke_omci_tapi_optical_attr_get, "in operation", kZero, no_setup, (0, c.words), 0,
        optical_attr_sites),
    ROW(ke_omci_tapi_optical_attr_get, "forced", kZero, no_setup, (1, c.words), 0,
        optical_attr_sites),
    ROW(ke_omci_tapi_optical_info_get, "", kPassed, no_setup, (c.block), 0, optical_info_sites),
    ROW(ke_omci_tapi_pmu_attr_set, "", kNone, no_setup, (), 0, nullptr),
    ROW(ke_omci_tapi_pmu_attr_get, "", kNone, no_setup, (), 0, nullptr),

    // GEM port mapping: on an SFU the port's IGMP GEM port follows.
    ROW(ke_omci_tapi_map_set, "SFU, IGMP follows", kTraced, igmp_on_port_1, (&c.map), 0,
        mapping_follow_up),
    ROW(ke_omci_tapi_map_get, "", kPassed, no_setup, (&c.map), 0, nullptr),
    ROW(ke_omci_tapi_map_del, "", kPassed, no_setup, (&c.map), 0, nullptr),

    // Bridge and QoS.
    ROW(ke_omci_tapi_br_learn_set, "", kTraced, no_setup, (1, 1), 0, nullptr),
    ROW(ke_omci_tapi_br_learn_get, "", kTraced, no_setup, (1, &c.word), 0, nullptr),
    ROW(ke_omci_tapi_br_num_set, "SFU", kTraced, no_setup, (1, 64), 0, nullptr),
    ROW(ke_omci_tapi_br_num_set, "HGU", kNone, hgu_cached, (1, 64), 0, nullptr),
    ROW(ke_omci_tapi_br_age_set, "", kPassed, no_setup, (300), 0, nullptr),
    ROW(ke_omci_tapi_br_age_get, "", kPassed, no_setup, (&c.word), 0, caller_buffer),
    ROW(ke_omci_tapi_br_enable, "", kPassed, no_setup, (&c.word), 0, caller_buffer),
    ROW(ke_omci_tapi_br_filter_set, "", kTraced, no_setup, (1, c.block), 0, nullptr),
    ROW(ke_omci_tapi_br_filter_get, "", kTraced, no_setup, (1, c.block), 0, nullptr),
    ROW(ke_omci_tapi_br_filter_del, "", kTraced, no_setup, (1, c.block), 0, nullptr),
    ROW(ke_omci_tapi_br_table_get, "", kZero,
        [](Ctx &c) {
    c.word = BR_TABLE_MAX; },
        (1, &c.word, reinterpret_cast<st_br_mac *>(c.block)), 0, br_table_sites),
    ROW(ke_omci_tapi_dscp_map_set, "", kTraced, no_setup, (c.block), 0, nullptr),
    ROW(ke_omci_tapi_pri_marking_set, "", kTraced, no_setup, (1, c.block), 0, nullptr),
    ROW(ke_omci_tapi_pri_marking_del, "", kTraced, no_setup, (1, c.block), 0, nullptr),
    ROW(ke_omci_tapi_car_set, "", kTraced, no_setup, (&c.word, c.block), 0, nullptr),
    ROW(ke_omci_tapi_car_get, "", kTraced, no_setup, (1, c.block), 0, nullptr),
    ROW(ke_omci_tapi_car_release, "", kPassed, no_setup, (1), 0, nullptr),
    ROW(ke_omci_tapi_queue_set, "", kTraced, no_setup, (1, 2, c.block), 0, nullptr),
    ROW(ke_omci_tapi_queue_get, "", kTraced, no_setup, (1, 2, c.block), 0, nullptr),
    ROW(ke_omci_tapi_queue_num_get, "", kTraced, no_setup, (1, &c.word), 0, nullptr),
    ROW(ke_omci_tapi_tcont_policy_set, "", kTraced, no_setup, (1, 2), 0, nullptr),

    // Counters.
    ROW(ke_omci_tapi_stat_fec_get, "", kTraced, no_setup, (c.block), 0, nullptr),
    ROW(ke_omci_tapi_stat_gemport_get, "", kTraced, no_setup,
        (1, reinterpret_cast<st_gemport_stat *>(c.block)), 0, nullptr),
    ROW(ke_omci_tapi_stat_tc_get, "", kTraced, no_setup, (c.words), 0, nullptr),
    ROW(ke_omci_tapi_stat_downmng_get, "", kTraced, no_setup, (c.words), 0, nullptr),
    ROW(ke_omci_tapi_stat_upmng_get, "", kTraced, no_setup, (c.words), 0, nullptr),
    ROW(ke_omci_tapi_stat_galeth_get, "", kTraced, no_setup, (&c.word), 0, nullptr),
    ROW(ke_omci_tapi_stat_eth_get, "", kTraced, no_setup,
        (1, reinterpret_cast<st_eth_stat *>(c.block)), 0, nullptr),
    ROW(ke_omci_tapi_stat_brport_get, "", kTraced, no_setup,
        (1, reinterpret_cast<st_brport_stat *>(c.block)), 0, nullptr),
    ROW(ke_omci_tapi_stat_eth_clr, "", kNone, no_setup, (), 0, nullptr),
    ROW(ke_omci_tapi_stat_bridge_get, "", kNone, no_setup, (), 0, nullptr),

    // Device management.
    ROW(ke_omci_tapi_sysinfo_get, "first call fetches", kTraced, no_setup, (&c.sysinfo), 0,
        nullptr),
    ROW(ke_omci_tapi_sysinfo_get, "cached", kTraced, sysinfo_cached, (&c.sysinfo), 0, nullptr),
    ROW(ke_omci_tapi_sn_loid_get, "", kTraced, no_setup, (&c.loid), 0, store_copies_silent),
    ROW(ke_omci_tapi_reboot, "", kTraced, no_setup, (), 0, nullptr),
    ROW(ke_omci_tapi_upgrade_start, "", kTraced, no_setup, (7, c.block), 0, upgrade_start_sites),
    ROW(ke_omci_tapi_upgrade_write, "", kTraced, no_setup, (c.shard, 100), 0, nullptr),
    ROW(ke_omci_tapi_upgrade_stop, "", kTraced, no_setup, (), 0, nullptr),
    ROW(ke_omci_tapi_port_type_get, "", kTraced, no_setup, (1, &c.word), 0, nullptr),
    ROW(ke_omci_tapi_port_state_get, "", kTraced, no_setup, (1, &c.word), 0, nullptr),
    ROW(ke_omci_tapi_port_ethmode_get, "", kTraced, no_setup, (1, &c.word), 0, nullptr),
    ROW(ke_omci_tapi_port_link_get, "", kTraced, no_setup, (1, &c.word), 0, nullptr),
    ROW(ke_omci_tapi_port_loopback_get, "", kTraced, no_setup, (1, &c.word), 0, nullptr),
    ROW(ke_omci_tapi_port_pause_get, "", kTraced, no_setup, (1, &c.word), 0, nullptr),
    ROW(ke_omci_tapi_port_state_set, "", kTraced, no_setup, (1, 1), 0, nullptr),
    ROW(ke_omci_tapi_port_ethmode_set, "", kTraced, no_setup, (1, 2), 0, nullptr),
    ROW(ke_omci_tapi_port_loopback_set, "", kTraced, no_setup, (1, 1), 0, nullptr),
    ROW(ke_omci_tapi_port_pause_set, "", kTraced, no_setup, (1, 1), 0, nullptr),
    ROW(ke_omci_tapi_port_incar_set, "", kTraced, no_setup, (1, 100, 200, 300, 400), 0, nullptr),
    ROW(ke_omci_tapi_port_outcar_set, "", kTraced, no_setup, (1, 300), 0, nullptr),
    ROW(ke_omci_tapi_port_mtu_set, "", kNone, no_setup, (1, 1500), 0, nullptr),
    ROW(ke_omci_tapi_port_mtu_get, "", kNone, no_setup, (1, &c.word), 0, nullptr),
    ROW(ke_omci_tapi_port_pptpinstid_get, "", kTraced, no_setup, (1, &c.half), 0, nullptr),

    // Lifecycle and served calls.
    ROW(ke_omci_tapi_init, "", kNone, no_setup, (), 0, nullptr),
    VOID_ROW(ke_omci_tapi_exit, "", kNone, no_setup, (), nullptr),
    ROW(ke_omci_set_loid, "", kPassed, no_setup, (&c.loid), 0, caller_buffer),
    ROW(ke_omci_set_loidpwd, "", kPassed, no_setup, (&c.loid), 0, caller_buffer),
    ROW(ke_omci_mc_param_get, "", kPassed, [](Ctx &c) {
    c.word = 1; }, (&c.word), 0,
        caller_buffer),
    ROW(ke_ke_omci_set_loid_call, "", kZero, no_setup, (&c.loid, KE_SET_LOID_REQ_LEN), 0,
        loid_copy_silent),
    ROW(ke_ke_omci_set_loidpwd_call, "", kZero, no_setup, (&c.loid, KE_SET_LOID_REQ_LEN), 0,
        loid_copy_silent),
    ROW(ke_ke_omci_mc_param_get_call, "", kZero,
        [](Ctx &c) {
    mc_ready(c);
    c.word = 1;
        },
        (&c.word, KE_MC_PARAM_GET_REQ_LEN), 0, nullptr),
    ROW(ke_ke_omci_mc_param_get_ipc, "", kZero,
        [](Ctx &c) {
    mc_ready(c);
    c.word = 1;
        },
        (&c.word), 0, nullptr),
    ROW(ke_ke_omci_set_loid_ipc, "", kZero, no_setup, (&c.loid), 0, loid_copy_silent),
    ROW(ke_ke_omci_set_loidpwd_ipc, "", kZero, no_setup, (&c.loid), 0, loid_copy_silent),

    // VLAN rules, translation and QinQ, port mode.
    ROW(ke_omci_tapi_vlan_filter_set, "", kZero, no_setup, (1, 2), 0, nullptr),
    ROW(ke_omci_tapi_vlan_filter_get, "", kZero, no_setup, (1, &c.word), 0, nullptr),
    ROW(ke_omci_tapi_vlan_set, "", kZero, no_setup, (1, 100), 0, nullptr),
    ROW(ke_omci_tapi_vlan_del, "", kZero, no_setup, (1, 100), 0, nullptr),
    ROW(ke_omci_tapi_defpri_set, "", kZero, no_setup, (1, 5), 0, nullptr),
    ROW(ke_omci_tapi_tagact_set, "", kZero, no_setup, (1, 1, 2, 3), 0, nullptr),
    ROW(ke_omci_tapi_deftag_set, "", kZero, no_setup, (1, 100, 5, 2), 0, nullptr),
    ROW(ke_omci_tapi_deftag_get, "", kNone, no_setup, (), 0, nullptr),
    ROW(ke_omci_tapi_tpid_set, "", kNone, no_setup, (), 0, nullptr),
    ROW(ke_omci_tapi_untag_addtag_set, "", kNone, no_setup, (), 0, nullptr),
    ROW(ke_omci_tapi_untag_addtag_del, "", kNone, no_setup, (), 0, nullptr),
    ROW(ke_omci_tapi_vlan_translation_set, "", kZero, no_setup, (1, 100, 200, 1), 0, nullptr),
    ROW(ke_omci_tapi_vlan_translation_del, "", kZero, translation_in_place, (1, 100), 0, nullptr),
    ROW(ke_omci_tapi_vlan_translation_opt_set, "", kZero, no_setup, (1, &c.rule), 0, nullptr),
    ROW(ke_omci_tapi_vlan_translation_opt_del, "", kZero, opt_rule_in_place, (1, &c.rule), 0,
        nullptr),
    ROW(ke_omci_tapi_port_qinq_set, "", kZero, no_setup, (1, 3, 200, 1), 0, nullptr),
    ROW(ke_omci_tapi_port_qinq_del, "", kZero, qinq_in_place, (1, 100), 0, nullptr),
    ROW(ke_omci_tapi_qinq_set, "", kZero, no_setup, (1, 100, 200, 1), 0, nullptr),
    ROW(ke_omci_tapi_qinq_del, "", kZero, qinq_in_place, (1, 100), 0, nullptr),
    ROW(ke_omci_tapi_qinq_full_set, "", kZero, no_setup, (1, &c.rule), 0, nullptr),
    ROW(ke_omci_tapi_qinq_full_del, "", kZero, full_rule_in_place, (1, &c.rule), 0, nullptr),
    ROW(ke_omci_tapi_qinq_vlan_set, "", kZero, no_setup, (1, &c.rule), 0, nullptr),
    ROW(ke_omci_tapi_qinq_vlan_del, "", kZero, vlan_rule_in_place, (1, &c.rule), 0, nullptr),
    ROW(ke_omci_tapi_tls_ctag_set, "", kNone, no_setup, (), 0, nullptr),
    ROW(ke_omci_tapi_tls_ctag_del, "", kNone, no_setup, (), 0, nullptr),
    ROW(ke_omci_tapi_tls_stag_set, "", kNone, no_setup, (), 0, nullptr),
    ROW(ke_omci_tapi_tls_stag_del, "", kNone, no_setup, (), 0, nullptr),
    ROW(ke_omci_tapi_check_port_mode_is_sfu, "", kZero, no_setup, (1), 1, nullptr),
    ROW(ke_omci_update_the_cm_table, "", kErrorWord, no_setup, (&c.port_mode), 0, nullptr),
    ROW(ke_omci_init_the_port_to_sfu, "", kErrorWord, no_setup, (1), 0, nullptr),
    ROW(ke_omci_restore_the_port_to_hgu, "", kErrorWord, no_setup, (1), 0, nullptr),
    ROW(ke_omci_notify_sfu_trunk, "", kErrorWord, no_setup, (1, 2), 0, nullptr),

    // Multicast.
    VOID_ROW(ke_omci_mc_data_init, "", kZero, no_setup, (), init_sites),
    ROW(ke_omci_tapi_mc_attr_set, "", kTraced, no_setup, (&c.mc_attr), 0, nullptr),
    ROW(ke_omci_tapi_mc_attr_get, "", kNone, no_setup, (&c.mc_attr), 0, nullptr),
    ROW(ke_omci_tapi_mc_igmp_attr_set, "", kTraced, mc_ready, (1, &c.igmp), 0, mode_read_goes_on),
    ROW(ke_omci_tapi_mc_igmp_attr_get, "initialised", kNone, igmp_on_port_1, (1, &c.igmp), 0,
        nullptr),
    ROW(ke_omci_tapi_mc_igmp_attr_get, "first use initialises", kZero, no_setup, (1, &c.igmp), 0,
        [](const Site &s, Expect e) {
    e = init_sites(s, e);
    e.written = kAnything;
    return e;
        }),
    ROW(ke_omci_tapi_mc_tagact_set, "", kTraced, mc_ready, (1, 3), 0, mode_read_goes_on),
    ROW(ke_omci_tapi_mc_usr_vlan_set, "", kTraced, mc_ready, (1, 10), 0, mode_read_goes_on),
    ROW(ke_omci_tapi_mc_uprate_set, "", kTraced, mc_ready, (1, 64), 0, nullptr),
    ROW(ke_omci_tapi_mc_group_num_set, "counted port", kTraced, mc_ready, (1, 16), 0, nullptr),
    ROW(ke_omci_tapi_mc_group_num_set, "port beyond the count", kNone, mc_ready,
        (kBoardPorts, 16), 0, nullptr),
    ROW(ke_omci_tapi_mc_group_num_set_proc, "", kTraced, no_setup, (1, 16), 0, nullptr),
    ROW(ke_omci_mc_vlan_set_proc, "", kTraced, no_setup, (1, c.vlans, MC_VLAN_MAX), 0,
        member_writes_unchecked),
    ROW(ke_omci_tapi_mc_vlan_set, "", kTraced, mc_ready, (&c.mc_vlan), 0,
        member_writes_unchecked),
    ROW(ke_omci_tapi_mc_vlan_del, "", kTraced, two_mc_vlans, (&c.mc_vlan), 0,
        member_writes_unchecked),
    ROW(ke_omci_tapi_mc_vlan_clr, "", kTraced, mc_ready, (1), 0, nullptr),
    ROW(ke_omci_tapi_mc_table_set, "", kTraced, mc_ready, (&c.mc_row), 0, table_set_sites),
    ROW(ke_omci_tapi_mc_table_del, "last range of its VLAN", kZero, group_row_added, (&c.mc_row),
        0, table_del_sites),
    ROW(ke_omci_tapi_mc_range_clr, "", kTraced, mc_ready, (1), 0, range_clr_sites),
    ROW(ke_omci_tapi_mc_filter_set, "", kNone, no_setup, (), 0, nullptr),
    ROW(ke_omci_tapi_mc_filter_del, "", kNone, no_setup, (), 0, nullptr),

    // VoIP WAN: the uci toolkit, the creation of an interface, the
    // connection itself.
    ROW(omci_uci_get, "", kShell, no_setup, ("network.pon_1", c.text, sizeof c.text), 0, nullptr),
    ROW(omci_uci_add, "", kShell, no_setup, ("network device", c.text, sizeof c.text), 0, nullptr),
    ROW(omci_iptochar, "", kZero, no_setup, (c.block, c.text, sizeof c.text), 0, nullptr),
    ROW(__omci_chartoip, "", kNone, no_setup, ("192.168.1.1"), 0x0101A8C0, nullptr),
    VOID_ROW(mac_increase_with_offset, "", kNone, no_setup, (c.mac, 3), nullptr),
    ROW(igdCmConfGetEntryNumByUci, "", kZero, two_wan_slots, (&c.word), 0, slot_count_sites),
    ROW(igdCmConfAddByUci, "static voice", kZero, no_setup, (&c.wan_conn), 0, create_sites),
    ROW(igdCmConfAddByUci, "DHCP internet", kZero, dhcp_internet, (&c.wan_conn), 0, create_sites),
    ROW(ke_omci_tapi_voip_wan_set, "update", kTraced, two_wan_slots, (&c.wan_attr), 0,
        wan_update_sites),
    ROW(ke_omci_tapi_voip_wan_set, "update TR-069", kTraced, tr069_update, (&c.wan_attr), 0,
        wan_update_sites),
    ROW(ke_omci_tapi_voip_wan_set, "create", kZero, no_wan_slot, (&c.wan_attr), 0,
        wan_create_sites),
    ROW(ke_omci_tapi_voip_wan_set, "nothing to create from", kZero, create_without_vlan,
        (&c.wan_attr), 0, wan_create_sites),
    ROW(ke_omci_tapi_voip_wan_get, "", kSilent, no_setup, (&c.wan_attr), 0, wan_get_sites),
    ROW(ke_omci_tapi_voip_wan_del, "TR-069", kSilent, no_setup, (1), 0, wan_del_sites),

    // VoIP service.
    ROW(ke_omci_tapi_voip_udptcp_set, "", kTraced, no_setup, (&c.udptcp), 0, nullptr),
    ROW(ke_omci_tapi_voip_proxyserver_set, "", kTraced, no_setup, (&c.server), 0, nullptr),
    ROW(ke_omci_tapi_voip_regserver_set, "", kTraced, no_setup, (&c.server), 0, nullptr),
    ROW(ke_omci_tapi_voip_outbserver_set, "", kTraced, no_setup, (&c.server), 0, nullptr),
    ROW(ke_omci_tapi_voip_agent_set, "", kTraced, no_setup, (&c.agent), 0, nullptr),
    ROW(ke_omci_tapi_voip_codec_set, "codec unchanged", kTraced, no_setup, (&c.codec_same), 0,
        nullptr),
    ROW(ke_omci_tapi_voip_codec_set, "codec exchanged", kTraced, no_setup, (&c.codec), 0,
        codec_exchange_sites),
    ROW(ke_omci_tapi_voip_codec_get, "", kTraced, no_setup, (&c.codec), 0, nullptr),
    ROW(ke_omci_tapi_voip_codec_priority_reorder, "", kZero, no_setup, (), 0, reorder_sites),
    ROW(ke_omci_tapi_voip_regtime_set, "", kTraced, no_setup, (&c.regtime), 0, nullptr),
    ROW(ke_omci_tapi_voip_regtime_get, "", kTraced, no_setup, (&c.regtime), 0, nullptr),
    ROW(ke_omci_tapi_voip_offhooktime_set, "", kTraced, [](Ctx &c) {
    c.word = 30; }, (&c.word), 0,
        nullptr),
    ROW(ke_omci_tapi_voip_offhooktime_get, "", kTraced, no_setup, (&c.word), 0, nullptr),
    ROW(ke_omci_tapi_voip_sipauth_set, "", kTraced, no_setup, (&c.sipauth), 0, nullptr),
    ROW(ke_omci_tapi_voip_sipauth_get, "", kTraced, no_setup, (&c.sipauth), 0, nullptr),
    ROW(ke_omci_tapi_voip_gain_set, "", kTraced, no_setup, (&c.gain), 0, nullptr),
    ROW(ke_omci_tapi_voip_gain_get, "", kTraced, no_setup, (&c.gain), 0, nullptr),
    ROW(ke_omci_tapi_voip_hookstatus_get, "", kTraced, no_setup, (&c.hook), 0, nullptr),
    ROW(ke_omci_tapi_voip_type_set, "", kTraced, [](Ctx &c) {
    c.word = 2; }, (&c.word), 0,
        nullptr),
    ROW(ke_omci_tapi_voip_type_get, "", kTraced, no_setup, (&c.word), 0, nullptr),
    ROW(ke_omci_tapi_voip_adminstate_set, "", kTraced, no_setup, (&c.admin), 0, nullptr),
    ROW(ke_omci_tapi_voip_adminstate_get, "", kTraced, no_setup, (&c.admin), 0, nullptr),
    ROW(ke_omci_tapi_voip_rtp_set, "", kTraced, no_setup, (&c.rtp), 0, nullptr),
    ROW(ke_omci_tapi_voip_rtp_get, "", kTraced, no_setup, (&c.rtp), 0, rtp_get_sites),
    ROW(ke_omci_tapi_voip_silence_set, "", kTraced, no_setup, (&c.silence), 0, nullptr),
    ROW(ke_omci_tapi_voip_faxmode_set, "", kTraced, [](Ctx &c) {
    c.word = 1; }, (&c.word), 0,
        nullptr),
    ROW(ke_omci_tapi_voip_digitmap_set, "", kNone, no_setup, (c.block), 0, nullptr),
    ROW(ke_omci_tapi_voip_line_status_get, "", kTraced, no_setup, (&c.line_status), 0,
        line_status_sites),
    ROW(ke_omci_tapi_voip_rtppm_get, "", kTraced, no_setup, (&c.rtp_pm), 0, nullptr),
    ROW(ke_omci_tapi_voip_callctrlpm_get, "", kTraced, no_setup, (&c.callctrl_pm), 0, nullptr),
    ROW(ke_omci_tapi_voip_sip_agentpm_get, "", kTraced, no_setup, (&c.sip_agent_pm), 0, nullptr),
    ROW(ke_omci_tapi_voip_sip_callinitpm_get, "", kTraced, no_setup, (&c.sip_callinit_pm), 0,
        nullptr),
    ROW(ke_omci_tapi_voip_emergency_get, "", kTraced, no_setup, (&c.byte), 0, nullptr),

    // Remote management.
    ROW(ke_omci_tapi_tr069_server_set, "", kTraced, no_setup, (&c.tr069), 0, nullptr),
    ROW(ke_omci_tapi_tr069_server_get, "", kTraced, no_setup, (&c.tr069), 0, nullptr),
    ROW(ke_omci_tapi_voip_conf_set, "", kTraced, [](Ctx &c) {
    c.word = 1; }, (&c.word), 0,
        nullptr),
    ROW(ke_omci_tapi_voip_conf_get, "", kTraced, no_setup, (&c.word), 0, nullptr),
    ROW(ke_omci_tapi_tr069_conf_set, "", kTraced, [](Ctx &c) {
    c.word = 1; }, (&c.word), 0,
        nullptr),
    ROW(ke_omci_tapi_tr069_status_get, "", kNone, no_setup, (&c.word), 0, nullptr),
    ROW(ke_omci_tapi_voip_cnfig_method_set, "", kNone, no_setup, (3), 0, nullptr),
    ROW(ke_omci_tapi_voip_cnfig_method_get, "", kNone, no_setup, (), 0, nullptr),
};

// ---- Running a row -----------------------------------------------------

struct Fault {
    Kind kind;
    unsigned nth;
};

struct Outcome {
    std::string error;  // the library could not be loaded and hooked
    uint32_t status = 0;
    std::vector<Op> ops;
    std::string printed;
    std::vector<uint8_t> before, after;
    std::string state_before, state_after;
    Recorder rec;
};

// The state the library keeps between calls, as its own readers show it:
// the multicast global attributes and the cache of port 1 (by the dump,
// which never initialises anything), the system-information cache, the
// word saved for the shards, the LOID store, the TR-069 WAN status and the
// VoIP configuration method.  Taken with the recorder off and no failure
// pending; it makes remote calls and table reads, but changes nothing.
std::string state_of()
{
    std::ostringstream out;
    st_mc_attr attr = {};
    FN(ke_omci_tapi_mc_attr_get)(&attr);
    uint32_t port = 1;
    uint32_t dumped = 0;
    out << attr.ui_igmp_ver << " " << attr.ui_mc_mode << "\n"
        << ketest::printed([&] { dumped = FN(ke_ke_omci_mc_param_get_ipc)(&port); }) << dumped
        << "\n";
    const auto *sysinfo = static_cast<const uint8_t *>(g_lib->symbol("gst_sysinfo"));
    for (size_t i = 0; sysinfo != nullptr && i < sizeof(st_sysinfo); ++i)
        out << hex(sysinfo[i]);
    static uint8_t shard[UPGRADE_SHARD_MAX];
    FN(ke_omci_tapi_upgrade_write)(shard, 0);
    out << "\nshards carry " << ketest::u32_at(kestub::ipc_calls().back().request, 0);
    st_sn_loid loid = {};
    FN(ke_omci_tapi_sn_loid_get)(&loid);
    for (uint8_t b : loid.auc_loid)
        out << hex(b);
    for (uint8_t b : loid.auc_loid_pwd)
        out << hex(b);
    uint32_t status = 0;
    FN(ke_omci_tapi_tr069_status_get)(&status);
    out << "\nTR-069 WAN " << status << ", method " << FN(ke_omci_tapi_voip_cnfig_method_get)();
    return out.str();
}

void no_failure_pending()
{
    kestub::ipc_fail_nth(0, 0);
    kestub::cm_fail_nth(0, 0);
    kestub::os_fail_malloc(0);
    g_rec.inject = false;
}

std::vector<uint8_t> bytes_of_ctx()
{
    const auto *b = reinterpret_cast<const uint8_t *>(&g_ctx);
    return std::vector<uint8_t>(b, b + sizeof g_ctx);
}

Outcome run(const Row &row, const Fault *fault, bool gate_open = true)
{
    Outcome r;
    world();
    kestub::log_set(gate_open);
    r.error = g_lib->open();
    if (!r.error.empty()) {
        g_lib->close();
        return r;
    }
    g_rec = Recorder{};
    write_inputs(g_ctx);
    row.setup(g_ctx);
    r.state_before = state_of();
    r.before = bytes_of_ctx();

    if (fault != nullptr) {
        switch (fault->kind) {
        case Kind::kRemote:
            kestub::ipc_fail_nth(fault->nth, kRemoteFailure);
            break;
        case Kind::kTable:
            kestub::cm_fail_nth(fault->nth, kTableFailure);
            break;
        case Kind::kOsHeap:
            kestub::os_fail_malloc(fault->nth);
            break;
        default:
            g_rec.inject = true;
            g_rec.fail_kind = fault->kind;
            g_rec.fail_nth = fault->nth;
            break;
        }
    }
    kestub::capture_begin();
    g_rec.on = true;
    r.status = row.call(g_ctx);
    g_rec.on = false;
    r.printed = kestub::capture_end();
    r.after = bytes_of_ctx();
    r.ops = g_rec.ops;
    r.rec = g_rec;
    no_failure_pending();
    r.state_after = state_of();
    g_lib->close();
    return r;
}

uint32_t injected_code(Kind kind)
{
    switch (kind) {
    case Kind::kRemote:
        return kRemoteFailure;
    case Kind::kTable:
        return kTableFailure;
    case Kind::kCopy:
        return kCopyFailure;
    default:
        return 0;
    }
}

std::string describe(const Row &row)
{
    return std::string(row.function) +
           (*row.what != '\0' ? std::string(" (") + row.what + ")" : "");
}

std::string describe(const Site &s)
{
    return std::string(kKindNames[static_cast<size_t>(s.kind)]) + " #" + std::to_string(s.nth) +
           " [" + s.label + "]";
}

// Every byte outside the region the run may write is as it was.
::testing::AssertionResult untouched_outside(const Outcome &r, Region allowed)
{
    if (allowed.len == SIZE_MAX)
        return ::testing::AssertionSuccess();
    for (size_t i = 0; i < r.before.size(); ++i) {
        if (i >= allowed.off && i - allowed.off < allowed.len)
            continue;
        if (r.before[i] != r.after[i])
            return ::testing::AssertionFailure()
                   << "caller's memory written at Ctx offset " << i << " (" << hex(r.before[i])
                   << " -> " << hex(r.after[i]) << ")";
    }
    return ::testing::AssertionSuccess();
}

// The functions that may take heap, all of it given back before they
// return: uci's output is read through a file, and the VoIP WAN
// connection is looked up in a list taken from the configuration manager.
// No other function takes any, on any path.
bool takes_heap(const char *function)
{
    static const std::set<std::string> kTakers = {
        "omci_uci_get",         "omci_uci_add",          "igdCmConfGetEntryNumByUci",
        "igdCmConfAddByUci",    "ke_omci_tapi_voip_wan_set", "ke_omci_tapi_voip_wan_get",
        "ke_omci_tapi_voip_wan_del"};
    return kTakers.count(function) != 0;
}

::testing::AssertionResult heap_as_expected(const Row &row, const Outcome &r)
{
    const Recorder &h = r.rec;
    auto failure = [&](const char *what) {
        return ::testing::AssertionFailure()
               << what << ": ke_os_malloc " << h.os_taken << "/" << h.os_given << ", malloc "
               << h.c_taken << "/" << h.c_given << ", the C library on its behalf "
               << h.others_taken << "/" << h.others_given << " (taken/given back)";
    };
    if (!takes_heap(row.function) &&
        h.os_taken + h.os_given + h.c_taken + h.c_given + h.others_taken + h.others_given != 0)
        return failure("heap on a path that takes none");
    if (h.os_taken != h.os_given || h.c_taken != h.c_given || h.others_taken != h.others_given)
        return failure("heap left taken");
    return ::testing::AssertionSuccess();
}

// After the failing operation the run makes exactly the operations of the
// clean run that follow it, less the `skip` right after it.
::testing::AssertionResult flow_as_expected(const Outcome &clean, const Outcome &r, const Site &s,
                                            const Expect &e)
{
    if (r.ops.size() <= s.pos || r.ops[s.pos].label != s.label || !r.ops[s.pos].failed)
        return ::testing::AssertionFailure() << "the failure did not land on the site";
    if (e.stop) {
        if (r.ops.size() != s.pos + 1)
            return ::testing::AssertionFailure()
                   << r.ops.size() - s.pos - 1 << " operations after a failure that ends the call, "
                   << "first [" << r.ops[s.pos + 1].label << "]";
        return ::testing::AssertionSuccess();
    }
    const size_t rest = clean.ops.size() - s.pos - 1;
    const size_t want =
        e.after >= 0 ? static_cast<size_t>(e.after) : rest - std::min<size_t>(e.skip, rest);
    const size_t got = r.ops.size() - s.pos - 1;
    if (got != want || e.skip > rest || want > rest)
        return ::testing::AssertionFailure()
               << got << " operations after the failure, expected " << want;
    // They are the clean run's, in its order: all of them, a prefix, or
    // all but the ones left out.  Remote calls and table operations must
    // match by name, the others by kind.
    auto same = [](const Op &a, const Op &b) {
        bool named = a.kind == Kind::kRemote || a.kind == Kind::kTable;
        return a.kind == b.kind && (!named || a.label == b.label);
    };
    size_t c = s.pos + 1;
    for (size_t i = s.pos + 1; i < r.ops.size(); ++i, ++c) {
        while (c < clean.ops.size() && !same(r.ops[i], clean.ops[c]) && e.after < 0 &&
               c - i < e.skip)
            ++c;
        if (c >= clean.ops.size() || !same(r.ops[i], clean.ops[c]))
            return ::testing::AssertionFailure()
                   << "operation " << i << " [" << r.ops[i].label << "] is not the clean run's";
    }
    return ::testing::AssertionSuccess();
}

// The whole output line (with its line feed) that first carries text.
std::string line_with(const std::string &printed, const std::string &text)
{
    size_t at = printed.find(text);
    if (at == std::string::npos)
        return "";
    size_t start = printed.rfind('\n', at);
    start = start == std::string::npos ? 0 : start + 1;
    size_t end = printed.find('\n', at);
    return printed.substr(start, end == std::string::npos ? end : end - start + 1);
}

// format with its "%s" replaced by the name that opens line.
std::string wan_form_of(const std::string &line, const char *format)
{
    size_t open = line.find('(');
    std::string name = line.size() > 1 && open != std::string::npos ? line.substr(1, open - 1) : "";
    std::string out = format;
    out.replace(out.find("%s"), 2, name);
    return out;
}

// The name a failure is reported under where it is not the exported
// function's own: that of the procedure or reader making the operation.
// The first entry of the row's function (or of the row itself) whose text
// is in the site's label holds.
struct ReportedAs {
    const char *function;  // or "function (what)" for one row
    const char *site;
    const char *name;
};
const ReportedAs kReportedAs[] = {
    {"ke_omci_tapi_map_set", "board_info", "ke_omci_tapi_sysinfo_get"},
    {"ke_omci_tapi_map_set", "sysinfo_data", "ke_omci_tapi_sysinfo_get"},
    {"ke_omci_tapi_map_set", "memcpy_s", "ke_omci_tapi_sysinfo_get"},
    {"ke_omci_tapi_port_pptpinstid_get", "", "ke_omci_tapi_port_type_get"},
    {"ke_omci_tapi_mc_attr_set", "Set 819", "ke_omci_mc_ctrl_type_set_proc"},
    {"ke_omci_tapi_mc_attr_set", "Set 820", "ke_omci_mc_ver_mode_set_proc"},
    {"ke_omci_tapi_mc_attr_set", "Set 826", "ke_omci_mc_ver_mode_set_proc"},
    {"ke_omci_tapi_mc_attr_set", "Set 821", "ke_omci_mc_glb_attr_set_proc"},
    {"ke_omci_tapi_mc_group_num_set", "Set 818", "ke_omci_tapi_mc_group_num_set_proc"},
    {"ke_omci_tapi_mc_uprate_set", "Set 825", "ke_omci_tapi_mc_uprate_set_proc"},
    {"ke_omci_tapi_mc_igmp_attr_set", "Set 822", "ke_omci_mc_port_set_proc"},
    {"ke_omci_tapi_mc_tagact_set", "Set 822", "ke_omci_mc_port_set_proc"},
    {"ke_omci_tapi_mc_usr_vlan_set", "Set 822", "ke_omci_mc_port_set_proc"},
    {"ke_omci_tapi_mc_vlan_set", "Set 824", "ke_omci_mc_vlan_set_proc"},
    {"ke_omci_tapi_mc_vlan_del", "Set 824", "ke_omci_mc_vlan_set_proc"},
    {"ke_omci_tapi_mc_vlan_clr", "Set 824", "ke_omci_mc_vlan_set_proc"},
    {"ke_omci_tapi_mc_table_set", "Set 824", "ke_omci_mc_vlan_set_proc"},
    {"ke_omci_tapi_mc_table_set", "817", "ke_omci_mc_range_add_proc"},
    {"ke_omci_tapi_mc_table_set", "memcpy_s", "ke_omci_mc_range_add_proc"},
    {"ke_omci_tapi_mc_table_del", "memcpy_s", "ke_omci_mc_range_del_proc"},
    {"ke_omci_tapi_voip_codec_set", "Get 478", "CheckCodecListPriority"},
    {"ke_omci_tapi_voip_codec_set (codec exchanged)", "Set 478", "CheckCodecListPriority"},
    {"ke_omci_tapi_voip_line_status_get", "669", "ke_omci_tapi_voip_line_rtp_stats_get"},
    {"ke_omci_tapi_voip_line_status_get", "467", "ke_omci_tapi_voip_user_reg_info_get"},
    {"ke_omci_tapi_voip_line_status_get", "671", "ke_omci_tapi_voip_line_call_stats_get"},
    {"ke_omci_tapi_voip_wan_set", "Set 448", "ke_omci_tapi_voip_set_wan"},
    {"ke_omci_tapi_voip_wan_set", "memcpy_s", "ke_omci_tapi_voip_set_wan_attr"},
    {"ke_omci_tapi_voip_wan_set", "strcpy_s(16)", "igdCmConfAddByUci"},
    {"ke_omci_tapi_voip_wan_set", "", "ke_omci_tapi_voip_get_wan"},
};

const char *reported_as(const Row &row, const Site &s)
{
    for (const ReportedAs &r : kReportedAs)
        if ((r.function == describe(row) || std::strcmp(r.function, row.function) == 0) &&
            has(s, r.site))
            return r.name;
    return row.function;
}

::testing::AssertionResult trace_as_expected(const Row &row, const Outcome &r, const Site &s,
                                             const Expect &e)
{
    const std::string code = hex(injected_code(s.kind));
    switch (e.trace) {
    case Trace::kNone:
        break;
    case Trace::kCode: {
        // The failed-call line, or the VoIP WAN set's own form of it.
        const std::string line = line_with(r.printed, code);
        std::string func;
        int at = 0;
        char wan_form[160];
        std::snprintf(wan_form, sizeof wan_form, "[%%s(%%d)][INFO]:i_ret =%s\n", code.c_str());
        if (!ketest::parse_info_line(line, &func, &at, injected_code(s.kind)) &&
            !ketest::matches_at_line(line, wan_form_of(line, wan_form)))
            return ::testing::AssertionFailure()
                   << "no failed-call line with " << code << " in: " << r.printed;
        const std::string name = line.substr(1, line.find('(') - 1);
        if (name != reported_as(row, s))
            return ::testing::AssertionFailure() << "traced under " << name << ": " << line;
        // A procedure's failure may be followed by one line of its caller,
        // with 1; nothing else is traced.
        std::string rest = r.printed;
        rest.erase(rest.find(line), line.size());
        const std::string own = line_with(rest, "i_ret =");
        if (!own.empty() &&
            (name == row.function || !ketest::parse_info_line(own, &func, &at, 1) ||
             rest.find("i_ret =", rest.find(own) + own.size()) != std::string::npos))
            return ::testing::AssertionFailure() << "more failed-call lines: " << r.printed;
        break;
    }
    case Trace::kSilent:
        // Neither the code nor any failed-call line ("ui_ret =", "i_ret =").
        if (r.printed.find(code) != std::string::npos ||
            r.printed.find("i_ret =") != std::string::npos)
            return ::testing::AssertionFailure() << "traced " << code << ": " << r.printed;
        break;
    case Trace::kCopyLine: {
        std::string op = s.label.substr(0, s.label.find('('));
        std::string line = op + " return[" + std::to_string(kCopyFailure) + "] failed \r\n";
        if (r.printed.find(line) == std::string::npos)
            return ::testing::AssertionFailure()
                   << "no copy line \"" << line << "\" in: " << r.printed;
        const std::string full = line_with(r.printed, line);
        if (!ketest::is_copy_line(full, reported_as(row, s), op, kCopyFailure))
            return ::testing::AssertionFailure() << "copy line not under "
                                                 << reported_as(row, s) << ": " << full;
        break;
    }
    }
    return ::testing::AssertionSuccess();
}

// The "[name(line)" that opens the first output line carrying text, or "".
std::string traced_at(const std::string &printed, const std::string &text)
{
    const std::string line = line_with(printed, text);
    return line.substr(0, line.find(')') + 1);
}

// With the log gate closed a traced failure prints no trace, and the
// function does exactly what it did with the gate open.
::testing::AssertionResult same_with_gate_closed(const Outcome &open, const Outcome &closed,
                                                 const Site &s)
{
    const std::string code = hex(injected_code(s.kind));
    if (closed.status != open.status || closed.ops.size() != open.ops.size())
        return ::testing::AssertionFailure()
               << "with the log gate closed: status " << hex(closed.status) << " after "
               << closed.ops.size() << " operations";
    if (closed.printed.find(code) != std::string::npos)
        return ::testing::AssertionFailure()
               << "traced with the log gate closed: " << closed.printed;
    return ::testing::AssertionSuccess();
}

struct Tally {
    std::set<std::string> functions;
    unsigned rows = 0;
    unsigned sites[kKinds] = {};
    unsigned checked[kKinds] = {};
};

class FaultSweep : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        g_lib = new Library;
        // Standard output takes its buffer at its first line: take it now.
        ketest::printed([] { std::printf("warm-up\n"); });
    }
    static void TearDownTestSuite()
    {
        delete g_lib;
        g_lib = nullptr;
        kestub::reset();
    }
};

TEST_F(FaultSweep, EveryFailureSiteOfEveryExportedFunction)
{
    std::map<std::string, Tally> by_family;
    const std::map<std::string, std::string> family = ketest::exported_names(KE_EXPORTS_DIR);
    Tally all;

    for (const Row &row : kRows) {
        SCOPED_TRACE(describe(row));
        const Outcome clean = run(row, nullptr);
        ASSERT_EQ(clean.error, "");
        Tally &fam = by_family[family.count(row.function) ? family.at(row.function) : "?"];
        fam.functions.insert(row.function);
        all.functions.insert(row.function);
        ++fam.rows;
        ++all.rows;

        EXPECT_EQ(hex(clean.status), hex(row.clean_status)) << "clean run";
        EXPECT_TRUE(heap_as_expected(row, clean)) << "clean run";
        EXPECT_EQ(clean.ops.empty(), row.rule == Rule::kNone)
            << clean.ops.size() << " back-end operations in the clean run";
        for (const Op &op : clean.ops)
            EXPECT_FALSE(op.failed) << "clean run: [" << op.label << "] failed";

        // Each failure site traces its own source line.
        std::map<std::string, std::string> site_of_line;
        unsigned nth[kKinds] = {};
        for (size_t pos = 0; pos < clean.ops.size(); ++pos) {
            const Op &op = clean.ops[pos];
            const Site site{op.kind, ++nth[static_cast<size_t>(op.kind)], pos, op.label,
                            &clean.ops};
            SCOPED_TRACE(describe(site) + " failing");
            Expect e = rule_expect(row.rule, site);
            if (row.adjust != nullptr)
                e = row.adjust(site, e);
            ++fam.sites[static_cast<size_t>(site.kind)];
            ++all.sites[static_cast<size_t>(site.kind)];
            if (e.status == kNoRule) {
                ADD_FAILURE() << "the row gives no rule for this site";
                continue;
            }
            const Fault fault{site.kind, site.nth};
            const Outcome r = run(row, &fault);
            ASSERT_EQ(r.error, "");

            uint32_t want = e.status == kInjected ? injected_code(site.kind)
                            : e.status == kClean  ? clean.status
                                                  : e.status;
            bool ok = r.status == want;
            EXPECT_EQ(hex(r.status), hex(want)) << "status";
            std::vector<::testing::AssertionResult> checks = {
                flow_as_expected(clean, r, site, e), untouched_outside(r, e.written),
                trace_as_expected(row, r, site, e), heap_as_expected(row, r)};
            if (e.stop && e.keeps_state && r.state_after != r.state_before)
                checks.push_back(::testing::AssertionFailure() << "the library's state changed:\n"
                                                               << r.state_before << "\n->\n"
                                                               << r.state_after);
            if (e.trace == Trace::kCode) {
                const Outcome closed = run(row, &fault, false);
                checks.push_back(same_with_gate_closed(r, closed, site));
                checks.push_back(heap_as_expected(row, closed));
                const std::string line = traced_at(r.printed, hex(injected_code(site.kind)));
                auto seen = site_of_line.emplace(line, describe(site));
                if (!line.empty() && !seen.second)
                    checks.push_back(::testing::AssertionFailure()
                                     << "traced at " << line << "], as " << seen.first->second);
            }
            for (const auto &check : checks) {
                ok &= static_cast<bool>(check);
                EXPECT_TRUE(check);
            }
            if (ok) {
                ++fam.checked[static_cast<size_t>(site.kind)];
                ++all.checked[static_cast<size_t>(site.kind)];
            }
        }
    }

    // The figures for docs/reliability.md.
    auto sum = [](const unsigned(&v)[kKinds]) {
        unsigned n = 0;
        for (unsigned x : v)
            n += x;
        return n;
    };
    std::printf(
        "| Family | Functions | Rows | Remote | Table | Shell | Heap | Copies | "
        "Sites covered |\n|---|---|---|---|---|---|---|---|---|\n");
    for (const auto &f : by_family) {
        const Tally &t = f.second;
        std::printf("| %s | %zu | %u | %u | %u | %u | %u | %u | %u of %u |\n", f.first.c_str(),
                    t.functions.size(), t.rows, t.sites[0], t.sites[1], t.sites[2],
                    t.sites[3] + t.sites[4], t.sites[5], sum(t.checked), sum(t.sites));
    }
    std::printf(
        "fault sweep: %zu functions in %u rows, %u of %u failure sites covered "
        "(remote %u, table %u, shell %u, heap %u, copies %u)\n",
        all.functions.size(), all.rows, sum(all.checked), sum(all.sites), all.sites[0],
        all.sites[1], all.sites[2], all.sites[3] + all.sites[4], all.sites[5]);
    EXPECT_EQ(sum(all.checked), sum(all.sites));
}

// A fresh copy per run only helps if the copy really goes away.
TEST_F(FaultSweep, EachRunLoadsTheLibraryAfresh)
{
    const Row &init = *std::find_if(std::begin(kRows), std::end(kRows), [](const Row &r) {
        return std::strcmp(r.function, "ke_omci_tapi_sysinfo_get") == 0;
    });
    for (int i = 0; i < 2; ++i) {
        Outcome r = run(init, nullptr);
        ASSERT_EQ(r.error, "");
        EXPECT_EQ(r.ops.size(), 8u) << "run " << i << " found the cache filled";
        EXPECT_FALSE(g_lib->lingers());
    }
    bool linked = false;
    dl_iterate_phdr(
        [](dl_phdr_info *info, size_t, void *data) {
            if (info->dlpi_name != nullptr &&
                std::strstr(info->dlpi_name, "libke_omci_tapi") != nullptr)
                *static_cast<bool *>(data) = true;
            return 0;
        },
        &linked);
    EXPECT_FALSE(linked) << "the program itself links the library";
}

// The recorder sees the library's operations and only those, and a
// failure it injects lands where it is asked to.
TEST_F(FaultSweep, RecorderSeesOnlyTheLibrary)
{
    world();
    ASSERT_EQ(g_lib->open(), "");
    g_rec = Recorder{};
    g_rec.on = true;
    uint32_t word = 0;
    ke_ipc_call("ke_ke_sml_gpon_mode_get_call", &word, sizeof word);  // not the library's
    uint8_t block[KE_GEMPORT_ATTR_LEN] = {1, 2, 3};
    g_rec.inject = true;
    g_rec.fail_kind = Kind::kCopy;
    g_rec.fail_nth = 1;
    uint32_t status = 0;
    std::string out = ketest::printed([&] { status = FN(ke_omci_tapi_gemport_get)(5, block); });
    g_rec.on = false;
    g_lib->close();

    EXPECT_EQ(status, 0u);
    ASSERT_EQ(g_rec.ops.size(), 2u);
    EXPECT_EQ(g_rec.ops[0].label, "ke_ke_sml_gpon_gemport_get_call");
    EXPECT_EQ(g_rec.ops[1].label, "memcpy_s(28)");
    EXPECT_TRUE(g_rec.ops[1].failed);
    EXPECT_EQ(kestub::ipc_calls().size(), 2u);  // both calls reached the stand-in
    EXPECT_EQ(std::count(block, block + sizeof block, 0), static_cast<long>(sizeof block))
        << "a failed copy clears its destination";
    EXPECT_NE(out.find("memcpy_s return[406] failed \r\n"), std::string::npos) << out;
}

// The heap counter sees each way of taking heap, inside the C library
// too, and leaves the platform's and this program's own work out.
TEST_F(FaultSweep, HeapCounterSeesTheCLibraryButNotThePlatform)
{
    void *(*volatile take)(size_t) = std::malloc;
    void (*volatile give)(void *) = std::free;
    auto measure = [](auto fn) {
        g_rec = Recorder{};
        g_rec.on = true;
        fn();
        g_rec.on = false;
        return std::make_pair(g_rec.others_taken, g_rec.others_given);
    };
    using Counts = std::pair<unsigned, unsigned>;
    EXPECT_EQ(measure([&] { give(take(16)); }), Counts(1, 1));
    EXPECT_EQ(measure([&] { give(strdup("text in the C library's own allocation")); }),
              Counts(1, 1));
    EXPECT_EQ(measure([&] { give(std::realloc(std::calloc(2, 8), 64)); }), Counts(2, 2));
    world();
    ASSERT_EQ(g_lib->open(), "");
    const Counts library = measure([] { FN(ke_omci_tapi_tcont_del)(3); });
    g_lib->close();
    EXPECT_EQ(library, Counts(0, 0));
    EXPECT_EQ(kestub::ipc_calls().size(), 1u);  // recorded, so the stand-in allocated
}


// Every exported function has at least one row, and every row names one.
TEST_F(FaultSweep, EveryExportedFunctionHasARow)
{
    world();
    ASSERT_EQ(g_lib->open(), "");
    const std::set<std::string> functions = ketest::exported_functions(
        KE_EXPORTS_DIR, [](const char *name) { return g_lib->symbol(name); });
    g_lib->close();
    EXPECT_EQ(functions.count("gst_sysinfo"), 0u) << "a data object taken for a function";
    std::set<std::string> rows;
    for (const Row &row : kRows)
        rows.insert(row.function);
    EXPECT_TRUE(ketest::one_row_each(functions, rows)) << "export lists in " KE_EXPORTS_DIR;
}

}  // namespace
