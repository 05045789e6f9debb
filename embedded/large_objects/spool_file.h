// SPDX-License-Identifier: Apache-2.0
// A temporary file in blocks of one size, which are given out, given back and given out again.
#ifndef BIFUN_EMBEDDED_LARGE_OBJECTS_SPOOL_FILE_H
#define BIFUN_EMBEDDED_LARGE_OBJECTS_SPOOL_FILE_H

#include <cstddef>
#include <cstdint>

namespace zqengine {

inline constexpr std::uint32_t spool_block_size = 1U << 16;

// A file failed: it cannot be made, written or read, or it has no room any more.
inline constexpr std::int32_t spool_failure = -7113;

// Numbers of blocks in memory of their own. Begin with all members zero; release_numbers leaves it so.
struct block_numbers {
    std::uint32_t* numbers;
    std::uint32_t count;
    std::uint32_t capacity;
};
void release_numbers(block_numbers& blocks);

// Begin with this. The file lies in the directory that TMPDIR names, else in /tmp, and has no name any more once it is there: nothing is
// left of it when the process ends, however it does.
struct spool_file {
    int descriptor = -1;          // of a file that is made for the first block
    std::uint32_t blocks = 0;     // that the file has
    block_numbers free_ones = {}; // of these, with room for all of them
};
void close_spool_file(spool_file& file);

// Adds blocks until there are `count`, whose bytes may be anything. Returns 0; -503 or spool_failure, and then none has been added.
[[nodiscard]] std::int32_t take_blocks(spool_file& file, block_numbers& blocks, std::uint32_t count);

// Gives all but the first `kept` ones back. The file loses its bytes when it has only blocks that are free.
void give_back_blocks(spool_file& file, block_numbers& blocks, std::uint32_t kept);

// `size` bytes of the text that lies in these blocks, one behind the other, from `offset` on; all must lie in them, and those that are read
// must have been written. Return 0 or spool_failure: then a part may have been written. Several threads may read at once.
[[nodiscard]] std::int32_t write_spooled(const spool_file& file, const block_numbers& blocks, std::uint64_t offset,
                                         const std::uint8_t* bytes, std::size_t size);
[[nodiscard]] std::int32_t read_spooled(const spool_file& file, const block_numbers& blocks, std::uint64_t offset, std::uint8_t* bytes,
                                        std::size_t size);

} // namespace zqengine

#endif
