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

enum { ZQTIME_NO_ZONE = 1000 };

/* Returns 0; -6803 where a component is outside its range or the date does not exist, and then the result is untouched.
 * Month 1-12, day 1-31, hour 0-23, minute and second 0-59, microsecond 0-999999, zone -840..840 or ZQTIME_NO_ZONE. */
int32_t zqtime_encode(zqtime* result, int32_t year, uint32_t month, uint32_t day, uint32_t hour, uint32_t minute, uint32_t second,
                      uint32_t microsecond, int32_t zone);

/* The components of a value; any pointer may be null. */
void zqtime_decode(const zqtime* value, int32_t* year, uint32_t* month, uint32_t* day, uint32_t* hour, uint32_t* minute, uint32_t* second,
                   uint32_t* microsecond);

/* The zone displacement in minutes, or ZQTIME_NO_ZONE. */
int32_t zqtime_get_tz(const zqtime* value);

void zqtime_assign(zqtime* destination, const zqtime* source);

/* -1, 0 or 1 by the order of time. Two values with zones are compared by the instants that they name; else the zones do not count. */
int32_t zqtime_cmp(const zqtime* a, const zqtime* b);

/* Reads a date, a time or both, as people write them:
 *     dates   [-]YYYY-MM-DD with - / or . between, months and days of one or two digits; YYYYMMDD
 *     times   HH:MM[:SS[.fraction]] behind a date after blanks or T; HHMMSS behind a date run together after T; fraction 1-6 digits,
 *             more are cut
 *     zones   Z, +HH:MM, -HH:MM, +HHMM or +HH behind a time
 * Blanks around the text are skipped. A text with a time only gives date 1900-01-01. Returns 0; 109 where the text is no datetime,
 * and then the result is untouched. */
int32_t zqtime_from_char_ex(const uint8_t* text, uint32_t length, zqtime* result);

#ifdef __cplusplus
}
#endif

#endif
