// SPDX-License-Identifier: Apache-2.0
// CAST: what does not become a value of the other type without losing more than CAST is there to take away ends the query.

#include <cmath>
#include <string>

#include "bop/frame/status.h"
#include "engine/columns.h"
#include "engine/datetime.h"
#include "engine/decimal.h"
#include "host/evaluation/execution_parts.h"
#include "host/output/value_output.h"
#include "host/program_error.h"
#include "host/tables/field_value.h"
#include "host/tables/type_advice.h"
#include "host/values/decimal_shape.h"
#include "host/values/value_text.h"

namespace host {
namespace {

using bifun::value_type;

// How else a column of the file becomes such values; a text that is computed is as it is.
std::string way_out(const execution& run, const step& made) {
    const step& given = run.query.steps[made.operands[0]];
    return given.kind != step_kind::table_column
               ? ""
               : way_to(made.type, {.type = given.type, .column = &run.query.source->columns[given.table_column]});
}

// Calls `cast` with the row of the value and that of the result; it returns false where the value does not become one.
template <class Cast> void cast_rows(const execution& run, step& made, std::uint32_t row_count, Cast cast) {
    const bifun_column& from = column_of(run, made.operands[0]);
    bifun_column& to = made.result->column;
    for (std::uint32_t k = 0; k < row_count; ++k) {
        const std::uint32_t row = row_of(from, k);
        to.data->null_flags[k] = from.data->null_flags[row];
        if (from.data->null_flags[row] != 0 && !cast(row, k)) {
            fail("CAST: {} cannot be {}{} in {}{}", shown_value(run, made.operands[0], k), sql_type_name(made.type),
                 made.shape ? fmt::format("({}, {})", made.shape->digits, made.shape->fraction_digits) : "", place_of_row(run, k),
                 way_out(run, made));
        }
    }
    to.no_nulls = from.no_nulls;
}

// ---- texts ---------------------------------------------------------------------------------------------------------

void cast_to_text(const execution& run, step& made, std::uint32_t row_count) {
    const bifun_column& from = column_of(run, made.operands[0]);
    const sql_type type = run.query.steps[made.operands[0]].type;
    zqengine::clear_column(*made.result);
    std::string text;
    cast_rows(run, made, row_count, [&](std::uint32_t row, std::uint32_t place) {
        text.clear();
        append_value(text, from, type, row);
        return bdta3_col_assign_str(nullptr, nullptr, &made.result->column, place, reinterpret_cast<const std::uint8_t*>(text.data()),
                                    static_cast<std::uint32_t>(text.size()), 0) == 0;
    });
}

// A text becomes a DATE as the TIMESTAMP does that it names.
bool store_date_of_timestamp(const execution& run, std::string_view text, zqtime& value) {
    const bool is_timestamp = read_datetime(text, sql_type::timestamp, run.environment.time_zone, value);
    complete_datetime(value, sql_type::date, run.environment.time_zone);
    return is_timestamp;
}

// Rounded, halves away from zero.
template <class Integer> bool to_integer(xdec value, Integer& number) {
    std::string text(256, '\0');
    std::uint32_t length = 0;
    return xdec_round(&value, 0, 0, &value) == BIFUN_OK &&
           xdec_to_char_with_zero(&value, text.data(), static_cast<std::uint32_t>(text.size()), 0, 0, &length) == BIFUN_OK &&
           read_number(std::string_view(text).substr(0, length), number);
}

// A text becomes an integer as the DECIMAL does that it names.
bool store_rounded(std::string_view text, zqengine::column_storage& result, std::uint32_t place, sql_type type) {
    xdec value;
    return read_decimal(text, value) && (type == sql_type::integer ? to_integer(value, zqengine::values_of<std::int32_t>(result)[place])
                                                                   : to_integer(value, zqengine::values_of<std::int64_t>(result)[place]));
}

void cast_from_text(const execution& run, step& made, std::uint32_t row_count) {
    const auto* const texts = static_cast<const bifun_string*>(column_of(run, made.operands[0]).data->values);
    const field_storing storing{.type = {.type = made.type}, .sampled = {}, .settings = run.settings};
    cast_rows(run, made, row_count, [&](std::uint32_t row, std::uint32_t place) {
        const std::string_view text(reinterpret_cast<const char*>(texts[row].data), texts[row].length);
        return store_field(storing, text, false, *made.result, place) == field_fault::none ||
               ((made.type == sql_type::integer || made.type == sql_type::bigint) && store_rounded(text, *made.result, place, made.type)) ||
               (made.type == sql_type::date && store_date_of_timestamp(run, text, zqengine::values_of<zqtime>(*made.result)[place]));
    });
    if (made.type == sql_type::boolean) {
        normalise_condition(made.result->column, row_count);
    }
}

// ---- numbers -------------------------------------------------------------------------------------------------------

bool to_decimal(const bifun_column& from, value_type type, std::uint32_t row, xdec& value) {
    switch (type) {
    case value_type::INT:
        return xdec_from_int64(&value, static_cast<const std::int32_t*>(from.data->values)[row], XDEC_ANY_PRECISION) == BIFUN_OK;
    case value_type::BIGINT:
        return xdec_from_int64(&value, static_cast<const std::int64_t*>(from.data->values)[row], XDEC_ANY_PRECISION) == BIFUN_OK;
    case value_type::DECIMAL:
        xdec_copy(&value, &static_cast<const xdec*>(from.data->values)[row]);
        return true;
    default:
        return xdec_from_double(&value, static_cast<const double*>(from.data->values)[row]) == BIFUN_OK;
    }
}

void cast_to_number(const execution& run, step& made, std::uint32_t row_count) {
    const bifun_column& from = column_of(run, made.operands[0]);
    const value_type source = value_type_of(run.query.steps[made.operands[0]].type);
    cast_rows(run, made, row_count, [&](std::uint32_t row, std::uint32_t place) {
        xdec value;
        if (!to_decimal(from, source, row, value)) {
            return false;
        }
        switch (made.type) {
        case sql_type::integer:
            return to_integer(value, zqengine::values_of<std::int32_t>(*made.result)[place]);
        case sql_type::bigint:
            return to_integer(value, zqengine::values_of<std::int64_t>(*made.result)[place]);
        default:
            zqengine::values_of<xdec>(*made.result)[place] = value;
            return made.shape
                       ? fit_to_shape(zqengine::values_of<xdec>(*made.result)[place], *made.shape)
                       : source != value_type::DOUBLE || xdec_to_double(&value) == static_cast<const double*>(from.data->values)[row];
        }
    });
}

} // namespace

void evaluate_cast(execution& run, step& made, std::uint32_t row_count) {
    const sql_type from = run.query.steps[made.operands[0]].type;
    if (made.type == sql_type::varchar) {
        cast_to_text(run, made, row_count);
    } else if (from == sql_type::varchar) {
        cast_from_text(run, made, row_count);
    } else if (is_datetime(from)) {
        const auto* const values = static_cast<const zqtime*>(column_of(run, made.operands[0]).data->values);
        cast_rows(run, made, row_count, [&](std::uint32_t row, std::uint32_t place) {
            zqtime& value = zqengine::values_of<zqtime>(*made.result)[place] = values[row];
            if (!has_zone(made.type)) {
                zqtime_set_tz(&value, ZQTIME_NO_ZONE);
            }
            complete_datetime(value, made.type, run.environment.time_zone);
            return true;
        });
    } else {
        cast_to_number(run, made, row_count);
    }
}

} // namespace host
