/* SPDX-License-Identifier: Apache-2.0 */
/* Configuration: of the process, and of the session that an environment stands for. */
#ifndef BIFUN_ENGINE_SESSION_H
#define BIFUN_ENGINE_SESSION_H

#include "engine/date_format.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Parameter numbers. */
enum {
    INI_SHOW_FRACTION = 529, /* 1: times and datetimes without a format are shown with six digits of the fraction */
    INI_NOW_TIME_ZONE = 650  /* the zone of the current datetime, as zqtime_tz_now takes it */
};

/* The value of a configuration parameter; 0 where it has none. `reserved` is always 0. */
int64_t ini_get_value(int32_t reserved, int32_t parameter);

/* The session's displacement from UTC in minutes, -840..840; 0 without an environment. */
int32_t sess4_get_time_zone(const bifun_environment* environment);

/* Whether a DATE that text is read into without a format may have a time of day. */
int32_t ini_enable_oracle_date_fmt(void);

/* The session's formats of values for which a call gives none, to write by and, where they can be read by, to read. Null where none is set
 * or there is no environment. They belong to the session and stay until its next call. */
const dfm_model* sess4_get_date_format(bifun_environment* environment);
const dfm_model* sess4_get_time_format(bifun_environment* environment);
const dfm_model* sess4_get_datetime_format(bifun_environment* environment);
const dfm_model* sess4_get_time_tz_format(bifun_environment* environment);
const dfm_model* sess4_get_datetimetz_format(bifun_environment* environment);

/* ---- the library's settings ----------------------------------------------------------------------------------------- */

/* Optional: where there is one, bifun_dll_var_init calls it with the settings that it has stored, so that the engine has the same database
 * character set. The record is the library's own; it stays where it is, and changes before the next call of this operation only. No other
 * operation runs meanwhile. */
void zq_settings_changed(const bifun_settings* settings) __attribute__((weak));

#ifdef __cplusplus
}
#endif

#endif
