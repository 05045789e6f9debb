#include "host/function_reference.h"

#include <algorithm>

#include <fmt/format.h>
#include <unistd.h>

#include "bop/frame/catalogue.h"
#include "host/binding.h"
#include "host/execution.h"
#include "host/output.h"
#include "host/settings.h"

namespace host {
namespace {

constexpr std::string_view introduction =
    R"(# Functions

Made by `bifun functions --markdown`. Results are shown as JSON: text in quotes, NULL as `null`.

## Arguments

An argument fits where its type is asked for, and a number also where a wider one is: INT, BIGINT, DECIMAL, DOUBLE, from narrow to wide.
The entry point that needs the least widening is the one that is called: `ROUND(7, 1)` is a DECIMAL, `SQRT(7)` a DOUBLE. NULL fits
everywhere. A number literal is the first of INT, BIGINT and DECIMAL that holds it, with an exponent a DOUBLE.

- A DOUBLE has 15 to 17 significant digits. A BIGINT or DECIMAL with more becomes the nearest DOUBLE: in SQRT and the other functions
  that take nothing else, and also in MOD, SIGN and POWER of a DECIMAL, so that `MOD(0.3, 0.1)` is not 0. ROUND, TRUNC, CEIL, FLOOR, ABS,
  GREATEST, LEAST, NVL, IF, BITAND and TO_CHAR keep every digit of a DECIMAL.
- A DOUBLE never becomes a DECIMAL. TRUNC to n digits therefore takes no DOUBLE; ROUND does.
- TRUNC of text takes digits and a point, no sign, and gives a DOUBLE.
- The formats of TO_CHAR are described in [number formats](number-formats.md).

A NULL argument gives NULL, except in NVL, IF and LNNVL. A function that fails for a row ends the query with the status, its
meaning and the row: `bifun: LN: -6803 an argument is outside the function's domain in row 15`. The conditions that AND joins in
WHERE are applied from left to right, so that `WHERE x > 0 AND LN(x) > 3` does not fail; IF does evaluate both of its values for every
row.
)";

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
    plan query = bind_statement(parse_select(sql), sql, nullptr, *settings.text_charset, library);
    output_stream stream{.file = STDOUT_FILENO, .text = {}}; // never flushed
    result_output output(output_format::json, stream, query.results, *settings.text_charset);
    progress_bar progress;
    run_plan(query, 1, {.fold_case = false, .two_byte_trailers = false}, output, progress);
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
    const function_library library(default_library, settings.library);
    std::string text(introduction);
    text += "\n## Built-ins\n\n| Function | Meaning | Example | Result |\n|---|---|---|---|\n";
    for (const bifun::builtin& known : bifun::builtins) {
        text += fmt::format("| `{}` | {} | `{}` | `{}` |\n", in_cell(known.form), in_cell(known.meaning), in_cell(known.example),
                            in_cell(example_result(known, settings, library)));
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
