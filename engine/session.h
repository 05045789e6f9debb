/* Configuration that the engine keeps for the whole process. */
#ifndef BIFUN_ENGINE_SESSION_H
#define BIFUN_ENGINE_SESSION_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Parameter numbers. */
enum {
    INI_NOW_TIME_ZONE = 650 /* the zone of the current datetime, as zqtime_tz_now takes it */
};

/* The value of a configuration parameter; 0 where it has none. `reserved` is always 0. */
int64_t ini_get_value(int32_t reserved, int32_t parameter);

#ifdef __cplusplus
}
#endif

#endif
