// SPDX-License-Identifier: Apache-2.0
// What is said beside a result of the rows of its calls.

#include "host/evaluation/execution_parts.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

#include "engine/datetime.h"
#include "host/program_error.h"
#include "host/sql/names.h"
#include "host/sql/syntax_advice.h"
#include "host/tables/field_kind.h"
#include "host/tables/type_advice.h"
#include "host/values/number_formats.h"
#include "host/values/value_text.h"

namespace host {
namespace {

std::size_t operand_of(const step& call, const odd_rows& odd) { return call.operands[odd.argument]; }

const table_column* table_column_of(const execution& run, std::size_t operand) {
    const step& given = run.query.steps[operand];
    return given.kind == step_kind::table_column ? &run.query.source->columns[given.table_column] : nullptr;
}

std::string name_of(const execution& run, std::size_t operand, std::string_view otherwise) {
    const table_column* const column = table_column_of(run, operand);
    return column != nullptr ? name_in_query(column->name) : std::string(otherwise);
}

// Of those for which `is_odd` holds: the first one as `show` has it, and what `way` has for it.
template <class IsOdd, class Show, class Way>
void count_rows(const execution& run, odd_rows& odd, std::uint32_t row_count, IsOdd is_odd, Show show, Way way) {
    for (std::uint32_t k = 0; k < row_count; ++k) {
        if (is_odd(k) && ++odd.rows == 1) {
            const std::string shown = show(k);
            odd.first = shown + (shown.empty() ? "" : " in ") + place_of_row(run, k);
            odd.way = way(k);
        }
    }
}

// Whether a row at all has a NULL for its result.
bool has_null_results(const step& call, std::uint32_t row_count) {
    return std::memchr(call.result->data.null_flags, 0, row_count) != nullptr;
}

// ---- texts that cannot be read ---------------------------------------------------------------------------------------

std::string_view text_at(const bifun_column& texts, std::uint32_t row) {
    const auto& text = static_cast<const bifun_string*>(texts.data->values)[row_of(texts, row)];
    return {reinterpret_cast<const char*>(text.data), text.length};
}

std::string way_to_dates(const execution& run, std::size_t operand, std::string_view text) {
    return shape_of_number(without_blanks_around(text)).is_number
               ? "; CAST(x AS DECIMAL) makes a number of a text"
               : way_to(sql_type::date, {.type = sql_type::varchar, .column = table_column_of(run, operand)});
}

std::string way_to_numbers(const execution& run, std::size_t operand, std::string_view text) {
    const table_column* const column = table_column_of(run, operand);
    const std::string of_all = column != nullptr ? way_to_all_numbers(*column) : "";
    const std::string call = call_that_reads(name_of(run, operand, "x"), to_utf8_with_replacements(*run.settings.text_charset, text));
    return call.empty() || of_all.starts_with("; --decimal") ? of_all : fmt::format("; {} reads such a text", call);
}

// No other argument of such calls may be NULL: those are constants. Empty texts and words for NULL are NULL by right.
void count_unread_texts(const execution& run, const step& call, odd_rows& odd, std::uint32_t row_count) {
    const std::size_t operand = operand_of(call, odd);
    const bifun_column& texts = column_of(run, operand);
    const auto is_odd = [&](std::uint32_t k) {
        return call.result->data.null_flags[k] == 0 && texts.data->null_flags[row_of(texts, k)] != 0 && !text_at(texts, k).empty() &&
               !is_null_word(text_at(texts, k));
    };
    const auto way = odd.kind == oddity::unread_dates ? way_to_dates : way_to_numbers;
    count_rows(
        run, odd, has_null_results(call, row_count) ? row_count : 0, is_odd, [&](std::uint32_t k) { return shown_value(run, operand, k); },
        [&](std::uint32_t k) { return way(run, operand, text_at(texts, k)); });
}

// ---- seconds, NULLs and zones ----------------------------------------------------------------------------------------

// How milliseconds, or smaller parts, become seconds, where so many are moments from 1973 on; empty for other numbers.
std::string way_to_seconds(std::int64_t number) {
    constexpr std::int64_t earliest = 100'000'000;
    constexpr std::int64_t latest = std::numeric_limits<std::int32_t>::max();
    for (const auto& [per_second, name] : {std::pair(1'000, "milliseconds"), {1'000'000, "microseconds"}, {1'000'000'000, "nanoseconds"}}) {
        if (number / per_second >= earliest && number / per_second <= latest) {
            return fmt::format("; CAST(n / {} AS BIGINT) makes seconds of {}", per_second, name);
        }
    }
    return "";
}

void count_late_seconds(const execution& run, const step& call, odd_rows& odd, std::uint32_t row_count) {
    const std::size_t operand = operand_of(call, odd);
    const bifun_column& seconds = column_of(run, operand);
    const auto value = [&](std::uint32_t k) { return static_cast<const std::int64_t*>(seconds.data->values)[row_of(seconds, k)]; };
    const auto is_odd = [&](std::uint32_t k) {
        return call.result->data.null_flags[k] == 0 && seconds.data->null_flags[row_of(seconds, k)] != 0 && value(k) > 0;
    };
    count_rows(
        run, odd, has_null_results(call, row_count) ? row_count : 0, is_odd, [&](std::uint32_t k) { return std::to_string(value(k)); },
        [&](std::uint32_t k) { return way_to_seconds(value(k)); });
}

void count_nulls(const execution& run, const step& call, odd_rows& odd, std::uint32_t row_count) {
    const std::size_t operand = operand_of(call, odd);
    const bifun_column& values = column_of(run, operand);
    count_rows(
        run, odd, values.no_nulls != 0 ? 0 : row_count, [&](std::uint32_t k) { return values.data->null_flags[row_of(values, k)] == 0; },
        [](std::uint32_t) { return ""; },
        [&](std::uint32_t) {
            const std::string name = name_of(run, operand, "d");
            return fmt::format("; CASE WHEN {0} IS NOT NULL THEN {1}({0}) END leaves NULL as it is", name, call.entry->builtin);
        });
}

// In minutes; nothing for NULL and for what is no datetime. A datetime without a zone has the session's.
std::optional<std::int32_t> zone_at(const execution& run, std::size_t operand, std::uint32_t row) {
    const bifun_column& values = column_of(run, operand);
    const std::uint32_t place = row_of(values, row);
    if (values.data->null_flags[place] == 0) {
        return std::nullopt;
    }
    zqtime value;
    if (run.query.steps[operand].type != sql_type::varchar) {
        value = static_cast<const zqtime*>(values.data->values)[place];
    } else if (!read_any_datetime(text_at(values, row), value)) {
        return std::nullopt;
    }
    const std::int32_t zone = zqtime_get_tz(&value);
    return zone == ZQTIME_NO_ZONE ? run.settings.time_zone() : zone;
}

void count_apart_zones(const execution& run, const step& call, odd_rows& odd, std::uint32_t row_count) {
    const std::size_t operand = operand_of(call, odd);
    const bool has_other = odd.argument + 1 < call.operands.size();
    const std::size_t other = has_other ? call.operands[odd.argument + 1] : operand;
    const auto is_odd = [&](std::uint32_t k) {
        const std::optional<std::int32_t> zone = zone_at(run, operand, k);
        const std::optional<std::int32_t> second = has_other ? zone_at(run, other, k) : run.settings.time_zone();
        return zone && second && *zone != *second;
    };
    count_rows(
        run, odd, row_count, is_odd,
        [&](std::uint32_t k) {
            const std::string behind = has_other ? fmt::format(" and {}", shown_value(run, other, k)) : "";
            return shown_value(run, operand, k) + behind;
        },
        [](std::uint32_t) { return fmt::format("; {}", way_to_utc); });
}

// ---- results ---------------------------------------------------------------------------------------------------------

void count_filled_results(const execution& run, const step& call, odd_rows& odd, std::uint32_t row_count) {
    const bifun_column& texts = call.result->column;
    count_rows(
        run, odd, row_count, [&](std::uint32_t k) { return texts.data->null_flags[k] != 0 && text_at(texts, k).starts_with('#'); },
        [&](std::uint32_t k) { return shown_value(run, operand_of(call, odd), k); },
        [](std::uint32_t) { return "; the format needs more digits before the point"; });
}

// ---- the kinds -------------------------------------------------------------------------------------------------------

struct kind_of_oddity {
    oddity kind;
    void (*count)(const execution& run, const step& call, odd_rows& odd, std::uint32_t row_count);
    std::string_view what; // the call does
};

constexpr kind_of_oddity kinds[] = {
    {oddity::unread_dates, count_unread_texts, "gives NULL for texts that are no dates such as 2024-02-29"},
    {oddity::unread_numbers, count_unread_texts, "gives NULL for texts that are no numbers"},
    {oddity::late_seconds, count_late_seconds, "gives NULL for more than 2147483647 seconds"},
    {oddity::nulls_for_now, count_nulls, "takes NULL for the current time"},
    {oddity::apart_zones, count_apart_zones, "takes the clock times of different zones as they are"},
    {oddity::filled_results, count_filled_results, "has no room under its format for the number"},
};

const kind_of_oddity& kind_of(const odd_rows& odd) { return *std::ranges::find(kinds, odd.kind, &kind_of_oddity::kind); }

// Of a single datetime the other zone is the session's.
std::string_view what_is_odd(const step& call, const odd_rows& odd) {
    const bool is_single = odd.kind == oddity::apart_zones && odd.argument + 1 == call.operands.size();
    return is_single ? "takes the clock time of another zone for one of the session's" : kind_of(odd).what;
}

} // namespace

void count_odd_rows(const execution& run, step& call, std::uint32_t row_count) {
    for (odd_rows& odd : call.odd) {
        kind_of(odd).count(run, call, odd, row_count);
    }
}

void add_notices(const step& call, std::vector<std::string>& notices) {
    for (const odd_rows& odd : call.odd) {
        if (odd.rows > 0) {
            notices.push_back(fmt::format("{} {}, in {} row{}; the first is {}{}", call.entry->builtin, what_is_odd(call, odd), odd.rows,
                                          odd.rows == 1 ? "" : "s", odd.first, odd.way));
        }
    }
}

} // namespace host
