// Firmware download throughput through the whole bench, against its floor.
//
// The bench: this process is the OMCI stack, calling the library, whose
// remote calls go over the stand-in's sockets to sml-sim (started as the
// main job starts it, its call log included), which writes every shard to
// the section file.  The floor: the same 6152-byte shard messages sent
// over one raw Unix socket to a process that writes each shard to a file.
// A second floor has that process answer every message with its 6152
// bytes before the sender goes on, as a synchronous remote call must: the
// floor of a download made of such calls.  All move the same 32 MiB image;
// each repetition is timed from the first shard until the last byte is in
// the file.
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <random>
#include <vector>

#include "bench_env.h"
#include "floor_report.h"
#include "io_all.h"
#include "ke_omci_tapi/device.h"
#include "kestub.h"

namespace {

constexpr size_t kImageBytes = 32u << 20;
constexpr uint32_t kUpgradeWord = 0x5a5a0001;
constexpr double kTarget = 0.8;  // the bench's throughput against the floor's

std::vector<uint8_t> g_image;
kebench::RunDir *g_run;

size_t shards() { return (kImageBytes + UPGRADE_SHARD_MAX - 1) / UPGRADE_SHARD_MAX; }

uint32_t shard_len(size_t i)
{
    size_t left = kImageBytes - i * UPGRADE_SHARD_MAX;
    return static_cast<uint32_t>(left < UPGRADE_SHARD_MAX ? left : UPGRADE_SHARD_MAX);
}

// The section sml-sim wrote holds the image, byte for byte.
bool section_holds_image()
{
    for (const char *name : {"flash/section0.bin", "flash/section1.bin"}) {
        std::string bytes = ketest::read_file(*g_run / name);
        if (bytes.size() == g_image.size() &&
            std::memcmp(bytes.data(), g_image.data(), bytes.size()) == 0)
            return true;
    }
    return false;
}

void library_download(benchmark::State &state)
{
    const uint8_t info[KE_UPGRADE_INFO_LEN] = {};
    for (auto _ : state) {
        bool ok = ke_omci_tapi_upgrade_start(kUpgradeWord, info) == 0;
        for (size_t i = 0; ok && i < shards(); ++i)
            ok = ke_omci_tapi_upgrade_write(g_image.data() + i * UPGRADE_SHARD_MAX, shard_len(i)) ==
                 0;
        if (!ok) {
            state.SkipWithError("a remote call of the download failed");
            return;
        }
    }
    if (!section_holds_image())
        state.SkipWithError("the section file does not hold the image");
}

// The receivers: floor.sock streams, floor_reply.sock answers each message.
struct Receiver {
    const char *socket;
    const char *file;
    bool reply;
};
constexpr Receiver kStream{"floor.sock", "floor.bin", false};
constexpr Receiver kReply{"floor_reply.sock", "floor_reply.bin", true};

int connect_receiver(const Receiver &r)
{
    sockaddr_un addr{};
    addr.sun_family = AF_UNIX;
    std::string path = *g_run / r.socket;
    std::snprintf(addr.sun_path, sizeof addr.sun_path, "%s", path.c_str());
    int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd >= 0 && connect(fd, reinterpret_cast<sockaddr *>(&addr), sizeof addr) != 0) {
        close(fd);
        fd = -1;
    }
    return fd;
}

// Each message is built as the library builds its request: the shard
// copied into a zeroed record.
void floor_download(benchmark::State &state, const Receiver &r)
{
    st_upgrade_shard msg;
    for (auto _ : state) {
        int fd = connect_receiver(r);
        bool ok = fd >= 0;
        for (size_t i = 0; ok && i < shards(); ++i) {
            msg.ui_upgrade_word = kUpgradeWord;
            msg.ui_len = shard_len(i);
            std::memset(msg.auc_data, 0, sizeof msg.auc_data);
            std::memcpy(msg.auc_data, g_image.data() + i * UPGRADE_SHARD_MAX, msg.ui_len);
            ok = kebench::write_all(fd, &msg, sizeof msg) &&
                 (!r.reply || kebench::read_all(fd, &msg, sizeof msg));
        }
        char ack = 0;
        ok = ok && shutdown(fd, SHUT_WR) == 0 && read(fd, &ack, 1) == 1;
        if (fd >= 0)
            close(fd);
        if (!ok) {
            state.SkipWithError("the floor's receiver failed");
            return;
        }
    }
    struct stat st;
    if (stat((*g_run / r.file).c_str(), &st) != 0 || static_cast<size_t>(st.st_size) != kImageBytes)
        state.SkipWithError("the floor's file does not hold the image");
}

}  // namespace

int main(int argc, char **argv)
{
    kebench::RunDir run("ke_bench_download");
    g_run = &run;
    ketest::Process sim, stream, reply;
    auto start_receiver = [&](ketest::Process &p, const Receiver &r) {
        std::vector<std::string> argv{KE_FLOOR_RECEIVER_PATH, run / r.socket, run / r.file};
        if (r.reply)
            argv.insert(argv.begin() + 1, "--reply");
        return p.start(argv, run / "floor.out") &&
               ketest::wait_until([&] { return ketest::exists(run / r.socket); }, 10000);
    };
    if (!kebench::start_sim(sim, run) || !start_receiver(stream, kStream) ||
        !start_receiver(reply, kReply)) {
        std::fprintf(stderr, "download: the simulator or the floor's receiver did not start\n");
        return 1;
    }
    // The stand-in keeps no copy of each request: that would be its cost,
    // not the library's or the bench's.
    kestub::ipc_record(false);

    g_image.resize(kImageBytes);
    std::mt19937 random(12345);
    for (uint8_t &b : g_image)
        b = static_cast<uint8_t>(random());

    const char *name = "firmware_download_32MiB";
    kebench::once(
        benchmark::RegisterBenchmark(kebench::library_name(name).c_str(), library_download));
    kebench::once(
        benchmark::RegisterBenchmark(kebench::floor_name(name).c_str(), floor_download, kStream));
    std::string reply_floor = kebench::floor_name(name) + "_with_replies";
    kebench::once(benchmark::RegisterBenchmark(reply_floor.c_str(), floor_download, kReply));
    auto medians = kebench::run_all(argc, argv, 7);
    auto lib = medians.find(kebench::library_name(name));
    auto flo = medians.find(kebench::floor_name(name));
    auto sync = medians.find(reply_floor);
    if (lib == medians.end() || flo == medians.end() || sync == medians.end())
        return 1;

    // Wall time: the work is spread over three processes.
    constexpr double kMiB = kImageBytes / double(1u << 20);
    double lib_rate = kMiB / lib->second.real, floor_rate = kMiB / flo->second.real;
    double sync_rate = kMiB / sync->second.real;
    double ratio = lib_rate / floor_rate;
    std::printf("32 MiB image in %zu shards of up to %d bytes, each a %zu-byte message.\n\n",
                shards(), UPGRADE_SHARD_MAX, sizeof(st_upgrade_shard));
    std::printf("| Case | MiB/s | Bench against it | Target |\n"
                "|---|---:|---:|---|\n"
                "| bench: library, socket IPC, sml-sim writing the section | %.1f | | |\n"
                "| floor: messages streamed to a process writing a file | %.1f | %.2f | %s |\n"
                "| floor with a reply per message (synchronous calls) | %.1f | %.2f | |\n",
                lib_rate, floor_rate, ratio, ratio >= kTarget ? "met (>= 0.8)" : "MISSED (>= 0.8)",
                sync_rate, lib_rate / sync_rate);
    return 0;
}
