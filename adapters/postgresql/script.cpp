// SPDX-License-Identifier: Apache-2.0
// Writes the script of the extension, for CREATE EXTENSION, or with --update for ALTER EXTENSION ... UPDATE: that declares what is new and
// leaves the rest. What an older version had with another result is made anew, which PostgreSQL refuses where something depends on it; what
// this one has not stays, and says so when it is called.
#include <cstdio>
#include <string>
#include <string_view>

#include <fmt/format.h>

#include "adapters/postgresql/sql_functions.h"

namespace postgresql_extension {
namespace {

std::string quoted(std::string_view text) {
    std::string made = "'";
    for (const char letter : text) {
        made += letter == '\'' ? "''" : std::string(1, letter);
    }
    return made + "'";
}

// Functions are named with their schema: PostgreSQL has some of the same names and types, and finds its own first.
std::string form_of(const sql_function& function) {
    std::string types;
    for (const host_type type : function.arguments) {
        types += fmt::format("{}{}", types.empty() ? "" : ", ", names_of(type).sql);
    }
    return fmt::format("@extschema@.\"{}\"({})", function.name, types);
}

std::string declaration_of(const sql_function& function, const bifun::builtin& builtin, bool updates) {
    const std::string form = form_of(function);
    constexpr std::string_view volatilities[] = {"IMMUTABLE", "STABLE", "VOLATILE"};
    const bifun::change change = change_of(function);
    return fmt::format("CREATE {}FUNCTION {} RETURNS {} LANGUAGE C {}{} PARALLEL {} AS 'MODULE_PATHNAME', 'bifun_call';\n"
                       "COMMENT ON FUNCTION {} IS {};\n",
                       updates ? "OR REPLACE " : "", form, names_of(function.result).sql, volatilities[static_cast<std::size_t>(change)],
                       function.form.is_null_for_null ? " STRICT" : "", change == bifun::change::every_call ? "RESTRICTED" : "SAFE", form,
                       quoted(fmt::format("{}: {}", builtin.form, builtin.meaning)));
}

// A function is not replaced by one with another result.
std::string removal_of_other_results() {
    std::string known;
    for (const bifun::builtin& builtin : bifun::builtins) {
        for (const sql_function& function : functions_of(builtin)) {
            known += fmt::format("{}({}, '{}')", known.empty() ? "" : ",\n", quoted(form_of(function)), names_of(function.result).sql);
        }
    }
    return fmt::format("DO $$\n"
                       "DECLARE\n"
                       "    former regprocedure;\n"
                       "BEGIN\n"
                       "    FOR former IN SELECT oid FROM pg_proc, (VALUES\n{}) AS known(form, result)\n"
                       "        WHERE oid = to_regprocedure(form) AND prorettype <> result::regtype LOOP\n"
                       "        EXECUTE 'DROP FUNCTION ' || former;\n"
                       "    END LOOP;\n"
                       "END $$;\n",
                       known);
}

std::string script(bool updates) {
    std::string made =
        fmt::format("\\echo Use \"{}\" to load this file. \\quit\n"
                    "CREATE FUNCTION @extschema@.check_database() RETURNS void LANGUAGE C AS 'MODULE_PATHNAME', 'bifun_check_database';\n"
                    "SELECT @extschema@.check_database();\n"
                    "DROP FUNCTION @extschema@.check_database();\n",
                    updates ? "ALTER EXTENSION bifun UPDATE" : "CREATE EXTENSION bifun");
    if (updates) {
        made += removal_of_other_results();
    }
    for (const bifun::builtin& builtin : bifun::builtins) {
        for (const sql_function& function : functions_of(builtin)) {
            made += declaration_of(function, builtin, updates);
        }
    }
    return made;
}

} // namespace
} // namespace postgresql_extension

int main(int argument_count, char** arguments) {
    const std::string made = postgresql_extension::script(argument_count > 1 && std::string_view(arguments[1]) == "--update");
    const bool written = std::fwrite(made.data(), 1, made.size(), stdout) == made.size() && std::fclose(stdout) == 0;
    return written ? 0 : 1;
}
