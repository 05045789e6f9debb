// SPDX-License-Identifier: Apache-2.0
// What a column tells of its texts.

#include <simdjson.h>

#include "embedded/columns/column_storage.h"
#include "engine/statements.h"

namespace zqengine {
namespace {

bool is_ascii(const bifun_string& text) {
    std::uint8_t bits = 0;
    for (std::uint32_t i = 0; i < text.length; ++i) {
        bits |= text.data[i];
    }
    return bits < 0x80;
}

std::int32_t known_of(const column_storage& column, std::uint32_t row_count) {
    const auto* const texts = values_of<bifun_string>(column);
    std::int32_t known = ZQ_TEXTS_ASCII;
    for (std::uint32_t row = 0; row < row_count; ++row) {
        if (column.data.null_flags[row] == 0 || is_ascii(texts[row])) {
            continue;
        }
        if (!simdjson::validate_utf8(reinterpret_cast<const char*>(texts[row].data), texts[row].length)) {
            return ZQ_TEXTS_ANY;
        }
        known = ZQ_TEXTS_UTF8;
    }
    return known;
}

} // namespace

void tell_texts(column_storage& column, std::uint32_t row_count) { set_known_texts(column, known_of(column, row_count)); }

void set_known_texts(column_storage& column, std::int32_t known) {
    // A number in the place of a pointer.
    column.data.engine_word = reinterpret_cast<void*>(static_cast<std::uintptr_t>(known)); // NOLINT(performance-no-int-to-ptr)
}

} // namespace zqengine
