// SPDX-License-Identifier: Apache-2.0
// A call in a query, and its evaluation row by row. Nothing here calls PostgreSQL, and nothing throws: this is the side of C++.
#ifndef BIFUN_ADAPTERS_POSTGRESQL_CALL_SITE_H
#define BIFUN_ADAPTERS_POSTGRESQL_CALL_SITE_H

#include <array>
#include <cstdint>
#include <memory>
#include <span>

#include "adapters/binding/call.h"
#include "adapters/postgresql/sql_functions.h"

namespace postgresql_extension {

// Of which moment the session's zone has to be, where results depend on it.
enum class zone_moment : std::uint8_t { none, now, first_datetime, unix_seconds };

constexpr std::size_t most_site_arguments = 8;

struct site_argument {
    binding::call_argument* shown;
    host_type type;
    binding::sql_type parameter;
    bool is_literal; // in the query itself, and the same for every row
    // A place for the bytes of one that the call writes to; in memory of PostgreSQL's.
    std::uint8_t* copy;
    std::size_t copy_capacity;
};

struct call_site {
    const sql_function* function;
    std::unique_ptr<binding::call> call; // of one row
    const binding::session* session;     // that of the process
    bool writes_arguments;
    zone_moment moment;
    std::uint32_t to_show; // the arguments, as bits, but for literals that have been shown once for all
    std::array<site_argument, most_site_arguments> arguments;
};

// What went wrong, in texts that stay until the next failure. No message: nothing did.
struct failure_text {
    std::int32_t status; // of the library; 0 where it refused nothing
    const char* message;
    const char* detail; // may be null
};

// Makes the site of a call of the function that has these arguments and this result, which lives until it is destroyed. Null with `failure`
// otherwise.
call_site* create_site(const char* name, std::span<const std::uint32_t> argument_oids, std::uint32_t result_oid,
                       failure_text& failure) noexcept;
void destroy_site(call_site* site) noexcept;

// Evaluates the row that the arguments have; false where that failed, and then `failure` is written. The column of `results` is null for
// NULL, and has one row until the next call.
bool evaluate_site(call_site& site, binding::row_result& results, failure_text& failure) noexcept;

// Loads the library, or gives it other settings.
failure_text load_library(const bifun_settings& settings) noexcept;

// Settings of the session; `zone` is in minutes east of UTC. The texts of formats are those of zqengine_format.
constexpr std::size_t format_count = 5;
failure_text set_session(std::int32_t language, const std::array<char*, format_count>& formats) noexcept;
failure_text set_zone(std::int32_t minutes) noexcept;

} // namespace postgresql_extension

#endif
