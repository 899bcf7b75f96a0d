// System information: the byte mapping of both replies, the cache filled
// once per process, the product type; the serial-number and LOID read;
// reboot.  Only the first test fills the cache in this process; the
// product-type cases run in processes of their own (device_product_type_test).
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "ke_omci_tapi/lifecycle.h"
#include "stub_test.h"
#include "sysinfo_replies.h"

namespace {

using Bytes = std::vector<uint8_t>;
using ketest::bytes_of;
using ketest::call_names;
using ketest::patterned;
using ketest::script;
using ketest::sysinfo_reply;

class Sysinfo : public ketest::StubTest {};

// Fields: record offset, width, reply offset; from the board reply when
// marked, otherwise from the system-information reply.
struct Source {
    size_t to, width, from;
    bool board;
};
constexpr Source kSysinfo[] = {
    {0, 4, 215, false}, {4, 14, 387, false}, {18, 14, 267, false}, {32, 20, 455, false},
    {52, 4, 484, false}, {60, 4, 4, true},   {64, 4, 8, true},     {68, 4, 12, true},
    {72, 4, 0, true},   {76, 12, 564, false}, {88, 4, 684, false},
};
constexpr Source kSnLoid[] = {
    {0, 6, 66, false}, {6, 8, 48, false}, {50, 16, 195, false}, {66, 36, 155, false}};

template <size_t N>
Bytes mapped(const Source (&fields)[N], size_t size, const Bytes &info, const Bytes &board = {})
{
    Bytes rec(size, 0);
    for (const Source &f : fields)
        std::memcpy(rec.data() + f.to, (f.board ? board : info).data() + f.from, f.width);
    return rec;
}

// A failed fetch fills nothing (the fault sweep's): the retry makes both
// calls again, and only a whole fetch fills the cache.
TEST_F(Sysinfo, CacheIsFilledOnceAndOnlyByAWholeFetch)
{
    EXPECT_EQ(bytes_of(gst_sysinfo), Bytes(92, 0));
    const Bytes board = patterned(956, 7), info = sysinfo_reply("hgu", 8);
    st_sysinfo out;
    script("ke_ke_board_info_get_call", board);
    kestub::ipc_script("ke_ke_sysinfo_data_get_call", 0x1002);
    EXPECT_EQ(ke_omci_tapi_sysinfo_get(&out), 1u);
    script("ke_ke_board_info_get_call", board);
    script("ke_ke_sysinfo_data_get_call", info);
    EXPECT_EQ(ke_omci_tapi_sysinfo_get(&out), 0u);
    EXPECT_EQ(call_names(), (std::vector<std::string>{
                                "ke_ke_board_info_get_call", "ke_ke_sysinfo_data_get_call",
                                "ke_ke_board_info_get_call", "ke_ke_sysinfo_data_get_call"}));
    EXPECT_EQ(kestub::ipc_calls()[2].len, 956u);
    EXPECT_EQ(kestub::ipc_calls()[3].len, 720u);
    Bytes expected = mapped(kSysinfo, 92, info, board);
    expected[56] = KE_PRODUCT_HGU;
    EXPECT_EQ(bytes_of(out), expected);

    // Later reads make no call.
    kestub::reset();
    std::memset(&out, 0, sizeof out);
    EXPECT_EQ(ke_omci_tapi_sysinfo_get(&out), 0u);
    EXPECT_EQ(bytes_of(out), expected);
    EXPECT_TRUE(kestub::ipc_calls().empty());
}

TEST_F(Sysinfo, SnLoidTakesAFreshReplyEveryTimeAndTheStore)
{
    st_sn_loid loid;
    for (size_t i = 0; i < sizeof loid; ++i)
        reinterpret_cast<uint8_t *>(&loid)[i] = static_cast<uint8_t>(0xC0 ^ i);
    ASSERT_EQ(ke_ke_omci_set_loid_call(&loid, sizeof loid), 0u);
    ASSERT_EQ(ke_ke_omci_set_loidpwd_call(&loid, sizeof loid), 0u);
    for (uint32_t seed : {11u, 12u}) {
        const Bytes info = sysinfo_reply("SFU", seed);
        script("ke_ke_sysinfo_data_get_call", info);
        st_sn_loid out;
        EXPECT_EQ(ke_omci_tapi_sn_loid_get(&out), 0u);
        Bytes expected = mapped(kSnLoid, 102, info);
        std::memcpy(expected.data() + 14, loid.auc_loid, 36);
        EXPECT_EQ(bytes_of(out), expected) << "seed " << seed;
    }
    EXPECT_EQ(kestub::ipc_calls().size(), 2u);
}

TEST_F(Sysinfo, RebootIsOneControlRequest)
{
    EXPECT_EQ(ke_omci_tapi_reboot(), 0u);
    ASSERT_EQ(kestub::cm_calls().size(), 1u);
    EXPECT_EQ(kestub::cm_calls()[0].op, kestub::CmOp::OamCtrl);
    EXPECT_EQ(kestub::cm_calls()[0].table, 0x20000001u);
    EXPECT_TRUE(kestub::ipc_calls().empty());
}

}  // namespace
