// SPDX-License-Identifier: Apache-2.0
// Datetimes from and to text, with the kind of value that a text names.
#ifndef BIFUN_EMBEDDED_DATETIME_TEXT_H
#define BIFUN_EMBEDDED_DATETIME_TEXT_H

#include <cstddef>
#include <cstdint>

#include "bop/frame/contract.h"

namespace zqengine {

enum class datetime_kind : std::uint8_t { date, time, datetime };

// zqtime_from_char_ex, which also tells what the text named.
[[nodiscard]] std::int32_t read_datetime(const std::uint8_t* text, std::uint32_t length, zqtime* result, datetime_kind* kind);

constexpr std::size_t datetime_text_size = 48;

// Writes ISO text without a NUL and returns its length: 2024-02-29 | 13:45:00[.123456] | 2024-02-29 13:45:00[.123456], each with the
// zone behind a time where there is one (+08:00). The fraction is written without closing zeros, and not at all when it is 0. Years
// have four digits at least, and a sign before 0.
std::size_t write_datetime(const zqtime& value, datetime_kind kind, char* buffer);

} // namespace zqengine

#endif
