// SPDX-License-Identifier: Apache-2.0
// Searching for patterns that are prepared for one text each.
#ifndef BIFUN_STR_ROW_SEARCH_H
#define BIFUN_STR_ROW_SEARCH_H

#include "bop/bifun_str/pattern_search.h"

namespace bifun {

struct row_search {
    search_request request;
    search_algorithm short_pattern_algorithm;
    scratch& pattern_scratch;
    scratch& text_scratch;
};

template <class Body>
status with_row_search(bifun_environment* environment, bifun_memory_object* memory, const search_request& request,
                       search_algorithm short_pattern_algorithm, const Body& body) {
    return with_scratch(environment, memory, string_source_file, [&](scratch& pattern_scratch) {
        return with_scratch(environment, memory, string_source_file, [&](scratch& text_scratch) {
            row_search search{request, short_pattern_algorithm, pattern_scratch, text_scratch};
            return body(search);
        });
    });
}

// Calls `body` with the search for the full text of a pattern, which has at least one byte or blank. -503, or -6108 where it cannot be
// reversed.
template <class Body> status with_prepared_row(const row_search& search, const bifun_string& pattern, const Body& body) {
    const std::uint64_t length = full_length(pattern);
    std::uint8_t* const bytes = reserve(search.pattern_scratch, length);
    if (bytes == nullptr) {
        return BIFUN_OUT_OF_MEMORY;
    }
    write_full_text(bytes, pattern);
    const search_algorithm algorithm = length <= ZQ_SHIFT_OR_LENGTH ? search.short_pattern_algorithm : search_algorithm::boyer_moore;
    return with_search(
        search.pattern_scratch.environment, search.pattern_scratch.memory, bytes, static_cast<std::uint32_t>(length), algorithm,
        search.request, [](status failure) { return failure; }, body);
}

[[gnu::noinline]] inline located search_row(const row_search& search, bifun_string pattern, bifun_string value) {
    located found{};
    const status searched = with_prepared_row(search, pattern, [&](pattern_search& prepared) {
        found = search_value(prepared, search.text_scratch, value);
        return found.outcome;
    });
    return {found.position, searched};
}

} // namespace bifun

#endif
