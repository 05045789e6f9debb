// SPDX-License-Identifier: Apache-2.0
// Formats of dates among the arguments of a call.
#ifndef BIFUN_DATE_DATE_MODEL_H
#define BIFUN_DATE_DATE_MODEL_H

#include "bop/frame/nls_text.h"
#include "engine/date_format.h"

namespace bifun {

// The format, where the call has one to parse; else what the whole batch is: NULL without a format, or a failure.
template <value_type result, class Parsed> status with_format(batch_of<result> batch, constant_of<VARCHAR> format, const Parsed& parsed) {
    const auto [text, present] = argument(format);
    if (!present || text.length == 0) {
        return null_rows(batch);
    }
    if (text.length > DFM_LONGEST_FORMAT) {
        return fail_batch(batch, BIFUN_INVALID_DATE_FORMAT);
    }
    const status outcome = parsed(text);
    batch.result->no_nulls = static_cast<std::uint32_t>(batch.result->no_nulls != 0); // of two arguments it is 0 or 1
    return outcome;
}

// `parsed(language)` with the language that an NLS text names.
template <value_type result, class Parsed> status with_language(batch_of<result> batch, constant_of<VARCHAR> nls, const Parsed& parsed) {
    return with_nls_text(batch, nls, [&](const bifun_string& text) {
        std::int32_t language = DFM_ENGLISH;
        const status read = to_char_nls_parse(text.data, text.length, &language);
        return read < BIFUN_OK ? fail_batch(batch, read) : parsed(language);
    });
}

} // namespace bifun

#endif
