// SPDX-License-Identifier: Apache-2.0
#include "host/tables/csv_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <unordered_set>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/program_error.h"

namespace host {
namespace {

constexpr std::size_t buffer_size = std::size_t{256} * 1024;
// A row beyond this is a quote that somebody forgot to close.
constexpr std::size_t longest_row = std::size_t{64} * 1024 * 1024;

} // namespace

csv_reader::csv_reader(std::string path) : path_(std::move(path)), buffer_(buffer_size) {
    file_ = open(path_.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat status {};
    if (file_ < 0 || fstat(file_, &status) != 0) {
        fail("{}: {}; check the file's name and that you may read it", path_, std::strerror(errno));
    }
    if (S_ISDIR(status.st_mode)) {
        close(file_);
        fail("{}: this is a directory; give a CSV file", path_);
    }
    can_rewind_ = S_ISREG(status.st_mode);
    file_size_ = can_rewind_ ? static_cast<std::uint64_t>(status.st_size) : 0;
    try {
        begin();
    } catch (...) {
        close(file_);
        if (parser_ready_) {
            csv_free(&parser_);
        }
        throw;
    }
}

csv_reader::~csv_reader() {
    close(file_);
    csv_free(&parser_);
}

void csv_reader::begin() {
    if (csv_init(&parser_, CSV_STRICT | CSV_STRICT_FINI | CSV_EMPTY_IS_NULL) != 0) {
        fail("out of memory");
    }
    parser_ready_ = true;
    csv_set_space_func(&parser_, [](unsigned char) { return 0; }); // blanks are part of a field
    csv_set_blk_size(&parser_, std::size_t{64} * 1024);
    constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
    while (filled_ < byte_order_mark.size() && refill()) {
    }
    if (std::string_view(buffer_.data(), filled_).starts_with(byte_order_mark)) {
        position_ = byte_order_mark.size();
    }
    if (header_.empty()) {
        check_header();
    } else {
        read_fields();
    }
    row_number_ = 0;
}

void csv_reader::rewind() {
    if (lseek(file_, 0, SEEK_SET) != 0) {
        fail("{}: {}", path_, std::strerror(errno));
    }
    csv_free(&parser_);
    parser_ready_ = false;
    position_ = filled_ = 0;
    bytes_read_ = lines_ = 0;
    at_end_ = after_carriage_return_ = false;
    begin();
}

void csv_reader::check_header() {
    if (!read_fields()) {
        fail("{}: the file is empty; its first line must name the columns", path_);
    }
    std::unordered_set<std::string_view> seen;
    for (std::size_t i = 0; i < fields_.size(); ++i) {
        const csv_field& field = fields_[i];
        if (field.text.empty()) {
            fail_in_line(row_line_, fmt::format("column {} has no name; every column needs one in the header", i + 1));
        }
        if (!seen.insert(field.text).second) {
            fail_in_line(row_line_, fmt::format("two columns are named {}; every column needs a name of its own", field.text));
        }
        header_.emplace_back(field.text);
    }
}

void csv_reader::fail_in_line(std::uint64_t line, std::string_view message) const { fail("{}, line {}: {}", path_, line, message); }

bool csv_reader::next_row() {
    if (!read_fields()) {
        return false;
    }
    if (fields_.size() != header_.size()) {
        fail_in_line(row_line_, fmt::format("the header has {} field{} and this row {}; a field that holds a comma stands in double quotes",
                                            header_.size(), header_.size() == 1 ? "" : "s", fields_.size()));
    }
    ++row_number_;
    return true;
}

// Appends to the buffer, from its beginning when all of it is parsed; false at the end of the file.
bool csv_reader::refill() {
    if (position_ == filled_) {
        position_ = filled_ = 0;
    }
    ssize_t count = 0;
    do {
        count = read(file_, buffer_.data() + filled_, buffer_.size() - filled_);
    } while (count < 0 && errno == EINTR);
    if (count < 0) {
        fail("{}: {}", path_, std::strerror(errno));
    }
    filled_ += static_cast<std::size_t>(count);
    bytes_read_ += static_cast<std::uint64_t>(count);
    return count > 0;
}

void csv_reader::on_field(void* bytes, std::size_t length, void* reader) {
    csv_reader& self = *static_cast<csv_reader*>(reader);
    self.fields_.push_back({.text = {}, .is_null = bytes == nullptr});
    self.row_bytes_.append(static_cast<const char*>(bytes), bytes == nullptr ? 0 : length);
    self.field_ends_.push_back(self.row_bytes_.size());
}

void csv_reader::on_row(int, void* reader) { static_cast<csv_reader*>(reader)->row_ended_ = true; }

bool csv_reader::read_fields() {
    fields_.clear();
    field_ends_.clear();
    row_bytes_.clear();
    row_size_ = 0;
    row_ended_ = false;
    while (!row_ended_) {
        if (position_ == filled_ && (at_end_ || !refill())) {
            finish_last_row();
            if (!row_ended_) {
                return false;
            }
            break;
        }
        if (!take_segment()) { // a blank line
            fields_.push_back({.text = {}, .is_null = true});
            return true;
        }
    }
    std::size_t begin = 0;
    for (std::size_t i = 0; i < fields_.size(); ++i) {
        fields_[i].text = std::string_view(row_bytes_).substr(begin, field_ends_[i] - begin);
        begin = field_ends_[i];
    }
    return true;
}

// Parses up to the end of the line or of the buffer, so that the parser never goes beyond the row in hand. Returns false for a blank
// line that counts as a row.
bool csv_reader::take_segment() {
    const char* const begin = buffer_.data() + position_;
    const std::size_t available = filled_ - position_;
    const auto* const feed = static_cast<const char*>(std::memchr(begin, '\n', available));
    std::size_t length = feed == nullptr ? available : static_cast<std::size_t>(feed - begin) + 1;
    bool ends_line = feed != nullptr;
    const auto* const carriage_return = static_cast<const char*>(std::memchr(begin, '\r', length));
    if (carriage_return != nullptr && carriage_return + 1 != feed) {
        length = static_cast<std::size_t>(carriage_return - begin) + 1;
        ends_line = true;
    }
    const bool second_half = after_carriage_return_ && begin[0] == '\n'; // CR LF across two segments
    const bool blank = row_size_ == 0 && (begin[0] == '\n' || begin[0] == '\r');
    if (row_size_ == 0 && !blank) {
        row_line_ = lines_ + 1;
    }
    if (!blank) {
        const std::size_t parsed = csv_parse(&parser_, begin, length, on_field, on_row, this);
        if (parsed != length) {
            if (csv_error(&parser_) != CSV_EPARSE) {
                fail("{}: {}", path_, csv_strerror(csv_error(&parser_)));
            }
            fail_in_line(lines_ + 1, "a quote stands inside a field, or text behind a closing quote; write a field with quotes as "
                                     "\"...\" with each quote inside doubled");
        }
        row_size_ += length;
        if (row_size_ > longest_row) {
            fail_in_line(row_line_, "the row that begins here is longer than 64 MiB; is a closing quote missing?");
        }
    }
    position_ += length;
    lines_ += ends_line && !second_half ? 1 : 0;
    after_carriage_return_ = begin[length - 1] == '\r';
    return !(blank && !second_half && header_.size() == 1);
}

void csv_reader::finish_last_row() {
    if (at_end_) {
        return;
    }
    at_end_ = true;
    if (csv_fini(&parser_, on_field, on_row, this) != 0) {
        fail_in_line(row_line_, "the row that begins here has a quote that is never closed");
    }
}

} // namespace host
