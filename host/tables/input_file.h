// SPDX-License-Identifier: Apache-2.0
// The bytes of a file, a pipe or the standard input, unpacked where they are packed.
#ifndef BIFUN_HOST_TABLES_INPUT_FILE_H
#define BIFUN_HOST_TABLES_INPUT_FILE_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace host {

// A file cannot be opened: `error` is as in errno.
[[noreturn]] void fail_opening(const std::string& path, int error);

// What files that are packed begin with tells how: gzip or Zstandard, in one piece or several behind each other.
struct packed_stream;

// All errors are program_error with the file's name.
class input_file {
  public:
    // "-" is the standard input. Where it is a file, it stands at its start again when this goes.
    explicit input_file(std::string path);
    ~input_file();
    input_file(const input_file&) = delete;
    input_file& operator=(const input_file&) = delete;

    // Reads at least one byte and at most `room`; 0 at the end.
    std::size_t read(char* to, std::size_t room);

    // Whether the file can be read more than once, unlike a pipe.
    [[nodiscard]] bool can_rewind() const { return can_rewind_; }
    void rewind();

    [[nodiscard]] const std::string& path() const { return path_; } // as errors name it
    [[nodiscard]] std::uint64_t bytes_read() const { return bytes_read_; }
    [[nodiscard]] std::uint64_t size() const { return size_; } // 0 where it is not known

  private:
    std::size_t read_raw(char* to, std::size_t room);
    bool refill_packed();
    std::size_t unpack_gzip(char* to, std::size_t room);
    std::size_t unpack_zstandard(char* to, std::size_t room);
    [[noreturn]] void fail_unpacking(std::string_view format, std::string_view reason);

    std::string path_;
    int file_ = -1;
    bool is_standard_;
    bool can_rewind_ = false;
    std::int64_t start_ = 0; // where reading begins: of the standard input, others may have read some
    std::uint64_t size_ = 0;
    std::uint64_t bytes_read_ = 0;

    bool begun_ = false;
    std::vector<char> packed_; // read and not unpacked, or, of a file that is not packed, its first bytes
    std::size_t packed_at_ = 0;
    std::unique_ptr<packed_stream> stream_; // null where the file is not packed
};

} // namespace host

#endif
