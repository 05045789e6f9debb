// The row loops of the date families.
#ifndef BIFUN_DATE_DATETIME_ROWS_H
#define BIFUN_DATE_DATETIME_ROWS_H

#include "bop/bifun_date/datetime_operations.h"
#include "bop/frame/attempt_rows.h"

namespace bifun {

// Calls `attempt(datetimes, result, values...)` for every row without a NULL.
template <class Result, class Attempt, class... Arguments>
status attempt_datetime_rows(const batch& batch, const Attempt& attempt, const Arguments&... arguments) {
    return with_datetimes([&](auto datetimes) {
        return attempt_set_rows<Result>(
            batch,
            [datetimes, attempt](Result& result, const auto&... values) INLINED -> status { return attempt(datetimes, result, values...); },
            arguments...);
    });
}

// Calls `attempt(datetimes, result, value, constants...)` for every text that is a datetime; the others make NULL rows. Integers go
// straight into the value array.
template <class Result, class Attempt, class... Constants>
status attempt_text_rows(const batch& batch, column text, const Attempt& attempt, const Constants&... constants) {
    return with_datetimes([&](auto datetimes) {
        const auto convert = [datetimes, attempt](Result& result, const bifun_string& value, const auto&... settings) -> status {
            zqtime converted;
            const status outcome = zqtime_from_char_ex(value.data, value.length, &converted);
            return outcome < BIFUN_OK || outcome == BIFUN_UNUSABLE_TEXT ? outcome : attempt(datetimes, result, converted, settings...);
        };
        if constexpr (std::is_integral_v<Result>) {
            return attempt_store_rows<Result, nulls::of_attempts>(batch, convert, string(text), constants...);
        } else {
            return attempt_set_rows<Result, nulls::of_attempts>(batch, convert, string(text), constants...);
        }
    });
}

} // namespace bifun

#endif
