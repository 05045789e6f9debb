// SPDX-License-Identifier: Apache-2.0
// REPLACE. A constant pattern is prepared once per batch, a column's for every row that needs it.

#include "bop/bifun_str/entry_points.h"
#include "bop/bifun_str/replacement.h"

namespace bifun {
namespace {

// ---- a pattern for the whole batch -----------------------------------------------------------------------------------------

struct constant_pattern {
    pattern_search& search;
    std::uint32_t blanks; // that the pattern has counted
    scratch& text_scratch;
};

status replace_constant(const bifun_string& source, const constant_pattern& pattern, const bifun_string& replacement, string_room& room) {
    return replace_by_search(pattern.search, pattern.text_scratch, pattern.blanks, source, replacement, room);
}

// For a pattern of bytes of which the first place in each source is known.
status replace_found(const text_operations& texts, const bifun_string& source, const needle& sought, std::uint32_t offset,
                     const bifun_string& replacement, string_room& room) {
    return offset == no_offset ? take_text(room, source) : replace_bytes(texts, source, sought, replacement, room);
}

bool is_without(const text_operations& /*texts*/, const bifun_string& /*source*/, const needle& /*sought*/, std::uint32_t offset,
                const bifun_string& /*replacement*/) {
    return offset == no_offset;
}
void source_itself(const text_operations& /*texts*/, const bifun_string& source, const needle& /*sought*/, std::uint32_t /*offset*/,
                   const bifun_string& /*replacement*/, bifun_string& result) {
    result = source;
}

// An empty pattern occurs nowhere.
void keep_source(const bifun_string& source, const bifun_string& /*pattern*/, const bifun_string& /*replacement*/, bifun_string& result) {
    result = source;
}

template <class Source, class Replacement>
status replace(batch_of<VARCHAR> batch, Source source, constant_of<VARCHAR> given, Replacement replacement) {
    const auto [pattern, present] = argument(given);
    if (!present) {
        return null_rows(batch);
    }
    if (is_empty(pattern)) {
        return string_rows<keep_source>(batch, source, given, replacement);
    }
    const text_operations texts = text_operations_of_engine();
    const search_request request = request_of_replace();
    if (is_replaced_by_bytes(texts, request, pattern)) {
        const constant_argument sought{make_needle(pattern.data, pattern.length), true};
        if constexpr (std::is_same_v<Source, column_of<VARCHAR>>) {
            const searched_column searched{source.column, sought.value};
            return usual_string_rows<is_without, source_itself, replace_found>(batch, fixed(texts), source, sought, first_places(searched),
                                                                               replacement);
        } else {
            return string_rows<replace_bytes>(batch, fixed(texts), source, sought, replacement);
        }
    }
    const std::uint32_t blanks = pattern.trailing_blanks;
    return with_constant_search(batch, pattern, request, search_algorithm::boyer_moore, [&](pattern_search& search) {
        return with_scratch(batch.environment, batch.memory, string_source_file, [&](scratch& text_scratch) {
            const constant_argument prepared{constant_pattern{search, blanks, text_scratch}, true};
            return string_rows<replace_constant>(batch, source, prepared, replacement);
        });
    });
}

// ---- a pattern for every row -----------------------------------------------------------------------------------------------

template <class Source, class Replacement>
status replace(batch_of<VARCHAR> batch, Source source, column_of<VARCHAR> pattern, Replacement replacement) {
    return with_row_search(batch.environment, batch.memory, request_of_replace(), search_algorithm::boyer_moore, [&](row_search& search) {
        return string_rows<replace_row>(batch, fixed(text_operations_of_engine()), source, pattern, replacement, shared(search));
    });
}

constexpr bifun_string nothing{};

} // namespace

status entry::breplace_aaa_str(batch_of<VARCHAR> batch, column_of<VARCHAR> source, column_of<VARCHAR> pattern,
                               column_of<VARCHAR> replacement) {
    return replace(batch, source, pattern, replacement);
}
status entry::breplace_vaa_str(batch_of<VARCHAR> batch, constant_of<VARCHAR> source, column_of<VARCHAR> pattern,
                               column_of<VARCHAR> replacement) {
    return replace(batch, source, pattern, replacement);
}
status entry::breplace_ava_str(batch_of<VARCHAR> batch, column_of<VARCHAR> source, constant_of<VARCHAR> pattern,
                               column_of<VARCHAR> replacement) {
    return replace(batch, source, pattern, replacement);
}
status entry::breplace_aav_str(batch_of<VARCHAR> batch, column_of<VARCHAR> source, column_of<VARCHAR> pattern,
                               constant_of<VARCHAR> replacement) {
    return replace(batch, source, pattern, replacement);
}
status entry::breplace_vva_str(batch_of<VARCHAR> batch, constant_of<VARCHAR> source, constant_of<VARCHAR> pattern,
                               column_of<VARCHAR> replacement) {
    return replace(batch, source, pattern, replacement);
}
status entry::breplace_vav_str(batch_of<VARCHAR> batch, constant_of<VARCHAR> source, column_of<VARCHAR> pattern,
                               constant_of<VARCHAR> replacement) {
    return replace(batch, source, pattern, replacement);
}
status entry::breplace_avv_str(batch_of<VARCHAR> batch, column_of<VARCHAR> source, constant_of<VARCHAR> pattern,
                               constant_of<VARCHAR> replacement) {
    return replace(batch, source, pattern, replacement);
}
status entry::breplace_def_aa_str(batch_of<VARCHAR> batch, column_of<VARCHAR> source, column_of<VARCHAR> pattern) {
    return replace(batch, source, pattern, fixed(nothing));
}
status entry::breplace_def_va_str(batch_of<VARCHAR> batch, constant_of<VARCHAR> source, column_of<VARCHAR> pattern) {
    return replace(batch, source, pattern, fixed(nothing));
}
status entry::breplace_def_av_str(batch_of<VARCHAR> batch, column_of<VARCHAR> source, constant_of<VARCHAR> pattern) {
    return replace(batch, source, pattern, fixed(nothing));
}

} // namespace bifun
