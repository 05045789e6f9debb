// Where the contract makes a built-in different from the rest. Whatever is not named here propagates NULL, and announces a result
// without NULLs from its arguments' flags.
#ifndef BIFUN_TESTS_CONTRACT_EXCEPTIONS_H
#define BIFUN_TESTS_CONTRACT_EXCEPTIONS_H

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "bop/frame/catalogue.h"

namespace contract {

enum class null_rule : std::uint8_t {
    propagates,
    replaced,   // NVL: the second argument stands in for a NULL
    chosen,     // IF: the NULL of the argument chosen; the condition's own flag does not count, its value does even behind a NULL, and
                // the result's no-null flag is only ever cleared
    first_only, // TO_CHAR: constants go by their length, whatever their flags say
    never_null, // LNNVL: reads the condition as IF does
    defaulted,  // TO_DAYS: today stands in for a NULL, and the argument's flag is passed on all the same
    adds_nulls  // propagates, but a row without a NULL may be NULL too, which clears the no-null flag
};

struct null_exception {
    std::string_view name; // of a built-in or an entry point
    null_rule rule;
};

inline constexpr null_exception null_exceptions[] = {{"NVL", null_rule::replaced},
                                                     {"IF", null_rule::chosen},
                                                     {"TO_CHAR", null_rule::first_only},
                                                     {"LNNVL", null_rule::never_null},
                                                     {"TO_DAYS", null_rule::defaulted},
                                                     // A negative length.
                                                     {"SUBSTR", null_rule::adds_nulls},
                                                     {"SUBSTRB", null_rule::adds_nulls},
                                                     // An empty pattern.
                                                     {"INSTR", null_rule::adds_nulls},
                                                     {"INSTRB", null_rule::adds_nulls},
                                                     {"POSITION", null_rule::adds_nulls},
                                                     {"LOCATE", null_rule::adds_nulls},
                                                     // A text that is no datetime.
                                                     {"bextract_str_va_date", null_rule::adds_nulls},
                                                     {"bextract_str_ex_va_date", null_rule::adds_nulls},
                                                     {"WEEKDAY", null_rule::adds_nulls},
                                                     {"blast_day_str_a_date", null_rule::adds_nulls}};

constexpr null_rule null_rule_of(const bifun::entry_point& entry) {
    const auto* const found = std::ranges::find_if(null_exceptions, [&](const null_exception& exception) {
        return exception.name == entry.builtin || exception.name == entry.symbol;
    });
    return found == std::end(null_exceptions) ? null_rule::propagates : found->rule;
}

// Arguments, by their positions, that no other form of the built-in takes as a column: nothing to compare their constants with.
struct constant_arguments {
    std::string_view name; // of a built-in or an entry point
    std::string_view positions;
};

inline constexpr constant_arguments constants_only[] = {{"bnvl_varbinary_av", "1"},
                                                        {"BITAND", "01"},
                                                        {"TO_CHAR", "12"},
                                                        {"TRIM", "0"},
                                                        {"SUBSTRB", "12"},
                                                        {"LEFT", "1"},
                                                        {"RIGHT", "1"},
                                                        {"SUBSTRING_INDEX", "2"},
                                                        {"binstr_avvv_str", "123"},
                                                        {"binstr_def1_avv_str", "12"},
                                                        {"INSTRB", "123"},
                                                        {"POSITION", "0"},
                                                        {"LOCATE", "2"},
                                                        {"EXTRACT", "0"},
                                                        {"DATEPART", "01"},
                                                        {"DATEDIFF", "0"},
                                                        {"BIGDATEDIFF", "0"},
                                                        {"DATEADD", "0"},
                                                        {"NEXT_DAY", "1"},
                                                        {"NUMTOYMINTERVAL", "1"},
                                                        {"NUMTODSINTERVAL", "1"}};

constexpr bool is_constant_only(const bifun::entry_point& entry, std::size_t position) {
    return std::ranges::any_of(constants_only, [&](const constant_arguments& arguments) {
        return (arguments.name == entry.builtin || arguments.name == entry.symbol) &&
               arguments.positions.find(static_cast<char>('0' + position)) != std::string_view::npos;
    });
}

// Trimming the leading side leaves the value of a row as it was, though the row is not NULL, where the text begins with white space and the
// set has none.
constexpr bool may_keep_values(std::string_view builtin) { return builtin == "LTRIM" || builtin == "TRIM"; }

// The entry point whose constant may be empty and then decides alone: its rows are not NULL where the other form's are.
inline constexpr std::string_view decides_by_constant = "bltrim_va_str";

} // namespace contract

#endif
