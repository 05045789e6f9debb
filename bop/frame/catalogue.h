// SPDX-License-Identifier: Apache-2.0
// The catalogue: every SQL built-in, every entry point and what is true of them, as constant data made from bop/exports.def. For whoever
// calls the library by name: the host, the generic tests, the benchmarks. The library itself does not include it.
#ifndef BIFUN_FRAME_CATALOGUE_H
#define BIFUN_FRAME_CATALOGUE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <tuple>
#include <utility>

#include "bop/bifun.h"
#include "bop/frame/facts.h"
#include "bop/frame/value_type.h"

namespace bifun {

enum class argument_kind : std::uint8_t { column, constant };

struct argument {
    argument_kind kind;
    value_type type;
};

// Calls `function`, an entry point found by name. `arguments` points to its SQL arguments: a bifun_column or a constant record each.
using entry_invoker = std::int32_t (*)(void* function, bifun_environment* environment, bifun_memory_object* memory,
                                       const void* const* arguments, bifun_column* result, std::uint32_t row_count);

// One exported function. All text lives as long as the program.
struct entry_point {
    const char* symbol;       // what dlsym finds
    std::string_view builtin; // the SQL name, in upper case
    value_type result;
    std::array<argument, most_arguments> argument_list; // read arguments(): only the first argument_count count
    std::size_t argument_count;
    entry_invoker invoke;

    [[nodiscard]] constexpr std::span<const argument> arguments() const { return {argument_list.data(), argument_count}; }
};

struct builtin {
    std::string_view name;    // as in entry_point
    std::string_view form;    // how it is called: MOD(x, y)
    std::string_view meaning; // one line
    std::string_view example; // a call that works without a table
};

namespace detail {

template <class... Parameters, std::size_t... Position>
std::int32_t invoke_at(std::int32_t (*function)(bifun_environment*, bifun_memory_object*, Parameters...), std::index_sequence<Position...>,
                       bifun_environment* environment, bifun_memory_object* memory, const void* const* arguments, bifun_column* result,
                       std::uint32_t row_count) {
    using parameters = std::tuple<Parameters...>;
    return function(environment, memory, static_cast<std::tuple_element_t<Position, parameters>>(arguments[Position])..., result,
                    row_count);
}

template <class Function> struct invoker;

template <class... Parameters> struct invoker<std::int32_t(bifun_environment*, bifun_memory_object*, Parameters...)> {
    static std::int32_t invoke(void* function, bifun_environment* environment, bifun_memory_object* memory, const void* const* arguments,
                               bifun_column* result, std::uint32_t row_count) {
        using function_type = std::int32_t (*)(bifun_environment*, bifun_memory_object*, Parameters...);
        constexpr std::size_t result_and_row_count = 2;
        return invoke_at(reinterpret_cast<function_type>(function),
                         std::make_index_sequence<sizeof...(Parameters) - result_and_row_count>{}, environment, memory, arguments, result,
                         row_count);
    }
};

template <class... Arguments>
constexpr entry_point make_entry_point(const char* symbol, std::string_view builtin, value_type result, entry_invoker invoke,
                                       Arguments... arguments) {
    static_assert(sizeof...(Arguments) <= most_arguments);
    return {symbol, builtin, result, {arguments...}, sizeof...(Arguments), invoke};
}

} // namespace detail

inline constexpr entry_point entry_points[] = {
#define COLUMN(type)                                                                                                                       \
    argument { argument_kind::column, value_type::type }
#define CONSTANT(type)                                                                                                                     \
    argument { argument_kind::constant, value_type::type }
#define EXPORT(symbol, builtin, result, ...)                                                                                               \
    detail::make_entry_point(#symbol, #builtin, value_type::result, detail::invoker<decltype(::symbol)>::invoke, __VA_ARGS__),
#include "bop/exports.def"
#undef COLUMN
#undef CONSTANT
};

inline constexpr builtin builtins[] = {
#define BUILTIN(name, form, meaning, example) {#name, form, meaning, example},
#include "bop/exports.def"
};

// The symbols that are exported besides the entry points.
inline constexpr const char* other_symbols[] = {
#define EXPORT_FUNCTION(symbol, result, ...) #symbol,
#define EXPORT_DATA(type, symbol) #symbol,
#include "bop/exports.def"
};

// ---- what is true of them ----

namespace detail {

using enum datetime_kinds;
using enum null_rule;
using enum value_form;
using enum value_type;

inline constexpr null_fact null_facts[] = {
#define NULLS(names, rule) {names, rule},
#include "bop/exports.def"
};

inline constexpr argument_fact argument_facts[] = {
#define ARGUMENT(functions, index, of_type, ...) {.names = functions, .position = index, .type = of_type, __VA_ARGS__},
#include "bop/exports.def"
};

inline constexpr result_fact result_facts[] = {
#define RESULT(names, kind) {names, kind},
#include "bop/exports.def"
};

inline constexpr change_fact change_facts[] = {
#define CHANGES(names, when) {names, change::when},
#include "bop/exports.def"
};

inline constexpr std::string_view argument_writers[] = {
#define WRITES_ARGUMENTS(names) names,
#include "bop/exports.def"
};

inline constexpr spelling spellings[] = {
#define SPELLING(name, ...) {.builtin = name, __VA_ARGS__},
#include "bop/exports.def"
};

inline constexpr advice advices[] = {
#define ADVICE(names, text, ...) {names, text, {__VA_ARGS__}},
#include "bop/exports.def"
};

} // namespace detail

using detail::advices;
using detail::argument_facts;
using detail::null_facts;
using detail::spellings;

constexpr null_rule null_rule_of(const entry_point& entry) {
    for (const std::string_view name : {std::string_view(entry.symbol), entry.builtin}) {
        for (const null_fact& fact : null_facts) {
            if (has_word(fact.names, name)) {
                return fact.rule;
            }
        }
    }
    return null_rule::propagates;
}

inline constexpr spelling usual_spelling{};

constexpr const spelling& spelling_of(std::string_view builtin) {
    for (const spelling& known : spellings) {
        if (known.builtin == builtin) {
            return known;
        }
    }
    return usual_spelling;
}

// Nothing where the arguments decide.
constexpr std::optional<datetime_kinds> result_kind_of(const entry_point& entry) {
    for (const std::string_view name : {std::string_view(entry.symbol), entry.builtin}) {
        for (const result_fact& fact : detail::result_facts) {
            if (has_word(fact.names, name)) {
                return fact.kind;
            }
        }
    }
    return std::nullopt;
}

constexpr change change_of(const entry_point& entry) {
    for (const std::string_view name : {std::string_view(entry.symbol), entry.builtin}) {
        for (const change_fact& fact : detail::change_facts) {
            if (has_word(fact.names, name)) {
                return fact.when;
            }
        }
    }
    return change::never;
}

// No other thread may read the bytes of the string arguments during a call.
constexpr bool writes_arguments(const entry_point& entry) {
    for (const std::string_view names : detail::argument_writers) {
        if (has_word(names, entry.builtin) || has_word(names, entry.symbol)) {
            return true;
        }
    }
    return false;
}

inline constexpr argument_fact usual_argument{};

// The line about the entry point, or else the one about its built-in, or else what is usual.
constexpr const argument_fact& fact_of(const entry_point& entry, std::size_t position) {
    for (const std::string_view name : {std::string_view(entry.symbol), entry.builtin}) {
        for (const argument_fact& fact : argument_facts) {
            if (fact.position == position && fact.type == entry.argument_list[position].type && has_word(fact.names, name)) {
                return fact;
            }
        }
    }
    return usual_argument;
}

} // namespace bifun

#endif
