// SPDX-License-Identifier: Apache-2.0
// Parsing of paths, by recursive descent:
//
//     path       [lax | strict] tested
//     either     both { || both }                          between conditions
//     both       tested { && tested }
//     tested     ! delimited | delimited | sum [comparison sum | starts with string | like_regex string [flag string]]
//     delimited  exists ( sum ) | ( either ) [is unknown]
//     sum        product { + product | - product }         between operands
//     product    signed { * signed | / signed | % signed }
//     signed     [+ | -] signed | primary steps
//     primary    literal | $ | @ | last | ( either )
//     steps      { . name | . "name" | . * | . ** [{ levels }] | [ * ] | [ subscript , ... ] | ? ( either ) | . method ( ) }
//     subscript  sum [ to sum ]
//
// What stands in parentheses is known for an operand or a condition when it has been read.
#include "embedded/json/json_path.h"

#include <algorithm>
#include <charconv>
#include <span>
#include <utility>

#include "bop/frame/status.h"
#include "embedded/json/json_path_text.h"

namespace zqengine {

namespace {

constexpr std::uint32_t most_nested = 100;

// An operand or a condition.
struct path_part {
    bool is_condition;
    std::uint32_t index;
    std::uint32_t height; // operators in each other
};

bool read_either(path_reader& reader, path_part& part);
bool read_sum(path_reader& reader, path_part& part);

path_part add_operand(path_reader& reader, const path_operand& operand) {
    reader.path.operands[reader.path.operand_count] = operand;
    return {false, reader.path.operand_count++, 0};
}

path_part add_condition(path_reader& reader, const path_condition& condition) {
    reader.path.conditions[reader.path.condition_count] = condition;
    return {true, reader.path.condition_count++, 0};
}

bool read_operand(path_reader& reader, std::uint32_t& index) {
    path_part part{};
    const bool read = read_sum(reader, part) && !part.is_condition;
    index = part.index;
    return read;
}

bool read_condition(path_reader& reader, std::uint32_t& index) {
    path_part part{};
    const bool read = read_either(reader, part) && part.is_condition;
    index = part.index;
    return read;
}

// ---- steps -------------------------------------------------------------------------------------------------------

// What all rows have in common is read once: integers, and integers before the last.
bool read_position(path_reader& reader, path_position& position) {
    position = {};
    if (!read_operand(reader, position.operand)) {
        return false;
    }
    const path_operand& operand = reader.path.operands[position.operand];
    const auto is_integer = [&](const path_operand& given) {
        const std::string_view text = text_of(reader.path, given.text);
        const char* const end = text.data() + text.size();
        std::int32_t number = 0;
        const bool is_number = given.kind == operand_kind::literal && given.literal_kind == JSON_NUMBER && given.chain.count == 0;
        const std::from_chars_result read = std::from_chars(text.data(), end, number);
        position.number = number;
        return is_number && read.ec == std::errc{} && read.ptr == end;
    };
    const auto is_last = [](const path_operand& given) { return given.kind == operand_kind::of_last && given.chain.count == 0; };
    const bool is_difference = operand.kind == operand_kind::difference && is_last(reader.path.operands[operand.left]) &&
                               is_integer(reader.path.operands[operand.right]);
    if (is_last(operand) || is_difference) {
        position.number = is_difference ? position.number : 0;
        position.kind = position_kind::from_last;
    } else {
        position.kind = is_integer(operand) ? position_kind::from_first : position_kind::computed;
    }
    return true;
}

// The step behind the brackets that open it.
bool read_subscripts(path_reader& reader, path_step& step) {
    if (take(reader, "*")) {
        step.kind = step_kind::any_element;
        return take(reader, "]");
    }
    step.kind = step_kind::elements;
    constexpr std::size_t most = 64;
    path_subscript subscripts[most]; // those of steps in them come first
    ++reader.subscripts;
    do {
        if (step.count == most) {
            return false;
        }
        path_subscript& subscript = subscripts[step.count];
        if (!read_position(reader, subscript.from)) {
            return false;
        }
        subscript.to = subscript.from;
        if (take_word(reader, "to") && !read_position(reader, subscript.to)) {
            return false;
        }
        ++step.count;
    } while (take(reader, ","));
    --reader.subscripts;
    step.first = reader.path.subscript_count;
    std::copy_n(subscripts, step.count, reader.path.subscripts + step.first);
    reader.path.subscript_count += step.count;
    return take(reader, "]");
}

bool read_one_level(path_reader& reader, std::uint32_t& level) {
    if (take_word(reader, "last")) {
        level = no_level;
        return true;
    }
    return read_level(reader, level);
}

// The step behind .**
bool read_levels(path_reader& reader, path_step& step) {
    step.kind = step_kind::descendants;
    step.first = 0;
    step.count = no_level;
    if (!take(reader, "{")) {
        return true;
    }
    if (!read_one_level(reader, step.first)) {
        return false;
    }
    step.count = step.first;
    return (!take_word(reader, "to") || read_one_level(reader, step.count)) && take(reader, "}");
}

// The step behind its point.
bool read_member(path_reader& reader, path_step& step) {
    if (take(reader, "**")) {
        return read_levels(reader, step);
    }
    if (take(reader, "*")) {
        step.kind = step_kind::any_member;
        return true;
    }
    constexpr std::pair<std::string_view, step_kind> methods[] = {
        {"type", step_kind::type_method},       {"size", step_kind::size_method},       {"double", step_kind::double_method},
        {"number", step_kind::number_method},   {"integer", step_kind::integer_method}, {"bigint", step_kind::bigint_method},
        {"string", step_kind::string_method},   {"boolean", step_kind::boolean_method}, {"abs", step_kind::abs_method},
        {"ceiling", step_kind::ceiling_method}, {"floor", step_kind::floor_method},     {"keyvalue", step_kind::keyvalue_method}};
    step.kind = step_kind::member;
    const bool quoted = take(reader, "\"");
    reader.at -= quoted ? 1 : 0;
    if (!read_name(reader, step)) {
        return false;
    }
    if (!quoted && take(reader, "(")) {
        const std::size_t behind = reader.at;
        const std::string_view name = text_of(reader.path, step.name);
        for (const auto& [word, kind] : methods) {
            if (name == word) {
                step.kind = kind;
                return take(reader, ")");
            }
        }
        reader.at = behind - 1;
        return false;
    }
    return true;
}

// The step behind its question mark.
bool read_filter(path_reader& reader, path_step& step) {
    step.kind = step_kind::filter;
    ++reader.filters;
    const bool read = take(reader, "(") && read_condition(reader, step.first) && take(reader, ")");
    --reader.filters;
    return read;
}

// Steps are collected here while their filters, which have steps of their own, are read, and then lie side by side.
bool read_steps(path_reader& reader, path_chain& chain) {
    constexpr std::size_t most_steps = 64;
    path_step steps[most_steps];
    std::uint32_t count = 0;
    while (true) {
        path_step step{};
        skip_spaces(reader);
        const std::size_t before = reader.at;
        bool read = true;
        if (take(reader, ".")) {
            read = read_member(reader, step);
        } else if (take(reader, "[")) {
            read = read_subscripts(reader, step);
        } else if (take(reader, "?")) {
            read = read_filter(reader, step);
        } else {
            break;
        }
        if (read && count == most_steps) {
            reader.at = before;
            return false;
        }
        if (!read) {
            return false;
        }
        steps[count++] = step;
    }
    chain = {reader.path.step_count, count};
    std::copy_n(steps, count, reader.path.steps + chain.first);
    reader.path.step_count += count;
    return true;
}

// ---- operands ----------------------------------------------------------------------------------------------------

bool is_step_next(path_reader& reader) {
    skip_spaces(reader);
    const std::string_view rest = rest_of(reader);
    return rest.starts_with('.') || rest.starts_with('[') || rest.starts_with('?');
}

// Behind its opening parenthesis.
bool read_parenthesised(path_reader& reader, path_part& part) {
    if (!read_either(reader, part) || !take(reader, ")")) {
        return false;
    }
    if (part.is_condition && take_word(reader, "is")) {
        if (!take_word(reader, "unknown")) {
            return false;
        }
        part = add_condition(reader, {.kind = condition_kind::is_unknown, .compared = {}, .left = part.index, .right = 0});
        return true;
    }
    if (!is_step_next(reader)) {
        return true;
    }
    path_operand operand{};
    operand.kind = part.is_condition ? operand_kind::of_condition : operand_kind::of_operand;
    operand.left = part.index;
    const bool read = read_steps(reader, operand.chain);
    part = add_operand(reader, operand);
    return read;
}

bool read_primary(path_reader& reader, path_part& part) {
    path_operand operand{};
    if (take(reader, "(")) {
        return read_parenthesised(reader, part);
    }
    if (take(reader, "$")) {
        operand.kind = operand_kind::of_document;
    } else if (reader.filters != 0 && take(reader, "@")) {
        operand.kind = operand_kind::of_current;
    } else if (reader.subscripts != 0 && take_word(reader, "last")) {
        operand.kind = operand_kind::of_last;
    } else if (!read_literal(reader, operand)) {
        return false;
    }
    const bool read = read_steps(reader, operand.chain);
    part = add_operand(reader, operand);
    return read;
}

bool read_signed(path_reader& reader, path_part& part) {
    skip_spaces(reader);
    const std::string_view rest = rest_of(reader);
    const bool is_number = rest.size() > 1 && rest[0] == '-' && rest[1] >= '0' && rest[1] <= '9';
    const bool is_negative = !is_number && rest.starts_with('-');
    if (!is_negative && !rest.starts_with('+')) {
        return read_primary(reader, part);
    }
    ++reader.at;
    const bool read = ++reader.depth <= most_nested && read_signed(reader, part) && !part.is_condition;
    --reader.depth;
    path_operand operand{};
    operand.kind = is_negative ? operand_kind::negation : operand_kind::identity;
    operand.left = part.index;
    part = add_operand(reader, operand);
    return read;
}

using part_reader = bool (*)(path_reader&, path_part&);
struct path_operator {
    std::string_view symbol;
    operand_kind meaning;
};

// Operands with operators between, each read by `read_one`.
bool read_chained(path_reader& reader, std::span<const path_operator> operators, part_reader read_one, path_part& part) {
    if (!read_one(reader, part)) {
        return false;
    }
    while (!part.is_condition) {
        const auto found = std::ranges::find_if(operators, [&](const path_operator& each) { return take(reader, each.symbol); });
        if (found == std::ranges::end(operators)) {
            break;
        }
        path_part right{};
        if (!read_one(reader, right) || right.is_condition) {
            return false;
        }
        path_operand operand{};
        operand.kind = found->meaning;
        operand.left = part.index;
        operand.right = right.index;
        const std::uint32_t height = std::max(part.height, right.height) + 1;
        if (height > most_nested) {
            return false;
        }
        part = add_operand(reader, operand);
        part.height = height;
    }
    return true;
}

bool read_product(path_reader& reader, path_part& part) {
    constexpr path_operator operators[] = {{"*", operand_kind::product}, {"/", operand_kind::quotient}, {"%", operand_kind::remainder}};
    return read_chained(reader, operators, read_signed, part);
}

bool read_sum(path_reader& reader, path_part& part) {
    constexpr path_operator operators[] = {{"+", operand_kind::sum}, {"-", operand_kind::difference}};
    return read_chained(reader, operators, read_product, part);
}

// ---- conditions --------------------------------------------------------------------------------------------------

bool take_comparison(path_reader& reader, comparison& found) {
    constexpr std::pair<std::string_view, comparison> symbols[] = {
        {"==", comparison::equal},         {"!=", comparison::not_equal},        {"<>", comparison::not_equal},
        {"<=", comparison::less_or_equal}, {">=", comparison::greater_or_equal}, {"<", comparison::less},
        {">", comparison::greater}};
    for (const auto& [symbol, meaning] : symbols) {
        if (take(reader, symbol)) {
            found = meaning;
            return true;
        }
    }
    return false;
}

bool read_string(path_reader& reader, path_text& text) {
    skip_spaces(reader);
    return take(reader, "\"") && read_quoted(reader, text);
}

// Behind like_regex.
bool read_pattern(path_reader& reader, path_condition& condition) {
    path_text pattern{};
    path_text flags{};
    skip_spaces(reader);
    const std::size_t begin = reader.at;
    if (!read_string(reader, pattern) || (take_word(reader, "flag") && !read_string(reader, flags))) {
        return false;
    }
    const std::int32_t created =
        create_pattern(text_of(reader.path, pattern), text_of(reader.path, flags), reader.path.patterns + reader.path.pattern_count);
    if (created != BIFUN_OK) {
        reader.is_out_of_memory = created == BIFUN_OUT_OF_MEMORY;
        reader.at = begin;
        return false;
    }
    condition.kind = condition_kind::like_regex;
    condition.right = reader.path.pattern_count++;
    return true;
}

// What stands behind an operand that is compared; the operand alone where nothing does.
bool read_comparison(path_reader& reader, path_part& part) {
    path_condition made{};
    made.left = part.index;
    if (take_word(reader, "starts")) {
        path_operand operand{};
        operand.kind = operand_kind::literal;
        operand.literal_kind = JSON_STRING;
        made.kind = condition_kind::starts_with;
        if (!take_word(reader, "with") || !read_string(reader, operand.text)) {
            return false;
        }
        made.right = add_operand(reader, operand).index;
    } else if (take_word(reader, "like_regex")) {
        if (!read_pattern(reader, made)) {
            return false;
        }
    } else if (take_comparison(reader, made.compared)) {
        made.kind = condition_kind::compared;
        if (!read_operand(reader, made.right)) {
            return false;
        }
    } else {
        return true;
    }
    part = add_condition(reader, made);
    return true;
}

bool read_exists(path_reader& reader, path_part& part) {
    path_condition made{};
    made.kind = condition_kind::exists;
    const bool read = take(reader, "(") && read_operand(reader, made.left) && take(reader, ")");
    part = add_condition(reader, made);
    return read;
}

bool read_tested(path_reader& reader, path_part& part) {
    if (take(reader, "!")) {
        bool read = false;
        if (take_word(reader, "exists")) {
            read = read_exists(reader, part);
        } else if (take(reader, "(")) {
            read = read_either(reader, part) && part.is_condition && take(reader, ")");
        }
        part = add_condition(reader, {.kind = condition_kind::negation, .compared = {}, .left = part.index, .right = 0});
        return read;
    }
    if (take_word(reader, "exists")) {
        return read_exists(reader, part);
    }
    return read_sum(reader, part) && (part.is_condition || read_comparison(reader, part));
}

// Conditions with `symbol` between them, each read by `read_one`.
bool read_joined(path_reader& reader, std::string_view symbol, condition_kind kind, part_reader read_one, path_part& part) {
    if (!read_one(reader, part)) {
        return false;
    }
    while (part.is_condition && take(reader, symbol)) {
        path_part right{};
        if (!read_one(reader, right) || !right.is_condition) {
            return false;
        }
        part = add_condition(reader, {.kind = kind, .compared = {}, .left = part.index, .right = right.index});
    }
    return true;
}

bool read_both(path_reader& reader, path_part& part) { return read_joined(reader, "&&", condition_kind::both, read_tested, part); }

bool read_all(path_reader& reader, path_part& part) { return read_joined(reader, "||", condition_kind::either, read_both, part); }

// In parentheses.
bool read_either(path_reader& reader, path_part& part) {
    const bool read = ++reader.depth <= most_nested && read_all(reader, part);
    --reader.depth;
    return read;
}

} // namespace

std::int32_t parse_path(std::string_view text, jpath& path, std::uint32_t& fault_at) {
    path_reader reader{.text = text, .at = 0, .path = path, .depth = 0, .filters = 0, .subscripts = 0, .is_out_of_memory = false};
    path.strict = take_word(reader, "strict");
    if (!path.strict) {
        take_word(reader, "lax");
    }
    path_part root{};
    bool read = read_all(reader, root);
    skip_spaces(reader);
    read = read && reader.at == text.size();
    if (!read) {
        fault_at = static_cast<std::uint32_t>(std::min(reader.at, text.size()));
        return reader.is_out_of_memory ? BIFUN_OUT_OF_MEMORY : BIFUN_INVALID_JSON_PATH;
    }
    if (root.is_condition) {
        path_operand operand{};
        operand.kind = operand_kind::of_condition;
        operand.left = root.index;
        root = add_operand(reader, operand);
    }
    path.root = root.index;
    path.repeats = std::count_if(path.steps, path.steps + path.step_count, [](const path_step& step) {
                       return step.kind == step_kind::descendants || (step.kind == step_kind::elements && step.count > 1);
                   }) > 1;
    return BIFUN_OK;
}

} // namespace zqengine
