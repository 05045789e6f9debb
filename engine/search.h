/* SPDX-License-Identifier: Apache-2.0 */
/* Searching bytes for a pattern: Boyer-Moore and shift-or, with tables that are made once for many texts.
 *
 * A search gives the byte offset of the first occurrence that begins at or after `from`, or ZQ_NOT_FOUND. Occurrences may overlap. Patterns
 * have at least one byte; texts may be empty. Operations take no environment and allocate nothing. */
#ifndef BIFUN_ENGINE_SEARCH_H
#define BIFUN_ENGINE_SEARCH_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define ZQ_NOT_FOUND UINT32_MAX

enum { ZQ_BYTE_VALUES = 256, ZQ_SHIFT_OR_LENGTH = 31 };

/* A pattern and the tables of the algorithm that is to search for it: both of Boyer-Moore's, or shift-or's. The others are null. The record
 * refers to memory of its maker. */
typedef struct zq_pattern {
    const uint8_t* bytes;
    uint32_t length;
    const uint32_t* bad_characters; /* Boyer-Moore: ZQ_BYTE_VALUES shifts */
    const uint32_t* good_suffixes;  /* Boyer-Moore: `length` shifts */
    const uint32_t* masks;          /* shift-or: ZQ_BYTE_VALUES masks; for patterns of at most ZQ_SHIFT_OR_LENGTH bytes */
} zq_pattern;

/* Fill the tables, which have as many entries as said above. */
void preprocess_bmbc(const uint8_t* pattern, uint32_t length, uint32_t* bad_characters);
void preprocess_bmgs(const uint8_t* pattern, uint32_t length, uint32_t* good_suffixes);
void preshiftorprocess(const uint8_t* pattern, uint32_t length, uint32_t* masks);

/* Text of single-byte characters: every place of the pattern's bytes is an occurrence. */
uint32_t zq_strbmncmp(const uint8_t* text, uint32_t length, uint32_t from, const zq_pattern* pattern);
uint32_t zq_mbshiftor_ncmp(const uint8_t* text, uint32_t length, uint32_t from, const zq_pattern* pattern);

/* Text of multibyte characters: an occurrence begins with a character. `positions` is what zq_mbstrlen_cposition_ex gives for the text. */
uint32_t zq_strbmncmp_arr(const uint8_t* text, uint32_t length, uint32_t from, const zq_pattern* pattern, const uint32_t* positions);
uint32_t zq_mbshiftor_ncmp_arr(const uint8_t* text, uint32_t length, uint32_t from, const zq_pattern* pattern, const uint32_t* positions);

/* The offset of the `occurrence`-th one, counted from 1. `positions` is null for text of single-byte characters. */
uint32_t zq_strbmncmp_arr_ex(const uint8_t* text, uint32_t length, uint32_t from, const zq_pattern* pattern, const uint32_t* positions,
                             uint32_t occurrence);
uint32_t zq_mbshiftor_ncmp_arr_ex(const uint8_t* text, uint32_t length, uint32_t from, const zq_pattern* pattern, const uint32_t* positions,
                                  uint32_t occurrence);

/* Counts occurrences from `from` on, by the algorithm whose tables the pattern has, and stops at the `wanted`-th, from 1, whose offset
 * `*offset` gets; it gets ZQ_NOT_FOUND where there are fewer. Returns how many were counted. `positions` as above. */
uint32_t zq_get_occur_num(const uint8_t* text, uint32_t length, uint32_t from, const zq_pattern* pattern, const uint32_t* positions,
                          uint32_t wanted, uint32_t* offset);

#ifdef __cplusplus
}
#endif

#endif
