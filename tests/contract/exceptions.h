// Where the contract makes a built-in different from the rest. Whatever is not named here propagates NULL, and announces a result
// without NULLs from its arguments' flags. Names, with blanks between, are of built-ins and entry points.
#ifndef BIFUN_TESTS_CONTRACT_EXCEPTIONS_H
#define BIFUN_TESTS_CONTRACT_EXCEPTIONS_H

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "bop/frame/catalogue.h"

namespace contract {

constexpr bool is_named(const bifun::entry_point& entry, std::string_view names) {
    while (!names.empty()) {
        const std::string_view name = names.substr(0, names.find(' '));
        if (name == entry.builtin || name == entry.symbol) {
            return true;
        }
        names.remove_prefix(std::min(name.size() + 1, names.size()));
    }
    return false;
}

enum class null_rule : std::uint8_t {
    propagates,
    replaced,   // NVL: the second argument stands in for a NULL
    chosen,     // IF: the NULL of the argument chosen; the condition's own flag does not count, its value does even behind a NULL, and
                // the result's no-null flag is only ever cleared
    first_only, // TO_CHAR: constants go by their length, whatever their flags say
    never_null, // LNNVL: reads the condition as IF does
    defaulted,  // TO_DAYS: today stands in for a NULL, and the argument's flag is passed on all the same
    adds_nulls  // propagates, but a row without a NULL may be NULL too: the no-null flag is always cleared
};

constexpr null_rule null_rule_of(const bifun::entry_point& entry) {
    // A negative length, an empty pattern, a text that is no datetime.
    constexpr std::string_view adding = "bsubstr_avv_str bsubstr_ava_str bsubstr_aav_str bsubstr_aaa_str bsubstrb_avv_str INSTR INSTRB "
                                        "POSITION LOCATE bextract_str_va_date bextract_str_ex_va_date WEEKDAY blast_day_str_a_date";
    return is_named(entry, "NVL")       ? null_rule::replaced
           : is_named(entry, "IF")      ? null_rule::chosen
           : is_named(entry, "TO_CHAR") ? null_rule::first_only
           : is_named(entry, "LNNVL")   ? null_rule::never_null
           : is_named(entry, "TO_DAYS") ? null_rule::defaulted
           : is_named(entry, adding)    ? null_rule::adds_nulls
                                        : null_rule::propagates;
}

// Entry points, by the position of an argument, that no other form of the built-in has with a column there: nothing to compare their
// constants with.
inline constexpr std::string_view constants_only[] = {
    "BITAND TRIM POSITION EXTRACT DATEPART DATEDIFF BIGDATEDIFF DATEADD",
    "BITAND TO_CHAR SUBSTRB LEFT RIGHT binstr_avvv_str binstr_def1_avv_str INSTRB DATEPART NEXT_DAY NUMTOYMINTERVAL NUMTODSINTERVAL "
    "bnvl_varbinary_av",
    "TO_CHAR SUBSTRB SUBSTRING_INDEX LOCATE binstr_avvv_str binstr_def1_avv_str INSTRB",
    "binstr_avvv_str INSTRB",
    "",
};

constexpr bool is_constant_only(const bifun::entry_point& entry, std::size_t position) { return is_named(entry, constants_only[position]); }

// Trimming the leading side leaves the value of a row as it was, though the row is not NULL, where the text begins with white space and the
// set has none.
constexpr bool may_keep_values(const bifun::entry_point& entry) { return is_named(entry, "LTRIM TRIM"); }

// The entry point whose constant may be empty and then decides alone: its rows are not NULL where the other form's are.
inline constexpr std::string_view decides_by_constant = "bltrim_va_str";

} // namespace contract

#endif
