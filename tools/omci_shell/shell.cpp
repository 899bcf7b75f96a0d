#include "shell.h"

#include <chrono>
#include <thread>

#include "functions.h"
#include "kestub.h"
#include "text.h"

namespace omcishell {
namespace {

constexpr char kBuiltins[] =
    "built-in commands:\n"
    "  help [FUNCTION]      this text, or a function's parameters\n"
    "  list                 every function the shell can call\n"
    "  call NAME [ARG...]   a served call of another process (see --call)\n"
    "  served               the calls this process serves\n"
    "  expect STATUS        check the last status; a mismatch counts as an error\n"
    "  echo TEXT...         print TEXT\n"
    "  sleep MS             wait MS milliseconds\n"
    "  quit, exit           stop reading commands\n"
    "Any other line: FUNCTION ARG... (in and inout arguments, in order).\n";

std::string signature(const Function &f)
{
    return std::string(f.name) + "(" + f.params + ")";
}

// Fills slot from one command word for parameter p.
bool parse_arg(const Param &p, const std::string &word, Args::Slot *slot, std::string *why)
{
    slot->bytes.assign(p.size, 0);
    if (p.type == Type::U32) {
        if (ketool::parse_u32(word, &slot->word))
            return true;
        *why = p.name + ": not a 32-bit number: " + word;
        return false;
    }
    if (word == "null") {
        slot->null = true;
        return true;
    }
    if (p.type == Type::Text) {
        if (word.size() < p.size) {
            std::copy(word.begin(), word.end(), slot->bytes.begin());
            return true;
        }
        *why = p.name + ": longer than " + std::to_string(p.size - 1) + " characters";
        return false;
    }
    if (p.type == Type::Rec && word.find('=') != std::string::npos) {
        size_t pos = 0;
        for (;;) {
            size_t comma = word.find(',', pos);
            std::string one = word.substr(pos, comma == std::string::npos ? comma : comma - pos);
            if (!ketool::assign(*p.layout, slot->bytes.data(), one, why))
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

void print_output(FILE *out, const Param &p, Args::Slot &slot)
{
    if (slot.null)
        return;
    if (p.type == Type::U32) {
        ketool::Field f{p.name.c_str(), 0, 4, ketool::Kind::U32};
        std::fprintf(out, "  %s = %s\n", p.name.c_str(),
                     ketool::show_field(f, reinterpret_cast<const uint8_t *>(&slot.word)).c_str());
    } else if (p.type == Type::Text) {
        std::fprintf(out, "  %s = \"%s\"\n", p.name.c_str(),
                     ketool::printable(slot.bytes.data(), slot.bytes.size()).c_str());
    } else if (p.type == Type::Bytes) {
        std::fprintf(out, "  %s = %s\n", p.name.c_str(),
                     ketool::hex(slot.bytes.data(), slot.bytes.size()).c_str());
    } else {
        std::fprintf(out, "  %s:\n", p.name.c_str());
        for (const std::string &line : ketool::decode(*p.layout, slot.bytes.data(), slot.bytes.size()))
            std::fprintf(out, "    %s\n", line.c_str());
    }
}

}  // namespace

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
        std::string text;
        for (size_t i = 1; i < words.size(); ++i)
            text += (i > 1 ? " " : "") + words[i];
        std::fprintf(out_, "%s\n", text.c_str());
    } else if (cmd == "sleep" && words.size() == 2 && ketool::parse_u32(words[1], &value)) {
        std::fflush(out_);
        std::this_thread::sleep_for(std::chrono::milliseconds(value));
    } else if (cmd == "expect" && words.size() == 2 && ketool::parse_u32(words[1], &value)) {
        if (value != last_status_) {
            char why[64];
            std::snprintf(why, sizeof why, "expected status 0x%x, got 0x%x",
                          static_cast<unsigned>(value), static_cast<unsigned>(last_status_));
            fail(why);
        }
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

void Shell::call_function(const std::vector<std::string> &words)
{
    const Function &f = *find_function(words[0]);
    std::vector<Param> params;
    std::string why;
    if (!parse_params(f.params, &params, &why)) {
        fail(std::string(f.name) + ": bad parameter list: " + why);
        return;
    }
    Args args;
    size_t next = 1;
    for (const Param &p : params) {
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
    kestub::serve_lock();
    last_status_ = f.call(args);
    kestub::serve_unlock();
    std::fprintf(out_, "%s: status 0x%x\n", f.name, static_cast<unsigned>(last_status_));
    for (size_t i = 0; i < params.size(); ++i)
        if (params[i].dir != Dir::In)
            print_output(out_, params[i], args.slots()[i]);
}

}  // namespace omcishell
