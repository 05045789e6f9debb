#include "engine/columns.h"

#include <algorithm>
#include <cstring>
#include <numeric>
#include <string>
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

TEST(ColumnCopy, DenseAndThroughSelection) {
    constexpr std::uint32_t source_rows = 6;
    constexpr std::uint32_t null_row = 3;
    std::string texts[source_rows] = {"", "b", "seventeen letters", "", std::string(33, 'e'), std::string(5000, 'f')};
    using rows_of_copy = std::vector<std::uint16_t>;
    for (const value_type type : {value_type::BOOL, value_type::INT, value_type::BIGINT, value_type::DOUBLE, value_type::DECIMAL,
                                  value_type::DATETIME, value_type::VARCHAR, value_type::VARBINARY}) {
        SCOPED_TRACE(bifun::type_name(type));
        const std::size_t width = bifun::value_width(type);
        const column_pointer source(create_column(type, source_rows));
        const column_pointer destination(create_column(type, source_rows));
        auto* const originals = values_of<std::uint8_t>(*source);
        std::iota(originals, originals + source_rows * width, std::uint8_t{1}); // of a NULL string a pointer that must not be followed
        for (std::uint32_t row = 0; row < source_rows; ++row) {
            source->data.null_flags[row] = row != null_row;
            if (bifun::is_string(type) && row != null_row) {
                values_of<bifun_string>(*source)[row] = string_over(texts[row], row);
            }
        }
        for (const rows_of_copy& rows : {rows_of_copy{0, 1, 2, 3, 4, 5}, {5, 2, 2}, {}, {5, 4, 3, 2, 1, 0}}) {
            const bool dense = rows.size() == source_rows && rows[0] == 0;
            const bifun_column from = {dense ? 0U : 1U, dense ? nullptr : rows.data(), &source->data};
            ASSERT_EQ(bdta3_col_copy(&environment, nullptr, &destination->column, &from, static_cast<std::uint32_t>(rows.size())), 0);
            EXPECT_EQ(destination->column.no_nulls, from.no_nulls);
            for (std::uint32_t k = 0; k < rows.size(); ++k) {
                ASSERT_EQ(destination->data.null_flags[k], rows[k] != null_row) << k;
                if (rows[k] != null_row && bifun::is_string(type)) {
                    EXPECT_EQ(text_of(*destination, k), text_of(*source, rows[k]));
                    EXPECT_NE(values_of<bifun_string>(*destination)[k].data, values_of<bifun_string>(*source)[rows[k]].data);
                } else if (rows[k] != null_row) {
                    EXPECT_EQ(std::memcmp(values_of<std::uint8_t>(*destination) + k * width, originals + rows[k] * width, width), 0) << k;
                }
            }
        }
        destination->column.no_nulls = 1;
        zqengine::fail_step(1);
        EXPECT_EQ(bdta3_col_copy(&environment, nullptr, &destination->column, &source->column, source_rows), BIFUN_OUT_OF_MEMORY);
        EXPECT_EQ(destination->status, BIFUN_OUT_OF_MEMORY);
        EXPECT_EQ(destination->column.no_nulls, 0U);
        EXPECT_EQ(std::count(destination->data.null_flags, destination->data.null_flags + source_rows, 0), source_rows);
    }
}

TEST(StringResults, EveryLengthIsCopiedExactly) {
    constexpr std::uint32_t rows = 131;
    const column_pointer column(create_column(value_type::VARCHAR, rows));
    std::string letters(rows, ' ');
    std::iota(letters.begin(), letters.end(), '\0');
    for (std::uint32_t length = 0; length < rows; ++length) {
        const std::vector<std::uint8_t> source(letters.begin(), letters.begin() + length);
        ASSERT_EQ(bdta3_col_assign_str(&environment, nullptr, &column->column, length, source.data(), length, length % 3), 0);
    }
    for (std::uint32_t length = 0; length < rows; ++length) {
        EXPECT_EQ(text_of(*column, length), letters.substr(0, length) + "+" + std::to_string(length % 3));
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

// Every text of up to three of a few bytes, with up to three blanks behind it.
TEST(StringValues, AreComparedAndTrimmedAsFullTexts) {
    std::vector<std::string> texts{""};
    for (std::size_t i = 0; texts[i].size() < 3; ++i) {
        for (const char byte : {' ', 'a', '\x1f', '!', '\xff'}) {
            texts.push_back(texts[i] + byte);
        }
    }
    const auto sign_of = [](int value) { return (value > 0) - (value < 0); };
    for (std::string& text : texts) {
        for (std::uint32_t blanks = 0; blanks < 4; ++blanks) {
            bifun_string value = string_over(text, blanks);
            const std::string full = text + std::string(blanks, ' ');
            for (std::size_t other = 0; other < texts.size(); other += 7) {
                const std::uint32_t more = other % 4;
                const bifun_string compared = string_over(texts[other], more);
                const int sign = sign_of(full.compare(texts[other] + std::string(more, ' ')));
                ASSERT_EQ(sign_of(bdta3_colstr_cmp_with_blank(&value, &compared)), sign) << full << '|' << texts[other] << more;
                ASSERT_EQ(sign_of(bdta3_colstr_cmp_with_blank(&compared, &value)), -sign) << full << '|' << texts[other] << more;
            }
            bdta3_colstr_trim(&value);
            ASSERT_EQ(value.length + value.trailing_blanks, text.find_last_not_of(' ') + 1) << full;
        }
    }
    const bifun_string endless = {0, UINT32_MAX, nullptr};
    const bifun_string one_blank = {0, 1, nullptr};
    EXPECT_GT(bdta3_colstr_cmp_with_blank(&endless, &one_blank), 0);
}

} // namespace
