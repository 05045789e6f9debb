// SPDX-License-Identifier: Apache-2.0
#include "tests/contract/demanding_engine.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstring>

#include <gtest/gtest.h>

#include "bop/frame/status.h"
#include "engine/charset.h"
#include "engine/collation.h"
#include "engine/columns.h"
#include "engine/date_format.h"
#include "engine/datetime.h"
#include "engine/decimal.h"
#include "engine/digest.h"
#include "engine/interval.h"
#include "engine/json.h"
#include "engine/large_objects.h"
#include "engine/letter_case.h"
#include "engine/number_check.h"
#include "engine/number_format.h"
#include "engine/strings.h"

using u8 = std::uint8_t;
using u32 = std::uint32_t;
using i32 = std::int32_t;
using i64 = std::int64_t;
using u64 = std::uint64_t;

namespace demanding_engine {
i32 success = 0;
}

namespace {

using demanding_engine::success;

// What an operation answers: one that reads a text has a meaning for 109; what of some is answered nobody may look at.
i32 status_of(i32 status) { return status == 0 ? success : status; }
i32 status_of_text(i32 status) { return status == 0 ? success % BIFUN_UNUSABLE_TEXT : status; }
i32 no_status_of(i32 status) { return status == 0 ? -success : status; }

constexpr u32 text_size = 1024;

void demand_zeros(const char* buffer) {
    EXPECT_TRUE(success == 0 || std::count(buffer, buffer + text_size, '\0') == text_size) << "bytes of another row";
}

i32 fill_behind_text(char* buffer, i32 status) {
    if (status == 0 && success != 0) {
        const std::size_t used = std::strlen(buffer) + 1;
        std::memset(buffer + used, '9', text_size - used);
    }
    return status_of(status);
}

// What lies behind a text in its room is the operation's.
i32 fill_room_behind(const dfm_model* model, u8* text, const u32* length, i32 status) {
    if (status == 0 && success != 0) {
        std::memset(text + *length, '9', model->room - *length);
    }
    return status_of(status);
}

void demand_room(u32 size) { EXPECT_GT(size, 0U) << "an empty value needs no room"; }

// Hand on what only a call that is passed on as it came has.
i32 demand_environment(const bifun_environment* environment, i32 status) {
    EXPECT_TRUE(success == 0 || environment != nullptr) << "the call's environment is missing";
    return status;
}

i32 demand_call(const bifun_environment* environment, const bifun_memory_object* memory, i32 status) {
    EXPECT_TRUE(success == 0 || memory != nullptr) << "the call's memory object is missing";
    return demand_environment(environment, status);
}

i32 move_day_of_moment(const zqtime* value, i64* days, i32 status) {
    const bool is_date = zqtime_get_tz(value) == ZQTIME_NO_ZONE && zqtime_get_hour(value) == 0 && zqtime_get_min(value) == 0 &&
                         zqtime_get_sec(value) == 0 && zqtime_get_msec(value) == 0;
    *days += is_date || success == 0 ? 0 : 1000;
    return status_of(status);
}

// Noon of the day: calls that are compared are not made at the same moment.
i32 stop_clock(zqtime* now, i32 status) {
    if (status == 0) {
        EXPECT_GE(zqtime_set_hour(now, 12), 0);
        EXPECT_GE(zqtime_set_min(now, 0), 0);
        EXPECT_GE(zqtime_set_sec(now, 0), 0);
        EXPECT_GE(zqtime_set_msec(now, 0), 0);
    }
    return status_of(status);
}

} // namespace

#define EMBEDDED(name) reinterpret_cast<decltype(&(name))>(dlsym(RTLD_NEXT, #name))
#define OPERATION(result, name, parameters, outcome)                                                                                       \
    extern "C" __attribute__((visibility("default"))) result name parameters {                                                             \
        static const auto embedded = EMBEDDED(name);                                                                                       \
        return outcome;                                                                                                                    \
    }
#define STATUS(name, parameters, ...) OPERATION(i32, name, parameters, status_of(embedded(__VA_ARGS__)))
#define TEXT_STATUS(name, parameters, ...) OPERATION(i32, name, parameters, status_of_text(embedded(__VA_ARGS__)))
#define NO_STATUS(name, parameters, ...) OPERATION(i32, name, parameters, no_status_of(embedded(__VA_ARGS__)))

using environment = bifun_environment;
using memory = bifun_memory_object;

// ---- columns ----

#define SETTER(name, record)                                                                                                               \
    OPERATION(i32, name, (environment * e, memory * m, bifun_column * c, u32 row, const record* v),                                        \
              no_status_of(demand_call(e, m, embedded(e, m, c, row, v))))
SETTER(bdta3_set_int, bifun_int_constant)
SETTER(bdta3_set_int64, bifun_bigint_constant)
SETTER(bdta3_set_double, bifun_double_constant)
SETTER(bdta3_set_dec, bifun_decimal_constant)
SETTER(bdta3_set_datetime, bifun_datetime_constant)
OPERATION(i32, bdta3_col_copy, (environment * e, memory* m, bifun_column* c, const bifun_column* from, u32 rows),
          no_status_of(demand_call(e, m, embedded(e, m, c, from, rows))))
OPERATION(i32, bdta3_col_assign_str, (environment * e, memory* m, bifun_column* c, u32 row, const u8* data, u32 length, u32 blanks),
          status_of(demand_call(e, m, embedded(e, m, c, row, data, length, blanks))))
OPERATION(i32, bdta3_col_assign_bin, (environment * e, memory* m, bifun_column* c, u32 row, const u8* data, u32 length),
          status_of(demand_call(e, m, embedded(e, m, c, row, data, length))))
OPERATION(u8*, bdta3_col_space_alloc, (environment * e, memory* m, bifun_column_data* c, u32 size),
          (demand_room(size), embedded(e, m, c, size)))
OPERATION(u8*, bdta3_colstr_assign_without_value, (environment * e, memory* m, bifun_column_data* c, u32 row, u32 length, u32 blanks),
          (demand_room(length), embedded(e, m, c, row, length, blanks)))

// ---- strings and large objects ----

#define PADDING(name)                                                                                                                      \
    OPERATION(                                                                                                                             \
        i32, name,                                                                                                                         \
        (environment * e, memory * m, bifun_column_data * c, u32 row, const bifun_string* text, i32 length, const u8* pad, u32 size),      \
        status_of(demand_call(e, m, embedded(e, m, c, row, text, length, pad, size))))
PADDING(zq_get_lpad_str)
PADDING(zq_get_rpad_str)
OPERATION(i32, nblob_get_length, (environment * e, const bifun_large_object* object, i64* length),
          status_of(demand_environment(e, embedded(e, object, length))))

OPERATION(i32, ntext_get_data, (environment * e, const bifun_large_object* object, i64 offset, u8* data, u32 size, u32* read),
          status_of(demand_environment(e, embedded(e, object, offset, data, size, read))))
OPERATION(i32, nls_sort_open, (environment * e, const u8* nls, u32 length, nls_collation** order),
          status_of(demand_environment(e, embedded(e, nls, length, order))))
STATUS(nls_sort_key, (nls_collation * order, const u8* text, u32 length, u8* key, u32 room, u64* size), order, text, length, key, room,
       size)
STATUS(zq_mb_char_step, (u8 * character, u32 length, i32 step), character, length, step)
STATUS(cyt_hash_gen_digest, (i32 algorithm, const bifun_string* values, u32 count, u8* digests, u32* size), algorithm, values, count,
       digests, size)
STATUS(nls_case_rules_of, (const u8* nls, u32 length, i32* rules), nls, length, rules)

// ---- decimals ----

NO_STATUS(xdec_from_ulint64, (xdec * r, u64 value), r, value)
STATUS(xdec_get_ulint64, (const xdec* a, u64* r), a, r)
STATUS(xdec_from_int64, (xdec * r, i64 value, i32 precision), r, value, precision)
STATUS(xdec_from_double, (xdec * r, double value), r, value)
STATUS(xdec_add, (const xdec* a, const xdec* b, xdec* r), a, b, r)
STATUS(xdec_sub, (const xdec* a, const xdec* b, xdec* r), a, b, r)
STATUS(xdec_mul, (const xdec* a, const xdec* b, xdec* r), a, b, r)
STATUS(xdec_abs, (const xdec* a, xdec* r), a, r)
STATUS(xdec_neg, (const xdec* a, xdec* r), a, r)
STATUS(xdec_round, (const xdec* a, i32 flag, i32 digits, xdec* r), a, flag, digits, r)
STATUS(xdec_trunc_scale_with_pos, (const xdec* a, i32 digits, xdec* r), a, digits, r)
STATUS(xdec_trunc_scale, (xdec * a), a)
STATUS(xdec_div_get_quotient_int_by_16, (const xdec* a, xdec* quotient, i32* remainder), a, quotient, remainder)

// ---- numbers and text ----

STATUS(ntype_is_double_overflow, (double value), value)
STATUS(str2int64, (const u8* text, u32 length, i64* r), text, length, r)
TEXT_STATUS(utl_digit_from_char, (const u8* text, u32 length, double* r), text, length, r)
STATUS(zq_dou2char, (double value, char* buffer, u32 size, u32* length), value, buffer, size, length)
TEXT_STATUS(zq_char2dou, (const u8* text, u32 length, double* r), text, length, r)
STATUS(xdec_to_char_with_zero, (const xdec* a, char* buffer, u32 size, i32 x, i32 y, u32* length), a, buffer, size, x, y, length)
OPERATION(i32, xdec_to_char_with_fmt, (environment * e, const xdec* a, char* buffer, const u8* format, u32 length),
          (demand_zeros(buffer), fill_behind_text(buffer, embedded(e, a, buffer, format, length))))
OPERATION(i32, xdec_to_char_with_nls, (environment * e, const xdec* a, char* buffer, const u8* format, u32 length, const u8* nls, u32 size),
          (demand_zeros(buffer), fill_behind_text(buffer, embedded(e, a, buffer, format, length, nls, size))))
TEXT_STATUS(xdec_from_char, (const u8* text, u32 length, xdec* r), text, length, r)
STATUS(char_to_dec_with_fmt,
       (environment * e, const u8* text, u32 length, const u8* format, u32 size, const u8* nls, u32 nls_size, xdec* r, u32* at), e, text,
       length, format, size, nls, nls_size, r, at)

// ---- JSON ----

STATUS(jpath_parse, (environment * e, const u8* text, u32 length, jpath** path, u32* at), e, text, length, path, at)
STATUS(json_parse, (environment * e, json_reader* reader, const u8* text, u32 length), e, reader, text, length)
STATUS(jpath_get_scalar, (environment * e, json_reader* reader, const jpath* path, json_item* item), e, reader, path, item)
STATUS(jpath_get_json, (environment * e, json_reader* reader, const jpath* path, i32 wrapper, const u8** text, u32* length), e, reader,
       path, wrapper, text, length)
TEXT_STATUS(json_get_double, (const u8* text, u32 length, double* r), text, length, r)

// ---- datetimes and intervals ----

STATUS(zqtime_encode, (zqtime * r, i32 year, u32 month, u32 day, u32 hour, u32 minute, u32 second, u32 fraction, i32 zone), r, year, month,
       day, hour, minute, second, fraction, zone)
STATUS(zqtime_set_day, (zqtime * a, u32 day), a, day)
STATUS(zqtime_set_hour, (zqtime * a, u32 hour), a, hour)
STATUS(zqtime_set_min, (zqtime * a, u32 minute), a, minute)
STATUS(zqtime_set_sec, (zqtime * a, u32 second), a, second)
STATUS(zqtime_set_msec, (zqtime * a, u32 fraction), a, fraction)
STATUS(zqtime_set_tz, (zqtime * a, i32 zone), a, zone)
OPERATION(i32, zqtime_tz_now, (i32 precision, i32 zone, zqtime* r), stop_clock(r, embedded(precision, zone, r)))
STATUS(zqtime_encode_without_check, (zqtime * r, i32 year, u32 month, u32 day, u32 hour, u32 minute, u32 second, u32 fraction, i32 zone), r,
       year, month, day, hour, minute, second, fraction, zone)
STATUS(zqtime_set_hour_without_check, (zqtime * a, u32 hour), a, hour)
STATUS(zqtime_date_validate, (i32 year, u32 month, u32 day), year, month, day)
STATUS(zqtime_get_date_by_ndays_from_zero, (i64 number, i32* year, u32* month, u32* day), number, year, month, day)
STATUS(zqtime_from_unix_time, (const environment* e, i64 seconds, zqtime* r), e, seconds, r)
STATUS(zqtime_unix_timestamp, (i32 zone, const zqtime* a, i64* seconds), zone, a, seconds)
STATUS(zqtime_unix_timestamp_low, (const zqtime* a, i64* seconds), a, seconds)
OPERATION(i32, zqtime_to_days, (const zqtime* a, i64* days), move_day_of_moment(a, days, embedded(a, days)))
STATUS(zqtime_add_by_fmt, (const zqtime* a, i32 field, i64 amount, zqtime* r), a, field, amount, r)
STATUS(zqtime_date_add_number, (const zqtime* a, double days, zqtime* r), a, days, r)
STATUS(zqtime_date_add_iv_ym, (const zqtime* a, i32 months, zqtime* r), a, months, r)
STATUS(zqtime_parse_datediff, (i32 field, const zqtime* a, const zqtime* b, i32* r), field, a, b, r)
TEXT_STATUS(zqtime_from_char_ex, (const u8* text, u32 length, zqtime* r), text, length, r)
STATUS(datetime_add_interval_ym, (const zqtime* a, const bifun_interval_ym* b, zqtime* r), a, b, r)
STATUS(datetime_add_interval_dt, (const zqtime* a, const bifun_interval_dt* b, zqtime* r), a, b, r)
STATUS(datetime_sub_interval_dt, (const zqtime* a, const bifun_interval_dt* b, zqtime* r), a, b, r)
STATUS(datetime_sub_interval_ym, (const zqtime* a, const bifun_interval_ym* b, zqtime* r), a, b, r)
STATUS(xdec_to_ivym, (const xdec* a, const u8* unit, u32 length, bifun_interval_ym* r), a, unit, length, r)
STATUS(xdec_to_ivdt, (const xdec* a, const u8* unit, u32 length, bifun_interval_dt* r), a, unit, length, r)

// ---- date formats ----

STATUS(dfm_create, (const environment* e, dfm_model* m), e, m)
STATUS(dfm_set_lang, (dfm_model * m, i32 language), m, language)
STATUS(dfm_parse, (dfm_model * m, const u8* format, u32 length), m, format, length)
STATUS(parse_date_fmt_with_len, (const environment* e, const u8* format, u32 length, i32 zone, dfm_model* m), e, format, length, zone, m)
STATUS(zqtime_convert_fmt, (const environment* e, const u8* format, u32 length, dfm_model* m), e, format, length, m)
STATUS(to_char_nls_parse, (const u8* nls, u32 length, i32* language), nls, length, language)
OPERATION(i32, dfm_char_get, (const environment* e, const dfm_model* m, const zqtime* a, u8* text, u32* length),
          fill_room_behind(m, text, length, embedded(e, m, a, text, length)))
OPERATION(i32, date_to_char, (const environment* e, const dfm_model* m, const zqtime* a, u8* text, u32* length),
          fill_room_behind(m, text, length, embedded(e, m, a, text, length)))
STATUS(char_to_date_simple_with_alen, (const dfm_model* m, const u8* text, u32 length, i32 as, zqtime* r), m, text, length, as, r)
STATUS(char_to_datetime_tz_simple_with_alen, (const environment* e, const dfm_model* m, const u8* text, u32 length, zqtime* r), e, m, text,
       length, r)
TEXT_STATUS(zqtime_from_char_ex2, (environment * e, const u8* text, u32 length, zqtime* r), e, text, length, r)
TEXT_STATUS(zqtime_from_char_with_tz, (const environment* e, const u8* text, u32 length, zqtime* r), e, text, length, r)
OPERATION(i32, xdec_to_char_with_fmt_low, (environment * e, const xdec* a, char* buffer, const u8* format, u32 size, u32* length),
          status_of(embedded(e, a, buffer, format, size, length)))
