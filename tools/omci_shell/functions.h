// The exported functions the shell can call, one row per function: its
// name, its parameters as text, and a call that hands the parsed arguments
// to the function.  A family adds a FunctionList of rows as it lands.
//
// Parameters: comma-separated "DIR TYPE NAME", DIR in, out or inout, TYPE
// one of
//   u32          a word; out and inout pass a pointer to it
//   bytes[N]     N bytes, typed as hex
//   text[N]      a NUL-terminated string in N bytes
//   rec:LAYOUT   a record of the public headers (see ketool::find_record),
//                typed as field=value[,field=value...] or as hex
// An in or inout argument is one word of the command; an out argument
// takes none.  "null" passes a null pointer for a bytes, text or rec.
#ifndef KE_OMCI_SHELL_FUNCTIONS_H
#define KE_OMCI_SHELL_FUNCTIONS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "record.h"
#include "rows.h"

namespace omcishell {

enum class Dir { In, Out, InOut };
enum class Type { U32, Bytes, Text, Rec };

struct Param {
    Dir dir;
    Type type;
    uint32_t size;                 // bytes of a Bytes, Text or Rec
    const ketool::Layout *layout;  // Rec
    std::string name;
};

// Parses a parameter text; false with the reason.
bool parse_params(const char *text, std::vector<Param> *params, std::string *why);

// The arguments of one call, slot by slot in parameter order.
class Args {
public:
    uint32_t u32(size_t i) const { return slots_.at(i).word; }
    uint32_t *word(size_t i) { return &slots_.at(i).word; }
    void *bytes(size_t i) { return slots_.at(i).null ? nullptr : slots_.at(i).bytes.data(); }
    char *text(size_t i) { return static_cast<char *>(bytes(i)); }

    struct Slot {
        uint32_t word = 0;
        std::vector<uint8_t> bytes;
        bool null = false;
    };
    std::vector<Slot> &slots() { return slots_; }

private:
    std::vector<Slot> slots_;
};

struct Function {
    const char *name;
    const char *params;
    uint32_t (*call)(Args &args);
};

using FunctionList = ketool::Rows<Function>;

extern const FunctionList kPonFunctions;
extern const FunctionList kDeviceFunctions;

std::vector<const Function *> all_functions();
const Function *find_function(const std::string &name);

}  // namespace omcishell

#endif
