// SPDX-License-Identifier: Apache-2.0
// Columns of values that arguments may take, and calls that fail because one takes another.
#ifndef BIFUN_TESTS_CONTRACT_DOMAINS_H
#define BIFUN_TESTS_CONTRACT_DOMAINS_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "bop/bifun.h"
#include "bop/frame/catalogue.h"
#include "embedded/columns/column_storage.h"
#include "engine/json.h"
#include "engine/number_format.h"
#include "tests/contract/generated_batch.h"

namespace contract {

using bifun::argument_fact;
using bifun::value_type;

// What the catalogue says of the argument's values; null where any of its type is allowed.
const argument_fact* domain_of(const bifun::entry_point& entry, std::size_t position);

// generate_column for an argument of the entry point, with values of its domain in place of those outside.
zqengine::column_pointer sound_column(const bifun::entry_point& entry, std::size_t position, std::uint32_t row_count, double null_rate,
                                      std::uint64_t seed);

// How many values of an argument are worth a test of their own: the texts or codes of its domain, or else its type's boundary values. They
// come first in a sound_column with seed 0.
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
        return (bifun::has_word(names, entry.builtin) || bifun::has_word(names, entry.symbol)) &&
               entry.argument_count == arguments.size() && (!first_type || entry.argument_list[0].type == *first_type);
    }
};

inline constexpr std::int32_t domain_error = BIFUN_ARGUMENT_OUT_OF_DOMAIN;
inline constexpr std::int32_t overflow = BIFUN_NUMERIC_OVERFLOW;
inline constexpr std::int32_t not_a_datetime = BIFUN_INVALID_DATETIME;

inline constexpr std::string_view numbers_under_format =
    "bto_char_av_int_to_varchar_with_fmt bto_char_av_int64_to_varchar_with_fmt bto_char_av_double_to_varchar_with_fmt bdec_to_char_av_date";
inline constexpr std::string_view numbers_under_nls = "bto_char_avv_dec_to_varchar_with_nls bto_char_avv_int_to_varchar_with_nls "
                                                      "bto_char_avv_int64_to_varchar_with_nls bto_char_avv_double_to_varchar_with_nls";
inline constexpr std::string_view dates_under_model = "bto_char_dt_av_date bto_char_dt_av_date_low bto_char_dt_av_date_real";
inline constexpr std::string_view dates_in_language = "bto_char_dt_avv_date bto_char_dt_avv_date_real";

inline constexpr std::string_view typed_json_values =
    "bjson_value_int_avv_str bjson_value_int64_avv_str bjson_value_dec_avv_str bjson_value_dbl_avv_str "
    "bjson_value_bool_avv_str bjson_value_date_avv_str bjson_value_dt_avv_str";

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
    {numbers_under_format, "1 9x", ZQ_INVALID_NUMBER_FORMAT},
    {numbers_under_nls, "1 9x NLS_CURRENCY=x", ZQ_INVALID_NUMBER_FORMAT},
    {numbers_under_nls, "1 9 NLS_CURRENCY=x&y*115 ; 1 9 ''", BIFUN_INVALID_NLS_PARAMETER, failing_row::null, 2},
    {numbers_under_nls, "1 9 x", ZQ_INVALID_NLS_PARAMETERS},
    {"bto_number_a_str bto_double_a_str", "x ; 1.2.3 ; __ ; ~", BIFUN_NOT_A_NUMBER, failing_row::null, in_no_position, {}, 2},
    {"bto_number_a_str bto_double_a_str", "1e999", overflow},
    {"TO_NUMBER TO_DOUBLE", "1x 99 ; 12, 99 ; # 9 ; '' 9 ; G XXX NLS_CURRENCY=x ; 1.5 99D9 NLS_NUMERIC_CHARACTERS=',.'",
     BIFUN_NUMBER_FORMAT_MISMATCH},
    {"TO_NUMBER TO_DOUBLE", "1e999 TM ; 1E127 9EEEE NLS_CURRENCY=x", overflow},
    {"TO_NUMBER TO_DOUBLE ISNUMERIC", "1 9x ; 1 '' ; 1 9*76 ; 1 9x NLS_CURRENCY=x", ZQ_INVALID_NUMBER_FORMAT, failing_row::null, 1},
    {"TO_NUMBER TO_DOUBLE ISNUMERIC", "1 9 x ; 1 9D9 NLS_NUMERIC_CHARACTERS='~,'", ZQ_INVALID_NLS_PARAMETERS, failing_row::null, 2},
    {"TO_NUMBER TO_DOUBLE ISNUMERIC", "1 9 '' ; 1 9 NLS_CURRENCY=x&y*115", BIFUN_INVALID_NLS_PARAMETER, failing_row::null, 2},
    {dates_under_model, "2024-02-29 YYYX ; 2024-02-29 \"a ; 2024-02-29 MONTHTH ; 2024-02-29 -*76", BIFUN_INVALID_DATE_FORMAT,
     failing_row::null, 1},
    {dates_in_language, "2024-02-29 YYYX NLS_DATE_LANGUAGE=ENGLISH", BIFUN_INVALID_DATE_FORMAT, failing_row::null, 1},
    {dates_in_language, "2024-02-29 YYYY NLS_DATE_LANGUAGE=x&y*115 ; 2024-02-29 YYYY ''", BIFUN_INVALID_NLS_PARAMETER, failing_row::null,
     2},
    {dates_in_language, "2024-02-29 YYYY NLS_DATE_LANGUAGE=GERMAN", ZQ_INVALID_NLS_PARAMETERS, failing_row::null, 2},
    {"bto_char_str_av_date", "2024-02-29 xyz ; 2024-02-29 9*76", BIFUN_INVALID_DATE_FORMAT, failing_row::null, 1},
    {"bto_char_str_av_date", "2024-02-29 999", BIFUN_NOT_A_NUMBER},
    {"bdec_to_char_av_date", "1 9*76", ZQ_INVALID_NUMBER_FORMAT},
    {"DATE_FORMAT", "2024-02-29 % ; 2024-02-29 -*76", BIFUN_INVALID_DATE_FORMAT, failing_row::null, 1},
    {"bfrom_unixtime_fmt_av_date", "0 % ; 0 -*76", BIFUN_INVALID_DATE_FORMAT, failing_row::null, 1},
    {"bto_date_def_a_date TO_TIMESTAMP",
     "2024/02/30 ; 2024 ; 2024-02-29~ ; 2024-00-01 ; 2024-01-00 ; 2024-13-01 ; 0000-01-01 ; 2024:01:01 ; 2024-01/01 ; 2024-02-29x ; ''",
     BIFUN_INVALID_DATETIME},
    {"bchar_to_date_av_date bto_dt_tz_av_dt_tz", "2024-02-30 YYYY-MM-DD ; x YYYY ; 2024-02-29x YYYY-MM-DD", BIFUN_INVALID_DATETIME},
    {"bchar_to_date_avv_date", "2024-FEB-29 YYYY-MON-DD NLS_DATE_LANGUAGE=CHINESE", BIFUN_INVALID_DATETIME},
    {"bchar_to_date_av_date bto_dt_tz_av_dt_tz", "2024 YYYX ; 2024 YYYY-YY ; 2024 YYYY-Q ; 2024 -*76", BIFUN_INVALID_DATE_FORMAT,
     failing_row::null, 1},
    {"bchar_to_date_av_date", "2024+08 YYYYTZH", BIFUN_INVALID_DATE_FORMAT, failing_row::null, 1},
    {"bchar_to_date_avv_date", "2024 YYYY x", ZQ_INVALID_NLS_PARAMETERS, failing_row::null, 2},
    {"bchar_to_date_avv_date", "2024 YYYY ''", BIFUN_INVALID_NLS_PARAMETER, failing_row::null, 2},
    // Not digits, or a number beyond DOUBLE.
    {"btrunc_va_s_math btrunc_av_li_math btrunc_aa_math", "12a 0 ; 1.2.3 -5 ; 9*319 1", domain_error, failing_row::null, in_no_position,
     value_type::VARCHAR},
    {"TRIM", "0 abc xy ; 579 abc x_ ; 580 _ __", BIFUN_TRIM_SET_NOT_ONE_CHARACTER, failing_row::null, 2},
    {"btrim_vav_str", "0 abc ''", BIFUN_TRIM_SET_NOT_ONE_CHARACTER, failing_row::null, 2},
    {"SUBSTR", "abc 1 -1", BIFUN_NEGATIVE_SUBSTRING_LENGTH, failing_row::null, in_no_position, {}, 1},
    {"SUBSTRB", "abc -3 -2147483648", domain_error, failing_row::null, in_no_position, {}, 1},
    {"LEFT RIGHT", "abc -1 ; abc -2147483648", domain_error, failing_row::null, 1},
    {"INSTR INSTRB", "abc b 1 0 ; abc b -1 -2147483648", domain_error, failing_row::null, 3},
    {"OVERLAY", "abc x 0 ; abc x 0 1 ; abc x -2147483648 1", domain_error, failing_row::null, 2},
    {"OVERLAY", "abc x 1 -1", BIFUN_NEGATIVE_OVERLAY_LENGTH, failing_row::null, 3},
    {"INSSTR", "abc 0 1 x", domain_error, failing_row::null, 1},
    {"INSSTR", "abc 1 -1 x", domain_error, failing_row::null, 2},
    {"OVERLAY", "a*32767 bc 32767 ; a*32767&_ bc 1 2", BIFUN_INVALID_CHARACTER_STRING},
    {"INSSTR", "a 1 1 b*32767&_", BIFUN_INVALID_CHARACTER_STRING},
    {"LPAD RPAD", "abc 32768 ; abc 32768 xy ; abc 32768 日", BIFUN_INVALID_CHARACTER_STRING},
    {"CONCAT", "a*32767 b ; a*32766&_ b", BIFUN_INVALID_CHARACTER_STRING},
    {"REPEAT", "abc 10923 ; ab_ 10923 ; _ 32768 ; ab 2147483647", domain_error},
    {"REPEAT", "abc -1 ; '' -2147483648", domain_error, failing_row::null, 1},
    {"SPACE", "-1 ; 32768 ; -2147483648", domain_error},
    {"STRPOSINC STRPOSDEC", "abc 0 ; abc -1", domain_error, failing_row::null},
    {"STRPOSDEC", "a\xFF ; \xC2\x80 1", domain_error},
    {"STRPOSINC", "a\x7F ; a\xFF ; \xF4\x8F\xBF\xBF 1", domain_error},
    {"CHR", "-1 ; 128 ; 255 ; 16706 ; 4160749568", domain_error},
    {"CHR", "4294967296 ; 9223372036854775807", BIFUN_RESULT_TOO_LONG},
    {"ASCIISTR", "a*32763 ; a*32762&_ ; \\*6553", BIFUN_CHARACTER_RESULT_TOO_LONG},
    {"HEXTORAW", "x ; 4g ; 4~1 ; 0*31&g ; g&0*31 ; 0*32&g ; é", BIFUN_CONVERSION_FAILED, failing_row::null, in_no_position,
     value_type::VARCHAR},
    {"HEXTORAW", "-1 ; 1.5", BIFUN_CONVERSION_FAILED, failing_row::null, in_no_position, value_type::DECIMAL},
    {"HEXTORAW", "1E38", BIFUN_TOO_MANY_DIGITS, failing_row::null, in_no_position, value_type::DECIMAL},
    {"RAWTOHEX", "a*16382", BIFUN_INVALID_CHARACTER_STRING},
    {"RAWTOHEX", "a*16381&_", BIFUN_INVALID_CHARACTER_STRING, failing_row::null, in_no_position, value_type::VARCHAR},
    {"BINARY_TO_CHAR", "\xFF ; a\xE4\xB8", BIFUN_CONVERSION_FAILED},
    {"BINARY_TO_CHAR", "a*32768", BIFUN_RESULT_TOO_LONG},
    {"TEXT_TO_CHAR", "32763 ; 300000", BIFUN_CHARACTER_RESULT_TOO_LONG, failing_row::null, in_no_position, value_type::BLOB},
    {"TEXT_TO_CHAR", "a*32763 ; _*32763", BIFUN_CHARACTER_RESULT_TOO_LONG, failing_row::null, in_no_position, value_type::VARCHAR},
    {"SHA2", "abc 1 ; abc -256 ; abc 160", domain_error, failing_row::null, 1},
    {"NLSSORT", "abc '' ; abc NLS_SORT=&y*120", BIFUN_INVALID_NLS_PARAMETER, failing_row::null, 1},
    {"NLSSORT", "abc x ; abc NLS_SORT= ; abc NLS_SORT=QQ ; abc NLS_SORT=de-u-co-qq", ZQ_INVALID_NLS_PARAMETERS, failing_row::null, 1},
    {"NLSSORT", "a*32763", BIFUN_CHARACTER_RESULT_TOO_LONG},
    {"NLSSORT", "a*32763 NLS_SORT=BINARY ; a*32762&_ NLS_SORT=BINARY", BIFUN_CHARACTER_RESULT_TOO_LONG},
    {"UPPER LOWER INITCAP", "abc '' ; abc NLS_SORT=&y*120", BIFUN_INVALID_NLS_PARAMETER, failing_row::null, 1},
    {"UPPER LOWER INITCAP", "abc NLS_SORT ; abc NLS_SORT=QQ ; abc NLS_SORT='tr ; abc NLS_CURRENCY=tr", ZQ_INVALID_NLS_PARAMETERS,
     failing_row::null, 1},
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
    {"btrunc_date_av_date btrunc_time_av_date btrunc_datetime_av_date bround_date_av_date bround_time_av_date bround_datetime_av_date",
     "2024-02-29 x ; 2024-02-29 '' ; 2024-02-29 ~Y ; 2024-02-29 MONTHS", BIFUN_INVALID_DATE_FORMAT, failing_row::null, 1},
    {"btrunc_dt_str_av_date bround_dt_str_av_date", "2024-02-29 x ; 2024-02-29 '' ; 2024-02-29 1.5 ; 2024-02-29 9223372036854775808",
     BIFUN_INVALID_DATE_FORMAT, failing_row::null, 1},
    // The Sunday before the first day, and what lies behind the last.
    {"btrunc_date_av_date btrunc_time_av_date btrunc_datetime_av_date btrunc_dt_str_av_date", "-4712-01-06 D", not_a_datetime},
    {"bround_date_av_date bround_time_av_date bround_datetime_av_date bround_dt_str_av_date", "9999-12-31 D", not_a_datetime},
    {"bround_date_av_date bround_time_av_date bround_datetime_av_date bround_dt_str_av_date",
     "9999-07-01 YYYY ; 9999-11-16 Q ; 9999-12-16 MM ; 9950-01-01 CC ; 9999-12-31T12:00 DD", domain_error},
    {"bround_day_a_date bround_a_str", "9999-12-31T12:00", domain_error},
    {"TO_DATETIME", "2024 0 1 0 0 ; 2024 13 1 0 0 ; 10000 1 1 0 0 ; 2024 -2147483648 1 0 0", domain_error},
    {"TO_DATETIME", "0 1 1 0 0 ; 1 1 0 0 0 ; 1 1 1 0 -1", BIFUN_YEAR_ZERO},
    {"TO_DATETIME", "9999 12 31 24 0 ; -4712 1 1 0 -1 ; 2024 1 2147483647 2147483647 2147483647", not_a_datetime},
    {"boverlaps_ivym_aaaa_date boverlaps_ivym_avaa_ym_date boverlaps_ivym_avvv_ymtsym_date",
     "9999-12-31 0/1 2024-01-01 0/1 ; 2024-01-01 0/0 -4712-01-01 0/-1", not_a_datetime},
    {"boverlaps_ivdt_aaaa_date boverlaps_ivdt_aavv_dtts_date boverlaps_ivdt_avva_tsdt_date",
     "9999-12-31 1/0/0/0/0 2024-01-01 0/0/0/0/0 ; 2024-01-01 0/0/0/0/0 -4712-01-01 0/0/0/0/-1", not_a_datetime},
    {"JSON_VALUE JSON_QUERY", "[] $. ; [] x ; [] $[ ; [] '' ; [] $&x*4000", BIFUN_INVALID_JSON_PATH, failing_row::null, 1},
    {"JSON_VALUE JSON_QUERY", "[] $. ERROR~ON~ERROR", BIFUN_INVALID_JSON_PATH, failing_row::null, 1},
    {"JSON_VALUE JSON_QUERY", "[] $ x ; [] $ ERROR ; [] $ RETURNING ; [] $ ERROR~ON~ERROR~NULL~ON~EMPTY ; [] $ RETURNING~FOO", domain_error,
     failing_row::null, 2},
    {"JSON_VALUE",
     "[] $ WITH~WRAPPER ; [] $ DEFAULT~'x~ON~EMPTY ; [] $ DEFAULT~x~ON~EMPTY ; [] $ DEFAULT~12x~ON~EMPTY ; [] $ DEFAULT~--~ON~EMPTY ; [] $ "
     "DEFAULT~'&x*1000&'~ON~EMPTY",
     domain_error, failing_row::null, 2},
    {"JSON_QUERY", "[] $ DEFAULT~1~ON~EMPTY ; [] $ WITH~ARRAY", domain_error, failing_row::null, 2},
    {"JSON_VALUE JSON_QUERY", "[1 $ ERROR~ON~ERROR ; '' $ ERROR~ON~ERROR", JSON_INVALID_TEXT},
    {"JSON_VALUE JSON_QUERY", "[&[*1024&]*1025 $ ERROR~ON~ERROR", JSON_TOO_DEEP},
    {"JSON_VALUE JSON_QUERY", "[] $[0] ERROR~ON~EMPTY", JSON_NO_ITEM},
    {"JSON_VALUE JSON_QUERY", "[1,2] $[1,0] ERROR~ON~ERROR", JSON_SEVERAL_ITEMS},
    {"JSON_VALUE JSON_QUERY", "[] strict~$.a ERROR~ON~ERROR", JSON_NO_SUCH_PART},
    {"JSON_VALUE JSON_QUERY", "null $.double() ERROR~ON~ERROR", JSON_WRONG_OPERAND},
    {"JSON_VALUE", "[] $ ERROR~ON~ERROR ; {} $ ERROR~ON~ERROR", JSON_NO_SCALAR},
    {typed_json_values, "\"x\" $ ERROR~ON~ERROR", BIFUN_CONVERSION_FAILED},
    {typed_json_values, "1 $ DEFAULT~'x'~ON~EMPTY", BIFUN_CONVERSION_FAILED, failing_row::null, 2},
    {"bjson_value_int_avv_str bjson_value_int64_avv_str", "1.5 $ ERROR~ON~ERROR ; true $ ERROR~ON~ERROR", BIFUN_CONVERSION_FAILED},
    {"bjson_value_int_avv_str bjson_value_int64_avv_str", "9223372036854775808 $ ERROR~ON~ERROR ; 1e30 $ ERROR~ON~ERROR", overflow},
    {"bjson_value_int_avv_str", "2147483648 $ ERROR~ON~ERROR", overflow},
    {"bjson_value_dec_avv_str bjson_value_dbl_avv_str", "1e999 $ ERROR~ON~ERROR", overflow},
};

// Every call of these.
std::vector<failing_call> failing_calls();

} // namespace contract

#endif
