// SPDX-License-Identifier: Apache-2.0
// LPAD and RPAD: a text with copies of a pad before or behind it, or cut, so that it has a certain number of characters. The rules are
// those of the engine's operations in engine/strings.h. Pads of single-byte characters are set here, where the engine lets the library; the
// others by the engine.

#include "bop/bifun_str/entry_points.h"
#include "bop/bifun_str/overlay.h"
#include "engine/strings.h"

namespace bifun {
namespace {

enum class side : std::uint8_t { left, right };

// How many of the first `length` characters of the pad's copies are blanks at their end.
std::uint32_t blanks_at_end(const bifun_string& pad, std::uint32_t length) {
    if (pad.length == 1) {
        return *pad.data == blank ? length : 0;
    }
    const std::uint32_t cut = length % pad.length;
    std::uint32_t blanks = trailing(blank, pad.data, cut);
    if (blanks == cut && length > cut) {
        const std::uint32_t of_whole = trailing(blank, pad.data, pad.length);
        blanks = of_whole == pad.length ? length : blanks + of_whole;
    }
    return blanks;
}

void append_pad(text_writer& text, const bifun_string& pad, std::uint32_t length) {
    if (pad.length == 1) {
        append(text, *pad.data, length);
    } else {
        append_copies(text, pad.data, pad.length, length);
    }
}

status cut_text(const text_operations& texts, const bifun_string& value, std::uint32_t stored, std::uint32_t length, string_room& room) {
    const bifun_string kept = length >= stored ? bifun_string{value.length, length - stored, value.data}
                                               : bifun_string{offset_of_character(texts, value, length), 0, value.data};
    return full_length(kept) > longest_built_text ? BIFUN_INVALID_CHARACTER_STRING : take_text(room, kept);
}

// What stands where: on the left the pad and then the text, whose blanks are a count; on the right the text, its blanks as far as they are
// written, and the pad.
struct padded_parts {
    std::uint32_t pad; // bytes of it
    std::uint32_t written_blanks;
    std::uint32_t counted_blanks;
};

// Where the pad ends the text, its last blanks are a count, and so are the text's own where nothing else of the pad is left.
template <side at> padded_parts place_pad(const bifun_string& value, const bifun_string& pad, std::uint32_t length) {
    const bool pad_is_last = length != 0 && (at == side::right || value.length == 0);
    const std::uint32_t last_blanks = pad_is_last ? blanks_at_end(pad, length) : 0;
    const std::uint32_t written = length - last_blanks;
    return at == side::right && written != 0 ? padded_parts{written, value.trailing_blanks, last_blanks}
                                             : padded_parts{written, 0, value.trailing_blanks + last_blanks};
}

template <side at>
status pad_single_bytes(const text_operations& texts, const bifun_string& value, std::uint32_t length, const bifun_string& pad,
                        string_room& room) {
    const std::uint32_t stored = stored_characters(texts, value);
    const std::uint64_t characters = std::uint64_t{stored} + value.trailing_blanks;
    if (characters >= length) {
        return cut_text(texts, value, stored, length, room);
    }
    const std::uint32_t missing = pad.length == 0 ? 0 : static_cast<std::uint32_t>(length - characters);
    if (full_length(value) + missing > longest_built_text) {
        return BIFUN_INVALID_CHARACTER_STRING;
    }
    const padded_parts parts = place_pad<at>(value, pad, missing);
    const std::uint32_t size = value.length + parts.written_blanks + parts.pad;
    text_writer text;
    const status made = make_room(room, size, parts.counted_blanks, text);
    if (made != BIFUN_OK || size == 0) {
        return made;
    }
    if (at == side::left) {
        append_pad(text, pad, parts.pad);
    }
    append(text, value.data, value.length);
    if (at == side::right) {
        append_blanks(text, parts.written_blanks);
        append_pad(text, pad, parts.pad);
    }
    return BIFUN_OK;
}

struct pad_scratch {
    bool is_padded_here;
    scratch& pad;
};

template <side at>
status pad_to(const text_operations& texts, const bifun_string& value, std::int32_t length, const bifun_string& pad, pad_scratch& scratch,
              string_room& room) {
    bifun_string full_pad = pad;
    if (pad.trailing_blanks != 0) {
        const std::uint64_t pad_length = full_length(pad);
        full_pad.data = reserve(scratch.pad, pad_length);
        if (full_pad.data == nullptr) {
            return BIFUN_OUT_OF_MEMORY;
        }
        write_full_text(full_pad.data, pad);
        full_pad.length = static_cast<std::uint32_t>(pad_length);
    }
    if (scratch.is_padded_here && has_single_bytes(of_any_text(texts), full_pad)) [[likely]] {
        return pad_single_bytes<at>(texts, value, static_cast<std::uint32_t>(std::max(length, 0)), full_pad, room);
    }
    const batch& batch = room.batch;
    bifun_column_data* const result = batch.result->data;
    if constexpr (at == side::left) {
        return zq_get_lpad_str(batch.environment, batch.memory, result, row_of(room), &value, length, full_pad.data, full_pad.length);
    } else {
        return zq_get_rpad_str(batch.environment, batch.memory, result, row_of(room), &value, length, full_pad.data, full_pad.length);
    }
}

template <side at, class Text, class Pad> status pad_rows(batch_of<VARCHAR> batch, Text text, constant_of<INT> length, Pad pad) {
    return with_scratch(batch.environment, batch.memory, string_source_file, [&](scratch& pad_bytes) {
        pad_scratch scratch{pads_as_described(), pad_bytes};
        return string_rows<pad_to<at>>(batch, texts_of(text), text, length, pad, shared(scratch));
    });
}

constexpr bifun_string one_blank{1, 0, const_cast<std::uint8_t*>(&blank)};

} // namespace

status entry::blpad_ava_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text, constant_of<INT> length, column_of<VARCHAR> pad) {
    return pad_rows<side::left>(batch, text, length, pad);
}
status entry::blpad_vva_str(batch_of<VARCHAR> batch, constant_of<VARCHAR> text, constant_of<INT> length, column_of<VARCHAR> pad) {
    return pad_rows<side::left>(batch, text, length, pad);
}
status entry::blpad_avv_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text, constant_of<INT> length, constant_of<VARCHAR> pad) {
    return pad_rows<side::left>(batch, text, length, pad);
}
status entry::blpad_def_av_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text, constant_of<INT> length) {
    return pad_rows<side::left>(batch, text, length, fixed(one_blank));
}
status entry::brpad_ava_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text, constant_of<INT> length, column_of<VARCHAR> pad) {
    return pad_rows<side::right>(batch, text, length, pad);
}
status entry::brpad_vva_str(batch_of<VARCHAR> batch, constant_of<VARCHAR> text, constant_of<INT> length, column_of<VARCHAR> pad) {
    return pad_rows<side::right>(batch, text, length, pad);
}
status entry::brpad_avv_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text, constant_of<INT> length, constant_of<VARCHAR> pad) {
    return pad_rows<side::right>(batch, text, length, pad);
}
status entry::brpad_def_av_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text, constant_of<INT> length) {
    return pad_rows<side::right>(batch, text, length, fixed(one_blank));
}

} // namespace bifun
