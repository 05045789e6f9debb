// GREATEST and LEAST of two numbers. Where the two are equal the second is the result, which shows in the scale of a decimal.

#include "bop/frame/choose.h"
#include "bop/frame/row_loop.h"
#include "bop/numeric/entry_points.h"
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

template <class X, class Y> status greatest_decimals(batch_of<DECIMAL> batch, X x, Y y) {
    return decimals_are_packed() ? store_rows<greater_packed>(batch, x, y) : store_rows<greater_decimal>(batch, x, y);
}

template <class X, class Y> status least_decimals(batch_of<DECIMAL> batch, X x, Y y) {
    return decimals_are_packed() ? store_rows<lesser_packed>(batch, x, y) : store_rows<lesser_decimal>(batch, x, y);
}

} // namespace

status entry::bgreatest_aa_math_bigint(batch_of<BIGINT> batch, column_of<BIGINT> x, column_of<BIGINT> y) {
    return store_all_rows<greater_bigint>(batch, x, y);
}
status entry::bgreatest_av_do_math_bigint(batch_of<BIGINT> batch, column_of<BIGINT> x, constant_of<BIGINT> y) {
    return store_all_rows<greater_bigint>(batch, x, y);
}
status entry::bgreatest_va_do_math_bigint(batch_of<BIGINT> batch, constant_of<BIGINT> x, column_of<BIGINT> y) {
    return store_all_rows<greater_bigint>(batch, x, y);
}
status entry::bleast_aa_math_bigint(batch_of<BIGINT> batch, column_of<BIGINT> x, column_of<BIGINT> y) {
    return store_all_rows<lesser_bigint>(batch, x, y);
}
status entry::bleast_av_bi_math_bigint(batch_of<BIGINT> batch, column_of<BIGINT> x, constant_of<BIGINT> y) {
    return store_all_rows<lesser_bigint>(batch, x, y);
}
status entry::bleast_va_bi_math_bigint(batch_of<BIGINT> batch, constant_of<BIGINT> x, column_of<BIGINT> y) {
    return store_all_rows<lesser_bigint>(batch, x, y);
}

status entry::bgreatest_aa_math_dec(batch_of<DECIMAL> batch, column_of<DECIMAL> x, column_of<DECIMAL> y) {
    return greatest_decimals(batch, x, y);
}
status entry::bgreatest_av_do_math_dec(batch_of<DECIMAL> batch, column_of<DECIMAL> x, constant_of<DECIMAL> y) {
    return greatest_decimals(batch, x, y);
}
status entry::bgreatest_va_do_math_dec(batch_of<DECIMAL> batch, constant_of<DECIMAL> x, column_of<DECIMAL> y) {
    return greatest_decimals(batch, x, y);
}
status entry::bleast_aa_math_dec(batch_of<DECIMAL> batch, column_of<DECIMAL> x, column_of<DECIMAL> y) {
    return least_decimals(batch, x, y);
}
status entry::bleast_av_do_math_dec(batch_of<DECIMAL> batch, column_of<DECIMAL> x, constant_of<DECIMAL> y) {
    return least_decimals(batch, x, y);
}
status entry::bleast_va_do_math_dec(batch_of<DECIMAL> batch, constant_of<DECIMAL> x, column_of<DECIMAL> y) {
    return least_decimals(batch, x, y);
}

status entry::bgreatest_aa_math_dbl(batch_of<DOUBLE> batch, column_of<DOUBLE> x, column_of<DOUBLE> y) {
    return set_all_rows<greater_double>(batch, x, y);
}
status entry::bgreatest_av_do_math_dbl(batch_of<DOUBLE> batch, column_of<DOUBLE> x, constant_of<DOUBLE> y) {
    return set_all_rows<greater_double>(batch, x, y);
}
status entry::bgreatest_va_do_math_dbl(batch_of<DOUBLE> batch, constant_of<DOUBLE> x, column_of<DOUBLE> y) {
    return set_all_rows<greater_double>(batch, x, y);
}
status entry::bleast_aa_math(batch_of<DOUBLE> batch, column_of<DOUBLE> x, column_of<DOUBLE> y) {
    return set_all_rows<lesser_double>(batch, x, y);
}
status entry::bleast_av_do_math(batch_of<DOUBLE> batch, column_of<DOUBLE> x, constant_of<DOUBLE> y) {
    return set_all_rows<lesser_double>(batch, x, y);
}
status entry::bleast_va_do_math(batch_of<DOUBLE> batch, constant_of<DOUBLE> x, column_of<DOUBLE> y) {
    return set_all_rows<lesser_double>(batch, x, y);
}

} // namespace bifun
