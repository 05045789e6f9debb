// Values from text: the fields of a file and the literals of a query.
#ifndef BIFUN_HOST_VALUES_VALUE_TEXT_H
#define BIFUN_HOST_VALUES_VALUE_TEXT_H

#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>

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

// Each reads the whole text or returns false. They allow blanks around and a plus sign; the decimal also .5 and 5.
template <class Number> bool read_number(std::string_view text, Number& value) {
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

// Reads any datetime and returns its type, which has a zone where the text has one.
std::optional<sql_type> read_any_datetime(std::string_view text, zqtime& value);

} // namespace host

#endif
