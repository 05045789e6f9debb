// SPDX-License-Identifier: Apache-2.0
// The loops over the rows of a batch. A row with a NULL among its arguments is NULL; for the others the kernel is asked.
//
//     set_rows<kernel>(batch, arguments...)            fixed-width results, through the engine's setters
//     store_rows<kernel>(batch, arguments...)          fixed-width results, straight into the value array
//
//     set_all_rows<kernel, checks>(batch, arguments...), store_all_rows<...>
//         the kernel is cheap, has no side effects and is defined for any bits: it is computed for NULL rows as well, whose results become
//         zero, so that the loop has no branch and vectorises
//
//     set_usual_rows<is_usual, usual_kernel, kernel>(batch, arguments...)
//         the same for `usual_kernel` in blocks of rows that are all usual, by a plain function of the values that is defined for any bits
//         and told from few instructions; of other blocks the rows that are not usual are evaluated one by one, by `kernel`, which would
//         give the same results for all
//
// bop/frame/kernel.h says what a kernel is, bop/frame/arguments.h what arguments may be. `checks` says which rows fail, where values tell.
// A function with a NULL rule of its own has a loop of its own over for_each_block.
#ifndef BIFUN_FRAME_ROW_LOOP_H
#define BIFUN_FRAME_ROW_LOOP_H

#include <cmath>
#include <limits>

#include "bop/frame/arguments.h"
#include "bop/frame/kernel.h"
#include "bop/frame/results.h"

namespace bifun {

// ---- all rows of a block in passes over it ----

// How many rows of a block pass the check of their arguments; `failure` gets the status of the next one.
template <auto check, class... Rows>
std::uint32_t rows_with_good_arguments(std::uint32_t count, bool no_nulls, status& failure, const Rows&... rows) {
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

template <class Rows> bool all_are_finite(std::uint32_t count, const Rows& rows) {
    std::uint32_t not_finite = 0;
    for (std::uint32_t k = 0; k < count; ++k) {
        not_finite |= static_cast<std::uint32_t>(!(std::fabs(rows[k]) <= std::numeric_limits<double>::max()));
    }
    return not_finite == 0;
}

// How many of a block's results pass the check; `failure` gets the status of the next one.
template <auto check, class Result>
std::uint32_t rows_with_good_results(const Result* results, const std::uint8_t* flags, std::uint32_t count, status& failure) {
    if (all_are_finite(count, results)) { // the values of NULL rows are zero
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

template <class... Rows> void write_null_flags(std::uint8_t* __restrict flags, std::uint32_t count, bool no_nulls, const Rows&... rows) {
    if (no_nulls) {
        std::memset(flags, 1, count);
        return;
    }
    for (std::uint32_t k = 0; k < count; ++k) {
        flags[k] = static_cast<std::uint8_t>(all_have_values(k, rows...));
    }
}

// Copies a value, or zero where the flag is 0. Longer values are masked word by word, each on its own: choosing between two values would
// take a branch, and a copy of a whole record would keep the loop from becoming vectors.
template <class Result> void store_unless_null(std::uint8_t flag, const Result& value, Result& to) {
    if constexpr (std::is_arithmetic_v<Result>) {
        to = flag != 0 ? value : Result{};
    } else {
        static_assert(sizeof(Result) % sizeof(std::uint32_t) == 0);
        const auto* const from_bytes = reinterpret_cast<const std::uint8_t*>(&value);
        auto* const to_bytes = reinterpret_cast<std::uint8_t*>(&to);
        [&]<std::size_t... word>(std::index_sequence<word...>) {
            const auto copy = [&](std::size_t at) {
                std::uint32_t bits;
                std::memcpy(&bits, from_bytes + at, sizeof bits);
                bits &= 0U - flag;
                std::memcpy(to_bytes + at, &bits, sizeof bits);
            };
            (copy(word * sizeof(std::uint32_t)), ...);
        }
        (std::make_index_sequence<sizeof(Result) / sizeof(std::uint32_t)>());
    }
}

// The results of a block, whose flags are written. The value of a NULL row becomes zero. Flattened, because a kernel that is called keeps
// the loop from becoming vectors.
template <auto kernel, class Result, class... Rows>
[[gnu::flatten]] void compute_block(Result* __restrict results, const std::uint8_t* flags, std::uint32_t count, bool no_nulls,
                                    const Rows&... rows) {
    if (no_nulls) {
        for (std::uint32_t k = 0; k < count; ++k) {
            (void)evaluate<kernel>(results[k], rows[k]...);
        }
        return;
    }
    for (std::uint32_t k = 0; k < count; ++k) {
        Result value;
        (void)evaluate<kernel>(value, rows[k]...);
        store_unless_null(flags[k], value, results[k]);
    }
}

template <auto kernel, class Checks, class Result, class... Rows>
status evaluate_in_passes(const batch& batch, std::uint32_t first, std::uint32_t count, bool no_nulls, const Rows&... rows) {
    std::uint8_t* const flags = null_flags(batch) + first;
    Result* const results = values<Result>(batch) + first;
    std::uint32_t passed = count;
    status failure = BIFUN_OK;
    if constexpr (Checks::asks_arguments) {
        passed = rows_with_good_arguments<Checks::arguments>(count, no_nulls, failure, rows...);
    }
    bool results_are_good = !Checks::asks_result;
    if constexpr (Checks::asks_first_argument) {
        results_are_good = all_are_finite(passed, std::get<0>(std::tie(rows...)));
    }
    if (results_are_good) {
        write_null_flags(flags, passed, no_nulls, rows...);
        compute_block<kernel>(results, flags, passed, no_nulls, rows...);
    } else if constexpr (Checks::asks_result) {
        // Results wait here until they are known to be good: a row behind the failing one must not be written.
        Result waiting[most_rows_per_block];
        std::uint8_t waiting_flags[most_rows_per_block];
        write_null_flags(waiting_flags, passed, no_nulls, rows...);
        compute_block<kernel>(waiting, waiting_flags, passed, no_nulls, rows...);
        passed = rows_with_good_results<Checks::result>(waiting, waiting_flags, passed, failure);
        std::memcpy(flags, waiting_flags, passed);
        std::memcpy(results, waiting, passed * sizeof(Result));
    }
    if (failure < BIFUN_OK) {
        if constexpr (Checks::on_failure == failing_row::null) {
            flags[passed] = 0;
        }
        if constexpr (Checks::on_failure == failing_row::zero) {
            flags[passed] = 1;
            results[passed] = Result{};
        }
    }
    return failure;
}

template <auto is_usual, class... Rows> std::uint32_t count_unusual(std::uint32_t count, bool no_nulls, const Rows&... rows) {
    std::uint32_t unusual = 0;
    if (no_nulls) {
        for (std::uint32_t k = 0; k < count; ++k) {
            unusual += static_cast<std::uint32_t>(!is_usual(rows[k]...));
        }
    } else {
        for (std::uint32_t k = 0; k < count; ++k) {
            unusual += static_cast<std::uint32_t>(!is_usual(rows[k]...)) & static_cast<std::uint32_t>(all_have_values(k, rows...));
        }
    }
    return unusual;
}

// ---- row by row ----

// The kernel between the checks.
template <auto kernel, class Checks, class Result, class... Values> status evaluate_checked(Result& result, Values&... values) {
    if constexpr (Checks::asks_arguments) {
        const status failure = Checks::arguments(values...);
        if (failure < BIFUN_OK) {
            return failure;
        }
    }
    const status outcome = evaluate<kernel>(result, values...);
    if constexpr (Checks::asks_result) {
        return std::isfinite(result) ? outcome : Checks::result(result);
    }
    return outcome;
}

// Rows `begin` to `end` of the block that begins with row `first`.
template <auto kernel, class Checks, class Results, class... Rows>
status evaluate_one_by_one(const batch& batch, Results& results, std::uint32_t first, std::uint32_t begin, std::uint32_t end, bool no_nulls,
                           const Rows&... rows) {
    std::uint8_t* const flags = null_flags(batch) + first;
    for (std::uint32_t k = begin; k < end; ++k) {
        (fetch_ahead(rows, k), ...);
        if (!no_nulls && !all_have_values(k, rows...)) {
            flags[k] = 0;
            continue;
        }
        const status outcome = results.row(first + k, [&](auto& place) { return evaluate_checked<kernel, Checks>(place, rows[k]...); });
        if (outcome != BIFUN_OK) [[unlikely]] {
            if (outcome < BIFUN_OK) {
                if constexpr (Checks::on_failure == failing_row::null) {
                    flags[k] = 0;
                }
                if constexpr (Checks::on_failure == failing_row::zero) {
                    flags[k] = 1;
                    results.row(first + k, [](auto& place) -> status {
                        place = {};
                        return BIFUN_OK;
                    });
                }
                return outcome;
            }
            if constexpr (std::is_same_v<typename types_of<kernel, Rows...>::outcome, value_or_null>) {
                flags[k] = 0;
                continue;
            }
        }
        flags[k] = 1;
    }
    return BIFUN_OK;
}

// Called, so that a loop over the usual rows keeps its values in registers.
template <auto kernel, class Results, class... Rows>
[[gnu::flatten, gnu::noinline]] status evaluate_unusual_row(const batch& batch, Results& results, std::uint32_t first, std::uint32_t k,
                                                            const Rows&... rows) {
    return evaluate_one_by_one<kernel, no_checks>(batch, results, first, k, k + 1, true, rows...);
}

// Rows of which most are usual.
template <auto is_usual, auto usual_kernel, auto kernel, class Results, class Result, class... Rows>
status evaluate_mostly_usual(const batch& batch, Results& results, std::uint32_t first, std::uint32_t count, bool no_nulls,
                             const Rows&... rows) {
    std::uint8_t* const flags = null_flags(batch) + first;
    Result* const usual_results = values<Result>(batch) + first;
    for (std::uint32_t k = 0;; ++k) {
        for (; k < count; ++k) {
            const bool has_value = no_nulls || all_have_values(k, rows...);
            if (has_value) {
                if (!is_usual(rows[k]...)) {
                    break;
                }
                (void)evaluate<usual_kernel>(usual_results[k], rows[k]...);
            }
            flags[k] = static_cast<std::uint8_t>(has_value);
        }
        if (k == count) {
            return BIFUN_OK;
        }
        const status outcome = evaluate_unusual_row<kernel>(batch, results, first, k, rows...);
        if (outcome < BIFUN_OK) [[unlikely]] {
            return outcome;
        }
    }
}

// ---- batches ----

// Where some of the NULLs are the kernel's own, no promise is given that no row is NULL.
template <auto kernel, class... Arguments> std::uint32_t no_null_flag(const Arguments&... arguments) {
    constexpr bool adds_nulls = std::is_same_v<typename types_of<kernel, Arguments...>::outcome, value_or_null>;
    return adds_nulls ? 0 : joint_no_null_flag(arguments...);
}

inline status stop_at_failure(const batch& batch, status outcome) {
    if (outcome < BIFUN_OK) {
        batch.result->no_nulls = 0;
    }
    return outcome;
}

template <auto kernel, class Checks, class Result, class... Arguments>
[[gnu::flatten]] status evaluate_all_rows(const batch& batch, const Arguments&... arguments) {
    const bool no_nulls = (has_no_nulls(arguments) && ...);
    batch.result->no_nulls = joint_no_null_flag(arguments...);
    const auto block = [&](std::uint32_t first, std::uint32_t count, const auto&... rows) {
        return evaluate_in_passes<kernel, Checks, Result>(batch, first, count, no_nulls, rows...);
    };
    return stop_at_failure(batch, for_each_block(batch.row_count, block, arguments...));
}

// The rows of a block. A function of its own: in the loop over blocks, what that loop holds would take registers from this one.
template <auto kernel, class Checks, class Results, class... Rows>
[[gnu::flatten, gnu::noinline]] status evaluate_block(const batch& batch, std::uint32_t first, std::uint32_t count, bool no_nulls,
                                                      const Rows... rows) {
    Results results(batch);
    const status outcome = evaluate_one_by_one<kernel, Checks>(batch, results, first, 0, count, no_nulls, rows...);
    results.finish();
    return outcome;
}

template <auto kernel, class Checks, class Results, class... Arguments>
status evaluate_rows(const batch& batch, const Arguments&... arguments) {
    const bool no_nulls = (has_no_nulls(arguments) && ...);
    batch.result->no_nulls = no_null_flag<kernel>(arguments...);
    const auto block = [&](std::uint32_t first, std::uint32_t count, const auto&... rows) {
        return evaluate_block<kernel, Checks, Results>(batch, first, count, no_nulls, rows...);
    };
    return stop_at_failure(batch, for_each_block(batch.row_count, block, arguments...));
}

template <auto is_usual, auto usual_kernel, auto kernel, class Results, class Result, class... Rows>
[[gnu::flatten, gnu::noinline]] status evaluate_mixed_block(const batch& batch, std::uint32_t first, std::uint32_t count, bool no_nulls,
                                                            const Rows... rows) {
    Results results(batch);
    const status outcome =
        evaluate_mostly_usual<is_usual, usual_kernel, kernel, Results, Result>(batch, results, first, count, no_nulls, rows...);
    results.finish();
    return outcome;
}

template <auto is_usual, auto usual_kernel, auto kernel, class Results, class Result, class... Arguments>
[[gnu::flatten]] status evaluate_usual_rows(const batch& batch, const Arguments&... arguments) {
    const bool no_nulls = (has_no_nulls(arguments) && ...);
    batch.result->no_nulls = no_null_flag<kernel>(arguments...);
    const auto block = [&](std::uint32_t first, std::uint32_t count, const auto&... rows) {
        // One row is not worth the passes.
        const std::uint32_t unusual = count == 1 ? 1 : count_unusual<is_usual>(count, no_nulls, rows...);
        if (unusual > count / 2) {
            return evaluate_block<kernel, no_checks, Results>(batch, first, count, no_nulls, rows...);
        }
        if (unusual != 0) {
            return evaluate_mixed_block<is_usual, usual_kernel, kernel, Results, Result>(batch, first, count, no_nulls, rows...);
        }
        write_null_flags(null_flags(batch) + first, count, no_nulls, rows...);
        compute_block<usual_kernel>(values<Result>(batch) + first, null_flags(batch) + first, count, no_nulls, rows...);
        return status{BIFUN_OK};
    };
    return stop_at_failure(batch, for_each_block(batch.row_count, block, arguments...));
}

// What a kernel is called with, and what it gives, is what the catalogue says.
template <auto kernel, class... Arguments> constexpr bool takes_arguments = false;
template <auto kernel, template <class> class... Argument, class... T>
constexpr bool takes_arguments<kernel, Argument<T>...> = kernel_signature<kernel>::template takes<T...>;

template <auto kernel, class Result, class... Arguments> constexpr void check_types() {
    static_assert(takes_arguments<kernel, Arguments...>, "the kernel takes other types than the arguments have");
    static_assert(std::is_same_v<result_of<kernel, Arguments...>, Result>, "the kernel gives another type than the catalogue says");
}

template <auto kernel, class Checks, class Result, class... Arguments> status store_all(const batch& batch, const Arguments&... arguments) {
    check_types<kernel, Result, Arguments...>();
    return (is_null_constant(arguments) || ...) ? null_rows(batch) : evaluate_all_rows<kernel, Checks, Result>(batch, arguments...);
}

template <auto kernel, class Checks, template <class> class Results, class Result, class... Arguments>
status evaluate_into(const batch& batch, const Arguments&... arguments) {
    check_types<kernel, Result, Arguments...>();
    return (is_null_constant(arguments) || ...) ? null_rows(batch) : evaluate_rows<kernel, Checks, Results<Result>>(batch, arguments...);
}

template <auto kernel, class Checks = no_checks, value_type result, class... Arguments>
status store_all_rows(batch_of<result> batch, Arguments... arguments) {
    return store_all<kernel, Checks, stored<result>>(batch, argument(arguments)...);
}

template <auto kernel, class Checks = no_checks, value_type result, class... Arguments>
status set_all_rows(batch_of<result> batch, Arguments... arguments) {
    return setters_are_plain_stores() ? store_all<kernel, Checks, stored<result>>(batch, argument(arguments)...)
                                      : evaluate_into<kernel, Checks, set_results, stored<result>>(batch, argument(arguments)...);
}

template <auto is_usual, auto usual_kernel, auto kernel, class Results, class Result, class... Arguments>
status store_usual(const batch& batch, const Arguments&... arguments) {
    check_types<kernel, typename Results::place, Arguments...>();
    check_types<usual_kernel, Result, Arguments...>();
    return (is_null_constant(arguments) || ...) ? null_rows(batch)
                                                : evaluate_usual_rows<is_usual, usual_kernel, kernel, Results, Result>(batch, arguments...);
}

template <auto is_usual, auto usual_kernel, auto kernel, value_type result, class... Arguments>
status set_usual_rows(batch_of<result> batch, Arguments... arguments) {
    using results = stored_results<stored<result>>;
    return setters_are_plain_stores() ? store_usual<is_usual, usual_kernel, kernel, results, stored<result>>(batch, argument(arguments)...)
                                      : evaluate_into<kernel, no_checks, set_results, stored<result>>(batch, argument(arguments)...);
}

template <auto kernel, class Checks = no_checks, value_type result, class... Arguments>
status store_rows(batch_of<result> batch, Arguments... arguments) {
    return evaluate_into<kernel, Checks, stored_results, stored<result>>(batch, argument(arguments)...);
}

template <auto kernel, class Checks = no_checks, value_type result, class... Arguments>
status set_rows(batch_of<result> batch, Arguments... arguments) {
    return setters_are_plain_stores() ? store_rows<kernel, Checks>(batch, arguments...)
                                      : evaluate_into<kernel, Checks, set_results, stored<result>>(batch, argument(arguments)...);
}

} // namespace bifun

#endif
