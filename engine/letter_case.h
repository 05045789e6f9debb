/* SPDX-License-Identifier: Apache-2.0 */
/* Upper and lower case by Unicode's full mappings, which may change the length of a text. The operations take no environment and allocate
 * nothing; texts are in the database character set and may be malformed, as in engine/charset.h. */
#ifndef BIFUN_ENGINE_LETTER_CASE_H
#define BIFUN_ENGINE_LETTER_CASE_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* NLS_CASE_INITIAL: the first letter or digit of each word in title case, the others in lower case. A word is a run of letters, digits and
 * the marks behind them. */
enum nls_case { NLS_CASE_UPPER = 0, NLS_CASE_LOWER = 1, NLS_CASE_INITIAL = 2 };

/* Whose rules count. Under NLS_CASE_TURKIC i and I are of different letters: i becomes a dotted I and I a dotless i. */
enum nls_case_rules { NLS_CASE_ROOT = 0, NLS_CASE_TURKIC = 1 };

/* No text has more than so many times as many bytes in another case. */
enum { NLS_CASE_GROWTH = 4 };

/* `*rules` gets those of the language that an NLS text such as NLS_SORT=XTURKISH names. The text has 1 to 128 bytes. Returns 0;
 * ZQ_INVALID_NLS_PARAMETERS (engine/number_format.h) where it is no such text: then `*rules` is untouched. */
int32_t nls_case_rules_of(const uint8_t* nls, uint32_t length, int32_t* rules);

/* Writes the text in the case to `result`, which has room for NLS_CASE_GROWTH times `length` bytes and does not overlap it, and returns how
 * many bytes that are. The sigma that ends a word is written as such. A letter stays as it is where the character set lacks what it
 * becomes, and so does what is no valid character. */
uint64_t nls_change_case(int32_t to, int32_t rules, const uint8_t* text, uint32_t length, uint8_t* result);

#ifdef __cplusplus
}
#endif

#endif
