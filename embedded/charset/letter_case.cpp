// SPDX-License-Identifier: Apache-2.0
#include "engine/letter_case.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <cstring>

#include "embedded/charset/case_mapping.h"
#include "embedded/charset/charset_choice.h"
#include "embedded/charset/charset_tables.h"
#include "embedded/charset/database_charset.h"
#include "embedded/collation/sort_name.h"
#include "engine/number_format.h"

namespace zqengine {
namespace {

constexpr std::uint32_t dot_above = 0x307;
constexpr std::uint32_t dotted_capital_i = 0x130;

struct located_character {
    std::uint32_t code_point;
    std::uint32_t length;
};

template <class Charset> located_character character_at(const std::uint8_t* text, std::uint32_t remaining) {
    const std::uint32_t length = Charset::length_of(text, remaining);
    if (length == 1) {
        return {*text < 0x80 ? *text : unknown_code_point, 1};
    }
    return {code_point_of(tables_of<Charset>(), text, length), length};
}

bool is_cased(std::uint32_t code_point) { return u_hasBinaryProperty(static_cast<UChar32>(code_point), UCHAR_CASED) != 0; }
bool is_passed_over(std::uint32_t code_point) { return u_hasBinaryProperty(static_cast<UChar32>(code_point), UCHAR_CASE_IGNORABLE) != 0; }

bool is_of_word(std::uint32_t code_point) {
    return (U_GET_GC_MASK(static_cast<UChar32>(code_point)) & (U_GC_L_MASK | U_GC_N_MASK | U_GC_M_MASK)) != 0;
}

// Whether a cased letter stands before a place, characters that cases pass over between. Places are asked for from the left on, so that no
// character is looked at twice.
struct cased_before {
    std::uint32_t offset = 0;
    bool found = false;
};

template <class Charset> bool has_cased_before(cased_before& before, const std::uint8_t* text, std::uint32_t place) {
    while (before.offset < place) {
        const located_character character = character_at<Charset>(text + before.offset, place - before.offset);
        if (!is_passed_over(character.code_point)) {
            before.found = is_cased(character.code_point);
        }
        before.offset += character.length;
    }
    return before.found;
}

template <class Charset> bool has_cased_behind(const std::uint8_t* text, std::uint32_t length) {
    for (std::uint32_t offset = 0; offset < length;) {
        const located_character character = character_at<Charset>(text + offset, length - offset);
        if (!is_passed_over(character.code_point)) {
            return is_cased(character.code_point);
        }
        offset += character.length;
    }
    return false;
}

// The dot that belongs to an I in front of the text: behind marks that are not above the letter.
struct found_dot {
    std::uint32_t offset;
    std::uint32_t length; // 0: none
};

template <class Charset> found_dot dot_of_i(const std::uint8_t* text, std::uint32_t length) {
    constexpr std::uint8_t above = 230;
    for (std::uint32_t offset = 0; offset < length;) {
        const located_character character = character_at<Charset>(text + offset, length - offset);
        if (character.code_point == dot_above) {
            return {offset, character.length};
        }
        const std::uint8_t combining_class = u_getCombiningClass(static_cast<UChar32>(character.code_point));
        if (combining_class == 0 || combining_class == above) {
            break;
        }
        offset += character.length;
    }
    return {0, 0};
}

// ---- UTF-8 without branches: which characters follow which is nothing that a processor could foresee ----

// How to read a character of up to three bytes, by the upper half of its first one. Where that begins none, no bytes fit.
struct utf8_form {
    std::uint32_t bits; // of the first byte that belong to the code point
    std::uint32_t shift;
    std::uint32_t least; // code point
    std::uint32_t continuing_mask;
    std::uint32_t continuing;
};

constexpr utf8_form one_byte{0x7F, 12, 0, 0, 0};
constexpr utf8_form two_bytes{0x1F, 6, 0x80, 0xC000, 0x8000};
constexpr utf8_form three_bytes{0x0F, 0, 0x800, 0xC0C000, 0x808000};
constexpr utf8_form other_bytes{0, 0, 0, 0, 1};
constexpr utf8_form utf8_forms[16] = {one_byte,    one_byte,    one_byte,    one_byte,    one_byte,  one_byte,  one_byte,    one_byte,
                                      other_bytes, other_bytes, other_bytes, other_bytes, two_bytes, two_bytes, three_bytes, other_bytes};

// By the upper half of the first byte, in a number of its own: where the next character begins is what the next step waits for.
constexpr std::uint32_t utf8_length(std::uint32_t first_byte) {
    constexpr std::uint64_t lengths = 0x1322'1111'1111'1111;
    return static_cast<std::uint32_t>(lengths >> (first_byte >> 2 & 0x3C)) & 0xF;
}

constexpr std::uint32_t utf8_word_length = 4;

// The bytes from a place on as a number, the first one the lowest; zeros behind the text, which has as many bytes at least.
inline std::uint32_t utf8_word_at(const std::uint8_t* text, std::uint32_t length, std::uint32_t offset) {
    const std::uint32_t begin = std::min(offset, length - utf8_word_length);
    std::uint32_t word;
    std::memcpy(&word, text + begin, utf8_word_length);
    return word >> (8 * (offset - begin));
}

// A text on its way into another case.
template <class Charset> struct case_change {
    const case_mapping<Charset>& mapping;
    const std::uint8_t* text;
    std::uint32_t length;
    std::uint8_t* written;
    bool is_turkic;
    cased_before before{};
    found_dot dot{}; // is not written

    void copy(const std::uint8_t* bytes, std::uint32_t count) {
        std::memcpy(written, bytes, count);
        written += count;
    }

    // What becomes of a character that has such a special mapping; it stays where the character set has none.
    void write_special(special_number number, const std::uint8_t* character, std::uint32_t character_length) {
        const special_mapping& special = mapping.specials[number];
        special.length != 0 ? copy(special.bytes, special.length) : copy(character, character_length);
    }

    [[nodiscard]] bool ends_word(std::uint32_t offset, std::uint32_t behind) {
        return has_cased_before<Charset>(before, text, offset) && !has_cased_behind<Charset>(text + behind, length - behind);
    }

    // One of more than one byte.
    void change_character(std::uint32_t offset, std::uint32_t character_length, full_case to) {
        const std::uint8_t* const character = text + offset;
        const std::uint32_t rank = Charset::rank(character, character_length);
        if (rank >= Charset::ranks) {
            change_supplementary(rank, character, character_length, to);
            return;
        }
        const std::uint32_t mapped = mapping.mapped[static_cast<std::size_t>(to)][rank];
        if (mapped == rank) {
            copy(character, character_length);
        } else if (mapped - case_mapping<Charset>::first_special < mapping.special_count) {
            auto number = static_cast<special_number>(mapped - case_mapping<Charset>::first_special);
            if (number == final_sigma && !ends_word(offset, offset + character_length)) {
                number = other_sigma;
            }
            write_special(number, character, character_length);
        } else {
            const std::uint32_t mapped_length = Charset::rank_length(mapped);
            Charset::write(mapped, written, mapped_length);
            written += mapped_length;
        }
    }

    void change_supplementary(std::uint32_t rank, const std::uint8_t* character, std::uint32_t character_length, full_case to) {
        copy(character, character_length);
        if (rank - Charset::ranks < 0x100000) {
            const std::uint32_t mapped = supplementary_in_case(0x10000 + (rank - Charset::ranks), to);
            Charset::write(Charset::ranks + (mapped - 0x10000), written - character_length, character_length);
        }
    }

    // Where Turkic rules differ. Returns whether they do.
    bool change_turkic(const located_character& character, std::uint32_t offset, full_case to) {
        constexpr std::uint8_t small_i = 'i';
        const std::uint8_t* const bytes = text + offset;
        if (to != full_case::lower) {
            if (character.code_point == small_i) {
                write_special(capital_dotted_i, bytes, 1);
            }
            return character.code_point == small_i;
        }
        if (character.code_point == 'I') {
            const std::uint32_t behind = offset + 1;
            dot = dot_of_i<Charset>(text + behind, length - behind);
            dot.offset += behind;
            dot.length != 0 ? copy(&small_i, 1) : write_special(small_dotless_i, bytes, 1);
            return true;
        }
        if (character.code_point == dotted_capital_i) {
            copy(&small_i, 1);
            return true;
        }
        return dot.length != 0 && dot.offset == offset;
    }

    void change(const located_character& character, std::uint32_t offset, full_case to) {
        if (is_turkic && change_turkic(character, offset, to)) {
            return;
        }
        if (character.length > 1) {
            change_character(offset, character.length, to);
        } else {
            const bool is_upper = to != full_case::lower;
            *written++ = fold_ascii(text[offset], is_upper ? letter_case::upper : letter_case::lower);
        }
    }

    std::uint32_t change_next(std::uint32_t offset, full_case to) {
        const located_character character = character_at<Charset>(text + offset, length - offset);
        change(character, offset, to);
        return character.length;
    }

    // The characters that begin before `end`. The result has room for four bytes behind what is written, as NLS_CASE_GROWTH gives as many
    // for every byte of the text.
    std::uint32_t change_by_words(std::uint32_t offset, std::uint32_t end, full_case to) {
        const std::uint32_t* const words = mapping.words[static_cast<std::size_t>(to)].data();
        const std::uint8_t* const from = text;
        const std::uint32_t text_length = length;
        std::uint8_t* next = written; // in a register: as a member it might be among the bytes that are written
        while (offset < end) {
            const std::uint32_t word = utf8_word_at(from, text_length, offset);
            const utf8_form& form = utf8_forms[(word & 0xFF) >> 4];
            const std::uint32_t code_point = ((word & form.bits) << 12 | (word >> 8 & 0x3F) << 6 | (word >> 16 & 0x3F)) >> form.shift;
            const std::uint32_t becomes = words[code_point];
            const bool is_usual = static_cast<int>((word & form.continuing_mask) == form.continuing) &
                                  static_cast<int>(code_point >= form.least) & static_cast<int>(becomes != 0);
            if (!is_usual) [[unlikely]] {
                written = next;
                offset += change_next(offset, to);
                next = written;
                continue;
            }
            std::memcpy(next, &becomes, sizeof becomes);
            next += becomes >> 24;
            offset += utf8_length(word & 0xFF);
        }
        written = next;
        return offset;
    }

    // All characters in one case; blocks of ASCII at once.
    void change_all(full_case to) {
        const letter_case of_ascii = to == full_case::upper ? letter_case::upper : letter_case::lower;
        for (std::uint32_t offset = 0; offset < length;) {
            const std::uint32_t ahead = std::min(length - offset, block_length);
            if (const byte_block block = ahead == block_length ? load_block(text + offset) : repeated(0x80);
                !is_turkic && is_ascii(block)) {
                store_block(written, fold_ascii(block, of_ascii));
                written += block_length;
                offset += block_length;
                continue;
            }
            if constexpr (Charset::rank_is_code_point) {
                if (!is_turkic && length >= utf8_word_length) {
                    offset = change_by_words(offset, offset + ahead, to);
                    continue;
                }
            }
            for (const std::uint32_t end = offset + ahead; offset < end;) {
                offset += change_next(offset, to);
            }
        }
    }

    void change_words() {
        bool is_in_word = false;
        for (std::uint32_t offset = 0; offset < length;) {
            const located_character character = character_at<Charset>(text + offset, length - offset);
            const bool is_letter = is_of_word(character.code_point);
            change(character, offset, is_letter && !is_in_word ? full_case::title : full_case::lower);
            is_in_word = is_letter;
            offset += character.length;
        }
    }
};

template <class Charset>
std::uint64_t change_text(Charset /*charset*/, std::int32_t to, bool is_turkic, const std::uint8_t* text, std::uint32_t length,
                          std::uint8_t* result) {
    case_change<Charset> change{
        .mapping = case_mapping_of<Charset>(), .text = text, .length = length, .written = result, .is_turkic = is_turkic};
    if (to == NLS_CASE_INITIAL) {
        change.change_words();
    } else {
        change.change_all(to == NLS_CASE_UPPER ? full_case::upper : full_case::lower);
    }
    return static_cast<std::uint64_t>(change.written - result);
}

std::uint64_t change_text(single_bytes /*charset*/, std::int32_t to, bool /*is_turkic*/, const std::uint8_t* text, std::uint32_t length,
                          std::uint8_t* result) {
    bool is_in_word = false;
    for (std::uint32_t offset = 0; offset < length; ++offset) {
        const std::uint8_t byte = text[offset];
        const bool is_letter = byte < 0x80 && is_of_word(byte);
        const bool is_upper = to == NLS_CASE_UPPER || (to == NLS_CASE_INITIAL && !is_in_word);
        result[offset] = fold_ascii(byte, is_upper ? letter_case::upper : letter_case::lower);
        is_in_word = is_letter;
    }
    return length;
}

} // namespace
} // namespace zqengine

using namespace zqengine;

std::int32_t nls_case_rules_of(const std::uint8_t* nls, std::uint32_t length, std::int32_t* rules) {
    sort_name name;
    if (!parse_sort_name(nls, length, name)) {
        return ZQ_INVALID_NLS_PARAMETERS;
    }
    *rules = is_turkic(name) ? NLS_CASE_TURKIC : NLS_CASE_ROOT;
    return 0;
}

std::uint64_t nls_change_case(std::int32_t to, std::int32_t rules, const std::uint8_t* text, std::uint32_t length, std::uint8_t* result) {
    return in_charset(database_charset(),
                      [=](auto charset) { return change_text(charset, to, rules == NLS_CASE_TURKIC, text, length, result); });
}
