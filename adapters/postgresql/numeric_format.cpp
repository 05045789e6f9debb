// SPDX-License-Identifier: Apache-2.0
#include "adapters/postgresql/numeric_format.h"

#include <algorithm>
#include <cstring>

#include "adapters/binding/host_values.h"
#include "engine/decimal.h"
#include "layouts/decimal_layout.h"

namespace postgresql_extension {
namespace {

using binding::uint128;

constexpr std::uint32_t base = 10'000;
constexpr std::int32_t digits_of_base = 4;

constexpr std::uint16_t form_bits = 0xC000;
constexpr std::uint16_t no_number = 0xC000;
constexpr std::uint16_t short_form = 0x8000;
constexpr std::uint16_t negative_long = 0x4000;
constexpr std::uint16_t infinity_bit = 0x1000;
constexpr std::uint16_t negative_short = 0x2000;
constexpr std::uint16_t short_weight_bits = 0x007F;
constexpr std::uint16_t short_weight_sign = 0x0040;
constexpr std::uint16_t short_scale_bits = 0x1F80;
constexpr std::uint32_t short_scale_shift = 7;
constexpr std::uint16_t long_scale_bits = 0x3FFF;
constexpr std::uint32_t most_short_scale = 63;
constexpr std::int32_t most_short_weight = 63;

constexpr std::int32_t digits_of_a_word = 4; // below 10^16
constexpr std::int32_t most_digits = 9;      // below 10^36
constexpr std::int32_t greatest_scale = 127; // of a DECIMAL

uint128 power_of_ten(std::int32_t exponent) { return bifun::decimal_layout::powers_of_ten[static_cast<std::size_t>(exponent)]; }
std::uint64_t small_power_of_ten(std::int32_t exponent) { return static_cast<std::uint64_t>(power_of_ten(exponent)); }

// Without its last 1 to 3 digits, which is quick by a divisor that the compiler knows.
std::uint64_t without_digits(std::uint64_t number, std::int32_t digits) {
    return digits == 1 ? number / 10 : digits == 2 ? number / 100 : number / 1000;
}
uint128 without_digits(uint128 number, std::int32_t digits) {
    return number >> 64 == 0 ? without_digits(static_cast<std::uint64_t>(number), digits) : number / small_power_of_ten(digits);
}

std::uint16_t word_at(const std::uint8_t* bytes) {
    std::uint16_t word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

void set_word(std::uint8_t* bytes, std::uint32_t value) {
    const auto word = static_cast<std::uint16_t>(value);
    std::memcpy(bytes, &word, sizeof word);
}

numeric_kind store(std::uint32_t mark, uint128 coefficient, std::int32_t scale, xdec& result) {
    using namespace bifun::decimal_layout;
    const auto shown = static_cast<std::uint32_t>(scale);
    if (coefficient >> 64 == 0) {
        const auto word = static_cast<std::uint64_t>(coefficient);
        store_parts(result, pack_head(mark, word == 0 ? 1 : binding::digits_of(word), shown, 0), word);
    } else {
        store_parts(result, pack_head(mark, binding::digits_of(coefficient), shown, 0), coefficient);
    }
    return numeric_kind::number;
}

// Digits that do not fit a coefficient: by way of a text, of as many of them as count when it is rounded. `power` is that of ten of the
// last digit.
numeric_kind read_long_numeric(const std::uint8_t* digits, std::int32_t count, std::int32_t power, bool negative, xdec& result) {
    constexpr std::int32_t most_that_count = 11; // 41 to 44 decimal ones
    constexpr std::size_t room_for_exponent = 8;
    std::uint8_t text[1 + most_that_count * digits_of_base + room_for_exponent];
    const std::int32_t taken = std::min(count, most_that_count);
    power += (count - taken) * digits_of_base;
    std::uint8_t* to = text;
    *to++ = negative ? '-' : '+';
    for (std::int32_t i = 0; i < taken; ++i) {
        std::uint32_t digit = word_at(digits + 2 * i);
        for (std::int32_t k = digits_of_base; k-- > 0; digit /= 10) {
            to[k] = static_cast<std::uint8_t>('0' + digit % 10);
        }
        to += digits_of_base;
    }
    *to++ = 'E';
    *to++ = power < 0 ? '-' : '+';
    for (std::int32_t rest = power < 0 ? -power : power, unit = 100'000; unit > 0; unit /= 10) {
        *to++ = static_cast<std::uint8_t>('0' + rest / unit % 10);
    }
    return xdec_from_char(text, static_cast<std::uint32_t>(to - text), &result) == 0 ? numeric_kind::number : numeric_kind::too_large;
}

} // namespace

numeric_kind read_numeric(const std::uint8_t* bytes, std::uint32_t size, xdec& result) {
    const std::uint16_t head = word_at(bytes);
    if ((head & form_bits) == no_number) {
        return (head & infinity_bit) != 0 ? numeric_kind::infinity : numeric_kind::nan;
    }
    const bool is_short = (head & form_bits) == short_form;
    const bool negative = (head & (is_short ? negative_short : negative_long)) != 0;
    const std::int32_t scale = is_short ? (head & short_scale_bits) >> short_scale_shift : head & long_scale_bits;
    const std::int32_t weight =
        is_short ? (head & short_weight_bits) - 2 * (head & short_weight_sign) : static_cast<std::int16_t>(word_at(bytes + 2));
    const std::uint32_t begin = is_short ? 2 : 4;
    const std::uint8_t* const digits = bytes + begin;
    const auto count = static_cast<std::int32_t>((size - begin) / 2);
    if (count == 0) {
        return store(XDEC_ZERO, 0, std::min(scale, greatest_scale), result);
    }
    const std::int32_t power = (weight + 1 - count) * digits_of_base;
    // Digits that are shown and are not stored are zeros.
    const std::int32_t shown = std::max(power + count * digits_of_base, 1) + scale;
    if (count > most_digits || scale > greatest_scale || shown > binding::most_coefficient_digits) {
        return read_long_numeric(digits, count, power, negative, result);
    }
    std::uint64_t word = 0;
    std::int32_t i = 0;
    for (; i < std::min(count, digits_of_a_word); ++i) {
        word = word * base + word_at(digits + 2 * i);
    }
    uint128 coefficient = word;
    for (; i < count; ++i) {
        coefficient = coefficient * base + word_at(digits + 2 * i);
    }
    const std::int32_t more = power + scale;
    if (more >= 0) {
        coefficient *= power_of_ten(more);
    } else {
        coefficient = without_digits(coefficient, -more);
    }
    return store(negative ? XDEC_NEGATIVE : XDEC_POSITIVE, coefficient, scale, result);
}

std::uint32_t write_numeric(const xdec& value, std::uint8_t* bytes) {
    using namespace bifun::decimal_layout;
    constexpr std::size_t most_digits = 12;
    std::uint16_t digits[most_digits]; // the last ones first
    std::size_t count = 0;
    uint128 rest = coefficient(value);
    const std::uint32_t scale = value.bytes[scale_at];
    // The power of ten that the coefficient counts is one of the base and some more.
    const std::int32_t power = value.bytes[exponent_at] - static_cast<std::int32_t>(scale);
    const std::int32_t lowest = (power >= 0 ? power : power - (digits_of_base - 1)) / digits_of_base;
    const std::int32_t more = power - lowest * digits_of_base;
    if (more > 0) {
        const std::int32_t kept = digits_of_base - more;
        const uint128 higher = without_digits(rest, kept);
        const std::uint64_t lower = static_cast<std::uint64_t>(rest) - static_cast<std::uint64_t>(higher) * small_power_of_ten(kept);
        digits[count++] = static_cast<std::uint16_t>(lower * small_power_of_ten(more));
        rest = higher;
    }
    const auto add = [&](std::uint64_t word) {
        digits[count++] = static_cast<std::uint16_t>(word % base);
        return word / base;
    };
    while (rest >> 64 != 0) {
        const std::uint64_t word_base = small_power_of_ten(digits_of_a_word * digits_of_base);
        auto word = static_cast<std::uint64_t>(rest % word_base);
        rest /= word_base;
        for (std::int32_t i = 0; i < digits_of_a_word; ++i) {
            word = add(word);
        }
    }
    for (auto word = static_cast<std::uint64_t>(rest); word != 0;) {
        word = add(word);
    }
    while (count > 0 && digits[count - 1] == 0) {
        --count;
    }
    const std::int32_t weight = count == 0 ? 0 : lowest + static_cast<std::int32_t>(count) - 1;
    std::size_t last = 0;
    while (last < count && digits[last] == 0) {
        ++last;
    }
    const bool negative = value.bytes[0] == XDEC_NEGATIVE;
    std::uint8_t* to = bytes + 2;
    if (scale <= most_short_scale && weight <= most_short_weight && weight >= -most_short_weight - 1) {
        set_word(bytes, short_form | (negative ? negative_short : 0U) | scale << short_scale_shift |
                            (static_cast<std::uint32_t>(weight) & short_weight_bits));
    } else {
        set_word(bytes, (negative ? negative_long : 0U) | scale);
        set_word(to, static_cast<std::uint32_t>(weight));
        to += 2;
    }
    for (std::size_t i = count; i-- > last; to += 2) {
        set_word(to, digits[i]);
    }
    return static_cast<std::uint32_t>(to - bytes);
}

} // namespace postgresql_extension
