// SPDX-License-Identifier: Apache-2.0
#include "host/evaluation/execution.h"

#include <algorithm>
#include <array>
#include <numeric>

#include "host/evaluation/execution_parts.h"
#include "host/evaluation/like.h"
#include "host/output/value_output.h"
#include "host/program_error.h"
#include "host/session/interruption.h"

namespace host {
namespace {

using bifun::value_type;

// A column of one row shows it in every row of a batch through a selection vector of zeros.
constexpr std::uint32_t most_batch_rows = 65536;
constexpr std::array<std::uint16_t, most_batch_rows> all_zero{};

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

void evaluate_step(execution& run, step& made, std::uint32_t row_count) {
    const auto operand = [&](std::size_t i) -> const bifun_column& { return column_of(run, made.operands[i]); };
    switch (made.kind) {
    case step_kind::table_column:
    case step_kind::constant:
    case step_kind::rest:
        break;
    case step_kind::conversion:
        evaluate_conversion(run, made, row_count);
        break;
    case step_kind::cast:
        evaluate_cast(run, made, row_count);
        break;
    case step_kind::call:
        evaluate_call(run, made, row_count);
        break;
    case step_kind::arithmetic:
        evaluate_arithmetic(run, made, row_count);
        break;
    case step_kind::choice:
        evaluate_choice(run, made, row_count);
        break;
    case step_kind::null_if:
        evaluate_null_if(run, made, row_count);
        break;
    case step_kind::like:
        match_columns(operand(0), operand(1), made.escape, run.rules.fold_case, made.result->column, row_count);
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
        evaluate_null_test(run, made, row_count);
        break;
    case step_kind::truth_test:
        evaluate_truth_test(run, made, row_count);
        break;
    }
}

// ---- batches -------------------------------------------------------------------------------------------------------

// The rows that pass WHERE and OFFSET, and what is left to skip.
struct row_selection {
    std::vector<std::uint16_t> rows; // room for a batch
    std::uint64_t left_to_skip;
};

// Of the `row_count` rows in view, leaves those in view for which the condition is true and returns their number.
std::uint32_t select_rows(execution& run, const row_condition& passing, row_selection& selection, std::uint32_t row_count) {
    const bifun_column& condition = column_of(run, passing.step);
    const auto* const values = static_cast<const std::int32_t*>(condition.data->values);
    std::uint32_t passed = 0;
    for (std::uint32_t k = 0; k < row_count; ++k) {
        if (values[row_of(condition, k)] == 1) {
            selection.rows[passed++] = run.view != nullptr ? run.view[k] : static_cast<std::uint16_t>(k);
        }
    }
    if (passed < row_count) {
        set_view(run, selection.rows.data());
    }
    return passed;
}

// Takes rows that OFFSET leaves out from the beginning of the view and returns how many stay.
std::uint32_t skip_rows(execution& run, row_selection& selection, std::uint32_t row_count) {
    const auto skipped = static_cast<std::uint32_t>(std::min<std::uint64_t>(selection.left_to_skip, row_count));
    selection.left_to_skip -= skipped;
    if (skipped > 0 && run.view != nullptr) {
        set_view(run, run.view + skipped);
    } else if (skipped > 0) {
        std::iota(selection.rows.begin(), selection.rows.end(), static_cast<std::uint16_t>(skipped));
        set_view(run, selection.rows.data());
    }
    return row_count - skipped;
}

// Evaluates the batch in hand and returns the number of rows that pass, at most `most_rows`.
std::uint32_t evaluate_batch(execution& run, row_selection& selection, std::uint32_t row_count, std::uint64_t most_rows) {
    set_view(run, nullptr);
    std::uint32_t passed = row_count;
    for (const row_condition& condition : run.query.conditions) {
        evaluate_steps(run, condition.steps, passed);
        passed = passed == 0 ? 0 : select_rows(run, condition, selection, passed);
    }
    passed = skip_rows(run, selection, passed);
    passed = static_cast<std::uint32_t>(std::min<std::uint64_t>(passed, most_rows));
    evaluate_steps(run, run.query.result_steps, passed);
    return passed;
}

std::uint32_t next_batch(const execution& run, std::uint32_t batch_rows, std::uint64_t rows_left) {
    // Without a condition every row read is a row skipped or written.
    const std::uint64_t wanted = !run.query.conditions.empty() ? batch_rows : std::min<std::uint64_t>(batch_rows, rows_left);
    if (run.query.source != nullptr) {
        return read_batch(*run.query.source, static_cast<std::uint32_t>(wanted));
    }
    return run.rows_before == 0 ? 1 : 0;
}

} // namespace

bifun_column& column_of(const execution& run, std::size_t index) {
    const step& made = run.query.steps[index];
    return made.kind == step_kind::table_column ? run.query.source->columns[made.table_column].values->column : made.result->column;
}

std::string place_of_row(const execution& run, std::uint32_t row) {
    const std::uint32_t in_batch = run.view != nullptr ? run.view[row] : row;
    const std::string counted = fmt::format("row {}", run.rows_before + in_batch + 1);
    const table* const source = run.query.source;
    return source == nullptr ? counted : fmt::format("{} ({}, line {})", counted, source->reader.path(), line_of(*source, in_batch));
}

std::string shown_value(const execution& run, std::size_t step, std::uint32_t row) {
    const bifun_column& values = column_of(run, step);
    const sql_type type = run.query.steps[step].type;
    const std::uint32_t place = row_of(values, row);
    if (values.data->null_flags[place] == 0) {
        return "NULL";
    }
    std::string shown;
    if (type == sql_type::varchar) {
        constexpr std::uint32_t enough = 100; // more is cut anyway
        const auto& text = value_at<bifun_string>(values, place);
        shown.assign(reinterpret_cast<const char*>(text.data), std::min(text.length, enough))
            .append(std::min(text.trailing_blanks, enough), ' ');
        return fmt::format("\"{}\"", shown_text(*run.settings.text_charset, shown));
    }
    append_value(shown, values, type, place);
    return shown;
}

void set_view(execution& run, const std::uint16_t* rows) {
    run.view = rows;
    if (run.query.source != nullptr) {
        for (table_column& column : run.query.source->columns) {
            if (column.needed) {
                column.values->column.selection = rows;
            }
        }
    }
}

void evaluate_steps(execution& run, const sequence& steps, std::uint32_t row_count) {
    for (std::size_t i = 0; i < steps.size() && row_count > 0; ++i) {
        evaluate_step(run, run.query.steps[steps[i]], row_count);
    }
}

void run_plan(plan& query, std::uint32_t batch_rows, const session_settings& settings, result_output& output, progress_bar& progress) {
    const string_rules rules{.fold_case = settings.library.case_sensitive == 0,
                             .two_byte_trailers = settings.text_charset->code == ZQ_CHARSET_GB18030};
    execution run{.query = query, .settings = settings, .rules = rules, .environment = {}};
    set_up_environment(settings, run.environment);
    constexpr std::uint32_t scratch_size = 64 * 1024;
    run.memory.reset(rt_memobj_create_ex(&run.environment, 0, scratch_size, __FILE__, __LINE__));
    if (run.memory == nullptr) {
        fail_for_memory();
    }
    auto* const heap = static_cast<mem_heap*>(run.memory->heap);
    row_selection selection{.rows = std::vector<std::uint16_t>(batch_rows), .left_to_skip = query.offset};
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
        const std::uint32_t row_count = next_batch(run, batch_rows, rows_left + std::min(selection.left_to_skip, UINT64_MAX - rows_left));
        if (row_count == 0) {
            break;
        }
        const mem_heap_mark mark = mem_heap_get_heap_top(heap);
        const std::uint32_t passed = evaluate_batch(run, selection, row_count, rows_left);
        output.write_rows(columns, passed);
        mem_heap_free_heap_top(&run.environment, heap, mark);
        run.rows_before += row_count;
        rows_left -= passed;
        if (query.source != nullptr) {
            progress.update(query.source->reader.bytes_read(), query.source->reader.file_size(), run.rows_before);
        }
    }
    for (const step& made : query.steps) {
        add_notices(made, query.notices);
    }
}

} // namespace host
