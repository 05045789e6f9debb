// What every entry point is given besides its SQL arguments, and how an entry point is written:
//
//     VECTORISED status bmod_av_do_math_int64(BATCH_OF(column x, bigint_constant y)) { return set_rows<...>(BATCH, bigint(x), bigint(y)); }
//
// The prototype comes from bop/exports.def, so a signature that differs from the catalogue does not compile.
#ifndef BIFUN_FRAME_BATCH_H
#define BIFUN_FRAME_BATCH_H

#include <cstdint>
#include <cstring>

#include "bop/bifun.h"

namespace bifun {

using status = std::int32_t;

using column = const bifun_column*;
using int_constant = const bifun_int_constant*;
using bigint_constant = const bifun_bigint_constant*;
using double_constant = const bifun_double_constant*;
using decimal_constant = const bifun_decimal_constant*;
using datetime_constant = const bifun_datetime_constant*;
using string_constant = const bifun_string_constant*;
using interval_ym_constant = const bifun_interval_ym_constant*;
using interval_dt_constant = const bifun_interval_dt_constant*;

struct batch {
    bifun_environment* environment;
    bifun_memory_object* memory;
    bifun_column* result;
    std::uint32_t row_count;
};

#define BATCH_OF(...)                                                                                                                      \
    bifun_environment *environment, bifun_memory_object *memory, __VA_ARGS__, bifun_column *result, std::uint32_t row_count

#define BATCH                                                                                                                              \
    ::bifun::batch { environment, memory, result, row_count }

// Entry points whose loops vectorise are compiled for three instruction sets; the loader picks one. Everything between an entry point
// and its loop must then be inlined into it, since a function of its own would be compiled for the baseline only. Clang 14 gives such a
// function the wrong symbol, and sanitizers cannot run in the loader.
#if defined(__GNUC__) && !defined(__clang__) && !defined(BIFUN_SANITIZED)
#define VECTORISED __attribute__((target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")))
#else
#define VECTORISED
#endif
#define INLINED __attribute__((always_inline))

// For the few loops whose best form differs with the instruction set: how their function is compiled, and whether it may be called.
// Only 512-bit vectors convert between 64-bit integers and doubles, and load as many bytes as a text has. Sanitizer builds take the other
// way, so that both are tested on a machine that has them.
#if defined(__x86_64__) && !defined(BIFUN_SANITIZED)
#define WITH_FMA __attribute__((target("avx2,fma")))
#define WITH_AVX512 __attribute__((target("avx512f,avx512dq,avx512vl,avx512bw,bmi,bmi2")))
inline bool has_fma() { return __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("fma") != 0; }
inline bool has_avx512() {
    return __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512dq") != 0 && __builtin_cpu_supports("avx512vl") != 0 &&
           __builtin_cpu_supports("avx512bw") != 0 && __builtin_cpu_supports("bmi") != 0 && __builtin_cpu_supports("bmi2") != 0;
}
#else
#define WITH_FMA
#define WITH_AVX512
inline bool has_fma() { return false; }
inline bool has_avx512() { return false; }
#endif

// What the failing row holds when a batch stops. The rows after it are never written.
enum class failing_row : std::uint8_t { unwritten, zero, null };

inline std::uint8_t* null_flags(const batch& batch) { return batch.result->data->null_flags; }

template <class T> T* values(const batch& batch) { return static_cast<T*>(batch.result->data->values); }

// The result of a NULL constant that makes every row NULL.
inline status null_rows(const batch& batch) {
    if (batch.row_count > 0) {
        std::memset(null_flags(batch), 0, batch.row_count);
    }
    batch.result->no_nulls = 0;
    return BIFUN_OK;
}

// The result of a constant that is wrong: nothing is written but the flags.
inline status fail_batch(const batch& batch, status failure) {
    (void)null_rows(batch);
    return failure;
}

} // namespace bifun

#endif
