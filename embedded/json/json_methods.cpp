// SPDX-License-Identifier: Apache-2.0
#include "embedded/json/json_methods.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "bop/frame/status.h"
#include "embedded/decimal/division.h"
#include "embedded/json/json_numbers.h"
#include "embedded/json/json_strings.h"
#include "engine/decimal.h"
#include "engine/number_check.h"
#include "engine/number_format.h"

namespace zqengine {

namespace {

const std::uint8_t* bytes_of(std::string_view text) { return reinterpret_cast<const std::uint8_t*>(text.data()); }

path_item scalar_item(json_kind kind, std::string_view text) {
    return {.kind = static_cast<std::uint8_t>(kind), .has_escapes = false, .text = text, .token = no_token, .key = no_token};
}

std::int32_t outcome_of(bool good) { return good ? std::int32_t{BIFUN_OK} : std::int32_t{JSON_WRONG_OPERAND}; }

// The characters of a string; none where they are too many for a number or a truth value.
std::string_view characters_of(const path_item& string, computed_text& text) {
    if (!string.has_escapes) {
        return string.text;
    }
    if (string.text.size() > sizeof text.characters) {
        return {};
    }
    return {text.characters, static_cast<std::size_t>(write_characters(string.text, text.characters) - text.characters)};
}

// Blanks around the number of a string do not count.
std::string_view number_text_of(const path_item& item, computed_text& text) {
    return item.kind == JSON_NUMBER ? item.text : item.kind == JSON_STRING ? without_spaces(characters_of(item, text)) : std::string_view();
}

bool read_decimal(std::string_view text, xdec& number) {
    return !text.empty() && xdec_from_char(bytes_of(text), static_cast<std::uint32_t>(text.size()), &number) == BIFUN_OK;
}

bool write_decimal(const xdec& number, computed_text& text, path_item& result) {
    std::uint32_t length = 0;
    if (xdec_to_char_with_zero(&number, text.characters, sizeof text.characters, 0, 0, &length) != BIFUN_OK) {
        return false;
    }
    result = scalar_item(JSON_NUMBER, {text.characters, length});
    return true;
}

// -1 towards less, 1 towards more.
void round_to_integer(xdec& number, std::int32_t direction) {
    xdec integer = number;
    (void)xdec_trunc_scale(&integer);
    const std::int32_t cut = xdec_cmp(&number, &integer);
    if (cut != 0 && cut == direction) {
        xdec one;
        xdec_fill_one(&one);
        (void)(direction > 0 ? xdec_add(&integer, &one, &integer) : xdec_sub(&integer, &one, &integer));
    }
    number = integer;
}

// Numbers are rounded, strings are integers already.
bool make_integer(const path_item& item, const char* most, computed_text& text, path_item& result) {
    xdec number;
    if (!read_decimal(number_text_of(item, text), number)) {
        return false;
    }
    xdec integer = number;
    (void)xdec_trunc_scale(&integer);
    if (item.kind == JSON_STRING &&
        (xdec_cmp(&integer, &number) != 0 || characters_of(item, text).find_first_of(".eE") != std::string_view::npos)) {
        return false;
    }
    xdec limit;
    xdec less;
    (void)read_decimal(most, limit);
    const bool rounded = xdec_round(&number, 0, 0, &number) == BIFUN_OK && xdec_neg(&limit, &less) == BIFUN_OK;
    xdec one;
    xdec_fill_one(&one);
    (void)xdec_sub(&less, &one, &less);
    return rounded && xdec_cmp(&number, &limit) <= 0 && xdec_cmp(&number, &less) >= 0 && write_decimal(number, text, result);
}

// A number stays as it is written.
bool make_double(const path_item& item, computed_text& text, path_item& result) {
    double value = 0;
    const std::string_view number = number_text_of(item, text);
    if (json_get_double(bytes_of(number), static_cast<std::uint32_t>(number.size()), &value) != BIFUN_OK) {
        return false;
    }
    if (item.kind == JSON_NUMBER) {
        result = item;
        return true;
    }
    std::uint32_t length = 0;
    (void)zq_dou2char(value, text.characters, sizeof text.characters, &length);
    result = scalar_item(JSON_NUMBER, {text.characters, length});
    return true;
}

bool make_number(const path_item& item, computed_text& text, path_item& result) {
    if (item.kind == JSON_NUMBER) {
        result = item;
        return true;
    }
    xdec number;
    return read_decimal(number_text_of(item, text), number) && write_decimal(number, text, result);
}

bool make_string(const path_item& item, path_item& result) {
    result = item;
    result.kind = JSON_STRING;
    result.token = no_token;
    return item.kind == JSON_STRING || item.kind == JSON_NUMBER || item.kind == JSON_TRUE || item.kind == JSON_FALSE;
}

// The word or its beginning, in any case, from `least` characters on.
bool is_word(std::string_view text, std::string_view word, std::size_t least) {
    return text.size() >= least && text.size() <= word.size() &&
           std::ranges::equal(text, word.substr(0, text.size()), [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a | 0x20 : a) == b; });
}

bool make_truth(const path_item& item, computed_text& text, path_item& result) {
    if (item.kind == JSON_TRUE || item.kind == JSON_FALSE) {
        result = item;
        return true;
    }
    bool is_true = false;
    if (item.kind == JSON_NUMBER) {
        path_item integer = item;
        if (item.text.find_first_of(".eE") != std::string_view::npos || !make_integer(item, "2147483647", text, integer)) {
            return false;
        }
        is_true = integer.text != "0";
    } else if (item.kind == JSON_STRING) {
        const std::string_view word = without_spaces(characters_of(item, text));
        is_true = is_word(word, "true", 1) || is_word(word, "yes", 1) || is_word(word, "on", 2) || word == "1";
        if (!is_true && !is_word(word, "false", 1) && !is_word(word, "no", 1) && !is_word(word, "off", 2) && word != "0") {
            return false;
        }
    } else {
        return false;
    }
    result = is_true ? scalar_item(JSON_TRUE, "true") : scalar_item(JSON_FALSE, "false");
    return true;
}

bool read_operand(const path_item& item, xdec& number) { return item.kind == JSON_NUMBER && read_decimal(item.text, number); }

bool round_number(step_kind method, const path_item& item, computed_text& text, path_item& result) {
    xdec number;
    if (!read_operand(item, number)) {
        return false;
    }
    if (method == step_kind::abs_method) {
        return xdec_abs(&number, &number) == BIFUN_OK && write_decimal(number, text, result);
    }
    round_to_integer(number, method == step_kind::ceiling_method ? 1 : -1);
    return write_decimal(number, text, result);
}

// What is left of `a` when `b` has been taken from it as often as it goes, with the sign of `a`.
bool take_remainder(const xdec& a, const xdec& b, xdec& result) {
    xdec quotient;
    if (divide(a, b, quotient) != BIFUN_OK) {
        return false;
    }
    (void)xdec_trunc_scale(&quotient);
    xdec taken;
    if (xdec_mul(&quotient, &b, &taken) != BIFUN_OK || xdec_sub(&a, &taken, &result) != BIFUN_OK) {
        return false;
    }
    // A quotient just below an integer may have been rounded to it.
    xdec zero;
    xdec_fill_zero(&zero);
    const std::int32_t sign = xdec_cmp(&result, &zero);
    if (sign != 0 && sign != xdec_cmp(&a, &zero)) {
        const bool same_sign = xdec_cmp(&a, &zero) == xdec_cmp(&b, &zero);
        return (same_sign ? xdec_add(&result, &b, &result) : xdec_sub(&result, &b, &result)) == BIFUN_OK;
    }
    return true;
}

} // namespace

std::int32_t call_method(step_kind method, const path_item& item, computed_text& text, path_item& result) {
    switch (method) {
    case step_kind::double_method:
        return outcome_of(make_double(item, text, result));
    case step_kind::number_method:
        return outcome_of(make_number(item, text, result));
    case step_kind::integer_method:
        return outcome_of(make_integer(item, "2147483647", text, result));
    case step_kind::bigint_method:
        return outcome_of(make_integer(item, "9223372036854775807", text, result));
    case step_kind::string_method:
        return outcome_of(make_string(item, result));
    case step_kind::boolean_method:
        return outcome_of(make_truth(item, text, result));
    default:
        return outcome_of(round_number(method, item, text, result));
    }
}

std::int32_t number_of(const path_item& item, xdec& number) { return outcome_of(read_operand(item, number)); }

std::int32_t item_of_number(const xdec& number, computed_text& text, path_item& result) {
    return outcome_of(write_decimal(number, text, result));
}

std::int32_t combine_numbers(operand_kind operation, const xdec& left, const xdec& right, xdec& result) {
    switch (operation) {
    case operand_kind::sum:
        return outcome_of(xdec_add(&left, &right, &result) == BIFUN_OK);
    case operand_kind::difference:
        return outcome_of(xdec_sub(&left, &right, &result) == BIFUN_OK);
    case operand_kind::product:
        return outcome_of(xdec_mul(&left, &right, &result) == BIFUN_OK);
    case operand_kind::quotient:
        return outcome_of(divide(left, right, result) == BIFUN_OK);
    default:
        return outcome_of(take_remainder(left, right, result));
    }
}

std::int32_t index_of(const xdec& number, std::int64_t& index) {
    constexpr std::int64_t most = 2'147'483'647;
    xdec integer = number;
    (void)xdec_trunc_scale(&integer);
    computed_text text;
    path_item item{};
    const bool read = write_decimal(integer, text, item) &&
                      str2int64(bytes_of(item.text), static_cast<std::uint32_t>(item.text.size()), &index) >= BIFUN_OK;
    return outcome_of(read && index <= most && index >= -most - 1);
}

} // namespace zqengine
