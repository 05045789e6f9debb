// SPDX-License-Identifier: Apache-2.0
// OVERLAY and INSSTR: a range of characters, by constants, gives way to a text.

#include "bop/bifun_str/overlay.h"
#include "bop/bifun_str/entry_points.h"

namespace bifun {
namespace {

status overlay(const text_operations& texts, const bifun_string& source, const bifun_string& replacement, const overlaid_range& range,
               string_room& room) {
    const overlay_parts parts = place_overlay(texts, source, replacement, range);
    const std::uint64_t length = length_of_overlay(source, replacement, parts);
    if (length + parts.blanks_behind > longest_built_text) {
        return BIFUN_INVALID_CHARACTER_STRING;
    }
    text_writer text;
    const status made = make_room(room, length, parts.blanks_behind, text);
    if (made == BIFUN_OK && length != 0) {
        append_overlay(text, source, replacement, parts);
    }
    return made;
}

// `negative_length` is the status of a range that ends before it begins.
template <class Source, class Replacement>
status overlay_rows(batch_of<VARCHAR> batch, Source source, Replacement replacement, constant_of<INT> given_position,
                    constant_argument<std::int32_t> length, status negative_length) {
    const auto position = argument(given_position);
    if (is_null_constant(argument(source)) || is_null_constant(argument(replacement)) || !position.present || !length.present) {
        return null_rows(batch);
    }
    if (position.value < 1) {
        return fail_batch(batch, BIFUN_ARGUMENT_OUT_OF_DOMAIN);
    }
    if (negative_length < BIFUN_OK && length.value < 0) {
        return fail_batch(batch, negative_length);
    }
    const overlaid_range range{static_cast<std::uint32_t>(position.value), static_cast<std::uint32_t>(length.value)};
    return string_rows<overlay>(batch, texts_of(source), source, replacement, constant_argument{range, true});
}

template <class Source, class Replacement>
status overlay_rows(batch_of<VARCHAR> batch, Source source, Replacement replacement, constant_of<INT> position) {
    const constant_argument<std::int32_t> none{static_cast<std::int32_t>(length_of_replacement), true};
    return overlay_rows(batch, source, replacement, position, none, BIFUN_OK);
}

template <class Source, class Replacement>
status overlay_rows(batch_of<VARCHAR> batch, Source source, Replacement replacement, constant_of<INT> position, constant_of<INT> length) {
    return overlay_rows(batch, source, replacement, position, argument(length), BIFUN_NEGATIVE_OVERLAY_LENGTH);
}

template <class Source, class Inserted>
status insstr(batch_of<VARCHAR> batch, Source source, constant_of<INT> position, constant_of<INT> length, Inserted inserted) {
    return overlay_rows(batch, source, inserted, position, argument(length), BIFUN_ARGUMENT_OUT_OF_DOMAIN);
}

} // namespace

status entry::boverlay_vav_str(batch_of<VARCHAR> batch, constant_of<VARCHAR> source, column_of<VARCHAR> replacement,
                               constant_of<INT> position) {
    return overlay_rows(batch, source, replacement, position);
}
status entry::boverlay_avv_str(batch_of<VARCHAR> batch, column_of<VARCHAR> source, constant_of<VARCHAR> replacement,
                               constant_of<INT> position) {
    return overlay_rows(batch, source, replacement, position);
}
status entry::boverlay_aav_str(batch_of<VARCHAR> batch, column_of<VARCHAR> source, column_of<VARCHAR> replacement,
                               constant_of<INT> position) {
    return overlay_rows(batch, source, replacement, position);
}
status entry::boverlay_vavv_str(batch_of<VARCHAR> batch, constant_of<VARCHAR> source, column_of<VARCHAR> replacement,
                                constant_of<INT> position, constant_of<INT> length) {
    return overlay_rows(batch, source, replacement, position, length);
}
status entry::boverlay_avvv_str(batch_of<VARCHAR> batch, column_of<VARCHAR> source, constant_of<VARCHAR> replacement,
                                constant_of<INT> position, constant_of<INT> length) {
    return overlay_rows(batch, source, replacement, position, length);
}
status entry::boverlay_aavv_str(batch_of<VARCHAR> batch, column_of<VARCHAR> source, column_of<VARCHAR> replacement,
                                constant_of<INT> position, constant_of<INT> length) {
    return overlay_rows(batch, source, replacement, position, length);
}

status entry::binsstr_avva_str(batch_of<VARCHAR> batch, column_of<VARCHAR> source, constant_of<INT> position, constant_of<INT> length,
                               column_of<VARCHAR> inserted) {
    return insstr(batch, source, position, length, inserted);
}
status entry::binsstr_vvva_str(batch_of<VARCHAR> batch, constant_of<VARCHAR> source, constant_of<INT> position, constant_of<INT> length,
                               column_of<VARCHAR> inserted) {
    return insstr(batch, source, position, length, inserted);
}
status entry::binsstr_avvv_str(batch_of<VARCHAR> batch, column_of<VARCHAR> source, constant_of<INT> position, constant_of<INT> length,
                               constant_of<VARCHAR> inserted) {
    return insstr(batch, source, position, length, inserted);
}

} // namespace bifun
