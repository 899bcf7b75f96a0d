// The uci toolkit: read a value, add an anonymous section, convert
// addresses, offset a MAC, count the WAN interface slots.
#include "uci_shell.h"

#include <arpa/inet.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "ke_omci_tapi/voip_wan.h"
#include "platform.h"

namespace ke::voip_wan {
namespace {

// The one file every read goes through; uci's output is redirected into
// it and its first line read back.
constexpr char kScratchFile[] = "/tmp/tmp_uci_value";
constexpr char kGetCommand[] = "uci -q get %s > /tmp/tmp_uci_value";
constexpr char kAddCommand[] = "uci -q add %s > /tmp/tmp_uci_value";

constexpr uint32_t kNullPointer = 0x70000000;

bool is_letter_or_digit(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

bool is_section_name(const char *text)
{
    if (*text == '\0')
        return false;
    for (const char *p = text; *p != '\0'; ++p)
        if (!is_letter_or_digit(*p) && *p != '_')
            return false;
    return true;
}

// Runs one uci command whose output goes to the scratch file and reads
// the first line of that output into value.  Success is judged only by
// what the file holds: uci -q prints nothing when there is nothing.
int read_uci_output(const char *format, const char *text, char *value, int size)
{
    if (text == nullptr || value == nullptr || size <= 0 || !is_plain_text(text))
        return -1;
    char command[kCommandSize] = {};
    int len = std::snprintf(command, sizeof command, format, text);
    if (len < 0 || static_cast<unsigned>(len) >= sizeof command)
        return -1;
    std::system(command);

    FILE *f = std::fopen(kScratchFile, "r");
    if (f == nullptr)
        return -1;
    if (std::fgets(value, size, f) == nullptr) {
        std::fclose(f);
        return -1;
    }
    size_t n = std::strlen(value);
    if (n > 0 && value[n - 1] == '\n')
        value[n - 1] = '\0';
    std::fclose(f);
    unlink(kScratchFile);
    return 0;
}

}  // namespace

void run_command(const char *fmt, ...)
{
    char command[kCommandSize] = {};
    va_list ap;
    va_start(ap, fmt);
    std::vsnprintf(command, sizeof command, fmt, ap);
    va_end(ap);
    std::system(command);
}

bool is_plain_text(const char *text)
{
    for (const char *p = text; *p != '\0'; ++p)
        if (!is_letter_or_digit(*p) && std::strchr("._@[]:- ", *p) == nullptr)
            return false;
    return true;
}

}  // namespace ke::voip_wan

using namespace ke::voip_wan;

extern "C" {

KE_API int omci_uci_get(const char *name, char *value, int size)
{
    return read_uci_output(kGetCommand, name, value, size);
}

KE_API int omci_uci_add(const char *config_type, char *name, int size)
{
    if (read_uci_output(kAddCommand, config_type, name, size) != 0)
        return -1;
    // The name goes into later commands: take nothing but a plain name.
    if (!is_section_name(name)) {
        name[0] = '\0';
        return -1;
    }
    return 0;
}

KE_API uint32_t omci_iptochar(const uint8_t *addr, char *text, uint32_t size)
{
    if (addr == nullptr || text == nullptr)
        return 1;
    sprintf_s(text, size, "%hhu.%hhu.%hhu.%hhu", addr[0], addr[1], addr[2], addr[3]);
    if (size > 15)
        text[15] = '\0';
    return 0;
}

KE_API uint32_t __omci_chartoip(const char *text)
{
    if (text == nullptr || text[0] == '\0')
        return 0;
    return inet_addr(text);
}

KE_API void mac_increase_with_offset(uint32_t *mac, uint32_t offset)
{
    if (mac == nullptr)
        return;
    uint64_t carry = offset;
    for (int i = 5; i >= 0; --i) {
        uint64_t sum = mac[i] + carry;
        mac[i] = static_cast<uint32_t>(sum % 256);
        if (sum <= 255)
            return;
        carry = sum >> 8;
    }
}

KE_API uint32_t igdCmConfGetEntryNumByUci(uint32_t *count)
{
    if (count == nullptr)
        return kNullPointer;
    uint32_t in_use = 0;
    for (int n = 1; n <= WAN_IF_MAX; ++n) {
        char name[16];
        char value[10];
        std::snprintf(name, sizeof name, "network.pon_%d", n);
        if (omci_uci_get(name, value, sizeof value) == 0)
            ++in_use;
    }
    *count = in_use;
    return 0;
}

}  // extern "C"
