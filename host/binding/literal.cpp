// SPDX-License-Identifier: Apache-2.0
#include "host/binding/literal.h"

#include <initializer_list>

#include <fmt/format.h>

#include "host/sql/sql_text.h"
#include "host/values/interval_text.h"
#include "host/values/value_text.h"

namespace host {
namespace {

sql_type type_of_number(const expression& literal, const std::string& sql) {
    const std::string& text = literal.text;
    std::int32_t small = 0;
    std::int64_t large = 0;
    double real = 0;
    if (text.find_first_of("eE") != std::string::npos) {
        if (!read_number(text, real)) {
            fail_at(sql, literal.offset, "the number is beyond the range of DOUBLE");
        }
        return sql_type::double_precision;
    }
    if (read_number(text, small)) {
        return sql_type::integer;
    }
    if (read_number(text, large)) {
        return sql_type::bigint;
    }
    xdec exact;
    if (!read_decimal(text, exact)) {
        fail_at(sql, literal.offset,
                "a DECIMAL has at most 38 digits, and at most 127 behind the point; write the number with an exponent for a DOUBLE");
    }
    return sql_type::decimal;
}

// The type of a datetime literal, which has a zone where its text or its keyword has one; nothing where it cannot be read.
std::optional<sql_type> read_datetime_literal(const expression& literal, std::int32_t time_zone, zqtime& value) {
    const auto first_of = [&](std::initializer_list<sql_type> types) -> std::optional<sql_type> {
        for (const sql_type type : types) {
            if (read_datetime(literal.text, type, time_zone, value)) {
                return type;
            }
        }
        return std::nullopt;
    };
    switch (literal.literal) {
    case literal_kind::date:
        return first_of({sql_type::date});
    case literal_kind::time:
        return first_of({sql_type::time, sql_type::time_with_zone});
    case literal_kind::timestamp:
        return first_of({sql_type::timestamp, sql_type::timestamp_with_zone});
    case literal_kind::time_with_zone:
        return first_of({sql_type::time_with_zone});
    case literal_kind::timestamp_with_zone:
        return first_of({sql_type::timestamp_with_zone});
    default:
        return read_any_datetime(literal.text, value);
    }
}

bifun_string_constant make_string(const expression& literal, const charset& set, const std::string& sql, std::vector<std::uint8_t>& bytes) {
    const std::optional<std::string> converted = from_utf8(set, literal.text);
    if (!converted) {
        fail_at(sql, literal.offset, "the character set " + std::string(set.name) + " does not have all characters of this text");
    }
    const blank_counted_text value = count_trailing_blanks(*converted);
    bifun_string_constant made{};
    made.not_null = 1;
    made.length = static_cast<std::uint32_t>(value.stored.size());
    made.trailing_blanks = value.trailing_blanks;
    if (value.stored.size() <= BIFUN_INLINE_LENGTH) {
        value.stored.copy(reinterpret_cast<char*>(made.inline_bytes), value.stored.size());
    } else {
        bytes.assign(value.stored.begin(), value.stored.end());
        made.data = bytes.data();
    }
    return made;
}

} // namespace

sql_type literal_type_of(const expression& literal, const std::string& sql) {
    switch (literal.literal) {
    case literal_kind::null:
        return sql_type::null;
    case literal_kind::boolean:
        return sql_type::boolean;
    case literal_kind::number:
        return type_of_number(literal, sql);
    case literal_kind::string:
        return sql_type::varchar;
    case literal_kind::interval: {
        const sql_type type = type_of_qualifier(literal.fields);
        bifun_interval_ym months;
        bifun_interval_dt time;
        const bool read = type == sql_type::interval_ym ? read_interval(literal.text, literal.fields, months)
                                                        : read_interval(literal.text, literal.fields, time);
        if (!read) {
            fail_at(sql, literal.offset, "the text cannot be read as INTERVAL " + qualifier_name(literal.fields));
        }
        return type;
    }
    case literal_kind::date:
    case literal_kind::time:
    case literal_kind::timestamp:
    case literal_kind::time_with_zone:
    case literal_kind::timestamp_with_zone:
        break;
    }
    zqtime value;
    const std::optional<sql_type> type = read_datetime_literal(literal, 0, value);
    if (!type) {
        fail_at(sql, literal.offset, fmt::format("the text cannot be read as {}", literal_type_name(literal.literal)));
    }
    return *type;
}

std::optional<sql_type> datetime_type_of(const expression& literal) {
    zqtime value;
    return read_any_datetime(literal.text, value);
}

constant make_constant(const expression& literal, bifun::value_type type, const session_settings& settings, const std::string& sql) {
    using bifun::value_type;
    constant made{.as_string = {}, .text = {}};
    if (literal.literal == literal_kind::null) {
        return made;
    }
    bool read = true;
    switch (type) {
    case value_type::BOOL:
        made.as_int = {1, literal.truth ? 1 : 0};
        break;
    case value_type::INT:
        made.as_int = {1, 0};
        read = read_number(literal.text, made.as_int.value);
        break;
    case value_type::BIGINT:
        made.as_bigint = {1, 0};
        read = read_number(literal.text, made.as_bigint.value);
        break;
    case value_type::DOUBLE:
        made.as_double = {1, 0};
        read = read_number(literal.text, made.as_double.value);
        break;
    case value_type::DECIMAL:
        made.as_decimal.not_null = 1;
        read = read_decimal(literal.text, made.as_decimal.value);
        break;
    case value_type::DATETIME:
        made.as_datetime.not_null = 1;
        read = read_datetime_literal(literal, settings.time_zone(), made.as_datetime.value).has_value();
        break;
    case value_type::INTERVAL_YM:
        made.as_interval_ym.not_null = 1;
        read = read_interval(literal.text, literal.fields, made.as_interval_ym.value);
        break;
    case value_type::INTERVAL_DT:
        made.as_interval_dt.not_null = 1;
        read = read_interval(literal.text, literal.fields, made.as_interval_dt.value);
        break;
    case value_type::VARCHAR:
    case value_type::VARBINARY:
        made.as_string = make_string(literal, *settings.text_charset, sql, made.text);
        break;
    case value_type::BLOB:
        read = false;
        break;
    }
    if (!read) {
        fail_at(sql, literal.offset, fmt::format("this cannot be read as {}", parameter_type_name(type)));
    }
    return made;
}

} // namespace host
