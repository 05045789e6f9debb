// SPDX-License-Identifier: Apache-2.0
// What the parts of the evaluation share: the plan in hand and the batch, and the steps by their kinds.
#ifndef BIFUN_HOST_EVALUATION_EXECUTION_PARTS_H
#define BIFUN_HOST_EVALUATION_EXECUTION_PARTS_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "embedded/session/environment.h"
#include "engine/memory.h"
#include "host/evaluation/comparison.h"
#include "host/evaluation/plan.h"
#include "host/session/settings.h"

namespace host {

struct memory_destroyer {
    bifun_environment* environment;
    void operator()(bifun_memory_object* memory) const { rt_memobj_destroy(environment, memory); }
};

struct execution {
    plan& query;
    const session_settings& settings;
    string_rules rules;
    bifun_environment environment{};
    std::unique_ptr<bifun_memory_object, memory_destroyer> memory{nullptr, {&environment}};
    std::uint64_t rows_before = 0;       // of the table, before the batch in hand
    const std::uint16_t* view = nullptr; // the rows of the batch that the table's columns show; null for all
};

// What a step shows of the rows in view, through its selection vector if it has one.
bifun_column& column_of(const execution& run, std::size_t step);

// How messages name a row in view: "row 3 (t.csv, line 4)", counted from 1 behind the header, or "row 1" without a file.
std::string place_of_row(const execution& run, std::uint32_t row);

// The value of a step in a row in view, as messages show it: texts in double quotes, and of long ones the beginning.
std::string shown_value(const execution& run, std::size_t step, std::uint32_t row);

// Narrows or widens the view. The rows stay where they are.
void set_view(execution& run, const std::uint16_t* rows);

// Each evaluates steps for the `row_count` rows in view, and throws program_error with the row where that fails.
void evaluate_steps(execution& run, const sequence& steps, std::uint32_t row_count);

void evaluate_call(execution& run, step& call, std::uint32_t row_count);
// Counts what is odd of the rows of a call that has been made.
void count_odd_rows(const execution& run, step& call, std::uint32_t row_count);
// What has been counted, as texts.
void add_notices(const step& call, std::vector<std::string>& notices);
void evaluate_conversion(const execution& run, step& made, std::uint32_t row_count);
void evaluate_arithmetic(const execution& run, step& made, std::uint32_t row_count);
void evaluate_cast(execution& run, step& made, std::uint32_t row_count);
void evaluate_choice(execution& run, step& made, std::uint32_t row_count);
void evaluate_in_list(const execution& run, step& made, std::uint32_t row_count);
void evaluate_null_if(const execution& run, step& made, std::uint32_t row_count);
void evaluate_null_test(const execution& run, step& made, std::uint32_t row_count);
void evaluate_truth_test(const execution& run, step& made, std::uint32_t row_count);

} // namespace host

#endif
