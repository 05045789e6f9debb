// LENGTH and LENGTHB: characters or bytes of the stored text, with or without its trailing blanks. The length of an empty text is NULL, or
// 0 in the compatible mode for that.

#include "bop/bifun_str/entry_points.h"
#include "bop/bifun_str/text.h"
#include "engine/large_objects.h"

namespace bifun {
namespace {

constexpr std::uint32_t empty_texts_have_length_zero = 3;

// What the length of an empty text is.
value_or_null length_of_empty() {
    return global_bifun_var.compatible_mode == empty_texts_have_length_zero ? value_or_null() : value_or_null::null();
}

// A length that is no INT fails (-6102).
value_or_null length_of_text(std::uint64_t units, const value_or_null& of_empty, std::int32_t& length) {
    length = static_cast<std::int32_t>(units);
    if (units - 1 < INT32_MAX) [[likely]] {
        return {};
    }
    return units == 0 ? of_empty : value_or_null(BIFUN_NUMERIC_OVERFLOW);
}

value_or_null length(const text_operations& texts, const value_or_null& of_empty, const bifun_string& text, std::int32_t& characters) {
    return length_of_text(stored_characters(texts, text), of_empty, characters);
}

value_or_null length_space(const text_operations& texts, const value_or_null& of_empty, const bifun_string& text,
                           std::int32_t& characters) {
    return length_of_text(std::uint64_t{stored_characters(texts, text)} + text.trailing_blanks, of_empty, characters);
}

// Of ASCII there is nothing to count.
bool is_usual(const text_operations& texts, const value_or_null& /*of_empty*/, const bifun_string& text) {
    return (static_cast<std::uint32_t>(is_told_by_record(texts, text)) & static_cast<std::uint32_t>(text.length != 0)) != 0;
}
void length_of_ascii(const text_operations& /*texts*/, const value_or_null& /*of_empty*/, const bifun_string& text,
                     std::int32_t& characters) {
    characters = static_cast<std::int32_t>(text.length);
}
void length_space_of_ascii(const text_operations& /*texts*/, const value_or_null& /*of_empty*/, const bifun_string& text,
                           std::int32_t& characters) {
    characters = static_cast<std::int32_t>(text.length + text.trailing_blanks);
}

value_or_null lengthb(const value_or_null& of_empty, const bifun_string& text, std::int32_t& bytes) {
    return length_of_text(full_length(text), of_empty, bytes);
}

using large_object = const bifun_large_object*;
using environment = bifun_environment*;

value_or_null lengthb_of_large_object(const environment& environment, const value_or_null& of_empty, const large_object& object,
                                      std::int64_t& bytes) {
    const status found = nblob_get_length(environment, object, &bytes);
    return found >= BIFUN_OK && bytes == 0 ? of_empty : value_or_null(found);
}

} // namespace

status entry::blength_a_str(batch_of<INT> batch, column_of<VARCHAR> text) {
    return set_usual_rows<is_usual, length_of_ascii, length>(batch, texts_of(text), fixed(length_of_empty()), text);
}
status entry::blength_space_a_str(batch_of<INT> batch, column_of<VARCHAR> text) {
    return set_usual_rows<is_usual, length_space_of_ascii, length_space>(batch, texts_of(text), fixed(length_of_empty()), text);
}
status entry::blengthb_a_str(batch_of<INT> batch, column_of<VARCHAR> text) {
    return set_rows<lengthb>(batch, fixed(length_of_empty()), text);
}
status entry::blengthb_blob_a_str(batch_of<BIGINT> batch, column_of<BLOB> object) {
    return set_rows<lengthb_of_large_object>(batch, fixed(batch.environment), fixed(length_of_empty()), object);
}

} // namespace bifun
