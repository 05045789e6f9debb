// Which values arguments may take, and calls that fail because one takes another. A built-in's argument of a type that is not named here
// takes any value.
#ifndef BIFUN_TESTS_CONTRACT_DOMAINS_H
#define BIFUN_TESTS_CONTRACT_DOMAINS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string_view>

#include "bop/bifun.h"
#include "bop/frame/catalogue.h"
#include "embedded/columns/column_storage.h"
#include "engine/number_format.h"
#include "tests/contract/generated_batch.h"

namespace contract {

using bifun::value_type;

// Numbers lie from `low` to `high`, or are NaN; texts are some of `texts`. A range need not be all that is allowed.
struct argument_domain {
    std::string_view builtin;
    std::size_t position;
    value_type type;
    long double low, high; // of 64 bits, so that every BIGINT is one
    std::span<const std::string_view> texts = {};
    bool takes_nan = true;
};

inline constexpr long double infinity = std::numeric_limits<long double>::infinity();
inline constexpr long double above_zero = std::numeric_limits<double>::denorm_min();
inline constexpr long double above_one = 1.0 + std::numeric_limits<double>::epsilon();

inline constexpr std::string_view digit_texts[] = {
    "0",     "7.",    ".5",    "00120.00", "123.456", "99999999999999999999.999999999999999999", "9007199254740993",
    "1*300", "0*319", "0*500", "8__"};
inline constexpr std::string_view number_formats[] = {"9,999,990.00", "FM999999999990.099", "S9.99EEEE", "TM", "L99G999D99MI", "9*75"};
inline constexpr std::string_view nls_texts[] = {"NLS_NUMERIC_CHARACTERS=',.'", "NLS_CURRENCY='&a*90&'", "nls_currency=EUR"};

inline constexpr argument_domain argument_domains[] = {
    // The smallest BIGINT has no magnitude.
    {"ABS", 0, value_type::BIGINT, -9223372036854775807.0L, 9223372036854775807.0L},
    // Beyond these, or at 0, the function has no value.
    {"ACOS", 0, value_type::DOUBLE, -1, 1},
    {"ASIN", 0, value_type::DOUBLE, -1, 1},
    {"ATAN2", 0, value_type::DOUBLE, above_zero, infinity},
    {"COT", 0, value_type::DOUBLE, above_zero, infinity},
    {"LN", 0, value_type::DOUBLE, above_zero, infinity},
    {"LOG10", 0, value_type::DOUBLE, above_zero, infinity},
    {"LOG", 0, value_type::DOUBLE, above_one, infinity},
    {"LOG", 1, value_type::DOUBLE, above_zero, infinity},
    {"POWER", 0, value_type::DOUBLE, 1e-3L, 1e3L},
    {"SQRT", 0, value_type::DOUBLE, 0, infinity},
    // Beyond these the result overflows.
    {"COSH", 0, value_type::DOUBLE, -710, 710},
    {"DEGREES", 0, value_type::DOUBLE, -1e305L, 1e305L},
    {"EXP", 0, value_type::DOUBLE, -800, 709},
    {"POWER", 1, value_type::DOUBLE, -100, 100},
    {"ROUND", 0, value_type::DOUBLE, -1e300L, 1e300L},
    {"SINH", 0, value_type::DOUBLE, -710, 710},
    // 38 digits before the point.
    {"BITAND", 0, value_type::DECIMAL, -1e38L, 1e38L},
    {"BITAND", 1, value_type::DECIMAL, -1e38L, 1e38L},
    // Under a format a DOUBLE becomes a DECIMAL first.
    {"TO_CHAR", 0, value_type::DOUBLE, -1e126L, 1e126L, {}, false},
    // These texts have a grammar.
    {"TO_CHAR", 1, value_type::VARCHAR, 0, 0, number_formats},
    {"TO_CHAR", 2, value_type::VARCHAR, 0, 0, nls_texts},
    {"TRUNC", 0, value_type::VARCHAR, 0, 0, digit_texts},
};

// Null where any value is allowed.
const argument_domain* domain_of(const bifun::entry_point& entry, std::size_t position);

// generate_column for an argument of the entry point, with values of its domain in place of those outside.
zqengine::column_pointer sound_column(const bifun::entry_point& entry, std::size_t position, std::uint32_t row_count, double null_rate,
                                      std::uint64_t seed);

// What the row at which a batch has stopped holds: nothing new, a 0 that is not NULL, or a NULL.
enum class failing_row : std::uint8_t { unwritten, zero, null };

inline constexpr std::size_t in_no_position = bifun::most_arguments;

// Arguments are written as in a text_case. Where the one in position `seen_before_rows` is a constant, the batch fails as a whole: every
// row is NULL.
struct failing_call {
    std::string_view builtin;
    std::optional<value_type> first_type; // any without
    std::array<std::string_view, 3> arguments;
    std::int32_t status;
    failing_row row;
    std::size_t seen_before_rows = in_no_position;

    [[nodiscard]] constexpr std::size_t argument_count() const { return arguments[1].empty() ? 1U : arguments[2].empty() ? 2U : 3U; }
    [[nodiscard]] constexpr bool is_of(const bifun::entry_point& entry) const {
        return entry.builtin == builtin && entry.argument_count == argument_count() &&
               (!first_type || entry.argument_list[0].type == *first_type);
    }
};

inline constexpr std::int32_t domain_error = BIFUN_ARGUMENT_OUT_OF_DOMAIN;
inline constexpr std::int32_t overflow = BIFUN_NUMERIC_OVERFLOW;

// One for each check of each built-in.
inline constexpr failing_call failing_calls[] = {
    {"ABS", value_type::BIGINT, {"-9223372036854775808"}, overflow, failing_row::unwritten},
    {"ACOS", {}, {"1.0000000000000002"}, domain_error, failing_row::zero},
    {"ACOS", {}, {"-1.0000000000000002"}, domain_error, failing_row::zero},
    {"ASIN", {}, {"1.0000000000000002"}, domain_error, failing_row::zero},
    {"ASIN", {}, {"-inf"}, domain_error, failing_row::zero},
    {"ATAN2", {}, {"0", "-0.0"}, domain_error, failing_row::zero},
    {"BITAND", {}, {"100000000000000000000000000000000000000.5", "0"}, overflow, failing_row::null, 0},
    {"BITAND", {}, {"0", "-1E38"}, overflow, failing_row::null, 1},
    {"COSH", {}, {"-711"}, overflow, failing_row::zero},
    {"COT", {}, {"-0.0"}, domain_error, failing_row::zero},
    {"DEGREES", {}, {"-1e307"}, overflow, failing_row::zero},
    {"EXP", {}, {"710"}, overflow, failing_row::zero},
    {"LN", {}, {"0"}, domain_error, failing_row::zero},
    {"LOG10", {}, {"-4.9e-324"}, domain_error, failing_row::zero},
    {"LOG", {}, {"-0.0", "8"}, domain_error, failing_row::zero},
    {"LOG", {}, {"2", "0"}, domain_error, failing_row::zero},
    {"LOG", {}, {"1", "10"}, domain_error, failing_row::zero},
    {"POWER", {}, {"-0.0", "-1"}, domain_error, failing_row::zero},
    {"POWER", {}, {"-8", "0.5"}, domain_error, failing_row::zero},
    {"POWER", {}, {"-8", "nan"}, domain_error, failing_row::zero},
    {"POWER", {}, {"10", "400"}, overflow, failing_row::zero},
    {"POWER", {}, {"-10", "401"}, overflow, failing_row::zero},
    {"ROUND", value_type::DOUBLE, {"-inf", "39"}, overflow, failing_row::zero},
    {"ROUND", value_type::DOUBLE, {"1.7e308", "-308"}, overflow, failing_row::zero},
    {"SINH", {}, {"711"}, overflow, failing_row::unwritten},
    {"SINH", {}, {"-inf"}, overflow, failing_row::unwritten},
    {"SQRT", {}, {"-1e-300"}, domain_error, failing_row::zero},
    {"TO_CHAR", value_type::DOUBLE, {"inf"}, overflow, failing_row::null},
    {"TO_CHAR", value_type::DOUBLE, {"-inf", "9"}, overflow, failing_row::null},
    {"TO_CHAR", value_type::DOUBLE, {"nan", "9", "NLS_CURRENCY=x"}, overflow, failing_row::null},
    {"TO_CHAR", {}, {"1", "9x"}, ZQ_INVALID_NUMBER_FORMAT, failing_row::null},
    {"TO_CHAR", {}, {"1", "9x", "NLS_CURRENCY=x"}, ZQ_INVALID_NUMBER_FORMAT, failing_row::null},
    {"TO_CHAR", {}, {"1", "9", "NLS_CURRENCY=x&y*115"}, BIFUN_INVALID_NLS_PARAMETER, failing_row::null, 2},
    {"TO_CHAR", {}, {"1", "9", "''"}, BIFUN_INVALID_NLS_PARAMETER, failing_row::null, 2},
    {"TO_CHAR", {}, {"1", "9", "x"}, ZQ_INVALID_NLS_PARAMETERS, failing_row::null},
    {"TRUNC", value_type::VARCHAR, {"12a", "0"}, domain_error, failing_row::null},
    {"TRUNC", value_type::VARCHAR, {"1.2.3", "-5"}, domain_error, failing_row::null},
    {"TRUNC", value_type::VARCHAR, {"9*319", "1"}, domain_error, failing_row::null}, // beyond DOUBLE
};

} // namespace contract

#endif
