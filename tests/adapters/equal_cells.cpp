// SPDX-License-Identifier: Apache-2.0
#include "tests/adapters/equal_cells.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include <fmt/format.h>

#include "adapters/binding/keyword_use.h"
#include "tests/host/program_run.h"

namespace bifun::test {
namespace {

using binding::signature;
using binding::sql_type;

struct sample {
    sql_type type;
    const char* name;
    const char* program_type;
    std::vector<const char*> values; // a null pointer is NULL
};

// Values that every host has: no dates before the Gregorian calendar, moments in UTC, decimals of at most ten digits behind the point.
const sample samples[] = {
    {sql_type::integer, "i", "INT", {"0", "1", "-1", "2", "7", nullptr, "31", "-20", "1999", "12", "3"}},
    {sql_type::bigint, "l", "BIGINT", {"0", "1", "-1", "2147483648", "-9223372036854775807", "12345", nullptr, "86399", "1709164800"}},
    {sql_type::decimal,
     "m",
     "DECIMAL",
     {"0", "1.5", "-1.5", "2.25", "0.005", nullptr, "123456789.0123456789", "-0.5", "9999999999999999999.5", "1e3", "-77"}},
    {sql_type::double_precision, "d", "DOUBLE", {"0.5", "1", "-1", "2.25", "1e10", "-1e-5", nullptr, "0.1", "100", "0", "0.25"}},
    {sql_type::date,
     "dt",
     "DATE",
     {"2024-02-29", "1999-12-31", nullptr, "2000-01-01", "1900-03-01", "2023-08-15", "1583-01-01", "2024-01-31"}},
    {sql_type::time, "ti", "TIME", {"00:00:00", "13:45:06.5", "23:59:59.999999", nullptr, "12:00:00"}},
    {sql_type::timestamp,
     "ts",
     "TIMESTAMP",
     {"2024-02-29 13:45:06.123456", "1999-12-31 23:59:59.999999", "2000-01-01 00:00:00", nullptr, "1969-07-20 20:17:40",
      "2023-08-15 12:30:00"}},
    {sql_type::time_with_zone, "tz", "TIME WITH TIME ZONE", {"13:45:06.5+00:00", "00:00:00+00:00", nullptr, "23:59:59+00:00"}},
    {sql_type::timestamp_with_zone,
     "tsz",
     "TIMESTAMP WITH TIME ZONE",
     {"2024-02-29 13:45:06.123456+00:00", "1999-12-31 23:59:59+00:00", nullptr, "2000-01-01 00:00:00+00:00"}},
    {sql_type::varchar,
     "s",
     "VARCHAR",
     {"abc", "", "  padded  ", "x", nullptr, "tatata and further on", "Größe 日本語", "a,b,c", "2024-02-29 13:45:06", "-12.5", "aaaa",
      "é"}},
};
constexpr std::size_t row_count = 24;
constexpr std::size_t columns_of_a_type = 5;

std::vector<std::string> split(std::string_view text, std::string_view separator) {
    std::vector<std::string> parts;
    while (!text.empty()) {
        const std::size_t length = std::min(text.find(separator), text.size());
        parts.emplace_back(text.substr(0, length));
        text.remove_prefix(std::min(text.size(), length + separator.size()));
    }
    return parts;
}

std::string quoted_literal(std::string_view text) { return fmt::format("'{}'", program_run::replaced(std::string(text), "'", "''")); }

bool is_plain(std::string_view text) { return text.find_first_of("_*&'\t") == text.npos; }

// What the catalogue says of an argument where the call has no keyword to choose by.
argument_fact fact_of_argument(const signature& form, std::size_t position) {
    const entry_point* const member = form.keyword ? nullptr : find_member(form, {form.constants, std::nullopt, 0});
    return member != nullptr && position < member->argument_count ? fact_of(*member, position) : argument_fact{};
}

// Literals that suit an argument which has to be one.
std::vector<std::string> constants_for(const signature& form, std::size_t position) {
    const sql_type type = form.type_list[position];
    const argument_fact fact = fact_of_argument(form, position);
    std::vector<std::string> made;
    for (const std::string& text : split(fact.words.empty() ? fact.texts : fact.words, fact.words.empty() ? " | " : " ")) {
        if (is_plain(text)) {
            made.push_back(type == sql_type::varchar ? quoted_literal(text) : text);
        }
    }
    if (made.empty()) {
        made = type == sql_type::varchar ? std::vector<std::string>{"'a'", "'ta'"} : std::vector<std::string>{"2", "-1"};
    }
    constexpr std::size_t most = 4;
    std::ranges::sort(made);
    made.erase(std::unique(made.begin(), made.end()), made.end());
    made.resize(std::min(made.size(), most));
    return made;
}

std::vector<std::string> keywords_for(const signature& form) {
    std::vector<std::string> made;
    for (const keyword& word : binding::keywords_of(form.builtin).list.words) {
        made.push_back(quoted_literal(word.names.substr(0, word.names.find(' '))));
    }
    return made;
}

// What stands for an argument, as each side writes it.
std::vector<std::string> expressions_for(const signature& form, std::size_t position) {
    const sql_type type = form.type_list[position];
    if (form.keyword == position) {
        return keywords_for(form);
    }
    if (type == sql_type::boolean) {
        return {"i_4 > 0"};
    }
    if (type == sql_type::interval_dt) {
        return {"INTERVAL '14' MONTH", "INTERVAL '3' DAY", "INTERVAL '90' MINUTE"};
    }
    if (binding::contains(form.constants, position)) {
        return constants_for(form, position);
    }
    const auto* const known = std::ranges::find(samples, type, &sample::type);
    return {fmt::format("{}_{}", known->name, position)};
}

// The values for which the call is defined, where the catalogue says so.
std::string filter_for(const signature& form) {
    std::vector<std::string> conditions;
    for (std::size_t i = 0; i < form.argument_count; ++i) {
        if (!binding::is_number(form.type_list[i]) || binding::contains(form.constants, i)) {
            continue;
        }
        const argument_fact fact = fact_of_argument(form, i);
        const std::string column = expressions_for(form, i).front();
        if (fact.low > -1e9L) {
            conditions.push_back(
                fmt::format("{} >= {}", column, fact.low > 0 ? "0.01" : fmt::format("{:.0f}", static_cast<double>(fact.low))));
        }
        if (fact.high < 1e9L) {
            conditions.push_back(fmt::format("{} <= {:.0f}", column, static_cast<double>(fact.high)));
        }
    }
    for (std::size_t i = 0; i < form.argument_count; ++i) {
        if (!form.is_null_for_null && form.changes == change::per_session && !binding::contains(form.constants, i)) {
            conditions.push_back(fmt::format("{} IS NOT NULL", expressions_for(form, i).front())); // which may stand for now
        }
    }
    std::ranges::sort(conditions);
    conditions.erase(std::unique(conditions.begin(), conditions.end()), conditions.end());
    return conditions.empty() ? "" : fmt::format(" WHERE {}", fmt::join(conditions, " AND "));
}

// As the program writes it: by the built-in's own syntax where it has one, `$1` for the first argument, with a keyword as a bare word.
std::string program_call(const signature& form, std::vector<std::string> arguments) {
    const std::string_view syntax = spelling_of(form.builtin).syntax;
    if (form.keyword && !syntax.empty()) {
        std::erase(arguments[*form.keyword], '\'');
    }
    if (syntax.empty() || form.builtin == "CONCAT" || (form.builtin == "TRIM" && arguments.size() == 1)) {
        return fmt::format("{}({})", form.builtin, fmt::join(arguments, ", "));
    }
    std::string made(syntax);
    const std::size_t optional = made.find('[');
    if (optional != made.npos) {
        made = arguments.size() == form.argument_count && made.find(fmt::format("${}", arguments.size())) > optional
                   ? program_run::replaced(program_run::replaced(made, "[", ""), "]", "")
                   : made.substr(0, optional) + made.substr(made.find(']') + 1);
    }
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        made = program_run::replaced(made, fmt::format("${}", i + 1), arguments[i]);
    }
    return made;
}

// ---- answers --------------------------------------------------------------------------------------------------------------

// The cells of one column, as CSV: an empty line is NULL.
std::vector<cell> cells_of_csv(const std::string& csv) {
    std::vector<cell> cells;
    std::size_t at = std::min(csv.find('\n'), csv.size()) + 1;
    while (at < csv.size()) {
        if (csv[at] != '"') {
            const std::size_t end = std::min(csv.find('\n', at), csv.size());
            cells.push_back(end == at ? cell() : cell(csv.substr(at, end - at)));
            at = end + 1;
            continue;
        }
        std::string text;
        for (++at; at < csv.size() && (csv[at] != '"' || csv.substr(at, 2) == "\"\""); ++at) {
            at += csv[at] == '"' ? 1 : 0;
            text += csv[at];
        }
        cells.emplace_back(text);
        at += 2;
    }
    return cells;
}

std::string without_closing_zeros(std::string text) {
    if (text.find('.') != text.npos) {
        text.resize(text.find_last_not_of('0') + 1);
        text.resize(text.find_last_not_of('.') + 1);
    }
    return text == "-0" ? "0" : text;
}

// As the type has it, whatever the host's way of writing.
std::string normal_form(const std::string& text, sql_type type) {
    switch (type) {
    case sql_type::decimal:
        return without_closing_zeros(text);
    case sql_type::double_precision:
        return fmt::format("{}", std::strtod(text.c_str(), nullptr));
    case sql_type::time_with_zone:
    case sql_type::timestamp_with_zone:
        return without_closing_zeros(text.substr(0, text.find('+')));
    case sql_type::timestamp:
        return text.find(":") == text.npos ? fmt::format("{} 00:00:00", text) : without_closing_zeros(text);
    case sql_type::time:
        return without_closing_zeros(text);
    case sql_type::boolean:
        return text == "t" ? "true" : text == "f" ? "false" : text;
    default:
        return text;
    }
}

// The decimal with so many digits behind the point, halves away from zero.
std::string rounded(const std::string& text, int digits) {
    const std::size_t point = text.find('.');
    if (point == text.npos || text.size() - point - 1 <= static_cast<std::size_t>(digits)) {
        return text;
    }
    std::string cut = text.substr(0, point + 1 + static_cast<std::size_t>(digits));
    const bool up = text[cut.size()] >= '5';
    for (std::size_t i = cut.size(); up && i-- > 0;) {
        if (cut[i] == '.') {
            continue;
        }
        if (cut[i] != '9') {
            cut[i] += 1;
            break;
        }
        cut[i] = '0';
    }
    return cut;
}

// "LN: -6803" of a message, or all of it where there is no such thing.
std::string status_in(const std::string& message) {
    const std::size_t at = message.find(": -");
    return at == message.npos ? message : message.substr(at + 2, std::min(message.find(' ', at + 2), message.size()) - at - 2);
}

} // namespace

const std::vector<cell_column>& cell_columns() {
    static const std::vector<cell_column> columns = [] {
        std::vector<cell_column> made;
        for (const sample& of_type : samples) {
            for (std::size_t k = 0; k < columns_of_a_type; ++k) {
                cell_column column{fmt::format("{}_{}", of_type.name, k), of_type.type, {}};
                for (std::size_t row = 0; row < row_count; ++row) {
                    // Each column goes round its values by another step.
                    const char* const value = of_type.values[(row * (k + 1) + k) % of_type.values.size()];
                    column.values.push_back(value == nullptr ? cell() : cell(value));
                }
                made.push_back(std::move(column));
            }
        }
        return made;
    }();
    return columns;
}

std::vector<std::string> cell_table_statements(const std::function<std::string_view(sql_type)>& type_name) {
    std::string definition;
    for (const cell_column& column : cell_columns()) {
        definition += fmt::format(", {} {}", column.name, type_name(column.type));
    }
    std::vector<std::string> statements{fmt::format("CREATE TEMP TABLE cells(n INT{})", definition)};
    for (std::size_t row = 0; row < row_count; ++row) {
        std::string values;
        for (const cell_column& column : cell_columns()) {
            values += column.values[row] ? fmt::format(", CAST('{}' AS {})", *column.values[row], type_name(column.type)) : ", NULL";
        }
        statements.push_back(fmt::format("INSERT INTO cells VALUES ({}{})", row, values));
    }
    return statements;
}

std::vector<cell_call> cell_calls() {
    std::vector<cell_call> calls;
    for (const builtin& known : builtins) {
        for (const signature& form : binding::signatures_of(known.name)) {
            const bool is_comparable = form.result != sql_type::interval_dt && form.result != sql_type::varbinary &&
                                       std::ranges::find(form.types(), sql_type::varbinary) == form.types().end();
            if (!is_comparable || form.changes == change::every_call) {
                continue;
            }
            std::vector<std::vector<std::string>> lists{{}};
            for (std::size_t i = 0; i < form.argument_count; ++i) {
                std::vector<std::vector<std::string>> longer;
                for (const auto& list : lists) {
                    for (const std::string& expression : expressions_for(form, i)) {
                        longer.push_back(list);
                        longer.back().push_back(expression);
                    }
                }
                lists = std::move(longer);
            }
            constexpr std::size_t most_of_a_signature = 8;
            for (std::size_t k = 0; k < std::min(lists.size(), most_of_a_signature); ++k) {
                const std::vector<std::string>& arguments = lists[k];
                const std::string filter = filter_for(form);
                calls.push_back({fmt::format("SELECT {} AS v FROM cells{}", program_call(form, arguments), filter),
                                 fmt::format("{}({})", known.name, fmt::join(arguments, ", ")), filter, form.result});
            }
        }
    }
    return calls;
}

namespace {

// Once for all hosts, as the program is started for each of them.
const std::vector<std::pair<cell_call, program_run::run_result>>& program_answers() {
    static const std::vector<std::pair<cell_call, program_run::run_result>> answers = [] {
        const program_run::scratch_directory directory;
        std::string types;
        std::string file;
        for (const cell_column& column : cell_columns()) {
            const auto* const known = std::ranges::find(samples, column.type, &sample::type);
            types += fmt::format("{}{}:{}", types.empty() ? "" : ",", column.name, known->program_type);
            file += fmt::format("{}{}", file.empty() ? "" : ",", column.name);
        }
        for (std::size_t row = 0; row < row_count; ++row) {
            file += '\n';
            for (const cell_column& column : cell_columns()) {
                const cell& value = column.values[row];
                file += fmt::format("{}{}", &column == &cell_columns().front() ? "" : ",", value ? fmt::format("\"{}\"", *value) : "");
            }
        }
        directory.write("cells.csv", file + "\n");
        std::vector<std::pair<cell_call, program_run::run_result>> made;
        for (const cell_call& call : cell_calls()) {
            made.emplace_back(call, directory.run({"--format", "csv", "--types", types, "cells.csv", call.program}));
        }
        return made;
    }();
    return answers;
}

} // namespace

void expect_equal_cells(const std::function<host_answer(const cell_call& call)>& ask, std::optional<int> fraction_digits) {
    std::size_t succeeded = 0;
    for (const auto& answer : program_answers()) {
        const cell_call& call = answer.first;
        const program_run::run_result& program = answer.second;
        const host_answer host = ask(call);
        if (program.err.find("has no date") != program.err.npos) {
            continue; // hosts write the date that times have; people who type a format for a time are told
        }
        if (program.err.find("SQL, character") != program.err.npos) {
            EXPECT_NE(host.error, "") << call.program << "\n" << program.err;
            continue;
        }
        if (host.error.starts_with("22021")) {
            continue; // PostgreSQL has no texts with a byte of 0
        }
        if (program.status != 0) {
            EXPECT_EQ(status_in(program.err.substr(0, program.err.find('\n'))), status_in(host.error)) << call.program << "\n"
                                                                                                       << program.err << host.error;
            continue;
        }
        EXPECT_EQ(host.error, "") << call.program;
        const std::vector<cell> expected = cells_of_csv(program.out);
        if (host.error.empty()) {
            ASSERT_EQ(expected.size(), host.values.size()) << call.program;
        }
        for (std::size_t row = 0; row < host.values.size(); ++row) {
            const auto normal = [&](const cell& value) { return value ? normal_form(*value, call.result) : "NULL"; };
            std::string wanted = normal(expected[row]);
            if (call.result == sql_type::decimal && fraction_digits) {
                wanted = without_closing_zeros(rounded(wanted, *fraction_digits));
            }
            EXPECT_EQ(wanted, normal(host.values[row])) << call.program << ", row " << row;
            succeeded += 1;
        }
    }
    EXPECT_GT(succeeded, 5000U); // most calls have results
}

} // namespace bifun::test
