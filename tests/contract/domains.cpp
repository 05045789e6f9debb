#include "tests/contract/domains.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "engine/columns.h"
#include "engine/decimal.h"
#include "tests/contract/text_case.h"

namespace contract {
namespace {

bool contains(const argument_domain& domain, long double x) {
    return std::isnan(x) ? domain.takes_nan : x >= domain.low && x <= domain.high;
}

// A value outside goes round in the domain, or to the other side of 0 where there is room without end.
template <class T> void move_into(const argument_domain& domain, T& value) {
    const auto x = static_cast<long double>(value);
    if (!contains(domain, x)) {
        const long double width = domain.high - domain.low;
        const long double steps = std::isfinite(x) ? std::fmod(std::fabs(x), width) : 0;
        value = static_cast<T>(std::isinf(width) ? std::max(std::fabs(x), domain.low) : domain.low + steps);
    }
}

} // namespace

const argument_domain* domain_of(const bifun::entry_point& entry, std::size_t position) {
    const auto* const found = std::ranges::find_if(argument_domains, [&](const argument_domain& domain) {
        return domain.builtin == entry.builtin && domain.position == position && domain.type == entry.argument_list[position].type;
    });
    return found == std::end(argument_domains) ? nullptr : found;
}

zqengine::column_pointer sound_column(const bifun::entry_point& entry, std::size_t position, std::uint32_t row_count, double null_rate,
                                      std::uint64_t seed) {
    const value_type type = entry.argument_list[position].type;
    zqengine::column_pointer column = generate_column(type, row_count, null_rate, seed);
    const argument_domain* const domain = domain_of(entry, position);
    for (std::uint32_t row = 0; domain != nullptr && row < row_count; ++row) {
        if (column->data.null_flags[row] == 0) {
            continue;
        }
        if (type == value_type::VARCHAR) {
            read_value(*column, row, std::string(domain->texts[(row + seed) % domain->texts.size()]));
        } else if (type == value_type::DOUBLE) {
            move_into(*domain, zqengine::values_of<double>(*column)[row]);
        } else if (type == value_type::BIGINT) {
            move_into(*domain, zqengine::values_of<std::int64_t>(*column)[row]);
        } else if (xdec& value = zqengine::values_of<xdec>(*column)[row]; !contains(*domain, xdec_to_double(&value))) {
            xdec_fill_one(&value);
        }
    }
    return column;
}

} // namespace contract
