// SPDX-License-Identifier: Apache-2.0
// Depth first: each item goes through all steps before the next one is looked for, so that there is no list of items between the steps.
#include "embedded/json/json_evaluation.h"

#include <array>
#include <charconv>
#include <cstring>

#include "bop/frame/status.h"
#include "embedded/json/json_numbers.h"
#include "embedded/json/json_strings.h"
#include "engine/number_format.h"
#include "layouts/order.h"

namespace zqengine {

namespace {

constexpr std::int32_t go_on = 0;
constexpr std::int32_t enough = 1;

struct evaluation {
    const json_document& document;
    const jpath& path;

    [[nodiscard]] bool lax() const { return !path.strict; }
    [[nodiscard]] std::int32_t nothing_there() const { return path.strict ? std::int32_t{JSON_NO_SUCH_PART} : go_on; }
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

path_item item_of(const json_document& document, std::uint32_t token) {
    const std::uint8_t kind = kind_of[static_cast<std::uint8_t>(first_character(document, token))];
    std::string_view text = source_of(document, token);
    bool has_escapes = false;
    if (kind == JSON_STRING) {
        text = text.substr(1, text.size() - 2);
        has_escapes = document.has_backslash && text.find('\\') != text.npos;
    }
    return {.kind = kind, .has_escapes = has_escapes, .text = text, .token = token};
}

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
    return rest.size() > name.size() && rest.starts_with(name) && rest[name.size()] == '"';
}

// Of members with one name the last counts. Gives the value, or no_token.
std::uint32_t find_member(const evaluation& run, std::uint32_t object, const path_step& step) {
    const json_document& document = run.document;
    const std::string_view name = text_of(run.path, step.name);
    std::uint32_t found = no_token;
    (void)for_each_within(document, object, [&](std::uint32_t key) {
        bool is_same = false;
        if (step.is_plain_name && !document.has_backslash) [[likely]] {
            is_same = is_written_so(document, document.places[key] + 1, step, name);
        } else {
            const path_item item = item_of(document, key);
            is_same = has_characters(item.text, item.has_escapes, name);
        }
        found = is_same ? key + 2 : found;
        return go_on;
    });
    return found;
}

// ---- comparing ---------------------------------------------------------------------------------------------------

enum class truth : std::uint8_t { no, yes, unknown };

truth truth_of(bool value) { return value ? truth::yes : truth::no; }

bool holds(comparison wanted, std::int32_t order) {
    switch (wanted) {
    case comparison::equal:
        return order == 0;
    case comparison::not_equal:
        return order != 0;
    case comparison::less:
        return order < 0;
    case comparison::less_or_equal:
        return order <= 0;
    case comparison::greater:
        return order > 0;
    case comparison::greater_or_equal:
        break;
    }
    return order >= 0;
}

// The characters of a string one by one, escapes resolved, as UTF-8: their order is that of code points.
struct character_reader {
    std::string_view text;
    bool has_escapes;
    char resolved[4];
    std::string_view pending;
};

bool next_byte(character_reader& reader, std::uint8_t& byte) {
    if (reader.pending.empty()) {
        if (reader.text.empty()) {
            return false;
        }
        std::size_t length = 1;
        reader.pending = reader.text.substr(0, 1);
        if (reader.has_escapes && reader.text.front() == '\\') {
            length = reader.text[1] != 'u' ? 2 : 6;
            // The second one of a pair of surrogates goes with the first.
            const bool is_pair =
                length == 6 && (reader.text[2] | 0x20) == 'd' && std::string_view("89abAB").find(reader.text[3]) != std::string_view::npos;
            length = is_pair ? 12 : length;
            const char* const end = write_characters(reader.text.substr(0, length), reader.resolved);
            reader.pending = {reader.resolved, static_cast<std::size_t>(end - reader.resolved)};
        }
        reader.text.remove_prefix(length);
    }
    byte = static_cast<std::uint8_t>(reader.pending.front());
    reader.pending.remove_prefix(1);
    return true;
}

character_reader characters_of(const path_item& item) {
    return {.text = item.text, .has_escapes = item.has_escapes, .resolved = {}, .pending = {}};
}

// The order of two strings, or of the first one's beginning, as long as the second, and the second.
std::int32_t compare_strings(const path_item& a, const path_item& b, bool beginning_only) {
    character_reader left = characters_of(a);
    character_reader right = characters_of(b);
    while (true) {
        std::uint8_t byte_of_left = 0;
        std::uint8_t byte_of_right = 0;
        const bool has_left = next_byte(left, byte_of_left);
        if (!next_byte(right, byte_of_right)) {
            return has_left && !beginning_only ? 1 : 0;
        }
        if (!has_left) {
            return -1;
        }
        if (byte_of_left != byte_of_right) {
            return bifun::order(byte_of_left, byte_of_right);
        }
    }
}

bool is_truth_value(const path_item& item) { return item.kind == JSON_FALSE || item.kind == JSON_TRUE; }

// A null differs from all else; other values of different types cannot be compared, nor can arrays and objects.
truth compare_items(comparison wanted, const path_item& a, const path_item& b) {
    if (is_truth_value(a) && is_truth_value(b)) {
        return truth_of(holds(wanted, bifun::order(a.kind, b.kind)));
    }
    if (a.kind != b.kind) {
        return a.kind == JSON_NULL || b.kind == JSON_NULL ? truth_of(wanted == comparison::not_equal) : truth::unknown;
    }
    switch (a.kind) {
    case JSON_NULL:
        return truth_of(holds(wanted, 0));
    case JSON_NUMBER:
        return truth_of(holds(wanted, compare_json_numbers(a.text, b.text)));
    case JSON_STRING:
        return truth_of(holds(wanted, compare_strings(a, b, false)));
    default:
        return truth::unknown;
    }
}

// ---- conditions --------------------------------------------------------------------------------------------------

std::int32_t walk(const evaluation& run, const path_step* step, std::uint32_t left, const path_item& item, bool unwraps,
                  const item_receiver& receiver);

std::int32_t walk_chain(const evaluation& run, const path_chain& chain, const path_item& item, const item_receiver& receiver) {
    return walk(run, run.path.steps + chain.first, chain.count, item, run.lax(), receiver);
}

path_item root_of(const evaluation& run) { return item_of(run.document, 0); }

template <class Take> std::int32_t call_take(void* to, const path_item& item) { return (*static_cast<Take*>(to))(item); }

template <class Take> item_receiver receiver_of(Take& take) { return {&take, call_take<Take>}; }

// Calls `take` with what an operand gives; a lax path gives the elements of arrays in their place.
template <class Take>
std::int32_t for_each_value(const evaluation& run, const path_operand& operand, const path_item& current, Take& take) {
    if (operand.kind == operand_kind::literal) {
        return take({.kind = operand.literal_kind, .has_escapes = false, .text = text_of(run.path, operand.text), .token = no_token});
    }
    auto unwrapped = [&](const path_item& item) {
        return run.lax() && item.kind == JSON_ARRAY ? for_each_element(run, item.token, take) : take(item);
    };
    return walk_chain(run, operand.chain, operand.kind == operand_kind::of_document ? root_of(run) : current, receiver_of(unwrapped));
}

// Whether some pair of values compares so. A strict path looks at all pairs, and one that cannot be compared makes it unknown.
truth compare_operands(const evaluation& run, const path_condition& condition, const path_item& current) {
    const path_operand& left = run.path.operands[condition.left];
    const path_operand& right = run.path.operands[condition.right];
    bool found = false;
    bool incomparable = false;
    auto with_left = [&](const path_item& a) {
        auto with_right = [&](const path_item& b) {
            const bool is_comparison = condition.kind == condition_kind::compared;
            const truth outcome = is_comparison                                    ? compare_items(condition.compared, a, b)
                                  : a.kind == JSON_STRING && b.kind == JSON_STRING ? truth_of(compare_strings(a, b, true) == 0)
                                                                                   : truth::unknown;
            found |= outcome == truth::yes;
            incomparable |= outcome == truth::unknown;
            return run.path.strict ? (incomparable ? enough : go_on) : (found ? enough : go_on);
        };
        return for_each_value(run, right, current, with_right);
    };
    const std::int32_t outcome = for_each_value(run, left, current, with_left);
    if (outcome < BIFUN_OK || (run.path.strict && incomparable)) {
        return truth::unknown;
    }
    return found ? truth::yes : incomparable ? truth::unknown : truth::no;
}

truth find_any(const evaluation& run, const path_operand& operand, const path_item& current) {
    if (operand.kind == operand_kind::literal) {
        return truth::yes;
    }
    bool found = false;
    auto take = [&](const path_item&) {
        found = true;
        return run.lax() ? enough : go_on;
    };
    const path_item from = operand.kind == operand_kind::of_document ? root_of(run) : current;
    return walk_chain(run, operand.chain, from, receiver_of(take)) < BIFUN_OK ? truth::unknown : truth_of(found);
}

truth evaluate_condition(const evaluation& run, const path_condition& condition, const path_item& current) {
    const auto left = [&] { return evaluate_condition(run, run.path.conditions[condition.left], current); };
    const auto right = [&] { return evaluate_condition(run, run.path.conditions[condition.right], current); };
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
    case condition_kind::exists:
        return find_any(run, run.path.operands[condition.left], current);
    case condition_kind::compared:
    case condition_kind::starts_with:
        break;
    }
    return compare_operands(run, condition, current);
}

// ---- steps -------------------------------------------------------------------------------------------------------

struct walked_step {
    const path_step* step;
    std::uint32_t left; // with this one
    const item_receiver& receiver;
};

std::int32_t walk_on(const evaluation& run, const walked_step& at, const path_item& item) {
    return walk(run, at.step + 1, at.left - 1, item, run.lax(), at.receiver);
}

std::int32_t walk_members(const evaluation& run, const walked_step& at, const path_item& object) {
    if (at.step->kind == step_kind::member) {
        const std::uint32_t found = find_member(run, object.token, *at.step);
        return found == no_token ? run.nothing_there() : walk_on(run, at, item_of(run.document, found));
    }
    return for_each_within(run.document, object.token, [&](std::uint32_t key) { return walk_on(run, at, item_of(run.document, key + 2)); });
}

// A lax path takes what is no array for an array with that element.
std::int32_t walk_elements(const evaluation& run, const walked_step& at, const path_item& item) {
    if (item.kind != JSON_ARRAY && run.path.strict) {
        return JSON_NO_SUCH_PART;
    }
    const std::int64_t size = item.kind == JSON_ARRAY ? count_elements(run, item.token) : 1;
    for (std::uint32_t i = 0; i < at.step->count; ++i) {
        const path_subscript& subscript = run.path.subscripts[at.step->first + i];
        const auto index_of = [&](const path_position& position) {
            return position.from_last ? size - 1 - position.number : position.number;
        };
        std::int64_t from = index_of(subscript.from);
        std::int64_t to = index_of(subscript.to);
        if (run.path.strict && (from < 0 || from > to || to >= size)) {
            return JSON_NO_SUCH_PART;
        }
        from = from < 0 ? 0 : from;
        to = to >= size ? size - 1 : to;
        std::int64_t index = 0;
        const auto visit = [&](const path_item& element) {
            const bool is_meant = index >= from && index <= to;
            ++index;
            return is_meant ? walk_on(run, at, element) : go_on;
        };
        const std::int32_t outcome = item.kind == JSON_ARRAY ? for_each_element(run, item.token, visit) : visit(item);
        if (outcome != go_on) {
            return outcome;
        }
    }
    return go_on;
}

std::string_view type_name(std::uint8_t kind) {
    constexpr std::string_view names[] = {"null", "boolean", "boolean", "number", "string", "array", "object"};
    return names[kind];
}

std::int32_t walk_size(const evaluation& run, const walked_step& at, const path_item& item) {
    if (item.kind != JSON_ARRAY && run.path.strict) {
        return JSON_NO_SUCH_PART;
    }
    char digits[24];
    const std::int64_t size = item.kind == JSON_ARRAY ? count_elements(run, item.token) : 1;
    const char* const end = std::to_chars(digits, digits + sizeof digits, size).ptr;
    return walk_on(
        run, at, {.kind = JSON_NUMBER, .has_escapes = false, .text = {digits, static_cast<std::size_t>(end - digits)}, .token = no_token});
}

// A number stays as it is written.
std::int32_t walk_double(const evaluation& run, const walked_step& at, const path_item& item) {
    double value = 0;
    const bool may_be_number = (item.kind == JSON_NUMBER || item.kind == JSON_STRING) && !item.has_escapes;
    if (!may_be_number || json_get_double(reinterpret_cast<const std::uint8_t*>(item.text.data()),
                                          static_cast<std::uint32_t>(item.text.size()), &value) != 0) {
        return JSON_NO_NUMBER;
    }
    if (item.kind == JSON_NUMBER) {
        return walk_on(run, at, item);
    }
    char text[ZQ_DOUBLE_TEXT_SIZE];
    std::uint32_t length = 0;
    (void)zq_dou2char(value, text, sizeof text, &length);
    return walk_on(run, at, {.kind = JSON_NUMBER, .has_escapes = false, .text = {text, length}, .token = no_token});
}

// `unwraps`: a step that is not for arrays is taken for each element of one.
std::int32_t walk(const evaluation& run, const path_step* step, std::uint32_t left, const path_item& item, bool unwraps,
                  const item_receiver& receiver) {
    if (left == 0) {
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
               : run.path.strict       ? std::int32_t{JSON_NO_SUCH_PART}
                                       : walk_on(run, at, item);
    case step_kind::filter:
        if (is_unwrapped) {
            return unwrapped();
        }
        return evaluate_condition(run, run.path.conditions[step->first], item) == truth::yes ? walk_on(run, at, item) : go_on;
    case step_kind::type_method:
        return walk_on(run, at, {.kind = JSON_STRING, .has_escapes = false, .text = type_name(item.kind), .token = no_token});
    case step_kind::size_method:
        return walk_size(run, at, item);
    case step_kind::double_method:
        break;
    }
    return is_unwrapped ? unwrapped() : walk_double(run, at, item);
}

} // namespace

std::int32_t evaluate_path(const json_document& document, const jpath& path, const item_receiver& receiver) {
    const evaluation run{.document = document, .path = path};
    return walk_chain(run, path.chain, root_of(run), receiver);
}

} // namespace zqengine
