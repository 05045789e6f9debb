// SPDX-License-Identifier: Apache-2.0
// BITAND of the integer parts of two decimals, negative ones in two's complement over 128 bits. A decimal cannot be combined bit by bit, so
// it is taken apart into 32 hexadecimal digits, least significant first; values below 2^64 take a short way.

#include <array>

#include "bop/frame/row_loop.h"
#include "bop/numeric/entry_points.h"
#include "engine/decimal.h"

namespace bifun {
namespace {

using nibble_array = std::array<std::uint8_t, 32>;

constexpr std::uint32_t nibble_count = 32;
constexpr std::uint32_t group = 8; // nibbles that make a 32-bit number
constexpr int most_integer_digits = 38;

bool is_negative(std::uint8_t sign) { return sign == XDEC_NEGATIVE; }

// ---- between decimals and nibbles ----

// At least one nibble; the count is the result.
std::uint32_t bbitand_ulint64_get_hex(nibble_array& nibbles, std::uint64_t value, std::uint32_t from = 0) {
    std::uint32_t count = from;
    do {
        nibbles[count++] = static_cast<std::uint8_t>(value & 15);
        value >>= 4;
    } while (value != 0 && count < nibble_count);
    return count;
}

// The magnitude of an integer that is not negative.
status bbitand_dec_get_hex(nibble_array& nibbles, const xdec& value, std::uint32_t& count) {
    xdec rest = value;
    count = 0;
    while (xdec_in_ulint64(&rest) == 0) {
        std::int32_t nibble = 0;
        const status divided = xdec_div_get_quotient_int_by_16(&rest, &rest, &nibble);
        if (divided < BIFUN_OK) {
            return divided;
        }
        if (count == nibble_count) {
            return BIFUN_NUMERIC_OVERFLOW;
        }
        nibbles[count++] = static_cast<std::uint8_t>(nibble);
        if (rest.bytes[0] == XDEC_ZERO) {
            return BIFUN_OK;
        }
    }
    std::uint64_t last = 0;
    (void)xdec_get_ulint64(&rest, &last);
    count = bbitand_ulint64_get_hex(nibbles, last, count);
    return BIFUN_OK;
}

void bbitand_byte_complement(nibble_array& nibbles, std::uint32_t count) {
    for (std::uint32_t i = 0; i < nibble_count; ++i) {
        nibbles[i] = i < count ? static_cast<std::uint8_t>(15 - nibbles[i]) : std::uint8_t{15};
    }
    for (std::uint32_t i = 0; i < nibble_count; ++i) {
        if (nibbles[i] != 15) {
            ++nibbles[i];
            break;
        }
        nibbles[i] = 0;
    }
}

// The nibbles `first` to `last`, a group, as a number.
void bbitand_xdec_from_hex(xdec& result, const nibble_array& nibbles, std::uint32_t first, std::uint32_t last) {
    xdec_fill_zero(&result);
    std::int64_t weight = 1;
    for (std::uint32_t i = first; i <= last; ++i) {
        xdec nibble;
        xdec power;
        (void)xdec_from_int64(&nibble, nibbles[i], XDEC_ANY_PRECISION);
        (void)xdec_from_int64(&power, weight, XDEC_ANY_PRECISION);
        (void)xdec_mul(&nibble, &power, &nibble);
        (void)xdec_add(&result, &nibble, &result);
        weight *= 16;
    }
}

void subtract_one_and_complement(nibble_array& nibbles) {
    for (std::uint32_t i = 0; i < nibble_count; ++i) {
        if (nibbles[i] != 0) {
            --nibbles[i];
            break;
        }
        nibbles[i] = 15;
    }
    for (std::uint8_t& nibble : nibbles) {
        nibble = static_cast<std::uint8_t>(15 - nibble);
    }
}

// A nibble at or beyond a positive operand's count is 0, whatever stands there.
void bbitanddec_process_low(const nibble_array& a, const nibble_array& b, std::uint32_t a_count, std::uint32_t b_count, std::uint8_t a_sign,
                            std::uint8_t b_sign, xdec& result) {
    const bool both_negative = is_negative(a_sign) && is_negative(b_sign);
    nibble_array nibbles;
    for (std::uint32_t i = 0; i < nibble_count; ++i) {
        const bool beyond = (!is_negative(a_sign) && i >= a_count) || (!is_negative(b_sign) && i >= b_count);
        nibbles[i] = beyond ? std::uint8_t{0} : static_cast<std::uint8_t>(a[i] & b[i]);
    }
    if (both_negative) {
        subtract_one_and_complement(nibbles);
    }
    xdec two_to_32;
    xdec weight;
    (void)xdec_from_ulint64(&two_to_32, std::uint64_t{1} << 32);
    xdec_fill_one(&weight);
    xdec_fill_zero(&result);
    for (std::uint32_t first = 0; first < nibble_count; first += group) {
        xdec part;
        bbitand_xdec_from_hex(part, nibbles, first, first + group - 1);
        (void)xdec_mul(&part, &weight, &part);
        (void)xdec_add(&result, &part, &result);
        if (first + group < nibble_count) {
            (void)xdec_mul(&weight, &two_to_32, &weight);
        }
    }
    if (both_negative) {
        (void)xdec_neg(&result, &result);
    }
}

// ---- operands ----

// Cuts the fraction off. The digit count decides, before anything is known of the other operand.
status make_integer(const xdec& operand, xdec& integer) {
    if (int{operand.bytes[1]} - int{operand.bytes[2]} > most_integer_digits) {
        return BIFUN_NUMERIC_OVERFLOW;
    }
    integer = operand;
    (void)xdec_trunc_scale(&integer);
    return BIFUN_OK;
}

// All 32 nibbles of an integer: zeros behind a positive one's, two's complement of a negative one's.
status nibbles_of(const xdec& integer, nibble_array& nibbles, std::uint32_t& count) {
    xdec magnitude = integer;
    if (is_negative(integer.bytes[0])) {
        (void)xdec_neg(&integer, &magnitude);
    }
    nibbles.fill(0);
    const status taken = bbitand_dec_get_hex(nibbles, magnitude, count);
    if (taken < BIFUN_OK) {
        return taken;
    }
    if (is_negative(integer.bytes[0])) {
        bbitand_byte_complement(nibbles, count);
    }
    return BIFUN_OK;
}

// The constant operand: its nibbles, and its bits where it is an integer from 0 to 2^64 - 1.
struct bitand_constant {
    nibble_array nibbles;
    std::uint32_t count;
    std::uint8_t sign;
    std::uint64_t bits;
};

status bbitanddec_av_dec_process(const xdec& value, const bitand_constant& constant, xdec& result) {
    xdec integer;
    const status made = make_integer(value, integer);
    if (made < BIFUN_OK) {
        return made;
    }
    if (integer.bytes[0] == XDEC_ZERO || constant.sign == XDEC_ZERO) {
        xdec_fill_zero(&result);
        return BIFUN_OK;
    }
    nibble_array nibbles;
    std::uint32_t count = 0;
    const status taken = nibbles_of(integer, nibbles, count);
    if (taken < BIFUN_OK) {
        return taken;
    }
    bbitanddec_process_low(nibbles, constant.nibbles, count, constant.count, integer.bytes[0], constant.sign, result);
    return BIFUN_OK;
}

status bbitanddec_av_ulint64_process(const xdec& value, const bitand_constant& constant, xdec& result) {
    xdec integer;
    const status made = make_integer(value, integer);
    if (made < BIFUN_OK) {
        return made;
    }
    if (integer.bytes[0] == XDEC_ZERO) {
        xdec_fill_zero(&result);
        return BIFUN_OK;
    }
    if (xdec_in_ulint64(&integer) != 0) {
        std::uint64_t bits = 0;
        (void)xdec_get_ulint64(&integer, &bits);
        (void)xdec_from_ulint64(&result, bits & constant.bits); // some engines' has no status to return
        return BIFUN_OK;
    }
    return bbitanddec_av_dec_process(integer, constant, result);
}

// ---- batches ----

status bbit_and_dec_av_ulint64(batch_of<DECIMAL> batch, column_of<DECIMAL> x, const xdec& integer) {
    constant_argument constant{bitand_constant{}, true};
    bitand_constant& y = constant.value;
    (void)xdec_get_ulint64(&integer, &y.bits);
    y.count = bbitand_ulint64_get_hex(y.nibbles, y.bits);
    y.sign = y.bits == 0 ? XDEC_ZERO : XDEC_POSITIVE;
    return set_rows<bbitanddec_av_ulint64_process>(batch, x, constant);
}

status bbit_and_for_dec_av_dec(batch_of<DECIMAL> batch, column_of<DECIMAL> x, const xdec& integer) {
    constant_argument constant{bitand_constant{}, true};
    bitand_constant& y = constant.value;
    y.sign = integer.bytes[0];
    const status taken = nibbles_of(integer, y.nibbles, y.count);
    return taken < BIFUN_OK ? fail_batch(batch, taken) : set_rows<bbitanddec_av_dec_process>(batch, x, constant);
}

} // namespace

status entry::bbit_and_for_dec_av(batch_of<DECIMAL> batch, column_of<DECIMAL> x, constant_of<DECIMAL> y) {
    if (y.record->not_null == 0) {
        return null_rows(batch);
    }
    xdec constant;
    const status made = make_integer(y.record->value, constant);
    if (made < BIFUN_OK) {
        return fail_batch(batch, made);
    }
    return xdec_in_ulint64(&constant) != 0 ? bbit_and_dec_av_ulint64(batch, x, constant) : bbit_and_for_dec_av_dec(batch, x, constant);
}

status entry::bbit_and_for_dec_va(batch_of<DECIMAL> batch, constant_of<DECIMAL> x, column_of<DECIMAL> y) {
    return bbit_and_for_dec_av(batch, y, x);
}

} // namespace bifun
