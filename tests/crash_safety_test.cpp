// Crash safety across real processes, each victim killed with SIGKILL so
// that nothing of it runs after the kill: the sml service in the middle of
// a call, a configuration-manager writer in the middle of a burst of
// writes, and uci in the middle of a commit.  Kill moments come from a
// fixed seed, so every run makes the same kills.
#include <dirent.h>
#include <poll.h>
#include <sys/stat.h>

#include <algorithm>
#include <random>
#include <thread>

#include "ke_omci_tapi/device.h"
#include "ke_omci_tapi/pon.h"
#include "ke_omci_tapi/stat.h"
#include "platform.h"
#include "sim_run.h"

#ifdef KE_HAVE_SQLITE
#include <sqlite3.h>
#endif

namespace {

using ketest::Clock;
using ketest::Process;
using ketest::TempDir;

constexpr std::mt19937::result_type kSeed = 20240611;

// Figures for the reliability notes, on the test's standard output.
void report(const std::string &line) { std::printf("[ measured ] %s\n", line.c_str()); }

long ms_between(Clock::time_point from, Clock::time_point to)
{
    return static_cast<long>(
        std::chrono::duration_cast<std::chrono::milliseconds>(to - from).count());
}

long us_between(Clock::time_point from, Clock::time_point to)
{
    return static_cast<long>(
        std::chrono::duration_cast<std::chrono::microseconds>(to - from).count());
}

std::string hex(uint32_t value)
{
    char buf[16];
    std::snprintf(buf, sizeof buf, "0x%x", static_cast<unsigned>(value));
    return buf;
}

bool contains(const std::string &text, const std::string &part)
{
    return text.find(part) != std::string::npos;
}

// ---- The sml service killed in the middle of a call --------------------

// An exported function that reaches the simulator, with what it needs
// done first, and what it answers when the service dies under it.
struct SimCall {
    const char *procedure;
    uint32_t (*prepare)();  // 0 when the call can be made
    uint32_t (*call)();
    uint32_t when_lost;  // 1 for a traced call, the remote status for a pass-through
};

uint32_t nothing_first() { return 0; }

uint32_t start_download()
{
    const uint8_t info[KE_UPGRADE_INFO_LEN] = {0};
    return ke_omci_tapi_upgrade_start(0x42, info);
}

uint32_t write_full_shard()
{
    std::vector<uint8_t> shard(UPGRADE_SHARD_MAX, 0x5a);
    return ke_omci_tapi_upgrade_write(shard.data(), UPGRADE_SHARD_MAX);
}

uint32_t read_fec_counters()
{
    st_fec_stat stat;
    return ke_omci_tapi_stat_fec_get(&stat);
}

uint32_t read_gem_block()
{
    uint32_t len = 0;
    return ke_omci_tapi_gem_block_get(&len);
}

const SimCall kSimCalls[] = {
    {"ke_ke_upgrade_image_sharding_write_call", start_download, write_full_shard, 1},
    {"ke_ke_sml_gpon_fec_stat_get_call", nothing_first, read_fec_counters, 1},
    {"ke_ke_sml_gpon_gemblock_get_call", nothing_first, read_gem_block, kestub::kIpcLost},
};

// How one call to a stalled service ended.
struct CallEnd {
    uint32_t status;
    std::string printed;
    uint32_t remote_status;  // what ke_ipc_call answered
    long call_ms;
};

class SimKillTest : public ketest::SimRunTest {
protected:
    void SetUp() override
    {
        SimRunTest::SetUp();
        kestub::ipc_set_timeout(0);
        kestub::log_set(true);
    }
    void TearDown() override
    {
        kestub::ipc_set_timeout(0);
        SimRunTest::TearDown();
    }

    // Starts the simulator, stalling on the procedure named (none: ""),
    // with its output in a file of its own.
    void start(Process &sim, const std::string &stall)
    {
        out_ = "sim" + std::to_string(++starts_) + ".out";
        std::vector<std::string> extra;
        if (!stall.empty())
            extra = {"--stall", stall};
        start_sim(sim, extra, out_);
    }

    // True once the simulator has the request of procedure in hand.
    bool stalled_in(const std::string &procedure)
    {
        return contains(ketest::read_file(run / out_), "sml-sim: stalling in " + procedure + "\n");
    }

    CallEnd make_call(const SimCall &c)
    {
        CallEnd end{};
        auto start = Clock::now();
        end.printed = ketest::printed([&] { end.status = c.call(); });
        end.call_ms = ketest::ms_since(start);
        end.remote_status = kestub::ipc_calls().empty() ? 0 : kestub::ipc_calls().back().status;
        return end;
    }

    // The failed-call line carries the remote status for a traced call;
    // a pass-through call prints nothing.
    void expect_trace(const SimCall &c, const CallEnd &end, uint32_t remote)
    {
        std::string func;
        int line = 0;
        if (c.when_lost == 1)
            EXPECT_TRUE(ketest::parse_info_line(end.printed, &func, &line, remote)) << end.printed;
        else
            EXPECT_EQ(end.printed, "");
    }

    std::string out_;
    int starts_ = 0;
};

TEST_F(SimKillTest, KilledMidCallEndsTheCallAndARestartServesAgain)
{
    if (IsSkipped())
        return;
    long longest_after_kill = 0;
    for (const SimCall &c : kSimCalls) {
        SCOPED_TRACE(c.procedure);
        Process sim;
        ASSERT_NO_FATAL_FAILURE(start(sim, c.procedure));
        ASSERT_EQ(c.prepare(), 0u);

        Clock::time_point killed_at{};
        std::thread killer([&] {
            if (ketest::wait_until([&] { return stalled_in(c.procedure); }, 10000))
                killed_at = Clock::now();
            sim.kill_now();
        });
        CallEnd end = make_call(c);
        auto returned_at = Clock::now();
        killer.join();
        ASSERT_NE(killed_at, Clock::time_point{}) << "the call never reached the simulator";

        EXPECT_EQ(end.status, c.when_lost);
        EXPECT_EQ(end.remote_status, kestub::kIpcLost);
        expect_trace(c, end, kestub::kIpcLost);
        long after_kill = ms_between(killed_at, returned_at);
        longest_after_kill = std::max(longest_after_kill, after_kill);
        EXPECT_LE(after_kill, static_cast<long>(kestub::kIpcLateMs));
        EXPECT_LE(end.call_ms, static_cast<long>(kestub::kIpcTimeoutMs + kestub::kIpcLateMs));
        report(std::string(c.procedure) + ": status " + hex(end.remote_status) + " " +
               std::to_string(after_kill) + " ms after the kill, call " +
               std::to_string(end.call_ms) + " ms");

        // A new simulator in the same run directory; this process goes on.
        Process again;
        ASSERT_NO_FATAL_FAILURE(start(again, ""));
        EXPECT_EQ(c.prepare(), 0u);
        EXPECT_EQ(c.call(), 0u);
    }
    report("longest wait after a kill " + std::to_string(longest_after_kill) + " ms, bound " +
           std::to_string(kestub::kIpcLateMs) + " ms");
}

TEST_F(SimKillTest, StalledServiceTimesOutWithinTheBoundAndARestartServesAgain)
{
    if (IsSkipped())
        return;
    constexpr unsigned kTimeoutMs = 600;
    kestub::ipc_set_timeout(kTimeoutMs);
    const SimCall &c = kSimCalls[1];
    Process sim;
    ASSERT_NO_FATAL_FAILURE(start(sim, c.procedure));
    CallEnd end = make_call(c);
    EXPECT_TRUE(stalled_in(c.procedure));
    EXPECT_EQ(end.status, c.when_lost);
    EXPECT_EQ(end.remote_status, kestub::kIpcTimeout);
    expect_trace(c, end, kestub::kIpcTimeout);
    EXPECT_GE(end.call_ms, static_cast<long>(kTimeoutMs) - 5);
    EXPECT_LE(end.call_ms, static_cast<long>(kTimeoutMs + kestub::kIpcLateMs));
    report(std::string(c.procedure) + " stalled: status " + hex(end.remote_status) + " after " +
           std::to_string(end.call_ms) + " ms, bound " +
           std::to_string(kTimeoutMs + kestub::kIpcLateMs) + " ms");

    // Killed and replaced, the service answers every call again.
    sim.kill_now();
    Process again;
    ASSERT_NO_FATAL_FAILURE(start(again, ""));
    for (const SimCall &each : kSimCalls) {
        SCOPED_TRACE(each.procedure);
        EXPECT_EQ(each.prepare(), 0u);
        EXPECT_EQ(each.call(), 0u);
    }
}

// ---- A configuration-manager writer killed in a burst of writes ---------

constexpr uint32_t kBurstTable = 815;  // Add appends: every write rewrites the table
constexpr uint32_t kBurst = 150;
constexpr int kCmRounds = 5;
constexpr long kRoundBoundMs = 15000;

// Writes records (writer, i) for i from 0 and reports each one on ack
// once its write returned 0.  Exits 1 when the store cannot be opened, 2
// when a write is refused.
int write_burst(const std::string &db, uint32_t writer, int go, int ack)
{
    kestub::reset();
    if (!kestub::cm_use_db(db.c_str()))
        return 1;
    char byte;
    if (read(go, &byte, 1) != 0)  // the parent closes it: both start at once
        return 1;
    for (uint32_t i = 0; i < kBurst; ++i) {
        std::vector<uint8_t> rec = ketest::words({writer, i});
        if (igdCmConfAdd(kBurstTable, rec.data(), 8) != 0)
            return 2;
        if (write(ack, rec.data(), 8) != 8)
            return 3;
    }
    return 0;
}

// Reads 8-byte acknowledgements from fd until count of them came or the
// writer closed it; false when the deadline passes first.
bool read_acks(int fd, std::vector<uint32_t> *acked, size_t count, Clock::time_point deadline)
{
    while (acked->size() < count) {
        pollfd pfd{fd, POLLIN, 0};
        long left = ms_between(Clock::now(), deadline);
        if (left <= 0 || poll(&pfd, 1, static_cast<int>(left)) <= 0)
            return false;
        uint32_t rec[2];
        ssize_t n = read(fd, rec, sizeof rec);
        if (n == 0)
            return true;
        if (n != static_cast<ssize_t>(sizeof rec))
            return false;
        acked->push_back(rec[1]);
    }
    return true;
}

// "ok", or what SQLite's own check finds wrong with the file.
std::string integrity_of(const std::string &path)
{
#ifdef KE_HAVE_SQLITE
    sqlite3 *db = nullptr;
    std::string result = "cannot open";
    if (sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK) {
        result.clear();
        sqlite3_stmt *st = nullptr;
        if (sqlite3_prepare_v2(db, "PRAGMA integrity_check", -1, &st, nullptr) != SQLITE_OK)
            result = sqlite3_errmsg(db);
        while (st != nullptr && sqlite3_step(st) == SQLITE_ROW)
            result += reinterpret_cast<const char *>(sqlite3_column_text(st, 0));
        sqlite3_finalize(st);
    }
    sqlite3_close(db);
    return result;
#else
    (void)path;
    return "not checked";
#endif
}

class CmKillTest : public ketest::StubTest {
protected:
    void SetUp() override
    {
        StubTest::SetUp();
        KE_SKIP_WITHOUT_FORK();
        if (!kestub::cm_db_supported())
            GTEST_SKIP() << "built without SQLite";
    }
};

TEST_F(CmKillTest, EveryAcknowledgedWriteOutlivesAWriterKilledMidBurst)
{
    if (IsSkipped())
        return;
    std::mt19937 rng(kSeed);
    for (int round = 0; round < kCmRounds; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        TempDir dir;
        std::string db = dir / "cm.db";
        ASSERT_TRUE(kestub::cm_use_db(db.c_str()));  // the schema exists before they start
        const uint32_t victim = static_cast<uint32_t>(round % 2);
        const size_t kill_after = std::uniform_int_distribution<size_t>(0, kBurst - 1)(rng);
        const long then_us = std::uniform_int_distribution<long>(0, 2000)(rng);
        auto deadline = Clock::now() + std::chrono::milliseconds(kRoundBoundMs);

        int go[2];
        int ack[2][2];
        ASSERT_EQ(pipe(go), 0);
        ASSERT_EQ(pipe(ack[0]), 0);
        ASSERT_EQ(pipe(ack[1]), 0);
        Process writers[2];
        for (uint32_t w = 0; w < 2; ++w)
            ASSERT_TRUE(writers[w].run_fn([&, w] {
                close(go[1]);
                close(ack[w][0]);
                close(ack[1 - w][0]);
                close(ack[1 - w][1]);
                return write_burst(db, w, go[0], ack[w][1]);
            }));
        for (int fd : {go[0], ack[0][1], ack[1][1]})
            close(fd);
        close(go[1]);

        std::vector<uint32_t> acked[2];
        EXPECT_TRUE(read_acks(ack[victim][0], &acked[victim], kill_after, deadline));
        std::this_thread::sleep_for(std::chrono::microseconds(then_us));
        writers[victim].kill_now();
        EXPECT_TRUE(read_acks(ack[victim][0], &acked[victim], kBurst, deadline));
        EXPECT_TRUE(read_acks(ack[1 - victim][0], &acked[1 - victim], kBurst, deadline));
        EXPECT_EQ(writers[1 - victim].wait(ms_between(Clock::now(), deadline)), 0);
        close(ack[0][0]);
        close(ack[1][0]);

        // Each writer's entries, in its order: every acknowledged one, and
        // at most one more (written, killed before it was reported).
        std::vector<uint32_t> stored[2];
        for (const std::vector<uint8_t> &e : kestub::cm_entries(kBurstTable)) {
            uint32_t w = ketest::u32_at(e, 0);
            ASSERT_LT(w, 2u);
            stored[w].push_back(ketest::u32_at(e, 4));
        }
        for (uint32_t w = 0; w < 2; ++w) {
            SCOPED_TRACE(w == victim ? "killed writer" : "surviving writer");
            // Both count up from 0: no gap, no duplicate, no reordering.
            for (size_t i = 0; i < stored[w].size(); ++i)
                ASSERT_EQ(stored[w][i], i);
            for (size_t i = 0; i < acked[w].size(); ++i)
                ASSERT_EQ(acked[w][i], i);
            EXPECT_GE(stored[w].size(), acked[w].size());
            EXPECT_LE(stored[w].size(), acked[w].size() + (w == victim ? 1 : 0));
        }
        EXPECT_EQ(acked[1 - victim].size(), kBurst);
        EXPECT_EQ(integrity_of(db), "ok");
        report("round " + std::to_string(round) + ": writer " + std::to_string(victim) +
               " killed " + std::to_string(then_us) + " us after acknowledgement " +
               std::to_string(kill_after) + "; acknowledged " +
               std::to_string(acked[victim].size()) + ", stored " +
               std::to_string(stored[victim].size()) + "; other writer " +
               std::to_string(stored[1 - victim].size()) + " of " + std::to_string(kBurst));
        kestub::reset();
    }
}

// ---- uci killed in the middle of a commit -------------------------------

constexpr int kUciSections = 250;
constexpr int kUciRounds = 40;
// How often the test looks at the files while uci runs.
constexpr std::chrono::microseconds kGlance(50);

// A package big enough that a commit takes measurable time.
std::string big_package()
{
    std::string text = "package big\n";
    for (int i = 0; i < kUciSections; ++i) {
        std::string n = std::to_string(i);
        text += "\nconfig rule 'r" + n + "'\n\toption name 'rule " + n +
                "'\n\toption target 'ACCEPT'\n\toption src 'lan'\n\toption dest_port '" +
                std::to_string(1000 + i) + "'\n\tlist proto 'tcp'\n\tlist proto 'udp'\n";
    }
    return text;
}

class UciKillTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        KE_SKIP_WITHOUT_FORK();
        ASSERT_EQ(mkdir(config_.c_str(), 0700), 0);
        ASSERT_EQ(mkdir(save_.c_str(), 0700), 0);
    }

    // Starts uci with args on the sandbox's directories; with a step, uci
    // kills itself right after that step of a commit.
    void start(Process &p, const std::vector<std::string> &args, const std::string &step = "")
    {
        std::vector<std::string> argv = {"/usr/bin/env", "UCI_CRASH_AFTER=" + step, KE_UCI_TOOL,
                                         "-c",           config_,                   "-P",
                                         save_};
        argv.insert(argv.end(), args.begin(), args.end());
        ASSERT_TRUE(p.start(argv, dir / "uci.out"));
    }

    // Runs uci with args to its end; its exit status.
    int uci(const std::vector<std::string> &args)
    {
        Process p;
        start(p, args);
        return p.wait(10000);
    }

    std::string file() const { return ketest::read_file(path_); }

    // The package as a read shows it.
    std::string exported()
    {
        const std::string out = dir / "uci.out";
        std::remove(out.c_str());
        EXPECT_EQ(uci({"export", "big"}), 0);
        return ketest::read_file(out);
    }

    // Sets up the package with staged changes, one of them an added
    // section (replayed twice, it would show twice); what reads show.
    std::string stage_changes()
    {
        for (const char *change : {"big.r0.target=DROP", "big.r125.name=changed",
                                   "big.r249.extra=1", "big.added=rule", "big.added.name=new"})
            EXPECT_EQ(uci({"set", change}), 0) << change;
        EXPECT_EQ(uci({"add", "big", "rule"}), 0);
        std::string view = exported();
        EXPECT_TRUE(contains(view, "option target 'DROP'"));
        return view;
    }

    // The package file's inode: a commit renames a new file over it.
    ino_t inode() const
    {
        struct stat st;
        return stat(path_.c_str(), &st) == 0 ? st.st_ino : 0;
    }

    // Files beside the package: the new file while a commit writes it, or
    // what a killed one left.
    std::vector<std::string> strays() const { return files_in(config_, "big"); }

    // The files in dir but the one named but.
    static std::vector<std::string> files_in(const std::string &dir, const std::string &but = "")
    {
        std::vector<std::string> names;
        if (DIR *d = opendir(dir.c_str())) {
            while (const dirent *e = readdir(d))
                if (e->d_name[0] != '.' && e->d_name != but)
                    names.push_back(e->d_name);
            closedir(d);
        }
        return names;
    }

    TempDir dir;
    std::string config_ = dir / "config";
    std::string save_ = dir / "save";
    std::string path_ = config_ + "/big";
};

TEST_F(UciKillTest, KilledCommitLeavesTheOldOrTheNewFileAndTheNextCommitWorks)
{
    if (IsSkipped())
        return;
    const std::string old_text = big_package();
    ketest::write_file(path_, old_text);
    // What reads show, before the commit and after it alike.
    const std::string view = stage_changes();
    const std::string staged = ketest::read_file(save_ + "/big");
    ASSERT_FALSE(staged.empty());

    // One commit to its end: the new file, and how long each step takes.
    Process first;
    ino_t restored = inode();
    auto start_at = Clock::now();
    start(first, {"commit", "big"});
    // The new file replaces the old one when it is renamed over it (or, for
    // a uci that wrote in place, by the end).
    Clock::time_point temp_at{}, renamed_at{};
    while (renamed_at == Clock::time_point{} && ketest::ms_since(start_at) < 10000) {
        if (temp_at == Clock::time_point{} && !strays().empty())
            temp_at = Clock::now();
        if (inode() != restored || first.ended())
            renamed_at = Clock::now();
        std::this_thread::sleep_for(kGlance);
    }
    ASSERT_EQ(first.wait(10000), 0);
    if (temp_at == Clock::time_point{})
        temp_at = renamed_at;
    const std::string new_text = file();
    ASSERT_NE(new_text, old_text);
    ASSERT_TRUE(contains(new_text, "option target 'DROP'"));
    ASSERT_TRUE(strays().empty());
    ASSERT_TRUE(exported() == view);
    const long to_rename_us = us_between(start_at, renamed_at);
    const long writing_us = std::max(us_between(temp_at, renamed_at), 100L);

    std::mt19937 rng(kSeed);
    int left_old = 0, left_new = 0, left_temp = 0;
    for (int round = 0; round < kUciRounds; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        ketest::write_file(path_, old_text);
        ketest::write_file(save_ + "/big", staged);
        restored = inode();
        // Even rounds: any moment of the whole run; odd rounds: while the
        // new file is written beside the old one, and just after.
        const bool while_writing = round % 2 == 1;
        const long wait_us = std::uniform_int_distribution<long>(
            0, while_writing ? writing_us * 3 / 2 : to_rename_us * 5 / 4)(rng);
        Process p;
        start(p, {"commit", "big"});
        auto from = Clock::now();
        while (while_writing && strays().empty() && inode() == restored && !p.ended() &&
               ketest::ms_since(from) < 10000)
            std::this_thread::sleep_for(kGlance);
        std::this_thread::sleep_for(std::chrono::microseconds(wait_us));
        p.kill_now();

        std::string after = file();
        ASSERT_TRUE(after == old_text || after == new_text)
            << "torn file of " << after.size() << " bytes";
        if (after == old_text)
            ++left_old;
        else
            ++left_new;
        if (!strays().empty())
            ++left_temp;
        // Reads show every staged change once, whichever file is in place.
        EXPECT_TRUE(exported() == view) << "staged changes lost or applied twice";

        // Whatever the kill left, the next commit ends with the new file.
        EXPECT_EQ(uci({"commit", "big"}), 0);
        EXPECT_EQ(file(), new_text);
        EXPECT_TRUE(strays().empty());
        EXPECT_TRUE(files_in(save_).empty());
    }
    EXPECT_GT(left_old, 0);
    EXPECT_GT(left_new, 0);
    report("uci commit of " + std::to_string(old_text.size()) + " bytes: " +
           std::to_string(to_rename_us) + " us to the rename, " + std::to_string(writing_us) +
           " us writing; " + std::to_string(kUciRounds) + " kills left the old file " +
           std::to_string(left_old) + " times, the new " + std::to_string(left_new) +
           ", a temporary file " + std::to_string(left_temp));
}

// The moments a random kill rarely meets: right after each step of the
// commit.  The next read shows every change once, and the next commit
// leaves nothing staged and nothing beside the file.
TEST_F(UciKillTest, KillAfterEachCommitStepLosesNoChangeAndRepeatsNone)
{
    if (IsSkipped())
        return;
    for (const char *step : {"written", "claimed", "renamed"}) {
        SCOPED_TRACE(step);
        ketest::write_file(path_, big_package());
        std::remove((save_ + "/big").c_str());
        const std::string view = stage_changes();
        Process p;
        start(p, {"commit", "big"}, step);
        EXPECT_EQ(p.wait(10000), -2);  // ended by the signal
        EXPECT_TRUE(exported() == view) << "staged changes lost or applied twice";
        EXPECT_EQ(uci({"commit", "big"}), 0);
        EXPECT_TRUE(exported() == view);
        EXPECT_TRUE(strays().empty());
        EXPECT_TRUE(files_in(save_).empty());
    }
}

}  // namespace
