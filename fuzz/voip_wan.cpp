// The VoIP WAN functions and the uci toolkit with arbitrary connection
// records, attribute records, texts (DNS servers, addresses, names) and
// arbitrary uci output, against a recording shell.  Oracle for shell
// injection: every command given to system() must be one of the
// library's own command forms with a well-formed argument (a section
// name as uci gave it, the record's VLAN and priority, a MAC, a dotted
// address, a DNS server with nothing the shell acts on, a slot, a known
// keyword); the toolkit passes a caller's text to the shell only when it
// is plain uci text, and reads back what uci printed.  Also: addresses
// and MAC arithmetic against a model.
#include <arpa/inet.h>

#include <cstdio>
#include <cstring>
#include <vector>

#include "input.h"
#include "ke_omci_tapi/voip_wan.h"
#include "kestub.h"
#include "scratch_file.h"

namespace {

constexpr char kRedirect[] = " > /tmp/tmp_uci_value";
constexpr uint8_t kNoFile = 0xFF;  // answer length: the command left no file

// ---- The recording shell ---------------------------------------------------

struct Shell {
    std::vector<std::string> answers;  // uci's output, one per read or add
    size_t next = 0;
    std::string device_section;  // the names the adds answered, as the
    std::string proxy_section;   // library must read them back
    std::string vlan;            // the VLAN the commands must carry
    std::string priority;        // the egress priority they must carry
    std::string slot, mac;       // first seen, then the same everywhere
    std::string toolkit_text;    // a toolkit call's own text (mode 3)
    bool toolkit = false;
};

Shell g_shell;

bool all_of(const std::string &s, const char *set)
{
    return !s.empty() && s.find_first_not_of(set) == std::string::npos;
}

constexpr char kDigits[] = "0123456789";
constexpr char kNameChars[] =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_";

bool is_dotted(const std::string &s)
{
    unsigned parts = 0;
    size_t start = 0;
    for (;;) {
        size_t dot = s.find('.', start);
        std::string part = s.substr(start, dot == std::string::npos ? dot : dot - start);
        if (!all_of(part, kDigits) || part.size() > 3 || std::stoul(part) > 255)
            return false;
        ++parts;
        if (dot == std::string::npos)
            return parts == 4;
        start = dot + 1;
    }
}

bool is_mac(const std::string &s)
{
    if (s.size() != 17)
        return false;
    for (size_t i = 0; i < s.size(); ++i) {
        bool sep = i % 3 == 2;
        if (sep ? s[i] != ':' : std::strchr("0123456789ABCDEF", s[i]) == nullptr)
            return false;
    }
    return true;
}

// Text the shell takes as it stands: printable, without a character that
// quotes, expands, redirects, chains or starts a command.
bool shell_inert(const std::string &s)
{
    for (char c : s)
        if (c < 0x20 || c > 0x7e || std::strchr("|&;<>()$`\\\"'*?{}!#~\t", c) != nullptr)
            return false;
    return true;
}

// The first value of one placeholder kind is kept; every later one must
// equal it (one creation has one slot and one MAC).
bool same_as_first(std::string *first, const std::string &value)
{
    if (first->empty())
        *first = value;
    return *first == value;
}

// One placeholder's value in a command: true when it is well formed.
bool placeholder_ok(const std::string &kind, const std::string &v)
{
    Shell &sh = g_shell;
    if (kind == "S")
        return all_of(v, kNameChars) && v == sh.device_section;
    if (kind == "P")
        return all_of(v, kNameChars) && v == sh.proxy_section;
    if (kind == "N")
        return v.size() == 1 && v[0] >= '1' && v[0] <= '4' && same_as_first(&sh.slot, v);
    if (kind == "G")
        return v.size() == 1 && v[0] >= '1' && v[0] <= '4';
    if (kind == "V")
        return v == sh.vlan;
    if (kind == "Q")
        return v == sh.priority;
    if (kind == "M")
        return is_mac(v) && same_as_first(&sh.mac, v);
    if (kind == "E")
        return v.size() == 1 && v[0] >= '0' && v[0] <= '7';
    if (kind == "I")
        return all_of(v, kDigits) && v.size() <= 4;
    if (kind == "A")
        return is_dotted(v);
    if (kind == "D")
        return !v.empty() && shell_inert(v);
    if (kind == "F")
        return v == "wan" || (v.size() == 5 && v.compare(0, 4, "pon_") == 0 &&
                              same_as_first(&sh.slot, v.substr(4)));
    if (kind == "R")
        return v == "dhcp" || v == "static";
    if (kind == "C")
        return v == "VOICE" || v == "TR069" || v == "INTERNET";
    if (kind == "T")
        return v == sh.toolkit_text && shell_inert(v);
    return false;
}

// Matches command against a form whose placeholders are {X}; a
// placeholder takes the text up to the form's next literal character (or
// the end).
bool matches(const char *form, const std::string &command)
{
    size_t c = 0;
    for (const char *f = form; *f != '\0';) {
        if (*f != '{') {
            if (c >= command.size() || command[c] != *f)
                return false;
            ++c;
            ++f;
            continue;
        }
        const char *close = std::strchr(f, '}');
        std::string kind(f + 1, close);
        f = close + 1;
        size_t end = *f == '\0' ? command.size() : command.find(*f, c);
        if (end == std::string::npos)
            return false;
        // A toolkit text may hold the next literal character itself.
        if (kind == "T")
            end = c + g_shell.toolkit_text.size();
        if (end > command.size() || !placeholder_ok(kind, command.substr(c, end - c)))
            return false;
        c = end;
    }
    return c == command.size();
}

// Every command the library runs, by its form.
const char *const kForms[] = {
    "uci -q get network.pon_{G} > /tmp/tmp_uci_value",
    "uci -q get network.@device[{I}].name > /tmp/tmp_uci_value",
    "uci -q add network device > /tmp/tmp_uci_value",
    "uci -q add igmpproxy phyint > /tmp/tmp_uci_value",
    "uci set network.{S}.name=pon.{V}",
    "uci set network.{S}.macaddr={M}",
    "uci set network.{S}.type=8021q",
    "uci set network.{S}.ifname=pon",
    "uci set network.{S}.vid={V}",
    "uci add_list network.{S}.egress_qos_mapping={E}:{Q}",
    "uci set network.pon_{N}=interface",
    "uci set network.pon_{N}.proto={R}",
    "uci set network.pon_{N}.device=pon.{V}",
    "uci set network.pon_{N}.conn_type={C}",
    "uci set network.pon_{N}.nat=1",
    "uci set network.pon_{N}.igmp_proxy=1",
    "uci set network.pon_{N}.metric=0",
    "uci set network.{F}.ipaddr={A}",
    "uci set network.{F}.netmask={A}",
    "uci set network.{F}.gateway={A}",
    "uci add_list network.{F}.dns={D}",
    "uci set network.wan.ifname=pon.{V}",
    "uci set network.wan6.ifname=pon.{V}",
    "uci set network.pon_{N}.disabled=1",
    "uci set network.wan.disabled=0",
    "uci set network.wan.proto={R}",
    "uci set network.wan.ori_macaddr={M}",
    "uci add_list firewall.@zone[1].network=pon_{N}",
    "uci set igmpproxy.{P}.zone=wan",
    "uci set igmpproxy.{P}.network=pon_{N}",
    "uci set igmpproxy.{P}.direction=upstream",
    "uci commit network",
    "uci commit firewall",
    "uci commit igmpproxy",
    "( sleep 5; /etc/init.d/network reload >/dev/null 2>&1; "
    "/etc/init.d/firewall reload >/dev/null 2>&1; "
    "/etc/init.d/igmpproxy reload >/dev/null 2>&1 ) &",
};

const char *const kToolkitForms[] = {
    "uci -q get {T} > /tmp/tmp_uci_value",
    "uci -q add {T} > /tmp/tmp_uci_value",
};

// What the library reads back from an answer into a buffer of size bytes:
// the first line, at most size - 1 characters, without its line feed, up
// to any NUL.
std::string read_back(const std::string &answer, size_t size)
{
    std::string line = answer.substr(0, size - 1);
    size_t lf = line.find('\n');
    if (lf != std::string::npos)
        line.resize(lf);
    return line.substr(0, line.find('\0'));
}

bool ends_with(const std::string &s, const char *tail)
{
    size_t n = std::strlen(tail);
    return s.size() >= n && s.compare(s.size() - n, n, tail) == 0;
}

int record_shell(const char *command)
{
    std::string cmd = command;
    Shell &sh = g_shell;
    bool known = false;
    if (sh.toolkit) {
        for (const char *form : kToolkitForms)
            known = known || matches(form, cmd);
    } else {
        for (const char *form : kForms)
            known = known || matches(form, cmd);
    }
    if (!known)
        kefuzz::fail("voip wan shell", "not a command of the library: " + cmd);
    if (!ends_with(cmd, kRedirect))
        return 0;
    // uci's output lands in the scratch file (or, for a shell that could
    // not run at all, no file).
    std::string answer = sh.next < sh.answers.size() ? sh.answers[sh.next++] : "";
    if (answer.size() == 1 && static_cast<uint8_t>(answer[0]) == kNoFile) {
        kefuzz::scratch::remove();
        return 0;
    }
    kefuzz::scratch::write(answer);
    // The section an add creates is the name the library reads back.
    std::string name = read_back(answer, 16);
    if (cmd == "uci -q add network device > /tmp/tmp_uci_value")
        sh.device_section = name;
    else if (cmd == "uci -q add igmpproxy phyint > /tmp/tmp_uci_value")
        sh.proxy_section = name;
    return 0;
}

// Answers: a length byte and that many bytes each, kNoFile alone for no
// file.
std::vector<std::string> read_answers(kefuzz::Input &in)
{
    std::vector<std::string> out;
    while (!in.empty() && out.size() < 64) {
        uint8_t len = in.byte();
        out.push_back(len == kNoFile ? std::string(1, static_cast<char>(kNoFile))
                                     : in.bytes(len));
    }
    return out;
}

void start_shell(const std::vector<std::string> &answers, uint32_t vlan, uint8_t priority)
{
    kestub::reset();
    kefuzz::scratch::reset();
    g_shell = Shell{};
    g_shell.answers = answers;
    g_shell.vlan = std::to_string(static_cast<int>(vlan));
    g_shell.priority = std::to_string(priority);
    kestub::shell_serve(record_shell);
}

// ---- Modes -------------------------------------------------------------

uint32_t service_of(uint8_t b)
{
    constexpr uint32_t kServices[] = {KE_WAN_SERVICE_TR069, KE_WAN_SERVICE_VOICE,
                                      KE_WAN_SERVICE_INTERNET, 0, 3, 0xFFFFFFFF};
    return kServices[b % 6];
}

void put_text(char *dst, size_t size, const std::string &text)
{
    std::memset(dst, 0, size);
    std::memcpy(dst, text.data(), text.size() < size ? text.size() : size);
}

// A creation from a record: its fields, the board MAC, then uci's output.
void create(kefuzz::Input &in)
{
    st_wan_conn rec;
    std::memset(&rec, 0, sizeof rec);
    rec.ui_service = service_of(in.byte());
    rec.uc_addr_mode = in.byte() % 4;
    rec.ui_vlan_id = in.u32();
    rec.uc_priority = in.byte();
    std::string addr = in.bytes(12);
    addr.resize(12, '\0');
    std::memcpy(rec.auc_ipaddr, addr.data(), 4);
    std::memcpy(rec.auc_netmask, addr.data() + 4, 4);
    std::memcpy(rec.auc_gateway, addr.data() + 8, 4);
    put_text(rec.ac_dns, sizeof rec.ac_dns, in.until('\0'));
    std::string board_mac = in.until('\0');
    std::vector<std::string> answers = read_answers(in);

    start_shell(answers, rec.ui_vlan_id, rec.uc_priority);
    kestub::bdinfo_set("mac", board_mac.c_str());
    if (igdCmConfAddByUci(&rec) != 0)
        kefuzz::fail("voip wan", "creation answered other than 0");
}

// The set, read and delete over a connection list and records from the
// input, with the caller's record taken whole from the input.
void set_get_del(kefuzz::Input &in, uint8_t how)
{
    st_voip_wan_attr attr;
    std::memset(&attr, 0, sizeof attr);
    std::string raw = in.bytes(sizeof attr);
    std::memcpy(&attr, raw.data(), raw.size());
    // The DNS text as the caller's text (a NUL-terminated string).
    put_text(attr.ac_dns, sizeof attr.ac_dns, in.until('\0'));
    uint8_t entries = in.byte() % 4;
    std::vector<std::string> list, conns;
    for (uint8_t i = 0; i < entries; ++i) {
        list.push_back(in.bytes(148));
        conns.push_back(in.bytes(sizeof(st_wan_conn)));
    }
    std::vector<std::string> answers = read_answers(in);

    start_shell(answers, attr.ui_vlan_id, 0);
    // Creation carries the caller's priority (none: 0).
    uint8_t prio = attr.us_priority_set != 0 && attr.uc_priority != 15 ? attr.uc_priority : 0;
    g_shell.priority = std::to_string(prio);
    for (size_t i = 0; i < list.size(); ++i) {
        list[i].resize(148, '\0');
        conns[i].resize(sizeof(st_wan_conn), '\0');
        kestub::cm_preload(458, list[i].data(), list[i].size());
        kestub::cm_preload(448, conns[i].data(), conns[i].size());
    }
    switch (how % 3) {
    case 0:
        ke_omci_tapi_voip_wan_set(&attr);
        break;
    case 1:
        ke_omci_tapi_voip_wan_get(&attr);
        break;
    default:
        ke_omci_tapi_voip_wan_del(attr.ui_vlan_id);
        break;
    }
}

// The toolkit with the caller's own text and sizes.
void toolkit(kefuzz::Input &in)
{
    uint8_t op = in.byte();
    int size = static_cast<int8_t>(in.byte());
    std::string text = in.until('\0');
    std::vector<std::string> answers = read_answers(in);
    start_shell(answers, 0, 0);
    g_shell.toolkit = true;
    g_shell.toolkit_text = text;

    std::vector<char> value(size > 0 ? static_cast<size_t>(size) : 1, '\x5a');
    switch (op % 6) {
    case 0:
    case 1: {
        int ret = op % 6 == 0 ? omci_uci_get(text.c_str(), value.data(), size)
                              : omci_uci_add(text.c_str(), value.data(), size);
        const auto &cmds = kestub::shell_commands();
        if (ret == 0) {
            // A one-byte buffer holds no character: fgets then answers
            // without reading, and so the read succeeds with "".
            std::string answer = g_shell.answers.empty() ? "" : g_shell.answers[0];
            if (cmds.size() != 1 || (answer.empty() && size != 1))
                kefuzz::fail("uci toolkit", "a value without a command");
            std::string want = read_back(answer, static_cast<size_t>(size));
            if (want != value.data())
                kefuzz::fail("uci toolkit", "read back [" + std::string(value.data()) +
                                                "], uci printed [" + want + "]");
            if (kefuzz::scratch::exists())
                kefuzz::fail("uci toolkit", "scratch file left after a read");
        } else if (ret != -1) {
            kefuzz::fail("uci toolkit", "answered " + std::to_string(ret));
        }
        break;
    }
    case 2: {
        uint8_t addr[4] = {};
        std::memcpy(addr, text.data(), text.size() < 4 ? text.size() : 4);
        char out[32];
        std::memset(out, 0x5a, sizeof out);
        uint32_t bound = static_cast<uint32_t>(size) % sizeof out;
        omci_iptochar(addr, out, bound);
        if (bound >= 16) {
            char want[32];
            std::snprintf(want, sizeof want, "%u.%u.%u.%u", addr[0], addr[1], addr[2], addr[3]);
            if (std::strcmp(out, want) != 0)
                kefuzz::fail("uci toolkit", std::string("address text ") + out);
        }
        break;
    }
    case 3: {
        uint32_t word = __omci_chartoip(text.c_str());
        in_addr_t want = text.empty() ? 0 : inet_addr(text.c_str());
        if (word != want)
            kefuzz::fail("uci toolkit", "address word of " + text);
        break;
    }
    case 4: {
        uint32_t mac[6];
        uint64_t before = 0;
        for (int i = 0; i < 6; ++i) {
            mac[i] = static_cast<uint8_t>(i < static_cast<int>(text.size()) ? text[i] : 0);
            before = before << 8 | mac[i];
        }
        uint32_t offset = static_cast<uint32_t>(size) * 0x01010101u;
        mac_increase_with_offset(mac, offset);
        uint64_t after = 0;
        for (int i = 0; i < 6; ++i) {
            if (mac[i] > 255)
                kefuzz::fail("uci toolkit", "MAC word above 255");
            after = after << 8 | mac[i];
        }
        if (after != ((before + offset) & 0xFFFFFFFFFFFFull))
            kefuzz::fail("uci toolkit", "MAC plus offset");
        break;
    }
    default: {
        g_shell.toolkit = false;
        uint32_t count = 99;
        igdCmConfGetEntryNumByUci(&count);
        if (count > 4)
            kefuzz::fail("uci toolkit", "slot count " + std::to_string(count));
        break;
    }
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    kefuzz::quiet_stdout();
    // The scratch file must be this program's: make sure the library's
    // reads reach it.
    start_shell({"probe\n"}, 0, 0);
    g_shell.toolkit = true;
    g_shell.toolkit_text = "network.probe";
    char value[16] = {};
    if (omci_uci_get("network.probe", value, sizeof value) != 0 ||
        std::strcmp(value, "probe") != 0 || kefuzz::scratch::opens() != 1 ||
        kefuzz::scratch::unlinks() != 1)
        kefuzz::fail("voip wan", "the library does not read the in-memory scratch file");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    kefuzz::Input in(data, size);
    uint8_t mode = in.byte();
    switch (mode % 4) {
    case 0:
        create(in);
        break;
    case 1:
    case 2:
        set_get_del(in, mode / 4);
        break;
    default:
        toolkit(in);
        break;
    }
    return 0;
}
