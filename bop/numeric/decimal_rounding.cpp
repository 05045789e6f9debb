// ROUND, TRUNC, CEIL, FLOOR and ABS of DECIMAL. The statuses of the engine's operations are ignored; where one fails, the row holds the
// argument.

#include "bop/frame/row_loop.h"
#include "engine/decimal.h"

namespace bifun {
namespace {

bool has_fraction(const xdec& value) { return value.bytes[2] != 0; }

xdec truncate(const xdec& value) {
    xdec result = value;
    (void)xdec_trunc_scale(&result);
    return result;
}

xdec truncate_to(const xdec& value, std::int32_t digits) {
    xdec result = value;
    (void)xdec_trunc_scale_with_pos(&value, digits, &result);
    return result;
}

xdec round_to(const xdec& value, std::int32_t digits) {
    constexpr std::int32_t no_flag = 0;
    xdec result = value;
    (void)xdec_round(&value, no_flag, digits, &result);
    return result;
}

xdec round_to_integer(const xdec& value) { return round_to(value, 0); }

// The scale decides, not the digits: 2.00 has a fraction, and its ceiling is 3.
xdec ceiling(const xdec& value) {
    xdec result = value;
    if (has_fraction(value)) {
        (void)xdec_trunc_scale(&result);
        if (value.bytes[0] == XDEC_POSITIVE) {
            xdec one;
            xdec_fill_one(&one);
            (void)xdec_add(&result, &one, &result);
        }
    }
    return result;
}

xdec floor_of(const xdec& value) {
    xdec result = value;
    if (has_fraction(value)) {
        (void)xdec_trunc_scale(&result);
        if (value.bytes[0] == XDEC_NEGATIVE) {
            xdec one;
            xdec_fill_one(&one);
            (void)xdec_sub(&result, &one, &result);
        }
    }
    return result;
}

xdec magnitude(const xdec& value) {
    xdec result = value;
    (void)xdec_abs(&value, &result);
    return result;
}

} // namespace
} // namespace bifun

using namespace bifun;

status btrunc_dec_def_a_math(BATCH_OF(column x)) { return set_rows<rows::present, truncate>(BATCH, decimal(x)); }
status btrunc_dec_va_de_math(BATCH_OF(decimal_constant x, column digits)) {
    return set_rows<rows::present, truncate_to>(BATCH, decimal(x), integer(digits));
}
status btrunc_dec_av_li_math(BATCH_OF(column x, int_constant digits)) {
    return set_rows<rows::present, truncate_to>(BATCH, decimal(x), integer(digits));
}
status btrunc_dec_aa_math(BATCH_OF(column x, column digits)) {
    return set_rows<rows::present, truncate_to>(BATCH, decimal(x), integer(digits));
}

status bround_def_a_math_dbl(BATCH_OF(column x)) { return store_rows<rows::present, round_to_integer>(BATCH, decimal(x)); }
status bround_dec_va_de_math_dbl(BATCH_OF(decimal_constant x, column digits)) {
    return set_rows<rows::present, round_to>(BATCH, decimal(x), integer(digits));
}
status bround_dec_av_li_math_dbl(BATCH_OF(column x, int_constant digits)) {
    return set_rows<rows::present, round_to>(BATCH, decimal(x), integer(digits));
}
status bround_dec_aa_math_dbl(BATCH_OF(column x, column digits)) {
    return set_rows<rows::present, round_to>(BATCH, decimal(x), integer(digits));
}

status bceil_a_math_dec(BATCH_OF(column x)) { return set_rows<rows::present, ceiling>(BATCH, decimal(x)); }
status bfloor_a_math_dec(BATCH_OF(column x)) { return set_rows<rows::present, floor_of>(BATCH, decimal(x)); }
status babs_a_math_dec(BATCH_OF(column x)) { return set_rows<rows::present, magnitude>(BATCH, decimal(x)); }
