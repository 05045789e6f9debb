// SPDX-License-Identifier: Apache-2.0
#include "host/output/output_file.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/program_error.h"

namespace host {
namespace {

constexpr int ending_signals[] = {SIGINT, SIGTERM, SIGHUP};

// Of the temporary file there is, for the signal handler; null where there is none.
const char* volatile removed_at_signal = nullptr;

void remove_and_end(int signal) {
    const char* const path = removed_at_signal;
    if (path != nullptr) {
        unlink(path);
    }
    static_cast<void>(std::signal(signal, SIG_DFL));
    static_cast<void>(std::raise(signal));
}

[[noreturn]] void fail_writing(const std::string& path) { fail("{} cannot be written: {}", path, std::strerror(errno)); }

} // namespace

output_file::output_file(std::string path) : path_(std::move(path)) {
    struct stat status {};
    const bool exists = stat(path_.c_str(), &status) == 0;
    if (exists && !S_ISREG(status.st_mode)) {
        file_ = open(path_.c_str(), O_WRONLY | O_CLOEXEC);
        if (file_ < 0) {
            fail_writing(path_);
        }
        return;
    }
    if (exists && access(path_.c_str(), W_OK) != 0) {
        fail_writing(path_);
    }
    // A link stays one.
    std::error_code unreadable;
    const std::filesystem::path target = std::filesystem::canonical(path_, unreadable);
    path_ = unreadable ? path_ : target.string();
    temporary_ = path_ + ".XXXXXX";
    file_ = mkostemp(temporary_.data(), O_CLOEXEC);
    if (file_ < 0) {
        temporary_.clear();
        fail_writing(path_);
    }
    removed_at_signal = temporary_.c_str();
    for (const int signal : ending_signals) {
        // One that is ignored or does not end the program stays as it is.
        const auto before = std::signal(signal, remove_and_end);
        if (before != SIG_DFL) {
            static_cast<void>(std::signal(signal, before));
        }
    }
    const mode_t mask = umask(0);
    umask(mask);
    constexpr mode_t everybody = 0666;
    constexpr mode_t permissions = 0777;
    if (fchmod(file_, exists ? status.st_mode & permissions : everybody & ~mask) != 0) {
        const int error = errno;
        unlink(temporary_.c_str());
        close(file_);
        errno = error;
        fail_writing(path_);
    }
}

output_file::~output_file() {
    close(file_);
    if (!temporary_.empty()) {
        unlink(temporary_.c_str());
    }
    removed_at_signal = nullptr;
}

bool output_file::restart() { return !temporary_.empty() && ftruncate(file_, 0) == 0 && lseek(file_, 0, SEEK_SET) == 0; }

void output_file::commit() {
    if (temporary_.empty()) {
        return;
    }
    if (fsync(file_) != 0 || std::rename(temporary_.c_str(), path_.c_str()) != 0) {
        fail_writing(path_);
    }
    removed_at_signal = nullptr;
    temporary_.clear();
}

} // namespace host
