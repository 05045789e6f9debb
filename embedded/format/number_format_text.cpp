// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <string_view>

#include "embedded/decimal/decimal_parts.h"
#include "embedded/decimal/digits.h"
#include "embedded/format/number_format.h"
#include "embedded/format/number_format_texts.h"
#include "engine/number_format.h"
#include "layouts/eight_digits.h"

namespace zqengine {

namespace {

// ---- digits of a rounded value -----------------------------------------------------------------------------------

// The digits of a number, the last one before `digits_end`. A format reads `max_format_length` of them, eight at a time; write_coefficient
// needs its room before the last zero of a number.
constexpr std::size_t digits_end = digit_room + 80;
using digits_room = char[digits_end + 8];

constexpr std::uint32_t too_many_digits = ~std::uint32_t{0};
constexpr std::uint32_t word_digits = 24; // written for a 64-bit number, zeros before it

constexpr std::array<std::uint64_t, 20> make_word_powers_of_ten() {
    std::array<std::uint64_t, 20> powers{};
    std::ranges::transform(powers_of_ten.begin(), powers_of_ten.begin() + powers.size(), powers.begin(),
                           [](uint128 power) { return static_cast<std::uint64_t>(power); });
    return powers;
}

// 10^0 to 10^19.
constexpr std::array<std::uint64_t, 20> word_powers_of_ten = make_word_powers_of_ten();

// Digits of `number` without leading zeros; 0 has none.
std::uint32_t word_digit_count(std::uint64_t number) {
    const auto digits = static_cast<std::uint32_t>(std::bit_width(number)) * 1233 >> 12; // the floor of bits x log10(2)
    return digits + (number >= word_powers_of_ten[digits] ? 1 : 0);
}

constexpr std::uint32_t ten_to_8 = 100'000'000;

// Writes 16 digits: two numbers below 10^8, one behind the other.
void write_16_digits(char* destination, std::uint32_t first, std::uint32_t second) {
    const bifun::sixteen_characters characters = bifun::sixteen_digits(first, second);
    std::memcpy(destination, &characters, sizeof characters);
}

// Writes the last 8, 16 or 24 digits of the number, enough for `columns`.
void write_word(char* end, std::uint64_t number, std::uint32_t columns) {
    if (columns <= 8) {
        write_8_digits(end - 8, static_cast<std::uint32_t>(number));
        return;
    }
    std::uint64_t high = number / ten_to_8;
    const auto low = static_cast<std::uint32_t>(number % ten_to_8);
    if (columns > 16) {
        write_8_digits(end - 24, static_cast<std::uint32_t>(high / ten_to_8));
        high %= ten_to_8;
    }
    write_16_digits(end - 16, static_cast<std::uint32_t>(high), low);
}

// coefficient x 10^-dropped, rounded half away from zero. Returns whether it could be done in 64 bits.
bool round_word(uint128 coefficient, std::int64_t dropped, std::uint64_t& rounded) {
    const auto word = static_cast<std::uint64_t>(coefficient);
    if (word != coefficient || dropped < -19 || dropped > 19) {
        return false;
    }
    if (dropped < 0) {
        return !__builtin_mul_overflow(word, word_powers_of_ten[static_cast<std::size_t>(-dropped)], &rounded);
    }
    const std::uint64_t unit = word_powers_of_ten[static_cast<std::size_t>(dropped)];
    const std::uint64_t remainder = word % unit;
    rounded = word / unit + (remainder >= unit - remainder ? 1 : 0);
    return true;
}

// The same in 128 bits for dropped >= 0.
uint128 round_coefficient(uint128 coefficient, std::int64_t dropped) {
    if (dropped > max_coefficient_digits) {
        return 0;
    }
    const uint128 unit = powers_of_ten[static_cast<std::size_t>(dropped)];
    const uint128 remainder = coefficient % unit;
    return coefficient / unit + (remainder >= unit - remainder ? 1 : 0);
}

// Writes the digits of coefficient x 10^-dropped, rounded half away from zero, and zeros before them up to `columns` digits. Returns how
// many there are without those zeros, or too_many_digits.
[[gnu::noinline]] std::uint32_t write_wide(char* end, uint128 coefficient, std::int64_t dropped, std::uint32_t columns) {
    std::int64_t zeros = 0;
    if (dropped > 0) {
        coefficient = round_coefficient(coefficient, dropped);
    } else if (coefficient != 0) {
        zeros = -dropped;
    }
    const std::int64_t digits = digit_count(coefficient) + zeros;
    if (digits > columns) {
        return too_many_digits;
    }
    write_coefficient(end - zeros, coefficient);
    std::memset(end - zeros, '0', static_cast<std::size_t>(zeros));
    std::memset(end - columns, '0', static_cast<std::size_t>(columns - digits));
    return static_cast<std::uint32_t>(digits);
}

std::uint32_t write_digits(char* end, uint128 coefficient, std::int64_t dropped, std::uint32_t columns, std::uint64_t largest) {
    std::uint64_t rounded = 0;
    if (!round_word(coefficient, dropped, rounded)) {
        return write_wide(end, coefficient, dropped, columns);
    }
    if (rounded > largest) {
        return too_many_digits;
    }
    if (columns > word_digits) {
        std::memset(end - columns, '0', columns - word_digits);
    }
    write_word(end, rounded, columns);
    return word_digit_count(rounded);
}

// ---- numbers in columns ------------------------------------------------------------------------------------------

constexpr std::size_t chunk = 16;

// Both write whole chunks: as the layout of a format is the same for every row, no branch depends on the value.
[[gnu::always_inline]] inline void copy_chunks(char* destination, const char* source, std::uint32_t count) {
    for (std::uint32_t i = 0; i < count; i += chunk) {
        std::memcpy(destination + i, source + i, chunk);
    }
}

[[gnu::always_inline]] inline void blank_chunks(char* destination, std::uint32_t count) {
    for (std::uint32_t i = 0; i < count; i += chunk) {
        std::memset(destination + i, ' ', chunk);
    }
}

void write_row_of(char character, std::uint32_t count, char* buffer) {
    std::memset(buffer, character, count);
    buffer[count] = '\0';
}

char* append(char* out, std::string_view text) {
    std::memcpy(out, text.data(), text.size());
    return out + text.size();
}

char* append_zeros(char* out, std::int64_t count) {
    std::memset(out, '0', static_cast<std::size_t>(count));
    return out + count;
}

// E, the sign and at least two digits; the magnitude is below 1000.
char* append_exponent(char* out, std::int64_t exponent) {
    const auto magnitude = static_cast<std::uint32_t>(exponent < 0 ? -exponent : exponent);
    *out++ = 'E';
    *out++ = exponent < 0 ? '-' : '+';
    if (magnitude >= 100) {
        *out++ = static_cast<char>('0' + magnitude / 100);
    }
    *out++ = static_cast<char>('0' + magnitude / 10 % 10);
    *out++ = static_cast<char>('0' + magnitude % 10);
    return out;
}

// What stands where a sign may stand.
struct sign_mark {
    char character;
    std::uint8_t length; // 0 for nothing
};

constexpr sign_mark minus{'-', 1};
constexpr sign_mark plus{'+', 1};
constexpr sign_mark blank{' ', 1};
constexpr sign_mark less{'<', 1};
constexpr sign_mark greater{'>', 1};
constexpr sign_mark nothing{'\0', 0};

// By style, whether the value is negative, and whether FM leaves blanks out.
constexpr sign_mark marks_before[][2][2] = {
    {{blank, nothing}, {minus, minus}},       // minus_before
    {{nothing, nothing}, {nothing, nothing}}, // minus_behind
    {{plus, plus}, {minus, minus}},           // sign_before
    {{nothing, nothing}, {nothing, nothing}}, // sign_behind
    {{blank, nothing}, {less, less}},         // brackets
};
constexpr sign_mark marks_behind[][2][2] = {
    {{nothing, nothing}, {nothing, nothing}}, // minus_before
    {{blank, nothing}, {minus, minus}},       // minus_behind
    {{nothing, nothing}, {nothing, nothing}}, // sign_before
    {{plus, plus}, {minus, minus}},           // sign_behind
    {{blank, nothing}, {greater, greater}},   // brackets
};

// Without a branch on the value, for signs in a column are as good as random.
char* append_sign(char* out, sign_mark mark) {
    *out = mark.character;
    return out + mark.length;
}

// Under FM: zeros at the end of the fraction go where the format has 9. `end` is that of the fraction.
const char* without_trailing_zeros(const number_format& format, const char* end, std::uint32_t least_fraction_digits) {
    for (std::uint32_t i = format.fraction_digits; i > least_fraction_digits && end[-1] == '0'; --i) {
        --end;
    }
    return end;
}

// Writes all columns of the body. Up to 8 bytes behind it are garbage.
[[gnu::always_inline]] inline void write_body(const number_format& format, const char* digits, char* out) {
    const digit_run* const last = format.runs + format.run_count;
    for (const digit_run* next = format.runs; next != last; ++next) {
        const digit_run run = *next;
        std::memcpy(out, digits, max_run_digits + 1); // in one piece
        out[run.digits] = run.mark;
        out += run.columns;
        digits += run.digits;
    }
}

// Writes the sign and a leading symbol.
[[gnu::always_inline]] inline char* append_head(char* out, const number_format& format, sign_mark sign) {
    out = append_sign(out, sign);
    return format.symbol_leads ? append(out, {format.symbol, format.symbol_length}) : out;
}

// Writes the number whose digits, as many as the format has, end before `end`; `significant` of them are not leading zeros.
[[gnu::always_inline]] inline void write_in_columns(const number_format& format, const char* end, std::uint32_t significant, bool negative,
                                                    std::int64_t exponent, char* buffer) {
    const std::uint32_t fraction_digits = format.fraction_digits;
    const std::uint32_t body_columns = format.body_columns;
    std::uint32_t integer_digits = std::max(significant, fraction_digits + format.least_integer_digits) - fraction_digits;
    if (format.blank_zero && significant <= fraction_digits) {
        integer_digits = 0;
    }
    const bool shows_minus = negative & (significant != 0);
    const sign_mark(&before)[2] = marks_before[static_cast<std::size_t>(format.sign)][shows_minus];
    const std::uint32_t all_integer_columns = format.integer_columns[format.integer_digits];

    char body[2 * max_format_length + chunk]; // whole chunks for all columns are read from the first one that is shown
    write_body(format, end - format.integer_digits - fraction_digits, body);
    char* out = buffer;
    if (!format.fill_mode) {
        const std::uint32_t hidden = all_integer_columns - format.integer_columns[integer_digits];
        blank_chunks(out, all_integer_columns);
        out = append_head(out + hidden, format, before[0]);
        copy_chunks(out, body + hidden, body_columns);
        out += body_columns - hidden;
    } else {
        std::uint32_t least_fraction_digits = format.least_fraction_digits;
        if (significant == 0 && integer_digits + least_fraction_digits == 0) {
            // At least one digit of the number stays.
            (format.integer_digits != 0 ? integer_digits : least_fraction_digits) = 1;
        }
        const std::uint32_t hidden = all_integer_columns - format.integer_columns[integer_digits];
        const char* const last = without_trailing_zeros(format, body + body_columns, least_fraction_digits);
        out = append_head(out, format, before[1]);
        copy_chunks(out, body + hidden, body_columns);
        out += last - body - hidden;
    }
    if (format.kind == format_kind::scientific) {
        out = append_exponent(out, exponent);
    }
    if (!format.symbol_leads && format.symbol_length != 0) {
        out = append(out, {format.symbol, format.symbol_length});
    }
    out = append_sign(out, marks_behind[static_cast<std::size_t>(format.sign)][shows_minus][format.fill_mode]);
    *out = '\0';
}

void write_blank_zero(const number_format& format, char* buffer) { write_row_of(' ', format.fill_mode ? 0 : format.width, buffer); }

void write_fixed(const number_format& format, const decimal_parts& value, char* buffer) {
    digits_room room;
    char* const end = room + digits_end;
    const std::int64_t dropped = value.scale - format.fraction_digits - format.multiplier_digits;
    const std::uint32_t columns = std::uint32_t{format.integer_digits} + format.fraction_digits;
    const std::uint32_t significant = write_digits(end, value.coefficient, dropped, columns, format.largest_body);
    if (significant == too_many_digits) {
        write_row_of('#', format.width, buffer);
    } else if (significant == 0 && format.blank_zero) {
        write_blank_zero(format, buffer);
    } else {
        write_in_columns(format, end, significant, value.negative, 0, buffer);
    }
}

void write_scientific(const number_format& format, const decimal_parts& value, char* buffer) {
    if (value.coefficient == 0 && format.blank_zero) {
        write_blank_zero(format, buffer);
        return;
    }
    digits_room room;
    char* const end = room + digits_end;
    const std::uint32_t columns = std::uint32_t{format.integer_digits} + format.fraction_digits;
    const std::uint32_t mantissa_digits = std::uint32_t{format.fraction_digits} + 1;
    // Zero is written as if it had one digit.
    const std::uint32_t digits = std::max<std::uint32_t>(digit_count(value.coefficient), 1);
    std::int64_t exponent = value.coefficient == 0 ? 0 : std::int64_t{digits} - 1 - value.scale;
    std::int64_t dropped = std::int64_t{digits} - mantissa_digits;
    if (dropped > 0 && round_coefficient(value.coefficient, dropped) == powers_of_ten[mantissa_digits]) {
        ++dropped; // 9.99 became 10.0
        ++exponent;
    }
    const std::uint32_t significant = write_wide(end, value.coefficient, dropped, columns);
    write_in_columns(format, end, significant, value.negative, exponent, buffer);
}

// ---- numbers of other shapes -------------------------------------------------------------------------------------

// Without FM, blanks before the text fill the width.
void write_padded(const number_format& format, std::string_view text, char* buffer) {
    const std::size_t blanks = format.fill_mode ? 0 : format.width - text.size();
    std::memset(buffer, ' ', blanks);
    *append(buffer + blanks, text) = '\0';
}

void write_hexadecimal(const number_format& format, const decimal_parts& value, char* buffer) {
    // Room for the largest decimal, below 10^127.
    constexpr std::size_t limbs = 14;
    const uint128 rounded = value.scale > 0 ? round_coefficient(value.coefficient, value.scale) : value.coefficient;
    std::uint32_t number[limbs] = {};
    for (std::size_t i = 0; i < 4; ++i) {
        number[i] = static_cast<std::uint32_t>(rounded >> 32 * i);
    }
    for (std::int64_t zeros = value.scale; zeros < 0; ++zeros) {
        std::uint64_t carry = 0;
        for (std::uint32_t& limb : number) {
            carry += std::uint64_t{limb} * 10;
            limb = static_cast<std::uint32_t>(carry);
            carry >>= 32;
        }
    }

    const char* const names = format.lower_case ? "0123456789abcdef" : "0123456789ABCDEF";
    constexpr std::size_t nibbles = limbs * 8;
    char digits[nibbles];
    for (std::size_t i = 0; i < nibbles; ++i) {
        digits[nibbles - 1 - i] = names[number[i / 8] >> i % 8 * 4 & 15];
    }
    const std::size_t zeros = std::min(std::string_view{digits, nibbles}.find_first_not_of('0'), nibbles);
    const std::size_t significant = nibbles - zeros;
    if (significant > format.integer_digits || (value.negative && rounded != 0)) {
        write_row_of('#', format.width, buffer);
    } else {
        const std::size_t shown = std::max<std::size_t>(significant, format.least_integer_digits);
        write_padded(format, {digits + nibbles - shown, shown}, buffer);
    }
}

void write_roman(const number_format& format, const decimal_parts& value, char* buffer) {
    constexpr struct {
        std::uint32_t value;
        std::string_view upper;
        std::string_view lower;
    } numerals[] = {{1000, "M", "m"}, {900, "CM", "cm"}, {500, "D", "d"},  {400, "CD", "cd"}, {100, "C", "c"},
                    {90, "XC", "xc"}, {50, "L", "l"},    {40, "XL", "xl"}, {10, "X", "x"},    {9, "IX", "ix"},
                    {5, "V", "v"},    {4, "IV", "iv"},   {1, "I", "i"}};
    uint128 number = value.coefficient;
    if (value.scale > 0) {
        number = round_coefficient(number, value.scale);
    } else if (value.scale < 0) {
        number = 0; // more than 38 digits
    }
    if (number == 0 || number > 3999 || value.negative) {
        write_row_of('#', format.width, buffer);
        return;
    }
    auto rest = static_cast<std::uint32_t>(number);
    char text[16];
    char* out = text;
    for (const auto& numeral : numerals) {
        for (; rest >= numeral.value; rest -= numeral.value) {
            out = append(out, format.lower_case ? numeral.lower : numeral.upper);
        }
    }
    write_padded(format, {text, static_cast<std::size_t>(out - text)}, buffer);
}

void write_shortest(const number_format& format, const decimal_parts& value, char* buffer) {
    constexpr std::int64_t longest_plain_text = 64;
    char room[digit_room];
    write_coefficient(room + digit_room, value.coefficient);
    std::int64_t scale = value.coefficient == 0 ? 0 : value.scale;
    const std::size_t count = std::max<std::uint32_t>(digit_count(value.coefficient), 1);
    std::string_view digits{room + digit_room - count, count};
    while (digits.size() > 1 && digits.back() == '0') {
        digits.remove_suffix(1);
        --scale;
    }

    const auto significant = static_cast<std::int64_t>(digits.size());
    const std::int64_t integer_digits = significant - scale; // below 1 for a number that begins behind the point
    const std::int64_t plain_length = (value.negative ? 1 : 0) + (scale <= 0 ? integer_digits : std::max(scale, significant) + 1);
    char* out = buffer;
    if (value.negative) {
        *out++ = '-';
    }
    if (format.kind == format_kind::shortest_scientific || plain_length > longest_plain_text) {
        *out++ = digits.front();
        digits.remove_prefix(1);
        if (!digits.empty()) {
            *out++ = format.decimal_point;
            out = append(out, digits);
        }
        out = append_exponent(out, integer_digits - 1);
    } else if (scale <= 0) {
        out = append_zeros(append(out, digits), -scale);
    } else {
        if (integer_digits > 0) {
            const auto before_point = static_cast<std::size_t>(integer_digits);
            out = append(out, {digits.data(), before_point});
            digits.remove_prefix(before_point);
        }
        *out++ = format.decimal_point;
        out = append(append_zeros(out, std::max<std::int64_t>(-integer_digits, 0)), digits);
    }
    *out = '\0';
}

} // namespace

void write_number(const number_format& format, const xdec& value, char* buffer) {
    const decimal_parts parts = split_decimal(value);
    switch (format.kind) {
    case format_kind::fixed:
        return write_fixed(format, parts, buffer);
    case format_kind::scientific:
        return write_scientific(format, parts, buffer);
    case format_kind::hexadecimal:
        return write_hexadecimal(format, parts, buffer);
    case format_kind::roman:
        return write_roman(format, parts, buffer);
    case format_kind::shortest:
    case format_kind::shortest_scientific:
        return write_shortest(format, parts, buffer);
    }
}

} // namespace zqengine

using namespace zqengine;

int32_t xdec_to_char_with_nls(bifun_environment* environment, const xdec* value, char* buffer, const uint8_t* format,
                              uint32_t format_length, const uint8_t* nls, uint32_t nls_length) {
    number_format own;
    const number_format* parsed = &own;
    const std::int32_t status = find_number_format(environment, {format, format_length, nls, nls_length}, own, parsed);
    if (status == 0) {
        write_number(*parsed, *value, buffer);
    }
    return status;
}

int32_t xdec_to_char_with_fmt(bifun_environment* environment, const xdec* value, char* buffer, const uint8_t* format,
                              uint32_t format_length) {
    return xdec_to_char_with_nls(environment, value, buffer, format, format_length, nullptr, 0);
}

int32_t xdec_to_char_with_fmt_low(bifun_environment* environment, const xdec* value, char* buffer, const uint8_t* format,
                                  uint32_t format_length, uint32_t* length) {
    const std::int32_t status = xdec_to_char_with_fmt(environment, value, buffer, format, format_length);
    if (status == 0) {
        *length = static_cast<std::uint32_t>(std::strlen(buffer));
    }
    return status;
}
