// ROUND and TRUNC of DOUBLE, and TRUNC of digit strings.

#include <array>

#include "bop/frame/attempt_rows.h"
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

// x scaled and rounded to an integer, halves away from zero.
INLINED inline double whole(double x, double scaled) {
    const double integral = std::trunc(scaled);
    const double fraction = scaled - integral;
    const double up = ((x > 0) & (fraction >= 0.5)) ? integral + 1.0 : integral;
    return ((x < 0) & (fraction <= -0.5)) ? integral - 1.0 : up;
}

// Digits right of the point. Where x has no place for them any more it is its own result.
INLINED inline double round_right(double x, const rounding_scale& scale) {
    const double scaled = x * scale.factor;
    const bool is_result = (x == 0) | (std::fabs(scaled) > std::numeric_limits<double>::max());
    const double rounded = whole(x, scaled) / scale.factor;
    return is_result ? x : rounded;
}

// Digits left of the point.
INLINED inline double round_left(double x, const rounding_scale& scale) {
    const double rounded = whole(x, x / scale.factor) * scale.factor;
    return x == 0 ? x : rounded;
}

// The same with a factor of 1, which leaves x as it is.
INLINED inline double round_to_integer(double x, const rounding_scale&) {
    const double rounded = whole(x, x);
    return x == 0 ? x : rounded;
}

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

template <class X> INLINED inline status round_by_constant(const batch& batch, const X& x, int_constant digits) {
    const rounding_scale scale = scale_of(digits->not_null != 0 ? digits->value : 0);
    const constant_argument<rounding_scale> argument{scale, digits->not_null != 0};
    if (scale.digits > most_digits) {
        return set_rows<rows::all, round_not_at_all, round_checks>(batch, x, argument);
    }
    if (scale.digits > 0) {
        return set_rows<rows::all, round_right, round_checks>(batch, x, argument);
    }
    if (scale.digits == 0) {
        return set_rows<rows::all, round_to_integer, round_checks>(batch, x, argument);
    }
    return std::isinf(scale.factor) ? set_rows<rows::all, round_away, round_checks>(batch, x, argument)
                                    : set_rows<rows::all, round_left, round_checks>(batch, x, argument);
}

double truncate(double x) {
    const double sign = x > 0 ? 1.0 : x < 0 ? -1.0 : 0.0;
    return std::floor(x * sign) * sign;
}

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

status truncate_digits(const bifun_string& text, std::int32_t scale, double& result) {
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

template <class Text, class Scale> status truncate_texts(const batch& batch, const Text& text, const Scale& scale) {
    return attempt_store_rows<double>(
        batch, [](double& result, const bifun_string& value, std::int32_t digits) { return truncate_digits(value, digits, result); }, text,
        scale);
}

} // namespace
} // namespace bifun

using namespace bifun;

VECTORISED status btrunc_def_a_math_dbl(BATCH_OF(column x)) { return store_rows<rows::all, truncate>(BATCH, floating(x)); }

status bround_va_do_math_dbl(BATCH_OF(double_constant x, column digits)) {
    return set_rows<rows::present, round_by, round_checks>(BATCH, floating(x), integer(digits));
}
VECTORISED status bround_av_li_math_dbl(BATCH_OF(column x, int_constant digits)) { return round_by_constant(BATCH, floating(x), digits); }
status bround_aa_math_dbl(BATCH_OF(column x, column digits)) {
    return set_rows<rows::present, round_by, round_checks>(BATCH, floating(x), integer(digits));
}

status btrunc_va_s_math(BATCH_OF(string_constant text, column scale)) { return truncate_texts(BATCH, string(text), integer(scale)); }
status btrunc_av_li_math(BATCH_OF(column text, int_constant scale)) { return truncate_texts(BATCH, string(text), integer(scale)); }
status btrunc_aa_math(BATCH_OF(column text, column scale)) { return truncate_texts(BATCH, string(text), integer(scale)); }
