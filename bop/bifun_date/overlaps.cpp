// OVERLAPS: whether two periods have a moment in common. Each has a start and an end, or a start and an interval up to the end. Only the
// first start decides whether the result is NULL; what else is missing counts as zqtime_overlaps_dt_low has it.
//
// The many entry points differ in which of their arguments are constants: they share a loop for each kind of end.

#include "bop/bifun.h"
#include "bop/bifun_date/datetime_operations.h"
#include "bop/bifun_date/entry_points.h"
#include "bop/frame/row_loop.h"

namespace bifun {
namespace {

using datetimes = column_or_constant<zqtime>;
using datetime_rows = dense_rows<zqtime>;

// The rows of a block: starts and ends of the first periods and of the second ones.
struct period_rows {
    datetime_rows start_1, end_1, start_2, end_2;
};

// ---- packed datetimes, many rows at once -------------------------------------------------------------------------------------------

// What tells a moment, where its zone does not matter. In 32 bits each, of which loops make vectors.
struct moment {
    std::uint32_t date;
    std::uint32_t time;
    std::uint32_t fraction;
};

[[gnu::always_inline]] inline moment moment_at(const zqtime& value) {
    return {datetime_layout::load_date(value), datetime_layout::load_time(value), datetime_layout::load_fraction_and_zone(value)};
}

// Conditions are numbers, 0 or all ones, so that no compiler makes branches of them.
using mask = std::uint32_t;
[[gnu::always_inline]] inline mask mask_of(bool condition) { return 0U - static_cast<mask>(condition); }
[[gnu::always_inline]] inline std::uint32_t choose_by(mask first, std::uint32_t a, std::uint32_t b) { return (a & first) | (b & ~first); }

[[gnu::always_inline]] inline mask is_before(const moment& a, const moment& b) {
    const mask by_fraction = mask_of(a.fraction < b.fraction);
    const mask by_time = mask_of(a.time < b.time) | (mask_of(a.time == b.time) & by_fraction);
    return mask_of(a.date < b.date) | (mask_of(a.date == b.date) & by_time);
}
[[gnu::always_inline]] inline mask is_equal(const moment& a, const moment& b) {
    return mask_of(((a.date ^ b.date) | (a.time ^ b.time) | (a.fraction ^ b.fraction)) == 0);
}
[[gnu::always_inline]] inline moment choose_by(mask first, const moment& a, const moment& b) {
    return {choose_by(first, a.date, b.date), choose_by(first, a.time, b.time), choose_by(first, a.fraction, b.fraction)};
}

struct period {
    moment start, end;
};

// Exchanges start and end where both are there and stand the other way round.
[[gnu::always_inline]] inline period in_order(const moment& start, const moment& end, mask both) {
    const mask exchanged = is_before(end, start) & both;
    return {choose_by(exchanged, end, start), choose_by(exchanged, start, end)};
}

// What the rows hold by zqtime_overlaps_dt_low, for values whose zones are alike; 0 where start 1 is missing. Returns whether they are.
// Without `with_missing` no value is.
template <bool with_missing> bool overlaps_of_block(std::int32_t* __restrict results, std::uint32_t count, const period_rows& rows) {
    const auto [start_1, end_1, start_2, end_2] = rows;
    std::uint32_t different = 0;
    for (std::uint32_t k = 0; k < count; ++k) {
        const auto present = [k](const datetime_rows& of) { return with_missing ? mask_of(of.has_value(k)) : ~0U; };
        const mask has_start_1 = present(start_1);
        const mask has_end_1 = present(end_1);
        const mask has_start_2 = present(start_2);
        const mask has_end_2 = present(end_2);
        const moment first_start = moment_at(start_1[k]);
        const moment first_end = moment_at(end_1[k]);
        const moment second_start = moment_at(start_2[k]);
        const moment second_end = moment_at(end_2[k]);
        different |= has_start_1 & (((first_start.fraction ^ first_end.fraction) & has_end_1) |
                                    ((first_start.fraction ^ second_start.fraction) & has_start_2) |
                                    ((first_start.fraction ^ second_end.fraction) & has_end_2));
        const period first = in_order(first_start, first_end, has_end_1);
        const period second = in_order(second_start, second_end, has_start_2 & has_end_2);
        mask result = ~(is_before(second.end, first.start) | is_before(first.end, second.start));
        if constexpr (with_missing) {
            // One of two equal starts, the only end standing in for its start, or a single moment within the other period.
            const moment only_start_2 = choose_by(has_start_2, second.start, second_end);
            const mask equal = is_equal(first.start, only_start_2) & (has_start_2 | has_end_2);
            const mask start_1_within = is_before(second.start, first.start) & is_before(first.start, second.end) & ~has_end_1 & has_end_2;
            const mask start_2_within = is_before(first.start, second.start) & is_before(second.start, first.end) & has_end_1 & ~has_end_2;
            const mask of_some = equal | ((start_1_within | start_2_within) & has_start_2);
            result = choose_by(has_end_1 & has_start_2 & has_end_2, result, of_some) & has_start_1;
        }
        results[k] = static_cast<std::int32_t>(result & 1);
    }
    return (different & datetime_layout::zone_bits) == 0;
}

// ---- any datetimes, row by row -------------------------------------------------------------------------------------------------------

void overlaps_one_by_one(std::int32_t* results, std::uint32_t count, const period_rows& rows) {
    const auto [start_1, end_1, start_2, end_2] = rows;
    for (std::uint32_t k = 0; k < count; ++k) {
        const auto flag = [k](const datetime_rows& of) { return static_cast<std::int32_t>(of.has_value(k)); };
        results[k] = start_1.has_value(k) ? zqtime_overlaps_dt_low(&start_1[k], flag(start_1), &end_1[k], flag(end_1), &start_2[k],
                                                                   flag(start_2), &end_2[k], flag(end_2))
                                          : 0;
    }
}

// ---- blocks ------------------------------------------------------------------------------------------------------------------------

// Flags and results of `count` rows of a batch from `first` on.
void write_block(const batch& batch, std::uint32_t first, std::uint32_t count, bool no_nulls, const period_rows& rows) {
    std::uint8_t* const flags = null_flags(batch) + first;
    const bool stores = setters_are_plain_stores();
    std::int32_t waiting[most_rows_per_block];
    std::int32_t* const results = stores ? values<std::int32_t>(batch) + first : waiting;
    const bool is_done = datetimes_are_packed() &&
                         (no_nulls ? overlaps_of_block<false>(results, count, rows) : overlaps_of_block<true>(results, count, rows));
    if (!is_done) {
        overlaps_one_by_one(results, count, rows);
    }
    write_null_flags(flags, count, no_nulls, rows.start_1);
    for (std::uint32_t k = 0; !stores && k < count; ++k) {
        if (flags[k] != 0) {
            set_value(batch, first + k, results[k]);
        }
    }
}

status overlaps(batch_of<BOOL> batch, const datetimes& start_1, const datetimes& end_1, const datetimes& start_2, const datetimes& end_2) {
    if (is_null_constant(start_1)) {
        return null_rows(batch);
    }
    batch.result->no_nulls = joint_no_null_flag(start_1, end_1, start_2, end_2);
    const bool no_nulls = batch.result->no_nulls != 0;
    const auto block = [&](std::uint32_t first, std::uint32_t count, const auto&... rows) -> status {
        write_block(batch, first, count, no_nulls, {rows...});
        return BIFUN_OK;
    };
    return for_each_block(batch.row_count, block, start_1, end_1, start_2, end_2);
}

// Ends from starts and intervals, in the rows that have both and whose result is wanted.
template <class Interval> struct interval_ends {
    static constexpr std::uint32_t size = rows_per_block<column_argument<Interval>>;
    std::uint8_t flags[size];
    zqtime values[size];
    std::uint32_t made = 0;    // how many rows are ready
    status failure = BIFUN_OK; // that of the next one

    interval_ends() {} // NOLINT(modernize-use-equals-default): clearing it would take longer than most batches
    [[nodiscard]] datetime_rows rows() const { return {flags, values}; }
};

template <auto add, class Interval>
void make_ends(interval_ends<Interval>& ends, std::uint32_t count, const datetime_rows& starts, const dense_rows<Interval>& intervals,
               const datetime_rows& wanted) {
    for (ends.made = 0; ends.made < count; ++ends.made) {
        const std::uint32_t k = ends.made;
        ends.flags[k] = static_cast<std::uint8_t>(all_have_values(k, starts, intervals, wanted));
        if (ends.flags[k] == 0) {
            ends.values[k] = {};
            continue;
        }
        ends.failure = add(starts[k], intervals[k], ends.values[k]);
        if (ends.failure < BIFUN_OK) {
            return;
        }
    }
}

template <auto add, class Interval>
status overlaps_up_to(batch_of<BOOL> batch, const datetimes& start_1, const column_or_constant<Interval>& interval_1,
                      const datetimes& start_2, const column_or_constant<Interval>& interval_2) {
    if (is_null_constant(start_1)) {
        return null_rows(batch);
    }
    batch.result->no_nulls = joint_no_null_flag(start_1, interval_1, start_2, interval_2);
    const bool no_nulls = batch.result->no_nulls != 0;
    interval_ends<Interval> ends_1;
    interval_ends<Interval> ends_2;
    const auto block = [&](std::uint32_t first, std::uint32_t count, const datetime_rows& starts_1, const auto& intervals_1,
                           const datetime_rows& starts_2, const auto& intervals_2) -> status {
        make_ends<add>(ends_1, count, starts_1, intervals_1, starts_1);
        make_ends<add>(ends_2, count, starts_2, intervals_2, starts_1);
        const bool first_fails = ends_1.made <= ends_2.made;
        const std::uint32_t made = first_fails ? ends_1.made : ends_2.made;
        write_block(batch, first, made, no_nulls, {starts_1, ends_1.rows(), starts_2, ends_2.rows()});
        if (made == count) {
            return BIFUN_OK;
        }
        null_flags(batch)[first + made] = 0;
        return first_fails ? ends_1.failure : ends_2.failure;
    };
    return stop_at_failure(batch, for_each_block(batch.row_count, block, start_1, interval_1, start_2, interval_2));
}

using day_times = column_or_constant<bifun_interval_dt>;
using year_months = column_or_constant<bifun_interval_ym>;

status overlaps(batch_of<BOOL> batch, const datetimes& start_1, const day_times& interval_1, const datetimes& start_2,
                const day_times& interval_2) {
    return with_datetimes([&]<class Datetimes>(Datetimes) {
        return overlaps_up_to<Datetimes::add_time_interval>(batch, start_1, interval_1, start_2, interval_2);
    });
}

status overlaps(batch_of<BOOL> batch, const datetimes& start_1, const year_months& interval_1, const datetimes& start_2,
                const year_months& interval_2) {
    return with_datetimes([&]<class Datetimes>(Datetimes) {
        return overlaps_up_to<Datetimes::add_interval>(batch, start_1, interval_1, start_2, interval_2);
    });
}

} // namespace

status entry::boverlaps_dt_aaaa_date(batch_of<BOOL> batch, column_of<DATETIME> start_1, column_of<DATETIME> end_1,
                                     column_of<DATETIME> start_2, column_of<DATETIME> end_2) {
    return overlaps(batch, start_1, end_1, start_2, end_2);
}
status entry::boverlaps_dt_aaav_ts_date(batch_of<BOOL> batch, column_of<DATETIME> start_1, column_of<DATETIME> end_1,
                                        column_of<DATETIME> start_2, constant_of<DATETIME> end_2) {
    return overlaps(batch, start_1, end_1, start_2, end_2);
}
status entry::boverlaps_dt_aava_ts_date(batch_of<BOOL> batch, column_of<DATETIME> start_1, column_of<DATETIME> end_1,
                                        constant_of<DATETIME> start_2, column_of<DATETIME> end_2) {
    return overlaps(batch, start_1, end_1, start_2, end_2);
}
status entry::boverlaps_dt_avaa_ts_date(batch_of<BOOL> batch, column_of<DATETIME> start_1, constant_of<DATETIME> end_1,
                                        column_of<DATETIME> start_2, column_of<DATETIME> end_2) {
    return overlaps(batch, start_1, end_1, start_2, end_2);
}
status entry::boverlaps_dt_vaaa_ts_date(batch_of<BOOL> batch, constant_of<DATETIME> start_1, column_of<DATETIME> end_1,
                                        column_of<DATETIME> start_2, column_of<DATETIME> end_2) {
    return overlaps(batch, start_1, end_1, start_2, end_2);
}
status entry::boverlaps_dt_aavv_tsts_date(batch_of<BOOL> batch, column_of<DATETIME> start_1, column_of<DATETIME> end_1,
                                          constant_of<DATETIME> start_2, constant_of<DATETIME> end_2) {
    return overlaps(batch, start_1, end_1, start_2, end_2);
}
status entry::boverlaps_dt_vaav_tsts_date(batch_of<BOOL> batch, constant_of<DATETIME> start_1, column_of<DATETIME> end_1,
                                          column_of<DATETIME> start_2, constant_of<DATETIME> end_2) {
    return overlaps(batch, start_1, end_1, start_2, end_2);
}
status entry::boverlaps_dt_avav_tsts_date(batch_of<BOOL> batch, column_of<DATETIME> start_1, constant_of<DATETIME> end_1,
                                          column_of<DATETIME> start_2, constant_of<DATETIME> end_2) {
    return overlaps(batch, start_1, end_1, start_2, end_2);
}
status entry::boverlaps_dt_avva_tsts_date(batch_of<BOOL> batch, column_of<DATETIME> start_1, constant_of<DATETIME> end_1,
                                          constant_of<DATETIME> start_2, column_of<DATETIME> end_2) {
    return overlaps(batch, start_1, end_1, start_2, end_2);
}
status entry::boverlaps_dt_vava_tsts_date(batch_of<BOOL> batch, constant_of<DATETIME> start_1, column_of<DATETIME> end_1,
                                          constant_of<DATETIME> start_2, column_of<DATETIME> end_2) {
    return overlaps(batch, start_1, end_1, start_2, end_2);
}
status entry::boverlaps_dt_vvaa_tsts_date(batch_of<BOOL> batch, constant_of<DATETIME> start_1, constant_of<DATETIME> end_1,
                                          column_of<DATETIME> start_2, column_of<DATETIME> end_2) {
    return overlaps(batch, start_1, end_1, start_2, end_2);
}
status entry::boverlaps_dt_avvv_tststs_date(batch_of<BOOL> batch, column_of<DATETIME> start_1, constant_of<DATETIME> end_1,
                                            constant_of<DATETIME> start_2, constant_of<DATETIME> end_2) {
    return overlaps(batch, start_1, end_1, start_2, end_2);
}
status entry::boverlaps_dt_vavv_tststs_date(batch_of<BOOL> batch, constant_of<DATETIME> start_1, column_of<DATETIME> end_1,
                                            constant_of<DATETIME> start_2, constant_of<DATETIME> end_2) {
    return overlaps(batch, start_1, end_1, start_2, end_2);
}
status entry::boverlaps_dt_vvav_tststs_date(batch_of<BOOL> batch, constant_of<DATETIME> start_1, constant_of<DATETIME> end_1,
                                            column_of<DATETIME> start_2, constant_of<DATETIME> end_2) {
    return overlaps(batch, start_1, end_1, start_2, end_2);
}
status entry::boverlaps_dt_vvva_tststs_date(batch_of<BOOL> batch, constant_of<DATETIME> start_1, constant_of<DATETIME> end_1,
                                            constant_of<DATETIME> start_2, column_of<DATETIME> end_2) {
    return overlaps(batch, start_1, end_1, start_2, end_2);
}

status entry::boverlaps_ivdt_aaaa_date(batch_of<BOOL> batch, column_of<DATETIME> start_1, column_of<INTERVAL_DT> interval_1,
                                       column_of<DATETIME> start_2, column_of<INTERVAL_DT> interval_2) {
    return overlaps(batch, start_1, interval_1, start_2, interval_2);
}
status entry::boverlaps_ivdt_aaav_dt_date(batch_of<BOOL> batch, column_of<DATETIME> start_1, column_of<INTERVAL_DT> interval_1,
                                          column_of<DATETIME> start_2, constant_of<INTERVAL_DT> interval_2) {
    return overlaps(batch, start_1, interval_1, start_2, interval_2);
}
status entry::boverlaps_ivdt_aava_ts_date(batch_of<BOOL> batch, column_of<DATETIME> start_1, column_of<INTERVAL_DT> interval_1,
                                          constant_of<DATETIME> start_2, column_of<INTERVAL_DT> interval_2) {
    return overlaps(batch, start_1, interval_1, start_2, interval_2);
}
status entry::boverlaps_ivdt_avaa_dt_date(batch_of<BOOL> batch, column_of<DATETIME> start_1, constant_of<INTERVAL_DT> interval_1,
                                          column_of<DATETIME> start_2, column_of<INTERVAL_DT> interval_2) {
    return overlaps(batch, start_1, interval_1, start_2, interval_2);
}
status entry::boverlaps_ivdt_vaaa_ts_date(batch_of<BOOL> batch, constant_of<DATETIME> start_1, column_of<INTERVAL_DT> interval_1,
                                          column_of<DATETIME> start_2, column_of<INTERVAL_DT> interval_2) {
    return overlaps(batch, start_1, interval_1, start_2, interval_2);
}
status entry::boverlaps_ivdt_aavv_dtts_date(batch_of<BOOL> batch, column_of<DATETIME> start_1, column_of<INTERVAL_DT> interval_1,
                                            constant_of<DATETIME> start_2, constant_of<INTERVAL_DT> interval_2) {
    return overlaps(batch, start_1, interval_1, start_2, interval_2);
}
status entry::boverlaps_ivdt_vaav_dtts_date(batch_of<BOOL> batch, constant_of<DATETIME> start_1, column_of<INTERVAL_DT> interval_1,
                                            column_of<DATETIME> start_2, constant_of<INTERVAL_DT> interval_2) {
    return overlaps(batch, start_1, interval_1, start_2, interval_2);
}
status entry::boverlaps_ivdt_avav_dtdt_date(batch_of<BOOL> batch, column_of<DATETIME> start_1, constant_of<INTERVAL_DT> interval_1,
                                            column_of<DATETIME> start_2, constant_of<INTERVAL_DT> interval_2) {
    return overlaps(batch, start_1, interval_1, start_2, interval_2);
}
status entry::boverlaps_ivdt_avva_tsdt_date(batch_of<BOOL> batch, column_of<DATETIME> start_1, constant_of<INTERVAL_DT> interval_1,
                                            constant_of<DATETIME> start_2, column_of<INTERVAL_DT> interval_2) {
    return overlaps(batch, start_1, interval_1, start_2, interval_2);
}
status entry::boverlaps_ivdt_vava_tsts_date(batch_of<BOOL> batch, constant_of<DATETIME> start_1, column_of<INTERVAL_DT> interval_1,
                                            constant_of<DATETIME> start_2, column_of<INTERVAL_DT> interval_2) {
    return overlaps(batch, start_1, interval_1, start_2, interval_2);
}
status entry::boverlaps_ivdt_vvaa_dtts_date(batch_of<BOOL> batch, constant_of<DATETIME> start_1, constant_of<INTERVAL_DT> interval_1,
                                            column_of<DATETIME> start_2, column_of<INTERVAL_DT> interval_2) {
    return overlaps(batch, start_1, interval_1, start_2, interval_2);
}
status entry::boverlaps_ivdt_avvv_date(batch_of<BOOL> batch, column_of<DATETIME> start_1, constant_of<INTERVAL_DT> interval_1,
                                       constant_of<DATETIME> start_2, constant_of<INTERVAL_DT> interval_2) {
    return overlaps(batch, start_1, interval_1, start_2, interval_2);
}
status entry::boverlaps_ivdt_vavv_date(batch_of<BOOL> batch, constant_of<DATETIME> start_1, column_of<INTERVAL_DT> interval_1,
                                       constant_of<DATETIME> start_2, constant_of<INTERVAL_DT> interval_2) {
    return overlaps(batch, start_1, interval_1, start_2, interval_2);
}
status entry::boverlaps_ivdt_vvav_date(batch_of<BOOL> batch, constant_of<DATETIME> start_1, constant_of<INTERVAL_DT> interval_1,
                                       column_of<DATETIME> start_2, constant_of<INTERVAL_DT> interval_2) {
    return overlaps(batch, start_1, interval_1, start_2, interval_2);
}
status entry::boverlaps_ivdt_vvva_date(batch_of<BOOL> batch, constant_of<DATETIME> start_1, constant_of<INTERVAL_DT> interval_1,
                                       constant_of<DATETIME> start_2, column_of<INTERVAL_DT> interval_2) {
    return overlaps(batch, start_1, interval_1, start_2, interval_2);
}

status entry::boverlaps_ivym_aaaa_date(batch_of<BOOL> batch, column_of<DATETIME> start_1, column_of<INTERVAL_YM> interval_1,
                                       column_of<DATETIME> start_2, column_of<INTERVAL_YM> interval_2) {
    return overlaps(batch, start_1, interval_1, start_2, interval_2);
}
status entry::boverlaps_ivym_aaav_ym_date(batch_of<BOOL> batch, column_of<DATETIME> start_1, column_of<INTERVAL_YM> interval_1,
                                          column_of<DATETIME> start_2, constant_of<INTERVAL_YM> interval_2) {
    return overlaps(batch, start_1, interval_1, start_2, interval_2);
}
status entry::boverlaps_ivym_aava_ts_date(batch_of<BOOL> batch, column_of<DATETIME> start_1, column_of<INTERVAL_YM> interval_1,
                                          constant_of<DATETIME> start_2, column_of<INTERVAL_YM> interval_2) {
    return overlaps(batch, start_1, interval_1, start_2, interval_2);
}
status entry::boverlaps_ivym_avaa_ym_date(batch_of<BOOL> batch, column_of<DATETIME> start_1, constant_of<INTERVAL_YM> interval_1,
                                          column_of<DATETIME> start_2, column_of<INTERVAL_YM> interval_2) {
    return overlaps(batch, start_1, interval_1, start_2, interval_2);
}
status entry::boverlaps_ivym_vaaa_ts_date(batch_of<BOOL> batch, constant_of<DATETIME> start_1, column_of<INTERVAL_YM> interval_1,
                                          column_of<DATETIME> start_2, column_of<INTERVAL_YM> interval_2) {
    return overlaps(batch, start_1, interval_1, start_2, interval_2);
}
status entry::boverlaps_ivym_aavv_ymts_date(batch_of<BOOL> batch, column_of<DATETIME> start_1, column_of<INTERVAL_YM> interval_1,
                                            constant_of<DATETIME> start_2, constant_of<INTERVAL_YM> interval_2) {
    return overlaps(batch, start_1, interval_1, start_2, interval_2);
}
status entry::boverlaps_ivym_vaav_ymts_date(batch_of<BOOL> batch, constant_of<DATETIME> start_1, column_of<INTERVAL_YM> interval_1,
                                            column_of<DATETIME> start_2, constant_of<INTERVAL_YM> interval_2) {
    return overlaps(batch, start_1, interval_1, start_2, interval_2);
}
status entry::boverlaps_ivym_avav_ymym_date(batch_of<BOOL> batch, column_of<DATETIME> start_1, constant_of<INTERVAL_YM> interval_1,
                                            column_of<DATETIME> start_2, constant_of<INTERVAL_YM> interval_2) {
    return overlaps(batch, start_1, interval_1, start_2, interval_2);
}
status entry::boverlaps_ivym_avva_tsym_date(batch_of<BOOL> batch, column_of<DATETIME> start_1, constant_of<INTERVAL_YM> interval_1,
                                            constant_of<DATETIME> start_2, column_of<INTERVAL_YM> interval_2) {
    return overlaps(batch, start_1, interval_1, start_2, interval_2);
}
status entry::boverlaps_ivym_vava_tsts_date(batch_of<BOOL> batch, constant_of<DATETIME> start_1, column_of<INTERVAL_YM> interval_1,
                                            constant_of<DATETIME> start_2, column_of<INTERVAL_YM> interval_2) {
    return overlaps(batch, start_1, interval_1, start_2, interval_2);
}
status entry::boverlaps_ivym_vvaa_ymts_date(batch_of<BOOL> batch, constant_of<DATETIME> start_1, constant_of<INTERVAL_YM> interval_1,
                                            column_of<DATETIME> start_2, column_of<INTERVAL_YM> interval_2) {
    return overlaps(batch, start_1, interval_1, start_2, interval_2);
}
status entry::boverlaps_ivym_avvv_ymtsym_date(batch_of<BOOL> batch, column_of<DATETIME> start_1, constant_of<INTERVAL_YM> interval_1,
                                              constant_of<DATETIME> start_2, constant_of<INTERVAL_YM> interval_2) {
    return overlaps(batch, start_1, interval_1, start_2, interval_2);
}
status entry::boverlaps_ivym_vavv_ymtsts_date(batch_of<BOOL> batch, constant_of<DATETIME> start_1, column_of<INTERVAL_YM> interval_1,
                                              constant_of<DATETIME> start_2, constant_of<INTERVAL_YM> interval_2) {
    return overlaps(batch, start_1, interval_1, start_2, interval_2);
}
status entry::boverlaps_ivym_vvav_ymymts_date(batch_of<BOOL> batch, constant_of<DATETIME> start_1, constant_of<INTERVAL_YM> interval_1,
                                              column_of<DATETIME> start_2, constant_of<INTERVAL_YM> interval_2) {
    return overlaps(batch, start_1, interval_1, start_2, interval_2);
}
status entry::boverlaps_ivym_vvva_tsymts_date(batch_of<BOOL> batch, constant_of<DATETIME> start_1, constant_of<INTERVAL_YM> interval_1,
                                              constant_of<DATETIME> start_2, column_of<INTERVAL_YM> interval_2) {
    return overlaps(batch, start_1, interval_1, start_2, interval_2);
}

} // namespace bifun
