// SPDX-License-Identifier: Apache-2.0
#include "embedded/json/json_comparison.h"

#include "embedded/json/json_numbers.h"
#include "embedded/json/json_strings.h"
#include "engine/json.h"
#include "layouts/order.h"

namespace zqengine {

namespace {

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

} // namespace

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

truth begins_with(const path_item& text, const path_item& beginning) {
    const bool are_strings = text.kind == JSON_STRING && beginning.kind == JSON_STRING;
    return are_strings ? truth_of(compare_strings(text, beginning, true) == 0) : truth::unknown;
}

} // namespace zqengine
