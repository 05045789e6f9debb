// SPDX-License-Identifier: Apache-2.0
#include "host/tables/line_scan.h"

#include <algorithm>
#include <bit>

#include "bop/frame/byte_masks.h"

namespace host {
namespace {

constexpr std::uint32_t block_size = bifun::longest_masked;
using block = bifun::text_bytes<block_size>;

// Bit i is the parity of bits 0 to i: between quotes, with the opening and without the closing one.
std::uint64_t parities(std::uint64_t bits) {
    for (unsigned distance = 1; distance < 64; distance *= 2) {
        bits ^= bits << distance;
    }
    return bits;
}

constexpr std::uint64_t last_bit = std::uint64_t{1} << 63;
constexpr std::uint64_t all_bits = ~std::uint64_t{0};

// What a block has to know of the bytes before it.
struct scan_state {
    std::uint64_t inside = 0;      // all bits between quotes
    std::uint64_t may_open = 1;    // 1 where a quote may open a field, or be the second of two
    std::uint64_t after_close = 0; // 1 behind a quote that closes a field unless another one follows
    std::uint64_t escaped = 0;     // 1 behind an escape
    std::uint64_t line_start = 1;  // 1 behind a line end
};

struct block_masks {
    std::uint64_t quotes, ends, line_ends, carriage_returns;
};

// Takes the bytes that escapes make text from all masks. The line feed of an escaped CR LF goes with it.
void apply_escapes(scan_state& state, std::uint64_t escapes, bool line_feed_next, block_masks& masks, line_index& index) {
    std::uint64_t escaped = state.escaped;
    state.escaped = 0;
    for (std::uint64_t left = escapes & ~escaped; left != 0;) {
        const std::uint64_t escape = left & (~left + 1);
        escaped |= escape << 1;
        state.escaped |= escape >> 63;
        left &= ~(escape | escape << 1);
    }
    const std::uint64_t carriage_returns = escaped & masks.carriage_returns;
    escaped |= carriage_returns << 1 & masks.line_ends;
    state.escaped |= line_feed_next ? carriage_returns >> 63 : 0;
    index.has_inner_line_ends |= (escaped & (masks.line_ends | masks.carriage_returns)) != 0;
    masks.quotes &= ~escaped;
    masks.ends &= ~escaped;
    masks.line_ends &= ~escaped;
    masks.carriage_returns &= ~escaped;
}

// What the quotes of a block make of it.
struct quoted_block {
    std::uint64_t inside;  // between quotes
    std::uint64_t closing; // quotes
    std::uint64_t ends;    // outside of quotes
    std::uint64_t wrong;   // bytes that stand where they may not: opening quotes inside a field, and what is behind a closing one
};

quoted_block find_quoted(const scan_state& state, const block_masks& masks, std::uint64_t here) {
    const std::uint64_t inside = parities(masks.quotes) ^ state.inside;
    const std::uint64_t opening = masks.quotes & inside;
    const std::uint64_t closing = masks.quotes & ~inside;
    const std::uint64_t ends = masks.ends & ~inside;
    const std::uint64_t may_open = (ends | closing) << 1 | state.may_open;
    const std::uint64_t behind_closing = closing << 1 | state.after_close;
    const std::uint64_t may_follow = ends | opening | (masks.carriage_returns & ~inside);
    return {.inside = inside, .closing = closing, .ends = ends, .wrong = ((opening & ~may_open) | (behind_closing & ~may_follow)) & here};
}

// Takes what lies between quotes from the ends.
void apply_quotes(scan_state& state, const quoted_block& found, block_masks& masks, line_index& index) {
    index.has_inner_line_ends |= (masks.line_ends & found.inside) != 0;
    masks.ends = found.ends;
    masks.line_ends &= ~found.inside;
    state.inside = (found.inside & last_bit) != 0 ? all_bits : 0;
    state.after_close = found.closing >> 63;
    state.may_open = found.closing >> 63;
}

// The last byte, or the CR LF that it ends.
bool is_escaped(std::string_view text, const csv_syntax& syntax) {
    text.remove_suffix(text.ends_with("\r\n") ? 2 : 1);
    std::size_t escapes = 0;
    while (escapes < text.size() && syntax.escape == text[text.size() - 1 - escapes]) {
        ++escapes;
    }
    return escapes % 2 == 1;
}

// Whether nothing but blanks lies between the byte and the beginning of its field, if it is a quote, or else the end of it, as far as there
// is text.
bool is_beside_blanks(std::string_view text, std::uint32_t position, const csv_syntax& syntax) {
    const auto ends_field = [&](char byte) { return byte == syntax.delimiter || byte == '\n' || byte == '\r'; };
    if (text[position] == *syntax.quote) {
        std::uint32_t begin = position;
        while (begin > 0 && text[begin - 1] == ' ' && !ends_field(text[begin - 1])) {
            --begin;
        }
        return begin < position && (begin == 0 || (ends_field(text[begin - 1]) && !is_escaped(text.substr(0, begin), syntax)));
    }
    const std::size_t end = text.find_first_not_of(' ', position);
    return end == text.npos || (end > position && ends_field(text[end]));
}

// Blanks may stand around quotes, and a quote inside a field that does not begin with one is text, as in 5" disk. The first byte that is
// wrong nevertheless; negative where there is none.
int mend_quotes(std::string_view text, std::uint32_t at, std::uint32_t size, const csv_syntax& syntax, const scan_state& state,
                block_masks& masks, quoted_block& found, line_index& index) {
    std::uint64_t blanks = 0;
    while ((found.wrong & ~blanks) != 0) {
        const int first = std::countr_zero(found.wrong & ~blanks);
        const std::uint64_t bit = std::uint64_t{1} << first;
        if (is_beside_blanks(text, at + static_cast<std::uint32_t>(first), syntax)) {
            index.has_blanks_around_quotes = true;
            blanks |= bit;
        } else if ((masks.quotes & found.inside & bit) != 0) {
            index.has_quotes_as_text = true;
            masks.quotes &= ~bit;
            found = find_quoted(state, masks, bifun::first_bits(size));
        } else {
            return first;
        }
    }
    return -1;
}

// Nothing behind the byte counts.
void stop_at(int byte, std::uint32_t block_begin, scan_fault kind, block_masks& masks, line_index& index) {
    index.found_fault = {kind, block_begin + static_cast<std::uint32_t>(byte)};
    masks.ends &= (std::uint64_t{1} << byte) - 1;
    masks.line_ends &= masks.ends;
}

// Appends the positions of the bits to what `next` points to, several at once: most blocks have some, and what is too much is overwritten.
std::uint32_t* append_positions(std::uint32_t* next, std::uint64_t bits, std::uint32_t first) {
    constexpr int at_once = 4;
    std::uint32_t* const behind = next + std::popcount(bits);
    while (bits != 0) {
        for (int i = 0; i < at_once; ++i) {
            next[i] = first + static_cast<std::uint32_t>(std::countr_zero(bits));
            bits &= bits - 1;
        }
        next += at_once;
    }
    return behind;
}

// Nearly all files have double quotes, no escapes and no comments: for them the compiler knows it.
template <bool is_usual> void scan(std::string_view text, bool is_last, const csv_syntax& syntax, line_index& index) {
    // Copies, which what is written below cannot change.
    const auto delimiter = static_cast<std::uint8_t>(syntax.delimiter);
    const bool has_quote = is_usual || syntax.quote.has_value();
    const bool has_escape = !is_usual && syntax.escape.has_value();
    const bool has_comment = !is_usual && syntax.comment.has_value();
    const auto quote = static_cast<std::uint8_t>(is_usual ? '"' : syntax.quote.value_or('\0'));
    const auto escape = static_cast<std::uint8_t>(syntax.escape.value_or('\0'));
    const auto comment = static_cast<std::uint8_t>(syntax.comment.value_or('\0'));
    // Whether a CR at the end is the first half of a line end is not known before the next byte is.
    if (!is_last && text.ends_with('\r')) {
        text.remove_suffix(1);
    }
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto length = static_cast<std::uint32_t>(text.size());
    constexpr std::size_t room_behind = 8; // of append_positions, the end of a last line and ends[0]
    if (index.room < length + room_behind) {
        // Pages that are never written cost nothing, so nothing is filled.
        index.room = length + room_behind;
        index.ends = std::make_unique_for_overwrite<std::uint32_t[]>(index.room);
        index.line_fields = std::make_unique_for_overwrite<std::uint32_t[]>(index.room);
    }
    index.ends[0] = UINT32_MAX;
    index.is_ascii = true;
    index.has_inner_line_ends = false;
    index.has_blanks_around_quotes = false;
    index.has_quotes_as_text = false;
    index.found_fault.reset();
    std::uint32_t* const fields = index.ends.get() + 1;
    std::uint32_t* next = fields;
    std::uint32_t* next_line = index.line_fields.get();
    scan_state state;
    std::uint64_t beyond_ascii = 0;
    for (std::uint32_t at = 0; at < length; at += block_size) {
        const std::uint32_t size = std::min(length - at, block_size);
        const block loaded(bytes + at, size);
        block_masks masks{.quotes = has_quote ? equal_bytes(loaded, quote) : 0,
                          .ends = equal_bytes(loaded, delimiter),
                          .line_ends = equal_bytes(loaded, '\n'),
                          .carriage_returns = equal_bytes(loaded, '\r')};
        beyond_ascii |= bytes_beyond_ascii(loaded);
        const auto line_feed_next = [&] { return at + block_size < length && bytes[at + block_size] == '\n'; };
        if (has_escape) {
            apply_escapes(state, equal_bytes(loaded, escape), line_feed_next(), masks, index);
        }
        if (masks.carriage_returns != 0) {
            masks.line_ends |= masks.carriage_returns & ~(masks.line_ends >> 1 | (line_feed_next() ? last_bit : 0));
        }
        masks.ends |= masks.line_ends;
        if ((masks.quotes | state.inside | state.after_close) != 0) {
            quoted_block found = find_quoted(state, masks, bifun::first_bits(size));
            int fault = -1;
            if (found.wrong != 0) [[unlikely]] {
                fault = mend_quotes(text, at, size, syntax, state, masks, found, index);
            }
            apply_quotes(state, found, masks, index);
            if (fault >= 0) [[unlikely]] {
                stop_at(fault, at, scan_fault::misplaced, masks, index);
            }
        } else {
            state.may_open = 0;
        }
        state.may_open |= masks.ends >> 63;
        if (has_comment) {
            const std::uint64_t starts = masks.line_ends << 1 | state.line_start;
            const std::uint64_t comments = equal_bytes(loaded, comment) & starts;
            state.line_start = masks.line_ends >> 63;
            if (comments != 0) {
                stop_at(std::countr_zero(comments), at, scan_fault::comment, masks, index);
            }
        }
        for (std::uint64_t left = masks.line_ends; left != 0; left &= left - 1) {
            const std::uint64_t up_to_here = left ^ (left - 1);
            *next_line++ = static_cast<std::uint32_t>(next - fields) + static_cast<std::uint32_t>(std::popcount(masks.ends & up_to_here));
        }
        next = append_positions(next, masks.ends, at);
        if (index.found_fault) [[unlikely]] {
            break;
        }
    }
    if (is_last && !index.found_fault) {
        const std::uint32_t behind_lines = next_line == index.line_fields.get() ? 0 : fields[next_line[-1] - 1] + 1;
        if (state.inside != 0) {
            index.found_fault = {scan_fault::unclosed, length};
        } else if (behind_lines < length) {
            *next++ = length;
            *next_line++ = static_cast<std::uint32_t>(next - fields);
        }
    }
    index.is_ascii = beyond_ascii == 0;
    index.lines = static_cast<std::uint32_t>(next_line - index.line_fields.get());
}

} // namespace

void scan_lines(std::string_view text, bool is_last, const csv_syntax& syntax, line_index& index) {
    if (syntax.quote == '"' && !syntax.escape && !syntax.comment) {
        scan<true>(text, is_last, syntax, index);
    } else {
        scan<false>(text, is_last, syntax, index);
    }
}

std::uint64_t count_line_ends(std::string_view text) {
    std::uint64_t count = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool before_line_feed = i + 1 < text.size() && text[i + 1] == '\n';
        count += text[i] == '\n' || (text[i] == '\r' && !before_line_feed) ? 1 : 0;
    }
    return count;
}

std::optional<line_end> find_line_end(std::string_view text) {
    const std::size_t at = text.find_first_of("\r\n");
    if (at == std::string_view::npos || (text[at] == '\r' && at + 1 == text.size())) {
        return std::nullopt;
    }
    return line_end{.position = at, .behind = at + (text[at] == '\r' && text[at + 1] == '\n' ? 2 : 1)};
}

} // namespace host
