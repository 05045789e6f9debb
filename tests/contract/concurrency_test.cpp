// SPDX-License-Identifier: Apache-2.0
// The whole catalogue from several threads at once, each with an environment, a memory object and columns of its own. The build with the
// thread sanitizer is what finds the races; the others find wrong results.

#include <barrier>
#include <iterator>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/contract/called_export.h"
#include "tests/contract/domains.h"
#include "tests/contract/generated_arguments.h"

namespace contract {
namespace {

constexpr std::uint32_t row_count = 1500;
constexpr int thread_count = 4;
constexpr int rounds = 2;

// With arguments of its own.
outcome call_alone(const bifun::entry_point& entry, std::barrier<>* together = nullptr) {
    std::vector<zqengine::column_pointer> columns;
    std::vector<generated_constant> constants(entry.argument_count);
    std::vector<call_argument> arguments(entry.argument_count);
    for (std::size_t i = 0; i < entry.argument_count; ++i) {
        if (entry.argument_list[i].kind == bifun::argument_kind::column) {
            columns.push_back(sound_column(entry, i, row_count, 0.1, i));
            arguments[i].column = columns.back().get();
        } else {
            constants[i] = constant_of_row(*sound_column(entry, i, 1, 0, i + 1), 0);
            arguments[i].constant = &constants[i];
        }
    }
    if (together != nullptr) {
        together->arrive_and_wait();
    }
    return call(entry, arguments, row_count);
}

TEST(Concurrency, ThreadsDoNotSeeEachOther) {
    set_up(usual_settings); // CHR has no characters of UTF-8 in another character set
    std::vector<outcome> alone;
    for (const bifun::entry_point& entry : bifun::entry_points) {
        alone.push_back(call_alone(entry));
        ASSERT_EQ(alone.back().status, 0) << entry.symbol;
    }
    // In the first round all threads call the same function at the same time, later ones each another.
    std::barrier together(thread_count);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < thread_count; ++thread) {
        threads.emplace_back([&, thread] {
            const std::size_t count = std::size(bifun::entry_points);
            for (std::size_t step = 0; step < rounds * count; ++step) {
                const std::size_t apart = step / count * static_cast<std::size_t>(thread) * 7;
                const std::size_t number = (step + apart) % count;
                const bifun::entry_point& entry = bifun::entry_points[number];
                const outcome outcome = call_alone(entry, &together);
                // RAND takes the process-wide generator without a lock: another thread may have seeded it in between. Where a NULL stands
                // for now, the clock has gone on.
                const bool may_change = entry.builtin == "RAND" || bifun::null_rule_of(entry) == bifun::null_rule::defaulted;
                EXPECT_TRUE(may_change || same_outcome(outcome, alone[number])) << entry.symbol;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

} // namespace
} // namespace contract
