// SPDX-License-Identifier: Apache-2.0
// Functions that change texts without changing their lengths: all texts of a block at once, where these are ASCII or well-formed UTF-8 and
// lie one behind the other.
#ifndef BIFUN_STR_BLOCK_CHANGES_H
#define BIFUN_STR_BLOCK_CHANGES_H

#include "bop/bifun_str/text.h"

namespace bifun {

// Writes the changed bytes, as many as there are. Returns false where they are not such that it can; what is written has no meaning then.
using text_change = bool (*)(std::uint8_t* to, const std::uint8_t* from, std::size_t length);

// The rows refer to `to` as those of the column refer to `from`. Records are moved as wholes: their last word is the pointer.
inline void refer_to_changed(const batch& batch, const bifun_column& column, std::uint32_t first, std::uint32_t count,
                             const std::uint8_t* from, std::uint8_t* to) {
    const auto* const texts = reinterpret_cast<const std::uint8_t*>(static_cast<const bifun_string*>(column.data->values) + first);
    auto* const results = reinterpret_cast<std::uint8_t*>(values<bifun_string>(batch) + first);
    std::uint8_t* const flags = null_flags(batch) + first;
    const word_block distance = {0, reinterpret_cast<std::uintptr_t>(to) - reinterpret_cast<std::uintptr_t>(from)};
    const auto moved = [&](std::uint32_t k) {
        return reinterpret_cast<word_block>(load_block(texts + k * sizeof(bifun_string))) + distance;
    };
    if (column.no_nulls != 0) {
        std::memset(flags, 1, count);
        for (std::uint32_t k = 0; k < count; ++k) {
            store_block(results + k * sizeof(bifun_string), reinterpret_cast<byte_block>(moved(k)));
        }
        return;
    }
    std::memcpy(flags, column.data->null_flags + first, count);
    for (std::uint32_t k = 0; k < count; ++k) {
        const std::uint64_t mask = std::uint64_t{0} - flags[k];
        store_block(results + k * sizeof(bifun_string), reinterpret_cast<byte_block>(moved(k) & word_block{mask, mask}));
    }
}

// Whether one of the changes could write the texts of a block: that of ASCII, or that of well-formed UTF-8.
template <text_change of_ascii, text_change of_utf8>
bool change_bytes(std::uint8_t* to, const bytes_of_texts& bytes, const bifun_column& column, std::uint32_t first, std::uint32_t count,
                  const text_operations& texts) {
    const auto length = static_cast<std::size_t>(bytes.end - bytes.begin);
    const bool may_be_ascii = texts.known != known_texts::utf8 || !shows_other_than_ascii(column, first, count);
    if (may_be_ascii && of_ascii(to, bytes.begin, length)) {
        return true;
    }
    const known_texts known = texts.known == known_texts::utf8
                                  ? texts.known
                                  : look_at_texts(bytes, column, first, count, texts.utf8_is_unicode, known_texts::nothing);
    return known == known_texts::utf8 && of_utf8(to, bytes.begin, length);
}

// Returns whether the rows of the block are done.
template <text_change of_ascii, text_change of_utf8>
[[gnu::noinline]] bool change_block(const batch& batch, const bifun_column& column, std::uint32_t first, std::uint32_t count,
                                    const text_operations& texts) {
    const bytes_of_texts bytes = find_bytes_of_texts(column, first, count);
    if (bytes.begin == nullptr) {
        return false;
    }
    bdta3_free_bytes& free = free_bytes::of_column(*batch.result->data);
    const auto length = static_cast<std::size_t>(bytes.end - bytes.begin);
    if (static_cast<std::size_t>(free.end - free.top) < length ||
        !change_bytes<of_ascii, of_utf8>(free.top, bytes, column, first, count, texts)) {
        return false;
    }
    refer_to_changed(batch, column, first, count, bytes.begin, free.top);
    free.top += length;
    return true;
}

// string_rows<kernel>(batch, fixed(texts_as_told(column)), text, arguments...) with the changes for the blocks that allow one.
template <text_change of_ascii, text_change of_utf8, auto kernel, class... Arguments>
status changed_text_rows(batch_of<VARCHAR> batch, column_of<VARCHAR> text, const Arguments&... arguments) {
    using texts = column_argument<bifun_string>;
    check_types<kernel, string_room, fixed_argument<text_operations>, texts, Arguments...>();
    const text_operations operations = texts_as_told(*text.column);
    const bool may_change_blocks = operations.ascii_is_single_byte && free_bytes_are_open();
    const texts rows_of_text = argument(text);
    const bool no_nulls = has_no_nulls(rows_of_text);
    batch.result->no_nulls = no_null_flag<kernel>(fixed(operations), rows_of_text, arguments...);
    const auto block = [&](std::uint32_t first, std::uint32_t count, const auto&... rows) {
        if (may_change_blocks && change_block<of_ascii, of_utf8>(batch, *text.column, first, count, operations)) {
            return status{BIFUN_OK};
        }
        return evaluate_block<kernel, no_checks, built_strings<string_room>>(batch, first, count, no_nulls, rows...);
    };
    return stop_at_failure(batch, for_each_block(batch.row_count, block, fixed(operations), rows_of_text, arguments...));
}

} // namespace bifun

#endif
