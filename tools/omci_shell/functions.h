// The exported functions the shell can call, one row per function: its
// name, its parameters as text, a call that hands the parsed arguments to
// the function, and what the function's C type says about its parameters
// (read off the function itself, so a row cannot describe a pointer as a
// number or a record smaller than the one the function writes).
//
// Parameters: comma-separated "DIR TYPE NAME", DIR in, out, inout or
// return (the function's result, when it is a value rather than a status),
// TYPE one of
//   u32, u16, u8   a number; out and inout pass a pointer to it
//   ipv4           four bytes in network order, typed a.b.c.d
//   u32[N]         N words, typed as a comma-separated list
//   bytes[N]       N bytes, typed as hex
//   text[N]        a NUL-terminated string in N bytes
//   rec:LAYOUT     a record of the public headers (see ketool::find_record),
//                  typed as field=value[,field=value...] or as hex;
//                  rec:LAYOUT[N] is an array of N of them
//   count:NAME     a number no larger than NAME's elements (bytes, words or
//                  records): the length the function is told of NAME
// An in or inout argument is one word of the command; an out argument
// takes none.  "null" passes a null pointer for an ipv4, u32[N], bytes,
// text or rec argument.
#ifndef KE_OMCI_SHELL_FUNCTIONS_H
#define KE_OMCI_SHELL_FUNCTIONS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "record.h"
#include "rows.h"

namespace omcishell {

enum class Dir { In, Out, InOut, Return };
enum class Type { U32, U16, U8, Ipv4, Words, Bytes, Text, Rec, Count };

struct Param {
    Dir dir;
    Type type;
    uint32_t size;                 // bytes
    uint32_t count;                // words, records or bytes it holds
    const ketool::Layout *layout;  // Rec
    int bound;                     // Count: the parameter it measures
    std::string name;
    std::string of;                // Count: that parameter's name
};

// Parses a parameter text; false with the reason.
bool parse_params(const char *text, std::vector<Param> *params, std::string *why);

// The arguments of one call, slot by slot in the C function's order.
class Args {
public:
    struct Slot {
        std::vector<uint8_t> bytes;  // the value, or what a pointer points at
        bool null = false;
    };

    uint32_t value(size_t i) const;
    void *ptr(size_t i);
    std::vector<Slot> &slots() { return slots_; }

private:
    std::vector<Slot> slots_;
};

// One parameter of the C function: passed by value or by pointer, the
// bytes a pointer points at (0 for void) and whether they are const.
struct CParam {
    bool pointer;
    uint32_t pointee;
    bool read_only;
};

enum class Result { None, Word, Int };

struct Function {
    const char *name;
    const char *params;
    uint32_t (*call)(Args &args);
    const CParam *cparams;
    size_t arity;
    Result result;
};

using FunctionList = ketool::Rows<Function>;

// False, with the reason, when params do not fit the C function.
bool fits(const Function &f, const std::vector<Param> &params, std::string *why);

extern const FunctionList kPonFunctions;
extern const FunctionList kBridgeQosFunctions;
extern const FunctionList kStatFunctions;
extern const FunctionList kMcFunctions;
extern const FunctionList kVlanFunctions;
extern const FunctionList kDeviceFunctions;
extern const FunctionList kLifecycleFunctions;
extern const FunctionList kVoipWanFunctions;
extern const FunctionList kVoipFunctions;
extern const FunctionList kRemoteMgmtFunctions;

std::vector<const Function *> all_functions();
const Function *find_function(const std::string &name);

// ---- Rows from the functions themselves ---------------------------------

template <class T>
constexpr CParam cparam_of()
{
    if constexpr (std::is_pointer_v<T>) {
        using P = std::remove_pointer_t<T>;
        if constexpr (std::is_void_v<P>)
            return {true, 0, std::is_const_v<P>};
        else
            return {true, static_cast<uint32_t>(sizeof(P)), std::is_const_v<P>};
    } else {
        static_assert(std::is_integral_v<T> && sizeof(T) == 4, "a 32-bit number by value");
        return {false, 4, false};
    }
}

template <class T>
T arg_of(Args &a, size_t i)
{
    if constexpr (std::is_pointer_v<T>)
        return static_cast<T>(a.ptr(i));
    else
        return static_cast<T>(a.value(i));
}

template <class F>
struct Signature;

template <class R, class... A>
struct Signature<R (*)(A...)> {
    static constexpr std::array<CParam, sizeof...(A)> kParams{{cparam_of<A>()...}};
    static constexpr Result kResult =
        std::is_void_v<R> ? Result::None : std::is_signed_v<R> ? Result::Int : Result::Word;

    template <auto Fn, size_t... I>
    static uint32_t call([[maybe_unused]] Args &a, std::index_sequence<I...>)
    {
        if constexpr (std::is_void_v<R>) {
            Fn(arg_of<A>(a, I)...);
            return 0;
        } else {
            return static_cast<uint32_t>(Fn(arg_of<A>(a, I)...));
        }
    }
};

// An entry that ignores its arguments is called with none.
template <class R>
struct Signature<R (*)(...)> : Signature<R (*)()> {};

template <auto Fn>
uint32_t invoke(Args &a)
{
    using S = Signature<decltype(Fn)>;
    return S::template call<Fn>(a, std::make_index_sequence<S::kParams.size()>{});
}

template <auto Fn>
constexpr Function row(const char *name, const char *params)
{
    using S = Signature<decltype(Fn)>;
    return {name, params, &invoke<Fn>, S::kParams.data(), S::kParams.size(), S::kResult};
}

}  // namespace omcishell

// A row for the exported function fn.
#define KE_SHELL_FN(fn, params) omcishell::row<&fn>(#fn, params)

#endif
