// SPDX-License-Identifier: Apache-2.0
// Values from text: the fields of a file and the literals of a query.
#ifndef BIFUN_HOST_VALUES_VALUE_TEXT_H
#define BIFUN_HOST_VALUES_VALUE_TEXT_H

#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>
#include <system_error>

#include "bop/frame/contract.h"
#include "host/values/sql_type.h"

namespace host {

// Text without the blanks (0x20) at both ends.
std::string_view without_blanks_around(std::string_view text);

// A text of SQL without its closing blanks, which are counted instead.
struct blank_counted_text {
    std::string_view stored;
    std::uint32_t trailing_blanks;
};
blank_counted_text count_trailing_blanks(std::string_view text);

// How a number is written; `is_number` is false where the text is none.
struct number_shape {
    bool is_number = false;
    bool has_point = false;
    bool has_exponent = false;
    bool has_leading_zero = false;   // and further digits before the point
    std::size_t digits = 0;          // without leading zeros
    std::size_t fraction_digits = 0; // behind the point
    std::int64_t exponent = 0;       // one beyond 64 bits is the nearest of these
};
number_shape shape_of_number(std::string_view text);

// Whether a DECIMAL has room for all digits of the number, those of the fraction too.
constexpr std::size_t most_decimal_digits = 38;
constexpr std::int64_t most_fraction_digits = 127;
bool fits_decimal(const number_shape& shape);

// Each reads the whole text or returns false. They allow blanks around and a plus sign; those with a fraction also .5 and 5. A double is
// the nearest one, and may be NaN or an infinity by its name; no other value is read that is not what the text says.
bool read_number(std::string_view text, double& value);
template <class Integer> bool read_number(std::string_view text, Integer& value) {
    text = without_blanks_around(text);
    if (text.starts_with('+') && !text.starts_with("+-")) {
        text.remove_prefix(1);
    }
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc{} && end == text.data() + text.size();
}
bool read_decimal(std::string_view text, xdec& value);

// Reads a text that names a value of a datetime type: a timestamp may also be a date. Where the type has a zone and the text has none,
// the value gets `time_zone`, minutes.
bool read_datetime(std::string_view text, sql_type type, std::int32_t time_zone, zqtime& value);

// Gives a value without a zone this one, in minutes.
void add_zone(zqtime& value, std::int32_t time_zone);

// Gives a value what others of its type have where nobody sees it: a date midnight, a time the date 1900-01-01; and a zone where it lacks
// one of its own.
void complete_datetime(zqtime& value, sql_type type, std::int32_t time_zone);

// Whether digits other than 0 stand behind the sixth of a fraction, which no datetime or interval keeps.
bool has_excess_fraction(std::string_view text);

// Reads any datetime and returns its type, which has a zone where the text has one. Nothing where the fraction has more digits than are
// kept.
std::optional<sql_type> read_any_datetime(std::string_view text, zqtime& value);

} // namespace host

#endif
