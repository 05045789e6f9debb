// SPDX-License-Identifier: Apache-2.0
// Dates and times as text: as they are, in the session's format, or under a format. Also decimals, and texts that hold either.

#include "bop/bifun_date/date_model.h"
#include "bop/bifun_date/datetime_operations.h"
#include "bop/bifun_date/entry_points.h"
#include "bop/frame/statements.h"
#include "bop/frame/string_rows.h"
#include "engine/decimal.h"
#include "engine/number_format.h"
#include "engine/session.h"
#include "layouts/datetime_text.h"
#include "layouts/fixed_text.h"

namespace bifun {
namespace {

// ---- without a format ----

constexpr std::uint32_t default_text_size = 64;
static_assert(default_text_size >= datetime_text::longest + datetime_text::slack);
using default_text = bounded_text<default_text_size>;

void end_text(default_text& text, const std::uint8_t* end) { text.length = static_cast<std::uint32_t>(end - text.bytes); }

template <class Datetimes> std::uint8_t* put_date(const zqtime& value, std::uint8_t* out) {
    return datetime_text::put_date(out, Datetimes::year(value), static_cast<std::uint32_t>(Datetimes::month(value)),
                                   static_cast<std::uint32_t>(Datetimes::day(value)));
}

template <class Datetimes> std::uint8_t* put_time(bool show_fraction, const zqtime& value, std::uint8_t* out) {
    out =
        datetime_text::put_time(out, static_cast<std::uint32_t>(Datetimes::hour(value)),
                                static_cast<std::uint32_t>(Datetimes::minute(value)), static_cast<std::uint32_t>(Datetimes::second(value)));
    return show_fraction ? datetime_text::put_fraction(out, static_cast<std::uint32_t>(Datetimes::microsecond(value))) : out;
}

template <class Datetimes, bool with_zone> std::uint8_t* put_zone(const zqtime& value, std::uint8_t* out) {
    return with_zone ? datetime_text::put_zone(out, Datetimes::zone(value)) : out;
}

template <class Datetimes> void ifun_parse_date_to_char(const zqtime& value, default_text& text) {
    end_text(text, put_date<Datetimes>(value, text.bytes));
}

template <class Datetimes, bool with_zone> void ifun_parse_time_to_char(bool show_fraction, const zqtime& value, default_text& text) {
    end_text(text, put_zone<Datetimes, with_zone>(value, put_time<Datetimes>(show_fraction, value, text.bytes)));
}

template <class Datetimes, bool with_zone> void ifun_parse_dt_to_char(bool show_fraction, const zqtime& value, default_text& text) {
    std::uint8_t* const behind_date = put_date<Datetimes>(value, text.bytes);
    *behind_date = ' ';
    end_text(text, put_zone<Datetimes, with_zone>(value, put_time<Datetimes>(show_fraction, value, behind_date + 1)));
}

bool shows_fraction() { return ini_get_value(0, INI_SHOW_FRACTION) == 1; }

// ---- with a format ----

struct date_formatting {
    bifun_environment* environment;
    const dfm_model* model;
};

template <std::uint32_t room> status format_model(const date_formatting& by, const zqtime& value, bounded_text<room>& text) {
    return dfm_char_get(by.environment, by.model, &value, text.bytes, &text.length);
}

template <std::uint32_t room> status format_percent(const date_formatting& by, const zqtime& value, bounded_text<room>& text) {
    return date_to_char(by.environment, by.model, &value, text.bytes, &text.length);
}

// In place, where the model says how and the value is one that it says it of; else by `operation`.
using short_text = bounded_text<DFM_SHORT_TEXT_SIZE>;
static_assert(DFM_SHORT_TEXT_SIZE >= DFM_FIXED_TEXT_SIZE);

template <class Datetimes, auto operation> status format_fixed(const date_formatting& by, const zqtime& value, short_text& text) {
    const auto year = static_cast<std::uint32_t>(Datetimes::year(value)); // one before 0 wraps
    const auto hour = static_cast<std::uint32_t>(Datetimes::hour(value));
    if (year > fixed_text::last_year || hour > fixed_text::last_hour) [[unlikely]] {
        return operation(by, value, text);
    }
    fixed_text::write(by.model->fixed,
                      fixed_text::digits_of(
                          year, static_cast<std::uint32_t>(Datetimes::month(value)), static_cast<std::uint32_t>(Datetimes::day(value)),
                          hour, static_cast<std::uint32_t>(Datetimes::minute(value)), static_cast<std::uint32_t>(Datetimes::second(value))),
                      text.bytes);
    text.length = by.model->fixed.length;
    return BIFUN_OK;
}

template <auto short_operation, auto operation>
status format_rows(batch_of<VARCHAR> batch, column_of<DATETIME> values, const dfm_model& model) {
    const date_formatting by{batch.environment, &model};
    if (model.room > DFM_SHORT_TEXT_SIZE) {
        return string_rows<operation>(batch, fixed(by), values);
    }
    if (fixed_text::can_write && model.fixed.length != 0 && datetimes_are_packed()) {
        return string_rows<format_fixed<packed_datetimes, short_operation>>(batch, fixed(by), values);
    }
    return string_rows<short_operation>(batch, fixed(by), values);
}

status model_rows(batch_of<VARCHAR> batch, column_of<DATETIME> values, const dfm_model& model) {
    return format_rows<format_model<DFM_SHORT_TEXT_SIZE>, format_model<DFM_TEXT_SIZE>>(batch, values, model);
}

// By the session's format, or else by the rows that `as_it_is` writes.
template <class AsItIs>
status write_default(batch_of<VARCHAR> batch, column_of<DATETIME> values, const dfm_model* session_model, const AsItIs& as_it_is) {
    return session_model != nullptr ? model_rows(batch, values, *session_model) : with_datetimes(as_it_is);
}

status write_dates(batch_of<VARCHAR> batch, column_of<DATETIME> values) {
    return write_default(batch, values, sess4_get_date_format(batch.environment),
                         [&]<class Datetimes>(Datetimes) { return string_rows<ifun_parse_date_to_char<Datetimes>>(batch, values); });
}

template <bool with_zone> status write_times(batch_of<VARCHAR> batch, column_of<DATETIME> values, const dfm_model* session_model) {
    return write_default(batch, values, session_model, [&]<class Datetimes>(Datetimes) {
        return string_rows<ifun_parse_time_to_char<Datetimes, with_zone>>(batch, fixed(shows_fraction()), values);
    });
}

template <bool with_zone> status write_datetimes(batch_of<VARCHAR> batch, column_of<DATETIME> values, const dfm_model* session_model) {
    return write_default(batch, values, session_model, [&]<class Datetimes>(Datetimes) {
        return string_rows<ifun_parse_dt_to_char<Datetimes, with_zone>>(batch, fixed(shows_fraction()), values);
    });
}

// In the session's language where `language` is null.
status to_char(batch_of<VARCHAR> batch, column_of<DATETIME> values, const bifun_string& format, const std::int32_t* language) {
    dfm_model model;
    status parsed = dfm_create(batch.environment, &model);
    if (parsed >= BIFUN_OK && language != nullptr) {
        parsed = dfm_set_lang(&model, *language);
    }
    if (parsed >= BIFUN_OK) {
        parsed = dfm_parse(&model, format.data, format.length);
    }
    return parsed < BIFUN_OK ? fail_batch(batch, parsed) : model_rows(batch, values, model);
}

status to_char(batch_of<VARCHAR> batch, column_of<DATETIME> values, constant_of<VARCHAR> format) {
    return with_format(batch, format, [&](const bifun_string& text) { return to_char(batch, values, text, nullptr); });
}

status to_char(batch_of<VARCHAR> batch, column_of<DATETIME> values, constant_of<VARCHAR> format, constant_of<VARCHAR> nls) {
    return with_format(batch, format, [&](const bifun_string& text) {
        return with_language(batch, nls, [&](std::int32_t language) { return to_char(batch, values, text, &language); });
    });
}

// ---- unix times under a %-format ----

// A time that is out of range or cannot be converted is NULL.
template <std::uint32_t room> value_or_null format_unix_time(const date_formatting& by, std::int64_t seconds, bounded_text<room>& text) {
    zqtime value;
    if (seconds < 0 || seconds > INT32_MAX || zqtime_from_unix_time(by.environment, seconds, &value) < BIFUN_OK) {
        return value_or_null::null();
    }
    return format_percent(by, value, text);
}

// `parsed(model)` with the model of a %-format.
template <class Parsed> status with_percent_format(batch_of<VARCHAR> batch, constant_of<VARCHAR> format, const Parsed& parsed) {
    return with_format(batch, format, [&](const bifun_string& text) {
        dfm_model model;
        const status converted = zqtime_convert_fmt(batch.environment, text.data, text.length, &model);
        return converted < BIFUN_OK ? fail_batch(batch, converted) : parsed(model);
    });
}

// ---- decimals and texts under a format ----

using number_text = bounded_text<ZQ_FORMATTED_NUMBER_SIZE>;

struct number_formatting {
    bifun_environment* environment;
    bifun_string format;
    bool texts_are_as_described;
};

// Where the engine does not say how it writes texts, this operation finds a buffer of zeros and ends its text with one.
status format_decimal(const number_formatting& by, const xdec& value, number_text& text) {
    if (!by.texts_are_as_described) {
        std::memset(text.bytes, 0, ZQ_FORMATTED_NUMBER_SIZE);
    }
    auto* const characters = reinterpret_cast<char*>(text.bytes);
    const status rendered = xdec_to_char_with_fmt(by.environment, &value, characters, by.format.data, by.format.length);
    text.length = static_cast<std::uint32_t>(strnlen(characters, ZQ_FORMATTED_NUMBER_SIZE));
    return rendered;
}

value_or_null format_number_in_text(const number_formatting& by, const bifun_string& value, number_text& text) {
    xdec number;
    const status read = xdec_from_char(value.data, value.length, &number);
    if (read == BIFUN_UNUSABLE_TEXT) {
        return BIFUN_NOT_A_NUMBER;
    }
    auto* const characters = reinterpret_cast<char*>(text.bytes);
    return read < BIFUN_OK ? read
                           : xdec_to_char_with_fmt_low(by.environment, &number, characters, by.format.data, by.format.length, &text.length);
}

template <std::uint32_t room>
value_or_null format_datetime_in_text(const date_formatting& by, const bifun_string& value, bounded_text<room>& text) {
    zqtime datetime;
    const status read = zqtime_from_char_ex2(by.environment, value.data, value.length, &datetime);
    if (read == BIFUN_UNUSABLE_TEXT) {
        return value_or_null::null();
    }
    return read < BIFUN_OK ? read : format_model(by, datetime, text);
}

status format_datetimes_in_text(batch_of<VARCHAR> batch, column_of<VARCHAR> values, const bifun_string& format) {
    dfm_model model;
    status parsed = dfm_create(batch.environment, &model);
    if (parsed >= BIFUN_OK) {
        parsed = dfm_parse(&model, format.data, format.length);
    }
    const date_formatting by{batch.environment, &model};
    return parsed < BIFUN_OK                   ? fail_batch(batch, parsed)
           : model.room <= DFM_SHORT_TEXT_SIZE ? string_rows<format_datetime_in_text<DFM_SHORT_TEXT_SIZE>>(batch, fixed(by), values)
                                               : string_rows<format_datetime_in_text<DFM_TEXT_SIZE>>(batch, fixed(by), values);
}

} // namespace

// ---- entry points: TO_CHAR without a format ----

status entry::bto_char_date_def_a_date(batch_of<VARCHAR> batch, column_of<DATETIME> value) { return write_dates(batch, value); }
status entry::bto_char_dt_def1_a_date(batch_of<VARCHAR> batch, column_of<DATETIME> value) { return write_dates(batch, value); }
status entry::bto_char_time_def_a_date(batch_of<VARCHAR> batch, column_of<DATETIME> value) {
    return write_times<false>(batch, value, sess4_get_time_format(batch.environment));
}
status entry::bto_char_dt_def_a_date(batch_of<VARCHAR> batch, column_of<DATETIME> value) {
    return write_datetimes<false>(batch, value, sess4_get_datetime_format(batch.environment));
}
status entry::bto_char_time_tz_def_a_date(batch_of<VARCHAR> batch, column_of<DATETIME> value) {
    return write_times<true>(batch, value, sess4_get_time_tz_format(batch.environment));
}
status entry::bto_char_dt_tz_def_a_date(batch_of<VARCHAR> batch, column_of<DATETIME> value) {
    return write_datetimes<true>(batch, value, sess4_get_datetimetz_format(batch.environment));
}

// ---- entry points: under a format ----

status entry::bto_char_dt_av_date(batch_of<VARCHAR> batch, column_of<DATETIME> value, constant_of<VARCHAR> format) {
    return to_char(batch, value, format);
}
status entry::bto_char_dt_av_date_low(batch_of<VARCHAR> batch, column_of<DATETIME> value, constant_of<VARCHAR> format) {
    return to_char(batch, value, format);
}
status entry::bto_char_dt_av_date_real(batch_of<VARCHAR> batch, column_of<DATETIME> value, constant_of<VARCHAR> format) {
    return to_char(batch, value, format);
}
status entry::bto_char_dt_avv_date(batch_of<VARCHAR> batch, column_of<DATETIME> value, constant_of<VARCHAR> format,
                                   constant_of<VARCHAR> nls) {
    return to_char(batch, value, format, nls);
}
status entry::bto_char_dt_avv_date_real(batch_of<VARCHAR> batch, column_of<DATETIME> value, constant_of<VARCHAR> format,
                                        constant_of<VARCHAR> nls) {
    return to_char(batch, value, format, nls);
}

status entry::bto_char_str_av_date(batch_of<VARCHAR> batch, column_of<VARCHAR> value, constant_of<VARCHAR> format) {
    return with_format(batch, format, [&](const bifun_string& text) {
        switch (zqtime_dt_fmt_is_for_xdec_and_date(text.data, text.length)) {
        case ZQ_FORMAT_OF_DATES:
            return format_datetimes_in_text(batch, value, text);
        case ZQ_FORMAT_OF_NUMBERS:
            return string_rows<format_number_in_text>(
                batch, fixed(number_formatting{batch.environment, text, number_texts_are_as_described()}), value);
        default:
            return fail_batch(batch, BIFUN_INVALID_DATE_FORMAT);
        }
    });
}

// The engine tells which formats are too long.
status entry::bdec_to_char_av_date(batch_of<VARCHAR> batch, column_of<DECIMAL> value, constant_of<VARCHAR> format) {
    const auto [text, present] = argument(format);
    const constant_argument by{number_formatting{batch.environment, text, number_texts_are_as_described()}, present};
    return text.length == 0 ? null_rows(batch) : string_rows<format_decimal>(batch, by, value);
}

status entry::bdate_format_av_date(batch_of<VARCHAR> batch, column_of<DATETIME> value, constant_of<VARCHAR> format) {
    return with_percent_format(batch, format, [&](const dfm_model& model) {
        return format_rows<format_percent<DFM_SHORT_TEXT_SIZE>, format_percent<DFM_TEXT_SIZE>>(batch, value, model);
    });
}

status entry::bfrom_unixtime_fmt_av_date(batch_of<VARCHAR> batch, column_of<BIGINT> seconds, constant_of<VARCHAR> format) {
    return with_percent_format(batch, format, [&](const dfm_model& model) {
        const date_formatting by{batch.environment, &model};
        return model.room <= DFM_SHORT_TEXT_SIZE ? string_rows<format_unix_time<DFM_SHORT_TEXT_SIZE>>(batch, fixed(by), seconds)
                                                 : string_rows<format_unix_time<DFM_TEXT_SIZE>>(batch, fixed(by), seconds);
    });
}

} // namespace bifun
