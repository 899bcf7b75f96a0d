// Start and stop, and the served LOID calls from client stub through
// server entry to the LOID store.
#include <cstring>
#include <string>
#include <vector>

#include "ke_omci_tapi/lifecycle.h"
#include "stub_test.h"

namespace {

using ketest::bytes_of;
using Bytes = std::vector<uint8_t>;

class Served : public ketest::StubTest {};

// The store's 36 bytes (LOID then password) as the serial-number read
// returns them.
Bytes stored()
{
    Bytes zeros(720, 0);
    kestub::ipc_script("ke_ke_sysinfo_data_get_call", 0, zeros.data(), zeros.size());
    st_sn_loid rec;
    EXPECT_EQ(ke_omci_tapi_sn_loid_get(&rec), 0u);
    Bytes b = bytes_of(rec);
    return Bytes(b.begin() + 14, b.begin() + 50);
}

// A request of 102 distinct-looking bytes.
st_sn_loid request(uint8_t seed)
{
    st_sn_loid rec;
    for (size_t i = 0; i < sizeof rec; ++i)
        reinterpret_cast<uint8_t *>(&rec)[i] = static_cast<uint8_t>(seed + i * 3);
    return rec;
}

// The store after bytes [off, off + len) of req replaced those of old.
Bytes with(Bytes old, const st_sn_loid &req, size_t off, size_t len)
{
    std::memcpy(old.data() + off - 14, reinterpret_cast<const uint8_t *>(&req) + off, len);
    return old;
}

TEST_F(Served, EachCallStoresOnlyItsOwnFieldWhole)
{
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(ke_omci_tapi_init(), 0u);
        ke_omci_tapi_exit();
    }
    Bytes store = stored();
    for (uint8_t seed : {0x11, 0x47, 0x90}) {
        st_sn_loid loid = request(seed), pwd = request(seed + 1);
        EXPECT_EQ(ke_ke_omci_set_loid_call(&loid, sizeof loid), 0u);
        store = with(store, loid, 14, 24);
        EXPECT_EQ(stored(), store) << "LOID " << int(seed);
        EXPECT_EQ(ke_ke_omci_set_loidpwd_call(&pwd, sizeof pwd), 0u);
        store = with(store, pwd, 38, 12);
        EXPECT_EQ(stored(), store) << "password " << int(seed);
    }
    // Reached without the entry's check, a null request keeps the store.
    EXPECT_EQ(ke_ke_omci_set_loid_ipc(nullptr), 0u);
    EXPECT_EQ(ke_ke_omci_set_loidpwd_ipc(nullptr), 0u);
    EXPECT_EQ(stored(), store);
}

TEST_F(Served, EntriesRefuseANullOrWrongLengthRequest)
{
    st_sn_loid keep = request(0x20);
    ASSERT_EQ(ke_ke_omci_set_loid_call(&keep, sizeof keep), 0u);
    ASSERT_EQ(ke_ke_omci_set_loidpwd_call(&keep, sizeof keep), 0u);
    const Bytes before = stored();
    struct {
        uint32_t (*entry)(void *, uint32_t);
        uint32_t len;
    } entries[] = {{ke_ke_omci_set_loid_call, 102},
                   {ke_ke_omci_set_loidpwd_call, 102},
                   {ke_ke_omci_mc_param_get_call, 4}};
    kestub::log_set(true);
    for (const auto &e : entries) {
        st_sn_loid other = request(0x90);
        for (uint32_t len : {e.len - 1, e.len + 1, 0u, e.len == 4 ? 8u : 4u}) {
            uint32_t ret = 0;
            EXPECT_EQ(ketest::printed([&] { ret = e.entry(&other, len); }), "");
            EXPECT_EQ(ret, 0x72200008u) << "len " << len;
        }
        EXPECT_EQ(e.entry(nullptr, e.len), 0x72200008u);
    }
    EXPECT_EQ(stored(), before);
}

// Another process's side: the stub sends the caller's record as it is and
// returns whatever the call answers, untraced.
TEST_F(Served, StubsReachTheServingEntryAndPassItsStatusThrough)
{
    kestub::ipc_serve("ke_ke_omci_set_loid_call", ke_ke_omci_set_loid_call);
    kestub::ipc_serve("ke_ke_omci_set_loidpwd_call", ke_ke_omci_set_loidpwd_call);
    kestub::ipc_serve("ke_ke_omci_mc_param_get_call", ke_ke_omci_mc_param_get_call);
    st_sn_loid loid = request(0x81), pwd = request(0x95);
    uint32_t port = 3;
    EXPECT_EQ(ke_omci_set_loid(&loid), 0u);
    EXPECT_EQ(ke_omci_set_loidpwd(&pwd), 0u);
    // Port 3 is beyond the port count, none before the multicast state is
    // initialised: the dump's own refusal comes back.
    EXPECT_EQ(ke_omci_mc_param_get(&port), 0x70000000u);
    EXPECT_EQ(stored(), with(with(Bytes(36), loid, 14, 24), pwd, 38, 12));

    const auto &calls = kestub::ipc_calls();
    ASSERT_EQ(calls.size(), 4u);
    EXPECT_EQ(calls[0].name, "ke_ke_omci_set_loid_call");
    EXPECT_EQ(calls[0].request, bytes_of(loid));
    EXPECT_EQ(calls[1].name, "ke_ke_omci_set_loidpwd_call");
    EXPECT_EQ(calls[1].request, bytes_of(pwd));
    EXPECT_EQ(calls[2].name, "ke_ke_omci_mc_param_get_call");
    EXPECT_EQ(calls[2].request, ketest::words({3}));

    kestub::log_set(true);
    kestub::ipc_script("ke_ke_omci_set_loid_call", 0x72200008);
    kestub::ipc_script("ke_ke_omci_set_loidpwd_call", 0x72200004);
    kestub::ipc_script("ke_ke_omci_mc_param_get_call", 1);
    std::string out = ketest::printed([&] {
        EXPECT_EQ(ke_omci_set_loid(&loid), 0x72200008u);
        EXPECT_EQ(ke_omci_set_loidpwd(&pwd), 0x72200004u);
        EXPECT_EQ(ke_omci_mc_param_get(&port), 1u);
    });
    EXPECT_EQ(out, "");
}

}  // namespace
