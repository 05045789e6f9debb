// Where the results of rows go. A policy calls `evaluate(place)` for a row, which puts the value into `place` and returns the status of
// evaluate() in bop/frame/kernel.h, and keeps the value where that is 0. finish() is called behind the last row, whatever became of it.
#ifndef BIFUN_FRAME_RESULTS_H
#define BIFUN_FRAME_RESULTS_H

#include "bop/frame/byte_operations.h"
#include "bop/frame/setters.h"

namespace bifun {

// Straight into the value array.
template <class Result> struct stored_results {
    using place = Result;
    Result* values;

    explicit stored_results(const batch& batch) : values(bifun::values<Result>(batch)) {}
    template <class Evaluate> status row(std::uint32_t row, const Evaluate& evaluate) {
        if constexpr (!std::is_arithmetic_v<Result>) {
            return evaluate(values[row]); // what lies behind a NULL does not matter, and long values are not written twice
        } else {
            Result value;
            const status outcome = evaluate(value);
            if (outcome == BIFUN_OK) {
                values[row] = value;
            }
            return outcome;
        }
    }
    void finish() const {}
};

// Through the engine's setters.
template <class Result> struct set_results {
    using place = Result;
    const bifun::batch& batch;

    explicit set_results(const bifun::batch& batch) : batch(batch) {}
    template <class Evaluate> status row(std::uint32_t row, const Evaluate& evaluate) {
        Result value;
        const status outcome = evaluate(value);
        if (outcome == BIFUN_OK) {
            set_value(batch, row, value);
        }
        return outcome;
    }
    void finish() const {}
};

inline void assign_string(const batch& batch, std::uint32_t row, const bifun_string& value) {
    (void)bdta3_col_assign_str(batch.environment, batch.memory, batch.result, row, value.data, value.length, value.trailing_blanks);
}

// Strings whose bytes the engine copies. They may be those of an argument or of the caller.
struct assigned_strings {
    using place = bifun_string;
    const bifun::batch& batch;

    explicit assigned_strings(const bifun::batch& batch) : batch(batch) {}
    template <class Evaluate> status row(std::uint32_t row, const Evaluate& evaluate) {
        bifun_string value;
        const status outcome = evaluate(value);
        if (outcome == BIFUN_OK) {
            assign_string(batch, row, value);
        }
        return outcome;
    }
    void finish() const {}
};

// The same, copied into the column's free bytes where these lie open and the value fits with room behind it.
struct copied_strings {
    using place = bifun_string;
    const bifun::batch& batch;
    bifun_string* values;
    bdta3_free_bytes free; // a copy, so that it stays in registers: only this loop writes the column

    explicit copied_strings(const bifun::batch& batch)
        : batch(batch), values(bifun::values<bifun_string>(batch)), free(free_bytes::of_column(*batch.result->data)) {}

    template <class Evaluate> status row(std::uint32_t row, const Evaluate& evaluate) {
        bifun_string value;
        const status outcome = evaluate(value);
        if (outcome == BIFUN_OK) {
            if (value.length <= copy_room && static_cast<std::size_t>(free.end - free.top) >= copy_room) [[likely]] {
                copy_into_room(free.top, value.data, value.length);
                values[row] = {value.length, value.trailing_blanks, free.top};
                free.top += value.length;
            } else {
                finish();
                assign_string(batch, row, value);
                free = free_bytes::of_column(*batch.result->data);
            }
        }
        return outcome;
    }
    void finish() const { free_bytes::of_column(*batch.result->data).top = free.top; }
};

// ---- strings that kernels build where they are to lie ----

// Which operation of the engine gives the bytes.
enum class room_source : std::uint8_t { string, column_space };

// Room for the bytes of one row, as the result of a kernel that knows the length before it writes.
template <room_source source> struct room_in {
    const bifun::batch& batch;
    std::uint32_t row;
};
using string_room = room_in<room_source::string>;
using column_space = room_in<room_source::column_space>;

// Gives the row `length` bytes for the kernel to fill and as many blanks behind them. An empty text needs no bytes, and then `bytes` is
// null. Returns 0 or -503.
template <room_source source>
status make_room(room_in<source>& room, std::uint32_t length, std::uint32_t trailing_blanks, std::uint8_t*& bytes) {
    const batch& batch = room.batch;
    bytes = nullptr;
    if (length != 0) {
        if constexpr (source == room_source::string) {
            bytes =
                bdta3_colstr_assign_without_value(batch.environment, batch.memory, batch.result->data, room.row, length, trailing_blanks);
        } else {
            bytes = bdta3_col_space_alloc(batch.environment, batch.memory, batch.result->data, length);
        }
        if (bytes == nullptr) {
            return BIFUN_OUT_OF_MEMORY;
        }
    }
    if (source == room_source::column_space || length == 0) {
        values<bifun_string>(batch)[room.row] = {length, trailing_blanks, bytes};
    }
    return BIFUN_OK;
}

template <class Room> struct built_strings {
    using place = Room;
    const bifun::batch& batch;

    explicit built_strings(const bifun::batch& batch) : batch(batch) {}
    template <class Evaluate> status row(std::uint32_t row, const Evaluate& evaluate) {
        Room room{batch, row};
        return evaluate(room);
    }
    void finish() const {}
};

} // namespace bifun

#endif
