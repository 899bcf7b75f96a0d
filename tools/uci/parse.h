// The configuration file format:
//
//   config <type> ['<name>']
//   	option <name> '<value>'
//   	list <name> '<value>'
//
// Words are separated by blanks and a line ends a statement.  A word may
// be made of unquoted, 'single-quoted' (taken literally) and "double-
// quoted" (backslash escapes) pieces; outside single quotes a backslash
// takes the next character literally.  A quote inside a single-quoted
// value is written as '\''.  "#" at the start of a word comments out the
// rest of the line.  The same reader takes the staged-change files.
#ifndef UCI_PARSE_H
#define UCI_PARSE_H

#include <string>
#include <vector>

#include "model.h"

namespace uci {

struct ParseError {
    int line = 0;
    std::string what;
};

struct Statement {
    int line;
    std::vector<std::string> words;
};

// Splits text into statements; false (and err) on an unterminated quote
// or escape.
bool split_statements(const std::string &text, std::vector<Statement> *out, ParseError *err);

// Reads a configuration file's text into pkg (whose name is already set).
bool parse_package(const std::string &text, Package *pkg, ParseError *err);

// 'value', with every quote written as '\''.
std::string quote(const std::string &value);

// A word as it must be written to be read back: bare when it is a plain
// word, quoted otherwise.
std::string word(const std::string &value);

// The file text of a package: its sections, one blank line apart.
std::string format_package(const Package &pkg);

}  // namespace uci

#endif
