// SPDX-License-Identifier: Apache-2.0
// Date formats, parsed. docs/date-formats.md describes the languages.
#ifndef BIFUN_EMBEDDED_FORMAT_DATE_FORMAT_H
#define BIFUN_EMBEDDED_FORMAT_DATE_FORMAT_H

#include <cstdint>
#include <cstring>

#include "engine/date_format.h"

namespace zqengine {

enum class date_element : std::uint8_t {
    // bytes of the format itself
    punctuation,
    quoted,
    // numbers
    year,           // YYYY, YYY, YY, Y: as many of its last digits as the element has
    signed_year,    // SYYYY
    year_in_groups, // Y,YYY
    rounded_year,   // RRRR, RR
    iso_year,       // IYYY, IYY, IY, I
    century,
    signed_century,
    quarter,
    month,
    week,         // from 1 January on
    iso_week,     // of the ISO year, from Monday on
    month_week,   // from the first of the month on
    sunday_week,  // of the year, from its first Sunday on; 0 before
    monday_week,  // of the year, from the Monday on that is nearest to 1 January; 0 before
    counted_week, // sunday_week, or the last one of the year before
    counted_year, // the year in which counted_week counts
    day_of_year,
    day,
    weekday,        // 1 Sunday to 7
    weekday_from_0, // 0 Sunday to 6
    julian_day,
    hour_12,
    hour_24,
    minute,
    second,
    seconds_of_day,
    // others
    fraction,
    year_in_words,
    signed_year_in_words,
    month_name,
    short_month_name,
    roman_month,
    day_name,
    short_day_name,
    meridian, // AM or PM
    meridian_with_points,
    era, // AD or BC
    era_with_points,
    zone_hour,
    zone_minute,
    zone,
    time_12, // HH12:MI:SS AM
    time_24, // HH24:MI:SS
};

constexpr bool is_number(date_element element) { return element >= date_element::year && element <= date_element::seconds_of_day; }

enum class letter_style : std::uint8_t { upper, capitalized, lower };
enum class number_suffix : std::uint8_t { none, ordinal, words, ordinal_words };

// An element with the place in the format where it stands.
struct date_piece {
    date_element element;
    std::uint8_t digits; // of a number or a fraction
    std::uint8_t offset;
    std::uint8_t length;
    letter_style style;
    letter_style suffix_style;
    number_suffix suffix;
    bool fill_mode; // FM: no padding
    bool exact;     // FX: text must match to the letter
};

// Most formats are of elements of fixed width, made of pairs of characters that lie ready once a value has been taken apart
// (date_digits.h). A pair may overlap the one before it.
struct fixed_pair {
    std::uint8_t source;
    std::uint8_t place;
};

struct fixed_plan {
    static constexpr std::size_t most_pairs = 24;

    std::uint8_t length; // 0: the format has no plan
    std::uint8_t pair_count;
    std::uint16_t parts;                       // what is to be made ready, of date_digits.h
    bool can_read;                             // it is of digits of a date and perhaps a time, each once, and the date is whole
    std::uint8_t pattern[DFM_FIXED_TEXT_SIZE]; // the characters that do not depend on the value; 0 in places of pairs and behind the text
    fixed_pair pairs[most_pairs];
    // Where in a text that is read the digits of date and time stand, and those of the fraction: in its first part and in its last. A byte
    // with the top bit set stands for none.
    std::uint8_t digits_in_first[16];
    std::uint8_t digits_in_last[16];
    std::uint8_t fraction_in_first[16];
    std::uint8_t fraction_in_last[16];
};

// What keeps a format from being one, or from being read by.
enum class format_fault : std::uint8_t {
    none,
    too_long,
    unknown_element,
    open_quote,       // without its closing one
    misplaced_suffix, // TH or SP behind what is no number
    lone_percent,     // at the end of a %-format
    output_only,      // cannot be read
    repeated,         // says again what the other element says
    contradiction,    // cannot stand together with the other element
    incomplete,       // has no meaning without another element
    unexpected_zone,  // an element of the zone, where the result has none
};

struct format_problem {
    format_fault fault;
    std::uint8_t offset;
    std::uint8_t length;
    std::uint8_t other_offset; // the other element, where it takes two
    std::uint8_t other_length;
};

// Today's date, for what a text leaves out.
struct current_date {
    std::int32_t year;
    std::uint32_t month;
};

template <class Parsed> struct format_memory;

struct date_model {
    std::uint32_t room;
    dfm_fixed_text fixed;
    format_memory<date_model>* memory; // of the session that it is parsed for; null without one
    std::uint8_t language;
    std::uint8_t piece_count;
    bool shows_era; // so that years count from 1 in either direction
    bool has_zone;
    bool has_time;
    bool needs_today;
    format_problem reading_problem; // why text cannot be read by it
    current_date today;
    fixed_plan plan;
    std::uint8_t text[DFM_LONGEST_FORMAT];
    date_piece pieces[DFM_LONGEST_FORMAT];
};
static_assert(sizeof(date_model) <= sizeof(dfm_model));
static_assert(offsetof(dfm_model, room) == offsetof(date_model, room) && offsetof(dfm_model, fixed) == offsetof(date_model, fixed));

inline date_model& inside(dfm_model& model) { return reinterpret_cast<date_model&>(model); }
inline const date_model& inside(const dfm_model& model) { return reinterpret_cast<const date_model&>(model); }

// Parses a format model or a %-format into a record of which the language is set. Where there is a problem the model has no pieces.
[[nodiscard]] format_problem parse_format_model(const std::uint8_t* format, std::uint32_t length, date_model& model);
[[nodiscard]] format_problem parse_percent_format(const std::uint8_t* format, std::uint32_t length, date_model& model);

// Leaves a model without pieces, as finish_model would.
void forget_elements(date_model& model);

// Works out, from its pieces, what a model is to be written and read by.
void finish_model(date_model& model);

void set_today(date_model& model);

// ---- texts ----

// Writes a value; returns what is behind the text. `zone` is that of a value without one.
std::uint8_t* write_date(const date_model& model, const zqtime& value, std::int32_t zone, std::uint8_t* out);

enum class text_fault : std::uint8_t {
    none,
    unreadable_model,
    mismatch,      // the text does not go on as the element at hand
    surplus,       // there is more text than the model has elements
    missing_date,  // a day that the calendar does not have
    wrong_weekday, // the day of the week is not that of the date
    wrong_zone,    // beyond 14 hours
};

struct date_reading {
    text_fault fault;
    std::uint32_t offset; // into the text, where it does not match
    std::uint32_t piece;  // into the model: what was expected there
    std::int32_t zone;    // ZQTIME_NO_ZONE where the text has none
};

// Reads a text into a value without a zone, which is untouched where there is a fault.
date_reading read_date(const date_model& model, const std::uint8_t* text, std::uint32_t length, zqtime& result);

} // namespace zqengine

#endif
