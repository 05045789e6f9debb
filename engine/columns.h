/* SPDX-License-Identifier: Apache-2.0 */
/* Writing result columns.
 *
 * Statuses are 0 or -503. `row` is a row of the result, which has been given room for the whole batch. No operation touches the row's
 * null flag: the caller writes it. A row may be assigned more than once; the last assignment holds. */
#ifndef BIFUN_ENGINE_COLUMNS_H
#define BIFUN_ENGINE_COLUMNS_H

#include "bop/frame/contract.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Store a value record, whose flag is 1, in a row. They do not fail for a row of the batch: callers ignore the status. */
int32_t bdta3_set_int(bifun_environment* environment, bifun_memory_object* memory, bifun_column* result, uint32_t row,
                      const bifun_int_constant* value);
int32_t bdta3_set_int64(bifun_environment* environment, bifun_memory_object* memory, bifun_column* result, uint32_t row,
                        const bifun_bigint_constant* value);
int32_t bdta3_set_double(bifun_environment* environment, bifun_memory_object* memory, bifun_column* result, uint32_t row,
                         const bifun_double_constant* value);
int32_t bdta3_set_dec(bifun_environment* environment, bifun_memory_object* memory, bifun_column* result, uint32_t row,
                      const bifun_decimal_constant* value);
int32_t bdta3_set_datetime(bifun_environment* environment, bifun_memory_object* memory, bifun_column* result, uint32_t row,
                           const bifun_datetime_constant* value);

/* Copies `length` bytes into storage of the result column and stores the string record of the row with that length and blank count.
 * `data` may be null when `length` is 0. Callers may ignore the status; an engine that can run out of memory here keeps that in mind
 * with the column and fails the batch itself. */
int32_t bdta3_col_assign_str(bifun_environment* environment, bifun_memory_object* memory, bifun_column* result, uint32_t row,
                             const uint8_t* data, uint32_t length, uint32_t trailing_blanks);

/* The same for a binary value: no trailing blanks. */
int32_t bdta3_col_assign_bin(bifun_environment* environment, bifun_memory_object* memory, bifun_column* result, uint32_t row,
                             const uint8_t* data, uint32_t length);

/* The same for a character value without trailing blanks. */
int32_t bdta3_set_str_from_str_with_len(bifun_environment* environment, bifun_memory_object* memory, bifun_column* result, uint32_t row,
                                        const uint8_t* data, uint32_t length);

/* Gives the row `length` bytes of storage of the result column, stores its string record and returns the bytes for the caller to
 * fill. Null when memory is exhausted, never for length 0. */
uint8_t* bdta3_colstr_assign_without_value(bifun_environment* environment, bifun_memory_object* memory, bifun_column_data* result,
                                           uint32_t row, uint32_t length, uint32_t trailing_blanks);

/* `size` bytes of storage of the result column, unaligned. Null when memory is exhausted, never for size 0. */
uint8_t* bdta3_col_space_alloc(bifun_environment* environment, bifun_memory_object* memory, bifun_column_data* result, uint32_t size);

/* Copies rows 0 .. row_count - 1 of `source`, as seen through its selection vector, densely into `destination`: null flags and
 * values, the bytes of strings into the destination's storage, and the no-null flag. The two columns have the same type. */
int32_t bdta3_col_copy(bifun_environment* environment, bifun_memory_object* memory, bifun_column* destination, const bifun_column* source,
                       uint32_t row_count);

/* Copies one string value into a row: bdta3_col_assign_str with the source's record. */
int32_t bdta3_colstr_copy(bifun_environment* environment, bifun_memory_object* memory, bifun_column* result, uint32_t row,
                          const bifun_string* source);

/* Less than, equal to or greater than 0 as the full text of `a`, trailing blanks included, is less than, equal to or greater than
 * that of `b` by bytes; a text that is the beginning of another is less. */
int32_t bdta3_colstr_cmp_with_blank(const bifun_string* a, const bifun_string* b);

/* Removes the value's trailing blanks, stored and counted. */
void bdta3_colstr_trim(bifun_string* value);

#ifdef __cplusplus
}
#endif

#endif
