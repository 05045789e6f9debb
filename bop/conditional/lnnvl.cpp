// LNNVL(condition): true where the condition is false or unknown; never NULL.

#include "bop/conditional/condition.h"
#include "bop/frame/arguments.h"

using namespace bifun;

VECTORISED status blnnvl_a_bool(BATCH_OF(column condition)) {
    if (row_count > 0) {
        std::memset(result->data->null_flags, 1, row_count);
    }
    result->no_nulls = 1;
    const batch batch = BATCH;
    return with_rows(
        [batch](const auto& holds) INLINED -> status {
            auto* __restrict const results = values<std::int32_t>(batch);
            for (std::uint32_t k = 0; k < batch.row_count; ++k) {
                results[k] = is_true(holds[k]) ? 0 : 1;
            }
            return BIFUN_OK;
        },
        integer(condition));
}
