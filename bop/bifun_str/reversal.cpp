// SPDX-License-Identifier: Apache-2.0
// REVERSE. The blanks at the end come to stand in front, where they are written.

#include "bop/bifun_str/ascii_changes.h"
#include "bop/bifun_str/entry_points.h"
#include "bop/bifun_str/text.h"

namespace bifun {
namespace {

status reverse(const text_operations& texts, const bifun_string& value, string_room& room) {
    const bool has_characters = value.length != 0;
    text_writer text;
    const status made = make_room(room, has_characters ? full_length(value) : 0, has_characters ? 0 : value.trailing_blanks, text);
    if (made != BIFUN_OK || !has_characters) {
        return made;
    }
    append(text, blank, value.trailing_blanks);
    if (has_single_bytes(texts, value)) [[likely]] {
        append_reversed(text, value.data, value.length);
        return BIFUN_OK;
    }
    std::uint8_t* const bytes = text.at;
    append(text, value.data, value.length);
    return zq_mbsrev_with_compatible_mode(bytes, value.length, global_bifun_var.compatible_mode) == nullptr ? BIFUN_INVALID_CHARACTER_STRING
                                                                                                            : BIFUN_OK;
}

} // namespace

status entry::breverse_a_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text) {
    return string_rows<reverse>(batch, fixed(text_operations_of_engine()), text);
}

} // namespace bifun
