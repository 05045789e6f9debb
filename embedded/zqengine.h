/* SPDX-License-Identifier: Apache-2.0 */
/* The embedded engine for executors: sessions, columns and large objects. Compiles as C11 and as C++; any language that calls C can use it.
 *
 * An executor makes columns, fills them, passes them to the functions of libbifun.so and reads the results. Besides, it needs of engine/
 *     memory.h              rt_memobj_create_ex and rt_memobj_destroy: the memory object of a call
 *     decimal.h, datetime.h xdec_from_char and zqtime_from_char_ex: values of constants from text
 *     large_objects.h       nblob_get_length
 * Constants are plain records (bop/frame/contract.h), which the executor fills itself.
 *
 * What a `create` returns is null where memory is exhausted; the `destroy` beside it releases it, and does nothing for null. Functions that
 * return a status return 0, or a negative one, and then nothing has changed; zqengine_status_meaning has its meaning. -6803 is for an
 * argument that is not one of those that the function takes. Text has a length, no closing NUL, the database character set, which
 * bifun_dll_var_init tells the engine, and may be null where the length is 0. What is passed is copied, unless a function says otherwise.
 *
 * One thread at a time may use an environment, a column, or a large object store with its objects; several ones may be used at once. */
#ifndef BIFUN_EMBEDDED_ZQENGINE_H
#define BIFUN_EMBEDDED_ZQENGINE_H

#include "bop/frame/contract.h"

#ifdef __cplusplus
extern "C" {
#endif

/* What a status means, a text that stays for ever: those of the library, of this engine, and 0; "engine error" for any other. */
const char* zqengine_status_meaning(int32_t status);

/* ---- environments --------------------------------------------------------------------------------------------------- */

/* A session: its zone is UTC, its language English, and it has no formats. Any call that is given it must have ended before it is
 * destroyed; zone, language and formats may be set between calls. */
bifun_environment* zqengine_environment_create(void);
void zqengine_environment_destroy(bifun_environment* environment);

/* The displacement of the session's zone from UTC in minutes, -840..840; else -6803. */
int32_t zqengine_environment_set_time_zone(bifun_environment* environment, int32_t minutes);

/* In which language names in dates are written and read, of dfm_language (engine/date_format.h); -6803 for another. Formats that the
 * session has keep theirs. */
int32_t zqengine_environment_set_language(bifun_environment* environment, int32_t language);

/* Of what values a session's format is. */
enum zqengine_format {
    ZQENGINE_DATE_FORMAT = 0,
    ZQENGINE_TIME_FORMAT = 1,
    ZQENGINE_DATETIME_FORMAT = 2,
    ZQENGINE_TIME_WITH_ZONE_FORMAT = 3,
    ZQENGINE_DATETIME_WITH_ZONE_FORMAT = 4
};

/* What keeps a text from being a format: a meaning that stays for ever, and the bytes of the text that are at fault. */
typedef struct zqengine_format_fault {
    const char* meaning;
    uint32_t offset;
    uint32_t length;
} zqengine_format_fault;

/* Sets by what format values are written and read where a call gives none; an empty text sets none again. docs/date-formats.md describes
 * the format models. Returns 0; -6803 where there is no such `which`; -6127 where the text is no format, and then `fault`, unless null,
 * says why and where. */
int32_t zqengine_environment_set_format(bifun_environment* environment, int32_t which, const char* format, uint32_t length,
                                        zqengine_format_fault* fault);

/* ---- parameters of the process ---------------------------------------------------------------------------------------- */

/* Sets a parameter of engine/session.h for all sessions; -6803 where there is no such parameter or value:
 *     INI_SHOW_FRACTION  0 (at first) or 1
 *     INI_NOW_TIME_ZONE  minutes -840..840, or ZQTIME_NO_ZONE (at first) for the zone of the process
 * Any thread may do so at any time; a call that runs keeps the value that it has read. */
int32_t zqengine_set_parameter(int32_t parameter, int64_t value);

/* Whether text that is read as a DATE without a format may have a time of day; not so at first. Any thread, at any time. */
void zqengine_set_dates_keep_time(int32_t keep);

/* ---- columns ---------------------------------------------------------------------------------------------------------- */

/* The types of a column's values, ZQENGINE_BOOL, ZQENGINE_INT and so on; bop/frame/value_types.def lists them. */
enum zqengine_type {
#define VALUE_TYPE(code, name, row) ZQENGINE_##name = (code),
#include "bop/frame/value_types.def"
#undef VALUE_TYPE
};

/* A column of a type of zqengine_type with room for `capacity` rows, all of them NULL. Null also where there is no such type.
 *
 * What is returned is passed to the library, as an argument or as a result. Its record may be changed: `no_nulls`, 0 at first, may promise
 * that no row is NULL, and `selection` may be set to an array of the caller's own. Other records with the same `data` are as good, several
 * at a time, for arguments with selections of their own. null_flags and values of the data may be read and written as bop/frame/contract.h
 * says; the bytes of strings belong to the column.
 *
 * Where a result refers to bytes of arguments (results_may_refer in engine/statements.h), these have to live as long as it is read. */
bifun_column* zqengine_column_create(int32_t type, uint32_t capacity);
void zqengine_column_destroy(bifun_column* column);

/* Makes the column ready for the next batch: all rows are NULL, their values zero, no_nulls is 0 and the status forgotten; bytes of strings
 * are used again. A selection stays. */
void zqengine_column_clear(bifun_column* column);

/* Makes the column ready to be the result of a call of so many rows, with what a call needs of that: bytes of strings are used again, the
 * first `row_count` strings are empty, and the status is forgotten; else flags and values are as they were, until the call writes them. */
void zqengine_column_prepare(bifun_column* column, uint32_t row_count);

/* Looks at the first `row_count` texts of a VARCHAR column and has it tell the library whether they are ASCII or well-formed UTF-8
 * (columns_tell_texts in engine/statements.h), which saves functions the look: for columns that several calls read. Setting a text,
 * clearing and preparing take it back; writing `values` does not. */
void zqengine_column_tell_texts(bifun_column* column, uint32_t row_count);

/* The same without a look, where the caller knows what all texts of the column are, also those that are written into `values`:
 * ZQ_TEXTS_ANY, ZQ_TEXTS_UTF8 or ZQ_TEXTS_ASCII. Nothing is told of columns of other types. */
void zqengine_column_set_known_texts(bifun_column* column, int32_t known);

int32_t zqengine_column_type(const bifun_column* column);
uint32_t zqengine_column_capacity(const bifun_column* column);

/* -503 where a string of a result found no memory since the column was made or cleared, which no call returns: look at it after calls
 * that write strings. Else 0. */
int32_t zqengine_column_status(const bifun_column* column);

/* As what the datetimes of a DATETIME column are written by zqengine_column_get_text: of zqdt_kind (engine/datetime.h), at first
 * ZQDT_DATETIME. -6803 for another kind. */
int32_t zqengine_column_set_kind(bifun_column* column, int32_t kind);

/* ---- filling columns -------------------------------------------------------------------------------------------------- */

/* Set one row to a value, which is not NULL then; a row may be set again. `row` counts the rows of the data, whatever selection the record
 * has. -6803 where the column has no such row or not that type. BOOL takes 1 and 0 as an int. */
int32_t zqengine_column_set_int(bifun_column* column, uint32_t row, int32_t value);
int32_t zqengine_column_set_bigint(bifun_column* column, uint32_t row, int64_t value);
int32_t zqengine_column_set_double(bifun_column* column, uint32_t row, double value);
int32_t zqengine_column_set_decimal(bifun_column* column, uint32_t row, const xdec* value);
int32_t zqengine_column_set_datetime(bifun_column* column, uint32_t row, const zqtime* value);
int32_t zqengine_column_set_interval_ym(bifun_column* column, uint32_t row, const bifun_interval_ym* value);
int32_t zqengine_column_set_interval_dt(bifun_column* column, uint32_t row, const bifun_interval_dt* value);

/* VARCHAR and VARBINARY: copies the bytes, in meaning followed by `trailing_blanks` blanks, of which binary values have none. Also -503. */
int32_t zqengine_column_set_string(bifun_column* column, uint32_t row, const void* bytes, uint32_t length, uint32_t trailing_blanks);

/* BLOB: the row refers to the object, which has to live as long as the row is read. */
int32_t zqengine_column_set_large_object(bifun_column* column, uint32_t row, bifun_large_object* object);

/* Any type but BLOB: reads what zqengine_column_get_text writes. Numbers may have a plus sign; decimals, doubles and datetimes are read
 * as by xdec_from_char, zq_char2dou and zqtime_from_char_ex; strings are taken as they are. -6806 where the text is no such value, -6102
 * where the number is too large, -503. */
int32_t zqengine_column_set_text(bifun_column* column, uint32_t row, const char* text, uint32_t length);

/* Makes the row NULL, and takes back the promise that none is. -6803 where there is no such row. */
int32_t zqengine_column_set_null(bifun_column* column, uint32_t row);

/* ---- reading columns -------------------------------------------------------------------------------------------------- */

/* Not an error: the cell is NULL. */
enum { ZQENGINE_NULL = 1 };

/* Writes one row as text with a closing NUL into a buffer of `size` bytes; `*length` gets the length without the NUL. `row` counts the
 * rows of the data.
 *     BOOL                  true, false
 *     INT, BIGINT           decimal digits
 *     DOUBLE                as zq_dou2char writes it: the shortest text that reads back as the same
 *     DECIMAL               in plain notation, with all digits of its scale
 *     DATETIME              2024-02-29, 13:45:00[.123456] or both with a blank between, by zqengine_column_set_kind; behind a time its zone
 *                           where there is one (+08:00)
 *     INTERVAL_YM           1-02, and -1-02
 *     INTERVAL_DT           1 02:03:04[.5], and -1 02:03:04[.5]
 *     VARCHAR, VARBINARY    the bytes, and behind them the trailing blanks
 *     BLOB                  the bytes
 * Returns 0; ZQENGINE_NULL where the row is NULL, with an empty text where `size` is not 0; -6819 where `size` is too small, and then
 * `*length` gets the length that the text has and nothing is written; -6803 where there is no such row; the status of a temporary file that
 * cannot be read, and then what is in the buffer has no meaning. */
int32_t zqengine_column_get_text(const bifun_column* column, uint32_t row, char* buffer, size_t size, size_t* length);

/* ---- large objects ---------------------------------------------------------------------------------------------------- */

/* Where large objects are: up to 4,096 bytes each in memory, longer ones in a temporary file of the store, which vanishes with it. A store
 * is destroyed after its objects. */
typedef struct zqengine_large_object_store zqengine_large_object_store;
zqengine_large_object_store* zqengine_large_object_store_create(void);
void zqengine_large_object_store_destroy(zqengine_large_object_store* store);

/* An object without bytes. It must not be in a column any more that is read when it is destroyed. */
bifun_large_object* zqengine_large_object_create(zqengine_large_object_store* store);
void zqengine_large_object_destroy(bifun_large_object* object);

/* Adds bytes at the end. -503; -7113 where the temporary file cannot be made or written or is full. Where the process has a limit for the
 * size of files, SIGXFSZ has to be ignored. */
int32_t zqengine_large_object_append(bifun_large_object* object, const void* bytes, size_t size);

/* Reads `size` bytes from `offset` on, or those that there are; `*read` gets their number, which is 0 from the end on. -6803 for a negative
 * offset; -7113. Several threads may read at once. */
int32_t zqengine_large_object_read(const bifun_large_object* object, int64_t offset, void* buffer, size_t size, size_t* read);

#ifdef __cplusplus
}
#endif

#endif
