// SPDX-License-Identifier: Apache-2.0
// Bytes as a CSV file. Behind an even byte they are a file as it is, packed or encoded perhaps, which must come through without a fault of
// memory. Behind an odd one they are text, of which the reader must make the rows, the NULLs and the error that a reader makes which goes
// byte by byte; plain values must be what the general readers make of them.
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "fuzz/memory_file.h"
#include "fuzz/require.h"
#include "host/program_error.h"
#include "host/tables/csv_file.h"
#include "host/tables/plain_values.h"
#include "host/tables/type_inference.h"
#include "host/values/value_text.h"

namespace {

struct expected_field {
    std::string text;
    bool is_null;
    bool is_null_unless_text;
};

struct expected_row {
    std::uint64_t line;
    std::vector<expected_field> fields;
};

struct expected_rows {
    std::vector<expected_row> rows;
    std::optional<std::uint64_t> error_line; // behind the last of them
};

// Goes through the text byte by byte.
struct byte_parser {
    std::string_view text;
    const host::file_options& options;
    std::size_t at = 0;
    std::uint64_t line = 1;

    [[nodiscard]] bool at_end() const { return at == text.size(); }
    [[nodiscard]] bool at_line_end() const { return at_end() || text[at] == '\n' || text[at] == '\r'; }
    // Takes a byte, or both of CR LF.
    std::string_view take() {
        const bool is_pair = text[at] == '\r' && at + 1 < text.size() && text[at + 1] == '\n';
        const std::string_view taken = text.substr(at, is_pair ? 2 : 1);
        line += taken[0] == '\n' || taken[0] == '\r' ? 1 : 0;
        at += taken.size();
        return taken;
    }
    [[nodiscard]] bool is_at(std::optional<char> byte) const { return !at_end() && byte && text[at] == *byte; }
    // Where behind them is what is looked for.
    template <class Found> void skip_blanks(const Found& found) {
        const std::size_t begin = at;
        while (!at_end() && text[at] == ' ' && !is_at(options.delimiter)) {
            ++at;
        }
        at = found() ? at : begin;
    }
    // Takes what makes one byte of a field's text, or a line end in it.
    void take_into(std::string& field) {
        if (!is_at(options.escape) || at + 1 == text.size()) {
            field += take();
            return;
        }
        take();
        constexpr std::string_view letters = "0bfnrtvZ";
        constexpr std::string_view controls("\0\b\f\n\r\t\v\x1A", letters.size());
        const std::size_t letter = options.has_letter_escapes ? letters.find(text[at]) : letters.npos;
        const bool has_meaning = is_at(options.escape) || is_at(options.quote) || is_at(options.delimiter) || at_line_end();
        field.append(has_meaning || options.has_letter_escapes ? 0 : 1, *options.escape);
        const std::string_view taken = take();
        field += letter == letters.npos ? taken : controls.substr(letter, 1);
    }
};

void decide_null(const host::file_options& options, expected_field& field, std::string_view written, bool quoted) {
    const bool may_be = !quoted || options.has_quoted_nulls;
    field.is_null = false;
    for (const std::string& text : options.null_texts) {
        field.is_null |= may_be && (text == written || (!text.empty() && text == host::without_blanks_around(written)));
    }
    field.is_null_unless_text = field.is_null || (may_be && written.empty());
}

// False where the field has an error, whose line is then the parser's or, where a quote is not closed, that of the row.
bool parse_field(byte_parser& parser, expected_field& field, bool& unclosed) {
    const host::file_options& options = parser.options;
    parser.skip_blanks([&] { return parser.is_at(options.quote); });
    std::size_t begin = parser.at;
    if (!parser.is_at(options.quote)) {
        while (!parser.at_line_end() && !parser.is_at(options.delimiter)) {
            parser.take_into(field.text); // a quote, too, where it does not begin the field
        }
        decide_null(options, field, parser.text.substr(begin, parser.at - begin), false);
        return true;
    }
    parser.take();
    ++begin;
    for (;;) {
        if (parser.at_end()) {
            unclosed = true;
            return false;
        }
        if (!parser.is_at(options.quote)) {
            parser.take_into(field.text);
            continue;
        }
        decide_null(options, field, parser.text.substr(begin, parser.at - begin), true);
        parser.take();
        if (!parser.is_at(options.quote)) {
            const auto at_field_end = [&] { return parser.at_line_end() || parser.is_at(options.delimiter); };
            parser.skip_blanks(at_field_end);
            return at_field_end();
        }
        field.text += parser.take();
    }
}

expected_rows parse(std::string_view text, const host::file_options& options) {
    byte_parser parser{.text = text, .options = options};
    expected_rows made;
    while (!parser.at_end()) {
        if (parser.is_at(options.comment)) {
            while (!parser.at_line_end()) {
                ++parser.at;
            }
            if (!parser.at_end()) {
                parser.take();
            }
            continue;
        }
        expected_row row{.line = parser.line, .fields = {}};
        const std::size_t begin = parser.at;
        for (;;) {
            bool unclosed = false;
            if (!parse_field(parser, row.fields.emplace_back(), unclosed)) {
                made.error_line = unclosed ? row.line : parser.line;
                return made;
            }
            if (parser.at_line_end()) {
                break;
            }
            parser.take();
        }
        const bool blank = parser.at == begin;
        if (!parser.at_end()) {
            parser.take();
        }
        const std::size_t columns = made.rows.empty() ? 0 : made.rows[0].fields.size();
        if (blank && columns != 1) {
            continue;
        }
        if (options.fills_short_rows && row.fields.size() < columns) {
            row.fields.resize(columns, {.text = {}, .is_null = true, .is_null_unless_text = true});
        }
        if (columns != 0 && row.fields.size() != columns) {
            made.error_line = row.line;
            return made;
        }
        made.rows.push_back(std::move(row));
    }
    return made;
}

void check_plain_values(std::string_view text) {
    const auto check = [text](auto plain, auto general, const auto& read_plain, const auto& read_general) {
        std::memset(&plain, 0, sizeof plain);
        std::memset(&general, 0, sizeof general);
        if (read_plain(text, plain)) {
            require(read_general(text, general) && std::memcmp(&plain, &general, sizeof plain) == 0);
        }
    };
    const auto read_plain = [](std::string_view t, auto& value) { return host::plain_values::read_value(t, value); };
    const auto read_number = [](std::string_view t, auto& value) { return host::read_number(t, value); };
    check(std::int32_t{}, std::int32_t{}, read_plain, read_number);
    check(std::int64_t{}, std::int64_t{}, read_plain, read_number);
    check(double{}, double{}, read_plain, read_number);
    check(xdec{}, xdec{}, read_plain, host::read_decimal);
    check(zqtime{}, zqtime{}, host::plain_values::read_date_value,
          [](std::string_view t, zqtime& value) { return host::read_datetime(t, host::sql_type::date, 0, value); });
    check(zqtime{}, zqtime{}, host::plain_values::read_timestamp_value,
          [](std::string_view t, zqtime& value) { return host::read_datetime(t, host::sql_type::timestamp, 0, value); });
}

// The ways to write text that a byte chooses among.
host::file_options chosen_options(unsigned choice) {
    host::file_options options;
    options.delimiter = ",;\t|"[choice % 4];
    switch (choice / 4 % 8) {
    case 1:
        options.quote.reset();
        break;
    case 2:
        options.quote = '\'';
        options.null_texts = {"NA", "x"};
        options.comment = 'N';
        break;
    case 3:
        options.escape = '\\';
        options.null_texts = {"", "\\N"};
        break;
    case 4:
        options.quote.reset();
        options.escape = '\\';
        options.has_letter_escapes = true;
        options.null_texts = {"\\N"};
        options.fills_short_rows = true;
        break;
    case 5:
        options.comment = '\'';
        options.escape = '^';
        options.has_quoted_nulls = true;
        options.fills_short_rows = true;
        break;
    default:
        break;
    }
    return options;
}

// Every byte as one that means something in some file.
std::string with_syntax_alone(std::string_view text) {
    constexpr std::string_view meaningful = "\"\"\"\\\\,,;|\t\n\n\r'^NA nx";
    std::string made;
    for (const char byte : text) {
        made += meaningful[static_cast<unsigned char>(byte) % meaningful.size()];
    }
    return made;
}

// What a row says, and whether it was the last.
bool check_next_row(host::csv_reader& reader, const expected_rows& expected, std::size_t& next) {
    const auto rows = reader.next_rows(3);
    for (const std::uint32_t row : rows) {
        require(next < expected.rows.size() && reader.line_of(row) == expected.rows[next].line);
        const std::vector<expected_field>& fields = expected.rows[next].fields;
        for (std::size_t i = 0; i < fields.size(); ++i) {
            const host::csv_field field = reader.field(row, i);
            require(field.text == fields[i].text && field.is_null == fields[i].is_null &&
                    field.is_null_unless_text == fields[i].is_null_unless_text);
            (void)host::classify_field(field.text);
            check_plain_values(field.text);
        }
        ++next;
    }
    return !rows.empty();
}

void check_text(std::string_view text, const host::file_options& options, const host::charset& set) {
    // What begins like this is neither packed nor encoded.
    std::string file_text = "he";
    file_text.append(text);
    const expected_rows expected = parse(file_text, options);
    const memory_file file(file_text);
    std::size_t next = 1; // behind the header
    try {
        host::csv_reader reader(file.path, options, set);
        require(!expected.rows.empty() && reader.header().size() == expected.rows[0].fields.size());
        while (check_next_row(reader, expected, next)) {
        }
        require(!expected.error_line && next == expected.rows.size());
    } catch (const host::program_error& error) {
        require(expected.error_line && next >= expected.rows.size());
        require(std::string_view(error.what()).find(fmt::format(", line {}: ", *expected.error_line)) != std::string_view::npos);
    }
}

void read_bytes(std::string_view bytes, bool ignores_errors, const host::charset& set) {
    const memory_file file(bytes);
    try {
        host::csv_reader reader(file.path, {.delimiter = {}, .ignores_errors = ignores_errors, .encoding = {}}, set);
        for (auto rows = reader.next_rows(100); !rows.empty(); rows = reader.next_rows(100)) {
            for (const std::uint32_t row : rows) {
                for (std::size_t i = 0; i < reader.header().size(); ++i) {
                    (void)host::classify_field(reader.field(row, i).text);
                }
            }
        }
    } catch (const host::program_error&) {
        // Most bytes are no file.
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const host::charset* const set = host::find_charset("utf-8");
    if (size > 0) {
        const std::string_view rest(reinterpret_cast<const char*>(data) + 1, size - 1);
        if (*data % 2 == 0) {
            read_bytes(rest, *data % 4 == 0, *set);
        } else {
            check_text(*data < 128 ? std::string(rest) : with_syntax_alone(rest), chosen_options(*data / 2U), *set);
        }
    }
    return 0;
}
