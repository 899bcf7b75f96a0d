#include "shell.h"

#include <chrono>
#include <cstring>
#include <thread>

#include "kestub.h"
#include "text.h"

namespace omcishell {
namespace {

constexpr char kBuiltins[] =
    "built-in commands:\n"
    "  help [FUNCTION]          this text, or a function's parameters\n"
    "  list                     every function the shell can call\n"
    "  call NAME [ARG...]       a served call of another process (see --call)\n"
    "  served                   the calls this process serves\n"
    "  await NAME [MS]          wait (10 s, or MS) until this process serves NAME once\n"
    "                           more than it had when last awaited\n"
    "  download FILE [WORD [INFO]]\n"
    "                           send the image FILE: upgrade start (WORD, 24 INFO bytes\n"
    "                           in hex), one write per 6144-byte shard, upgrade stop\n"
    "  cm-set TABLE PATH=VALUE...  write a record of a configuration table, as another\n"
    "                           part of the device would\n"
    "  cm-get TABLE PATH=VALUE...  read the record of a table with those key fields\n"
    "  expect STATUS            check the last status; a mismatch counts as an error\n"
    "  expect NAME VALUE        check an output of the last call that had outputs\n"
    "  echo TEXT...             print TEXT\n"
    "  sleep MS                 wait MS milliseconds\n"
    "  quit, exit               stop reading commands\n"
    "Any other line: FUNCTION ARG... (in and inout arguments, in order).\n";

constexpr uint32_t kAwaitMs = 10000;

std::string signature(const Function &f) { return std::string(f.name) + "(" + f.params + ")"; }

std::string join(const std::vector<std::string> &words, size_t from)
{
    std::string text;
    for (size_t i = from; i < words.size(); ++i)
        text += (i > from ? " " : "") + words[i];
    return text;
}

// The field that shows or fills a parameter as a whole.
ketool::Field field_of(const Param &p)
{
    switch (p.type) {
    case Type::U16:
        return {p.name.c_str(), 0, 2, ketool::Kind::U16};
    case Type::U8:
        return {p.name.c_str(), 0, 1, ketool::Kind::U8};
    case Type::Ipv4:
        return {p.name.c_str(), 0, 4, ketool::Kind::Ipv4};
    case Type::Words:
        return {p.name.c_str(), 0, 4, ketool::Kind::U32, p.count};
    case Type::Bytes:
        return {p.name.c_str(), 0, p.size, ketool::Kind::Bytes};
    case Type::Text:
        return {p.name.c_str(), 0, p.size, ketool::Kind::Text};
    case Type::Rec:
        return {p.name.c_str(), 0, p.layout->size, ketool::Kind::Rec, p.count, p.layout};
    case Type::U32:
    case Type::Count:
        break;
    }
    return {p.name.c_str(), 0, 4, ketool::Kind::U32};
}

// Fills slot from one command word for parameter p.
bool parse_arg(const Param &p, const std::string &word, Args::Slot *slot, std::string *why)
{
    slot->bytes.assign(p.size, 0);
    if (word == "null" && p.type != Type::U32 && p.type != Type::Count) {
        slot->null = true;
        return true;
    }
    ketool::Field f = field_of(p);
    if (p.type == Type::U32 || p.type == Type::Count || p.type == Type::U16 ||
        p.type == Type::U8) {
        uint32_t v;
        if (ketool::parse_u32(word, &v) && (p.size == 4 || v < (1u << (8 * p.size)))) {
            std::memcpy(slot->bytes.data(), &v, p.size);
            return true;
        }
        *why = p.name + ": not a " + std::to_string(8 * p.size) + "-bit number: " + word;
        return false;
    }
    if (p.type == Type::Text) {
        if (word.size() < p.size) {
            std::copy(word.begin(), word.end(), slot->bytes.begin());
            return true;
        }
        *why = p.name + ": longer than " + std::to_string(p.size - 1) + " characters";
        return false;
    }
    if (p.type == Type::Ipv4)
        return ketool::put_field(f, slot->bytes.data(), word, why);
    if (p.type == Type::Words) {
        std::vector<std::string> values;
        for (size_t pos = 0;;) {
            size_t comma = word.find(',', pos);
            values.push_back(word.substr(pos, comma == std::string::npos ? comma : comma - pos));
            if (comma == std::string::npos)
                break;
            pos = comma + 1;
        }
        if (values.size() > p.count) {
            *why = p.name + ": more than " + std::to_string(p.count) + " words";
            return false;
        }
        for (size_t i = 0; i < values.size(); ++i) {
            uint32_t v;
            if (!ketool::parse_u32(values[i], &v)) {
                *why = p.name + ": not a 32-bit number: " + values[i];
                return false;
            }
            std::memcpy(slot->bytes.data() + 4 * i, &v, 4);
        }
        return true;
    }
    if (p.type == Type::Rec && word.find('=') != std::string::npos) {
        // One record: its own fields; an array: name[i].field.
        ketool::Layout whole{p.name.c_str(), p.size, &f, 1};
        const ketool::Layout &layout = p.count == 1 ? *p.layout : whole;
        for (size_t pos = 0;;) {
            size_t comma = word.find(',', pos);
            std::string one = word.substr(pos, comma == std::string::npos ? comma : comma - pos);
            if (!ketool::assign(layout, slot->bytes.data(), one, why))
                return false;
            if (comma == std::string::npos)
                return true;
            pos = comma + 1;
        }
    }
    std::vector<uint8_t> bytes;
    if (!ketool::parse_hex(word, &bytes) || bytes.size() > p.size) {
        *why = p.name + ": expected up to " + std::to_string(p.size) + " hex bytes" +
               (p.type == Type::Rec ? " or field=value,..." : "") + ": " + word;
        return false;
    }
    std::copy(bytes.begin(), bytes.end(), slot->bytes.begin());
    return true;
}

// "1024 (0x400)" matches 1024 and 0x400; "\"text\"" matches text.
bool matches(const std::string &shown, const std::string &want)
{
    if (shown == want)
        return true;
    if (shown.size() >= 2 && shown.front() == '"' && shown.back() == '"' &&
        shown.substr(1, shown.size() - 2) == want)
        return true;
    uint64_t a, b;
    return ketool::parse_u64(shown.substr(0, shown.find(' ')), &a) &&
           ketool::parse_u64(want, &b) && a == b;
}

// A status as typed: a number, or a negative one for a function that
// returns an int.
bool parse_status(const std::string &text, uint32_t *status)
{
    if (!text.empty() && text[0] == '-') {
        uint32_t magnitude;
        if (!ketool::parse_u32(text.substr(1), &magnitude) || magnitude > 0x80000000u)
            return false;
        *status = 0u - magnitude;
        return true;
    }
    return ketool::parse_u32(text, status);
}

}  // namespace

Shell::Shell(FILE *out) : out_(out) { watch_served(); }

void Shell::fail(const std::string &why)
{
    ++errors_;
    std::fprintf(out_, "error: %s\n", why.c_str());
}

bool Shell::run_line(const std::string &line)
{
    std::vector<std::string> words;
    if (!ketool::split_words(line, &words)) {
        fail("unterminated quote: " + line);
        return true;
    }
    if (words.empty())
        return true;
    trace_command(line);
    const std::string &cmd = words[0];
    uint32_t value = 0;
    if (cmd == "quit" || cmd == "exit")
        return false;
    if (cmd == "help") {
        builtin_help(words);
    } else if (cmd == "list") {
        for (const Function *f : all_functions())
            std::fprintf(out_, "%s\n", signature(*f).c_str());
    } else if (cmd == "served") {
        for (const std::string &name : kestub::served_names())
            std::fprintf(out_, "%s\n", name.c_str());
    } else if (cmd == "echo") {
        std::fprintf(out_, "%s\n", join(words, 1).c_str());
    } else if (cmd == "sleep" && words.size() == 2 && ketool::parse_u32(words[1], &value)) {
        std::fflush(out_);
        std::this_thread::sleep_for(std::chrono::milliseconds(value));
    } else if (cmd == "expect" && words.size() >= 2) {
        expect(words);
    } else if (cmd == "await" && (words.size() == 2 || words.size() == 3)) {
        await(words);
    } else if (cmd == "download" && words.size() >= 2 && words.size() <= 4) {
        download(words);
    } else if ((cmd == "cm-set" || cmd == "cm-get") && words.size() >= 2) {
        table(words, cmd == "cm-set");
    } else if (cmd == "call" && words.size() >= 2) {
        std::string why;
        std::vector<std::string> rest(words.begin() + 1, words.end());
        if (!remote_call(out_, rest, &last_status_, &why))
            fail(why);
    } else if (find_function(cmd) != nullptr) {
        call_function(words);
    } else {
        fail("unknown command or function (try help): " + cmd);
    }
    std::fflush(out_);
    return true;
}

void Shell::builtin_help(const std::vector<std::string> &words)
{
    if (words.size() < 2) {
        std::fputs(kBuiltins, out_);
        return;
    }
    const Function *f = find_function(words[1]);
    if (f == nullptr)
        fail("no function " + words[1]);
    else
        std::fprintf(out_, "%s\n", signature(*f).c_str());
}

void Shell::expect(const std::vector<std::string> &words)
{
    uint32_t want = 0;
    if (words.size() == 2) {
        if (!parse_status(words[1], &want)) {
            fail("expect: not a status: " + words[1]);
        } else if (want != last_status_) {
            char why[64];
            std::snprintf(why, sizeof why, "expected status 0x%x, got 0x%x",
                          static_cast<unsigned>(want), static_cast<unsigned>(last_status_));
            fail(why);
        }
        return;
    }
    std::string wanted = join(words, 2);
    auto it = outputs_.find(words[1]);
    if (it == outputs_.end())
        fail("expected " + words[1] + " = " + wanted + ", but the last call has no output " +
             words[1]);
    else if (!matches(it->second, wanted))
        fail("expected " + words[1] + " = " + wanted + ", got " + it->second);
}

void Shell::await(const std::vector<std::string> &words)
{
    uint32_t ms = kAwaitMs;
    if (words.size() == 3 && !ketool::parse_u32(words[2], &ms)) {
        fail("await: not a number of milliseconds: " + words[2]);
        return;
    }
    const std::string &name = words[1];
    unsigned seen = awaited_[name];
    auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
    std::fflush(out_);
    while (served_count(name) <= seen) {
        if (std::chrono::steady_clock::now() >= until) {
            fail("await: " + name + " was not served within " + std::to_string(ms) + " ms");
            return;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    awaited_[name] = served_count(name);
    std::fprintf(out_, "served %s\n", name.c_str());
}

void Shell::keep_lines(const std::string &prefix, const std::vector<std::string> &lines,
                       const char *indent)
{
    for (const std::string &line : lines) {
        std::fprintf(out_, "%s%s\n", indent, line.c_str());
        size_t eq = line.find(" = ");
        if (eq != std::string::npos)
            outputs_[prefix + line.substr(0, eq)] = line.substr(eq + 3);
    }
}

void Shell::show_outputs(const std::vector<Param> &params, Args &args)
{
    size_t slot = 0;
    for (const Param &p : params) {
        if (p.dir == Dir::Return)
            continue;
        Args::Slot &s = args.slots()[slot++];
        if (p.dir == Dir::In || s.null)
            continue;
        ketool::Field f = field_of(p);
        if (p.type == Type::Rec && p.count == 1) {
            std::fprintf(out_, "  %s:\n", p.name.c_str());
            keep_lines(p.name + ".", ketool::decode(*p.layout, s.bytes.data(), s.bytes.size()),
                       "    ");
        } else {
            ketool::Layout whole{p.name.c_str(), p.size, &f, 1};
            keep_lines("", ketool::decode(whole, s.bytes.data(), s.bytes.size()), "  ");
        }
    }
}

void Shell::call_function(const std::vector<std::string> &words)
{
    const Function &f = *find_function(words[0]);
    std::vector<Param> params;
    std::string why;
    if (!parse_params(f.params, &params, &why) || !fits(f, params, &why)) {
        fail(std::string(f.name) + ": bad parameter list: " + why);
        return;
    }
    Args args;
    const Param *result = nullptr;
    size_t next = 1;
    for (const Param &p : params) {
        if (p.dir == Dir::Return) {
            result = &p;
            continue;
        }
        Args::Slot slot;
        slot.bytes.assign(p.size, 0);
        if (p.dir != Dir::Out) {
            if (next >= words.size()) {
                fail("too few arguments: " + signature(f));
                return;
            }
            if (!parse_arg(p, words[next++], &slot, &why)) {
                fail(why);
                return;
            }
        }
        args.slots().push_back(std::move(slot));
    }
    if (next != words.size()) {
        fail("too many arguments: " + signature(f));
        return;
    }
    // A length may not reach past the buffer it describes.
    size_t slot = 0;
    for (const Param &p : params) {
        if (p.dir == Dir::Return)
            continue;
        const Param &measured = params[p.bound < 0 ? 0 : p.bound];
        if (p.type == Type::Count && args.value(slot) > measured.count) {
            fail(p.name + ": at most " + std::to_string(measured.count) + " (the size of " +
                 measured.name + ")");
            return;
        }
        ++slot;
    }
    kestub::serve_lock();
    last_status_ = f.call(args);
    kestub::serve_unlock();
    outputs_.clear();
    if (result != nullptr) {
        ketool::Field rf = field_of(*result);
        std::string shown =
            ketool::show_field(rf, reinterpret_cast<const uint8_t *>(&last_status_));
        std::fprintf(out_, "%s: %s = %s\n", f.name, result->name.c_str(), shown.c_str());
        outputs_[result->name] = shown;
    } else if (f.result == Result::Int) {
        std::fprintf(out_, "%s: returned %d\n", f.name, static_cast<int32_t>(last_status_));
    } else if (f.result == Result::None) {
        std::fprintf(out_, "%s: done\n", f.name);
    } else {
        std::fprintf(out_, "%s: status 0x%x\n", f.name, static_cast<unsigned>(last_status_));
    }
    show_outputs(params, args);
}

}  // namespace omcishell
