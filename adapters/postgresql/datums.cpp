// SPDX-License-Identifier: Apache-2.0
#include "adapters/postgresql/datums.h"

#include <bit>
#include <cstring>

#include "adapters/binding/host_values.h"
#include "adapters/postgresql/numeric_format.h"
#include "adapters/postgresql/session_clock.h"

namespace postgresql_extension {
namespace {

using bifun::value_type;
using binding::call_argument;
using binding::int128;
using binding::sql_type;

// PostgreSQL counts from the beginning of 2000.
constexpr std::int64_t microseconds_to_2000 = binding::days_to_2000 * binding::microseconds_per_day;

[[noreturn]] void refuse(int sql_state, const sql_function& function, const char* why) {
    ereport(ERROR, (errcode(sql_state), errmsg("%s: %s", function.form.builtin.data(), why)));
    pg_unreachable();
}

constexpr const char* no_such_date = "there is no such date: they are from -4712-01-01 to 9999-12-31, and 1582-10-15 follows 1582-10-04";

// ---- arguments ------------------------------------------------------------------------------------------------------------------

template <class T> void show(call_argument& argument, const T& value) { *binding::values_of<T>(argument) = value; }

void show_integer(std::int64_t value, sql_type type, call_argument& argument) {
    switch (type) {
    case sql_type::integer:
        show(argument, static_cast<std::int32_t>(value));
        break;
    case sql_type::bigint:
        show(argument, value);
        break;
    case sql_type::decimal:
        binding::read_host_decimal(value, 0, *binding::values_of<xdec>(argument));
        break;
    default:
        show(argument, static_cast<double>(value));
        break;
    }
}

void show_numeric(Datum value, const sql_function& function, call_argument& argument) {
    const struct varlena* const packed = PG_DETOAST_DATUM_PACKED(value);
    switch (read_numeric(reinterpret_cast<const std::uint8_t*>(VARDATA_ANY(packed)), static_cast<std::uint32_t>(VARSIZE_ANY_EXHDR(packed)),
                         *binding::values_of<xdec>(argument))) {
    case numeric_kind::number:
        return;
    case numeric_kind::nan:
        refuse(ERRCODE_NUMERIC_VALUE_OUT_OF_RANGE, function, "NaN is no decimal");
    case numeric_kind::infinity:
        refuse(ERRCODE_NUMERIC_VALUE_OUT_OF_RANGE, function, "infinity is no decimal");
    case numeric_kind::too_large:
        refuse(ERRCODE_NUMERIC_VALUE_OUT_OF_RANGE, function, "the number is beyond the largest decimal");
    }
}

// Trailing blanks are counted, those of a text as those of char(n).
std::uint32_t length_without_blanks(const std::uint8_t* bytes, std::uint32_t size) {
    while (size > 0 && bytes[size - 1] == ' ') {
        --size;
    }
    return size;
}

// Returns whether the bytes are where the value has them.
bool show_text(Datum value, bool counts_blanks, bool is_written_to, MemoryContext context, site_argument& argument) {
    const struct varlena* const packed = PG_DETOAST_DATUM_PACKED(value);
    auto* bytes = reinterpret_cast<std::uint8_t*>(VARDATA_ANY(packed));
    const auto size = static_cast<std::uint32_t>(VARSIZE_ANY_EXHDR(packed));
    const std::uint32_t length = counts_blanks ? length_without_blanks(bytes, size) : size;
    if (is_written_to) {
        if (argument.copy_capacity < length) {
            const std::size_t capacity = TYPEALIGN(64, length);
            argument.copy = static_cast<std::uint8_t*>(argument.copy == nullptr ? MemoryContextAlloc(context, capacity)
                                                                                : repalloc(argument.copy, capacity));
            argument.copy_capacity = capacity;
        }
        if (length > 0) {
            std::memcpy(argument.copy, bytes, length);
        }
        bytes = argument.copy;
    }
    show(*argument.shown, bifun_string{length, size - length, bytes});
    return is_written_to || PointerGetDatum(packed) == value;
}

void show_date(DateADT days, const sql_function& function, call_argument& argument) {
    if (DATE_NOT_FINITE(days)) {
        refuse(ERRCODE_DATETIME_VALUE_OUT_OF_RANGE, function, "infinity is no date");
    }
    if (!binding::read_host_datetime(std::int64_t{days} + binding::days_to_2000, 0, ZQTIME_NO_ZONE,
                                     *binding::values_of<zqtime>(argument))) {
        refuse(ERRCODE_DATETIME_VALUE_OUT_OF_RANGE, function, no_such_date);
    }
}

// The microseconds are counted from 2000, as clocks show them.
void show_timestamp(std::int64_t local, std::int32_t zone, const sql_function& function, call_argument& argument) {
    const std::int64_t days = local / binding::microseconds_per_day - (local % binding::microseconds_per_day < 0 ? 1 : 0);
    if (!binding::read_host_datetime(days + binding::days_to_2000, local - days * binding::microseconds_per_day, zone,
                                     *binding::values_of<zqtime>(argument))) {
        refuse(ERRCODE_DATETIME_VALUE_OUT_OF_RANGE, function, no_such_date);
    }
}

std::int64_t check_moment(std::int64_t moment, const sql_function& function) {
    if (TIMESTAMP_NOT_FINITE(moment)) {
        refuse(ERRCODE_DATETIME_VALUE_OUT_OF_RANGE, function, "infinity is no timestamp");
    }
    return moment;
}

std::int64_t unix_seconds_of(std::int64_t microseconds_from_2000) {
    const std::int64_t seconds = microseconds_from_2000 / binding::microseconds_per_second;
    return seconds - (microseconds_from_2000 % binding::microseconds_per_second < 0 ? 1 : 0) +
           microseconds_to_2000 / binding::microseconds_per_second;
}

void show_time_with_zone(const TimeTzADT& time, const sql_function& function, call_argument& argument) {
    const std::int32_t zone = -time.zone / 60;
    if (time.zone % 60 != 0 || zone > bifun::datetime_layout::max_zone || zone < -bifun::datetime_layout::max_zone) {
        refuse(ERRCODE_INVALID_TIME_ZONE_DISPLACEMENT_VALUE, function,
               "the zone of a time is not one of whole minutes from -14:00 to +14:00");
    }
    binding::read_host_time(time.time, zone, *binding::values_of<zqtime>(argument));
}

void show_timestamp_with_zone(TimestampTz moment, const sql_function& function, call_argument& argument) {
    const std::int32_t zone = zone_at(unix_seconds_of(check_moment(moment, function)));
    if (zone > bifun::datetime_layout::max_zone || zone < -bifun::datetime_layout::max_zone) {
        refuse(ERRCODE_INVALID_TIME_ZONE_DISPLACEMENT_VALUE, function, "the session's time zone is more than 14 hours from UTC");
    }
    std::int64_t local = 0;
    if (__builtin_add_overflow(moment, zone * binding::microseconds_per_minute, &local)) {
        refuse(ERRCODE_DATETIME_VALUE_OUT_OF_RANGE, function, no_such_date);
    }
    show_timestamp(local, zone, function, argument);
}

// ---- results --------------------------------------------------------------------------------------------------------------------

template <class T> const T& value_of(const binding::row_result& made) { return *static_cast<const T*>(made.column->data->values); }

// Members of some built-ins give integers where others give doubles.
double double_of(const binding::row_result& made) {
    switch (made.type) {
    case value_type::INT:
        return value_of<std::int32_t>(made);
    case value_type::BIGINT:
        return static_cast<double>(value_of<std::int64_t>(made));
    default:
        return value_of<double>(made);
    }
}

// Written in place: the few bytes that most numbers leave cost less than a copy.
Datum make_numeric(const xdec& value) {
    auto* const result = static_cast<struct varlena*>(palloc(VARHDRSZ + most_numeric_bytes));
    const std::uint32_t size = write_numeric(value, reinterpret_cast<std::uint8_t*>(VARDATA(result)));
    SET_VARSIZE(result, VARHDRSZ + size);
    return PointerGetDatum(result);
}

// ASCII without NUL, the usual case, eight bytes at a time.
bool is_plain(const char* bytes, std::size_t size) {
    constexpr std::uint64_t low_bits = 0x0101'0101'0101'0101;
    constexpr std::uint64_t high_bits = low_bits << 7;
    const auto unusual_of = [](const char* at) {
        std::uint64_t word;
        std::memcpy(&word, at, sizeof word);
        return (word | (word - low_bits)) & high_bits;
    };
    std::uint64_t unusual = 0;
    if (size < sizeof unusual) {
        for (; size > 0; --size, ++bytes) {
            unusual |= *bytes <= 0 ? 1U : 0U;
        }
        return unusual == 0;
    }
    const char* const last = bytes + (size - sizeof unusual); // eight bytes that may overlap those before
    for (; bytes < last; bytes += sizeof unusual) {
        unusual |= unusual_of(bytes);
    }
    return (unusual | unusual_of(last)) == 0;
}

Datum make_text(const bifun_string& value, const sql_function& function) {
    const std::size_t size = std::size_t{value.length} + value.trailing_blanks;
    if (size > MaxAllocSize - VARHDRSZ) {
        refuse(ERRCODE_PROGRAM_LIMIT_EXCEEDED, function, "the result is longer than 1 gigabyte");
    }
    const auto* const bytes = reinterpret_cast<const char*>(value.data);
    if (function.result == host_type::text && !is_plain(bytes, value.length) &&
        !pg_verify_mbstr(GetDatabaseEncoding(), bytes, static_cast<int>(value.length), /* noError */ true)) {
        refuse(ERRCODE_CHARACTER_NOT_IN_REPERTOIRE, function,
               "the result is no text in the database's encoding: it has a part of a character, or a character with the code 0");
    }
    auto* const result = static_cast<struct varlena*>(palloc(VARHDRSZ + size));
    SET_VARSIZE(result, VARHDRSZ + size);
    if (value.length > 0) {
        std::memcpy(VARDATA(result), bytes, value.length);
    }
    if (value.trailing_blanks > 0) {
        std::memset(VARDATA(result) + value.length, ' ', value.trailing_blanks);
    }
    return PointerGetDatum(result);
}

std::int64_t time_of(const binding::row_result& made, const sql_function& function) {
    const std::int64_t time = binding::write_host_time(value_of<zqtime>(made));
    if (time > binding::microseconds_per_day) {
        refuse(ERRCODE_DATETIME_VALUE_OUT_OF_RANGE, function, "the result is a time of more than 24 hours, which PostgreSQL does not have");
    }
    return time;
}

std::int32_t days_of(const binding::row_result& made, const sql_function& function) {
    std::int32_t days = 0;
    if (!binding::write_host_date(value_of<zqtime>(made), days)) {
        refuse(ERRCODE_DATETIME_VALUE_OUT_OF_RANGE, function,
               "the result is 29 February of a year that has none by the Gregorian calendar, which PostgreSQL goes by before 1582, too");
    }
    return days - binding::days_to_2000;
}

std::int64_t timestamp_of(const binding::row_result& made, const sql_function& function) {
    return days_of(made, function) * binding::microseconds_per_day + binding::write_host_time(value_of<zqtime>(made));
}

Datum make_time_with_zone(const binding::row_result& made, const sql_function& function) {
    const std::int64_t time = time_of(made, function);
    auto* const result = static_cast<TimeTzADT*>(palloc(sizeof(TimeTzADT)));
    constexpr std::int32_t no_zone = 0;
    result->time = time;
    result->zone = -binding::write_host_zone(value_of<zqtime>(made), no_zone) * 60;
    return TimeTzADTPGetDatum(result);
}

Datum make_timestamp_with_zone(const binding::row_result& made, const sql_function& function) {
    const std::int64_t local = timestamp_of(made, function);
    const zqtime& value = value_of<zqtime>(made);
    std::int32_t zone = binding::write_host_zone(value, ZQTIME_NO_ZONE);
    zone = zone == ZQTIME_NO_ZONE ? zone_of_local(unix_seconds_of(local)) : zone;
    return TimestampTzGetDatum(local - zone * binding::microseconds_per_minute);
}

Datum make_interval(const binding::row_result& made) {
    const binding::interval value = binding::interval_at(*made.column, made.type, 0);
    auto* const result = static_cast<Interval*>(palloc(sizeof(Interval)));
    *result = {value.microseconds, value.days, value.months};
    return IntervalPGetDatum(result);
}

// Returns whether what is shown stays valid as long as the value itself.
bool show_datum(Datum value, MemoryContext context, site_argument& to, const call_site& site) {
    const sql_function& function = *site.function;
    call_argument& argument = *to.shown;
    switch (to.type) {
    case host_type::boolean:
        show(argument, std::int32_t{DatumGetBool(value)});
        break;
    case host_type::smallint:
        show_integer(DatumGetInt16(value), to.parameter, argument);
        break;
    case host_type::integer:
        show_integer(DatumGetInt32(value), to.parameter, argument);
        break;
    case host_type::bigint:
        show_integer(DatumGetInt64(value), to.parameter, argument);
        break;
    case host_type::double_precision:
        show(argument, DatumGetFloat8(value));
        break;
    case host_type::numeric:
        show_numeric(value, function, argument);
        break;
    case host_type::date:
        show_date(DatumGetDateADT(value), function, argument);
        break;
    case host_type::time:
        binding::read_host_time(DatumGetTimeADT(value), ZQTIME_NO_ZONE, *binding::values_of<zqtime>(argument));
        break;
    case host_type::timestamp:
        show_timestamp(check_moment(DatumGetTimestamp(value), function), ZQTIME_NO_ZONE, function, argument);
        break;
    case host_type::time_with_zone:
        show_time_with_zone(*DatumGetTimeTzADTP(value), function, argument);
        break;
    case host_type::timestamp_with_zone:
        show_timestamp_with_zone(DatumGetTimestampTz(value), function, argument);
        break;
    case host_type::interval: {
        const Interval& span = *DatumGetIntervalP(value);
        argument.intervals[0] = {span.month, span.day, span.time};
        break;
    }
    case host_type::text:
    case host_type::character:
        return show_text(value, true, site.writes_arguments, context, to);
    case host_type::bytea:
        return show_text(value, false, site.writes_arguments, context, to);
    }
    return true;
}

} // namespace

void show_arguments(const NullableDatum* values, MemoryContext context, call_site& site) {
    for (std::uint32_t rest = site.to_show; rest != 0; rest &= rest - 1) {
        const auto position = static_cast<std::size_t>(std::countr_zero(rest));
        const NullableDatum& value = values[position];
        site_argument& argument = site.arguments[position];
        argument.shown->data.null_flags[0] = value.isnull ? 0 : 1;
        argument.shown->column.no_nulls = value.isnull ? 0 : 1;
        const bool stays = value.isnull || show_datum(value.value, context, argument, site);
        if (stays && argument.is_literal) {
            site.to_show &= ~(std::uint32_t{1} << position);
            argument.shown->stays = !value.isnull;
            // A text as a constant is prepared for many rows, which one row does not pay for.
            argument.shown->repeats = !value.isnull && argument.type < host_type::text;
        }
    }
}

Datum make_datum(const binding::row_result& made, const sql_function& function) {
    switch (function.result) {
    case host_type::boolean:
        return BoolGetDatum(value_of<std::int32_t>(made) != 0);
    case host_type::smallint:
    case host_type::integer:
        return Int32GetDatum(value_of<std::int32_t>(made));
    case host_type::bigint:
        return Int64GetDatum(value_of<std::int64_t>(made));
    case host_type::double_precision:
        return Float8GetDatum(double_of(made));
    case host_type::numeric:
        return make_numeric(value_of<xdec>(made));
    case host_type::date:
        return DateADTGetDatum(days_of(made, function));
    case host_type::time:
        return TimeADTGetDatum(time_of(made, function));
    case host_type::timestamp:
        return TimestampGetDatum(timestamp_of(made, function));
    case host_type::time_with_zone:
        return make_time_with_zone(made, function);
    case host_type::timestamp_with_zone:
        return make_timestamp_with_zone(made, function);
    case host_type::interval:
        return make_interval(made);
    case host_type::text:
    case host_type::character:
    case host_type::bytea:
        return make_text(value_of<bifun_string>(made), function);
    }
    pg_unreachable();
}

} // namespace postgresql_extension
