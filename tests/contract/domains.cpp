// SPDX-License-Identifier: Apache-2.0
#include "tests/contract/domains.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <set>
#include <sstream>
#include <string>

#include "engine/datetime.h"
#include "engine/decimal.h"
#include "tests/contract/text_case.h"

namespace contract {
namespace {

bool contains(const argument_fact& domain, long double x) { return std::isnan(x) ? domain.takes_nan : x >= domain.low && x <= domain.high; }

// A value outside goes round in the domain, or to the other side of 0 where there is room without end.
template <class T> void move_into(const argument_fact& domain, T& value) {
    const auto x = static_cast<long double>(value);
    if (!contains(domain, x)) {
        const long double width = domain.high - domain.low;
        const long double steps = std::isfinite(x) ? std::fmod(std::fabs(x), width) : 0;
        value = static_cast<T>(std::isinf(width) ? std::max(std::fabs(x), domain.low) : domain.low + steps);
    }
}

// A datetime with such a year, which is a leap year where the old one is.
void move_into(const argument_fact& domain, zqtime& value) {
    auto year = static_cast<std::int32_t>(zqtime_get_year(&value));
    if (!contains(domain, year)) {
        constexpr std::int32_t calendar_cycle = 400;
        const std::int32_t step = year < domain.low ? calendar_cycle : -calendar_cycle;
        while (!contains(domain, year)) {
            year += step;
        }
        EXPECT_EQ(zqtime_set_year(&value, year), 0);
    }
}

void move_into(const argument_fact& domain, xdec& value) {
    if (!contains(domain, xdec_to_double(&value))) {
        xdec_fill_one(&value);
    }
}

template <class T> void move_rows_into(const argument_fact& domain, zqengine::column_storage& column) {
    for (std::uint32_t row = 0; row < column.capacity; ++row) {
        if (column.data.null_flags[row] != 0) {
            move_into(domain, zqengine::values_of<T>(column)[row]);
        }
    }
}

// Texts, or the codes of fields or keywords; none where a range counts.
std::vector<std::string> texts_of(const argument_fact& domain) {
    if (!domain.texts.empty()) {
        return parts_of(domain.texts);
    }
    std::set<std::int32_t> codes;
    for (const bifun::keyword& known : domain.keywords.words) {
        if (domain.fields == 0 || bifun::contains(domain.fields, known.code)) {
            codes.insert(known.code);
        }
    }
    std::vector<std::string> texts;
    std::ranges::transform(codes, std::back_inserter(texts), [](std::int32_t code) { return std::to_string(code); });
    return texts;
}

} // namespace

const argument_fact* domain_of(const bifun::entry_point& entry, std::size_t position) {
    const argument_fact& fact = bifun::fact_of(entry, position);
    const bool is_range = fact.low > -bifun::no_limit || fact.high < bifun::no_limit || !fact.takes_nan;
    return is_range || !texts_of(fact).empty() ? &fact : nullptr;
}

std::size_t value_count(const bifun::entry_point& entry, std::size_t position) {
    const argument_fact* const domain = domain_of(entry, position);
    const std::size_t texts = domain == nullptr ? 0 : texts_of(*domain).size();
    return texts > 0 ? texts : boundary_count(entry.argument_list[position].type);
}

zqengine::column_pointer sound_column(const bifun::entry_point& entry, std::size_t position, std::uint32_t row_count, double null_rate,
                                      std::uint64_t seed) {
    const value_type type = entry.argument_list[position].type;
    zqengine::column_pointer column = generate_column(type, row_count, null_rate, seed);
    const argument_fact* const domain = domain_of(entry, position);
    if (domain == nullptr) {
        return column;
    }
    const std::vector<std::string> texts = texts_of(*domain);
    if (texts.empty()) {
        type == value_type::INT        ? move_rows_into<std::int32_t>(*domain, *column)
        : type == value_type::BIGINT   ? move_rows_into<std::int64_t>(*domain, *column)
        : type == value_type::DOUBLE   ? move_rows_into<double>(*domain, *column)
        : type == value_type::DATETIME ? move_rows_into<zqtime>(*domain, *column)
                                       : move_rows_into<xdec>(*domain, *column);
    }
    for (std::uint32_t row = 0; row < row_count && !texts.empty(); ++row) {
        if (column->data.null_flags[row] != 0) {
            read_value(*column, row, texts[(row + seed) % texts.size()]);
        }
    }
    return column;
}

std::vector<failing_call> failing_calls() {
    std::vector<failing_call> calls;
    for (const failing_calls_of& failure : failures) {
        std::istringstream words{std::string(failure.calls)};
        calls.push_back({failure, {}});
        for (std::string word; words >> word;) {
            word == ";" ? calls.push_back({failure, {}}) : calls.back().arguments.push_back(word);
        }
    }
    return calls;
}

} // namespace contract
