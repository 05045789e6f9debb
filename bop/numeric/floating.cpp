// Arithmetic on DOUBLE in loops that vectorise: ABS, SIGN, CEIL, FLOOR, MOD, DEGREES, RADIANS.

#include <bit>

#include "bop/numeric/overflow.h"

namespace bifun {
namespace {

// Flipping the bit also turns the sign of a NaN, which is not greater than or equal to 0; -0.0 is, and stays.
double magnitude(double x) {
    constexpr std::uint64_t sign_bit = std::uint64_t{1} << 63;
    const auto bits = std::bit_cast<std::uint64_t>(x);
    return std::bit_cast<double>(x >= 0 ? bits : bits ^ sign_bit);
}

std::int32_t sign(double x) { return static_cast<std::int32_t>(x > 0) - static_cast<std::int32_t>(0 > x); }

// The sum quiets a signalling NaN, which not every instruction set's rounding does.
double ceiling(double x) { return std::isnan(x) ? x + x : std::ceil(x); }
double floor_of(double x) { return std::isnan(x) ? x + x : std::floor(x); }

// Pi to fifteen digits, as engines have it; not the double nearest to pi.
constexpr double pi = 3.14159265358979;

double degrees(double x) { return (x * 180.0) / pi; }
double radians(double x) { return (x * pi) / 180.0; }

double remainder(double x, double y) { return y == 0 ? x : std::fmod(x, y); }

// The same where the quotient is below 2^52 and y is finite, and NaN elsewhere. Rounding is monotonic and integers below 2^52 are doubles,
// so the integral part q of the rounded quotient is right or one too large in magnitude; x - q y is exact in both cases, being a multiple
// of the smaller unit of x and y and not above |y|.
INLINED inline double remainder_of_small_quotient(double x, double y) {
    const double quotient = x / y;
    const double rest = std::fma(-std::trunc(quotient), y, x);
    const bool too_far = ((rest < 0) != (x < 0)) & (rest != 0);
    const double mended = too_far ? rest + std::copysign(y, x) : rest;
    const bool known = (std::fabs(quotient) < 0x1p52) & (std::fabs(y) <= std::numeric_limits<double>::max());
    const double result = known ? std::copysign(mended, x) : std::numeric_limits<double>::quiet_NaN();
    return y == 0 ? x : result;
}

template <class X, class Y> WITH_FMA status remainders_of_small_quotients(const batch& batch, const X& x, const Y& y) {
    return set_rows<rows::all, remainder_of_small_quotient>(batch, x, y);
}

bool has_open_rows(const double* results, std::uint32_t row_count) {
    std::uint32_t open = 0;
    for (std::uint32_t k = 0; k < row_count; ++k) {
        open |= static_cast<std::uint32_t>(std::isnan(results[k]));
    }
    return open != 0;
}

// Most quotients are small. The few rows that were left open get the library's remainder.
template <class X, class Y> status remainders(const batch& batch, const X& x, const Y& y) {
    if (is_null_constant(x) || is_null_constant(y)) {
        return null_rows(batch);
    }
    if (!setters_are_plain_stores() || !has_fma()) {
        return set_rows<rows::present, remainder>(batch, x, y);
    }
    (void)remainders_of_small_quotients(batch, x, y);
    double* const results = values<double>(batch);
    if (!has_open_rows(results, batch.row_count)) {
        return BIFUN_OK;
    }
    return with_rows(
        [batch, results](const auto& x_rows, const auto& y_rows) -> status {
            for (std::uint32_t k = 0; k < batch.row_count; ++k) {
                if (null_flags(batch)[k] != 0 && std::isnan(results[k])) {
                    results[k] = remainder(x_rows[k], y_rows[k]);
                }
            }
            return BIFUN_OK;
        },
        x, y);
}

} // namespace
} // namespace bifun

using namespace bifun;

VECTORISED status babs_a_math_dbl(BATCH_OF(column x)) { return set_rows<rows::all, magnitude>(BATCH, floating(x)); }
VECTORISED status bsign_a_math_dbl(BATCH_OF(column x)) { return set_rows<rows::all, sign>(BATCH, floating(x)); }
VECTORISED status bceil_a_math_dbl(BATCH_OF(column x)) { return set_rows<rows::all, ceiling>(BATCH, floating(x)); }
VECTORISED status bfloor_a_math_dbl(BATCH_OF(column x)) { return set_rows<rows::all, floor_of>(BATCH, floating(x)); }

status bmod_va_do_math_dbl(BATCH_OF(double_constant x, column y)) { return remainders(BATCH, floating(x), floating(y)); }
status bmod_av_do_math_dbl(BATCH_OF(column x, double_constant y)) { return remainders(BATCH, floating(x), floating(y)); }
status bmod_aa_math_dbl(BATCH_OF(column x, column y)) { return remainders(BATCH, floating(x), floating(y)); }

VECTORISED status bdegrees_a_math_dbl(BATCH_OF(column x)) {
    return set_rows<rows::all, degrees, row_checks<nullptr, check_overflow, failing_row::zero>>(BATCH, floating(x));
}
VECTORISED status bradians_a_math_dbl(BATCH_OF(column x)) { return set_rows<rows::all, radians>(BATCH, floating(x)); }
