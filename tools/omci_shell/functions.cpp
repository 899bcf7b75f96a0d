#include "functions.h"

#include <cstdlib>
#include <cstring>

namespace omcishell {
namespace {

// Every family's functions, in the order of the public headers.
constexpr const FunctionList *kFamilies[] = {
    &kLifecycleFunctions, &kPonFunctions,     &kBridgeQosFunctions, &kStatFunctions,
    &kMcFunctions,        &kVlanFunctions,    &kDeviceFunctions,    &kVoipWanFunctions,
    &kVoipFunctions,      &kRemoteMgmtFunctions,
};

std::string trim(const std::string &s)
{
    size_t b = s.find_first_not_of(' ');
    size_t e = s.find_last_not_of(' ');
    return b == std::string::npos ? "" : s.substr(b, e - b + 1);
}

// "[28]" at the end of text -> 28 and text without it; 0 when there is none
// or it is not a count from 1 to 999999.
uint32_t strip_count(std::string *text)
{
    size_t open = text->rfind('[');
    if (open == std::string::npos || text->back() != ']')
        return 0;
    std::string digits = text->substr(open + 1, text->size() - open - 2);
    if (digits.empty() || digits.size() > 6 || digits.find_first_not_of("0123456789") != std::string::npos)
        return 0;
    uint32_t n = static_cast<uint32_t>(std::atoi(digits.c_str()));
    if (n != 0)
        text->resize(open);
    return n;
}

// The largest argument a row may describe.
constexpr uint32_t kMaxArgument = 1u << 20;

struct Scalar {
    const char *name;
    Type type;
    uint32_t size;
};

constexpr std::array kScalars = {
    Scalar{"u32", Type::U32, 4},
    Scalar{"u16", Type::U16, 2},
    Scalar{"u8", Type::U8, 1},
    Scalar{"ipv4", Type::Ipv4, 4},
};

bool parse_type(std::string type, Param *p, std::string *why)
{
    for (const Scalar &s : kScalars)
        if (type == s.name) {
            p->type = s.type;
            p->size = s.size;
            p->count = 1;
            return true;
        }
    if (type.rfind("count:", 0) == 0 && type.size() > 6) {
        p->type = Type::Count;
        p->size = 4;
        p->count = 1;
        p->of = type.substr(6);  // resolved once every parameter is read
        return true;
    }
    bool has_brackets = type.find('[') != std::string::npos;
    uint32_t n = strip_count(&type);
    if (has_brackets && n == 0) {
        *why = "bad element count in " + type;
        return false;
    }
    if (type == "u32" && n != 0) {
        p->type = Type::Words;
        p->size = 4 * n;
        p->count = n;
        return true;
    }
    if ((type == "bytes" || type == "text") && n != 0) {
        p->type = type == "bytes" ? Type::Bytes : Type::Text;
        p->size = n;
        p->count = n;
        return true;
    }
    if (type.rfind("rec:", 0) == 0 && (p->layout = ketool::find_record(type.substr(4)))) {
        p->type = Type::Rec;
        p->count = n == 0 ? 1 : n;
        if (p->layout->size > kMaxArgument / p->count) {
            *why = "larger than an argument may be: " + type;
            return false;
        }
        p->size = p->layout->size * p->count;
        return true;
    }
    *why = "unknown type " + type;
    return false;
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
    *p = Param{Dir::In, Type::U32, 0, 0, nullptr, -1, "", ""};
    if (dir == "in")
        p->dir = Dir::In;
    else if (dir == "out")
        p->dir = Dir::Out;
    else if (dir == "inout")
        p->dir = Dir::InOut;
    else if (dir == "return")
        p->dir = Dir::Return;
    else {
        *why = "direction is in, out, inout or return: " + dir;
        return false;
    }
    if (!parse_type(t.substr(s1 + 1, s2 - s1 - 1), p, why))
        return false;
    p->name = t.substr(s2 + 1);
    return true;
}

// Points every count parameter at the parameter it measures.
bool resolve_counts(std::vector<Param> *params, std::string *why)
{
    for (Param &p : *params) {
        if (p.type != Type::Count)
            continue;
        for (size_t i = 0; i < params->size(); ++i) {
            const Param &q = (*params)[i];
            if (q.name == p.of && q.type != Type::Count && q.dir != Dir::Return)
                p.bound = static_cast<int>(i);
        }
        if (p.bound < 0) {
            *why = p.name + ": counts no parameter named " + p.of;
            return false;
        }
    }
    return true;
}

// Types whose size must equal what the function's pointer points at.
bool is_number(Type t)
{
    return t == Type::U32 || t == Type::U16 || t == Type::U8 || t == Type::Count;
}

}  // namespace

uint32_t Args::value(size_t i) const
{
    uint32_t v = 0;
    const Slot &s = slots_.at(i);
    std::memcpy(&v, s.bytes.data(), s.bytes.size() < 4 ? s.bytes.size() : 4);
    return v;
}

void *Args::ptr(size_t i)
{
    Slot &s = slots_.at(i);
    return s.null ? nullptr : s.bytes.data();
}

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
            return resolve_counts(params, why);
        pos = comma + 1;
    }
}

bool fits(const Function &f, const std::vector<Param> &params, std::string *why)
{
    size_t c = 0;
    bool returns = false;
    for (const Param &p : params) {
        if (p.dir == Dir::Return) {
            if (returns || f.result == Result::None || p.type == Type::Count || p.size != 4) {
                *why = p.name + ": a result is one 4-byte value of a function that returns one";
                return false;
            }
            returns = true;
            continue;
        }
        if (c == f.arity) {
            *why = "the function takes " + std::to_string(f.arity) + " parameters";
            return false;
        }
        const CParam &cp = f.cparams[c++];
        if (!cp.pointer) {
            if (p.dir != Dir::In || (p.type != Type::U32 && p.type != Type::Count)) {
                *why = p.name + ": passed by value: in u32 or in count";
                return false;
            }
            continue;
        }
        if (cp.read_only && p.dir != Dir::In) {
            *why = p.name + ": the function does not write it";
            return false;
        }
        bool exact = is_number(p.type);
        if (cp.pointee != 0 && (exact ? p.size != cp.pointee : p.size < cp.pointee)) {
            *why = p.name + ": " + std::to_string(p.size) + " bytes where the function takes " +
                   std::to_string(cp.pointee);
            return false;
        }
    }
    if (c != f.arity) {
        *why = "the function takes " + std::to_string(f.arity) + " parameters";
        return false;
    }
    return true;
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
