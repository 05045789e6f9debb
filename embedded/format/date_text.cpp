// SPDX-License-Identifier: Apache-2.0
// Datetimes under a format, written.
#include <cstring>
#include <string_view>

#include "embedded/format/date_digits.h"
#include "embedded/format/date_format.h"
#include "embedded/format/date_names.h"
#include "embedded/format/number_words.h"
#include "layouts/datetime_arithmetic.h"
#include "layouts/datetime_layout.h"
#include "layouts/datetime_text.h"
#include "layouts/fixed_text.h"

namespace zqengine {
namespace {

using enum date_element;
using namespace bifun::datetime_layout;
namespace calendar = bifun::calendar;

std::uint32_t magnitude(std::int32_t number) { return static_cast<std::uint32_t>(number < 0 ? -number : number); }

std::uint32_t half_hour(std::uint32_t hour) { return (hour + 11) % 12 + 1; }
bool is_afternoon(std::uint32_t hour) { return hour % 24 >= 12; }

// ---- by a plan ----

std::uint32_t first_four(std::string_view name) {
    std::uint32_t characters = 0;
    std::memcpy(&characters, name.data(), 3);
    return characters;
}

// A name of three letters in its three styles.
void put_name(std::uint8_t* out, std::string_view name) {
    const std::uint32_t capitalized = first_four(name);
    const std::uint32_t upper = capitalized & 0xDFDFDFDF;
    const std::uint32_t lower = capitalized | 0x20202020;
    std::memcpy(out, &capitalized, sizeof capitalized);
    std::memcpy(out + 4, &upper, sizeof upper);
    std::memcpy(out + 8, &lower, sizeof lower);
}

void put_half_hour(std::uint8_t* out, std::uint32_t hour) {
    const std::uint64_t digits = bifun::eight_digits(half_hour(hour)) >> 48;
    constexpr std::uint64_t am = 0x6D61'4D41; // AMam
    constexpr std::uint64_t pm = 0x6D70'4D50;
    bifun::datetime_text::put_bytes(out, digits | (is_afternoon(hour) ? pm : am) << 16);
}

void put_zone(std::uint8_t* out, std::int32_t zone) {
    std::uint8_t text[8 + bifun::datetime_text::slack];
    bifun::datetime_text::put_zone(text, zone);
    std::memcpy(out, text + 1, 8); // without its blank
}

void make_ready(std::uint16_t parts, datetime_words words, std::int32_t zone, std::uint8_t* ready) {
    const bifun::fixed_text::digit_words digits = bifun::fixed_text::digits_of(
        static_cast<std::uint32_t>(year_of(words)), month_of(words), day_of(words), hour_of(words), minute_of(words), second_of(words));
    bifun::datetime_text::put_bytes(ready + source_date, digits.date);
    bifun::datetime_text::put_bytes(ready + source_time, digits.time);
    if ((parts & part_fraction) != 0) {
        bifun::datetime_text::put_bytes(ready + source_fraction, bifun::eight_digits(microsecond_of(words) * 100));
    }
    if ((parts & part_half_hour) != 0) {
        put_half_hour(ready + source_half_hour, hour_of(words));
    }
    const date_names& names = names_in(DFM_ENGLISH);
    if ((parts & part_month_name) != 0) {
        put_name(ready + source_month_name, names.short_months[month_of(words) - 1]);
    }
    if ((parts & part_day_name) != 0) {
        put_name(ready + source_day_name, names.short_days[bifun::datetime_arithmetic::day_of_week(words)]);
    }
    if ((parts & part_zone) != 0) {
        put_zone(ready + source_zone, zone);
    }
}

std::uint8_t* write_by_plan(const fixed_plan& plan, datetime_words words, std::int32_t zone, std::uint8_t* out) {
    std::uint8_t ready[source_size];
    make_ready(plan.parts, words, zone, ready);
    std::memcpy(out, plan.pattern, sizeof plan.pattern);
    const std::uint32_t count = plan.pair_count;
    for (std::uint32_t i = 0; i < count; ++i) {
        std::memcpy(out + plan.pairs[i].place, ready + plan.pairs[i].source, 2);
    }
    return out + plan.length;
}

// Of values that a plan is for. Years before 0 wrap.
bool fit_plan(datetime_words words) {
    return static_cast<std::uint32_t>(year_of(words)) <= bifun::fixed_text::last_year && hour_of(words) <= bifun::fixed_text::last_hour;
}

// ---- piece by piece ----

struct written_value {
    datetime_words words;
    std::int32_t zone;
    bool shows_era;
};

std::int32_t shown_year(const written_value& value, std::int32_t year) { return value.shows_era && year < 1 ? 1 - year : year; }

// The first century is that of the years 1 to 100, the one before it -1.
std::int32_t century_of(std::int32_t year) { return year > 0 ? (year - 1) / 100 + 1 : year / 100 - 1; }

struct iso_place {
    std::int32_t year;
    std::int32_t week;
};

// The week's Thursday tells its year.
iso_place iso_week_of(datetime_words words) {
    const std::int32_t number = bifun::datetime_arithmetic::day_number(words);
    const auto from_monday = static_cast<std::int32_t>((calendar::weekday_of_julian_day(number) + 6) % 7);
    const std::int32_t thursday = number - from_monday + 3;
    // The week of the last day reaches into a year that dates do not have, but day numbers do.
    const std::int32_t year = calendar::date_of_julian_day(thursday).year;
    return {.year = year, .week = (thursday - calendar::julian_day(year, 1, 1)) / 7 + 1};
}

// Both from the number of the day and from days since 1 January.
std::int32_t sunday_week_of(std::int32_t number, std::int32_t day_of_year) {
    return (day_of_year + 6 - static_cast<std::int32_t>(calendar::weekday_of_julian_day(number))) / 7;
}

std::int32_t monday_week_of(std::int32_t number, std::int32_t day_of_year) {
    const auto first = static_cast<std::int32_t>((calendar::weekday_of_julian_day(number - day_of_year + 1) + 6) % 7);
    return (day_of_year - 1 + first) / 7 + (first <= 3 ? 1 : 0);
}

iso_place counted_week_of(datetime_words words) {
    const std::int32_t number = bifun::datetime_arithmetic::day_number(words);
    const auto days = static_cast<std::int32_t>(bifun::datetime_arithmetic::day_of_year(words));
    const std::int32_t week = sunday_week_of(number, days);
    if (week > 0) {
        return {.year = year_of(words), .week = week};
    }
    const std::int32_t last_year = year_of(words) - 1;
    const std::int32_t last_day = number - days;
    return {.year = last_year, .week = sunday_week_of(last_day, last_day - calendar::julian_day(last_year, 1, 1) + 1)};
}

// Of an element that is a number, with all its digits.
std::int32_t number_of(date_element element, const written_value& value) {
    const datetime_words words = value.words;
    const auto signed_of = [](std::uint32_t number) { return static_cast<std::int32_t>(number); };
    switch (element) {
    case year:
    case signed_year:
    case year_in_groups:
    case rounded_year:
        return shown_year(value, year_of(words));
    case iso_year:
        return shown_year(value, iso_week_of(words).year);
    case century:
    case signed_century:
        return value.shows_era ? signed_of(magnitude(century_of(year_of(words)))) : century_of(year_of(words));
    case quarter:
        return signed_of((month_of(words) + 2) / 3);
    case month:
        return signed_of(month_of(words));
    case week:
        return signed_of((bifun::datetime_arithmetic::day_of_year(words) + 6) / 7);
    case iso_week:
        return iso_week_of(words).week;
    case month_week:
        return signed_of((day_of(words) + 6) / 7);
    case sunday_week:
        return sunday_week_of(bifun::datetime_arithmetic::day_number(words), signed_of(bifun::datetime_arithmetic::day_of_year(words)));
    case monday_week:
        return monday_week_of(bifun::datetime_arithmetic::day_number(words), signed_of(bifun::datetime_arithmetic::day_of_year(words)));
    case counted_week:
        return counted_week_of(words).week;
    case counted_year:
        return counted_week_of(words).year;
    case day_of_year:
        return signed_of(bifun::datetime_arithmetic::day_of_year(words));
    case day:
        return signed_of(day_of(words));
    case weekday:
        return signed_of(bifun::datetime_arithmetic::day_of_week(words) + 1);
    case weekday_from_0:
        return signed_of(bifun::datetime_arithmetic::day_of_week(words));
    case julian_day:
        return bifun::datetime_arithmetic::day_number(words);
    case hour_12:
        return signed_of(half_hour(hour_of(words)));
    case hour_24:
        return signed_of(hour_of(words));
    case minute:
        return signed_of(minute_of(words));
    default:
        return signed_of(second_of(words));
    }
}

constexpr std::uint32_t powers_of_ten[] = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000, 1000000000};

std::uint32_t digits_in(std::uint32_t number) {
    std::uint32_t digits = 1;
    while (digits < 10 && number >= powers_of_ten[digits]) {
        ++digits;
    }
    return digits;
}

// With at least `digits` of them.
std::uint8_t* put_number(std::uint8_t* out, std::uint32_t number, std::uint32_t digits) {
    const std::uint32_t shown = digits_in(number) > digits ? digits_in(number) : digits;
    for (std::uint32_t i = shown; i-- > 0; number /= 10) {
        out[i] = static_cast<std::uint8_t>('0' + number % 10);
    }
    return out + shown;
}

std::uint8_t* put_text(std::uint8_t* out, std::string_view text) {
    std::memcpy(out, text.data(), text.size());
    return out + text.size();
}

// Gives English letters the style of the element; the first of every word is its capital. Other bytes are part of no English name.
void restyle(std::uint8_t* text, const std::uint8_t* end, letter_style style) {
    bool first = true;
    for (; text != end; ++text) {
        const bool is_letter = (*text | 0x20U) >= 'a' && (*text | 0x20U) <= 'z';
        if (is_letter) {
            const bool upper = style == letter_style::upper || (style == letter_style::capitalized && first);
            *text = static_cast<std::uint8_t>(upper ? *text & ~0x20U : *text | 0x20U);
        }
        first = !is_letter;
    }
}

std::uint8_t* put_ordinal_suffix(std::uint8_t* out, std::uint32_t number, letter_style style) {
    const bool teens = number / 10 % 10 == 1;
    const std::uint32_t last = teens ? 0 : number % 10;
    std::uint8_t* const end = put_text(out, last == 1 ? "ST" : last == 2 ? "ND" : last == 3 ? "RD" : "TH");
    restyle(out, end, style);
    return end;
}

// Years that show fewer than four digits show the last ones.
bool is_cut(const date_piece& piece) {
    return piece.digits < 4 && (piece.element == year || piece.element == rounded_year || piece.element == iso_year);
}

std::uint8_t* put_number(std::uint8_t* out, const date_piece& piece, const written_value& value) {
    std::int32_t number = 0;
    std::uint32_t size = 0;
    if (piece.element == seconds_of_day) {
        size = seconds_of_time(time_of(value.words));
    } else {
        number = number_of(piece.element, value);
        size = magnitude(number);
    }
    const bool cut = is_cut(piece);
    if (cut) {
        size %= powers_of_ten[piece.digits];
    }
    const bool negative = number < 0 && !cut;
    const bool signed_always = piece.element == signed_year || piece.element == signed_century;
    const bool era_before = value.shows_era && signed_always && year_of(value.words) < 1;
    if (piece.suffix == number_suffix::words || piece.suffix == number_suffix::ordinal_words) {
        std::uint8_t* const begin = out;
        out = negative || era_before ? put_text(out, "MINUS ") : out;
        out = piece.suffix == number_suffix::words ? write_in_words(out, size) : write_ordinal_in_words(out, size);
        restyle(begin, out, piece.style);
        return out;
    }
    if (negative || era_before) {
        *out++ = '-';
    } else if (signed_always && !piece.fill_mode) {
        *out++ = ' ';
    }
    if (piece.element == year_in_groups && (size > 999 || !piece.fill_mode)) {
        out = put_number(out, size / 1000, 1);
        *out++ = ',';
        out = put_number(out, size % 1000, 3);
    } else {
        out = put_number(out, size, piece.fill_mode ? 1 : piece.digits);
    }
    return piece.suffix == number_suffix::ordinal ? put_ordinal_suffix(out, size, piece.suffix_style) : out;
}

std::uint8_t* put_name(std::uint8_t* out, std::string_view name, std::uint8_t blanks, const date_piece& piece) {
    std::uint8_t* end = put_text(out, name);
    restyle(out, end, piece.style);
    if (!piece.fill_mode) {
        std::memset(end, ' ', blanks);
        end += blanks;
    }
    return end;
}

std::uint8_t* put_years_in_words(std::uint8_t* out, const date_piece& piece, const written_value& value) {
    const std::int32_t number = shown_year(value, year_of(value.words));
    std::uint8_t* const begin = out;
    const bool has_sign = piece.element == signed_year_in_words ? year_of(value.words) < (value.shows_era ? 1 : 0) : number < 0;
    if (has_sign) {
        *out++ = '-';
    } else if (piece.element == signed_year_in_words && !piece.fill_mode) {
        *out++ = ' ';
    }
    out = write_year_in_words(out, magnitude(number));
    restyle(begin, out, piece.style);
    return out;
}

std::uint8_t* put_zone_parts(std::uint8_t* out, date_element element, std::int32_t displacement) {
    const std::uint32_t minutes = magnitude(displacement);
    if (element != zone_minute) {
        *out++ = displacement < 0 ? '-' : '+';
        out = put_number(out, minutes / 60, 2);
    }
    if (element == zone) {
        *out++ = ':';
    }
    return element == zone_hour ? out : put_number(out, minutes % 60, 2);
}

std::uint8_t* put_time(std::uint8_t* out, std::uint32_t hour, datetime_words words) {
    out = put_number(out, hour, 2);
    *out++ = ':';
    out = put_number(out, minute_of(words), 2);
    *out++ = ':';
    return put_number(out, second_of(words), 2);
}

std::uint8_t* write_piece(const date_model& model, const date_piece& piece, const written_value& value, std::uint8_t* out) {
    if (is_number(piece.element)) {
        return put_number(out, piece, value);
    }
    const datetime_words words = value.words;
    const date_names& names = names_in(model.language);
    const std::uint32_t month_index = month_of(words) - 1;
    switch (piece.element) {
    case punctuation:
    case quoted:
        std::memcpy(out, model.text + piece.offset, piece.length);
        return out + piece.length;
    case fraction:
        put_number(out, microsecond_of(words), 6);
        std::memset(out + 6, '0', 3);
        return out + piece.digits;
    case year_in_words:
    case signed_year_in_words:
        return put_years_in_words(out, piece, value);
    case month_name:
        return put_name(out, names.months[month_index], names.month_blanks[month_index], piece);
    case short_month_name:
        return put_name(out, names.short_months[month_index], names.short_month_blanks[month_index], piece);
    case roman_month: {
        const std::string_view roman = roman_months[month_index];
        return put_name(out, roman, static_cast<std::uint8_t>(4 - roman.size()), piece);
    }
    case day_name: {
        const std::uint32_t index = bifun::datetime_arithmetic::day_of_week(words);
        return put_name(out, names.days[index], names.day_blanks[index], piece);
    }
    case short_day_name:
        return put_name(out, names.short_days[bifun::datetime_arithmetic::day_of_week(words)], 0, piece);
    case meridian:
        return put_name(out, names.meridians[is_afternoon(hour_of(words)) ? 1 : 0], 0, piece);
    case meridian_with_points:
        return put_name(out, names.meridians_with_points[is_afternoon(hour_of(words)) ? 1 : 0], 0, piece);
    case era:
        return put_name(out, names.eras[year_of(words) < 1 ? 1 : 0], 0, piece);
    case era_with_points:
        return put_name(out, names.eras_with_points[year_of(words) < 1 ? 1 : 0], 0, piece);
    case time_12: {
        out = put_time(out, half_hour(hour_of(words)), words);
        *out++ = ' ';
        return put_name(out, names.meridians[is_afternoon(hour_of(words)) ? 1 : 0], 0, piece);
    }
    case time_24:
        return put_time(out, hour_of(words), words);
    default:
        return put_zone_parts(out, piece.element, value.zone);
    }
}

[[gnu::noinline]] std::uint8_t* write_pieces(const date_model& model, const written_value& value, std::uint8_t* out) {
    for (std::uint32_t i = 0; i < model.piece_count; ++i) {
        out = write_piece(model, model.pieces[i], value, out);
    }
    return out;
}

} // namespace

std::uint8_t* write_date(const date_model& model, const zqtime& value, std::int32_t zone, std::uint8_t* out) {
    const datetime_words words = load_datetime(value);
    const std::int32_t shown_zone = zone_of(words) == ZQTIME_NO_ZONE ? zone : zone_of(words);
    if (model.plan.length != 0 && fit_plan(words)) [[likely]] {
        return write_by_plan(model.plan, words, shown_zone, out);
    }
    return write_pieces(model, {.words = words, .zone = shown_zone, .shows_era = model.shows_era}, out);
}

} // namespace zqengine
