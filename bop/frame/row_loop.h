// The row loop of the functions that propagate NULL: one result value from the values of one row.
//
//     set_rows<evaluated, kernel, check>(batch, arguments...)     results go through the engine's setters
//     store_rows<evaluated, kernel, check>(batch, arguments...)   results go straight into the value array
//
// A kernel is a plain function from values to a value. A check, where there is one, is a plain function from the same values to a
// status; the batch stops at the first row for which it is negative.
#ifndef BIFUN_FRAME_ROW_LOOP_H
#define BIFUN_FRAME_ROW_LOOP_H

#include <algorithm>
#include <type_traits>

#include "bop/frame/arguments.h"
#include "bop/frame/setters.h"

namespace bifun {

// For which rows a kernel is evaluated. `all` is for a kernel that is cheap, has no side effects and is defined for any bits: it is
// computed for NULL rows as well, whose results become zero, so that the loop has no branch and vectorises.
enum class rows : std::uint8_t { all, present };

// A single column's promise is passed on as it stands; those of several arguments are joined to 0 or 1.
template <class T> std::uint32_t joint_no_null_flag(const column_argument<T>& argument) { return argument.column->no_nulls; }
template <class... Arguments> std::uint32_t joint_no_null_flag(const Arguments&... arguments) { return (has_no_nulls(arguments) && ...); }

// ---- the loop ----

// A block's flags and values stay in the first-level cache from one pass over it to the next.
constexpr std::uint32_t rows_per_block = 1024;

struct no_check {};

// How many rows from `first` on pass the check; `failure` gets the status of the next one.
template <auto check, class... Rows>
INLINED inline std::uint32_t rows_that_pass(std::uint32_t first, std::uint32_t count, bool no_nulls, status& failure, const Rows&... rows) {
    status failures = BIFUN_OK;
    if (no_nulls) {
        for (std::uint32_t k = first; k < first + count; ++k) {
            failures |= check(rows[k]...);
        }
    } else {
        for (std::uint32_t k = first; k < first + count; ++k) {
            const status failure_of_value = check(rows[k]...);
            failures |= all_have_values(k, rows...) ? failure_of_value : BIFUN_OK;
        }
    }
    if (failures == BIFUN_OK) {
        return count;
    }
    std::uint32_t passed = 0;
    while ((!no_nulls && !all_have_values(first + passed, rows...)) || check(rows[first + passed]...) == BIFUN_OK) {
        ++passed;
    }
    failure = check(rows[first + passed]...);
    return passed;
}

// Writes the null flags of a block.
template <class... Rows>
INLINED inline void write_null_flags(std::uint8_t* __restrict flags, std::uint32_t first, std::uint32_t count, const Rows&... rows) {
    for (std::uint32_t k = first; k < first + count; ++k) {
        flags[k] = static_cast<std::uint8_t>(all_have_values(k, rows...));
    }
}

template <rows evaluated, auto kernel, class Result, class... Rows>
INLINED inline void store_values(Result* __restrict values, const std::uint8_t* flags, bool no_nulls, std::uint32_t first,
                                 std::uint32_t count, const Rows&... rows) {
    if (no_nulls) {
        for (std::uint32_t k = first; k < first + count; ++k) {
            values[k] = kernel(rows[k]...);
        }
    } else if constexpr (evaluated == rows::all) {
        for (std::uint32_t k = first; k < first + count; ++k) {
            const Result value = kernel(rows[k]...);
            values[k] = flags[k] != 0 ? value : Result{};
        }
    } else {
        for (std::uint32_t k = first; k < first + count; ++k) {
            if (flags[k] != 0) {
                values[k] = kernel(rows[k]...);
            }
        }
    }
}

template <auto kernel, class... Rows>
INLINED inline void set_values(const batch& batch, const std::uint8_t* flags, std::uint32_t first, std::uint32_t count,
                               const Rows&... rows) {
    for (std::uint32_t k = first; k < first + count; ++k) {
        if (flags[k] != 0) {
            set_value(batch, k, kernel(rows[k]...));
        }
    }
}

template <rows evaluated, auto kernel, auto check, bool through_setters, class... Arguments>
INLINED inline status evaluate_rows(const batch& batch, const Arguments&... arguments) {
    if ((is_null_constant(arguments) || ...)) {
        return null_rows(batch);
    }
    const bool no_nulls = (has_no_nulls(arguments) && ...);
    batch.result->no_nulls = joint_no_null_flag(arguments...);
    return with_rows(
        [&](const auto&... rows) INLINED -> status {
            using result_type = std::decay_t<decltype(kernel(rows[0]...))>;
            std::uint8_t* const flags = null_flags(batch);
            std::uint32_t count = 0;
            for (std::uint32_t first = 0; first < batch.row_count; first += count) {
                count = std::min(rows_per_block, batch.row_count - first);
                std::uint32_t passed = count;
                status failure = BIFUN_OK;
                if constexpr (!std::is_same_v<std::remove_cv_t<decltype(check)>, no_check>) {
                    passed = rows_that_pass<check>(first, count, no_nulls, failure, rows...);
                }
                if (no_nulls) {
                    std::memset(flags + first, 1, passed);
                } else {
                    write_null_flags(flags, first, passed, rows...);
                }
                if constexpr (through_setters) {
                    set_values<kernel>(batch, flags, first, passed, rows...);
                } else {
                    store_values<evaluated, kernel>(values<result_type>(batch), flags, no_nulls, first, passed, rows...);
                }
                if (failure != BIFUN_OK) {
                    batch.result->no_nulls = 0;
                    return failure;
                }
            }
            return BIFUN_OK;
        },
        arguments...);
}

template <rows evaluated, auto kernel, auto check = no_check{}, class... Arguments>
INLINED inline status store_rows(const batch& batch, const Arguments&... arguments) {
    return evaluate_rows<evaluated, kernel, check, false>(batch, arguments...);
}

template <rows evaluated, auto kernel, auto check = no_check{}, class... Arguments>
INLINED inline status set_rows(const batch& batch, const Arguments&... arguments) {
    if (setters_are_plain_stores()) {
        return evaluate_rows<evaluated, kernel, check, false>(batch, arguments...);
    }
    return out_of_line([](const bifun::batch& batch, const Arguments&... arguments)
                           INLINED { return evaluate_rows<evaluated, kernel, check, true>(batch, arguments...); },
                       batch, arguments...);
}

} // namespace bifun

#endif
