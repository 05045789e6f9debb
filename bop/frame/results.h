// SPDX-License-Identifier: Apache-2.0
// Where the results of rows go. A policy calls `evaluate(place)` for a row, which puts the value into `place` and returns the status of
// evaluate() in bop/frame/kernel.h, and keeps the value where that is 0. finish() is called behind the last row, whatever became of it.
#ifndef BIFUN_FRAME_RESULTS_H
#define BIFUN_FRAME_RESULTS_H

#include <type_traits>

#include "bop/frame/setters.h"

namespace bifun {

// Straight into the value array.
template <class Result> struct stored_results {
    using place = Result;
    Result* values;

    explicit stored_results(const batch& batch) : values(bifun::values<Result>(batch)) {}
    template <class Evaluate> status row(std::uint32_t row, const Evaluate& evaluate) {
        if constexpr (!std::is_arithmetic_v<Result>) {
            return evaluate(values[row]); // what lies behind a NULL does not matter, and long values are not written twice
        } else {
            Result value;
            const status outcome = evaluate(value);
            if (outcome == BIFUN_OK) {
                values[row] = value;
            }
            return outcome;
        }
    }
    void finish() const {}
};

// Through the engine's setters.
template <class Result> struct set_results {
    using place = Result;
    const bifun::batch& batch;

    explicit set_results(const bifun::batch& batch) : batch(batch) {}
    template <class Evaluate> status row(std::uint32_t row, const Evaluate& evaluate) {
        Result value;
        const status outcome = evaluate(value);
        if (outcome == BIFUN_OK) {
            set_value(batch, row, value);
        }
        return outcome;
    }
    void finish() const {}
};

} // namespace bifun

#endif
