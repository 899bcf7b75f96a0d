// Remote calls between processes: the frame carried over the run
// directory's sockets, the answers when nobody serves or the server goes
// away, and the served-call list read from loaded libraries.
#include <dlfcn.h>

#include <cstring>

#include "platform.h"
#include "process.h"
#include "stub_test.h"

namespace {

using ketest::Process;
using ketest::TempDir;

constexpr uint32_t kRefused = 0x72200008;

// Adds one to every byte; the status tells the length and a null buffer.
uint32_t bump(void *buf, uint32_t len)
{
    if (buf != nullptr)
        for (uint32_t i = 0; i < len; ++i)
            static_cast<uint8_t *>(buf)[i] += 1;
    return 0x5000 + len + (buf == nullptr ? 0x100000 : 0);
}

// The serving convention for an 8-byte record.
uint32_t exact8(void *buf, uint32_t len)
{
    if (buf == nullptr || len != 8)
        return kRefused;
    std::memcpy(buf, "replied!", 8);
    return 0;
}

bool serves(const std::string &name)
{
    for (const std::string &n : kestub::served_names())
        if (n == name)
            return true;
    return false;
}

class SocketTest : public ketest::StubTest {
protected:
    void SetUp() override
    {
        StubTest::SetUp();
        ASSERT_FALSE(run.path().empty());
        setenv("KE_RUN_DIR", run.path().c_str(), 1);
    }
    void TearDown() override
    {
        kestub::serve_stop();
        StubTest::TearDown();
    }

    // A process serving the test handlers.
    void start_server(Process &p)
    {
        KE_SKIP_WITHOUT_THREADS();
        ASSERT_TRUE(p.start_fn([] {
            kestub::ipc_serve("t_bump_call", bump);
            kestub::ipc_serve("t_exact8_call", exact8);
            if (kestub::serve_start() < 2)
                _exit(3);
        }));
    }

    TempDir run;
};

TEST_F(SocketTest, CarriesBytesStatusAndLengthUnchangedAfterLocalAnswers)
{
    Process server;
    start_server(server);
    if (IsSkipped())
        return;
    struct Case {
        const char *name;
        std::vector<uint8_t> request;
        bool null_buf;
        uint32_t len;
        uint32_t status;
        std::vector<uint8_t> reply;
    };
    const std::vector<Case> cases = {
        {"t_bump_call", {1, 2, 3, 0xff, 9}, false, 5, 0x5005, {2, 3, 4, 0, 10}},
        {"t_bump_call", {}, true, 0, 0x105000, {}},
        {"t_bump_call", {}, true, 12, 0x10500c, {}},
        {"t_exact8_call", std::vector<uint8_t>(8, 0), false, 8, 0,
         {'r', 'e', 'p', 'l', 'i', 'e', 'd', '!'}},
        {"t_exact8_call", std::vector<uint8_t>(7, 0x11), false, 7, kRefused, std::vector<uint8_t>(7, 0x11)},
        {"t_exact8_call", std::vector<uint8_t>(9, 0x22), false, 9, kRefused, std::vector<uint8_t>(9, 0x22)},
        {"t_exact8_call", {}, true, 8, kRefused, {}},
        {"t_nobody_call", {1, 2}, false, 2, kestub::kIpcNoServer, {1, 2}},
        {"", {}, true, 0, kestub::kIpcNoServer, {}},
        {"../ipc/t_bump_call", {1}, false, 1, kestub::kIpcNoServer, {1}},
        {"ipc/t_bump_call", {1}, false, 1, kestub::kIpcNoServer, {1}},
        {".t_bump_call", {1}, false, 1, kestub::kIpcNoServer, {1}},
        {"t_bump_call", {}, true, kestub::kIpcMaxLen + 1, kestub::kIpcTooLong, {}},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(std::string(c.name) + " len " + std::to_string(c.len));
        std::vector<uint8_t> buf = c.request;
        uint32_t status = ke_ipc_call(c.name, c.null_buf ? nullptr : buf.data(), c.len);
        EXPECT_EQ(status, c.status);
        EXPECT_EQ(buf, c.reply);
    }
    std::string long_name(200, 'a');
    EXPECT_EQ(ke_ipc_call(long_name.c_str(), nullptr, 0), kestub::kIpcNoServer);
    // Calls across processes are logged like local ones.
    ASSERT_EQ(kestub::ipc_calls().size(), cases.size() + 1);
    EXPECT_EQ(kestub::ipc_calls()[0].request, (std::vector<uint8_t>{1, 2, 3, 0xff, 9}));
    EXPECT_EQ(kestub::ipc_calls()[0].status, 0x5005u);

    // Records of a few MiB travel whole.
    std::vector<uint8_t> big(3u << 20);
    for (size_t i = 0; i < big.size(); ++i)
        big[i] = static_cast<uint8_t>(i * 7);
    std::vector<uint8_t> want = big;
    for (uint8_t &b : want)
        b += 1;
    EXPECT_EQ(ke_ipc_call("t_bump_call", big.data(), static_cast<uint32_t>(big.size())),
              0x5000u + (3u << 20));
    EXPECT_TRUE(big == want);

    // Local handlers and scripts come before the socket.
    kestub::ipc_serve("t_exact8_call", [](void *, uint32_t) -> uint32_t { return 0x77; });
    kestub::ipc_script("t_bump_call", 0x66);
    uint8_t buf[8] = {};
    EXPECT_EQ(ke_ipc_call("t_exact8_call", buf, 8), 0x77u);
    EXPECT_EQ(ke_ipc_call("t_bump_call", buf, 8), 0x66u);
    EXPECT_EQ(ke_ipc_call("t_bump_call", buf, 8), 0x5008u);  // script used up: remote
}

TEST_F(SocketTest, UnservedNameAnswersAtOnce)
{
    auto start = ketest::Clock::now();
    for (int i = 0; i < 50; ++i)
        EXPECT_EQ(ke_ipc_call("t_nobody_call", nullptr, 0), kestub::kIpcNoServer);
    EXPECT_LT(ketest::ms_since(start), 500);
}

// A server killed in the middle of a call, and one that stops answering,
// are the crash tests' (crash_safety_test.cpp): the call ends within its
// bound and a new server serves again.
TEST_F(SocketTest, LiveServersKeepTheirNamesDeadOnesLeaveThemToTakeOver)
{
    Process server;
    start_server(server);
    if (IsSkipped())
        return;
    kestub::ipc_serve("t_bump_call", bump);
    EXPECT_EQ(kestub::serve_start(), -1);
    EXPECT_TRUE(kestub::served_names().empty());
    server.kill_now();
    // Its socket files stay behind; nobody answers on them, and they are
    // taken over.
    EXPECT_TRUE(ketest::exists(run / "ipc/t_bump_call"));
    uint8_t buf[4] = {};
    EXPECT_EQ(ke_ipc_call("t_exact8_call", buf, 4), kestub::kIpcNoServer);
    EXPECT_GE(kestub::serve_start(), 1);
    EXPECT_TRUE(serves("t_bump_call"));
    kestub::serve_stop();
    EXPECT_FALSE(ketest::exists(run / "ipc/t_bump_call"));
}

// ---- The served-call list of loaded libraries ---------------------------

std::vector<std::string> names_from(const std::string &object)
{
    std::vector<std::string> names;
    for (const kestub::SectionName &s : kestub::section_names())
        if (s.object == object)
            names.push_back(s.name);
    return names;
}

TEST_F(SocketTest, SectionReaderFollowsEveryPointerOfEachLoadedList)
{
    struct Case {
        const char *path;
        std::vector<std::string> names;
    };
    const std::vector<Case> cases = {
        {KE_PATH_IPC_FIXTURE_SERVED,
         {"ke_ke_fixture_count_call", "ke_ke_fixture_store_call", "ke_ke_fixture_fetch_call"}},
        // A null slot is skipped; a name without an entry is still listed.
        {KE_PATH_IPC_FIXTURE_PARTIAL, {"ke_ke_fixture_partial_call", "ke_ke_fixture_missing_call"}},
        // Five bytes hold no whole pointer: no list at all.
        {KE_PATH_IPC_FIXTURE_RAGGED, {}},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.path);
        EXPECT_TRUE(names_from(c.path).empty());  // nothing before it is loaded
        void *lib = dlopen(c.path, RTLD_NOW);
        ASSERT_NE(lib, nullptr) << dlerror();
        EXPECT_EQ(names_from(c.path), c.names);
        dlclose(lib);
    }
}

TEST_F(SocketTest, LoadedListIsServedToOtherProcessesByItsExportedEntries)
{
    KE_SKIP_WITHOUT_THREADS();
    Process server;
    ASSERT_TRUE(server.start_fn([] {
        if (dlopen(KE_PATH_IPC_FIXTURE_SERVED, RTLD_NOW) == nullptr ||
            dlopen(KE_PATH_IPC_FIXTURE_PARTIAL, RTLD_NOW) == nullptr)
            _exit(5);
        // Three names of one list and the one exported entry of the other.
        if (kestub::serve_start() < 4 || serves("ke_ke_fixture_missing_call") ||
            !serves("ke_ke_fixture_partial_call") || !serves("ke_ke_fixture_fetch_call"))
            _exit(6);
    }));
    uint8_t record[24];
    for (int i = 0; i < 24; ++i)
        record[i] = static_cast<uint8_t>(0xa0 + i);
    uint8_t back[24] = {};
    uint32_t count = 0;
    EXPECT_EQ(ke_ipc_call("ke_ke_fixture_store_call", record, 24), 0u);
    EXPECT_EQ(ke_ipc_call("ke_ke_fixture_store_call", record, 23), kRefused);
    EXPECT_EQ(ke_ipc_call("ke_ke_fixture_store_call", nullptr, 24), kRefused);
    EXPECT_EQ(ke_ipc_call("ke_ke_fixture_fetch_call", back, 24), 0u);
    EXPECT_EQ(std::memcmp(back, record, 24), 0);
    EXPECT_EQ(ke_ipc_call("ke_ke_fixture_count_call", &count, 4), 0u);
    EXPECT_EQ(count, 2u);
    EXPECT_EQ(ke_ipc_call("ke_ke_fixture_partial_call", back, 24), 24u);
    EXPECT_EQ(ke_ipc_call("ke_ke_fixture_missing_call", back, 24), kestub::kIpcNoServer);
}

TEST_F(SocketTest, ServingProcessCallsItsOwnListedEntriesDirectly)
{
    KE_SKIP_WITHOUT_THREADS();
    void *lib = dlopen(KE_PATH_IPC_FIXTURE_SERVED, RTLD_NOW);
    ASSERT_NE(lib, nullptr);
    ASSERT_GE(kestub::serve_start(), 3);
    // With the serving lock held, a call through the socket could not be
    // answered: an in-process call must not need it.
    kestub::serve_lock();
    uint32_t count = 0xffff;
    auto start = ketest::Clock::now();
    uint32_t status = ke_ipc_call("ke_ke_fixture_count_call", &count, 4);
    kestub::serve_unlock();
    EXPECT_EQ(status, 0u);
    EXPECT_LT(ketest::ms_since(start), 1000);
    kestub::serve_stop();
    dlclose(lib);
}

}  // namespace
