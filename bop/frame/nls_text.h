// SPDX-License-Identifier: Apache-2.0
// A constant argument that names a language: an NLS text.
#ifndef BIFUN_FRAME_NLS_TEXT_H
#define BIFUN_FRAME_NLS_TEXT_H

#include "bop/frame/arguments.h"

namespace bifun {

constexpr std::uint32_t longest_nls = 128;

// Calls `body(text)` for one that is neither NULL, empty nor too long (-4037).
template <value_type result, class Body> status with_nls_text(batch_of<result> batch, constant_of<VARCHAR> nls, const Body& body) {
    const auto [text, present] = argument(nls);
    if (!present) {
        return null_rows(batch);
    }
    if (text.length == 0 || text.length > longest_nls) {
        return fail_batch(batch, BIFUN_INVALID_NLS_PARAMETER);
    }
    const status outcome = body(text);
    batch.result->no_nulls = static_cast<std::uint32_t>(batch.result->no_nulls != 0); // of two arguments it is 0 or 1
    return outcome;
}

} // namespace bifun

#endif
