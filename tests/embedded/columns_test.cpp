#include "engine/columns.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "bop/frame/status.h"
#include "embedded/columns/column_storage.h"
#include "embedded/memory/allocation.h"
#include "embedded/session/environment.h"

namespace {

using bifun::value_type;
using zqengine::column_pointer;
using zqengine::create_column;
using zqengine::values_of;

bifun_environment environment;

std::string text_of(const zqengine::column_storage& column, std::uint32_t row) {
    const bifun_string& value = values_of<bifun_string>(column)[row];
    return std::string(reinterpret_cast<const char*>(value.data), value.length) + "+" + std::to_string(value.trailing_blanks);
}

bifun_string string_over(std::string& bytes, std::uint32_t trailing_blanks = 0) {
    return {static_cast<std::uint32_t>(bytes.size()), trailing_blanks, reinterpret_cast<std::uint8_t*>(bytes.data())};
}

constexpr std::uint32_t source_rows = 6;
constexpr std::uint32_t null_row = 3;

class ColumnCopy : public testing::TestWithParam<value_type> {
  protected:
    void SetUp() override {
        ASSERT_TRUE(source && destination);
        for (std::uint32_t row = 0; row < source_rows; ++row) {
            source->data.null_flags[row] = row != null_row;
            auto* const value = static_cast<std::uint8_t*>(source->data.values) + row * width;
            for (std::size_t i = 0; i < width; ++i) {
                value[i] = static_cast<std::uint8_t>(row * 41 + i); // for a string a pointer that must not be followed
            }
            if (bifun::is_string(GetParam()) && row != null_row) {
                values_of<bifun_string>(*source)[row] = string_over(texts[row], row);
            }
        }
    }

    // `rows` are the rows that the copy must consist of.
    void expect_copy_of(const std::vector<std::uint16_t>& rows, const bifun_column& from) {
        const auto count = static_cast<std::uint32_t>(rows.size());
        ASSERT_EQ(bdta3_col_copy(&environment, nullptr, &destination->column, &from, count), 0);
        EXPECT_EQ(destination->column.no_nulls, from.no_nulls);
        for (std::uint32_t k = 0; k < count; ++k) {
            ASSERT_EQ(destination->data.null_flags[k], rows[k] != null_row) << k;
            if (rows[k] == null_row) {
                continue;
            }
            if (bifun::is_string(GetParam())) {
                EXPECT_EQ(text_of(*destination, k), text_of(*source, rows[k]));
                EXPECT_NE(values_of<bifun_string>(*destination)[k].data, values_of<bifun_string>(*source)[rows[k]].data);
            } else {
                const auto* const copy = static_cast<const std::uint8_t*>(destination->data.values) + k * width;
                const auto* const original = static_cast<const std::uint8_t*>(source->data.values) + rows[k] * width;
                EXPECT_EQ(std::memcmp(copy, original, width), 0) << k;
            }
        }
    }

    const std::size_t width = bifun::value_width(GetParam());
    std::string texts[source_rows] = {"", "b", "seventeen letters", "", std::string(33, 'e'), std::string(5000, 'f')};
    column_pointer source{create_column(GetParam(), source_rows)};
    column_pointer destination{create_column(GetParam(), source_rows)};
};

TEST_P(ColumnCopy, DenseAndThroughSelection) {
    expect_copy_of({0, 1, 2, 3, 4, 5}, source->column);
    for (const std::vector<std::uint16_t>& rows : {std::vector<std::uint16_t>{5, 2, 2}, {}, {5, 4, 3, 2, 1, 0}}) {
        expect_copy_of(rows, {1, rows.data(), &source->data});
    }
}

TEST_P(ColumnCopy, WithoutMemoryEveryRowIsNull) {
    std::memset(destination->data.null_flags, 1, source_rows);
    destination->column.no_nulls = 1;
    zqengine::fail_step(1);
    EXPECT_EQ(bdta3_col_copy(&environment, nullptr, &destination->column, &source->column, source_rows), BIFUN_OUT_OF_MEMORY);
    EXPECT_EQ(destination->status, BIFUN_OUT_OF_MEMORY);
    EXPECT_EQ(destination->column.no_nulls, 0U);
    EXPECT_EQ(std::count(destination->data.null_flags, destination->data.null_flags + source_rows, 0), source_rows);
}

INSTANTIATE_TEST_SUITE_P(Types, ColumnCopy,
                         testing::Values(value_type::BOOL, value_type::INT, value_type::BIGINT, value_type::DOUBLE, value_type::DECIMAL,
                                         value_type::DATETIME, value_type::VARCHAR, value_type::VARBINARY),
                         [](const auto& info) { return std::string(bifun::type_name(info.param)); });

TEST(StringResults, EveryLengthIsCopiedExactly) {
    constexpr std::uint32_t rows = 131;
    const column_pointer column(create_column(value_type::VARCHAR, rows));
    std::vector<std::vector<std::uint8_t>> sources;
    for (std::uint32_t length = 0; length < rows; ++length) {
        std::vector<std::uint8_t>& source = sources.emplace_back(length);
        for (std::uint32_t i = 0; i < length; ++i) {
            source[i] = static_cast<std::uint8_t>(length * 7 + i);
        }
        ASSERT_EQ(bdta3_col_assign_str(&environment, nullptr, &column->column, length, source.data(), length, length % 3), 0);
    }
    for (std::uint32_t length = 0; length < rows; ++length) {
        const bifun_string& value = values_of<bifun_string>(*column)[length];
        ASSERT_EQ(value.length, length);
        EXPECT_EQ(value.trailing_blanks, length % 3);
        EXPECT_TRUE(std::equal(sources[length].begin(), sources[length].end(), value.data)) << length;
    }
}

TEST(StringResults, LastAssignmentOfARowHolds) {
    const column_pointer column(create_column(value_type::VARCHAR, 2));
    std::string first = "first";
    const bifun_string source = string_over(first, 4);
    EXPECT_EQ(bdta3_colstr_copy(&environment, nullptr, &column->column, 0, &source), 0);
    EXPECT_EQ(bdta3_colstr_copy(&environment, nullptr, &column->column, 1, &values_of<bifun_string>(*column)[0]), 0);
    std::memset(bdta3_colstr_assign_without_value(&environment, nullptr, &column->data, 0, 1 << 20, 0), 'l', 1 << 20);
    EXPECT_EQ(text_of(*column, 0), std::string(1 << 20, 'l') + "+0");
    EXPECT_EQ(text_of(*column, 1), "first+4");
}

TEST(StringResults, WithoutMemoryTheRowIsEmpty) {
    static std::uint8_t bytes[100];
    static const bifun_string source = {5, 1, bytes};
    using step = std::int32_t (*)(zqengine::column_storage&);
    const step steps[] = {
        [](auto& c) { return bdta3_col_assign_str(&environment, nullptr, &c.column, 0, nullptr, 0, 3); },
        [](auto& c) { return bdta3_col_assign_str(&environment, nullptr, &c.column, 0, bytes, 5, 0); },
        [](auto& c) { return bdta3_col_assign_bin(&environment, nullptr, &c.column, 0, bytes, 5); },
        [](auto& c) { return bdta3_set_str_from_str_with_len(&environment, nullptr, &c.column, 0, bytes, 5); },
        [](auto& c) { return bdta3_colstr_copy(&environment, nullptr, &c.column, 0, &source); },
        [](auto& c) { return bdta3_colstr_assign_without_value(&environment, nullptr, &c.data, 0, 5, 1) == nullptr ? c.status : 0; },
    };
    for (const step& assign : steps) {
        const column_pointer column(create_column(value_type::VARCHAR, 1));
        values_of<bifun_string>(*column)[0] = {9, 9, bytes};
        zqengine::fail_step(2);
        EXPECT_NE(bdta3_col_space_alloc(&environment, nullptr, &column->data, 8), nullptr);
        EXPECT_EQ(assign(*column), BIFUN_OUT_OF_MEMORY);
        EXPECT_FALSE(zqengine::failure_is_pending());
        EXPECT_EQ(text_of(*column, 0), "+0");
        EXPECT_EQ(column->status, BIFUN_OUT_OF_MEMORY);
        clear_column(*column);
        EXPECT_EQ(column->status, 0);
    }
}

TEST(StringValues, CompareWithBlanks) {
    struct {
        std::string a;
        std::uint32_t blanks_a;
        std::string b;
        std::uint32_t blanks_b;
        int sign;
    } cases[] = {
        {"", 0, "", 0, 0},      {"a", 0, "a", 0, 0},        {"a  ", 0, "a", 2, 0},    {"", 3, " ", 2, 0},        {"", 0, "", 1, -1},
        {"a", 0, "a", 1, -1},   {"a", 5, "a  ", 0, 1},      {"a   ", 0, "a", 2, 1},   {"a", 1, "a\x1f", 0, 1},   {"a", 1, "a!", 0, -1},
        {"a", 2, "a !", 0, -1}, {"a", 1, "a !", 0, -1},     {"a", 0, "a\x1f", 0, -1}, {"\x80", 0, "\x7f", 0, 1}, {"ab", 0, "b", 0, -1},
        {"a b", 0, "a", 9, 1},  {"", 4294967295, "", 1, 1}, {"", 2, "\xff", 0, -1},
    };
    const auto sign_of = [](std::int32_t value) { return (value > 0) - (value < 0); };
    for (auto& c : cases) {
        const bifun_string a = string_over(c.a, c.blanks_a);
        const bifun_string b = string_over(c.b, c.blanks_b);
        EXPECT_EQ(sign_of(bdta3_colstr_cmp_with_blank(&a, &b)), c.sign) << c.a << "|" << c.b;
        EXPECT_EQ(sign_of(bdta3_colstr_cmp_with_blank(&b, &a)), -c.sign) << c.b << "|" << c.a;
    }
}

TEST(StringValues, Trim) {
    for (const char* const text : {"", " ", "          ", "a", "a b", " a  ", "a\t ", "abcdefgh         ", "\xe3\x80\x80 "}) {
        std::string bytes = text;
        bifun_string value = string_over(bytes, 2);
        bdta3_colstr_trim(&value);
        EXPECT_EQ(value.length, std::string_view(text).find_last_not_of(' ') + 1) << '"' << text << '"';
        EXPECT_EQ(value.trailing_blanks, 0U);
        EXPECT_EQ(bytes, text);
    }
}

} // namespace
