/* SPDX-License-Identifier: Apache-2.0 */
/* The statuses that exported functions return: 0 or one of the negative codes below. */
#ifndef BIFUN_FRAME_STATUS_H
#define BIFUN_FRAME_STATUS_H

enum bifun_status {
    BIFUN_OK = 0,
#define STATUS(code, name, meaning) BIFUN_##name = (code),
#include "bop/frame/statuses.def"
#undef STATUS
};

/* Not an error: an engine's text-to-datetime or text-to-decimal operation met text that is no such value. */
enum { BIFUN_UNUSABLE_TEXT = 109 };

#endif
