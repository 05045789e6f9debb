// SPDX-License-Identifier: Apache-2.0
// Numbers from text under a number format.
#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "bop/frame/status.h"
#include "embedded/format/format_reader.h"
#include "embedded/format/number_format.h"
#include "embedded/format/number_format_texts.h"
#include "engine/decimal.h"
#include "engine/number_format.h"

namespace zqengine {

namespace {

bool is_digit(std::uint8_t character) { return character - unsigned{'0'} < 10; }

// What is left of a text between what stands before and behind.
struct remainder {
    const std::uint8_t* begin;
    const std::uint8_t* end;
};

bool is_empty(const remainder& rest) { return rest.begin == rest.end; }

remainder without_blanks(remainder rest) {
    while (!is_empty(rest) && *rest.begin == ' ') {
        ++rest.begin;
    }
    while (!is_empty(rest) && rest.end[-1] == ' ') {
        --rest.end;
    }
    return rest;
}

// Where reading has stopped, and why.
struct stop {
    number_fault fault;
    const std::uint8_t* at;
};

// A number as xdec_from_char reads it: all digits of the longest format, a point and an exponent.
struct plain_number {
    static constexpr std::uint32_t most_digits = 128;
    char text[most_digits + 32];
    std::uint32_t length;
    std::uint32_t digits;
};

void add(plain_number& number, char character) { number.text[number.length++] = character; }

void add_digit(plain_number& number, std::uint8_t digit) {
    add(number, static_cast<char>(digit));
    ++number.digits;
}

void add_exponent(plain_number& number, std::int32_t exponent) {
    add(number, 'E');
    if (exponent < 0) {
        add(number, '-');
    }
    const std::int32_t magnitude = exponent < 0 ? -exponent : exponent;
    for (std::int32_t power = 10'000; power != 0; power /= 10) {
        add(number, static_cast<char>('0' + magnitude / power % 10));
    }
}

// ---- signs and symbols -------------------------------------------------------------------------------------------

// A sign may be missing, and then the number is not negative.
void take_sign(sign_style style, remainder& rest, bool& negative) {
    if (is_empty(rest)) {
        return;
    }
    const std::uint8_t first = *rest.begin;
    const std::uint8_t last = rest.end[-1];
    switch (style) {
    case sign_style::minus_before:
    case sign_style::sign_before:
        negative = first == '-';
        rest.begin += negative || (first == '+' && style == sign_style::sign_before) ? 1 : 0;
        return;
    case sign_style::minus_behind:
    case sign_style::sign_behind:
        negative = last == '-';
        rest.end -= negative || (last == '+' && style == sign_style::sign_behind) ? 1 : 0;
        return;
    case sign_style::brackets:
        negative = first == '<' && last == '>' && rest.end - rest.begin > 1;
        rest.begin += negative ? 1 : 0;
        rest.end -= negative ? 1 : 0;
        return;
    }
}

bool take_symbol(std::string_view symbol, bool leads, remainder& rest) {
    const std::string_view text(reinterpret_cast<const char*>(rest.begin), static_cast<std::size_t>(rest.end - rest.begin));
    if (leads ? !text.starts_with(symbol) : !text.ends_with(symbol)) {
        return false;
    }
    rest.begin += leads ? symbol.size() : 0;
    rest.end -= leads ? 0 : symbol.size();
    return true;
}

// The symbol; without its own blanks where these were among those around the text.
bool take_symbol(const number_format& format, const remainder& text, remainder& rest) {
    std::string_view symbol(format.symbol, format.symbol_length);
    if (take_symbol(symbol, format.symbol_leads, rest)) {
        return true;
    }
    if (format.symbol_leads) {
        symbol.remove_prefix(std::min(symbol.find_first_not_of(' '), symbol.size()));
        return rest.begin == text.begin && take_symbol(symbol, true, rest);
    }
    symbol = symbol.substr(0, symbol.find_last_not_of(' ') + 1);
    return rest.end == text.end && take_symbol(symbol, false, rest);
}

// Takes the sign and the symbol away. A symbol may begin or end like a sign.
stop take_frame(const number_format& format, remainder& text, bool& negative) {
    remainder rest = text;
    take_sign(format.sign, rest, negative);
    remainder unsigned_rest = text;
    if (take_symbol(format, text, rest)) {
        text = rest;
    } else if (take_symbol(format, text, unsigned_rest)) {
        negative = false;
        text = unsigned_rest;
    } else {
        return {number_fault::departs, format.symbol_leads ? rest.begin : rest.end};
    }
    return {number_fault::none, nullptr};
}

// ---- digits ------------------------------------------------------------------------------------------------------

bool has_mark(const digit_run& run) { return run.columns != run.digits; }

char group_separator(const number_format& format) {
    for (std::uint32_t i = 0; i < format.run_count; ++i) {
        if (has_mark(format.runs[i])) {
            return format.runs[i].mark == format.point ? '\0' : format.runs[i].mark;
        }
    }
    return '\0';
}

// The digits before the point: the last ones of the format, and separators where it has them, any of which may be missing.
stop read_integer_digits(const number_format& format, remainder& rest, plain_number& number) {
    const char separator = group_separator(format);
    const std::uint8_t* end = rest.begin;
    std::uint32_t digits = 0;
    for (; end != rest.end && (is_digit(*end) || (separator != '\0' && *end == static_cast<std::uint8_t>(separator))); ++end) {
        if (is_digit(*end) && ++digits > format.integer_digits) {
            return {number_fault::too_many_digits, end};
        }
    }
    std::uint32_t left_off = format.integer_digits - digits;
    bool shown = false;
    for (std::uint32_t i = 0; i < format.run_count; ++i) {
        const digit_run& run = format.runs[i];
        for (std::uint32_t k = 0; k < run.digits && number.digits < digits; ++k) {
            if (left_off != 0) {
                --left_off;
                continue;
            }
            if (!is_digit(*rest.begin)) {
                return {number_fault::departs, rest.begin};
            }
            add_digit(number, *rest.begin++);
            shown = true;
        }
        if (has_mark(run) && run.mark == format.point) {
            break;
        }
        if (has_mark(run) && shown && rest.begin != end && *rest.begin == static_cast<std::uint8_t>(run.mark)) {
            ++rest.begin;
        }
    }
    return {rest.begin == end ? number_fault::none : number_fault::departs, rest.begin};
}

// The point, which may be missing with the digits behind it.
stop read_fraction(char point, std::uint32_t most_digits, remainder& rest, plain_number& number) {
    if (point == '\0' || is_empty(rest) || *rest.begin != static_cast<std::uint8_t>(point)) {
        return {number_fault::none, rest.begin};
    }
    ++rest.begin;
    add(number, '.');
    for (std::uint32_t digits = 0; !is_empty(rest) && is_digit(*rest.begin); ++rest.begin) {
        if (++digits > most_digits) {
            return {number_fault::too_many_digits, rest.begin};
        }
        add_digit(number, *rest.begin);
    }
    return {number_fault::none, rest.begin};
}

// E, a sign that may be missing, and digits.
stop read_exponent(remainder& rest, plain_number& number) {
    constexpr std::int32_t beyond_range = 99'999;
    if (is_empty(rest) || (*rest.begin != 'E' && *rest.begin != 'e')) {
        return {number_fault::departs, rest.begin};
    }
    ++rest.begin;
    const bool negative = !is_empty(rest) && *rest.begin == '-';
    rest.begin += negative || (!is_empty(rest) && *rest.begin == '+') ? 1 : 0;
    if (is_empty(rest) || !is_digit(*rest.begin)) {
        return {number_fault::no_digits, rest.begin};
    }
    std::int32_t exponent = 0;
    for (; !is_empty(rest) && is_digit(*rest.begin); ++rest.begin) {
        exponent = std::min(exponent * 10 + (*rest.begin - '0'), beyond_range);
    }
    add_exponent(number, negative ? -exponent : exponent);
    return {number_fault::none, rest.begin};
}

number_fault make_number(const plain_number& number, xdec& result) {
    const auto* const text = reinterpret_cast<const std::uint8_t*>(number.text);
    return xdec_from_char(text, number.length, &result) == BIFUN_OK ? number_fault::none : number_fault::beyond_range;
}

stop read_digits_format(const number_format& format, remainder rest, xdec& result) {
    if (is_empty(rest) && format.blank_zero) {
        xdec_fill_zero(&result);
        return {number_fault::none, rest.begin};
    }
    bool negative = false;
    if (const stop stopped = take_frame(format, rest, negative); stopped.fault != number_fault::none) {
        return stopped;
    }
    plain_number number;
    number.length = 0;
    number.digits = 0;
    if (negative) {
        add(number, '-');
    }
    stop stopped = read_integer_digits(format, rest, number);
    if (stopped.fault == number_fault::none) {
        stopped = read_fraction(format.point, format.fraction_digits, rest, number);
    }
    if (stopped.fault == number_fault::none && number.digits == 0) {
        stopped = {number_fault::no_digits, rest.begin};
    }
    if (stopped.fault == number_fault::none && format.kind == format_kind::scientific) {
        stopped = read_exponent(rest, number);
    }
    if (stopped.fault != number_fault::none) {
        return stopped;
    }
    if (!is_empty(rest)) {
        return {number_fault::departs, rest.begin};
    }
    if (format.multiplier_digits != 0) {
        add_exponent(number, -std::int32_t{format.multiplier_digits});
    }
    return {make_number(number, result), rest.begin};
}

// [-]digits[point digits][exponent], or no digits before the point. A point is one only before a digit: it may be an E.
stop read_shortest_format(const number_format& format, remainder rest, xdec& result) {
    plain_number number;
    number.length = 0;
    number.digits = 0;
    if (!is_empty(rest) && *rest.begin == '-') {
        add(number, static_cast<char>(*rest.begin++));
    }
    for (; !is_empty(rest) && is_digit(*rest.begin); ++rest.begin) {
        if (number.digits == plain_number::most_digits) {
            return {number_fault::too_many_digits, rest.begin};
        }
        add_digit(number, *rest.begin);
    }
    if (rest.end - rest.begin > 1 && is_digit(rest.begin[1])) {
        const stop stopped = read_fraction(format.decimal_point, plain_number::most_digits - number.digits, rest, number);
        if (stopped.fault != number_fault::none) {
            return stopped;
        }
    }
    if (number.digits == 0) {
        return {number_fault::no_digits, rest.begin};
    }
    if (!is_empty(rest)) {
        const stop stopped = read_exponent(rest, number);
        if (stopped.fault != number_fault::none) {
            return stopped;
        }
    }
    return {is_empty(rest) ? make_number(number, result) : number_fault::departs, rest.begin};
}

// ---- hexadecimal digits and Roman numerals -----------------------------------------------------------------------

std::uint32_t hexadecimal_value(std::uint8_t character) {
    const std::uint32_t letter = (character | 0x20U) - 'a';
    return is_digit(character) ? character - unsigned{'0'} : letter < 6 ? letter + 10 : 16;
}

stop read_hexadecimal(const number_format& format, remainder rest, xdec& result) {
    constexpr std::uint32_t limb = 1'000'000'000;
    constexpr std::uint32_t limb_digits = 9;
    std::array<std::uint32_t, 11> limbs{}; // the lowest first: 16^75 has 91 digits
    if (is_empty(rest)) {
        return {number_fault::no_digits, rest.begin};
    }
    for (std::uint32_t digits = 0; !is_empty(rest); ++rest.begin) {
        const std::uint32_t value = hexadecimal_value(*rest.begin);
        if (value > 15 || ++digits > format.integer_digits) {
            return {value > 15 ? number_fault::departs : number_fault::too_many_digits, rest.begin};
        }
        std::uint64_t carry = value;
        for (std::uint32_t& part : limbs) {
            carry += std::uint64_t{part} * 16;
            part = static_cast<std::uint32_t>(carry % limb);
            carry /= limb;
        }
    }
    plain_number number;
    number.length = 0;
    number.digits = 0;
    for (std::size_t i = limbs.size(); i-- > 0;) {
        char* const digits = number.text + number.length;
        for (std::uint32_t k = limb_digits, left = limbs[i]; k-- > 0; left /= 10) {
            digits[k] = static_cast<char>('0' + left % 10);
        }
        number.length += limb_digits;
    }
    return {make_number(number, result), rest.begin};
}

// As they are written: MCMXCIX, not MIM or VIIII.
stop read_roman(remainder rest, xdec& result) {
    struct decade {
        std::string_view nine, four, five, one;
        std::int32_t unit;
    };
    constexpr decade decades[] = {{"CM", "CD", "D", "C", 100}, {"XC", "XL", "L", "X", 10}, {"IX", "IV", "V", "I", 1}};
    format_reader text{.next = rest.begin, .end = rest.end};
    const auto take_up_to_three = [&](std::string_view numeral) {
        std::int32_t count = 0;
        while (count < 3 && take(text, numeral)) {
            ++count;
        }
        return count;
    };
    std::int32_t number = take_up_to_three("M") * 1000;
    for (const decade& each : decades) {
        const std::int32_t digit = take(text, each.nine)   ? 9
                                   : take(text, each.four) ? 4
                                   : take(text, each.five) ? 5 + take_up_to_three(each.one)
                                                           : take_up_to_three(each.one);
        number += digit * each.unit;
    }
    if (text.next != text.end || number == 0) {
        return {number == 0 ? number_fault::no_digits : number_fault::departs, text.next};
    }
    (void)xdec_from_int64(&result, number, XDEC_ANY_PRECISION);
    return {number_fault::none, text.next};
}

stop read(const number_format& format, const remainder& text, xdec& result) {
    switch (format.kind) {
    case format_kind::fixed:
    case format_kind::scientific:
        return read_digits_format(format, text, result);
    case format_kind::hexadecimal:
        return read_hexadecimal(format, text, result);
    case format_kind::roman:
        return read_roman(text, result);
    case format_kind::shortest:
    case format_kind::shortest_scientific:
        break;
    }
    return read_shortest_format(format, text, result);
}

} // namespace

number_reading read_number(const number_format& format, const std::uint8_t* text, std::uint32_t length, xdec& result) {
    const stop stopped = read(format, without_blanks({.begin = text, .end = text + length}), result);
    return {.fault = stopped.fault, .at = static_cast<std::uint32_t>(stopped.at - text)};
}

} // namespace zqengine

using namespace zqengine;

int32_t char_to_dec_with_fmt(bifun_environment* environment, const uint8_t* text, uint32_t length, const uint8_t* format,
                             uint32_t format_length, const uint8_t* nls, uint32_t nls_length, xdec* result, uint32_t* departs_at) {
    number_format own;
    const number_format* parsed = &own;
    const std::int32_t status = find_number_format(environment, {format, format_length, nls, nls_length}, own, parsed);
    if (status != 0) {
        return status;
    }
    if (parsed->decimal_point == ' ') {
        return ZQ_INVALID_NLS_PARAMETERS; // a fraction behind blanks would be read as an integer
    }
    const number_reading reading = read_number(*parsed, text, length, *result);
    if (reading.fault == number_fault::none) {
        return BIFUN_OK;
    }
    if (departs_at != nullptr) {
        *departs_at = reading.at;
    }
    return reading.fault == number_fault::beyond_range ? BIFUN_NUMERIC_OVERFLOW : BIFUN_NUMBER_FORMAT_MISMATCH;
}
