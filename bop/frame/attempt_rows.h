// The row loop of the functions whose rows are evaluated one after the other: because the result is a string, or because a row may fail or
// be NULL though no argument is.
//
//     attempt_set_rows<result type>(batch, attempt, arguments...)      results go through the engine's setters
//     attempt_store_rows<result type>(batch, attempt, arguments...)    results go straight into the value array
//     attempt_string_rows(batch, bytes, attempt, arguments...)         `bytes` from with_byte_operations, or portable_bytes
//
// `attempt(result, values...)` is called for the rows without a NULL and says with its status what becomes of the row: 0 that it has put a
// value into `result`, above 0 that the row is NULL, below 0 that the batch stops and leaves the row NULL. A string result may point to
// bytes of the arguments or of the caller: they are copied.
#ifndef BIFUN_FRAME_ATTEMPT_ROWS_H
#define BIFUN_FRAME_ATTEMPT_ROWS_H

#include "bop/frame/arguments.h"
#include "bop/frame/byte_operations.h"
#include "bop/frame/setters.h"
#include "bop/frame/statements.h"
#include "engine/columns.h"

namespace bifun {

// Outcomes of an attempt besides 0 and the negative statuses. BIFUN_UNUSABLE_TEXT makes the row NULL as well.
constexpr status null_row = 1;
constexpr status row_as_it_was = INT32_MAX; // present, but its value is not written

// Whose NULLs make rows NULL. Where an attempt makes some of its own, no promise is given that no row is NULL.
enum class nulls : std::uint8_t { of_arguments, of_attempts };

// ---- where results go ----

template <class Result> struct stored_results {
    Result* values;

    template <class Attempt> INLINED status attempt(std::uint32_t row, const Attempt& evaluate) { return evaluate(values[row]); }
    void finish() const {}
};

template <class Result> struct set_results {
    bifun::batch batch;

    template <class Attempt> INLINED status attempt(std::uint32_t row, const Attempt& evaluate) {
        Result value;
        const status outcome = evaluate(value);
        if (outcome == BIFUN_OK) {
            set_value(batch, row, value);
        }
        return outcome;
    }
    void finish() const {}
};

// Strings through the engine.
struct assigned_strings {
    bifun::batch batch;

    template <class Attempt> INLINED status attempt(std::uint32_t row, const Attempt& evaluate) {
        bifun_string value;
        const status outcome = evaluate(value);
        if (outcome == BIFUN_OK) {
            (void)bdta3_col_assign_str(batch.environment, batch.memory, batch.result, row, value.data, value.length, value.trailing_blanks);
        }
        return outcome;
    }
    void finish() const {}
};

// Strings into the column's free bytes, where they fit with room behind them.
template <class Bytes> struct copied_strings {
    bifun::batch batch;
    bifun_string* values;
    bdta3_free_bytes free; // a copy, so that it stays in registers: only this loop writes the column

    explicit copied_strings(const bifun::batch& batch)
        : batch(batch), values(bifun::values<bifun_string>(batch)), free(free_bytes::of_column(*batch.result->data)) {}

    template <class Attempt> INLINED status attempt(std::uint32_t row, const Attempt& evaluate) {
        bifun_string value;
        const status outcome = evaluate(value);
        if (outcome == BIFUN_OK) {
            if (value.length <= copy_room && static_cast<std::size_t>(free.end - free.top) >= copy_room) [[likely]] {
                Bytes::copy_into_room(free.top, value.data, value.length);
                values[row] = {value.length, value.trailing_blanks, free.top};
                free.top += value.length;
            } else {
                finish();
                (void)bdta3_col_assign_str(batch.environment, batch.memory, batch.result, row, value.data, value.length,
                                           value.trailing_blanks);
                free = free_bytes::of_column(*batch.result->data);
            }
        }
        return outcome;
    }
    void finish() const { free_bytes::of_column(*batch.result->data).top = free.top; }
};

// ---- the loop ----

template <class Results, class Attempt, class... Rows>
INLINED inline status attempt_each(const batch& batch, Results results, bool no_nulls, const Attempt& attempt, const Rows&... rows) {
    std::uint8_t* const flags = null_flags(batch);
    for (std::uint32_t k = 0; k < batch.row_count; ++k) {
        if (!no_nulls && !all_have_values(k, rows...)) {
            flags[k] = 0;
            continue;
        }
        const status outcome = results.attempt(k, [&](auto& result) INLINED -> status { return attempt(result, rows[k]...); });
        if (outcome != BIFUN_OK) [[unlikely]] {
            if (outcome < BIFUN_OK) {
                results.finish();
                batch.result->no_nulls = 0;
                flags[k] = 0;
                return outcome;
            }
            if (outcome != row_as_it_was) {
                batch.result->no_nulls = 0;
                flags[k] = 0;
                continue;
            }
        }
        flags[k] = 1;
    }
    results.finish();
    return BIFUN_OK;
}

template <nulls made, class MakeResults, class Attempt, class... Arguments>
INLINED inline status attempt_all(const batch& batch, MakeResults make_results, const Attempt& attempt, const Arguments&... arguments) {
    const bool no_nulls = (has_no_nulls(arguments) && ...);
    batch.result->no_nulls = made == nulls::of_attempts ? 0 : joint_no_null_flag(arguments...);
    return with_rows([batch, make_results, no_nulls, attempt](const auto&... rows)
                         INLINED -> status { return attempt_each(batch, make_results(batch), no_nulls, attempt, rows...); },
                     arguments...);
}

template <class Result, nulls made = nulls::of_arguments, class Attempt, class... Arguments>
INLINED inline status attempt_store_rows(const batch& batch, const Attempt& attempt, const Arguments&... arguments) {
    if ((is_null_constant(arguments) || ...)) {
        return null_rows(batch);
    }
    return attempt_all<made>(
        batch, [](const bifun::batch& batch) INLINED { return stored_results<Result>{values<Result>(batch)}; }, attempt, arguments...);
}

// Through the engine, where it has to be asked for every row.
template <nulls made, class Results, class Attempt, class... Arguments>
status attempt_through_engine(const batch& batch, const Attempt& attempt, const Arguments&... arguments) {
    return attempt_all<made>(
        batch, [](const bifun::batch& batch) INLINED { return Results{batch}; }, attempt, arguments...);
}

template <class Result, nulls made = nulls::of_arguments, class Attempt, class... Arguments>
INLINED inline status attempt_set_rows(const batch& batch, const Attempt& attempt, const Arguments&... arguments) {
    if (setters_are_plain_stores() || (is_null_constant(arguments) || ...)) {
        return attempt_store_rows<Result, made>(batch, attempt, arguments...);
    }
    return attempt_through_engine<made, set_results<Result>>(batch, attempt, arguments...);
}

template <nulls made = nulls::of_arguments, class Bytes, class Attempt, class... Arguments>
INLINED inline status attempt_string_rows(const batch& batch, Bytes /*how bytes are copied*/, const Attempt& attempt,
                                          const Arguments&... arguments) {
    if ((is_null_constant(arguments) || ...)) {
        return null_rows(batch);
    }
    if (!free_bytes_are_open()) {
        return attempt_through_engine<made, assigned_strings>(batch, attempt, arguments...);
    }
    return attempt_all<made>(
        batch, [](const bifun::batch& batch) INLINED { return copied_strings<Bytes>(batch); }, attempt, arguments...);
}

} // namespace bifun

#endif
