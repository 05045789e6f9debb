// SPDX-License-Identifier: Apache-2.0
#include "engine/statements.h"

// Writable, so that an executor can have the library call the operations instead. The definition is weak as its declaration is, which lets
// an engine that links this one statically make statements of its own.
bifun_engine_statements zq_engine_statements = {
    .size = sizeof(bifun_engine_statements),
    .setters_are_plain_stores = 1,
    .free_bytes_are_open = 1,
    .ascii_is_single_byte = 1,
    .decimal_layout = XDEC_LAYOUT_PACKED_128,
    .datetime_layout = ZQTIME_LAYOUT_PACKED,
    .pads_as_described = 1,
    .utf8_is_unicode = 1,
    .number_texts_as_described = 1,
    .results_may_refer = 1,
    .columns_tell_texts = 1,
};
