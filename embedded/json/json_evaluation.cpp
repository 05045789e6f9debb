// SPDX-License-Identifier: Apache-2.0
// Depth first: each item goes through all steps before the next one is looked for, so that there is no list of items between the steps.
#include "embedded/json/json_evaluation.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <iterator>

#include "bop/frame/status.h"
#include "embedded/json/json_comparison.h"
#include "embedded/json/json_methods.h"
#include "embedded/json/json_pattern.h"
#include "embedded/json/json_strings.h"
#include "embedded/memory/allocation.h"
#include "engine/decimal.h"

namespace zqengine {

namespace {

constexpr std::int32_t go_on = 0;
constexpr std::int32_t enough = 1;

// What is remembered of a path that comes to one item in many ways, as $.**.** does: with each level of the document the ways multiply.
struct remembered_walks {
    std::uint8_t* marks;   // of each step's items, as many as there are tokens; null where nothing is remembered
    std::uint64_t arrived; // items that somebody has been given for whom it makes a difference
};

struct evaluation {
    const json_document& document;
    const jpath& path;
    std::int32_t& failure; // -503 where a condition has failed
    remembered_walks& walks;
    bool forgives;     // a strict path as well, behind .**
    std::int64_t last; // index of the array whose subscripts are evaluated
    bool in_subscript;
    const path_item* current; // in filters

    [[nodiscard]] bool lax() const { return !path.strict; }
    [[nodiscard]] std::int32_t nothing_there() const { return path.strict && !forgives ? std::int32_t{JSON_NO_SUCH_PART} : go_on; }
};

constexpr std::array<std::uint8_t, 256> make_kinds() {
    std::array<std::uint8_t, 256> kinds{};
    kinds.fill(JSON_NUMBER);
    kinds['{'] = JSON_OBJECT;
    kinds['['] = JSON_ARRAY;
    kinds['"'] = JSON_STRING;
    kinds['t'] = JSON_TRUE;
    kinds['f'] = JSON_FALSE;
    kinds['n'] = JSON_NULL;
    return kinds;
}
constexpr std::array<std::uint8_t, 256> kind_of = make_kinds();

} // namespace

path_item item_of(const json_document& document, std::uint32_t token) {
    const std::uint8_t kind = kind_of[static_cast<std::uint8_t>(first_character(document, token))];
    std::string_view text = source_of(document, token);
    bool has_escapes = false;
    if (kind == JSON_STRING) {
        text = text.substr(1, text.size() - 2);
        has_escapes = document.has_backslash && text.find('\\') != text.npos;
    }
    return {.kind = kind, .has_escapes = has_escapes, .text = text, .token = token, .key = no_token};
}

namespace {

// Calls `visit` with each element until it returns something else than go_on.
template <class Visit> std::int32_t for_each_element(const evaluation& run, std::uint32_t array, const Visit& visit) {
    return for_each_within(run.document, array, [&](std::uint32_t element) { return visit(item_of(run.document, element)); });
}

std::int64_t count_elements(const evaluation& run, std::uint32_t array) {
    std::int64_t count = 0;
    (void)for_each_within(run.document, array, [&](std::uint32_t) {
        ++count;
        return go_on;
    });
    return count;
}

// Of a document without backslashes, whose keys are as they are written.
bool is_written_so(const json_document& document, std::uint32_t begin, const path_step& step, std::string_view name) {
    const std::string_view rest(reinterpret_cast<const char*>(document.text) + begin, document.length - begin);
    if (rest.size() >= sizeof step.beginning) [[likely]] {
        std::uint64_t beginning = 0;
        std::memcpy(&beginning, rest.data(), sizeof beginning);
        if ((beginning & step.mask) != step.beginning) {
            return false;
        }
        if (name.size() < sizeof beginning) {
            return true;
        }
    }
    return rest.size() > name.size() && rest[name.size()] == '"' && rest.starts_with(name);
}

// The loop of for_each_within, with all that it needs at hand.
std::uint32_t find_written(const json_document& document, std::uint32_t object, const path_step& step, std::string_view name) {
    const std::uint32_t* const places = document.places;
    const std::uint32_t end = document.closings[object];
    const path_step wanted = step;
    const json_document in = document;
    std::uint32_t found = no_token;
    for (std::uint32_t key = object + 1; key < end; key = behind_value(in, key + 2) + 1) {
        found = is_written_so(in, places[key] + 1, wanted, name) ? key + 2 : found;
    }
    return found;
}

// Of members with one name the last counts. Gives the value, or no_token.
std::uint32_t find_member(const json_document& document, const jpath& path, std::uint32_t object, const path_step& step) {
    const std::string_view name = text_of(path, step.name);
    if (step.is_plain_name && !document.has_backslash) [[likely]] {
        return find_written(document, object, step, name);
    }
    std::uint32_t found = no_token;
    (void)for_each_within(document, object, [&](std::uint32_t key) {
        const path_item item = item_of(document, key);
        found = has_characters(item.text, item.has_escapes, name) ? key + 2 : found;
        return go_on;
    });
    return found;
}

// ---- operands ----------------------------------------------------------------------------------------------------

std::int32_t walk(const evaluation& run, const path_step* step, std::uint32_t left, const path_item& item, bool unwraps,
                  const item_receiver& receiver);
truth evaluate_condition(const evaluation& run, const path_condition& condition);

// The first two say which walk of a step from an item makes no difference any more: nothing has come of it, or nobody counts what comes.
// The others are what is known of a filter.
enum walk_mark : std::uint8_t { step_is_done = 1, all_within_is_done = 2, filter_is_known = 4, filter_passes = 8 };

// Those of a step from an item; null where nothing is remembered of it.
std::uint8_t* marks_of(const evaluation& run, const path_step* step, const path_item& item) {
    const bool is_remembered = run.walks.marks != nullptr && item.token != no_token && item.key == no_token;
    return is_remembered ? run.walks.marks + static_cast<std::size_t>(step - run.path.steps) * run.document.token_count + item.token
                         : nullptr;
}

// Calls `go`, unless that has been in vain before.
template <class Go>
std::int32_t walk_once(const evaluation& run, const path_step* step, const path_item& item, walk_mark mark, const Go& go) {
    std::uint8_t* const marks = marks_of(run, step, item);
    if (marks != nullptr && (*marks & mark) != 0) {
        return go_on;
    }
    const std::uint64_t arrived = run.walks.arrived;
    const std::int32_t outcome = go();
    if (marks != nullptr && outcome == go_on && run.walks.arrived == arrived) {
        *marks |= mark;
    }
    return outcome;
}

// The value from which the operands of an operand are taken, or the document.
path_item source_of(const evaluation& run, const path_operand& operand) {
    return operand.kind == operand_kind::of_operand   ? source_of(run, run.path.operands[operand.left])
           : operand.kind == operand_kind::of_current ? *run.current
                                                      : item_of(run.document, 0);
}

// A new evaluation of a chain, perhaps with another value that @ stands for, knows nothing of those before; filters pass what they pass.
void forget_walks(const evaluation& run, const path_operand& operand) {
    if (run.walks.marks == nullptr) {
        return;
    }
    const path_item source = source_of(run, operand);
    const std::uint32_t first = source.token == no_token ? 0 : source.token;
    const std::uint32_t end = source.token == no_token ? run.document.token_count : behind_value(run.document, source.token);
    for (std::uint32_t i = 0; i < operand.chain.count; ++i) {
        std::uint8_t* const marks = run.walks.marks + std::size_t{operand.chain.first + i} * run.document.token_count;
        std::for_each(marks + first, marks + end, [](std::uint8_t& each) { each &= filter_is_known | filter_passes; });
    }
}

std::int32_t walk_chain(const evaluation& run, const path_chain& chain, const path_item& item, const item_receiver& receiver) {
    return walk(run, run.path.steps + chain.first, chain.count, item, run.lax(), receiver);
}

path_item root_of(const evaluation& run) { return item_of(run.document, 0); }

template <class Take> std::int32_t call_take(void* to, const path_item& item) { return (*static_cast<Take*>(to))(item); }

template <class Take> item_receiver receiver_of(Take& take, bool counts) { return {&take, call_take<Take>, counts}; }

path_item scalar_item(std::uint8_t kind, std::string_view text) {
    return {.kind = kind, .has_escapes = false, .text = text, .token = no_token, .key = no_token};
}

path_item truth_item(truth value) {
    return value == truth::yes  ? scalar_item(JSON_TRUE, "true")
           : value == truth::no ? scalar_item(JSON_FALSE, "false")
                                : scalar_item(JSON_NULL, "null");
}

struct integer_text {
    char digits[24];
};
path_item integer_item(std::int64_t number, integer_text& text) {
    const char* const end = std::to_chars(text.digits, text.digits + sizeof text.digits, number).ptr;
    return scalar_item(JSON_NUMBER, {text.digits, static_cast<std::size_t>(end - text.digits)});
}

std::int32_t evaluate_operand(const evaluation& run, const path_operand& operand, const item_receiver& receiver);

// Calls `take` with what an operand gives; a lax path gives the elements of arrays in their place.
template <class Take> std::int32_t for_each_value(const evaluation& run, const path_operand& operand, Take& take, bool counts) {
    auto unwrapped = [&](const path_item& item) {
        return run.lax() && item.kind == JSON_ARRAY ? for_each_element(run, item.token, take) : take(item);
    };
    return evaluate_operand(run, operand, receiver_of(unwrapped, counts));
}

// The one number that an operand gives.
std::int32_t evaluate_number(const evaluation& run, const path_operand& operand, xdec& number) {
    if (operand.kind >= operand_kind::sum) {
        xdec right;
        const std::int32_t outcome = evaluate_number(run, run.path.operands[operand.left], number);
        const std::int32_t of_right = outcome < BIFUN_OK ? outcome : evaluate_number(run, run.path.operands[operand.right], right);
        return of_right < BIFUN_OK ? of_right : combine_numbers(operand.kind, number, right, number);
    }
    bool found = false;
    auto take = [&](const path_item& item) {
        const bool is_only = !found;
        found = true;
        return is_only ? number_of(item, number) : std::int32_t{JSON_WRONG_OPERAND};
    };
    const std::int32_t outcome = for_each_value(run, operand, take, true);
    return outcome < BIFUN_OK || found ? outcome : std::int32_t{JSON_WRONG_OPERAND};
}

std::int32_t take_number(const xdec& number, const item_receiver& receiver) {
    computed_text text;
    path_item result{};
    const std::int32_t outcome = item_of_number(number, text, result);
    return outcome < BIFUN_OK ? outcome : receiver.take(receiver.to, result);
}

// With a sign before them.
std::int32_t evaluate_signed(const evaluation& run, const path_operand& operand, const item_receiver& receiver) {
    auto take = [&](const path_item& item) {
        xdec number;
        if (number_of(item, number) < BIFUN_OK) {
            return std::int32_t{JSON_WRONG_OPERAND};
        }
        if (operand.kind == operand_kind::identity) {
            return receiver.take(receiver.to, item);
        }
        (void)xdec_neg(&number, &number);
        return take_number(number, receiver);
    };
    return for_each_value(run, run.path.operands[operand.left], take, receiver.counts);
}

std::int32_t evaluate_operand(const evaluation& run, const path_operand& operand, const item_receiver& receiver) {
    integer_text digits;
    forget_walks(run, operand);
    switch (operand.kind) {
    case operand_kind::of_document:
        return walk_chain(run, operand.chain, root_of(run), receiver);
    case operand_kind::of_current:
        return walk_chain(run, operand.chain, *run.current, receiver);
    case operand_kind::of_last:
        return walk_chain(run, operand.chain, integer_item(run.last, digits), receiver);
    case operand_kind::literal: {
        constexpr std::string_view words[] = {"null", "false", "true"};
        const bool is_word = operand.literal_kind <= JSON_TRUE;
        const std::string_view text = is_word ? words[operand.literal_kind] : text_of(run.path, operand.text);
        return walk_chain(run, operand.chain, scalar_item(operand.literal_kind, text), receiver);
    }
    case operand_kind::of_operand: {
        auto walk_on = [&](const path_item& item) { return walk_chain(run, operand.chain, item, receiver); };
        return evaluate_operand(run, run.path.operands[operand.left], receiver_of(walk_on, false));
    }
    case operand_kind::of_condition: {
        const truth value = evaluate_condition(run, run.path.conditions[operand.left]);
        return walk_chain(run, operand.chain, truth_item(value), receiver);
    }
    case operand_kind::identity:
    case operand_kind::negation:
        return evaluate_signed(run, operand, receiver);
    default: {
        xdec number;
        const std::int32_t outcome = evaluate_number(run, operand, number);
        return outcome < BIFUN_OK ? outcome : take_number(number, receiver);
    }
    }
}

// ---- conditions --------------------------------------------------------------------------------------------------

// Whether an operand can fail, which makes a condition unknown whatever has been found before.
bool can_fail(const evaluation& run, const path_operand& operand) {
    if (operand.kind == operand_kind::literal && operand.chain.count == 0) {
        return false;
    }
    const path_step* const steps = run.path.steps + operand.chain.first;
    return run.path.strict || operand.kind > operand_kind::literal ||
           !std::all_of(steps, steps + operand.chain.count, [](const path_step& step) {
               return step.kind == step_kind::member || step.kind == step_kind::any_member || step.kind == step_kind::any_element ||
                      step.kind == step_kind::filter;
           });
}

// What is known of the values that have been looked at.
struct findings {
    bool can_fail;
    bool found = false;
    bool incomparable = false;
};

std::int32_t note(const evaluation& run, truth outcome, findings& all) {
    all.found |= outcome == truth::yes;
    all.incomparable |= outcome == truth::unknown;
    return (run.path.strict ? all.incomparable : all.found && !all.can_fail) ? enough : go_on;
}

// A strict path looks at all values, and one that cannot be compared makes the condition unknown.
truth conclude(const evaluation& run, std::int32_t outcome, const findings& all) {
    if (outcome < BIFUN_OK || (run.path.strict && all.incomparable)) {
        return truth::unknown;
    }
    return all.found ? truth::yes : all.incomparable ? truth::unknown : truth::no;
}

// Whether some pair of values compares so.
truth compare_operands(const evaluation& run, const path_condition& condition) {
    const path_operand& left = run.path.operands[condition.left];
    const path_operand& right = run.path.operands[condition.right];
    const bool right_can_fail = can_fail(run, right);
    findings all{.can_fail = right_can_fail || can_fail(run, left)};
    bool has_left = false;
    auto with_left = [&](const path_item& a) {
        has_left = true;
        auto with_right = [&](const path_item& b) {
            return note(run, condition.kind == condition_kind::compared ? compare_items(condition.compared, a, b) : begins_with(a, b), all);
        };
        return for_each_value(run, right, with_right, false);
    };
    std::int32_t outcome = for_each_value(run, left, with_left, false);
    if (outcome >= BIFUN_OK && !has_left && right_can_fail) {
        auto ignore = [](const path_item&) { return go_on; };
        outcome = for_each_value(run, right, ignore, false);
    }
    return conclude(run, outcome, all);
}

// The characters of a string whose escapes have to be resolved are put into memory for as long as they are searched.
truth match(const evaluation& run, URegularExpression& pattern, const path_item& item) {
    if (item.kind != JSON_STRING) {
        return truth::unknown;
    }
    bool found = false;
    std::int32_t outcome = BIFUN_OK;
    if (!item.has_escapes) {
        outcome = find_pattern(pattern, item.text, found);
    } else {
        char* const characters = static_cast<char*>(allocate(item.text.size()));
        if (characters == nullptr) {
            outcome = BIFUN_OUT_OF_MEMORY;
        } else {
            const char* const end = write_characters(item.text, characters);
            outcome = find_pattern(pattern, {characters, static_cast<std::size_t>(end - characters)}, found);
            release(characters, item.text.size());
        }
    }
    run.failure = outcome == BIFUN_OUT_OF_MEMORY ? outcome : run.failure;
    return outcome < BIFUN_OK ? truth::unknown : truth_of(found);
}

truth match_any(const evaluation& run, const path_condition& condition) {
    const path_operand& operand = run.path.operands[condition.left];
    findings all{.can_fail = can_fail(run, operand)};
    auto take = [&](const path_item& item) { return note(run, match(run, *run.path.patterns[condition.right], item), all); };
    return conclude(run, for_each_value(run, operand, take, false), all);
}

truth find_any(const evaluation& run, const path_operand& operand) {
    bool found = false;
    auto take = [&](const path_item&) {
        found = true;
        return run.lax() ? enough : go_on;
    };
    return evaluate_operand(run, operand, receiver_of(take, false)) < BIFUN_OK ? truth::unknown : truth_of(found);
}

truth evaluate_condition(const evaluation& run, const path_condition& condition) {
    const auto left = [&] { return evaluate_condition(run, run.path.conditions[condition.left]); };
    const auto right = [&] { return evaluate_condition(run, run.path.conditions[condition.right]); };
    switch (condition.kind) {
    case condition_kind::both: {
        const truth first = left();
        const truth second = first == truth::no ? truth::no : right();
        return second == truth::yes ? first : second;
    }
    case condition_kind::either: {
        const truth first = left();
        const truth second = first == truth::yes ? truth::yes : right();
        return second == truth::no ? first : second;
    }
    case condition_kind::negation: {
        const truth negated = left();
        return negated == truth::unknown ? negated : truth_of(negated == truth::no);
    }
    case condition_kind::is_unknown:
        return truth_of(left() == truth::unknown);
    case condition_kind::like_regex:
        return match_any(run, condition);
    case condition_kind::exists:
        return find_any(run, run.path.operands[condition.left]);
    case condition_kind::compared:
    case condition_kind::starts_with:
        break;
    }
    return compare_operands(run, condition);
}

// ---- steps -------------------------------------------------------------------------------------------------------

struct walked_step {
    const path_step* step;
    std::uint32_t left; // with this one
    const item_receiver& receiver;
};

std::int32_t walk_on(const evaluation& run, const walked_step& at, const path_item& item) {
    const auto walk_step = [&] { return walk(run, at.step + 1, at.left - 1, item, run.lax(), at.receiver); };
    return at.left == 1 ? walk_step() : walk_once(run, at.step + 1, item, step_is_done, walk_step);
}

// An object of keyvalue().
std::int32_t walk_pair(const evaluation& run, const walked_step& at, const path_item& pair) {
    integer_text digits;
    path_item name = item_of(run.document, pair.key);
    const path_item parts[] = {integer_item(pair.token, digits), name, item_of(run.document, pair.key + 2)};
    constexpr std::string_view names[] = {"id", "key", "value"};
    bool found = false;
    for (std::size_t i = 0; i < std::size(parts); ++i) {
        if (at.step->kind == step_kind::any_member || text_of(run.path, at.step->name) == names[i]) {
            found = true;
            if (const std::int32_t outcome = walk_on(run, at, parts[i]); outcome != go_on) {
                return outcome;
            }
        }
    }
    return found ? go_on : run.nothing_there();
}

std::int32_t walk_members(const evaluation& run, const walked_step& at, const path_item& object) {
    if (object.key != no_token) {
        return walk_pair(run, at, object);
    }
    if (at.step->kind == step_kind::member) {
        const std::uint32_t found = find_member(run.document, run.path, object.token, *at.step);
        return found == no_token ? run.nothing_there() : walk_on(run, at, item_of(run.document, found));
    }
    return for_each_within(run.document, object.token, [&](std::uint32_t key) { return walk_on(run, at, item_of(run.document, key + 2)); });
}

std::int32_t walk_pairs(const evaluation& run, const walked_step& at, const path_item& object) {
    if (object.kind != JSON_OBJECT || object.key != no_token) {
        return JSON_WRONG_OPERAND;
    }
    return for_each_within(run.document, object.token, [&](std::uint32_t key) {
        path_item pair = object;
        pair.key = key;
        return walk_on(run, at, pair);
    });
}

std::int32_t find_index(const evaluation& run, const path_position& position, std::int64_t size, std::int64_t& index) {
    switch (position.kind) {
    case position_kind::from_first:
        index = position.number;
        return BIFUN_OK;
    case position_kind::from_last:
        index = size - 1 - position.number;
        return BIFUN_OK;
    case position_kind::computed:
        break;
    }
    evaluation within = run;
    within.last = size - 1;
    within.in_subscript = true;
    xdec number;
    const std::int32_t outcome = evaluate_number(within, run.path.operands[position.operand], number);
    return outcome < BIFUN_OK ? outcome : index_of(number, index);
}

// A lax path takes what is no array for an array with that element. Elements are counted where it matters how many there are.
std::int32_t walk_elements(const evaluation& run, const walked_step& at, const path_item& item) {
    const bool is_array = item.kind == JSON_ARRAY;
    if (!is_array && run.path.strict) {
        return run.nothing_there();
    }
    constexpr std::int64_t not_counted = std::int64_t{1} << 40;
    const auto from_first = [](const path_position& position) { return position.kind == position_kind::from_first; };
    const path_subscript* const subscripts = run.path.subscripts + at.step->first;
    const bool counts = run.path.strict || !std::all_of(subscripts, subscripts + at.step->count, [&](const path_subscript& subscript) {
                            return from_first(subscript.from) && from_first(subscript.to);
                        });
    const std::int64_t size = !is_array ? 1 : counts ? count_elements(run, item.token) : not_counted;
    const std::uint64_t arrived = run.walks.arrived;
    bool is_in_vain = false;
    for (std::uint32_t i = 0; i < at.step->count; ++i) {
        const path_subscript& subscript = subscripts[i];
        std::int64_t from = 0;
        std::int64_t to = 0;
        std::int32_t found = find_index(run, subscript.from, size, from);
        found = found < BIFUN_OK ? found : find_index(run, subscript.to, size, to);
        if (found < BIFUN_OK) {
            return found;
        }
        if (run.path.strict && !run.forgives && (from < 0 || from > to || to >= size)) {
            return JSON_NO_SUCH_PART;
        }
        if (is_in_vain) {
            continue;
        }
        from = std::max<std::int64_t>(from, 0);
        std::int64_t index = 0;
        std::int32_t outcome = go_on;
        // Behind the last one no further element is looked at.
        const auto visit = [&](const path_item& element) {
            const bool is_meant = index >= from && index <= to;
            outcome = is_meant ? walk_on(run, at, element) : go_on;
            ++index;
            return outcome != go_on ? outcome : index > to ? enough : go_on;
        };
        (void)(is_array ? for_each_element(run, item.token, visit) : visit(item));
        if (outcome != go_on) {
            return outcome;
        }
        // A scalar that a method gives is the same again, and of such no walks are remembered.
        is_in_vain = !is_array && from <= 0 && to >= 0 && run.walks.arrived == arrived;
    }
    return go_on;
}

// Whether a filter passes an item. In a subscript that may depend on the array; elsewhere it is the same whenever it is asked.
bool passes(const evaluation& run, const path_step& filter, const path_item& item) {
    std::uint8_t* const marks = run.in_subscript ? nullptr : marks_of(run, &filter, item);
    if (marks != nullptr && (*marks & filter_is_known) != 0) {
        return (*marks & filter_passes) != 0;
    }
    evaluation within = run;
    within.current = &item;
    const bool is_passed = evaluate_condition(within, run.path.conditions[filter.first]) == truth::yes;
    if (marks != nullptr && run.failure == BIFUN_OK) {
        *marks |= static_cast<std::uint8_t>(filter_is_known | (is_passed ? filter_passes : 0));
    }
    return is_passed;
}

std::string_view type_name(std::uint8_t kind) {
    constexpr std::string_view names[] = {"null", "boolean", "boolean", "number", "string", "array", "object"};
    return names[kind];
}

std::int32_t walk_size(const evaluation& run, const walked_step& at, const path_item& item) {
    if (item.kind != JSON_ARRAY && run.path.strict && !run.forgives) {
        return JSON_NO_SUCH_PART;
    }
    integer_text digits;
    return walk_on(run, at, integer_item(item.kind == JSON_ARRAY ? count_elements(run, item.token) : 1, digits));
}

std::int32_t walk_method(const evaluation& run, const walked_step& at, const path_item& item) {
    computed_text text;
    path_item result{};
    const std::int32_t called = call_method(at.step->kind, item, text, result);
    return called < BIFUN_OK ? called : walk_on(run, at, result);
}

// What is on the levels within an item, of which `level` is the first; for .**{last} scalars.
std::int32_t walk_descendants(const evaluation& run, const walked_step& at, const path_item& item, std::uint32_t level) {
    const bool has_more = (item.kind == JSON_ARRAY || item.kind == JSON_OBJECT) && item.key == no_token;
    const std::uint32_t first = at.step->first;
    const std::uint32_t last = at.step->count;
    const bool is_meant = first == no_level && last == no_level ? level > 0 && !has_more : level >= first && level <= last;
    if (is_meant) {
        evaluation forgiving = run;
        forgiving.forgives = true;
        if (const std::int32_t outcome = walk_on(forgiving, at, item); outcome != go_on) {
            return outcome;
        }
    }
    if (!has_more || level >= last) {
        return go_on;
    }
    const std::uint32_t to_value = item.kind == JSON_OBJECT ? 2 : 0;
    return for_each_within(run.document, item.token, [&](std::uint32_t token) {
        const path_item within = item_of(run.document, token + to_value);
        const auto walk_within = [&] { return walk_descendants(run, at, within, level + 1); };
        // From there on it is the same on every level.
        return last == no_level && (first == no_level || first <= level + 1)
                   ? walk_once(run, at.step, within, all_within_is_done, walk_within)
                   : walk_within();
    });
}

// `unwraps`: a step that is not for arrays is taken for each element of one.
std::int32_t walk(const evaluation& run, const path_step* step, std::uint32_t left, const path_item& item, bool unwraps,
                  const item_receiver& receiver) {
    if (left == 0) {
        run.walks.arrived += receiver.counts ? 1 : 0;
        return receiver.take(receiver.to, item);
    }
    const walked_step at{.step = step, .left = left, .receiver = receiver};
    const auto unwrapped = [&] {
        return for_each_element(run, item.token, [&](const path_item& element) { return walk(run, step, left, element, false, receiver); });
    };
    const bool is_unwrapped = unwraps && item.kind == JSON_ARRAY;
    switch (step->kind) {
    case step_kind::member:
    case step_kind::any_member:
        return item.kind == JSON_OBJECT ? walk_members(run, at, item) : is_unwrapped ? unwrapped() : run.nothing_there();
    case step_kind::elements:
        return walk_elements(run, at, item);
    case step_kind::any_element:
        return item.kind == JSON_ARRAY ? for_each_element(run, item.token, [&](const path_item& each) { return walk_on(run, at, each); })
               : run.path.strict       ? run.nothing_there()
                                       : walk_on(run, at, item);
    case step_kind::descendants:
        return walk_descendants(run, at, item, 0);
    case step_kind::filter: {
        if (is_unwrapped) {
            return unwrapped();
        }
        const bool is_passed = passes(run, *step, item);
        return run.failure != BIFUN_OK ? run.failure : is_passed ? walk_on(run, at, item) : go_on;
    }
    case step_kind::type_method:
        return walk_on(run, at, scalar_item(JSON_STRING, type_name(item.kind)));
    case step_kind::size_method:
        return walk_size(run, at, item);
    case step_kind::keyvalue_method:
        return is_unwrapped ? unwrapped() : walk_pairs(run, at, item);
    default:
        return is_unwrapped ? unwrapped() : walk_method(run, at, item);
    }
}

} // namespace

bool find_value(const json_document& document, const jpath& path, std::uint32_t& token) {
    const path_operand& root = path.operands[path.root];
    if (root.kind != operand_kind::of_document) {
        return false;
    }
    token = 0;
    const path_step* const steps = path.steps + root.chain.first;
    for (std::uint32_t i = 0; i < root.chain.count && token != no_token; ++i) {
        if (steps[i].kind != step_kind::member || first_character(document, token) != '{') {
            return false;
        }
        token = find_member(document, path, token, steps[i]);
    }
    return true;
}

std::int32_t evaluate_path(const json_document& document, const jpath& path, const item_receiver& receiver) {
    std::int32_t failure = BIFUN_OK;
    remembered_walks walks{};
    const std::size_t size = path.repeats ? std::size_t{path.step_count} * document.token_count : 0;
    if (size != 0) {
        walks.marks = static_cast<std::uint8_t*>(allocate(size));
        if (walks.marks == nullptr) {
            return BIFUN_OUT_OF_MEMORY;
        }
        std::memset(walks.marks, 0, size);
    }
    const evaluation run{.document = document,
                         .path = path,
                         .failure = failure,
                         .walks = walks,
                         .forgives = false,
                         .last = 0,
                         .in_subscript = false,
                         .current = nullptr};
    const std::int32_t outcome = evaluate_operand(run, path.operands[path.root], receiver);
    release(walks.marks, size);
    return failure != BIFUN_OK ? failure : outcome;
}

} // namespace zqengine
