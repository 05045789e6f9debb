// SPDX-License-Identifier: Apache-2.0
#include "adapters/postgresql/sql_functions.h"

#include <algorithm>
#include <cctype>

namespace postgresql_extension {
namespace {

using binding::signature;
using binding::sql_type;

// Object identifiers of PostgreSQL's own types never change.
constexpr host_type_names type_names[] = {
    {16, "boolean"},
    {21, "smallint"},
    {23, "integer"},
    {20, "bigint"},
    {1700, "numeric"},
    {701, "double precision"},
    {1082, "date"},
    {1083, "time"},
    {1114, "timestamp"},
    {1266, "time with time zone"},
    {1184, "timestamp with time zone"},
    {1186, "interval"},
    {25, "text"},
    {1042, "character"},
    {17, "bytea"},
};

constexpr std::size_t most_arguments_joined = 8;
constexpr std::size_t most_arguments_of_character = 3; // each of them doubles the functions

host_type host_type_of(sql_type type) {
    switch (type) {
    case sql_type::boolean:
        return host_type::boolean;
    case sql_type::integer:
        return host_type::integer;
    case sql_type::bigint:
        return host_type::bigint;
    case sql_type::decimal:
        return host_type::numeric;
    case sql_type::double_precision:
        return host_type::double_precision;
    case sql_type::date:
        return host_type::date;
    case sql_type::time:
        return host_type::time;
    case sql_type::timestamp:
        return host_type::timestamp;
    case sql_type::time_with_zone:
        return host_type::time_with_zone;
    case sql_type::timestamp_with_zone:
        return host_type::timestamp_with_zone;
    case sql_type::interval_ym:
    case sql_type::interval_dt:
        return host_type::interval;
    case sql_type::varbinary:
        return host_type::bytea;
    default:
        return host_type::text;
    }
}

using type_list = std::vector<host_type>;

bool is_number(host_type type) { return type >= host_type::smallint && type <= host_type::double_precision; }

// Whether PostgreSQL converts an argument of the type for a parameter without being told to, and how far that is in INT -> BIGINT ->
// DECIMAL
// -> DOUBLE, for all arguments together.
bool takes(const type_list& parameters, const type_list& arguments, int& distance) {
    distance = 0;
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        const bool widens = is_number(parameters[i]) && is_number(arguments[i]) && parameters[i] > arguments[i];
        if (!widens && parameters[i] != arguments[i]) {
            return false;
        }
        distance += static_cast<int>(parameters[i]) - static_cast<int>(arguments[i]);
    }
    return true;
}

// Numbers that no function takes as they are would all become double precision, the type that PostgreSQL prefers. So where several
// functions take narrower ones there is another one for these.
void add_narrower_numbers(std::vector<sql_function>& functions) {
    const std::vector<sql_function> own = functions;
    for (const sql_function& wide : own) {
        const host_type widest = std::ranges::max(wide.arguments, {}, [](host_type type) { return is_number(type) ? type : host_type{}; });
        for (host_type narrow = host_type::smallint; is_number(widest) && narrow < widest;
             narrow = static_cast<host_type>(static_cast<int>(narrow) + 1)) {
            type_list types = wide.arguments;
            std::ranges::replace(types, widest, narrow);
            const sql_function* nearest = nullptr;
            int least = 0;
            int count = 0;
            for (const sql_function& other : own) {
                int distance = 0;
                if (other.arguments.size() == types.size() && takes(other.arguments, types, distance)) {
                    nearest = nearest == nullptr || distance < least ? &other : nearest;
                    least = nearest == &other ? distance : least;
                    ++count;
                }
            }
            const bool is_new = std::ranges::find(functions, types, &sql_function::arguments) == functions.end();
            if (count > 1 && is_new) {
                functions.push_back({wide.name, nearest->form, types, nearest->result});
            }
        }
    }
}

// The same with char(n) in place of texts that vary, in any of the places.
void add_characters(std::vector<sql_function>& functions) {
    const std::vector<sql_function> own = functions;
    for (const sql_function& of_texts : own) {
        std::vector<std::size_t> places;
        for (std::size_t i = 0; i < of_texts.arguments.size(); ++i) {
            if (of_texts.arguments[i] == host_type::text && !binding::contains(of_texts.form.constants, i)) {
                places.push_back(i);
            }
        }
        if (places.size() > most_arguments_of_character) {
            continue;
        }
        for (std::uint32_t set = 1; set < std::uint32_t{1} << places.size(); ++set) {
            sql_function made = of_texts;
            for (std::size_t k = 0; k < places.size(); ++k) {
                made.arguments[places[k]] = (set >> k & 1) != 0 ? host_type::character : host_type::text;
            }
            functions.push_back(std::move(made));
        }
    }
}

std::string lower(std::string_view name) {
    std::string made(name);
    std::ranges::transform(made, made.begin(), [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return made;
}

// In lower case.
std::vector<std::string> names_of(const bifun::builtin& builtin) {
    std::vector<std::string> names{lower(builtin.name)};
    std::string_view further = bifun::spelling_of(builtin.name).names;
    while (!further.empty()) {
        const std::string_view name = further.substr(0, further.find(' '));
        names.push_back(lower(name));
        further.remove_prefix(std::min(further.size(), name.size() + 1));
    }
    return names;
}

} // namespace

const host_type_names& names_of(host_type type) { return type_names[static_cast<std::size_t>(type)]; }

std::vector<sql_function> functions_of(const bifun::builtin& builtin) {
    std::vector<sql_function> functions;
    for (const signature& form : binding::signatures_of(builtin.name)) {
        type_list types;
        for (const sql_type type : form.types()) {
            types.push_back(host_type_of(type));
        }
        functions.push_back({lower(builtin.name), form, types, host_type_of(form.result)});
        while (form.takes_more && types.size() < most_arguments_joined) {
            types.push_back(types.back());
            functions.push_back({lower(builtin.name), form, types, host_type_of(form.result)});
        }
    }
    add_narrower_numbers(functions);
    add_characters(functions);
    const std::size_t count = functions.size();
    for (const std::string& name : names_of(builtin)) {
        for (std::size_t i = 0; i < count && name != functions[0].name; ++i) {
            functions.push_back(functions[i]);
            functions.back().name = name;
        }
    }
    return functions;
}

const bifun::builtin* find_builtin(std::string_view name) {
    for (const bifun::builtin& builtin : bifun::builtins) {
        for (const std::string& known : names_of(builtin)) {
            if (known == name) {
                return &builtin;
            }
        }
    }
    return nullptr;
}

bifun::change change_of(const sql_function& function) {
    const bool shows_moments = function.result == host_type::timestamp_with_zone ||
                               std::ranges::find(function.arguments, host_type::timestamp_with_zone) != function.arguments.end();
    return shows_moments ? std::max(function.form.changes, bifun::change::per_session) : function.form.changes;
}

} // namespace postgresql_extension
