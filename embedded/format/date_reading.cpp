// SPDX-License-Identifier: Apache-2.0
// Text read by a format model.
#include <cstring>
#include <string_view>

#include "embedded/format/date_digits.h"
#include "embedded/format/date_elements.h"
#include "embedded/format/date_format.h"
#include "embedded/format/date_names.h"
#include "embedded/format/format_reader.h"
#include "layouts/byte_block.h"
#include "layouts/calendar.h"
#include "layouts/datetime_layout.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace zqengine {
namespace {

using enum date_element;
using bifun::byte_block;
using bifun::load_block;
namespace calendar = bifun::calendar;
namespace datetime_layout = bifun::datetime_layout;

// ---- by a plan: texts that have every character in its place ----

bool store_existing(const datetime_layout::datetime_parts& parts, zqtime& result) {
    if (!calendar::date_exists(parts.year, parts.month, parts.day) || parts.hour > 23 || parts.minute > 59 || parts.second > 59) {
        return false; // the other way tells why, or reads a day of the changeover
    }
    datetime_layout::store_datetime(result, datetime_layout::pack_datetime(parts));
    return true;
}

using number_block [[gnu::vector_size(16)]] = std::uint16_t;

// The numbers of two digits each, which are found in two blocks.
#if defined(__x86_64__)
// Not every processor has the instructions that look bytes up.
#define READS_BY_PLAN [[gnu::target("ssse3")]]
bool has_lookups() { return __builtin_cpu_supports("ssse3") != 0; }

READS_BY_PLAN __m128i looked_up(byte_block digits, const std::uint8_t* index) {
    return _mm_shuffle_epi8(reinterpret_cast<__m128i>(digits), reinterpret_cast<__m128i>(load_block(index)));
}

READS_BY_PLAN number_block numbers_in(byte_block first, byte_block last, const std::uint8_t* in_first, const std::uint8_t* in_last) {
    const __m128i digits = _mm_or_si128(looked_up(first, in_first), looked_up(last, in_last));
    return reinterpret_cast<number_block>(_mm_maddubs_epi16(digits, _mm_set1_epi16(0x010A)));
}
#else
#define READS_BY_PLAN
bool has_lookups() { return true; }

number_block numbers_in(byte_block first, byte_block last, const std::uint8_t* in_first, const std::uint8_t* in_last) {
    const byte_block digits = bifun::looked_up(first, load_block(in_first)) | bifun::looked_up(last, load_block(in_last));
    const auto pairs = reinterpret_cast<number_block>(digits);
    return (pairs & 0xFF) * 10 + (pairs >> 8);
}
#endif

byte_block load_both_ends(const std::uint8_t* bytes, std::uint32_t length) {
    std::uint64_t first;
    std::uint64_t last;
    std::memcpy(&first, bytes, sizeof first);
    std::memcpy(&last, bytes + length - sizeof last, sizeof last);
    return bifun::block_of_words(first, last);
}

// Takes the pattern off a text: digits become their values and characters of the pattern 0, where they are right.
byte_block take_off(byte_block text, byte_block pattern, byte_block& right) {
    const byte_block at_digits = bifun::where_equal(pattern, byte_block{});
    const byte_block values = text ^ (pattern | (at_digits & '0'));
    right &= bifun::where_at_most(values, at_digits & 9);
    return values;
}

READS_BY_PLAN bool read_by_plan(const fixed_plan& plan, const std::uint8_t* text, std::uint32_t length, zqtime& result) {
    byte_block right = bifun::repeated(0xFF);
    byte_block first;
    byte_block last{};
    if (length < bifun::block_length) {
        first = take_off(load_both_ends(text, length), load_both_ends(plan.pattern, length), right);
    } else {
        const std::uint32_t at = length - bifun::block_length;
        first = take_off(load_block(text), load_block(plan.pattern), right);
        last = take_off(load_block(text + at), load_block(plan.pattern + at), right);
    }
    if (bifun::bits_of(right) != 0xFFFF) {
        return false;
    }
    const number_block numbers = numbers_in(first, last, plan.digits_in_first, plan.digits_in_last);
    datetime_layout::datetime_parts parts{.year = numbers[0] * 100 + numbers[1],
                                          .month = numbers[2],
                                          .day = numbers[3],
                                          .hour = numbers[5],
                                          .minute = numbers[6],
                                          .second = numbers[7],
                                          .microsecond = 0,
                                          .zone = ZQTIME_NO_ZONE};
    if ((plan.parts & part_fraction) != 0) {
        const number_block fraction = numbers_in(first, last, plan.fraction_in_first, plan.fraction_in_last);
        parts.microsecond = static_cast<std::uint32_t>((fraction[0] * 100 + fraction[1]) * 100 + fraction[2]);
    }
    return store_existing(parts, result);
}
#undef READS_BY_PLAN

bool read_by_plan_if_possible(const fixed_plan& plan, const std::uint8_t* text, std::uint32_t length, zqtime& result) {
    return plan.can_read && length == plan.length && has_lookups() && read_by_plan(plan, text, length, result);
}

// ---- piece by piece ----

// What a text has said. Numbers that it has not are 0.
struct read_parts {
    said_set seen;
    std::int32_t year;
    std::uint32_t month;
    std::uint32_t day;
    std::uint32_t day_of_year;
    std::uint32_t julian_day;
    std::uint32_t weekday; // from 1
    std::uint32_t hour;
    std::uint32_t half_hour;
    std::uint32_t minute;
    std::uint32_t second;
    std::uint32_t seconds_of_day;
    std::uint32_t microsecond;
    std::uint32_t zone_hour;
    std::uint32_t zone_minute;
    bool afternoon;
    bool before_christ;
    bool west;
};

bool at_end(const format_reader& text) { return text.next == text.end; }
bool at(const format_reader& text, char character) { return !at_end(text) && *text.next == static_cast<std::uint8_t>(character); }
bool at_digit(const format_reader& text) { return !at_end(text) && *text.next - unsigned{'0'} < 10; }

void skip_blanks(format_reader& text) {
    while (at(text, ' ')) {
        ++text.next;
    }
}

bool only_blanks_left(format_reader text) {
    skip_blanks(text);
    return at_end(text);
}

bool take_character(format_reader& text, char character) {
    if (!at(text, character)) {
        return false;
    }
    ++text.next;
    return true;
}

// Of `least` to `most` digits.
bool take_digits(format_reader& text, std::uint32_t least, std::uint32_t most, std::uint32_t& number, std::uint32_t& count) {
    number = 0;
    for (count = 0; count < most && at_digit(text); ++count) {
        number = number * 10 + (*text.next++ - unsigned{'0'});
    }
    return count >= least;
}

bool take_number(format_reader& text, const date_piece& piece, std::uint32_t& number) {
    std::uint32_t count;
    return take_digits(text, piece.exact && !piece.fill_mode ? piece.digits : 1U, piece.digits, number, count);
}

bool take_number(format_reader& text, const date_piece& piece, std::uint32_t least, std::uint32_t most, std::uint32_t& number) {
    return take_number(text, piece, number) && number >= least && number <= most;
}

// ---- years ----

std::int32_t floor_to(std::int32_t year, std::int32_t unit) { return year - ((year % unit) + unit) % unit; }

// Two digits stand for the year next to today's, up to 50 years from the beginning of its half century.
std::int32_t rounded(std::uint32_t two_digits, std::int32_t this_year) {
    const std::int32_t century = floor_to(this_year, 100);
    const bool upper_half = this_year - century >= 50;
    const bool upper = two_digits >= 50;
    return century + static_cast<std::int32_t>(two_digits) + (upper_half && !upper ? 100 : !upper_half && upper ? -100 : 0);
}

bool take_year(format_reader& text, const date_piece& piece, const date_model& model, read_parts& parts) {
    const bool negative = piece.element == signed_year && at(text, '-');
    if (piece.element == signed_year && !take_character(text, '-') && !take_character(text, '+')) {
        (void)take_character(text, ' '); // as it is written where it has to be exact
    }
    std::uint32_t number;
    std::uint32_t count;
    if (!take_digits(text, piece.exact && !piece.fill_mode && piece.element != year_in_groups ? piece.digits : 1U, piece.digits, number,
                     count)) {
        return false;
    }
    if (piece.element == year_in_groups && count == 1 && take_character(text, ',')) {
        std::uint32_t rest;
        if (!take_digits(text, 3, 3, rest, count)) {
            return false;
        }
        number = number * 1000 + rest;
    } else if (piece.element == year_in_groups && piece.exact && count != 4) {
        return false;
    }
    parts.year = static_cast<std::int32_t>(number);
    if (negative) {
        parts.year = -parts.year;
    } else if (piece.element == rounded_year && count <= 2) {
        parts.year = rounded(number, model.today.year);
    } else if (piece.element == year && piece.digits < 4) {
        parts.year += floor_to(model.today.year, piece.digits == 3 ? 1000 : piece.digits == 2 ? 100 : 10);
    }
    return true;
}

// ---- names ----

// Reads the longest of some names, in any case of English letters, and tells which.
struct name_choice {
    const std::uint8_t* end;
    std::uint32_t index;
};

bool take_name_at(const format_reader& text, std::string_view name, format_reader& ahead) {
    ahead = text;
    for (const char expected : name) {
        if (at_end(ahead)) {
            return false;
        }
        const std::uint8_t byte = *ahead.next++;
        const auto wanted = static_cast<std::uint8_t>(expected);
        const bool is_letter = (wanted | 0x20U) >= 'a' && (wanted | 0x20U) <= 'z';
        if (byte != wanted && (!is_letter || (byte ^ wanted) != 0x20)) {
            return false;
        }
    }
    return true;
}

template <std::size_t count>
void find_name(const format_reader& text, const std::array<std::string_view, count>& names, name_choice& longest) {
    if (at_end(text)) {
        return;
    }
    const std::uint32_t first = *text.next | 0x20U;
    for (std::uint32_t i = 0; i < count; ++i) {
        format_reader ahead{};
        if ((static_cast<std::uint8_t>(names[i][0]) | 0x20U) == first && take_name_at(text, names[i], ahead) &&
            (longest.end == nullptr || ahead.next > longest.end)) {
            longest = {.end = ahead.next, .index = i};
        }
    }
}

// By one set of names, or where the text need not be exact by either.
template <std::size_t count>
bool take_name(format_reader& text, const date_piece& piece, const std::array<std::string_view, count>& names,
               const std::array<std::string_view, count>& others, std::uint32_t& index) {
    name_choice longest{.end = nullptr, .index = 0};
    find_name(text, names, longest);
    if (!piece.exact) {
        find_name(text, others, longest);
    }
    if (longest.end == nullptr) {
        return false;
    }
    text.next = longest.end;
    index = longest.index;
    return true;
}

// The blanks that fill a name up, where they have to be as they are written.
void skip_filling(format_reader& text, const date_piece& piece, std::uint32_t blanks) {
    if (piece.exact && !piece.fill_mode) {
        while (blanks-- > 0 && at(text, ' ')) {
            ++text.next;
        }
    }
}

bool take_month(format_reader& text, const date_piece& piece, const date_names& names, read_parts& parts) {
    std::uint32_t index;
    const bool taken = piece.element == roman_month  ? take_name(text, piece, roman_months, roman_months, index)
                       : piece.element == month_name ? take_name(text, piece, names.months, names.short_months, index)
                                                     : take_name(text, piece, names.short_months, names.months, index);
    if (taken) {
        parts.month = index + 1;
        skip_filling(text, piece,
                     piece.element == roman_month  ? static_cast<std::uint32_t>(4 - roman_months[index].size())
                     : piece.element == month_name ? std::uint32_t{names.month_blanks[index]}
                                                   : std::uint32_t{names.short_month_blanks[index]});
    }
    return taken;
}

bool take_weekday(format_reader& text, const date_piece& piece, const date_names& names, read_parts& parts) {
    std::uint32_t index;
    const bool taken = piece.element == day_name ? take_name(text, piece, names.days, names.short_days, index)
                                                 : take_name(text, piece, names.short_days, names.days, index);
    if (taken) {
        parts.weekday = index + 1;
        skip_filling(text, piece, piece.element == day_name ? names.day_blanks[index] : 0);
    }
    return taken;
}

template <std::size_t count>
bool take_half(format_reader& text, const date_piece& piece, bool with_points, const std::array<std::string_view, count>& plain,
               const std::array<std::string_view, count>& pointed, bool& second_one) {
    std::uint32_t index;
    const bool taken = with_points ? take_name(text, piece, pointed, plain, index) : take_name(text, piece, plain, pointed, index);
    second_one = taken && index == 1;
    return taken;
}

// ---- fractions and zones ----

bool take_fraction(format_reader& text, const date_piece& piece, read_parts& parts) {
    constexpr std::uint32_t shown = 6;
    const bool any_length = piece.length == 2; // FF
    const std::uint32_t most = any_length ? 9 : piece.digits;
    std::uint32_t number;
    std::uint32_t count;
    if (!take_digits(text, piece.exact && !piece.fill_mode ? piece.digits : 1U, most, number, count)) {
        return false;
    }
    for (; count > shown; --count) {
        number /= 10;
    }
    for (; count < shown; ++count) {
        number *= 10;
    }
    parts.microsecond = number;
    return true;
}

bool take_zone(format_reader& text, const date_piece& piece, read_parts& parts) {
    std::uint32_t count;
    if (piece.element == zone_minute) {
        return take_digits(text, 2, 2, parts.zone_minute, count) && parts.zone_minute < 60;
    }
    if (piece.element == zone && (take_character(text, 'Z') || take_character(text, 'z'))) {
        return true;
    }
    parts.west = at(text, '-');
    const bool has_a_sign = take_character(text, '-') || take_character(text, '+');
    if ((!has_a_sign && piece.exact) || !take_digits(text, piece.exact ? 2 : 1, 2, parts.zone_hour, count)) {
        return false;
    }
    const bool has_minutes = piece.element == zone && (take_character(text, ':') || (count == 2 && at_digit(text)));
    return !has_minutes || (take_digits(text, 2, 2, parts.zone_minute, count) && parts.zone_minute < 60);
}

// ---- what stands between ----

bool is_punctuation(std::uint8_t byte) {
    const bool letter_or_digit = (byte >= '0' && byte <= '9') || ((byte | 0x20U) >= 'a' && (byte | 0x20U) <= 'z');
    return byte > ' ' && byte < 0x7F && !letter_or_digit;
}

bool may_have_sign(date_element element) { return element == signed_year || element == zone_hour || element == zone; }

// A blank stands for any blanks, another character for one of any kind or none, after any blanks. The sign of the next element is its own.
void skip_punctuation(format_reader& text, const std::uint8_t* model, std::uint32_t length, bool sign_follows, bool& ends_the_text) {
    for (std::uint32_t i = 0; i < length; ++i) {
        skip_blanks(text);
        if (model[i] == ' ' || at_end(text) || !is_punctuation(*text.next)) {
            continue;
        }
        const bool is_sign = *text.next == '-' || *text.next == '+';
        if (*text.next == model[i] || !is_sign || !sign_follows) {
            ++text.next;
            ends_the_text = only_blanks_left(text);
        }
    }
}

bool take_same(format_reader& text, const std::uint8_t* bytes, std::uint32_t length) {
    if (static_cast<std::size_t>(text.end - text.next) < length || std::memcmp(text.next, bytes, length) != 0) {
        return false;
    }
    text.next += length;
    return true;
}

// Behind any blanks, unless it has to be exact.
bool take_quoted(format_reader& text, const std::uint8_t* bytes, std::uint32_t length, bool exact) {
    while (!take_same(text, bytes, length)) {
        if (exact || !take_character(text, ' ')) {
            return false;
        }
    }
    return true;
}

// ---- the whole ----

bool take_element(format_reader& text, const date_piece& piece, const date_model& model, read_parts& parts) {
    const date_names& names = names_in(model.language);
    switch (piece.element) {
    case year:
    case signed_year:
    case year_in_groups:
    case rounded_year:
        return take_year(text, piece, model, parts);
    case month:
        return take_number(text, piece, 1, 12, parts.month);
    case month_name:
    case short_month_name:
    case roman_month:
        return take_month(text, piece, names, parts);
    case day_of_year:
        return take_number(text, piece, 1, 366, parts.day_of_year);
    case day:
        return take_number(text, piece, 1, 31, parts.day);
    case day_name:
    case short_day_name:
        return take_weekday(text, piece, names, parts);
    case weekday:
        return take_number(text, piece, 1, 7, parts.weekday);
    case julian_day:
        return take_number(text, piece, 0, calendar::number_of_last_day, parts.julian_day);
    case hour_24:
        return take_number(text, piece, 0, 23, parts.hour);
    case hour_12:
        return take_number(text, piece, 1, 12, parts.half_hour);
    case minute:
        return take_number(text, piece, 0, 59, parts.minute);
    case second:
        return take_number(text, piece, 0, 59, parts.second);
    case seconds_of_day:
        return take_number(text, piece, 0, 86399, parts.seconds_of_day);
    case fraction:
        return take_fraction(text, piece, parts);
    case meridian:
    case meridian_with_points:
        return take_half(text, piece, piece.element == meridian_with_points, names.meridians, names.meridians_with_points, parts.afternoon);
    case era:
    case era_with_points:
        return take_half(text, piece, piece.element == era_with_points, names.eras, names.eras_with_points, parts.before_christ);
    default:
        return take_zone(text, piece, parts);
    }
}

bool is_text(const date_piece& piece) { return piece.element == punctuation || piece.element == quoted; }

// Whether a text may end before a piece: what is left is of the time, or is punctuation only.
bool may_end_before(const date_model& model, std::uint32_t first) {
    bool has_time = false;
    bool has_quoted = false;
    for (std::uint32_t i = first; i < model.piece_count; ++i) {
        const date_piece& piece = model.pieces[i];
        has_quoted |= piece.element == quoted;
        if (piece.exact || (!is_text(piece) && (said_by(piece.element) & (says_time | says_of_zone)) == 0)) {
            return false;
        }
        has_time |= !is_text(piece);
    }
    return has_time || !has_quoted;
}

date_reading fault_at(text_fault fault, const format_reader& text, const std::uint8_t* begin, std::uint32_t piece) {
    return {.fault = fault, .offset = static_cast<std::uint32_t>(text.next - begin), .piece = piece, .zone = ZQTIME_NO_ZONE};
}

date_reading read_pieces(const date_model& model, const std::uint8_t* begin, std::uint32_t length, read_parts& parts) {
    format_reader text{.next = begin, .end = begin + length};
    bool ends_in_punctuation = false;
    std::uint32_t i = 0;
    for (; i < model.piece_count; ++i) {
        const date_piece& piece = model.pieces[i];
        if (!piece.exact && (piece.element != quoted || model.text[piece.offset] != ' ')) {
            skip_blanks(text);
        }
        if (at_end(text)) {
            if (parts.seen == says_nothing || ends_in_punctuation || !may_end_before(model, i)) {
                return fault_at(text_fault::mismatch, text, begin, i);
            }
            break;
        }
        const std::uint8_t* const before = text.next;
        bool taken = true;
        if (piece.element == punctuation && !piece.exact) {
            const bool sign_follows = i + 1 < model.piece_count && may_have_sign(model.pieces[i + 1].element);
            skip_punctuation(text, model.text + piece.offset, piece.length, sign_follows, ends_in_punctuation);
        } else if (is_text(piece)) {
            taken = take_quoted(text, model.text + piece.offset, piece.length, piece.exact);
        } else {
            taken = take_element(text, piece, model, parts);
            parts.seen |= said_by(piece.element);
        }
        if (!taken) {
            text.next = before;
            return fault_at(text_fault::mismatch, text, begin, i);
        }
    }
    const bool exact = model.piece_count != 0 && model.pieces[model.piece_count - 1].exact;
    if (!exact) {
        skip_blanks(text);
    }
    return fault_at(at_end(text) ? text_fault::none : text_fault::surplus, text, begin, i);
}

bool find_date(const date_model& model, const read_parts& parts, datetime_layout::datetime_parts& result) {
    if ((parts.seen & says_julian_day) != 0) {
        const auto date = calendar::date_of_julian_day(static_cast<std::int32_t>(parts.julian_day));
        result.year = date.year;
        result.month = date.month;
        result.day = date.day;
        return true;
    }
    result.year = (parts.seen & says_year) != 0 ? parts.year : model.today.year;
    if ((parts.seen & says_era) != 0) {
        if (result.year < 1) {
            return false;
        }
        result.year = parts.before_christ ? 1 - result.year : result.year;
    }
    if (result.year < calendar::min_year || result.year > calendar::max_year) {
        return false;
    }
    if ((parts.seen & says_day_of_year) != 0) {
        const std::int32_t number = calendar::julian_day(result.year, 1, 1) + static_cast<std::int32_t>(parts.day_of_year) - 1;
        const auto date = calendar::date_of_julian_day(number);
        result.month = date.month;
        result.day = date.day;
        return date.year == result.year;
    }
    result.month = (parts.seen & says_month) != 0 ? parts.month : model.today.month;
    result.day = (parts.seen & says_day) != 0 ? parts.day : 1;
    if (calendar::is_missing_day(result.year, result.month, result.day)) {
        result.day = calendar::first_gregorian_day;
    }
    return calendar::date_exists(result.year, result.month, result.day);
}

void find_time(const read_parts& parts, datetime_layout::datetime_parts& result) {
    result.hour = parts.hour;
    result.minute = parts.minute;
    result.second = parts.second;
    if ((parts.seen & says_half_hour) != 0) {
        result.hour = parts.half_hour % 12 + (parts.afternoon ? 12 : 0);
    }
    if ((parts.seen & says_seconds_of_day) != 0) {
        result.hour = parts.seconds_of_day / 3600;
        result.minute = parts.seconds_of_day / 60 % 60;
        result.second = parts.seconds_of_day % 60;
    }
    result.microsecond = parts.microsecond;
}

date_reading read_by_pieces(const date_model& model, const std::uint8_t* text, std::uint32_t length, zqtime& result) {
    read_parts parts{};
    date_reading reading = read_pieces(model, text, length, parts);
    if (reading.fault != text_fault::none) {
        return reading;
    }
    datetime_layout::datetime_parts found{};
    found.zone = ZQTIME_NO_ZONE;
    find_time(parts, found);
    if (!find_date(model, parts, found)) {
        reading.fault = text_fault::missing_date;
        return reading;
    }
    const std::int32_t number = calendar::julian_day(found.year, found.month, found.day);
    if (parts.weekday != 0 && calendar::weekday_of_julian_day(number) + 1 != parts.weekday) {
        reading.fault = text_fault::wrong_weekday;
        return reading;
    }
    if ((parts.seen & says_of_zone) != 0) {
        const auto displacement = static_cast<std::int32_t>(parts.zone_hour * 60 + parts.zone_minute);
        if (displacement > datetime_layout::max_zone) {
            reading.fault = text_fault::wrong_zone;
            return reading;
        }
        reading.zone = parts.west ? -displacement : displacement;
    }
    datetime_layout::store_datetime(result, datetime_layout::pack_datetime(found));
    return reading;
}

} // namespace

date_reading read_date(const date_model& model, const std::uint8_t* text, std::uint32_t length, zqtime& result) {
    if (read_by_plan_if_possible(model.plan, text, length, result)) [[likely]] {
        return {.fault = text_fault::none, .offset = length, .piece = model.piece_count, .zone = ZQTIME_NO_ZONE};
    }
    if (model.reading_problem.fault != format_fault::none) {
        return {.fault = text_fault::unreadable_model, .offset = 0, .piece = 0, .zone = ZQTIME_NO_ZONE};
    }
    return read_by_pieces(model, text, length, result);
}

} // namespace zqengine
