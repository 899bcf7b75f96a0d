#include "parse.h"

namespace uci {
namespace {

bool is_blank(char c) { return c == ' ' || c == '\t' || c == '\r'; }

class Splitter {
public:
    Splitter(const std::string &text, ParseError *err) : text_(text), err_(err) {}

    bool run(std::vector<Statement> *out)
    {
        Statement st{0, {}};
        while (pos_ < text_.size()) {
            char c = text_[pos_];
            if (is_blank(c)) {
                ++pos_;
            } else if (c == '\n') {
                end_statement(&st, out);
                ++line_;
                ++pos_;
            } else if (c == '#') {
                while (pos_ < text_.size() && text_[pos_] != '\n')
                    ++pos_;
            } else if (c == '\\' && pos_ + 1 < text_.size() && text_[pos_ + 1] == '\n') {
                pos_ += 2;  // the statement goes on on the next line
                ++line_;
            } else {
                if (st.words.empty())
                    st.line = line_;
                std::string w;
                if (!read_word(&w))
                    return false;
                st.words.push_back(std::move(w));
            }
        }
        end_statement(&st, out);
        return true;
    }

private:
    static void end_statement(Statement *st, std::vector<Statement> *out)
    {
        if (!st->words.empty())
            out->push_back(std::move(*st));
        *st = Statement{0, {}};
    }

    bool fail(int line, const char *what)
    {
        err_->line = line;
        err_->what = what;
        return false;
    }

    // One word, up to the next blank or line end outside quotes.
    bool read_word(std::string *w)
    {
        while (pos_ < text_.size()) {
            char c = text_[pos_];
            if (is_blank(c) || c == '\n')
                return true;
            ++pos_;
            if (c == '\'') {
                if (!read_quoted('\'', false, w))
                    return false;
            } else if (c == '"') {
                if (!read_quoted('"', true, w))
                    return false;
            } else if (c == '\\') {
                if (!read_escaped(w))
                    return fail(line_, "backslash at end of file");
            } else {
                w->push_back(c);
            }
        }
        return true;
    }

    bool read_quoted(char quote, bool escapes, std::string *w)
    {
        int start = line_;
        while (pos_ < text_.size()) {
            char c = text_[pos_++];
            if (c == quote)
                return true;
            if (escapes && c == '\\') {
                if (!read_escaped(w))
                    break;
                continue;
            }
            if (c == '\n')
                ++line_;
            w->push_back(c);
        }
        return fail(start, "unterminated quote");
    }

    // The character after a backslash, taken literally.
    bool read_escaped(std::string *w)
    {
        if (pos_ >= text_.size())
            return false;
        char c = text_[pos_++];
        if (c == '\n')
            ++line_;
        else
            w->push_back(c);
        return true;
    }

    const std::string &text_;
    ParseError *err_;
    size_t pos_ = 0;
    int line_ = 1;
};

bool fail(ParseError *err, int line, std::string what)
{
    err->line = line;
    err->what = std::move(what);
    return false;
}

}  // namespace

bool split_statements(const std::string &text, std::vector<Statement> *out, ParseError *err)
{
    return Splitter(text, err).run(out);
}

bool parse_package(const std::string &text, Package *pkg, ParseError *err)
{
    std::vector<Statement> statements;
    if (!split_statements(text, &statements, err))
        return false;
    Section *cur = nullptr;
    for (const Statement &st : statements) {
        const std::vector<std::string> &w = st.words;
        const std::string &kw = w[0];
        if (kw == "package") {
            if (w.size() != 2 || !valid_package(w[1]))
                return fail(err, st.line, "invalid package line");
            cur = nullptr;
        } else if (kw == "config") {
            if (w.size() < 2 || w.size() > 3)
                return fail(err, st.line, "invalid config line");
            if (!valid_type(w[1]))
                return fail(err, st.line, "invalid section type '" + w[1] + "'");
            if (w.size() == 2) {
                cur = &pkg->append(w[1], "", true);
                continue;
            }
            if (!valid_name(w[2]))
                return fail(err, st.line, "invalid section name '" + w[2] + "'");
            cur = pkg->find(w[2]);  // a name given twice adds to the first
            if (cur != nullptr)
                cur->type = w[1];
            else
                cur = &pkg->append(w[1], w[2], false);
        } else if (kw == "option" || kw == "list") {
            if (cur == nullptr)
                return fail(err, st.line, kw + " outside a section");
            if (w.size() != 3 || !valid_name(w[1]))
                return fail(err, st.line, "invalid " + kw + " line");
            if (kw == "option")
                cur->set(w[1], w[2]);
            else
                cur->add_list(w[1], w[2]);
        } else {
            return fail(err, st.line, "unknown keyword '" + kw + "'");
        }
    }
    return true;
}

std::string quote(const std::string &value)
{
    std::string out = "'";
    for (char c : value) {
        if (c == '\'')
            out += "'\\''";
        else
            out.push_back(c);
    }
    return out + "'";
}

std::string word(const std::string &value) { return valid_type(value) ? value : quote(value); }

std::string format_package(const Package &pkg)
{
    std::string out;
    for (const Section &s : pkg.sections) {
        if (!out.empty())
            out += "\n";
        out += "config " + word(s.type);
        if (!s.anonymous)
            out += " " + quote(s.name);
        out += "\n";
        for (const Option &o : s.options)
            for (const std::string &v : o.values)
                out += std::string("\t") + (o.is_list ? "list " : "option ") + o.name + " " +
                       quote(v) + "\n";
    }
    return out;
}

}  // namespace uci
