// SPDX-License-Identifier: Apache-2.0
// JSON_VALUE: a scalar as a value of SQL. A JSON null is NULL.

#include "bop/json/batch_of_documents.h"
#include "bop/json/entry_points.h"
#include "engine/datetime.h"
#include "engine/decimal.h"
#include "engine/number_check.h"

namespace bifun {
namespace {

// ---- scalars as values, which return -6147 where they cannot be such ----

bool is_read(status outcome) { return outcome >= BIFUN_OK && outcome != BIFUN_UNUSABLE_TEXT; }

status unreadable(status outcome) { return outcome == BIFUN_NUMERIC_OVERFLOW ? outcome : BIFUN_CONVERSION_FAILED; }

bool has_text(const json_item& item) { return item.kind == JSON_NUMBER || item.kind == JSON_STRING; }

status convert(const json_item& item, xdec& result) {
    const status outcome = has_text(item) ? xdec_from_char(item.text, item.length, &result) : status{BIFUN_UNUSABLE_TEXT};
    return is_read(outcome) ? BIFUN_OK : unreadable(outcome);
}

// A number with a fraction of zero, or with an exponent.
[[gnu::noinline]] status convert_decimal(const json_item& item, std::int64_t& result) {
    xdec number;
    const status outcome = convert(item, number);
    if (outcome < BIFUN_OK) {
        return outcome;
    }
    xdec integer;
    xdec_copy(&integer, &number);
    (void)xdec_trunc_scale(&integer);
    if (xdec_cmp(&integer, &number) != 0) {
        return BIFUN_CONVERSION_FAILED;
    }
    char text[512];
    std::uint32_t length = 0;
    const status written = xdec_to_char_with_zero(&integer, text, sizeof text, 0, 0, &length);
    const auto* const digits = reinterpret_cast<const std::uint8_t*>(text);
    return written < BIFUN_OK || str2int64(digits, length, &result) < BIFUN_OK ? BIFUN_NUMERIC_OVERFLOW : BIFUN_OK;
}

status convert(const json_item& item, std::int64_t& result) {
    return has_text(item) && str2int64(item.text, item.length, &result) >= BIFUN_OK ? BIFUN_OK : convert_decimal(item, result);
}

status convert(const json_item& item, double& result) {
    const status outcome = has_text(item) ? json_get_double(item.text, item.length, &result) : status{BIFUN_UNUSABLE_TEXT};
    return is_read(outcome) ? BIFUN_OK : unreadable(outcome);
}

// Whether a time of day comes first, or alone: a colon behind the first digits.
bool begins_with_time(const json_item& item) {
    std::uint32_t at = 0;
    while (at < item.length && (item.text[at] == blank || item.text[at] - 0x30U < 10)) {
        ++at;
    }
    return at < item.length && item.text[at] == ':';
}

// A zone would make it another moment than is written, a time without a date one of a day that nobody has named.
status convert(const json_item& item, zqtime& result) {
    const bool read = item.kind == JSON_STRING && is_read(zqtime_from_char_ex(item.text, item.length, &result));
    return read && zqtime_get_tz(&result) == ZQTIME_NO_ZONE && !begins_with_time(item) ? BIFUN_OK : BIFUN_CONVERSION_FAILED;
}

bool is_word(const json_item& item, const char* word, std::uint32_t length) {
    return item.kind == JSON_STRING && item.length == length && std::memcmp(item.text, word, length) == 0;
}

// What a result of the type is made of a scalar by.
template <value_type type> status convert_to(const json_item& item, stored<type>& result) { return convert(item, result); }

template <> status convert_to<INT>(const json_item& item, std::int32_t& result) {
    std::int64_t number = 0;
    const status outcome = convert(item, number);
    result = static_cast<std::int32_t>(number);
    return outcome < BIFUN_OK ? outcome : result == number ? BIFUN_OK : BIFUN_NUMERIC_OVERFLOW;
}

template <> status convert_to<BOOL>(const json_item& item, std::int32_t& result) {
    result = item.kind == JSON_TRUE || is_word(item, "true", 4) ? 1 : 0;
    return result == 1 || item.kind == JSON_FALSE || is_word(item, "false", 5) ? BIFUN_OK : BIFUN_CONVERSION_FAILED;
}

status convert_to_date(const json_item& item, zqtime& result) {
    const status outcome = convert(item, result);
    if (outcome == BIFUN_OK) {
        (void)zqtime_set_hour(&result, 0);
        (void)zqtime_set_min(&result, 0);
        (void)zqtime_set_sec(&result, 0);
        (void)zqtime_set_msec(&result, 0);
    }
    return outcome;
}

// ---- rows ----

status get_scalar(const documents& all, const bifun_string& document, json_item& item) {
    return ask_document(all, document, [&] { return jpath_get_scalar(all.environment, all.reader, all.path, &item); });
}

json_item item_of(const bifun_string& text) { return {JSON_STRING, text.length, text.data}; }

template <class Result, status (*conversion)(const json_item&, Result&)>
value_or_null value(const documents& all, const bifun_string& document, Result& result) {
    json_item item;
    status outcome = get_scalar(all, document, item);
    if (outcome >= BIFUN_OK) {
        if (item.kind == JSON_NULL) {
            return value_or_null::null();
        }
        outcome = conversion(item, result);
    }
    if (outcome < BIFUN_OK) [[unlikely]] {
        return react(all, outcome, [&](const bifun_string& text) { return conversion(item_of(text), result); });
    }
    return BIFUN_OK;
}

value_or_null text_value(const documents& all, const bifun_string& document, string_room& room) {
    json_item item;
    const status outcome = get_scalar(all, document, item);
    if (outcome < BIFUN_OK) [[unlikely]] {
        return react_by_text(all, outcome, room);
    }
    return item.kind == JSON_NULL ? value_or_null::null() : value_or_null(put_text(document, item.text, item.length, room));
}

// Texts are of any type, too: a host that chooses by the types of arguments alone comes here with whatever the clauses say.
constexpr const char* any_type_returned =
    JSON_RETURNS_VARCHAR " " JSON_RETURNS_INT " " JSON_RETURNS_BIGINT " " JSON_RETURNS_DECIMAL " " JSON_RETURNS_DOUBLE " " JSON_RETURNS_BOOL
                         " " JSON_RETURNS_DATE " " JSON_RETURNS_TIMESTAMP;

status text_rows(batch_of<VARCHAR> batch, column_of<VARCHAR> document, constant_of<VARCHAR> path, const bifun_string_constant* clauses) {
    return with_documents(batch, path, clauses, json_function::value, any_type_returned,
                          [&](const documents& all) { return string_rows<text_value>(batch, shared(all), document); });
}

// The values that clauses have in themselves have to be of the type.
template <class Result, status (*conversion)(const json_item&, Result&)> status check_literals(const json_clauses& clauses) {
    for (const json_outcome* const outcome : {&clauses.on_empty, &clauses.on_error}) {
        Result value;
        const status converted = outcome->reaction == json_reaction::value ? conversion(item_of(outcome->value), value) : status{BIFUN_OK};
        if (converted < BIFUN_OK) {
            return converted;
        }
    }
    return BIFUN_OK;
}

template <value_type type, status (*conversion)(const json_item&, stored<type>&) = convert_to<type>>
status value_rows(batch_of<type> batch, column_of<VARCHAR> document, constant_of<VARCHAR> path, constant_of<VARCHAR> clauses,
                  const char* types) {
    return with_documents(batch, path, clauses.record, json_function::value, types, [&](const documents& all) {
        const status checked = check_literals<stored<type>, conversion>(*all.clauses);
        return checked < BIFUN_OK ? fail_batch(batch, checked) : set_rows<value<stored<type>, conversion>>(batch, shared(all), document);
    });
}

} // namespace

status entry::bjson_value_av_str(batch_of<VARCHAR> batch, column_of<VARCHAR> document, constant_of<VARCHAR> path) {
    return text_rows(batch, document, path, nullptr);
}
status entry::bjson_value_avv_str(batch_of<VARCHAR> batch, column_of<VARCHAR> document, constant_of<VARCHAR> path,
                                  constant_of<VARCHAR> clauses) {
    return text_rows(batch, document, path, clauses.record);
}

#define VALUE_OF(symbol, type, types)                                                                                                      \
    status entry::symbol(batch_of<type> batch, column_of<VARCHAR> document, constant_of<VARCHAR> path, constant_of<VARCHAR> clauses) {     \
        return value_rows<type>(batch, document, path, clauses, types);                                                                    \
    }
VALUE_OF(bjson_value_int_avv_str, INT, JSON_RETURNS_INT)
VALUE_OF(bjson_value_int64_avv_str, BIGINT, JSON_RETURNS_BIGINT)
VALUE_OF(bjson_value_dec_avv_str, DECIMAL, JSON_RETURNS_DECIMAL)
VALUE_OF(bjson_value_dbl_avv_str, DOUBLE, JSON_RETURNS_DOUBLE)
VALUE_OF(bjson_value_bool_avv_str, BOOL, JSON_RETURNS_BOOL)
VALUE_OF(bjson_value_dt_avv_str, DATETIME, JSON_RETURNS_TIMESTAMP)
#undef VALUE_OF
status entry::bjson_value_date_avv_str(batch_of<DATETIME> batch, column_of<VARCHAR> document, constant_of<VARCHAR> path,
                                       constant_of<VARCHAR> clauses) {
    return value_rows<DATETIME, convert_to_date>(batch, document, path, clauses, JSON_RETURNS_DATE);
}

} // namespace bifun
