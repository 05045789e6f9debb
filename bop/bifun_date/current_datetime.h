// SPDX-License-Identifier: Apache-2.0
// Functions for which a NULL may stand for now, and whose rows may turn out NULL.
#ifndef BIFUN_DATE_CURRENT_DATETIME_H
#define BIFUN_DATE_CURRENT_DATETIME_H

#include "bop/frame/arguments.h"
#include "bop/frame/kernel.h"
#include "bop/frame/setters.h"
#include "engine/datetime.h"
#include "engine/session.h"

namespace bifun {

// The moment that a batch takes for now: it is asked for once.
struct current_datetime {
    bool is_asked = false;
    bool is_known = false;
    zqtime moment;
};

// Null where the engine cannot tell.
inline const zqtime* now_of(current_datetime& now) {
    if (!now.is_asked) {
        const auto zone = static_cast<std::int32_t>(ini_get_value(0, INI_NOW_TIME_ZONE));
        constexpr std::int32_t precision = 6;
        now.is_known = zqtime_tz_now(precision, zone, &now.moment) >= BIFUN_OK;
        now.is_asked = true;
    }
    return now.is_known ? &now.moment : nullptr;
}

// `evaluate(value, result)` for each row of a column, with null for a NULL, which gives a value_or_null. The column's promise that there is
// no NULL is passed on until a row that is not NULL becomes one.
template <class Result, value_type result, value_type type, class Evaluate>
status rows_or_null(batch_of<result> batch, column_of<type> value, const Evaluate& evaluate) {
    static_assert(std::is_same_v<Result, stored<result>>);
    batch.result->no_nulls = value.column->no_nulls;
    const auto block = [&](std::uint32_t first, std::uint32_t count, const auto& rows) -> status {
        for (std::uint32_t k = 0; k < count; ++k) {
            Result made;
            const status outcome = evaluate(rows.has_value(k) ? &rows[k] : nullptr, made).outcome;
            null_flags(batch)[first + k] = outcome == BIFUN_OK ? 1 : 0;
            if (outcome == BIFUN_OK) {
                set_value(batch, first + k, made);
                continue;
            }
            batch.result->no_nulls = 0;
            if (outcome < BIFUN_OK) {
                return outcome;
            }
        }
        return BIFUN_OK;
    };
    return for_each_block(batch.row_count, block, argument(value));
}

} // namespace bifun

#endif
