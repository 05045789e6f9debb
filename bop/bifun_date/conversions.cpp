// SPDX-License-Identifier: Apache-2.0
// Datetimes of numbers and numbers of datetimes: TO_DATETIME, FROM_UNIXTIME, UNIX_TIMESTAMP, SEC_TO_TIME, TIME_TO_SEC.

#include "bop/bifun_date/current_datetime.h"
#include "bop/bifun_date/datetime_operations.h"
#include "bop/bifun_date/entry_points.h"
#include "bop/frame/row_loop.h"
#include "engine/date_format.h"
#include "engine/session.h"

namespace bifun {
namespace {

// ---- TO_DATETIME -------------------------------------------------------------------------------------------------------------------

std::int64_t floor_of_quotient(std::int64_t number, std::int64_t divisor) { return number / divisor - (number % divisor < 0 ? 1 : 0); }

// Minutes, hours and days outside their ranges roll over into what is larger; seconds are 0.
template <class Datetimes>
status ifun_convert_datetime(std::int32_t year, std::int32_t month, std::int32_t day, std::int32_t hour, std::int32_t minute,
                             zqtime& result) {
    const std::int64_t minutes = minute + std::int64_t{hour} * 60;
    const std::int64_t hours = floor_of_quotient(minutes, 60);
    const std::int64_t days = floor_of_quotient(hours, 24);
    const auto minute_of_hour = static_cast<std::int32_t>(minutes - hours * 60);
    const auto hour_of_day = static_cast<std::int32_t>(hours - days * 24);

    const status month_exists = Datetimes::validate_date(year, month, 1);
    if (month_exists < BIFUN_OK) {
        return month_exists;
    }
    const std::int64_t first_day = Datetimes::days_from_zero(year, month, 1);
    const status found = Datetimes::date_from_zero(first_day + day - 1 + days, year, month, day);
    if (found < BIFUN_OK) {
        return found;
    }
    if (year == 0) {
        return BIFUN_YEAR_ZERO;
    }
    const status day_exists = Datetimes::validate_date(year, month, day);
    if (day_exists < BIFUN_OK) {
        return day_exists;
    }
    if (Datetimes::is_missing_day(year, month, day)) {
        day = static_cast<std::int32_t>(calendar::first_gregorian_day);
    }
    return Datetimes::encode_minute(year, month, day, hour_of_day, minute_of_hour, result);
}

// The entry points differ in which of their arguments are constants: they share a loop.
using numbers = column_or_constant<std::int32_t>;

status to_datetime(batch_of<DATETIME> batch, const numbers& year, const numbers& month, const numbers& day, const numbers& hour,
                   const numbers& minute) {
    return with_datetimes(
        [&]<class Datetimes>(Datetimes) { return set_rows<ifun_convert_datetime<Datetimes>>(batch, year, month, day, hour, minute); });
}

// ---- unix times --------------------------------------------------------------------------------------------------------------------

// A time that is out of range or cannot be converted is NULL.
value_or_null from_unixtime(const bifun_environment* environment, std::int64_t seconds, zqtime& result) {
    const bool is_known = seconds >= 0 && seconds <= INT32_MAX && zqtime_from_unix_time(environment, seconds, &result) >= BIFUN_OK;
    return is_known ? value_or_null() : value_or_null::null();
}

// What a session's clocks show as the seconds since 1970 in UTC. A moment that cannot be converted is NULL.
value_or_null unix_timestamp(std::int32_t zone, bool of_whole_seconds, zqtime value, std::int64_t& result) {
    (void)zqtime_set_tz(&value, ZQTIME_NO_ZONE);
    if (zone != 0) {
        const bifun_interval_dt displacement{.days = 0, .hours = 0, .minutes = zone, .seconds = 0, .microseconds = 0};
        const status moved = datetime_sub_interval_dt(&value, &displacement, &value);
        if (moved < BIFUN_OK) {
            return moved;
        }
    }
    if (of_whole_seconds) {
        (void)zqtime_set_msec(&value, 0);
        return zqtime_unix_timestamp_low(&value, &result) < BIFUN_OK ? value_or_null::null() : value_or_null();
    }
    return zqtime_unix_timestamp(zone, &value, &result) < BIFUN_OK ? value_or_null::null() : value_or_null();
}

status unix_timestamps(batch_of<BIGINT> batch, column_of<DATETIME> value, bool of_whole_seconds) {
    const std::int32_t zone = sess4_get_time_zone(batch.environment);
    current_datetime now;
    return rows_or_null<std::int64_t>(batch, value, [&](const zqtime* given, std::int64_t& result) -> value_or_null {
        const zqtime* const moment = given != nullptr ? given : now_of(now);
        return moment == nullptr ? value_or_null::null() : unix_timestamp(zone, of_whole_seconds, *moment, result);
    });
}

// ---- seconds -----------------------------------------------------------------------------------------------------------------------

// Without its sign: -3661 is 01:01:01 as 3661 is. Hours beyond a day stay hours.
std::uint32_t magnitude(std::int32_t seconds) {
    return seconds < 0 ? 0U - static_cast<std::uint32_t>(seconds) : static_cast<std::uint32_t>(seconds);
}

// The date that a time has.
constexpr std::int32_t year_of_times = 1900;

status sec_to_time(std::int32_t seconds, zqtime& result) {
    const std::uint32_t count = magnitude(seconds);
    const status encoded = zqtime_encode(&result, year_of_times, 1, 1, 0, 0, 0, 0, ZQTIME_NO_ZONE);
    (void)zqtime_set_hour_without_check(&result, count / 3600);
    (void)zqtime_set_min(&result, count / 60 % 60);
    (void)zqtime_set_sec(&result, count % 60);
    return encoded;
}

void sec_to_time_packed(std::int32_t seconds, zqtime& result) {
    const std::uint32_t count = magnitude(seconds);
    datetime_layout::store_words(result, datetime_layout::pack_time(count / 3600, count / 60 % 60, count % 60),
                                 datetime_layout::pack_date(year_of_times, 1, 1), datetime_layout::pack_fraction(0, ZQTIME_NO_ZONE));
}

template <class Datetimes> std::int32_t time_to_sec(const zqtime& value) {
    // Unsigned: the longest time that SEC_TO_TIME gives is one second longer than an INT can say.
    const auto part = [](std::int32_t number) { return static_cast<std::uint32_t>(number); };
    return static_cast<std::int32_t>((part(Datetimes::hour(value)) * 60 + part(Datetimes::minute(value))) * 60 +
                                     part(Datetimes::second(value)));
}

} // namespace

status entry::bto_datetime_aaaaa_date(batch_of<DATETIME> batch, column_of<INT> year, column_of<INT> month, column_of<INT> day,
                                      column_of<INT> hour, column_of<INT> minute) {
    return to_datetime(batch, year, month, day, hour, minute);
}
status entry::bto_datetime_aaaav_li_date(batch_of<DATETIME> batch, column_of<INT> year, column_of<INT> month, column_of<INT> day,
                                         column_of<INT> hour, constant_of<INT> minute) {
    return to_datetime(batch, year, month, day, hour, minute);
}
status entry::bto_datetime_aaava_li_date(batch_of<DATETIME> batch, column_of<INT> year, column_of<INT> month, column_of<INT> day,
                                         constant_of<INT> hour, column_of<INT> minute) {
    return to_datetime(batch, year, month, day, hour, minute);
}
status entry::bto_datetime_aavaa_li_date(batch_of<DATETIME> batch, column_of<INT> year, column_of<INT> month, constant_of<INT> day,
                                         column_of<INT> hour, column_of<INT> minute) {
    return to_datetime(batch, year, month, day, hour, minute);
}
status entry::bto_datetime_avaaa_li_date(batch_of<DATETIME> batch, column_of<INT> year, constant_of<INT> month, column_of<INT> day,
                                         column_of<INT> hour, column_of<INT> minute) {
    return to_datetime(batch, year, month, day, hour, minute);
}
status entry::bto_datetime_vaaaa_li_date(batch_of<DATETIME> batch, constant_of<INT> year, column_of<INT> month, column_of<INT> day,
                                         column_of<INT> hour, column_of<INT> minute) {
    return to_datetime(batch, year, month, day, hour, minute);
}
status entry::bto_datetime_aaavv_lili_date(batch_of<DATETIME> batch, column_of<INT> year, column_of<INT> month, column_of<INT> day,
                                           constant_of<INT> hour, constant_of<INT> minute) {
    return to_datetime(batch, year, month, day, hour, minute);
}
status entry::bto_datetime_aavav_lili_date(batch_of<DATETIME> batch, column_of<INT> year, column_of<INT> month, constant_of<INT> day,
                                           column_of<INT> hour, constant_of<INT> minute) {
    return to_datetime(batch, year, month, day, hour, minute);
}
status entry::bto_datetime_aavva_lili_date(batch_of<DATETIME> batch, column_of<INT> year, column_of<INT> month, constant_of<INT> day,
                                           constant_of<INT> hour, column_of<INT> minute) {
    return to_datetime(batch, year, month, day, hour, minute);
}
status entry::bto_datetime_avaav_lili_date(batch_of<DATETIME> batch, column_of<INT> year, constant_of<INT> month, column_of<INT> day,
                                           column_of<INT> hour, constant_of<INT> minute) {
    return to_datetime(batch, year, month, day, hour, minute);
}
status entry::bto_datetime_avava_lili_date(batch_of<DATETIME> batch, column_of<INT> year, constant_of<INT> month, column_of<INT> day,
                                           constant_of<INT> hour, column_of<INT> minute) {
    return to_datetime(batch, year, month, day, hour, minute);
}
status entry::bto_datetime_avvaa_lili_date(batch_of<DATETIME> batch, column_of<INT> year, constant_of<INT> month, constant_of<INT> day,
                                           column_of<INT> hour, column_of<INT> minute) {
    return to_datetime(batch, year, month, day, hour, minute);
}
status entry::bto_datetime_vaaav_lili_date(batch_of<DATETIME> batch, constant_of<INT> year, column_of<INT> month, column_of<INT> day,
                                           column_of<INT> hour, constant_of<INT> minute) {
    return to_datetime(batch, year, month, day, hour, minute);
}
status entry::bto_datetime_vaava_lili_date(batch_of<DATETIME> batch, constant_of<INT> year, column_of<INT> month, column_of<INT> day,
                                           constant_of<INT> hour, column_of<INT> minute) {
    return to_datetime(batch, year, month, day, hour, minute);
}
status entry::bto_datetime_vavaa_lili_date(batch_of<DATETIME> batch, constant_of<INT> year, column_of<INT> month, constant_of<INT> day,
                                           column_of<INT> hour, column_of<INT> minute) {
    return to_datetime(batch, year, month, day, hour, minute);
}
status entry::bto_datetime_vvaaa_lili_date(batch_of<DATETIME> batch, constant_of<INT> year, constant_of<INT> month, column_of<INT> day,
                                           column_of<INT> hour, column_of<INT> minute) {
    return to_datetime(batch, year, month, day, hour, minute);
}
status entry::bto_datetime_aavvv_lilili_date(batch_of<DATETIME> batch, column_of<INT> year, column_of<INT> month, constant_of<INT> day,
                                             constant_of<INT> hour, constant_of<INT> minute) {
    return to_datetime(batch, year, month, day, hour, minute);
}
status entry::bto_datetime_avavv_lilili_date(batch_of<DATETIME> batch, column_of<INT> year, constant_of<INT> month, column_of<INT> day,
                                             constant_of<INT> hour, constant_of<INT> minute) {
    return to_datetime(batch, year, month, day, hour, minute);
}
status entry::bto_datetime_avvav_lilili_date(batch_of<DATETIME> batch, column_of<INT> year, constant_of<INT> month, constant_of<INT> day,
                                             column_of<INT> hour, constant_of<INT> minute) {
    return to_datetime(batch, year, month, day, hour, minute);
}
status entry::bto_datetime_avvva_lilili_date(batch_of<DATETIME> batch, column_of<INT> year, constant_of<INT> month, constant_of<INT> day,
                                             constant_of<INT> hour, column_of<INT> minute) {
    return to_datetime(batch, year, month, day, hour, minute);
}
status entry::bto_datetime_vaavv_lilili_date(batch_of<DATETIME> batch, constant_of<INT> year, column_of<INT> month, column_of<INT> day,
                                             constant_of<INT> hour, constant_of<INT> minute) {
    return to_datetime(batch, year, month, day, hour, minute);
}
status entry::bto_datetime_vavav_lilili_date(batch_of<DATETIME> batch, constant_of<INT> year, column_of<INT> month, constant_of<INT> day,
                                             column_of<INT> hour, constant_of<INT> minute) {
    return to_datetime(batch, year, month, day, hour, minute);
}
status entry::bto_datetime_vavva_lilili_date(batch_of<DATETIME> batch, constant_of<INT> year, column_of<INT> month, constant_of<INT> day,
                                             constant_of<INT> hour, column_of<INT> minute) {
    return to_datetime(batch, year, month, day, hour, minute);
}
status entry::bto_datetime_vvaav_lilili_date(batch_of<DATETIME> batch, constant_of<INT> year, constant_of<INT> month, column_of<INT> day,
                                             column_of<INT> hour, constant_of<INT> minute) {
    return to_datetime(batch, year, month, day, hour, minute);
}
status entry::bto_datetime_vvava_lilili_date(batch_of<DATETIME> batch, constant_of<INT> year, constant_of<INT> month, column_of<INT> day,
                                             constant_of<INT> hour, column_of<INT> minute) {
    return to_datetime(batch, year, month, day, hour, minute);
}
status entry::bto_datetime_vvvaa_lilili_date(batch_of<DATETIME> batch, constant_of<INT> year, constant_of<INT> month, constant_of<INT> day,
                                             column_of<INT> hour, column_of<INT> minute) {
    return to_datetime(batch, year, month, day, hour, minute);
}
status entry::bto_datetime_avvvv_lililili_date(batch_of<DATETIME> batch, column_of<INT> year, constant_of<INT> month, constant_of<INT> day,
                                               constant_of<INT> hour, constant_of<INT> minute) {
    return to_datetime(batch, year, month, day, hour, minute);
}
status entry::bto_datetime_vavvv_lililili_date(batch_of<DATETIME> batch, constant_of<INT> year, column_of<INT> month, constant_of<INT> day,
                                               constant_of<INT> hour, constant_of<INT> minute) {
    return to_datetime(batch, year, month, day, hour, minute);
}
status entry::bto_datetime_vvavv_lililili_date(batch_of<DATETIME> batch, constant_of<INT> year, constant_of<INT> month, column_of<INT> day,
                                               constant_of<INT> hour, constant_of<INT> minute) {
    return to_datetime(batch, year, month, day, hour, minute);
}
status entry::bto_datetime_vvvav_lililili_date(batch_of<DATETIME> batch, constant_of<INT> year, constant_of<INT> month,
                                               constant_of<INT> day, column_of<INT> hour, constant_of<INT> minute) {
    return to_datetime(batch, year, month, day, hour, minute);
}
status entry::bto_datetime_vvvva_lililili_date(batch_of<DATETIME> batch, constant_of<INT> year, constant_of<INT> month,
                                               constant_of<INT> day, constant_of<INT> hour, column_of<INT> minute) {
    return to_datetime(batch, year, month, day, hour, minute);
}

status entry::bfrom_unixtime_a_date(batch_of<DATETIME> batch, column_of<BIGINT> seconds) {
    return rows_or_null<zqtime>(batch, seconds, [&](const std::int64_t* given, zqtime& result) -> value_or_null {
        return given == nullptr ? value_or_null::null() : from_unixtime(batch.environment, *given, result);
    });
}

status entry::bunix_timestamp_a_date(batch_of<BIGINT> batch, column_of<DATETIME> value) { return unix_timestamps(batch, value, false); }
status entry::bunix_timestamp_num_a_date(batch_of<BIGINT> batch, column_of<DATETIME> value) { return unix_timestamps(batch, value, true); }
status entry::bunix_timestamp_str_a_date(batch_of<BIGINT> batch, column_of<VARCHAR> value) {
    const std::int32_t zone = sess4_get_time_zone(batch.environment);
    current_datetime now;
    return rows_or_null<std::int64_t>(batch, value, [&](const bifun_string* given, std::int64_t& result) -> value_or_null {
        zqtime read;
        const status outcome = given == nullptr ? BIFUN_OK : zqtime_from_char_ex2(batch.environment, given->data, given->length, &read);
        if (outcome < BIFUN_OK) {
            return outcome;
        }
        const zqtime* const moment = given != nullptr ? &read : now_of(now);
        const bool is_unusable = outcome == BIFUN_UNUSABLE_TEXT || moment == nullptr;
        return is_unusable ? value_or_null::null() : unix_timestamp(zone, false, *moment, result);
    });
}

status entry::bsec_to_time_a_date(batch_of<DATETIME> batch, column_of<INT> seconds) {
    return datetimes_are_packed() ? set_all_rows<sec_to_time_packed>(batch, seconds) : set_rows<sec_to_time>(batch, seconds);
}
status entry::btime_to_sec_a_date(batch_of<INT> batch, column_of<DATETIME> value) {
    return datetimes_are_packed() ? set_all_rows<time_to_sec<packed_datetimes>>(batch, value)
                                  : set_rows<time_to_sec<engine_datetimes>>(batch, value);
}

} // namespace bifun
