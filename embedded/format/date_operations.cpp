// SPDX-License-Identifier: Apache-2.0
// The operations of engine/date_format.h.
#include <cstddef>
#include <cstring>
#include <string_view>

#include "bop/frame/status.h"
#include "embedded/charset/database_charset.h"
#include "embedded/format/date_elements.h"
#include "embedded/format/date_format.h"
#include "embedded/format/format_reader.h"
#include "embedded/format/nls_parameters.h"
#include "embedded/session/environment.h"
#include "engine/date_format.h"
#include "engine/datetime.h"
#include "engine/number_format.h"
#include "engine/session.h"
#include "layouts/datetime_layout.h"

using namespace zqengine;

namespace {

std::int32_t status_of(const format_problem& problem) { return problem.fault == format_fault::none ? BIFUN_OK : BIFUN_INVALID_DATE_FORMAT; }

std::int32_t status_of(const date_reading& reading) {
    return reading.fault == text_fault::none               ? BIFUN_OK
           : reading.fault == text_fault::unreadable_model ? BIFUN_INVALID_DATE_FORMAT
                                                           : BIFUN_INVALID_DATETIME;
}

// The pieces that it has lie at its end.
void copy_model(const date_model& from, date_model& to) {
    std::memcpy(static_cast<void*>(&to), &from, offsetof(date_model, pieces) + from.piece_count * sizeof(date_piece));
}

void begin(const bifun_environment* environment, date_model& model) {
    forget_elements(model);
    model.language = static_cast<std::uint8_t>(environment != nullptr ? environment->language : static_cast<std::int32_t>(DFM_ENGLISH));
    model.memory = environment != nullptr ? &environment->date_models : nullptr;
}

using parse_function = format_problem (*)(const std::uint8_t* format, std::uint32_t length, date_model& model);

// Parses into a model that has been begun, or copies what the session has kept.
std::int32_t parse_model(parse_function parse, const std::uint8_t* format, std::uint32_t length, date_model& model) {
    const auto parse_into = [&](date_model& made) { return status_of(parse(format, length, made)); };
    if (model.memory == nullptr) {
        return parse_into(model);
    }
    const std::uint32_t reading = (parse == parse_percent_format ? 1U : 0U) | model.language * 2U | database_charset() << 8;
    const auto parse_to_keep = [&](date_model& made) {
        made.language = model.language;
        made.memory = model.memory;
        return parse_into(made);
    };
    const date_model* found = nullptr;
    const std::int32_t status = find_format(*model.memory, {format, length, nullptr, 0, reading}, parse_to_keep, found);
    copy_model(*found, model);
    return status;
}

std::int32_t write(const bifun_environment* environment, const dfm_model* model, const zqtime* value, std::uint8_t* buffer,
                   std::uint32_t* length) {
    const date_model& format = inside(*model);
    const std::int32_t zone = format.has_zone ? sess4_get_time_zone(environment) : 0;
    *length = static_cast<std::uint32_t>(write_date(format, *value, zone, buffer) - buffer);
    return BIFUN_OK;
}

void set_zone(zqtime& value, std::int32_t zone) {
    bifun::datetime_layout::datetime_words words = bifun::datetime_layout::load_datetime(value);
    words.fraction_and_zone = bifun::datetime_layout::pack_fraction(bifun::datetime_layout::microsecond_of(words), zone);
    bifun::datetime_layout::store_datetime(value, words);
}

} // namespace

namespace zqengine {

void set_today(date_model& model) {
    if (!model.needs_today) {
        return;
    }
    zqtime now;
    (void)zqtime_tz_now(0, static_cast<std::int32_t>(ini_get_value(0, INI_NOW_TIME_ZONE)), &now);
    const bifun::datetime_layout::datetime_words words = bifun::datetime_layout::load_datetime(now);
    model.today = {.year = bifun::datetime_layout::year_of(words), .month = bifun::datetime_layout::month_of(words)};
}

} // namespace zqengine

// ---- models ----

int32_t dfm_create(const bifun_environment* environment, dfm_model* model) {
    begin(environment, inside(*model));
    return BIFUN_OK;
}

int32_t dfm_set_lang(dfm_model* model, int32_t language) {
    if (language != DFM_ENGLISH && language != DFM_CHINESE) {
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    date_model& changed = inside(*model);
    changed.language = static_cast<std::uint8_t>(language);
    if (changed.piece_count == 0) {
        return BIFUN_OK;
    }
    finish_model(changed);
    changed.plan.can_read = changed.plan.can_read && changed.reading_problem.fault == format_fault::none;
    return BIFUN_OK;
}

int32_t dfm_parse(dfm_model* model, const uint8_t* format, uint32_t length) {
    return parse_model(parse_format_model, format, length, inside(*model));
}

int32_t parse_date_fmt_with_len(const bifun_environment* environment, const uint8_t* format, uint32_t length, int32_t with_zone,
                                dfm_model* model) {
    date_model& parsed = inside(*model);
    begin(environment, parsed);
    const std::int32_t status = parse_model(parse_format_model, format, length, parsed);
    if (status < BIFUN_OK) {
        return status;
    }
    if (parsed.has_zone && with_zone == 0) {
        return BIFUN_INVALID_DATE_FORMAT;
    }
    set_today(parsed);
    return status_of(parsed.reading_problem);
}

int32_t zqtime_convert_fmt(const bifun_environment* environment, const uint8_t* format, uint32_t length, dfm_model* model) {
    begin(environment, inside(*model));
    return parse_model(parse_percent_format, format, length, inside(*model));
}

int32_t to_char_nls_parse(const uint8_t* nls, uint32_t length, int32_t* language) {
    format_reader text{.next = nls, .end = nls + length};
    const auto skip = [&] {
        while (take(text, " ")) {
        }
    };
    skip();
    bool matches = length <= max_nls_length && take(text, "NLS_DATE_LANGUAGE");
    skip();
    matches = matches && take(text, "=");
    skip();
    const char* const quote = take(text, "'") ? "'" : take(text, "\"") ? "\"" : "";
    const bool chinese = take(text, "SIMPLIFIED CHINESE") || take(text, "CHINESE");
    matches = matches && (chinese || take(text, "ENGLISH") || take(text, "AMERICAN")) && take(text, quote);
    skip();
    if (!matches || text.next != text.end) {
        return ZQ_INVALID_NLS_PARAMETERS;
    }
    *language = chinese ? DFM_CHINESE : DFM_ENGLISH;
    return BIFUN_OK;
}

int32_t zqtime_dt_fmt_is_for_xdec_and_date(const uint8_t* format, uint32_t length) {
    date_model model;
    model.language = DFM_ENGLISH;
    if (parse_format_model(format, length, model).fault == format_fault::none) {
        return ZQ_FORMAT_OF_DATES;
    }
    number_format number;
    return parse_number_format(format, length, nls_parameters{}, number) ? ZQ_FORMAT_OF_NUMBERS : ZQ_FORMAT_OF_NOTHING;
}

// ---- writing ----

int32_t dfm_char_get(const bifun_environment* environment, const dfm_model* model, const zqtime* value, uint8_t* buffer, uint32_t* length) {
    return write(environment, model, value, buffer, length);
}

int32_t date_to_char(const bifun_environment* environment, const dfm_model* model, const zqtime* value, uint8_t* buffer, uint32_t* length) {
    return write(environment, model, value, buffer, length);
}

// ---- reading ----

int32_t char_to_date_simple_with_alen(const dfm_model* model, const uint8_t* text, uint32_t length, int32_t as, zqtime* result) {
    if (inside(*model).has_zone) {
        return BIFUN_INVALID_DATE_FORMAT;
    }
    zqtime value;
    const std::int32_t status = status_of(read_date(inside(*model), text, length, value));
    if (status == BIFUN_OK) {
        if (as == DFM_DATE) {
            bifun::datetime_layout::store_words(value, 0, bifun::datetime_layout::load_date(value),
                                                bifun::datetime_layout::pack_fraction(0, ZQTIME_NO_ZONE));
        }
        *result = value;
    }
    return status;
}

int32_t char_to_datetime_tz_simple_with_alen(const bifun_environment* environment, const dfm_model* model, const uint8_t* text,
                                             uint32_t length, zqtime* result) {
    const date_reading reading = read_date(inside(*model), text, length, *result);
    if (reading.fault == text_fault::none) {
        set_zone(*result, reading.zone == ZQTIME_NO_ZONE ? sess4_get_time_zone(environment) : reading.zone);
    }
    return status_of(reading);
}

int32_t zqtime_from_char_ex2(bifun_environment* environment, const uint8_t* text, uint32_t length, zqtime* result) {
    for (const dfm_model* const model : {sess4_get_datetime_format(environment), sess4_get_date_format(environment)}) {
        if (model != nullptr && char_to_date_simple_with_alen(model, text, length, DFM_DATETIME, result) == BIFUN_OK) {
            return BIFUN_OK;
        }
    }
    return zqtime_from_char_ex(text, length, result);
}

int32_t zqtime_from_char_with_tz(const bifun_environment* environment, const uint8_t* text, uint32_t length, zqtime* result) {
    const std::int32_t status = zqtime_from_char_ex(text, length, result);
    if (status == BIFUN_OK && zqtime_get_tz(result) == ZQTIME_NO_ZONE) {
        set_zone(*result, sess4_get_time_zone(environment));
    }
    return status;
}
