// Where the contract makes a built-in different from the rest. Whatever is not named here propagates NULL, announces a result without
// NULLs from its arguments' flags, and never fails.
#ifndef BIFUN_TESTS_CONTRACT_EXCEPTIONS_H
#define BIFUN_TESTS_CONTRACT_EXCEPTIONS_H

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string_view>

#include "bop/bifun.h"

namespace contract {

enum class null_rule : std::uint8_t {
    propagates,
    replaced,  // NVL: the second argument stands in for a NULL
    chosen,    // IF: the NULL of the argument chosen; the condition's own flag does not count, its value does even behind a NULL, and
               // the result's no-null flag is only ever cleared
    never_null // LNNVL: reads the condition as IF does
};

struct null_exception {
    std::string_view builtin;
    null_rule rule;
};

inline constexpr null_exception null_exceptions[] = {
    {"NVL", null_rule::replaced}, {"IF", null_rule::chosen}, {"LNNVL", null_rule::never_null}};

constexpr null_rule null_rule_of(std::string_view builtin) {
    const auto* const found = std::ranges::find(null_exceptions, builtin, &null_exception::builtin);
    return found == std::end(null_exceptions) ? null_rule::propagates : found->rule;
}

// A BIGINT in the first argument for which the built-in fails.
struct failing_value {
    std::string_view builtin;
    std::int64_t value;
    std::int32_t status;
};

// The smallest BIGINT has no magnitude.
inline constexpr failing_value failing_values[] = {{"ABS", std::numeric_limits<std::int64_t>::min(), BIFUN_NUMERIC_OVERFLOW}};

constexpr const failing_value* failing_value_of(std::string_view builtin) {
    const auto* const found = std::ranges::find(failing_values, builtin, &failing_value::builtin);
    return found == std::end(failing_values) ? nullptr : found;
}

} // namespace contract

#endif
