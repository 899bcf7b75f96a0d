// Table-driven checks of single-call functions: which remote procedure a
// function calls, the bytes and length it sends, how it turns the remote
// status into its own (passed through, or plain: 0 or 1 traced), and what
// reaches the caller's output after a success and after a failure.
#ifndef KE_TEST_CALL_CASES_H
#define KE_TEST_CALL_CASES_H

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "stub_test.h"

namespace ketest {

enum class StatusRule {
    PassThrough,  // the remote status unchanged, never traced
    Plain,        // 0, or 1 with one gated trace line naming the function
};

using Bytes = std::vector<uint8_t>;

struct CallCase {
    const char *func;  // the exported function, as a trace line names it
    const char *remote;
    std::function<uint32_t()> invoke;
    Bytes request;  // empty for a call without a record
    StatusRule rule;
    // For getters: the service's reply, the caller's output as bytes (the
    // invoke fills it with kUntouched first) and what it must hold after a
    // success (checked when a reply is given); after a failed plain call,
    // kept (every byte kUntouched when empty).
    Bytes reply = {};
    std::function<Bytes()> output = nullptr;
    Bytes delivered = {};
    Bytes kept = {};
    bool null_buf = false;
};

inline constexpr uint8_t kUntouched = 0xEE;

// Fills an output object with kUntouched and hands out its address.
template <class T>
inline T *fresh(T &out)
{
    std::memset(static_cast<void *>(&out), kUntouched, sizeof out);
    return &out;
}

// Bytes counting up from first: a block whose every byte differs.
inline Bytes counting(size_t n, uint8_t first = 1)
{
    Bytes v(n);
    for (size_t i = 0; i < n; ++i)
        v[i] = static_cast<uint8_t>(first + i);
    return v;
}

inline Bytes cat(std::initializer_list<Bytes> parts)
{
    Bytes out;
    for (const auto &p : parts)
        out.insert(out.end(), p.begin(), p.end());
    return out;
}

inline Bytes zeros(size_t n) { return Bytes(n, 0); }

// Runs every case with a succeeding and two failing statuses, the log gate
// open, and checks the one call it makes and what it returns and prints.
inline void check_call_cases(const std::vector<CallCase> &cases)
{
    for (const auto &c : cases) {
        for (uint32_t status : {0u, 0x1234u, 0x72200008u}) {
            SCOPED_TRACE(std::string(c.func) + " with status " + std::to_string(status));
            kestub::reset();
            kestub::log_set(true);
            kestub::ipc_script(c.remote, status, c.reply.data(), c.reply.size());
            uint32_t ret = 0;
            std::string out = printed([&] { ret = c.invoke(); });

            ASSERT_EQ(kestub::ipc_calls().size(), 1u);
            const auto &call = kestub::ipc_calls()[0];
            EXPECT_EQ(call.name, c.remote);
            EXPECT_EQ(call.null_buf, c.null_buf);
            EXPECT_EQ(call.len, c.request.size());
            EXPECT_EQ(call.request, c.request);

            if (c.rule == StatusRule::PassThrough || status == 0) {
                // No failure line of any kind (a function may trace its
                // request, as the MSK setter does).
                EXPECT_EQ(ret, status);
                EXPECT_EQ(out.find("[INFO]"), std::string::npos) << out;
                EXPECT_EQ(out.find("failed"), std::string::npos) << out;
            } else {
                EXPECT_EQ(ret, 1u);
                std::string func;
                int line = 0;
                EXPECT_TRUE(parse_info_line(out, &func, &line, status)) << out;
                EXPECT_EQ(func, c.func);
            }
            if (c.output && status == 0 && !c.reply.empty()) {
                EXPECT_EQ(c.output(), c.delivered);
            } else if (c.output && status != 0 && c.rule == StatusRule::Plain) {
                Bytes got = c.output();
                EXPECT_EQ(got, c.kept.empty() ? Bytes(got.size(), kUntouched) : c.kept);
            }
        }
    }
    kestub::reset();
}

}  // namespace ketest

#endif
