// SPDX-License-Identifier: Apache-2.0
// The IF operator: x where the condition holds, otherwise y. Its members only ever clear the result's no-null flag: the caller, or the
// copy of x, has set it.

#include "bop/conditional/condition.h"
#include "bop/conditional/entry_points.h"
#include "bop/frame/arguments.h"
#include "bop/frame/choose.h"
#include "bop/frame/setters.h"
#include "bop/frame/statements.h"

namespace bifun {
namespace {

// Flags and values of a block at once.
template <class T, class Condition, class X, class Y>
void choose_block(std::uint8_t* __restrict flags, T* __restrict results, std::uint32_t count, bool no_nulls, const Condition& holds,
                  const X& x, const Y& y) {
    if (no_nulls) {
        std::memset(flags, 1, count);
    } else {
        for (std::uint32_t k = 0; k < count; ++k) {
            const auto if_true = static_cast<std::uint32_t>(x.has_value(k));
            const auto if_false = static_cast<std::uint32_t>(y.has_value(k));
            flags[k] = static_cast<std::uint8_t>(choose(is_true(holds[k]), if_true, if_false));
        }
    }
    for (std::uint32_t k = 0; k < count; ++k) {
        results[k] = choose(is_true(holds[k]), x[k], y[k]);
    }
}

void choose_one(const batch& batch, std::uint32_t row, bool present, const bifun_string& value) {
    null_flags(batch)[row] = static_cast<std::uint8_t>(present);
    if (present) {
        set_value(batch, row, value);
    }
}

template <class T> void choose_one(const batch& batch, std::uint32_t row, bool present, const T& value) {
    null_flags(batch)[row] = static_cast<std::uint8_t>(present);
    values<T>(batch)[row] = value;
}

// Clears the promise when a row whose condition is `wanted` takes a NULL from `rows`.
template <class Condition, class Argument, class Rows>
void clear_promise_for_nulls(const batch& batch, std::uint32_t count, const Condition& holds, bool wanted, const Argument& argument,
                             const Rows& rows) {
    if (has_no_nulls(argument)) {
        return;
    }
    std::uint32_t taken = 0;
    for (std::uint32_t k = 0; k < count; ++k) {
        const bool missing = !rows.has_value(k);
        taken |= static_cast<std::uint32_t>(is_true(holds[k]) == wanted) & static_cast<std::uint32_t>(missing);
    }
    if (taken != 0) {
        batch.result->no_nulls = 0;
    }
}

using condition_argument = column_argument<std::int32_t>;

// x is a column: the result begins as its copy, NULLs included, and the rows whose condition does not hold are overwritten.
template <class T, class Y>
status overwrite_copy(const batch& batch, const condition_argument& condition, const column_argument<T>& x, const Y& y) {
    const status copied = copy_column(batch, x.column);
    if (copied != BIFUN_OK) {
        return copied;
    }
    const auto overwrite = [&](std::uint32_t first, std::uint32_t count, const auto& holds, const auto& y_rows) -> status {
        for (std::uint32_t k = 0; k < count; ++k) {
            if (!is_true(holds[k])) {
                choose_one(batch, first + k, y_rows.has_value(k), y_rows[k]);
            }
        }
        clear_promise_for_nulls(batch, count, holds, false, y, y_rows);
        return BIFUN_OK;
    };
    return for_each_block(batch.row_count, overwrite, condition, y);
}

template <class T, class Y>
status choose_rows(const batch& batch, const condition_argument& condition, const column_argument<T>& x, const Y& y) {
    if (batch.row_count == 0) {
        return BIFUN_OK;
    }
    if (!values_can_be_stored<T>()) {
        return overwrite_copy(batch, condition, x, y);
    }
    const bool no_nulls = has_no_nulls(x) && has_no_nulls(y);
    batch.result->no_nulls = x.column->no_nulls; // as a copy would
    const auto choose_all = [&](std::uint32_t first, std::uint32_t count, const auto& holds, const auto& x_rows,
                                const auto& y_rows) -> status {
        choose_block(null_flags(batch) + first, values<T>(batch) + first, count, no_nulls, holds, x_rows, y_rows);
        clear_promise_for_nulls(batch, count, holds, false, y, y_rows);
        return BIFUN_OK;
    };
    return for_each_block(batch.row_count, choose_all, condition, x, y);
}

template <class T>
status choose_rows(const batch& batch, const condition_argument& condition, const constant_argument<T>& x, const constant_argument<T>& y) {
    const bool no_nulls = has_no_nulls(x) && has_no_nulls(y);
    const auto choose_all = [&](std::uint32_t first, std::uint32_t count, const auto& holds, const auto& x_rows,
                                const auto& y_rows) -> status {
        if (std::is_same_v<T, bifun_string> && !results_may_refer()) {
            for (std::uint32_t k = 0; k < count; ++k) {
                const constant_rows<T>& chosen = is_true(holds[k]) ? x_rows : y_rows;
                choose_one(batch, first + k, chosen.present, chosen.value);
            }
        } else {
            choose_block(null_flags(batch) + first, values<T>(batch) + first, count, no_nulls, holds, x_rows, y_rows);
        }
        clear_promise_for_nulls(batch, count, holds, true, x, x_rows);
        clear_promise_for_nulls(batch, count, holds, false, y, y_rows);
        return BIFUN_OK;
    };
    return for_each_block(batch.row_count, choose_all, condition, x, y);
}

template <value_type type, template <value_type> class X, template <value_type> class Y>
status if_operator(batch_of<type> batch, column_of<BOOL> condition, X<type> x, Y<type> y) {
    return choose_rows(batch, argument(condition), argument(x), argument(y));
}

} // namespace

status entry::bifoperator_int_aaa(batch_of<INT> batch, column_of<BOOL> condition, column_of<INT> x, column_of<INT> y) {
    return if_operator(batch, condition, x, y);
}
status entry::bifoperator_int_aav(batch_of<INT> batch, column_of<BOOL> condition, column_of<INT> x, constant_of<INT> y) {
    return if_operator(batch, condition, x, y);
}
status entry::bifoperator_int_avv(batch_of<INT> batch, column_of<BOOL> condition, constant_of<INT> x, constant_of<INT> y) {
    return if_operator(batch, condition, x, y);
}
status entry::bifoperator_int64_aaa(batch_of<BIGINT> batch, column_of<BOOL> condition, column_of<BIGINT> x, column_of<BIGINT> y) {
    return if_operator(batch, condition, x, y);
}
status entry::bifoperator_int64_aav(batch_of<BIGINT> batch, column_of<BOOL> condition, column_of<BIGINT> x, constant_of<BIGINT> y) {
    return if_operator(batch, condition, x, y);
}
status entry::bifoperator_int64_avv(batch_of<BIGINT> batch, column_of<BOOL> condition, constant_of<BIGINT> x, constant_of<BIGINT> y) {
    return if_operator(batch, condition, x, y);
}
status entry::bifoperator_double_aaa(batch_of<DOUBLE> batch, column_of<BOOL> condition, column_of<DOUBLE> x, column_of<DOUBLE> y) {
    return if_operator(batch, condition, x, y);
}
status entry::bifoperator_double_aav(batch_of<DOUBLE> batch, column_of<BOOL> condition, column_of<DOUBLE> x, constant_of<DOUBLE> y) {
    return if_operator(batch, condition, x, y);
}
status entry::bifoperator_double_avv(batch_of<DOUBLE> batch, column_of<BOOL> condition, constant_of<DOUBLE> x, constant_of<DOUBLE> y) {
    return if_operator(batch, condition, x, y);
}
status entry::bifoperator_dec_aaa(batch_of<DECIMAL> batch, column_of<BOOL> condition, column_of<DECIMAL> x, column_of<DECIMAL> y) {
    return if_operator(batch, condition, x, y);
}
status entry::bifoperator_dec_aav(batch_of<DECIMAL> batch, column_of<BOOL> condition, column_of<DECIMAL> x, constant_of<DECIMAL> y) {
    return if_operator(batch, condition, x, y);
}
status entry::bifoperator_dec_avv(batch_of<DECIMAL> batch, column_of<BOOL> condition, constant_of<DECIMAL> x, constant_of<DECIMAL> y) {
    return if_operator(batch, condition, x, y);
}
status entry::bifoperator_varchar_aaa(batch_of<VARCHAR> batch, column_of<BOOL> condition, column_of<VARCHAR> x, column_of<VARCHAR> y) {
    return if_operator(batch, condition, x, y);
}
status entry::bifoperator_varchar_aav(batch_of<VARCHAR> batch, column_of<BOOL> condition, column_of<VARCHAR> x, constant_of<VARCHAR> y) {
    return if_operator(batch, condition, x, y);
}
status entry::bifoperator_varchar_avv(batch_of<VARCHAR> batch, column_of<BOOL> condition, constant_of<VARCHAR> x, constant_of<VARCHAR> y) {
    return if_operator(batch, condition, x, y);
}

} // namespace bifun
