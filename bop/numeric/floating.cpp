// SPDX-License-Identifier: Apache-2.0
// Arithmetic on DOUBLE in loops that vectorise: ABS, SIGN, CEIL, FLOOR, MOD, DEGREES, RADIANS.

#include <bit>

#include "bop/frame/vector_arithmetic.h"
#include "bop/numeric/entry_points.h"
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

// The sum quiets a signalling NaN, which not every processor's rounding does.
double ceiling(double x) { return std::isnan(x) ? x + x : rounded_up(x); }
double floor_of(double x) { return std::isnan(x) ? x + x : rounded_down(x); }

// Pi to fifteen digits, as engines have it; not the double nearest to pi.
constexpr double pi = 3.14159265358979;

double degrees(double x) { return (x * 180.0) / pi; }
double radians(double x) { return (x * pi) / 180.0; }

double remainder(double x, double y) { return y == 0 ? x : std::fmod(x, y); }

// The same where the quotient is below 2^52 and y is finite, and NaN elsewhere. Rounding is monotonic and integers below 2^52 are doubles,
// so the integral part q of the rounded quotient is right or one too large in magnitude; x - q y is exact in both cases, being a multiple
// of the smaller unit of x and y and not above |y|.
double remainder_of_small_quotient(double x, double y) {
    const double quotient = x / y;
    const double rest = std::fma(-rounded_toward_zero(quotient), y, x);
    const bool too_far = ((rest < 0) != (x < 0)) & (rest != 0);
    const double mended = too_far ? rest + std::copysign(y, x) : rest;
    const bool known = (std::fabs(quotient) < 0x1p52) & (std::fabs(y) <= std::numeric_limits<double>::max());
    const double result = known ? std::copysign(mended, x) : std::numeric_limits<double>::quiet_NaN();
    return y == 0 ? x : result;
}

// Most quotients are small, so a block is computed at once; the few rows that are left open get the library's remainder.
template <class X, class Y> status remainders_at_once(const batch& batch, const X& x, const Y& y) {
    if (is_null_constant(x) || is_null_constant(y)) {
        return null_rows(batch);
    }
    const bool no_nulls = has_no_nulls(x) && has_no_nulls(y);
    batch.result->no_nulls = joint_no_null_flag(x, y);
    const auto divide = [&](std::uint32_t first, std::uint32_t count, const auto& x_rows, const auto& y_rows) -> status {
        std::uint8_t* const flags = null_flags(batch) + first;
        double* const results = values<double>(batch) + first;
        write_null_flags(flags, count, no_nulls, x_rows, y_rows);
        compute_block<remainder_of_small_quotient>(results, flags, count, no_nulls, x_rows, y_rows);
        std::uint32_t open = 0;
        for (std::uint32_t k = 0; k < count; ++k) {
            open |= static_cast<std::uint32_t>(std::isnan(results[k]));
        }
        for (std::uint32_t k = 0; open != 0 && k < count; ++k) {
            if (flags[k] != 0 && std::isnan(results[k])) {
                results[k] = remainder(x_rows[k], y_rows[k]);
            }
        }
        return BIFUN_OK;
    };
    return for_each_block(batch.row_count, divide, x, y);
}

template <class X, class Y> status remainders(batch_of<DOUBLE> batch, X x, Y y) {
    return vectors_fuse_multiply_add && setters_are_plain_stores() ? remainders_at_once(batch, argument(x), argument(y))
                                                                   : set_rows<remainder>(batch, x, y);
}

} // namespace

status entry::babs_a_math_dbl(batch_of<DOUBLE> batch, column_of<DOUBLE> x) { return set_all_rows<magnitude>(batch, x); }
status entry::bsign_a_math_dbl(batch_of<INT> batch, column_of<DOUBLE> x) { return set_all_rows<sign>(batch, x); }
status entry::bceil_a_math_dbl(batch_of<DOUBLE> batch, column_of<DOUBLE> x) { return set_all_rows<ceiling>(batch, x); }
status entry::bfloor_a_math_dbl(batch_of<DOUBLE> batch, column_of<DOUBLE> x) { return set_all_rows<floor_of>(batch, x); }

status entry::bmod_va_do_math_dbl(batch_of<DOUBLE> batch, constant_of<DOUBLE> x, column_of<DOUBLE> y) { return remainders(batch, x, y); }
status entry::bmod_av_do_math_dbl(batch_of<DOUBLE> batch, column_of<DOUBLE> x, constant_of<DOUBLE> y) { return remainders(batch, x, y); }
status entry::bmod_aa_math_dbl(batch_of<DOUBLE> batch, column_of<DOUBLE> x, column_of<DOUBLE> y) { return remainders(batch, x, y); }

status entry::bdegrees_a_math_dbl(batch_of<DOUBLE> batch, column_of<DOUBLE> x) {
    return set_all_rows<degrees, row_checks<nullptr, check_overflow, failing_row::zero>>(batch, x);
}
status entry::bradians_a_math_dbl(batch_of<DOUBLE> batch, column_of<DOUBLE> x) { return set_all_rows<radians>(batch, x); }

} // namespace bifun
