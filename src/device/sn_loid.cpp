// The serial number and LOID read: identity fields from a fresh
// system-information reply (never the cache), LOID and password from the
// LOID store as they are at this moment.
#include <array>
#include <cstddef>

#include "ke_omci_tapi/device.h"
#include "loid_store.h"
#include "platform.h"
#include "sysinfo_reply.h"

namespace {

using ke::device::ByteField;

constexpr std::array<ByteField, 4> kReplyBytes = {{
    {offsetof(st_sn_loid, auc_id_a), sizeof(st_sn_loid::auc_id_a), 66},
    {offsetof(st_sn_loid, auc_sn), sizeof(st_sn_loid::auc_sn), 48},
    {offsetof(st_sn_loid, auc_id_b), sizeof(st_sn_loid::auc_id_b), 195},
    {offsetof(st_sn_loid, auc_id_c), sizeof(st_sn_loid::auc_id_c), 155},
}};

// The store's fields, copied unchecked and silently.
void copy_store_field(st_sn_loid *out, size_t off, size_t width)
{
    memcpy_s(ke::bytes_at(out, off), width, ke::bytes_at(&ke::loid_store(), off), width);
}

}  // namespace

extern "C" uint32_t ke_omci_tapi_sn_loid_get(st_sn_loid *pst_sn_loid)
{
    ke::device::SysinfoReply info;
    if (ke::device::fetch(KE_SITE, ke::device::kSysinfoDataGet, info) != 0)
        return 1;
    ke::device::copy_fields(KE_SITE, pst_sn_loid, info, kReplyBytes);
    copy_store_field(pst_sn_loid, offsetof(st_sn_loid, auc_loid), sizeof(st_sn_loid::auc_loid));
    copy_store_field(pst_sn_loid, offsetof(st_sn_loid, auc_loid_pwd),
                     sizeof(st_sn_loid::auc_loid_pwd));
    return 0;
}
