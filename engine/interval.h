/* SPDX-License-Identifier: Apache-2.0 */
/* Intervals: spans of months and of time. Values are passed by pointer; operations take no environment and allocate nothing. */
#ifndef BIFUN_ENGINE_INTERVAL_H
#define BIFUN_ENGINE_INTERVAL_H

#include "bop/frame/contract.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A datetime so many years and months later or earlier, by the rules of zqtime_add_by_fmt. Return 0; -6118 where the result would lie
 * outside years -4712 to 9999, and then it is untouched. `result` may be `value`. */
int32_t datetime_add_interval_ym(const zqtime* value, const bifun_interval_ym* interval, zqtime* result);
int32_t datetime_sub_interval_ym(const zqtime* value, const bifun_interval_ym* interval, zqtime* result);

/* A datetime so many days and so much time later or earlier, in time that passed. Return 0; -6118 where the result would lie outside years
 * -4712 to 9999, and then it is untouched. `result` may be `value`. */
int32_t datetime_add_interval_dt(const zqtime* value, const bifun_interval_dt* interval, zqtime* result);
int32_t datetime_sub_interval_dt(const zqtime* value, const bifun_interval_dt* interval, zqtime* result);

/* -1, 0 or 1 by the order of length: all months, or all microseconds, with a day of 24 hours, so that one day is 24 hours. */
int32_t interval_ym_cmp(const bifun_interval_ym* a, const bifun_interval_ym* b);
int32_t interval_dt_cmp(const bifun_interval_dt* a, const bifun_interval_dt* b);

/* So many of a unit as an interval: all fields get the sign of the number and are within their ranges, the first one excepted. The unit's
 * name is in any case, blanks around it do not count.
 *     xdec_to_ivym   YEAR MONTH                 to months, halves away from zero
 *     xdec_to_ivdt   DAY HOUR MINUTE SECOND     to microseconds, halves away from zero
 * Return 0; -6803 for another unit, -6102 where the first field would not fit 32 bits; then the result is untouched. */
int32_t xdec_to_ivym(const xdec* number, const uint8_t* unit, uint32_t unit_length, bifun_interval_ym* result);
int32_t xdec_to_ivdt(const xdec* number, const uint8_t* unit, uint32_t unit_length, bifun_interval_dt* result);

#ifdef __cplusplus
}
#endif

#endif
