// SPDX-License-Identifier: Apache-2.0
// GREATEST and LEAST of two datetimes or intervals. Where they are equal the second one counts.

#include "bop/bifun_date/datetime_operations.h"
#include "bop/bifun_date/entry_points.h"
#include "bop/frame/choose.h"
#include "bop/frame/row_loop.h"

namespace bifun {
namespace {

// The order in which the wanted value stands to the other one.
constexpr std::int32_t greater = 1;
constexpr std::int32_t lesser = -1;

template <class Datetimes, class T> void wanted_of_two(const T& first, const T& second, std::int32_t wanted, T& result) {
    result = choose(Datetimes::compare(first, second) == wanted, first, second);
}

// ---- datetimes ------------------------------------------------------------------------------------------------------------------------

// In one zone, or without one, moments are in the order of what their words say.
bool are_in_one_zone(const zqtime& first, const zqtime& second, std::int32_t) {
    const std::uint32_t differ = datetime_layout::load_fraction_and_zone(first) ^ datetime_layout::load_fraction_and_zone(second);
    return (differ & datetime_layout::zone_bits) == 0;
}

// Without a branch, for loops over many rows.
template <std::int32_t wanted> void wanted_in_one_zone(const zqtime& first, const zqtime& second, std::int32_t, zqtime& result) {
    const std::uint32_t date_1 = datetime_layout::load_date(first);
    const std::uint32_t date_2 = datetime_layout::load_date(second);
    const std::uint32_t time_1 = datetime_layout::load_time(first);
    const std::uint32_t time_2 = datetime_layout::load_time(second);
    const std::uint32_t fraction_1 = datetime_layout::load_fraction_and_zone(first);
    const std::uint32_t fraction_2 = datetime_layout::load_fraction_and_zone(second);
    const auto comes_first = [](std::uint32_t a, std::uint32_t b) { return static_cast<unsigned>(wanted == greater ? a > b : a < b); };
    const auto are_equal = [](std::uint32_t a, std::uint32_t b) { return static_cast<unsigned>(a == b); };
    const unsigned is_first =
        comes_first(date_1, date_2) |
        (are_equal(date_1, date_2) & (comes_first(time_1, time_2) | (are_equal(time_1, time_2) & comes_first(fraction_1, fraction_2))));
    datetime_layout::store_words(result, is_first != 0 ? time_1 : time_2, is_first != 0 ? date_1 : date_2,
                                 is_first != 0 ? fraction_1 : fraction_2);
}

template <class A, class B> status wanted_datetimes(batch_of<DATETIME> batch, A first, B second, std::int32_t wanted) {
    if (!datetimes_are_packed()) {
        return set_rows<wanted_of_two<engine_datetimes, zqtime>>(batch, first, second, fixed(wanted));
    }
    return wanted == greater
               ? set_usual_rows<are_in_one_zone, wanted_in_one_zone<greater>, wanted_of_two<packed_datetimes, zqtime>>(batch, first, second,
                                                                                                                       fixed(wanted))
               : set_usual_rows<are_in_one_zone, wanted_in_one_zone<lesser>, wanted_of_two<packed_datetimes, zqtime>>(batch, first, second,
                                                                                                                      fixed(wanted));
}

// ---- intervals: a loop for each kind ------------------------------------------------------------------------------------------------

using day_times = column_or_constant<bifun_interval_dt>;
using year_months = column_or_constant<bifun_interval_ym>;

status bgreat_ivdt_aa_date_low(batch_of<INTERVAL_DT> batch, const day_times& first, const day_times& second, std::int32_t wanted) {
    return with_datetimes([&]<class Datetimes>(Datetimes) {
        return store_rows<wanted_of_two<Datetimes, bifun_interval_dt>>(batch, first, second, fixed(wanted));
    });
}

status bgreat_ivym_aa_date_low(batch_of<INTERVAL_YM> batch, const year_months& first, const year_months& second, std::int32_t wanted) {
    return with_datetimes([&]<class Datetimes>(Datetimes) {
        return store_rows<wanted_of_two<Datetimes, bifun_interval_ym>>(batch, first, second, fixed(wanted));
    });
}

} // namespace

status entry::bleast_date_aa_(batch_of<DATETIME> batch, column_of<DATETIME> first, column_of<DATETIME> second) {
    return wanted_datetimes(batch, first, second, lesser);
}
status entry::bleast_date_av_date(batch_of<DATETIME> batch, column_of<DATETIME> first, constant_of<DATETIME> second) {
    return wanted_datetimes(batch, first, second, lesser);
}
status entry::bleast_date_va_date(batch_of<DATETIME> batch, constant_of<DATETIME> first, column_of<DATETIME> second) {
    return wanted_datetimes(batch, first, second, lesser);
}
status entry::bgreatest_date_aa_date(batch_of<DATETIME> batch, column_of<DATETIME> first, column_of<DATETIME> second) {
    return wanted_datetimes(batch, first, second, greater);
}
status entry::bgreatest_date_av_date(batch_of<DATETIME> batch, column_of<DATETIME> first, constant_of<DATETIME> second) {
    return wanted_datetimes(batch, first, second, greater);
}
status entry::bgreatest_date_va_date(batch_of<DATETIME> batch, constant_of<DATETIME> first, column_of<DATETIME> second) {
    return wanted_datetimes(batch, first, second, greater);
}

// A constant that comes second is the first one to the loop, so that of equal intervals the column's counts.
status entry::bgreat_ivdt_aa_date(batch_of<INTERVAL_DT> batch, column_of<INTERVAL_DT> first, column_of<INTERVAL_DT> second) {
    return bgreat_ivdt_aa_date_low(batch, first, second, greater);
}
status entry::bgreat_ivdt_av_date(batch_of<INTERVAL_DT> batch, column_of<INTERVAL_DT> first, constant_of<INTERVAL_DT> second) {
    return bgreat_ivdt_aa_date_low(batch, second, first, greater);
}
status entry::bgreat_ivdt_va_date(batch_of<INTERVAL_DT> batch, constant_of<INTERVAL_DT> first, column_of<INTERVAL_DT> second) {
    return bgreat_ivdt_aa_date_low(batch, first, second, greater);
}
status entry::bless_ivdt_aa_date(batch_of<INTERVAL_DT> batch, column_of<INTERVAL_DT> first, column_of<INTERVAL_DT> second) {
    return bgreat_ivdt_aa_date_low(batch, first, second, lesser);
}
status entry::bless_ivdt_av_date(batch_of<INTERVAL_DT> batch, column_of<INTERVAL_DT> first, constant_of<INTERVAL_DT> second) {
    return bgreat_ivdt_aa_date_low(batch, second, first, lesser);
}
status entry::bless_ivdt_va_date(batch_of<INTERVAL_DT> batch, constant_of<INTERVAL_DT> first, column_of<INTERVAL_DT> second) {
    return bgreat_ivdt_aa_date_low(batch, first, second, lesser);
}
status entry::bgreat_ivym_aa_date(batch_of<INTERVAL_YM> batch, column_of<INTERVAL_YM> first, column_of<INTERVAL_YM> second) {
    return bgreat_ivym_aa_date_low(batch, first, second, greater);
}
status entry::bgreat_ivym_av_date(batch_of<INTERVAL_YM> batch, column_of<INTERVAL_YM> first, constant_of<INTERVAL_YM> second) {
    return bgreat_ivym_aa_date_low(batch, second, first, greater);
}
status entry::bgreat_ivym_va_date(batch_of<INTERVAL_YM> batch, constant_of<INTERVAL_YM> first, column_of<INTERVAL_YM> second) {
    return bgreat_ivym_aa_date_low(batch, first, second, greater);
}
status entry::bless_ivym_aa_date(batch_of<INTERVAL_YM> batch, column_of<INTERVAL_YM> first, column_of<INTERVAL_YM> second) {
    return bgreat_ivym_aa_date_low(batch, first, second, lesser);
}
status entry::bless_ivym_av_date(batch_of<INTERVAL_YM> batch, column_of<INTERVAL_YM> first, constant_of<INTERVAL_YM> second) {
    return bgreat_ivym_aa_date_low(batch, second, first, lesser);
}
status entry::bless_ivym_va_date(batch_of<INTERVAL_YM> batch, constant_of<INTERVAL_YM> first, column_of<INTERVAL_YM> second) {
    return bgreat_ivym_aa_date_low(batch, first, second, lesser);
}

} // namespace bifun
