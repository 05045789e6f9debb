// SPDX-License-Identifier: Apache-2.0
// Decimals of one scale, which the library handles in blocks where it may, against the engine's operations row by row; and blocks with a
// value among them that does not go with the others.

#include <cstring>
#include <functional>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "engine/decimal.h"
#include "tests/contract/called_export.h"
#include "tests/contract/text_case.h"

namespace {

using bifun::value_type;

constexpr std::uint32_t row_count = 700; // blocks, the last of them not full

enum class oddity { none, other_scale, long_value, nulls, only_long };

using random_numbers = std::mt19937_64;

xdec decimal_of(const std::string& text) {
    xdec value;
    EXPECT_EQ(xdec_from_char(reinterpret_cast<const std::uint8_t*>(text.data()), static_cast<std::uint32_t>(text.size()), &value), 0);
    return value;
}

// With four digits behind the point; every length, both signs, zeros, and numbers that are nearly whole.
xdec random_decimal(random_numbers& random) {
    const std::uint64_t digits = random() % 1'000'000'000'000'000'000 >> random() % 60;
    std::string text = std::to_string(random() % 4 == 0 ? digits / 10000 * 10000 + 9999 : digits);
    text.insert(0, text.size() < 5 ? 5 - text.size() : 0, '0');
    text.insert(text.size() - 4, 1, '.');
    return decimal_of(random() % 2 == 0 ? text.insert(0, 1, '-') : text);
}

// With 22 digits behind the point, of up to 38, and many nines.
xdec random_long_decimal(random_numbers& random) {
    std::string text(1 + random() % 38, '9');
    for (std::size_t i = 0; i < text.size(); i += 1 + random() % 8) {
        text[i] = static_cast<char>('0' + random() % 10);
    }
    text.insert(0, text.size() < 23 ? 23 - text.size() : 0, '0');
    text.insert(text.size() - 22, 1, '.');
    return decimal_of(random() % 2 == 0 ? text.insert(0, 1, '-') : text);
}

zqengine::column_pointer random_column(random_numbers& random, oddity odd) {
    zqengine::column_pointer column(zqengine::create_column(value_type::DECIMAL, row_count));
    xdec* const values = zqengine::values_of<xdec>(*column);
    std::memset(column->data.null_flags, 1, row_count);
    column->column.no_nulls = odd == oddity::nulls ? 0 : 1;
    for (std::uint32_t row = 0; row < row_count; ++row) {
        values[row] = odd == oddity::only_long ? random_long_decimal(random) : random_decimal(random);
        if (odd == oddity::nulls && random() % 3 == 0) {
            column->data.null_flags[row] = 0;
            for (std::uint8_t& byte : values[row].bytes) {
                byte = static_cast<std::uint8_t>(random());
            }
        }
    }
    const auto any_row = [&random] { return random() % row_count; };
    if (odd == oddity::other_scale) {
        values[any_row()] = decimal_of("-12.5");
    }
    if (odd == oddity::long_value) {
        values[any_row()] = decimal_of("-12345678901234567890123456.7890");
    }
    return column;
}

// The engine's result of one row.
using operation = std::function<xdec(const xdec&, const xdec&)>;

struct function_case {
    const char* symbol;
    const char* digits; // a constant beside the column, or null
    bool two_columns;
    operation result;
};

xdec rounded(const xdec& value, std::int32_t digits) {
    xdec result = value;
    EXPECT_EQ(xdec_round(&value, 0, digits, &result), 0);
    return result;
}

xdec truncated(const xdec& value, std::int32_t digits) {
    xdec copy = value;
    xdec result = value;
    EXPECT_EQ(xdec_trunc_scale_with_pos(&copy, digits, &result), 0);
    return result;
}

// One unit more, in the direction of the mark, than is left of the digits before the point.
xdec stepped(const xdec& value, std::uint8_t moving_mark) {
    xdec result = truncated(value, 0);
    if (value.bytes[0] == moving_mark) {
        xdec one;
        xdec_fill_one(&one);
        EXPECT_EQ(moving_mark == XDEC_POSITIVE ? xdec_add(&result, &one, &result) : xdec_sub(&result, &one, &result), 0);
    }
    return result;
}

const function_case functions[] = {
    {"babs_a_math_dec", nullptr, false,
     [](const xdec& x, const xdec&) {
         xdec result;
         EXPECT_EQ(xdec_abs(&x, &result), 0);
         return result;
     }},
    {"bround_def_a_math_dbl", nullptr, false, [](const xdec& x, const xdec&) { return rounded(x, 0); }},
    {"bround_dec_av_li_math_dbl", "2", false, [](const xdec& x, const xdec&) { return rounded(x, 2); }},
    {"bround_dec_av_li_math_dbl", "4", false, [](const xdec& x, const xdec&) { return rounded(x, 4); }},
    {"bround_dec_av_li_math_dbl", "-2", false, [](const xdec& x, const xdec&) { return rounded(x, -2); }},
    {"btrunc_dec_def_a_math", nullptr, false, [](const xdec& x, const xdec&) { return truncated(x, 0); }},
    {"btrunc_dec_av_li_math", "3", false, [](const xdec& x, const xdec&) { return truncated(x, 3); }},
    {"btrunc_dec_av_li_math", "7", false, [](const xdec& x, const xdec&) { return truncated(x, 7); }},
    {"btrunc_dec_av_li_math", "1", false, [](const xdec& x, const xdec&) { return truncated(x, 1); }},
    {"bceil_a_math_dec", nullptr, false, [](const xdec& x, const xdec&) { return stepped(x, XDEC_POSITIVE); }},
    {"bfloor_a_math_dec", nullptr, false, [](const xdec& x, const xdec&) { return stepped(x, XDEC_NEGATIVE); }},
    {"bgreatest_aa_math_dec", nullptr, true, [](const xdec& x, const xdec& y) { return xdec_cmp(&x, &y) > 0 ? x : y; }},
    {"bleast_aa_math_dec", nullptr, true, [](const xdec& x, const xdec& y) { return xdec_cmp(&x, &y) < 0 ? x : y; }},
};

void expect_results(const function_case& function, const zqengine::column_storage& x, const zqengine::column_storage& y) {
    std::vector<contract::call_argument> arguments{{.column = &x}};
    const auto digits = function.digits == nullptr ? contract::text_column{} : contract::read_column(value_type::INT, function.digits);
    contract::generated_constant constant;
    if (function.two_columns) {
        arguments.push_back({.column = &y});
    } else if (function.digits != nullptr) {
        constant = contract::constant_of_row(*digits.column, 0);
        arguments.push_back({.constant = &constant});
    }
    const contract::outcome outcome = contract::call(contract::entry_of(function.symbol), arguments, row_count);
    ASSERT_EQ(outcome.status, 0);
    for (std::uint32_t row = 0; row < row_count; ++row) {
        const bool present = x.data.null_flags[row] != 0 && (!function.two_columns || y.data.null_flags[row] != 0);
        ASSERT_EQ(outcome.flag(row) != 0, present) << row;
        if (present) {
            const xdec expected = function.result(zqengine::values_of<xdec>(x)[row], zqengine::values_of<xdec>(y)[row]);
            ASSERT_EQ(std::memcmp(zqengine::values_of<xdec>(*outcome.result) + row, &expected, sizeof expected), 0)
                << row << ": " << contract::write_value(x, row) << ' ' << contract::write_value(y, row);
        }
    }
}

TEST(DecimalBlocks, AreTheEnginesResults) {
    random_numbers random(12);
    for (int round = 0; round < 3; ++round) {
        for (const oddity odd : {oddity::none, oddity::other_scale, oddity::long_value, oddity::nulls, oddity::only_long}) {
            const zqengine::column_pointer x = random_column(random, odd);
            const zqengine::column_pointer y = random_column(random, round == 0 ? oddity::none : odd);
            for (std::uint32_t row = 0; row < row_count; row += 9) {
                zqengine::values_of<xdec>(*y)[row] = zqengine::values_of<xdec>(*x)[row]; // equal
                y->data.null_flags[row] = x->data.null_flags[row];
                y->column.no_nulls &= x->column.no_nulls;
            }
            for (const function_case& function : functions) {
                SCOPED_TRACE(std::string(function.symbol) + ", oddity " + std::to_string(static_cast<int>(odd)));
                expect_results(function, *x, *y);
            }
        }
    }
}

} // namespace
