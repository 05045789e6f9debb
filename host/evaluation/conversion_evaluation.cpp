// SPDX-License-Identifier: Apache-2.0
// Values as those of another type.

#include "engine/decimal.h"
#include "host/evaluation/execution_parts.h"
#include "host/values/value_text.h"

namespace host {
namespace {

using bifun::value_type;

template <class From, class To, class Convert>
void convert_rows(const bifun_column& from, bifun_column& to, std::uint32_t row_count, Convert convert) {
    const auto* const source = static_cast<const From*>(from.data->values);
    auto* const target = static_cast<To*>(to.data->values);
    for (std::uint32_t k = 0; k < row_count; ++k) {
        const std::uint32_t i = row_of(from, k);
        to.data->null_flags[k] = from.data->null_flags[i];
        if (from.data->null_flags[i] != 0) {
            convert(source[i], target[k]);
        }
    }
    to.no_nulls = from.no_nulls;
}

} // namespace

void evaluate_conversion(const execution& run, step& made, std::uint32_t row_count) {
    const bifun_column& from = column_of(run, made.operands[0]);
    bifun_column& to = made.result->column;
    const auto to_decimal = [](auto value, xdec& decimal) { xdec_from_int64(&decimal, value, 255); };
    const auto to_number = [](auto value, auto& number) { number = static_cast<std::remove_reference_t<decltype(number)>>(value); };
    const value_type source = value_type_of(run.query.steps[made.operands[0]].type);
    const value_type target = value_type_of(made.type);
    if (source == value_type::DATETIME) {
        convert_rows<zqtime, zqtime>(from, to, row_count, [&](const zqtime& value, zqtime& zoned) {
            zoned = value;
            add_zone(zoned, run.environment.time_zone);
        });
    } else if (source == value_type::INT && target == value_type::BIGINT) {
        convert_rows<std::int32_t, std::int64_t>(from, to, row_count, to_number);
    } else if (source == value_type::INT && target == value_type::DECIMAL) {
        convert_rows<std::int32_t, xdec>(from, to, row_count, to_decimal);
    } else if (source == value_type::INT) {
        convert_rows<std::int32_t, double>(from, to, row_count, to_number);
    } else if (source == value_type::BIGINT && target == value_type::DECIMAL) {
        convert_rows<std::int64_t, xdec>(from, to, row_count, to_decimal);
    } else if (source == value_type::BIGINT) {
        convert_rows<std::int64_t, double>(from, to, row_count, to_number);
    } else {
        convert_rows<xdec, double>(from, to, row_count, [](const xdec& value, double& number) { number = xdec_to_double(&value); });
    }
}

} // namespace host
