// SPDX-License-Identifier: Apache-2.0
// CONCAT, REPEAT and SPACE. Blanks at the end of a result are a count.

#include "bop/bifun_str/entry_points.h"
#include "bop/bifun_str/overlay.h"

namespace bifun {
namespace {

// ---- CONCAT: a part that is NULL is empty, and the result is NULL where both are ---------------------------------------------

status concatenation(const bifun_string& a, const bifun_string& b, string_room& room) {
    // Where b has no bytes, a's blanks stay a count.
    const std::uint64_t length = b.length == 0 ? a.length : full_length(a) + b.length;
    const std::uint64_t blanks = std::uint64_t{b.trailing_blanks} + (b.length == 0 ? a.trailing_blanks : 0);
    if (length > longest_built_text || blanks > UINT32_MAX) {
        return BIFUN_INVALID_CHARACTER_STRING;
    }
    if (b.length == 0 || full_length(a) == 0) {
        return take_text(room, {static_cast<std::uint32_t>(length), static_cast<std::uint32_t>(blanks), b.length == 0 ? a.data : b.data});
    }
    text_writer text;
    const status made = make_room(room, length, static_cast<std::uint32_t>(blanks), text);
    if (made == BIFUN_OK) {
        append(text, a.data, a.length);
        append_blanks(text, a.trailing_blanks);
        append(text, b.data, b.length);
    }
    return made;
}

[[gnu::noinline]] status present_part(const bifun_string* a, const bifun_string* b, string_room& room) {
    if (b == nullptr && a->length > longest_built_text) {
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    return take_text(room, b == nullptr ? *a : *b);
}

// A function of its own, as evaluate_block is. `some_null` is set where a row is NULL.
template <class A, class B>
[[gnu::flatten, gnu::noinline]] status concat_block(const batch& batch, std::uint32_t first, std::uint32_t count, bool& some_null,
                                                    const A a_rows, const B b_rows) {
    built_strings<string_room> results(batch);
    std::uint8_t* const flags = null_flags(batch) + first;
    status outcome = BIFUN_OK;
    for (std::uint32_t k = 0; k < count && outcome == BIFUN_OK; ++k) {
        fetch_ahead(a_rows, k);
        fetch_ahead(b_rows, k);
        const bool a_is_present = a_rows.has_value(k);
        const bool b_is_present = b_rows.has_value(k);
        flags[k] = a_is_present || b_is_present ? 1 : 0;
        if (a_is_present && b_is_present) [[likely]] {
            outcome = results.row(first + k, [&](string_room& room) { return concatenation(a_rows[k], b_rows[k], room); });
        } else if (flags[k] == 0) {
            some_null = true;
        } else {
            outcome = results.row(first + k, [&](string_room& room) {
                return present_part(a_is_present ? &a_rows[k] : nullptr, b_is_present ? &b_rows[k] : nullptr, room);
            });
        }
        if (outcome < BIFUN_OK) [[unlikely]] {
            flags[k] = 0;
        }
    }
    results.finish();
    return outcome;
}

template <class A, class B> status concat(batch_of<VARCHAR> batch, A a, B b) {
    bool some_null = false;
    const auto block = [&](std::uint32_t first, std::uint32_t count, const auto&... rows) {
        return concat_block(batch, first, count, some_null, rows...);
    };
    const status outcome = for_each_block(batch.row_count, block, argument(a), argument(b));
    batch.result->no_nulls = some_null ? 0 : 1;
    return stop_at_failure(batch, outcome);
}

// ---- REPEAT and SPACE --------------------------------------------------------------------------------------------------------

status repeat(const bifun_string& value, std::int32_t count, string_room& room) {
    const std::uint64_t whole = full_length(value) * static_cast<std::uint32_t>(count);
    if (whole > longest_built_text) {
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    // The last blanks are a count.
    const std::uint32_t blanks = value.length == 0 ? static_cast<std::uint32_t>(whole) : count == 0 ? 0 : value.trailing_blanks;
    const auto length = static_cast<std::uint32_t>(whole) - blanks;
    if (count == 1) {
        return take_text(room, value);
    }
    text_writer text;
    const status made = make_room(room, length, blanks, text);
    if (made != BIFUN_OK || length == 0) {
        return made;
    }
    if (value.trailing_blanks == 0 && value.length <= block_length && text.may_overrun) {
        const byte_block unit = load_part_of_block(value.data, value.length);
        for (std::int32_t i = 0; i < count; ++i) {
            store_block(text.at, unit);
            text.at += value.length;
        }
        return BIFUN_OK;
    }
    if (value.trailing_blanks == 0) {
        append_copies(text, value.data, value.length, length);
        return BIFUN_OK;
    }
    const std::uint8_t* const begin = text.at;
    append(text, value.data, value.length);
    append(text, blank, value.trailing_blanks);
    append_copies(text, begin, value.length + value.trailing_blanks, length - (value.length + value.trailing_blanks));
    return BIFUN_OK;
}

status space(std::int32_t count, string_room& room) {
    if (count < 0 || static_cast<std::uint32_t>(count) > longest_built_text) {
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    text_writer text;
    return make_room(room, 0, static_cast<std::uint32_t>(count), text);
}

} // namespace

status entry::bconcat_aa_str(batch_of<VARCHAR> batch, column_of<VARCHAR> a, column_of<VARCHAR> b) { return concat(batch, a, b); }
status entry::bconcat_va_str(batch_of<VARCHAR> batch, constant_of<VARCHAR> a, column_of<VARCHAR> b) { return concat(batch, a, b); }
status entry::bconcat_av_str(batch_of<VARCHAR> batch, column_of<VARCHAR> a, constant_of<VARCHAR> b) { return concat(batch, a, b); }

status entry::brepeatstr_av_str(batch_of<VARCHAR> batch, column_of<VARCHAR> value, constant_of<INT> count) {
    const auto [times, present] = argument(count);
    return present && times < 0 ? fail_batch(batch, BIFUN_ARGUMENT_OUT_OF_DOMAIN) : string_rows<repeat>(batch, value, count);
}

status entry::bspace_a_str(batch_of<VARCHAR> batch, column_of<INT> count) { return string_rows<space>(batch, count); }

} // namespace bifun
