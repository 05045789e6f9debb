/* SPDX-License-Identifier: Apache-2.0 */
/* Owned string values, and padding. */
#ifndef BIFUN_ENGINE_STRINGS_H
#define BIFUN_ENGINE_STRINGS_H

#include "bop/frame/contract.h"

#ifdef __cplusplus
extern "C" {
#endif

enum { NSTR_RESERVED_LENGTH = 64 };

/* A string value that owns its bytes or looks at another's. Begin with all bytes zero. `data` points to `reserved` for a short value,
 * to memory of its own where `owned` is set, else to bytes that belong to somebody else.
 *
 * The assignments below copy: afterwards the bytes belong to the nstr and may be changed. Those named `no_clear` take no notice of
 * what the nstr held before; the others release it first. They return 0 or -503, and then the nstr is empty. The source must not lie
 * in what the target holds. */
typedef struct nstr {
    uint8_t* data;
    uint32_t length;
    uint32_t owned;
    bifun_memory_object* memory; /* what `data` is released to when `owned` */
    uint8_t reserved[NSTR_RESERVED_LENGTH];
} nstr;

/* The stored bytes of a column value, without its trailing blanks. */
int32_t nstr_assign(bifun_environment* environment, bifun_memory_object* memory, nstr* target, const bifun_string* source);

/* The full text of a column value, its trailing blanks as bytes. */
int32_t nstr_assign_with_blank_no_clear(bifun_environment* environment, bifun_memory_object* memory, nstr* target,
                                        const bifun_string* source);

/* The full text of a constant that is not NULL, its trailing blanks as bytes. */
int32_t nstr_assign_const_with_blank_no_clear(bifun_environment* environment, bifun_memory_object* memory, nstr* target,
                                              const bifun_string_constant* source);

/* The stored bytes of a constant that is not NULL. */
int32_t nstr_assign_const_ex_no_clear(bifun_environment* environment, bifun_memory_object* memory, nstr* target,
                                      const bifun_string_constant* source);

/* Makes `target` look at bytes that belong to somebody else and outlive it. What it held is released. */
void nstr_set_str_value(bifun_environment* environment, nstr* target, uint8_t* data, uint32_t length);

/* The same for the stored bytes of a column value, taking no notice of what the nstr held before. */
void bdta3_colstr_to_nstr_fast(nstr* target, const bifun_string* source);

/* Releases what the nstr holds and leaves it empty. */
void nstr_clear(bifun_environment* environment, nstr* target);

/* Releases what the nstr holds outside its reserved bytes; a value that lies in them stays. */
void nstr_non_reserved_clear(bifun_environment* environment, nstr* target);

/* Store `text`, padded on the left or on the right to `length` characters, in row `row` of a string column that is written: its bytes, if
 * any, in storage of the column, and the string record. The row's null flag is left alone.
 *
 * The text is the full text: its trailing blanks are characters like others. Of a text of `length` characters or more the row gets the
 * first `length`, and nothing where `length` is below 1. In front of or behind a shorter one stand the characters of `pad`, again and again
 * until there are `length` characters; a pad of no bytes pads nothing. Where `pad` ends in the beginning of a character, however many bytes
 * it has, a blank stands in its place, so that it does not join with what follows.
 *
 * Blanks at the very end of the result are its trailing blank count where they are trailing blanks of the text or padding; stored blanks of
 * the text, and all other blanks, are bytes. So padding on the left leaves the text's trailing blanks a count, and padding on the right
 * with blanks writes none.
 *
 * Return 0; -6108 where the result has more than 32767 bytes, its trailing blanks among them, and -503: then the row is as it was, or
 * empty. */
int32_t zq_get_lpad_str(bifun_environment* environment, bifun_memory_object* memory, bifun_column_data* result, uint32_t row,
                        const bifun_string* text, int32_t length, const uint8_t* pad, uint32_t pad_length);
int32_t zq_get_rpad_str(bifun_environment* environment, bifun_memory_object* memory, bifun_column_data* result, uint32_t row,
                        const bifun_string* text, int32_t length, const uint8_t* pad, uint32_t pad_length);

#ifdef __cplusplus
}
#endif

#endif
