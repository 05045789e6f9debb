#include "host/output/value_output.h"

#include <algorithm>
#include <array>
#include <charconv>

#include <fmt/format.h>

#include "embedded/datetime/text.h"
#include "engine/decimal.h"
#include "engine/number_format.h"
#include "host/values/interval_text.h"

namespace host {
namespace {

template <class Number> void append_number(std::string& text, Number value) {
    char digits[40];
    const auto [end, error] = std::to_chars(digits, digits + sizeof digits, value);
    text.append(digits, end);
}

// As TO_CHAR without a format writes it.
void append_double(std::string& text, double value) {
    char characters[32];
    std::uint32_t length = 0;
    (void)zq_dou2char(value, characters, sizeof characters, &length);
    text.append(characters, length);
}

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
    for (const char c : text) {
        if (c == '|' || c == '\\') {
            out += '\\';
        }
        out += c;
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

void append_value(std::string& text, const bifun_column& column, sql_type type, std::uint32_t row) {
    switch (type) {
    case sql_type::boolean:
        text += value_at<std::int32_t>(column, row) == 1 ? "true" : "false";
        break;
    case sql_type::bigint:
        append_number(text, value_at<std::int64_t>(column, row));
        break;
    case sql_type::double_precision:
        append_double(text, value_at<double>(column, row));
        break;
    case sql_type::decimal: {
        char digits[256];
        std::uint32_t length = 0;
        xdec_to_char_with_zero(&value_at<xdec>(column, row), digits, sizeof digits, 0, 0, &length);
        text.append(digits, length);
        break;
    }
    case sql_type::date:
    case sql_type::time:
    case sql_type::timestamp:
    case sql_type::time_with_zone:
    case sql_type::timestamp_with_zone: {
        char characters[zqengine::datetime_text_size];
        const auto kind = type == sql_type::date ? zqengine::datetime_kind::date
                          : has_date(type)       ? zqengine::datetime_kind::datetime
                                                 : zqengine::datetime_kind::time;
        text.append(characters, zqengine::write_datetime(value_at<zqtime>(column, row), kind, characters));
        break;
    }
    case sql_type::interval_ym:
        append_interval(text, value_at<bifun_interval_ym>(column, row));
        break;
    case sql_type::interval_dt:
        append_interval(text, value_at<bifun_interval_dt>(column, row));
        break;
    default:
        append_number(text, value_at<std::int32_t>(column, row));
        break;
    }
}

} // namespace host
