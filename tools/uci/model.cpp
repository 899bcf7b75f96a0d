#include "model.h"

#include <cstdio>
#include <cstdlib>

namespace uci {
namespace {

bool all_of(const std::string &s, const char *extra)
{
    if (s.empty())
        return false;
    for (char c : s) {
        bool ok = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                  c == '_';
        for (const char *e = extra; !ok && *e != '\0'; ++e)
            ok = c == *e;
        if (!ok)
            return false;
    }
    return true;
}

// 16-bit FNV-1a fold of the type, the tail of an anonymous name.
unsigned type_hash(const std::string &type)
{
    unsigned h = 2166136261u;
    for (unsigned char c : type)
        h = (h ^ c) * 16777619u;
    return (h ^ (h >> 16)) & 0xFFFFu;
}

// Parses "@type[N]"; false when ref does not have that shape.
bool parse_type_ref(const std::string &ref, std::string *type, long *index)
{
    size_t open = ref.find('[');
    if (ref.size() < 4 || ref[0] != '@' || open == std::string::npos || ref.back() != ']')
        return false;
    *type = ref.substr(1, open - 1);
    std::string digits = ref.substr(open + 1, ref.size() - open - 2);
    if (!valid_type(*type) || digits.empty() || digits.size() > 9)
        return false;
    char *end = nullptr;
    *index = std::strtol(digits.c_str(), &end, 10);
    return *end == '\0' && (digits[0] == '-' || (digits[0] >= '0' && digits[0] <= '9'));
}

}  // namespace

bool valid_name(const std::string &s) { return all_of(s, ""); }
bool valid_type(const std::string &s) { return all_of(s, "-"); }
bool valid_package(const std::string &s) { return all_of(s, "-"); }

Option *Section::find(const std::string &option)
{
    for (Option &o : options)
        if (o.name == option)
            return &o;
    return nullptr;
}

const Option *Section::find(const std::string &option) const
{
    return const_cast<Section *>(this)->find(option);
}

void Section::set(const std::string &option, const std::string &value)
{
    Option *o = find(option);
    if (o == nullptr) {
        options.push_back(Option{option, false, {value}});
        return;
    }
    o->is_list = false;
    o->values.assign(1, value);
}

void Section::add_list(const std::string &option, const std::string &value)
{
    Option *o = find(option);
    if (o == nullptr) {
        options.push_back(Option{option, true, {value}});
        return;
    }
    o->is_list = true;  // a plain option becomes the list's first value
    o->values.push_back(value);
}

Section *Package::find(const std::string &section)
{
    for (Section &s : sections)
        if (s.name == section)
            return &s;
    return nullptr;
}

Section *Package::resolve(const std::string &ref)
{
    std::string type;
    long index = 0;
    if (!parse_type_ref(ref, &type, &index))
        return find(ref);
    std::vector<Section *> of_type;
    for (Section &s : sections)
        if (s.type == type)
            of_type.push_back(&s);
    long count = static_cast<long>(of_type.size());
    if (index < 0)
        index += count;
    return index >= 0 && index < count ? of_type[static_cast<size_t>(index)] : nullptr;
}

Section &Package::append(const std::string &type, const std::string &name, bool anonymous)
{
    Section s{type, name, anonymous, {}};
    if (anonymous && name.empty()) {
        char buf[32];
        for (size_t pos = sections.size();; ++pos) {
            std::snprintf(buf, sizeof buf, "cfg%02zx%04x", pos, type_hash(type));
            if (find(buf) == nullptr)
                break;
        }
        s.name = buf;
    }
    sections.push_back(std::move(s));
    return sections.back();
}

std::string Package::display_name(const Section &s) const
{
    if (!s.anonymous)
        return s.name;
    size_t index = 0;
    for (const Section &other : sections) {
        if (&other == &s)
            break;
        if (other.type == s.type)
            ++index;
    }
    return "@" + s.type + "[" + std::to_string(index) + "]";
}

}  // namespace uci
