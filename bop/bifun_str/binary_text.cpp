// SPDX-License-Identifier: Apache-2.0
// CHARTOBIN, BINARY_TO_CHAR and TEXT_TO_CHAR: bytes as text of the database character set, and back.

#include "bop/bifun_str/conversion.h"
#include "bop/bifun_str/entry_points.h"
#include "bop/bifun_str/overlay.h"
#include "engine/large_objects.h"

namespace bifun {
namespace {

status chartobin(const bifun_string& text, column_space& room) {
    if (text.trailing_blanks == 0) {
        return take_text(room, text);
    }
    text_writer bytes;
    const status made = make_room(room, full_length(text), 0, bytes);
    if (made == BIFUN_OK) {
        append_full_text(bytes, text);
    }
    return made;
}

bool is_text(const text_operations& texts, const std::uint8_t* bytes, std::uint32_t length) {
    std::uint32_t characters = 0;
    return (texts.ascii_is_single_byte && is_ascii(bytes, length)) || are_valid_characters(bytes, length, characters);
}

status binary_to_char(const text_operations& texts, const bifun_string& bytes, string_room& room) {
    if (bytes.length > longest_built_text) {
        return BIFUN_RESULT_TOO_LONG;
    }
    return is_text(texts, bytes.data, bytes.length) ? take_text(room, {bytes.length, 0, bytes.data}) : BIFUN_CONVERSION_FAILED;
}

// ---- TEXT_TO_CHAR -----------------------------------------------------------------------------------------------------------

using large_object = const bifun_large_object*;

status read_all(bifun_environment* environment, large_object object, std::uint8_t* to, std::uint32_t length) {
    for (std::uint32_t done = 0; done < length;) {
        std::uint32_t read = 0;
        const status outcome = ntext_get_data(environment, object, done, to + done, length - done, &read);
        if (outcome < BIFUN_OK || read == 0 || read > length - done) {
            return outcome == BIFUN_OUT_OF_MEMORY ? outcome : BIFUN_UNREADABLE_TEXT;
        }
        done += read;
    }
    return BIFUN_OK;
}

status text_to_char(const text_operations& texts, const large_object& object, string_room& room) {
    bifun_environment* const environment = room.batch.environment;
    std::int64_t length = 0;
    const status measured = nblob_get_length(environment, object, &length);
    if (measured < BIFUN_OK) {
        return measured;
    }
    if (length > longest_converted_text) {
        return BIFUN_CHARACTER_RESULT_TOO_LONG;
    }
    const auto size = static_cast<std::uint32_t>(length);
    text_writer text;
    const status made = make_room(room, size, 0, text);
    if (made != BIFUN_OK || size == 0) {
        return made;
    }
    const status read = read_all(environment, object, text.at, size);
    return read != BIFUN_OK || is_text(texts, text.at, size) ? read : BIFUN_UNREADABLE_TEXT;
}

status text_to_char_of_text(const bifun_string& text, string_room& room) {
    return full_length(text) > longest_converted_text ? BIFUN_CHARACTER_RESULT_TOO_LONG : take_text(room, text);
}

} // namespace

status entry::bchartobin_a_str(batch_of<VARBINARY> batch, column_of<VARCHAR> text) { return binary_rows<chartobin>(batch, text); }

status entry::bbinary_to_char_a_str(batch_of<VARCHAR> batch, column_of<VARBINARY> bytes) {
    return string_rows<binary_to_char>(batch, fixed(text_operations_of_engine()), bytes);
}

status entry::btext_to_char_a_str(batch_of<VARCHAR> batch, column_of<BLOB> text) {
    return string_rows<text_to_char>(batch, fixed(text_operations_of_engine()), text);
}

status entry::btext_to_char_varchar_a_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text) {
    return string_rows<text_to_char_of_text>(batch, text);
}

} // namespace bifun
