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
