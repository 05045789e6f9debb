// SPDX-License-Identifier: Apache-2.0
// Which datetimes a call takes, and which it gives: DATE, TIME and TIMESTAMP share one type in the entry points' arguments.
#ifndef BIFUN_ADAPTERS_BINDING_DATETIME_CALL_H
#define BIFUN_ADAPTERS_BINDING_DATETIME_CALL_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "adapters/binding/member_choice.h"
#include "adapters/binding/sql_type.h"
#include "bop/frame/catalogue.h"

namespace binding {

// An argument that the member takes as a datetime. A text has the type that it can be read as.
struct datetime_argument {
    std::size_t position;
    sql_type type;
};

// Why a call cannot have these datetimes: one lacks the date or the time that the function works on, or has nothing to do with another.
struct datetime_refusal {
    std::size_t position;
    std::string message;
};
std::optional<datetime_refusal> find_datetime_refusal(const bifun::entry_point& member, std::span<const offered_argument> arguments,
                                                      std::span<const datetime_argument> datetimes);

// The type of a datetime result: that of the datetimes, or TIMESTAMP where a DATE gets a time of day from another argument.
sql_type datetime_result(const bifun::entry_point& member, std::span<const offered_argument> arguments,
                         std::span<const datetime_argument> datetimes);

// How many of a field are a day, where calls of the built-in move a datetime of this type by a number of the field and the type is a time:
// it goes round the clock, and whole days among the number do not count, however many. Else nothing.
std::optional<std::int64_t> count_round_the_clock(std::string_view builtin, std::int32_t field, sql_type moved);

} // namespace binding

#endif
