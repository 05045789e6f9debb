// SPDX-License-Identifier: Apache-2.0
#include "embedded/datetime/text.h"

#include <cstring>

#include "bop/frame/status.h"
#include "embedded/decimal/digits.h"
#include "engine/datetime.h"
#include "layouts/calendar.h"
#include "layouts/datetime_layout.h"
#include "layouts/fixed_digits.h"

namespace zqengine {

using namespace bifun::datetime_layout;
using bifun::eight_characters;
using bifun::joined_digits;
using bifun::match_digits;
using bifun::pattern_of;

namespace {

// ---- text in -----------------------------------------------------------------------------------------------------

// What is left to read. Each reader below takes its form off the front and returns whether it was there; after a failure the rest is
// not used any more.
struct reader {
    const std::uint8_t* next;
    const std::uint8_t* end;
};

bool at_end(const reader& text) { return text.next == text.end; }

bool at(const reader& text, char character) { return !at_end(text) && *text.next == static_cast<std::uint8_t>(character); }

bool take(reader& text, char character) {
    if (!at(text, character)) {
        return false;
    }
    ++text.next;
    return true;
}

bool take_blanks(reader& text) {
    const std::uint8_t* const first = text.next;
    while (take(text, ' ')) {
    }
    return text.next != first;
}

bool at_digit(const reader& text) { return !at_end(text) && *text.next - unsigned{'0'} < 10; }

std::uint32_t take_digit(reader& text) { return *text.next++ - unsigned{'0'}; }

bool take_two_digits(reader& text, std::uint32_t& number) {
    if (!at_digit(text)) {
        return false;
    }
    number = take_digit(text) * 10;
    if (!at_digit(text)) {
        return false;
    }
    number += take_digit(text);
    return true;
}

bool take_one_or_two_digits(reader& text, std::uint32_t& number) {
    if (!at_digit(text)) {
        return false;
    }
    number = take_digit(text);
    if (at_digit(text)) {
        number = number * 10 + take_digit(text);
    }
    return true;
}

// ---- forms of fixed width --------------------------------------------------------------------------------------------

std::ptrdiff_t left(const reader& text) { return text.end - text.next; }

// YYYY-MM-DD.
bool take_iso_date(reader& text, datetime_parts& parts) {
    joined_digits year_and_month;
    joined_digits day;
    if (left(text) < 10 || !match_digits<pattern_of("0000-00-")>(eight_characters(text.next), year_and_month) ||
        !match_digits<pattern_of("00-00-00")>(eight_characters(text.next + 2), day)) {
        return false;
    }
    parts.year = static_cast<std::int32_t>(year_and_month.at(0) * 100 + year_and_month.at(2));
    parts.month = year_and_month.at(5);
    parts.day = day.at(6);
    text.next += 10;
    return true;
}

// HH:MM:SS.
bool take_iso_time(reader& text, datetime_parts& parts) {
    joined_digits time;
    if (left(text) < 8 || !match_digits<pattern_of("00:00:00")>(eight_characters(text.next), time)) {
        return false;
    }
    parts.hour = time.at(0);
    parts.minute = time.at(3);
    parts.second = time.at(6);
    text.next += 8;
    return true;
}

// ---- parts of a text ----------------------------------------------------------------------------------------------

bool take_date(reader& text, datetime_parts& parts, bool& run_together) {
    run_together = false;
    if (take_iso_date(text, parts)) {
        return true;
    }
    const bool negative = take(text, '-');
    std::uint32_t century;
    std::uint32_t year_of_century;
    if (!take_two_digits(text, century) || !take_two_digits(text, year_of_century)) {
        return false;
    }
    const auto year = static_cast<std::int32_t>(century * 100 + year_of_century);
    parts.year = negative ? -year : year;
    run_together = !negative && at_digit(text);
    if (run_together) {
        return take_two_digits(text, parts.month) && take_two_digits(text, parts.day);
    }
    if (!at(text, '-') && !at(text, '/') && !at(text, '.')) {
        return false;
    }
    const auto separator = static_cast<char>(*text.next++);
    return take_one_or_two_digits(text, parts.month) && take(text, separator) && take_one_or_two_digits(text, parts.day);
}

// Of the first characters, 1 to 8 digits behind a decimal point; the seventh and eighth do not count.
std::uint32_t microseconds_of(std::uint64_t characters, std::uint32_t digits) {
    const std::uint64_t keep = ~std::uint64_t{0} >> (64 - 8 * digits);
    constexpr std::uint32_t units_per_microsecond = 100;
    return number_of_digits((characters & keep) | (eight_zero_characters & ~keep), 8) / units_per_microsecond;
}

// Nothing or a fraction, behind a text of eight characters at least.
bool take_fraction(reader& text, datetime_parts& parts) {
    if (!take(text, '.') && !take(text, ',')) {
        return true;
    }
    const std::ptrdiff_t length = left(text);
    const std::uint64_t characters = length >= 8 ? eight_characters(text.next) : eight_characters(text.end - 8) >> 1 >> (63 - 8 * length);
    const std::uint32_t digits = leading_digits(characters);
    if (digits == 0) {
        return false;
    }
    parts.microsecond = microseconds_of(characters, digits);
    text.next += digits;
    while (at_digit(text)) {
        ++text.next;
    }
    return true;
}

// H:MM or HH:MM, [:SS[.fraction]].
bool take_time(reader& text, datetime_parts& parts) {
    if (take_iso_time(text, parts)) {
        return take_fraction(text, parts);
    }
    if (!take_one_or_two_digits(text, parts.hour) || !take(text, ':') || !take_two_digits(text, parts.minute)) {
        return false;
    }
    return !take(text, ':') || (take_two_digits(text, parts.second) && take_fraction(text, parts));
}

// HHMM[SS[.fraction]].
bool take_time_run_together(reader& text, datetime_parts& parts) {
    if (!take_two_digits(text, parts.hour) || !take_two_digits(text, parts.minute)) {
        return false;
    }
    return !at_digit(text) || (take_two_digits(text, parts.second) && take_fraction(text, parts));
}

// Nothing or a zone, after blanks or none.
bool take_zone(reader& text, datetime_parts& parts) {
    if (at_end(text)) {
        return true;
    }
    take_blanks(text);
    if (take(text, 'Z') || take(text, 'z')) {
        parts.zone = 0;
        return true;
    }
    const bool west = at(text, '-');
    if (!take(text, '+') && !take(text, '-')) {
        return false;
    }
    std::uint32_t hours;
    std::uint32_t minutes = 0;
    if (!take_two_digits(text, hours)) {
        return false;
    }
    const bool colon = take(text, ':');
    if ((colon || !at_end(text)) && !take_two_digits(text, minutes)) {
        return false;
    }
    const auto displacement = static_cast<std::int32_t>(hours * 60 + minutes);
    if (minutes > 59 || displacement > max_zone) {
        return false;
    }
    parts.zone = west ? -displacement : displacement;
    return true;
}

// HHMMSS without a separator behind a date, or either form of time behind one.
bool take_time_behind_date(reader& text, datetime_parts& parts, bool date_run_together) {
    if (date_run_together && at_digit(text)) {
        constexpr std::ptrdiff_t shortest = 6; // YYYYMMDDHHMM would be a two-digit year to some
        return left(text) >= shortest && text.next[4] - unsigned{'0'} < 10 && take_time_run_together(text, parts);
    }
    if (!take(text, 'T') && !take(text, 't') && !take_blanks(text)) {
        return false;
    }
    const bool time_run_together = date_run_together && left(text) > 2 && text.next[1] != ':' && text.next[2] != ':';
    return time_run_together ? take_time_run_together(text, parts) : take_time(text, parts);
}

bool take_datetime(reader& text, datetime_parts& parts, datetime_kind& kind) {
    const bool time_only = left(text) > 2 && (text.next[2] == ':' || text.next[1] == ':');
    if (time_only) {
        kind = datetime_kind::time;
        return take_time(text, parts) && take_zone(text, parts);
    }
    bool run_together;
    if (!take_date(text, parts, run_together)) {
        return false;
    }
    if (at_end(text)) {
        kind = datetime_kind::date;
        return true;
    }
    kind = datetime_kind::datetime;
    return take_time_behind_date(text, parts, run_together) && take_zone(text, parts);
}

// Of parts whose zone is one.
bool is_datetime(const datetime_parts& parts) {
    return bifun::calendar::date_exists(parts.year, parts.month, parts.day) && parts.hour <= 23 && parts.minute <= 59 && parts.second <= 59;
}

// YYYY-MM-DD HH:MM:SS[.ffffff] and nothing around it, as most texts are: looked at as a whole, where the readers above go from part to
// part. Returns false for others.
bool read_usual_datetime(const std::uint8_t* text, std::uint32_t length, zqtime& result) {
    constexpr std::uint32_t without_fraction = 19;
    constexpr std::uint32_t most_digits = 6;
    joined_digits year_and_month;
    joined_digits day_and_hour;
    joined_digits time;
    if (length < without_fraction || length > without_fraction + 1 + most_digits ||
        !match_digits<pattern_of("0000-00-")>(eight_characters(text), year_and_month) ||
        !match_digits<pattern_of("00 00:00")>(eight_characters(text + 8), day_and_hour) ||
        !match_digits<pattern_of("00:00:00")>(eight_characters(text + 11), time)) {
        return false;
    }
    std::uint32_t microsecond = 0;
    if (length != without_fraction) {
        const std::uint32_t digits = length - without_fraction - 1;
        const std::uint64_t characters = eight_characters(text + length - 8) >> 1 >> (63 - 8 * digits);
        if (text[without_fraction] != '.' || digits == 0 || leading_digits(characters) != digits) {
            return false;
        }
        microsecond = microseconds_of(characters, digits);
    }
    const datetime_parts parts{.year = static_cast<std::int32_t>(year_and_month.at(0) * 100 + year_and_month.at(2)),
                               .month = year_and_month.at(5),
                               .day = day_and_hour.at(0),
                               .hour = time.at(0),
                               .minute = time.at(3),
                               .second = time.at(6),
                               .microsecond = microsecond,
                               .zone = ZQTIME_NO_ZONE};
    if (!is_datetime(parts)) {
        return false;
    }
    store_datetime(result, pack_datetime(parts));
    return true;
}

[[gnu::noinline]] std::int32_t read_any_datetime(const std::uint8_t* text, std::uint32_t length, zqtime* result, datetime_kind* kind) {
    reader rest{.next = text, .end = text + length};
    take_blanks(rest);
    while (!at_end(rest) && rest.end[-1] == ' ') {
        --rest.end;
    }
    datetime_parts parts{.year = 1900, .month = 1, .day = 1, .hour = 0, .minute = 0, .second = 0, .microsecond = 0, .zone = ZQTIME_NO_ZONE};
    datetime_kind found;
    if (!take_datetime(rest, parts, found) || !at_end(rest) || !is_datetime(parts)) {
        return BIFUN_UNUSABLE_TEXT;
    }
    store_datetime(*result, pack_datetime(parts));
    *kind = found;
    return BIFUN_OK;
}

// ---- text out ----------------------------------------------------------------------------------------------------

char* put_two_digits(char* out, std::uint32_t number) {
    *out++ = static_cast<char>('0' + number / 10);
    *out++ = static_cast<char>('0' + number % 10);
    return out;
}

char* put_date(char* out, datetime_words words) {
    const std::int32_t year = year_of(words);
    const auto magnitude = static_cast<std::uint32_t>(year < 0 ? -year : year);
    if (year < 0) {
        *out++ = '-';
    }
    out = put_two_digits(out, magnitude / 100);
    out = put_two_digits(out, magnitude % 100);
    *out++ = '-';
    out = put_two_digits(out, month_of(words));
    *out++ = '-';
    return put_two_digits(out, day_of(words));
}

char* put_time(char* out, datetime_words words) {
    const std::uint32_t hour = hour_of(words);
    for (std::uint32_t unit = 1'000'000; unit >= 100; unit /= 10) {
        if (hour >= unit) {
            *out++ = static_cast<char>('0' + hour / unit % 10);
        }
    }
    out = put_two_digits(out, hour % 100);
    *out++ = ':';
    out = put_two_digits(out, minute_of(words));
    *out++ = ':';
    out = put_two_digits(out, second_of(words));
    if (std::uint32_t fraction = microsecond_of(words); fraction != 0) {
        *out++ = '.';
        for (std::uint32_t unit = 100'000; fraction != 0; unit /= 10) {
            *out++ = static_cast<char>('0' + fraction / unit);
            fraction %= unit;
        }
    }
    const std::int32_t zone = zone_of(words);
    if (zone != ZQTIME_NO_ZONE) {
        const auto displacement = static_cast<std::uint32_t>(zone < 0 ? -zone : zone);
        *out++ = zone < 0 ? '-' : '+';
        out = put_two_digits(out, displacement / 60);
        *out++ = ':';
        out = put_two_digits(out, displacement % 60);
    }
    return out;
}

} // namespace

std::int32_t read_datetime(const std::uint8_t* text, std::uint32_t length, zqtime* result, datetime_kind* kind) {
    if (read_usual_datetime(text, length, *result)) [[likely]] {
        *kind = datetime_kind::datetime;
        return BIFUN_OK;
    }
    return read_any_datetime(text, length, result, kind);
}

std::size_t write_datetime(const zqtime& value, datetime_kind kind, char* buffer) {
    const datetime_words words = load_datetime(value);
    char* out = buffer;
    if (kind != datetime_kind::time) {
        out = put_date(out, words);
    }
    if (kind == datetime_kind::datetime) {
        *out++ = ' ';
    }
    if (kind != datetime_kind::date) {
        out = put_time(out, words);
    }
    return static_cast<std::size_t>(out - buffer);
}

} // namespace zqengine

int32_t zqtime_from_char_ex(const uint8_t* text, uint32_t length, zqtime* result) {
    zqengine::datetime_kind kind;
    return zqengine::read_datetime(text, length, result, &kind);
}
