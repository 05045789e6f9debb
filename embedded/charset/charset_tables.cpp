// SPDX-License-Identifier: Apache-2.0
#include "embedded/charset/charset_tables.h"

#include <unicode/uchar.h>
#include <unicode/ucnv.h>

#include "embedded/charset/unicode_converter.h"

namespace zqengine {
namespace {

constexpr std::uint32_t no_rank = UINT32_MAX;

bool is_of_private_use(std::uint16_t code_unit) { return code_unit >= 0xE000 && code_unit < 0xF900; }

template <class Charset> std::uint16_t converted_code_point(UConverter* converter, std::uint32_t rank) {
    const std::uint32_t length = Charset::rank_length(rank);
    std::uint8_t character[4];
    Charset::write(rank, character, length);
    UErrorCode status = U_ZERO_ERROR;
    UChar code_units[4];
    const std::int32_t count =
        ucnv_toUChars(converter, code_units, 4, reinterpret_cast<const char*>(character), static_cast<std::int32_t>(length), &status);
    const bool is_known = U_SUCCESS(status) && count == 1 && (Charset::has_private_use || !is_of_private_use(code_units[0]));
    return is_known ? code_units[0] : static_cast<std::uint16_t>(unknown_code_point);
}

// no_rank where the charset has it not, or as ASCII.
template <class Charset> std::uint32_t converted_rank(UConverter* converter, std::uint32_t code_point) {
    if (code_point >= 0x10000) {
        return no_rank;
    }
    const auto code_unit = static_cast<UChar>(code_point);
    std::uint8_t character[8];
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t count = ucnv_fromUChars(converter, reinterpret_cast<char*>(character), sizeof character, &code_unit, 1, &status);
    if (U_FAILURE(status) || count < 2) {
        return no_rank;
    }
    const auto length = static_cast<std::uint32_t>(count);
    return Charset::length_of(character, length) == length ? Charset::rank(character, length) : no_rank;
}

// Without the converter, which is part of ICU, no character has a code point or another case.
template <class Charset> bool fill(charset_tables<Charset>& tables) {
    UConverter* converter = nullptr;
    if constexpr (!Charset::rank_is_code_point) {
        converter = open_unicode_converter(Charset{});
    }
    for (std::uint32_t rank = 0; rank < Charset::ranks; ++rank) {
        std::uint32_t code_point = rank;
        if constexpr (!Charset::rank_is_code_point) {
            code_point = converter == nullptr ? unknown_code_point : converted_code_point<Charset>(converter, rank);
            tables.code_points[rank] = static_cast<std::uint16_t>(code_point);
        }
        for (const letter_case to : {letter_case::upper, letter_case::lower}) {
            const std::uint32_t other = code_point_in_case(code_point, to);
            std::uint32_t in_case = rank;
            if (other != code_point) {
                if constexpr (Charset::rank_is_code_point) {
                    in_case = other;
                } else {
                    in_case = converted_rank<Charset>(converter, other);
                }
            }
            const bool fits = in_case < Charset::ranks && Charset::rank_length(in_case) == Charset::rank_length(rank);
            tables.in_case[static_cast<std::uint32_t>(to)][rank] = static_cast<std::uint16_t>(fits ? in_case : rank);
        }
    }
    ucnv_close(converter);
    return true;
}

} // namespace

std::uint32_t code_point_in_case(std::uint32_t code_point, letter_case to) {
    const auto c = static_cast<UChar32>(code_point);
    return static_cast<std::uint32_t>(to == letter_case::upper ? u_toupper(c) : u_tolower(c));
}

template <class Charset> const charset_tables<Charset>& tables_of() {
    static constinit charset_tables<Charset> tables{};
    [[maybe_unused]] static const bool filled = fill(tables);
    return tables;
}

template const charset_tables<utf8>& tables_of<utf8>();
template const charset_tables<gb18030>& tables_of<gb18030>();
template const charset_tables<euc_kr>& tables_of<euc_kr>();

} // namespace zqengine
