// The OS-abstraction library and the standard-output capture.
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <strings.h>

#include "kestub.h"
#include "platform.h"
#include "state.h"

namespace kestub {
namespace {

struct OsState {
    unsigned malloc_calls = 0;
    unsigned malloc_fail_at = 0;  // 0: never
    FILE *capture = nullptr;
    int saved_stdout = -1;
    // Board information: a locally administered MAC unless a test says
    // otherwise.
    std::map<std::string, std::string> bdinfo{{"mac", "021018000001"}};
};

OsState &os()
{
    static OsState state;
    return state;
}

}  // namespace

void os_reset()
{
    if (os().capture != nullptr)
        capture_end();
    os() = OsState{};
}

void os_fail_malloc(unsigned nth) { os().malloc_fail_at = nth == 0 ? 0 : os().malloc_calls + nth; }

unsigned os_malloc_calls() { return os().malloc_calls; }

void bdinfo_set(const char *key, const char *value) { os().bdinfo[key] = value; }

void capture_begin()
{
    if (os().capture != nullptr)
        return;
    std::fflush(stdout);
    os().capture = std::tmpfile();
    if (os().capture == nullptr)
        return;
    os().saved_stdout = dup(STDOUT_FILENO);
    dup2(fileno(os().capture), STDOUT_FILENO);
}

std::string capture_end()
{
    OsState &st = os();
    if (st.capture == nullptr)
        return {};
    std::fflush(stdout);
    dup2(st.saved_stdout, STDOUT_FILENO);
    close(st.saved_stdout);
    std::string out;
    std::rewind(st.capture);
    char chunk[4096];
    size_t n;
    while ((n = std::fread(chunk, 1, sizeof chunk, st.capture)) > 0)
        out.append(chunk, n);
    std::fclose(st.capture);
    st.capture = nullptr;
    st.saved_stdout = -1;
    return out;
}

void reset()
{
    ipc_reset();
    log_reset();
    os_reset();
    cm_reset();
    shell_reset();
}

}  // namespace kestub

extern "C" {

int ke_os_printf(const char *fmt, ...)
{
    va_list ap;
    va_start(ap, fmt);
    int n = std::vprintf(fmt, ap);
    va_end(ap);
    return n;
}

void *ke_os_malloc(uint32_t size)
{
    kestub::OsState &st = kestub::os();
    ++st.malloc_calls;
    if (st.malloc_fail_at != 0 && st.malloc_calls == st.malloc_fail_at) {
        st.malloc_fail_at = 0;
        return nullptr;
    }
    return std::malloc(size);
}

void ke_os_free(void *ptr) { std::free(ptr); }

char *ke_os_strtok(char *str, const char *delim) { return std::strtok(str, delim); }

int ke_os_memcmp(const void *a, const void *b, uint32_t len) { return std::memcmp(a, b, len); }

int ke_os_strcasecmp(const char *a, const char *b) { return strcasecmp(a, b); }

// Decimal text to an unsigned 32-bit value; 0 on success, -1 when the text
// holds no number (the value is then left as it was).
int ke_os_atoi(const char *text, uint32_t *value)
{
    if (text == nullptr || value == nullptr)
        return -1;
    char *end = nullptr;
    unsigned long v = std::strtoul(text, &end, 10);
    if (end == text)
        return -1;
    *value = static_cast<uint32_t>(v);
    return 0;
}

int bdinfo_get_value(const char *key, char *buf, uint32_t size)
{
    if (key == nullptr || buf == nullptr || size == 0)
        return -1;
    auto it = kestub::os().bdinfo.find(key);
    std::snprintf(buf, size, "%s", it != kestub::os().bdinfo.end() ? it->second.c_str() : "");
    return 0;
}

}  // extern "C"
