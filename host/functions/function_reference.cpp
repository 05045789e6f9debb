// SPDX-License-Identifier: Apache-2.0
#include "host/functions/function_reference.h"

#include <algorithm>

#include <fmt/format.h>
#include <unistd.h>

#include "bop/frame/catalogue.h"
#include "host/binding/binding.h"
#include "host/evaluation/execution.h"
#include "host/output/output.h"
#include "host/session/settings.h"
#include "host/sql/call_spelling.h"
#include "host/sql/syntax.h"

namespace host {
namespace {

constexpr const char introduction[] =
    R"(# Functions

Made by `bifun functions --markdown`. Results are shown as JSON: text in quotes, NULL as `null`.

## Arguments

An argument fits where its type is asked for, and a number also where a wider one is: INT, BIGINT, DECIMAL, DOUBLE, from narrow to wide.
The entry point that needs the least widening is the one that is called: `ROUND(7, 1)` is a DECIMAL, `SQRT(7)` a DOUBLE. NULL fits
everywhere. A number literal is the first of INT, BIGINT and DECIMAL that holds it, with an exponent a DOUBLE.

Where text alone is taken, a value of another type stands for the text that CAST(x AS VARCHAR) gives: `name || 5`, `1 || 2`, `LPAD(id, 5, 0)`,
`SUBSTR(d, 1, 4)`. Bytes do not, nor does anything in functions that read a date, a number or JSON from text, such as TO_DATE and TO_NUMBER, nor
where a literal is needed.

- A DOUBLE has 15 to 17 significant digits. A BIGINT or DECIMAL with more becomes the nearest DOUBLE: in SQRT and the other functions
  that take nothing else, and also in MOD, SIGN and POWER of a DECIMAL, so that `MOD(0.3, 0.1)` is not 0. ROUND, TRUNC, CEIL, FLOOR, ABS,
  GREATEST, LEAST, NVL, IF, BITAND and TO_CHAR keep every digit of a DECIMAL.
- A DOUBLE of a file may be `NaN` or `Infinity`. NaN stays NaN, but SIGN of it is 0, GREATEST and LEAST of it and another value are the one
  that stands second, and TO_CHAR under a format fails; of the comparisons with it only `<>` is true. TO_CHAR, ROUND and POWER of an infinite
  number fail.
- A DOUBLE never becomes a DECIMAL. TRUNC to n digits therefore takes no DOUBLE; ROUND does.
- TRUNC of text takes digits and a point, no sign, and gives a DOUBLE.
- The formats of TO_CHAR and its kin are described in [number formats](number-formats.md) and [date formats](date-formats.md), paths into
  documents in [JSON](json.md).

A NULL argument gives NULL, except in {null_takers}. A function that fails for a row ends the query with the status, its
meaning, the row, its line and its values: `bifun: LN: -6803 an argument is outside the function's domain in row 15 (t.csv, line 16), given 0`. The conditions that AND joins in
WHERE are applied from left to right, so that `WHERE x > 0 AND LN(x) > 3` does not fail; IF does evaluate both of its values for every
row, CASE and COALESCE only those that they take.

## Text

Blanks at the end are part of a text. They are kept as a count beside it, whether they come from a literal, a file, the padding of a CHAR(n)
column or a function, so that texts that print alike behave alike, and are printed in full. Functions see them (`RIGHT('ab  ', 3)` is `'b  '`); comparisons do not (`'ab' = 'ab  '`). `TRIM(s)` is
`TRIM(BOTH ' ' FROM s)`; `SUBSTRING(s FROM p FOR n)` and `SUBSTRING(s, p, n)` are SUBSTR. [Strings](strings.md) says what the functions do
in detail.

## Dates

DATE, TIME, TIMESTAMP, and the last two WITH TIME ZONE, are called DATETIME where any of them fits. A text literal stands for the type that
it can be read as: `YEAR('2024-02-29')`. Functions that work on the date take no TIME. [Dates](dates.md) says what the functions do in
detail.

- EXTRACT takes the fields YEAR, MONTH, DAY, HOUR, MINUTE, SECOND (with its fraction), TIMEZONE_HOUR, TIMEZONE_MINUTE, and MICROSECOND of an
  interval, as far as the type has them. A text that is no date gives NULL.
{fields}
- A result has the type of the date that it was made from, with these exceptions: DATEADD of hours or less to a DATE is a TIMESTAMP, and so is
  ADD_DAYS of a DECIMAL or DOUBLE to a DATE; LAST_DAY of text is a TIMESTAMP, unless a literal names a date only; DATE and TIMESTAMP
  together, as in NVL, make a TIMESTAMP.
- Intervals are of months or of time: `INTERVAL '1-2' YEAR TO MONTH`, `INTERVAL '14' MONTH`, `INTERVAL '-1 02:03:04.5' DAY TO SECOND`,
  `INTERVAL '90' MINUTE` and so on for all fields. They print as `1-02` and `-1 02:03:04.5`. Two intervals of one kind can be compared.
  DATE_ADD and DATE_SUB take those of months; `+` and `-` take both.
- Values with zones are compared by the instants that they name. A value without one is taken to be in the session's zone (`--set time_zone`)
  where it is compared with one that has one, and where NVL has both. In differences of dates and in UNIX_TIMESTAMP zones do not count, nor
  does a function convert them: [Dates](dates.md) has the clock time of UTC. CAST to a type without a zone leaves it out.
)";

// "A, B and C": the built-ins that take a NULL for something.
std::string takers_of_null() {
    std::vector<std::string_view> names;
    for (const bifun::entry_point& member : bifun::entry_points) {
        switch (bifun::null_rule_of(member)) {
        case bifun::null_rule::propagates:
        case bifun::null_rule::adds_nulls:
        case bifun::null_rule::first_only:
        case bifun::null_rule::first_decides:
            break;
        default:
            if (names.empty() || names.back() != member.builtin) {
                names.push_back(member.builtin);
            }
        }
    }
    return fmt::format("{} and {}", fmt::join(names.begin(), names.end() - 1, ", "), names.back());
}

// An item of a list.
std::string names_of_fields() {
    constexpr std::size_t widest = 140;
    std::string line = "- The other functions with a field know it by these names, bare or in quotes, in any case:";
    std::string text;
    for (const bifun::keyword& word : bifun::datepart_words) {
        std::string item = " ";
        for (const char c : word.names) {
            if (c == ' ') {
                item += item.find('(') == item.npos ? " (" : ", ";
            } else {
                item.push_back(static_cast<char>(c - 'A' + 'a'));
            }
        }
        item += word.code == std::rbegin(bifun::datepart_words)->code ? ")." : "),";
        if (line.size() + item.size() > widest) {
            text += line + "\n";
            line.assign(1, ' ');
        }
        line += item;
    }
    return text + line;
}

// Text for a cell of a table.
std::string in_cell(std::string_view text) {
    std::string made;
    for (const char c : text) {
        made.append(c == '|' ? "\\" : "").push_back(c);
    }
    return made;
}

std::string example_result(const bifun::builtin& known, const session_settings& settings, const function_library& library) {
    const std::string sql = fmt::format("SELECT {} AS v", known.example);
    plan query = bind_statement(parse_select(sql), sql, nullptr, settings, library);
    output_stream stream{.file = STDOUT_FILENO, .text = {}}; // never flushed
    result_output output(output_format::json, stream, query.results, *settings.text_charset);
    progress_bar progress;
    run_plan(query, 1, settings, output, progress);
    const std::size_t begin = stream.text.find(": ") + 2;
    return stream.text.substr(begin, stream.text.rfind('}') - begin);
}

std::string argument_list(const bifun::entry_point& member) {
    std::string text;
    for (const bifun::argument& argument : member.arguments()) {
        text += fmt::format("{}{}{}", text.empty() ? "" : ", ", argument.kind == bifun::argument_kind::constant ? "constant " : "",
                            bifun::type_name(argument.type));
    }
    return text;
}

} // namespace

std::string function_reference() {
    const session_settings settings = read_settings({});
    begin_session(settings);
    const function_library library(default_library, settings.library);
    std::string text = fmt::format(introduction, fmt::arg("null_takers", takers_of_null()), fmt::arg("fields", names_of_fields()));
    text += "\n## Built-ins\n\n| Function | Meaning | Example | Result |\n|---|---|---|---|\n";
    for (const bifun::builtin& known : bifun::builtins) {
        text += fmt::format("| `{}` | {} | `{}` | `{}` |\n", in_cell(known.form), in_cell(meaning_with_names(known)),
                            in_cell(known.example), in_cell(example_result(known, settings, library)));
    }
    text += "\n## Entry points\n\nArguments are columns unless they are called constant.\n";
    for (const bifun::builtin& known : bifun::builtins) {
        text += fmt::format("\n| {} | Arguments | Result |\n|---|---|---|\n", known.name);
        for (const bifun::entry_point& member : bifun::entry_points) {
            if (member.builtin == known.name) {
                text += fmt::format("| `{}` | {} | {} |\n", member.symbol, argument_list(member), bifun::type_name(member.result));
            }
        }
    }
    return text;
}

} // namespace host
