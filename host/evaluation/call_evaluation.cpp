// SPDX-License-Identifier: Apache-2.0
// Calls of the library's functions.

#include "host/evaluation/execution_parts.h" // before the frame's argument readers, which have names of the catalogue

#include <algorithm>
#include <array>
#include <cmath>

#include "bop/frame/arguments.h"
#include "bop/frame/status.h"
#include "embedded/zqengine.h"
#include "engine/datetime.h"
#include "engine/decimal.h"
#include "engine/session.h"
#include "host/program_error.h"
#include "host/values/date_formats.h"
#include "host/values/value_text.h"

namespace host {
namespace {

using bifun::value_type;

// Calls the step's entry point for `row_count` rows. `columns` are the arguments that are columns, in place of the operands' own.
std::int32_t call_entry(execution& run, step& call, const std::array<const bifun_column*, bifun::most_arguments>& columns,
                        std::uint32_t row_count) {
    std::array<const void*, bifun::most_arguments> arguments{};
    for (std::size_t i = 0; i < call.operands.size(); ++i) {
        const bool is_constant = call.entry->arguments()[i].kind == bifun::argument_kind::constant;
        arguments[i] = is_constant ? static_cast<const void*>(&run.query.steps[call.operands[i]].value.as_int) : columns[i];
    }
    zqengine::clear_column(*call.result);
    // LTRIM leaves some rows as they are, whose bytes have just gone: they are empty texts.
    if (bifun::is_string(call.entry->result)) {
        std::fill_n(static_cast<bifun_string*>(call.result->column.data->values), row_count, bifun_string{});
    }
    // The IF operator only ever clears this flag; all other functions set it.
    call.result->column.no_nulls = 1;
    const std::int32_t status =
        call.entry->invoke(call.function, &run.environment, run.memory.get(), arguments.data(), &call.result->column, row_count);
    return status != 0 ? status : call.result->status;
}

// Why the text of a row cannot be read as a date; empty where the call does not read text under a format or as a date. What is wrong with a
// format of the session does not show before a row is read by it.
std::string explain_unread_text(execution& run, const step& call, const std::array<const bifun_column*, bifun::most_arguments>& row,
                                std::int32_t row_status) {
    const bifun::entry_point& entry = *call.entry;
    if (entry.result != value_type::DATETIME || row[0] == nullptr || entry.arguments()[0].type != value_type::VARCHAR) {
        return "";
    }
    const auto& text = static_cast<const bifun_string*>(row[0]->data->values)[*row[0]->selection];
    const std::string_view characters(reinterpret_cast<const char*>(text.data), text.length);
    dfm_model parsed;
    const dfm_model* model = entry.builtin == "TO_DATE"        ? sess4_get_date_format(&run.environment)
                             : entry.builtin == "TO_TIMESTAMP" ? sess4_get_datetime_format(&run.environment)
                             : entry.builtin == "TO_DT_TZ"     ? sess4_get_datetimetz_format(&run.environment)
                                                               : nullptr;
    if (entry.argument_count > 1) {
        const constant& format = run.query.steps[call.operands[1]].value;
        const bifun_string given = bifun::string_of(format.as_string, 0);
        (void)parse_date_fmt_with_len(&run.environment, given.data, given.length, 1, &parsed);
        if (entry.argument_count > 2) {
            const bifun_string nls = bifun::string_of(run.query.steps[call.operands[2]].value.as_string, 0);
            std::int32_t language = run.environment.language;
            (void)to_char_nls_parse(nls.data, nls.length, &language);
            (void)dfm_set_lang(&parsed, language);
        }
        model = &parsed;
    }
    if (row_status == BIFUN_INVALID_DATE_FORMAT) {
        return model != nullptr ? explain_unreadable(*model) : "";
    }
    return model != nullptr ? explain_mismatch(*model, characters)
                            : fmt::format("\"{}\" is none; {}", characters, explain_default_mismatch());
}

// A failed call says what went wrong but not where. Calling again with no rows tells a bad constant; calling again row by row, each
// alone through a selection vector of one entry, tells the row.
[[noreturn]] void fail_in_call(execution& run, step& call, const std::array<const bifun_column*, bifun::most_arguments>& columns,
                               std::int32_t status, std::uint32_t row_count) {
    const auto message = [&](std::int32_t code) {
        return fmt::format("{}: {} {}", call.entry->builtin, code, zqengine_status_meaning(code));
    };
    const std::int32_t constant_status = call_entry(run, call, columns, 0);
    if (constant_status != 0) {
        throw program_error(message(constant_status));
    }
    for (std::uint32_t row = 0; row < row_count; ++row) {
        std::array<bifun_column, bifun::most_arguments> single{};
        std::array<std::uint16_t, bifun::most_arguments> entries{};
        std::array<const bifun_column*, bifun::most_arguments> shown{};
        for (std::size_t i = 0; i < columns.size(); ++i) {
            if (columns[i] != nullptr) {
                entries[i] = columns[i]->selection == nullptr ? static_cast<std::uint16_t>(row) : columns[i]->selection[row];
                single[i] = *columns[i];
                single[i].selection = &entries[i];
                shown[i] = &single[i];
            }
        }
        const std::int32_t row_status = call_entry(run, call, shown, 1);
        if (row_status != 0) {
            const bool is_of_text = row_status == BIFUN_INVALID_DATETIME || row_status == BIFUN_INVALID_DATE_FORMAT;
            const std::string reason = is_of_text ? explain_unread_text(run, call, shown, row_status) : "";
            fail("{} in {}{}{}", message(row_status), place_of_row(run, row), reason.empty() ? "" : ": ", reason);
        }
    }
    throw program_error(message(status)); // memory ran out for the batch as a whole
}

// Results of functions end in blanks that are stored or counted, literals and fields in counted ones. Functions tell the two apart, people
// do not.
void count_trailing_blanks(bifun_column& column, std::uint32_t row_count) {
    auto* const texts = static_cast<bifun_string*>(column.data->values);
    for (std::uint32_t k = 0; k < row_count; ++k) {
        bifun_string& text = texts[k];
        while (column.data->null_flags[k] != 0 && text.length > 0 && text.data[text.length - 1] == ' ') {
            --text.length;
            ++text.trailing_blanks;
        }
    }
}

// A number so small that a decimal would lose digits of it, or all of them, is not shown with zeros in their place.
void check_digits(const execution& run, const step& call, const bifun_column& numbers, std::uint32_t row_count) {
    constexpr double always_kept = 1e-100; // 17 digits lie before the 127th behind the point
    const auto* const values = static_cast<const double*>(numbers.data->values);
    for (std::uint32_t k = 0; k < row_count; ++k) {
        const std::uint32_t row = numbers.selection == nullptr ? k : numbers.selection[k];
        xdec decimal;
        if (numbers.data->null_flags[row] != 0 && values[row] != 0 && std::fabs(values[row]) < always_kept &&
            xdec_from_double(&decimal, values[row]) == 0 && xdec_to_double(&decimal) != values[row]) {
            fail("{}: a format shows no digits behind the 127th of a fraction, and the number in {} has some; without a format it is "
                 "shown in full",
                 call.entry->builtin, place_of_row(run, k));
        }
    }
}

} // namespace

void evaluate_call(execution& run, step& call, std::uint32_t row_count) {
    std::array<const bifun_column*, bifun::most_arguments> columns{};
    for (std::size_t i = 0; i < call.operands.size(); ++i) {
        if (call.entry->arguments()[i].kind == bifun::argument_kind::column) {
            columns[i] = &column_of(run, call.operands[i]);
        }
    }
    if (call.shows_all_digits) {
        check_digits(run, call, *columns[0], row_count);
    }
    const std::int32_t status = call_entry(run, call, columns, row_count);
    if (status != 0) {
        fail_in_call(run, call, columns, status, row_count);
    }
    if (call.type == sql_type::boolean) {
        normalise_condition(call.result->column, row_count);
    }
    if (call.type == sql_type::varchar) {
        count_trailing_blanks(call.result->column, row_count);
    }
    if (is_datetime(call.type) && call.type != sql_type::timestamp) {
        // A call may have moved the date of a time or read a time of day into a date, which nobody sees, and dropped a zone.
        auto* const values = zqengine::values_of<zqtime>(*call.result);
        for (std::uint32_t k = 0; k < row_count; ++k) {
            if (call.result->data.null_flags[k] != 0) {
                complete_datetime(values[k], call.type, run.environment.time_zone);
            }
        }
    }
}

} // namespace host
