// SPDX-License-Identifier: Apache-2.0
// INSTR, INSTRB, POSITION and LOCATE: where a pattern is in a text. A constant pattern is prepared once per batch, a column's for every row
// that needs it. An empty pattern makes the row NULL, so no call promises a result without NULLs; 0 says that it is nowhere.

#include "bop/bifun_str/entry_points.h"
#include "bop/bifun_str/pattern_search.h"
#include "bop/bifun_str/row_search.h"

namespace bifun {
namespace {

constexpr search_request first_place{folding::none, false, 1, 1};
constexpr search_request first_place_in_bytes{folding::none, true, 1, 1};

search_request folded(search_request request, folding fold) {
    request.fold = folding_unless_case_sensitive(fold);
    return request;
}

value_or_null set_position(const located& found, std::int32_t& position) {
    position = found.position;
    return found.outcome;
}

// ---- a pattern for the whole batch -----------------------------------------------------------------------------------------

struct batch_search {
    pattern_search& search;
    scratch& text_scratch;
};

value_or_null binstr_avvv_process(const bifun_string& value, batch_search& by, std::int32_t& position) {
    return set_position(search_value(by.search, by.text_scratch, value), position);
}

// Positions of the first place, as far as a look at the bytes tells them.
struct looked_at_column {
    searched_column searched;
    text_operations texts;
    bool in_bytes;
};
constexpr std::int32_t not_told = -1;

bool may_reach_blanks(const needle& sought, const bifun_string& value) { return sought.last == blank && value.trailing_blanks != 0; }

// `offset` is that of the first place of the needle.
[[gnu::noinline]] void put_position(const looked_at_column& by, const bifun_string& value, std::uint32_t offset, std::int32_t& position) {
    const needle& sought = by.searched.sought;
    position = static_cast<std::int32_t>(offset + 1);
    if (may_reach_blanks(sought, value)) {
        position = not_told;
    } else if (sought.first >= 0x80 || !begins_with_ascii(value.data, offset)) {
        const look found = look_at_bytes(by.texts, sought, by.in_bytes, value, offset);
        position = found.is_enough ? found.position : not_told;
    }
}

// The same in well-formed texts, of a needle that begins with a character: as many characters are before it as begin there.
void put_positions_by_characters(const looked_at_column& by, const dense_rows<bifun_string>& values, const std::uint32_t* offsets,
                                 std::uint32_t count, std::int32_t* positions) {
    for (std::uint32_t k = 0; k < count; ++k) {
        const std::uint32_t offset = offsets[k];
        if (offset <= longest_masked) {
            const text_bytes<64> before(values[k].data, offset);
            positions[k] = std::popcount(starts_of_well_formed(before, offset)) + 1;
        } else if (offset != no_offset) {
            put_position(by, values[k], offset, positions[k]);
        }
    }
}

[[gnu::noinline]] void look_at_block(const void* source, std::uint32_t first, std::uint32_t count, std::int32_t* positions) {
    const auto& by = *static_cast<const looked_at_column*>(source);
    std::uint32_t offsets[most_rows_per_block];
    find_in_block(&by.searched, first, count, offsets);
    const bool ends_in_blank = by.searched.sought.last == blank;
    if (by.texts.known == known_texts::ascii && !ends_in_blank) {
        for (std::uint32_t k = 0; k < count; ++k) {
            positions[k] = static_cast<std::int32_t>(offsets[k] + 1); // no_offset becomes 0
        }
        return;
    }
    block_of<column_argument<bifun_string>, most_rows_per_block> room;
    const dense_rows<bifun_string> values = room.rows({by.searched.column}, first, count);
    if (ends_in_blank) {
        for (std::uint32_t k = 0; k < count; ++k) {
            positions[k] = values[k].trailing_blanks != 0 ? not_told : 0;
        }
    } else {
        std::memset(positions, 0, count * sizeof(std::int32_t));
        if (by.texts.known == known_texts::utf8 && !by.in_bytes && by.searched.sought.first < 0x80) {
            return put_positions_by_characters(by, values, offsets, count, positions);
        }
    }
    for (std::uint32_t k = 0; k < count; ++k) {
        if (offsets[k] != no_offset) {
            put_position(by, values[k], offsets[k], positions[k]);
        }
    }
}

// A search that is_plain(), where single-byte characters are known.
bool is_told(const bifun_string& /*value*/, std::int32_t position, const batch_search& /*by*/) { return position != not_told; }
void told_position(const bifun_string& /*value*/, std::int32_t position, const batch_search& /*by*/, std::int32_t& result) {
    result = position;
}
value_or_null binstr_def2_av_process_with_blank(const bifun_string& value, std::int32_t position, batch_search& by, std::int32_t& result) {
    result = position;
    return position != not_told ? value_or_null() : binstr_avvv_process(value, by, result);
}

// The same for a pattern of blanks, without writing the value's blanks out.
value_or_null binstr_def2_av_process_ignore_blank(const text_operations& texts, const needle& sought, const bifun_string& value,
                                                  batch_search& by, std::int32_t& position) {
    const bool is_single_byte = has_single_bytes(texts, value);
    if (is_single_byte) {
        const std::uint32_t offset = find(sought, value.data, value.length);
        if (offset != no_offset) {
            position = static_cast<std::int32_t>(offset + 1);
            return {};
        }
    } else {
        const located found = search_value(by.search, by.text_scratch, {value.length, 0, value.data});
        if (found.outcome < BIFUN_OK || found.position != 0) {
            return set_position(found, position);
        }
    }
    const std::uint32_t stored_blanks = trailing(blank, value.data, value.length);
    if (std::uint64_t{stored_blanks} + value.trailing_blanks < sought.length) {
        position = 0;
        return {};
    }
    const std::uint32_t before = value.length - stored_blanks;
    const bool in_bytes = is_single_byte || by.search.request.in_bytes;
    position = static_cast<std::int32_t>((in_bytes ? before : zq_mbstrlen_ex(value.data, before)) + 1);
    return {};
}

status rows_of_search(batch_of<INT> batch, pattern_search& search, column_of<VARCHAR> text) {
    return with_scratch(batch.environment, batch.memory, string_source_file, [&](scratch& text_scratch) {
        batch_search by{search, text_scratch};
        const text_operations texts = text_operations_of_engine();
        if (!texts.ascii_is_single_byte || !search.request.is_plain() || search.pattern.length > longest_plain_pattern) {
            return set_rows<binstr_avvv_process>(batch, text, shared(by));
        }
        const searched_column searched{text.column, make_needle(search.pattern.bytes, search.pattern.length)};
        if (search.is_blank) {
            return set_rows<binstr_def2_av_process_ignore_blank>(batch, fixed(texts), fixed(searched.sought), text, shared(by));
        }
        const looked_at_column looked_at{searched, texts_as_told(*text.column), search.request.in_bytes};
        return set_usual_rows<is_told, told_position, binstr_def2_av_process_with_blank>(
            batch, text, derived_argument<std::int32_t>{&looked_at, look_at_block}, shared(by));
    });
}

status search_for_constant(batch_of<INT> batch, constant_of<VARCHAR> given, const search_request& request, search_algorithm algorithm,
                           column_of<VARCHAR> text) {
    const auto [pattern, present] = argument(given);
    if (!present || is_empty(pattern)) {
        return null_rows(batch);
    }
    return with_constant_search(batch, pattern, request, algorithm,
                                [&](pattern_search& search) { return rows_of_search(batch, search, text); });
}

// ---- a pattern for every row -----------------------------------------------------------------------------------------------

// Without tables where a look at the bytes is enough, as for a constant pattern.
value_or_null binstr_def2_aa_process(const text_operations& texts, const bifun_string& pattern, const bifun_string& value,
                                     row_search& search, std::int32_t& position) {
    if (is_empty(pattern)) {
        return value_or_null::null();
    }
    if (search.request.is_plain() && pattern.trailing_blanks == 0 && pattern.length <= longest_plain_pattern) {
        const needle sought = make_needle(pattern.data, pattern.length);
        const look found = look_at_bytes(texts, sought, search.request.in_bytes, value, find(sought, value.data, value.length));
        if (found.is_enough) {
            position = found.position;
            return {};
        }
    }
    return set_position(search_row(search, pattern, value), position);
}

template <class Text>
status search_for_column(batch_of<INT> batch, column_of<VARCHAR> pattern, const search_request& request,
                         search_algorithm short_pattern_algorithm, Text text) {
    return with_row_search(batch.environment, batch.memory, request, short_pattern_algorithm, [&](row_search& search) {
        return set_rows<binstr_def2_aa_process>(batch, fixed(text_operations_of_engine()), pattern, text, shared(search));
    });
}

// ---- INSTR and INSTRB --------------------------------------------------------------------------------------------------------

// Shift-or for short patterns that have stored bytes and blanks, or are sought backwards; Boyer-Moore for all others.
search_algorithm algorithm_for(const bifun_string& pattern, const search_request& request) {
    const bool mixed = pattern.length != 0 && pattern.trailing_blanks != 0;
    return (mixed || request.is_backward()) && full_length(pattern) <= ZQ_SHIFT_OR_LENGTH ? search_algorithm::shift_or
                                                                                          : search_algorithm::boyer_moore;
}

status instr(batch_of<INT> batch, column_of<VARCHAR> text, constant_of<VARCHAR> pattern, constant_of<INT> start,
             constant_of<INT> occurrence, bool in_bytes) {
    const auto sought = argument(pattern);
    const auto from = argument(start);
    const auto nth = argument(occurrence);
    if (!sought.present || is_empty(sought.value) || !from.present || !nth.present) {
        return null_rows(batch);
    }
    if (nth.value < 1) {
        return fail_batch(batch, BIFUN_ARGUMENT_OUT_OF_DOMAIN);
    }
    const search_request request{folding_unless_case_sensitive(folding::lower), in_bytes, from.value,
                                 static_cast<std::uint32_t>(nth.value)};
    return search_for_constant(batch, pattern, request, algorithm_for(sought.value, request), text);
}

constexpr bifun_int_constant first_occurrence{1, 1};

// INSTR with two arguments, and POSITION.
status instr(batch_of<INT> batch, column_of<VARCHAR> text, constant_of<VARCHAR> pattern, const search_request& request) {
    return search_for_constant(batch, pattern, folded(request, folding::upper), search_algorithm::boyer_moore, text);
}

// ---- LOCATE --------------------------------------------------------------------------------------------------------------------

// Texts are compared as they are stored, whatever the server does about case.

status locate(batch_of<INT> batch, constant_of<VARCHAR> pattern, column_of<VARCHAR> text, const search_request& request) {
    return search_for_constant(batch, pattern, request, search_algorithm::boyer_moore, text);
}

template <class Text> status locate(batch_of<INT> batch, column_of<VARCHAR> pattern, Text text, const search_request& request) {
    return search_for_column(batch, pattern, request, search_algorithm::boyer_moore, text);
}

// A start below 1 finds nothing.
template <class Pattern, class Text> status locate(batch_of<INT> batch, Pattern pattern, Text text, constant_of<INT> start) {
    const auto [from, present] = argument(start);
    return present ? locate(batch, pattern, text, search_request{folding::none, false, std::max(from, 0), 1}) : null_rows(batch);
}

} // namespace

status entry::binstr_avvv_str(batch_of<INT> batch, column_of<VARCHAR> text, constant_of<VARCHAR> pattern, constant_of<INT> start,
                              constant_of<INT> occurrence) {
    return instr(batch, text, pattern, start, occurrence, false);
}
status entry::binstr_def1_avv_str(batch_of<INT> batch, column_of<VARCHAR> text, constant_of<VARCHAR> pattern, constant_of<INT> start) {
    return instr(batch, text, pattern, start, {&first_occurrence}, false);
}
status entry::binstr_def2_av_str(batch_of<INT> batch, column_of<VARCHAR> text, constant_of<VARCHAR> pattern) {
    return instr(batch, text, pattern, first_place);
}
status entry::binstr_def2_aa_str(batch_of<INT> batch, column_of<VARCHAR> text, column_of<VARCHAR> pattern) {
    return search_for_column(batch, pattern, folded(first_place, folding::upper), search_algorithm::shift_or, text);
}

status entry::binstrb_avvv_str(batch_of<INT> batch, column_of<VARCHAR> text, constant_of<VARCHAR> pattern, constant_of<INT> start,
                               constant_of<INT> occurrence) {
    return instr(batch, text, pattern, start, occurrence, true);
}
status entry::binstrb_def1_avv_str(batch_of<INT> batch, column_of<VARCHAR> text, constant_of<VARCHAR> pattern, constant_of<INT> start) {
    return instr(batch, text, pattern, start, {&first_occurrence}, true);
}
status entry::binstrb_def2_av_str(batch_of<INT> batch, column_of<VARCHAR> text, constant_of<VARCHAR> pattern) {
    return instr(batch, text, pattern, first_place_in_bytes);
}

status entry::bposition_va_str(batch_of<INT> batch, constant_of<VARCHAR> pattern, column_of<VARCHAR> text) {
    return instr(batch, text, pattern, first_place);
}

status entry::blocate_def_aa_str(batch_of<INT> batch, column_of<VARCHAR> pattern, column_of<VARCHAR> text) {
    return locate(batch, pattern, text, first_place);
}
status entry::blocate_def_va_str(batch_of<INT> batch, constant_of<VARCHAR> pattern, column_of<VARCHAR> text) {
    return locate(batch, pattern, text, first_place);
}
status entry::blocate_def_av_str(batch_of<INT> batch, column_of<VARCHAR> pattern, constant_of<VARCHAR> text) {
    return locate(batch, pattern, text, first_place);
}
status entry::blocate_aav_str(batch_of<INT> batch, column_of<VARCHAR> pattern, column_of<VARCHAR> text, constant_of<INT> start) {
    return locate(batch, pattern, text, start);
}
status entry::blocate_vav_str(batch_of<INT> batch, constant_of<VARCHAR> pattern, column_of<VARCHAR> text, constant_of<INT> start) {
    return locate(batch, pattern, text, start);
}
status entry::blocate_avv_str(batch_of<INT> batch, column_of<VARCHAR> pattern, constant_of<VARCHAR> text, constant_of<INT> start) {
    return locate(batch, pattern, text, start);
}

} // namespace bifun
