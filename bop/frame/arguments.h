// Reading arguments. An entry point names each argument's type, as in `bigint(x)`, and gets a column_argument or a constant_argument;
// with_rows turns them into rows with the same members for all: has_value(k) and [k] for row k of the batch, and from(first), the
// rows from `first` on.
#ifndef BIFUN_FRAME_ARGUMENTS_H
#define BIFUN_FRAME_ARGUMENTS_H

#include <type_traits>
#include <utility>

#include "bop/frame/batch.h"

namespace bifun {

template <class T> struct column_argument { bifun::column column; };

// A NULL constant has the value zero: what its record holds is garbage, and must not reach a result.
template <class T> struct constant_argument {
    T value;
    bool present;
};

// ---- rows ----

template <class T> struct dense_rows {
    const std::uint8_t* null_flags;
    const T* values;

    [[nodiscard]] bool has_value(std::uint32_t k) const { return null_flags[k] != 0; }
    const T& operator[](std::uint32_t k) const { return values[k]; }
    [[nodiscard]] dense_rows from(std::uint32_t first) const { return {null_flags + first, values + first}; }
};

// For a column without a selection vector beside one with it, `selection` is null.
template <class T> struct selected_rows {
    const std::uint8_t* null_flags;
    const T* values;
    const std::uint16_t* selection;

    [[nodiscard]] std::uint32_t position(std::uint32_t k) const { return selection == nullptr ? k : selection[k]; }
    [[nodiscard]] bool has_value(std::uint32_t k) const { return null_flags[position(k)] != 0; }
    const T& operator[](std::uint32_t k) const { return values[position(k)]; }
    [[nodiscard]] selected_rows from(std::uint32_t first) const {
        return selection == nullptr ? selected_rows{null_flags + first, values + first, nullptr}
                                    : selected_rows{null_flags, values, selection + first};
    }
};

template <class T> struct constant_rows {
    T value;
    bool present;

    [[nodiscard]] bool has_value(std::uint32_t) const { return present; }
    const T& operator[](std::uint32_t) const { return value; }
    [[nodiscard]] constant_rows from(std::uint32_t) const { return *this; }
};

// Whether no argument of row k is NULL, without a branch.
template <class... Rows> INLINED inline bool all_have_values(std::uint32_t k, const Rows&... rows) {
    return (static_cast<unsigned>(rows.has_value(k)) & ...) != 0;
}

// ---- what is known of an argument before its rows are read ----

template <class T> bool is_dense(const column_argument<T>& argument) { return argument.column->selection == nullptr; }
template <class T> bool is_dense(const constant_argument<T>&) { return true; }

template <class T> bool has_no_nulls(const column_argument<T>& argument) { return argument.column->no_nulls != 0; }
template <class T> bool has_no_nulls(const constant_argument<T>& argument) { return argument.present; }

template <class T> bool is_null_constant(const column_argument<T>&) { return false; }
template <class T> bool is_null_constant(const constant_argument<T>& argument) { return !argument.present; }

// A single column's promise is passed on as it stands; those of several arguments are joined to 0 or 1.
template <class T> std::uint32_t joint_no_null_flag(const column_argument<T>& argument) { return argument.column->no_nulls; }
template <class... Arguments> std::uint32_t joint_no_null_flag(const Arguments&... arguments) { return (has_no_nulls(arguments) && ...); }

template <class T> dense_rows<T> rows_as_they_lie(const column_argument<T>& argument) {
    return {argument.column->data->null_flags, static_cast<const T*>(argument.column->data->values)};
}
template <class T> constant_rows<T> rows_as_they_lie(const constant_argument<T>& argument) { return {argument.value, argument.present}; }

template <class T> selected_rows<T> rows_by_selection(const column_argument<T>& argument) {
    const bifun_column_data& data = *argument.column->data;
    return {data.null_flags, static_cast<const T*>(data.values), argument.column->selection};
}
template <class T> constant_rows<T> rows_by_selection(const constant_argument<T>& argument) { return {argument.value, argument.present}; }

// Not inlined into an entry point that exists for several instruction sets: a loop over selection vectors gains nothing from them.
template <class Body, class... Rows> [[gnu::noinline]] auto out_of_line(const Body& body, const Rows&... rows) { return body(rows...); }

// Calls `body` with the rows of every argument. It is compiled twice: for columns that lie densely, and for selection vectors.
template <class Body, class... Arguments> INLINED inline auto with_rows(const Body& body, const Arguments&... arguments) {
    if ((is_dense(arguments) && ...)) {
        return body(rows_as_they_lie(arguments)...);
    }
    return out_of_line(body, rows_by_selection(arguments)...);
}

// ---- arguments by type ----

template <class Record, class T> constant_argument<T> constant_of(const Record& record, T no_value) {
    const bool present = record.not_null != 0;
    return {present ? record.value : no_value, present};
}

inline column_argument<std::int32_t> integer(column argument) { return {argument}; }
inline constant_argument<std::int32_t> integer(int_constant argument) { return constant_of(*argument, std::int32_t{}); }

inline column_argument<std::int64_t> bigint(column argument) { return {argument}; }
inline constant_argument<std::int64_t> bigint(bigint_constant argument) { return constant_of(*argument, std::int64_t{}); }

inline column_argument<double> floating(column argument) { return {argument}; }
inline constant_argument<double> floating(double_constant argument) { return constant_of(*argument, double{}); }

inline column_argument<xdec> decimal(column argument) { return {argument}; }
inline constant_argument<xdec> decimal(decimal_constant argument) { return constant_of(*argument, xdec{}); }

inline column_argument<zqtime> datetime(column argument) { return {argument}; }
inline constant_argument<zqtime> datetime(datetime_constant argument) { return constant_of(*argument, zqtime{}); }

inline column_argument<bifun_interval_ym> interval_ym(column argument) { return {argument}; }
inline constant_argument<bifun_interval_ym> interval_ym(interval_ym_constant argument) {
    return constant_of(*argument, bifun_interval_ym{});
}

inline column_argument<bifun_interval_dt> interval_dt(column argument) { return {argument}; }

// The bytes of a constant lie in its record up to the inline length, else behind its pointer.
inline bifun_string string_of(const bifun_string_constant& record, std::uint32_t trailing_blanks) {
    // A trim changes a constant's bytes for a moment, so values point to them without const, as a column's do.
    auto* inline_bytes = const_cast<std::uint8_t*>(record.inline_bytes);
    return {record.length, trailing_blanks, record.length > BIFUN_INLINE_LENGTH ? record.data : inline_bytes};
}

inline column_argument<bifun_string> string(column argument) { return {argument}; }
inline constant_argument<bifun_string> string(string_constant argument) {
    const bool present = argument->not_null != 0;
    return {present ? string_of(*argument, argument->trailing_blanks) : bifun_string{}, present};
}

// The third word of a binary constant has no meaning.
inline column_argument<bifun_string> binary(column argument) { return {argument}; }
inline constant_argument<bifun_string> binary(string_constant argument) {
    const bool present = argument->not_null != 0;
    return {present ? string_of(*argument, 0) : bifun_string{}, present};
}

} // namespace bifun

#endif
