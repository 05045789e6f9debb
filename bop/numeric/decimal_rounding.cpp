// SPDX-License-Identifier: Apache-2.0
// ROUND, TRUNC, CEIL, FLOOR and ABS of DECIMAL. The statuses of the engine's operations are ignored; where one fails, the row holds
// what the last successful one left.

#include "bop/frame/row_loop.h"
#include "bop/numeric/entry_points.h"
#include "engine/decimal.h"
#include "layouts/decimal_block_rounding.h"

namespace bifun {
namespace {

// ---- through the engine's operations ----

struct engine_decimals {
    static void truncate(const xdec& value, xdec& result) {
        result = value;
        (void)xdec_trunc_scale(&result);
    }

    // On a copy: an engine may work in the place of its operand.
    static void truncate_to(const xdec& value, std::int32_t digits, xdec& result) {
        xdec copy = value;
        result = value;
        (void)xdec_trunc_scale_with_pos(&copy, digits, &result);
    }

    static void round_to(const xdec& value, std::int32_t digits, xdec& result) {
        constexpr std::int32_t no_flag = 0;
        result = value;
        (void)xdec_round(&value, no_flag, digits, &result);
    }

    // The scale decides, not the digits: 2.00 has a fraction, and its ceiling is 3. Values with the mark move one unit away from zero.
    template <std::uint8_t moving_mark, auto move> static void step(const xdec& value, xdec& result) {
        result = value;
        if (value.bytes[2] == 0) {
            return;
        }
        (void)xdec_trunc_scale(&result);
        if (value.bytes[0] == moving_mark) {
            xdec one;
            xdec_fill_one(&one);
            (void)move(&result, &one, &result);
        }
    }

    static void ceiling(const xdec& value, xdec& result) { step<XDEC_POSITIVE, xdec_add>(value, result); }
    static void floor(const xdec& value, xdec& result) { step<XDEC_NEGATIVE, xdec_sub>(value, result); }

    static void magnitude(const xdec& value, xdec& result) {
        result = value;
        (void)xdec_abs(&value, &result);
    }
};

// ---- in place, for an engine whose layout of decimals is known; what is rare is left to its operations ----

struct packed_decimals {
    static void truncate(const xdec& value, xdec& result) { truncate_to(value, 0, result); }

    static void truncate_to(const xdec& value, std::int32_t digits, xdec& result) {
        if (!decimal_layout::truncate_to(value, digits, &result)) {
            engine_decimals::truncate_to(value, digits, result);
        }
    }

    static void round_to(const xdec& value, std::int32_t digits, xdec& result) {
        if (!decimal_layout::round_to(value, digits, &result)) {
            engine_decimals::round_to(value, digits, result);
        }
    }

    static void ceiling(const xdec& value, xdec& result) {
        if (!decimal_layout::step_up(value, &result)) {
            engine_decimals::ceiling(value, result);
        }
    }

    static void floor(const xdec& value, xdec& result) {
        if (!decimal_layout::step_down(value, &result)) {
            engine_decimals::floor(value, result);
        }
    }
};

// A block at once: what lies behind a NULL gets a magnitude as well.
status packed_magnitudes(const batch& batch, const column_argument<xdec>& x) {
    batch.result->no_nulls = promise_of(x);
    const auto block = [&](std::uint32_t first, std::uint32_t count, const dense_rows<xdec>& rows) -> status {
        write_null_flags(null_flags(batch) + first, count, has_no_nulls(x), rows);
        decimal_layout::set_magnitudes(rows.values, values<xdec>(batch) + first, count);
        return BIFUN_OK;
    };
    return for_each_block(batch.row_count, block, x);
}

// To a constant number of digits: a block at once where its values allow it, else row by row.
template <decimal_layout::rounding mode, auto kernel, class... Digits>
status set_digits(const batch& batch, const column_argument<xdec>& x, std::int32_t digits, const Digits&... digits_argument) {
    batch.result->no_nulls = joint_no_null_flag(x, digits_argument...);
    stored_results<xdec> results(batch);
    const auto block = [&](std::uint32_t first, std::uint32_t count, const dense_rows<xdec>& rows, const auto&... digit_rows) -> status {
        std::uint8_t* const flags = null_flags(batch) + first;
        write_null_flags(flags, count, has_no_nulls(x), rows);
        return decimal_layout::set_digits_of_all<mode>(rows.values, flags, digits, results.values + first, count)
                   ? BIFUN_OK
                   : evaluate_one_by_one<kernel, no_checks>(batch, results, first, 0, count, has_no_nulls(x), rows, digit_rows...);
    };
    return for_each_block(batch.row_count, block, x, digits_argument...);
}

// ---- the functions, over either ----

template <class Operations> void round_to_integer(const xdec& value, xdec& result) { Operations::round_to(value, 0, result); }

// Calls `set` with the operations that serve this engine.
template <class Set> status with_decimals(const Set& set) {
    return decimals_are_packed() ? set(packed_decimals{}) : set(engine_decimals{});
}

using decimal_layout::rounding;

bool can_set_blocks() { return decimals_are_packed() && setters_are_plain_stores(); }

// With digits that are a constant.
template <rounding mode, auto kernel> status set_constant_digits(const batch& batch, column_of<DECIMAL> x, constant_of<INT> digits) {
    const constant_argument count = argument(digits);
    return count.present ? set_digits<mode, kernel>(batch, argument(x), count.value, count) : null_rows(batch);
}

template <class X, class Digits> status truncate_rows(batch_of<DECIMAL> batch, X x, Digits digits) {
    return with_decimals([&](auto decimals) { return set_rows<decltype(decimals)::truncate_to>(batch, x, digits); });
}

template <class X, class Digits> status round_rows(batch_of<DECIMAL> batch, X x, Digits digits) {
    return with_decimals([&](auto decimals) { return set_rows<decltype(decimals)::round_to>(batch, x, digits); });
}

} // namespace

status entry::btrunc_dec_def_a_math(batch_of<DECIMAL> batch, column_of<DECIMAL> x) {
    if (can_set_blocks()) {
        return set_digits<rounding::toward_zero, packed_decimals::truncate>(batch, argument(x), 0);
    }
    return with_decimals([&](auto decimals) { return set_rows<decltype(decimals)::truncate>(batch, x); });
}
status entry::btrunc_dec_va_de_math(batch_of<DECIMAL> batch, constant_of<DECIMAL> x, column_of<INT> digits) {
    return truncate_rows(batch, x, digits);
}
status entry::btrunc_dec_av_li_math(batch_of<DECIMAL> batch, column_of<DECIMAL> x, constant_of<INT> digits) {
    return can_set_blocks() ? set_constant_digits<rounding::toward_zero, packed_decimals::truncate_to>(batch, x, digits)
                            : truncate_rows(batch, x, digits);
}
status entry::btrunc_dec_aa_math(batch_of<DECIMAL> batch, column_of<DECIMAL> x, column_of<INT> digits) {
    return truncate_rows(batch, x, digits);
}

status entry::bround_def_a_math_dbl(batch_of<DECIMAL> batch, column_of<DECIMAL> x) {
    if (can_set_blocks()) {
        return set_digits<rounding::half_away_from_zero, round_to_integer<packed_decimals>>(batch, argument(x), 0);
    }
    return with_decimals([&](auto decimals) { return store_rows<round_to_integer<decltype(decimals)>>(batch, x); });
}
status entry::bround_dec_va_de_math_dbl(batch_of<DECIMAL> batch, constant_of<DECIMAL> x, column_of<INT> digits) {
    return round_rows(batch, x, digits);
}
status entry::bround_dec_av_li_math_dbl(batch_of<DECIMAL> batch, column_of<DECIMAL> x, constant_of<INT> digits) {
    return can_set_blocks() ? set_constant_digits<rounding::half_away_from_zero, packed_decimals::round_to>(batch, x, digits)
                            : round_rows(batch, x, digits);
}
status entry::bround_dec_aa_math_dbl(batch_of<DECIMAL> batch, column_of<DECIMAL> x, column_of<INT> digits) {
    return round_rows(batch, x, digits);
}

status entry::bceil_a_math_dec(batch_of<DECIMAL> batch, column_of<DECIMAL> x) {
    if (can_set_blocks()) {
        return set_digits<rounding::then_one_up, packed_decimals::ceiling>(batch, argument(x), 0);
    }
    return with_decimals([&](auto decimals) { return set_rows<decltype(decimals)::ceiling>(batch, x); });
}
status entry::bfloor_a_math_dec(batch_of<DECIMAL> batch, column_of<DECIMAL> x) {
    if (can_set_blocks()) {
        return set_digits<rounding::then_one_down, packed_decimals::floor>(batch, argument(x), 0);
    }
    return with_decimals([&](auto decimals) { return set_rows<decltype(decimals)::floor>(batch, x); });
}
status entry::babs_a_math_dec(batch_of<DECIMAL> batch, column_of<DECIMAL> x) {
    return can_set_blocks() ? packed_magnitudes(batch, argument(x)) : set_rows<engine_decimals::magnitude>(batch, x);
}

} // namespace bifun
