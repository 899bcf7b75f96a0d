// The commands: get, set, add, add_list, commit, show, export.
#ifndef UCI_COMMANDS_H
#define UCI_COMMANDS_H

#include <string>
#include <vector>

#include "store.h"

namespace uci {

struct Context {
    Store store;
    bool quiet = false;  // no error messages
};

// Runs args[0] with the rest as its arguments: 0 on success, 1 on a
// failure (reported on stderr unless quiet), -1 when args[0] is not a
// command or its arguments do not fit it.
int run_command(const Context &ctx, const std::vector<std::string> &args);

}  // namespace uci

#endif
