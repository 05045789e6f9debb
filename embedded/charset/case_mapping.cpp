// SPDX-License-Identifier: Apache-2.0
#include "embedded/charset/case_mapping.h"

#include <unicode/ubrk.h>
#include <unicode/uchar.h>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>

#include <cstring>

#include "embedded/charset/charset_tables.h"
#include "embedded/charset/unicode_converter.h"

namespace zqengine {
namespace {

constexpr std::int32_t longest_mapping = 8; // in code units; Unicode's longest has 3

struct mapped_text {
    UChar units[longest_mapping];
    std::int32_t length;
};

bool changes(UChar32 code_point, full_case to) {
    constexpr UProperty properties[] = {UCHAR_CHANGES_WHEN_UPPERCASED, UCHAR_CHANGES_WHEN_LOWERCASED, UCHAR_CHANGES_WHEN_TITLECASED};
    return u_hasBinaryProperty(code_point, properties[static_cast<std::size_t>(to)]) != 0;
}

// A character of the Basic Multilingual Plane. Words are taken to begin with it.
mapped_text map_character(UChar character, full_case to, UBreakIterator* characters) {
    mapped_text mapped{};
    UErrorCode status = U_ZERO_ERROR;
    switch (to) {
    case full_case::upper:
        mapped.length = u_strToUpper(mapped.units, longest_mapping, &character, 1, "", &status);
        break;
    case full_case::lower:
        mapped.length = u_strToLower(mapped.units, longest_mapping, &character, 1, "", &status);
        break;
    case full_case::title:
        mapped.length = u_strToTitle(mapped.units, longest_mapping, &character, 1, characters, "", &status);
        break;
    }
    if (U_FAILURE(status) || mapped.length > longest_mapping) {
        mapped = {{character}, 1};
    }
    return mapped;
}

// No bytes where the character set lacks one of the characters.
special_mapping encode(UConverter* converter, const UChar* units, std::int32_t count) {
    special_mapping encoded{};
    UErrorCode status = U_ZERO_ERROR;
    char bytes[32];
    const std::int32_t length = ucnv_fromUChars(converter, bytes, sizeof bytes, units, count, &status);
    if (U_SUCCESS(status) && length <= static_cast<std::int32_t>(sizeof encoded.bytes)) {
        encoded.length = static_cast<std::uint8_t>(length);
        std::memcpy(encoded.bytes, bytes, encoded.length);
    }
    return encoded;
}

template <class Charset> std::uint16_t add_special(case_mapping<Charset>& mapping, const special_mapping& special) {
    mapping.specials[mapping.special_count] = special;
    return static_cast<std::uint16_t>(case_mapping<Charset>::first_special + mapping.special_count++);
}

// The number for a character of that rank; the rank itself where the character stays.
template <class Charset>
std::uint16_t number_of_mapped(case_mapping<Charset>& mapping, std::uint32_t rank, UChar character, full_case to, UConverter* converter,
                               UBreakIterator* characters) {
    constexpr UChar capital_sigma = 0x3A3;
    if (character == capital_sigma && to == full_case::lower) {
        return static_cast<std::uint16_t>(case_mapping<Charset>::first_special + final_sigma);
    }
    const mapped_text mapped = map_character(character, to, characters);
    const special_mapping encoded = encode(converter, mapped.units, mapped.length);
    if (encoded.length == 0) {
        return static_cast<std::uint16_t>(rank);
    }
    const bool is_one = mapped.length == 1 && encoded.length > 1 && Charset::length_of(encoded.bytes, encoded.length) == encoded.length;
    if (is_one) {
        return static_cast<std::uint16_t>(Charset::rank(encoded.bytes, encoded.length));
    }
    const bool has_room = mapping.special_count < case_mapping<Charset>::most_specials;
    return has_room ? add_special(mapping, encoded) : static_cast<std::uint16_t>(rank);
}

template <class Charset> void add_first_specials(case_mapping<Charset>& mapping, UConverter* converter) {
    constexpr UChar characters[first_other_special] = {0x3C2, 0x3C3, 0x130, 0x131};
    for (const UChar& character : characters) {
        add_special(mapping, encode(converter, &character, 1));
    }
    if (mapping.specials[final_sigma].length == 0) {
        mapping.specials[final_sigma] = mapping.specials[other_sigma];
    }
}

void fill_words(case_mapping<utf8>& mapping) {
    constexpr std::uint32_t surrogates = 0x800;
    for (const full_case to : {full_case::upper, full_case::lower}) {
        const auto& mapped = mapping.mapped[static_cast<std::size_t>(to)];
        const letter_case of_ascii = to == full_case::upper ? letter_case::upper : letter_case::lower;
        for (std::uint32_t code_point = 0; code_point < utf8::ranks; ++code_point) {
            const std::uint32_t becomes =
                code_point < 0x80 ? fold_ascii(static_cast<std::uint8_t>(code_point), of_ascii) : mapped[code_point];
            std::uint8_t bytes[4]{};
            if (becomes - case_mapping<utf8>::first_special >= surrogates) {
                bytes[3] = static_cast<std::uint8_t>(utf8::rank_length(becomes));
                utf8::write(becomes, bytes, bytes[3]);
                bytes[0] = becomes < 0x80 ? static_cast<std::uint8_t>(becomes) : bytes[0];
            }
            std::memcpy(&mapping.words[static_cast<std::size_t>(to)][code_point], bytes, sizeof bytes);
        }
    }
}

// Without the converter, which is part of ICU, no character has another case.
template <class Charset> void fill_mapped(case_mapping<Charset>& mapping) {
    for (auto& of_case : mapping.mapped) {
        for (std::uint32_t rank = 0; rank < Charset::ranks; ++rank) {
            of_case[rank] = static_cast<std::uint16_t>(rank);
        }
    }
    UConverter* const converter = open_unicode_converter(Charset{});
    if (converter == nullptr) {
        return;
    }
    UErrorCode status = U_ZERO_ERROR;
    UBreakIterator* const characters = ubrk_open(UBRK_CHARACTER, "", nullptr, 0, &status);
    add_first_specials(mapping, converter);
    const charset_tables<Charset>& tables = tables_of<Charset>();
    for (std::uint32_t rank = 0; rank < Charset::ranks; ++rank) {
        std::uint32_t code_point = rank;
        if constexpr (!Charset::rank_is_code_point) {
            code_point = tables.code_points[rank];
        }
        for (const full_case to : {full_case::upper, full_case::lower, full_case::title}) {
            if (code_point >= 0x80 && changes(static_cast<UChar32>(code_point), to)) {
                mapping.mapped[static_cast<std::size_t>(to)][rank] =
                    number_of_mapped(mapping, rank, static_cast<UChar>(code_point), to, converter, characters);
            }
        }
    }
    ubrk_close(characters);
    ucnv_close(converter);
}

template <class Charset> bool fill(case_mapping<Charset>& mapping) {
    fill_mapped(mapping);
    if constexpr (Charset::rank_is_code_point) {
        fill_words(mapping);
    }
    return true;
}

} // namespace

template <class Charset> const case_mapping<Charset>& case_mapping_of() {
    static constinit case_mapping<Charset> mapping{};
    [[maybe_unused]] static const bool filled = fill(mapping);
    return mapping;
}

template const case_mapping<utf8>& case_mapping_of<utf8>();
template const case_mapping<gb18030>& case_mapping_of<gb18030>();
template const case_mapping<euc_kr>& case_mapping_of<euc_kr>();

std::uint32_t supplementary_in_case(std::uint32_t code_point, full_case to) {
    const auto c = static_cast<UChar32>(code_point);
    const UChar32 mapped = to == full_case::upper ? u_toupper(c) : to == full_case::lower ? u_tolower(c) : u_totitle(c);
    return mapped < 0x10000 ? code_point : static_cast<std::uint32_t>(mapped);
}

} // namespace zqengine
