// SUBSTRING_INDEX: the text before the n-th delimiter, or behind the n-th from the end. The search reverses what it searches backwards, so
// both texts are scratch copies with their blanks written out, made afresh for every row.

#include "bop/bifun_str/text.h"

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

template <class Delimiter> status substring_index(const batch& batch, column text, Delimiter delimiter, int_constant count) {
    return with_scratch(batch.environment, batch.memory, string_source_file, [&](scratch& scratch) {
        return attempt_string_rows<failing_row::null>(
            batch, portable_bytes{},
            [&](bifun_string& part, const bifun_string& value, const bifun_string& separator, std::int32_t n) -> status {
                part = {0, 0, nullptr};
                if (n == 0 || is_empty(separator)) {
                    return BIFUN_OK;
                }
                const std::uint64_t length = full_length(value);
                const std::uint64_t separator_length = full_length(separator);
                std::uint8_t* const copy = reserve(scratch, length + separator_length);
                if (copy == nullptr) {
                    return BIFUN_OUT_OF_MEMORY;
                }
                write_full_text(copy, value);
                write_full_text(copy + length, separator);
                part.data = copy;
                return ifun_substring_index_low(batch.environment, batch.memory, copy, static_cast<std::uint32_t>(length), copy + length,
                                                static_cast<std::uint32_t>(separator_length), n, &part.length);
            },
            string(text), string(delimiter), integer(count));
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
