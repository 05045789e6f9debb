// TRIM, LTRIM and RTRIM. The trailing blanks of a value are a count, so trimming them is no work; what is left of the stored bytes is told
// by a part of them. The trailing side is trimmed on reversed bytes, because a character set can be read from the left only; text of
// single-byte characters is trimmed where it lies.

#include <array>

#include "bop/bifun_str/text.h"

namespace bifun {
namespace {

// The mode of TRIM, as the parser numbers its keywords. Any other number is for both sides.
enum trim_mode : std::int32_t { trim_leading = 579, trim_trailing = 580 };

struct byte_set {
    std::array<std::uint64_t, 4> bits;
};

bool contains(const byte_set& set, std::uint8_t byte) { return (set.bits[byte >> 6] >> (byte & 63) & 1) != 0; }

// The characters to trim, and what can be told of them before a row is seen.
struct trim_set {
    bifun_string characters;
    bool has_whitespace;   // among the stored bytes
    bool has_single_bytes; // and at least one
    byte_set bytes;        // where it has_single_bytes
};

trim_set make_trim_set(const bifun_string& characters, bool ascii) {
    trim_set set{characters, false, ascii && characters.length != 0, {}};
    for (std::uint32_t i = 0; i < characters.length; ++i) {
        const std::uint8_t byte = characters.data[i];
        set.has_whitespace |= is_whitespace(byte);
        set.has_single_bytes &= byte < 0x80;
        set.bytes.bits[byte >> 6] |= std::uint64_t{1} << (byte & 63);
    }
    return set;
}

constexpr trim_set blank_set{{0, 1, nullptr}, false, false, {}};

bool is_one_character(const bifun_string& set) {
    const std::uint32_t stored = set.length <= 1 ? set.length : zq_mbstrlen_ex(set.data, set.length);
    return std::uint64_t{stored} + set.trailing_blanks == 1;
}

void drop_first(bifun_string& text, std::uint32_t count) {
    text.data += count;
    text.length -= count;
}

// ---- one side of the stored bytes --------------------------------------------------------------------------------------
//
// What asks the engine takes and returns values, so that those of the loop stay in registers.

[[gnu::noinline]] bifun_string trim_left_of_any_text(bifun_string text, const trim_set& set) {
    const std::uint8_t* first = text.data;
    trim_left(set.characters.data, set.characters.length, &first, &text.length);
    text.data += first - text.data;
    return text;
}

[[gnu::noinline]] bifun_string trim_left_blanks_of_any_text(bifun_string text) {
    const std::uint8_t* first = text.data;
    trim_left_space(&first, &text.length);
    text.data += first - text.data;
    return text;
}

template <class Bytes> INLINED inline void trim_stored_left(Bytes bytes, bool ascii, bifun_string& text, const trim_set& set) {
    if (!set.has_single_bytes || !has_single_bytes(bytes, ascii, text)) {
        text = trim_left_of_any_text(text, set);
        return;
    }
    if (set.characters.length == 1) {
        return drop_first(text, Bytes::leading(set.characters.data[0], text.data, text.length));
    }
    while (text.length != 0 && contains(set.bytes, text.data[0])) {
        drop_first(text, 1);
    }
}

struct right_trim_result {
    std::uint32_t length;
    status outcome;
};

// The bytes of the argument are reversed and put back. Nothing is to be done for an empty text.
[[gnu::noinline]] right_trim_result trim_right_of_any_text(bifun_string text, const trim_set& set) {
    if (text.length == 0) {
        return {0, BIFUN_OK};
    }
    if (zq_mbsrev_ex(text.data, text.length) == nullptr) {
        return {0, BIFUN_INVALID_CHARACTER_STRING};
    }
    const std::uint8_t* first = text.data;
    std::uint32_t rest = text.length;
    trim_left(set.characters.data, set.characters.length, &first, &rest);
    if (zq_mbsrev_ex(text.data, text.length) == nullptr) {
        return {0, BIFUN_INVALID_CHARACTER_STRING};
    }
    return {rest, BIFUN_OK};
}

template <class Bytes> INLINED inline status trim_stored_right(Bytes bytes, bool ascii, bifun_string& text, const trim_set& set) {
    if (!set.has_single_bytes || !has_single_bytes(bytes, ascii, text)) {
        const right_trim_result trimmed = trim_right_of_any_text(text, set);
        text.length = trimmed.length;
        return trimmed.outcome;
    }
    if (set.characters.length == 1) {
        text.length -= Bytes::trailing(set.characters.data[0], text.data, text.length);
        return BIFUN_OK;
    }
    while (text.length != 0 && contains(set.bytes, text.data[text.length - 1])) {
        --text.length;
    }
    return BIFUN_OK;
}

// ---- the kernels: `text` is what is left of the value --------------------------------------------------------------------

struct btrim_process {
    template <class Bytes> INLINED status operator()(Bytes bytes, bool ascii, bifun_string& text, const trim_set& set) const {
        // Most texts begin with a letter.
        const bool begins_with_letter = text.length != 0 && text.data[0] > blank;
        const std::uint32_t whitespace = begins_with_letter ? 0 : Bytes::leading_whitespace(text.data, text.length);
        if (set.characters.trailing_blanks != 0) {
            drop_first(text, whitespace);
            text.trailing_blanks = 0;
            return BIFUN_OK;
        }
        if (whitespace == 0) {
            trim_stored_left(bytes, ascii, text, set);
            if (text.length == 0) {
                return BIFUN_OK;
            }
        }
        // A text with trailing blanks ends in a character that is not in the set.
        return text.trailing_blanks != 0 ? BIFUN_OK : trim_stored_right(bytes, ascii, text, set);
    }
};

struct bltrim_process {
    template <class Bytes> INLINED status operator()(Bytes bytes, bool ascii, bifun_string& text, const trim_set& set) const {
        const bifun_string& characters = set.characters;
        if (is_empty(text) || is_empty(characters)) {
            return BIFUN_OK;
        }
        if (characters.length == 0) {
            if (text.length == 0) {
                text.trailing_blanks = 0;
            } else if (ascii) {
                drop_first(text, Bytes::leading(blank, text.data, text.length));
            } else if (text.data[0] == blank) {
                text = trim_left_blanks_of_any_text(text);
            }
            return BIFUN_OK;
        }
        const std::uint32_t whitespace = Bytes::leading_whitespace(text.data, text.length);
        if (characters.trailing_blanks != 0 || set.has_whitespace) {
            drop_first(text, whitespace);
            trim_stored_left(bytes, ascii, text, set);
            if (text.length == 0) {
                text.trailing_blanks = 0;
            }
            return BIFUN_OK;
        }
        if (whitespace != 0) {
            return row_as_it_was;
        }
        trim_stored_left(bytes, ascii, text, set);
        return BIFUN_OK;
    }
};

struct brtrim_process {
    template <class Bytes> INLINED status operator()(Bytes bytes, bool ascii, bifun_string& text, const trim_set& set) const {
        const bifun_string& characters = set.characters;
        const bool is_blank = characters.length == 0 && characters.trailing_blanks != 0;
        if (!is_blank) {
            const bool ends_outside = characters.trailing_blanks == 0 && !set.has_whitespace && text.trailing_blanks != 0;
            if (is_empty(text) || is_empty(characters) || ends_outside) {
                return BIFUN_OK;
            }
            const status trimmed = trim_stored_right(bytes, ascii, text, set);
            if (trimmed < BIFUN_OK) {
                return trimmed;
            }
        }
        text.trailing_blanks = 0;
        return BIFUN_OK;
    }
};

// ---- batches -------------------------------------------------------------------------------------------------------------

// LTRIM and RTRIM, and every TRIM whose set is one character.
template <class Kernel, class... Constants>
status trim_rows(const batch& batch, const Kernel& kernel, const trim_set& set, column text, const Constants&... constants) {
    return with_byte_operations([&](auto bytes) INLINED -> status {
        const bool ascii = ascii_is_single_byte();
        return attempt_string_rows(
            batch, bytes,
            [bytes, ascii, &kernel, &set](bifun_string& rest, const bifun_string& value, const auto&...) INLINED -> status {
                rest = value;
                return kernel(bytes, ascii, rest, set);
            },
            string(text), constants...);
    });
}

template <class Kernel, class Text, class... Constants>
status trim_rows_by_column(const batch& batch, const Kernel& kernel, Text text, column set, const Constants&... constants) {
    return with_byte_operations([&](auto bytes) INLINED -> status {
        const bool ascii = ascii_is_single_byte();
        return attempt_string_rows(
            batch, bytes,
            [bytes, ascii, kernel](bifun_string& rest, const bifun_string& value, const bifun_string& characters,
                                   const auto&...) -> status {
                rest = value;
                return kernel(bytes, ascii, rest, make_trim_set(characters, ascii));
            },
            string(text), string(set), constants...);
    });
}

template <class Kernel> status trim_rows_by_constant(const batch& batch, const Kernel& kernel, column text, string_constant set) {
    const constant_argument<bifun_string> characters = string(set);
    return trim_rows(batch, kernel, make_trim_set(characters.value, ascii_is_single_byte()), text, characters);
}

// Calls `body` with the kernel of a mode.
template <class Body> status with_trim_kernel(const constant_argument<std::int32_t>& mode, const Body& body) {
    switch (mode.value) {
    case trim_leading:
        return body(bltrim_process{});
    case trim_trailing:
        return body(brtrim_process{});
    default:
        return body(btrim_process{});
    }
}

// A kernel for a set that must be one character, or empty.
template <class Kernel> struct of_one_character {
    template <class Bytes> INLINED status operator()(Bytes bytes, bool ascii, bifun_string& text, const trim_set& set) const {
        if (is_empty(text) || is_empty(set.characters)) {
            return BIFUN_OK;
        }
        return is_one_character(set.characters) ? Kernel{}(bytes, ascii, text, set) : BIFUN_TRIM_SET_NOT_ONE_CHARACTER;
    }
};

template <class Text> status trim_by_column(const batch& batch, int_constant mode, Text text, column set) {
    return with_trim_kernel(integer(mode), [&]<class Kernel>(Kernel /*kernel*/) {
        return trim_rows_by_column(batch, of_one_character<Kernel>{}, text, set, integer(mode));
    });
}

} // namespace
} // namespace bifun

using namespace bifun;

status btrim_vaa_str(BATCH_OF(int_constant mode, column text, column set)) { return trim_by_column(BATCH, mode, text, set); }
status btrim_vva_str(BATCH_OF(int_constant mode, string_constant text, column set)) { return trim_by_column(BATCH, mode, text, set); }

status btrim_vav_str(BATCH_OF(int_constant mode, column text, string_constant set)) {
    const batch batch = BATCH;
    const constant_argument<bifun_string> characters = string(set);
    if (characters.present && !is_one_character(characters.value)) {
        return fail_batch(batch, BIFUN_TRIM_SET_NOT_ONE_CHARACTER);
    }
    const trim_set prepared = make_trim_set(characters.value, ascii_is_single_byte());
    return with_trim_kernel(integer(mode),
                            [&](const auto& kernel) { return trim_rows(batch, kernel, prepared, text, characters, integer(mode)); });
}

status btrim_def_a_str(BATCH_OF(column text)) { return trim_rows(BATCH, btrim_process{}, blank_set, text); }
status bltrim_def_a_str(BATCH_OF(column text)) { return trim_rows(BATCH, bltrim_process{}, blank_set, text); }
status brtrim_def_a_str(BATCH_OF(column text)) { return trim_rows(BATCH, brtrim_process{}, blank_set, text); }

status bltrim_aa_str(BATCH_OF(column text, column set)) { return trim_rows_by_column(BATCH, bltrim_process{}, text, set); }
status bltrim_av_str(BATCH_OF(column text, string_constant set)) { return trim_rows_by_constant(BATCH, bltrim_process{}, text, set); }

status bltrim_va_str(BATCH_OF(string_constant text, column set)) {
    const batch batch = BATCH;
    const constant_argument<bifun_string> value = string(text);
    if (!value.present || !is_empty(value.value)) {
        return trim_rows_by_column(batch, bltrim_process{}, text, set);
    }
    // Nothing is left of nothing, whatever the sets are: they are not looked at.
    for (std::uint32_t row = 0; row < row_count; ++row) {
        null_flags(batch)[row] = 1;
        (void)bdta3_col_assign_str(environment, memory, result, row, nullptr, 0, 0);
    }
    result->no_nulls = 1;
    return BIFUN_OK;
}

status brtrim_aa_str(BATCH_OF(column text, column set)) { return trim_rows_by_column(BATCH, brtrim_process{}, text, set); }
status brtrim_av_str(BATCH_OF(column text, string_constant set)) { return trim_rows_by_constant(BATCH, brtrim_process{}, text, set); }
status brtrim_va_str(BATCH_OF(string_constant text, column set)) { return trim_rows_by_column(BATCH, brtrim_process{}, text, set); }
