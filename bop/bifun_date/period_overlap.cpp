// SPDX-License-Identifier: Apache-2.0
// The exported decision whether two periods overlap.

#include <cstdint>
#include <utility>

#include "bop/bifun.h"
#include "engine/datetime.h"

namespace {

// A value that may be missing. Such a one is in no order with another.
struct moment {
    const zqtime* value;
    bool present;
};

bool is_ordered(moment a, moment b, std::int32_t order) { return a.present && b.present && zqtime_cmp(a.value, b.value) == order; }
bool is_before(moment a, moment b) { return is_ordered(a, b, -1); }
bool is_equal(moment a, moment b) { return is_ordered(a, b, 0); }

struct period {
    moment start, end;
    bool has_end;
};

// Start before end where both are there; an end without a start takes its place, and the period counts as having an end.
period arranged(moment start, moment end) {
    if (!start.present) {
        return {.start = end, .end = start, .has_end = true};
    }
    if (is_before(end, start)) {
        std::swap(start, end);
    }
    return {.start = start, .end = end, .has_end = end.present};
}

} // namespace

std::int32_t zqtime_overlaps_dt_low(const zqtime* start_1, std::int32_t start_1_present, const zqtime* end_1, std::int32_t end_1_present,
                                    const zqtime* start_2, std::int32_t start_2_present, const zqtime* end_2, std::int32_t end_2_present) {
    const bool all_present = start_1_present != 0 && end_1_present != 0 && start_2_present != 0 && end_2_present != 0;
    const period first = arranged({start_1, start_1_present != 0}, {end_1, end_1_present != 0});
    const period second = arranged({start_2, start_2_present != 0}, {end_2, end_2_present != 0});
    if (is_equal(first.start, second.start)) {
        return 1;
    }
    const bool first_starts = is_before(first.start, second.start);
    if (all_present) {
        return first_starts ? !is_before(first.end, second.start) : !is_before(second.end, first.start);
    }
    // A lone moment lies within the other period, or does not.
    if (second.has_end) {
        return !first.has_end && !first_starts && is_before(first.start, second.end) && is_before(second.start, first.start);
    }
    return first.has_end && first_starts && is_before(second.start, first.end);
}
