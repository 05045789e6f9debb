/* SPDX-License-Identifier: Apache-2.0 */
/* Checks of DOUBLE results and of digits. */
#ifndef BIFUN_ENGINE_NUMBER_CHECK_H
#define BIFUN_ENGINE_NUMBER_CHECK_H

#include "bop/frame/contract.h"

#ifdef __cplusplus
extern "C" {
#endif

/* -6102 for an infinity, else 0: NaN is no overflow. */
int32_t ntype_is_double_overflow(double value);

/* Reads digits with at most one point, which may come first or last, as the nearest double. A NUL
 * stands behind the text. Returns 0; -6803 where there is no digit
 * or anything else, or where the number is beyond the largest double, and then the result is untouched. */
int32_t utl_digit_from_char(const uint8_t* text, uint32_t length, double* result);

/* Reads an integer with or without a sign; blanks around it do not count. Returns 0; -6803 for another text or a number beyond 64 bits,
 * and then the result is untouched. */
int32_t str2int64(const uint8_t* text, uint32_t length, int64_t* result);

#ifdef __cplusplus
}
#endif

#endif
