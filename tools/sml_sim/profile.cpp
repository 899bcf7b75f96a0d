#include "profile.h"

#include <cstring>
#include <vector>

#include "text.h"

namespace smlsim {
namespace {

using ketool::Field;
using ketool::Kind;

enum class Image { Sysinfo, Board, Settings, Optical };

struct Key {
    Image image;
    Field field;  // field.name is the key
    const char *value;  // the default
    const char *what;
};

// The serial number is typed as its four vendor letters and eight hex
// digits ("KEON00C0FFEE").
constexpr char kSerialKey[] = "sn";

constexpr std::array<Key, 18> kKeys = {{
    {Image::Sysinfo, {"product_type", 255, 12, Kind::Text}, "SFU",
     "product type: SFU, HGU, SBU, or any other text"},
    {Image::Board, {"user_ports", 4, 4, Kind::U32}, "4", "number of user (Ethernet) ports"},
    {Image::Sysinfo, {kSerialKey, 48, 8, Kind::Bytes}, "KEON00C0FFEE",
     "serial number: vendor letters and eight hex digits"},
    {Image::Sysinfo, {"mac", 66, 6, Kind::Mac}, "02:4b:45:00:00:01", "base MAC address"},
    {Image::Sysinfo, {"info_a", 215, 4, Kind::Text}, "KEON", "vendor identifier"},
    {Image::Sysinfo, {"info_b", 387, 14, Kind::Text}, "V1.0.0", "software version"},
    {Image::Sysinfo, {"info_c", 267, 14, Kind::Text}, "HW1.0", "hardware version"},
    {Image::Sysinfo, {"info_d", 455, 20, Kind::Text}, "KE-SIM-SFU", "equipment identifier"},
    {Image::Sysinfo, {"info_e", 484, 4, Kind::U32}, "1", "system-information word at 484"},
    {Image::Sysinfo, {"info_f", 564, 12, Kind::Text}, "SIM-ONU", "system-information text at 564"},
    {Image::Sysinfo, {"info_g", 684, 4, Kind::U32}, "0", "system-information word at 684"},
    {Image::Sysinfo, {"id_b", 195, 16, Kind::Text}, "KE-ONU-1", "identity text at 195"},
    {Image::Sysinfo, {"id_c", 155, 36, Kind::Text}, "simulated optical network unit",
     "identity text at 155"},
    {Image::Board, {"board_0", 0, 4, Kind::U32}, "1", "board word 0"},
    {Image::Board, {"board_2", 8, 4, Kind::U32}, "0", "board word at 8"},
    {Image::Board, {"board_3", 12, 4, Kind::U32}, "0", "board word at 12"},
    {Image::Settings, {"tconts", 0, 4, Kind::U32}, "32", "T-CONTs the line offers"},
    {Image::Settings, {"gemports", 4, 4, Kind::U32}, "256", "GEM ports the line offers"},
}};

// The ONU-ID is a setting too, kept apart so that the table above reads
// as the device's own identity first.
constexpr Key kOnuIdKey = {Image::Settings, {"onu_id", 8, 4, Kind::U32}, "1",
                           "ONU-ID the OLT assigned (the Alloc-ID of T-CONT 0)"};

// The flash, the Ethernet ports and the optical module.  The optical
// status words are in the units of the module's diagnostics: temperature
// in 1/256 degree C, supply in 100 uV, bias in 2 uA, powers in 0.1 uW.
constexpr std::array<Key, 12> kDeviceKeys = {{
    {Image::Settings, {"boot_flag", 12, 4, Kind::U32}, "0",
     "boot flag of a flash that has none yet: the image section (0 or 1) the device starts"},
    {Image::Settings, {"port_type", 16, 4, Kind::U32}, "0",
     "Ethernet port type (0: port instances count from 1; 1 or 2: from 0x101)"},
    {Image::Optical, {"optical_vendor", 0, 16, Kind::Text}, "KE OPTICS", "optical module vendor"},
    {Image::Optical, {"optical_part", 16, 16, Kind::Text}, "KE-BOSA-2G5",
     "optical module part number"},
    {Image::Optical, {"optical_sn", 32, 16, Kind::Text}, "KEOPT0001", "optical module serial number"},
    {Image::Optical, {"optical_wavelength", 48, 4, Kind::U32}, "1310", "upstream wavelength, nm"},
    {Image::Optical, {"optical_rate", 52, 4, Kind::U32}, "1244", "upstream line rate, Mbit/s"},
    {Image::Optical, {"temperature", 56, 4, Kind::U32}, "11520",
     "module temperature, 1/256 degree C (11520: 45 C)"},
    {Image::Optical, {"voltage", 60, 4, Kind::U32}, "33000",
     "supply voltage, 100 uV (33000: 3.3 V)"},
    {Image::Optical, {"bias", 64, 4, Kind::U32}, "6000", "laser bias current, 2 uA (6000: 12 mA)"},
    {Image::Optical, {"tx_power", 68, 4, Kind::U32}, "20000",
     "transmit power, 0.1 uW (20000: 2 mW, +3 dBm)"},
    {Image::Optical, {"rx_power", 72, 4, Kind::U32}, "1000",
     "receive power, 0.1 uW (1000: 0.1 mW, -10 dBm)"},
}};

std::vector<const Key *> keys()
{
    std::vector<const Key *> all;
    for (const Key &k : kKeys)
        all.push_back(&k);
    all.push_back(&kOnuIdKey);
    for (const Key &k : kDeviceKeys)
        all.push_back(&k);
    return all;
}

uint8_t *image_of(Profile *p, Image image)
{
    switch (image) {
    case Image::Sysinfo:
        return p->sysinfo.data();
    case Image::Board:
        return p->board.data();
    case Image::Optical:
        return p->optical.data();
    case Image::Settings:
        break;
    }
    return p->settings.data();
}

const uint8_t *image_of(const Profile &p, Image image)
{
    return image_of(const_cast<Profile *>(&p), image);
}

// Hex digits without blanks, in capitals.
std::string compact_hex(const uint8_t *bytes, size_t len)
{
    static const char digits[] = "0123456789ABCDEF";
    std::string out;
    for (size_t i = 0; i < len; ++i) {
        out += digits[bytes[i] >> 4];
        out += digits[bytes[i] & 15];
    }
    return out;
}

bool put(const Key &key, Profile *profile, const std::string &value, std::string *why)
{
    std::string text = value;
    if (std::strcmp(key.field.name, kSerialKey) == 0) {
        std::vector<uint8_t> digits;
        if (value.size() != 12 || !ketool::parse_hex(value.substr(4), &digits)) {
            *why = "sn: expected four vendor letters and eight hex digits: " + value;
            return false;
        }
        text = compact_hex(reinterpret_cast<const uint8_t *>(value.data()), 4) + value.substr(4);
    }
    return ketool::put_field(key.field, image_of(profile, key.image), text, why);
}

std::string show(const Key &key, const Profile &profile)
{
    const uint8_t *image = image_of(profile, key.image);
    const uint8_t *p = image + key.field.offset;
    if (std::strcmp(key.field.name, kSerialKey) == 0)
        return std::string(reinterpret_cast<const char *>(p), 4) + compact_hex(p + 4, 4);
    if (key.field.kind == Kind::Text)
        return ketool::printable(p, key.field.width);
    if (key.field.kind == Kind::U32) {
        uint32_t v;
        std::memcpy(&v, p, 4);
        return std::to_string(v);
    }
    return ketool::show_field(key.field, image);
}

uint32_t word_of(const uint8_t *image, uint32_t off)
{
    uint32_t v;
    std::memcpy(&v, image + off, 4);
    return v;
}

std::string trim(const std::string &s)
{
    size_t b = s.find_first_not_of(" \t\r");
    if (b == std::string::npos)
        return "";
    size_t e = s.find_last_not_of(" \t\r");
    return s.substr(b, e - b + 1);
}

}  // namespace

uint32_t Profile::tcont_capacity() const
{
    uint32_t v;
    std::memcpy(&v, settings.data() + 0, 4);
    return v;
}

uint32_t Profile::gemport_capacity() const
{
    uint32_t v;
    std::memcpy(&v, settings.data() + 4, 4);
    return v;
}

uint32_t Profile::onu_id() const
{
    uint32_t v;
    std::memcpy(&v, settings.data() + 8, 4);
    return v;
}

uint32_t Profile::boot_flag() const { return word_of(settings.data(), 12); }
uint32_t Profile::port_type() const { return word_of(settings.data(), 16); }
uint32_t Profile::user_ports() const { return word_of(board.data(), 4); }

Profile default_profile()
{
    Profile p;
    std::string why;
    for (const Key *k : keys())
        put(*k, &p, k->value, &why);
    return p;
}

// Where a line's comment starts: the first '#' outside double quotes, so
// that a quoted text may hold one.
size_t comment_start(const std::string &line)
{
    bool quoted = false;
    for (size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '"')
            quoted = !quoted;
        else if (line[i] == '#' && !quoted)
            return i;
    }
    return std::string::npos;
}

bool apply_profile(const std::string &text, Profile *profile, std::string *why)
{
    size_t line_no = 0;
    size_t pos = 0;
    while (pos <= text.size()) {
        size_t nl = text.find('\n', pos);
        std::string line = text.substr(pos, nl == std::string::npos ? std::string::npos : nl - pos);
        pos = nl == std::string::npos ? text.size() + 1 : nl + 1;
        ++line_no;
        line = trim(line.substr(0, comment_start(line)));
        if (line.empty())
            continue;
        size_t eq = line.find('=');
        std::string name = trim(line.substr(0, eq));
        std::string value = eq == std::string::npos ? "" : trim(line.substr(eq + 1));
        if (value.size() >= 2 && value.front() == '"' && value.back() == '"')
            value = value.substr(1, value.size() - 2);
        const Key *key = nullptr;
        for (const Key *k : keys())
            if (name == k->field.name)
                key = k;
        std::string reason;
        if (eq == std::string::npos)
            reason = "expected key = value";
        else if (key == nullptr)
            reason = "unknown key " + name;
        else if (!put(*key, profile, value, &reason))
            ;
        else
            continue;
        *why = "line " + std::to_string(line_no) + ": " + reason;
        return false;
    }
    return true;
}

std::string profile_text(const Profile &profile)
{
    std::string out = "# sml-sim device profile: key = value; edit and load with --profile.\n";
    for (const Key *k : keys()) {
        out += "\n# ";
        out += k->what;
        out += "\n";
        out += k->field.name;
        out += " = ";
        std::string v = show(*k, profile);
        // Quoted where the loader would otherwise trim or cut the text.
        bool quote = k->field.kind == Kind::Text &&
                     (v.empty() || v.find_first_of(" \t#") != std::string::npos);
        out += quote ? "\"" + v + "\"" : v;
        out += "\n";
    }
    return out;
}

}  // namespace smlsim
