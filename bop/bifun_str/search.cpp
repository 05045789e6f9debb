// INSTR, INSTRB, POSITION and LOCATE: where a pattern is in a text. A constant pattern is prepared once per batch, a column's for every row
// that needs it. An empty pattern makes the row NULL, so no call promises a result without NULLs; 0 says that it is nowhere.

#include "bop/bifun_str/pattern_search.h"

namespace bifun {
namespace {

constexpr search_request first_place{folding::none, false, 1, 1};
constexpr search_request first_place_in_bytes{folding::none, true, 1, 1};

search_request folded(search_request request, folding fold) {
    request.fold = folding_unless_case_sensitive(fold);
    return request;
}

// ---- a pattern for the whole batch -----------------------------------------------------------------------------------------

// `constants` are the other ones of the call.
template <class Text, class... Constants>
status rows_of_search(const batch& batch, const pattern_search& search, const Text& text, const Constants&... constants) {
    return with_scratch(batch.environment, batch.memory, string_source_file, [&](scratch& scratch) INLINED -> status {
        const auto rows_by = [&](auto process) INLINED {
            return attempt_set_rows<std::int32_t, nulls::of_attempts>(
                batch,
                [process, &search, &scratch](std::int32_t& position, const bifun_string& value, const auto&...) INLINED -> status {
                    const located found = process(search, scratch, value);
                    position = found.position;
                    return found.outcome;
                },
                text, constants...);
        };
        if (!search.request.is_plain() || search.pattern.length > longest_plain_pattern) {
            return rows_by(search_value);
        }
        const bool ascii = ascii_is_single_byte();
        const needle sought = make_needle(search.pattern.bytes, search.pattern.length);
        return with_byte_operations([&](auto bytes) INLINED -> status {
            if (search.is_blank) {
                return rows_by([bytes, ascii, sought](auto&&... row)
                                   INLINED { return binstr_def2_av_process_ignore_blank(bytes, ascii, sought, row...); });
            }
            return rows_by([bytes, ascii, sought](auto&&... row)
                               INLINED { return binstr_def2_av_process_with_blank(bytes, ascii, sought, row...); });
        });
    });
}

template <class Text, class... Constants>
status search_for_constant(const batch& batch, const constant_argument<bifun_string>& pattern, const search_request& request,
                           search_algorithm algorithm, const Text& text, const Constants&... constants) {
    if (!pattern.present || is_empty(pattern.value) || (is_null_constant(constants) || ...)) {
        return null_rows(batch);
    }
    return with_scratch(batch.environment, batch.memory, string_source_file, [&](scratch& scratch) -> status {
        const std::uint64_t length = full_length(pattern.value);
        std::uint8_t* const bytes = reserve(scratch, length);
        if (bytes == nullptr) {
            return fail_batch(batch, BIFUN_OUT_OF_MEMORY);
        }
        write_full_text(bytes, pattern.value);
        return with_search(
            batch.environment, batch.memory, bytes, static_cast<std::uint32_t>(length), algorithm, request,
            [&](status failure) { return fail_batch(batch, failure); },
            [&](const pattern_search& search) { return rows_of_search(batch, search, text, pattern, constants...); });
    });
}

// ---- a pattern for every row -----------------------------------------------------------------------------------------------

struct row_search {
    search_request request;
    search_algorithm short_pattern_algorithm;
    scratch& pattern_scratch;
    scratch& text_scratch;
};

[[gnu::noinline]] located search_row(const row_search& search, bifun_string pattern, bifun_string value) {
    const std::uint64_t length = full_length(pattern);
    std::uint8_t* const bytes = reserve(search.pattern_scratch, length);
    if (bytes == nullptr) {
        return {0, BIFUN_OUT_OF_MEMORY};
    }
    write_full_text(bytes, pattern);
    const search_algorithm algorithm = length <= ZQ_SHIFT_OR_LENGTH ? search.short_pattern_algorithm : search_algorithm::boyer_moore;
    located found{};
    const status searched = with_search(
        search.pattern_scratch.environment, search.pattern_scratch.memory, bytes, static_cast<std::uint32_t>(length), algorithm,
        search.request, [](status failure) { return failure; },
        [&](const pattern_search& prepared) {
            found = search_value(prepared, search.text_scratch, value);
            return found.outcome;
        });
    return {found.position, searched};
}

// Without tables where a look at the bytes is enough, as for a constant pattern.
template <class Bytes>
INLINED inline located binstr_def2_aa_process(Bytes bytes, bool ascii, const row_search& search, const bifun_string& pattern,
                                              const bifun_string& value) {
    if (is_empty(pattern)) {
        return {0, null_row};
    }
    if (!search.request.is_plain() || pattern.trailing_blanks != 0 || pattern.length > longest_plain_pattern) {
        return search_row(search, pattern, value);
    }
    const look found = look_at_bytes(bytes, ascii, make_needle(pattern.data, pattern.length), search.request.in_bytes, value);
    return found.is_enough ? located{found.position, BIFUN_OK} : search_row(search, pattern, value);
}

template <class Pattern, class Text, class... Constants>
status search_for_column(const batch& batch, const Pattern& pattern, const search_request& request,
                         search_algorithm short_pattern_algorithm, const Text& text, const Constants&... constants) {
    const auto in_scratch = [&](const auto& body)
                                INLINED { return with_scratch(batch.environment, batch.memory, string_source_file, body); };
    return in_scratch([&](scratch& pattern_scratch) INLINED {
        return in_scratch([&](scratch& text_scratch) INLINED {
            const row_search search{request, short_pattern_algorithm, pattern_scratch, text_scratch};
            return with_byte_operations([&](auto bytes) INLINED -> status {
                const bool ascii = ascii_is_single_byte();
                return attempt_set_rows<std::int32_t, nulls::of_attempts>(
                    batch,
                    [bytes, ascii, &search](std::int32_t& position, const bifun_string& sought, const bifun_string& value, const auto&...)
                        INLINED -> status {
                            const located found = binstr_def2_aa_process(bytes, ascii, search, sought, value);
                            position = found.position;
                            return found.outcome;
                        },
                    pattern, text, constants...);
            });
        });
    });
}

// ---- INSTR and INSTRB --------------------------------------------------------------------------------------------------------

// Shift-or for short patterns that have stored bytes and blanks, or are sought backwards; Boyer-Moore for all others.
search_algorithm algorithm_for(const bifun_string& pattern, const search_request& request) {
    const bool mixed = pattern.length != 0 && pattern.trailing_blanks != 0;
    return (mixed || request.is_backward()) && full_length(pattern) <= ZQ_SHIFT_OR_LENGTH ? search_algorithm::shift_or
                                                                                          : search_algorithm::boyer_moore;
}

status instr(const batch& batch, column text, string_constant pattern, int_constant start, int_constant occurrence, bool in_bytes) {
    const constant_argument<bifun_string> sought = string(pattern);
    const constant_argument<std::int32_t> from = integer(start);
    const constant_argument<std::int32_t> nth = integer(occurrence);
    const bool is_null = !sought.present || is_empty(sought.value) || !from.present || !nth.present;
    if (!is_null && nth.value < 1) {
        return fail_batch(batch, BIFUN_ARGUMENT_OUT_OF_DOMAIN);
    }
    const search_request request{folding_unless_case_sensitive(folding::lower), in_bytes, from.value,
                                 static_cast<std::uint32_t>(nth.value)};
    return search_for_constant(batch, sought, request, algorithm_for(sought.value, request), string(text), from, nth);
}

constexpr bifun_int_constant first_occurrence{1, 1};

// INSTR with two arguments, and POSITION.
status instr(const batch& batch, column text, string_constant pattern, const search_request& request) {
    return search_for_constant(batch, string(pattern), folded(request, folding::upper), search_algorithm::boyer_moore, string(text));
}

// ---- LOCATE --------------------------------------------------------------------------------------------------------------------

// Texts are compared as they are stored, whatever the server does about case. A start below 1 finds nothing.
search_request located_from(const constant_argument<std::int32_t>& start) { return {folding::none, false, std::max(start.value, 0), 1}; }

} // namespace
} // namespace bifun

using namespace bifun;

status binstr_avvv_str(BATCH_OF(column text, string_constant pattern, int_constant start, int_constant occurrence)) {
    return instr(BATCH, text, pattern, start, occurrence, false);
}
status binstr_def1_avv_str(BATCH_OF(column text, string_constant pattern, int_constant start)) {
    return binstr_avvv_str(environment, memory, text, pattern, start, &first_occurrence, result, row_count);
}
status binstr_def2_av_str(BATCH_OF(column text, string_constant pattern)) { return instr(BATCH, text, pattern, first_place); }
status binstr_def2_aa_str(BATCH_OF(column text, column pattern)) {
    return search_for_column(BATCH, string(pattern), folded(first_place, folding::upper), search_algorithm::shift_or, string(text));
}

status binstrb_avvv_str(BATCH_OF(column text, string_constant pattern, int_constant start, int_constant occurrence)) {
    return instr(BATCH, text, pattern, start, occurrence, true);
}
status binstrb_def1_avv_str(BATCH_OF(column text, string_constant pattern, int_constant start)) {
    return binstrb_avvv_str(environment, memory, text, pattern, start, &first_occurrence, result, row_count);
}
status binstrb_def2_av_str(BATCH_OF(column text, string_constant pattern)) { return instr(BATCH, text, pattern, first_place_in_bytes); }

status bposition_va_str(BATCH_OF(string_constant pattern, column text)) { return instr(BATCH, text, pattern, first_place); }

status blocate_def_aa_str(BATCH_OF(column pattern, column text)) {
    return search_for_column(BATCH, string(pattern), first_place, search_algorithm::boyer_moore, string(text));
}
status blocate_def_va_str(BATCH_OF(string_constant pattern, column text)) {
    return search_for_constant(BATCH, string(pattern), first_place, search_algorithm::boyer_moore, string(text));
}
status blocate_def_av_str(BATCH_OF(column pattern, string_constant text)) {
    return search_for_column(BATCH, string(pattern), first_place, search_algorithm::boyer_moore, string(text));
}
status blocate_aav_str(BATCH_OF(column pattern, column text, int_constant start)) {
    const constant_argument<std::int32_t> from = integer(start);
    return search_for_column(BATCH, string(pattern), located_from(from), search_algorithm::boyer_moore, string(text), from);
}
status blocate_vav_str(BATCH_OF(string_constant pattern, column text, int_constant start)) {
    const constant_argument<std::int32_t> from = integer(start);
    return search_for_constant(BATCH, string(pattern), located_from(from), search_algorithm::boyer_moore, string(text), from);
}
status blocate_avv_str(BATCH_OF(column pattern, string_constant text, int_constant start)) {
    const constant_argument<std::int32_t> from = integer(start);
    return search_for_column(BATCH, string(pattern), located_from(from), search_algorithm::boyer_moore, string(text), from);
}

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
    return with_scratch(environment, memory, string_source_file, [&](scratch& pattern_scratch) {
        return with_scratch(environment, memory, string_source_file, [&](scratch& text_scratch) -> status {
            const row_search search{{folding::lower, false, start, static_cast<std::uint32_t>(occurrence)},
                                    search_algorithm::shift_or,
                                    pattern_scratch,
                                    text_scratch};
            // Both texts are copied.
            const located found =
                search_row(search, {pattern_length, 0, const_cast<std::uint8_t*>(pattern)}, {length, 0, const_cast<std::uint8_t*>(text)});
            *position = static_cast<std::uint32_t>(found.position);
            return found.outcome;
        });
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
        outcome = with_search(
            environment, memory, pattern, pattern_length, algorithm, request,
            [&](status failure) {
                if (reverses) {
                    (void)zq_mbsrev_ex(text, length); // the text as it was
                }
                return failure;
            },
            [&](const pattern_search& search) -> status {
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
