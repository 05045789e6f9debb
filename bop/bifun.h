/* SPDX-License-Identifier: Apache-2.0 */
/* bifun for engine builders: every exported function and variable. Compiles as C11 and as C++.
 *
 * An entry point evaluates one SQL built-in over a batch: it reads columns (`a` in its name) and constants (`v`) and writes row k of
 * the batch to row k of `result`. It returns 0, or a negative status of bop/frame/status.h after which the rows before the failing
 * one hold their results; -503 from the copy of a whole column leaves nothing of use. A NULL argument makes the row NULL unless the
 * built-in's meaning says otherwise. `result` and the arguments must not overlap. Functions keep no state and may run in several threads,
 * each with its own environment and memory object. Look a function up by name with dlsym, or link the library.
 *
 * bceil_a_process_int64 is CEIL of one BIGINT: it stores the value in row `row` of `result` through bdta3_set_int64, leaves the row's
 * null flag to the caller and returns 0.
 *
 * zq_gather_char_info takes a text apart: how many characters it has, and for each its length and its first byte. It returns 0, or -503.
 * The two arrays come from the memory object and live as long as its heap; they have room for as many entries as the text has bytes.
 *
 * bifun_search_char_in_str gives the position, from 1, of the first character of a text that is the sought one, or 0. Only characters of
 * the same length are compared. A character that the end of the text cuts off has the length that its first bytes say, in the `_ex` form
 * that of what is left of it.
 *
 * bifun_colstr_assign_with_blank gives row `row` of `result` the full text of `source`, its trailing blanks as bytes, and sets the row's
 * null flag. bifun_colstr_assign_with_blank_no_clear does so for a value of its own, whose bytes come from the memory object; it takes no
 * notice of what the target held, and does nothing where target and source are the same. Both return 0, or -503, and then the row or target
 * has a length but no bytes.
 *
 * ifun_instr_low is INSTR of one string: it finds the `occurrence`-th place of the pattern at or after the character `start`, or, where
 * that is negative, at or before that character from the end. `*position` gets the place in characters, from 1, `*match_offset` that in
 * bytes, from 0; position 0 is for not found. For a negative start it reverses both texts in place and leaves them so. -503, or -6108 where
 * they cannot be reversed.
 *
 * binstr_avvv_process_case_sencitive is the same for one row of INSTR on a server that does not distinguish case: it takes full texts,
 * which it leaves as they are. -6803 where the occurrence is below 1.
 *
 * bifun_replace_low is REPLACE of one value: it stores the source with the replacement in place of every occurrence of the pattern in row
 * `row` of `result` and leaves the row's null flag to the caller. bifun_replace_low_1 is the same for patterns of trailing blanks only,
 * bifun_replace_low_2 for those of bytes only, bifun_replace_low_3 for those of both and the empty one; bifun_replace_def_low removes the
 * occurrences. They return 0, or -503.
 *
 * ifun_overlay_low is OVERLAY of one value: the replacement in place of `length` characters from the `position`-th on, where 0 counts as 1,
 * or with length 0xFFFFFFFF of as many as the replacement has. `output`, which has room for 32767 bytes, `*output_length` and
 * `*output_blanks` get the result. It returns 0; -6108 where the result has more than 32767 bytes, its blanks among them, and then nothing
 * is written.
 *
 * zqtime_overlaps_dt_low is OVERLAPS of two periods, 1 or 0. Where a value is missing its `present` is 0, and it is not read. With all four
 * values the ends of a period may stand in either order and periods that only touch overlap. Else an end without its start stands for the
 * start; equal starts overlap; so does a period that is a start only, strictly within the other one. What is missing is in no order with
 * anything.
 *
 * bifun_dll_var_init stores the three settings and tells the engine of them, where it has zq_settings_changed (engine/session.h); call it
 * once after loading the library and before anything else. It checks none of them and returns 0. */
#ifndef BIFUN_BIFUN_H
#define BIFUN_BIFUN_H

#include "bop/frame/contract.h"
#include "bop/frame/status.h"

#define BIFUN_API __attribute__((visibility("default")))

#define BIFUN_CONSTANT_INT bifun_int_constant
#define BIFUN_CONSTANT_BIGINT bifun_bigint_constant
#define BIFUN_CONSTANT_DOUBLE bifun_double_constant
#define BIFUN_CONSTANT_DECIMAL bifun_decimal_constant
#define BIFUN_CONSTANT_DATETIME bifun_datetime_constant
#define BIFUN_CONSTANT_VARCHAR bifun_string_constant
#define BIFUN_CONSTANT_VARBINARY bifun_string_constant
#define BIFUN_CONSTANT_INTERVAL_YM bifun_interval_ym_constant
#define BIFUN_CONSTANT_INTERVAL_DT bifun_interval_dt_constant

#ifdef __cplusplus
extern "C" {
#endif

#define COLUMN(type) const bifun_column*
#define CONSTANT(type) const BIFUN_CONSTANT_##type*
#define EXPORT(symbol, builtin, result_type, ...)                                                                                          \
    BIFUN_API int32_t symbol(bifun_environment* environment, bifun_memory_object* memory, __VA_ARGS__, bifun_column* result,               \
                             uint32_t row_count);
#define EXPORT_FUNCTION(symbol, result, ...) BIFUN_API result symbol(__VA_ARGS__);
#define EXPORT_DATA(type, symbol) extern BIFUN_API type symbol;
#include "bop/exports.def"
#undef COLUMN
#undef CONSTANT

#ifdef __cplusplus
}
#endif

#endif
