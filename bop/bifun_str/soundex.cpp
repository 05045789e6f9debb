// SPDX-License-Identifier: Apache-2.0
// SOUNDEX and DIFFERENCE: how English names sound. Knuth, The Art of Computer Programming, volume 3, section 6.

#include "bop/bifun_str/entry_points.h"
#include "bop/bifun_str/text.h"

namespace bifun {
namespace {

constexpr std::uint32_t code_length = 4;

// A letter and three digits, or nothing.
struct soundex_code {
    std::uint8_t characters[code_length];
    std::uint32_t length;
};

// The digits of the letters. Letters without a digit part two of the same one, but for H and W.
constexpr std::uint8_t digits[] = "01230120022455012623010202";
constexpr std::uint8_t no_digit = '0';

void add_letter(soundex_code& code, std::uint8_t letter, std::uint8_t& last_digit) {
    const std::uint8_t digit = digits[letter - 'A'];
    if (code.length == 0) {
        code.characters[code.length++] = letter;
        last_digit = digit;
    } else if (letter != 'H' && letter != 'W') {
        if (digit != no_digit && digit != last_digit) {
            code.characters[code.length++] = digit;
        }
        last_digit = digit;
    }
}

soundex_code code_of(const text_operations& texts, const bifun_string& text) {
    soundex_code code{{}, 0};
    std::uint8_t last_digit = no_digit;
    // Only in some character sets are letters parts of other characters.
    const bool bytes_are_characters = texts.utf8_is_unicode || has_single_bytes(texts, text);
    for (std::uint32_t offset = 0; offset < text.length && code.length < code_length;) {
        const std::uint8_t letter = text.data[offset] & 0xDF;
        const bool is_letter = text.data[offset] < 0x80 && letter >= 'A' && letter <= 'Z';
        if (is_letter) {
            add_letter(code, letter, last_digit);
        }
        offset += is_letter || bytes_are_characters ? 1 : zq_mb_char_get_len_ex(text.data + offset, text.length - offset);
    }
    while (code.length != 0 && code.length < code_length) {
        code.characters[code.length++] = '0';
    }
    return code;
}

status soundex(const text_operations& texts, const bifun_string& text, bounded_text<code_length>& result) {
    const soundex_code code = code_of(texts, text);
    std::memcpy(result.bytes, code.characters, code_length);
    result.length = code.length;
    return BIFUN_OK;
}

std::int32_t difference(const text_operations& texts, const bifun_string& a, const bifun_string& b) {
    const soundex_code code_of_a = code_of(texts, a);
    const soundex_code code_of_b = code_of(texts, b);
    std::int32_t equal = 0;
    for (std::uint32_t i = 0; i < code_length; ++i) {
        equal += code_of_a.characters[i] == code_of_b.characters[i] ? 1 : 0;
    }
    return equal;
}

template <class A, class B> status difference_rows(batch_of<INT> batch, A a, B b) {
    return set_rows<difference>(batch, fixed(text_operations_of_engine()), a, b);
}

} // namespace

status entry::bsoundex_a_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text) {
    return string_rows<soundex>(batch, fixed(text_operations_of_engine()), text);
}

status entry::bdifference_aa_str(batch_of<INT> batch, column_of<VARCHAR> a, column_of<VARCHAR> b) { return difference_rows(batch, a, b); }
status entry::bdifference_av_str(batch_of<INT> batch, column_of<VARCHAR> a, constant_of<VARCHAR> b) { return difference_rows(batch, a, b); }
status entry::bdifference_va_str(batch_of<INT> batch, constant_of<VARCHAR> a, column_of<VARCHAR> b) { return difference_rows(batch, a, b); }

} // namespace bifun
