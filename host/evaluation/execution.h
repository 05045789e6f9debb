// SPDX-License-Identifier: Apache-2.0
// Running a plan, batch by batch.
#ifndef BIFUN_HOST_EVALUATION_EXECUTION_H
#define BIFUN_HOST_EVALUATION_EXECUTION_H

#include <cstdint>

#include "host/evaluation/plan.h"
#include "host/output/output.h"
#include "host/output/progress_bar.h"
#include "host/session/settings.h"

namespace host {

// Reads the table, evaluates the plan over batches of at most `batch_rows` rows (1 to 65,536) and writes the result rows. Nothing of a
// batch is written unless all of it succeeds. Throws program_error; a function that fails is named with its status and the row of the
// file. What calls have made NULL of without a reason in the data is added to the plan's notices.
void run_plan(plan& query, std::uint32_t batch_rows, const session_settings& settings, result_output& output, progress_bar& progress);

} // namespace host

#endif
