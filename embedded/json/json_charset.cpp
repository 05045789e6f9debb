// SPDX-License-Identifier: Apache-2.0
#include "embedded/json/json_charset.h"

#include <unicode/ucnv.h>

#include "bop/frame/status.h"
#include "embedded/charset/database_charset.h"
#include "embedded/memory/allocation.h"
#include "engine/charset.h"
#include "engine/json.h"

namespace zqengine {

namespace {

bool open(UConverter*& converter, const char* name) {
    if (converter == nullptr) {
        UErrorCode status = U_ZERO_ERROR;
        converter = ucnv_open(name, &status);
        ucnv_setToUCallBack(converter, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
        ucnv_setFromUCallBack(converter, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
        if (U_FAILURE(status)) {
            ucnv_close(converter);
            converter = nullptr;
            return false;
        }
        ucnv_setFallback(converter, 0);
    }
    return true;
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
    return open(converter.database, database_charset() == ZQ_CHARSET_GB18030 ? "GB18030" : "EUC-KR") && open(converter.utf8, "UTF-8");
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
    return open_both(converter) ? convert(converter, converter.database, converter.utf8, text, JSON_INVALID_TEXT, converted)
                                : std::int32_t{BIFUN_OUT_OF_MEMORY};
}

std::int32_t convert_from_utf8(charset_converter& converter, std::string_view text, std::string_view& converted) {
    return open_both(converter) ? convert(converter, converter.utf8, converter.database, text, JSON_NO_CHARACTER, converted)
                                : std::int32_t{BIFUN_OUT_OF_MEMORY};
}

} // namespace zqengine
