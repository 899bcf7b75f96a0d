// No heap on any remote-call path.  Every exported function is called on
// its success path and then with each of its back-end calls failing in
// turn (log gate open, so failure lines are printed), and the heap
// allocations made meanwhile are counted: by the library itself, by the C
// library on its behalf, and through the platform's ke_os_malloc.  The
// platform stand-in allocates to record what it sees; its work is not
// counted, which is why this program defines every platform function with
// a fixed argument list as a forward to the stand-in's own definition.
//
// One row per call; a new exported function needs at least one row, and
// the last test fails until it has one.
// A 32-bit build reads directories of a 64-bit host (under emulation) only
// with 64-bit directory offsets.
#define _FILE_OFFSET_BITS 64

#include <dlfcn.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <set>
#include <string>

#include "ke_omci_tapi/bridge_qos.h"
#include "ke_omci_tapi/device.h"
#include "ke_omci_tapi/lifecycle.h"
#include "ke_omci_tapi/mc.h"
#include "ke_omci_tapi/pon.h"
#include "ke_omci_tapi/stat.h"
#include "ke_omci_tapi/vlan.h"
#include "ke_omci_tapi/voip_wan.h"
#include "ke_omci_tapi/voip.h"
#include "ke_omci_tapi/remote_mgmt.h"
#include "export_lists.h"
#include "../src/mc/param_dump.h"
#include "export_lists.h"
#include "platform.h"
#include "stub_test.h"

namespace {

// ---- Allocation counter ------------------------------------------------

struct Counter {
    bool open = false;            // inside a measured call
    unsigned platform_depth = 0;  // inside a platform function
    unsigned allocations = 0;
    unsigned releases = 0;
};

Counter g_count;

bool counting() { return g_count.open && g_count.platform_depth == 0; }

void note_allocation()
{
    if (counting())
        ++g_count.allocations;
}

void note_release(const volatile void *ptr)
{
    if (ptr != nullptr && counting())
        ++g_count.releases;
}

struct PlatformScope {
    PlatformScope() { ++g_count.platform_depth; }
    ~PlatformScope() { --g_count.platform_depth; }
    PlatformScope(const PlatformScope &) = delete;
    PlatformScope &operator=(const PlatformScope &) = delete;
};

// Runs fn and answers what it allocated and released.
template <class Fn>
Counter measure(Fn fn)
{
    g_count = Counter{};
    g_count.open = true;
    fn();
    g_count.open = false;
    return g_count;
}

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

// ---- Platform functions: forwards to the stand-in ----------------------

namespace {

template <class Fn>
Fn *stand_in(const char *name)
{
    void *sym = dlsym(RTLD_NEXT, name);
    if (sym == nullptr)
        std::abort();
    return reinterpret_cast<Fn *>(sym);
}

}  // namespace

#define KE_FORWARD(ret, name, params, args)                           \
    extern "C" ret name params                                        \
    {                                                                 \
        PlatformScope scope;                                          \
        static auto *const next = stand_in<ret params>(#name);       \
        return next args;                                             \
    }

KE_FORWARD(uint32_t, ke_ipc_call, (const char *name, void *buf, uint32_t len), (name, buf, len))
KE_FORWARD(uint32_t, ke_log_print_on, (uint32_t module, uint32_t level), (module, level))
KE_FORWARD(char *, ke_os_strtok, (char *str, const char *delim), (str, delim))
KE_FORWARD(int, ke_os_memcmp, (const void *a, const void *b, uint32_t len), (a, b, len))
KE_FORWARD(int, ke_os_strcasecmp, (const char *a, const char *b), (a, b))
KE_FORWARD(int, ke_os_atoi, (const char *text, uint32_t *value), (text, value))
KE_FORWARD(uint32_t, igdCmConfGet, (uint32_t table, void *record, uint32_t size),
           (table, record, size))
KE_FORWARD(uint32_t, igdCmConfSet, (uint32_t table, void *record, uint32_t size),
           (table, record, size))
KE_FORWARD(uint32_t, igdCmConfAdd, (uint32_t table, void *record, uint32_t size),
           (table, record, size))
KE_FORWARD(uint32_t, igdCmConfDel, (uint32_t table, void *record, uint32_t size),
           (table, record, size))
KE_FORWARD(uint32_t, igdCmConfGetEntryNum, (uint32_t table, uint32_t *count), (table, count))
KE_FORWARD(uint32_t, igdCmConfGetAllEntry,
           (uint32_t table, void *buf, uint32_t size, uint32_t count), (table, buf, size, count))
KE_FORWARD(uint32_t, igdCmOamCtrl, (uint32_t code), (code))
KE_FORWARD(int, bdinfo_get_value, (const char *key, char *buf, uint32_t size), (key, buf, size))
KE_FORWARD(int, memcpy_s, (void *dest, ke_rsize_t destsz, const void *src, ke_rsize_t count),
           (dest, destsz, src, count))
KE_FORWARD(int, memset_s, (void *dest, ke_rsize_t destsz, int ch, ke_rsize_t count),
           (dest, destsz, ch, count))
KE_FORWARD(int, system, (const char *command), (command))
KE_FORWARD(int, strcpy_s, (char *dest, ke_rsize_t destsz, const char *src), (dest, destsz, src))

// The platform's heap is heap too: what the library takes from it counts.
extern "C" void *ke_os_malloc(uint32_t size)
{
    note_allocation();
    PlatformScope scope;
    static auto *const next = stand_in<void *(uint32_t)>("ke_os_malloc");
    return next(size);
}

extern "C" void ke_os_free(void *ptr)
{
    note_release(ptr);
    PlatformScope scope;
    static auto *const next = stand_in<void(void *)>("ke_os_free");
    next(ptr);
}

namespace {

// ---- The calls ---------------------------------------------------------

enum class Heap {
    kNone,              // no allocation at all
    kFreedBeforeReturn  // takes heap and gives all of it back before returning
};

struct Row {
    const char *function;  // the exported function the row calls
    const char *what;      // the case, for failure messages
    Heap heap;
    bool back_end;  // makes a remote call or a configuration-manager operation
    void (*call)();
};

uint32_t g_word;  // an output word the calls may write
uint16_t g_half;
uint8_t g_block[64];
uint8_t g_shard[UPGRADE_SHARD_MAX];
st_sysinfo g_sysinfo;
st_sn_loid g_loid;
st_vlan_rule g_rule = {100, KE_VLAN_NO_MATCH, KE_VLAN_NO_MATCH, 200, 3, 1};
st_port_mode_update g_port_mode;
char g_text[64];
uint32_t g_mac[6];
st_wan_conn g_wan_conn;
st_voip_wan_attr g_wan_attr;

alignas(8) uint8_t g_record[512];  // the largest caller records (MAC table, counters)
template <class T>
T *record_as() { return reinterpret_cast<T *>(g_record); }

st_voip_udptcp g_udptcp = {1, 5060, 17, 0xB8};
st_voip_server g_server = {{'s'}, 5060, 17};
st_voip_agent g_agent = {{'a'}, 5060};
st_voip_codec g_codec = {1, 18, 1, 0, 20};
st_voip_regtime g_regtime = {1, 3600, 300};
st_voip_sipauth g_sipauth = {1, {'u'}, {'p'}, {'r'}};
st_voip_gain g_gain = {1, 2, 3};
st_voip_hook g_hook = {1, 0};
st_voip_admin g_admin = {1, 1};
st_voip_rtp g_rtp = {1, 50000, 50100, 46};
st_voip_silence g_silence = {1, 1};
st_voip_line_status g_line_status = {1, 0, 0, {0, 0}};
st_voip_rtp_pm g_rtp_pm = {1, 0, 0, 0, 0, 0, 0, 0};
st_voip_callctrl_pm g_callctrl_pm = {1, 0, 0, 0, 0, 0};
st_voip_sip_agent_pm g_sip_agent_pm = {1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
st_voip_sip_callinit_pm g_sip_callinit_pm = {1, 0, 0, 0, 0, 0};
st_tr069_server g_tr069 = {{'h'}, {'u'}, {'p'}};
uint8_t g_byte;

st_gem_map_param g_map = {1, 100, 5, 1, 0x400, 3};
st_mc_attr g_mc_attr = {3, 1, 1};
st_mc_igmp_attr g_igmp = {2, 100, 5, 0x400};
st_mc_vlan g_mc_vlan = {1, 100};
st_mc_table g_mc_row = {0, 0, 100, 0, {0xE0}, {0xE0, 1}, 1};
uint32_t g_vlans[MC_VLAN_MAX] = {100, 200, MC_VLAN_NONE, MC_VLAN_NONE,
                                 MC_VLAN_NONE, MC_VLAN_NONE, MC_VLAN_NONE, MC_VLAN_NONE};

constexpr Row kRows[] = {
    {"ke_omci_tapi_omcc_create", "", Heap::kNone, false, [] { ke_omci_tapi_omcc_create(); }},
    {"ke_omci_tapi_omcc_destory", "", Heap::kNone, false, [] { ke_omci_tapi_omcc_destory(); }},
    {"ke_omci_tapi_gponmode_get", "", Heap::kNone, true,
     [] { ke_omci_tapi_gponmode_get(&g_word); }},
    {"ke_omci_tapi_tcont_num_get", "", Heap::kNone, true,
     [] { ke_omci_tapi_tcont_num_get(&g_word); }},
    {"ke_omci_tapi_tcont_set", "", Heap::kNone, true, [] { ke_omci_tapi_tcont_set(3, 1025); }},
    {"ke_omci_tapi_tcont_get", "default T-CONT", Heap::kNone, true,
     [] { ke_omci_tapi_tcont_get(0, &g_word); }},
    {"ke_omci_tapi_tcont_get", "T-CONT 2", Heap::kNone, true,
     [] { ke_omci_tapi_tcont_get(2, &g_word); }},
    {"ke_omci_tapi_tcont_del", "", Heap::kNone, true, [] { ke_omci_tapi_tcont_del(3); }},
    {"ke_omci_tapi_dba_mode_get", "", Heap::kNone, true,
     [] { ke_omci_tapi_dba_mode_get(&g_word); }},
    {"ke_omci_tapi_gem_block_set", "", Heap::kNone, true,
     [] { ke_omci_tapi_gem_block_set(48); }},
    {"ke_omci_tapi_gem_block_get", "", Heap::kNone, true,
     [] { ke_omci_tapi_gem_block_get(&g_word); }},
    {"ke_omci_tapi_gemport_num_get", "", Heap::kNone, true,
     [] { ke_omci_tapi_gemport_num_get(&g_word); }},
    {"ke_omci_tapi_gemport_set", "", Heap::kNone, true,
     [] { ke_omci_tapi_gemport_set(5, g_block); }},
    {"ke_omci_tapi_gemport_set", "no attributes", Heap::kNone, true,
     [] { ke_omci_tapi_gemport_set(5, nullptr); }},
    {"ke_omci_tapi_gemport_get", "", Heap::kNone, true,
     [] { ke_omci_tapi_gemport_get(5, g_block); }},
    {"ke_omci_tapi_gemport_get", "no attribute buffer", Heap::kNone, true,
     [] { ke_omci_tapi_gemport_get(5, nullptr); }},
    {"ke_omci_tapi_gemport_del", "", Heap::kNone, true, [] { ke_omci_tapi_gemport_del(5); }},
    {"ke_omci_tapi_gemport_loopback_set", "", Heap::kNone, true,
     [] { ke_omci_tapi_gemport_loopback_set(1, 2, 3); }},
    {"ke_omci_tapi_msk_set", "", Heap::kNone, true, [] { ke_omci_tapi_msk_set(g_block); }},
    {"ke_omci_tapi_aes_cmac", "", Heap::kNone, true,
     [] { ke_omci_tapi_aes_cmac(record_as<st_aes_cmac>()); }},
    {"ke_omci_tapi_mckey_set", "", Heap::kNone, true,
     [] { ke_omci_tapi_mckey_set(1, 16, g_block); }},
    {"ke_omci_tapi_mckey_set", "key too long", Heap::kNone, true,
     [] { ke_omci_tapi_mckey_set(1, 17, g_block); }},
    {"ke_omci_tapi_mckey_del", "", Heap::kNone, true, [] { ke_omci_tapi_mckey_del(1); }},
    {"ke_omci_tapi_time_set", "", Heap::kNone, true, [] { ke_omci_tapi_time_set(g_block); }},
    {"ke_omci_tapi_gpon_alarm_get", "", Heap::kNone, true,
     [] { ke_omci_tapi_gpon_alarm_get(g_record); }},
    {"ke_omci_tapi_gpon_set_mode", "", Heap::kNone, true,
     [] { ke_omci_tapi_gpon_set_mode(&g_word); }},
    {"ke_omci_tapi_pon_start", "", Heap::kNone, true, [] { ke_omci_tapi_pon_start(g_block); }},
    {"ke_omci_tapi_pon_stop", "", Heap::kNone, true, [] { ke_omci_tapi_pon_stop(); }},
    {"ke_omci_tapi_optical_attr_get", "", Heap::kNone, true,
     [] { ke_omci_tapi_optical_attr_get(0, record_as<uint32_t>()); }},
    {"ke_omci_tapi_optical_info_get", "", Heap::kNone, true,
     [] { ke_omci_tapi_optical_info_get(g_block); }},
    {"ke_omci_tapi_optical_info_get", "no buffer", Heap::kNone, true,
     [] { ke_omci_tapi_optical_info_get(nullptr); }},
    {"ke_omci_tapi_pmu_attr_set", "", Heap::kNone, false, [] { ke_omci_tapi_pmu_attr_set(); }},
    {"ke_omci_tapi_pmu_attr_get", "", Heap::kNone, false, [] { ke_omci_tapi_pmu_attr_get(); }},

    {"ke_omci_tapi_init", "", Heap::kNone, false, [] { ke_omci_tapi_init(); }},
    {"ke_omci_tapi_exit", "", Heap::kNone, false, [] { ke_omci_tapi_exit(); }},
    {"ke_omci_set_loid", "", Heap::kNone, true, [] { ke_omci_set_loid(&g_loid); }},
    {"ke_omci_set_loidpwd", "", Heap::kNone, true, [] { ke_omci_set_loidpwd(&g_loid); }},
    {"ke_omci_mc_param_get", "", Heap::kNone, true, [] { ke_omci_mc_param_get(&g_word); }},
    {"ke_ke_omci_set_loid_call", "", Heap::kNone, false,
     [] { ke_ke_omci_set_loid_call(&g_loid, sizeof g_loid); }},
    {"ke_ke_omci_set_loidpwd_call", "", Heap::kNone, false,
     [] { ke_ke_omci_set_loidpwd_call(&g_loid, sizeof g_loid); }},
    {"ke_ke_omci_mc_param_get_call", "", Heap::kNone, false,
     [] { ke_ke_omci_mc_param_get_call(&g_word, sizeof g_word); }},
    {"ke_ke_omci_mc_param_get_ipc", "", Heap::kNone, false,
     [] { ke_ke_omci_mc_param_get_ipc(&g_word); }},
    {"ke_ke_omci_set_loid_ipc", "", Heap::kNone, false,
     [] { ke_ke_omci_set_loid_ipc(&g_loid); }},
    {"ke_ke_omci_set_loidpwd_ipc", "", Heap::kNone, false,
     [] { ke_ke_omci_set_loidpwd_ipc(&g_loid); }},

    {"ke_omci_tapi_sysinfo_get", "", Heap::kNone, true,
     [] { ke_omci_tapi_sysinfo_get(&g_sysinfo); }},
    {"ke_omci_tapi_sn_loid_get", "", Heap::kNone, true,
     [] { ke_omci_tapi_sn_loid_get(&g_loid); }},
    {"ke_omci_tapi_reboot", "", Heap::kNone, true, [] { ke_omci_tapi_reboot(); }},
    {"ke_omci_tapi_upgrade_start", "", Heap::kNone, true,
     [] { ke_omci_tapi_upgrade_start(7, g_block); }},
    {"ke_omci_tapi_upgrade_write", "", Heap::kNone, true,
     [] { ke_omci_tapi_upgrade_write(g_shard, sizeof g_shard); }},
    {"ke_omci_tapi_upgrade_stop", "", Heap::kNone, true, [] { ke_omci_tapi_upgrade_stop(); }},
    {"ke_omci_tapi_port_type_get", "", Heap::kNone, true,
     [] { ke_omci_tapi_port_type_get(1, &g_word); }},
    {"ke_omci_tapi_port_state_get", "", Heap::kNone, true,
     [] { ke_omci_tapi_port_state_get(1, &g_word); }},
    {"ke_omci_tapi_port_state_set", "", Heap::kNone, true,
     [] { ke_omci_tapi_port_state_set(1, 1); }},
    {"ke_omci_tapi_port_ethmode_get", "", Heap::kNone, true,
     [] { ke_omci_tapi_port_ethmode_get(1, &g_word); }},
    {"ke_omci_tapi_port_ethmode_set", "", Heap::kNone, true,
     [] { ke_omci_tapi_port_ethmode_set(1, 2); }},
    {"ke_omci_tapi_port_link_get", "", Heap::kNone, true,
     [] { ke_omci_tapi_port_link_get(1, &g_word); }},
    {"ke_omci_tapi_port_loopback_get", "", Heap::kNone, true,
     [] { ke_omci_tapi_port_loopback_get(1, &g_word); }},
    {"ke_omci_tapi_port_loopback_set", "", Heap::kNone, true,
     [] { ke_omci_tapi_port_loopback_set(1, 1); }},
    {"ke_omci_tapi_port_pause_get", "", Heap::kNone, true,
     [] { ke_omci_tapi_port_pause_get(1, &g_word); }},
    {"ke_omci_tapi_port_pause_set", "", Heap::kNone, true,
     [] { ke_omci_tapi_port_pause_set(1, 1); }},
    {"ke_omci_tapi_port_incar_set", "", Heap::kNone, true,
     [] { ke_omci_tapi_port_incar_set(1, 100, 200, 300, 400); }},
    {"ke_omci_tapi_port_outcar_set", "", Heap::kNone, true,
     [] { ke_omci_tapi_port_outcar_set(1, 300); }},
    {"ke_omci_tapi_port_mtu_set", "", Heap::kNone, false,
     [] { ke_omci_tapi_port_mtu_set(1, 1500); }},
    {"ke_omci_tapi_port_mtu_get", "", Heap::kNone, false,
     [] { ke_omci_tapi_port_mtu_get(1, &g_word); }},
    {"ke_omci_tapi_port_pptpinstid_get", "", Heap::kNone, true,
     [] { ke_omci_tapi_port_pptpinstid_get(1, &g_half); }},

    {"ke_omci_tapi_vlan_filter_set", "", Heap::kNone, true, [] { ke_omci_tapi_vlan_filter_set(1, 2); }},
    {"ke_omci_tapi_vlan_filter_get", "", Heap::kNone, true, [] { ke_omci_tapi_vlan_filter_get(1, &g_word); }},
    {"ke_omci_tapi_vlan_set", "", Heap::kNone, true, [] { ke_omci_tapi_vlan_set(1, 100); }},
    {"ke_omci_tapi_vlan_del", "", Heap::kNone, true, [] { ke_omci_tapi_vlan_del(1, 100); }},
    {"ke_omci_tapi_defpri_set", "", Heap::kNone, true, [] { ke_omci_tapi_defpri_set(1, 5); }},
    {"ke_omci_tapi_tagact_set", "", Heap::kNone, true, [] { ke_omci_tapi_tagact_set(1, 1, 2, 3); }},
    {"ke_omci_tapi_deftag_set", "", Heap::kNone, true, [] { ke_omci_tapi_deftag_set(1, 100, 5, 1); }},
    {"ke_omci_tapi_deftag_get", "", Heap::kNone, false, [] { ke_omci_tapi_deftag_get(); }},
    {"ke_omci_tapi_tpid_set", "", Heap::kNone, false, [] { ke_omci_tapi_tpid_set(); }},
    {"ke_omci_tapi_untag_addtag_set", "", Heap::kNone, false, [] { ke_omci_tapi_untag_addtag_set(); }},
    {"ke_omci_tapi_untag_addtag_del", "", Heap::kNone, false, [] { ke_omci_tapi_untag_addtag_del(); }},
    {"ke_omci_tapi_vlan_translation_set", "", Heap::kNone, true, [] { ke_omci_tapi_vlan_translation_set(1, 100, 200, 1); }},
    {"ke_omci_tapi_vlan_translation_del", "", Heap::kNone, true, [] { ke_omci_tapi_vlan_translation_del(1, 100); }},
    {"ke_omci_tapi_vlan_translation_opt_set", "", Heap::kNone, true, [] { ke_omci_tapi_vlan_translation_opt_set(1, &g_rule); }},
    {"ke_omci_tapi_vlan_translation_opt_del", "", Heap::kNone, true, [] { ke_omci_tapi_vlan_translation_opt_del(1, &g_rule); }},
    {"ke_omci_tapi_port_qinq_set", "", Heap::kNone, true, [] { ke_omci_tapi_port_qinq_set(1, 3, 200, 1); }},
    {"ke_omci_tapi_port_qinq_del", "", Heap::kNone, true, [] { ke_omci_tapi_port_qinq_del(1, 100); }},
    {"ke_omci_tapi_qinq_set", "", Heap::kNone, true, [] { ke_omci_tapi_qinq_set(1, 100, 200, 1); }},
    {"ke_omci_tapi_qinq_del", "", Heap::kNone, true, [] { ke_omci_tapi_qinq_del(1, 100); }},
    {"ke_omci_tapi_qinq_full_set", "", Heap::kNone, true, [] { ke_omci_tapi_qinq_full_set(1, &g_rule); }},
    {"ke_omci_tapi_qinq_full_del", "", Heap::kNone, true, [] { ke_omci_tapi_qinq_full_del(1, &g_rule); }},
    {"ke_omci_tapi_qinq_vlan_set", "", Heap::kNone, true, [] { ke_omci_tapi_qinq_vlan_set(1, &g_rule); }},
    {"ke_omci_tapi_qinq_vlan_del", "", Heap::kNone, true, [] { ke_omci_tapi_qinq_vlan_del(1, &g_rule); }},
    {"ke_omci_tapi_tls_ctag_set", "", Heap::kNone, false, [] { ke_omci_tapi_tls_ctag_set(); }},
    {"ke_omci_tapi_tls_ctag_del", "", Heap::kNone, false, [] { ke_omci_tapi_tls_ctag_del(); }},
    {"ke_omci_tapi_tls_stag_set", "", Heap::kNone, false, [] { ke_omci_tapi_tls_stag_set(); }},
    {"ke_omci_tapi_tls_stag_del", "", Heap::kNone, false, [] { ke_omci_tapi_tls_stag_del(); }},
    {"ke_omci_tapi_check_port_mode_is_sfu", "", Heap::kNone, true, [] { ke_omci_tapi_check_port_mode_is_sfu(1); }},
    {"ke_omci_update_the_cm_table", "", Heap::kNone, true, [] { ke_omci_update_the_cm_table(&g_port_mode); }},
    {"ke_omci_init_the_port_to_sfu", "", Heap::kNone, true, [] { ke_omci_init_the_port_to_sfu(1); }},
    {"ke_omci_restore_the_port_to_hgu", "", Heap::kNone, true, [] { ke_omci_restore_the_port_to_hgu(1); }},
    {"ke_omci_notify_sfu_trunk", "", Heap::kNone, true, [] { ke_omci_notify_sfu_trunk(1, 2); }},

    {"omci_uci_get", "", Heap::kFreedBeforeReturn, false,
     [] { omci_uci_get("network.pon_1.ifname", g_text, sizeof g_text); }},
    {"omci_uci_add", "", Heap::kFreedBeforeReturn, false,
     [] { omci_uci_add("network.device", g_text, sizeof g_text); }},
    {"omci_iptochar", "", Heap::kNone, false,
     [] { omci_iptochar(g_block, g_text, sizeof g_text); }},
    {"__omci_chartoip", "", Heap::kNone, false, [] { __omci_chartoip("192.168.1.1"); }},
    {"mac_increase_with_offset", "", Heap::kNone, false,
     [] { mac_increase_with_offset(g_mac, 3); }},
    {"igdCmConfGetEntryNumByUci", "", Heap::kFreedBeforeReturn, false,
     [] { igdCmConfGetEntryNumByUci(&g_word); }},
    {"igdCmConfAddByUci", "", Heap::kFreedBeforeReturn, false,
     [] { igdCmConfAddByUci(&g_wan_conn); }},
    {"ke_omci_tapi_voip_wan_set", "no WAN slot yet", Heap::kFreedBeforeReturn, false,
     [] {
         g_wan_attr.us_service = 1;
         g_wan_attr.ui_vlan_id = 100;
         g_wan_attr.ui_vlan_id_set = 1;
         ke_omci_tapi_voip_wan_set(&g_wan_attr);
     }},
    {"ke_omci_tapi_voip_wan_get", "", Heap::kFreedBeforeReturn, true,
     [] { ke_omci_tapi_voip_wan_get(&g_wan_attr); }},
    {"ke_omci_tapi_voip_wan_del", "", Heap::kFreedBeforeReturn, true,
     [] { ke_omci_tapi_voip_wan_del(1); }},

    {"ke_omci_tapi_br_learn_set", "", Heap::kNone, true, [] { ke_omci_tapi_br_learn_set(1, 1); }},
    {"ke_omci_tapi_br_learn_get", "", Heap::kNone, true,
     [] { ke_omci_tapi_br_learn_get(1, &g_word); }},
    {"ke_omci_tapi_br_num_set", "", Heap::kNone, true, [] { ke_omci_tapi_br_num_set(1, 64); }},
    {"ke_omci_tapi_br_age_set", "", Heap::kNone, true, [] { ke_omci_tapi_br_age_set(300); }},
    {"ke_omci_tapi_br_age_get", "", Heap::kNone, true, [] { ke_omci_tapi_br_age_get(&g_word); }},
    {"ke_omci_tapi_br_enable", "", Heap::kNone, true, [] { ke_omci_tapi_br_enable(&g_word); }},
    {"ke_omci_tapi_br_filter_set", "", Heap::kNone, true,
     [] { ke_omci_tapi_br_filter_set(1, g_block); }},
    {"ke_omci_tapi_br_filter_get", "", Heap::kNone, true,
     [] { ke_omci_tapi_br_filter_get(1, g_block); }},
    {"ke_omci_tapi_br_filter_del", "", Heap::kNone, true,
     [] { ke_omci_tapi_br_filter_del(1, g_block); }},
    {"ke_omci_tapi_br_table_get", "", Heap::kNone, true, [] {
         g_word = 32;
         ke_omci_tapi_br_table_get(1, &g_word, record_as<st_br_mac>());
     }},
    {"ke_omci_tapi_dscp_map_set", "", Heap::kNone, true,
     [] { ke_omci_tapi_dscp_map_set(g_record); }},
    {"ke_omci_tapi_pri_marking_set", "", Heap::kNone, true,
     [] { ke_omci_tapi_pri_marking_set(1, g_block); }},
    {"ke_omci_tapi_pri_marking_del", "", Heap::kNone, true,
     [] { ke_omci_tapi_pri_marking_del(1, g_block); }},
    {"ke_omci_tapi_car_set", "", Heap::kNone, true,
     [] { ke_omci_tapi_car_set(&g_word, g_block); }},
    {"ke_omci_tapi_car_get", "", Heap::kNone, true, [] { ke_omci_tapi_car_get(1, g_block); }},
    {"ke_omci_tapi_car_release", "", Heap::kNone, true, [] { ke_omci_tapi_car_release(1); }},
    {"ke_omci_tapi_queue_set", "", Heap::kNone, true,
     [] { ke_omci_tapi_queue_set(1, 2, g_block); }},
    {"ke_omci_tapi_queue_get", "", Heap::kNone, true,
     [] { ke_omci_tapi_queue_get(1, 2, g_block); }},
    {"ke_omci_tapi_queue_num_get", "", Heap::kNone, true,
     [] { ke_omci_tapi_queue_num_get(1, &g_word); }},
    {"ke_omci_tapi_tcont_policy_set", "", Heap::kNone, true,
     [] { ke_omci_tapi_tcont_policy_set(1, 2); }},

    {"ke_omci_tapi_stat_fec_get", "", Heap::kNone, true,
     [] { ke_omci_tapi_stat_fec_get(g_block); }},
    {"ke_omci_tapi_stat_gemport_get", "", Heap::kNone, true,
     [] { ke_omci_tapi_stat_gemport_get(1, record_as<st_gemport_stat>()); }},
    {"ke_omci_tapi_stat_tc_get", "", Heap::kNone, true,
     [] { ke_omci_tapi_stat_tc_get(record_as<uint32_t>()); }},
    {"ke_omci_tapi_stat_downmng_get", "", Heap::kNone, true,
     [] { ke_omci_tapi_stat_downmng_get(record_as<uint32_t>()); }},
    {"ke_omci_tapi_stat_upmng_get", "", Heap::kNone, true,
     [] { ke_omci_tapi_stat_upmng_get(record_as<uint32_t>()); }},
    {"ke_omci_tapi_stat_galeth_get", "", Heap::kNone, true,
     [] { ke_omci_tapi_stat_galeth_get(&g_word); }},
    {"ke_omci_tapi_stat_eth_get", "", Heap::kNone, true,
     [] { ke_omci_tapi_stat_eth_get(1, record_as<st_eth_stat>()); }},
    {"ke_omci_tapi_stat_brport_get", "", Heap::kNone, true,
     [] { ke_omci_tapi_stat_brport_get(1, record_as<st_brport_stat>()); }},
    {"ke_omci_tapi_stat_eth_clr", "", Heap::kNone, false, [] { ke_omci_tapi_stat_eth_clr(); }},
    {"ke_omci_tapi_stat_bridge_get", "", Heap::kNone, false,
     [] { ke_omci_tapi_stat_bridge_get(); }},
    {"ke_omci_tapi_voip_udptcp_set", "", Heap::kNone, true, [] { ke_omci_tapi_voip_udptcp_set(&g_udptcp); }},
    {"ke_omci_tapi_voip_proxyserver_set", "", Heap::kNone, true, [] { ke_omci_tapi_voip_proxyserver_set(&g_server); }},
    {"ke_omci_tapi_voip_regserver_set", "", Heap::kNone, true, [] { ke_omci_tapi_voip_regserver_set(&g_server); }},
    {"ke_omci_tapi_voip_outbserver_set", "", Heap::kNone, true, [] { ke_omci_tapi_voip_outbserver_set(&g_server); }},
    {"ke_omci_tapi_voip_agent_set", "", Heap::kNone, true, [] { ke_omci_tapi_voip_agent_set(&g_agent); }},
    {"ke_omci_tapi_voip_codec_set", "", Heap::kNone, true, [] { ke_omci_tapi_voip_codec_set(&g_codec); }},
    {"ke_omci_tapi_voip_codec_get", "", Heap::kNone, true, [] { ke_omci_tapi_voip_codec_get(&g_codec); }},
    {"ke_omci_tapi_voip_codec_priority_reorder", "", Heap::kNone, true, [] { ke_omci_tapi_voip_codec_priority_reorder(); }},
    {"ke_omci_tapi_voip_regtime_set", "", Heap::kNone, true, [] { ke_omci_tapi_voip_regtime_set(&g_regtime); }},
    {"ke_omci_tapi_voip_regtime_get", "", Heap::kNone, true, [] { ke_omci_tapi_voip_regtime_get(&g_regtime); }},
    {"ke_omci_tapi_voip_offhooktime_set", "", Heap::kNone, true, [] { ke_omci_tapi_voip_offhooktime_set(&g_word); }},
    {"ke_omci_tapi_voip_offhooktime_get", "", Heap::kNone, true, [] { ke_omci_tapi_voip_offhooktime_get(&g_word); }},
    {"ke_omci_tapi_voip_sipauth_set", "", Heap::kNone, true, [] { ke_omci_tapi_voip_sipauth_set(&g_sipauth); }},
    {"ke_omci_tapi_voip_sipauth_get", "", Heap::kNone, true, [] { ke_omci_tapi_voip_sipauth_get(&g_sipauth); }},
    {"ke_omci_tapi_voip_gain_set", "", Heap::kNone, true, [] { ke_omci_tapi_voip_gain_set(&g_gain); }},
    {"ke_omci_tapi_voip_gain_get", "", Heap::kNone, true, [] { ke_omci_tapi_voip_gain_get(&g_gain); }},
    {"ke_omci_tapi_voip_hookstatus_get", "", Heap::kNone, true, [] { ke_omci_tapi_voip_hookstatus_get(&g_hook); }},
    {"ke_omci_tapi_voip_type_set", "", Heap::kNone, true, [] { ke_omci_tapi_voip_type_set(&g_word); }},
    {"ke_omci_tapi_voip_type_get", "", Heap::kNone, true, [] { ke_omci_tapi_voip_type_get(&g_word); }},
    {"ke_omci_tapi_voip_adminstate_set", "", Heap::kNone, true, [] { ke_omci_tapi_voip_adminstate_set(&g_admin); }},
    {"ke_omci_tapi_voip_adminstate_get", "", Heap::kNone, true, [] { ke_omci_tapi_voip_adminstate_get(&g_admin); }},
    {"ke_omci_tapi_voip_rtp_set", "", Heap::kNone, true, [] { ke_omci_tapi_voip_rtp_set(&g_rtp); }},
    {"ke_omci_tapi_voip_rtp_get", "", Heap::kNone, true, [] { ke_omci_tapi_voip_rtp_get(&g_rtp); }},
    {"ke_omci_tapi_voip_silence_set", "", Heap::kNone, true, [] { ke_omci_tapi_voip_silence_set(&g_silence); }},
    {"ke_omci_tapi_voip_faxmode_set", "", Heap::kNone, true, [] { ke_omci_tapi_voip_faxmode_set(&g_word); }},
    {"ke_omci_tapi_voip_digitmap_set", "", Heap::kNone, false, [] { ke_omci_tapi_voip_digitmap_set(g_block); }},
    {"ke_omci_tapi_voip_line_status_get", "", Heap::kNone, true, [] { ke_omci_tapi_voip_line_status_get(&g_line_status); }},
    {"ke_omci_tapi_voip_rtppm_get", "", Heap::kNone, true, [] { ke_omci_tapi_voip_rtppm_get(&g_rtp_pm); }},
    {"ke_omci_tapi_voip_callctrlpm_get", "", Heap::kNone, true, [] { ke_omci_tapi_voip_callctrlpm_get(&g_callctrl_pm); }},
    {"ke_omci_tapi_voip_sip_agentpm_get", "", Heap::kNone, true, [] { ke_omci_tapi_voip_sip_agentpm_get(&g_sip_agent_pm); }},
    {"ke_omci_tapi_voip_sip_callinitpm_get", "", Heap::kNone, true, [] { ke_omci_tapi_voip_sip_callinitpm_get(&g_sip_callinit_pm); }},
    {"ke_omci_tapi_voip_emergency_get", "", Heap::kNone, true, [] { ke_omci_tapi_voip_emergency_get(&g_byte); }},
    {"ke_omci_tapi_tr069_server_set", "", Heap::kNone, true, [] { ke_omci_tapi_tr069_server_set(&g_tr069); }},
    {"ke_omci_tapi_tr069_server_get", "", Heap::kNone, true, [] { ke_omci_tapi_tr069_server_get(&g_tr069); }},
    {"ke_omci_tapi_voip_conf_set", "", Heap::kNone, true, [] { ke_omci_tapi_voip_conf_set(&g_word); }},
    {"ke_omci_tapi_voip_conf_get", "", Heap::kNone, true, [] { ke_omci_tapi_voip_conf_get(&g_word); }},
    {"ke_omci_tapi_tr069_conf_set", "", Heap::kNone, true, [] { ke_omci_tapi_tr069_conf_set(&g_word); }},
    {"ke_omci_tapi_tr069_status_get", "", Heap::kNone, false, [] { ke_omci_tapi_tr069_status_get(&g_word); }},
    {"ke_omci_tapi_voip_cnfig_method_set", "", Heap::kNone, false, [] { ke_omci_tapi_voip_cnfig_method_set(1); }},
    {"ke_omci_tapi_voip_cnfig_method_get", "", Heap::kNone, false, [] { ke_omci_tapi_voip_cnfig_method_get(); }},

    {"ke_omci_tapi_map_set", "", Heap::kNone, true, [] { ke_omci_tapi_map_set(&g_map); }},
    {"ke_omci_tapi_map_get", "", Heap::kNone, true, [] { ke_omci_tapi_map_get(&g_map); }},
    {"ke_omci_tapi_map_del", "", Heap::kNone, true, [] { ke_omci_tapi_map_del(&g_map); }},

    // The board answers no user port here, so the multicast state is never
    // initialised: the VLAN rows empty the slots first.
    {"ke_omci_mc_data_init", "", Heap::kNone, true, [] { ke_omci_mc_data_init(); }},
    {"ke_omci_tapi_mc_attr_set", "", Heap::kNone, true, [] { ke_omci_tapi_mc_attr_set(&g_mc_attr); }},
    {"ke_omci_tapi_mc_attr_get", "", Heap::kNone, false, [] { ke_omci_tapi_mc_attr_get(&g_mc_attr); }},
    {"ke_omci_tapi_mc_igmp_attr_set", "", Heap::kNone, true, [] { ke_omci_tapi_mc_igmp_attr_set(1, &g_igmp); }},
    {"ke_omci_tapi_mc_igmp_attr_get", "", Heap::kNone, true, [] { ke_omci_tapi_mc_igmp_attr_get(1, &g_igmp); }},
    {"ke_omci_tapi_mc_tagact_set", "", Heap::kNone, true, [] { ke_omci_tapi_mc_tagact_set(1, 3); }},
    {"ke_omci_tapi_mc_usr_vlan_set", "", Heap::kNone, true, [] { ke_omci_tapi_mc_usr_vlan_set(1, 10); }},
    {"ke_omci_tapi_mc_uprate_set", "", Heap::kNone, true, [] { ke_omci_tapi_mc_uprate_set(1, 64); }},
    {"ke_omci_tapi_mc_group_num_set", "port beyond the count", Heap::kNone, false,
     [] { ke_omci_tapi_mc_group_num_set(1, 16); }},
    {"ke_omci_tapi_mc_group_num_set_proc", "", Heap::kNone, true, [] { ke_omci_tapi_mc_group_num_set_proc(1, 16); }},
    {"ke_omci_mc_vlan_set_proc", "", Heap::kNone, true, [] { ke_omci_mc_vlan_set_proc(1, g_vlans, MC_VLAN_MAX); }},
    {"ke_omci_tapi_mc_vlan_clr", "", Heap::kNone, true, [] { ke_omci_tapi_mc_vlan_clr(1); }},
    {"ke_omci_tapi_mc_vlan_set", "", Heap::kNone, true,
     [] { ke_omci_tapi_mc_vlan_clr(1); ke_omci_tapi_mc_vlan_set(&g_mc_vlan); }},
    {"ke_omci_tapi_mc_vlan_del", "", Heap::kNone, true,
     [] { ke_omci_tapi_mc_vlan_clr(1); ke_omci_tapi_mc_vlan_set(&g_mc_vlan); ke_omci_tapi_mc_vlan_del(&g_mc_vlan); }},
    {"ke_omci_tapi_mc_table_set", "", Heap::kNone, true,
     [] { ke_omci_tapi_mc_vlan_clr(1); ke_omci_tapi_mc_table_set(&g_mc_row); }},
    {"ke_omci_tapi_mc_table_del", "", Heap::kNone, true, [] { ke_omci_tapi_mc_table_del(&g_mc_row); }},
    {"ke_omci_tapi_mc_range_clr", "", Heap::kNone, true, [] { ke_omci_tapi_mc_range_clr(1); }},
    {"ke_omci_tapi_mc_filter_set", "", Heap::kNone, false, [] { ke_omci_tapi_mc_filter_set(); }},
    {"ke_omci_tapi_mc_filter_del", "", Heap::kNone, false, [] { ke_omci_tapi_mc_filter_del(); }},
};

uint32_t serve_success(void *, uint32_t) { return 0; }

class NoHeap : public ketest::StubTest {
protected:
    void SetUp() override
    {
        ketest::StubTest::SetUp();
        // Standard output takes its buffer at its first line: take it now.
        ketest::printed([] { std::printf("warm-up\n"); });
    }

    // Fresh stand-in, every remote call answered with success.
    static void serve()
    {
        kestub::reset();
        kestub::ipc_serve_default(serve_success);
        kestub::log_set(true);
    }

    static void check(const Row &row, const Counter &c, const std::string &path)
    {
        SCOPED_TRACE(std::string(row.function) + (*row.what != '\0' ? " (" : "") + row.what +
                     (*row.what != '\0' ? ")" : "") + ", " + path);
        if (row.heap == Heap::kNone) {
            EXPECT_EQ(c.allocations, 0u) << "heap allocations";
            EXPECT_EQ(c.releases, 0u) << "heap releases";
        } else {
            EXPECT_EQ(c.allocations, c.releases) << "heap left allocated";
        }
    }
};

TEST_F(NoHeap, SuccessPathAndEveryFailureSite)
{
    for (const Row &row : kRows) {
        serve();
        Counter c;
        ketest::printed([&] { c = measure(row.call); });
        check(row, c, "success");
        const size_t ipc_calls = kestub::ipc_calls().size();
        const size_t cm_ops = kestub::cm_calls().size();
        EXPECT_EQ(ipc_calls + cm_ops > 0, row.back_end) << row.function << " " << row.what;

        for (unsigned nth = 1; nth <= ipc_calls; ++nth) {
            serve();
            kestub::ipc_fail_nth(nth, 0x72200008);
            ketest::printed([&] { c = measure(row.call); });
            check(row, c, "remote call " + std::to_string(nth) + " failing");
        }
        for (unsigned nth = 1; nth <= cm_ops; ++nth) {
            serve();
            kestub::cm_fail_nth(nth, 0x72300008);
            ketest::printed([&] { c = measure(row.call); });
            check(row, c, "table operation " + std::to_string(nth) + " failing");
        }
    }
}

// The counter itself: it sees each way of taking heap, inside the C
// library too, and leaves the stand-in's own bookkeeping out.
TEST_F(NoHeap, CounterSeesAllocationsButNotThePlatforms)
{
    void *(*volatile take)(size_t) = std::malloc;
    void (*volatile give)(void *) = std::free;

    Counter c = measure([&] { give(take(16)); });
    EXPECT_EQ(c.allocations, 1u);
    EXPECT_EQ(c.releases, 1u);

    c = measure([&] {
        char *copy = strdup("text in the C library's own allocation");
        give(copy);
    });
    EXPECT_EQ(c.allocations, 1u);

    c = measure([&] {
        void *p = std::calloc(2, 8);
        p = std::realloc(p, 64);
        give(p);
    });
    EXPECT_EQ(c.allocations, 2u);
    EXPECT_EQ(c.releases, 2u);

    c = measure([] { ke_os_free(ke_os_malloc(32)); });
    EXPECT_EQ(c.allocations, 1u);
    EXPECT_EQ(c.releases, 1u);

    kestub::reset();
    c = measure([] {
        uint32_t word = 7;
        ke_ipc_call("ke_ke_sml_gpon_tcont_del_call", &word, sizeof word);
    });
    EXPECT_EQ(kestub::ipc_calls().size(), 1u);  // recorded, so the stand-in allocated
    EXPECT_EQ(c.allocations, 0u);
}

TEST_F(NoHeap, EveryExportedFunctionHasARow)
{
    std::set<std::string> functions = ketest::exported_functions(
        KE_EXPORTS_DIR, [](const char *name) { return dlsym(RTLD_DEFAULT, name); });
    EXPECT_EQ(functions.count("gst_sysinfo"), 0u) << "a data object taken for a function";
    std::set<std::string> rows;
    for (const Row &row : kRows)
        rows.insert(row.function);
    EXPECT_TRUE(ketest::one_row_each(functions, rows)) << "export lists in " KE_EXPORTS_DIR;
}

}  // namespace
