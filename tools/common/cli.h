// What the bench's programs share on their command lines.
#ifndef KE_TOOLS_CLI_H
#define KE_TOOLS_CLI_H

#include <cstdio>
#include <string>

namespace ketool {

// Says why the command line is wrong, then the usage; the exit status 2.
inline int usage_error(const char *tool, const char *usage, const std::string &why)
{
    std::fprintf(stderr, "%s: %s\n%s", tool, why.c_str(), usage);
    return 2;
}

}  // namespace ketool

#endif
