// The LOID store and the implementations of the two LOID served calls.
//
// The copies are not checked and print nothing: the server entry has
// already checked the request, and the store is a fixed static record.
#include "loid_store.h"

#include <cstddef>

#include "copy.h"
#include "ke_omci_tapi/lifecycle.h"
#include "platform.h"

namespace ke {
namespace {

st_sn_loid g_loid_store;

// Replaces one field of the store, whole, with the same bytes of the
// request.  A null request (a direct call that bypassed the server entry)
// keeps the stored value.
void store_field(uint8_t *field, size_t width, const void *request, size_t offset)
{
    if (request == nullptr)
        return;
    memcpy_s(field, width, bytes_at(request, offset), width);
}

}  // namespace

const st_sn_loid &loid_store() { return g_loid_store; }

}  // namespace ke

extern "C" {

uint32_t ke_ke_omci_set_loid_ipc(void *pv_request)
{
    ke::store_field(ke::g_loid_store.auc_loid, sizeof ke::g_loid_store.auc_loid, pv_request,
                    offsetof(st_sn_loid, auc_loid));
    return 0;
}

uint32_t ke_ke_omci_set_loidpwd_ipc(void *pv_request)
{
    ke::store_field(ke::g_loid_store.auc_loid_pwd, sizeof ke::g_loid_store.auc_loid_pwd,
                    pv_request, offsetof(st_sn_loid, auc_loid_pwd));
    return 0;
}

}  // extern "C"
