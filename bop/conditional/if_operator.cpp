// The IF operator: x where the condition holds, otherwise y. Its members only ever clear the result's no-null flag: the caller, or the
// copy of x, has set it.

#include "bop/conditional/condition.h"
#include "bop/frame/arguments.h"
#include "bop/frame/choose.h"
#include "bop/frame/setters.h"
#include "bop/frame/statements.h"

namespace bifun {
namespace {

using condition_argument = column_argument<std::int32_t>;

condition_argument condition(column argument) { return {argument}; }

// Flags and values of every row at once.
template <class T, class Condition, class X, class Y>
INLINED inline void choose_all(const batch& batch, const Condition& holds, const X& x, const Y& y) {
    std::uint8_t* __restrict const flags = null_flags(batch);
    T* __restrict const results = values<T>(batch);
    const std::uint32_t row_count = batch.row_count;
    for (std::uint32_t k = 0; k < row_count; ++k) {
        const auto if_true = static_cast<std::uint32_t>(x.has_value(k));
        const auto if_false = static_cast<std::uint32_t>(y.has_value(k));
        flags[k] = static_cast<std::uint8_t>(choose(is_true(holds[k]), if_true, if_false));
    }
    for (std::uint32_t k = 0; k < row_count; ++k) {
        results[k] = choose(is_true(holds[k]), x[k], y[k]);
    }
}

void choose_one(const batch& batch, std::uint32_t row, bool present, const bifun_string& value) {
    null_flags(batch)[row] = static_cast<std::uint8_t>(present);
    if (present) {
        (void)bdta3_col_assign_str(batch.environment, batch.memory, batch.result, row, value.data, value.length, value.trailing_blanks);
    }
}

template <class T> void choose_one(const batch& batch, std::uint32_t row, bool present, const T& value) {
    null_flags(batch)[row] = static_cast<std::uint8_t>(present);
    values<T>(batch)[row] = value;
}

// Clears the promise when a row whose condition is `wanted` takes a NULL from `rows`.
template <class Condition, class Argument, class Rows>
INLINED inline void clear_promise_for_nulls(const batch& batch, const Condition& holds, bool wanted, const Argument& argument,
                                            const Rows& rows) {
    if (has_no_nulls(argument)) {
        return;
    }
    const std::uint32_t row_count = batch.row_count;
    std::uint32_t taken = 0;
    for (std::uint32_t k = 0; k < row_count; ++k) {
        const bool missing = !rows.has_value(k);
        taken |= static_cast<std::uint32_t>(is_true(holds[k]) == wanted) & static_cast<std::uint32_t>(missing);
    }
    if (taken != 0) {
        batch.result->no_nulls = 0;
    }
}

// x is a column: the result begins as its copy, NULLs included, and the rows whose condition does not hold are overwritten.
template <class T, class Y>
status overwrite_copy(const batch& batch, const condition_argument& condition, const column_argument<T>& x, const Y& y) {
    const status copied = copy_column(batch, x.column);
    if (copied != BIFUN_OK) {
        return copied;
    }
    return with_rows(
        [batch, y](const auto& holds, const auto& y_rows) -> status {
            for (std::uint32_t k = 0; k < batch.row_count; ++k) {
                if (!is_true(holds[k])) {
                    choose_one(batch, k, y_rows.has_value(k), y_rows[k]);
                }
            }
            clear_promise_for_nulls(batch, holds, false, y, y_rows);
            return BIFUN_OK;
        },
        condition, y);
}

template <class T, class Y>
INLINED inline status if_operator(const batch& batch, const condition_argument& condition, const column_argument<T>& x, const Y& y) {
    if (batch.row_count == 0) {
        return BIFUN_OK;
    }
    if constexpr (!std::is_same_v<T, bifun_string>) {
        if (setters_are_plain_stores()) {
            batch.result->no_nulls = x.column->no_nulls; // as a copy would
            return with_rows(
                [batch, y](const auto& holds, const auto& x_rows, const auto& y_rows) INLINED -> status {
                    choose_all<T>(batch, holds, x_rows, y_rows);
                    clear_promise_for_nulls(batch, holds, false, y, y_rows);
                    return BIFUN_OK;
                },
                condition, x, y);
        }
    }
    return overwrite_copy(batch, condition, x, y);
}

template <class T>
INLINED inline status if_operator(const batch& batch, const condition_argument& condition, const constant_argument<T>& x,
                                  const constant_argument<T>& y) {
    return with_rows(
        [batch, x, y](const auto& holds, const auto& x_rows, const auto& y_rows) INLINED -> status {
            if constexpr (std::is_same_v<T, bifun_string>) {
                for (std::uint32_t k = 0; k < batch.row_count; ++k) {
                    const constant_rows<T>& chosen = is_true(holds[k]) ? x_rows : y_rows;
                    choose_one(batch, k, chosen.present, chosen.value);
                }
            } else {
                choose_all<T>(batch, holds, x_rows, y_rows);
            }
            clear_promise_for_nulls(batch, holds, true, x, x_rows);
            clear_promise_for_nulls(batch, holds, false, y, y_rows);
            return BIFUN_OK;
        },
        condition, x, y);
}

} // namespace
} // namespace bifun

using namespace bifun;

VECTORISED status bifoperator_int_aaa(BATCH_OF(column c, column x, column y)) {
    return if_operator(BATCH, condition(c), integer(x), integer(y));
}
VECTORISED status bifoperator_int_aav(BATCH_OF(column c, column x, int_constant y)) {
    return if_operator(BATCH, condition(c), integer(x), integer(y));
}
VECTORISED status bifoperator_int_avv(BATCH_OF(column c, int_constant x, int_constant y)) {
    return if_operator(BATCH, condition(c), integer(x), integer(y));
}
VECTORISED status bifoperator_int64_aaa(BATCH_OF(column c, column x, column y)) {
    return if_operator(BATCH, condition(c), bigint(x), bigint(y));
}
VECTORISED status bifoperator_int64_aav(BATCH_OF(column c, column x, bigint_constant y)) {
    return if_operator(BATCH, condition(c), bigint(x), bigint(y));
}
VECTORISED status bifoperator_int64_avv(BATCH_OF(column c, bigint_constant x, bigint_constant y)) {
    return if_operator(BATCH, condition(c), bigint(x), bigint(y));
}
VECTORISED status bifoperator_double_aaa(BATCH_OF(column c, column x, column y)) {
    return if_operator(BATCH, condition(c), floating(x), floating(y));
}
VECTORISED status bifoperator_double_aav(BATCH_OF(column c, column x, double_constant y)) {
    return if_operator(BATCH, condition(c), floating(x), floating(y));
}
VECTORISED status bifoperator_double_avv(BATCH_OF(column c, double_constant x, double_constant y)) {
    return if_operator(BATCH, condition(c), floating(x), floating(y));
}
status bifoperator_dec_aaa(BATCH_OF(column c, column x, column y)) { return if_operator(BATCH, condition(c), decimal(x), decimal(y)); }
status bifoperator_dec_aav(BATCH_OF(column c, column x, decimal_constant y)) {
    return if_operator(BATCH, condition(c), decimal(x), decimal(y));
}
status bifoperator_dec_avv(BATCH_OF(column c, decimal_constant x, decimal_constant y)) {
    return if_operator(BATCH, condition(c), decimal(x), decimal(y));
}
status bifoperator_varchar_aaa(BATCH_OF(column c, column x, column y)) { return if_operator(BATCH, condition(c), string(x), string(y)); }
status bifoperator_varchar_aav(BATCH_OF(column c, column x, string_constant y)) {
    return if_operator(BATCH, condition(c), string(x), string(y));
}
status bifoperator_varchar_avv(BATCH_OF(column c, string_constant x, string_constant y)) {
    return if_operator(BATCH, condition(c), string(x), string(y));
}
