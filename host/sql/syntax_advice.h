// SPDX-License-Identifier: Apache-2.0
// What to type in place of what other systems' SQL has and the parser does not know.
#ifndef BIFUN_HOST_SQL_SYNTAX_ADVICE_H
#define BIFUN_HOST_SQL_SYNTAX_ADVICE_H

#include <cstddef>
#include <string>
#include <string_view>

#include "host/program_error.h"

namespace host {

// A text that the parser refuses at a place in it, in bytes.
struct syntax_error : program_error {
    std::size_t offset;
    syntax_error(const std::string& message, std::size_t place) : program_error(message), offset(place) {}
};

constexpr std::string_view no_regular_expressions = "there are no regular expressions; there are LIKE, ILIKE, INSTR, SUBSTR and REPLACE";
constexpr std::string_view way_to_utc =
    "DATEADD(MINUTE, -60 * EXTRACT(TIMEZONE_HOUR FROM t) - EXTRACT(TIMEZONE_MINUTE FROM t), t) has the clock time of UTC";
constexpr std::string_view no_zone_conversion =
    "no function converts zones: DATEADD(MINUTE, -60 * EXTRACT(TIMEZONE_HOUR FROM t) - EXTRACT(TIMEZONE_MINUTE FROM t), t) has the clock "
    "time of UTC, and CAST(t AS TIMESTAMP) leaves out the zone";
constexpr std::string_view no_joins = "joins are not supported; FROM takes one table";
constexpr std::string_view no_parameters = "there are no parameters; write the value";
constexpr std::string_view straight_quotes = "quotes are straight: 'text' and \"name of a column\"";

// As word processors write them, which makes a name of what should be a text.
bool begins_with_curly_quote(std::string_view text);

// "; write LIMIT 2 OFFSET 1"; empty where the text tells nothing.
std::string syntax_advice(std::string_view sql, std::size_t offset);

// The same of a name that is no column: where it stands first in TRIM(name FROM s).
std::string advice_on_trim(std::string_view sql, std::size_t offset);

} // namespace host

#endif
