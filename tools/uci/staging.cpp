#include "staging.h"

namespace uci {
namespace {

bool fail(ParseError *err, int line, const char *what)
{
    err->line = line;
    err->what = what;
    return false;
}

}  // namespace

bool apply_staged(const std::string &text, Package *pkg, ParseError *err)
{
    std::vector<Statement> changes;
    if (!split_statements(text, &changes, err))
        return false;
    for (const Statement &c : changes) {
        const std::vector<std::string> &w = c.words;
        const std::string &op = w[0];
        if ((op == "add" || op == "section") && w.size() == 3) {
            if (!valid_name(w[1]) || !valid_type(w[2]))
                return fail(err, c.line, "invalid section");
            Section *s = pkg->find(w[1]);
            if (s != nullptr)
                s->type = w[2];
            else
                pkg->append(w[2], w[1], op == "add");
        } else if ((op == "set" || op == "list") && w.size() == 4) {
            Section *s = pkg->find(w[1]);
            if (s == nullptr || !valid_name(w[2]))
                return fail(err, c.line, "change to a missing section");
            if (op == "set")
                s->set(w[2], w[3]);
            else
                s->add_list(w[2], w[3]);
        } else {
            return fail(err, c.line, "unknown change");
        }
    }
    return true;
}

std::string staged_line(const std::vector<std::string> &words)
{
    std::string line;
    for (const std::string &w : words)
        line += (line.empty() ? "" : " ") + word(w);
    return line + "\n";
}

}  // namespace uci
