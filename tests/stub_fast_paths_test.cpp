// The stand-in's short ways, which the benchmarks use and every test goes
// through: a call log that can be switched off, a transport and a store
// that answer at once, and the bounded copies and fills that skip
// libsafec when no check can refuse them (they must answer exactly as
// libsafec does, whatever the arguments).
#include <dlfcn.h>

#include <cstring>
#include <vector>

#include "platform.h"
#include "stub_test.h"

namespace {

using kestub::CmOp;

class FastPaths : public ketest::StubTest {};

uint32_t g_served;
uint32_t count_and_answer(void *buf, uint32_t len)
{
    ++g_served;
    if (buf != nullptr && len >= 4)
        std::memset(buf, 0xA5, 4);
    return 7;
}

TEST_F(FastPaths, UnrecordedCallsAreServedAndStillCounted)
{
    g_served = 0;
    kestub::ipc_serve("name_call", count_and_answer);
    kestub::ipc_record(false);
    uint32_t word = 0;
    EXPECT_EQ(ke_ipc_call("name_call", &word, 4), 7u);
    EXPECT_EQ(word, 0xA5A5A5A5u);
    EXPECT_TRUE(kestub::ipc_calls().empty());
    // The nth call counts the unrecorded ones too.
    kestub::ipc_fail_nth(2, 0x99);
    EXPECT_EQ(ke_ipc_call("name_call", &word, 4), 7u);
    EXPECT_EQ(ke_ipc_call("name_call", &word, 4), 0x99u);
    EXPECT_EQ(g_served, 2u);
    kestub::ipc_record(true);
    EXPECT_EQ(ke_ipc_call("name_call", &word, 4), 7u);
    ASSERT_EQ(kestub::ipc_calls().size(), 1u);
    EXPECT_EQ(kestub::ipc_calls()[0].status, 7u);
}

TEST_F(FastPaths, AnsweringAllBypassesScriptsAndRecordUntilReset)
{
    g_served = 0;
    kestub::ipc_script("name_call", 0x55);
    kestub::ipc_answer_all(count_and_answer);
    uint32_t word = 0;
    EXPECT_EQ(ke_ipc_call("name_call", &word, 4), 7u);
    EXPECT_EQ(ke_ipc_call("other_call", nullptr, 0), 7u);
    EXPECT_EQ(g_served, 2u);
    EXPECT_TRUE(kestub::ipc_calls().empty());
    kestub::ipc_answer_all(nullptr);
    EXPECT_EQ(ke_ipc_call("name_call", &word, 4), 0x55u);  // the script again
    kestub::ipc_answer_all(count_and_answer);
    kestub::reset();
    EXPECT_EQ(ke_ipc_call("name_call", &word, 4), kestub::kIpcNoServer);
}

struct CmSeen {
    CmOp op;
    uint32_t table;
    uint32_t size;
    bool operator==(const CmSeen &o) const { return op == o.op && table == o.table && size == o.size; }
};
std::vector<CmSeen> g_cm_seen;

uint32_t store_answer(CmOp op, uint32_t table, void *, uint32_t size)
{
    g_cm_seen.push_back({op, table, size});
    return op == CmOp::Del ? 3 : 0;
}

TEST_F(FastPaths, ServedStoreAnswersAloneUntilReset)
{
    g_cm_seen.clear();
    kestub::cm_serve(store_answer);
    uint8_t rec[20] = {0, 0, 0, 0, 0, 0, 0, 0, 1};
    EXPECT_EQ(igdCmConfSet(807, rec, sizeof rec), 0u);
    EXPECT_EQ(igdCmConfAdd(808, rec, sizeof rec), 0u);
    EXPECT_EQ(igdCmConfGet(807, rec, sizeof rec), 0u);
    EXPECT_EQ(igdCmConfDel(807, rec, 12), 3u);
    EXPECT_TRUE(g_cm_seen == (std::vector<CmSeen>{{CmOp::Set, 807, 20}, {CmOp::Add, 808, 20},
                                                  {CmOp::Get, 807, 20}, {CmOp::Del, 807, 12}}));
    EXPECT_TRUE(kestub::cm_calls().empty());
    EXPECT_TRUE(kestub::cm_entries(807).empty());
    kestub::reset();
    EXPECT_EQ(igdCmConfSet(807, rec, sizeof rec), 0u);
    EXPECT_EQ(kestub::cm_entries(807).size(), 1u);
    EXPECT_EQ(g_cm_seen.size(), 4u);
}

// libsafec's own entry points, the reference for every answer.
using CopyChk = int (*)(void *, size_t, const void *, size_t, size_t, size_t);
using FillChk = int (*)(void *, size_t, int, size_t, size_t);
constexpr size_t kUnknown = static_cast<size_t>(-1);

template <class Fn>
Fn libsafec(const char *name)
{
    return reinterpret_cast<Fn>(dlsym(RTLD_DEFAULT, name));
}

// A buffer with a recognisable pattern, and the offsets of dest and src in
// it for a case.
struct Arena {
    uint8_t bytes[96];
    Arena()
    {
        for (size_t i = 0; i < sizeof bytes; ++i)
            bytes[i] = static_cast<uint8_t>(0x40 + i);
    }
};

TEST_F(FastPaths, BoundedCopiesAnswerAsLibsafec)
{
    CopyChk reference = libsafec<CopyChk>("_memcpy_s_chk");
    ASSERT_NE(reference, nullptr);
    constexpr int kNull = -1;
    struct {
        const char *label;
        int dest;  // offset in the arena, or kNull
        size_t destsz;
        int src;
        size_t count;
    } cases[] = {
        {"whole", 0, 16, 48, 16},
        {"shorter than the destination", 0, 16, 48, 6},
        {"one byte", 10, 1, 48, 1},
        {"nothing", 0, 16, 48, 0},
        {"longer than the destination", 0, 16, 48, 17},
        {"null source", 0, 16, kNull, 6},
        {"null destination", kNull, 16, 48, 6},
        {"zero-sized destination", 0, 0, 48, 6},
        {"huge destination", 0, kUnknown, 48, 6},
        {"source inside the destination", 0, 32, 8, 6},
        {"destination inside the source", 8, 16, 0, 16},
        {"source just past the destination", 0, 16, 16, 16},
        {"source just before the destination", 16, 16, 0, 16},
        {"source past the count, inside the size", 0, 32, 20, 6},
        {"same place", 8, 16, 8, 16},
    };
    for (const auto &c : cases) {
        Arena mine, theirs;
        auto at = [](Arena &a, int off) { return off == kNull ? nullptr : a.bytes + off; };
        int got = memcpy_s(at(mine, c.dest), c.destsz, at(mine, c.src), c.count);
        int want =
            reference(at(theirs, c.dest), c.destsz, at(theirs, c.src), c.count, kUnknown, kUnknown);
        EXPECT_EQ(got, want) << c.label;
        EXPECT_EQ(std::memcmp(mine.bytes, theirs.bytes, sizeof mine.bytes), 0) << c.label;
    }
}

TEST_F(FastPaths, BoundedFillsAnswerAsLibsafec)
{
    FillChk reference = libsafec<FillChk>("_memset_s_chk");
    ASSERT_NE(reference, nullptr);
    struct {
        const char *label;
        bool null;
        size_t destsz;
        int ch;
        size_t count;
    } cases[] = {
        {"whole", false, 32, 0, 32},
        {"part", false, 32, 0x11, 5},
        {"nothing", false, 32, 0, 0},
        {"more than the destination", false, 32, 0, 33},
        {"a value above a byte", false, 32, 0x1ff, 8},
        {"a negative value", false, 32, -1, 8},
        {"null destination", true, 32, 0, 8},
        {"huge destination", false, kUnknown, 0, 8},
    };
    for (const auto &c : cases) {
        Arena mine, theirs;
        int got = memset_s(c.null ? nullptr : mine.bytes, c.destsz, c.ch, c.count);
        int want = reference(c.null ? nullptr : theirs.bytes, c.destsz, c.ch, c.count, kUnknown);
        EXPECT_EQ(got, want) << c.label;
        EXPECT_EQ(std::memcmp(mine.bytes, theirs.bytes, sizeof mine.bytes), 0) << c.label;
    }
}

}  // namespace
