// SPDX-License-Identifier: Apache-2.0
#include "host/output/value_output.h"

#include <algorithm>
#include <array>
#include <iterator>

#include <fmt/format.h>

#include "embedded/columns/value_text.h"

namespace host {
namespace {

// Which bytes make a field of a CSV or TSV file stand in quotes, besides its delimiter.
constexpr std::array<bool, 256> quoted_bytes = [] {
    std::array<bool, 256> bytes{};
    for (const char byte : {'"', '\r', '\n'}) {
        bytes[static_cast<unsigned char>(byte)] = true;
    }
    return bytes;
}();

} // namespace

void append_delimited_text(std::string& out, std::string_view stored, std::size_t trailing_blanks, char delimiter) {
    bool quoted = stored.empty() && trailing_blanks == 0;
    for (const char c : stored) {
        quoted |= quoted_bytes[static_cast<unsigned char>(c)] || c == delimiter;
    }
    if (!quoted) {
        out.append(stored).append(trailing_blanks, ' ');
        return;
    }
    out += '"';
    for (const char c : stored) {
        out.append(c == '"' ? 2 : 1, c);
    }
    out.append(trailing_blanks, ' ');
    out += '"';
}

void append_json_text(std::string& out, std::string_view text) {
    out += '"';
    for (const char c : text) {
        const char* const escaped = "\"\"\\\\\nn\rr\tt\bb\ff";
        bool done = false;
        for (const char* pair = escaped; *pair != '\0' && !done; pair += 2) {
            if (c == *pair) {
                out += '\\';
                out += pair[1];
                done = true;
            }
        }
        if (!done && static_cast<unsigned char>(c) < 0x20) {
            fmt::format_to(std::back_inserter(out), "\\u{:04x}", static_cast<unsigned>(c));
        } else if (!done) {
            out += c;
        }
    }
    out += '"';
}

void append_markdown_text(std::string& out, std::string_view text) {
    const auto is_in_word = [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || static_cast<unsigned char>(c) >= 0x80;
    };
    for (std::size_t i = 0; i < text.size(); ++i) {
        // Within a word, as in the names of columns, a _ is one everywhere; and so is a & that begins no &lt;.
        const bool is_mark =
            text[i] == '_'   ? i == 0 || i + 1 == text.size() || !is_in_word(text[i - 1]) || !is_in_word(text[i + 1])
            : text[i] == '&' ? text.substr(i + 1).find_first_not_of("#0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz") ==
                                   text.substr(i + 1).find(';')
                             : std::string_view("|\\*<[`~").find(text[i]) != std::string_view::npos;
        out.append(is_mark ? "\\" : "").push_back(text[i]);
    }
}

std::string without_control_characters(std::string text) {
    if (std::ranges::none_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; })) {
        return text;
    }
    std::string shown;
    for (const char c : text) {
        switch (c) {
        case '\n':
            shown += "\\n";
            break;
        case '\r':
            shown += "\\r";
            break;
        case '\t':
            shown += "\\t";
            break;
        default:
            if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
                fmt::format_to(std::back_inserter(shown), "\\x{:02x}", static_cast<unsigned>(c));
            } else {
                shown += c;
            }
        }
    }
    return shown;
}

void append_value(std::string& out, const bifun_column& column, sql_type type, std::uint32_t row) {
    if (type == sql_type::varbinary) {
        const auto& bytes = value_at<bifun_string>(column, row);
        for (std::uint32_t i = 0; i < bytes.length; ++i) {
            fmt::format_to(std::back_inserter(out), "{:02X}", bytes.data[i]);
        }
        return;
    }
    const bifun::value_type of_values = value_type_of(type);
    const auto kind = type == sql_type::date ? zqengine::datetime_kind::date
                      : has_date(type)       ? zqengine::datetime_kind::datetime
                                             : zqengine::datetime_kind::time;
    const auto* const value = static_cast<const std::uint8_t*>(column.data->values) + row * bifun::value_width(of_values);
    char characters[zqengine::value_text_size];
    out.append(characters, zqengine::write_value(of_values, kind, value, characters));
}

} // namespace host
