// SPDX-License-Identifier: Apache-2.0
// Kernels: what a function does with the values of one row, none of which is NULL. A kernel is a plain function of the values, each of
// the type that the argument in its place has, and gives the result in one of these forms:
//
//     T kernel(values...)                              a value
//     void kernel(values..., T& result)                a value, for results that are longer than a register
//     status kernel(values..., T& result)              a value, or a failure that ends the batch
//     value_or_null kernel(values..., T& result)       a value, a NULL or a failure
//     value_or_unwritten kernel(values..., T& result)  a value, a failure, or a row that is present and keeps what it held
//
// Only negative statuses are failures: an engine's operations may return anything else for success.
#ifndef BIFUN_FRAME_KERNEL_H
#define BIFUN_FRAME_KERNEL_H

#include <cstddef>
#include <tuple>
#include <type_traits>
#include <utility>

#include "bop/frame/batch.h"

namespace bifun {

// Above 0: the row is NULL.
struct value_or_null {
    status outcome = BIFUN_OK;

    constexpr value_or_null() = default;
    constexpr value_or_null(status failure) : outcome(failure < BIFUN_OK ? failure : BIFUN_OK) {} // NOLINT: a status is one of its outcomes
    static constexpr value_or_null null() {
        value_or_null row;
        row.outcome = 1;
        return row;
    }
};

// Above 0: nothing is written.
struct value_or_unwritten {
    status outcome = BIFUN_OK;

    constexpr value_or_unwritten() = default;
    constexpr value_or_unwritten(status failure) : outcome(failure < BIFUN_OK ? failure : BIFUN_OK) {} // NOLINT: as above
    static constexpr value_or_unwritten unwritten() {
        value_or_unwritten row;
        row.outcome = 1;
        return row;
    }
};

// ---- the types of a kernel ----

template <std::size_t argument_count, class Outcome, class... Parameters> struct kernel_types {
    static_assert(sizeof...(Parameters) == argument_count, "the kernel has another number of arguments than it is called with");
    using result = std::decay_t<Outcome>;
    using outcome = void;
};

// With a place for the result behind the arguments.
template <std::size_t argument_count, class Outcome, class... Parameters>
requires(sizeof...(Parameters) == argument_count + 1) struct kernel_types<argument_count, Outcome, Parameters...> {
    using result = std::decay_t<std::tuple_element_t<argument_count, std::tuple<Parameters...>>>;
    using outcome = Outcome;
};

template <auto kernel> struct kernel_signature;
template <class Outcome, class... Parameters, Outcome (*kernel)(Parameters...)> struct kernel_signature<kernel> {
    template <std::size_t argument_count> using types = kernel_types<argument_count, Outcome, Parameters...>;

    // Whether these are the types of the first parameters: no value is converted on its way into a kernel.
    template <class... Values> static constexpr bool takes = []<std::size_t... position>(std::index_sequence<position...>) {
        using parameters = std::tuple<std::decay_t<Parameters>...>;
        return (std::is_same_v<std::tuple_element_t<position, parameters>, std::remove_const_t<Values>> && ...);
    }
    (std::index_sequence_for<Values...>());
};

template <auto kernel, class... Rows> using types_of = typename kernel_signature<kernel>::template types<sizeof...(Rows)>;
template <auto kernel, class... Rows> using result_of = typename types_of<kernel, Rows...>::result;

// Puts the result into `result`, where there is one. Returns 0 that it has, a failure, or a number above 0 for what the outcome's type
// says.
template <auto kernel, class Result, class... Values> status evaluate(Result& result, Values&... values) {
    using outcome_type = typename kernel_signature<kernel>::template types<sizeof...(Values)>::outcome;
    constexpr bool has_place = std::is_invocable_v<decltype(kernel), Values&..., Result&>;
    if constexpr (!has_place) {
        result = kernel(values...);
        return BIFUN_OK;
    } else if constexpr (std::is_void_v<outcome_type>) {
        kernel(values..., result);
        return BIFUN_OK;
    } else if constexpr (std::is_same_v<outcome_type, status>) {
        const status outcome = kernel(values..., result);
        return outcome < BIFUN_OK ? outcome : BIFUN_OK;
    } else {
        return kernel(values..., result).outcome;
    }
}

// ---- rows that fail by their values ----

// What the failing row holds when a batch stops. The rows after it are never written.
enum class failing_row : std::uint8_t { unwritten, zero, null };

// Which rows fail, for kernels in loops that look at many rows at once. `arguments` is a plain function from the kernel's arguments to a
// status, asked before the kernel is, and defined for any bits; `result` is one from its result to a status, asked where the result is
// not finite. nullptr: not asked. The batch stops at the first row for which one of them is negative. `finite_stays_finite` says of a
// kernel that its result is finite where its first argument is.
template <auto arguments_check, auto result_check, failing_row failing_row_holds, bool finite_stays_finite = false> struct row_checks {
    static constexpr auto arguments = arguments_check;
    static constexpr auto result = result_check;
    static constexpr failing_row on_failure = failing_row_holds;
    static constexpr bool asks_arguments = !std::is_null_pointer_v<decltype(arguments_check)>;
    static constexpr bool asks_result = !std::is_null_pointer_v<decltype(result_check)>;
    static constexpr bool asks_first_argument = asks_result && finite_stays_finite;
};
using no_checks = row_checks<nullptr, nullptr, failing_row::null>;

} // namespace bifun

#endif
