// Table records whose size is not a multiple of four: the mask in the
// last four bytes and fields at odd offsets travel without an unaligned
// access, and a field reaching past the end is dropped.
#include "../src/frame/cm_table.h"
#include "stub_test.h"

namespace {

template <class R>
class OddRecord : public ketest::StubTest {};

using OddRecords = ::testing::Types<ke::cm::Record<ke::cm::IGD_CO_WAN_CONN_STATE_TAB>,
                                    ke::cm::Record<ke::cm::IGD_CO_TR069_SERVER_TAB>,
                                    ke::cm::Record<ke::cm::IGD_CO_VOIP_LINE_PROFILE_TAB>>;
TYPED_TEST_SUITE(OddRecord, OddRecords);

TYPED_TEST(OddRecord, FieldsAtOddOffsetsTravelAtFullSize)
{
    using R = TypeParam;
    static_assert(R::kSize % 4 != 0, "an odd-sized table");
    R rec;
    rec.put_tail_mask(0xA1B2C3D4);
    rec.put_u32(5, 0x01020304);
    rec.put_u16(R::kSize - 6, 0xBEEF);
    rec.put_u32(R::kSize - 3, 0xFFFFFFFF);  // past the end: dropped
    EXPECT_EQ(rec.u32(5), 0x01020304u);
    EXPECT_EQ(rec.u16(R::kSize - 6), 0xBEEFu);
    EXPECT_EQ(rec.u32(R::kSize - 2), 0u);

    ASSERT_EQ(ke::cm::set(rec), 0u);
    std::vector<uint8_t> expected(R::kSize, 0);
    const uint32_t mask = 0xA1B2C3D4, word = 0x01020304;
    const uint16_t half = 0xBEEF;
    std::memcpy(&expected[R::kSize - 4], &mask, 4);
    std::memcpy(&expected[5], &word, 4);
    std::memcpy(&expected[R::kSize - 6], &half, 2);
    EXPECT_TRUE(ketest::one_cm_call(kestub::CmOp::Set, R::kTable, expected));

    // And back: a Get fills the whole record from the stored entry.
    R read;
    read.put_tail_mask(0xA1B2C3D4);
    kestub::cm_set_key(R::kTable, {{R::kSize - 4, 4}});
    ASSERT_EQ(ke::cm::get(read), 0u);
    EXPECT_EQ(std::vector<uint8_t>(read.data(), read.data() + R::kSize), expected);
}

}  // namespace
