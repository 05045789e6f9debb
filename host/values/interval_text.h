// SPDX-License-Identifier: Apache-2.0
// Intervals from text.
#ifndef BIFUN_HOST_VALUES_INTERVAL_TEXT_H
#define BIFUN_HOST_VALUES_INTERVAL_TEXT_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "bop/frame/contract.h"
#include "host/values/sql_type.h"

namespace host {

enum class interval_field : std::uint8_t { year, month, day, hour, minute, second };

// Which fields the text of an interval has: DAY TO SECOND. Seconds are rounded to `fraction_digits`, 0 to 6, halves away from zero.
struct interval_qualifier {
    interval_field first = interval_field::day;
    interval_field last = interval_field::second;
    std::int32_t fraction_digits = 6;
};

constexpr sql_type type_of_qualifier(interval_qualifier qualifier) {
    return qualifier.first <= interval_field::month ? sql_type::interval_ym : sql_type::interval_dt;
}

// "DAY TO SECOND(3)"; nothing for a name that is none. Case does not matter, and names have no fraction digits.
std::string qualifier_name(interval_qualifier qualifier);
std::optional<interval_qualifier> find_qualifier(std::string_view name);

// Reads all fields of the qualifier: "1-2", "-3 04:05:06.5", "90:30". Only the first one may be beyond its range, and then is carried
// over, so that 14 months are 1-02. Returns false where the text has not these fields, digits other than 0 stand behind the sixth of a
// fraction, or the years or days do not fit 32 bits; blanks around it do not count.
bool read_interval(std::string_view text, interval_qualifier qualifier, bifun_interval_ym& value);
bool read_interval(std::string_view text, interval_qualifier qualifier, bifun_interval_dt& value);

} // namespace host

#endif
