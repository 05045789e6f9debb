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

template <class A, class B> status wanted_datetimes(batch_of<DATETIME> batch, A first, B second, std::int32_t wanted) {
    return with_datetimes(
        [&]<class Datetimes>(Datetimes) { return set_rows<wanted_of_two<Datetimes, zqtime>>(batch, first, second, fixed(wanted)); });
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
