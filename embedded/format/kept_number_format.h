// SPDX-License-Identifier: Apache-2.0
// Number formats by their texts: a session keeps the last one, so that rows with the same texts do not parse it again.
#ifndef BIFUN_EMBEDDED_FORMAT_KEPT_NUMBER_FORMAT_H
#define BIFUN_EMBEDDED_FORMAT_KEPT_NUMBER_FORMAT_H

#include <cstdint>
#include <cstring>

#include "embedded/format/number_format.h"
#include "embedded/session/environment.h"

namespace zqengine {

struct format_texts {
    const std::uint8_t* format;
    std::uint32_t format_length;
    const std::uint8_t* nls;
    std::uint32_t nls_length;
};

// Returns 0, ZQ_INVALID_NUMBER_FORMAT or ZQ_INVALID_NLS_PARAMETERS.
std::int32_t parse_format_texts(const format_texts& texts, number_format& result);

// The same into the memory, which on failure has no format.
std::int32_t keep_number_format(const format_texts& texts, number_format_memory& memory);

inline bool same_bytes(const std::uint8_t* a, const std::uint8_t* b, std::uint32_t count) {
    const auto word_at = [](const std::uint8_t* bytes) {
        std::uint64_t word;
        std::memcpy(&word, bytes, sizeof word);
        return word;
    };
    if (count < 8) {
        for (std::uint32_t i = 0; i < count; ++i) {
            if (a[i] != b[i]) {
                return false;
            }
        }
        return true;
    }
    std::uint64_t differences = word_at(a + count - 8) ^ word_at(b + count - 8);
    for (std::uint32_t i = 0; i + 8 < count; i += 8) {
        differences |= word_at(a + i) ^ word_at(b + i);
    }
    return differences == 0;
}

// Points `found` to the format of the texts: the session's, or without a session one that is parsed into `own`. Statuses as above.
inline std::int32_t find_number_format(bifun_environment* environment, const format_texts& texts, number_format& own,
                                       const number_format*& found) {
    if (environment == nullptr) {
        found = &own;
        return parse_format_texts(texts, own);
    }
    number_format_memory& memory = environment->number_format;
    found = &memory.format;
    const bool kept = memory.format_length == texts.format_length && memory.nls_length == texts.nls_length &&
                      same_bytes(memory.format_text, texts.format, texts.format_length) &&
                      same_bytes(memory.nls_text, texts.nls, texts.nls_length);
    return kept ? 0 : keep_number_format(texts, memory);
}

} // namespace zqengine

#endif
