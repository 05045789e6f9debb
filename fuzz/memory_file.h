// SPDX-License-Identifier: Apache-2.0
#ifndef BIFUN_FUZZ_MEMORY_FILE_H
#define BIFUN_FUZZ_MEMORY_FILE_H

#include <string>
#include <string_view>

#include <sys/mman.h>
#include <unistd.h>

#include "fuzz/require.h"

// A file without a name, for as long as the record lives.
struct memory_file {
    int descriptor;
    std::string path;

    explicit memory_file(std::string_view bytes)
        : descriptor(memfd_create("fuzzed.csv", 0)), path("/proc/self/fd/" + std::to_string(descriptor)) {
        require(write(descriptor, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
    }
    ~memory_file() { close(descriptor); }
    memory_file(const memory_file&) = delete;
    memory_file& operator=(const memory_file&) = delete;
};

#endif
