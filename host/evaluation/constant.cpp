// SPDX-License-Identifier: Apache-2.0
#include "host/evaluation/constant.h"

#include "engine/columns.h"

namespace host {
namespace {

// Returns false when memory is exhausted.
bool store_constant(const constant& value, zqengine::column_storage& column, std::uint32_t row) {
    using bifun::value_type;
    column.data.null_flags[row] = 1;
    switch (column.type) {
    case value_type::BOOL:
    case value_type::INT:
        zqengine::values_of<std::int32_t>(column)[row] = value.as_int.value;
        break;
    case value_type::BIGINT:
        zqengine::values_of<std::int64_t>(column)[row] = value.as_bigint.value;
        break;
    case value_type::DOUBLE:
        zqengine::values_of<double>(column)[row] = value.as_double.value;
        break;
    case value_type::DECIMAL:
        zqengine::values_of<xdec>(column)[row] = value.as_decimal.value;
        break;
    case value_type::DATETIME:
        zqengine::values_of<zqtime>(column)[row] = value.as_datetime.value;
        break;
    case value_type::INTERVAL_YM:
        zqengine::values_of<bifun_interval_ym>(column)[row] = value.as_interval_ym.value;
        break;
    case value_type::INTERVAL_DT:
        zqengine::values_of<bifun_interval_dt>(column)[row] = value.as_interval_dt.value;
        break;
    case value_type::VARCHAR:
    case value_type::VARBINARY: {
        const bifun_string_constant& text = value.as_string;
        const std::uint8_t* const bytes = text.length <= BIFUN_INLINE_LENGTH ? text.inline_bytes : value.text.data();
        return bdta3_col_assign_str(nullptr, nullptr, &column.column, row, bytes, text.length, text.trailing_blanks) == 0;
    }
    case value_type::BLOB:
        break; // NULL at most
    }
    return true;
}

} // namespace

zqengine::column_pointer make_constant_column(std::span<const constant> values, bifun::value_type type) {
    zqengine::column_pointer made(zqengine::create_column(type, static_cast<std::uint32_t>(values.size())));
    if (made == nullptr) {
        return made;
    }
    made->column.no_nulls = 1;
    for (std::uint32_t row = 0; row < values.size(); ++row) {
        if (values[row].as_int.not_null == 0) {
            made->column.no_nulls = 0;
        } else if (!store_constant(values[row], *made, row)) {
            return nullptr;
        }
    }
    return made;
}

} // namespace host
