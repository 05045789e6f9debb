// SPDX-License-Identifier: Apache-2.0
// The exported searches of a single text.

#include "bop/bifun.h"
#include "bop/bifun_str/row_search.h"

using namespace bifun;

std::int32_t binstr_avvv_process_case_sencitive(bifun_environment* environment, bifun_memory_object* memory, const std::uint8_t* text,
                                                std::uint32_t length, const std::uint8_t* pattern, std::uint32_t pattern_length,
                                                std::int32_t start, std::int32_t occurrence, std::uint32_t* position) {
    *position = 0;
    if (occurrence < 1) {
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    if (pattern_length == 0) {
        return BIFUN_OK;
    }
    const search_request request{folding::lower, false, start, static_cast<std::uint32_t>(occurrence)};
    return with_row_search(environment, memory, request, search_algorithm::shift_or, [&](row_search& search) -> status {
        // Both texts are copied.
        const located found =
            search_row(search, {pattern_length, 0, const_cast<std::uint8_t*>(pattern)}, {length, 0, const_cast<std::uint8_t*>(text)});
        *position = static_cast<std::uint32_t>(found.position);
        return found.outcome;
    });
}

std::int32_t ifun_instr_low(bifun_environment* environment, bifun_memory_object* memory, std::uint8_t* text, std::uint32_t length,
                            std::uint8_t* pattern, std::uint32_t pattern_length, std::int32_t start, std::uint32_t occurrence,
                            std::uint32_t* position, std::uint32_t* match_offset) {
    *position = 0;
    *match_offset = 0;
    const search_request request{folding::none, false, start, occurrence};
    const search_algorithm algorithm = pattern_length <= ZQ_SHIFT_OR_LENGTH ? search_algorithm::shift_or : search_algorithm::boyer_moore;
    void* const positions = allocate(environment, memory, std::uint64_t{length} * sizeof(std::uint32_t), string_source_file, __LINE__);
    if (positions == nullptr) {
        return BIFUN_OUT_OF_MEMORY;
    }
    const bool reverses = request.is_backward() && length != 0;
    status outcome = reverses && zq_mbsrev_ex(text, length) == nullptr ? BIFUN_INVALID_CHARACTER_STRING : BIFUN_OK;
    if (outcome == BIFUN_OK && pattern_length != 0) {
        const auto restore_text = [&](status failure) {
            if (reverses) {
                (void)zq_mbsrev_ex(text, length);
            }
            return failure;
        };
        outcome = with_search(environment, memory, pattern, pattern_length, algorithm, request, restore_text,
                              [&](pattern_search& search) -> status {
                                  const status made = make_tables(environment, memory, search);
                                  if (made < BIFUN_OK) {
                                      return restore_text(made);
                                  }
                                  if (occurrence != 0) {
                                      const search_result found = search_text(search, text, length, static_cast<std::uint32_t*>(positions));
                                      *position = static_cast<std::uint32_t>(found.position);
                                      *match_offset = found.offset;
                                  }
                                  return BIFUN_OK;
                              });
    }
    release(environment, memory, positions);
    return outcome;
}
