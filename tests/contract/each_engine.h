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
    zq_engine_statements.ascii_is_single_byte = zq_engine_statements.setters_are_plain_stores = zq_engine_statements.free_bytes_are_open =
        said;
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

// Of a row and a constant text with blanks that are stored, which a case written as text cannot have.
inline contract::outcome call_with_name(const char* symbol, bifun::value_type type, const char* value, const std::string& name) {
    const zqengine::column_pointer row = contract::read_column(type, value).column;
    const zqengine::column_pointer names(zqengine::create_column(bifun::value_type::VARCHAR, 1));
    names->data.null_flags[0] = 1;
    const auto length = static_cast<std::uint32_t>(name.size());
    EXPECT_EQ(bdta3_col_assign_str(nullptr, nullptr, &names->column, 0, reinterpret_cast<const std::uint8_t*>(name.data()), length, 0), 0);
    const contract::generated_constant constant = contract::constant_of_row(*names, 0);
    return contract::call(contract::entry_of(symbol), {{.column = row.get()}, {.constant = &constant}}, 1);
}

} // namespace each_engine

#endif
