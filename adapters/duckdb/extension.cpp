// SPDX-License-Identifier: Apache-2.0
// The extension: a set of overloaded functions for every built-in, and how they are called.

#include "adapters/duckdb/api.h"

#include <cctype>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>
#include <unordered_map>
#include <vector>

#include "adapters/binding/call.h"
#include "adapters/binding/library.h"
#include "adapters/duckdb/host_functions.h"
#include "adapters/duckdb/open_vectors.h"
#include "adapters/duckdb/overloads.h"
#include "adapters/duckdb/vectors.h"
#include "engine/charset.h"

namespace duckdb_extension {
namespace {

using binding::session_settings;

// ---- settings of a session ------------------------------------------------------------------------------------------------------

struct setting {
    const char* name;
    const char* description;
    std::optional<zqengine_format> format; // else the time zone
};

constexpr setting settings[] = {
    {"bifun_time_zone", "The zone of moments in bifun functions, in minutes east of UTC", std::nullopt},
    {"bifun_date_format", "The format by which bifun functions read and write dates where a call gives none", ZQENGINE_DATE_FORMAT},
    {"bifun_time_format", "The same for times", ZQENGINE_TIME_FORMAT},
    {"bifun_timestamp_format", "The same for timestamps", ZQENGINE_DATETIME_FORMAT},
    {"bifun_time_with_zone_format", "The same for times with a time zone", ZQENGINE_TIME_WITH_ZONE_FORMAT},
    {"bifun_timestamp_with_zone_format", "The same for timestamps with a time zone", ZQENGINE_DATETIME_WITH_ZONE_FORMAT},
};

const session_settings usual_settings;

void register_settings(duckdb_connection connection, const setting_functions& host) {
    for (const setting& known : settings) {
        config_option option = host.create_config_option();
        duckdb_logical_type type = duckdb_create_logical_type(known.format ? DUCKDB_TYPE_VARCHAR : DUCKDB_TYPE_BIGINT);
        duckdb_value value = known.format ? duckdb_create_varchar("") : duckdb_create_int64(0);
        host.config_option_set_name(option, known.name);
        host.config_option_set_type(option, type);
        host.config_option_set_default_value(option, value);
        host.config_option_set_description(option, known.description);
        // Another connection of the process may have registered it.
        (void)host.register_config_option(connection, option);
        duckdb_destroy_value(&value);
        duckdb_destroy_logical_type(&type);
        host.destroy_config_option(&option);
    }
}

// A call takes the settings that its session has when it is bound.
void bind_settings(duckdb_bind_info info) {
    const setting_functions& host = *find_setting_functions();
    client_context context = nullptr;
    host.scalar_function_get_client_context(info, &context);
    auto bound = std::make_unique<session_settings>();
    for (const setting& known : settings) {
        std::int32_t scope = 0;
        duckdb_value value = host.client_context_get_config_option(context, known.name, &scope);
        if (value == nullptr) {
            continue;
        }
        if (known.format) {
            char* const text = duckdb_get_varchar(value);
            bound->date_formats[*known.format] = text != nullptr ? text : "";
            duckdb_free(text);
        } else {
            bound->time_zone =
                static_cast<std::int32_t>(std::max<std::int64_t>(std::min<std::int64_t>(duckdb_get_int64(value), 9999), -9999));
        }
        duckdb_destroy_value(&value);
    }
    host.destroy_client_context(&context);
    bifun_environment* const tried = zqengine_environment_create();
    const std::string fault = tried == nullptr ? "out of memory" : apply_settings(*bound, tried);
    zqengine_environment_destroy(tried);
    if (!fault.empty()) {
        host.scalar_function_bind_set_error(info, ("bifun: " + fault).c_str());
        return;
    }
    host.scalar_function_set_bind_data(info, bound.release(), [](void* data) { delete static_cast<session_settings*>(data); });
    host.scalar_function_set_bind_data_copy(
        info, [](void* data) -> void* { return new session_settings(*static_cast<const session_settings*>(data)); });
}

// ---- execution ---------------------------------------------------------------------------------------------------------------------

// What a thread keeps from batch to batch.
struct thread_state {
    std::unique_ptr<binding::session, void (*)(binding::session*)> session = binding::make_session();
    session_settings settings; // that the session has
    std::unordered_map<const overload*, std::unique_ptr<binding::call>> calls;
    std::vector<std::vector<std::uint8_t>> texts; // copies of strings, by argument
};

const session_settings& settings_of(duckdb_function_info info) {
    const setting_functions* const host = find_setting_functions();
    const void* const bound = host != nullptr ? host->scalar_function_get_bind_data(info) : nullptr;
    return bound != nullptr ? *static_cast<const session_settings*>(bound) : usual_settings;
}

// Returns an empty text, or why it failed, which begins with the name of the built-in.
std::string evaluate_batch(const overload& function, const session_settings& settings, duckdb_data_chunk input, duckdb_vector output) {
    thread_local thread_state state;
    const auto row_count = static_cast<std::uint32_t>(duckdb_data_chunk_get_size(input));
    if (state.session == nullptr) {
        throw std::bad_alloc();
    }
    if (state.settings != settings) {
        (void)apply_settings(settings, state.session->environment); // the binding has tried them
        state.settings = settings;
    }
    std::unique_ptr<binding::call>& call = state.calls[&function];
    if (call == nullptr) {
        call = binding::make_call(function.form, function.argument_count, static_cast<std::uint32_t>(duckdb_vector_size()));
    }
    state.texts.resize(std::max(state.texts.size(), function.argument_count));
    const std::int32_t zone = settings.time_zone;
    const std::string name = std::string(function.form.builtin) + ": ";
    for (std::size_t i = 0; i < function.argument_count; ++i) {
        duckdb_vector vector = duckdb_data_chunk_get_vector(input, i);
        std::vector<std::uint8_t>* const copy = function.writes_arguments ? &state.texts[i] : nullptr;
        std::string fault = function.is_open(i) ? show_open_vector(vector, function.type_of(i), row_count, call->arguments[i])
                                                : show_vector(vector, function.type_of(i), row_count, zone, copy, call->arguments[i]);
        if (!fault.empty()) {
            return name + fault;
        }
    }
    std::string fault;
    const auto failed = binding::evaluate(
        *call, *state.session, row_count,
        [&](const bifun_column* results, bifun::value_type given, std::span<const std::uint16_t> rows, std::uint32_t count) {
            std::string unfit = store_results(results, given, rows, count, function.form.result, zone, output);
            fault = fault.empty() ? std::move(unfit) : fault;
        },
        binding::find_function);
    return failed ? text_of(*failed) : fault.empty() ? fault : name + fault;
}

// What DuckDB throws, as when it has no memory for a result, has a record in JSON for its text, of which this is the first line.
std::string first_line_of(const std::exception& thrown) {
    constexpr std::string_view begin = "\"exception_message\":\"";
    const std::string text = thrown.what();
    const std::size_t found = text.find(begin);
    if (found == std::string::npos) {
        return text;
    }
    const std::size_t first = found + begin.size();
    return text.substr(first, text.find_first_of("\\\"", first) - first);
}

void run(duckdb_function_info info, duckdb_data_chunk input, duckdb_vector output) {
    const auto& function = *static_cast<const overload*>(duckdb_scalar_function_get_extra_info(info));
    try {
        const std::string fault = duckdb_data_chunk_get_size(input) == 0 ? "" : evaluate_batch(function, settings_of(info), input, output);
        if (!fault.empty()) {
            duckdb_scalar_function_set_error(info, ("bifun " + fault).c_str());
        }
    } catch (const std::exception& unexpected) {
        duckdb_scalar_function_set_error(info, ("bifun: " + first_line_of(unexpected)).c_str());
    }
}

// ---- registration --------------------------------------------------------------------------------------------------------------------

void add_function(duckdb_scalar_function_set set, const std::string& name, const overload& function) {
    duckdb_scalar_function made = duckdb_create_scalar_function();
    duckdb_scalar_function_set_name(made, name.c_str());
    const auto with_type = [&](duckdb_logical_type type, const auto& use) {
        use(type);
        duckdb_destroy_logical_type(&type);
    };
    for (std::size_t i = 0; i < function.argument_count; ++i) {
        with_type(function.is_open(i) ? duckdb_create_logical_type(function.open->declared) : make_type(function.type_of(i)),
                  [&](duckdb_logical_type type) { duckdb_scalar_function_add_parameter(made, type); });
    }
    with_type(make_type(function.form.result), [&](duckdb_logical_type type) { duckdb_scalar_function_set_return_type(made, type); });
    duckdb_scalar_function_set_special_handling(made); // of NULL, which some functions give another value for
    if (function.form.changes == bifun::change::every_call) {
        duckdb_scalar_function_set_volatile(made);
    }
    if (find_setting_functions() != nullptr) {
        find_setting_functions()->scalar_function_set_bind(made, bind_settings);
    }
    // Functions stay as long as the process; DuckDB changes nothing of them.
    duckdb_scalar_function_set_extra_info(made, const_cast<overload*>(&function), nullptr);
    duckdb_scalar_function_set_function(made, run);
    (void)duckdb_add_scalar_function_to_set(set, made);
    duckdb_destroy_scalar_function(&made);
}

std::string function_name(std::string_view builtin) {
    std::string name = "bifun_";
    for (const char letter : builtin) {
        name += static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    }
    return name;
}

const std::vector<overload>& all_functions() {
    static const std::vector<overload> functions = [] {
        std::vector<overload> made;
        for (const bifun::builtin& builtin : bifun::builtins) {
            const std::vector<overload> own = overloads_of(builtin.name);
            made.insert(made.end(), own.begin(), own.end());
        }
        return made;
    }();
    return functions;
}

bool register_set(duckdb_connection connection, std::string_view builtin, const std::string& name) {
    duckdb_scalar_function_set set = duckdb_create_scalar_function_set(name.c_str());
    bool is_empty = true;
    for (const overload& function : all_functions()) {
        if (function.form.builtin == builtin) {
            add_function(set, name, function);
            is_empty = false;
        }
    }
    const bool registered = is_empty || duckdb_register_scalar_function_set(connection, set) == DuckDBSuccess;
    duckdb_destroy_scalar_function_set(&set);
    return registered;
}

// A number in the environment, as these settings are of the process.
std::uint32_t setting_of_process(const char* name, std::uint32_t otherwise) {
    const char* const text = std::getenv(name);
    return text != nullptr && *text != '\0' ? static_cast<std::uint32_t>(std::strtoul(text, nullptr, 10)) : otherwise;
}

std::string register_all(duckdb_connection connection) {
    std::string fault = binding::load_library({.compatible_mode = setting_of_process("BIFUN_COMPATIBLE_MODE", 1),
                                               .charset_code = ZQ_CHARSET_UTF8,
                                               .case_sensitive = setting_of_process("BIFUN_CASE_SENSITIVE", 1)});
    if (!fault.empty()) {
        return fault;
    }
    if (find_setting_functions() != nullptr) {
        register_settings(connection, *find_setting_functions());
    }
    for (const bifun::builtin& builtin : bifun::builtins) {
        std::string_view names = bifun::spelling_of(builtin.name).names;
        bool registered = register_set(connection, builtin.name, function_name(builtin.name));
        while (!names.empty()) {
            const std::string_view name = names.substr(0, names.find(' '));
            registered &= register_set(connection, builtin.name, function_name(name));
            names.remove_prefix(std::min(names.size(), name.size() + 1));
        }
        if (!registered) {
            return "the functions " + function_name(builtin.name) + " cannot be registered";
        }
    }
    return "";
}

} // namespace
} // namespace duckdb_extension

#pragma GCC diagnostic ignored "-Wmissing-field-initializers" // DuckDB's macro defines its table of functions as {0}
DUCKDB_EXTENSION_ENTRYPOINT(duckdb_connection connection, duckdb_extension_info info, struct duckdb_extension_access* access) {
    try {
        const std::string fault = duckdb_extension::register_all(connection);
        if (fault.empty()) {
            return true;
        }
        access->set_error(info, ("bifun: " + fault).c_str());
    } catch (const std::exception& unexpected) {
        access->set_error(info, unexpected.what());
    }
    return false;
}
