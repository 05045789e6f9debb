// SPDX-License-Identifier: Apache-2.0
// A statement as a tree of expressions.
#ifndef BIFUN_HOST_SQL_EXPRESSION_H
#define BIFUN_HOST_SQL_EXPRESSION_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/sql/operators.h"
#include "host/values/interval_text.h"

namespace host {

enum class expression_kind : std::uint8_t {
    literal,     //
    keyword,     // `text`: a word that the syntax of a call puts into the first operand, such as a field of a date or LEADING
    column,      // `table`.`name`
    call,        // `name` (operands)
    cast,        // CAST(operand AS `target`)
    choice,      // CASE: condition, value, condition, value, ..., value of ELSE; the tested value before all of them, if any
    first_known, // COALESCE(operands)
    null_if,     // NULLIF(operand, operand)
    moment,      // CURRENT_DATE and the like, of the literal's kind
    arithmetic,  // operand `operation` operand, or `operation` operand
    comparison,  // operand `comparison` operand
    conjunction, // operand AND operand ...
    disjunction, // operand OR operand ...
    negation,    // NOT operand
    between,     // operand BETWEEN operand AND operand
    distinction, // operand IS DISTINCT FROM operand
    in_list,     // operand IN (operands)
    like,        // operand LIKE operand, or ILIKE where it `folds_case`, with `text` behind ESCAPE
    null_test,   // operand IS NULL
    truth_test,  // operand IS TRUE, FALSE or UNKNOWN
};

// Those behind `string` are string literals with a type before or behind them.
enum class literal_kind : std::uint8_t {
    null,
    boolean,
    number,
    string,
    date,
    time,
    timestamp,
    time_with_zone,
    timestamp_with_zone,
    interval
};

// What stands before the text: "TIME WITH TIME ZONE"; nothing where the text stands alone.
constexpr std::string_view literal_type_name(literal_kind kind) {
    constexpr std::string_view names[] = {
        "", "", "", "", "DATE", "TIME", "TIMESTAMP", "TIME WITH TIME ZONE", "TIMESTAMP WITH TIME ZONE", "INTERVAL"};
    return names[static_cast<std::size_t>(kind)];
}

struct cast_target {
    sql_type type = sql_type::null;
    std::optional<decimal_shape> shape{};
};

struct expression {
    expression_kind kind;
    std::size_t offset = 0;                    // of its characteristic word or symbol in the SQL text, in bytes
    std::string table{};                       // column: the name before the point, may be empty
    std::string name{};                        // column, call: as written; unquoted names in lower case
    literal_kind literal = literal_kind::null; // keyword: `string` where it stood in quotes
    std::string text{};          // literal: the digits of a number, the characters of a string in UTF-8; keyword: the word as written
    interval_qualifier fields{}; // interval literal
    bool truth = false;
    comparison_operator comparison = comparison_operator::equal;
    arithmetic_operator operation = arithmetic_operator::add;
    cast_target target{};
    truth_value tested = truth_value::true_value;
    bool has_tested = false; // CASE x WHEN y ...
    bool folds_case = false; // ILIKE
    bool negated = false;    // NOT BETWEEN, NOT IN, IS NOT ...
    std::vector<expression> operands{};
};

struct select_item {
    bool all_columns = false; // *, or table.*
    expression value;         // for all columns: `table` and `offset` only
    std::string alias;        // may be empty
    std::string text{};       // as it was typed, without comments and line breaks, where it has no alias
};

struct table_name {
    std::string name;
    std::string alias; // may be empty
    std::size_t offset;
};

struct select_statement {
    std::vector<select_item> items;
    std::optional<table_name> from;
    std::optional<expression> where;
    std::optional<std::uint64_t> limit;
    std::uint64_t offset = 0;
};

} // namespace host

#endif
