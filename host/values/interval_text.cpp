// SPDX-License-Identifier: Apache-2.0
#include "host/values/interval_text.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <limits>

#include <fmt/format.h>

#include "host/near_names.h"

namespace host {
namespace {

constexpr std::string_view field_names[] = {"YEAR", "MONTH", "DAY", "HOUR", "MINUTE", "SECOND"};

// In months and in seconds.
constexpr std::int64_t field_units[] = {12, 1, 86400, 3600, 60, 1};
// What stands before the field, where it is not the first.
constexpr char field_separators[] = {'\0', '-', '\0', ' ', ':', ':'};
constexpr std::int64_t field_limits[] = {0, 12, 0, 24, 60, 60};

constexpr std::int64_t microseconds_per_second = 1'000'000;
constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();

// What the fields of a text add up to, without the sign.
struct field_sum {
    bool negative = false;
    std::int64_t units = 0; // months or seconds
    std::int64_t microseconds = 0;
};

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// A number off the front of the text.
bool take_number(std::string_view& text, std::size_t most_digits, std::int64_t& number) {
    const auto digits = static_cast<std::size_t>(std::ranges::find_if_not(text, is_digit) - text.begin());
    if (digits == 0 || digits > most_digits) {
        return false;
    }
    std::from_chars(text.data(), text.data() + digits, number);
    text.remove_prefix(digits);
    return true;
}

bool take_fraction(std::string_view& text, std::int64_t& microseconds) {
    if (text.empty() || text.front() != '.') {
        return true;
    }
    text.remove_prefix(1);
    if (text.empty() || !is_digit(text.front())) {
        return false;
    }
    bool is_kept = true;
    for (std::int64_t unit = microseconds_per_second / 10; !text.empty() && is_digit(text.front()); unit /= 10) {
        is_kept &= unit > 0 || text.front() == '0';
        microseconds += (text.front() - '0') * unit;
        text.remove_prefix(1);
    }
    return is_kept;
}

bool take_field(std::string_view& text, interval_field field, bool is_first, field_sum& sum) {
    const auto index = static_cast<std::size_t>(field);
    constexpr std::size_t digits_without_overflow = 18;
    std::int64_t number = 0;
    if (is_first) {
        const std::int64_t biggest = (most + 1) * (field <= interval_field::month ? field_units[0] : field_units[2]) / field_units[index];
        if (!take_number(text, digits_without_overflow, number) || number > biggest) {
            return false;
        }
    } else {
        if (text.empty() || text.front() != field_separators[index]) {
            return false;
        }
        text.remove_prefix(1);
        if (!take_number(text, 2, number) || number >= field_limits[index]) {
            return false;
        }
    }
    sum.units += number * field_units[index];
    return field != interval_field::second || take_fraction(text, sum.microseconds);
}

bool read_fields(std::string_view text, interval_qualifier qualifier, field_sum& sum) {
    const std::size_t begin = std::min(text.find_first_not_of(' '), text.size());
    text = text.substr(begin, text.find_last_not_of(' ') + 1 - begin);
    if (!text.empty() && (text.front() == '-' || text.front() == '+')) {
        sum.negative = text.front() == '-';
        text.remove_prefix(1);
    }
    for (auto field = qualifier.first; field <= qualifier.last; field = static_cast<interval_field>(static_cast<int>(field) + 1)) {
        if (!take_field(text, field, field == qualifier.first, sum)) {
            return false;
        }
    }
    return text.empty();
}

void round_fraction(std::int32_t digits, field_sum& sum) {
    std::int64_t unit = microseconds_per_second;
    for (; digits > 0; --digits) {
        unit /= 10;
    }
    sum.microseconds = (sum.microseconds + unit / 2) / unit * unit;
    sum.units += sum.microseconds / microseconds_per_second;
    sum.microseconds %= microseconds_per_second;
}

} // namespace

std::string qualifier_name(interval_qualifier qualifier) {
    std::string name(field_names[static_cast<std::size_t>(qualifier.first)]);
    if (qualifier.last != qualifier.first) {
        name.append(" TO ").append(field_names[static_cast<std::size_t>(qualifier.last)]);
    }
    return qualifier.last == interval_field::second && qualifier.fraction_digits < 6
               ? fmt::format("{}({})", name, qualifier.fraction_digits)
               : name;
}

std::optional<interval_qualifier> find_qualifier(std::string_view name) {
    for (int first = 0; first < 6; ++first) {
        for (int last = first; last < 6; ++last) {
            const interval_qualifier made{.first = static_cast<interval_field>(first), .last = static_cast<interval_field>(last)};
            const bool one_kind = made.last <= interval_field::month || made.first >= interval_field::day;
            if (one_kind && equal_ignoring_case(qualifier_name(made), name)) {
                return made;
            }
        }
    }
    return std::nullopt;
}

bool read_interval(std::string_view text, interval_qualifier qualifier, bifun_interval_ym& value) {
    field_sum sum;
    if (!read_fields(text, qualifier, sum) || sum.units / 12 > most) {
        return false;
    }
    const std::int64_t months = sum.negative ? -sum.units : sum.units;
    value = {.years = static_cast<std::int32_t>(months / 12), .months = static_cast<std::int32_t>(months % 12)};
    return true;
}

bool read_interval(std::string_view text, interval_qualifier qualifier, bifun_interval_dt& value) {
    field_sum sum;
    if (!read_fields(text, qualifier, sum)) {
        return false;
    }
    round_fraction(qualifier.fraction_digits, sum);
    if (sum.units / 86400 > most) {
        return false;
    }
    const std::int64_t seconds = sum.negative ? -sum.units : sum.units;
    value = {.days = static_cast<std::int32_t>(seconds / 86400),
             .hours = static_cast<std::int32_t>(seconds / 3600 % 24),
             .minutes = static_cast<std::int32_t>(seconds / 60 % 60),
             .seconds = static_cast<std::int32_t>(seconds % 60),
             .microseconds = static_cast<std::int32_t>(sum.negative ? -sum.microseconds : sum.microseconds)};
    return true;
}

} // namespace host
