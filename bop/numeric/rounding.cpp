// SPDX-License-Identifier: Apache-2.0
// ROUND and TRUNC of DOUBLE, and TRUNC of digit strings.

#include <array>

#include "bop/frame/row_loop.h"
#include "bop/frame/vector_arithmetic.h"
#include "bop/numeric/entry_points.h"
#include "bop/numeric/overflow.h"

namespace bifun {
namespace {

// ---- DOUBLE ----

// A scale of ROUND and its power of ten, which is `10^|digits|`.
struct rounding_scale {
    std::int32_t digits;
    double factor;
};

constexpr std::int32_t most_digits = 38; // beyond what any number of the engine has, ROUND is the identity

// As doubles, for the smallest INT has no negative.
rounding_scale scale_of(std::int32_t digits) { return {digits, std::pow(10.0, std::fabs(static_cast<double>(digits)))}; }

// The nearest integer, halves away from zero. The largest double below 0.5 is added, which carries just those into the next integer that
// lie half a unit or more above one: a half itself gives a sum that is rounded up.
double whole(double x) {
    constexpr double below_half = 0x1.fffffffffffffp-2;
    return rounded_toward_zero(x + std::copysign(below_half, x));
}

// Digits right of the point. Where x has no place for them any more it is its own result.
double round_right(double x, const rounding_scale& scale) {
    const double scaled = x * scale.factor;
    const double rounded = whole(scaled) / scale.factor;
    return std::fabs(scaled) > std::numeric_limits<double>::max() ? x : rounded;
}

// Digits left of the point.
double round_left(double x, const rounding_scale& scale) { return whole(x / scale.factor) * scale.factor; }

// The same with a factor of 1.
double round_to_integer(double x, const rounding_scale&) { return whole(x); }

// So many digits left of the point that nothing remains.
double round_away(double x, const rounding_scale&) { return x == 0 ? x : 0.0; }

double round_not_at_all(double x, const rounding_scale&) { return x; }

double round_by(double x, std::int32_t digits) {
    if (digits > most_digits) {
        return x;
    }
    const rounding_scale scale = scale_of(digits);
    if (digits > 0) {
        return round_right(x, scale);
    }
    return std::isinf(scale.factor) ? round_away(x, scale) : round_left(x, scale);
}

using round_checks = row_checks<nullptr, check_overflow, failing_row::zero>;
// A digit right of the point, or none, is never carried beyond the largest double, which is an integer.
using round_right_checks = row_checks<nullptr, check_overflow, failing_row::zero, true>;

status round_by_constant(batch_of<DOUBLE> batch, column_of<DOUBLE> x, constant_of<INT> digits) {
    const auto [count, present] = argument(digits);
    const constant_argument scale{scale_of(count), present};
    if (count > most_digits) {
        return set_all_rows<round_not_at_all, round_right_checks>(batch, x, scale);
    }
    if (count > 0) {
        return set_all_rows<round_right, round_right_checks>(batch, x, scale);
    }
    if (count == 0) {
        return set_all_rows<round_to_integer, round_right_checks>(batch, x, scale);
    }
    return std::isinf(scale.value.factor) ? set_all_rows<round_away, round_checks>(batch, x, scale)
                                          : set_all_rows<round_left, round_checks>(batch, x, scale);
}

// The sum quiets a signalling NaN, which not every processor's rounding does.
double truncate(double x) { return std::isnan(x) ? x + x : rounded_toward_zero(x); }

// ---- digit strings ----

// Digits with at most one point, of which only the beginning counts.
constexpr std::uint32_t most_digit_bytes = 319;

struct digit_text {
    std::array<std::uint8_t, most_digit_bytes + 1> bytes; // and a closing NUL
    std::uint32_t length;
    std::uint32_t point; // where the point is, or the length
};

status read_digits(const bifun_string& text, digit_text& digits) {
    digits.length = std::min(text.length, most_digit_bytes);
    digits.point = digits.length;
    for (std::uint32_t i = 0; i < digits.length; ++i) {
        const std::uint8_t byte = text.data[i];
        if (byte == '.' && digits.point == digits.length) {
            digits.point = i;
        } else if (byte < '0' || byte > '9') {
            return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
        }
        digits.bytes[i] = byte;
    }
    return BIFUN_OK;
}

// Not inlined: its buffer is more than a loop over rows should have beside its own.
[[gnu::noinline]] status truncate_digits(const bifun_string& text, std::int32_t scale, double& result) {
    digit_text digits;
    const status read = read_digits(text, digits);
    if (read != BIFUN_OK) {
        return read;
    }
    std::uint32_t length;
    if (scale >= 1) {
        const std::int64_t end = static_cast<std::int64_t>(digits.point) + 1 + scale;
        length = static_cast<std::uint32_t>(std::min<std::int64_t>(end, digits.length));
    } else {
        const std::int64_t cut = static_cast<std::int64_t>(digits.point) + scale;
        if (static_cast<std::int64_t>(digits.length) + scale < 1 || cut <= 0) {
            result = 0;
            return BIFUN_OK;
        }
        std::fill(digits.bytes.begin() + cut, digits.bytes.begin() + digits.point, std::uint8_t{'0'});
        length = digits.point;
    }
    digits.bytes[length] = 0;
    return utl_digit_from_char(digits.bytes.data(), length, &result) < 0 ? BIFUN_ARGUMENT_OUT_OF_DOMAIN : BIFUN_OK;
}

} // namespace

status entry::btrunc_def_a_math_dbl(batch_of<DOUBLE> batch, column_of<DOUBLE> x) { return store_all_rows<truncate>(batch, x); }

status entry::bround_va_do_math_dbl(batch_of<DOUBLE> batch, constant_of<DOUBLE> x, column_of<INT> digits) {
    return set_rows<round_by, round_checks>(batch, x, digits);
}
status entry::bround_av_li_math_dbl(batch_of<DOUBLE> batch, column_of<DOUBLE> x, constant_of<INT> digits) {
    return round_by_constant(batch, x, digits);
}
status entry::bround_aa_math_dbl(batch_of<DOUBLE> batch, column_of<DOUBLE> x, column_of<INT> digits) {
    return set_rows<round_by, round_checks>(batch, x, digits);
}

status entry::btrunc_va_s_math(batch_of<DOUBLE> batch, constant_of<VARCHAR> text, column_of<INT> scale) {
    return store_rows<truncate_digits>(batch, text, scale);
}
status entry::btrunc_av_li_math(batch_of<DOUBLE> batch, column_of<VARCHAR> text, constant_of<INT> scale) {
    return store_rows<truncate_digits>(batch, text, scale);
}
status entry::btrunc_aa_math(batch_of<DOUBLE> batch, column_of<VARCHAR> text, column_of<INT> scale) {
    return store_rows<truncate_digits>(batch, text, scale);
}

} // namespace bifun
