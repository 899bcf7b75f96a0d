// The uci stand-in's file reader: a configuration file and a file of
// staged changes, arbitrary text.  Oracle: whatever it accepts, it writes
// back so that the text reads again into the same package (sections in
// order, with their types and names, options with their values) and
// writes again to the same text; every staged change written for a
// statement reads back as the same words; an error names a line of the
// text.
#include <algorithm>

#include "input.h"
#include "parse.h"
#include "staging.h"

namespace {

// The package as reads show it.  A file names its anonymous sections
// afresh when it is read; staged changes may have named them otherwise
// (their names are compared only from the first re-read on).
std::string describe(const uci::Package &pkg, bool anonymous_names)
{
    std::string out;
    for (const uci::Section &s : pkg.sections) {
        bool name = !s.anonymous || anonymous_names;
        out += (s.anonymous ? "anonymous " : "named ") + s.type + " " + (name ? s.name : "") + "\n";
        for (const uci::Option &o : s.options) {
            out += std::string(o.is_list ? "  list " : "  option ") + o.name;
            for (const std::string &v : o.values)
                out += " [" + v + "]";
            out += "\n";
        }
    }
    return out;
}

void check_error_line(const std::string &text, const uci::ParseError &err)
{
    long lines = std::count(text.begin(), text.end(), '\n') + 1;
    if (err.line < 1 || err.line > lines || err.what.empty())
        kefuzz::fail("uci reader", "error at line " + std::to_string(err.line) + " of " +
                                       std::to_string(lines) + ": " + err.what);
}

// Each statement, written as one staged change, reads back as itself.
void check_staged_lines(const std::vector<uci::Statement> &statements)
{
    for (const uci::Statement &st : statements) {
        std::string line = uci::staged_line(st.words);
        std::vector<uci::Statement> back;
        uci::ParseError err;
        if (!uci::split_statements(line, &back, &err) || back.size() != 1 ||
            back[0].words != st.words)
            kefuzz::fail("uci reader", "staged line does not read back: " + line);
    }
}

uci::Package read_back(const uci::Package &pkg, const std::string &written)
{
    uci::Package again;
    again.name = pkg.name;
    uci::ParseError err;
    if (!uci::parse_package(written, &again, &err))
        kefuzz::fail("uci reader", "cannot read its own file (" + err.what + "):\n" + written);
    return again;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    kefuzz::Input in(data, size);
    std::string file = in.until('\0');
    std::string staged = in.rest();

    std::vector<uci::Statement> statements;
    uci::ParseError err;
    if (uci::split_statements(file, &statements, &err))
        check_staged_lines(statements);
    else
        check_error_line(file, err);

    uci::Package pkg;
    pkg.name = "network";
    err = {};
    if (!uci::parse_package(file, &pkg, &err)) {
        check_error_line(file, err);
        return 0;
    }
    err = {};
    if (!uci::apply_staged(staged, &pkg, &err)) {
        check_error_line(staged, err);
        return 0;
    }

    std::string written = uci::format_package(pkg);
    uci::Package again = read_back(pkg, written);
    if (describe(again, false) != describe(pkg, false))
        kefuzz::fail("uci reader", "file reads back differently:\n" + describe(pkg, false) +
                                       "---\n" + describe(again, false));
    std::string rewritten = uci::format_package(again);
    if (rewritten != written)
        kefuzz::fail("uci reader", "file writes back differently:\n" + written);
    uci::Package third = read_back(pkg, rewritten);
    if (describe(third, true) != describe(again, true))
        kefuzz::fail("uci reader", "anonymous sections named differently on each read:\n" +
                                       describe(again, true) + "---\n" + describe(third, true));
    return 0;
}
