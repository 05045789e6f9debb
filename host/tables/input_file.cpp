// SPDX-License-Identifier: Apache-2.0
#include "host/tables/input_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>
#include <zstd.h>

#include "host/program_error.h"
#include "host/session/interruption.h"
#include "host/tables/file_name.h"

namespace host {

struct packed_stream {
    bool is_gzip;
    bool in_piece = false; // a piece has begun that has not ended
    z_stream gzip{};
    ZSTD_DStream* zstandard = nullptr;

    explicit packed_stream(bool gzip_format) : is_gzip(gzip_format) {
        constexpr int window_of_gzip = 15 + 16; // the largest, in the wrapping of gzip
        if (is_gzip ? inflateInit2(&gzip, window_of_gzip) != Z_OK : (zstandard = ZSTD_createDStream()) == nullptr) {
            throw std::bad_alloc();
        }
    }
    ~packed_stream() {
        if (is_gzip) {
            inflateEnd(&gzip);
        }
        ZSTD_freeDStream(zstandard);
    }
    packed_stream(const packed_stream&) = delete;
    packed_stream& operator=(const packed_stream&) = delete;
};

namespace {

constexpr std::size_t packed_size = std::size_t{128} * 1024;
constexpr std::string_view gzip_mark("\x1F\x8B", 2);
constexpr std::string_view zstandard_mark("\x28\xB5\x2F\xFD", 4);

} // namespace

void fail_opening(const std::string& path, int error) {
    fail("{}: {}; check the file's name and that you may read it", path, std::strerror(error));
}

input_file::input_file(std::string path) : path_(std::move(path)), is_standard_(path_ == "-") {
    file_ = is_standard_ ? dup(STDIN_FILENO) : open(path_.c_str(), O_RDONLY | O_CLOEXEC);
    if (is_standard_) {
        path_ = standard_input_name;
    }
    struct stat status {};
    if (file_ < 0 || fstat(file_, &status) != 0) {
        const int error = errno;
        if (file_ >= 0) {
            close(file_);
        }
        fail_opening(path_, error);
    }
    if (S_ISDIR(status.st_mode)) {
        close(file_);
        fail("{}: this is a directory; give a CSV file", path_);
    }
    start_ = lseek(file_, 0, SEEK_CUR);
    can_rewind_ = S_ISREG(status.st_mode) && start_ >= 0;
    size_ = S_ISREG(status.st_mode) ? static_cast<std::uint64_t>(status.st_size) : 0;
}

input_file::~input_file() {
    if (is_standard_ && can_rewind_) {
        static_cast<void>(lseek(file_, start_, SEEK_SET));
    }
    close(file_);
}

void input_file::rewind() {
    if (lseek(file_, start_, SEEK_SET) != start_) {
        fail("{}: {}", path_, std::strerror(errno));
    }
    begun_ = false;
    bytes_read_ = 0;
    packed_.clear();
    packed_at_ = 0;
    stream_.reset();
}

std::size_t input_file::read_raw(char* to, std::size_t room) {
    ssize_t count = ::read(file_, to, room);
    while (count < 0 && errno == EINTR) {
        stop_if_interrupted();
        count = ::read(file_, to, room);
    }
    if (count < 0) {
        fail("{}: {}", path_, std::strerror(errno));
    }
    bytes_read_ += static_cast<std::uint64_t>(count);
    return static_cast<std::size_t>(count);
}

// Reads more where all is unpacked; false at the end.
bool input_file::refill_packed() {
    if (packed_at_ < packed_.size()) {
        return true;
    }
    packed_.resize(packed_size);
    packed_.resize(read_raw(packed_.data(), packed_size));
    packed_at_ = 0;
    return !packed_.empty();
}

std::size_t input_file::read(char* to, std::size_t room) {
    if (!begun_) {
        begun_ = true;
        packed_.resize(zstandard_mark.size());
        std::size_t count = 0;
        for (std::size_t more = 1; more > 0 && count < packed_.size(); count += more) {
            more = read_raw(packed_.data() + count, packed_.size() - count);
        }
        packed_.resize(count);
        const std::string_view first(packed_.data(), count);
        if (first.starts_with(gzip_mark) || first == zstandard_mark) {
            stream_ = std::make_unique<packed_stream>(first.starts_with(gzip_mark));
        }
    }
    if (stream_ != nullptr) {
        return stream_->is_gzip ? unpack_gzip(to, room) : unpack_zstandard(to, room);
    }
    if (packed_at_ < packed_.size()) {
        const std::size_t count = std::min(room, packed_.size() - packed_at_);
        std::memcpy(to, packed_.data() + packed_at_, count);
        packed_at_ += count;
        return count;
    }
    return read_raw(to, room);
}

void input_file::fail_unpacking(std::string_view format, std::string_view reason) {
    fail("{}: the {} data is damaged or cut off: {}", path_, format, reason);
}

std::size_t input_file::unpack_gzip(char* to, std::size_t room) {
    z_stream& stream = stream_->gzip;
    stream.next_out = reinterpret_cast<Bytef*>(to);
    stream.avail_out = static_cast<uInt>(std::min<std::size_t>(room, UINT32_MAX));
    const uInt all = stream.avail_out;
    while (stream.avail_out == all) {
        if (!refill_packed()) {
            if (stream_->in_piece) {
                fail_unpacking("gzip", "it ends too early");
            }
            return 0;
        }
        stream.next_in = reinterpret_cast<Bytef*>(packed_.data() + packed_at_);
        stream.avail_in = static_cast<uInt>(packed_.size() - packed_at_);
        stream_->in_piece = true;
        const int status = inflate(&stream, Z_NO_FLUSH);
        packed_at_ = packed_.size() - stream.avail_in;
        if (status == Z_STREAM_END) {
            stream_->in_piece = false;
            inflateReset(&stream);
        } else if (status != Z_OK) {
            fail_unpacking("gzip", stream.msg == nullptr ? "no memory is left" : stream.msg);
        }
    }
    return all - stream.avail_out;
}

std::size_t input_file::unpack_zstandard(char* to, std::size_t room) {
    ZSTD_outBuffer out{.dst = to, .size = room, .pos = 0};
    while (out.pos == 0) {
        // Of a piece that has not ended, something may still be on its way out.
        if (!refill_packed() && !stream_->in_piece) {
            return 0;
        }
        ZSTD_inBuffer in{.src = packed_.data(), .size = packed_.size(), .pos = packed_at_};
        const bool at_end = packed_.empty();
        const std::size_t status = ZSTD_decompressStream(stream_->zstandard, &out, &in);
        packed_at_ = in.pos;
        if (ZSTD_isError(status) != 0) {
            fail_unpacking("zstd", ZSTD_getErrorName(status));
        }
        stream_->in_piece = status != 0;
        if (at_end && out.pos == 0 && status != 0) {
            fail_unpacking("zstd", "it ends too early");
        }
    }
    return out.pos;
}

} // namespace host
