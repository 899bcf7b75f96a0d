// IPC between processes: Unix-domain sockets in the run directory.
//
// Each served name has its own listening socket, <run dir>/ipc/<name>, so
// the file system is the registry: a caller connects to the name's file,
// and a name nobody serves is a missing file or a refused connection,
// answered at once.  A call is one connection: request frame, reply frame,
// close.  Every wait is bounded by one deadline from the connect on, so a
// serving process that dies or stops mid-call cannot hang its caller.
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <thread>

#include "kestub.h"
#include "state.h"

namespace kestub {
namespace {

constexpr uint32_t kFrameMagic = 0x6b654950;  // "keIP"
constexpr uint32_t kMaxNameLen = 96;

struct RequestHead {
    uint32_t magic;
    uint32_t name_len;
    uint32_t len;
    uint32_t null_buf;
};

struct ReplyHead {
    uint32_t status;
    uint32_t len;  // bytes that follow: the request's length, 0 for a null buffer
};

using Clock = std::chrono::steady_clock;

std::atomic<unsigned> g_timeout_ms{0};  // 0: not yet read from the environment

unsigned timeout_ms()
{
    unsigned ms = g_timeout_ms.load();
    if (ms == 0) {
        const char *env = std::getenv("KE_IPC_TIMEOUT_MS");
        long v = env != nullptr ? std::strtol(env, nullptr, 10) : 0;
        ms = v > 0 ? static_cast<unsigned>(v) : kIpcTimeoutMs;
        g_timeout_ms.store(ms);
    }
    return ms;
}

// Names become file names: plain characters only, never a path.
bool valid_name(const char *name)
{
    size_t len = strnlen(name, kMaxNameLen + 1);
    if (len == 0 || len > kMaxNameLen || name[0] == '.')
        return false;
    for (size_t i = 0; i < len; ++i) {
        char c = name[i];
        bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                     c == '_' || c == '-' || c == '.';
        if (!plain)
            return false;
    }
    return true;
}

std::string ipc_dir() { return run_dir() + "/ipc"; }

bool address_of(const std::string &name, sockaddr_un *addr)
{
    std::string path = ipc_dir() + "/" + name;
    std::memset(addr, 0, sizeof *addr);
    addr->sun_family = AF_UNIX;
    if (path.size() >= sizeof addr->sun_path)
        return false;
    std::memcpy(addr->sun_path, path.c_str(), path.size() + 1);
    return true;
}

// Milliseconds left before deadline, at least 0.
int left_ms(Clock::time_point deadline)
{
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    return left.count() > 0 ? static_cast<int>(left.count()) : 0;
}

enum class Io { Done, Closed, TimedOut };

// Waits until fd is ready to send or to receive, or the deadline passes.
Io wait_ready(int fd, bool sending, Clock::time_point deadline)
{
    pollfd pfd{fd, static_cast<short>(sending ? POLLOUT : POLLIN), 0};
    for (;;) {
        int ms = left_ms(deadline);
        int n = ms == 0 ? 0 : poll(&pfd, 1, ms);
        if (n > 0)
            return Io::Done;
        if (n == 0)
            return Io::TimedOut;
        if (errno != EINTR)
            return Io::Closed;
    }
}

// Moves every byte of the count pieces over a non-blocking socket before
// deadline, as few system calls as the socket allows (the pieces are used
// up as they go).
Io transfer(int fd, iovec *piece, int count, bool sending, Clock::time_point deadline)
{
    for (;;) {
        while (count > 0 && piece->iov_len == 0) {
            ++piece;
            --count;
        }
        if (count == 0)
            return Io::Done;
        msghdr msg{};
        msg.msg_iov = piece;
        msg.msg_iovlen = static_cast<size_t>(count);
        ssize_t n = sending ? sendmsg(fd, &msg, MSG_NOSIGNAL) : recvmsg(fd, &msg, 0);
        if (n > 0) {
            for (size_t done = static_cast<size_t>(n); done > 0;) {
                size_t step = done < piece->iov_len ? done : piece->iov_len;
                piece->iov_base = static_cast<uint8_t *>(piece->iov_base) + step;
                piece->iov_len -= step;
                done -= step;
                if (piece->iov_len == 0 && done > 0) {
                    ++piece;
                    --count;
                }
            }
            continue;
        }
        if (n == 0)
            return Io::Closed;
        if (errno == EINTR)
            continue;
        if (errno != EAGAIN && errno != EWOULDBLOCK)
            return Io::Closed;
        Io ready = wait_ready(fd, sending, deadline);
        if (ready != Io::Done)
            return ready;
    }
}

iovec piece(const void *data, size_t len) { return iovec{const_cast<void *>(data), len}; }

Io recv_bytes(int fd, void *data, size_t len, Clock::time_point deadline)
{
    iovec one = piece(data, len);
    return transfer(fd, &one, 1, false, deadline);
}

uint32_t status_of(Io io) { return io == Io::TimedOut ? kIpcTimeout : kIpcLost; }

// Connects to the socket of name; -1 when nobody serves it.
int connect_to(const char *name, Clock::time_point deadline)
{
    sockaddr_un addr;
    if (!address_of(name, &addr))
        return -1;
    int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (fd < 0)
        return -1;
    // A full backlog answers EAGAIN: the server is alive but busy.
    while (connect(fd, reinterpret_cast<sockaddr *>(&addr), sizeof addr) != 0) {
        if ((errno != EAGAIN && errno != EINTR) || left_ms(deadline) == 0) {
            close(fd);
            return -1;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return fd;
}

// ---- Serving -------------------------------------------------------------

struct Listener {
    std::string name;
    std::string path;
    int fd;
    IpcHandler handler;
};

struct Server {
    std::vector<Listener> listeners;
    int wake[2] = {-1, -1};
    std::thread thread;
};

Server &server()
{
    static Server state;
    return state;
}

std::mutex &dispatch_mutex()
{
    static std::mutex m;
    return m;
}

bool make_dir(const std::string &path)
{
    if (mkdir(path.c_str(), 0700) == 0 || errno == EEXIST) {
        struct stat st;
        return stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
    }
    return false;
}

// Reads one request on conn, dispatches it and writes the reply.
void answer(int conn, const Listener &l)
{
    auto deadline = Clock::now() + std::chrono::milliseconds(timeout_ms());
    RequestHead head;
    if (recv_bytes(conn, &head, sizeof head, deadline) != Io::Done || head.magic != kFrameMagic ||
        head.name_len > kMaxNameLen || head.len > kIpcMaxLen)
        return;
    char name[kMaxNameLen + 1] = {};
    std::vector<uint8_t> bytes(head.null_buf ? 0 : head.len);
    iovec rest[] = {piece(name, head.name_len), piece(bytes.data(), bytes.size())};
    if (transfer(conn, rest, 2, false, deadline) != Io::Done)
        return;
    ReplyHead reply{kIpcNoServer, static_cast<uint32_t>(bytes.size())};
    // The whole name as sent: "name\0junk" is not name.
    if (l.name == std::string(name, head.name_len)) {
        // The request as it came, for an observer only.
        std::vector<uint8_t> request;
        if (observed())
            request = bytes;
        // A request of no bytes still has a buffer, as in process: only
        // the null-buffer flag makes it null.
        uint8_t none = 0;
        void *buf = head.null_buf ? nullptr : bytes.empty() ? &none : bytes.data();
        serve_lock();
        reply.status = l.handler(buf, head.len);
        notify(Event{EventKind::IpcServed, name, CmOp{}, 0, request.data(), bytes.data(),
                     head.len, reply.status});
        serve_unlock();
    }
    iovec out[] = {piece(&reply, sizeof reply), piece(bytes.data(), bytes.size())};
    transfer(conn, out, 2, true, deadline);
}

void serve_loop()
{
    Server &srv = server();
    std::vector<pollfd> fds;
    fds.push_back({srv.wake[0], POLLIN, 0});
    for (const Listener &l : srv.listeners)
        fds.push_back({l.fd, POLLIN, 0});
    for (;;) {
        if (poll(fds.data(), fds.size(), -1) < 0 && errno != EINTR)
            return;
        if (fds[0].revents != 0)
            return;
        for (size_t i = 1; i < fds.size(); ++i) {
            if ((fds[i].revents & POLLIN) == 0)
                continue;
            int conn;
            while ((conn = accept4(fds[i].fd, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK)) >= 0) {
                answer(conn, srv.listeners[i - 1]);
                close(conn);
            }
        }
    }
}

// Binds the socket of name; a file left by a process that died is taken
// over, one that a live process answers on is not.
int bind_name(const std::string &name, std::string *path)
{
    sockaddr_un addr;
    if (!address_of(name, &addr)) {
        std::fprintf(stderr, "ipc: socket path for %s is too long\n", name.c_str());
        return -1;
    }
    *path = addr.sun_path;
    int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (fd < 0)
        return -1;
    if (bind(fd, reinterpret_cast<sockaddr *>(&addr), sizeof addr) != 0 && errno == EADDRINUSE) {
        int probe = connect_to(name.c_str(), Clock::now());
        if (probe >= 0) {
            close(probe);
            std::fprintf(stderr, "ipc: %s is already served by another process\n", name.c_str());
            close(fd);
            return -1;
        }
        unlink(path->c_str());
        if (bind(fd, reinterpret_cast<sockaddr *>(&addr), sizeof addr) != 0) {
            close(fd);
            return -1;
        }
    }
    if (listen(fd, 64) != 0) {
        close(fd);
        return -1;
    }
    return fd;
}

void close_listeners(Server &srv)
{
    for (const Listener &l : srv.listeners) {
        close(l.fd);
        unlink(l.path.c_str());
    }
    srv.listeners.clear();
}

}  // namespace

void ipc_set_timeout(unsigned ms) { g_timeout_ms.store(ms == 0 ? kIpcTimeoutMs : ms); }

std::string run_dir()
{
    const char *env = std::getenv("KE_RUN_DIR");
    if (env != nullptr && env[0] != '\0')
        return env;
    return "/tmp/ke_omci_run-" + std::to_string(getuid());
}

uint32_t socket_call(const char *name, void *buf, uint32_t len)
{
    if (!valid_name(name))
        return kIpcNoServer;
    if (len > kIpcMaxLen)
        return kIpcTooLong;
    auto deadline = Clock::now() + std::chrono::milliseconds(timeout_ms());
    int fd = connect_to(name, deadline);
    if (fd < 0)
        return kIpcNoServer;
    RequestHead head{kFrameMagic, static_cast<uint32_t>(std::strlen(name)), len, buf == nullptr};
    size_t bytes = buf == nullptr ? 0 : len;
    ReplyHead reply{0, 0};
    // The request frame in one go; the reply is waited for before it is
    // read, since it cannot be there yet.  Its bytes land in buf directly:
    // after a call that failed, buf holds nothing to be used.
    iovec request[] = {piece(&head, sizeof head), piece(name, head.name_len), piece(buf, bytes)};
    Io io = transfer(fd, request, 3, true, deadline);
    if (io == Io::Done)
        io = wait_ready(fd, false, deadline);
    iovec answer[] = {piece(&reply, sizeof reply), piece(buf, bytes)};
    if (io == Io::Done)
        io = transfer(fd, answer, 2, false, deadline);
    if (io == Io::Done && reply.len != bytes)
        io = Io::Closed;
    close(fd);
    return io == Io::Done ? reply.status : status_of(io);
}

int serve_start()
{
    Server &srv = server();
    if (srv.thread.joinable())
        return static_cast<int>(srv.listeners.size());
    std::vector<std::pair<std::string, IpcHandler>> wanted;
    for (const std::string &name : local_names())
        wanted.emplace_back(name, local_handler(name.c_str()));
    for (const SectionName &s : section_names()) {
        IpcHandler entry = section_entry(s.object, s.name);
        if (entry == nullptr) {
            std::fprintf(stderr, "ipc: %s lists %s, which it does not export\n",
                         s.object.c_str(), s.name.c_str());
            continue;
        }
        // Calls from this process reach the entry directly.
        if (local_handler(s.name.c_str()) == nullptr) {
            ipc_serve(s.name.c_str(), entry);
            wanted.emplace_back(s.name, entry);
        }
    }
    std::string dir = run_dir();
    if (!make_dir(dir) || !make_dir(ipc_dir())) {
        std::fprintf(stderr, "ipc: cannot make the run directory %s\n", dir.c_str());
        return -1;
    }
    for (const auto &w : wanted) {
        if (!valid_name(w.first.c_str()))
            continue;
        Listener l{w.first, {}, -1, w.second};
        l.fd = bind_name(l.name, &l.path);
        if (l.fd < 0) {
            close_listeners(srv);
            return -1;
        }
        srv.listeners.push_back(std::move(l));
    }
    if (pipe2(srv.wake, O_CLOEXEC) != 0) {
        close_listeners(srv);
        return -1;
    }
    srv.thread = std::thread(serve_loop);
    return static_cast<int>(srv.listeners.size());
}

void serve_stop()
{
    Server &srv = server();
    if (!srv.thread.joinable())
        return;
    char stop = 1;
    ssize_t n = write(srv.wake[1], &stop, 1);
    (void)n;
    srv.thread.join();
    close(srv.wake[0]);
    close(srv.wake[1]);
    srv.wake[0] = srv.wake[1] = -1;
    close_listeners(srv);
}

std::vector<std::string> served_names()
{
    std::vector<std::string> names;
    for (const Listener &l : server().listeners)
        names.push_back(l.name);
    return names;
}

void serve_lock() { dispatch_mutex().lock(); }
void serve_unlock() { dispatch_mutex().unlock(); }

}  // namespace kestub
