// Where the contract makes a built-in different from the rest. Whatever is not named here propagates NULL, and announces a result
// without NULLs from its arguments' flags.
#ifndef BIFUN_TESTS_CONTRACT_EXCEPTIONS_H
#define BIFUN_TESTS_CONTRACT_EXCEPTIONS_H

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace contract {

enum class null_rule : std::uint8_t {
    propagates,
    replaced,   // NVL: the second argument stands in for a NULL
    chosen,     // IF: the NULL of the argument chosen; the condition's own flag does not count, its value does even behind a NULL, and
                // the result's no-null flag is only ever cleared
    first_only, // TO_CHAR: constants go by their length, whatever their flags say
    never_null  // LNNVL: reads the condition as IF does
};

struct null_exception {
    std::string_view builtin;
    null_rule rule;
};

inline constexpr null_exception null_exceptions[] = {
    {"NVL", null_rule::replaced}, {"IF", null_rule::chosen}, {"TO_CHAR", null_rule::first_only}, {"LNNVL", null_rule::never_null}};

constexpr null_rule null_rule_of(std::string_view builtin) {
    const auto* const found = std::ranges::find(null_exceptions, builtin, &null_exception::builtin);
    return found == std::end(null_exceptions) ? null_rule::propagates : found->rule;
}

// Built-ins whose constants no other form takes as a column: nothing to compare them with.
inline constexpr std::string_view constants_only[] = {"BITAND", "TO_CHAR"};

} // namespace contract

#endif
