// SUBSTRING_INDEX: the text before the n-th delimiter, or behind the n-th from the end. The search reverses what it searches backwards, so
// both texts are scratch copies with their blanks written out, made afresh for every row.

#include "bop/bifun_str/pattern_search.h"

namespace bifun {
namespace {

// The wanted text is the first `*result_length` bytes of `text` afterwards. Returns 0 or the status of the search.
status ifun_substring_index_low(bifun_environment* environment, bifun_memory_object* memory, std::uint8_t* text, std::uint32_t length,
                                std::uint8_t* delimiter, std::uint32_t delimiter_length, std::int32_t count, std::uint32_t* result_length) {
    const bool is_backward = count < 0;
    const std::uint32_t occurrence = is_backward ? 0U - static_cast<std::uint32_t>(count) : static_cast<std::uint32_t>(count);
    std::uint32_t position;
    std::uint32_t offset;
    *result_length = 0;
    const status searched = ifun_instr_low(environment, memory, text, length, delimiter, delimiter_length, is_backward ? -1 : 1, occurrence,
                                           &position, &offset);
    if (searched < BIFUN_OK) {
        return searched;
    }
    std::uint32_t kept = position == 0 ? length : offset;
    if (is_backward) {
        // What lies behind the delimiter is at the beginning now, reversed.
        kept = position == 0 ? length : length - offset - delimiter_length;
        if (kept != 0 && zq_mbsrev_ex(text, kept) == nullptr) {
            kept = 0;
        }
    }
    *result_length = kept;
    return BIFUN_OK;
}

[[gnu::noinline]] string_outcome part_of_any_text(const batch& batch, scratch& scratch, bifun_string value, bifun_string separator,
                                                  std::int32_t n) {
    const std::uint64_t length = full_length(value);
    const std::uint64_t separator_length = full_length(separator);
    bifun_string part{0, 0, reserve(scratch, length + separator_length)};
    if (part.data == nullptr) {
        return {part, BIFUN_OUT_OF_MEMORY};
    }
    std::uint8_t* const delimiter = part.data + length;
    write_full_text(part.data, value);
    write_full_text(delimiter, separator);
    const status found = ifun_substring_index_low(batch.environment, batch.memory, part.data, static_cast<std::uint32_t>(length), delimiter,
                                                  static_cast<std::uint32_t>(separator_length), n, &part.length);
    return {part, found};
}

// Whether the n-th place of the delimiter, in a text of single-byte characters, is found, and the offset of it. Places may overlap.
struct delimiter_place {
    bool is_found;
    std::uint32_t offset;
};

template <class Bytes>
INLINED inline delimiter_place find_from_left(Bytes /*how*/, const bifun_string& text, const needle& delimiter, std::uint32_t n) {
    std::uint32_t offset = 0;
    for (;;) {
        const std::uint32_t place = Bytes::find(delimiter, text.data + offset, text.length - offset);
        if (place == no_offset || --n == 0) {
            return {place != no_offset, offset + place};
        }
        offset += place + 1;
    }
}

inline delimiter_place find_from_right(const bifun_string& text, const needle& delimiter, std::uint32_t n) {
    for (std::int64_t offset = std::int64_t{text.length} - delimiter.length; offset >= 0; --offset) {
        if (text.data[offset] == delimiter.first && std::memcmp(text.data + offset, delimiter.bytes, delimiter.length) == 0 && --n == 0) {
            return {true, static_cast<std::uint32_t>(offset)};
        }
    }
    return {false, 0};
}

// The part where it lies, of a text of single-byte characters.
template <class Bytes>
INLINED inline bifun_string part_of_single_bytes(Bytes bytes, const bifun_string& text, const bifun_string& separator, std::int32_t n) {
    const needle delimiter = make_needle(separator.data, separator.length);
    if (n > 0) {
        const delimiter_place place = find_from_left(bytes, text, delimiter, static_cast<std::uint32_t>(n));
        return {place.is_found ? place.offset : text.length, 0, text.data};
    }
    const delimiter_place place = find_from_right(text, delimiter, 0U - static_cast<std::uint32_t>(n));
    const std::uint32_t first = place.is_found ? place.offset + delimiter.length : 0;
    return {text.length - first, 0, text.data + first};
}

template <class Delimiter> status substring_index(const batch& batch, column text, Delimiter delimiter, int_constant count) {
    return with_scratch(batch.environment, batch.memory, string_source_file, [&](scratch& scratch) {
        return with_byte_operations([&](auto bytes) INLINED -> status {
            const bool ascii = ascii_is_single_byte();
            return attempt_string_rows(
                batch, bytes,
                [&](bifun_string& part, const bifun_string& value, const bifun_string& separator, std::int32_t n) INLINED -> status {
                    part = {0, 0, value.data};
                    if (n == 0 || is_empty(separator)) {
                        return BIFUN_OK;
                    }
                    if (value.trailing_blanks == 0 && separator.trailing_blanks == 0 && separator.length <= longest_plain_pattern &&
                        has_single_bytes(bytes, ascii, value)) {
                        part = part_of_single_bytes(bytes, value, separator, n);
                        return BIFUN_OK;
                    }
                    const string_outcome found = part_of_any_text(batch, scratch, value, separator, n);
                    part = found.value;
                    return found.outcome;
                },
                string(text), string(delimiter), integer(count));
        });
    });
}

} // namespace
} // namespace bifun

using namespace bifun;

status bsubstr_index_avv_str(BATCH_OF(column text, string_constant delimiter, int_constant count)) {
    return substring_index(BATCH, text, delimiter, count);
}
status bsubstr_index_aav_str(BATCH_OF(column text, column delimiter, int_constant count)) {
    return substring_index(BATCH, text, delimiter, count);
}
