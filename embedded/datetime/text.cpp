#include "embedded/datetime/text.h"

#include <cstring>

#include "bop/frame/status.h"
#include "engine/datetime.h"
#include "engine/datetime_layout.h"

namespace zqengine {

using namespace bifun::datetime_layout;

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

bool take_date(reader& text, datetime_parts& parts, bool& run_together) {
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

bool take_fraction(reader& text, datetime_parts& parts) {
    if (!at_digit(text)) {
        return false;
    }
    for (std::uint32_t unit = 100'000; at_digit(text); unit /= 10) {
        parts.microsecond += take_digit(text) * unit;
    }
    return true;
}

// HH:MM[:SS[.fraction]], or where `may_run_together` also HHMMSS.
bool take_time(reader& text, datetime_parts& parts, bool may_run_together) {
    if (!take_two_digits(text, parts.hour)) {
        return false;
    }
    if (may_run_together && at_digit(text)) {
        return take_two_digits(text, parts.minute) && take_two_digits(text, parts.second);
    }
    if (!take(text, ':') || !take_two_digits(text, parts.minute)) {
        return false;
    }
    if (!take(text, ':')) {
        return true;
    }
    return take_two_digits(text, parts.second) && (!take(text, '.') || take_fraction(text, parts));
}

// Nothing or a zone.
bool take_zone(reader& text, datetime_parts& parts) {
    if (at_end(text)) {
        return true;
    }
    if (take(text, 'Z')) {
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
    if (minutes > 59) {
        return false;
    }
    const auto displacement = static_cast<std::int32_t>(hours * 60 + minutes);
    parts.zone = west ? -displacement : displacement;
    return true;
}

bool take_datetime(reader& text, datetime_parts& parts, datetime_kind& kind) {
    const bool time_only = text.end - text.next > 2 && text.next[2] == ':';
    bool run_together = false;
    if (time_only) {
        kind = datetime_kind::time;
        return take_time(text, parts, false) && take_zone(text, parts);
    }
    if (!take_date(text, parts, run_together)) {
        return false;
    }
    if (at_end(text)) {
        kind = datetime_kind::date;
        return true;
    }
    kind = datetime_kind::datetime;
    const bool after_t = take(text, 'T');
    return (after_t || take_blanks(text)) && take_time(text, parts, after_t && run_together) && take_zone(text, parts);
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
    reader rest{.next = text, .end = text + length};
    take_blanks(rest);
    while (!at_end(rest) && rest.end[-1] == ' ') {
        --rest.end;
    }
    datetime_parts parts{.year = 1900, .month = 1, .day = 1, .hour = 0, .minute = 0, .second = 0, .microsecond = 0, .zone = ZQTIME_NO_ZONE};
    datetime_kind found;
    if (!take_datetime(rest, parts, found) || !at_end(rest) ||
        zqtime_encode(result, parts.year, parts.month, parts.day, parts.hour, parts.minute, parts.second, parts.microsecond, parts.zone) !=
            BIFUN_OK) {
        return BIFUN_UNUSABLE_TEXT;
    }
    *kind = found;
    return BIFUN_OK;
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
