// The row loop of the functions that propagate NULL: one result value from the values of one row.
//
//     set_rows<evaluated, kernel, checks>(batch, arguments...)     results go through the engine's setters
//     store_rows<evaluated, kernel, checks>(batch, arguments...)   results go straight into the value array
//
// A kernel is a plain function from values to a value, or one that takes the place of its result as last argument, for results that are
// longer than a register. `checks` says which rows fail, and is left out where none does. Functions with strings for results, or whose
// rows are NULL or fail for reasons of their own, have their loop in bop/frame/attempt_rows.h.
#ifndef BIFUN_FRAME_ROW_LOOP_H
#define BIFUN_FRAME_ROW_LOOP_H

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>
#include <type_traits>

#include "bop/frame/arguments.h"
#include "bop/frame/setters.h"
#include "bop/frame/statements.h"

namespace bifun {

// For which rows a kernel is evaluated. `all` is for a kernel that is cheap, has no side effects and is defined for any bits: it is
// computed for NULL rows as well, whose results become zero, so that the loop has no branch and vectorises.
enum class rows : std::uint8_t { all, present };

// Which rows fail. `arguments` is a plain function from the kernel's arguments to a status, asked before the kernel is, and defined for any
// bits like a kernel for all rows; `result` is one from its result to a status, asked where the result is not finite. nullptr: not asked.
// The batch stops at the first row for which one of them is negative.
template <auto arguments_check, auto result_check, failing_row failing_row_holds> struct row_checks {
    static constexpr auto arguments = arguments_check;
    static constexpr auto result = result_check;
    static constexpr failing_row on_failure = failing_row_holds;
    static constexpr bool asks_arguments = !std::is_null_pointer_v<decltype(arguments_check)>;
    static constexpr bool asks_result = !std::is_null_pointer_v<decltype(result_check)>;
};
using no_checks = row_checks<nullptr, nullptr, failing_row::unwritten>;

template <bool through_setters, class Result> void write_value(const batch& batch, std::uint32_t row, const Result& value) {
    if constexpr (through_setters) {
        set_value(batch, row, value);
    } else {
        values<Result>(batch)[row] = value;
    }
}

// ---- kernels ----

template <class Kernel> struct signature;
template <class Result, class... Parameters> struct signature<Result (*)(Parameters...)> { using result = std::decay_t<Result>; };
template <class First, class... Parameters> struct signature<void (*)(First, Parameters...)> {
    using result = std::decay_t<std::tuple_element_t<sizeof...(Parameters), std::tuple<First, Parameters...>>>;
};

template <auto kernel> using result_of = typename signature<decltype(kernel)>::result;

template <auto kernel, class... Values> INLINED inline void evaluate(result_of<kernel>& result, const Values&... values) {
    if constexpr (std::is_invocable_v<decltype(kernel), const Values&...>) {
        result = kernel(values...);
    } else {
        kernel(values..., result);
    }
}

// ---- the loop ----

// A block's flags and values stay in the first-level cache from one pass over it to the next.
constexpr std::uint32_t rows_per_block = 1024;

// How many rows of a block pass the check of their arguments; `failure` gets the status of the next one.
template <auto check, class... Rows>
INLINED inline std::uint32_t rows_with_good_arguments(std::uint32_t count, bool no_nulls, status& failure, const Rows&... rows) {
    status failures = BIFUN_OK;
    if (no_nulls) {
        for (std::uint32_t k = 0; k < count; ++k) {
            failures |= check(rows[k]...);
        }
    } else {
        for (std::uint32_t k = 0; k < count; ++k) {
            const status failure_of_value = check(rows[k]...);
            failures |= all_have_values(k, rows...) ? failure_of_value : BIFUN_OK;
        }
    }
    if (failures == BIFUN_OK) {
        return count;
    }
    std::uint32_t passed = 0;
    while ((!no_nulls && !all_have_values(passed, rows...)) || check(rows[passed]...) == BIFUN_OK) {
        ++passed;
    }
    failure = check(rows[passed]...);
    return passed;
}

// How many of a block's results pass the check; `failure` gets the status of the next one.
template <auto check, class Result>
INLINED inline std::uint32_t rows_with_good_results(const Result* results, const std::uint8_t* flags, std::uint32_t count,
                                                    status& failure) {
    std::uint32_t not_finite = 0;
    for (std::uint32_t k = 0; k < count; ++k) {
        not_finite |= static_cast<std::uint32_t>(!(std::fabs(results[k]) <= std::numeric_limits<Result>::max()));
    }
    if (not_finite == 0) {
        return count;
    }
    for (std::uint32_t k = 0; k < count; ++k) {
        if (flags[k] != 0 && !std::isfinite(results[k])) {
            const status found = check(results[k]);
            if (found < BIFUN_OK) {
                failure = found;
                return k;
            }
        }
    }
    return count;
}

template <class... Rows>
INLINED inline void write_null_flags(std::uint8_t* __restrict flags, std::uint32_t count, bool no_nulls, const Rows&... rows) {
    if (no_nulls) {
        std::memset(flags, 1, count);
        return;
    }
    for (std::uint32_t k = 0; k < count; ++k) {
        flags[k] = static_cast<std::uint8_t>(all_have_values(k, rows...));
    }
}

// Zero where the flag is 0. Longer values are masked word by word: choosing between two of them would take a branch.
template <class Result> INLINED inline void zero_unless(std::uint8_t flag, Result& value) {
    if constexpr (std::is_arithmetic_v<Result>) {
        value = flag != 0 ? value : Result{};
    } else {
        static_assert(sizeof(Result) % sizeof(std::uint32_t) == 0);
        std::uint32_t words[sizeof(Result) / sizeof(std::uint32_t)];
        std::memcpy(words, &value, sizeof words);
        for (std::uint32_t& word : words) {
            word &= 0U - flag;
        }
        std::memcpy(&value, words, sizeof words);
    }
}

// The results of a block, whose flags are written. The value of a NULL row becomes zero.
template <auto kernel, class Result, class... Rows>
INLINED inline void compute_block(Result* __restrict results, const std::uint8_t* flags, std::uint32_t count, bool no_nulls,
                                  const Rows&... rows) {
    if (no_nulls) {
        for (std::uint32_t k = 0; k < count; ++k) {
            evaluate<kernel>(results[k], rows[k]...);
        }
        return;
    }
    for (std::uint32_t k = 0; k < count; ++k) {
        Result value;
        evaluate<kernel>(value, rows[k]...);
        zero_unless(flags[k], value);
        results[k] = value;
    }
}

// Evaluates a block, whose `rows` begin at row `first` of the batch, and returns how many passed; `failure` gets the status of the next
// one. In passes over the block, for kernels that vectorise.
template <auto kernel, class Checks, class Result, class... Rows>
INLINED inline std::uint32_t evaluate_in_passes(const batch& batch, std::uint32_t first, std::uint32_t count, bool no_nulls,
                                                status& failure, const Rows&... rows) {
    std::uint8_t* const flags = null_flags(batch) + first;
    Result* const results = values<Result>(batch) + first;
    std::uint32_t passed = count;
    if constexpr (Checks::asks_arguments) {
        passed = rows_with_good_arguments<Checks::arguments>(count, no_nulls, failure, rows...);
    }
    if constexpr (!Checks::asks_result) {
        write_null_flags(flags, passed, no_nulls, rows...);
        compute_block<kernel>(results, flags, passed, no_nulls, rows...);
    } else {
        // Results wait here until they are known to be good: a row behind the failing one must not be written.
        Result waiting[rows_per_block];
        std::uint8_t waiting_flags[rows_per_block];
        write_null_flags(waiting_flags, passed, no_nulls, rows...);
        compute_block<kernel>(waiting, waiting_flags, passed, no_nulls, rows...);
        passed = rows_with_good_results<Checks::result>(waiting, waiting_flags, passed, failure);
        std::memcpy(flags, waiting_flags, passed);
        std::memcpy(results, waiting, passed * sizeof(Result));
    }
    return passed;
}

// The same row by row, for kernels and setters that take a call: its time hides that of the checks.
template <auto kernel, class Checks, bool through_setters, class Result, class... Rows>
INLINED inline std::uint32_t evaluate_one_by_one(const batch& batch, std::uint32_t first, std::uint32_t count, bool no_nulls,
                                                 status& failure, const Rows&... rows) {
    std::uint8_t* const flags = null_flags(batch) + first;
    Result* const results = values<Result>(batch) + first;
    for (std::uint32_t k = 0; k < count; ++k) {
        const bool present = no_nulls || all_have_values(k, rows...);
        if (present) {
            if constexpr (Checks::asks_arguments) {
                failure = Checks::arguments(rows[k]...);
                if (failure < BIFUN_OK) {
                    return k;
                }
            }
            if constexpr (through_setters || Checks::asks_result) {
                Result value;
                evaluate<kernel>(value, rows[k]...);
                if constexpr (Checks::asks_result) {
                    failure = std::isfinite(value) ? BIFUN_OK : Checks::result(value);
                    if (failure < BIFUN_OK) {
                        return k;
                    }
                }
                write_value<through_setters>(batch, first + k, value);
            } else {
                evaluate<kernel>(results[k], rows[k]...);
            }
        }
        flags[k] = static_cast<std::uint8_t>(present);
    }
    failure = BIFUN_OK;
    return count;
}

template <rows evaluated, auto kernel, class Checks, bool through_setters, class Result, class... Rows>
INLINED inline std::uint32_t evaluate_block(const batch& batch, std::uint32_t first, std::uint32_t count, bool no_nulls, status& failure,
                                            const Rows&... rows) {
    if constexpr (evaluated == rows::all && !through_setters) {
        return evaluate_in_passes<kernel, Checks, Result>(batch, first, count, no_nulls, failure, rows...);
    } else {
        return evaluate_one_by_one<kernel, Checks, through_setters, Result>(batch, first, count, no_nulls, failure, rows...);
    }
}

template <rows evaluated, auto kernel, class Checks, bool through_setters, class... Arguments>
INLINED inline status evaluate_rows(const batch& batch, const Arguments&... arguments) {
    if ((is_null_constant(arguments) || ...)) {
        return null_rows(batch);
    }
    const bool no_nulls = (has_no_nulls(arguments) && ...);
    batch.result->no_nulls = joint_no_null_flag(arguments...);
    return with_rows(
        [&](const auto&... rows) INLINED -> status {
            using result_type = result_of<kernel>;
            std::uint32_t count = 0;
            for (std::uint32_t first = 0; first < batch.row_count; first += count) {
                count = std::min(rows_per_block, batch.row_count - first);
                status failure = BIFUN_OK;
                const std::uint32_t passed = evaluate_block<evaluated, kernel, Checks, through_setters, result_type>(
                    batch, first, count, no_nulls, failure, rows.from(first)...);
                if (failure != BIFUN_OK) {
                    batch.result->no_nulls = 0;
                    if constexpr (Checks::on_failure == failing_row::null) {
                        null_flags(batch)[first + passed] = 0;
                    }
                    if constexpr (Checks::on_failure == failing_row::zero) {
                        null_flags(batch)[first + passed] = 1;
                        write_value<through_setters>(batch, first + passed, result_type{});
                    }
                    return failure;
                }
            }
            return BIFUN_OK;
        },
        arguments...);
}

template <rows evaluated, auto kernel, class Checks = no_checks, class... Arguments>
INLINED inline status store_rows(const batch& batch, const Arguments&... arguments) {
    return evaluate_rows<evaluated, kernel, Checks, false>(batch, arguments...);
}

template <rows evaluated, auto kernel, class Checks = no_checks, class... Arguments>
INLINED inline status set_rows(const batch& batch, const Arguments&... arguments) {
    if (setters_are_plain_stores()) {
        return evaluate_rows<evaluated, kernel, Checks, false>(batch, arguments...);
    }
    return out_of_line([](const bifun::batch& batch, const Arguments&... arguments)
                           INLINED { return evaluate_rows<evaluated, kernel, Checks, true>(batch, arguments...); },
                       batch, arguments...);
}

} // namespace bifun

#endif
