// SPDX-License-Identifier: Apache-2.0
// NVL(x, y): x where it is not NULL, otherwise y.

#include <bit>

#include "bop/conditional/entry_points.h"
#include "bop/frame/arguments.h"
#include "bop/frame/byte_masks.h"
#include "bop/frame/choose.h"
#include "bop/frame/setters.h"
#include "bop/frame/statements.h"

namespace bifun {
namespace {

constexpr std::uint32_t empty_strings_are_null = 2;

bool empty_strings_count_as_null() { return global_bifun_var.compatible_mode == empty_strings_are_null; }

bool counts_as_null(const bifun_string& value) { return empty_strings_count_as_null() && value.length == 0 && value.trailing_blanks == 0; }

// The result begins as a copy of x.
template <class X, class Y> status begin_with(const batch& batch, const X& x, const Y& y) {
    const status copied = copy_column(batch, x.column);
    if (copied == BIFUN_OK) {
        batch.result->no_nulls = has_no_nulls(x) && has_no_nulls(y);
    }
    return copied;
}

template <class T, class Y> status replace_nulls_in_copy(const batch& batch, const column_argument<T>& x, const Y& y) {
    const status begun = begin_with(batch, x, y);
    if (begun != BIFUN_OK || x.column->no_nulls != 0) {
        return begun;
    }
    const auto replace = [&](std::uint32_t first, std::uint32_t count, const auto& x_rows, const auto& y_rows) -> status {
        for (std::uint32_t k = 0; k < count; ++k) {
            if (!x_rows.has_value(k)) {
                null_flags(batch)[first + k] = static_cast<std::uint8_t>(y_rows.has_value(k));
                values<T>(batch)[first + k] = y_rows[k];
            }
        }
        return BIFUN_OK;
    };
    return for_each_block(batch.row_count, replace, x, y);
}

// Numbers are chosen in vectors. Longer values are all copied, and those of missing ones overwritten: few, mostly, and found 64 rows at a
// time, without a branch for each.
template <class T, class Y> void choose_block(T* __restrict results, std::uint32_t count, const dense_rows<T>& x, const Y& y) {
    if constexpr (std::is_arithmetic_v<T>) {
        for (std::uint32_t k = 0; k < count; ++k) {
            results[k] = choose(x.has_value(k), x[k], y[k]);
        }
    } else {
        std::memcpy(results, x.values, count * sizeof(T));
        for (std::uint32_t first = 0; first < count; first += longest_masked) {
            const std::uint32_t rows = count - first < longest_masked ? count - first : longest_masked;
            for (std::uint64_t missing = equal_bytes(text_bytes<64>(x.null_flags + first, rows), 0); missing != 0; missing &= missing - 1) {
                const std::uint32_t k = first + static_cast<std::uint32_t>(std::countr_zero(missing));
                copy_value(results[k], y[k]);
            }
        }
    }
}

template <class T, class Y> status choose_values(const batch& batch, const column_argument<T>& x, const Y& y) {
    // The engine's copy of a whole column is the faster one, but copies the bytes of strings.
    if (!values_can_be_stored<T>() || (x.column->no_nulls != 0 && !std::is_same_v<T, bifun_string>)) {
        return replace_nulls_in_copy(batch, x, y);
    }
    const bool replaces_all = has_no_nulls(y);
    batch.result->no_nulls = has_no_nulls(x) && replaces_all;
    const auto choose_all = [&](std::uint32_t first, std::uint32_t count, const auto& x_rows, const auto& y_rows) -> status {
        std::uint8_t* __restrict const flags = null_flags(batch) + first;
        T* __restrict const results = values<T>(batch) + first;
        if (replaces_all) {
            std::memset(flags, 1, count);
        } else {
            for (std::uint32_t k = 0; k < count; ++k) {
                flags[k] =
                    static_cast<std::uint8_t>(static_cast<unsigned>(x_rows.has_value(k)) | static_cast<unsigned>(y_rows.has_value(k)));
            }
        }
        choose_block(results, count, x_rows, y_rows);
        return BIFUN_OK;
    };
    return for_each_block(batch.row_count, choose_all, x, y);
}

template <value_type type, template <value_type> class Y> status nvl(batch_of<type> batch, column_of<type> x, Y<type> y) {
    return choose_values(batch, argument(x), argument(y));
}

// ---- strings -----------------------------------------------------------------------------------------------------------

void assign(batch_of<VARCHAR> batch, std::uint32_t row, const bifun_string& value) { set_value(batch, row, value); }

void assign(batch_of<VARBINARY> batch, std::uint32_t row, const bifun_string& value) {
    (void)bdta3_col_assign_bin(batch.environment, batch.memory, batch.result, row, value.data, value.length);
}

template <value_type type, template <value_type> class Y> status nvl_string(batch_of<type> batch, column_of<type> x, Y<type> y) {
    if (results_may_refer() && !empty_strings_count_as_null()) {
        return choose_values(batch, argument(x), argument(y));
    }
    const status begun = begin_with(batch, argument(x), argument(y));
    if (begun != BIFUN_OK) {
        return begun;
    }
    const auto replace = [&](std::uint32_t first, std::uint32_t count, const auto& x_rows, const auto& y_rows) -> status {
        for (std::uint32_t k = 0; k < count; ++k) {
            if (x_rows.has_value(k) && !counts_as_null(x_rows[k])) {
                continue;
            }
            const bool present = y_rows.has_value(k) && !counts_as_null(y_rows[k]);
            null_flags(batch)[first + k] = present ? 1 : 0;
            if (present) {
                assign(batch, first + k, y_rows[k]);
            } else {
                // An empty string that counts as NULL can break what the flags of x and y promised.
                batch.result->no_nulls = 0;
            }
        }
        return BIFUN_OK;
    };
    return for_each_block(batch.row_count, replace, argument(x), argument(y));
}

} // namespace

status entry::bnvl_int_av(batch_of<INT> batch, column_of<INT> x, constant_of<INT> y) { return nvl(batch, x, y); }
status entry::bnvl_int_aa(batch_of<INT> batch, column_of<INT> x, column_of<INT> y) { return nvl(batch, x, y); }
status entry::bnvl_int64_av(batch_of<BIGINT> batch, column_of<BIGINT> x, constant_of<BIGINT> y) { return nvl(batch, x, y); }
status entry::bnvl_int64_aa(batch_of<BIGINT> batch, column_of<BIGINT> x, column_of<BIGINT> y) { return nvl(batch, x, y); }
status entry::bnvl_double_av(batch_of<DOUBLE> batch, column_of<DOUBLE> x, constant_of<DOUBLE> y) { return nvl(batch, x, y); }
status entry::bnvl_double_aa(batch_of<DOUBLE> batch, column_of<DOUBLE> x, column_of<DOUBLE> y) { return nvl(batch, x, y); }
status entry::bnvl_dec_av(batch_of<DECIMAL> batch, column_of<DECIMAL> x, constant_of<DECIMAL> y) { return nvl(batch, x, y); }
status entry::bnvl_dec_aa(batch_of<DECIMAL> batch, column_of<DECIMAL> x, column_of<DECIMAL> y) { return nvl(batch, x, y); }
status entry::bnvl_date_av(batch_of<DATETIME> batch, column_of<DATETIME> x, constant_of<DATETIME> y) { return nvl(batch, x, y); }
status entry::bnvl_date_aa(batch_of<DATETIME> batch, column_of<DATETIME> x, column_of<DATETIME> y) { return nvl(batch, x, y); }

status entry::bnvl_varchar_av(batch_of<VARCHAR> batch, column_of<VARCHAR> x, constant_of<VARCHAR> y) { return nvl_string(batch, x, y); }
status entry::bnvl_varchar_aa(batch_of<VARCHAR> batch, column_of<VARCHAR> x, column_of<VARCHAR> y) { return nvl_string(batch, x, y); }
status entry::bnvl_varbinary_av(batch_of<VARBINARY> batch, column_of<VARBINARY> x, constant_of<VARBINARY> y) {
    return nvl_string(batch, x, y);
}

} // namespace bifun
