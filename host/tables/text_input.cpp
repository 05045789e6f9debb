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
    bool at_start = true; // of the conversion: converters forget what came before
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

} // namespace

text_input::text_input(std::string path, std::string encoding, const charset& set)
    : file_(std::move(path)), encoding_(std::move(encoding)), charset_(set), keeps_(!file_.can_rewind()) {}

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
    UErrorCode error = U_ZERO_ERROR;
    std::int32_t mark_length = 0;
    const char* const marked = ucnv_detectUnicodeSignature(first_bytes_.data(), static_cast<std::int32_t>(count), &mark_length, &error);
    first_bytes_.erase(0, marked == nullptr ? 0 : static_cast<std::size_t>(mark_length));
    const std::string encoding = marked == nullptr ? encoding_ : marked;
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
    return count;
}

std::size_t text_input::convert(char* to, std::size_t room) {
    text_conversion& state = *conversion_;
    char* target = to;
    while (target == to && !state.ended) {
        if (state.source_at == state.source.size() && !state.source_ended) {
            constexpr std::size_t source_size = std::size_t{64} * 1024;
            state.source.resize(source_size);
            state.source.resize(read_file(state.source.data(), source_size));
            state.source_at = 0;
            state.source_ended = state.source.empty();
        }
        const char* source = state.source.data() + state.source_at;
        UErrorCode error = U_ZERO_ERROR;
        ucnv_convertEx(state.to.get(), state.from.get(), &target, to + room, &source, state.source.data() + state.source.size(),
                       state.between.data(), &state.between_read, &state.between_written, state.between.data() + state.between.size(),
                       static_cast<UBool>(state.at_start), static_cast<UBool>(state.source_ended), &error);
        state.at_start = false;
        state.source_at = static_cast<std::size_t>(source - state.source.data());
        if (U_FAILURE(error) && error != U_BUFFER_OVERFLOW_ERROR) {
            const std::uint64_t line = state.lines + count_line_ends({to, static_cast<std::size_t>(target - to)}) + 1;
            fail("{}, line {}: bytes that are no {}, or a character that {} does not have; name the file's encoding with --encoding NAME",
                 file_.path(), line, state.from_name, charset_.name);
        }
        state.ended = state.source_ended && error != U_BUFFER_OVERFLOW_ERROR;
    }
    const auto count = static_cast<std::size_t>(target - to);
    state.lines += static_cast<std::uint64_t>(std::count(to, target, '\n'));
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
