// The configuration manager's two stores: the same semantics in memory and
// in the shared database, and the database shared safely between
// processes.
#include <cstring>

#include "platform.h"
#include "process.h"
#include "stub_test.h"

namespace {

using ketest::TempDir;

// A 20-byte record of a port-keyed table: the port at 8, a value at 12.
std::vector<uint8_t> port_rec(uint32_t port, uint32_t value)
{
    return ketest::words({0, 0, port, value, 0});
}

// One operation and what it must answer.
struct Op {
    enum { Get, Set, Add, Del, Count } kind;
    uint32_t table;
    std::vector<uint8_t> rec;
    uint32_t status;
    std::vector<uint8_t> got;  // Get: the record read back; Count: the count as a word
};

void run_ops(const std::vector<Op> &ops)
{
    for (size_t i = 0; i < ops.size(); ++i) {
        const Op &op = ops[i];
        SCOPED_TRACE("operation " + std::to_string(i));
        std::vector<uint8_t> rec = op.rec;
        auto size = static_cast<uint32_t>(rec.size());
        uint32_t count = 0;
        uint32_t status = 0;
        switch (op.kind) {
        case Op::Get:
            status = igdCmConfGet(op.table, rec.data(), size);
            break;
        case Op::Set:
            status = igdCmConfSet(op.table, rec.data(), size);
            break;
        case Op::Add:
            status = igdCmConfAdd(op.table, rec.data(), size);
            break;
        case Op::Del:
            status = igdCmConfDel(op.table, rec.data(), size);
            break;
        case Op::Count:
            status = igdCmConfGetEntryNum(op.table, &count);
            rec = ketest::words({count});
            break;
        }
        EXPECT_EQ(status, op.status);
        if (!op.got.empty()) {
            EXPECT_EQ(rec, op.got);
        }
    }
}

// Keeps the words of the stored record and ORs the incoming ones in.
void or_merge(uint8_t *stored, const uint8_t *incoming, uint32_t size)
{
    for (uint32_t i = 0; i < size; ++i)
        stored[i] |= incoming[i];
}

class CmStoreTest : public ketest::StubTest, public ::testing::WithParamInterface<bool> {
protected:
    void SetUp() override
    {
        StubTest::SetUp();
        if (GetParam() && !kestub::cm_db_supported())
            GTEST_SKIP() << "built without SQLite";
        if (GetParam()) {
            ASSERT_TRUE(kestub::cm_use_db(db().c_str()));
            EXPECT_EQ(kestub::cm_store_path(), db());
        } else {
            EXPECT_EQ(kestub::cm_store_path(), "");
        }
    }
    std::string db() const { return dir / "cm.db"; }
    TempDir dir;
};

TEST_P(CmStoreTest, KeysMergesAndEntriesBehaveAlike)
{
    kestub::cm_set_merge(822, or_merge);
    std::vector<uint8_t> rec22(8, 0);
    rec22[4] = 7;
    std::vector<uint8_t> rec22b(8, 0);
    rec22b[4] = 7;
    rec22b[5] = 1;
    run_ops({
        {Op::Get, 807, port_rec(1, 0), kestub::kCmNoEntry, port_rec(1, 0)},
        {Op::Set, 807, port_rec(1, 11), 0, {}},
        {Op::Set, 807, port_rec(2, 22), 0, {}},
        {Op::Set, 807, port_rec(1, 33), 0, {}},  // same port: replaced
        {Op::Get, 807, port_rec(1, 0), 0, port_rec(1, 33)},
        {Op::Get, 807, port_rec(2, 0), 0, port_rec(2, 22)},
        {Op::Count, 807, {}, 0, ketest::words({2})},
        {Op::Add, 815, ketest::words({0, 1}), 0, {}},
        {Op::Add, 815, ketest::words({0, 1}), 0, {}},  // Add appends even a key it holds
        {Op::Count, 815, {}, 0, ketest::words({2})},
        {Op::Del, 807, port_rec(1, 0), 0, {}},
        {Op::Del, 807, port_rec(1, 0), kestub::kCmNoEntry, {}},
        {Op::Get, 807, port_rec(2, 0), 0, port_rec(2, 22)},
        {Op::Set, 822, port_rec(3, 0x0f), 0, {}},
        {Op::Set, 822, port_rec(3, 0xf0), 0, {}},  // merged, not replaced
        {Op::Get, 822, port_rec(3, 0), 0, port_rec(3, 0xff)},
        {Op::Set, 470, rec22, 0, {}},  // VoIP tables: the line byte at 4
        {Op::Set, 470, rec22b, 0, {}},
        {Op::Count, 470, {}, 0, ketest::words({1})},
    });
    EXPECT_EQ(kestub::cm_entries(807), std::vector<std::vector<uint8_t>>{port_rec(2, 22)});
    EXPECT_EQ(kestub::cm_entries(815).size(), 2u);
    EXPECT_EQ(kestub::cm_tables(), (std::vector<uint32_t>{470, 807, 815, 822}));
}

TEST_P(CmStoreTest, ListReadsEveryEntryInInsertionOrder)
{
    for (uint32_t port : {5u, 3u, 9u})
        ASSERT_EQ(igdCmConfSet(458, port_rec(port, port * 2).data(), 20), 0u);
    std::vector<uint8_t> all(60, 0xee);
    // The WAN list is keyed by bytes 4 to 6, all zero here: one entry.
    ASSERT_EQ(igdCmConfGetAllEntry(458, all.data(), 60, 3), 0u);
    EXPECT_EQ(std::vector<uint8_t>(all.begin(), all.begin() + 20), port_rec(9, 18));
    kestub::cm_set_key(458, {{8, 4}});
    for (uint32_t port : {5u, 3u})
        ASSERT_EQ(igdCmConfSet(458, port_rec(port, port * 2).data(), 20), 0u);
    ASSERT_EQ(igdCmConfGetAllEntry(458, all.data(), 60, 3), 0u);
    std::vector<uint8_t> want = port_rec(9, 18);
    for (uint32_t port : {5u, 3u}) {
        std::vector<uint8_t> r = port_rec(port, port * 2);
        want.insert(want.end(), r.begin(), r.end());
    }
    EXPECT_EQ(all, want);
}

TEST_P(CmStoreTest, InjectedFailuresChangeNothingAndAreLogged)
{
    ASSERT_EQ(igdCmConfSet(807, port_rec(1, 1).data(), 20), 0u);
    kestub::cm_fail(807, 0x99);
    EXPECT_EQ(igdCmConfSet(807, port_rec(1, 2).data(), 20), 0x99u);
    kestub::cm_fail_nth(1, 0x98);
    EXPECT_EQ(igdCmConfDel(807, port_rec(1, 0).data(), 20), 0x98u);
    EXPECT_EQ(kestub::cm_entries(807), std::vector<std::vector<uint8_t>>{port_rec(1, 1)});
    const auto &calls = kestub::cm_calls();
    ASSERT_EQ(calls.size(), 3u);
    EXPECT_EQ(calls[1].status, 0x99u);
    EXPECT_EQ(calls[1].record, port_rec(1, 2));
    EXPECT_EQ(calls[2].op, kestub::CmOp::Del);
}

INSTANTIATE_TEST_SUITE_P(Stores, CmStoreTest, ::testing::Bool(),
                         [](const ::testing::TestParamInfo<bool> &p) {
                             return p.param ? "database" : "memory";
                         });

// ---- One database, many processes --------------------------------------

class CmDatabaseTest : public ketest::StubTest {
protected:
    void SetUp() override
    {
        StubTest::SetUp();
        if (!kestub::cm_db_supported())
            GTEST_SKIP() << "built without SQLite";
    }
    std::string db() const { return dir / "cm.db"; }
    TempDir dir;
};

// Writers in other processes, concurrent and killed, are the crash
// tests' (crash_safety_test.cpp).
TEST_F(CmDatabaseTest, TablesOutliveTheStandInAndComeBackThroughTheEnvironment)
{
    ASSERT_TRUE(kestub::cm_use_db(db().c_str()));
    ASSERT_EQ(igdCmConfSet(822, port_rec(4, 0x44).data(), 20), 0u);
    // A reset is a fresh process: back to memory unless KE_CM_DB names the
    // database.
    kestub::reset();
    EXPECT_TRUE(kestub::cm_entries(822).empty());
    setenv("KE_CM_DB", db().c_str(), 1);
    kestub::reset();
    EXPECT_EQ(kestub::cm_entries(822), std::vector<std::vector<uint8_t>>{port_rec(4, 0x44)});
    unsetenv("KE_CM_DB");
}

TEST_F(CmDatabaseTest, UnusableDatabaseIsReportedAndMemoryStays)
{
    ketest::write_file(dir / "garbage.db", std::string(4096, 'x'));
    for (std::string bad : {dir / "missing/dir/cm.db", dir.path(), dir / "garbage.db"}) {
        SCOPED_TRACE(bad);
        kestub::reset();
        EXPECT_FALSE(kestub::cm_use_db(bad.c_str()));
        EXPECT_EQ(kestub::cm_store_path(), "");
        EXPECT_EQ(igdCmConfSet(807, port_rec(1, 1).data(), 20), 0u);
        EXPECT_EQ(kestub::cm_entries(807).size(), 1u);
    }
    // The same through the environment.
    setenv("KE_CM_DB", (dir / "garbage.db").c_str(), 1);
    kestub::reset();
    EXPECT_EQ(igdCmConfSet(807, port_rec(1, 1).data(), 20), 0u);
    EXPECT_EQ(kestub::cm_store_path(), "");
    unsetenv("KE_CM_DB");
}

}  // namespace
