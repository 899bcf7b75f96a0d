// Provisions a T-CONT and a GEM port against a scripted sml service in
// this process, and prints every remote call with what it sent and what
// the service answered.
#include <cstdio>
#include <cstring>

#include "ke_omci_tapi/pon.h"
#include "kestub.h"

namespace {

uint32_t g_allocid[16];

uint32_t tcont_set(void *buf, uint32_t len)
{
    if (buf == nullptr || len != sizeof(st_tcont))
        return 0x72200008;
    st_tcont rec;
    std::memcpy(&rec, buf, sizeof rec);
    if (rec.ui_tcont >= 16)
        return 0x7000001b;
    g_allocid[rec.ui_tcont] = rec.ui_allocid;
    return 0;
}

uint32_t tcont_get(void *buf, uint32_t len)
{
    if (buf == nullptr || len != sizeof(st_tcont))
        return 0x72200008;
    st_tcont rec;
    std::memcpy(&rec, buf, sizeof rec);
    if (rec.ui_tcont >= 16)
        return 0x7000001b;
    rec.ui_allocid = g_allocid[rec.ui_tcont];
    std::memcpy(buf, &rec, sizeof rec);
    return 0;
}

uint32_t onuid_get(void *buf, uint32_t len)
{
    if (buf == nullptr || len != 4)
        return 0x72200008;
    uint32_t onuid = 12;
    std::memcpy(buf, &onuid, 4);
    return 0;
}

uint32_t accept(void *, uint32_t) { return 0; }

void dump_calls(const char *what, uint32_t ret)
{
    std::printf("%-40s -> %u\n", what, static_cast<unsigned>(ret));
    for (const auto &c : kestub::ipc_calls()) {
        std::printf("    %s len=%u status=0x%x sent:", c.name.c_str(), static_cast<unsigned>(c.len),
                    static_cast<unsigned>(c.status));
        for (uint8_t b : c.request)
            std::printf(" %02x", b);
        std::printf("\n");
    }
    kestub::reset();
    kestub::log_set(true);
    kestub::ipc_serve("ke_ke_sml_gpon_tcont_set_call", tcont_set);
    kestub::ipc_serve("ke_ke_sml_gpon_tcont_get_call", tcont_get);
    kestub::ipc_serve("ke_ke_sml_gpon_onuid_get_call", onuid_get);
    kestub::ipc_serve("ke_ke_sml_gpon_gemport_set_call", accept);
}

}  // namespace

int main()
{
    dump_calls("start", 0);
    dump_calls("ke_omci_tapi_tcont_set(1, 0x400)", ke_omci_tapi_tcont_set(1, 0x400));
    uint32_t allocid = 0;
    uint32_t ret = ke_omci_tapi_tcont_get(1, &allocid);
    std::printf("allocid of T-CONT 1 = 0x%x\n", static_cast<unsigned>(allocid));
    dump_calls("ke_omci_tapi_tcont_get(1)", ret);
    ret = ke_omci_tapi_tcont_get(0, &allocid);
    std::printf("allocid of T-CONT 0 (the ONU-ID) = %u\n", static_cast<unsigned>(allocid));
    dump_calls("ke_omci_tapi_tcont_get(0)", ret);
    dump_calls("ke_omci_tapi_tcont_set(99, 1) (refused)", ke_omci_tapi_tcont_set(99, 1));
    uint8_t attr[KE_GEMPORT_ATTR_LEN] = {1, 0, 0, 0, 2};
    dump_calls("ke_omci_tapi_gemport_set(0x101, attr)", ke_omci_tapi_gemport_set(0x101, attr));
    dump_calls("ke_omci_tapi_gemport_del(0x101) (no server)", ke_omci_tapi_gemport_del(0x101));
    return 0;
}
