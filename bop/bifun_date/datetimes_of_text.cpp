// SPDX-License-Identifier: Apache-2.0
// Text as dates and times: as it is usually written, in the session's format, or under a format.

#include "bop/bifun_date/date_model.h"
#include "bop/bifun_date/entry_points.h"
#include "bop/frame/row_loop.h"
#include "bop/frame/statements.h"
#include "engine/datetime.h"
#include "engine/session.h"
#include "layouts/calendar.h"
#include "layouts/datetime_layout.h"
#include "layouts/fixed_digits.h"

namespace bifun {
namespace {

// ---- without a format ----

using datetime_layout::datetime_parts;

// What is left to read.
struct unread_text {
    const std::uint8_t* next;
    const std::uint8_t* end;
};

std::uint32_t left(const unread_text& text) { return static_cast<std::uint32_t>(text.end - text.next); }

bool take(unread_text& text, std::uint8_t character) {
    if (left(text) == 0 || *text.next != character) {
        return false;
    }
    ++text.next;
    return true;
}

// A number of at most so many digits, at least one.
bool take_number(unread_text& text, std::uint32_t most_digits, std::uint32_t& number) {
    const std::uint8_t* const first = text.next;
    number = 0;
    while (left(text) != 0 && static_cast<std::uint32_t>(text.next - first) < most_digits && *text.next - 0x30U < 10) {
        number = number * 10 + (*text.next++ - 0x30U);
    }
    return text.next != first;
}

// Digits beyond the sixth are cut.
bool take_fraction(unread_text& text, std::uint32_t& microsecond) {
    const std::uint8_t* const first = text.next;
    std::uint32_t unit = 100'000;
    for (; left(text) != 0 && *text.next - 0x30U < 10; ++text.next) {
        microsecond += (*text.next - 0x30U) * unit;
        unit /= 10;
    }
    return text.next != first;
}

// H:M:S with an optional fraction, up to the end of the text.
bool iget_hms_from_str_rgt(unread_text& text, datetime_parts& parts) {
    joined_digits time;
    if (left(text) >= 8 && match_digits<pattern_of("00:00:00")>(eight_characters(text.next), time)) [[likely]] {
        parts.hour = time.at(0);
        parts.minute = time.at(3);
        parts.second = time.at(6);
        text.next += 8;
    } else if (!take_number(text, 2, parts.hour) || !take(text, ':') || !take_number(text, 2, parts.minute) || !take(text, ':') ||
               !take_number(text, 2, parts.second)) {
        return false;
    }
    if (parts.hour > 23 || parts.minute > 59 || parts.second > 59) {
        return false;
    }
    return (!take(text, '.') || take_fraction(text, parts.microsecond)) && left(text) == 0;
}

bool is_separator(std::uint8_t character) {
    switch (character) {
    case '-':
    case '/':
    case '.':
    case '@':
    case '#':
    case '$':
    case '%':
    case '*':
    case '&':
        return true;
    default:
        return false;
    }
}

// Year, month and day with the separator that stands fifth between them, or without where that is a digit.
[[gnu::noinline]] bool take_any_date(unread_text& text, datetime_parts& parts) {
    constexpr std::uint32_t shortest = 5;
    if (left(text) < shortest) {
        return false;
    }
    const std::uint8_t fifth = text.next[4];
    const bool run_together = fifth - 0x30U < 10;
    std::uint32_t year;
    if ((!run_together && !is_separator(fifth)) || !take_number(text, 4, year) || (!run_together && !take(text, fifth)) ||
        !take_number(text, 2, parts.month) || (!run_together && !take(text, fifth)) || !take_number(text, 2, parts.day)) {
        return false;
    }
    parts.year = static_cast<std::int32_t>(year);
    return true;
}

bool take_date(unread_text& text, datetime_parts& parts) {
    joined_digits year_and_month;
    joined_digits day;
    if (left(text) < 10 || !match_digits<pattern_of("0000-00-")>(eight_characters(text.next), year_and_month) ||
        !match_digits<pattern_of("00-00-00")>(eight_characters(text.next + 2), day)) [[unlikely]] {
        return take_any_date(text, parts);
    }
    parts.year = static_cast<std::int32_t>(year_and_month.at(0) * 100 + year_and_month.at(2));
    parts.month = year_and_month.at(5);
    parts.day = day.at(6);
    text.next += 10;
    return true;
}

// The calendar, and how a datetime is made: in place, or by the engine.
struct packed_dates {
    static std::uint32_t month_end(const datetime_parts& parts) { return calendar::last_day_of_month(parts.year, parts.month); }
    static bool is_missing(const datetime_parts& parts) { return calendar::is_missing_day(parts.year, parts.month, parts.day); }
    static status encode(const datetime_parts& parts, zqtime& result) {
        datetime_layout::store_datetime(result, datetime_layout::pack_datetime(parts));
        return BIFUN_OK;
    }
};
struct engine_dates {
    static std::uint32_t month_end(const datetime_parts& parts) { return zqtime_month_end_day(parts.year, parts.month); }
    static bool is_missing(const datetime_parts& parts) { return zqtime_cmp_with_glgl(parts.year, parts.month, parts.day) == 0; }
    static status encode(const datetime_parts& parts, zqtime& result) {
        return zqtime_encode(&result, parts.year, parts.month, parts.day, parts.hour, parts.minute, parts.second, parts.microsecond,
                             parts.zone);
    }
};

template <class Dates> status ifun_parse_date(const bifun_string& text, zqtime& result) {
    unread_text rest{text.data, text.data + text.length};
    datetime_parts parts{.year = 0, .month = 0, .day = 0, .hour = 0, .minute = 0, .second = 0, .microsecond = 0, .zone = ZQTIME_NO_ZONE};
    if (!take_date(rest, parts) || parts.year < 1 || parts.month - 1 > 11 || parts.day < 1 || parts.day > Dates::month_end(parts)) {
        return BIFUN_INVALID_DATETIME;
    }
    if (left(rest) != 0 && (!take(rest, ' ') || !iget_hms_from_str_rgt(rest, parts))) {
        return BIFUN_INVALID_DATETIME;
    }
    if (Dates::is_missing(parts)) [[unlikely]] {
        parts.day = calendar::first_gregorian_day;
    }
    return Dates::encode(parts, result);
}

status read_default(batch_of<DATETIME> batch, column_of<VARCHAR> text) {
    return datetimes_are_packed() ? set_rows<ifun_parse_date<packed_dates>>(batch, text)
                                  : set_rows<ifun_parse_date<engine_dates>>(batch, text);
}

// ---- with a format ----

struct date_reading {
    const dfm_model* model;
    std::int32_t as; // of dfm_result
};

status read_model(const date_reading& by, const bifun_string& text, zqtime& result) {
    return char_to_date_simple_with_alen(by.model, text.data, text.length, by.as, &result);
}

status read_rows(batch_of<DATETIME> batch, column_of<VARCHAR> text, const dfm_model& model, std::int32_t as) {
    return set_rows<read_model>(batch, fixed(date_reading{&model, as}), text);
}

// In the session's language where `language` is null.
status read_rows(batch_of<DATETIME> batch, column_of<VARCHAR> text, const bifun_string& format, const std::int32_t* language) {
    dfm_model model;
    status parsed = parse_date_fmt_with_len(batch.environment, format.data, format.length, 0, &model);
    if (parsed >= BIFUN_OK && language != nullptr) {
        parsed = dfm_set_lang(&model, *language);
    }
    return parsed < BIFUN_OK ? fail_batch(batch, parsed) : read_rows(batch, text, model, DFM_DATETIME);
}

// ---- with a zone ----

struct zoned_reading {
    const bifun_environment* environment;
    const dfm_model* model;
};

status read_zoned_model(const zoned_reading& by, const bifun_string& text, zqtime& result) {
    return char_to_datetime_tz_simple_with_alen(by.environment, by.model, text.data, text.length, &result);
}

value_or_null read_zoned_default(bifun_environment* environment, const bifun_string& text, zqtime& result) {
    const status read = zqtime_from_char_with_tz(environment, text.data, text.length, &result);
    return read == BIFUN_UNUSABLE_TEXT ? value_or_null::null() : value_or_null(read);
}

status read_zoned_rows(batch_of<DATETIME> batch, column_of<VARCHAR> text, const dfm_model& model) {
    return set_rows<read_zoned_model>(batch, fixed(zoned_reading{batch.environment, &model}), text);
}

} // namespace

status entry::bto_date_def_a_date(batch_of<DATETIME> batch, column_of<VARCHAR> text) {
    const dfm_model* const model = sess4_get_date_format(batch.environment);
    return model == nullptr ? read_default(batch, text)
                            : read_rows(batch, text, *model, ini_enable_oracle_date_fmt() != 0 ? DFM_DATETIME : DFM_DATE);
}
status entry::bto_timestamp_def_a_date(batch_of<DATETIME> batch, column_of<VARCHAR> text) {
    const dfm_model* const model = sess4_get_datetime_format(batch.environment);
    return model == nullptr ? read_default(batch, text) : read_rows(batch, text, *model, DFM_DATETIME);
}

status entry::bchar_to_date_av_date(batch_of<DATETIME> batch, column_of<VARCHAR> text, constant_of<VARCHAR> format) {
    return with_format(batch, format, [&](const bifun_string& given) { return read_rows(batch, text, given, nullptr); });
}
status entry::bchar_to_date_avv_date(batch_of<DATETIME> batch, column_of<VARCHAR> text, constant_of<VARCHAR> format,
                                     constant_of<VARCHAR> nls) {
    return with_format(batch, format, [&](const bifun_string& given) {
        return with_language(batch, nls, [&](std::int32_t language) { return read_rows(batch, text, given, &language); });
    });
}

status entry::bto_dt_tz_av_dt_tz(batch_of<DATETIME> batch, column_of<VARCHAR> text, constant_of<VARCHAR> format) {
    return with_format(batch, format, [&](const bifun_string& given) {
        dfm_model model;
        const status parsed = parse_date_fmt_with_len(batch.environment, given.data, given.length, 1, &model);
        return parsed < BIFUN_OK ? fail_batch(batch, parsed) : read_zoned_rows(batch, text, model);
    });
}
status entry::bto_dt_tz_def_a_dt_tz(batch_of<DATETIME> batch, column_of<VARCHAR> text) {
    const dfm_model* const model = sess4_get_datetimetz_format(batch.environment);
    return model == nullptr ? set_rows<read_zoned_default>(batch, fixed(batch.environment), text) : read_zoned_rows(batch, text, *model);
}

} // namespace bifun
