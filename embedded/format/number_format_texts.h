// SPDX-License-Identifier: Apache-2.0
// Number formats by their texts.
#ifndef BIFUN_EMBEDDED_FORMAT_NUMBER_FORMAT_TEXTS_H
#define BIFUN_EMBEDDED_FORMAT_NUMBER_FORMAT_TEXTS_H

#include "embedded/format/number_format.h"
#include "embedded/session/environment.h"

namespace zqengine {

// Returns 0, ZQ_INVALID_NUMBER_FORMAT or ZQ_INVALID_NLS_PARAMETERS.
std::int32_t parse_format_texts(const format_texts& texts, number_format& result);

// Points `found` to the format of the texts: one that the session keeps, or without a session one that is parsed into `own`. Statuses as
// above.
inline std::int32_t find_number_format(const bifun_environment* environment, const format_texts& texts, number_format& own,
                                       const number_format*& found) {
    if (environment == nullptr) {
        found = &own;
        return parse_format_texts(texts, own);
    }
    const auto parse = [&texts](number_format& made) { return parse_format_texts(texts, made); };
    return find_format(environment->number_formats, texts, parse, found);
}

} // namespace zqengine

#endif
