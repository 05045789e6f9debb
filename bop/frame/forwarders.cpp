// SPDX-License-Identifier: Apache-2.0
// The exported entry points: each calls its like of the best instruction set that the processor has. The first call chooses, once for the
// process.
//
// BIFUN_INSTRUCTION_SET, such as x86-64 or x86-64-v3, in the environment asks for less than the processor has: tests run every instruction
// set on one machine, and benchmarks compare them.

#include <atomic>
#include <cstdlib>
#include <cstring>

#include "bop/frame/instruction_sets.h"

#define INSTRUCTION_SET(name, description)                                                                                                 \
    namespace name {                                                                                                                       \
    extern const bifun_instruction_sets::entry_table entry_table;                                                                          \
    }
BIFUN_INSTRUCTION_SETS
#undef INSTRUCTION_SET

namespace bifun_instruction_sets {
namespace {

struct instruction_set {
    const char* name;
    const entry_table* entries;
};

// From the least on.
constexpr instruction_set compiled[] = {
#define INSTRUCTION_SET(name, description) {description, &name::entry_table},
    BIFUN_INSTRUCTION_SETS
#undef INSTRUCTION_SET
};
constexpr std::size_t compiled_count = sizeof compiled / sizeof *compiled;

// How many of them the processor has. It has all of a level where it has these: the others came earlier.
std::size_t usable_count() {
#if defined(__x86_64__)
    const bool v3 = __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("bmi") != 0 && __builtin_cpu_supports("bmi2") != 0 &&
                    __builtin_cpu_supports("fma") != 0;
    const bool v4 = v3 && __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512bw") != 0 &&
                    __builtin_cpu_supports("avx512cd") != 0 && __builtin_cpu_supports("avx512dq") != 0 &&
                    __builtin_cpu_supports("avx512vl") != 0;
    const std::size_t count = v4 ? 3 : v3 ? 2 : 1;
    return count < compiled_count ? count : compiled_count;
#else
    return 1;
#endif
}

const entry_table* choose() {
    const std::size_t usable = usable_count();
    const char* const wanted = std::getenv("BIFUN_INSTRUCTION_SET");
    for (std::size_t i = 0; wanted != nullptr && i < usable; ++i) {
        if (std::strcmp(compiled[i].name, wanted) == 0) {
            return compiled[i].entries;
        }
    }
    return compiled[usable - 1].entries;
}

// Stands for every entry point until the first call.
template <auto entry> struct first_call;
template <class... Arguments, std::int32_t (*entry_table::*entry)(Arguments...)> struct first_call<entry> {
    static std::int32_t call(Arguments... arguments);
};

constexpr entry_table undecided = {
#define EXPORT(symbol, builtin, result, ...) first_call<&entry_table::symbol>::call,
#include "bop/exports.def"
};

// All threads choose alike, so it does not matter which of them is first.
constinit std::atomic<const entry_table*> chosen = &undecided;

const entry_table& entries() { return *chosen.load(std::memory_order_relaxed); }

template <class... Arguments, std::int32_t (*entry_table::*entry)(Arguments...)>
std::int32_t first_call<entry>::call(Arguments... arguments) {
    const entry_table* const choice = choose();
    chosen.store(choice, std::memory_order_relaxed);
    return (choice->*entry)(arguments...);
}

} // namespace

void choose_again() { chosen.store(&undecided, std::memory_order_relaxed); }

} // namespace bifun_instruction_sets

// The names of the arguments, of which there are 1 to 5.
#define COUNT(...) COUNT_OF(__VA_ARGS__, 5, 4, 3, 2, 1, 0)
#define COUNT_OF(a, b, c, d, e, count, ...) count
#define CONCATENATE(a, b) CONCATENATE_EXPANDED(a, b)
#define CONCATENATE_EXPANDED(a, b) a##b
#define NAMES_1 a
#define NAMES_2 a, b
#define NAMES_3 a, b, c
#define NAMES_4 a, b, c, d
#define NAMES_5 a, b, c, d, e
#define PARAMETERS_1(A) A a
#define PARAMETERS_2(A, B) A a, B b
#define PARAMETERS_3(A, B, C) A a, B b, C c
#define PARAMETERS_4(A, B, C, D) A a, B b, C c, D d
#define PARAMETERS_5(A, B, C, D, E) A a, B b, C c, D d, E e

#define COLUMN(type) const bifun_column*
#define CONSTANT(type) const BIFUN_CONSTANT_##type*
#define EXPORT(symbol, builtin, result_type, ...)                                                                                          \
    std::int32_t symbol(bifun_environment* environment, bifun_memory_object* memory,                                                       \
                        CONCATENATE(PARAMETERS_, COUNT(__VA_ARGS__))(__VA_ARGS__), bifun_column* result, std::uint32_t row_count) {        \
        return bifun_instruction_sets::entries().symbol(environment, memory, CONCATENATE(NAMES_, COUNT(__VA_ARGS__)), result, row_count);  \
    }
#include "bop/exports.def"
