// SPDX-License-Identifier: Apache-2.0
// Calls of the library's functions.

#include "host/evaluation/execution_parts.h" // before the frame's argument readers, which have names of the catalogue

#include <algorithm>
#include <cmath>

#include "adapters/binding/invocation.h"
#include "bop/frame/arguments.h"
#include "bop/frame/status.h"
#include "embedded/zqengine.h"
#include "engine/datetime.h"
#include "engine/decimal.h"
#include "engine/json.h"
#include "engine/number_format.h"
#include "engine/session.h"
#include "host/program_error.h"
#include "host/values/date_formats.h"
#include "host/values/number_formats.h"
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
    const std::string shown = shown_text(*run.settings.text_charset, characters);
    return model != nullptr ? explain_mismatch(*model, characters, shown)
                            : fmt::format("\"{}\" is none; {}", shown, explain_default_mismatch());
}

// A constant text argument; empty where there is none.
std::string constant_text(const execution& run, const step& call, std::size_t position) {
    if (position >= call.operands.size()) {
        return "";
    }
    const bifun_string text = bifun::string_of(run.query.steps[call.operands[position]].value.as_string, 0);
    return {reinterpret_cast<const char*>(text.data), text.length};
}

// Where a text is no path.
std::string explain_path(const std::string& text) {
    jpath* path = nullptr;
    std::uint32_t fault_at = 0;
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    (void)jpath_parse(nullptr, bytes, static_cast<std::uint32_t>(text.size()), &path, &fault_at);
    jpath_free(nullptr, path);
    return fault_at >= text.size() ? fmt::format("\"{}\" ends too early", text)
                                   : fmt::format("\"{}\" is none from \"{}\" on", text, std::string_view(text).substr(fault_at));
}

// Why the text of a row is no number under the call's format.
std::string explain_unread_number(execution& run, const step& call, const bifun_column* texts, std::uint32_t row) {
    const auto& text = static_cast<const bifun_string*>(texts->data->values)[texts->selection == nullptr ? row : texts->selection[row]];
    const std::string_view characters(reinterpret_cast<const char*>(text.data), text.length);
    return explain_number_mismatch(characters, shown_text(*run.settings.text_charset, characters), constant_text(run, call, 1),
                                   constant_text(run, call, 2));
}

// ", given 0": the values of a row that the query does not show; empty where all are constants.
std::string given_values(const execution& run, const step& call, std::uint32_t row) {
    std::string given;
    for (const std::size_t operand : call.operands) {
        if (run.query.steps[operand].kind != step_kind::constant) {
            given.append(given.empty() ? ", given " : ", ").append(shown_value(run, operand, row));
        }
    }
    return given;
}

struct argument_domain {
    std::string_view builtins;
    std::string_view meaning;
};

// Of constants, which fail before any row.
constexpr argument_domain domains[] = {
    {"LEFT RIGHT REPEAT", "the number is 0 or more"},
    {"SHA2", "the bits are 224, 256, 384 or 512"},
    {"INSTR INSTRB", "the occurrence is 1 or more"},
    {"OVERLAY", "the position is 1 or more"},
};

std::string_view domain_of_constants(std::string_view builtin) {
    const auto* const known =
        std::ranges::find_if(domains, [builtin](const argument_domain& domain) { return bifun::has_word(domain.builtins, builtin); });
    return known != std::end(domains) ? known->meaning : "";
}

[[noreturn]] void fail_in_call(execution& run, const step& call, const invocation& made, std::int32_t status, std::uint32_t row_count) {
    const failed_call failed = find_failure(made, status, row_count);
    const std::string message = fmt::format("{}: {} {}", call.written.empty() ? call.entry->builtin : call.written, failed.status,
                                            zqengine_status_meaning(failed.status));
    if (!failed.row && failed.status == BIFUN_INVALID_JSON_PATH) {
        fail("{}: {}", message, explain_path(constant_text(run, call, 1)));
    }
    constexpr std::int32_t outside_domain = -6803;
    if (!failed.row && failed.status == outside_domain && !domain_of_constants(call.entry->builtin).empty()) {
        fail("{}; {}", message, domain_of_constants(call.entry->builtin));
    }
    const std::string reason_of_constant = failed.status == ZQ_INVALID_NUMBER_FORMAT ? explain_number_format(constant_text(run, call, 1))
                                           : failed.status == BIFUN_UNKNOWN_DAY_NAME ? "there are Monday to Sunday and Mon to Sun"
                                                                                     : "";
    if (!reason_of_constant.empty() || !failed.row) {
        fail("{}{}{}", message, reason_of_constant.empty() ? "" : ": ", reason_of_constant);
    }
    const bool is_of_text = failed.status == BIFUN_INVALID_DATETIME || failed.status == BIFUN_INVALID_DATE_FORMAT;
    const std::string reason = is_of_text ? explain_unread_text(run, call, made.columns[0], *failed.row, failed.status)
                               : failed.status == BIFUN_NUMBER_FORMAT_MISMATCH
                                   ? explain_unread_number(run, call, made.columns[0], *failed.row)
                                   : "";
    fail("{} in {}{}", message, place_of_row(run, *failed.row),
         reason.empty() ? given_values(run, call, *failed.row) : fmt::format(": {}", reason));
}

// Results of functions end in blanks that are stored or counted, literals and fields in counted ones. Functions tell the two apart, people
// do not. In the same pass looks for results that begin with #, where that is asked for.
template <bool looks_for_filled> bool count_trailing_blanks(bifun_column& column, std::uint32_t row_count) {
    auto* const texts = static_cast<bifun_string*>(column.data->values);
    bool is_filled = false;
    for (std::uint32_t k = 0; k < row_count; ++k) {
        bifun_string& text = texts[k];
        while (column.data->null_flags[k] != 0 && text.length > 0 && text.data[text.length - 1] == ' ') {
            --text.length;
            ++text.trailing_blanks;
        }
        if constexpr (looks_for_filled) {
            is_filled |= column.data->null_flags[k] != 0 && text.length > 0 && text.data[0] == '#';
        }
    }
    return is_filled;
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
    const bool may_be_filled = std::ranges::find(call.odd, oddity::filled_results, &odd_rows::kind) != call.odd.end();
    bool has_oddities = !call.odd.empty();
    if (may_be_filled) {
        has_oddities = count_trailing_blanks<true>(call.result->column, row_count);
    } else if (call.type == sql_type::varchar) {
        (void)count_trailing_blanks<false>(call.result->column, row_count);
    }
    if (has_oddities) {
        count_odd_rows(run, call, row_count);
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
