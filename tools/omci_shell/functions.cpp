#include "functions.h"

#include <cstdlib>

namespace omcishell {
namespace {

// Every family's functions; a family that lands adds its list here.
constexpr const FunctionList *kFamilies[] = {
    &kPonFunctions,
    &kDeviceFunctions,
};

std::string trim(const std::string &s)
{
    size_t b = s.find_first_not_of(' ');
    size_t e = s.find_last_not_of(' ');
    return b == std::string::npos ? "" : s.substr(b, e - b + 1);
}

// "bytes[28]" -> 28; 0 when the text is not of that form.
uint32_t bracket_size(const std::string &type, const std::string &head)
{
    if (type.size() < head.size() + 3 || type.compare(0, head.size() + 1, head + "[") != 0 ||
        type.back() != ']')
        return 0;
    std::string digits = type.substr(head.size() + 1, type.size() - head.size() - 2);
    if (digits.empty() || digits.find_first_not_of("0123456789") != std::string::npos ||
        digits.size() > 6)
        return 0;
    return static_cast<uint32_t>(std::atoi(digits.c_str()));
}

bool parse_param(const std::string &text, Param *p, std::string *why)
{
    std::string t = trim(text);
    size_t s1 = t.find(' ');
    size_t s2 = s1 == std::string::npos ? s1 : t.find(' ', s1 + 1);
    if (s2 == std::string::npos || t.find(' ', s2 + 1) != std::string::npos) {
        *why = "expected DIR TYPE NAME: " + t;
        return false;
    }
    std::string dir = t.substr(0, s1);
    std::string type = t.substr(s1 + 1, s2 - s1 - 1);
    p->name = t.substr(s2 + 1);
    p->layout = nullptr;
    p->size = 0;
    if (dir == "in")
        p->dir = Dir::In;
    else if (dir == "out")
        p->dir = Dir::Out;
    else if (dir == "inout")
        p->dir = Dir::InOut;
    else {
        *why = "direction is in, out or inout: " + dir;
        return false;
    }
    if (type == "u32") {
        p->type = Type::U32;
        p->size = 4;
    } else if ((p->size = bracket_size(type, "bytes")) != 0) {
        p->type = Type::Bytes;
    } else if ((p->size = bracket_size(type, "text")) != 0) {
        p->type = Type::Text;
    } else if (type.rfind("rec:", 0) == 0 && (p->layout = ketool::find_record(type.substr(4)))) {
        p->type = Type::Rec;
        p->size = p->layout->size;
    } else {
        *why = "unknown type " + type;
        return false;
    }
    return true;
}

}  // namespace

bool parse_params(const char *text, std::vector<Param> *params, std::string *why)
{
    params->clear();
    std::string all = text;
    if (trim(all).empty())
        return true;
    size_t pos = 0;
    for (;;) {
        size_t comma = all.find(',', pos);
        Param p;
        if (!parse_param(all.substr(pos, comma == std::string::npos ? comma : comma - pos), &p,
                         why))
            return false;
        params->push_back(std::move(p));
        if (comma == std::string::npos)
            return true;
        pos = comma + 1;
    }
}

std::vector<const Function *> all_functions() { return ketool::all_rows(kFamilies); }

const Function *find_function(const std::string &name)
{
    for (const Function *f : all_functions())
        if (name == f->name)
            return f;
    return nullptr;
}

}  // namespace omcishell
