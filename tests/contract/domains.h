// Which values arguments may take, and calls that fail because one takes another. An argument that is not named here takes any value of its
// type.
#ifndef BIFUN_TESTS_CONTRACT_DOMAINS_H
#define BIFUN_TESTS_CONTRACT_DOMAINS_H

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "bop/bifun.h"
#include "bop/frame/catalogue.h"
#include "embedded/columns/column_storage.h"
#include "engine/number_format.h"
#include "tests/contract/exceptions.h"
#include "tests/contract/generated_batch.h"

namespace contract {

using bifun::value_type;

// Numbers and the years of datetimes lie from `low` to `high`, or are NaN; where there are texts, values are some of these, written as in
// a text_case with ` | ` between. A range need not be all that is allowed.
struct argument_domain {
    long double low, high;  // of 64 bits, so that every BIGINT is one
    std::string_view names; // of built-ins and of entry points, which come first
    std::string_view texts = {};
    std::size_t position;
    value_type type;
    bool takes_nan = true;
    bool others_fail = true; // not where others are allowed and these are only the ones that tell

    constexpr argument_domain(std::string_view names, std::size_t position, value_type type, long double low, long double high,
                              bool takes_nan = true)
        : low(low), high(high), names(names), position(position), type(type), takes_nan(takes_nan) {}
    constexpr argument_domain(std::string_view names, std::size_t position, value_type type, std::string_view texts,
                              bool others_fail = true)
        : low(0), high(0), names(names), texts(texts), position(position), type(type), others_fail(others_fail) {}
};

inline constexpr long double infinity = std::numeric_limits<long double>::infinity();
inline constexpr long double above_zero = std::numeric_limits<double>::denorm_min();
inline constexpr long double above_one = 1.0 + std::numeric_limits<double>::epsilon();
inline constexpr long double first_year = -3000, last_year = 8000; // 1000 years can be added or taken away

inline constexpr std::string_view patterns = "a | '' | z | _ | x | __ | zz | z_ | 日 | Z | z*31 | z*32 | z*300&_ | 本語";
inline constexpr std::string_view fields = "1 | 2 | 3 | 4 | 5 | 6 | 7 | 8 | 9 | 10 | 11";
inline constexpr std::string_view datetime_texts =
    "2024-02-29 | 2024-02-29T01:02:03.000004-14:00 | 1582-10-15 | 1582-10-04T23:59:59 | -4712-01-01 | x | 9999-12-31T23:59:59.999999 | "
    "13:45:06.5 | '' | 2023-02-29 | a*49";

inline constexpr argument_domain argument_domains[] = {
    // The smallest BIGINT has no magnitude.
    {"ABS", 0, value_type::BIGINT, -9223372036854775807.0L, 9223372036854775807.0L},
    // Beyond these, or at 0, the function has no value.
    {"ACOS ASIN", 0, value_type::DOUBLE, -1, 1},
    {"ATAN2 COT LN LOG10", 0, value_type::DOUBLE, above_zero, infinity},
    {"LOG", 0, value_type::DOUBLE, above_one, infinity},
    {"LOG", 1, value_type::DOUBLE, above_zero, infinity},
    {"POWER", 0, value_type::DOUBLE, 1e-3L, 1e3L},
    {"SQRT", 0, value_type::DOUBLE, 0, infinity},
    // Beyond these the result overflows.
    {"COSH SINH", 0, value_type::DOUBLE, -710, 710},
    {"DEGREES", 0, value_type::DOUBLE, -1e305L, 1e305L},
    {"EXP", 0, value_type::DOUBLE, -800, 709},
    {"POWER", 1, value_type::DOUBLE, -100, 100},
    {"ROUND", 0, value_type::DOUBLE, -1e300L, 1e300L},
    // 38 digits before the point.
    {"BITAND", 0, value_type::DECIMAL, -1e38L, 1e38L},
    {"BITAND", 1, value_type::DECIMAL, -1e38L, 1e38L},
    // Under a format a DOUBLE becomes a DECIMAL first.
    {"TO_CHAR", 0, value_type::DOUBLE, -1e126L, 1e126L, false},
    // These texts have a grammar.
    {"TO_CHAR", 1, value_type::VARCHAR, "9,999,990.00 | FM999999999990.099 | S9.99EEEE | TM | L99G999D99MI | 9*75"},
    {"TO_CHAR", 2, value_type::VARCHAR, "NLS_NUMERIC_CHARACTERS=',.' | NLS_CURRENCY='&a*90&' | nls_currency=EUR"},
    {"TRUNC", 0, value_type::VARCHAR,
     "0 | 7. | .5 | 00120.00 | 123.456 | 99999999999999999999.999999999999999999 | 9007199254740993 | 1*300 | 0*319 | 0*500 | 8__"},
    // Exactly one character, or where it comes from a column none.
    {"TRIM", 0, value_type::INT, "579 | 580 | 0 | -1", false},
    {"btrim_vav_str", 2, value_type::VARCHAR, "x | _ | z | a | 日 | \t"},
    {"TRIM", 2, value_type::VARCHAR, "x | '' | _ | z | a | 日 | \t"},
    {"LTRIM RTRIM", 1, value_type::VARCHAR, "xy | '' | xy_ | _ | __ | z日 | aeiou |  x | \tx | b*60", false},
    {"LEFT RIGHT", 1, value_type::INT, 0, INT32_MAX},
    {"SUBSTRING_INDEX", 2, value_type::INT, "1 | -1 | 0 | 2 | -2 | 2147483647 | -2147483648", false},
    {"SUBSTRING_INDEX INSTR INSTRB", 1, value_type::VARCHAR, patterns, false},
    {"POSITION LOCATE", 0, value_type::VARCHAR, patterns, false},
    {"INSTR INSTRB", 3, value_type::INT, "1 | 2 | 3 | 2147483647"},
    // The fields that the kind of value has.
    {"bextract_date_va_date", 0, value_type::INT, "1 | 2 | 3"},
    {"bextract_time_va_date", 0, value_type::INT, "4 | 5"},
    {"bextract_time_ex_va_date bextract_iv_dt_ex_va_date bextract_str_ex_va_date", 0, value_type::INT, "6"},
    {"bextract_datetime_tz_va_date", 0, value_type::INT, "1 | 2 | 3 | 4 | 5 | 12 | 13"},
    {"bextract_time_tz_va_date", 0, value_type::INT, "4 | 5 | 12 | 13"},
    {"bextract_iv_ym_va_date", 0, value_type::INT, "1 | 2"},
    {"bextract_iv_dt_va_date", 0, value_type::INT, "3 | 4 | 5 | 6 | 7"},
    {"EXTRACT", 0, value_type::INT, "1 | 2 | 3 | 4 | 5"},
    {"DATEPART DATEADD", 0, value_type::INT, fields},
    {"DATEPART", 1, value_type::VARCHAR, "DAYOFYEAR | d | YY | week | ms | Q | y | n | WEEKDAY | hour"},
    {"DATEDIFF", 0, value_type::INT, "1 | 2 | 3 | 4 | 8 | 9 | 10 | 11"},
    {"BIGDATEDIFF", 0, value_type::INT, "1 | 2 | 3 | 4 | 5 | 6 | 7 | 8 | 9 | 10"},
    // Results stay within the years -4712 to 9999.
    {"ADD_DAYS ADD_WEEKS ADD_MONTHS DATE_ADD DATE_SUB NEXT_DAY", 0, value_type::DATETIME, first_year, last_year},
    {"DATEADD", 1, value_type::BIGINT, -1000, 1000},
    {"DATEADD", 2, value_type::DATETIME, first_year, last_year},
    {"ADD_DAYS", 1, value_type::DOUBLE, -3e5L, 3e5L, false},
    {"ADD_WEEKS", 1, value_type::INT, -50000, 50000},
    {"ADD_MONTHS", 1, value_type::INT, -12000, 12000},
    {"DATE_ADD DATE_SUB", 1, value_type::INTERVAL_YM, "1/1 | -1/-1 | 0/0 | 1000/11 | -1000/-11 | 0/1 | 3/-4 | 0/-11999"},
    {"NEXT_DAY", 1, value_type::VARCHAR, "MONDAY | sun | Saturday"},
    // Years or days of 32 bits.
    {"NUMTOYMINTERVAL NUMTODSINTERVAL", 0, value_type::DECIMAL, -2e9L, 2e9L},
    {"NUMTOYMINTERVAL", 1, value_type::VARCHAR, "YEAR | month"},
    {"NUMTODSINTERVAL", 1, value_type::VARCHAR, "DAY | hour | MINUTE | second"},
    // Texts of datetimes among others.
    {"EXTRACT", 1, value_type::VARCHAR, datetime_texts, false},
    {"WEEKDAY LAST_DAY", 0, value_type::VARCHAR, datetime_texts, false},
};

// Null where any value is allowed.
const argument_domain* domain_of(const bifun::entry_point& entry, std::size_t position);

// generate_column for an argument of the entry point, with values of its domain in place of those outside.
zqengine::column_pointer sound_column(const bifun::entry_point& entry, std::size_t position, std::uint32_t row_count, double null_rate,
                                      std::uint64_t seed);

// How many values of an argument are worth a test of their own: the texts of its domain, or else its type's boundary values. They come
// first in a sound_column with seed 0.
std::size_t value_count(const bifun::entry_point& entry, std::size_t position);

// What the row at which a batch has stopped holds: nothing new, a 0 that is not NULL, or a NULL.
enum class failing_row : std::uint8_t { unwritten, zero, null };

inline constexpr std::size_t in_no_position = bifun::most_arguments;

// Calls that fail for one reason, with ` ; ` between. Arguments are written as in a text_case. Where the one in position
// `seen_before_rows` is a constant, the batch fails as a whole: every row is NULL.
struct failing_calls_of {
    std::string_view names; // of built-ins and of entry points
    std::string_view calls;
    std::int32_t status;
    failing_row row = failing_row::null;
    std::size_t seen_before_rows = in_no_position;
    std::optional<value_type> first_type = {}; // any without
    std::uint32_t compatible_mode = 0;
};

struct failing_call : failing_calls_of {
    std::vector<std::string> arguments;

    [[nodiscard]] bool is_of(const bifun::entry_point& entry) const {
        return is_named(entry, names) && entry.argument_count == arguments.size() &&
               (!first_type || entry.argument_list[0].type == *first_type);
    }
};

inline constexpr std::int32_t domain_error = BIFUN_ARGUMENT_OUT_OF_DOMAIN;
inline constexpr std::int32_t overflow = BIFUN_NUMERIC_OVERFLOW;
inline constexpr std::int32_t not_a_datetime = BIFUN_INVALID_DATETIME;

// Calls for each check of each built-in.
inline constexpr failing_calls_of failures[] = {
    {"ABS", "-9223372036854775808", overflow, failing_row::unwritten, in_no_position, value_type::BIGINT},
    {"ACOS ASIN", "1.0000000000000002 ; -1.0000000000000002 ; -inf", domain_error, failing_row::zero},
    {"ATAN2", "0 -0.0", domain_error, failing_row::zero},
    {"BITAND", "100000000000000000000000000000000000000.5 0", overflow, failing_row::null, 0},
    {"BITAND", "0 -1E38", overflow, failing_row::null, 1},
    {"COSH", "-711", overflow, failing_row::zero},
    {"COT LN LOG10", "0 ; -0.0", domain_error, failing_row::zero},
    {"DEGREES", "-1e307", overflow, failing_row::zero},
    {"EXP", "710", overflow, failing_row::zero},
    {"LN LOG10 SQRT", "-4.9e-324 ; -1e-300", domain_error, failing_row::zero},
    {"LOG", "-0.0 8 ; 2 0 ; 1 10", domain_error, failing_row::zero},
    {"POWER", "-0.0 -1 ; -8 0.5 ; -8 nan", domain_error, failing_row::zero},
    {"POWER", "10 400 ; -10 401", overflow, failing_row::zero},
    {"ROUND", "-inf 39 ; 1.7e308 -308", overflow, failing_row::zero, in_no_position, value_type::DOUBLE},
    {"SINH", "711 ; -inf", overflow, failing_row::unwritten},
    {"TO_CHAR", "inf ; -inf 9 ; nan 9 NLS_CURRENCY=x", overflow, failing_row::null, in_no_position, value_type::DOUBLE},
    {"TO_CHAR", "1 9x ; 1 9x NLS_CURRENCY=x", ZQ_INVALID_NUMBER_FORMAT},
    {"TO_CHAR", "1 9 NLS_CURRENCY=x&y*115 ; 1 9 ''", BIFUN_INVALID_NLS_PARAMETER, failing_row::null, 2},
    {"TO_CHAR", "1 9 x", ZQ_INVALID_NLS_PARAMETERS},
    // Not digits, or a number beyond DOUBLE.
    {"TRUNC", "12a 0 ; 1.2.3 -5 ; 9*319 1", domain_error, failing_row::null, in_no_position, value_type::VARCHAR},
    {"TRIM", "0 abc xy ; 579 abc x_ ; 580 _ __", BIFUN_TRIM_SET_NOT_ONE_CHARACTER, failing_row::null, 2},
    {"btrim_vav_str", "0 abc ''", BIFUN_TRIM_SET_NOT_ONE_CHARACTER, failing_row::null, 2},
    {"SUBSTR", "abc 1 -1", BIFUN_NEGATIVE_SUBSTRING_LENGTH, failing_row::null, in_no_position, {}, 1},
    {"SUBSTRB", "abc -3 -2147483648", domain_error, failing_row::null, in_no_position, {}, 1},
    {"LEFT RIGHT", "abc -1 ; abc -2147483648", domain_error, failing_row::null, 1},
    {"INSTR INSTRB", "abc b 1 0 ; abc b -1 -2147483648", domain_error, failing_row::null, 3},
    {"bextract_datetime_va_date bextract_datetime_tz_va_date bextract_str_va_date", "6 2024-02-29", domain_error},
    {"bextract_datetime_va_date", "0 2024-02-29", domain_error},
    {"bextract_datetime_tz_va_date", "14 2024-02-29", domain_error},
    {"bextract_date_va_date", "4 2024-02-29", domain_error},
    {"bextract_time_va_date bextract_time_tz_va_date", "3 2024-02-29", domain_error},
    {"bextract_time_ex_va_date bextract_str_ex_va_date", "5 2024-02-29", domain_error},
    {"bextract_time_tz_va_date", "11 2024-02-29", domain_error},
    {"bextract_iv_ym_va_date", "3 1/2", domain_error},
    {"bextract_iv_dt_va_date", "2 1/2/3/4/5 ; 8 1/2/3/4/5", domain_error},
    {"bextract_iv_dt_ex_va_date", "7 1/2/3/4/5", domain_error},
    {"bdatepart1_va_date", "0 2024-02-29 ; 12 2024-02-29", domain_error},
    {"bdatepart_av_date", "2024-02-29 x ; 2024-02-29 WEEK_ ; 2024-02-29 a*49", domain_error, failing_row::null, 1},
    {"DATEDIFF", "12 2024-02-29 2024-02-29", domain_error},
    {"DATEDIFF", "6 1900-01-01 2024-02-29", overflow},
    {"BIGDATEDIFF", "0 2024-02-29 2024-02-29 ; 11 2024-02-29 2024-02-29", domain_error},
    {"DATEADD", "12 1 2024-02-29", domain_error},
    {"DATEADD", "1 8000 2024-02-29 ; 6 -9223372036854775808 2024-02-29", not_a_datetime},
    {"ADD_DAYS ADD_MONTHS", "9999-12-31 1", not_a_datetime},
    {"ADD_DAYS", "2024-02-29 nan", domain_error},
    {"ADD_WEEKS", "-4712-01-01 -1", not_a_datetime},
    {"DATE_ADD", "9999-12-31 0/1", not_a_datetime},
    {"DATE_SUB", "-4712-01-01 0/1", not_a_datetime},
    {"NEXT_DAY", "9999-12-31 MONDAY", not_a_datetime},
    {"NEXT_DAY", "2024-02-29 m*20", BIFUN_DAY_NAME_TOO_LONG, failing_row::null, 1},
    {"NEXT_DAY", "2024-02-29 '' ; 2024-02-29 Montag", BIFUN_UNKNOWN_DAY_NAME, failing_row::null, 1},
    {"NUMTOYMINTERVAL", "1 DAY", domain_error},
    {"NUMTOYMINTERVAL", "3000000000 YEAR", overflow},
    {"NUMTODSINTERVAL", "1 MONTH", domain_error},
    {"NUMTODSINTERVAL", "-3000000000 DAY", overflow},
};

// Every call of these.
std::vector<failing_call> failing_calls();

} // namespace contract

#endif
