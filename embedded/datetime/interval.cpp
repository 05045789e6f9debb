// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <cstdint>
#include <string_view>

#include "bop/frame/status.h"
#include "embedded/decimal/decimal_parts.h"
#include "engine/interval.h"

namespace zqengine {
namespace {

// A unit of which a decimal is so many.
struct interval_unit {
    std::string_view name;
    std::uint64_t parts;           // months or microseconds in it; not over most_parts
    std::uint64_t per_first_field; // how many are a year or a day
};

constexpr std::uint64_t second = 1'000'000;
constexpr std::uint64_t most_parts = 86'400 * second;

constexpr std::array<interval_unit, 2> units_of_months{{{"YEAR", 12, 1}, {"MONTH", 1, 12}}};
constexpr std::array<interval_unit, 4> units_of_time{
    {{"DAY", 86'400 * second, 1}, {"HOUR", 3600 * second, 24}, {"MINUTE", 60 * second, 24 * 60}, {"SECOND", second, 24 * 60 * 60}}};

bool is_named(std::string_view text, std::string_view name) {
    if (text.size() != name.size()) {
        return false;
    }
    for (std::size_t i = 0; i < name.size(); ++i) {
        if (text[i] != name[i] && text[i] != name[i] + ('a' - 'A')) {
            return false;
        }
    }
    return true;
}

// The unit that is so named, or null.
template <std::size_t Count>
const interval_unit* find_unit(const std::array<interval_unit, Count>& units, const std::uint8_t* name, std::uint32_t length) {
    while (length > 0 && name[length - 1] == ' ') {
        --length;
    }
    while (length > 0 && *name == ' ') {
        ++name;
        --length;
    }
    const std::string_view text(reinterpret_cast<const char*>(name), length);
    for (const interval_unit& unit : units) {
        if (is_named(text, unit.name)) {
            return &unit;
        }
    }
    return nullptr;
}

struct whole_and_parts {
    uint128 whole;
    std::uint64_t parts; // below the number in one unit
};

// The magnitude of a decimal as whole units and parts of one, rounded half away from zero. Too large a number stays too large.
whole_and_parts count_parts(const decimal_parts& number, std::uint64_t parts_per_unit) {
    if (number.scale <= 0) {
        return {.whole = number.coefficient, .parts = 0}; // zeros behind a coefficient follow 38 digits of it
    }
    const auto scale = static_cast<std::uint32_t>(number.scale);
    const uint128 whole = scale < powers_of_ten.size() ? number.coefficient / powers_of_ten[scale] : 0;
    const uint128 fraction = scale < powers_of_ten.size() ? number.coefficient - whole * powers_of_ten[scale] : number.coefficient;

    // So many digits of the fraction can be multiplied. What is behind them counts only for a half.
    constexpr std::uint32_t exact_digits = 27;
    static_assert(most_parts <= ~uint128{0} / 2 / powers_of_ten[exact_digits]);
    const std::uint32_t digits = scale < exact_digits ? scale : exact_digits;
    const std::uint32_t more_digits = scale - digits;
    if (more_digits >= powers_of_ten.size()) {
        return {.whole = whole, .parts = 0};
    }
    const uint128 front = fraction / powers_of_ten[more_digits];
    const uint128 back = fraction - front * powers_of_ten[more_digits];
    const uint128 product = front * parts_per_unit;
    auto parts = static_cast<std::uint64_t>(product / powers_of_ten[digits]);
    const uint128 twice_rest = (product - parts * powers_of_ten[digits]) * 2;
    // Without the digits behind, twice the rest falls short of a whole by so much; they give less than two units' parts to it.
    const uint128 short_by = twice_rest < powers_of_ten[digits] ? powers_of_ten[digits] - twice_rest : 0;
    if (short_by <= uint128{parts_per_unit} * 2 && back * parts_per_unit * 2 >= short_by * powers_of_ten[more_digits]) {
        ++parts;
    }
    return parts == parts_per_unit ? whole_and_parts{.whole = whole + 1, .parts = 0} : whole_and_parts{.whole = whole, .parts = parts};
}

// An interval with the sign of its number: the first field, and months or microseconds beyond it.
struct signed_interval {
    std::int32_t first;
    std::int64_t rest;
};

template <std::size_t Count>
std::int32_t convert(const xdec& number, const std::array<interval_unit, Count>& units, const std::uint8_t* name, std::uint32_t length,
                     signed_interval& result) {
    const interval_unit* const unit = find_unit(units, name, length);
    if (unit == nullptr) {
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    const decimal_parts parts = split_decimal(number);
    const whole_and_parts counted = count_parts(parts, unit->parts);
    const std::uint64_t largest_first = (std::uint64_t{1} << 31) - (parts.negative ? 0 : 1);
    if (counted.whole >= uint128{largest_first + 1} * unit->per_first_field) {
        return BIFUN_NUMERIC_OVERFLOW;
    }
    const auto whole = static_cast<std::uint64_t>(counted.whole);
    const auto first = static_cast<std::int64_t>(whole / unit->per_first_field);
    const auto rest = static_cast<std::int64_t>(whole % unit->per_first_field * unit->parts + counted.parts);
    result = {.first = static_cast<std::int32_t>(parts.negative ? -first : first), .rest = parts.negative ? -rest : rest};
    return BIFUN_OK;
}

} // namespace
} // namespace zqengine

int32_t xdec_to_ivym(const xdec* number, const uint8_t* unit, uint32_t unit_length, bifun_interval_ym* result) {
    zqengine::signed_interval interval;
    const std::int32_t status = zqengine::convert(*number, zqengine::units_of_months, unit, unit_length, interval);
    if (status == BIFUN_OK) {
        *result = {.years = interval.first, .months = static_cast<std::int32_t>(interval.rest)};
    }
    return status;
}

int32_t xdec_to_ivdt(const xdec* number, const uint8_t* unit, uint32_t unit_length, bifun_interval_dt* result) {
    zqengine::signed_interval interval;
    const std::int32_t status = zqengine::convert(*number, zqengine::units_of_time, unit, unit_length, interval);
    if (status == BIFUN_OK) {
        const auto second = static_cast<std::int64_t>(zqengine::second);
        const auto seconds = static_cast<std::int32_t>(interval.rest / second);
        *result = {.days = interval.first,
                   .hours = seconds / 3600,
                   .minutes = seconds / 60 % 60,
                   .seconds = seconds % 60,
                   .microseconds = static_cast<std::int32_t>(interval.rest % second)};
    }
    return status;
}
