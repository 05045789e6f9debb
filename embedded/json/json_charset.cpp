// SPDX-License-Identifier: Apache-2.0
#include "embedded/json/json_charset.h"

#include <algorithm>
#include <cstddef>

#include <unicode/ucnv.h>

#include "bop/frame/status.h"
#include "embedded/charset/charset_tables.h"
#include "embedded/charset/database_charset.h"
#include "embedded/charset/unicode_converter.h"
#include "embedded/memory/allocation.h"
#include "engine/charset.h"
#include "engine/json.h"

namespace zqengine {

namespace {

template <class Charset> bool open(UConverter*& converter, Charset charset) {
    converter = converter != nullptr ? converter : open_unicode_converter(charset);
    return converter != nullptr;
}

bool reserve(charset_converter& converter, std::size_t size) {
    if (size > converter.capacity) {
        release(converter.buffer, converter.capacity);
        converter.capacity = size + size / 2;
        converter.buffer = static_cast<char*>(allocate(converter.capacity));
        converter.capacity = converter.buffer == nullptr ? 0 : converter.capacity;
    }
    return converter.buffer != nullptr;
}

// No character has more than four bytes for one.
constexpr std::size_t most_growth = 4;

std::int32_t convert(charset_converter& converter, UConverter* from, UConverter* to, std::string_view text, std::int32_t refusal,
                     std::string_view& converted) {
    if (!reserve(converter, text.size() * most_growth)) {
        return BIFUN_OUT_OF_MEMORY;
    }
    char* target = converter.buffer;
    const char* source = text.data();
    UErrorCode status = U_ZERO_ERROR;
    ucnv_convertEx(to, from, &target, converter.buffer + converter.capacity, &source, text.data() + text.size(), nullptr, nullptr, nullptr,
                   nullptr, 1, 1, &status);
    if (U_FAILURE(status)) {
        return status == U_MEMORY_ALLOCATION_ERROR ? std::int32_t{BIFUN_OUT_OF_MEMORY} : refusal;
    }
    converted = {converter.buffer, static_cast<std::size_t>(target - converter.buffer)};
    return BIFUN_OK;
}

bool open_both(charset_converter& converter) {
    const bool is_gb18030 = database_charset() == ZQ_CHARSET_GB18030;
    return (is_gb18030 ? open(converter.database, gb18030{}) : open(converter.database, euc_kr{})) && open(converter.utf8, utf8{});
}

// Whether every character of a text in the database character set is one that the set has: ICU's converter knows some more.
bool has_known_characters(std::string_view text) {
    if (database_charset() != ZQ_CHARSET_EUC_KR) {
        return true;
    }
    const charset_tables<euc_kr>& tables = tables_of<euc_kr>();
    const auto* next = reinterpret_cast<const std::uint8_t*>(text.data());
    const std::uint8_t* const end = next + text.size();
    while (next != end) {
        const std::uint32_t length = euc_kr::length_of(next, static_cast<std::uint32_t>(std::min<std::ptrdiff_t>(end - next, 2)));
        if (!euc_kr::is_valid(next, length) || (length > 1 && code_point_of(tables, next, length) == unknown_code_point)) {
            return false;
        }
        next += length;
    }
    return true;
}

} // namespace

void release_converter(charset_converter& converter) {
    ucnv_close(converter.database);
    ucnv_close(converter.utf8);
    release(converter.buffer, converter.capacity);
    converter = {};
}

bool must_be_converted(std::string_view text) {
    const std::uint32_t charset = database_charset();
    if (charset != ZQ_CHARSET_GB18030 && charset != ZQ_CHARSET_EUC_KR) {
        return false;
    }
    unsigned all = 0;
    for (const char character : text) {
        all |= static_cast<unsigned char>(character);
    }
    return all >= 0x80;
}

std::int32_t convert_to_utf8(charset_converter& converter, std::string_view text, std::string_view& converted) {
    if (!open_both(converter)) {
        return BIFUN_OUT_OF_MEMORY;
    }
    return has_known_characters(text) ? convert(converter, converter.database, converter.utf8, text, JSON_INVALID_TEXT, converted)
                                      : std::int32_t{JSON_INVALID_TEXT};
}

std::int32_t convert_from_utf8(charset_converter& converter, std::string_view text, std::string_view& converted) {
    if (!open_both(converter)) {
        return BIFUN_OUT_OF_MEMORY;
    }
    const std::int32_t status = convert(converter, converter.utf8, converter.database, text, JSON_NO_CHARACTER, converted);
    return status != BIFUN_OK || has_known_characters(converted) ? status : std::int32_t{JSON_NO_CHARACTER};
}

} // namespace zqengine
