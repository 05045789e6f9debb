// SPDX-License-Identifier: Apache-2.0
// Literals and names.

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "host/near_names.h"
#include "host/sql/parse_tree.h"
#include "host/sql/sql_text.h"
#include "host/sql/syntax_advice.h"
#include "host/sql/tokens.h"
#include "host/values/value_text.h"

namespace host {
namespace {

// The parser's tree leaves out the value of an integer that is not positive, so it is read from the text: signs, parentheses, blanks
// and comments, then the digits.
std::string integer_text(std::string_view sql, std::size_t offset) {
    bool negative = false;
    while (offset < sql.size() && (sql[offset] < '0' || sql[offset] > '9')) {
        if (sql.substr(offset, 2) == "--") {
            offset = std::min(sql.find('\n', offset), sql.size());
        } else if (sql.substr(offset, 2) == "/*") {
            int open = 0;
            do {
                const bool opens = sql.substr(offset, 2) == "/*";
                const bool closes = sql.substr(offset, 2) == "*/";
                open += opens ? 1 : closes ? -1 : 0;
                offset += opens || closes ? 2 : 1;
            } while (open > 0 && offset < sql.size());
        } else {
            negative = negative != (sql[offset] == '-');
            ++offset;
        }
    }
    std::size_t end = offset;
    while (end < sql.size() && sql[end] >= '0' && sql[end] <= '9') {
        ++end;
    }
    return fmt::format("{}{}", negative ? "-" : "", sql.substr(offset, end - offset));
}

struct literal_type {
    std::string_view name; // as the parser calls it
    literal_kind kind;
};

constexpr literal_type literal_types[] = {
    {"date", literal_kind::date},           {"time", literal_kind::time},          {"timetz", literal_kind::time_with_zone},
    {"timestamp", literal_kind::timestamp}, {"datetime", literal_kind::timestamp}, {"timestamptz", literal_kind::timestamp_with_zone},
    {"interval", literal_kind::interval},
};

// How intervals of weeks and of several counted fields are written here; empty for any other text.
std::string other_way_to_write(std::string_view text) {
    std::vector<std::string_view> words;
    while (!without_blanks_around(text).empty()) {
        text = without_blanks_around(text);
        words.push_back(text.substr(0, text.find(' ')));
        text.remove_prefix(words.back().size());
    }
    std::string sum;
    for (std::size_t i = 0; i + 1 < words.size(); i += 2) {
        std::int32_t count = 0;
        std::string unit = upper_case(words[i + 1]);
        unit.resize(unit.size() - (unit.ends_with('S') ? 1 : 0));
        const bool is_week = unit == "WEEK";
        if (!read_number(words[i], count) || !(is_week || find_qualifier(unit))) {
            return "";
        }
        constexpr std::int64_t days_of_week = 7;
        const std::string field = is_week ? fmt::format("{} days", count * days_of_week) : fmt::format("{} {}", count, words[i + 1]);
        sum += fmt::format("{}INTERVAL '{}'", sum.empty() ? "" : " + ", field);
    }
    const bool are_several = words.size() > 2;
    return sum.empty() || words.size() % 2 != 0 ? "" : fmt::format("an interval has one field; write {}{}", are_several ? "d + " : "", sum);
}

// The parser gives the fields of an interval as a set of bits, then the fraction digits of its seconds.
interval_qualifier translate_qualifier(const json& type, std::string_view text, const translation_context& context) {
    constexpr int field_bits[] = {1 << 2, 1 << 1, 1 << 3, 1 << 10, 1 << 11, 1 << 12}; // year to second
    constexpr int all_bits = 0x7FFF;                                                  // where there are none
    const json modifiers = type.value("typmods", json::array());
    const auto number = [&](std::size_t i) {
        const json& modifier = modifiers[i];
        return modifier.contains("A_Const") && modifier["A_Const"].contains("ival") ? modifier["A_Const"]["ival"].value("ival", 0) : 0;
    };
    const int fields = modifiers.empty() ? 0 : number(0);
    interval_qualifier made{.first = interval_field::second, .last = interval_field::year};
    for (int i = 0; i < 6; ++i) {
        if ((fields & field_bits[i]) != 0) {
            made.first = std::min(made.first, static_cast<interval_field>(i));
            made.last = static_cast<interval_field>(i);
        }
    }
    if (fields == all_bits || !find_qualifier(qualifier_name(made))) {
        const std::string other = modifiers.empty() ? other_way_to_write(text) : "";
        refuse(type, context,
               other.empty() ? "an interval is written INTERVAL '3 days', INTERVAL '3' DAY or INTERVAL '1-2' YEAR TO MONTH" : other);
    }
    if (modifiers.size() > 1) {
        made.fraction_digits = number(1);
        if (made.fraction_digits < 0 || made.fraction_digits > 6) {
            refuse(modifiers[1], context, "the seconds of an interval have 0 to 6 fraction digits");
        }
    }
    return made;
}

// The number of '3 days', and its field; nothing where the text is none such.
std::optional<std::pair<std::string_view, interval_qualifier>> read_counted_field(std::string_view text) {
    const std::string_view whole = without_blanks_around(text);
    const std::size_t end = std::min(whole.find(' '), whole.size());
    std::string field = upper_case(without_blanks_around(whole.substr(end)));
    field.resize(field.size() - (field.ends_with('S') ? 1 : 0));
    const std::optional<interval_qualifier> fields = find_qualifier(field);
    return fields ? std::optional(std::pair(whole.substr(0, end), *fields)) : std::nullopt;
}

} // namespace

expression translate_constant(const json& body, translation_context context) {
    expression made = make(expression_kind::literal, body);
    if (body.contains("ival")) {
        const int value = body["ival"].value("ival", 0);
        made.literal = literal_kind::number;
        made.text = value > 0 ? std::to_string(value) : integer_text(context.sql, made.offset);
    } else if (body.contains("fval")) {
        made.literal = literal_kind::number;
        made.text = body["fval"].value("fval", "");
    } else if (body.contains("sval")) {
        made.literal = literal_kind::string;
        made.text = body["sval"].value("sval", "");
    } else if (body.contains("boolval")) {
        made.literal = literal_kind::boolean;
        made.truth = body["boolval"].value("boolval", false);
    } else if (!body.contains("isnull")) {
        refuse(body, context, "bit strings are not supported; literals are numbers, 'text', DATE '...', TRUE, FALSE and NULL");
    }
    return made;
}

expression translate_column(const json& body, translation_context context) {
    expression made = make(expression_kind::column, body);
    const json& fields = body["fields"];
    if (fields.back().contains("A_Star")) {
        refuse(body, context, "* stands for all columns only as an item of the select list");
    }
    if (fields.size() > 2) {
        refuse(body, context, "a column is written name or table.name");
    }
    if (begins_with_curly_quote(std::string_view(context.sql).substr(made.offset))) {
        fail_at(context.sql, made.offset, straight_quotes);
    }
    made.name = fields.back()["String"].value("sval", "");
    if (fields.size() == 2) {
        made.table = fields.front()["String"].value("sval", "");
    }
    return made;
}

namespace {

struct cast_type {
    std::string_view name; // as the parser calls it
    sql_type type;
};

constexpr cast_type cast_types[] = {
    {"bool", sql_type::boolean},
    {"boolean", sql_type::boolean},
    {"int4", sql_type::integer},
    {"int8", sql_type::bigint},
    {"bigint", sql_type::bigint},
    {"numeric", sql_type::decimal},
    {"float8", sql_type::double_precision},
    {"double", sql_type::double_precision},
    {"varchar", sql_type::varchar},
    {"text", sql_type::varchar},
    {"date", sql_type::date},
    {"time", sql_type::time},
    {"timestamp", sql_type::timestamp},
    {"datetime", sql_type::timestamp},
    {"timetz", sql_type::time_with_zone},
    {"timestamptz", sql_type::timestamp_with_zone},
};

// DECIMAL(p) and DECIMAL(p, s)
decimal_shape translate_shape(const json& modifiers, const translation_context& context) {
    const auto number = [&](std::size_t i) {
        const json& modifier = modifiers[i];
        return modifier.contains("A_Const") && modifier["A_Const"].contains("ival") ? modifier["A_Const"]["ival"].value("ival", 0) : -1;
    };
    const decimal_shape shape{number(0), modifiers.size() > 1 ? number(1) : 0};
    constexpr int most_digits = 38;
    if (shape.digits < 1 || shape.digits > most_digits || shape.fraction_digits < 0 || shape.fraction_digits > shape.digits) {
        refuse(modifiers, context, "DECIMAL(p, s) has 1 to 38 digits, and 0 to p of them behind the point");
    }
    return shape;
}

// Whether the type was written as that of a literal, or what is taken for it: v 'val'.
bool is_text_behind(const json& type, std::string_view sql) {
    const std::size_t begin = offset_of(type);
    const std::size_t end = begin + sql_token(sql, begin).size();
    const std::size_t behind = sql.find_first_not_of(" \t\r\n", end);
    return behind != sql.npos && sql[behind] == '\'';
}

cast_target translate_target(const json& type, const translation_context& context) {
    const std::string name = type["names"].back()["String"].value("sval", "");
    const auto* const known = std::ranges::find(cast_types, name, &cast_type::name);
    if (known == std::end(cast_types) && is_text_behind(type, context.sql)) {
        refuse(type, context,
               fmt::format("{} is no type of a text; a name for a column stands behind AS, in double quotes if at all", name));
    }
    if (known == std::end(cast_types) || type.contains("arrayBounds")) {
        refuse(type, context,
               "CAST makes BOOL, INT, BIGINT, DECIMAL, DOUBLE, VARCHAR, DATE, TIME and TIMESTAMP, these two also WITH TIME ZONE, and no "
               "other type");
    }
    cast_target made{.type = known->type};
    if (made.type == sql_type::decimal && type.contains("typmods")) {
        made.shape = translate_shape(type["typmods"], context);
    } else if (type.contains("typmods")) {
        refuse(type, context, fmt::format("in a CAST {} has no length or precision; use SUBSTR for texts", sql_type_name(made.type)));
    }
    return made;
}

// CAST('2024-02-29 10:00' AS DATE), where the type stands behind the text.
bool is_cast_of_timestamp(const json& body, const translation_context& context) {
    const expression text = translate_constant(body["arg"]["A_Const"], context);
    zqtime value;
    return offset_of(body["typeName"]) > text.offset && read_any_datetime(text.text, value) == sql_type::timestamp;
}

} // namespace

// DATE '2024-02-29' and the like. The parser makes no difference between this and a cast of a constant. A cast of its own, as around the n
// of SUBSTRING(s FOR n), has no place in the text.
expression translate_cast(const json& body, translation_context context) {
    const json& type = body["typeName"];
    if (body.value("location", 0) < 0 && type.value("location", 0) < 0) {
        return translate(body["arg"], context);
    }
    const std::string name = type["names"].back()["String"].value("sval", "");
    const auto* const known = std::ranges::find(literal_types, name, &literal_type::name);
    const bool is_text = body["arg"].contains("A_Const") && body["arg"]["A_Const"].contains("sval");
    const std::size_t at = offset_of(type);
    if (is_text && name == "bpchar" && at + 1 < context.sql.size() && upper_case(context.sql.substr(at, 1)) == "N" &&
        context.sql[at + 1] == '\'') {
        return translate_constant(body["arg"]["A_Const"], context); // N'text'
    }
    const bool is_interval = known != std::end(literal_types) && known->kind == literal_kind::interval;
    if (known == std::end(literal_types) || !is_text || (type.contains("typmods") && !is_interval) ||
        (known->kind == literal_kind::date && is_cast_of_timestamp(body, context))) {
        expression made = make(expression_kind::cast, body);
        made.target = translate_target(type, context);
        made.operands.push_back(translate(body["arg"], context));
        return made;
    }
    expression made = translate_constant(body["arg"]["A_Const"], context);
    made.literal = known->kind;
    if (const auto counted = is_interval && !type.contains("typmods") ? read_counted_field(made.text) : std::nullopt; counted) {
        made.fields = counted->second;
        made.text = std::string(counted->first);
    } else if (is_interval) {
        made.fields = translate_qualifier(type, made.text, context);
    }
    made.offset = std::min(made.offset, offset_of(type));
    return made;
}

expression translate_moment(const json& body, translation_context context) {
    struct named_moment {
        std::string_view operation;
        literal_kind kind;
    };
    constexpr named_moment moments[] = {
        {"SVFOP_CURRENT_DATE", literal_kind::date},
        {"SVFOP_CURRENT_TIME", literal_kind::time_with_zone},
        {"SVFOP_CURRENT_TIMESTAMP", literal_kind::timestamp_with_zone},
        {"SVFOP_LOCALTIME", literal_kind::time},
        {"SVFOP_LOCALTIMESTAMP", literal_kind::timestamp},
    };
    expression made = make(expression_kind::moment, body);
    const auto* const known = std::ranges::find(moments, body.value("op", ""), &named_moment::operation);
    if (known == std::end(moments)) {
        fail_at(context.sql, made.offset,
                "this value is not supported; there are CURRENT_DATE, CURRENT_TIME, CURRENT_TIMESTAMP, LOCALTIME and LOCALTIMESTAMP, and a "
                "column of this name stands in double quotes");
    }
    made.literal = known->kind;
    return made;
}

} // namespace host
