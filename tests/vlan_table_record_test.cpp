// Table records whose size is not a multiple of four: the mask in the
// last four bytes and fields at odd offsets are written and read without
// an unaligned access, and out-of-range fields are dropped, not written.
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
    rec.put_u16(R::kSize - 7, 0xBEEF);
    rec.put_u8(R::kSize - 5, 0x7E);
    EXPECT_EQ(rec.u32(R::kSize - 4), 0xA1B2C3D4u);
    EXPECT_EQ(rec.u32(5), 0x01020304u);
    EXPECT_EQ(rec.u16(R::kSize - 7), 0xBEEFu);

    // Fields that would reach past the end are neither written nor read.
    rec.put_u32(R::kSize - 3, 0xFFFFFFFF);
    rec.put_u16(R::kSize, 0xFFFF);
    EXPECT_EQ(rec.u32(R::kSize - 2), 0u);

    ASSERT_EQ(ke::cm::set(rec), 0u);
    ASSERT_EQ(kestub::cm_calls().size(), 1u);
    const kestub::CmCall &c = kestub::cm_calls()[0];
    EXPECT_EQ(c.table, R::kTable);
    EXPECT_EQ(c.size, R::kSize);
    std::vector<uint8_t> expected(R::kSize, 0);
    const uint32_t mask = 0xA1B2C3D4, word = 0x01020304;
    const uint16_t half = 0xBEEF;
    std::memcpy(&expected[R::kSize - 4], &mask, 4);
    std::memcpy(&expected[5], &word, 4);
    std::memcpy(&expected[R::kSize - 7], &half, 2);
    expected[R::kSize - 5] = 0x7E;
    EXPECT_EQ(c.record, expected);
}

TYPED_TEST(OddRecord, GetFillsTheRecordFromTheStore)
{
    using R = TypeParam;
    std::vector<uint8_t> stored(R::kSize, 0);
    for (size_t i = 0; i < stored.size(); ++i)
        stored[i] = static_cast<uint8_t>(i * 7 + 1);
    kestub::cm_set_key(R::kTable, {{0, 0}});  // one entry, whatever the key
    kestub::cm_preload(R::kTable, stored.data(), stored.size());

    R rec;
    ASSERT_EQ(ke::cm::get(rec), 0u);
    uint32_t tail = 0;
    std::memcpy(&tail, &stored[R::kSize - 4], 4);
    EXPECT_EQ(rec.u32(R::kSize - 4), tail);
    EXPECT_EQ(std::vector<uint8_t>(rec.data(), rec.data() + R::kSize), stored);
}

}  // namespace
