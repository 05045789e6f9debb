// SPDX-License-Identifier: Apache-2.0
#include "host/tables/field_value.h"

#include <algorithm>
#include <limits>
#include <vector>

#include <fmt/format.h>

#include "engine/charset.h"
#include "engine/columns.h"
#include "engine/datetime.h"
#include "engine/decimal.h"
#include "host/near_names.h"
#include "host/tables/plain_values.h"
#include "host/values/decimal_shape.h"
#include "host/values/plain_number.h"
#include "host/values/value_text.h"

namespace host {
namespace {

constexpr std::uint32_t most_datetime_fraction_digits = 6;
constexpr std::size_t longest_plain_text = std::size_t{1} << 20;

const std::uint8_t* bytes_of(std::string_view text) { return reinterpret_cast<const std::uint8_t*>(text.data()); }

field_fault store_text(const column_type& type, const charset& set, bool is_ascii, std::string_view text, zqengine::column_storage& column,
                       std::uint32_t row) {
    if (text.size() > std::numeric_limits<std::uint32_t>::max()) {
        return field_fault::too_wide;
    }
    if (!is_ascii && !is_valid_text(set, text)) {
        return field_fault::invalid_text;
    }
    blank_counted_text value = count_trailing_blanks(text);
    if (type.characters) {
        const std::uint32_t characters = zq_mbstrlen_ex(bytes_of(value.stored), static_cast<std::uint32_t>(value.stored.size()));
        if (characters + (type.is_padded ? 0U : value.trailing_blanks) > *type.characters) {
            return field_fault::too_wide;
        }
        value.trailing_blanks = type.is_padded ? *type.characters - characters : value.trailing_blanks;
    }
    // The embedded engine's columns need neither an environment nor a memory object.
    const std::int32_t status = bdta3_col_assign_str(nullptr, nullptr, &column.column, row, bytes_of(value.stored),
                                                     static_cast<std::uint32_t>(value.stored.size()), value.trailing_blanks);
    return status == 0 ? field_fault::none : field_fault::out_of_memory;
}

// Of a text that is not read: whether that is because its type does not keep all of its digits.
bool has_too_many_digits(const column_type& type, std::string_view text) {
    const bool has_fraction = (is_datetime(type.type) && type.format.empty()) || is_interval(type.type);
    return type.type == sql_type::decimal ? shape_of_number(without_blanks_around(text)).is_number
                                          : has_fraction && has_excess_fraction(text);
}

bool read_boolean(std::string_view text, std::int32_t& value) {
    text = without_blanks_around(text);
    const auto is_one_of = [text](const auto& names) {
        return std::ranges::any_of(names, [text](std::string_view name) { return equal_ignoring_case(name, text); });
    };
    constexpr std::string_view true_names[] = {"true", "t", "yes", "y", "on", "1"};
    constexpr std::string_view false_names[] = {"false", "f", "no", "n", "off", "0"};
    value = is_one_of(true_names) ? 1 : 0;
    return value == 1 || is_one_of(false_names);
}

// Widths are kept to: a value is fit to be stored as it is, or not at all.
bool read_integer(const column_type& type, std::string_view text, std::int32_t& value, field_fault& fault) {
    const bool read = read_number(text, value);
    if (read && type.largest && (value > *type.largest || value < -*type.largest - 1)) {
        fault = field_fault::too_wide;
    }
    return read;
}

bool read_by_format(const field_storing& storing, std::string_view text, zqtime& value) {
    text = without_blanks_around(text);
    const auto as = storing.type.type == sql_type::date ? DFM_DATE : DFM_DATETIME;
    if (char_to_date_simple_with_alen(storing.format, bytes_of(text), static_cast<std::uint32_t>(text.size()), as, &value) != 0) {
        return false;
    }
    complete_datetime(value, storing.type.type, storing.settings.time_zone());
    return true;
}

// YYYY takes 23 for the year 23, which hardly a file means.
bool has_short_year(std::string_view format, std::string_view text, const zqtime& value) {
    constexpr std::size_t year_digits = 4;
    std::size_t digits = 0;
    for (std::size_t i = 0; i < text.size() && digits < year_digits; ++i) {
        digits = text[i] >= '0' && text[i] <= '9' ? digits + 1 : 0;
    }
    return upper_case(format).find("YYYY") != format.npos && digits < year_digits && zqtime_get_year(&value) < 100;
}

bool read_datetime(const field_storing& storing, std::string_view text, zqtime& value, field_fault& fault) {
    const column_type& type = storing.type;
    constexpr std::uint32_t powers[most_datetime_fraction_digits + 1] = {1'000'000, 100'000, 10'000, 1'000, 100, 10, 1};
    const bool read = storing.format != nullptr ? read_by_format(storing, text, value)
                                                : host::read_datetime(text, type.type, storing.settings.time_zone(), value);
    if (read && storing.format != nullptr && has_short_year(type.format, text, value)) {
        fault = field_fault::short_year;
    }
    if (read && storing.format != nullptr && type.format.find_first_of("Ff") != type.format.npos && has_excess_fraction(text)) {
        fault = field_fault::too_many_digits;
    }
    if (read && type.fraction_digits && zqtime_get_msec(&value) % powers[*type.fraction_digits] != 0) {
        fault = field_fault::too_wide;
    }
    return read;
}

bool read_decimal(const column_type& type, std::string_view text, xdec& value, field_fault& fault) {
    const bool read = host::read_decimal(text, value);
    if (read && type.shape) {
        const xdec given = value;
        fault = fit_to_shape(value, *type.shape) && xdec_cmp(&given, &value) == 0 ? field_fault::none : field_fault::too_wide;
    }
    return read;
}

} // namespace

field_fault store_field(const field_storing& storing, std::string_view text, bool is_ascii, zqengine::column_storage& column,
                        std::uint32_t row) {
    const column_type& type = storing.type;
    if (storing.sampled && type_of_fields(*storing.sampled | classify_field(text, storing.decimal_mark)) != type.type) {
        return field_fault::not_as_sampled;
    }
    std::string plain;
    if (storing.decimal_mark && is_number(type.type)) {
        if (!plain_number(text, *storing.decimal_mark, plain)) {
            return field_fault::not_of_type;
        }
        text = plain;
    }
    bool read = false;
    auto fault = field_fault::none;
    switch (type.type) {
    case sql_type::boolean:
        read = read_boolean(text, zqengine::values_of<std::int32_t>(column)[row]);
        break;
    case sql_type::integer:
        read = read_integer(type, text, zqengine::values_of<std::int32_t>(column)[row], fault);
        break;
    case sql_type::bigint:
        read = read_number(text, zqengine::values_of<std::int64_t>(column)[row]);
        break;
    case sql_type::double_precision:
        read = read_number(text, zqengine::values_of<double>(column)[row]);
        break;
    case sql_type::decimal:
        read = read_decimal(type, text, zqengine::values_of<xdec>(column)[row], fault);
        break;
    case sql_type::date:
    case sql_type::time:
    case sql_type::timestamp:
    case sql_type::time_with_zone:
    case sql_type::timestamp_with_zone:
        read = read_datetime(storing, text, zqengine::values_of<zqtime>(column)[row], fault);
        break;
    case sql_type::interval_ym:
        read = read_interval(text, type.fields, zqengine::values_of<bifun_interval_ym>(column)[row]);
        break;
    case sql_type::interval_dt:
        read = read_interval(text, type.fields, zqengine::values_of<bifun_interval_dt>(column)[row]);
        break;
    default:
        return store_text(type, *storing.settings.text_charset, is_ascii, text, column, row);
    }
    return read ? fault : has_too_many_digits(type, text) ? field_fault::too_many_digits : field_fault::not_of_type;
}

namespace {

// `store_plain` stores a text as row `row`, or is false for what is left to store_field.
template <bool is_text, class StorePlain>
std::size_t store_all(const field_storing& storing, csv_reader& reader, std::span<const std::uint32_t> rows, std::size_t column,
                      zqengine::column_storage& values, std::uint32_t first_row, field_fault& fault, StorePlain store_plain) {
    const bool is_ascii = reader.is_ascii();
    std::uint8_t* const known = values.data.null_flags + first_row;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const csv_field field = reader.field(rows[i], column);
        const bool is_null = is_text ? field.is_null : field.is_null_unless_text;
        known[i] = is_null ? 0 : 1;
        if (is_null) {
            values.column.no_nulls = 0;
            continue;
        }
        const std::uint32_t row = first_row + static_cast<std::uint32_t>(i);
        if (!store_plain(field.text, row)) [[unlikely]] {
            fault = store_field(storing, field.text, is_ascii, values, row);
            if (fault != field_fault::none) {
                return i;
            }
        }
    }
    return rows.size();
}

} // namespace

std::size_t store_fields(const field_storing& storing, csv_reader& reader, std::span<const std::uint32_t> rows, std::size_t column,
                         zqengine::column_storage& values, std::uint32_t first_row, field_fault& fault) {
    const auto store = [&](auto store_plain) {
        return store_all<false>(storing, reader, rows, column, values, first_row, fault, store_plain);
    };
    const auto store_text = [&](auto store_plain) {
        return store_all<true>(storing, reader, rows, column, values, first_row, fault, store_plain);
    };
    const auto never = [](std::string_view, std::uint32_t) { return false; };
    const auto store_generally = [&] { return storing.type.type == sql_type::varchar ? store_text(never) : store(never); };
    const bool is_plain = is_number(storing.type.type) ? !storing.decimal_mark && !storing.type.largest : storing.format == nullptr;
    if (!is_plain) {
        return store_generally();
    }
    const auto store_numbers = [&](auto* numbers) {
        return store([numbers](std::string_view text, std::uint32_t row) { return plain_values::read_value(text, numbers[row]); });
    };
    switch (storing.type.type) {
    case sql_type::boolean:
        // Conditions are 0 where they are NULL.
        std::fill_n(zqengine::values_of<std::int32_t>(values) + first_row, rows.size(), 0);
        return store_generally();
    case sql_type::integer:
        return store_numbers(zqengine::values_of<std::int32_t>(values));
    case sql_type::bigint:
        return store_numbers(zqengine::values_of<std::int64_t>(values));
    case sql_type::double_precision:
        return store_numbers(zqengine::values_of<double>(values));
    case sql_type::decimal:
        if (storing.type.shape) {
            return store([&](std::string_view text, std::uint32_t row) {
                return plain_values::read_value(text, *storing.type.shape, zqengine::values_of<xdec>(values)[row]);
            });
        }
        return store_numbers(zqengine::values_of<xdec>(values));
    case sql_type::date:
        return store([dates = zqengine::values_of<zqtime>(values)](std::string_view text, std::uint32_t row) {
            return plain_values::read_date_value(text, dates[row]);
        });
    case sql_type::timestamp:
        return store([times = zqengine::values_of<zqtime>(values)](std::string_view text, std::uint32_t row) {
            return plain_values::read_timestamp_value(text, times[row]);
        });
    case sql_type::varchar:
        // Text with blanks at the end is stored by the general way, which counts them; text that has been sampled may only be so by chance.
        if (reader.is_ascii() && !storing.type.characters && (!storing.sampled || is_text_for_good(*storing.sampled))) {
            return store_text([&values](std::string_view text, std::uint32_t row) {
                return !text.ends_with(' ') && text.size() <= longest_plain_text &&
                       bdta3_col_assign_str(nullptr, nullptr, &values.column, row, bytes_of(text), static_cast<std::uint32_t>(text.size()),
                                            0) == 0;
            });
        }
        [[fallthrough]];
    default:
        return store_generally();
    }
}

} // namespace host
