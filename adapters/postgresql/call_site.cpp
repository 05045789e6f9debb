// SPDX-License-Identifier: Apache-2.0
#include "adapters/postgresql/call_site.h"

#include <algorithm>
#include <deque>
#include <exception>
#include <map>
#include <new>
#include <string>

#include <fmt/format.h>

#include "adapters/binding/library.h"
#include "engine/session.h"

namespace postgresql_extension {
namespace {

constexpr failure_text no_failure{0, nullptr, nullptr};

failure_text fail(std::int32_t status, std::string message, std::string detail = "") {
    static std::string last_message;
    static std::string last_detail;
    last_message = std::move(message);
    last_detail = std::move(detail);
    return {status, last_message.c_str(), last_detail.empty() ? nullptr : last_detail.c_str()};
}

constexpr failure_text no_memory{BIFUN_OUT_OF_MEMORY, "out of memory", nullptr};

// Runs what may throw, and returns what it returns or what it threw.
template <class Run> failure_text guarded(const Run& run) noexcept {
    try {
        return run();
    } catch (const std::bad_alloc&) {
        return no_memory;
    } catch (const std::exception& unexpected) {
        try {
            return fail(0, unexpected.what());
        } catch (...) {
            return no_memory;
        }
    } catch (...) {
        return {0, "unexpected exception", nullptr};
    }
}

// That of the process, which has one thread.
binding::session* session() {
    static binding::session* const made = binding::make_session().release();
    return made != nullptr ? made : throw std::bad_alloc();
}

// Those of a built-in are found when it is first called, and stay.
const std::deque<sql_function>& known_functions(const bifun::builtin& builtin) {
    static std::map<const bifun::builtin*, std::deque<sql_function>> known;
    std::deque<sql_function>& functions = known[&builtin];
    if (functions.empty()) {
        for (sql_function& function : functions_of(builtin)) {
            functions.push_back(std::move(function));
        }
    }
    return functions;
}

const sql_function* find_function(std::string_view name, std::span<const std::uint32_t> argument_oids) {
    const bifun::builtin* const builtin = find_builtin(name);
    if (builtin == nullptr) {
        return nullptr;
    }
    for (const sql_function& function : known_functions(*builtin)) {
        const auto has_type = [](std::uint32_t oid, host_type type) { return oid == names_of(type).oid; };
        if (function.name == name && std::ranges::equal(argument_oids, function.arguments, has_type)) {
            return &function;
        }
    }
    return nullptr;
}

bool writes_arguments(std::string_view builtin) {
    return std::ranges::any_of(bifun::entry_points, [&](const bifun::entry_point& member) {
        return member.builtin == builtin && bifun::writes_arguments(member);
    });
}

zone_moment moment_of(const sql_function& function) {
    if (function.form.changes != bifun::change::per_session) {
        return zone_moment::none;
    }
    if (function.form.builtin == "FROM_UNIXTIME") {
        return zone_moment::unix_seconds;
    }
    return function.form.builtin == "UNIX_TIMESTAMP" && binding::is_datetime(function.form.type_list[0]) ? zone_moment::first_datetime
                                                                                                         : zone_moment::now;
}

} // namespace

call_site* create_site(const char* name, std::span<const std::uint32_t> argument_oids, std::uint32_t result_oid,
                       failure_text& failure) noexcept {
    call_site* made = nullptr;
    failure = guarded([&]() -> failure_text {
        const sql_function* const function = find_function(name, argument_oids);
        // The module may be of another version than the script that has declared it.
        if (function == nullptr || names_of(function->result).oid != result_oid) {
            return fail(0, fmt::format("this version of bifun has no function {} with these arguments and this result", name),
                        "ALTER EXTENSION bifun UPDATE declares those that it has");
        }
        constexpr std::uint32_t one_row = 1;
        auto call = binding::make_call(function->form, function->arguments.size(), one_row);
        made = new call_site{function, std::move(call), session(), writes_arguments(function->form.builtin), moment_of(*function), 0, {}};
        const auto parameters = function->form.types();
        for (std::size_t i = 0; i < function->arguments.size(); ++i) {
            made->arguments[i] = {.shown = &made->call->arguments[i],
                                  .type = function->arguments[i],
                                  .parameter = parameters[std::min(i, parameters.size() - 1)],
                                  .is_literal = false,
                                  .copy = nullptr,
                                  .copy_capacity = 0};
            made->to_show |= std::uint32_t{1} << i;
        }
        return no_failure;
    });
    return made;
}

void destroy_site(call_site* site) noexcept { delete site; }

bool evaluate_site(call_site& site, binding::row_result& results, failure_text& failure) noexcept {
    try {
        if (binding::evaluate_again(*site.call, *site.session, results)) {
            return true;
        }
    } catch (const std::bad_alloc&) { // what needs it below tells
    }
    failure = guarded([&]() -> failure_text {
        results.column = nullptr;
        const auto failed = binding::evaluate(
            *site.call, *site.session, 1,
            [&results](const bifun_column* column, bifun::value_type type, std::span<const std::uint16_t> /*rows*/,
                       std::uint32_t /*count*/) {
                results = {column, type};
            },
            binding::find_function);
        if (!failed) {
            return no_failure;
        }
        return fail(failed->status, failed->message, failed->call);
    });
    return failure.message == nullptr;
}

failure_text load_library(const bifun_settings& settings) noexcept {
    return guarded([&]() -> failure_text {
        std::string fault = binding::load_library(settings);
        return fault.empty() ? no_failure : fail(0, std::move(fault));
    });
}

failure_text set_session(std::int32_t language, const std::array<char*, format_count>& formats) noexcept {
    return guarded([&]() -> failure_text {
        bifun_environment* const environment = session()->environment;
        (void)zqengine_environment_set_language(environment, language);
        for (std::size_t which = 0; which < formats.size(); ++which) {
            const std::string_view format = formats[which] != nullptr ? formats[which] : "";
            if (zqengine_environment_set_format(environment, static_cast<std::int32_t>(which), format.data(),
                                                static_cast<std::uint32_t>(format.size()), nullptr) != 0) {
                return fail(BIFUN_INVALID_DATE_FORMAT, fmt::format("'{}' is no date format", format));
            }
        }
        return no_failure;
    });
}

failure_text set_zone(std::int32_t minutes) noexcept {
    return guarded([&]() -> failure_text {
        if (zqengine_environment_set_time_zone(session()->environment, minutes) != 0) {
            return fail(0, "the session's time zone is more than 14 hours from UTC");
        }
        (void)zqengine_set_parameter(INI_NOW_TIME_ZONE, minutes);
        return no_failure;
    });
}

} // namespace postgresql_extension
