/* SPDX-License-Identifier: Apache-2.0 */
/* Datetimes as text under a date format, both ways.
 *
 * docs/date-formats.md describes the two format languages: format models such as YYYY-MM-DD, and the %-formats of DATE_FORMAT. A format is
 * parsed once into a model, a plain record in the caller's memory that owns nothing, may be copied and needs no release. Texts are in the
 * database character set and not NUL-terminated; those of length 0 may be null. Values are passed by pointer and may be unaligned. */
#ifndef BIFUN_ENGINE_DATE_FORMAT_H
#define BIFUN_ENGINE_DATE_FORMAT_H

#include "bop/frame/contract.h"

#ifdef __cplusplus
extern "C" {
#endif

enum { DFM_LONGEST_FORMAT = 75, DFM_TEXT_SIZE = 2048, DFM_SHORT_TEXT_SIZE = 64, DFM_FIXED_TEXT_SIZE = 48 };

/* What an engine may say of a model, so that the library can spare it calls: the text of a value with a year from 0 to 9999 and an hour
 * below 100 has `length` characters, where that is not 0, and character i is others[i] or, where order[i] is below 16, character order[i]
 * of YYYYMMDD00HHMMSS; order[i] is 0x80 for the others, and others[i] is 0 for the digits and behind the text. */
typedef struct dfm_fixed_text {
    uint32_t length;
    uint8_t order[DFM_FIXED_TEXT_SIZE];
    uint8_t others[DFM_FIXED_TEXT_SIZE];
} dfm_fixed_text;

/* `room` is how many bytes may be overwritten where a text is written, its text and what lies behind: DFM_SHORT_TEXT_SIZE for most models,
 * at most DFM_TEXT_SIZE. The inside belongs to the engine. */
typedef struct dfm_model {
    uint32_t room;
    dfm_fixed_text fixed;
    uint64_t inside[120];
} dfm_model;

/* ---- models --------------------------------------------------------------------------------------------------------- */

/* In which language names are written and read. */
enum dfm_language { DFM_ENGLISH = 0, DFM_CHINESE = 1 };

/* Begins a model without elements, in the session's language; in English without an environment. Until the model is parsed the environment
 * has to live: it may keep the last formats, as executors pass the same ones again and again. Returns 0. */
int32_t dfm_create(const bifun_environment* environment, dfm_model* model);

/* Returns 0; -6803 where there is no such language, and then the model is as it was. */
int32_t dfm_set_lang(dfm_model* model, int32_t language);

/* Parses a format into a model that dfm_create has begun. Returns 0; -6127 where the text is no format model or longer than
 * DFM_LONGEST_FORMAT bytes, and then the model has no elements. */
int32_t dfm_parse(dfm_model* model, const uint8_t* format, uint32_t length);

/* dfm_create and dfm_parse of a format by which text is to be read. -6127 also where it has elements that cannot be read or contradict each
 * other, or elements of the zone without `with_zone`. What a text lacks is taken from today's date, which is asked for here. */
int32_t parse_date_fmt_with_len(const bifun_environment* environment, const uint8_t* format, uint32_t length, int32_t with_zone,
                                dfm_model* model);

/* Parses a %-format, for date_to_char only. Returns 0; -6127 where it is longer than DFM_LONGEST_FORMAT bytes or ends in a single %. */
int32_t zqtime_convert_fmt(const bifun_environment* environment, const uint8_t* format, uint32_t length, dfm_model* model);

/* The language that an NLS text such as NLS_DATE_LANGUAGE = ENGLISH names. Returns 0; -6131 where it names none, and then `language` is
 * untouched. */
int32_t to_char_nls_parse(const uint8_t* nls, uint32_t length, int32_t* language);

/* What a text can be: a format model, a number format (engine/number_format.h) or neither. No text is both. */
enum zq_format_use { ZQ_FORMAT_OF_NOTHING = 0, ZQ_FORMAT_OF_DATES = 1, ZQ_FORMAT_OF_NUMBERS = 2 };
int32_t zqtime_dt_fmt_is_for_xdec_and_date(const uint8_t* format, uint32_t length);

/* ---- writing -------------------------------------------------------------------------------------------------------- */

/* Writes a value under a model and sets `length`; `buffer` has the model's `room`. A value without a zone is taken to be in the session's.
 * Returns 0. The first is for the models of dfm_parse and of sessions, the second for those of zqtime_convert_fmt. */
int32_t dfm_char_get(const bifun_environment* environment, const dfm_model* model, const zqtime* value, uint8_t* buffer, uint32_t* length);
int32_t date_to_char(const bifun_environment* environment, const dfm_model* model, const zqtime* value, uint8_t* buffer, uint32_t* length);

/* ---- reading -------------------------------------------------------------------------------------------------------- */

/* What a text is read as: a date loses its time of day. */
enum dfm_result { DFM_DATE = 14, DFM_DATETIME = 16 };

/* Reads a text by a model of parse_date_fmt_with_len or of the session, into a value without a zone; `as` is of dfm_result. Returns 0;
 * -6118 where the text does not match or the date does not exist, -6127 where the model cannot be read by, and then the result is
 * untouched. A date that the calendar's changeover left out becomes 1582-10-15. */
int32_t char_to_date_simple_with_alen(const dfm_model* model, const uint8_t* text, uint32_t length, int32_t as, zqtime* result);

/* The same into a value with a zone, that of the session where the text has none. */
int32_t char_to_datetime_tz_simple_with_alen(const bifun_environment* environment, const dfm_model* model, const uint8_t* text,
                                             uint32_t length, zqtime* result);

/* zqtime_from_char_ex with the session's formats: a text is first read by those for datetimes and for dates, where there are such. */
int32_t zqtime_from_char_ex2(bifun_environment* environment, const uint8_t* text, uint32_t length, zqtime* result);

/* zqtime_from_char_ex into a value with a zone, that of the session where the text has none. */
int32_t zqtime_from_char_with_tz(const bifun_environment* environment, const uint8_t* text, uint32_t length, zqtime* result);

#ifdef __cplusplus
}
#endif

#endif
