// What the embedded engine says of itself beyond the required, said and unsaid: the library must give the same results in its own loops as
// by asking the engine for every row.
#ifndef BIFUN_TESTS_BIFUN_DATE_EACH_ENGINE_H
#define BIFUN_TESTS_BIFUN_DATE_EACH_ENGINE_H

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "engine/columns.h"
#include "engine/datetime.h"
#include "tests/contract/text_case.h"

namespace bifun_date {

template <class Body> void with_each_engine(const Body& body) {
    for (const std::int32_t layout : {ZQTIME_LAYOUT_PACKED, ZQTIME_LAYOUT_PRIVATE}) {
        for (const std::int32_t plain_stores : {1, 0}) {
            SCOPED_TRACE(testing::Message() << "layout " << layout << ", plain stores " << plain_stores);
            zqtime_layout = layout;
            bdta3_setters_are_plain_stores = bdta3_free_bytes_are_open = plain_stores;
            body();
        }
    }
    zqtime_layout = ZQTIME_LAYOUT_PACKED;
    bdta3_setters_are_plain_stores = bdta3_free_bytes_are_open = 1;
}

// Evaluates cases, each written as `entry point | arguments... | result`.
inline void expect_results(const std::vector<std::string_view>& cases) {
    with_each_engine([&cases] {
        for (const std::string_view text : cases) {
            std::vector<std::string_view> parts;
            for (std::string_view rest = text; !rest.empty();) {
                const std::size_t end = std::min(rest.find(" | "), rest.size());
                parts.push_back(rest.substr(0, end));
                rest.remove_prefix(std::min(end + 3, rest.size()));
            }
            const std::string symbol(parts.front());
            const std::string_view result = parts.back();
            EXPECT_EQ(contract::evaluate({symbol.c_str(), {parts.begin() + 1, parts.end() - 1}, {}}), result) << text;
        }
    });
}

} // namespace bifun_date

#endif
