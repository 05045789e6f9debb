// SPDX-License-Identifier: Apache-2.0
#include "fuzz/made_statement.h"

#include <algorithm>
#include <vector>

#include <fmt/format.h>

#include "bop/frame/catalogue.h"
#include "host/values/sql_type.h"

namespace {

using host::sql_type;

// What of a type stands in a statement: the column of t.csv, and literals.
struct leaves {
    sql_type type;
    std::string_view column;
    std::string_view literals[5];
};

constexpr leaves all_leaves[] = {
    {sql_type::integer, "i", {"1", "0", "-3", "2147483647", "12"}},
    {sql_type::bigint, "b", {"10000000000", "-9223372036854775808", "9223372036854775807", "7", "-1"}},
    {sql_type::decimal, "d", {"1.5", "0.00", "-99999999999999999999999999999999999999", "1e-130", ".1234567890123456789"}},
    {sql_type::double_precision, "f", {"1e0", "-2.5e300", "1e-300", "0e0", "123456.789e-3"}},
    {sql_type::varchar, "s", {"'a'", "''", "'  b '", "'ä😀'", "'%_x'"}},
    {sql_type::date,
     "day",
     {"DATE '2024-02-29'", "DATE '-4712-01-01'", "DATE '9999-12-31'", "DATE '1582-10-04'", "CAST('2000-01-01' AS DATE)"}},
    {sql_type::time, "clock", {"TIME '10:11:12'", "TIME '23:59:59.999999'", "TIME '00:00:00'", "TIME '12:00:00'", "TIME '01:02:03.5'"}},
    {sql_type::timestamp,
     "moment",
     {"TIMESTAMP '2024-02-29 10:11:12'", "TIMESTAMP '9999-12-31 23:59:59.999999'", "TIMESTAMP '1582-10-15 00:00:00'", "CURRENT_TIMESTAMP",
      "TIMESTAMP '0001-01-01 00:00:00'"}},
    {sql_type::time_with_zone,
     "zoned_clock",
     {"TIME WITH TIME ZONE '10:11:12 +08:00'", "TIME WITH TIME ZONE '00:00:00 -12:59'", "TIME WITH TIME ZONE '23:59:59 +14:00'",
      "CAST(clock AS TIME WITH TIME ZONE)", "CURRENT_TIME"}},
    {sql_type::timestamp_with_zone,
     "zoned",
     {"TIMESTAMP WITH TIME ZONE '2024-02-29 10:11:12 +08:00'", "TIMESTAMP WITH TIME ZONE '0001-01-01 00:00:00 -12:59'",
      "TIMESTAMP WITH TIME ZONE '9999-12-31 23:59:59 +14:00'", "CAST(moment AS TIMESTAMP WITH TIME ZONE)", "zoned"}},
    {sql_type::interval_ym,
     "months",
     {"INTERVAL '1' MONTH", "INTERVAL '-1-2' YEAR TO MONTH", "INTERVAL '9999' YEAR(4)", "INTERVAL '0' YEAR", "INTERVAL '13' MONTH"}},
    {sql_type::interval_dt,
     "pause",
     {"INTERVAL '1' DAY", "INTERVAL '-1 02:03:04.5' DAY TO SECOND", "INTERVAL '999999' DAY(6)", "INTERVAL '0.000001' SECOND",
      "INTERVAL '90' MINUTE"}},
};

// Texts stand for the types that no column has.
constexpr const leaves& leaves_of(sql_type type) {
    const auto* const found = std::ranges::find(all_leaves, type, &leaves::type);
    return found != std::end(all_leaves) ? *found : *std::ranges::find(all_leaves, sql_type::varchar, &leaves::type);
}

constexpr std::string_view texts[] = {"'YYYY-MM-DD'", "'HH24:MI:SS.FF'",
                                      "'999G999D99'", "'2019-03-31'",
                                      "'10:11:12'",   "'abc'",
                                      "'MM'",         "' '",
                                      "','",          "'\u00e4'",
                                      "NULL",         "'NLS_DATE_LANGUAGE = CHINESE'",
                                      "'DAY'",        "'1'",
                                      "'%Y-%m-%d'"};

// Patterns, in which $v is a value of the type in hand, $o one of another type, the same in all of the pattern, $a one of any type, $l a
// column or a literal of the type, $c a condition, $f a call and $t the name of the type.
constexpr std::string_view conditions[] = {"$o = $o",
                                           "$o <> $o",
                                           "$o < $o",
                                           "$o >= $o",
                                           "$o BETWEEN $o AND $o",
                                           "$o NOT BETWEEN $o AND $o",
                                           "$o IN ($o, $o, $o)",
                                           "$o NOT IN ($o, $o)",
                                           "$o IS NULL",
                                           "$o IS NOT NULL",
                                           "CAST($o AS VARCHAR) LIKE $a",
                                           "s NOT LIKE $a",
                                           "($c) IS TRUE",
                                           "($c) IS NOT UNKNOWN",
                                           "NOT ($c)",
                                           "($c) AND ($c)",
                                           "($c) OR ($c)"};
constexpr std::string_view values[] = {"$l",
                                       "$l",
                                       "$f",
                                       "$f",
                                       "$f",
                                       "$f",
                                       "CASE WHEN $c THEN $v ELSE $v END",
                                       "CASE $o WHEN $o THEN $v END",
                                       "COALESCE($v, $v)",
                                       "NULLIF($v, $v)"};
constexpr std::string_view values_of_numbers[] = {"($v + $v)", "($v - $v)", "$v * $v", "$v / $v", "$v % $v", "- $v", "CAST($a AS $t)"};
constexpr std::string_view values_of_texts[] = {"$v || $v", "$v || $a", "CAST($a AS $t)"};
constexpr std::string_view values_of_datetimes[] = {"$v + i", "($v - 1)", "$v + pause", "($v - months)", "$v + $a", "CAST($a AS $t)"};
constexpr std::string_view values_of_intervals[] = {"$l", "$f", "$v + $v"};

std::string quoted(std::string_view text) { return std::string(1, '\'').append(text).append(1, '\''); }

class maker {
  public:
    explicit maker(choices& chosen) : chosen_(chosen) {}

    sql_type any_type() { return chosen_.of(all_leaves).type; }

    std::string value(sql_type type, unsigned levels) {
        if (levels == 0 || chosen_.bytes.empty()) {
            return leaf(type);
        }
        const bool is_general = chosen_.below(3) != 0;
        const std::string_view pattern = is_general                ? chosen_.of(values)
                                         : host::is_number(type)   ? chosen_.of(values_of_numbers)
                                         : host::is_datetime(type) ? chosen_.of(values_of_datetimes)
                                         : host::is_interval(type) ? chosen_.of(values_of_intervals)
                                                                   : chosen_.of(values_of_texts);
        return filled(pattern, type, levels - 1);
    }

    std::string condition(unsigned levels) {
        const bool ends = levels == 0 || chosen_.bytes.empty();
        return ends ? "flag = 1" : filled(chosen_.of(conditions), sql_type::varchar, levels - 1);
    }

  private:
    std::string filled(std::string_view pattern, sql_type type, unsigned levels) {
        const sql_type other = any_type();
        std::string text;
        for (std::size_t i = 0; i < pattern.size(); ++i) {
            if (pattern[i] != '$') {
                text += pattern[i];
                continue;
            }
            switch (pattern[++i]) {
            case 'v':
                text += value(type, levels);
                break;
            case 'o':
                text += value(other, levels);
                break;
            case 'a':
                text += value(any_type(), levels);
                break;
            case 'l':
                text += leaf(type);
                break;
            case 'c':
                text += condition(levels);
                break;
            case 'f':
                text += call(type, levels);
                break;
            default:
                text += sql_type_name(type);
                break;
            }
        }
        return text;
    }

    std::string leaf(sql_type type) {
        if (type == sql_type::boolean) {
            return "(flag = 1)";
        }
        return chosen_.below(2) == 0 ? std::string(leaves_of(type).column) : literal(type);
    }

    std::string literal(sql_type type) {
        if (chosen_.once_in(8)) {
            return type == sql_type::varchar ? std::string(chosen_.of(texts)) : "NULL";
        }
        return std::string(chosen_.of(leaves_of(type).literals));
    }

    sql_type type_of_argument(const bifun::entry_point& entry, std::size_t position) {
        const bifun::value_type type = entry.arguments()[position].type;
        if (type != bifun::value_type::DATETIME) {
            return host::sql_type_of(type);
        }
        constexpr sql_type kinds[] = {sql_type::date,      sql_type::timestamp,           sql_type::date,
                                      sql_type::timestamp, sql_type::timestamp_with_zone, sql_type::time,
                                      sql_type::date,      sql_type::time_with_zone};
        const sql_type kind = chosen_.of(kinds);
        return overlap(fact_of(entry, position).kinds, host::kind_of(kind)) ? kind : sql_type::date;
    }

    std::string argument(const bifun::entry_point& entry, std::size_t position, unsigned levels) {
        const bifun::argument_fact& fact = fact_of(entry, position);
        if (!fact.keywords.words.empty()) {
            const bifun::keyword& word = fact.keywords.words[chosen_.below(fact.keywords.words.size())];
            return std::string(word.names.substr(0, word.names.find(' ')));
        }
        if (!fact.words.empty()) {
            return quoted(fact.words.substr(0, fact.words.find(' ')));
        }
        if (entry.arguments()[position].type == bifun::value_type::VARCHAR && !fact.texts.empty() && chosen_.below(2) == 0) {
            std::string_view list = fact.texts;
            for (std::size_t skipped = chosen_.below(8); skipped > 0 && list.find(" | ") != list.npos; --skipped) {
                list.remove_prefix(list.find(" | ") + 3);
            }
            const std::string_view text = list.substr(0, list.find(" | "));
            return quoted(text.find('\'') == text.npos ? text : "");
        }
        const sql_type type = type_of_argument(entry, position);
        return entry.arguments()[position].kind == bifun::argument_kind::constant ? literal(type) : value(type, levels);
    }

    // Of an entry point that has such a result, in SQL's own syntax where the built-in has one.
    std::string call(sql_type type, unsigned levels) {
        const std::size_t count = std::size(bifun::entry_points);
        const std::size_t first = chosen_.below(count);
        const bifun::entry_point* entry = nullptr;
        for (std::size_t i = 0; i < count && entry == nullptr; ++i) {
            const bifun::entry_point& tried = bifun::entry_points[(first + i) % count];
            entry = tried.result == host::value_type_of(type) ? &tried : nullptr;
        }
        if (entry == nullptr) {
            return leaf(type);
        }
        std::vector<std::string> arguments;
        for (std::size_t i = 0; i < entry->argument_count; ++i) {
            arguments.push_back(argument(*entry, i, levels));
        }
        const std::string_view syntax = bifun::spelling_of(entry->builtin).syntax;
        if (!syntax.empty() && !chosen_.once_in(16)) {
            std::string text;
            for (std::size_t i = 0; i < syntax.size(); ++i) {
                const std::size_t number = syntax[i] == '$' ? static_cast<std::size_t>(syntax[i + 1] - '1') : arguments.size();
                const bool is_bracket = syntax[i] == '[' || syntax[i] == ']';
                text += number < arguments.size() ? arguments[number] : std::string(is_bracket ? 0 : 1, syntax[i]);
                i += number < arguments.size() ? 1 : 0;
            }
            return text;
        }
        std::string text(entry->builtin);
        for (std::size_t i = 0; i < arguments.size(); ++i) {
            text.append(i == 0 ? "(" : ", ").append(arguments[i]);
        }
        return text.append(arguments.empty() ? "()" : ")");
    }

    choices& chosen_;
};

} // namespace

made_statement make_statement(choices& chosen) {
    const auto most_levels = static_cast<unsigned>(1 + chosen.below(4));
    constexpr std::size_t most_items = 3;
    maker made(chosen);
    std::string sql = "SELECT ";
    for (std::size_t items = 1 + chosen.below(most_items); items > 0; --items) {
        const std::size_t kind = chosen.below(8);
        sql.append(kind == 7 ? "*" : kind == 6 ? made.condition(most_levels) : made.value(made.any_type(), most_levels));
        sql.append(kind == 5 ? " AS \"na me\"" : "").append(items > 1 ? ", " : " FROM t");
    }
    if (chosen.below(2) != 0) {
        sql.append(" WHERE ").append(made.condition(most_levels));
    }
    const bool has_limit = chosen.once_in(8);
    sql.append(has_limit ? fmt::format(" LIMIT {}", chosen.below(12)) : "");
    sql.append(chosen.once_in(8) ? fmt::format(" OFFSET {}", chosen.below(12)) : "");
    return {
        .sql = sql, .has_limit = has_limit, .is_repeatable = sql.find("CURRENT_") == sql.npos && sql.find("UNIX_TIMESTAMP") == sql.npos};
}
