// SPDX-License-Identifier: Apache-2.0
// The arguments of a loop over rows. An entry point passes on what it is given, column_of and constant_of, or what it has made of a
// constant once for the batch:
//
//     constant_argument{value, present}    a constant in another form; where it is not present, every row is NULL
//     fixed(value)                         no argument of SQL: what the kernel has to know besides, in registers
//     shared(value)                        the same by reference, for what is large or changes
//     block_argument<T>                    the same, made anew for the rows of each block
//     derived_argument<T>                  a value for each row that the kernel gets besides, derived from a whole block of rows at once
//     mapped<function>(column)             what a plain function, defined for any bits and without a branch, makes of a column's values:
//                                          computed for all rows of a block at once, so that a loop that does not vectorise has it ready
//     column_or_constant<T>                either, as the entry point says at run time: for functions of many arguments, whose entry points
//                                          share one loop. Takes a column_of or a constant_of by conversion; a constant is spread over the
//                                          rows of a block once per batch
//
// Loops see blocks of rows. The rows of a column with a selection vector are gathered, so that every loop is over dense rows and is
// compiled once. Rows of all kinds have the same members: has_value(k), and [k] for row k of the block.
#ifndef BIFUN_FRAME_ARGUMENTS_H
#define BIFUN_FRAME_ARGUMENTS_H

#include <type_traits>

#include "bop/frame/batch.h"
#include "layouts/fetch_ahead.h"

namespace bifun {

template <class T> struct column_argument { const bifun_column* column; };

// Records of 9 to 16 bytes are passed in registers, for which gcc writes them to memory in pieces and reads them back as words, and longer
// ones are copied as words: a processor waits for that, some nanoseconds that a batch of one row feels. A record with this for its base is
// made where it is needed, and copied member by member.
template <bool wanted> struct made_in_place {};
template <> struct made_in_place<true> {
    made_in_place() = default;
    made_in_place(const made_in_place& /*other*/) {} // NOLINT(modernize-use-equals-default): not trivial, which is what it is for
    made_in_place& operator=(const made_in_place&) = default;
    ~made_in_place() = default;
};
template <class T> using made_in_place_if_long = made_in_place<(sizeof(T) > sizeof(std::uint64_t))>;

// A NULL constant has the value zero: what its record holds is garbage, and must not reach a result.
template <class T> struct constant_argument : made_in_place_if_long<T> {
    T value;
    bool present;

    constant_argument() : value(), present() {}
    constant_argument(const T& value, bool present) : value(value), present(present) {}
};

template <class T> struct fixed_argument { T value; };
template <class T> fixed_argument<T> fixed(T value) { return {value}; }

template <class T> struct shared_argument { T* value; };
template <class T> shared_argument<T> shared(T& value) { return {&value}; }

// `of_block(source, first, count)` is for the rows from `first` on.
template <class T> struct block_argument {
    const void* source;
    T (*of_block)(const void* source, std::uint32_t first, std::uint32_t count);
};

// `derive(source, first, count, values)` fills in the values of the rows from `first` on; those of NULL rows do not matter.
template <class T> struct derived_argument {
    const void* source;
    void (*derive)(const void* source, std::uint32_t first, std::uint32_t count, T* values);
};

// ---- what an entry point is given, as arguments of a loop ----

template <value_type type> column_argument<stored<type>> argument(column_of<type> given) { return {given.column}; }

// What these make of a record is written where it stays, without a copy.
template <value_type type> constant_argument<stored<type>> argument(constant_of<type> given) {
    constant_argument<stored<type>> made;
    made.present = given.record->not_null != 0;
    if (made.present) {
        made.value = given.record->value;
    }
    return made;
}

// The bytes of a constant lie in its record up to the inline length, else behind its pointer.
inline bifun_string string_of(const bifun_string_constant& record, std::uint32_t trailing_blanks) {
    // A trim changes a constant's bytes for a moment, so values point to them without const, as a column's do.
    auto* inline_bytes = const_cast<std::uint8_t*>(record.inline_bytes);
    return {record.length, trailing_blanks, record.length > BIFUN_INLINE_LENGTH ? record.data : inline_bytes};
}

inline constant_argument<bifun_string> string_argument(const bifun_string_constant& record, std::uint32_t trailing_blanks) {
    constant_argument<bifun_string> made;
    made.present = record.not_null != 0;
    if (made.present) {
        made.value = string_of(record, trailing_blanks);
    }
    return made;
}

inline constant_argument<bifun_string> argument(constant_of<VARCHAR> given) {
    return string_argument(*given.record, given.record->trailing_blanks);
}

// The third word of a binary constant has no meaning.
inline constant_argument<bifun_string> argument(constant_of<VARBINARY> given) { return string_argument(*given.record, 0); }

template <class T> struct column_or_constant {
    const bifun_column* column; // null for a constant
    constant_argument<T> constant;

    template <value_type type>
    requires std::is_same_v<stored<type>, T> column_or_constant(column_of<type> given) // NOLINT(google-explicit-constructor): a conversion
        : column(given.column), constant() {}
    template <value_type type>
    requires std::is_same_v<stored<type>, T> column_or_constant(constant_of<type> given) // NOLINT(google-explicit-constructor): as above
        : column(nullptr), constant(argument(given)) {}
};

// `map` puts what the rows of a block make into `values`.
template <class T> struct mapped_argument {
    const bifun_column* column;
    void (*map)(const bifun_column& column, std::uint32_t first, std::uint32_t count, T* values);
};

template <auto function, class From, class To>
[[gnu::flatten, gnu::noinline]] void map_rows(const bifun_column& column, std::uint32_t first, std::uint32_t count, To* __restrict values) {
    const From* const from = static_cast<const From*>(column.data->values);
    if (column.selection != nullptr) {
        const std::uint16_t* const selection = column.selection + first;
        for (std::uint32_t k = 0; k < count; ++k) {
            values[k] = function(from[selection[k]]);
        }
        return;
    }
    const From* const dense = from + first;
    for (std::uint32_t k = 0; k < count; ++k) {
        values[k] = function(dense[k]);
    }
}

template <auto function, value_type type, class To = std::decay_t<decltype(function(std::declval<stored<type>>()))>>
mapped_argument<To> mapped(column_of<type> given) {
    return {given.column, map_rows<function, stored<type>, To>};
}

template <class T> column_argument<T> argument(column_argument<T> given) { return given; }
template <class T> mapped_argument<T> argument(mapped_argument<T> given) { return given; }
template <class T> constant_argument<T> argument(constant_argument<T> given) { return given; }
template <class T> fixed_argument<T> argument(fixed_argument<T> given) { return given; }
template <class T> shared_argument<T> argument(shared_argument<T> given) { return given; }
template <class T> block_argument<T> argument(block_argument<T> given) { return given; }
template <class T> derived_argument<T> argument(derived_argument<T> given) { return given; }
template <class T> const column_or_constant<T>& argument(const column_or_constant<T>& given) { return given; }

// ---- what is known of an argument before its rows are read ----

template <class T> bool has_no_nulls(const column_argument<T>& argument) { return argument.column->no_nulls != 0; }
template <class T> bool has_no_nulls(const mapped_argument<T>& argument) { return argument.column->no_nulls != 0; }
template <class T> bool has_no_nulls(const constant_argument<T>& argument) { return argument.present; }
template <class T> bool has_no_nulls(const fixed_argument<T>&) { return true; }
template <class T> bool has_no_nulls(const shared_argument<T>&) { return true; }
template <class T> bool has_no_nulls(const block_argument<T>&) { return true; }
template <class T> bool has_no_nulls(const derived_argument<T>&) { return true; }
template <class T> bool has_no_nulls(const column_or_constant<T>& argument) {
    return argument.column != nullptr ? argument.column->no_nulls != 0 : argument.constant.present;
}

template <class Argument> bool is_null_constant(const Argument&) { return false; }
template <class T> bool is_null_constant(const constant_argument<T>& argument) { return !argument.present; }
template <class T> bool is_null_constant(const column_or_constant<T>& argument) {
    return argument.column == nullptr && !argument.constant.present;
}

// A single column's promise is passed on as it stands; those of several arguments of SQL are joined to 0 or 1.
template <class Argument> constexpr std::uint32_t arguments_of_sql = 0;
template <class T> constexpr std::uint32_t arguments_of_sql<column_argument<T>> = 1;
template <class T> constexpr std::uint32_t arguments_of_sql<mapped_argument<T>> = 1;
template <class T> constexpr std::uint32_t arguments_of_sql<constant_argument<T>> = 1;
template <class T> constexpr std::uint32_t arguments_of_sql<column_or_constant<T>> = 1;

template <class T> std::uint32_t promise_of(const column_argument<T>& argument) { return argument.column->no_nulls; }
template <class T> std::uint32_t promise_of(const mapped_argument<T>& argument) { return argument.column->no_nulls; }
template <class Argument> std::uint32_t promise_of(const Argument&) { return 0; }

template <class... Arguments> std::uint32_t joint_no_null_flag(const Arguments&... arguments) {
    if constexpr ((arguments_of_sql<Arguments> + ...) == 1) {
        return (promise_of(arguments) | ...);
    }
    return (has_no_nulls(arguments) && ...);
}

// ---- rows ----

// A block's flags and values stay in the first-level cache from one pass over it to the next.
constexpr std::uint32_t most_rows_per_block = 1024;

// Gathered rows of long values and spread constants have to stay there as well.
template <class Argument> constexpr bool has_long_rows = false;
template <class T> constexpr bool has_long_rows<column_argument<T>> = sizeof(T) > 16;
template <class T> constexpr bool has_long_rows<column_or_constant<T>> = true; // a constant is spread over fewer rows
template <class... Arguments> constexpr std::uint32_t rows_per_block = (has_long_rows<Arguments> || ...) ? 256 : most_rows_per_block;

template <class T> struct dense_rows {
    using value_type = T;
    const std::uint8_t* null_flags;
    const T* values;

    [[nodiscard]] bool has_value(std::uint32_t k) const { return null_flags[k] != 0; }
    const T& operator[](std::uint32_t k) const { return values[k]; }
};

// Has the bytes behind a row's text come from memory while the row is evaluated: the texts of a column mostly lie one behind the other, and
// a kernel that waits for each stops whatever runs ahead of it.
template <class Rows> void fetch_ahead(const Rows& /*rows*/, std::uint32_t /*k*/) {}
inline void fetch_ahead(const dense_rows<bifun_string>& rows, std::uint32_t k) {
    constexpr std::uintptr_t distance = 512;
    fetch_behind(rows[k].data, distance);
}

template <class T> struct constant_rows : made_in_place_if_long<T> {
    using value_type = T;
    T value;
    bool present;

    constant_rows(const T& value, bool present) : value(value), present(present) {}

    [[nodiscard]] bool has_value(std::uint32_t) const { return present; }
    const T& operator[](std::uint32_t) const { return value; }
};

template <class T> struct shared_rows {
    using value_type = T;
    T* value;

    [[nodiscard]] static bool has_value(std::uint32_t) { return true; }
    T& operator[](std::uint32_t) const { return *value; }
};

template <class T> struct derived_rows {
    using value_type = T;
    const T* values;

    [[nodiscard]] static bool has_value(std::uint32_t) { return true; }
    const T& operator[](std::uint32_t k) const { return values[k]; }
};

// Whether no argument of row k is NULL, without a branch.
template <class... Rows> bool all_have_values(std::uint32_t k, const Rows&... rows) {
    return (static_cast<unsigned>(rows.has_value(k)) & ...) != 0;
}

// ---- blocks ----

// Long values by two moves that overlap.
template <class T> void copy_value(T& to, const T& from) {
    if constexpr (sizeof(T) > 16 && sizeof(T) <= 32) {
        std::uint8_t first[16];
        std::uint8_t last[16];
        std::memcpy(first, &from, sizeof first);
        std::memcpy(last, reinterpret_cast<const std::uint8_t*>(&from) + sizeof(T) - sizeof last, sizeof last);
        std::memcpy(&to, first, sizeof first);
        std::memcpy(reinterpret_cast<std::uint8_t*>(&to) + sizeof(T) - sizeof last, last, sizeof last);
    } else {
        to = from;
    }
}

// Copies the rows that a column's selection vector names from `first` on.
template <class T>
[[gnu::noinline]] dense_rows<T> gather(const bifun_column& column, std::uint32_t first, std::uint32_t count, std::uint8_t* flags,
                                       T* values) {
    const std::uint16_t* const selection = column.selection + first;
    const T* const from = static_cast<const T*>(column.data->values);
    if (column.no_nulls != 0) {
        std::memset(flags, 1, count); // another argument may have NULLs
#pragma GCC unroll 4
        for (std::uint32_t k = 0; k < count; ++k) {
            copy_value(values[k], from[selection[k]]);
        }
        return {flags, values};
    }
    const std::uint8_t* const from_flags = column.data->null_flags;
#pragma GCC unroll 4
    for (std::uint32_t k = 0; k < count; ++k) {
        const std::uint32_t row = selection[k];
        copy_value(values[k], from[row]);
        flags[k] = from_flags[row];
    }
    return {flags, values};
}

// Where an argument's rows of a block are, or room for them.
template <class Argument, std::uint32_t size> struct block_of;

template <class T, std::uint32_t size> struct block_of<column_argument<T>, size> {
    std::uint8_t flags[size];
    T values[size];

    block_of() {} // NOLINT(modernize-use-equals-default): clearing it would take longer than most batches
    dense_rows<T> rows(const column_argument<T>& argument, std::uint32_t first, std::uint32_t count) {
        const bifun_column& column = *argument.column;
        if (column.selection != nullptr) {
            return gather(column, first, count, flags, values);
        }
        return {column.data->null_flags + first, static_cast<const T*>(column.data->values) + first};
    }
};

template <class T, std::uint32_t size> struct block_of<mapped_argument<T>, size> {
    std::uint8_t flags[size];
    T values[size];

    block_of() {} // NOLINT(modernize-use-equals-default): as above
    dense_rows<T> rows(const mapped_argument<T>& argument, std::uint32_t first, std::uint32_t count) {
        const bifun_column& column = *argument.column;
        argument.map(column, first, count, values);
        if (column.selection == nullptr) {
            return {column.data->null_flags + first, values};
        }
        for (std::uint32_t k = 0; k < count; ++k) {
            flags[k] = column.no_nulls != 0 ? 1 : column.data->null_flags[column.selection[first + k]];
        }
        return {flags, values};
    }
};

template <class T, std::uint32_t size> struct block_of<column_or_constant<T>, size> {
    block_of<column_argument<T>, size> room;

    dense_rows<T> rows(const column_or_constant<T>& argument, std::uint32_t first, std::uint32_t count) {
        if (argument.column != nullptr) {
            return room.rows({argument.column}, first, count);
        }
        if (first == 0) { // no later block is longer
            std::memset(room.flags, argument.constant.present ? 1 : 0, count);
            room.values[0] = argument.constant.value;
            for (std::uint32_t filled = 1; filled < count; filled *= 2) { // moves of many values take less time than one by one
                const std::uint32_t more = filled < count - filled ? filled : count - filled;
                std::memcpy(room.values + filled, room.values, more * sizeof(T));
            }
        }
        return {room.flags, room.values};
    }
};

template <class T, std::uint32_t size> struct block_of<constant_argument<T>, size> {
    static constant_rows<T> rows(const constant_argument<T>& argument, std::uint32_t, std::uint32_t) {
        return {argument.value, argument.present};
    }
};

template <class T, std::uint32_t size> struct block_of<fixed_argument<T>, size> {
    static constant_rows<T> rows(const fixed_argument<T>& argument, std::uint32_t, std::uint32_t) { return {argument.value, true}; }
};

template <class T, std::uint32_t size> struct block_of<block_argument<T>, size> {
    static constant_rows<T> rows(const block_argument<T>& argument, std::uint32_t first, std::uint32_t count) {
        return {argument.of_block(argument.source, first, count), true};
    }
};

template <class T, std::uint32_t size> struct block_of<derived_argument<T>, size> {
    T values[size];

    block_of() {} // NOLINT(modernize-use-equals-default): as for columns
    derived_rows<T> rows(const derived_argument<T>& argument, std::uint32_t first, std::uint32_t count) {
        argument.derive(argument.source, first, count, values);
        return {values};
    }
};

template <class T, std::uint32_t size> struct block_of<shared_argument<T>, size> {
    static shared_rows<T> rows(const shared_argument<T>& argument, std::uint32_t, std::uint32_t) { return {argument.value}; }
};

// Calls `body(first, count, rows...)` for the blocks of a batch, which begin at row `first` of it, until one returns a status below 0.
// Returns that, or 0. Inlined, though it has much on the stack: as a call it cost a batch of one row 3 ns.
template <class Body, class... Arguments>
[[gnu::always_inline]] inline status for_each_block(std::uint32_t row_count, const Body& body, const Arguments&... arguments) {
    constexpr std::uint32_t size = rows_per_block<Arguments...>;
    return [&](auto&&... block) __attribute__((always_inline))->status {
        std::uint32_t count = 0;
        for (std::uint32_t first = 0; first < row_count; first += count) {
            count = row_count - first < size ? row_count - first : size;
            const status outcome = body(first, count, block.rows(arguments, first, count)...);
            if (outcome < BIFUN_OK) {
                return outcome;
            }
        }
        return BIFUN_OK;
    }
    (block_of<Arguments, size>()...);
}

} // namespace bifun

#endif
