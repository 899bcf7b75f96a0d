// The serving side of the IPC between processes: arbitrary bytes on the
// socket of one served name (wrong lengths, truncated headers, unknown
// names, bytes after the frame), as a broken or hostile process may send
// them.  Oracle: the server answers a whole frame for its own name with
// the handler's status and reply, a whole frame for any other name with
// the no-server status and the bytes unchanged, and anything else with
// nothing; it never hangs, and keeps no descriptor behind.
#include <dirent.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "input.h"
#include "ke_omci_tapi/lifecycle.h"
#include "ke_omci_tapi/mc.h"
#include "kestub.h"

namespace {

constexpr uint32_t kMagic = 0x6b654950;
constexpr uint32_t kMaxNameLen = 96;
constexpr char kEcho[] = "fuzz_echo";
constexpr uint32_t kEchoNull = 0xE0;
// Far above the server's own deadline (one second here): only a server
// that never answers, not a busy machine, runs into it.
constexpr int kReplyWaitMs = 30000;

// Flips every byte and answers the length: a reply the oracle can predict.
uint32_t echo(void *buf, uint32_t len)
{
    if (buf == nullptr)
        return kEchoNull;
    auto *p = static_cast<uint8_t *>(buf);
    for (uint32_t i = 0; i < len; ++i)
        p[i] ^= 0x5A;
    return len;
}

uint32_t answer_service(void *buf, uint32_t len)
{
    if (buf != nullptr && len >= 8)
        std::memset(static_cast<uint8_t *>(buf) + 4, 0, 4);  // a board without user ports
    return 0;
}

std::vector<std::string> g_names;

size_t open_fds()
{
    size_t n = 0;
    if (DIR *d = opendir("/proc/self/fd")) {
        while (readdir(d) != nullptr)
            ++n;
        closedir(d);
    }
    return n;
}

uint32_t word_at(const std::string &s, size_t off)
{
    uint32_t v;
    std::memcpy(&v, s.data() + off, sizeof v);
    return v;
}

void put_word(std::string *s, uint32_t v) { s->append(reinterpret_cast<char *>(&v), sizeof v); }

// The status a served name's handler gives to a request.
uint32_t handler_status(const std::string &name, bool null_buf, uint32_t len)
{
    if (name == kEcho)
        return null_buf ? kEchoNull : len;
    uint32_t want_len =
        name == "ke_ke_omci_mc_param_get_call" ? KE_MC_PARAM_GET_REQ_LEN : KE_SET_LOID_REQ_LEN;
    if (null_buf || len != want_len)
        return KE_SERVED_CALL_REFUSED;
    // No user ports here, so every dump is refused for its port.
    return name == "ke_ke_omci_mc_param_get_call" ? 0x70000000u : 0u;
}

// The reply the server owes to the bytes sent to listener, "" for none.
std::string expected_reply(const std::string &listener, const std::string &sent)
{
    if (sent.size() < 16 || word_at(sent, 0) != kMagic)
        return "";
    uint32_t name_len = word_at(sent, 4), len = word_at(sent, 8);
    bool null_buf = word_at(sent, 12) != 0;
    if (name_len > kMaxNameLen || len > kestub::kIpcMaxLen)
        return "";
    size_t bytes = null_buf ? 0 : len;
    if (sent.size() - 16 < name_len + bytes)
        return "";
    std::string name = sent.substr(16, name_len);
    std::string payload = sent.substr(16 + name_len, bytes);
    std::string reply;
    if (name == listener) {
        put_word(&reply, handler_status(name, null_buf, len));
        if (name == kEcho)
            for (char &c : payload)
                c = static_cast<char>(c ^ 0x5A);
    } else {
        put_word(&reply, kestub::kIpcNoServer);
    }
    put_word(&reply, static_cast<uint32_t>(bytes));
    return reply + payload;
}

// The first bytes of a reply, for the report.
std::string hex(const std::string &bytes)
{
    std::string out;
    char b[4];
    for (size_t i = 0; i < bytes.size() && i < 32; ++i) {
        std::snprintf(b, sizeof b, "%02x", static_cast<uint8_t>(bytes[i]));
        out += b;
    }
    return out + (bytes.size() > 32 ? "..." : "");
}

int connect_to(const std::string &name)
{
    sockaddr_un addr{};
    addr.sun_family = AF_UNIX;
    std::string path = kestub::run_dir() + "/ipc/" + name;
    std::memcpy(addr.sun_path, path.c_str(), path.size() + 1);
    int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0 || connect(fd, reinterpret_cast<sockaddr *>(&addr), sizeof addr) != 0)
        kefuzz::fail("ipc server", "cannot connect to " + name);
    return fd;
}

// Sends everything (as much as the server takes before it closes), ends
// the sending side, and reads until the server closes.
std::string exchange(int fd, const std::string &sent)
{
    size_t off = 0;
    while (off < sent.size()) {
        ssize_t n = send(fd, sent.data() + off, sent.size() - off, MSG_NOSIGNAL);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            break;
        off += static_cast<size_t>(n);
    }
    shutdown(fd, SHUT_WR);
    std::string reply;
    auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(kReplyWaitMs);
    char buf[65536];
    for (;;) {
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0)
            kefuzz::fail("ipc server", "no end of the reply within the time-out");
        // The fuzzer's own timer interrupts a wait now and then.
        pollfd pfd{fd, POLLIN, 0};
        int ready = poll(&pfd, 1, static_cast<int>(left.count()));
        if (ready < 0 && errno == EINTR)
            continue;
        if (ready <= 0)
            kefuzz::fail("ipc server", "no end of the reply within the time-out");
        ssize_t n = recv(fd, buf, sizeof buf, 0);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return reply;
        reply.append(buf, static_cast<size_t>(n));
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    kefuzz::quiet_stdout();
    // A run directory of its own, so that no bench a person runs is reached.
    setenv("KE_RUN_DIR", kefuzz::work_dir("fuzz_ipc").c_str(), 1);
    kestub::ipc_set_timeout(1000);
    kestub::ipc_serve_default(answer_service);
    ke_omci_mc_data_init();
    kestub::ipc_serve(kEcho, echo);
    if (kestub::serve_start() < 4)
        kefuzz::fail("ipc server", "not serving the library's calls and the echo");
    std::atexit(kestub::serve_stop);
    g_names = kestub::served_names();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    kefuzz::Input in(data, size);
    const std::string &listener = g_names[in.byte() % g_names.size()];
    std::string sent = in.rest();
    // Counted around each input, not once at start: libFuzzer itself keeps
    // descriptors open as it goes (the symbolizer's pipes on a new function).
    size_t fds_before = open_fds();
    int fd = connect_to(listener);
    std::string reply = exchange(fd, sent);
    close(fd);
    std::string want = expected_reply(listener, sent);
    if (reply != want)
        kefuzz::fail("ipc server", "reply [" + hex(reply) + "], expected [" + hex(want) +
                                       "] (listener " + listener + ")");
    if (open_fds() != fds_before)
        kefuzz::fail("ipc server", "descriptors left open");
    return 0;
}
