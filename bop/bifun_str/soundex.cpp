// SPDX-License-Identifier: Apache-2.0
// SOUNDEX and DIFFERENCE: how English names sound. Knuth, The Art of Computer Programming, volume 3, section 6.

#include <bit>

#if defined(__BMI2__)
#include <immintrin.h>
#endif

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

// What a byte is: a letter with a digit from 1 to 6; one without, which parts two of the same digit; or passed over.
constexpr std::uint8_t no_digit = 0;
constexpr std::uint8_t h_or_w = 7;
constexpr std::uint8_t no_letter = 8;

struct byte_classes {
    std::uint8_t of[256];
};

constexpr byte_classes make_byte_classes() {
    constexpr char digits[] = "01230127022455012623017202"; // of A to Z
    byte_classes classes{};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        const std::uint32_t letter = (byte & 0xDFU) - 'A';
        classes.of[byte] = byte < 0x80 && letter < 26 ? static_cast<std::uint8_t>(digits[letter] - '0') : no_letter;
    }
    return classes;
}

constexpr byte_classes classes = make_byte_classes();

// Nobody can tell whether a letter gives a digit, so no branch asks.
void add_letter(soundex_code& code, std::uint8_t byte, std::uint8_t& last_digit) {
    const std::uint8_t digit = classes.of[byte];
    const bool is_passed_over = digit >= h_or_w;
    const bool is_added = !is_passed_over & (digit != no_digit) & (digit != last_digit);
    code.characters[code.length] = static_cast<std::uint8_t>('0' + digit);
    code.length += is_added ? 1 : 0;
    last_digit = is_passed_over ? last_digit : digit;
}

#if defined(__BMI2__)

// Four bits for each of 16 bytes: its class.
std::uint64_t classes_of(byte_block bytes) {
    const byte_block upper = bytes & repeated(0xDF);
    const auto of_column = [&](std::uint8_t first) {
        const byte_block found = looked_up(load_block(classes.of + first), upper & repeated(0x0F));
        return found & where_equal(upper & repeated(0xF0), repeated(first));
    };
    const byte_block has_no_class =
        ~(where_equal(upper & repeated(0xF0), repeated(0x40)) | where_equal(upper & repeated(0xF0), repeated(0x50)));
    const byte_block found = of_column(0x40) | of_column(0x50) | (has_no_class & repeated(no_letter));
    const word_block halves = reinterpret_cast<word_block>(found);
    const word_block pairs = halves | halves >> 4; // in every second byte
    const auto bytes_of_pairs = reinterpret_cast<byte_block>(pairs);
    return first_word(__builtin_shufflevector(bytes_of_pairs, bytes_of_pairs, 0, 2, 4, 6, 8, 10, 12, 14, 0, 2, 4, 6, 8, 10, 12, 14));
}

// From the first 16 bytes, all at once. Returns whether these tell the code.
bool find_code(const bifun_string& text, soundex_code& code) {
    constexpr std::uint64_t ones = 0x1111111111111111;
    const auto whole = [](std::uint64_t lowest_bits) { return lowest_bits * 0xF; };
    const auto where_not_zero = [](std::uint64_t digits) { return (digits | digits >> 1 | digits >> 2) & ones; };
    const bool is_all = text.length <= block_length;
    std::uint64_t digits = classes_of(load_part_of_block(text.data, is_all ? text.length : block_length));
    const std::uint64_t there = text.length < block_length ? (std::uint64_t{1} << (4 * text.length)) - 1 : ~std::uint64_t{0};
    const std::uint64_t letters = ~(digits >> 3) & ones & there;
    code = {{}, 0};
    if (letters == 0) {
        return is_all;
    }
    const std::uint64_t first = letters & (~letters + 1);
    const std::uint64_t h_and_w = digits & digits >> 1 & digits >> 2 & letters;
    digits &= ~whole(first & h_and_w);
    const std::uint64_t counted = _pext_u64(digits, whole((letters & ~h_and_w) | first));
    const std::uint64_t added = where_not_zero(counted ^ counted << 4) & where_not_zero(counted) & ~std::uint64_t{1};
    const std::uint64_t found = _pext_u64(counted, whole(added));
    code = {{static_cast<std::uint8_t>(text.data[std::countr_zero(first) / 4] & 0xDF)}, code_length};
    for (std::uint32_t i = 1; i < code_length; ++i) {
        code.characters[i] = static_cast<std::uint8_t>('0' + (found >> (4 * (i - 1)) & 0xF));
    }
    return is_all || found >> (4 * (code_length - 2)) != 0;
}

#else

bool find_code(const bifun_string& /*text*/, soundex_code& /*code*/) { return false; }

#endif

soundex_code code_of(const text_operations& texts, const bifun_string& text) {
    // Only in some character sets are letters parts of other characters.
    const bool bytes_are_characters = texts.utf8_is_unicode || has_single_bytes(texts, text);
    if (soundex_code found; bytes_are_characters && find_code(text, found)) {
        return found;
    }
    const auto step = [&](std::uint32_t offset) {
        return bytes_are_characters || text.data[offset] < 0x80 ? 1 : zq_mb_char_get_len_ex(text.data + offset, text.length - offset);
    };
    soundex_code code{{}, 0};
    std::uint32_t offset = 0;
    while (offset < text.length && classes.of[text.data[offset]] == no_letter) {
        offset += step(offset);
    }
    if (offset == text.length) {
        return code;
    }
    const std::uint8_t first = text.data[offset];
    const std::uint8_t first_class = classes.of[first];
    std::uint8_t last_digit = first_class == h_or_w ? no_digit : first_class;
    code = {{static_cast<std::uint8_t>(first & 0xDF)}, 1};
    for (++offset; offset < text.length && code.length < code_length; offset += step(offset)) {
        add_letter(code, text.data[offset], last_digit);
    }
    for (std::uint32_t i = code.length; i < code_length; ++i) {
        code.characters[i] = '0';
    }
    code.length = code_length;
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
