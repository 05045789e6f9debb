// SPDX-License-Identifier: Apache-2.0
#include "embedded/large_objects/large_object.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "bop/frame/status.h"
#include "embedded/memory/allocation.h"
#include "engine/large_objects.h"

namespace {

using bytes = std::vector<std::uint8_t>;
using zqengine::large_object_pointer;

bytes some_bytes(std::size_t size, std::uint32_t seed) {
    std::mt19937 random(seed); // NOLINT(cert-msc51-cpp): every run is the same
    bytes made(size);
    std::ranges::generate(made, [&] { return static_cast<std::uint8_t>(random()); });
    return made;
}

class LargeObjects : public testing::Test {
  protected:
    void TearDown() override {
        zqengine::fail_step(0);
        store.reset();
        EXPECT_EQ(zqengine::live_bytes(), live_before);
    }
    large_object_pointer create() { return large_object_pointer(zqengine::create_large_object(*store)); }
    static std::int32_t append(const large_object_pointer& object, const bytes& chunk) {
        return zqengine::append_to_large_object(*object, chunk.data(), chunk.size());
    }
    static bytes read(const large_object_pointer& object, std::int64_t offset, std::size_t size) {
        bytes buffer(size);
        std::size_t count = 7;
        EXPECT_EQ(zqengine::read_large_object(*object, offset, buffer.data(), size, &count), 0);
        buffer.resize(count);
        return buffer;
    }
    static std::int64_t length(const large_object_pointer& object) {
        std::int64_t length = -7;
        EXPECT_EQ(nblob_get_length(nullptr, object.get(), &length), 0);
        return length;
    }
    [[nodiscard]] off_t file_size() const { return lseek(store->file.descriptor, 0, SEEK_END); }

    std::int64_t live_before = zqengine::live_bytes();
    zqengine::large_object_store_pointer store{zqengine::create_large_object_store()};
};

// In memory, at its end, and across blocks of the file; several objects grow in turn and read back what they are given.
TEST_F(LargeObjects, HoldWhatIsAppended) {
    const std::vector<std::size_t> chunks[] = {{0}, {1, 4095, 0}, {4096, 1}, {5000}, {100, 65436, 1, 131071}, {65537, 65535, 200000}};
    std::vector<large_object_pointer> objects;
    std::vector<bytes> contents(std::size(chunks));
    for (int round = 0; round < 2; ++round) { // the second time in blocks that have been given back
        objects.clear();
        EXPECT_TRUE(round == 0 || file_size() == 0) << "a file of free blocks keeps its bytes";
        for (std::size_t i = 0; i < std::size(chunks); ++i) {
            objects.push_back(create());
            contents[i].clear();
        }
        for (std::size_t step = 0; step < 4; ++step) {
            for (std::size_t i = 0; i < std::size(chunks); ++i) {
                if (step < chunks[i].size()) {
                    const bytes chunk = some_bytes(chunks[i][step], static_cast<std::uint32_t>(10 * i + step));
                    ASSERT_EQ(append(objects[i], chunk), 0);
                    contents[i].insert(contents[i].end(), chunk.begin(), chunk.end());
                }
            }
        }
        for (std::size_t i = 0; i < std::size(chunks); ++i) {
            const auto size = static_cast<std::ptrdiff_t>(contents[i].size());
            ASSERT_EQ(length(objects[i]), size);
            for (const std::ptrdiff_t offset : {0, 1, 4095, 4096, 65535, 65536, 131072}) {
                const auto begin = contents[i].begin() + std::min(offset, size);
                EXPECT_EQ(read(objects[i], offset, 400000), bytes(begin, contents[i].end())) << i << " from " << offset;
                EXPECT_EQ(read(objects[i], offset, 3), bytes(begin, begin + std::min<std::ptrdiff_t>(3, contents[i].end() - begin)));
            }
            std::size_t count = 7;
            EXPECT_EQ(zqengine::read_large_object(*objects[i], -1, nullptr, 1, &count), BIFUN_ARGUMENT_OUT_OF_DOMAIN);
            EXPECT_EQ(count, 0U);
        }
        objects[3].reset(); // the last one grows into the place of another
        ASSERT_EQ(append(objects[5], some_bytes(100000, 1)), 0);
        EXPECT_EQ(read(objects[4], 0, 400000), contents[4]);
    }
}

// The resident set is counted in KiB.
TEST_F(LargeObjects, OfHundredsOfMebibytesAreNotInMemory) {
    constexpr std::size_t chunk_size = (std::size_t{1} << 20) - 7;
    constexpr std::size_t chunks = 300;
    rusage before{};
    rusage after{};
    bytes chunk = some_bytes(chunk_size, 1);
    bytes found(chunk_size);
    const large_object_pointer object = create();
    getrusage(RUSAGE_SELF, &before);
    for (std::size_t i = 0; i < chunks; ++i) {
        chunk[0] = chunk[chunk_size - 1] = static_cast<std::uint8_t>(i);
        ASSERT_EQ(append(object, chunk), 0);
    }
    EXPECT_EQ(length(object), std::int64_t{chunks} * chunk_size);
    for (std::size_t i = 0; i < chunks; ++i) {
        const auto offset = static_cast<std::int64_t>(i * chunk_size);
        chunk[0] = chunk[chunk_size - 1] = static_cast<std::uint8_t>(i);
        std::size_t count = 0;
        ASSERT_EQ(zqengine::read_large_object(*object, offset, found.data(), chunk_size, &count), 0);
        ASSERT_EQ(found, chunk) << i;
        EXPECT_TRUE(i == 0 || read(object, offset - 1, 2) == bytes({static_cast<std::uint8_t>(i - 1), static_cast<std::uint8_t>(i)}));
    }
    getrusage(RUSAGE_SELF, &after);
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 16 << 10);
    EXPECT_LT(zqengine::live_bytes() - live_before, 128 << 10);
}

TEST_F(LargeObjects, TakeOneFileDescriptorForAll) {
    const int lowest_free = open("/dev/null", O_RDONLY | O_CLOEXEC);
    std::vector<large_object_pointer> objects(2000);
    for (large_object_pointer& object : objects) {
        object = create();
        ASSERT_EQ(append(object, bytes(5000)), 0);
    }
    const int next_free = open("/dev/null", O_RDONLY | O_CLOEXEC);
    EXPECT_EQ(next_free, lowest_free + 2);
    close(lowest_free);
    close(next_free);
}

// Whatever fails, the object is as it was, and goes on when there is room again.
TEST_F(LargeObjects, AreAsTheyWereWhenWritingFails) {
    (void)std::signal(SIGXFSZ, SIG_IGN);
    rlimit usual{};
    getrlimit(RLIMIT_FSIZE, &usual);
    for (const std::size_t first : {100U, 70000U, 65536U}) { // in memory, in a block, at the end of one
        const large_object_pointer object = create();
        bytes content = some_bytes(first, 1);
        const bytes more = some_bytes(150000, 2);
        ASSERT_EQ(append(object, content), 0);
        const rlimit low = {100000, usual.rlim_max};
        setrlimit(RLIMIT_FSIZE, &low);
        const std::int32_t status = append(object, more);
        setrlimit(RLIMIT_FSIZE, &usual);
        EXPECT_EQ(status, zqengine::spool_failure);
        EXPECT_EQ(length(object), static_cast<std::int64_t>(first));
        EXPECT_EQ(read(object, 0, first), content);
        ASSERT_EQ(append(object, more), 0);
        content.insert(content.end(), more.begin(), more.end());
        EXPECT_EQ(read(object, 0, content.size()), content);
        ASSERT_EQ(ftruncate(store->file.descriptor, 10), 0); // somebody else's doing
        bytes buffer(content.size());
        std::size_t count = 7;
        EXPECT_EQ(zqengine::read_large_object(*object, 0, buffer.data(), buffer.size(), &count), zqengine::spool_failure);
        EXPECT_EQ(count, 0U);
    }
    const large_object_pointer object = create();
    zqengine::fail_step(1);
    EXPECT_EQ(append(object, bytes(1)), BIFUN_OUT_OF_MEMORY);
    EXPECT_EQ(length(object), 0);
    zqengine::fail_step(1);
    EXPECT_EQ(create(), nullptr);
    zqengine::fail_step(1);
    EXPECT_EQ(zqengine::create_large_object_store(), nullptr);
}

// Nothing is left in the directory, and nothing is written to where there is none.
TEST_F(LargeObjects, LieInTheDirectoryForTemporaryFiles) {
    const std::filesystem::path directory = std::filesystem::path(testing::TempDir()) / ("large_objects_" + std::to_string(getpid()));
    const char* const usual = std::getenv("TMPDIR");
    const std::string saved = usual == nullptr ? "" : usual;
    setenv("TMPDIR", directory.c_str(), 1);
    const large_object_pointer object = create();
    ASSERT_EQ(append(object, bytes(4000)), 0);
    EXPECT_EQ(append(object, bytes(4000)), zqengine::spool_failure);
    EXPECT_EQ(length(object), 4000);
    std::filesystem::create_directory(directory);
    EXPECT_EQ(append(object, bytes(4000)), 0);
    EXPECT_TRUE(std::filesystem::is_empty(directory));
    const std::string link = "/proc/self/fd/" + std::to_string(store->file.descriptor);
    EXPECT_TRUE(std::filesystem::read_symlink(link).string().starts_with(directory.string()));
    std::filesystem::remove(directory);
    saved.empty() ? unsetenv("TMPDIR") : setenv("TMPDIR", saved.c_str(), 1);
}

} // namespace
