// SPDX-License-Identifier: Apache-2.0
// The types of column values and constants.
#ifndef BIFUN_FRAME_VALUE_TYPE_H
#define BIFUN_FRAME_VALUE_TYPE_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "bop/frame/contract.h"

namespace bifun {

enum class value_type : std::uint8_t {
#define VALUE_TYPE(code, name, row) name = (code),
#include "bop/frame/value_types.def"
#undef VALUE_TYPE
};

// Which of them, as a set.
enum class datetime_kinds : std::uint8_t {
    DATE = 1,
    TIME = 2,
    TIMESTAMP = 4,
    TIME_WITH_ZONE = 8,
    TIMESTAMP_WITH_ZONE = 16,
    TIMES = TIME | TIME_WITH_ZONE,
    TIMESTAMPS = TIMESTAMP | TIMESTAMP_WITH_ZONE,
    WITH_DATE = DATE | TIMESTAMP | TIMESTAMP_WITH_ZONE,
    WITH_TIME = TIME | TIMESTAMP | TIME_WITH_ZONE | TIMESTAMP_WITH_ZONE,
    WITH_ZONE = TIME_WITH_ZONE | TIMESTAMP_WITH_ZONE,
    ANY = WITH_DATE | WITH_TIME,
};

// Whether they have some in common.
constexpr bool overlap(datetime_kinds a, datetime_kinds b) { return (static_cast<unsigned>(a) & static_cast<unsigned>(b)) != 0; }

constexpr std::string_view type_name(value_type type) {
    constexpr std::string_view names[] = {
#define VALUE_TYPE(code, name, row) #name,
#include "bop/frame/value_types.def"
#undef VALUE_TYPE
    };
    return names[static_cast<std::size_t>(type)];
}

// Bytes per row in a column's value array.
constexpr std::size_t value_width(value_type type) {
    constexpr std::size_t widths[] = {
#define VALUE_TYPE(code, name, row) sizeof(row),
#include "bop/frame/value_types.def"
#undef VALUE_TYPE
    };
    return widths[static_cast<std::size_t>(type)];
}

constexpr bool is_string(value_type type) { return type == value_type::VARCHAR || type == value_type::VARBINARY; }

} // namespace bifun

#endif
