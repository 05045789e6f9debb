// SPDX-License-Identifier: Apache-2.0
// How long the entry points take that `run` beside this file has PostgreSQL call, in nanoseconds, for batches of one row: what of a call in
// PostgreSQL is the function's own time. Values and binding are those of the queries there. Printed as rows of SQL's VALUES.
#include <algorithm>
#include <chrono>
#include <functional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "adapters/binding/call.h"
#include "adapters/binding/host_values.h"
#include "adapters/binding/library.h"
#include "engine/charset.h"

namespace {

using binding::call_argument;
using binding::sql_type;

constexpr std::uint32_t value_count = 1000;

// An argument: a literal, as a column's text would have it, or a column of the table there.
struct argument {
    sql_type type;
    std::string_view text;
    bool is_literal;
};
struct measured_call {
    std::string_view expression;
    std::string_view builtin;
    std::vector<argument> arguments;
};

constexpr argument s{sql_type::varchar, "s", false};
constexpr argument m{sql_type::decimal, "m", false};
constexpr argument d{sql_type::double_precision, "d", false};
constexpr argument i{sql_type::bigint, "i", false};
constexpr argument dt{sql_type::date, "dt", false};
constexpr argument ts{sql_type::timestamp, "ts", false};
constexpr argument tz{sql_type::timestamp_with_zone, "tz", false};
constexpr argument text(std::string_view value) { return {sql_type::varchar, value, true}; }
constexpr argument integer(std::string_view value) { return {sql_type::integer, value, true}; }
constexpr argument bigint(std::string_view value) { return {sql_type::bigint, value, true}; }

std::vector<measured_call> calls_of_queries() {
    return {
        {"trim(s)", "TRIM", {s}},
        {"rtrim(s)", "RTRIM", {s}},
        {"substr(s, 3, 4)", "SUBSTR", {s, integer("3"), integer("4")}},
        {"replace(s, ''row'', ''line'')", "REPLACE", {s, text("row"), text("line")}},
        {"instr(s, ''many'')", "INSTR", {s, text("many")}},
        {"lpad(s, 30)", "LPAD", {s, integer("30")}},
        {"concat(s, s)", "CONCAT", {s, s}},
        {"length(s)", "LENGTH", {s}},
        {"abs(m)", "ABS", {m}},
        {"round(m, 1)", "ROUND", {m, integer("1")}},
        {"to_char(m, ''999,999.99'')", "TO_CHAR", {m, text("999,999.99")}},
        {"sqrt(d)", "SQRT", {d}},
        {"mod(i, 7::bigint)", "MOD", {i, bigint("7")}},
        {"year(dt)", "YEAR", {dt}},
        {"add_months(dt, 1)", "ADD_MONTHS", {dt, integer("1")}},
        {"days_between(dt, dt)", "DAYS_BETWEEN", {dt, dt}},
        {"extract(''hour'', ts)", "EXTRACT", {text("hour"), ts}},
        {"trunc(ts, ''MM'')", "TRUNC", {ts, text("MM")}},
        {"hour(tz)", "HOUR", {tz}},
        {"to_char(ts, ''YYYY-MM-DD'')", "TO_CHAR", {ts, text("YYYY-MM-DD")}},
    };
}

// Blanks at the end are counted, as the extension counts them.
void set_text(bifun_column& column, std::uint32_t row, std::string_view value) {
    const std::size_t length = value.find_last_not_of(' ') + 1;
    (void)zqengine_column_set_string(&column, row, value.data(), static_cast<std::uint32_t>(length),
                                     static_cast<std::uint32_t>(value.size() - length));
}

void set_value(bifun_column& column, std::uint32_t row, const argument& shown) {
    const std::int64_t number = std::int64_t{row} * 499 + 1;
    constexpr std::int64_t seconds_a_row = 421;
    void* const place = static_cast<std::uint8_t*>(column.data->values) + row * bifun::value_width(value_type_of(shown.type));
    column.data->null_flags[row] = 1;
    switch (shown.type) {
    case sql_type::varchar:
        set_text(column, row, fmt::format("  row {} of many  ", number % 1000));
        break;
    case sql_type::decimal:
        binding::read_host_decimal(number * 1000 / 7, 3, *static_cast<xdec*>(place));
        break;
    case sql_type::double_precision:
        *static_cast<double*>(place) = static_cast<double>(number) / 7;
        break;
    case sql_type::bigint:
        *static_cast<std::int64_t*>(place) = number;
        break;
    case sql_type::date:
        (void)binding::read_host_datetime(binding::days_to_2000 + number % 9000, 0, ZQTIME_NO_ZONE, *static_cast<zqtime*>(place));
        break;
    default:
        (void)binding::read_host_timestamp(binding::days_to_2000 * binding::microseconds_per_day +
                                               number * seconds_a_row * binding::microseconds_per_second,
                                           shown.type == sql_type::timestamp ? ZQTIME_NO_ZONE : 60, *static_cast<zqtime*>(place));
    }
}

const binding::signature& find_signature(const std::vector<binding::signature>& known, const measured_call& wanted) {
    const auto found = std::ranges::find_if(
        known, [&](const binding::signature& form) { return std::ranges::equal(form.types(), wanted.arguments, {}, {}, &argument::type); });
    return found != known.end() ? *found : throw std::runtime_error(fmt::format("no function for {}", wanted.expression));
}

double best_time(const std::function<void()>& run) {
    constexpr int rounds = 200;
    double best = 1e9;
    for (int round = 0; round < rounds; ++round) {
        const auto begin = std::chrono::steady_clock::now();
        run();
        best = std::min(best, std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - begin).count() / value_count);
    }
    return best;
}

double measure(const measured_call& wanted, const binding::session& executor) {
    const std::vector<binding::signature> known = binding::signatures_of(wanted.builtin);
    const std::unique_ptr<binding::call> made = binding::make_call(find_signature(known, wanted), wanted.arguments.size(), 1);
    std::vector<binding::column_pointer> columns;
    for (std::size_t k = 0; k < wanted.arguments.size(); ++k) {
        const argument& given = wanted.arguments[k];
        call_argument& to = made->arguments[k];
        const auto type = static_cast<std::int32_t>(value_type_of(given.type));
        bifun_column& column = *columns.emplace_back(zqengine_column_create(type, given.is_literal ? 1 : value_count));
        for (std::uint32_t row = 0; row < zqengine_column_capacity(&column); ++row) {
            if (!given.is_literal) {
                set_value(column, row, given);
            } else if (zqengine_column_set_text(&column, row, given.text.data(), static_cast<std::uint32_t>(given.text.size())) != 0) {
                throw std::runtime_error(fmt::format("{} is not read", given.text));
            }
        }
        to.data.values = column.data->values;
        to.data.null_flags[0] = 1;
        to.column.no_nulls = 1;
        to.stays = given.is_literal;
        to.repeats = given.is_literal && given.type != sql_type::varchar;
    }
    const auto failed = binding::evaluate(
        *made, executor, 1, [](const bifun_column*, bifun::value_type, std::span<const std::uint16_t>, std::uint32_t) {},
        binding::find_function);
    if (failed || made->last.entry == nullptr) {
        throw std::runtime_error(failed ? binding::text_of(*failed) : "not evaluated again");
    }
    const auto run = [&](bool evaluates) {
        const binding::last_row& last = made->last;
        for (std::uint32_t row = 0; row < value_count; ++row) {
            for (std::size_t k = 0; k < wanted.arguments.size(); ++k) {
                const argument& given = wanted.arguments[k];
                const std::size_t width = given.is_literal ? 0 : bifun::value_width(value_type_of(given.type));
                made->arguments[k].data.values = static_cast<std::uint8_t*>(columns[k]->data->values) + row * width;
            }
            zqengine_column_prepare(last.result, 1);
            if (evaluates) {
                (void)last.entry->invoke(last.function, executor.environment, executor.memory, last.arguments.data(), last.result, 1);
            }
        }
    };
    return best_time([&] { run(true); }) - best_time([&] { run(false); });
}

} // namespace

int main() {
    try {
        const std::string fault = binding::load_library({.compatible_mode = 1, .charset_code = ZQ_CHARSET_UTF8, .case_sensitive = 1});
        if (!fault.empty()) {
            throw std::runtime_error(fault);
        }
        const auto executor = binding::make_session();
        std::string rows;
        for (const measured_call& wanted : calls_of_queries()) {
            rows += fmt::format("{}('{}', {:.1f})", rows.empty() ? "" : ", ", wanted.expression, measure(wanted, *executor));
        }
        fmt::print("{}\n", rows);
        return 0;
    } catch (const std::exception& failed) {
        fmt::print(stderr, "bifun_function_alone: {}\n", failed.what());
        return 1;
    }
}
