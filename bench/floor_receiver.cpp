// The floor of a firmware download: a process that takes 6152-byte shard
// messages from a raw Unix socket and writes each shard's bytes to a file.
//
// usage: floor_receiver [--reply] SOCKET FILE
// Serves one connection at a time: FILE is emptied, every message's shard
// appended with one write, and once the sender has shut its side the
// file is closed and one byte acknowledges it.  With --reply every message
// is answered with its own 6152 bytes, as a synchronous remote call is,
// before the next is read.
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "io_all.h"
#include "ke_omci_tapi/device.h"

namespace {

void receive(int conn, const char *file, bool reply)
{
    int out = open(file, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (out < 0)
        return;
    st_upgrade_shard msg;
    bool ok = true;
    while (ok && kebench::read_all(conn, &msg, sizeof msg))
        ok = msg.ui_len <= UPGRADE_SHARD_MAX && kebench::write_all(out, msg.auc_data, msg.ui_len) &&
             (!reply || kebench::write_all(conn, &msg, sizeof msg));
    const char ack = 1;
    if (close(out) == 0 && ok)
        kebench::write_all(conn, &ack, 1);
}

}  // namespace

int main(int argc, char **argv)
{
    bool reply = argc == 4 && std::strcmp(argv[1], "--reply") == 0;
    if (argc != 3 + reply) {
        std::fprintf(stderr, "usage: floor_receiver [--reply] SOCKET FILE\n");
        return 2;
    }
    argv += reply;
    sockaddr_un addr{};
    addr.sun_family = AF_UNIX;
    if (std::strlen(argv[1]) >= sizeof addr.sun_path)
        return 2;
    std::strcpy(addr.sun_path, argv[1]);
    int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    unlink(argv[1]);
    if (fd < 0 || bind(fd, reinterpret_cast<sockaddr *>(&addr), sizeof addr) != 0 ||
        listen(fd, 4) != 0) {
        std::perror("floor_receiver");
        return 1;
    }
    for (;;) {
        int conn = accept4(fd, nullptr, nullptr, SOCK_CLOEXEC);
        if (conn < 0)
            continue;
        receive(conn, argv[2], reply);
        close(conn);
    }
}
