// SPDX-License-Identifier: Apache-2.0
// Where the fields and lines of CSV text end, found 64 bytes at a time.
#ifndef BIFUN_HOST_TABLES_LINE_SCAN_H
#define BIFUN_HOST_TABLES_LINE_SCAN_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "host/tables/csv_syntax.h"

namespace host {

enum class scan_fault : std::uint8_t {
    misplaced, // text behind a closing quote
    unclosed,
    comment, // no fault of quotes, but nothing behind it is scanned: quotes within the line are text
};

// A line is a record: line breaks between quotes or behind an escape are part of a field. Only whole lines count.
struct line_index {
    // ends[0] is -1; field f (counted over all lines) is what lies behind ends[f] and before ends[f + 1]. A CR before the LF that ends a
    // line is left to the last field of the line.
    std::unique_ptr<std::uint32_t[]> ends;
    std::unique_ptr<std::uint32_t[]> line_fields; // the number of fields up to the end of each line
    std::size_t room = 0;                         // of both
    std::uint32_t lines = 0;                      // elements of line_fields that count
    bool is_ascii = true;                         // all bytes scanned
    bool has_inner_line_ends = false;             // within fields
    bool has_blanks_around_quotes = false;        // "a" , "b"
    bool has_quotes_as_text = false;              // 5" disk
    struct fault {
        scan_fault kind;
        std::uint32_t position; // of the byte that shows it; the lines before its own count
    };
    std::optional<fault> found_fault;
};

// Scans text that begins with a line, at most 2^31 bytes; `is_last` where nothing follows it, so that it ends the last line. The text
// begins at a multiple of 64 in memory. Lines end with LF, CR LF or CR.
void scan_lines(std::string_view text, bool is_last, const csv_syntax& syntax, line_index& index);

// How many lines end in the text, quoted or not.
std::uint64_t count_line_ends(std::string_view text);

// Where the first line end lies, and what is behind it; nothing where there is none. A CR that ends the text is none.
struct line_end {
    std::size_t position;
    std::size_t behind;
};
std::optional<line_end> find_line_end(std::string_view text);

} // namespace host

#endif
