#include "host/evaluation/comparison.h"

#include <algorithm>
#include <compare>
#include <cstring>
#include <numeric>
#include <utility>

#include "engine/datetime.h"
#include "engine/decimal.h"
#include "host/values/interval_text.h"

namespace host {
namespace {

template <class T> T value_at(const bifun_column& column, std::uint32_t row) { return static_cast<const T*>(column.data->values)[row]; }

unsigned char folded(unsigned char byte) { return byte >= 'A' && byte <= 'Z' ? static_cast<unsigned char>(byte + ('a' - 'A')) : byte; }

std::strong_ordering compare_with_blanks(const unsigned char* rest, std::size_t length) {
    for (std::size_t i = 0; i < length; ++i) {
        if (rest[i] != ' ') {
            return rest[i] <=> static_cast<unsigned char>(' ');
        }
    }
    return std::strong_ordering::equal;
}

std::strong_ordering compare_bytes(const bifun_string& a, const bifun_string& b, std::size_t length, string_rules rules) {
    if (!rules.fold_case) {
        return (length == 0 ? 0 : std::memcmp(a.data, b.data, length)) <=> 0;
    }
    bool trailer = false;
    for (std::size_t i = 0; i < length; ++i) {
        const unsigned char x = trailer ? a.data[i] : folded(a.data[i]);
        const unsigned char y = trailer ? b.data[i] : folded(b.data[i]);
        if (x != y) {
            return x <=> y;
        }
        trailer = rules.two_byte_trailers && !trailer && x > 0x80;
    }
    return std::strong_ordering::equal;
}

std::strong_ordering compare_strings(const bifun_string& a, const bifun_string& b, string_rules rules) {
    const std::size_t shared = std::min(a.length, b.length);
    const auto begin = compare_bytes(a, b, shared, rules);
    if (begin != 0 || a.length == b.length) {
        return begin;
    }
    return a.length > shared ? compare_with_blanks(a.data + shared, a.length - shared)
                             : 0 <=> compare_with_blanks(b.data + shared, b.length - shared);
}

template <class Order>
void compare_rows(const bifun_column& left, const bifun_column& right, bifun_column& result, std::uint32_t row_count, Order order) {
    auto* const values = static_cast<std::int32_t*>(result.data->values);
    const bool no_nulls = left.no_nulls != 0 && right.no_nulls != 0;
    result.no_nulls = no_nulls ? 1 : 0;
    for (std::uint32_t k = 0; k < row_count; ++k) {
        const std::uint32_t i = row_of(left, k);
        const std::uint32_t j = row_of(right, k);
        const bool known = no_nulls || (left.data->null_flags[i] != 0 && right.data->null_flags[j] != 0);
        result.data->null_flags[k] = known ? 1 : 0;
        values[k] = known && order(i, j) ? 1 : 0;
    }
}

// Turns the operator into a predicate once per batch, so that the row loop holds no decision.
template <class Order>
void compare_by(comparison_operator operation, const bifun_column& left, const bifun_column& right, bifun_column& result,
                std::uint32_t row_count, Order order) {
    const auto run = [&](auto holds) {
        compare_rows(left, right, result, row_count, [&](std::uint32_t i, std::uint32_t j) { return holds(order(i, j)); });
    };
    switch (operation) {
    case comparison_operator::equal:
        return run([](auto o) { return o == 0; });
    case comparison_operator::not_equal:
        return run([](auto o) { return o != 0; });
    case comparison_operator::less:
        return run([](auto o) { return o < 0; });
    case comparison_operator::less_or_equal:
        return run([](auto o) { return o <= 0; });
    case comparison_operator::greater:
        return run([](auto o) { return o > 0; });
    case comparison_operator::greater_or_equal:
        return run([](auto o) { return o >= 0; });
    }
}

// Calls `use` with what orders row i of one column against row j of the other.
template <class Use>
void with_order(bifun::value_type type, const bifun_column& left, const bifun_column& right, string_rules rules, const Use& use) {
    using bifun::value_type;
    const auto use_plain = [&]<class T>(T) {
        const auto* const a = static_cast<const T*>(left.data->values);
        const auto* const b = static_cast<const T*>(right.data->values);
        use([=](std::uint32_t i, std::uint32_t j) { return a[i] <=> b[j]; });
    };
    switch (type) {
    case value_type::BOOL:
    case value_type::INT:
        return use_plain(std::int32_t{});
    case value_type::BIGINT:
        return use_plain(std::int64_t{});
    case value_type::DOUBLE:
        return use_plain(double{});
    case value_type::DECIMAL: {
        const auto* const a = static_cast<const xdec*>(left.data->values);
        const auto* const b = static_cast<const xdec*>(right.data->values);
        return use([=](std::uint32_t i, std::uint32_t j) { return xdec_cmp(a + i, b + j) <=> 0; });
    }
    case value_type::DATETIME: {
        const auto* const a = static_cast<const zqtime*>(left.data->values);
        const auto* const b = static_cast<const zqtime*>(right.data->values);
        return use([=](std::uint32_t i, std::uint32_t j) { return zqtime_cmp(a + i, b + j) <=> 0; });
    }
    case value_type::INTERVAL_YM: {
        const auto* const a = static_cast<const bifun_interval_ym*>(left.data->values);
        const auto* const b = static_cast<const bifun_interval_ym*>(right.data->values);
        return use([=](std::uint32_t i, std::uint32_t j) { return total_months(a[i]) <=> total_months(b[j]); });
    }
    case value_type::INTERVAL_DT: {
        const auto* const a = static_cast<const bifun_interval_dt*>(left.data->values);
        const auto* const b = static_cast<const bifun_interval_dt*>(right.data->values);
        return use([=](std::uint32_t i, std::uint32_t j) { return total_time(a[i]) <=> total_time(b[j]); });
    }
    case value_type::VARCHAR:
    case value_type::VARBINARY: {
        const auto* const a = static_cast<const bifun_string*>(left.data->values);
        const auto* const b = static_cast<const bifun_string*>(right.data->values);
        return use([=](std::uint32_t i, std::uint32_t j) { return compare_strings(a[i], b[j], rules); });
    }
    case value_type::BLOB:
        break; // of no column
    }
}

} // namespace

void compare_columns(bifun::value_type type, comparison_operator operation, const bifun_column& left, const bifun_column& right,
                     string_rules rules, bifun_column& result, std::uint32_t row_count) {
    with_order(type, left, right, rules, [&](auto order) { compare_by(operation, left, right, result, row_count, order); });
}

sorted_values sort_values(zqengine::column_pointer column, string_rules rules) {
    sorted_values sorted{.column = std::move(column), .rows = {}};
    const bifun_column& values = sorted.column->column;
    sorted.rows.resize(sorted.column->capacity);
    std::iota(sorted.rows.begin(), sorted.rows.end(), 0U);
    with_order(sorted.column->type, values, values, rules,
               [&](auto order) { std::ranges::sort(sorted.rows, [&](std::uint32_t a, std::uint32_t b) { return order(a, b) < 0; }); });
    return sorted;
}

void find_values(const sorted_values& values, const bifun_column& tested, string_rules rules, bifun_column& result,
                 std::uint32_t row_count) {
    auto* const found = static_cast<std::int32_t*>(result.data->values);
    with_order(values.column->type, tested, values.column->column, rules, [&](auto order) {
        for (std::uint32_t k = 0; k < row_count; ++k) {
            const std::uint32_t i = row_of(tested, k);
            result.data->null_flags[k] = tested.data->null_flags[i];
            found[k] = 0;
            if (tested.data->null_flags[i] != 0) {
                const auto place = std::ranges::partition_point(values.rows, [&](std::uint32_t j) { return order(i, j) > 0; });
                found[k] = place != values.rows.end() && order(i, *place) == 0 ? 1 : 0;
            }
        }
    });
    result.no_nulls = tested.no_nulls;
}

void and_condition(bifun_column& result, const bifun_column& operand, std::uint32_t row_count) {
    auto* const values = static_cast<std::int32_t*>(result.data->values);
    std::uint8_t* const flags = result.data->null_flags;
    for (std::uint32_t k = 0; k < row_count; ++k) {
        const std::uint32_t i = row_of(operand, k);
        const bool other_known = operand.data->null_flags[i] != 0;
        const bool other = other_known && value_at<std::int32_t>(operand, i) == 1;
        const bool is_false = (flags[k] != 0 && values[k] == 0) || (other_known && !other);
        flags[k] = is_false || (flags[k] != 0 && other_known) ? 1 : 0;
        values[k] = values[k] == 1 && other ? 1 : 0;
    }
    result.no_nulls = result.no_nulls != 0 && operand.no_nulls != 0 ? 1 : 0;
}

void or_condition(bifun_column& result, const bifun_column& operand, std::uint32_t row_count) {
    auto* const values = static_cast<std::int32_t*>(result.data->values);
    std::uint8_t* const flags = result.data->null_flags;
    for (std::uint32_t k = 0; k < row_count; ++k) {
        const std::uint32_t i = row_of(operand, k);
        const bool other_known = operand.data->null_flags[i] != 0;
        const bool is_true = values[k] == 1 || (other_known && value_at<std::int32_t>(operand, i) == 1);
        flags[k] = is_true || (flags[k] != 0 && other_known) ? 1 : 0;
        values[k] = is_true ? 1 : 0;
    }
    result.no_nulls = result.no_nulls != 0 && operand.no_nulls != 0 ? 1 : 0;
}

void negate_condition(bifun_column& result, std::uint32_t row_count) {
    auto* const values = static_cast<std::int32_t*>(result.data->values);
    for (std::uint32_t k = 0; k < row_count; ++k) {
        values[k] = result.data->null_flags[k] != 0 && values[k] == 0 ? 1 : 0;
    }
}

void fill_condition(bifun_column& result, bool value, std::uint32_t row_count) {
    std::fill_n(static_cast<std::int32_t*>(result.data->values), row_count, value ? 1 : 0);
    std::fill_n(result.data->null_flags, row_count, std::uint8_t{1});
    result.no_nulls = 1;
}

void copy_condition(bifun_column& result, const bifun_column& operand, std::uint32_t row_count) {
    auto* const values = static_cast<std::int32_t*>(result.data->values);
    for (std::uint32_t k = 0; k < row_count; ++k) {
        const std::uint32_t i = row_of(operand, k);
        result.data->null_flags[k] = operand.data->null_flags[i];
        values[k] = value_at<std::int32_t>(operand, i);
    }
    result.no_nulls = operand.no_nulls;
}

void normalise_condition(bifun_column& condition, std::uint32_t row_count) {
    auto* const values = static_cast<std::int32_t*>(condition.data->values);
    for (std::uint32_t k = 0; k < row_count; ++k) {
        values[k] = condition.data->null_flags[k] != 0 && values[k] == 1 ? 1 : 0;
    }
}

} // namespace host
