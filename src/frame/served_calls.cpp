// The calls this library serves to other processes, and the list of their
// names that the IPC library reads from the section .ke_ipc_section.
//
// Each call has three layers: a client stub that any process may call, a
// server entry named like the remote call, which the IPC library of the
// serving process finds by name, and the implementation.  The entries
// share one check, driven by the table below.
#include <array>
#include <cstddef>
#include <cstdint>

#include "../mc/param_dump.h"
#include "call.h"
#include "ke_omci_tapi/lifecycle.h"

namespace {

struct ServedCall {
    const char *name;     // the remote name, also the server entry's symbol
    uint32_t request_len; // the only length accepted
    uint32_t (*implementation)(void *request);
};

// Slots in the order of the section.
enum Slot : size_t { kMcParamGet, kSetLoidPwd, kSetLoid, kSlotCount };

constexpr std::array<ServedCall, kSlotCount> kServedCalls = {{
    {"ke_ke_omci_mc_param_get_call", KE_MC_PARAM_GET_REQ_LEN, ke_ke_omci_mc_param_get_ipc},
    {"ke_ke_omci_set_loidpwd_call", KE_SET_LOID_REQ_LEN, ke_ke_omci_set_loidpwd_ipc},
    {"ke_ke_omci_set_loid_call", KE_SET_LOID_REQ_LEN, ke_ke_omci_set_loid_ipc},
}};

// Names only, one pointer each, nothing else in the section: the IPC
// library walks it to learn which exported functions it may dispatch to.
// Writable, since the pointers are relocated when the library is loaded,
// and 4-byte aligned on every target (a 64-bit host would otherwise pad
// the array to 16).
typedef const char *ServedName __attribute__((aligned(4)));

// clang's AddressSanitizer would put a red zone after the array inside
// the section, and the IPC library would read it as more names.
#if defined(__clang__)
#define KE_SECTION_UNPADDED __attribute__((no_sanitize("address")))
#else
#define KE_SECTION_UNPADDED
#endif

__attribute__((section(".ke_ipc_section"), used, aligned(4))) KE_SECTION_UNPADDED
ServedName ke_ipc_section_names[kSlotCount] = {
    kServedCalls[kMcParamGet].name,
    kServedCalls[kSetLoidPwd].name,
    kServedCalls[kSetLoid].name,
};

uint32_t serve(Slot slot, void *buf, uint32_t len)
{
    const ServedCall &call = kServedCalls[slot];
    if (buf == nullptr || len != call.request_len)
        return KE_SERVED_CALL_REFUSED;
    return call.implementation(buf);
}

uint32_t request(Slot slot, void *buf)
{
    const ServedCall &call = kServedCalls[slot];
    return ke::pass_through(call.name, buf, call.request_len);
}

}  // namespace

extern "C" {

uint32_t ke_omci_mc_param_get(uint32_t *pui_port) { return request(kMcParamGet, pui_port); }

uint32_t ke_omci_set_loidpwd(st_sn_loid *pst_loid) { return request(kSetLoidPwd, pst_loid); }

uint32_t ke_omci_set_loid(st_sn_loid *pst_loid) { return request(kSetLoid, pst_loid); }

uint32_t ke_ke_omci_mc_param_get_call(void *pv_buf, uint32_t ui_len)
{
    return serve(kMcParamGet, pv_buf, ui_len);
}

uint32_t ke_ke_omci_set_loidpwd_call(void *pv_buf, uint32_t ui_len)
{
    return serve(kSetLoidPwd, pv_buf, ui_len);
}

uint32_t ke_ke_omci_set_loid_call(void *pv_buf, uint32_t ui_len)
{
    return serve(kSetLoid, pv_buf, ui_len);
}

}  // extern "C"
