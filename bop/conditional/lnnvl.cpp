// SPDX-License-Identifier: Apache-2.0
// LNNVL(condition): true where the condition is false or unknown; never NULL.

#include "bop/conditional/condition.h"
#include "bop/conditional/entry_points.h"
#include "bop/frame/arguments.h"

namespace bifun {

status entry::blnnvl_a_bool(batch_of<BOOL> batch, column_of<BOOL> condition) {
    if (batch.row_count > 0) {
        std::memset(null_flags(batch), 1, batch.row_count);
    }
    batch.result->no_nulls = 1;
    const auto negate = [&](std::uint32_t first, std::uint32_t count, const auto& holds) -> status {
        auto* __restrict const results = values<std::int32_t>(batch) + first;
        for (std::uint32_t k = 0; k < count; ++k) {
            results[k] = is_true(holds[k]) ? 0 : 1;
        }
        return BIFUN_OK;
    };
    return for_each_block(batch.row_count, negate, argument(condition));
}

} // namespace bifun
