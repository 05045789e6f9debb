// SPDX-License-Identifier: Apache-2.0
// ABS, CEIL, FLOOR, TRUNC and MOD of integers.

#include <limits>

#include "bop/frame/row_loop.h"
#include "bop/frame/vector_arithmetic.h"
#include "bop/numeric/entry_points.h"

namespace bifun {
namespace {

status check_magnitude(std::int64_t x) { return x == std::numeric_limits<std::int64_t>::min() ? BIFUN_NUMERIC_OVERFLOW : BIFUN_OK; }

// In unsigned arithmetic, so that it is defined for the one value without a magnitude too.
std::int64_t magnitude(std::int64_t x) {
    const auto sign = static_cast<std::uint64_t>(x >> 63);
    return static_cast<std::int64_t>((static_cast<std::uint64_t>(x) ^ sign) - sign);
}

// An integer is its own ceiling, floor and truncation.
std::int32_t whole_integer(std::int32_t x) { return x; }
std::int64_t whole_bigint(std::int64_t x) { return x; }

// The remainder has the sign of x. Dividing the smallest BIGINT by -1 would trap.
std::int64_t remainder(std::int64_t x, std::int64_t y) {
    if (y == 0) {
        return x;
    }
    return y == -1 ? 0 : x % y;
}

// The same without integer division, which vectors do not have. With d = y and q = x / d in double arithmetic, whose
// error is below |q| 2^-51, x - q d is at most |d| + 2^12 in magnitude; dividing that once more leaves a remainder that is wrong by at
// most one d. Differences and products wrap; only the remainder has to be right.
std::int64_t remainder_by_reciprocal(std::int64_t x, std::int64_t y) {
    const bool y_is_trivial = static_cast<std::uint64_t>(y) + 1 <= 2; // -1, 0 or 1
    const std::int64_t divisor = y + 3 * static_cast<std::int64_t>(y_is_trivial);
    const double reciprocal = 1.0 / static_cast<double>(divisor);
    const auto quotient = [reciprocal](std::uint64_t dividend) {
        return static_cast<std::uint64_t>(static_cast<std::int64_t>(static_cast<double>(static_cast<std::int64_t>(dividend)) * reciprocal));
    };
    const auto d = static_cast<std::uint64_t>(divisor);
    auto rest = static_cast<std::uint64_t>(x);
    rest -= quotient(rest) * d;
    rest -= quotient(rest) * d;

    // As magnitudes: a rest below 0 or not below |d| is mended, then it gets the sign of x.
    const auto sign_of_x = static_cast<std::uint64_t>(x >> 63);
    const auto sign_of_d = static_cast<std::uint64_t>(divisor >> 63);
    const std::uint64_t modulus = (d ^ sign_of_d) - sign_of_d;
    std::uint64_t magnitude = (rest ^ sign_of_x) - sign_of_x;
    magnitude += static_cast<std::int64_t>(magnitude) < 0 ? modulus : 0;
    magnitude -= magnitude >= modulus ? modulus : 0;
    const auto remainder = static_cast<std::int64_t>((magnitude ^ sign_of_x) - sign_of_x);
    const std::int64_t trivial_remainder = y == 0 ? x : 0;
    return y_is_trivial ? trivial_remainder : remainder;
}

constexpr auto remainder_in_vectors = vectors_convert_bigints ? remainder_by_reciprocal : remainder;

// Divisions one by one are faster by the instruction.
template <class X, class Y> status remainders(batch_of<BIGINT> batch, X x, Y y) {
    return setters_are_plain_stores() ? store_all_rows<remainder_in_vectors>(batch, x, y) : set_rows<remainder>(batch, x, y);
}

} // namespace

status entry::babs_a_math_int(batch_of<BIGINT> batch, column_of<BIGINT> x) {
    return set_all_rows<magnitude, row_checks<check_magnitude, nullptr, failing_row::unwritten>>(batch, x);
}

status entry::bceil_a_math_int(batch_of<INT> batch, column_of<INT> x) { return set_all_rows<whole_integer>(batch, x); }
status entry::bfloor_a_math_int(batch_of<INT> batch, column_of<INT> x) { return set_all_rows<whole_integer>(batch, x); }
status entry::btrunc_int_def_a_math_int(batch_of<INT> batch, column_of<INT> x) { return set_all_rows<whole_integer>(batch, x); }
status entry::bceil_a_math_int64(batch_of<BIGINT> batch, column_of<BIGINT> x) { return set_all_rows<whole_bigint>(batch, x); }

status entry::bmod_va_do_math_int64(batch_of<BIGINT> batch, constant_of<BIGINT> x, column_of<BIGINT> y) { return remainders(batch, x, y); }
status entry::bmod_av_do_math_int64(batch_of<BIGINT> batch, column_of<BIGINT> x, constant_of<BIGINT> y) { return remainders(batch, x, y); }
status entry::bmod_aa_math_int64(batch_of<BIGINT> batch, column_of<BIGINT> x, column_of<BIGINT> y) { return remainders(batch, x, y); }

} // namespace bifun
