// NVL(x, y): x where it is not NULL, otherwise y.

#include "bop/frame/arguments.h"
#include "bop/frame/choose.h"
#include "bop/frame/setters.h"
#include "bop/frame/statements.h"

namespace bifun {
namespace {

constexpr std::uint32_t empty_strings_are_null = 2;

bool counts_as_null(const bifun_string& value) {
    return global_bifun_var.compatible_mode == empty_strings_are_null && value.length == 0 && value.trailing_blanks == 0;
}

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
    return with_rows(
        [batch](const auto& x_rows, const auto& y_rows) -> status {
            for (std::uint32_t k = 0; k < batch.row_count; ++k) {
                if (!x_rows.has_value(k)) {
                    null_flags(batch)[k] = static_cast<std::uint8_t>(y_rows.has_value(k));
                    values<T>(batch)[k] = y_rows[k];
                }
            }
            return BIFUN_OK;
        },
        x, y);
}

template <class T, class Y> INLINED inline status nvl(const batch& batch, const column_argument<T>& x, const Y& y) {
    if (!setters_are_plain_stores() || x.column->no_nulls != 0) {
        return replace_nulls_in_copy(batch, x, y);
    }
    batch.result->no_nulls = 0;
    return with_rows(
        [batch](const auto& x_rows, const auto& y_rows) INLINED -> status {
            std::uint8_t* __restrict const flags = null_flags(batch);
            T* __restrict const results = values<T>(batch);
            for (std::uint32_t k = 0; k < batch.row_count; ++k) {
                flags[k] =
                    static_cast<std::uint8_t>(static_cast<unsigned>(x_rows.has_value(k)) | static_cast<unsigned>(y_rows.has_value(k)));
            }
            for (std::uint32_t k = 0; k < batch.row_count; ++k) {
                results[k] = choose(x_rows.has_value(k), x_rows[k], y_rows[k]);
            }
            return BIFUN_OK;
        },
        x, y);
}

enum class string_kind : std::uint8_t { character, binary };

template <string_kind kind> status assign(const batch& batch, std::uint32_t row, const bifun_string& value) {
    if constexpr (kind == string_kind::character) {
        return bdta3_col_assign_str(batch.environment, batch.memory, batch.result, row, value.data, value.length, value.trailing_blanks);
    } else {
        return bdta3_col_assign_bin(batch.environment, batch.memory, batch.result, row, value.data, value.length);
    }
}

template <string_kind kind, class Y> status nvl_string(const batch& batch, const column_argument<bifun_string>& x, const Y& y) {
    const status begun = begin_with(batch, x, y);
    if (begun != BIFUN_OK) {
        return begun;
    }
    return with_rows(
        [batch](const auto& x_rows, const auto& y_rows) -> status {
            for (std::uint32_t k = 0; k < batch.row_count; ++k) {
                if (x_rows.has_value(k) && !counts_as_null(x_rows[k])) {
                    continue;
                }
                const bool present = y_rows.has_value(k) && !counts_as_null(y_rows[k]);
                null_flags(batch)[k] = present ? 1 : 0;
                if (present) {
                    (void)assign<kind>(batch, k, y_rows[k]);
                } else {
                    // An empty string that counts as NULL can break what the flags of x and y promised.
                    batch.result->no_nulls = 0;
                }
            }
            return BIFUN_OK;
        },
        x, y);
}

} // namespace
} // namespace bifun

using namespace bifun;

VECTORISED status bnvl_int_av(BATCH_OF(column x, int_constant y)) { return nvl(BATCH, integer(x), integer(y)); }
VECTORISED status bnvl_int_aa(BATCH_OF(column x, column y)) { return nvl(BATCH, integer(x), integer(y)); }
VECTORISED status bnvl_int64_av(BATCH_OF(column x, bigint_constant y)) { return nvl(BATCH, bigint(x), bigint(y)); }
VECTORISED status bnvl_int64_aa(BATCH_OF(column x, column y)) { return nvl(BATCH, bigint(x), bigint(y)); }
VECTORISED status bnvl_double_av(BATCH_OF(column x, double_constant y)) { return nvl(BATCH, floating(x), floating(y)); }
VECTORISED status bnvl_double_aa(BATCH_OF(column x, column y)) { return nvl(BATCH, floating(x), floating(y)); }
status bnvl_dec_av(BATCH_OF(column x, decimal_constant y)) { return nvl(BATCH, decimal(x), decimal(y)); }
status bnvl_dec_aa(BATCH_OF(column x, column y)) { return nvl(BATCH, decimal(x), decimal(y)); }
status bnvl_date_av(BATCH_OF(column x, datetime_constant y)) { return nvl(BATCH, datetime(x), datetime(y)); }
status bnvl_date_aa(BATCH_OF(column x, column y)) { return nvl(BATCH, datetime(x), datetime(y)); }

status bnvl_varchar_av(BATCH_OF(column x, string_constant y)) { return nvl_string<string_kind::character>(BATCH, string(x), string(y)); }
status bnvl_varchar_aa(BATCH_OF(column x, column y)) { return nvl_string<string_kind::character>(BATCH, string(x), string(y)); }
status bnvl_varbinary_av(BATCH_OF(column x, string_constant y)) { return nvl_string<string_kind::binary>(BATCH, binary(x), binary(y)); }
