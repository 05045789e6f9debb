// SPDX-License-Identifier: Apache-2.0
#include "host/sql/builtins.h"

#include <algorithm>
#include <span>
#include <vector>

#include <fmt/format.h>

#include "host/near_names.h"
#include "host/sql/syntax_advice.h"

namespace host {
namespace {

// What people know from other systems, where no name here is near enough or one is near that does something else.
struct name_elsewhere {
    std::string_view names;
    std::string_view advice;
};

constexpr std::string_view moments = "use CURRENT_DATE, CURRENT_TIMESTAMP or LOCALTIMESTAMP";

constexpr name_elsewhere names_elsewhere[] = {
    {"SHA224 SHA256 SHA384 SHA512 STANDARD_HASH", "use SHA2(s, 256), or MD5(s)"},
    {"CASEFOLD ILIKE", "use LOWER(s); ILIKE and, with --set case_sensitive=0, comparisons, LIKE and INSTR disregard case"},
    {"COUNT SUM AVG MAX MEAN MEDIAN MODE STDDEV VARIANCE STRING_AGG GROUP_CONCAT LISTAGG ARRAY_AGG ANY_VALUE",
     "there are no aggregates: a query gives a row for every row of the file"},
    {"ROW_NUMBER RANK DENSE_RANK LAG LEAD NTILE FIRST_VALUE LAST_VALUE", "there are no window functions"},
    {"IFNULL ZEROIFNULL", "use COALESCE(x, y) or NVL(x, y)"},
    {"ISNULL", "use x IS NULL, or COALESCE(x, y) for another value in place of NULL"},
    {"NULLIFZERO", "use NULLIF(x, 0)"},
    {"NVL2 DECODE IIF IFF SWITCH CHOOSE ELT FIELD", "use CASE WHEN condition THEN x ELSE y END or IF(condition, x, y)"},
    {"LEN STRLEN DATALENGTH", "use LENGTH(s)"},
    {"CHARINDEX STRPOS", "use INSTR(s, pattern)"},
    {"CONTAINS", "use s LIKE '%text%'"},
    {"STARTS_WITH STARTSWITH", "use s LIKE 'text%'"},
    {"ENDS_WITH ENDSWITH", "use s LIKE '%text'"},
    {"REGEXP_LIKE REGEXP_MATCHES REGEXP_SUBSTR REGEXP_REPLACE REGEXP_EXTRACT REGEXP_EXTRACT_ALL REGEXP_COUNT REGEXP_INSTR "
     "REGEXP_FULL_MATCH "
     "REGEXP_MATCH REGEXP_SPLIT_TO_ARRAY RLIKE GLOB",
     no_regular_expressions},
    {"FIND_IN_SET", "use INSTR(',' || list || ',', ',' || x || ',') > 0"},
    {"MID SUBSTR2", "use SUBSTR(s, position, length)"},
    {"STUFF", "use OVERLAY(s PLACING r FROM p FOR n)"},
    {"SPLIT_PART SPLIT STRING_SPLIT", "use SUBSTRING_INDEX(s, delimiter, n)"},
    {"CONCAT_WS FORMAT PRINTF", "use a || b, and TO_CHAR(x, format) for numbers and dates"},
    {"STRCMP", "compare texts with =, < and >"},
    {"UNICODE CODEPOINT", "use ASCII(s)"},
    {"STRFTIME", "use TO_CHAR(d, format) or DATE_FORMAT(d, format)"},
    {"DOUBLE BOOL SIGNED UNSIGNED STR TO_INT TO_INTEGER TRY_CAST CONVERT TO_DECIMAL TO_VARCHAR TO_STRING STRING TEXT SAFE_CAST",
     "use CAST(x AS type), such as CAST(x AS DECIMAL) or CAST(x AS VARCHAR)"},
    {"NOW SYSDATE SYSTIMESTAMP GETDATE GETUTCDATE CURDATE CURTIME TODAY", moments},
    {"DATE", "use CAST(x AS DATE) or TO_DATE(x, format)"},
    {"DATETIME", "use CAST(x AS TIMESTAMP)"},
    {"ISDATE", "EXTRACT(YEAR FROM text) IS NOT NULL tells whether a text is a date such as 2024-02-29"},
    {"DATE_TRUNC DATETRUNC", "use TRUNC(d, 'MONTH'), with any unit"},
    {"DATE_DIFF TIMESTAMPDIFF AGE", "use DATEDIFF(field, start, end)"},
    {"TIMESTAMPADD ADDDATE SUBDATE ADDTIME ADD_YEARS ADD_HOURS ADD_MINUTES ADD_SECONDS",
     "use DATEADD(field, n, d), such as DATEADD(DAY, 1, d)"},
    {"DATE_PART", "use EXTRACT(field FROM d) or DATEPART(field, d)"},
    {"DATENAME", "use MONTHNAME(d), DAYNAME(d) or TO_CHAR(d, format)"},
    {"EOMONTH", "use LAST_DAY(d)"},
    {"STRPTIME STR_TO_DATE PARSE_DATE PARSE_TIMESTAMP", "use TO_DATE(text, format)"},
    {"EPOCH TO_UNIXTIME UNIXEPOCH", "use UNIX_TIMESTAMP(d)"},
    {"EPOCH_MS FROM_UNIXTIME_MS TO_TIMESTAMP_MS", "use FROM_UNIXTIME(CAST(n / 1000 AS BIGINT))"},
    {"WEEK WEEKOFYEAR", "use TO_CHAR(d, 'IW')"},
    {"DOW", "use DAYOFWEEK(d), 1 for Sunday to 7"},
    {"ISODOW", "use MOD(DAYOFWEEK(d) + 5, 7) + 1, 1 for Monday to 7"},
    {"DOY", "use DAYOFYEAR(d)"},
    {"JULIANDAY", "use TO_CHAR(d, 'J')"},
    {"PI", "use ACOS(-1)"},
    {"LOG2", "use LOG(2, x)"},
    {"SQUARE", "use POWER(x, 2)"},
    {"CBRT", "use SIGN(x) * POWER(ABS(x), 1e0 / 3)"},
    {"JSON_EXTRACT JSON_EXTRACT_STRING JSON_EXTRACT_SCALAR JSON_EXTRACT_PATH JSON_EXTRACT_PATH_TEXT GET_JSON_OBJECT JSON_UNQUOTE",
     "use JSON_VALUE(doc, path) for a scalar, JSON_QUERY(doc, path) for any part of a document"},
    {"JSON_EXISTS JSON_CONTAINS_PATH", "use JSON_QUERY(doc, path) IS NOT NULL"},
    {"TYPEOF PG_TYPEOF", "\"bifun describe FILE\" shows the types of columns, and \\d TABLE in the shell"},
    {"IS_JSON JSON_VALID", "use JSON_QUERY(s, '$') IS NOT NULL"},
    {"IS_NUMBER IS_NUMERIC ISNUMBER", "use ISNUMERIC(text)"},
    {"FROM_TZ NEW_TIME CONVERT_TZ CONVERT_TIMEZONE FROM_UTC_TIMESTAMP TO_UTC_TIMESTAMP", no_zone_conversion},
    {"MAKE_DATE MAKE_TIMESTAMP DATEFROMPARTS DATETIMEFROMPARTS", "use TO_DATETIME(year, month, day, hour, minute)"},
};

// The same of names that stand without parentheses.
constexpr name_elsewhere words_elsewhere[] = {
    {"SYSDATE SYSTIMESTAMP NOW GETDATE TODAY", moments},
    {"ROWNUM", "LIMIT n gives the first rows"},
};

std::string_view find_advice(std::span<const name_elsewhere> table, std::string_view name) {
    const std::string upper = upper_case(name);
    const auto found = std::ranges::find_if(table, [&](const name_elsewhere& known) { return bifun::has_word(known.names, upper); });
    return found == table.end() ? std::string_view() : found->advice;
}

} // namespace

const bifun::builtin* find_builtin(std::string_view name) {
    const std::string upper = upper_case(name);
    const auto* const spelled =
        std::ranges::find_if(bifun::spellings, [&](const auto& known) { return bifun::has_word(known.names, upper); });
    const std::string_view own_name = spelled == std::end(bifun::spellings) ? upper : spelled->builtin;
    const auto* const found = std::ranges::find(bifun::builtins, own_name, &bifun::builtin::name);
    return found == std::end(bifun::builtins) ? nullptr : found;
}

std::string unknown_function(std::string_view name) {
    if (const std::string_view advice = find_advice(names_elsewhere, name); !advice.empty()) {
        return fmt::format("there is no function {}; {}", name, advice);
    }
    std::vector<std::string> names;
    std::ranges::transform(bifun::builtins, std::back_inserter(names), [](const bifun::builtin& known) { return std::string(known.name); });
    const std::string hint = did_you_mean(name, names);
    return fmt::format("there is no function {}{}", name, hint.empty() ? "; \"bifun functions\" lists what there is" : hint);
}

std::string advice_on_word(std::string_view name) {
    const std::string_view advice = find_advice(words_elsewhere, name);
    return advice.empty() ? "" : fmt::format("; {}", advice);
}

} // namespace host
