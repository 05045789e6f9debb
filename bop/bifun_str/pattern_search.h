// SPDX-License-Identifier: Apache-2.0
// Searching texts for a pattern that was prepared once: its bytes, in the case and the direction of the search, and the tables of the
// algorithm that is to find it.
#ifndef BIFUN_STR_PATTERN_SEARCH_H
#define BIFUN_STR_PATTERN_SEARCH_H

#include "bop/bifun_str/text.h"
#include "engine/search.h"

namespace bifun {

enum class folding : std::uint8_t { none, upper, lower };

// Positions are in characters or in bytes. A negative `start` searches backwards, from that position from the end: occurrences lie at or
// before it as a whole. Start 0 finds nothing.
struct search_request {
    folding fold;
    bool in_bytes;
    std::int32_t start;
    std::uint32_t occurrence; // at least 1

    [[nodiscard]] bool is_backward() const { return start < 0; }
    [[nodiscard]] bool is_plain() const { return fold == folding::none && start == 1 && occurrence == 1; }
};

// Longer patterns are searched with tables: comparing one at every place that looks like it would take too long.
constexpr std::uint32_t longest_plain_pattern = 64;

// What folding is asked for on this server.
inline folding folding_unless_case_sensitive(folding fold) { return global_bifun_var.case_sensitive == 0 ? fold : folding::none; }

enum class search_algorithm : std::uint8_t { boyer_moore, shift_or };

struct pattern_tables {
    std::uint32_t by_byte[ZQ_BYTE_VALUES];       // bad characters or masks
    std::uint32_t good_suffixes[ZQ_BYTE_VALUES]; // of patterns that are not longer
};

struct pattern_search {
    zq_pattern pattern; // as it is compared with texts: folded, and reversed for a backward search; without tables until they are needed
    bool ends_in_blank; // before it is reversed: then it may be found among a value's trailing blanks
    bool is_blank;      // blanks only
    search_request request;
    search_algorithm algorithm;
    pattern_tables& tables;
    void* long_suffixes; // what good suffixes of a long pattern take; null before
};

// Where a pattern was found: position 0 for nowhere.
struct search_result {
    std::int32_t position;
    std::uint32_t offset; // of its first byte
};

inline void fold_case(std::uint8_t* text, std::uint32_t length, folding fold) {
    if (fold == folding::upper) {
        zq_mbsupper_ex(text, length);
    } else if (fold == folding::lower) {
        zq_mbslower_ex(text, length);
    }
}

// Whether a pattern has to be changed before it is searched for.
inline bool changes_pattern(const search_request& request) { return request.fold != folding::none || request.is_backward(); }

// Makes the tables of the algorithm, where there are none. Returns 0 or -503.
inline status make_tables(bifun_environment* environment, bifun_memory_object* memory, pattern_search& search) {
    zq_pattern& pattern = search.pattern;
    if (pattern.masks != nullptr || pattern.good_suffixes != nullptr) {
        return BIFUN_OK;
    }
    if (search.algorithm == search_algorithm::shift_or) {
        preshiftorprocess(pattern.bytes, pattern.length, search.tables.by_byte);
        pattern.masks = search.tables.by_byte;
        return BIFUN_OK;
    }
    std::uint32_t* good_suffixes = search.tables.good_suffixes;
    if (pattern.length > ZQ_BYTE_VALUES) {
        const std::uint64_t size = std::uint64_t{pattern.length} * sizeof(std::uint32_t);
        search.long_suffixes = allocate(environment, memory, size, string_source_file, __LINE__);
        if (search.long_suffixes == nullptr) {
            return BIFUN_OUT_OF_MEMORY;
        }
        good_suffixes = static_cast<std::uint32_t*>(search.long_suffixes);
    }
    preprocess_bmbc(pattern.bytes, pattern.length, search.tables.by_byte);
    preprocess_bmgs(pattern.bytes, pattern.length, good_suffixes);
    pattern.bad_characters = search.tables.by_byte;
    pattern.good_suffixes = good_suffixes;
    return BIFUN_OK;
}

// Calls `body` with the search for `length` bytes at `bytes`, at least one, which are changed to the case and direction of the request
// where changes_pattern(). Returns its status, or `failed(-6108)` for a pattern that cannot be reversed.
template <class Failed, class Body>
status with_search(bifun_environment* environment, bifun_memory_object* memory, std::uint8_t* bytes, std::uint32_t length,
                   search_algorithm algorithm, const search_request& request, const Failed& failed, const Body& body) {
    pattern_tables tables;
    const bool is_blank = leading(blank, bytes, length) == length;
    pattern_search search{
        {bytes, length, nullptr, nullptr, nullptr}, bytes[length - 1] == blank, is_blank, request, algorithm, tables, nullptr};
    if (is_blank) {
        search.request.fold = folding::none; // a blank has no case
    }
    fold_case(bytes, length, search.request.fold);
    if (request.is_backward() && zq_mbsrev_ex(bytes, length) == nullptr) {
        return failed(BIFUN_INVALID_CHARACTER_STRING);
    }
    const status outcome = body(search);
    release(environment, memory, search.long_suffixes);
    return outcome;
}

// Calls `body` with the search for a constant's full text, which has at least one byte, as with_search() does.
template <class Body>
status with_constant_search(const batch& batch, const bifun_string& pattern, const search_request& request, search_algorithm algorithm,
                            const Body& body) {
    return with_scratch(batch.environment, batch.memory, string_source_file, [&](scratch& scratch) -> status {
        const std::uint64_t length = full_length(pattern);
        std::uint8_t* bytes = pattern.data;
        if (pattern.trailing_blanks != 0 || changes_pattern(request)) {
            bytes = reserve(scratch, length);
            if (bytes == nullptr) {
                return fail_batch(batch, BIFUN_OUT_OF_MEMORY);
            }
            write_full_text(bytes, pattern);
        }
        const auto failed = [&](status failure) { return fail_batch(batch, failure); };
        return with_search(batch.environment, batch.memory, bytes, static_cast<std::uint32_t>(length), algorithm, request, failed, body);
    });
}

// The offset of the occurrence that is asked for, from `from` on, or ZQ_NOT_FOUND. `positions` is null for text of single-byte characters.
inline std::uint32_t find_occurrence(const zq_pattern& pattern, const std::uint8_t* text, std::uint32_t length,
                                     const std::uint32_t* positions, std::uint32_t from, std::uint32_t occurrence) {
    if (occurrence > 1) {
        std::uint32_t offset = ZQ_NOT_FOUND;
        return zq_get_occur_num(text, length, from, &pattern, positions, occurrence, &offset) == occurrence ? offset : ZQ_NOT_FOUND;
    }
    if (pattern.masks != nullptr) {
        return positions == nullptr ? zq_mbshiftor_ncmp(text, length, from, &pattern)
                                    : zq_mbshiftor_ncmp_arr(text, length, from, &pattern, positions);
    }
    return positions == nullptr ? zq_strbmncmp(text, length, from, &pattern) : zq_strbmncmp_arr(text, length, from, &pattern, positions);
}

// Where the pattern is in a text in the case and direction of the search. `positions` has room for an entry per byte.
inline search_result search_text(const pattern_search& search, const std::uint8_t* text, std::uint32_t length, std::uint32_t* positions) {
    const search_request& request = search.request;
    const std::uint32_t characters = zq_mbstrlen_ex(text, length);
    const bool is_multibyte = characters != length;
    if (is_multibyte) {
        (void)zq_mbstrlen_cposition_ex(text, length, positions);
    }
    const std::uint32_t units = request.in_bytes ? length : characters;
    // How many units lie before the first that may begin the occurrence, in the direction of the search.
    const std::int64_t skipped = (request.is_backward() ? -std::int64_t{request.start} : std::int64_t{request.start}) - 1;
    if (request.start == 0 || skipped >= units || length < search.pattern.length) {
        return {0, 0};
    }
    const auto first = static_cast<std::uint32_t>(skipped);
    const std::uint32_t from = is_multibyte && !request.in_bytes ? zq_mbsninc_ex(text, length, first) : first;
    const std::uint32_t offset =
        find_occurrence(search.pattern, text, length, is_multibyte ? positions : nullptr, from, request.occurrence);
    if (offset == ZQ_NOT_FOUND) {
        return {0, 0};
    }
    const bool by_positions = is_multibyte && !request.in_bytes;
    if (!request.is_backward()) {
        return {static_cast<std::int32_t>(by_positions ? positions[offset] : offset + 1), offset};
    }
    // The last byte of the occurrence lies in the character that comes first in the text as it was.
    const std::uint32_t last = offset + search.pattern.length - 1;
    return {static_cast<std::int32_t>(units - (by_positions ? positions[last] : last + 1) + 1), length - last - 1};
}

// The position of the pattern in a value, 0 where there is none. A record, not a reference: the loop's values stay in registers.
struct located {
    std::int32_t position;
    status outcome;
};

// In the full text of a value, which is copied where it has to be changed or its blanks written out. -503, or -6108 where it cannot be
// reversed.
[[gnu::noinline]] inline located search_value(pattern_search& search, scratch& scratch, bifun_string value) {
    const search_request& request = search.request;
    const status made = make_tables(scratch.environment, scratch.memory, search);
    if (made < BIFUN_OK) {
        return {0, made};
    }
    // Of the blanks a place that begins before them has at most what lies behind the pattern's first byte.
    const std::uint32_t reached = search.is_blank || request.is_backward() ? value.trailing_blanks
                                  : search.ends_in_blank                   ? std::min(value.trailing_blanks, search.pattern.length - 1)
                                                                           : 0;
    const bool is_copied = reached != 0 || request.fold != folding::none || request.is_backward();
    const std::uint64_t length = std::uint64_t{value.length} + reached;
    const std::uint64_t positions_size = length * sizeof(std::uint32_t);
    std::uint8_t* const memory = length > UINT32_MAX ? nullptr : reserve(scratch, positions_size + (is_copied ? length : 0));
    if (memory == nullptr) {
        return {0, BIFUN_OUT_OF_MEMORY};
    }
    const auto text_length = static_cast<std::uint32_t>(length);
    const std::uint8_t* text = value.data;
    if (is_copied) {
        std::uint8_t* const copy = memory + positions_size;
        write_full_text(copy, {value.length, reached, value.data});
        fold_case(copy, text_length, request.fold);
        if (request.is_backward() && text_length != 0 && zq_mbsrev_ex(copy, text_length) == nullptr) {
            return {0, BIFUN_INVALID_CHARACTER_STRING};
        }
        text = copy;
    }
    return {search_text(search, text, text_length, reinterpret_cast<std::uint32_t*>(memory)).position, BIFUN_OK};
}

// What a look at a value's bytes tells of a search that is_plain(): most values do not have the pattern's bytes, or are of single-byte
// characters. Where it is not enough the value has to be searched.
struct look {
    bool is_enough;
    std::int32_t position;
};

// `offset` is that of the first place of the needle's bytes.
inline look look_at_bytes(const text_operations& texts, const needle& sought, bool in_bytes, const bifun_string& value,
                          std::uint32_t offset) {
    if (!texts.ascii_is_single_byte || (value.trailing_blanks != 0 && sought.last == blank)) {
        return {false, 0};
    }
    if (offset == no_offset) {
        return {true, 0};
    }
    const utf8_characters characters = value.length <= longest_masked ? characters_of(texts, value) : utf8_characters{false, 0};
    if (characters.are_known) {
        const std::uint64_t before = characters.starts & first_bits(offset);
        const std::uint32_t units = in_bytes ? offset : static_cast<std::uint32_t>(std::popcount(before));
        return {(characters.starts >> offset & 1) != 0, static_cast<std::int32_t>(units + 1)};
    }
    if (has_single_bytes(texts, value)) {
        return {true, static_cast<std::int32_t>(offset + 1)};
    }
    if (zq_char_start(value.data, value.length, offset) == 0) {
        return {false, 0}; // the bytes lie within a character
    }
    return {true, static_cast<std::int32_t>((in_bytes ? offset : zq_mbstrlen_ex(value.data, offset)) + 1)};
}

} // namespace bifun

#endif
