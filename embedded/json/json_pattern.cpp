// SPDX-License-Identifier: Apache-2.0
#include "embedded/json/json_pattern.h"

#include <unicode/uregex.h>
#include <unicode/ustring.h>
#include <unicode/utext.h>

#include "bop/frame/status.h"

namespace zqengine {

namespace {

// In ICU's measure, around a millisecond each.
constexpr std::int32_t longest_search = 100;

struct flag_meaning {
    char flag;
    std::uint32_t meaning;
};
constexpr flag_meaning flag_meanings[] = {
    {'i', UREGEX_CASE_INSENSITIVE}, {'m', UREGEX_MULTILINE}, {'q', UREGEX_LITERAL}, {'s', UREGEX_DOTALL}, {'x', UREGEX_COMMENTS}};

bool read_flags(std::string_view text, std::uint32_t& flags) {
    flags = 0;
    for (const char flag : text) {
        std::uint32_t meaning = 0;
        for (const flag_meaning& known : flag_meanings) {
            meaning |= known.flag == flag ? known.meaning : 0;
        }
        if (meaning == 0) {
            return false;
        }
        flags |= meaning;
    }
    // What is literal has neither lines nor comments.
    if ((flags & UREGEX_LITERAL) != 0) {
        flags &= std::uint32_t{UREGEX_LITERAL} | std::uint32_t{UREGEX_CASE_INSENSITIVE};
    }
    return (flags & UREGEX_COMMENTS) == 0;
}

} // namespace

std::int32_t create_pattern(std::string_view pattern, std::string_view flags, URegularExpression** made) {
    *made = nullptr;
    std::uint32_t read = 0;
    if (!read_flags(flags, read)) {
        return BIFUN_INVALID_JSON_PATH;
    }
    UErrorCode status = U_ZERO_ERROR;
    UText text = UTEXT_INITIALIZER;
    utext_openUTF8(&text, pattern.data(), static_cast<std::int64_t>(pattern.size()), &status);
    URegularExpression* const expression = uregex_openUText(&text, read, nullptr, &status);
    utext_close(&text);
    uregex_setTimeLimit(expression, longest_search, &status);
    if (U_FAILURE(status) != 0) {
        uregex_close(expression);
        return status == U_MEMORY_ALLOCATION_ERROR ? std::int32_t{BIFUN_OUT_OF_MEMORY} : std::int32_t{BIFUN_INVALID_JSON_PATH};
    }
    *made = expression;
    return BIFUN_OK;
}

void release_pattern(URegularExpression* pattern) {
    if (pattern != nullptr) {
        uregex_close(pattern);
    }
}

std::int32_t find_pattern(URegularExpression& pattern, std::string_view text, bool& found) {
    UErrorCode status = U_ZERO_ERROR;
    UText searched = UTEXT_INITIALIZER;
    utext_openUTF8(&searched, text.data(), static_cast<std::int64_t>(text.size()), &status);
    uregex_setUText(&pattern, &searched, &status);
    const bool is_found = uregex_find(&pattern, 0, &status) != 0;
    utext_close(&searched);
    if (U_FAILURE(status) != 0) {
        return status == U_MEMORY_ALLOCATION_ERROR ? std::int32_t{BIFUN_OUT_OF_MEMORY} : std::int32_t{BIFUN_ARGUMENT_OUT_OF_DOMAIN};
    }
    found = is_found;
    return BIFUN_OK;
}

} // namespace zqengine
