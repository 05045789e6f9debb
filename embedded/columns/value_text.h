// SPDX-License-Identifier: Apache-2.0
// The values of columns as text and back.
#ifndef BIFUN_EMBEDDED_COLUMNS_VALUE_TEXT_H
#define BIFUN_EMBEDDED_COLUMNS_VALUE_TEXT_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "bop/frame/value_type.h"
#include "embedded/datetime/text.h"

namespace zqengine {

constexpr std::size_t value_text_size = 256;

// Writes a value of any type but strings and large objects into `buffer`, which has room for value_text_size bytes, and returns the length.
// There is no closing NUL. `value` may be unaligned.
//     BOOL          true, false for any number but 1
//     DOUBLE        as zq_dou2char writes it: the shortest text that reads back as the same
//     DECIMAL       in plain notation, with all digits of its scale
//     DATETIME      by write_datetime, as `kind`, which has no meaning for the other types
//     INTERVAL_YM   1-02
//     INTERVAL_DT   1 02:03:04[.5], both with a sign before negative ones
std::size_t write_value(bifun::value_type type, datetime_kind kind, const void* value, char* buffer);

// Reads what write_value writes, the whole text; numbers may have a plus sign, decimals and datetimes may be as their operations read them,
// intervals may have fewer digits. Returns 0; -6806 where the text is no value of the type, which none is of strings and large objects;
// -6102 where the number is too large; then the value is untouched. It may be unaligned.
[[nodiscard]] std::int32_t read_value(bifun::value_type type, std::string_view text, void* value);

} // namespace zqengine

#endif
