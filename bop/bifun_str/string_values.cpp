// SPDX-License-Identifier: Apache-2.0
// The exported operations on single string values.

#include "bop/bifun.h"
#include "bop/bifun_str/text.h"

using namespace bifun;

namespace {

// As its first bytes say, even where the text cuts it off. The length may hang on a second byte, which the last one of a text does not
// have.
std::uint32_t length_of_character(const std::uint8_t* character, std::uint32_t remaining) {
    const std::uint8_t last_byte[4] = {*character};
    return std::max(zq_mb_char_get_len(remaining > 1 ? character : last_byte), 1U);
}

} // namespace

std::int32_t zq_gather_char_info(bifun_environment* environment, bifun_memory_object* memory, std::uint8_t* text, std::int32_t length,
                                 std::uint32_t* count, std::uint32_t** lengths, std::uint8_t*** starts) {
    const auto room = static_cast<std::uint64_t>(std::max(length, 0));
    auto* const character_lengths =
        static_cast<std::uint32_t*>(allocate(environment, memory, room * sizeof(std::uint32_t), string_source_file, __LINE__));
    if (character_lengths == nullptr) {
        return BIFUN_OUT_OF_MEMORY;
    }
    auto* const character_starts =
        static_cast<std::uint8_t**>(allocate(environment, memory, room * sizeof(std::uint8_t*), string_source_file, __LINE__));
    if (character_starts == nullptr) {
        release(environment, memory, character_lengths);
        return BIFUN_OUT_OF_MEMORY;
    }
    std::uint32_t found = 0;
    // Signed: a character that the end cuts off takes it below zero.
    for (std::int64_t remaining = length; remaining > 0; ++found) {
        const std::uint32_t bytes = length_of_character(text, static_cast<std::uint32_t>(remaining));
        character_starts[found] = text;
        character_lengths[found] = bytes;
        remaining -= bytes;
        text += bytes;
    }
    *count = found;
    *lengths = character_lengths;
    *starts = character_starts;
    return BIFUN_OK;
}

namespace {

// `length_of` tells the length of the character at a place with so many bytes left.
template <class LengthOf>
std::uint32_t position_of_character(const std::uint8_t* text, std::uint32_t length, const std::uint8_t* character,
                                    std::uint32_t character_length, LengthOf length_of) {
    std::uint32_t position = 1;
    for (std::int64_t remaining = length; remaining > 0; ++position) {
        const std::uint32_t bytes = std::max(length_of(text, static_cast<std::uint32_t>(remaining)), 1U);
        // A character that the end cuts off has fewer bytes than its first one says.
        if (bytes == character_length && bytes <= remaining && std::memcmp(text, character, bytes) == 0) {
            return position;
        }
        remaining -= bytes;
        text += bytes;
    }
    return 0;
}

} // namespace

void bifun_search_char_in_str(const std::uint8_t* text, std::uint32_t length, const std::uint8_t* character, std::uint32_t character_length,
                              std::uint32_t* position) {
    *position = position_of_character(text, length, character, character_length, length_of_character);
}

void bifun_search_char_in_str_ex(const std::uint8_t* text, std::uint32_t length, const std::uint8_t* character,
                                 std::uint32_t character_length, std::uint32_t* position) {
    *position = position_of_character(text, length, character, character_length,
                                      [](const std::uint8_t* at, std::uint32_t left) { return zq_mb_char_get_len_ex(at, left); });
}

std::int32_t bifun_colstr_assign_with_blank(bifun_environment* environment, bifun_memory_object* memory, bifun_column* result,
                                            std::uint32_t row, const bifun_string* source) {
    bifun_string& value = static_cast<bifun_string*>(result->data->values)[row];
    const std::uint64_t length = full_length(*source);
    result->data->null_flags[row] = 1;
    value.length = static_cast<std::uint32_t>(length);
    value.trailing_blanks = 0;
    if (length == 0) {
        value.data = nullptr;
        return BIFUN_OK;
    }
    std::uint8_t* const bytes =
        length > UINT32_MAX ? nullptr : bdta3_col_space_alloc(environment, memory, result->data, static_cast<std::uint32_t>(length));
    if (bytes == nullptr) {
        return BIFUN_OUT_OF_MEMORY;
    }
    write_full_text(bytes, *source);
    value.data = bytes;
    return BIFUN_OK;
}

std::int32_t bifun_colstr_assign_with_blank_no_clear(bifun_environment* environment, bifun_memory_object* memory, bifun_string* target,
                                                     const bifun_string* source) {
    if (target == source) {
        return BIFUN_OK;
    }
    const std::uint64_t length = full_length(*source);
    target->length = static_cast<std::uint32_t>(length);
    target->trailing_blanks = 0;
    if (length == 0) {
        target->data = nullptr;
        return BIFUN_OK;
    }
    auto* const bytes = static_cast<std::uint8_t*>(allocate(environment, memory, length, string_source_file, __LINE__));
    if (bytes == nullptr) {
        return BIFUN_OUT_OF_MEMORY;
    }
    write_full_text(bytes, *source);
    target->data = bytes;
    return BIFUN_OK;
}
