// SPDX-License-Identifier: Apache-2.0
// Dates as people write them, with the year behind or, of two digits, at either end: 31.12.2024, 12/31/24, 31-Dec-2024 10:30, Dec 31, 2024.
#ifndef BIFUN_HOST_TABLES_WRITTEN_DATE_H
#define BIFUN_HOST_TABLES_WRITTEN_DATE_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/tables/column_type.h"

namespace host {

// One of them, or what several have in common: then the numbers are the largest of all.
struct written_date {
    char separator = ' ';
    bool has_month_name = false;
    bool begins_with_month_name = false; // Jan 2, 2024
    std::size_t year_digits = 0;         // 4 or 2
    std::string_view time_format{};      // behind a blank; empty without a time
    std::uint32_t first = 0;
    std::uint32_t second = 0;
    std::uint32_t year = 0;
};

// Nothing where the text is no such date in any order of its numbers. Those of SQL begin with four digits, and are none.
std::optional<written_date> read_written_date(std::string_view text);

// Takes another one into account; false where it is of another form.
bool include_written_date(written_date& dates, const written_date& other);

// DATE or TIMESTAMP with its format, of all orders that the dates may have.
std::vector<column_type> types_of_written_dates(const written_date& dates);

// 2025-01-31 for 31.01.2025, and both for 01/02/2025; empty where it is no such date.
std::vector<std::string> iso_dates(std::string_view text);

// Whether a text is such a date, in whatever order.
bool is_written_date(std::string_view text);

// Whether a text is a time with AM or PM: 9:30 AM.
bool is_twelve_hour_time(std::string_view text);

} // namespace host

#endif
