// SUBSTR, LEFT and RIGHT by characters, SUBSTRB by bytes. A value's trailing blanks are characters like any others; a result that ends
// among them has its share of them as a count.

#include "bop/bifun_str/text.h"

namespace bifun {
namespace {

constexpr std::int64_t to_the_end = INT64_MAX;

// What a negative length comes to: the row is NULL, or in compatible mode 1 an error.
status status_of_negative_length(status failure) { return global_bifun_var.compatible_mode == 1 ? failure : null_row; }

// What is wanted of a text: `length` characters, or bytes, from `position` on, which counts from the end where it is negative.
struct wanted_range {
    std::int64_t position;
    std::int64_t length;
    bool begins_at_latest = false; // a position before the first character means the first
};

// What there is of it: `stored` units of the stored bytes, and blanks.
struct text_range {
    std::int64_t start; // from 1
    std::int64_t stored;
    std::uint32_t blanks;
};

// The range in a value of `stored` units and `blanks` blanks. Returns 0, or status_of_negative_length(failure) for a length below 0.
INLINED inline status place_range(const wanted_range& wanted, std::int64_t stored, std::uint32_t blanks, status failure,
                                  text_range& range) {
    const std::int64_t total = stored + blanks;
    const std::int64_t position = wanted.begins_at_latest ? std::max(wanted.position, -total) : wanted.position;
    range = {1, 0, 0};
    if (position > total || total + position < 0 || wanted.length == 0) {
        return BIFUN_OK;
    }
    if (wanted.length < 0) {
        return status_of_negative_length(failure);
    }
    const std::int64_t start = position > 0 ? position : position == 0 ? 1 : total + position + 1;
    if (start > stored) {
        range.blanks = static_cast<std::uint32_t>(std::min(wanted.length, total + 1 - start));
        return BIFUN_OK;
    }
    const std::int64_t rest = stored - start + 1;
    range.start = start;
    range.stored = std::min(wanted.length, rest);
    range.blanks = static_cast<std::uint32_t>(std::clamp<std::int64_t>(wanted.length - rest, 0, blanks));
    return BIFUN_OK;
}

[[gnu::noinline]] string_outcome substring_of_any_text(bifun_string text, wanted_range wanted) {
    // A range of stored characters from the left needs no count of all of them.
    if (wanted.position > 0 && wanted.length >= 0 && wanted.length <= text.length) {
        const std::uint32_t first = zq_mbsninc_ex(text.data, text.length, static_cast<std::uint32_t>(wanted.position - 1));
        std::uint32_t stepped = 0;
        const std::uint32_t length =
            zq_mbsninc_count_ex(text.data + first, text.length - first, static_cast<std::uint32_t>(wanted.length), &stepped);
        if (stepped == wanted.length && first < text.length) {
            return {{length, 0, text.data + first}, BIFUN_OK};
        }
    }
    const std::uint32_t characters = zq_mbstrlen_ex(text.data, text.length);
    text_range range;
    const status placed = place_range(wanted, characters, text.trailing_blanks, BIFUN_NEGATIVE_SUBSTRING_LENGTH, range);
    bifun_string part{0, range.blanks, text.data};
    if (placed == BIFUN_OK && range.stored != 0) {
        const std::uint32_t first = zq_mbsninc_ex(text.data, text.length, static_cast<std::uint32_t>(range.start - 1));
        std::uint32_t stepped;
        part.data += first;
        part.length = range.start - 1 + range.stored == characters
                          ? text.length - first
                          : zq_mbsninc_count_ex(part.data, text.length - first, static_cast<std::uint32_t>(range.stored), &stepped);
    }
    return {part, placed};
}

template <class Bytes>
INLINED inline status substring(Bytes bytes, bool ascii, bifun_string& part, const bifun_string& text, const wanted_range& wanted) {
    // A range of stored bytes from the left needs no look at what follows.
    if (ascii && wanted.position > 0 && wanted.length >= 0 &&
        wanted.length <= static_cast<std::int64_t>(text.length) - wanted.position + 1 &&
        Bytes::begins_with_ascii(text.data, static_cast<std::uint32_t>(wanted.position - 1 + wanted.length))) {
        part = {static_cast<std::uint32_t>(wanted.length), 0, text.data + (wanted.position - 1)};
        return BIFUN_OK;
    }
    if (!has_single_bytes(bytes, ascii, text)) [[unlikely]] {
        const string_outcome found = substring_of_any_text(text, wanted);
        part = found.value;
        return found.outcome;
    }
    text_range range;
    const status placed = place_range(wanted, text.length, text.trailing_blanks, BIFUN_NEGATIVE_SUBSTRING_LENGTH, range);
    part = {static_cast<std::uint32_t>(range.stored), range.blanks, text.data + (range.start - 1)};
    return placed;
}

// `range_of(values...)` is what is wanted of a row. A length makes NULLs where it is negative.
template <nulls made, class RangeOf, class... Arguments>
status substring_rows(const batch& batch, const RangeOf& range_of, column text, const Arguments&... arguments) {
    return with_byte_operations([&](auto bytes) INLINED -> status {
        const bool ascii = ascii_is_single_byte();
        return attempt_string_rows<made>(
            batch, bytes,
            [bytes, ascii, range_of](bifun_string& part, const bifun_string& value, const auto&... values)
                INLINED -> status { return substring(bytes, ascii, part, value, range_of(values...)); },
            string(text), arguments...);
    });
}

constexpr auto from_to = [](std::int32_t position, std::int32_t length) INLINED { return wanted_range{position, length}; };
constexpr auto from = [](std::int32_t position) INLINED { return wanted_range{position, to_the_end}; };
constexpr auto first = [](std::int32_t count) INLINED { return wanted_range{1, count}; };
constexpr auto last = [](std::int32_t count) INLINED { return wanted_range{count == 0 ? 1 : -std::int64_t{count}, count, true}; };

template <class Position, class Length> status substr(const batch& batch, column text, Position position, Length length) {
    return substring_rows<nulls::of_attempts>(batch, from_to, text, integer(position), integer(length));
}

template <class Position> status substr(const batch& batch, column text, Position position) {
    return substring_rows<nulls::of_arguments>(batch, from, text, integer(position));
}

// ---- SUBSTRB -----------------------------------------------------------------------------------------------------------

// Copies bytes `first` to `end` of the stored ones; those of characters that the range cuts become blanks.
void copy_whole_characters(std::uint8_t* target, const bifun_string& text, std::uint32_t first, std::uint32_t end) {
    if (portable_bytes::is_ascii(text.data, text.length) && ascii_is_single_byte()) {
        std::memcpy(target, text.data + first, end - first);
        return;
    }
    const auto begins_character = [&](std::uint32_t offset) {
        return offset == text.length || zq_char_start(text.data, text.length, offset) != 0;
    };
    std::uint32_t whole_first = first;
    while (whole_first < end && !begins_character(whole_first)) {
        ++whole_first;
    }
    std::uint32_t whole_end = end;
    while (whole_end > whole_first && !begins_character(whole_end)) {
        --whole_end;
    }
    std::memset(target, blank, end - first);
    std::memcpy(target + (whole_first - first), text.data + whole_first, whole_end - whole_first);
}

// The result has bytes of its own, taken from the result column, and all blanks of a value of which stored bytes remain.
status substring_in_bytes(const batch& batch, bifun_string& part, const bifun_string& text, const wanted_range& wanted) {
    text_range range;
    const status placed = place_range(wanted, text.length, text.trailing_blanks, BIFUN_ARGUMENT_OUT_OF_DOMAIN, range);
    if (placed != BIFUN_OK) {
        return placed;
    }
    if (range.stored == 0) {
        part = {0, range.blanks, nullptr};
        return BIFUN_OK;
    }
    const auto first = static_cast<std::uint32_t>(range.start - 1);
    const auto stored = static_cast<std::uint32_t>(range.stored);
    std::uint8_t* const bytes = bdta3_col_space_alloc(batch.environment, batch.memory, batch.result->data, stored);
    if (bytes == nullptr) {
        return BIFUN_OUT_OF_MEMORY;
    }
    copy_whole_characters(bytes, text, first, first + stored);
    part = {stored, text.trailing_blanks, bytes};
    return BIFUN_OK;
}

template <nulls made, class RangeOf, class... Arguments>
status substring_rows_in_bytes(const batch& batch, const RangeOf& range_of, column text, const Arguments&... arguments) {
    return attempt_store_rows<bifun_string, made>(
        batch,
        [batch, range_of](bifun_string& part, const bifun_string& value, const auto&... values) {
            return substring_in_bytes(batch, part, value, range_of(values...));
        },
        string(text), arguments...);
}

// ---- LEFT and RIGHT ------------------------------------------------------------------------------------------------------

template <class RangeOf> status end_of_text(const batch& batch, const RangeOf& range_of, column text, int_constant count) {
    if (count->not_null != 0 && count->value < 0) {
        return fail_batch(batch, BIFUN_ARGUMENT_OUT_OF_DOMAIN);
    }
    return substring_rows<nulls::of_arguments>(batch, range_of, text, integer(count));
}

} // namespace
} // namespace bifun

using namespace bifun;

status bsubstr_avv_str(BATCH_OF(column text, int_constant position, int_constant length)) { return substr(BATCH, text, position, length); }
status bsubstr_ava_str(BATCH_OF(column text, int_constant position, column length)) { return substr(BATCH, text, position, length); }
status bsubstr_aav_str(BATCH_OF(column text, column position, int_constant length)) { return substr(BATCH, text, position, length); }
status bsubstr_aaa_str(BATCH_OF(column text, column position, column length)) { return substr(BATCH, text, position, length); }
status bsubstr_def1_aa_str(BATCH_OF(column text, column position)) { return substr(BATCH, text, position); }
status bsubstr_def1_av_str(BATCH_OF(column text, int_constant position)) { return substr(BATCH, text, position); }

status bsubstr_def2_a_str(BATCH_OF(column text)) {
    return with_byte_operations([&](auto bytes) INLINED -> status {
        return attempt_string_rows(
            BATCH, bytes,
            [](bifun_string& copy, const bifun_string& value) INLINED -> status {
                copy = value;
                return BIFUN_OK;
            },
            string(text));
    });
}

status bsubstrb_avv_str(BATCH_OF(column text, int_constant position, int_constant length)) {
    return substring_rows_in_bytes<nulls::of_attempts>(BATCH, from_to, text, integer(position), integer(length));
}
status bsubstrb_def_av_str(BATCH_OF(column text, int_constant position)) {
    return substring_rows_in_bytes<nulls::of_arguments>(BATCH, from, text, integer(position));
}

status bleftstr_av_str(BATCH_OF(column text, int_constant count)) { return end_of_text(BATCH, first, text, count); }
status brightstr_av_str(BATCH_OF(column text, int_constant count)) { return end_of_text(BATCH, last, text, count); }
