// SPDX-License-Identifier: Apache-2.0
// TRUNC and ROUND of texts, which hold a datetime or a number: what both have in common.
#ifndef BIFUN_DATE_ROUNDED_TEXT_H
#define BIFUN_DATE_ROUNDED_TEXT_H

#include "bop/bifun_date/datetime_text.h"
#include "bop/bifun_date/units.h"
#include "bop/frame/string_rows.h"
#include "engine/decimal.h"
#include "engine/number_check.h"

namespace bifun {

// What a batch does with its texts.
struct text_rounding {
    bifun_environment* environment;
    std::int32_t unit;  // where it is not `none`, texts are datetimes
    std::int64_t scale; // of numbers
};

inline text_rounding rounding_to(std::int32_t unit, const batch& batch) { return {batch.environment, unit, 0}; }

constexpr std::uint32_t longest_number = 400;
static_assert(longest_number <= ZQDT_TEXT_SIZE);
using rounded_text = bounded_text<ZQDT_TEXT_SIZE>;

// `body(by)` by the second argument of TRUNC or ROUND: the name of a unit or an integer. -6127 for another text.
template <class Body> status with_text_rounding(const batch& batch, constant_of<VARCHAR> unit_or_scale, const Body& body) {
    const auto [text, present] = argument(unit_or_scale);
    if (!present) {
        return null_rows(batch);
    }
    text_rounding by = rounding_to(ifun_parse_roundpart(text.data, text.length), batch);
    if (by.unit == unit::none && str2int64(text.data, text.length, &by.scale) < BIFUN_OK) {
        return fail_batch(batch, BIFUN_INVALID_DATE_FORMAT);
    }
    return body(by);
}

// `round`, a kernel of datetimes, of a text, as the session shows datetimes.
template <auto round> value_or_null round_datetime_text(const bifun_string& text, const text_rounding& by, rounded_text& result) {
    return with_datetime_of(text, [&](const zqtime& value) -> status {
        zqtime rounded;
        const status outcome = round(value, by.unit, rounded);
        if (outcome < BIFUN_OK) {
            return outcome;
        }
        zqdt shown;
        zqdt_encode_fast(&shown, &rounded, ZQDT_DATETIME);
        result.length = zqdt_to_char(by.environment, &shown, result.bytes, ZQDT_TEXT_SIZE);
        return result.length == 0 ? BIFUN_INVALID_DATETIME : BIFUN_OK;
    });
}

inline status show_number(const xdec& number, rounded_text& result) {
    return xdec_to_char_with_zero(&number, reinterpret_cast<char*>(result.bytes), longest_number, 0, 0, &result.length);
}

// `round`, with the parameters of xdec_trunc_scale_with_pos, of a number as text. Scales that no number of digits is have results of their
// own.
template <auto round> value_or_null round_number_text(const bifun_string& text, const text_rounding& by, rounded_text& result) {
    xdec number;
    const status read = xdec_from_char(text.data, text.length, &number);
    if (read == BIFUN_UNUSABLE_TEXT) {
        return value_or_null::null();
    }
    if (read < BIFUN_OK) {
        return read;
    }
    if (by.scale > INT32_MAX - 1) {
        result.bytes[0] = '0';
        result.length = 1;
        return BIFUN_OK;
    }
    const status outcome = by.scale < -INT32_MAX ? BIFUN_OK : round(number, static_cast<std::int32_t>(by.scale), number);
    return outcome < BIFUN_OK ? outcome : show_number(number, result);
}

} // namespace bifun

#endif
