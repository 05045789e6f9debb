/* SPDX-License-Identifier: Apache-2.0 */
/* DATE, TIME and DATETIME values with and without a time zone, all in one encoded form.
 *
 * Years run from -4712 to 9999 and years before 1 are astronomical (0 is 1 BC). Dates are Julian before 1582-10-15 and Gregorian from
 * then on; 1582-10-05 to 1582-10-14 do not exist. The fraction of a second is in microseconds. The zone is the displacement from UTC
 * in minutes, ZQTIME_NO_ZONE for none. A date has time 00:00:00; a time has date 1900-01-01. Values are passed by pointer and may be
 * unaligned. Operations take no environment and allocate nothing. */
#ifndef BIFUN_ENGINE_DATETIME_H
#define BIFUN_ENGINE_DATETIME_H

#include "bop/frame/contract.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Returns 0; -6803 where a component is outside its range or the date does not exist, and then the result is untouched.
 * Month 1-12, day 1-31, hour 0-23, minute and second 0-59, microsecond 0-999999, zone -840..840 or ZQTIME_NO_ZONE. */
int32_t zqtime_encode(zqtime* result, int32_t year, uint32_t month, uint32_t day, uint32_t hour, uint32_t minute, uint32_t second,
                      uint32_t microsecond, int32_t zone);

/* The same without looking at ranges: for a year from -5000 to 11383, and parts that a valid value could have. Returns 0. */
int32_t zqtime_encode_without_check(zqtime* result, int32_t year, uint32_t month, uint32_t day, uint32_t hour, uint32_t minute,
                                    uint32_t second, uint32_t microsecond, int32_t zone);

/* One component. The year is a signed number in the bits of an unsigned one; zqtime_get_msec is the fraction in microseconds, 0-999999. The
 * hour of a time that was made from seconds may be above 23. */
uint32_t zqtime_get_year(const zqtime* value);
uint32_t zqtime_get_month(const zqtime* value);
uint32_t zqtime_get_day(const zqtime* value);
uint32_t zqtime_get_hour(const zqtime* value);
uint32_t zqtime_get_min(const zqtime* value);
uint32_t zqtime_get_sec(const zqtime* value);
uint32_t zqtime_get_msec(const zqtime* value);

/* Sets one component. Returns 0; -6803 where it is outside its range, or the date that results does not exist, and then the value is as it
 * was. zqtime_set_msec takes microseconds. */
int32_t zqtime_set_year(zqtime* value, int32_t year);
int32_t zqtime_set_month(zqtime* value, uint32_t month);
int32_t zqtime_set_day(zqtime* value, uint32_t day);
int32_t zqtime_set_hour(zqtime* value, uint32_t hour);
int32_t zqtime_set_min(zqtime* value, uint32_t minute);
int32_t zqtime_set_sec(zqtime* value, uint32_t second);
int32_t zqtime_set_msec(zqtime* value, uint32_t microsecond);
int32_t zqtime_set_tz(zqtime* value, int32_t zone);

/* Sets an hour of up to 1048575, so that a time can tell more than a day. Returns 0. */
int32_t zqtime_set_hour_without_check(zqtime* value, uint32_t hour);

/* The components of a value; any pointer may be null. */
void zqtime_decode(const zqtime* value, int32_t* year, uint32_t* month, uint32_t* day, uint32_t* hour, uint32_t* minute, uint32_t* second,
                   uint32_t* microsecond);

/* The zone displacement in minutes, or ZQTIME_NO_ZONE. */
int32_t zqtime_get_tz(const zqtime* value);

/* Its hours and its minutes, both with its sign: -210 is -3 and -30. 0 where there is no zone. */
int32_t zqtime_get_zone_hour(const zqtime* value);
int32_t zqtime_get_zone_min(const zqtime* value);

/* 1-366, counting days that exist: 1582-10-15 follows 1582-10-04 in the count as well. */
uint32_t zqtime_day_of_year(const zqtime* value);

/* 0 Sunday to 6 Saturday. */
uint32_t zqtime_day_of_week(const zqtime* value);

/* The week of the year, 1-54: weeks begin on Sunday and 1 January lies in week 1. */
uint32_t zqtime_week_for_datepart(const zqtime* value);

/* The number of the last day of a month, 1-12; 31 for October 1582. */
uint32_t zqtime_month_end_day(int32_t year, uint32_t month);

void zqtime_assign(zqtime* destination, const zqtime* source);

/* -1, 0 or 1 by the order of time. Two values with zones are compared by the instants that they name; else the zones do not count. */
int32_t zqtime_cmp(const zqtime* a, const zqtime* b);

/* ---- differences -------------------------------------------------------------------------------------------------- */

/* Gives a value before the changeover the date that the Gregorian calendar has for the same day, and marks it so that it is not adjusted
 * again. For the two differences only: other operations do not know such dates. */
void zqtime_glgl_adjust(zqtime* value);

/* a - b in whole days by date; the time of day does not count. zqtime_diff_day counts the days that passed, with adjusted values or
 * without. The other one takes dates as they are written for Gregorian ones, so that 1582-10-15 is 11 days after 1582-10-04. */
int32_t zqtime_diff_day(const zqtime* a, const zqtime* b);
int32_t zqtime_diff_day_without_glgl_adjust(const zqtime* a, const zqtime* b);

/* How many boundaries of the field lie between two values, b - a: from 23:59 to 00:01 is one day, from 31 December to 1 January one year.
 * Weeks begin on Sunday; day of year and weekday count days; sub-seconds are milliseconds. Zones do not count. Returns 0; -6803 for another
 * field, -6102 where the count is beyond 32 bits, and then the result is untouched. */
int32_t zqtime_parse_datediff(int32_t field, const zqtime* a, const zqtime* b, int32_t* result);

/* The number of the day: 0000-01-01 is day 0, earlier days are negative. Returns 0. */
int32_t zqtime_to_days(const zqtime* value, int64_t* days);

/* ---- arithmetic --------------------------------------------------------------------------------------------------- */

/* These return 0; -6803 for a field that cannot be added or a number that is NaN or infinite; -6118 where the result would lie outside
 * years -4712 to 9999; in both cases the result is untouched. `result` may be `value`. The zone stays.
 *
 * Where months are added, a day behind the end of the month becomes its last, and a day that the changeover left out 1582-10-15. Days and
 * shorter units count time that passed, and what is more or less than a day moves the date. */

/* Adds `amount` of a field: year, month, day, hour, minute, second, sub-second (milliseconds), quarter, day of year and weekday (days),
 * week (7 days). */
int32_t zqtime_add_by_fmt(const zqtime* value, int32_t field, int64_t amount, zqtime* result);

/* Adds days, a fraction of which is a time rounded to microseconds, halves away from zero. Whole days leave the time as it is. */
int32_t zqtime_date_add_number(const zqtime* value, double days, zqtime* result);

/* Adds months; the last day of a month stays the last. */
int32_t zqtime_date_add_iv_ym(const zqtime* value, int32_t months, zqtime* result);

/* ---- now and names ------------------------------------------------------------------------------------------------ */

/* The current datetime in a zone given in minutes, with that zone, to `precision` digits of the second, 0-6. ZQTIME_NO_ZONE: the time of
 * the process's own zone, without a zone. Returns 0; -6803 where the precision or the zone is outside its range. */
int32_t zqtime_tz_now(int32_t precision, int32_t zone, zqtime* now);

/* An English day name, in any case, whole or its first three letters: 0 Sunday to 6 Saturday, 8 for another text. `charset_code` is that of
 * bifun_settings. */
enum { ZQTIME_UNKNOWN_WEEKDAY = 8 };
uint32_t zqtime_convert_weekday(uint32_t charset_code, const char* name);

/* ---- text --------------------------------------------------------------------------------------------------------- */

/* Reads a date, a time or both, as people write them:
 *     dates   [-]YYYY-MM-DD with - / or . between, months and days of one or two digits; YYYYMMDD
 *     times   HH:MM[:SS[.fraction]], hours of one or two digits, behind a date after blanks or T; behind YYYYMMDD also HHMM[SS[.fraction]]
 *             after blanks or T and HHMMSS[.fraction] after nothing; the fraction behind a point or a comma, digits beyond six are cut
 *     zones   Z, +HH:MM, -HH:MM, +HHMM or +HH behind a time, after blanks or none
 * T and Z are of any case. Blanks around the text are skipped. A text with a time only gives date 1900-01-01. Returns 0; 109 where the text
 * is no datetime, and then the result is untouched. */
int32_t zqtime_from_char_ex(const uint8_t* text, uint32_t length, zqtime* result);

/* ---- dates by their parts ------------------------------------------------------------------------------------------ */

/* Returns 0; -6803 where the year, the month or the day is outside its range. A day that the changeover left out passes. */
int32_t zqtime_date_validate(int32_t year, uint32_t month, uint32_t day);

/* Where a date lies to the days that the changeover left out: -1 before them, 0 among them, 1 behind them. */
int32_t zqtime_cmp_with_glgl(int32_t year, uint32_t month, uint32_t day);

/* Whether a value lies among those days: values that were encoded unchecked may. */
int32_t zqtime_glgl_need_adjust_by_zero(const zqtime* value);

/* Whether a value lies in October 1582 behind the 4th, where the weeks of the month do not begin as on its first day. */
int32_t zqtime_glgl_need_adjust_for_w(const zqtime* value);

/* The number of a date that zqtime_date_validate passes: days from 0000-01-01 on as the months number them, so that those which the
 * changeover left out count. */
int64_t zqtime_calc_n_days_from_zero(int32_t year, uint32_t month, uint32_t day);

/* The date of such a number, which may be one that the changeover left out. Returns 0; -6118 where it lies outside years -4712 to 9999, and
 * then nothing is written. */
int32_t zqtime_get_date_by_ndays_from_zero(int64_t number, int32_t* year, uint32_t* month, uint32_t* day);

/* ---- unix times --------------------------------------------------------------------------------------------------- */

/* The datetime, without a zone, that clocks of the session's zone show so many seconds after 1970-01-01 00:00:00 UTC. Returns 0; -6118
 * where it lies outside years -4712 to 9999, and then the result is untouched. */
int32_t zqtime_from_unix_time(const bifun_environment* environment, int64_t seconds, zqtime* result);

/* The seconds from 1970-01-01 00:00:00 to a datetime in UTC, negative before; a fraction is cut, the value's zone does not count. `zone`
 * says from which displacement in minutes the datetime was brought to UTC; this engine does not need it. Return 0; an engine that cannot
 * tell the time returns a negative status. */
int32_t zqtime_unix_timestamp(int32_t zone, const zqtime* value, int64_t* seconds);
int32_t zqtime_unix_timestamp_low(const zqtime* value, int64_t* seconds);

/* ---- default text ------------------------------------------------------------------------------------------------- */

/* A datetime with what it is meant to be: a value of a column does not say it. */
enum zqdt_kind { ZQDT_DATE = 1, ZQDT_TIME = 2, ZQDT_DATETIME = 3 };
typedef struct zqdt {
    zqtime value;
    int32_t kind; /* of zqdt_kind */
} zqdt;

void zqdt_encode_fast(zqdt* result, const zqtime* value, int32_t kind);

/* Writes what TO_CHAR gives for such a value without a format, in the session's format for its kind where there is one, without a NUL.
 * A zone is shown where the value has one. Returns the length; 0 where the text is longer than `size`, for which ZQDT_TEXT_SIZE always
 * suffices, or the kind is none, and then what is in the buffer has no meaning. */
enum { ZQDT_TEXT_SIZE = 2048 };
uint32_t zqdt_to_char(bifun_environment* environment, const zqdt* datetime, uint8_t* buffer, uint32_t size);

#ifdef __cplusplus
}
#endif

#endif
