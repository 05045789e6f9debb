/* SPDX-License-Identifier: Apache-2.0 */
/* Numbers as text under a number format.
 *
 * docs/number-formats.md describes the format language and the NLS parameters. Values are passed by pointer and may be unaligned.
 * Formats and NLS texts are not NUL-terminated. */
#ifndef BIFUN_ENGINE_NUMBER_FORMAT_H
#define BIFUN_ENGINE_NUMBER_FORMAT_H

#include "bop/frame/contract.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Statuses of this engine's own. */
enum {
    ZQ_INVALID_NUMBER_FORMAT = -6130, /* the text is no number format or longer than 75 bytes */
    ZQ_INVALID_NLS_PARAMETERS = -6131 /* the text is no list of NLS parameters or longer than 128 bytes */
};

/* How far an engine may write. The library clears as many bytes before every call, unless number_texts_as_described is said
 * (engine/statements.h). */
enum { ZQ_FORMATTED_NUMBER_SIZE = 1024, ZQ_DOUBLE_TEXT_SIZE = 512 };

/* Writes the value under the format and a closing NUL. `buffer` has ZQ_FORMATTED_NUMBER_SIZE bytes. The value is rounded half
 * away from zero to the digits of the format; one that does not fit gives a row of # as wide as the format.
 *
 * The environment keeps the format, so that rows with the same text do not parse it again; a null environment keeps nothing.
 * Returns 0; ZQ_INVALID_NUMBER_FORMAT, and then the buffer is untouched. */
int32_t xdec_to_char_with_fmt(bifun_environment* environment, const xdec* value, char* buffer, const uint8_t* format,
                              uint32_t format_length);

/* The same with separators and currency symbols from an NLS text such as NLS_NUMERIC_CHARACTERS=',.' NLS_CURRENCY='EUR'; what it
 * does not set is as without one. Returns also ZQ_INVALID_NLS_PARAMETERS. */
int32_t xdec_to_char_with_nls(bifun_environment* environment, const xdec* value, char* buffer, const uint8_t* format,
                              uint32_t format_length, const uint8_t* nls, uint32_t nls_length);

/* xdec_to_char_with_fmt into a buffer that holds anything, with the length of the text, and without a closing NUL. */
int32_t xdec_to_char_with_fmt_low(bifun_environment* environment, const xdec* value, char* buffer, const uint8_t* format,
                                  uint32_t format_length, uint32_t* length);

/* Reads a text under the format: every text that xdec_to_char_with_nls writes of a number that fits, to the last digit, and what
 * docs/number-formats.md lets a text lack. `nls_length` is 0 where there is no NLS text; `text` may be
 * null when `length` is 0. The scale is the number of digits behind the
 * point. The environment keeps the format as above.
 *
 * Returns 0; ZQ_INVALID_NUMBER_FORMAT, ZQ_INVALID_NLS_PARAMETERS; -6129 where the text departs from the format, and then `departs_at`,
 * which may be null, gets the place of the first byte that does, `length` where the text ends too early; -6102 where the number is beyond
 * the largest DECIMAL. On failure the result is untouched. */
int32_t char_to_dec_with_fmt(bifun_environment* environment, const uint8_t* text, uint32_t length, const uint8_t* format,
                             uint32_t format_length, const uint8_t* nls, uint32_t nls_length, xdec* result, uint32_t* departs_at);

/* Writes the shortest text that reads back as the same double, and a closing NUL: in plain notation from 0.00001 up to but not
 * including 1E+15, else as 1.5E+20, with at least two digits of exponent. The others are NaN, Infinity, -Infinity, 0 and -0.
 * `length` gets the length without the NUL. `buffer_size` is ZQ_DOUBLE_TEXT_SIZE where the library calls. Returns
 * 0; -6803 where `buffer_size` is too small (32 always suffices). */
int32_t zq_dou2char(double value, char* buffer, uint32_t buffer_size, uint32_t* length);

/* Reads what zq_dou2char writes, and any number that is written as xdec_from_char reads it (engine/decimal.h), as the nearest double; of
 * two that are as near, as the one whose last bit is 0. Less than half of the smallest double is 0, with its sign. Names are NaN, Infinity
 * and Inf, of any case, with or without a sign, and with blanks around them. Returns 0; 109 where the text is neither; -6102 where the
 * number is beyond the largest double by half of its last bit or more. On failure the result is untouched. */
int32_t zq_char2dou(const uint8_t* text, uint32_t length, double* result);

#ifdef __cplusplus
}
#endif

#endif
