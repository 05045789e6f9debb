// SPDX-License-Identifier: Apache-2.0
#include "embedded/json/json_numbers.h"

#include <algorithm>
#include <cstring>

#include "bop/frame/status.h"
#include "embedded/decimal/digits.h"
#include "engine/json.h"
#include "engine/number_format.h"
#include "layouts/order.h"

namespace zqengine {

namespace {

// How many digits a text begins with.
std::size_t count_digits(std::string_view text) {
    std::size_t count = 0;
    while (text.size() - count >= sizeof(std::uint64_t)) {
        std::uint64_t characters = 0;
        std::memcpy(&characters, text.data() + count, sizeof characters);
        const std::uint32_t leading = leading_digits(characters);
        count += leading;
        if (leading < sizeof characters) {
            return count;
        }
    }
    while (count < text.size() && text[count] >= '0' && text[count] <= '9') {
        ++count;
    }
    return count;
}

// 0.d1d2d3... x 10^position with its sign; d1 is not 0. Zero has no digits.
struct scaled_digits {
    bool negative;
    std::int64_t position;
    std::string_view digits; // with the point among them, and zeros behind
};

std::int64_t exponent_of(std::string_view text) {
    constexpr std::int64_t beyond_any_text = 1'000'000'000'000'000'000 / 100;
    const bool negative = text.starts_with('-');
    text.remove_prefix(negative || text.starts_with('+') ? 1 : 0);
    std::int64_t exponent = 0;
    for (const char digit : text) {
        exponent = std::min(exponent * 10 + (digit - '0'), beyond_any_text);
    }
    return negative ? -exponent : exponent;
}

scaled_digits scale(std::string_view number) {
    const bool negative = number.starts_with('-');
    number.remove_prefix(negative ? 1 : 0);
    const std::size_t mark = std::min(number.find_first_of("eE"), number.size());
    const std::int64_t exponent = mark == number.size() ? 0 : exponent_of(number.substr(mark + 1));
    const std::string_view mantissa = number.substr(0, mark);
    const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
    const std::size_t first = std::min(mantissa.find_first_not_of("0."), mantissa.size());
    const auto before_point = static_cast<std::int64_t>(point) - static_cast<std::int64_t>(first) + (first > point ? 1 : 0);
    return {.negative = negative, .position = before_point + exponent, .digits = mantissa.substr(first)};
}

char take_digit(std::string_view& digits) {
    digits.remove_prefix(digits.starts_with('.') ? 1 : 0);
    const char digit = digits.empty() ? '0' : digits.front();
    digits.remove_prefix(digits.empty() ? 0 : 1);
    return digit;
}

std::int32_t compare_magnitudes(scaled_digits a, scaled_digits b) {
    if (a.position != b.position) {
        return bifun::order(a.position, b.position);
    }
    while (!a.digits.empty() || !b.digits.empty()) {
        const char digit_of_a = take_digit(a.digits);
        const char digit_of_b = take_digit(b.digits);
        if (digit_of_a != digit_of_b) {
            return bifun::order(digit_of_a, digit_of_b);
        }
    }
    return 0;
}

} // namespace

std::size_t json_number_length(std::string_view text) {
    std::size_t at = 0;
    const auto character = [&] { return at < text.size() ? text[at] : '\0'; };
    at += character() == '-' ? 1 : 0;
    const std::size_t digits = count_digits(text.substr(at));
    if (digits == 0 || (digits > 1 && character() == '0')) {
        return 0;
    }
    at += digits;
    if (character() == '.') {
        const std::size_t fraction = count_digits(text.substr(at + 1));
        if (fraction == 0) {
            return 0;
        }
        at += 1 + fraction;
    }
    if (character() == 'e' || character() == 'E') {
        ++at;
        at += character() == '+' || character() == '-' ? 1 : 0;
        const std::size_t exponent = count_digits(text.substr(at));
        if (exponent == 0) {
            return 0;
        }
        at += exponent;
    }
    return at;
}

std::int32_t compare_json_numbers(std::string_view a, std::string_view b) {
    const scaled_digits left = scale(a);
    const scaled_digits right = scale(b);
    const auto sign = [](const scaled_digits& number) { return number.digits.empty() ? 0 : number.negative ? -1 : 1; };
    if (sign(left) != sign(right) || sign(left) == 0) {
        return bifun::order(sign(left), sign(right));
    }
    return compare_magnitudes(left, right) * sign(left);
}

std::string_view without_spaces(std::string_view text) {
    const auto is_space = [](char character) { return character == ' ' || (character >= '\t' && character <= '\r'); };
    while (!text.empty() && is_space(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && is_space(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

} // namespace zqengine

int32_t json_get_double(const uint8_t* text, uint32_t length, double* result) {
    const std::string_view number = zqengine::without_spaces({reinterpret_cast<const char*>(text), length});
    const bool has_sign = number.starts_with('+') || number.starts_with('-');
    // An infinity or NaN has no digit there, and a second sign is none.
    const std::string_view digits = number.substr(has_sign ? 1 : 0);
    const std::size_t first = digits.find_first_of("0123456789");
    if (first > 1 || (first == 1 && digits.front() != '.')) {
        return BIFUN_UNUSABLE_TEXT;
    }
    return zq_char2dou(reinterpret_cast<const std::uint8_t*>(number.data()), static_cast<std::uint32_t>(number.size()), result);
}
