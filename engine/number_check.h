/* Checks and conversions of numbers. */
#ifndef BIFUN_ENGINE_NUMBER_CHECK_H
#define BIFUN_ENGINE_NUMBER_CHECK_H

#include "bop/frame/contract.h"

#ifdef __cplusplus
extern "C" {
#endif

/* -6102 for a value outside the finite range of DOUBLE, 0 otherwise. */
int32_t ntype_is_double_overflow(double value);

/* The number that a text of decimal digits with at most one point stands for. Negative where the text cannot be converted. */
int32_t utl_digit_from_char(const uint8_t* text, uint32_t length, double* result);

#ifdef __cplusplus
}
#endif

#endif
