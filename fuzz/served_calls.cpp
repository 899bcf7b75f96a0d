// The three server entries with arbitrary bytes and lengths, as another
// process may send them.  Oracle: a null buffer or any length but the
// call's own is refused with nothing changed; a LOID request replaces
// exactly its field of the store (read back through the serial-number
// read); a dump answers 0 for a counted port and the port-range status
// for any other, and no entry writes the request buffer.
#include <algorithm>
#include <cstring>
#include <vector>

#include "input.h"
#include "ke_omci_tapi/lifecycle.h"
#include "ke_omci_tapi/mc.h"
#include "kestub.h"

namespace {

constexpr uint32_t kPorts = 4;
constexpr uint32_t kPortRefused = 0x70000000;

uint32_t answer_service(void *buf, uint32_t len)
{
    // Board information: the user-port count is the word at offset 4.
    if (buf != nullptr && len >= 8)
        std::memcpy(static_cast<uint8_t *>(buf) + 4, &kPorts, sizeof kPorts);
    return 0;
}

struct Entry {
    uint32_t (*call)(void *, uint32_t);
    uint32_t len;
    size_t field;  // the store's field this call replaces (LOID calls)
    size_t width;
};

const Entry kEntries[] = {
    {ke_ke_omci_mc_param_get_call, KE_MC_PARAM_GET_REQ_LEN, 0, 0},
    {ke_ke_omci_set_loidpwd_call, KE_SET_LOID_REQ_LEN, offsetof(st_sn_loid, auc_loid_pwd),
     sizeof(st_sn_loid::auc_loid_pwd)},
    {ke_ke_omci_set_loid_call, KE_SET_LOID_REQ_LEN, offsetof(st_sn_loid, auc_loid),
     sizeof(st_sn_loid::auc_loid)},
};

// The store as the library reports it.
st_sn_loid read_store()
{
    st_sn_loid out;
    std::memset(&out, 0, sizeof out);
    if (ke_omci_tapi_sn_loid_get(&out) != 0)
        kefuzz::fail("served calls", "serial-number read failed");
    return out;
}

std::string hex(uint32_t v)
{
    char b[16];
    std::snprintf(b, sizeof b, "0x%x", static_cast<unsigned>(v));
    return b;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    kefuzz::quiet_stdout();
    kestub::reset();
    kestub::ipc_serve_default(answer_service);
    ke_omci_mc_data_init();
    uint32_t last = kPorts - 1;
    if (ke_ke_omci_mc_param_get_call(&last, sizeof last) != 0)
        kefuzz::fail("served calls", "the multicast state did not take the board's ports");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // The stand-in's logs start empty for every input; the library's own
    // state (the store, the multicast cache) carries over, as in a
    // serving process.
    kestub::reset();
    kestub::ipc_serve_default(answer_service);

    kefuzz::Input in(data, size);
    uint8_t how = in.byte();
    const Entry &e = kEntries[(how & 0x3) % 3];
    bool null_buf = (how & 0x4) != 0;
    // The length: the bytes given, or any word at all.
    bool any_len = (how & 0x8) != 0;
    uint32_t claimed = any_len ? in.u32() : 0;
    std::string payload = in.rest();
    uint32_t len = any_len ? claimed : static_cast<uint32_t>(payload.size());

    // The buffer holds the payload and is never shorter than the call's
    // own length, so that a length the entry accepts is always backed.
    std::vector<uint8_t> buf(std::max<size_t>(payload.size(), e.len), 0);
    std::copy(payload.begin(), payload.end(), buf.begin());
    std::vector<uint8_t> sent = buf;

    st_sn_loid before = read_store();
    uint32_t status = e.call(null_buf ? nullptr : buf.data(), len);
    st_sn_loid after = read_store();

    if (buf != sent)
        kefuzz::fail("served calls", "an entry wrote its request buffer");
    bool refused = null_buf || len != e.len;
    if (refused) {
        if (status != KE_SERVED_CALL_REFUSED)
            kefuzz::fail("served calls", "wrong request not refused: " + hex(status));
        if (std::memcmp(&before, &after, sizeof before) != 0)
            kefuzz::fail("served calls", "a refused request changed the store");
        return 0;
    }
    if (e.width == 0) {
        uint32_t port;
        std::memcpy(&port, buf.data(), sizeof port);
        uint32_t want = port < kPorts ? 0 : kPortRefused;
        if (status != want)
            kefuzz::fail("served calls", "dump of port " + std::to_string(port) + ": " + hex(status));
        if (std::memcmp(&before, &after, sizeof before) != 0)
            kefuzz::fail("served calls", "a dump changed the store");
        return 0;
    }
    if (status != 0)
        kefuzz::fail("served calls", "LOID request answered " + hex(status));
    st_sn_loid want = before;
    std::memcpy(reinterpret_cast<uint8_t *>(&want) + e.field, buf.data() + e.field, e.width);
    if (std::memcmp(&want, &after, sizeof want) != 0)
        kefuzz::fail("served calls", "the store holds other bytes than the request's field");
    return 0;
}
