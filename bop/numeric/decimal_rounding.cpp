// ROUND, TRUNC, CEIL, FLOOR and ABS of DECIMAL. The statuses of the engine's operations are ignored; where one fails, the row holds
// what the last successful one left.

#include "layouts/decimal_rounding.h"
#include "bop/frame/row_loop.h"
#include "bop/frame/statements.h"
#include "engine/decimal.h"

namespace bifun {
namespace {

// ---- through the engine's operations ----

struct engine_operations {
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

struct packed_operations {
    static void truncate(const xdec& value, xdec& result) { truncate_to(value, 0, result); }

    static void truncate_to(const xdec& value, std::int32_t digits, xdec& result) {
        if (!decimal_layout::truncate_to(value, digits, &result)) {
            engine_operations::truncate_to(value, digits, result);
        }
    }

    static void round_to(const xdec& value, std::int32_t digits, xdec& result) {
        if (!decimal_layout::round_to(value, digits, &result)) {
            engine_operations::round_to(value, digits, result);
        }
    }

    static void ceiling(const xdec& value, xdec& result) {
        if (!decimal_layout::step_up(value, &result)) {
            engine_operations::ceiling(value, result);
        }
    }

    static void floor(const xdec& value, xdec& result) {
        if (!decimal_layout::step_down(value, &result)) {
            engine_operations::floor(value, result);
        }
    }

    static void magnitude(const xdec& value, xdec& result) { decimal_layout::set_magnitude(value, result); }
};

// ---- the functions, over either ----

template <class Operations> void round_to_integer(const xdec& value, xdec& result) { Operations::round_to(value, 0, result); }

// Calls `set` with the operations that serve this engine.
template <class Set> status with_operations(const Set& set) {
    return decimals_are_packed() ? set(packed_operations{}) : set(engine_operations{});
}

template <class X, class Digits> status truncate_rows(const batch& batch, const X& x, const Digits& digits) {
    return with_operations([&](auto by) { return set_rows<rows::present, decltype(by)::truncate_to>(batch, x, digits); });
}

template <class X, class Digits> status round_rows(const batch& batch, const X& x, const Digits& digits) {
    return with_operations([&](auto by) { return set_rows<rows::present, decltype(by)::round_to>(batch, x, digits); });
}

} // namespace
} // namespace bifun

using namespace bifun;

status btrunc_dec_def_a_math(BATCH_OF(column x)) {
    return with_operations([&](auto by) { return set_rows<rows::present, decltype(by)::truncate>(BATCH, decimal(x)); });
}
status btrunc_dec_va_de_math(BATCH_OF(decimal_constant x, column digits)) { return truncate_rows(BATCH, decimal(x), integer(digits)); }
status btrunc_dec_av_li_math(BATCH_OF(column x, int_constant digits)) { return truncate_rows(BATCH, decimal(x), integer(digits)); }
status btrunc_dec_aa_math(BATCH_OF(column x, column digits)) { return truncate_rows(BATCH, decimal(x), integer(digits)); }

status bround_def_a_math_dbl(BATCH_OF(column x)) {
    return with_operations([&](auto by) { return store_rows<rows::present, round_to_integer<decltype(by)>>(BATCH, decimal(x)); });
}
status bround_dec_va_de_math_dbl(BATCH_OF(decimal_constant x, column digits)) { return round_rows(BATCH, decimal(x), integer(digits)); }
status bround_dec_av_li_math_dbl(BATCH_OF(column x, int_constant digits)) { return round_rows(BATCH, decimal(x), integer(digits)); }
status bround_dec_aa_math_dbl(BATCH_OF(column x, column digits)) { return round_rows(BATCH, decimal(x), integer(digits)); }

status bceil_a_math_dec(BATCH_OF(column x)) {
    return with_operations([&](auto by) { return set_rows<rows::present, decltype(by)::ceiling>(BATCH, decimal(x)); });
}
status bfloor_a_math_dec(BATCH_OF(column x)) {
    return with_operations([&](auto by) { return set_rows<rows::present, decltype(by)::floor>(BATCH, decimal(x)); });
}
status babs_a_math_dec(BATCH_OF(column x)) {
    return with_operations([&](auto by) { return set_rows<rows::present, decltype(by)::magnitude>(BATCH, decimal(x)); });
}
