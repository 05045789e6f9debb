// SPDX-License-Identifier: Apache-2.0
// UPPER, LOWER and INITCAP. ASCII and what letters_of_utf8.h knows is changed here; other texts by the engine, which knows the letters of
// its character set.

#include "engine/letter_case.h"

#include "bop/bifun_str/ascii_changes.h"
#include "bop/bifun_str/block_changes.h"
#include "bop/bifun_str/entry_points.h"
#include "bop/bifun_str/letters_of_utf8.h"
#include "bop/frame/nls_text.h"

namespace bifun {
namespace {

struct case_state {
    std::int32_t rules;
    scratch& changed;
};

template <nls_case to> constexpr ascii_case ascii_case_of = to == NLS_CASE_UPPER ? ascii_case::to_upper : ascii_case::to_lower;

// Written into scratch memory first: the engine may need more room than the result takes.
template <nls_case to>
[[gnu::noinline]] status change_other_text(const text_operations& texts, const bifun_string& value, case_state& state, string_room& room) {
    std::uint8_t* const bytes = reserve(state.changed, std::uint64_t{value.length} * NLS_CASE_GROWTH);
    if (bytes == nullptr) {
        return BIFUN_OUT_OF_MEMORY;
    }
    if constexpr (to != NLS_CASE_INITIAL) {
        if (state.rules == NLS_CASE_ROOT && is_well_formed(texts, value) &&
            change_letters<ascii_case_of<to>>(bytes, value.data, value.length)) {
            return copy_text(room, {value.length, value.trailing_blanks, bytes});
        }
    }
    const std::uint64_t length = nls_change_case(to, state.rules, value.data, value.length, bytes);
    return length > UINT32_MAX ? BIFUN_OUT_OF_MEMORY : copy_text(room, {static_cast<std::uint32_t>(length), value.trailing_blanks, bytes});
}

template <nls_case to> status change_case(const text_operations& texts, const bifun_string& value, case_state& state, string_room& room) {
    if (value.length != 0 && (state.rules != NLS_CASE_ROOT || !has_single_bytes(texts, value))) [[unlikely]] {
        return change_other_text<to>(texts, value, state, room);
    }
    text_writer text;
    const status made = make_room(room, value.length, value.trailing_blanks, text);
    if (made != BIFUN_OK || value.length == 0) {
        return made;
    }
    if constexpr (to == NLS_CASE_INITIAL) {
        append_with_initials(text, value.data, value.length);
    } else {
        append_in_case<ascii_case_of<to>>(text, value.data, value.length);
    }
    return BIFUN_OK;
}

template <nls_case to> status case_rows(batch_of<VARCHAR> batch, column_of<VARCHAR> text, std::int32_t rules) {
    return with_scratch(batch.environment, batch.memory, string_source_file, [&](scratch& changed) {
        case_state state{rules, changed};
        if constexpr (to == NLS_CASE_INITIAL) {
            return string_rows<change_case<to>>(batch, texts_of(text), text, shared(state));
        } else {
            constexpr auto of_ascii = change_ascii_case<ascii_case_of<to>>;
            constexpr auto of_utf8 = change_letters<ascii_case_of<to>>;
            return rules == NLS_CASE_ROOT ? changed_text_rows<of_ascii, of_utf8, change_case<to>>(batch, text, shared(state))
                                          : string_rows<change_case<to>>(batch, texts_of(text), text, shared(state));
        }
    });
}

template <nls_case to> status case_rows(batch_of<VARCHAR> batch, column_of<VARCHAR> text, constant_of<VARCHAR> nls) {
    return with_nls_text(batch, nls, [&](const bifun_string& given) {
        std::int32_t rules = NLS_CASE_ROOT;
        const status read = nls_case_rules_of(given.data, given.length, &rules);
        return read < BIFUN_OK ? fail_batch(batch, read) : case_rows<to>(batch, text, rules);
    });
}

} // namespace

status entry::bupper_a_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text) {
    return case_rows<NLS_CASE_UPPER>(batch, text, NLS_CASE_ROOT);
}
status entry::bupper_av_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text, constant_of<VARCHAR> nls) {
    return case_rows<NLS_CASE_UPPER>(batch, text, nls);
}
status entry::blower_a_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text) {
    return case_rows<NLS_CASE_LOWER>(batch, text, NLS_CASE_ROOT);
}
status entry::blower_av_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text, constant_of<VARCHAR> nls) {
    return case_rows<NLS_CASE_LOWER>(batch, text, nls);
}
status entry::binitcap_a_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text) {
    return case_rows<NLS_CASE_INITIAL>(batch, text, NLS_CASE_ROOT);
}
status entry::binitcap_av_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text, constant_of<VARCHAR> nls) {
    return case_rows<NLS_CASE_INITIAL>(batch, text, nls);
}

} // namespace bifun
