// SPDX-License-Identifier: Apache-2.0
// The functions of the mathematics library on DOUBLE, each with its domain check before and its overflow check after the call, and RAND.

#include <cstdlib>

#include "bop/numeric/entry_points.h"
#include "bop/numeric/overflow.h"

namespace bifun {
namespace {

constexpr status outside_domain_if(bool outside) { return outside ? BIFUN_ARGUMENT_OUT_OF_DOMAIN : BIFUN_OK; }

template <auto check> using domain_check = row_checks<check, nullptr, failing_row::zero>;

double sine(double x) { return std::sin(x); }
double cosine(double x) { return std::cos(x); }
double tangent(double x) { return std::tan(x); }

// The argument is tested, not the tangent: no double but 0 has a tangent of 0.
status check_cotangent(double x) { return outside_domain_if(x == 0); }
double cotangent(double x) { return 1.0 / std::tan(x); }

status check_unit_interval(double x) { return outside_domain_if((x > 1.0) | (x < -1.0)); }
double arc_sine(double x) { return std::asin(x); }
double arc_cosine(double x) { return std::acos(x); }

double arc_tangent(double x) { return std::atan(x); }
status check_direction(double y, double x) { return outside_domain_if((y == 0) & (x == 0)); }
double direction(double y, double x) { return std::atan2(y, x); }

double hyperbolic_sine(double x) { return std::sinh(x); }
double hyperbolic_cosine(double x) { return std::cosh(x); }
double hyperbolic_tangent(double x) { return std::tanh(x); }

status check_not_negative(double x) { return outside_domain_if(x < 0); }
double square_root(double x) { return std::sqrt(x); }

double exponential(double x) { return std::exp(x); }

status check_positive(double x) { return outside_domain_if(x <= 0); }
double natural_logarithm(double x) { return std::log(x); }
double decimal_logarithm(double x) { return std::log10(x); }

status check_logarithm(double base, double x) { return outside_domain_if((base <= 0) | (x <= 0) | (base == 1.0)); }
double logarithm(double base, double x) { return std::log(x) / std::log(base); }

// Zero has no negative power, and a negative base no fractional one. A NaN exponent equals nothing, its ceiling included.
status check_power(double x, double y) { return outside_domain_if((x == 0 && y < 0) || (x < 0 && std::ceil(y) != y)); }
double power(double x, double y) { return std::pow(x, y); }
using power_checks = row_checks<check_power, check_bounds, failing_row::zero>;

// A seed without a 64-bit integer counts as the smallest one, whose low word is 0, like the processor's conversion.
unsigned seed_of(double x) {
    constexpr double limit = 0x1p63;
    return x > -limit && x < limit ? static_cast<unsigned>(static_cast<std::uint64_t>(static_cast<std::int64_t>(x))) : 0U;
}

// The process-wide generator is seeded in every row, so equal seeds give equal numbers. It is not locked.
double random_of(double seed) {
    std::srand(seed_of(seed));
    const int drawn = std::rand(); // NOLINT(cert-msc30-c,cert-msc50-cpp): this generator's sequence is the contract
    return static_cast<double>(drawn) / 2147483647.0;
}

} // namespace

status entry::bsin_a_math_dbl(batch_of<DOUBLE> batch, column_of<DOUBLE> x) { return set_rows<sine>(batch, x); }
status entry::bcos_a_math_dbl(batch_of<DOUBLE> batch, column_of<DOUBLE> x) { return set_rows<cosine>(batch, x); }
status entry::btan_a_math_dbl(batch_of<DOUBLE> batch, column_of<DOUBLE> x) { return set_rows<tangent>(batch, x); }
status entry::bcot_a_math_dbl(batch_of<DOUBLE> batch, column_of<DOUBLE> x) {
    return set_rows<cotangent, domain_check<check_cotangent>>(batch, x);
}
status entry::basin_a_math_dbl(batch_of<DOUBLE> batch, column_of<DOUBLE> x) {
    return set_rows<arc_sine, domain_check<check_unit_interval>>(batch, x);
}
status entry::bacos_a_math_dbl(batch_of<DOUBLE> batch, column_of<DOUBLE> x) {
    return set_rows<arc_cosine, domain_check<check_unit_interval>>(batch, x);
}
status entry::batan_a_math_dbl(batch_of<DOUBLE> batch, column_of<DOUBLE> x) { return set_rows<arc_tangent>(batch, x); }
status entry::batan2_va_do_math_dbl(batch_of<DOUBLE> batch, constant_of<DOUBLE> y, column_of<DOUBLE> x) {
    return set_rows<direction, domain_check<check_direction>>(batch, y, x);
}
status entry::batan2_av_do_math_dbl(batch_of<DOUBLE> batch, column_of<DOUBLE> y, constant_of<DOUBLE> x) {
    return set_rows<direction, domain_check<check_direction>>(batch, y, x);
}
status entry::batan2_aa_math_dbl(batch_of<DOUBLE> batch, column_of<DOUBLE> y, column_of<DOUBLE> x) {
    return set_rows<direction, domain_check<check_direction>>(batch, y, x);
}

// SINH alone leaves its failing row as it was.
status entry::bsinh_a_math_dbl(batch_of<DOUBLE> batch, column_of<DOUBLE> x) {
    return set_rows<hyperbolic_sine, row_checks<nullptr, check_bounds, failing_row::unwritten>>(batch, x);
}
status entry::bcosh_a_math_dbl(batch_of<DOUBLE> batch, column_of<DOUBLE> x) {
    return set_rows<hyperbolic_cosine, row_checks<nullptr, check_overflow, failing_row::zero>>(batch, x);
}
status entry::btanh_a_math_dbl(batch_of<DOUBLE> batch, column_of<DOUBLE> x) { return set_rows<hyperbolic_tangent>(batch, x); }

status entry::bsqrt_a_math_dbl(batch_of<DOUBLE> batch, column_of<DOUBLE> x) {
    return set_all_rows<square_root, domain_check<check_not_negative>>(batch, x);
}
status entry::bexp_a_math_dbl(batch_of<DOUBLE> batch, column_of<DOUBLE> x) {
    return set_rows<exponential, row_checks<nullptr, check_overflow, failing_row::zero>>(batch, x);
}
status entry::bln_a_math_dbl(batch_of<DOUBLE> batch, column_of<DOUBLE> x) {
    return set_rows<natural_logarithm, domain_check<check_positive>>(batch, x);
}
status entry::blog10_a_math_dbl(batch_of<DOUBLE> batch, column_of<DOUBLE> x) {
    return set_rows<decimal_logarithm, domain_check<check_positive>>(batch, x);
}
status entry::blog_va_do_math_dbl(batch_of<DOUBLE> batch, constant_of<DOUBLE> base, column_of<DOUBLE> x) {
    return set_rows<logarithm, domain_check<check_logarithm>>(batch, base, x);
}
status entry::blog_av_do_math_dbl(batch_of<DOUBLE> batch, column_of<DOUBLE> base, constant_of<DOUBLE> x) {
    return set_rows<logarithm, domain_check<check_logarithm>>(batch, base, x);
}
status entry::blog_aa_math_dbl(batch_of<DOUBLE> batch, column_of<DOUBLE> base, column_of<DOUBLE> x) {
    return set_rows<logarithm, domain_check<check_logarithm>>(batch, base, x);
}
status entry::bpower_va_do_math_dbl(batch_of<DOUBLE> batch, constant_of<DOUBLE> x, column_of<DOUBLE> y) {
    return set_rows<power, power_checks>(batch, x, y);
}
status entry::bpower_av_do_math_dbl(batch_of<DOUBLE> batch, column_of<DOUBLE> x, constant_of<DOUBLE> y) {
    return set_rows<power, power_checks>(batch, x, y);
}
status entry::bpower_aa_math_dbl(batch_of<DOUBLE> batch, column_of<DOUBLE> x, column_of<DOUBLE> y) {
    return set_rows<power, power_checks>(batch, x, y);
}

status entry::brand_a_math_int(batch_of<DOUBLE> batch, column_of<DOUBLE> seed) { return set_rows<random_of>(batch, seed); }

} // namespace bifun
