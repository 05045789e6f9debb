// SPDX-License-Identifier: Apache-2.0
// The loop of functions whose results are texts:
//
//     string_rows<kernel>(batch, arguments...)
//     binary_rows<kernel>(batch, arguments...)          binary values, by a kernel that has a column_space
//     usual_string_rows<is_usual, usual_kernel, kernel>(batch, arguments...)
//
// A kernel that has a bifun_string for its result points to bytes that are there already, of an argument or in storage of the result: the
// row refers to them where the engine says that it may, and else has a copy. One that has a string_room asks it for as many bytes as it
// needs and writes them, piece by piece. One that has a bounded_text writes before it knows how many there are.
#ifndef BIFUN_FRAME_STRING_ROWS_H
#define BIFUN_FRAME_STRING_ROWS_H

#include "bop/frame/byte_operations.h"
#include "bop/frame/row_loop.h"
#include "engine/columns.h"

namespace bifun {

// ---- where texts go: policies as in bop/frame/results.h ----

struct referring_strings {
    using place = bifun_string;
    bifun_string* values;

    explicit referring_strings(const batch& batch) : values(bifun::values<bifun_string>(batch)) {}
    template <class Evaluate> status row(std::uint32_t row, const Evaluate& evaluate) {
        bifun_string value;
        const status outcome = evaluate(value);
        if (outcome == BIFUN_OK) {
            values[row] = value;
        }
        return outcome;
    }
    void finish() const {}
};

// The column's free bytes where these lie open, else none.
inline bdta3_free_bytes open_free_bytes(const batch& batch) {
    return free_bytes_are_open() ? free_bytes::of_column(*batch.result->data) : bdta3_free_bytes{nullptr, nullptr};
}

// Copied into the column's free bytes, where these lie open and the value fits with room behind it. Else through the engine.
struct copied_strings {
    using place = bifun_string;
    const bifun::batch& batch;
    bifun_string* values;
    bdta3_free_bytes free; // a copy, so that it stays in registers: only this loop writes the column

    explicit copied_strings(const bifun::batch& batch)
        : batch(batch), values(bifun::values<bifun_string>(batch)), free(open_free_bytes(batch)) {}

    template <class Evaluate> status row(std::uint32_t row, const Evaluate& evaluate) {
        bifun_string value;
        const status outcome = evaluate(value);
        if (outcome == BIFUN_OK) {
            copy(row, value);
        }
        return outcome;
    }
    void copy(std::uint32_t row, const bifun_string& value) {
        if (value.length <= copy_room && static_cast<std::size_t>(free.end - free.top) >= copy_room) [[likely]] {
            copy_into_room(free.top, value.data, value.length);
            values[row] = {value.length, value.trailing_blanks, free.top};
            free.top += value.length;
        } else {
            finish();
            set_value(batch, row, value);
            free = open_free_bytes(batch);
        }
    }
    void finish() const {
        if (free.top != nullptr) {
            free_bytes::of_column(*batch.result->data).top = free.top;
        }
    }
};

// ---- strings that kernels build where they are to lie ----

// Which operation of the engine gives the bytes where free bytes do not lie open.
enum class room_source : std::uint8_t { string, column_space };

// Room for the bytes of one row, as the result of a kernel that knows the length before it writes.
template <room_source source> struct room_in {
    const bifun::batch& batch;
    bifun_string* value;    // the record of the row
    bdta3_free_bytes* free; // the column's, where they lie open, else null
    bool may_refer;         // the row may point to bytes of an argument
};
using string_room = room_in<room_source::string>;
using column_space = room_in<room_source::column_space>;

template <room_source source> std::uint32_t row_of(const room_in<source>& room) {
    return static_cast<std::uint32_t>(room.value - values<bifun_string>(room.batch));
}

// From the engine.
template <room_source source>
[[gnu::noinline]] std::uint8_t* ask_for_room(const room_in<source>& room, std::uint32_t length, std::uint32_t trailing_blanks) {
    const batch& batch = room.batch;
    if constexpr (source == room_source::string) {
        return bdta3_colstr_assign_without_value(batch.environment, batch.memory, batch.result->data, row_of(room), length,
                                                 trailing_blanks);
    } else {
        return bdta3_col_space_alloc(batch.environment, batch.memory, batch.result->data, length);
    }
}

// Gives the row `length` bytes, which the kernel has to write, and as many blanks behind them. An empty text needs no bytes: nothing may be
// written then. Returns 0 or -503.
template <room_source source>
status make_room(const room_in<source>& room, std::uint64_t length, std::uint32_t trailing_blanks, text_writer& text) {
    const auto size = static_cast<std::uint32_t>(length);
    if (length == 0) {
        text = {nullptr, false};
    } else if (room.free != nullptr && static_cast<std::uint64_t>(room.free->end - room.free->top) >= length + copy_room) [[likely]] {
        text = {room.free->top, true};
        room.free->top += length;
    } else {
        text = {length > UINT32_MAX ? nullptr : ask_for_room(room, size, trailing_blanks), false};
        if (text.at == nullptr) {
            return BIFUN_OUT_OF_MEMORY;
        }
    }
    *room.value = {size, trailing_blanks, text.at};
    return BIFUN_OK;
}

// A text that is in bytes of the caller.
template <room_source source> status copy_text(const room_in<source>& room, const bifun_string& value) {
    text_writer text;
    const status made = make_room(room, value.length, value.trailing_blanks, text);
    if (made == BIFUN_OK) {
        append(text, value.data, value.length);
    }
    return made;
}

// A text that is there already: of an argument.
template <room_source source> status take_text(const room_in<source>& room, const bifun_string& value) {
    if (room.may_refer) {
        *room.value = value;
        return BIFUN_OK;
    }
    return copy_text(room, value);
}

template <class Room> struct built_strings {
    using place = Room;
    const bifun::batch& batch;
    bifun_string* values;
    bdta3_free_bytes* free;
    bool may_refer;

    explicit built_strings(const bifun::batch& batch, bool may_refer = results_may_refer())
        : batch(batch), values(bifun::values<bifun_string>(batch)),
          free(free_bytes_are_open() ? &free_bytes::of_column(*batch.result->data) : nullptr), may_refer(may_refer) {}
    template <class Evaluate> status row(std::uint32_t row, const Evaluate& evaluate) {
        Room room{batch, values + row, free, may_refer};
        return evaluate(room);
    }
    void finish() const {}
};

// ---- strings of a length that is known when they are written ----

// Where a kernel writes, as its result: of `bytes` as many as `most` may be overwritten, the first `length` of which are the text.
template <std::uint32_t most> struct bounded_text {
    std::uint8_t* bytes;
    std::uint32_t length;
};

// Evaluates into a buffer and hands the text to the engine.
template <std::uint32_t most, class Evaluate> status set_bounded(const batch& batch, std::uint32_t row, const Evaluate& evaluate) {
    std::uint8_t buffer[most];
    bounded_text<most> text{buffer, 0};
    const status outcome = evaluate(text);
    if (outcome == BIFUN_OK) {
        set_value(batch, row, bifun_string{text.length, 0, buffer});
    }
    return outcome;
}

template <std::uint32_t most> struct set_bounded_strings {
    using place = bounded_text<most>;
    const bifun::batch& batch;

    explicit set_bounded_strings(const bifun::batch& batch) : batch(batch) {}
    template <class Evaluate> status row(std::uint32_t row, const Evaluate& evaluate) { return set_bounded<most>(batch, row, evaluate); }
    void finish() const {}
};

// In the column's free bytes, where these lie open and there is room.
template <std::uint32_t most> struct bounded_strings {
    using place = bounded_text<most>;
    const bifun::batch& batch;
    bifun_string* values;
    bdta3_free_bytes free; // a copy, as that of copied_strings

    explicit bounded_strings(const bifun::batch& batch)
        : batch(batch), values(bifun::values<bifun_string>(batch)), free(free_bytes::of_column(*batch.result->data)) {}

    template <class Evaluate> status row(std::uint32_t row, const Evaluate& evaluate) {
        if (static_cast<std::size_t>(free.end - free.top) < most) [[unlikely]] {
            finish();
            const status outcome = set_bounded<most>(batch, row, evaluate);
            free = free_bytes::of_column(*batch.result->data);
            return outcome;
        }
        place text{free.top, 0};
        const status outcome = evaluate(text);
        if (outcome == BIFUN_OK) {
            values[row] = {text.length, 0, free.top};
            free.top += text.length;
        }
        return outcome;
    }
    void finish() const { free_bytes::of_column(*batch.result->data).top = free.top; }
};

// ---- batches ----

template <auto kernel, class Results, class... Arguments> status evaluate_strings(const batch& batch, const Arguments&... arguments) {
    check_types<kernel, typename Results::place, Arguments...>();
    return (is_null_constant(arguments) || ...) ? null_rows(batch) : evaluate_rows<kernel, no_checks, Results>(batch, arguments...);
}

template <class Result> constexpr std::uint32_t bound_of = 0;
template <std::uint32_t most> constexpr std::uint32_t bound_of<bounded_text<most>> = most;

template <auto kernel, class... Arguments> status string_rows(batch_of<VARCHAR> batch, Arguments... arguments) {
    using result = result_of<kernel, Arguments...>;
    constexpr std::uint32_t bound = bound_of<result>;
    if constexpr (bound != 0) {
        return free_bytes_are_open() ? evaluate_strings<kernel, bounded_strings<bound>>(batch, argument(arguments)...)
                                     : evaluate_strings<kernel, set_bounded_strings<bound>>(batch, argument(arguments)...);
    } else if constexpr (!std::is_same_v<result, bifun_string>) {
        return evaluate_strings<kernel, built_strings<result>>(batch, argument(arguments)...);
    } else {
        return results_may_refer() ? evaluate_strings<kernel, referring_strings>(batch, argument(arguments)...)
                                   : evaluate_strings<kernel, copied_strings>(batch, argument(arguments)...);
    }
}

template <auto kernel, class... Arguments> status binary_rows(batch_of<VARBINARY> batch, Arguments... arguments) {
    return evaluate_strings<kernel, built_strings<column_space>>(batch, argument(arguments)...);
}

// set_usual_rows for a usual kernel that gives a bifun_string: vectors where rows may refer.
template <auto is_usual, auto usual_kernel, auto kernel, class... Arguments>
status usual_string_rows(batch_of<VARCHAR> batch, Arguments... arguments) {
    using result = result_of<kernel, Arguments...>;
    using results = std::conditional_t<std::is_same_v<result, bifun_string>, referring_strings, built_strings<result>>;
    return results_may_refer() ? store_usual<is_usual, usual_kernel, kernel, results, bifun_string>(batch, argument(arguments)...)
                               : string_rows<kernel>(batch, arguments...);
}

} // namespace bifun

#endif
