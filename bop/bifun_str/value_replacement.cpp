// SPDX-License-Identifier: Apache-2.0
// The exported functions that replace parts of a single text.

#include "bop/bifun.h"
#include "bop/bifun_str/overlay.h"
#include "bop/bifun_str/replacement.h"

using namespace bifun;

namespace {

status replace_value(bifun_environment* environment, bifun_memory_object* memory, std::uint32_t row, bifun_column* result,
                     const bifun_string& source, const bifun_string& pattern, const bifun_string& replacement) {
    const batch batch{environment, memory, result, row + 1};
    constexpr bool may_refer = false; // nobody says how long the source's bytes live
    return with_row_search(environment, memory, request_of_replace(), search_algorithm::boyer_moore, [&](row_search& search) {
        return built_strings<string_room>(batch, may_refer).row(row, [&](string_room& room) {
            return replace_row(text_operations_of_engine(), source, pattern, replacement, search, room);
        });
    });
}

} // namespace

// Every kind of pattern takes the way that its bytes and blanks allow, so all of them do the same.
#define REPLACE(name)                                                                                                                      \
    std::int32_t name(bifun_environment* environment, bifun_memory_object* memory, std::uint32_t row, bifun_column* result,                \
                      std::uint8_t* source, std::uint32_t source_length, std::uint32_t source_blanks, std::uint8_t* pattern,               \
                      std::uint32_t pattern_length, std::uint32_t pattern_blanks, std::uint8_t* replacement,                               \
                      std::uint32_t replacement_length, std::uint32_t replacement_blanks) {                                                \
        return replace_value(environment, memory, row, result, {source_length, source_blanks, source},                                     \
                             {pattern_length, pattern_blanks, pattern}, {replacement_length, replacement_blanks, replacement});            \
    }
REPLACE(bifun_replace_low)
REPLACE(bifun_replace_low_1)
REPLACE(bifun_replace_low_2)
REPLACE(bifun_replace_low_3)
#undef REPLACE

std::int32_t bifun_replace_def_low(bifun_environment* environment, bifun_memory_object* memory, std::uint32_t row, bifun_column* result,
                                   std::uint8_t* source, std::uint32_t source_length, std::uint32_t source_blanks, std::uint8_t* pattern,
                                   std::uint32_t pattern_length, std::uint32_t pattern_blanks) {
    return replace_value(environment, memory, row, result, {source_length, source_blanks, source},
                         {pattern_length, pattern_blanks, pattern}, {});
}

std::int32_t ifun_overlay_low(std::uint8_t* source, std::uint32_t source_length, std::uint32_t source_blanks, std::uint8_t* replacement,
                              std::uint32_t replacement_length, std::uint32_t replacement_blanks, std::uint32_t position,
                              std::uint32_t length, std::uint8_t* output, std::uint32_t* output_length, std::uint32_t* output_blanks) {
    const bifun_string text{source_length, source_blanks, source};
    const bifun_string part{replacement_length, replacement_blanks, replacement};
    const overlay_parts parts = place_overlay(text_operations_of_engine(), text, part, {position, length});
    const std::uint64_t total = length_of_overlay(text, part, parts);
    if (total + parts.blanks_behind > longest_built_text) {
        return BIFUN_INVALID_CHARACTER_STRING;
    }
    text_writer writer{output, false};
    append_overlay(writer, text, part, parts);
    *output_length = static_cast<std::uint32_t>(total);
    *output_blanks = parts.blanks_behind;
    return BIFUN_OK;
}
