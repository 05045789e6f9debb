// ABS, CEIL, FLOOR and MOD of integers.

#include <limits>

#include "bop/frame/row_loop.h"

namespace bifun {
namespace {

status check_magnitude(std::int64_t x) { return x == std::numeric_limits<std::int64_t>::min() ? BIFUN_NUMERIC_OVERFLOW : BIFUN_OK; }

// In unsigned arithmetic, so that it is defined for the one value without a magnitude too.
std::int64_t magnitude(std::int64_t x) {
    const auto sign = static_cast<std::uint64_t>(x >> 63);
    return static_cast<std::int64_t>((static_cast<std::uint64_t>(x) ^ sign) - sign);
}

// An integer is its own ceiling and floor.
std::int32_t whole_integer(std::int32_t x) { return x; }
std::int64_t whole_bigint(std::int64_t x) { return x; }

// The remainder has the sign of x. Dividing the smallest BIGINT by -1 would trap.
std::int64_t remainder(std::int64_t x, std::int64_t y) {
    if (y == 0) {
        return x;
    }
    return y == -1 ? 0 : x % y;
}

} // namespace
} // namespace bifun

using namespace bifun;

VECTORISED status babs_a_math_int(BATCH_OF(column x)) { return set_rows<rows::all, magnitude, check_magnitude>(BATCH, bigint(x)); }

VECTORISED status bceil_a_math_int(BATCH_OF(column x)) { return set_rows<rows::all, whole_integer>(BATCH, integer(x)); }
VECTORISED status bfloor_a_math_int(BATCH_OF(column x)) { return set_rows<rows::all, whole_integer>(BATCH, integer(x)); }
VECTORISED status bceil_a_math_int64(BATCH_OF(column x)) { return set_rows<rows::all, whole_bigint>(BATCH, bigint(x)); }

status bceil_a_process_int64(bifun_environment* environment, bifun_memory_object* memory, std::int64_t value, std::uint32_t row,
                             bifun_column* result) {
    set_value({environment, memory, result, 1}, row, whole_bigint(value));
    return BIFUN_OK;
}

VECTORISED status bmod_va_do_math_int64(BATCH_OF(bigint_constant x, column y)) {
    return set_rows<rows::all, remainder>(BATCH, bigint(x), bigint(y));
}
VECTORISED status bmod_av_do_math_int64(BATCH_OF(column x, bigint_constant y)) {
    return set_rows<rows::all, remainder>(BATCH, bigint(x), bigint(y));
}
VECTORISED status bmod_aa_math_int64(BATCH_OF(column x, column y)) { return set_rows<rows::all, remainder>(BATCH, bigint(x), bigint(y)); }
