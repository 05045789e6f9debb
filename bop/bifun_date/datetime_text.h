// SPDX-License-Identifier: Apache-2.0
// Kernels of datetimes, for datetimes that come as text. A text that is none makes the row NULL.
#ifndef BIFUN_DATE_DATETIME_TEXT_H
#define BIFUN_DATE_DATETIME_TEXT_H

#include "bop/frame/kernel.h"
#include "engine/datetime.h"

namespace bifun {

// `evaluate(value)` with the datetime, which gives a status.
template <class Evaluate> value_or_null with_datetime_of(const bifun_string& text, const Evaluate& evaluate) {
    zqtime value;
    const status read = zqtime_from_char_ex(text.data, text.length, &value);
    if (read == BIFUN_UNUSABLE_TEXT) {
        return value_or_null::null();
    }
    return read < BIFUN_OK ? read : evaluate(value);
}

template <auto kernel, class Result> value_or_null of_text(const bifun_string& text, Result& result) {
    return with_datetime_of(text, [&](const zqtime& value) -> status { return kernel(value, result); });
}

template <auto kernel, class Result> value_or_null field_of_text(std::int32_t field, const bifun_string& text, Result& result) {
    return with_datetime_of(text, [&](const zqtime& value) -> status { return kernel(field, value, result); });
}

} // namespace bifun

#endif
