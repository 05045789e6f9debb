// SPDX-License-Identifier: Apache-2.0
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
    std::int32_t date;
    std::int32_t time;
    std::int32_t microsecond;
};

[[gnu::always_inline]] inline moment moment_at(const zqtime& value) {
    const auto number = [](std::uint32_t word) { return static_cast<std::int32_t>(word); };
    return {number(datetime_layout::load_date(value)), number(datetime_layout::load_time(value)),
            number(datetime_layout::microsecond_of_fraction(datetime_layout::load_fraction_and_zone(value)))};
}

// Below, at or above 0 as a is before, at or behind b. For times of less than 2^31. Unsigned inside, as the bits of a NULL may be any.
[[gnu::always_inline]] inline std::int32_t order_of(const moment& a, const moment& b) {
    const auto difference = [](std::int32_t x, std::int32_t y) {
        return static_cast<std::int32_t>(static_cast<std::uint32_t>(x) - static_cast<std::uint32_t>(y));
    };
    const std::int32_t dates = difference(a.date, b.date);
    const std::int32_t times = difference(a.time, b.time);
    const std::int32_t microseconds = a.microsecond - b.microsecond;
    return dates != 0 ? dates : times != 0 ? times : microseconds;
}

// Conditions are numbers, all ones for true, so that no compiler makes branches of them.
using mask = std::int32_t;
[[gnu::always_inline]] inline mask is_negative(std::int32_t order) { return order >> 31; }
[[gnu::always_inline]] inline mask is_zero(std::int32_t order) { return order == 0 ? -1 : 0; }

[[gnu::always_inline]] inline moment choose_by(mask first, const moment& a, const moment& b) {
    return {first != 0 ? a.date : b.date, first != 0 ? a.time : b.time, first != 0 ? a.microsecond : b.microsecond};
}

struct period {
    moment start, end;
};

// The earlier one first, where both are there.
[[gnu::always_inline]] inline period in_order(const moment& start, const moment& end, mask both) {
    const mask exchanged = is_negative(order_of(end, start)) & both;
    return {choose_by(exchanged, end, start), choose_by(exchanged, start, end)};
}

// What the rows hold by zqtime_overlaps_dt_low; 0 where start 1 is missing. Returns false where zones or long times keep the moments from
// being compared so, and then the results have no meaning. Without `with_missing` no value is missing.
template <bool with_missing> bool overlaps_of_block(std::int32_t* __restrict results, std::uint32_t count, const period_rows& rows) {
    const datetime_rows start_1 = rows.start_1;
    const datetime_rows end_1 = rows.end_1;
    const datetime_rows start_2 = rows.start_2;
    const datetime_rows end_2 = rows.end_2;
    std::uint32_t zones = 0; // the bits in which those of a row differ
    std::int32_t times = 0;
    for (std::uint32_t k = 0; k < count; ++k) {
        const auto present = [k](const datetime_rows& of) { return with_missing ? -mask{of.null_flags[k]} : -1; };
        const mask has_start_1 = present(start_1);
        const mask has_end_1 = present(end_1);
        const mask has_start_2 = present(start_2);
        const mask has_end_2 = present(end_2);
        const auto zone_differs = [&](const datetime_rows& of, mask counts) {
            return (datetime_layout::load_fraction_and_zone(start_1[k]) ^ datetime_layout::load_fraction_and_zone(of[k])) &
                   static_cast<std::uint32_t>(has_start_1 & counts);
        };
        zones |= zone_differs(end_1, has_end_1) | zone_differs(start_2, has_start_2) | zone_differs(end_2, has_end_2);
        const moment given_start_1 = moment_at(start_1[k]);
        const moment given_end_1 = moment_at(end_1[k]);
        const moment given_start_2 = moment_at(start_2[k]);
        const moment given_end_2 = moment_at(end_2[k]);
        times |= (given_start_1.time & has_start_1) | (given_end_1.time & has_end_1) | (given_start_2.time & has_start_2) |
                 (given_end_2.time & has_end_2);

        const period first = in_order(given_start_1, given_end_1, has_end_1);
        const period second = in_order(given_start_2, given_end_2, has_start_2 & has_end_2);
        const mask ends_before = is_negative(order_of(first.end, second.start));
        const mask begins_behind = is_negative(order_of(second.end, first.start));
        mask result = ~(ends_before | begins_behind);
        if constexpr (with_missing) {
            // Equal starts, where an end may stand in for its start, or a lone moment within the other period.
            const std::int32_t starts = order_of(first.start, choose_by(has_start_2, second.start, second.end));
            const mask equal = is_zero(starts) & (has_start_2 | has_end_2);
            const mask within_1 = is_negative(starts) & is_negative(order_of(second.start, first.end)) & has_end_1 & ~has_end_2;
            const mask within_2 = ~is_negative(starts) & is_negative(order_of(first.start, second.end)) & ~has_end_1 & has_end_2;
            const mask of_some = equal | ((within_1 | within_2) & has_start_2);
            const mask all = has_end_1 & has_start_2 & has_end_2;
            result = ((result & all) | (of_some & ~all)) & has_start_1;
        }
        results[k] = result & 1;
    }
    return (zones & datetime_layout::zone_bits) == 0 && times >= 0;
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
// A function of its own: it is compiled once for all families of entry points.
[[gnu::noinline]] void write_block(const batch& batch, std::uint32_t first, std::uint32_t count, bool no_nulls, const period_rows& rows) {
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
