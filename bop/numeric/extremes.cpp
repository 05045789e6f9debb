// GREATEST and LEAST of two numbers. Where the two are equal the second is the result, which shows in the scale of a decimal.

#include "bop/frame/choose.h"
#include "bop/frame/row_loop.h"
#include "bop/frame/statements.h"
#include "engine/decimal.h"
#include "layouts/decimal_layout.h"

namespace bifun {
namespace {

std::int64_t greater_bigint(std::int64_t x, std::int64_t y) { return x > y ? x : y; }
std::int64_t lesser_bigint(std::int64_t x, std::int64_t y) { return x < y ? x : y; }

double greater_double(double x, double y) { return x > y ? x : y; }
double lesser_double(double x, double y) { return x < y ? x : y; }

const xdec& greater_decimal(const xdec& x, const xdec& y) { return choose(xdec_cmp(&x, &y) > 0, x, y); }
const xdec& lesser_decimal(const xdec& x, const xdec& y) { return choose(xdec_cmp(&x, &y) < 0, x, y); }

// The same for an engine whose layout of decimals is known: a column mostly has one scale, and then no call is needed.
const xdec& greater_packed(const xdec& x, const xdec& y) {
    if (!decimal_layout::same_unit(x, y)) [[unlikely]] {
        return greater_decimal(x, y);
    }
    return choose(decimal_layout::is_less(y, x), x, y);
}
const xdec& lesser_packed(const xdec& x, const xdec& y) {
    if (!decimal_layout::same_unit(x, y)) [[unlikely]] {
        return lesser_decimal(x, y);
    }
    return choose(decimal_layout::is_less(x, y), x, y);
}

template <class X, class Y> status greatest_decimals(const batch& batch, const X& x, const Y& y) {
    return decimals_are_packed() ? store_rows<rows::present, greater_packed>(batch, x, y)
                                 : store_rows<rows::present, greater_decimal>(batch, x, y);
}

template <class X, class Y> status least_decimals(const batch& batch, const X& x, const Y& y) {
    return decimals_are_packed() ? store_rows<rows::present, lesser_packed>(batch, x, y)
                                 : store_rows<rows::present, lesser_decimal>(batch, x, y);
}

} // namespace
} // namespace bifun

using namespace bifun;

VECTORISED status bgreatest_aa_math_bigint(BATCH_OF(column x, column y)) {
    return store_rows<rows::all, greater_bigint>(BATCH, bigint(x), bigint(y));
}
VECTORISED status bgreatest_av_do_math_bigint(BATCH_OF(column x, bigint_constant y)) {
    return store_rows<rows::all, greater_bigint>(BATCH, bigint(x), bigint(y));
}
VECTORISED status bgreatest_va_do_math_bigint(BATCH_OF(bigint_constant x, column y)) {
    return store_rows<rows::all, greater_bigint>(BATCH, bigint(x), bigint(y));
}
VECTORISED status bleast_aa_math_bigint(BATCH_OF(column x, column y)) {
    return store_rows<rows::all, lesser_bigint>(BATCH, bigint(x), bigint(y));
}
VECTORISED status bleast_av_bi_math_bigint(BATCH_OF(column x, bigint_constant y)) {
    return store_rows<rows::all, lesser_bigint>(BATCH, bigint(x), bigint(y));
}
VECTORISED status bleast_va_bi_math_bigint(BATCH_OF(bigint_constant x, column y)) {
    return store_rows<rows::all, lesser_bigint>(BATCH, bigint(x), bigint(y));
}

status bgreatest_aa_math_dec(BATCH_OF(column x, column y)) { return greatest_decimals(BATCH, decimal(x), decimal(y)); }
status bgreatest_av_do_math_dec(BATCH_OF(column x, decimal_constant y)) { return greatest_decimals(BATCH, decimal(x), decimal(y)); }
status bgreatest_va_do_math_dec(BATCH_OF(decimal_constant x, column y)) { return greatest_decimals(BATCH, decimal(x), decimal(y)); }
status bleast_aa_math_dec(BATCH_OF(column x, column y)) { return least_decimals(BATCH, decimal(x), decimal(y)); }
status bleast_av_do_math_dec(BATCH_OF(column x, decimal_constant y)) { return least_decimals(BATCH, decimal(x), decimal(y)); }
status bleast_va_do_math_dec(BATCH_OF(decimal_constant x, column y)) { return least_decimals(BATCH, decimal(x), decimal(y)); }

VECTORISED status bgreatest_aa_math_dbl(BATCH_OF(column x, column y)) {
    return set_rows<rows::all, greater_double>(BATCH, floating(x), floating(y));
}
VECTORISED status bgreatest_av_do_math_dbl(BATCH_OF(column x, double_constant y)) {
    return set_rows<rows::all, greater_double>(BATCH, floating(x), floating(y));
}
VECTORISED status bgreatest_va_do_math_dbl(BATCH_OF(double_constant x, column y)) {
    return set_rows<rows::all, greater_double>(BATCH, floating(x), floating(y));
}
VECTORISED status bleast_aa_math(BATCH_OF(column x, column y)) {
    return set_rows<rows::all, lesser_double>(BATCH, floating(x), floating(y));
}
VECTORISED status bleast_av_do_math(BATCH_OF(column x, double_constant y)) {
    return set_rows<rows::all, lesser_double>(BATCH, floating(x), floating(y));
}
VECTORISED status bleast_va_do_math(BATCH_OF(double_constant x, column y)) {
    return set_rows<rows::all, lesser_double>(BATCH, floating(x), floating(y));
}
