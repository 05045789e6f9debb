// SPDX-License-Identifier: Apache-2.0
#include "embedded/large_objects/spool_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "bop/frame/status.h"
#include "embedded/memory/allocation.h"

namespace zqengine {
namespace {

constexpr std::uint32_t most_blocks = UINT32_MAX / 2;

std::size_t bytes_of(std::uint32_t capacity) { return std::size_t{capacity} * sizeof(std::uint32_t); }

bool reserve(block_numbers& blocks, std::uint32_t count) {
    if (count <= blocks.capacity) {
        return true;
    }
    const std::uint32_t capacity = std::max({count, blocks.capacity * 2, 16U});
    auto* const numbers = static_cast<std::uint32_t*>(allocate(bytes_of(capacity)));
    if (numbers == nullptr) {
        return false;
    }
    std::copy_n(blocks.numbers, blocks.count, numbers);
    release(blocks.numbers, bytes_of(blocks.capacity));
    blocks.numbers = numbers;
    blocks.capacity = capacity;
    return true;
}

// -1 where it cannot be made.
int make_file() {
    const char* const directory = std::getenv("TMPDIR"); // NOLINT(concurrency-mt-unsafe): nobody changes the environment of an engine
    char name[4096];
    const int length =
        std::snprintf(name, sizeof name, "%s/bifun-XXXXXX", directory == nullptr || directory[0] == '\0' ? "/tmp" : directory);
    if (length < 0 || static_cast<std::size_t>(length) >= sizeof name) {
        return -1;
    }
    const int descriptor = mkostemp(name, O_CLOEXEC);
    if (descriptor >= 0) {
        (void)unlink(name); // a file that keeps its name serves as well
    }
    return descriptor;
}

// Calls `transfer` with the place in the file and the size of each piece that lies in one block, and the bytes before it. It returns as
// pwrite and pread do, and is called again for what it has left.
template <class Transfer>
std::int32_t for_each_piece(const block_numbers& blocks, std::uint64_t offset, std::size_t size, const Transfer& transfer) {
    for (std::size_t done = 0; done < size;) {
        const std::uint64_t at = offset + done;
        const std::uint64_t in_block = at % spool_block_size;
        const std::size_t piece = std::min<std::size_t>(size - done, spool_block_size - in_block);
        const auto place = static_cast<off_t>(blocks.numbers[at / spool_block_size] * std::uint64_t{spool_block_size} + in_block);
        const ssize_t moved = transfer(done, piece, place);
        if (moved > 0) {
            done += static_cast<std::size_t>(moved);
        } else if (moved == 0 || errno != EINTR) {
            return spool_failure;
        }
    }
    return BIFUN_OK;
}

} // namespace

void release_numbers(block_numbers& blocks) {
    release(blocks.numbers, bytes_of(blocks.capacity));
    blocks = {};
}

void close_spool_file(spool_file& file) {
    if (file.descriptor >= 0) {
        (void)close(file.descriptor); // nobody reads what may not have been written
    }
    release_numbers(file.free_ones);
    file = {};
}

std::int32_t take_blocks(spool_file& file, block_numbers& blocks, std::uint32_t count) {
    const std::uint32_t wanted = count - std::min(count, blocks.count);
    const std::uint32_t added = wanted - std::min(wanted, file.free_ones.count);
    if (file.descriptor < 0 && wanted != 0 && (file.descriptor = make_file()) < 0) {
        return spool_failure;
    }
    if (added > most_blocks - file.blocks) {
        return spool_failure;
    }
    if (!reserve(blocks, count) || !reserve(file.free_ones, file.blocks + added)) {
        return BIFUN_OUT_OF_MEMORY;
    }
    while (blocks.count < count) {
        block_numbers& free_ones = file.free_ones;
        blocks.numbers[blocks.count++] = free_ones.count != 0 ? free_ones.numbers[--free_ones.count] : file.blocks++;
    }
    return BIFUN_OK;
}

void give_back_blocks(spool_file& file, block_numbers& blocks, std::uint32_t kept) {
    while (blocks.count > kept) {
        file.free_ones.numbers[file.free_ones.count++] = blocks.numbers[--blocks.count];
    }
    if (file.blocks != 0 && file.free_ones.count == file.blocks && ftruncate(file.descriptor, 0) == 0) {
        file.blocks = file.free_ones.count = 0;
    }
}

std::int32_t write_spooled(const spool_file& file, const block_numbers& blocks, std::uint64_t offset, const std::uint8_t* bytes,
                           std::size_t size) {
    return for_each_piece(blocks, offset, size, [&](std::size_t done, std::size_t piece, off_t place) {
        return pwrite(file.descriptor, bytes + done, piece, place);
    });
}

std::int32_t read_spooled(const spool_file& file, const block_numbers& blocks, std::uint64_t offset, std::uint8_t* bytes,
                          std::size_t size) {
    return for_each_piece(blocks, offset, size, [&](std::size_t done, std::size_t piece, off_t place) {
        return pread(file.descriptor, bytes + done, piece, place);
    });
}

} // namespace zqengine
