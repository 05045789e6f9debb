// Literals and names.

#include <algorithm>

#include <fmt/format.h>

#include "host/sql/parse_tree.h"

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

// The parser gives the fields of an interval as a set of bits, then the fraction digits of its seconds.
interval_qualifier translate_qualifier(const json& type, const translation_context& context) {
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
        refuse(type, context, "an interval names its fields behind its text: INTERVAL '3' DAY, INTERVAL '1-2' YEAR TO MONTH");
    }
    if (modifiers.size() > 1) {
        made.fraction_digits = number(1);
        if (made.fraction_digits < 0 || made.fraction_digits > 6) {
            refuse(modifiers[1], context, "the seconds of an interval have 0 to 6 fraction digits");
        }
    }
    return made;
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
    made.name = fields.back()["String"].value("sval", "");
    if (fields.size() == 2) {
        made.table = fields.front()["String"].value("sval", "");
    }
    return made;
}

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
    const bool is_interval = known != std::end(literal_types) && known->kind == literal_kind::interval;
    if (known == std::end(literal_types) || !is_text || (type.contains("typmods") && !is_interval)) {
        refuse(body, context,
               "casts are not supported; literals with a type are DATE '...', TIME '...', TIMESTAMP '...' and INTERVAL '...' DAY");
    }
    expression made = translate_constant(body["arg"]["A_Const"], context);
    made.literal = known->kind;
    if (is_interval) {
        made.fields = translate_qualifier(type, context);
    }
    made.offset = std::min(made.offset, offset_of(type));
    return made;
}

} // namespace host
