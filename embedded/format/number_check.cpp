// SPDX-License-Identifier: Apache-2.0
#include "engine/number_check.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>

#include "bop/frame/status.h"
#include "engine/number_format.h"

int32_t ntype_is_double_overflow(double value) { return std::isinf(value) ? BIFUN_NUMERIC_OVERFLOW : BIFUN_OK; }

int32_t utl_digit_from_char(const uint8_t* text, uint32_t length, double* result) {
    const auto* const first = reinterpret_cast<const char*>(text);
    const char* const last = first + length;
    // No sign, exponent or name of an infinity, which the conversion would read.
    if (!std::all_of(first, last, [](char byte) { return (byte >= '0' && byte <= '9') || byte == '.'; })) {
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    return zq_char2dou(text, length, result) == BIFUN_OK ? BIFUN_OK : BIFUN_ARGUMENT_OUT_OF_DOMAIN;
}

int32_t str2int64(const uint8_t* text, uint32_t length, int64_t* result) {
    const auto* first = reinterpret_cast<const char*>(text);
    const char* last = first + length;
    const auto is_no_blank = [](char byte) { return byte != ' '; };
    first = std::find_if(first, last, is_no_blank);
    last = std::find_if(std::reverse_iterator(last), std::reverse_iterator(first), is_no_blank).base();
    const bool has_plus = last - first > 1 && first[0] == '+' && first[1] != '-';
    std::int64_t number;
    const auto [end, error] = std::from_chars(first + (has_plus ? 1 : 0), last, number);
    if (end != last || error != std::errc()) {
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    *result = number;
    return BIFUN_OK;
}
