// Support for tests across processes: a temporary run directory, child
// processes started from a program or from a function, and waiting with a
// bound.
#ifndef KE_TEST_PROCESS_H
#define KE_TEST_PROCESS_H

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace ketest {

using Clock = std::chrono::steady_clock;

inline long ms_since(Clock::time_point t)
{
    return static_cast<long>(
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - t).count());
}

// Polls pred every 10 ms until it holds or timeout_ms pass.
template <class Pred>
inline bool wait_until(Pred pred, long timeout_ms)
{
    auto start = Clock::now();
    while (!pred()) {
        if (ms_since(start) > timeout_ms)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

inline std::string read_file(const std::string &path)
{
    std::ifstream in(path);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

inline void write_file(const std::string &path, const std::string &text)
{
    std::ofstream(path) << text;
}

inline bool exists(const std::string &path) { return access(path.c_str(), F_OK) == 0; }

// A fresh directory under /tmp, removed with everything in it.
class TempDir {
public:
    TempDir()
    {
        char tmpl[] = "/tmp/ke_test.XXXXXX";
        path_ = mkdtemp(tmpl) != nullptr ? tmpl : "";
    }
    ~TempDir()
    {
        if (!path_.empty())
            std::system(("rm -rf '" + path_ + "'").c_str());
    }
    TempDir(const TempDir &) = delete;
    TempDir &operator=(const TempDir &) = delete;
    const std::string &path() const { return path_; }
    std::string operator/(const std::string &name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

// The command that runs a program built for another processor, one word
// per line (none for a native build).
inline std::vector<std::string> emulator()
{
    std::vector<std::string> words;
#ifdef KE_TEST_EMULATOR
    std::stringstream ss(KE_TEST_EMULATOR);
    std::string word;
    while (std::getline(ss, word))
        words.push_back(word);
#endif
    return words;
}

// The emulator that runs a cross build here crashes a dynamically linked
// program that starts a thread, so what serves calls cannot run under it.
#ifdef KE_TEST_EMULATOR
#define KE_SKIP_WITHOUT_THREADS() GTEST_SKIP() << "no threads under the emulator"
#else
#define KE_SKIP_WITHOUT_THREADS() (void)0
#endif

// Nor can a program under it fork.
#ifdef KE_TEST_EMULATOR
#define KE_SKIP_WITHOUT_FORK() GTEST_SKIP() << "no fork under the emulator"
#else
#define KE_SKIP_WITHOUT_FORK() (void)0
#endif

// A child process, killed and reaped when the object goes.
class Process {
public:
    Process() = default;
    Process(const Process &) = delete;
    Process &operator=(const Process &) = delete;
    ~Process() { kill_now(); }

    // Runs argv with standard output and error appended to out_path, and
    // standard input from a pipe the test writes (send) or /dev/null.
    bool start(const std::vector<std::string> &argv, const std::string &out_path,
               bool with_stdin = false)
    {
        int in[2] = {-1, -1};
        if (with_stdin && pipe(in) != 0)
            return false;
        pid_ = fork();
        if (pid_ == 0) {
            int out = open(out_path.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
            int null = open("/dev/null", O_RDONLY);
            dup2(with_stdin ? in[0] : null, 0);
            dup2(out, 1);
            dup2(out, 2);
            // The write end stays with the test alone, so closing it is an
            // end of input.
            for (int fd : {in[0], in[1], out, null})
                if (fd > 2)
                    close(fd);
            std::vector<std::string> words = emulator();
            words.insert(words.end(), argv.begin(), argv.end());
            std::vector<char *> args;
            for (const std::string &a : words)
                args.push_back(const_cast<char *>(a.c_str()));
            args.push_back(nullptr);
            execvp(args[0], args.data());
            _exit(127);
        }
        if (with_stdin) {
            close(in[0]);
            stdin_ = in[1];
        }
        return pid_ > 0;
    }

    // Runs fn in a forked copy of this process, which then waits to be
    // killed; fn reports readiness by returning.
    template <class Fn>
    bool start_fn(Fn fn)
    {
        int ready[2];
        if (pipe(ready) != 0)
            return false;
        pid_ = fork();
        if (pid_ == 0) {
            close(ready[0]);
            fn();
            char ok = 1;
            if (write(ready[1], &ok, 1) != 1)
                _exit(1);
            for (;;)
                pause();
        }
        close(ready[1]);
        char ok = 0;
        bool started = read(ready[0], &ok, 1) == 1;
        close(ready[0]);
        return started;
    }

    // Runs fn in a forked copy of this process, which exits with what fn
    // returns; the test goes on at once.
    template <class Fn>
    bool run_fn(Fn fn)
    {
        pid_ = fork();
        if (pid_ == 0)
            _exit(fn());
        return pid_ > 0;
    }

    void send(const std::string &text)
    {
        if (stdin_ >= 0 && write(stdin_, text.data(), text.size()) < 0)
            close_stdin();
    }
    void close_stdin()
    {
        if (stdin_ >= 0)
            close(stdin_);
        stdin_ = -1;
    }

    void signal(int sig)
    {
        if (pid_ > 0)
            ::kill(pid_, sig);
    }

    // The exit status, -2 for a death by signal, -1 when still running
    // after timeout_ms.
    int wait(long timeout_ms)
    {
        return wait_until([&] { return ended(); }, timeout_ms) ? status_ : -1;
    }

    // True once the process has ended (and is reaped: wait gives its status).
    bool ended()
    {
        int st = 0;
        if (pid_ > 0 && waitpid(pid_, &st, WNOHANG) == pid_) {
            pid_ = -1;
            status_ = WIFEXITED(st) ? WEXITSTATUS(st) : -2;
        }
        return pid_ <= 0;
    }

    void kill_now()
    {
        close_stdin();
        if (pid_ > 0) {
            ::kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
            pid_ = -1;
        }
    }

    pid_t pid() const { return pid_; }

private:
    pid_t pid_ = -1;
    int stdin_ = -1;
    int status_ = -1;
};

}  // namespace ketest

#endif
