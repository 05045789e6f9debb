// SPDX-License-Identifier: Apache-2.0
#include "host/program_options.h"

#include <filesystem>
#include <utility>

#include <unistd.h>

#include "host/messages.h"
#include "host/near_names.h"
#include "host/tables/delimiter.h"
#include "host/values/value_text.h"

namespace host {

namespace {

std::optional<char> byte_or_none(std::string_view option, std::string_view text) {
    if (text.empty() || equal_ignoring_case(text, "none")) {
        return std::nullopt;
    }
    const std::optional<char> byte = find_byte(text);
    if (!byte) {
        fail("{}: \"{}\" is neither a character of one byte, nor 0x and two digits, nor none", option, text);
    }
    return byte;
}

// Also by another name, a link, or where the standard input is the file.
void check_output(const std::string& output, const std::vector<std::string>& files) {
    for (const std::string& file : files) {
        const std::string input = file == "-" ? "/dev/stdin" : file;
        std::error_code unreadable;
        if (std::filesystem::is_regular_file(output, unreadable) && std::filesystem::equivalent(output, input, unreadable)) {
            fail("--output: {} is {}, and would be replaced by the result; give the result another name", output,
                 file == "-"      ? "the file of the standard input"
                 : output == file ? "a file to be read"
                                  : fmt::format("the file {}", file));
        }
    }
}

} // namespace

file_options reading_of(const program_options& options) {
    file_options reading = options.reading;
    reading.has_header = !options.no_header;
    if (!options.delimiter.empty()) {
        reading.delimiter = find_delimiter_named(options.delimiter);
        if (!reading.delimiter) {
            fail("--delimiter: \"{}\" is none; there are {}", options.delimiter, delimiter_names);
        }
    }
    reading.quote = byte_or_none("--quote", options.quote);
    reading.has_letter_escapes = options.escape == "\\n";
    reading.escape = reading.has_letter_escapes ? '\\' : byte_or_none("--escape", options.escape);
    reading.comment = byte_or_none("--comment", options.comment);
    for (const auto& [name, mark] : {std::pair("comma", ','), std::pair("point", '.')}) {
        if (equal_ignoring_case(options.decimal, name) || options.decimal == std::string_view(&mark, 1)) {
            reading.decimal_mark = mark;
        }
    }
    if (!options.decimal.empty() && !reading.decimal_mark) {
        fail("--decimal: \"{}\" is neither comma nor point", options.decimal);
    }
    if (reading.escape == reading.quote) {
        reading.escape.reset(); // quotes are doubled within quotes, as always
    }
    for (const auto& [option, byte] :
         {std::pair("--quote", reading.quote), std::pair("--escape", reading.escape), std::pair("--comment", reading.comment)}) {
        if (byte && byte == reading.delimiter) {
            fail("--delimiter and {} are both \"{}\"", option, *byte);
        }
    }
    if (!options.nulls.empty()) {
        reading.null_texts = options.nulls;
    } else if (reading.escape == '\\') {
        reading.null_texts.emplace_back("\\N"); // what writes backslashes writes NULL so
    }
    return reading;
}

type_sample sample_of(const program_options& options) {
    const std::string& text = options.sample;
    constexpr std::uint64_t most_megabytes = 1U << 20;
    if (text.empty()) {
        return {};
    }
    std::uint64_t megabytes = 0;
    if (equal_ignoring_case(text, "all")) {
        return {.of_files = whole_file, .of_pipes = whole_file};
    }
    if (!read_number(text, megabytes) || megabytes == 0 || megabytes > most_megabytes) {
        fail("--sample: \"{}\" is no number of megabytes, such as 100, nor all", text);
    }
    return {.of_files = megabytes << 20, .of_pipes = megabytes << 20};
}

bool has_output_file(const program_options& options) { return !options.output.empty() && options.output != "-"; }

output_format format_of(const program_options& options) {
    if (!options.format.empty()) {
        const std::optional<output_format> format = find_output_format(options.format);
        if (!format) {
            fail("--format: there is no format {}; there are {}", options.format, output_format_names);
        }
        return *format;
    }
    const std::string extension = std::filesystem::path(options.output).extension().string();
    const std::optional<output_format> by_name = extension.empty() ? std::nullopt : find_output_format(extension.substr(1));
    for (const std::string_view foreign :
         {".parquet", ".xlsx", ".xls", ".ods", ".arrow", ".feather", ".orc", ".avro", ".db", ".sqlite", ".gz", ".zst"}) {
        if (equal_ignoring_case(extension, foreign)) {
            fail("--output: {} cannot be written; there are {}, which --format chooses where the name does not", foreign,
                 output_format_names);
        }
    }
    return by_name ? *by_name : !has_output_file(options) && isatty(STDOUT_FILENO) == 1 ? output_format::table : output_format::csv;
}

result_stream open_results(const program_options& options, const std::vector<std::string>& files) {
    result_stream opened{.file = nullptr, .stream = {.file = STDOUT_FILENO, .text = {}}, .is_terminal = false};
    if (has_output_file(options)) {
        check_output(options.output, files);
        opened.file = std::make_unique<output_file>(options.output);
        opened.stream.file = opened.file->descriptor();
    }
    opened.is_terminal = isatty(opened.stream.file) == 1;
    return opened;
}

bool restart(result_stream& results) {
    if (results.stream.flushed && (results.file == nullptr || !results.file->restart())) {
        return false;
    }
    results.stream.text.clear();
    results.stream.flushed = false;
    return true;
}

void commit(result_stream& results) {
    if (results.file != nullptr) {
        results.file->commit();
    }
}

void report_bad_rows(const csv_reader& reader) {
    if (reader.bad_rows() > 0) {
        print_message(
            fmt::format("{} row{} left out; the first: {}", reader.bad_rows(), reader.bad_rows() == 1 ? "" : "s", reader.first_bad_row()));
    }
}

} // namespace host
