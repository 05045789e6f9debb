// SPDX-License-Identifier: Apache-2.0
// The operations of engine/json.h on paths.
#include <cstddef>
#include <cstdint>
#include <new>
#include <string_view>

#include "bop/frame/status.h"
#include "embedded/charset/utf8.h"
#include "embedded/json/json_charset.h"
#include "embedded/json/json_path.h"
#include "embedded/json/json_pattern.h"
#include "embedded/memory/allocation.h"
#include "embedded/memory/pending_failure.h"
#include "engine/json.h"

using namespace zqengine;

namespace {

// Places for lists of any type, one behind the other.
template <class T> T* take_list(std::uint8_t*& next, std::size_t count) {
    T* const list = new (next) T[count];
    next += (count * sizeof(T) + 15) / 16 * 16;
    return list;
}

} // namespace

namespace {

// The place of the first byte that is no UTF-8; the length where there is none.
std::uint32_t find_malformed(std::string_view text) {
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto length = static_cast<std::uint32_t>(text.size());
    std::uint32_t at = 0;
    while (at < length) {
        const std::uint32_t of_character = utf8::length_of(bytes + at, length - at);
        if (!utf8::is_valid(bytes + at, of_character)) {
            return at;
        }
        at += of_character;
    }
    return length;
}

std::int32_t make_path(bifun_environment* environment, std::string_view text, jpath** path, std::uint32_t& fault_at) {
    fault_at = find_malformed(text);
    if (fault_at != text.size()) {
        return BIFUN_INVALID_JSON_PATH;
    }
    const std::size_t count = text.size() + 1;
    const std::size_t parts =
        sizeof(path_step) + sizeof(path_subscript) + sizeof(path_operand) + sizeof(path_condition) + sizeof(URegularExpression*) + 1;
    constexpr std::size_t most_padding = 7 * std::size_t{16};
    const std::size_t size = sizeof(jpath) + count * parts + most_padding;
    void* const memory = allocate(size);
    if (memory == nullptr) {
        return BIFUN_OUT_OF_MEMORY;
    }
    auto* const made = new (memory) jpath{};
    std::uint8_t* next = static_cast<std::uint8_t*>(memory) + (sizeof(jpath) + 15) / 16 * 16;
    made->size = size;
    made->steps = take_list<path_step>(next, count);
    made->subscripts = take_list<path_subscript>(next, count);
    made->operands = take_list<path_operand>(next, count);
    made->conditions = take_list<path_condition>(next, count);
    made->patterns = take_list<URegularExpression*>(next, count);
    made->characters = take_list<char>(next, count);
    const std::int32_t parsed = parse_path(text, *made, fault_at);
    if (parsed == BIFUN_OK) {
        *path = made;
    } else {
        jpath_free(environment, made);
    }
    return parsed;
}

// The place in a text of which the converted one is made.
std::uint32_t place_before_conversion(charset_converter& converter, std::string_view converted, std::uint32_t place) {
    std::string_view before = converted.substr(0, place);
    return must_be_converted(before) && convert_from_utf8(converter, before, before) != BIFUN_OK
               ? 0
               : static_cast<std::uint32_t>(before.size());
}

} // namespace

int32_t jpath_parse(bifun_environment* environment, const uint8_t* text, uint32_t length, jpath** path, uint32_t* fault_at) {
    *path = nullptr;
    if (must_fail()) {
        return BIFUN_OUT_OF_MEMORY;
    }
    std::uint32_t fault = JPATH_LONGEST_TEXT;
    std::int32_t status = BIFUN_INVALID_JSON_PATH;
    if (std::string_view given(reinterpret_cast<const char*>(text), length); length > JPATH_LONGEST_TEXT) {
        status = BIFUN_INVALID_JSON_PATH;
    } else if (!must_be_converted(given)) {
        status = make_path(environment, given, path, fault);
    } else {
        charset_converter to_utf8{};
        charset_converter from_utf8{};
        const std::int32_t converted = convert_to_utf8(to_utf8, given, given);
        fault = 0;
        if (converted == BIFUN_OK) {
            status = make_path(environment, given, path, fault);
            fault = place_before_conversion(from_utf8, given, fault);
        } else if (converted == BIFUN_OUT_OF_MEMORY) {
            status = converted;
        }
        release_converter(to_utf8);
        release_converter(from_utf8);
    }
    if (status == BIFUN_INVALID_JSON_PATH && fault_at != nullptr) {
        *fault_at = fault;
    }
    return status;
}

void jpath_free(bifun_environment* environment, jpath* path) {
    static_cast<void>(environment);
    if (path != nullptr) {
        for (std::uint32_t i = 0; i < path->pattern_count; ++i) {
            release_pattern(path->patterns[i]);
        }
        release(path, path->size);
    }
}
