// SPDX-License-Identifier: Apache-2.0
#include <bit>
#include <cmath>
#include <cstring>
#include <string_view>

#include "bop/frame/status.h"
#include "embedded/decimal/digits.h"
#include "embedded/format/shortest_decimal.h"
#include "engine/number_format.h"
#include "layouts/byte_block.h"
#include "layouts/decimal_text.h"

namespace zqengine {

namespace {

using bifun::byte_block;

// Long enough for any double, -1.2345678901234567E-308 or -0.000012345678901234567, and for what is written behind it.
constexpr std::size_t text_room = 32;

constexpr std::uint32_t max_digits = 17;

// Seventeen digits of which the last ones may be zeros: as characters, the first in the lowest byte.
struct digit_characters {
    std::uint64_t first; // 0 to 9
    byte_block others;
    std::uint32_t count; // without the zeros at the end, at least 1
};

digit_characters characters_of(std::uint64_t digits) {
    constexpr std::uint64_t ten_to_8 = 100'000'000;
    // Neither division waits for the other.
    const std::uint64_t leading = digits / ten_to_8;
    digit_characters characters{};
    characters.first = digits / (ten_to_8 * ten_to_8);
    const auto [middle, last] = bifun::sixteen_digits(static_cast<std::uint32_t>(leading - characters.first * ten_to_8),
                                                      static_cast<std::uint32_t>(digits - leading * ten_to_8));
    characters.others = bifun::block_of_words(middle, last);
    const std::uint32_t other_than_zero = ~bifun::bits_of(bifun::where_equal(characters.others, bifun::repeated('0'))) & 0xFFFF;
    characters.count = 1 + static_cast<std::uint32_t>(std::bit_width(other_than_zero));
    return characters;
}

void write_16(char* out, byte_block characters) { bifun::store_block(reinterpret_cast<std::uint8_t*>(out), characters); }

char first_character(const digit_characters& digits) { return static_cast<char>('0' + digits.first); }

// Above 0 and below 1: `zeros` digits behind the point are 0, at most 4.
char* write_fraction(char* out, const digit_characters& digits, std::uint32_t zeros) {
    std::memcpy(out, "0.000000", 8); // NOLINT(bugprone-not-null-terminated-result): no text of C
    out += 2 + zeros;
    *out = first_character(digits);
    write_16(out + 1, digits.others);
    return out + digits.count;
}

// `before` digits, 1 to 15, stand before the point, which is only there where digits follow.
char* write_plain(char* out, const digit_characters& digits, std::uint32_t before) {
    if (digits.count <= before) {
        *out = first_character(digits);
        write_16(out + 1, digits.others);
        return out + before;
    }
    // The first sixteen are one block, which the point is put into.
    const byte_block sixteen = bifun::moved_back<1>(digits.others) | bifun::block_of_words('0' + digits.first, 0);
    write_16(out, bifun::decimal_layout::with_point(sixteen, before));
    const auto two = static_cast<std::uint16_t>(bifun::last_word(digits.others) >> 48);
    std::memcpy(out + 16, &two, sizeof two);
    return out + digits.count + 1;
}

char* write_scientific(char* out, const digit_characters& digits, std::int32_t exponent) {
    *out = first_character(digits);
    out[1] = '.';
    write_16(out + 2, digits.others);
    out += digits.count == 1 ? 1 : digits.count + 1;
    *out++ = 'E';
    *out++ = exponent < 0 ? '-' : '+';
    const auto magnitude = static_cast<std::uint32_t>(exponent < 0 ? -exponent : exponent);
    if (magnitude >= 100) {
        *out++ = static_cast<char>('0' + magnitude / 100);
    }
    *out++ = static_cast<char>('0' + magnitude / 10 % 10);
    *out++ = static_cast<char>('0' + magnitude % 10);
    return out;
}

char* write_name(char* out, std::string_view name) {
    std::memcpy(out, name.data(), name.size());
    return out + name.size();
}

// Zeros and what is not finite.
[[gnu::noinline]] char* write_special(char* out, double value) {
    if (std::isnan(value)) {
        return write_name(out, "NaN");
    }
    *out = '-';
    return write_name(out + (std::signbit(value) ? 1 : 0), std::isinf(value) ? "Infinity" : "0");
}

// Writes the text, and anything behind it, into text_room bytes and returns the end of the text.
char* write_double(char* out, double value) {
    constexpr std::uint64_t infinity_without_sign = std::uint64_t{0x7FF} << 53;
    const auto bits = std::bit_cast<std::uint64_t>(value);
    if ((bits << 1) - 1 >= infinity_without_sign - 1) [[unlikely]] {
        return write_special(out, value);
    }
    *out = '-'; // unless a digit takes its place: signs in a column are as good as random
    out += bits >> 63;
    constexpr std::int32_t least_plain = -5; // the exponent of the first digit
    constexpr std::int32_t most_plain = 14;
    const shortest_decimal shortest = shortest_decimal_of(std::fabs(value));
    const digit_characters digits = characters_of(shortest.digits);
    const std::int32_t exponent = shortest.exponent + static_cast<std::int32_t>(max_digits) - 1;
    if (exponent < least_plain || exponent > most_plain) {
        return write_scientific(out, digits, exponent);
    }
    return exponent < 0 ? write_fraction(out, digits, static_cast<std::uint32_t>(-exponent - 1))
                        : write_plain(out, digits, static_cast<std::uint32_t>(exponent + 1));
}

} // namespace

} // namespace zqengine

using namespace zqengine;

int32_t zq_dou2char(double value, char* buffer, uint32_t buffer_size, uint32_t* length) {
    char room[text_room];
    const bool writes_in_place = buffer_size >= text_room;
    char* const begin = writes_in_place ? buffer : room;
    char* const end = write_double(begin, value);
    const auto size = static_cast<std::uint32_t>(end - begin);
    if (size >= buffer_size) {
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    if (!writes_in_place) {
        std::memcpy(buffer, room, size);
    }
    buffer[size] = '\0';
    *length = size;
    return BIFUN_OK;
}
