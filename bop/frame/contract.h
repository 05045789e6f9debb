/* SPDX-License-Identifier: Apache-2.0 */
/* The records that an engine and bifun exchange at every call. Plain C11; field order and widths are a binary contract.
 *
 * Nothing in this header is a function: the exported functions are in bop/bifun.h, the operations that an engine supplies
 * are in engine/. Decimals and datetimes are byte arrays because they lie back to back in columns and directly behind a
 * four-byte flag in constants, so they have no alignment. */
#ifndef BIFUN_FRAME_CONTRACT_H
#define BIFUN_FRAME_CONTRACT_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
#define BIFUN_STATIC_ASSERT(condition) static_assert(condition)
#else
#define BIFUN_STATIC_ASSERT(condition) _Static_assert(condition, #condition)
#endif

/* Opaque to the library: handed to every exported function and passed on unchanged to every engine operation. */
typedef struct bifun_environment bifun_environment;

/* ---- values ------------------------------------------------------------------------------------------------------ */

/* A DECIMAL. Byte 0 is the sign mark, byte 1 the precision, byte 2 the scale; the rest belongs to the engine's xdec_* operations. */
typedef struct xdec {
    uint8_t bytes[30];
} xdec;

enum { XDEC_POSITIVE = 0xC1, XDEC_NEGATIVE = 0x3E, XDEC_ZERO = 0x80 };

/* A DATE, TIME, DATETIME or a form of these with a time zone. Its inside belongs to the engine's zqtime_* operations. */
typedef struct zqtime {
    uint8_t bytes[12];
} zqtime;

/* The zone displacement of a datetime without a zone. */
enum { ZQTIME_NO_ZONE = 1000 };

/* What a datetime is made of, for functions and operations that are told by a code which part is meant. */
enum zqtime_field {
    ZQTIME_YEAR = 1,
    ZQTIME_MONTH = 2,
    ZQTIME_DAY = 3,
    ZQTIME_HOUR = 4,
    ZQTIME_MINUTE = 5,
    ZQTIME_SECOND = 6,
    ZQTIME_SUBSECOND = 7, /* milliseconds; the fraction field of an interval */
    ZQTIME_QUARTER = 8,
    ZQTIME_DAY_OF_YEAR = 9,
    ZQTIME_WEEK = 10,
    ZQTIME_WEEKDAY = 11,
    ZQTIME_ZONE_HOUR = 12,
    ZQTIME_ZONE_MINUTE = 13
};

/* A span of months. The fields have one sign or none where the engine made them; the library takes them as they are. */
typedef struct bifun_interval_ym {
    int32_t years;
    int32_t months;
} bifun_interval_ym;

/* A span of days and time; the fraction of the second is in microseconds. */
typedef struct bifun_interval_dt {
    int32_t days;
    int32_t hours;
    int32_t minutes;
    int32_t seconds;
    int32_t microseconds;
} bifun_interval_dt;

/* A CHAR, VARCHAR, BINARY or VARBINARY: `length` bytes at `data`, followed in meaning by `trailing_blanks` blanks (0x20) that
 * are not stored. Not NUL-terminated; `data` may be null when `length` is 0. Binary values have no trailing blanks.
 * The empty string has length 0 and no trailing blanks; length 0 with three trailing blanks is three blanks. */
typedef struct bifun_string {
    uint32_t length;
    uint32_t trailing_blanks;
    uint8_t* data;
} bifun_string;

/* A BLOB, which may be too long for memory. It is read through the operations of engine/large_objects.h. */
typedef struct bifun_large_object bifun_large_object;

/* ---- batch columns ----------------------------------------------------------------------------------------------- */

/* Arrays of numbers and of strings, and all records but the DECIMAL constant, are aligned as in C; decimals and datetimes have no
 * alignment.
 *
 * Where the rows of a column are. `null_flags[i]` is 1 when row i holds a value and 0 when it is NULL; the value of a NULL row
 * is garbage. `values` holds the rows back to back:
 *     INT, BOOL i32 | BIGINT i64 | DOUBLE binary64 | DECIMAL xdec, 30 bytes | DATETIME zqtime, 12 bytes
 *     INTERVAL_YM bifun_interval_ym, 8 bytes | INTERVAL_DT bifun_interval_dt, 20 bytes
 *     CHAR, VARCHAR, BINARY, VARBINARY bifun_string, 16 bytes
 *     BLOB pointer to a bifun_large_object, 8 bytes; the object lives as long as the column */
typedef struct bifun_column_data {
    void* engine_header[7]; /* the engine's own */
    uint8_t* null_flags;
    void* engine_word; /* the engine's own; of strings see columns_tell_texts in engine/statements.h */
    void* values;
} bifun_column_data;

/* A column argument or the result of a call. `no_nulls` non-zero promises that no row of the batch is NULL. Row k of the batch is
 * row `selection[k]` of the data, or row k where `selection` is null. A result column never has a selection. */
typedef struct bifun_column {
    uint32_t no_nulls;
    const uint16_t* selection;
    bifun_column_data* data;
} bifun_column;

/* The bytes of a string column that is written which no value has yet: `top` is the next one, `end` the one behind the last. */
typedef struct bdta3_free_bytes {
    uint8_t* top;
    uint8_t* end;
} bdta3_free_bytes;

/* ---- constant arguments, which are also the value records that setters take ---------------------------------------- */

/* `not_null` is 0 for a NULL constant, whose value fields are garbage. */
typedef struct bifun_int_constant {
    uint32_t not_null;
    int32_t value;
} bifun_int_constant;

typedef struct bifun_bigint_constant {
    uint32_t not_null;
    int64_t value;
} bifun_bigint_constant;

typedef struct bifun_double_constant {
    uint32_t not_null;
    double value;
} bifun_double_constant;

/* Packed: exactly 34 bytes may be read. */
typedef struct __attribute__((packed)) bifun_decimal_constant {
    uint32_t not_null;
    xdec value;
} bifun_decimal_constant;

typedef struct bifun_datetime_constant {
    uint32_t not_null;
    zqtime value;
} bifun_datetime_constant;

typedef struct bifun_interval_ym_constant {
    uint32_t not_null;
    bifun_interval_ym value;
} bifun_interval_ym_constant;

typedef struct bifun_interval_dt_constant {
    uint32_t not_null;
    bifun_interval_dt value;
} bifun_interval_dt_constant;

/* At most BIFUN_INLINE_LENGTH bytes lie in `inline_bytes`; a longer value lies behind `data`. For binary constants
 * `trailing_blanks` has no meaning. */
typedef struct bifun_string_constant {
    uint32_t not_null;
    uint32_t length;
    uint32_t trailing_blanks;
    uint8_t inline_bytes[52];
    uint8_t* data;
} bifun_string_constant;

enum { BIFUN_INLINE_LENGTH = 48 };

/* ---- scratch memory ------------------------------------------------------------------------------------------------ */

/* `allocate` returns `size` bytes from `heap`, or null; `file` and `line` name the caller. `release` may be null: then the memory
 * lives as long as the heap. */
typedef struct bifun_memory_object {
    void* engine_header[2]; /* the engine's own */
    void* (*allocate)(bifun_environment* environment, void* heap, uint32_t size, const char* file, uint32_t line);
    void (*release)(bifun_environment* environment, void* heap, void* pointer);
    void* engine_word; /* the engine's own */
    void* heap;
} bifun_memory_object;

/* ---- settings ------------------------------------------------------------------------------------------------------ */

/* Written once by bifun_dll_var_init when the library is loaded, afterwards only read.
 *     compatible_mode  2: an empty string counts as NULL in the functions that say so; 1 and 3 have meanings of their own there
 *     charset_code     the database character set: one of the codes in engine/charset.h
 *     case_sensitive   0: searching functions fold the case of text and pattern */
typedef struct bifun_settings {
    uint32_t compatible_mode;
    uint32_t charset_code;
    uint32_t case_sensitive;
} bifun_settings;

/* ---- the layouts, held to the byte --------------------------------------------------------------------------------- */

BIFUN_STATIC_ASSERT(sizeof(xdec) == 30);
BIFUN_STATIC_ASSERT(sizeof(zqtime) == 12);
BIFUN_STATIC_ASSERT(sizeof(bifun_interval_ym) == 8);
BIFUN_STATIC_ASSERT(offsetof(bifun_interval_ym, months) == 4);
BIFUN_STATIC_ASSERT(sizeof(bifun_interval_dt) == 20);
BIFUN_STATIC_ASSERT(offsetof(bifun_interval_dt, hours) == 4);
BIFUN_STATIC_ASSERT(offsetof(bifun_interval_dt, minutes) == 8);
BIFUN_STATIC_ASSERT(offsetof(bifun_interval_dt, seconds) == 12);
BIFUN_STATIC_ASSERT(offsetof(bifun_interval_dt, microseconds) == 16);
BIFUN_STATIC_ASSERT(sizeof(bifun_string) == 16);
BIFUN_STATIC_ASSERT(offsetof(bifun_string, length) == 0);
BIFUN_STATIC_ASSERT(offsetof(bifun_string, trailing_blanks) == 4);
BIFUN_STATIC_ASSERT(offsetof(bifun_string, data) == 8);
BIFUN_STATIC_ASSERT(sizeof(bifun_column_data) == 80);
BIFUN_STATIC_ASSERT(offsetof(bifun_column_data, null_flags) == 56);
BIFUN_STATIC_ASSERT(offsetof(bifun_column_data, values) == 72);
BIFUN_STATIC_ASSERT(sizeof(bifun_column) == 24);
BIFUN_STATIC_ASSERT(offsetof(bifun_column, no_nulls) == 0);
BIFUN_STATIC_ASSERT(offsetof(bifun_column, selection) == 8);
BIFUN_STATIC_ASSERT(offsetof(bifun_column, data) == 16);
BIFUN_STATIC_ASSERT(sizeof(bdta3_free_bytes) == 16);
BIFUN_STATIC_ASSERT(offsetof(bdta3_free_bytes, top) == 0);
BIFUN_STATIC_ASSERT(offsetof(bdta3_free_bytes, end) == 8);
BIFUN_STATIC_ASSERT(sizeof(bifun_int_constant) == 8);
BIFUN_STATIC_ASSERT(offsetof(bifun_int_constant, not_null) == 0);
BIFUN_STATIC_ASSERT(offsetof(bifun_int_constant, value) == 4);
BIFUN_STATIC_ASSERT(sizeof(bifun_bigint_constant) == 16);
BIFUN_STATIC_ASSERT(offsetof(bifun_bigint_constant, not_null) == 0);
BIFUN_STATIC_ASSERT(offsetof(bifun_bigint_constant, value) == 8);
BIFUN_STATIC_ASSERT(sizeof(bifun_double_constant) == 16);
BIFUN_STATIC_ASSERT(offsetof(bifun_double_constant, not_null) == 0);
BIFUN_STATIC_ASSERT(offsetof(bifun_double_constant, value) == 8);
BIFUN_STATIC_ASSERT(sizeof(bifun_decimal_constant) == 34);
BIFUN_STATIC_ASSERT(offsetof(bifun_decimal_constant, not_null) == 0);
BIFUN_STATIC_ASSERT(offsetof(bifun_decimal_constant, value) == 4);
BIFUN_STATIC_ASSERT(sizeof(bifun_datetime_constant) == 16);
BIFUN_STATIC_ASSERT(offsetof(bifun_datetime_constant, not_null) == 0);
BIFUN_STATIC_ASSERT(offsetof(bifun_datetime_constant, value) == 4);
BIFUN_STATIC_ASSERT(sizeof(bifun_interval_ym_constant) == 12);
BIFUN_STATIC_ASSERT(offsetof(bifun_interval_ym_constant, value) == 4);
BIFUN_STATIC_ASSERT(sizeof(bifun_interval_dt_constant) == 24);
BIFUN_STATIC_ASSERT(offsetof(bifun_interval_dt_constant, value) == 4);
BIFUN_STATIC_ASSERT(sizeof(bifun_string_constant) == 72);
BIFUN_STATIC_ASSERT(offsetof(bifun_string_constant, not_null) == 0);
BIFUN_STATIC_ASSERT(offsetof(bifun_string_constant, length) == 4);
BIFUN_STATIC_ASSERT(offsetof(bifun_string_constant, trailing_blanks) == 8);
BIFUN_STATIC_ASSERT(offsetof(bifun_string_constant, inline_bytes) == 12);
BIFUN_STATIC_ASSERT(offsetof(bifun_string_constant, data) == 64);
BIFUN_STATIC_ASSERT(sizeof(bifun_memory_object) == 48);
BIFUN_STATIC_ASSERT(offsetof(bifun_memory_object, allocate) == 16);
BIFUN_STATIC_ASSERT(offsetof(bifun_memory_object, release) == 24);
BIFUN_STATIC_ASSERT(offsetof(bifun_memory_object, heap) == 40);
BIFUN_STATIC_ASSERT(sizeof(bifun_settings) == 12);
BIFUN_STATIC_ASSERT(offsetof(bifun_settings, compatible_mode) == 0);
BIFUN_STATIC_ASSERT(offsetof(bifun_settings, charset_code) == 4);
BIFUN_STATIC_ASSERT(offsetof(bifun_settings, case_sensitive) == 8);

#endif
