// SPDX-License-Identifier: Apache-2.0
// Calls of the library's functions.

#include "host/evaluation/execution_parts.h" // before the frame's argument readers, which have names of the catalogue

#include <cmath>

#include "adapters/binding/invocation.h"
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

using binding::failed_call;
using binding::invocation;

using bifun::value_type;

// The call of a step, its columns as they are in view.
invocation invocation_of(execution& run, step& call) {
    invocation made{call.entry, call.function, &run.environment, run.memory.get(), {}, {}, &call.result->column};
    for (std::size_t i = 0; i < call.operands.size(); ++i) {
        if (call.entry->arguments()[i].kind == bifun::argument_kind::column) {
            made.columns[i] = &column_of(run, call.operands[i]);
        } else {
            made.constants[i] = &run.query.steps[call.operands[i]].value.as_int;
        }
    }
    return made;
}

// Why the text of a row cannot be read as a date; empty where the call does not read text under a format or as a date. What is wrong with a
// format of the session does not show before a row is read by it.
std::string explain_unread_text(execution& run, const step& call, const bifun_column* texts, std::uint32_t row, std::int32_t row_status) {
    const bifun::entry_point& entry = *call.entry;
    if (entry.result != value_type::DATETIME || texts == nullptr || entry.arguments()[0].type != value_type::VARCHAR) {
        return "";
    }
    const auto& text = static_cast<const bifun_string*>(texts->data->values)[texts->selection == nullptr ? row : texts->selection[row]];
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

[[noreturn]] void fail_in_call(execution& run, const step& call, const invocation& made, std::int32_t status, std::uint32_t row_count) {
    const failed_call failed = find_failure(made, status, row_count);
    const std::string message = fmt::format("{}: {} {}", call.entry->builtin, failed.status, zqengine_status_meaning(failed.status));
    if (!failed.row) {
        throw program_error(message);
    }
    const bool is_of_text = failed.status == BIFUN_INVALID_DATETIME || failed.status == BIFUN_INVALID_DATE_FORMAT;
    const std::string reason = is_of_text ? explain_unread_text(run, call, made.columns[0], *failed.row, failed.status) : "";
    fail("{} in row {}{}{}", message, row_in_file(run, *failed.row), reason.empty() ? "" : ": ", reason);
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
            fail("{}: a format shows no digits behind the 127th of a fraction, and the number in row {} has some; without a format it is "
                 "shown in full",
                 call.entry->builtin, row_in_file(run, k));
        }
    }
}

} // namespace

void evaluate_call(execution& run, step& call, std::uint32_t row_count) {
    const invocation made = invocation_of(run, call);
    if (call.shows_all_digits) {
        check_digits(run, call, *made.columns[0], row_count);
    }
    const std::int32_t status = invoke(made, row_count);
    if (status != 0) {
        fail_in_call(run, call, made, status, row_count);
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
