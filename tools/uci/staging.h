// Changes staged until a commit: one file per package in the staging
// directory, one change a line, replayed over the package's file by every
// later read, so that a change is seen before it is committed.
//
//   add <section> <type>              anonymous section, with its name
//   section <section> <type>          named section created, or retyped
//   set <section> <option> '<value>'
//   list <section> <option> '<value>'
#ifndef UCI_STAGING_H
#define UCI_STAGING_H

#include <string>
#include <vector>

#include "model.h"
#include "parse.h"

namespace uci {

// Replays the staged changes in text over pkg.
bool apply_staged(const std::string &text, Package *pkg, ParseError *err);

// One change line, its words written so that they read back unchanged.
std::string staged_line(const std::vector<std::string> &words);

}  // namespace uci

#endif
