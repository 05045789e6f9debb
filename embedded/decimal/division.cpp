// SPDX-License-Identifier: Apache-2.0
#include "embedded/decimal/division.h"

#include <algorithm>

#include "bop/frame/status.h"
#include "embedded/decimal/decimal_parts.h"

namespace zqengine {

namespace {

// remainder x 10 / divisor, without 129th bits: ten times the remainder is added. It is below the divisor before and after.
std::uint32_t next_digit(uint128 divisor, uint128& remainder) {
    uint128 sum = 0;
    std::uint32_t digit = 0;
    for (int i = 0; i < 10; ++i) {
        sum += remainder;
        if (sum >= divisor) {
            sum -= divisor;
            ++digit;
        }
    }
    remainder = sum;
    return digit;
}

} // namespace

std::int32_t divide(const xdec& dividend, const xdec& divisor, xdec& result) {
    const decimal_parts above = split_decimal(dividend);
    const decimal_parts below = split_decimal(divisor);
    if (below.coefficient == 0) {
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    uint128 quotient = above.coefficient / below.coefficient;
    uint128 remainder = above.coefficient % below.coefficient;
    std::int64_t scale = above.scale - below.scale;
    const std::int64_t least_scale = std::max<std::int64_t>(above.scale, 0) - std::max<std::int64_t>(below.scale, 0);
    // So many digits at once: the remainder is below the divisor.
    const std::uint32_t digits_at_once = max_coefficient_digits - digit_count(below.coefficient);
    while (remainder != 0 && scale <= max_scale && digit_count(quotient) < max_coefficient_digits) {
        const std::uint32_t digits = std::min(digits_at_once, max_coefficient_digits - digit_count(quotient));
        if (digits == 0) {
            quotient = quotient * 10 + next_digit(below.coefficient, remainder);
            ++scale;
            continue;
        }
        remainder *= powers_of_ten[digits];
        quotient = quotient * powers_of_ten[digits] + remainder / below.coefficient;
        remainder %= below.coefficient;
        scale += digits;
    }
    while (remainder == 0 && scale > least_scale && quotient % 10 == 0) {
        quotient /= 10;
        --scale;
    }
    return make_decimal(&result, {.coefficient = quotient,
                                  .scale = scale,
                                  .negative = above.negative != below.negative,
                                  .half = remainder >= below.coefficient - remainder});
}

} // namespace zqengine
