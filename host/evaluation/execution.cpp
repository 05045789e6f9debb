#include "host/evaluation/execution.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

#include "bop/frame/arguments.h"
#include "bop/frame/status.h"
#include "embedded/format/number_format.h"
#include "embedded/session/environment.h"
#include "engine/datetime.h"
#include "engine/decimal.h"
#include "engine/memory.h"
#include "engine/session.h"
#include "host/program_error.h"
#include "host/session/interruption.h"
#include "host/values/date_formats.h"
#include "host/values/value_text.h"

namespace host {
namespace {

using bifun::value_type;

// A column of one row shows it in every row of a batch through a selection vector of zeros.
constexpr std::uint32_t most_batch_rows = 65536;
constexpr std::array<std::uint16_t, most_batch_rows> all_zero{};

struct memory_destroyer {
    bifun_environment* environment;
    void operator()(bifun_memory_object* memory) const { rt_memobj_destroy(environment, memory); }
};

struct execution {
    plan& query;
    string_rules rules;
    bifun_environment environment{};
    std::unique_ptr<bifun_memory_object, memory_destroyer> memory{nullptr, {&environment}};
    std::vector<std::uint16_t> selection; // room for a batch; the rows in view where `selected`
    std::uint64_t rows_before = 0;        // of the table, before the batch in hand
    bool selected = false;                // whether the table's columns show the selection
};

bifun_column& column_of(const execution& run, std::size_t index) {
    const step& made = run.query.steps[index];
    return made.kind == step_kind::table_column ? run.query.source->columns[made.table_column].values->column : made.result->column;
}

[[noreturn]] void fail_for_memory() { fail("out of memory; a smaller --batch-rows needs less"); }

void create_results(plan& query, std::uint32_t batch_rows, string_rules rules) {
    for (step& made : query.steps) {
        if (made.kind == step_kind::table_column) {
            continue;
        }
        if (made.kind == step_kind::constant) {
            made.result = make_constant_column({&made.value, 1}, value_type_of(made.type));
        } else {
            made.result.reset(zqengine::create_column(value_type_of(made.type), batch_rows));
        }
        if (made.kind == step_kind::in_list) {
            made.scratch.reset(zqengine::create_column(value_type::BOOL, batch_rows));
        }
        if (!made.items.empty()) {
            zqengine::column_pointer values = make_constant_column(made.items, value_type_of(query.steps[made.operands[0]].type));
            if (values == nullptr) {
                fail_for_memory();
            }
            made.item_values = sort_values(std::move(values), rules);
        }
        if (made.result == nullptr || (made.kind == step_kind::in_list && made.scratch == nullptr)) {
            fail_for_memory();
        }
        if (made.kind == step_kind::constant) {
            made.result->column.selection = all_zero.data();
        }
    }
}

// ---- calls ---------------------------------------------------------------------------------------------------------

const char* status_meaning(std::int32_t status) {
    switch (status) {
#define STATUS(code, name, meaning)                                                                                                        \
    case code:                                                                                                                             \
        return meaning;
#include "bop/frame/statuses.def"
#undef STATUS
    default: {
        const char* const meaning = zqengine::number_format_status_meaning(status);
        return meaning != nullptr ? meaning : "engine error";
    }
    }
}

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

std::uint64_t row_in_file(const execution& run, std::uint32_t batch_row) {
    return run.rows_before + (run.selected ? run.selection[batch_row] : batch_row) + 1;
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
    const auto message = [&](std::int32_t code) { return fmt::format("{}: {} {}", call.entry->builtin, code, status_meaning(code)); };
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
            fail("{} in row {}{}{}", message(row_status), row_in_file(run, row), reason.empty() ? "" : ": ", reason);
        }
    }
    throw program_error(message(status)); // memory ran out for the batch as a whole
}

// A call may have moved the date of a time or read a time of day into a date, which nobody sees, and dropped a zone.
void complete_datetimes(const execution& run, step& call, std::uint32_t row_count) {
    constexpr std::int32_t year_of_times = 1900;
    const bifun_column& column = call.result->column;
    auto* const values = static_cast<zqtime*>(column.data->values);
    for (std::uint32_t k = 0; k < row_count; ++k) {
        if (column.data->null_flags[k] == 0) {
            continue;
        }
        if (call.type == sql_type::date) {
            (void)zqtime_set_hour(&values[k], 0);
            (void)zqtime_set_min(&values[k], 0);
            (void)zqtime_set_sec(&values[k], 0);
            (void)zqtime_set_msec(&values[k], 0);
        }
        if (!has_date(call.type)) {
            (void)zqtime_set_day(&values[k], 1);
            (void)zqtime_set_month(&values[k], 1);
            (void)zqtime_set_year(&values[k], year_of_times);
        }
        if (has_zone(call.type)) {
            add_zone(values[k], run.environment.time_zone);
        }
    }
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
        complete_datetimes(run, call, row_count);
    }
}

// ---- conversions and conditions ------------------------------------------------------------------------------------

template <class From, class To, class Convert>
void convert_rows(const bifun_column& from, bifun_column& to, std::uint32_t row_count, Convert convert) {
    const auto* const source = static_cast<const From*>(from.data->values);
    auto* const target = static_cast<To*>(to.data->values);
    for (std::uint32_t k = 0; k < row_count; ++k) {
        const std::uint32_t i = from.selection == nullptr ? k : from.selection[k];
        to.data->null_flags[k] = from.data->null_flags[i];
        if (from.data->null_flags[i] != 0) {
            convert(source[i], target[k]);
        }
    }
    to.no_nulls = from.no_nulls;
}

void evaluate_conversion(const execution& run, step& made, std::uint32_t row_count) {
    const bifun_column& from = column_of(run, made.operands[0]);
    bifun_column& to = made.result->column;
    const auto to_decimal = [](auto value, xdec& decimal) { xdec_from_int64(&decimal, value, 255); };
    const auto to_number = [](auto value, auto& number) { number = static_cast<std::remove_reference_t<decltype(number)>>(value); };
    const value_type source = value_type_of(run.query.steps[made.operands[0]].type);
    const value_type target = value_type_of(made.type);
    if (source == value_type::DATETIME) {
        convert_rows<zqtime, zqtime>(from, to, row_count, [&](const zqtime& value, zqtime& zoned) {
            zoned = value;
            add_zone(zoned, run.environment.time_zone);
        });
    } else if (source == value_type::INT && target == value_type::BIGINT) {
        convert_rows<std::int32_t, std::int64_t>(from, to, row_count, to_number);
    } else if (source == value_type::INT && target == value_type::DECIMAL) {
        convert_rows<std::int32_t, xdec>(from, to, row_count, to_decimal);
    } else if (source == value_type::INT) {
        convert_rows<std::int32_t, double>(from, to, row_count, to_number);
    } else if (source == value_type::BIGINT && target == value_type::DECIMAL) {
        convert_rows<std::int64_t, xdec>(from, to, row_count, to_decimal);
    } else if (source == value_type::BIGINT) {
        convert_rows<std::int64_t, double>(from, to, row_count, to_number);
    } else {
        convert_rows<xdec, double>(from, to, row_count, [](const xdec& value, double& number) { number = xdec_to_double(&value); });
    }
}

void evaluate_in_list(const execution& run, step& made, std::uint32_t row_count) {
    bifun_column& result = made.result->column;
    const bifun_column& tested = column_of(run, made.operands[0]);
    if (made.items.empty()) {
        fill_condition(result, false, row_count);
    } else {
        find_values(made.item_values, tested, run.rules, result, row_count);
    }
    const value_type type = value_type_of(run.query.steps[made.operands[0]].type);
    for (std::size_t i = 1; i < made.operands.size(); ++i) {
        compare_columns(type, comparison_operator::equal, tested, column_of(run, made.operands[i]), run.rules, made.scratch->column,
                        row_count);
        or_condition(result, made.scratch->column, row_count);
    }
}

// IS NULL and IS TRUE are never unknown: `holds` sees the null flag and the value of each row.
template <class Holds> void test_rows(const bifun_column& tested, step& made, std::uint32_t row_count, Holds holds) {
    bifun_column& result = made.result->column;
    fill_condition(result, false, row_count);
    auto* const values = static_cast<std::int32_t*>(result.data->values);
    for (std::uint32_t k = 0; k < row_count; ++k) {
        const std::uint32_t i = tested.selection == nullptr ? k : tested.selection[k];
        values[k] = holds(tested.data->null_flags[i] != 0, i) != made.negated ? 1 : 0;
    }
}

void evaluate_truth_test(const bifun_column& tested, step& made, std::uint32_t row_count) {
    const auto* const values = static_cast<const std::int32_t*>(tested.data->values);
    test_rows(tested, made, row_count, [&](bool known, std::uint32_t i) {
        return made.tested == truth_value::unknown ? !known : known && (values[i] == 1) == (made.tested == truth_value::true_value);
    });
}

void evaluate_step(execution& run, step& made, std::uint32_t row_count) {
    const auto operand = [&](std::size_t i) -> const bifun_column& { return column_of(run, made.operands[i]); };
    switch (made.kind) {
    case step_kind::table_column:
    case step_kind::constant:
        break;
    case step_kind::conversion:
        evaluate_conversion(run, made, row_count);
        break;
    case step_kind::call:
        evaluate_call(run, made, row_count);
        break;
    case step_kind::comparison:
        compare_columns(value_type_of(run.query.steps[made.operands[0]].type), made.comparison, operand(0), operand(1), run.rules,
                        made.result->column, row_count);
        break;
    case step_kind::in_list:
        evaluate_in_list(run, made, row_count);
        break;
    case step_kind::conjunction:
    case step_kind::disjunction:
        copy_condition(made.result->column, operand(0), row_count);
        for (std::size_t i = 1; i < made.operands.size(); ++i) {
            const auto combine = made.kind == step_kind::conjunction ? and_condition : or_condition;
            combine(made.result->column, operand(i), row_count);
        }
        break;
    case step_kind::negation:
        copy_condition(made.result->column, operand(0), row_count);
        negate_condition(made.result->column, row_count);
        break;
    case step_kind::null_test:
        test_rows(operand(0), made, row_count, [](bool known, std::uint32_t) { return !known; });
        break;
    case step_kind::truth_test:
        evaluate_truth_test(operand(0), made, row_count);
        break;
    }
}

// ---- batches -------------------------------------------------------------------------------------------------------

// Which rows of the batch the table's columns show; null for all of them.
void set_selection(execution& run, const std::uint16_t* selection) {
    run.selected = selection != nullptr;
    if (run.query.source != nullptr) {
        for (table_column& column : run.query.source->columns) {
            if (column.needed) {
                column.values->column.selection = selection;
            }
        }
    }
}

// Of the `row_count` rows in view, leaves those that pass in view and returns their number.
std::uint32_t select_rows(execution& run, const row_condition& passing, std::uint32_t row_count) {
    const bifun_column& condition = column_of(run, passing.step);
    const auto* const values = static_cast<const std::int32_t*>(condition.data->values);
    std::uint32_t passed = 0;
    for (std::uint32_t k = 0; k < row_count; ++k) {
        if (values[condition.selection == nullptr ? k : condition.selection[k]] == 1) {
            run.selection[passed++] = run.selected ? run.selection[k] : static_cast<std::uint16_t>(k);
        }
    }
    if (passed < row_count) {
        set_selection(run, run.selection.data());
    }
    return passed;
}

// Evaluates the batch in hand and returns the number of rows that pass, at most `most_rows`.
std::uint32_t evaluate_batch(execution& run, std::uint32_t row_count, std::uint64_t most_rows) {
    std::vector<step>& steps = run.query.steps;
    set_selection(run, nullptr);
    std::uint32_t passed = row_count;
    std::size_t next = 0;
    for (const row_condition& condition : run.query.conditions) {
        for (; next < condition.steps_end && passed > 0; ++next) {
            evaluate_step(run, steps[next], passed);
        }
        passed = select_rows(run, condition, passed);
    }
    passed = static_cast<std::uint32_t>(std::min<std::uint64_t>(passed, most_rows));
    for (; next < steps.size() && passed > 0; ++next) {
        evaluate_step(run, steps[next], passed);
    }
    return passed;
}

std::uint32_t next_batch(const execution& run, std::uint32_t batch_rows, std::uint64_t rows_left) {
    // Without a condition every row read is a row written.
    const std::uint64_t wanted = !run.query.conditions.empty() ? batch_rows : std::min<std::uint64_t>(batch_rows, rows_left);
    if (run.query.source != nullptr) {
        return read_batch(*run.query.source, static_cast<std::uint32_t>(wanted));
    }
    return run.rows_before == 0 ? 1 : 0;
}

} // namespace

void run_plan(plan& query, std::uint32_t batch_rows, const session_settings& settings, result_output& output, progress_bar& progress) {
    const string_rules rules{.fold_case = settings.library.case_sensitive == 0,
                             .two_byte_trailers = settings.text_charset->code == ZQ_CHARSET_GB18030};
    execution run{.query = query, .rules = rules, .environment = {}, .selection = {}};
    set_up_environment(settings, run.environment);
    constexpr std::uint32_t scratch_size = 64 * 1024;
    run.memory.reset(rt_memobj_create_ex(&run.environment, 0, scratch_size, __FILE__, __LINE__));
    if (run.memory == nullptr) {
        fail_for_memory();
    }
    auto* const heap = static_cast<mem_heap*>(run.memory->heap);
    run.selection.resize(batch_rows);
    if (query.source != nullptr) {
        create_columns(*query.source, batch_rows);
    }
    create_results(query, batch_rows, rules);

    std::vector<const bifun_column*> columns;
    for (const result_column& result : query.results) {
        columns.push_back(&column_of(run, result.step));
    }
    std::uint64_t rows_left = query.limit.value_or(UINT64_MAX);
    while (rows_left > 0) {
        stop_if_interrupted();
        const std::uint32_t row_count = next_batch(run, batch_rows, rows_left);
        if (row_count == 0) {
            break;
        }
        const mem_heap_mark mark = mem_heap_get_heap_top(heap);
        const std::uint32_t passed = evaluate_batch(run, row_count, rows_left);
        output.write_rows(columns, passed);
        mem_heap_free_heap_top(&run.environment, heap, mark);
        run.rows_before += row_count;
        rows_left -= passed;
        if (query.source != nullptr) {
            progress.update(query.source->reader.bytes_read(), query.source->reader.file_size(), run.rows_before);
        }
    }
}

} // namespace host
