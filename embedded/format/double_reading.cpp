// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <bit>
#include <charconv>
#include <limits>
#include <string_view>

#include "bop/frame/status.h"
#include "embedded/decimal/nearest_double.h"
#include "embedded/decimal/number_scan.h"
#include "embedded/decimal/plain_number.h"
#include "engine/number_format.h"

namespace zqengine {

namespace {

// The bits of the double that is nearest to what the digits say, or 0 where that is not told. Their integer is above 0.
std::uint64_t nearest_bits(const scanned_number& number) {
    const std::int64_t scale = number.scale - static_cast<std::int64_t>(number.digits.dropped);
    if (number.digits.coefficient == 0) {
        return nearest_double_bits(number.digits.pending, scale);
    }
    digit_reader digits = number.digits;
    settle(digits);
    return nearest_double_bits(digits.coefficient, scale, digits.dropped == 0);
}

// By the standard library, which reads any number of digits. The text is a number.
[[gnu::noinline]] std::int32_t read_generally(text_span text, const scanned_number& number, double& magnitude) {
    const auto is_first = [](std::uint8_t byte) { return byte == '.' || is_digit(byte); };
    const auto* const first = reinterpret_cast<const char*>(std::find_if(text.begin, text.end, is_first));
    if (std::from_chars(first, reinterpret_cast<const char*>(text.end), magnitude).ec == std::errc::result_out_of_range) {
        // Above 1 it is beyond the largest double, or else less than half of the smallest.
        const std::int64_t before_point = number.digits.digits + static_cast<std::int64_t>(number.digits.dropped) - number.scale;
        if (before_point > 0) {
            return BIFUN_NUMERIC_OVERFLOW;
        }
        magnitude = 0;
    }
    return BIFUN_OK;
}

bool equal_ignoring_case(std::string_view text, std::string_view lower) {
    return std::ranges::equal(text, lower, [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a + ('a' - 'A') : a) == b; });
}

[[gnu::noinline]] std::int32_t read_name(text_span text, double& value) {
    std::string_view name(reinterpret_cast<const char*>(text.begin), static_cast<std::size_t>(text.end - text.begin));
    name.remove_prefix(std::min(name.find_first_not_of(' '), name.size()));
    name.remove_suffix(name.size() - (name.find_last_not_of(' ') + 1));
    const bool negative = name.starts_with('-');
    name.remove_prefix(negative || name.starts_with('+') ? 1 : 0);
    if (equal_ignoring_case(name, "nan")) {
        value = std::numeric_limits<double>::quiet_NaN();
    } else if (equal_ignoring_case(name, "infinity") || equal_ignoring_case(name, "inf")) {
        value = negative ? -std::numeric_limits<double>::infinity() : std::numeric_limits<double>::infinity();
    } else {
        return BIFUN_UNUSABLE_TEXT;
    }
    return BIFUN_OK;
}

[[gnu::noinline]] std::int32_t read_scanned(text_span text, double& result) {
    const scanned_number number = scan_number(text);
    if (!number.is_number) {
        return read_name(text, result);
    }
    double magnitude = 0;
    if (number.digits.digits != 0) {
        const std::uint64_t bits = nearest_bits(number);
        if (bits != 0) [[likely]] {
            magnitude = std::bit_cast<double>(bits);
        } else if (const std::int32_t status = read_generally(text, number, magnitude); status != BIFUN_OK) {
            return status;
        }
    }
    result = number.negative ? -magnitude : magnitude;
    return BIFUN_OK;
}

} // namespace

} // namespace zqengine

using namespace zqengine;

int32_t zq_char2dou(const uint8_t* characters, uint32_t length, double* result) {
    return with_plain_number(characters, length, [=](const plain_number& plain) {
        const std::uint64_t bits = plain.is_plain && plain.digits != 0 ? nearest_double_bits(plain.digits, plain.scale) : 0;
        if (bits == 0) [[unlikely]] {
            return read_scanned({.begin = characters, .end = characters + length}, *result);
        }
        *result = std::bit_cast<double>(bits | std::uint64_t{plain.negative} << 63);
        return std::int32_t{BIFUN_OK};
    });
}
