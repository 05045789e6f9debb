// SPDX-License-Identifier: Apache-2.0
// Arguments for any entry point: generated columns and constants of its domain.
#ifndef BIFUN_TESTS_CONTRACT_GENERATED_ARGUMENTS_H
#define BIFUN_TESTS_CONTRACT_GENERATED_ARGUMENTS_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "engine/charset.h"
#include "tests/contract/called_export.h"
#include "tests/contract/domains.h"

namespace contract {

// The share of NULLs in columns that have some.
inline constexpr double some_nulls = 0.2;

// A column of the argument's domain, made once for all tests that ask for it.
const zqengine::column_storage& column_for(const bifun::entry_point& entry, std::size_t position, std::uint32_t row_count,
                                           double null_rate);

// Row `row` of such a column as a constant: its values of note come first, then ordinary ones.
const generated_constant& constant_for(const bifun::entry_point& entry, std::size_t position, std::size_t row);

// Dense columns, each of values of its own, and constants that are not NULL.
std::vector<call_argument> arguments_of(const bifun::entry_point& entry, std::uint32_t row_count, double null_rate);

// The same with other constants in each round, after some of which each has been a boundary.
std::vector<call_argument> arguments_of_round(const bifun::entry_point& entry, std::uint32_t row_count, double null_rate,
                                              std::size_t round);

inline constexpr bifun_settings usual_settings = {0, ZQ_CHARSET_UTF8, 1};

class Contract : public testing::Test {
  protected:
    void SetUp() override { set_up(usual_settings); }
};

} // namespace contract

#endif
