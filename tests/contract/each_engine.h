// SPDX-License-Identifier: Apache-2.0
// What the embedded engine says of itself beyond the required, said and unsaid: the library must give the same results in its own loops as
// by asking the engine for every row.
#ifndef BIFUN_TESTS_CONTRACT_EACH_ENGINE_H
#define BIFUN_TESTS_CONTRACT_EACH_ENGINE_H

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

#include "engine/columns.h"
#include "engine/statements.h"
#include "tests/contract/text_case.h"

namespace each_engine {

inline void say(std::int32_t layout, std::int32_t said) {
    zq_engine_statements.datetime_layout = layout;
    zq_engine_statements.ascii_is_single_byte = zq_engine_statements.utf8_is_unicode = zq_engine_statements.pads_as_described = said;
    zq_engine_statements.setters_are_plain_stores = zq_engine_statements.free_bytes_are_open = said;
    zq_engine_statements.results_may_refer = zq_engine_statements.number_texts_as_described = said;
}

template <class Body> void with_each_engine(const Body& body) {
    for (const std::int32_t layout : {ZQTIME_LAYOUT_PACKED, ZQTIME_LAYOUT_PRIVATE}) {
        for (const std::int32_t said : {1, 0}) {
            SCOPED_TRACE(testing::Message() << "layout " << layout << ", other statements " << said);
            say(layout, said);
            body();
        }
    }
    say(ZQTIME_LAYOUT_PACKED, 1);
}

inline void expect_results(std::initializer_list<std::string_view> cases) {
    with_each_engine([cases] { contract::expect_results(cases); });
}

} // namespace each_engine

#endif
