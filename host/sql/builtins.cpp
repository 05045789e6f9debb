// SPDX-License-Identifier: Apache-2.0
#include "host/sql/builtins.h"

#include <algorithm>
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

constexpr name_elsewhere names_elsewhere[] = {
    {"SHA224 SHA256 SHA384 SHA512 STANDARD_HASH", "use SHA2(s, 256), or MD5(s)"},
    {"CASEFOLD ILIKE", "use LOWER(s); ILIKE and, with --set case_sensitive=0, comparisons, LIKE and INSTR disregard case"},
    {"COUNT SUM AVG MAX MEAN MEDIAN MODE STDDEV VARIANCE STRING_AGG GROUP_CONCAT LISTAGG ARRAY_AGG ANY_VALUE",
     "there are no aggregates: a query gives a row for every row of the file"},
    {"ROW_NUMBER RANK DENSE_RANK LAG LEAD NTILE FIRST_VALUE LAST_VALUE", "there are no window functions"},
    {"IFNULL ISNULL ZEROIFNULL", "use COALESCE(x, y) or NVL(x, y)"},
    {"NVL2 DECODE IIF IFF SWITCH CHOOSE", "use CASE WHEN condition THEN x ELSE y END or IF(condition, x, y)"},
    {"LEN STRLEN DATALENGTH", "use LENGTH(s)"},
    {"CHARINDEX STRPOS CONTAINS", "use INSTR(s, pattern) or LIKE"},
    {"STARTS_WITH ENDS_WITH REGEXP_LIKE REGEXP_MATCHES REGEXP_SUBSTR REGEXP_REPLACE REGEXP_EXTRACT RLIKE GLOB", no_regular_expressions},
    {"MID SUBSTR2", "use SUBSTR(s, position, length)"},
    {"SPLIT_PART SPLIT STRING_SPLIT", "use SUBSTRING_INDEX(s, delimiter, n)"},
    {"CONCAT_WS FORMAT PRINTF", "use a || b, and TO_CHAR(x, format) for numbers and dates"},
    {"STRFTIME", "use TO_CHAR(d, format) or DATE_FORMAT(d, format)"},
    {"STR TO_INT TO_INTEGER TRY_CAST CONVERT TO_DECIMAL TO_VARCHAR", "use CAST(x AS type), such as CAST(x AS DECIMAL)"},
    {"NOW SYSDATE SYSTIMESTAMP GETDATE CURDATE CURTIME TODAY", "use CURRENT_DATE, CURRENT_TIMESTAMP or LOCALTIMESTAMP"},
    {"DATE", "use CAST(x AS DATE) or TO_DATE(x, format)"},
    {"DATE_TRUNC", "use TRUNC(d, 'MONTH'), with any unit"},
    {"DATE_DIFF TIMESTAMPDIFF AGE", "use DATEDIFF(field, start, end)"},
    {"DATE_PART", "use EXTRACT(field FROM d) or DATEPART(field, d)"},
    {"STRPTIME STR_TO_DATE PARSE_DATE", "use TO_DATE(text, format)"},
    {"EPOCH TO_UNIXTIME", "use UNIX_TIMESTAMP(d)"},
    {"WEEK WEEKOFYEAR", "use TO_CHAR(d, 'IW')"},
    {"PI", "use ACOS(-1)"},
    {"LOG2", "use LOG(2, x)"},
    {"JSON_EXTRACT JSON_EXTRACT_STRING JSON_EXTRACT_SCALAR JSON_EXTRACT_PATH JSON_EXTRACT_PATH_TEXT GET_JSON_OBJECT JSON_UNQUOTE",
     "use JSON_VALUE(doc, path) for a scalar, JSON_QUERY(doc, path) for any part of a document"},
    {"JSON_EXISTS JSON_CONTAINS_PATH", "use JSON_QUERY(doc, path) IS NOT NULL"},
    {"TYPEOF PG_TYPEOF", "\"bifun describe FILE\" shows the types of columns, and \\d TABLE in the shell"},
    {"IS_JSON JSON_VALID", "use JSON_QUERY(s, '$') IS NOT NULL"},
    {"IS_NUMBER IS_NUMERIC ISNUMBER", "use ISNUMERIC(text)"},
    {"FROM_TZ NEW_TIME CONVERT_TZ CONVERT_TIMEZONE FROM_UTC_TIMESTAMP TO_UTC_TIMESTAMP", no_zone_conversion},
    {"MAKE_DATE MAKE_TIMESTAMP", "use TO_DATETIME(year, month, day, hour, minute)"},
};

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
    const std::string upper = upper_case(name);
    const auto* const elsewhere =
        std::ranges::find_if(names_elsewhere, [&](const name_elsewhere& known) { return bifun::has_word(known.names, upper); });
    if (elsewhere != std::end(names_elsewhere)) {
        return fmt::format("there is no function {}; {}", name, elsewhere->advice);
    }
    std::vector<std::string> names;
    std::ranges::transform(bifun::builtins, std::back_inserter(names), [](const bifun::builtin& known) { return std::string(known.name); });
    const std::string hint = did_you_mean(name, names);
    return fmt::format("there is no function {}{}", name, hint.empty() ? "; \"bifun functions\" lists what there is" : hint);
}

} // namespace host
