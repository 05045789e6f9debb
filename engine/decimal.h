/* SPDX-License-Identifier: Apache-2.0 */
/* DECIMAL values: up to 38 significant digits. Values are passed by pointer and may be unaligned. Operations take no environment and
 * allocate nothing. Results must not overlap operands unless an entry says so. */
#ifndef BIFUN_ENGINE_DECIMAL_H
#define BIFUN_ENGINE_DECIMAL_H

#include "bop/frame/contract.h"

#ifdef __cplusplus
extern "C" {
#endif

void xdec_copy(xdec* destination, const xdec* source);
void xdec_fill_zero(xdec* value);
void xdec_fill_one(xdec* value);

/* Less than, equal to or greater than 0 as `a` is less than, equal to or greater than `b` by numeric value: 1.0 equals 1.00. */
int32_t xdec_cmp(const xdec* a, const xdec* b);

/* An integer as a DECIMAL of scale 0. `precision` is always XDEC_ANY_PRECISION. Returns 0. */
enum { XDEC_ANY_PRECISION = 255 };
int32_t xdec_from_int64(xdec* result, int64_t value, int32_t precision);

/* The shortest decimal that reads back as the same double. Returns 0; -6102 where it is NaN, infinite or beyond the largest
 * DECIMAL. A value too small for the smallest becomes 0. */
int32_t xdec_from_double(xdec* result, double value);

/* The nearest double; halves to even. */
double xdec_to_double(const xdec* value);

/* Arithmetic. Results that need more than 38 digits are rounded half away from zero; the others are exact. The scale of a sum or
 * difference is the larger one, that of a product the sum of both, as far as the digits allow. A result may be the place of an operand.
 * Return 0; -6102 where the result is beyond the largest DECIMAL, and then it is untouched. */
int32_t xdec_add(const xdec* a, const xdec* b, xdec* result);
int32_t xdec_sub(const xdec* a, const xdec* b, xdec* result);
int32_t xdec_mul(const xdec* a, const xdec* b, xdec* result);

/* The magnitude, and the value with the other sign. `result` may be the place of `value`. Return 0. */
int32_t xdec_abs(const xdec* value, xdec* result);
int32_t xdec_neg(const xdec* value, xdec* result);

/* Rounds half away from zero to `digits` digits after the point, or to a power of ten left of it when `digits` is negative. The result's
 * scale is `digits`, 0 for negative ones; a value with no more digits is copied as it is. The flag is 0. `result` may be the place of
 * `value`. Returns 0; -6102 where the result is beyond the largest DECIMAL. Any `digits` is allowed. */
int32_t xdec_round(const xdec* value, int32_t flag, int32_t digits, xdec* result);

/* The same toward zero. */
int32_t xdec_trunc_scale_with_pos(const xdec* value, int32_t digits, xdec* result);

/* Truncates toward zero to scale 0, in place. Returns 0. */
int32_t xdec_trunc_scale(xdec* value);

/* Whether the value is an integer from 0 to 2^64 - 1, whatever its scale; its conversion, which returns 0, or -6102 where it is not; and
 * back, with scale 0. */
int32_t xdec_in_ulint64(const xdec* value);
int32_t xdec_get_ulint64(const xdec* value, uint64_t* result);
int32_t xdec_from_ulint64(xdec* result, uint64_t value);

/* Divides an integer that is not negative by 16. `quotient` may be the place of `value`. Returns 0; -6803 for a value that is negative or
 * no integer. */
int32_t xdec_div_get_quotient_int_by_16(const xdec* value, xdec* quotient, int32_t* remainder);

/* Reads [blanks][sign]digits[.digits][E[sign]digits][blanks], with E in either case; digits may be missing before or behind the point,
 * not both. The scale is that of the text: 1.00 keeps two digits. More than 38
 * significant digits are rounded half away from zero. Returns 0; 109 where the text is no number; -6102 where it is beyond the
 * largest DECIMAL. On failure the result is untouched. */
int32_t xdec_from_char(const uint8_t* text, uint32_t length, xdec* result);

/* Writes the value in plain notation, a zero before the point, all digits of its scale, and a closing NUL: -0.50. The two reserved
 * arguments are 0. `length` gets the length without the NUL; what lies behind it is garbage. Returns 0; -6803 where `buffer_size` is too
 * small (256 always suffices). */
int32_t xdec_to_char_with_zero(const xdec* value, char* buffer, uint32_t buffer_size, int32_t reserved_1, int32_t reserved_2,
                               uint32_t* length);

#ifdef __cplusplus
}
#endif

#endif
