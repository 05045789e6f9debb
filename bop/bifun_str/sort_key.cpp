// SPDX-License-Identifier: Apache-2.0
// NLSSORT: bytes that compare as a language orders texts, by the engine.

#include "bop/bifun_str/conversion.h"
#include "bop/bifun_str/entry_points.h"
#include "bop/frame/nls_text.h"
#include "engine/collation.h"

namespace bifun {
namespace {

struct sort_state {
    nls_collation* order;
    scratch& full_text;
    scratch& key;
};

// The blanks at the end are of the text.
status written_out(const bifun_string& value, scratch& full_text, bifun_string& text) {
    text = value;
    if (value.trailing_blanks != 0) {
        std::uint8_t* const bytes = reserve(full_text, full_length(value));
        if (bytes == nullptr) {
            return BIFUN_OUT_OF_MEMORY;
        }
        write_full_text(bytes, value);
        text = {static_cast<std::uint32_t>(full_length(value)), 0, bytes};
    }
    return BIFUN_OK;
}

// The first key of a batch may need more room than there is, and some behind it.
status make_key(const bifun_string& text, sort_state& state, std::uint64_t& length) {
    std::uint64_t room = std::max(state.key.size, 256U);
    for (;;) {
        std::uint8_t* const key = reserve(state.key, room);
        if (key == nullptr) {
            return BIFUN_OUT_OF_MEMORY;
        }
        const status made = nls_sort_key(state.order, text.data, text.length, key, static_cast<std::uint32_t>(room), &length);
        if (made < BIFUN_OK || length <= room) {
            return made;
        }
        if (length > longest_converted_text) {
            return BIFUN_CHARACTER_RESULT_TOO_LONG;
        }
        room = length;
    }
}

status nlssort(const bifun_string& value, sort_state& state, column_space& room) {
    bifun_string text;
    std::uint64_t length = 0;
    status outcome = written_out(value, state.full_text, text);
    if (outcome == BIFUN_OK) {
        outcome = make_key(text, state, length);
    }
    if (outcome < BIFUN_OK) {
        return outcome;
    }
    return length > longest_converted_text ? BIFUN_CHARACTER_RESULT_TOO_LONG
                                           : copy_text(room, {static_cast<std::uint32_t>(length), 0, state.key.bytes});
}

status key_rows(batch_of<VARBINARY> batch, column_of<VARCHAR> text, nls_collation* order) {
    return with_scratch(batch.environment, batch.memory, string_source_file, [&](scratch& full_text) {
        return with_scratch(batch.environment, batch.memory, string_source_file, [&](scratch& key) {
            sort_state state{order, full_text, key};
            return binary_rows<nlssort>(batch, text, shared(state));
        });
    });
}

status key_rows(batch_of<VARBINARY> batch, column_of<VARCHAR> text, const bifun_string& nls) {
    nls_collation* order = nullptr;
    const status opened = nls_sort_open(batch.environment, nls.data, nls.length, &order);
    if (opened < BIFUN_OK) {
        return fail_batch(batch, opened);
    }
    const status outcome = key_rows(batch, text, order);
    nls_sort_close(batch.environment, order);
    return outcome;
}

} // namespace

status entry::bnlssort_def_a_str(batch_of<VARBINARY> batch, column_of<VARCHAR> text) { return key_rows(batch, text, bifun_string{}); }
status entry::bnlssort_av_str(batch_of<VARBINARY> batch, column_of<VARCHAR> text, constant_of<VARCHAR> nls) {
    return with_nls_text(batch, nls, [&](const bifun_string& given) { return key_rows(batch, text, given); });
}

} // namespace bifun
