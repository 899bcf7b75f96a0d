// Table-driven checks of single-call functions on a clean run: which
// remote procedure a function calls, the bytes and length it sends, and
// what reaches the caller's output.  How each one answers a failed call
// (its status, its trace, the output left alone) is the fault sweep's.
#ifndef KE_TEST_CALL_CASES_H
#define KE_TEST_CALL_CASES_H

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "stub_test.h"

namespace ketest {

using Bytes = std::vector<uint8_t>;

struct CallCase {
    const char *remote;
    std::function<uint32_t()> invoke;
    Bytes request;  // empty for a call without a record
    // For getters: the service's reply, the caller's output as bytes (the
    // invoke fills it with kUntouched first) and what it must then hold.
    Bytes reply = {};
    std::function<Bytes()> output = nullptr;
    Bytes delivered = {};
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

// Runs every case once, the service answering 0 and the log gate open:
// one call, the request expected, status 0, no failure line, the output.
inline void check_call_cases(const std::vector<CallCase> &cases)
{
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.remote) + ", case " + std::to_string(&c - cases.data()));
        kestub::reset();
        kestub::log_set(true);
        kestub::ipc_script(c.remote, 0, c.reply.data(), c.reply.size());
        uint32_t ret = 1;
        std::string out = printed([&] { ret = c.invoke(); });
        EXPECT_EQ(ret, 0u);
        // A function may trace its request (the MSK setter does).
        EXPECT_EQ(out.find("[INFO]"), std::string::npos) << out;
        EXPECT_EQ(out.find("failed"), std::string::npos) << out;
        ASSERT_EQ(kestub::ipc_calls().size(), 1u);
        const auto &call = kestub::ipc_calls()[0];
        EXPECT_EQ(call.name, c.remote);
        EXPECT_EQ(call.null_buf, c.null_buf);
        EXPECT_EQ(call.len, c.request.size());
        EXPECT_EQ(call.request, c.request);
        if (c.output) {
            EXPECT_EQ(c.output(), c.delivered);
        }
    }
    kestub::reset();
}

}  // namespace ketest

#endif
