// SPDX-License-Identifier: Apache-2.0
#include "adapters/binding/constant.h"

#include <cstring>

namespace binding {
namespace {

template <class T> T value_of(const bifun_column& column, std::uint32_t row) {
    T value;
    std::memcpy(&value, static_cast<const std::uint8_t*>(column.data->values) + std::size_t{row} * sizeof(T), sizeof(T));
    return value;
}

void read_string(const bifun_string& value, constant& made) {
    made.as_string = {1, value.length, value.trailing_blanks, {}, nullptr};
    if (value.length <= BIFUN_INLINE_LENGTH) {
        if (value.length > 0) {
            std::memcpy(made.as_string.inline_bytes, value.data, value.length);
        }
    } else {
        made.text.assign(value.data, value.data + value.length);
        made.as_string.data = made.text.data();
    }
}

} // namespace

void read_constant(const bifun_column& column, bifun::value_type type, std::uint32_t row, constant& made) {
    using bifun::value_type;
    if (column.data->null_flags[row] == 0) {
        made.as_string = {}; // the largest of the records
        return;
    }
    switch (type) {
    case value_type::BOOL:
    case value_type::INT:
        made.as_int = {1, value_of<std::int32_t>(column, row)};
        break;
    case value_type::BIGINT:
        made.as_bigint = {1, value_of<std::int64_t>(column, row)};
        break;
    case value_type::DOUBLE:
        made.as_double = {1, value_of<double>(column, row)};
        break;
    case value_type::DECIMAL:
        made.as_decimal = {1, value_of<xdec>(column, row)};
        break;
    case value_type::DATETIME:
        made.as_datetime = {1, value_of<zqtime>(column, row)};
        break;
    case value_type::INTERVAL_YM:
        made.as_interval_ym = {1, value_of<bifun_interval_ym>(column, row)};
        break;
    case value_type::INTERVAL_DT:
        made.as_interval_dt = {1, value_of<bifun_interval_dt>(column, row)};
        break;
    case value_type::VARCHAR:
    case value_type::VARBINARY:
        read_string(value_of<bifun_string>(column, row), made);
        break;
    case value_type::BLOB:
        break; // constants of which there are none
    }
}

} // namespace binding
