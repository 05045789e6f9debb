// What the catalogue cannot say about calls with dates: their fields have names, and DATE, TIME and TIMESTAMP share one type there.
#ifndef BIFUN_HOST_DATETIME_CALL_H
#define BIFUN_HOST_DATETIME_CALL_H

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/sql_type.h"

namespace host {

// The code that a keyword stands for, in the first argument of a call of this built-in: a field of engine/datetime.h by a name that
// DATEPART or EXTRACT knows, or the mode of TRIM. Nothing for another word; `keyword_names` lists those that people mean.
std::optional<std::int32_t> keyword_code(std::string_view builtin, std::string_view word);
std::vector<std::string> keyword_names(std::string_view builtin);

// What messages call that argument: "field", "mode"; empty for built-ins without one.
std::string_view keyword_role(std::string_view builtin);

// The entry point of EXTRACT for a field code and the type of the value.
struct extract_member {
    const char* symbol;      // null: the type has no such field
    std::string field_names; // those that it has; empty where EXTRACT does not take the type at all
};
extract_member find_extract_member(std::int32_t field, sql_type type);

// Why a call cannot have these datetime arguments: one lacks the date that the function works on, or has nothing to do with another.
// `field` is the code in the call's first argument, 0 where there is none.
struct datetime_refusal {
    std::size_t argument; // index into the datetime arguments
    std::string message;
};
std::optional<datetime_refusal> find_datetime_refusal(std::string_view builtin, std::int32_t field, std::span<const sql_type> datetimes);

// The type of a datetime result. `amount` is the type of what is added. Some functions give a date a time of day: DATEADD of
// hours, ADD_DAYS of anything but whole numbers.
sql_type datetime_result(std::string_view builtin, std::int32_t field, std::span<const sql_type> datetimes, sql_type amount);

} // namespace host

#endif
