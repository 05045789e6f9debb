/* SPDX-License-Identifier: Apache-2.0 */
/* What an engine says of itself, so that the library can spare it calls. All of it is optional: where a statement is not made, the library
 * calls the operation for every row, with the same results. */
#ifndef BIFUN_ENGINE_STATEMENTS_H
#define BIFUN_ENGINE_STATEMENTS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

enum { XDEC_LAYOUT_PRIVATE = 0, XDEC_LAYOUT_PACKED_128 = 1 };
enum { ZQTIME_LAYOUT_PRIVATE = 0, ZQTIME_LAYOUT_PACKED = 1 };

/* What is known of texts: nothing, that each is well-formed UTF-8, or that their bytes are below 0x80. */
enum { ZQ_TEXTS_ANY = 0, ZQ_TEXTS_UTF8 = 1, ZQ_TEXTS_ASCII = 2 };

/* A statement is made where it is not 0. An operation that a statement covers may be replaced by another, but is not called then: who
 * replaces it takes the statement back. No statement may change during a call. Later versions add statements at the end. */
typedef struct bifun_engine_statements {
    /* The size of this record as the engine was built with it: what lies behind is not said. */
    uint32_t size;

    /* bdta3_set_int, _int64, _double, _dec and _datetime do nothing but store the value in the row's place of the value array, and
     * bdta3_col_copy of a fixed-width column does nothing but copy flags, values and the no-null flag. The library does that itself, in
     * the pass in which it computes. */
    int32_t setters_are_plain_stores;

    /* `engine_header[1]` of a string column that is written points to the column's bdta3_free_bytes, all of which may be overwritten at
     * will, and bdta3_col_assign_str does nothing but copy the bytes to `top`, set `top` behind them and store the string record, with
     * data pointing to the copy. bdta3_colstr_assign_without_value and bdta3_col_space_alloc give bytes in the same way. The library does
     * that itself as long as there is room, and calls the operations for the others. */
    int32_t free_bytes_are_open;

    /* In the database character set bytes below 0x80 that only such bytes precede are a character each, and the operations of
     * engine/charset.h see it so. The library does not call them for text that has, or begins with, such bytes only. */
    int32_t ascii_is_single_byte;

    /* XDEC_LAYOUT_PACKED_128: decimals are laid out as layouts/decimal_layout.h describes. The library compares and rounds them in its own
     * loops. */
    int32_t decimal_layout;

    /* ZQTIME_LAYOUT_PACKED: datetimes are laid out as layouts/datetime_layout.h describes, the calendar is that of layouts/calendar.h,
     * and intervals are compared and added as in layouts/intervals.h. The library takes datetimes apart and counts days in its own loops.
     */
    int32_t datetime_layout;

    /* zq_get_lpad_str and zq_get_rpad_str do what engine/strings.h says. The library pads with single-byte characters itself. */
    int32_t pads_as_described;

    /* Where the charset_code of bifun_settings is ZQ_CHARSET_UTF8, the operations of engine/charset.h tell the characters of well-formed
     * UTF-8 as Unicode does, and bytes below 0x80 are a character each, whatever stands before them; and those of engine/letter_case.h map
     * them as Unicode does. The library does not call them for short texts that are well-formed, nor for the letters of well-known
     * alphabets. */
    int32_t utf8_is_unicode;

    /* The operations that write numbers as text do what engine/decimal.h and engine/number_format.h say, whatever the buffer holds:
     * `length` gets the length of the text, and a NUL stands behind it. The library does not clear the buffer, and it writes packed
     * decimals of up to 38 digits itself. */
    int32_t number_texts_as_described;

    /* The bytes of string arguments of a call, columns and constants, stay where and as they are until nobody reads the results of the call
     * any more; so do the records of constants, which have short bytes inside. A row of a string result may then point to bytes of an
     * argument, or share its bytes with another row, in place of a copy. Where results are arguments of other calls, the bytes of the
     * innermost arguments live as long as the outermost result.
     *
     * Such a result shares the fate of the bytes: trimming reverses those of its argument for a moment, so calls at the same time, on
     * several threads, may not have arguments that share bytes. */
    int32_t results_may_refer;

    /* `engine_word` of a string column argument says what is known of the stored bytes of all its texts that are not NULL, as a number:
     * ZQ_TEXTS_ANY, ZQ_TEXTS_UTF8 or ZQ_TEXTS_ASCII. The library does not look at the bytes for that. */
    int32_t columns_tell_texts;
} bifun_engine_statements;

/* Weak, so that an engine need not have it. */
extern bifun_engine_statements zq_engine_statements __attribute__((weak));

#ifdef __cplusplus
}
#endif

#endif
