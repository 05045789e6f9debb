// SPDX-License-Identifier: Apache-2.0
#include "host/tables/text_input.h"

#include <algorithm>
#include <array>
#include <cstring>

#include <unicode/ucnv.h>

#include "host/program_error.h"
#include "host/tables/line_scan.h"

namespace host {

struct converter_closer {
    void operator()(UConverter* opened) const { ucnv_close(opened); }
};
using unicode_converter = std::unique_ptr<UConverter, converter_closer>;

struct text_conversion {
    unicode_converter from, to;
    std::string from_name;

    std::vector<char> source; // read and not converted
    std::size_t source_at = 0;
    bool source_ended = false;
    bool ended = false;
    bool has_fault = false; // behind what lies between
    bool at_fault = false;
    bool has_rest = false; // of a character, for want of room
    std::uint64_t lines = 0;

    std::array<UChar, 8192> between{};
    UChar* between_read = between.data();
    UChar* between_written = between.data();
};

namespace {

unicode_converter open_converter(const std::string& path, const std::string& name) {
    UErrorCode error = U_ZERO_ERROR;
    unicode_converter opened(ucnv_open(name.c_str(), &error));
    if (U_FAILURE(error)) {
        fail("{}: there is no encoding {}; names are such as latin1, windows-1252, UTF-16 or Shift_JIS", path, name);
    }
    // What cannot be converted is an error and not a replacement.
    ucnv_setToUCallBack(opened.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
    ucnv_setFromUCallBack(opened.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
    return opened;
}

bool names_charset(const std::string& encoding, const charset& set) {
    return encoding.empty() || ucnv_compareNames(encoding.c_str(), set.iconv_name.data()) == 0;
}

// UTF-16 without a byte order mark has zeros beside its ASCII letters, which no other text has. Empty for any other text.
std::string unmarked_encoding(std::string_view first) {
    const auto has_zeros = [&](bool at_even) {
        bool all = first.size() == 4;
        for (std::size_t i = 0; i < first.size(); ++i) {
            all &= (first[i] == '\0') == ((i % 2 == 0) == at_even);
        }
        return all;
    };
    return has_zeros(false) ? "UTF-16LE" : has_zeros(true) ? "UTF-16BE" : "";
}

struct other_format {
    std::string_view beginning; // of its files
    std::string_view name;
    std::string_view advice;
};
constexpr std::string_view csv_alone = "bifun reads CSV files, into which what has written this one may export it";
constexpr other_format other_formats[] = {
    {{"PK\x03\x04", 4}, "a ZIP archive, or a spreadsheet", csv_alone},
    {{"\xD0\xCF\x11\xE0", 4}, "a document or a spreadsheet", csv_alone},
    {"PAR1", "a Parquet file", csv_alone},
    {"SQLi", "a SQLite database", csv_alone},
    {"%PDF", "a PDF file", csv_alone},
    {"BZh", "packed by bzip2", "bzip2 -dc FILE | bifun - \"SELECT * FROM stdin\" reads it"},
    {"\xFD"
     "7zX",
     "packed by xz", "xz -dc FILE | bifun - \"SELECT * FROM stdin\" reads it"},
};

void check_format(const std::string& path, std::string_view first) {
    for (const other_format& known : other_formats) {
        if (first.starts_with(known.beginning)) {
            fail("{}: this is {}; {}", path, known.name, known.advice);
        }
    }
}

} // namespace

text_input::text_input(std::string path, std::string encoding, const charset& set, bool marks_errors)
    : file_(std::move(path)), encoding_(std::move(encoding)), charset_(set), marks_errors_(marks_errors), keeps_(!file_.can_rewind()) {}

text_input::~text_input() = default;

void text_input::begin() {
    begun_ = true;
    constexpr std::size_t longest_mark = 4;
    first_bytes_.resize(longest_mark);
    std::size_t count = 0;
    for (std::size_t more = 1; more > 0 && count < longest_mark; count += more) {
        more = file_.read(first_bytes_.data() + count, longest_mark - count);
    }
    first_bytes_.resize(count);
    check_format(file_.path(), first_bytes_);
    UErrorCode error = U_ZERO_ERROR;
    std::int32_t mark_length = 0;
    const char* const marked = ucnv_detectUnicodeSignature(first_bytes_.data(), static_cast<std::int32_t>(count), &mark_length, &error);
    first_bytes_.erase(0, marked == nullptr ? 0 : static_cast<std::size_t>(mark_length));
    const std::string encoding = marked != nullptr ? marked : encoding_.empty() ? unmarked_encoding(first_bytes_) : encoding_;
    conversion_.reset();
    if (!names_charset(encoding, charset_)) {
        conversion_ = std::make_unique<text_conversion>();
        conversion_->from = open_converter(file_.path(), encoding);
        conversion_->to = open_converter(file_.path(), std::string(charset_.iconv_name));
        conversion_->from_name = encoding;
    }
}

std::size_t text_input::read_file(char* to, std::size_t room) {
    if (first_bytes_.empty()) {
        return file_.read(to, room);
    }
    const std::size_t count = std::min(room, first_bytes_.size());
    std::memcpy(to, first_bytes_.data(), count);
    first_bytes_.erase(0, count);
    // What separates fields is not told by so few bytes.
    return count + (count < room ? file_.read(to + count, room - count) : 0);
}

// Converts what lies between, up to a character that the database does not have.
void text_input::convert_between(char*& target, const char* end) {
    text_conversion& state = *conversion_;
    const UChar* source = state.between_read;
    UErrorCode error = U_ZERO_ERROR;
    ucnv_fromUnicode(state.to.get(), &target, end, &source, state.between_written, nullptr, static_cast<UBool>(state.source_ended), &error);
    state.between_read += source - state.between_read;
    state.has_rest = error == U_BUFFER_OVERFLOW_ERROR;
    state.at_fault = U_FAILURE(error) && !state.has_rest;
}

// Makes new text between, reading where there is nothing to make it of.
void text_input::fill_between() {
    text_conversion& state = *conversion_;
    if (state.source_at == state.source.size() && !state.source_ended) {
        constexpr std::size_t source_size = std::size_t{64} * 1024;
        state.source.resize(source_size);
        state.source.resize(read_file(state.source.data(), source_size));
        state.source_at = 0;
        state.source_ended = state.source.empty();
    }
    const char* source = state.source.data() + state.source_at;
    UErrorCode error = U_ZERO_ERROR;
    state.between_read = state.between_written = state.between.data();
    ucnv_toUnicode(state.from.get(), &state.between_written, state.between.data() + state.between.size(), &source,
                   state.source.data() + state.source.size(), nullptr, static_cast<UBool>(state.source_ended), &error);
    state.source_at = static_cast<std::size_t>(source - state.source.data());
    state.has_fault = U_FAILURE(error) && error != U_BUFFER_OVERFLOW_ERROR;
    state.ended = state.source_ended && U_SUCCESS(error) && state.between_written == state.between.data();
}

std::size_t text_input::convert(char* to, std::size_t room) {
    text_conversion& state = *conversion_;
    char* target = to;
    while (target == to && !state.ended) {
        if (state.at_fault && !marks_errors_) {
            fail("{}, line {}: bytes that are no {}, or a character that {} does not have{}", file_.path(), state.lines + 1,
                 state.from_name, charset_.name, naming_encoding);
        }
        if (state.at_fault) {
            *target++ = '\xFF';
            state.at_fault = false;
        } else if (state.has_rest || state.between_read != state.between_written) {
            convert_between(target, to + room);
        } else if (state.has_fault) {
            state.at_fault = true;
            state.has_fault = false;
        } else {
            fill_between();
        }
    }
    const auto count = static_cast<std::size_t>(target - to);
    state.lines += count_line_ends({to, count});
    return count;
}

std::size_t text_input::read(char* to, std::size_t room) {
    if (!keeps_ && !kept_.empty()) {
        const std::string& first = kept_.front();
        const std::size_t count = std::min(room, first.size() - kept_at_);
        std::memcpy(to, first.data() + kept_at_, count);
        kept_at_ += count;
        if (kept_at_ == first.size()) {
            kept_.pop_front();
            kept_at_ = 0;
        }
        return count;
    }
    if (!begun_) {
        begin();
    }
    const std::size_t count = conversion_ != nullptr ? convert(to, room) : read_file(to, room);
    if (keeps_ && count > 0) {
        kept_.emplace_back(to, count);
    }
    return count;
}

void text_input::rewind() {
    if (file_.can_rewind()) {
        file_.rewind();
        begun_ = false;
    }
    keeps_ = false;
}

void text_input::stop_keeping() {
    keeps_ = false;
    kept_.clear();
}

} // namespace host
