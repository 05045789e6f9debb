// SPDX-License-Identifier: Apache-2.0
// What PostgreSQL finds in the module: its beginning, and one function for all calls. Every function of SQL is declared over that one,
// which finds out at the first call of a site for which of them it stands.
#include <cstring>

#include "adapters/binding/host_values.h"
#include "adapters/postgresql/datums.h"
#include "adapters/postgresql/errors.h"
#include "adapters/postgresql/session_clock.h"
#include "adapters/postgresql/settings.h"

#include "adapters/postgresql/api.h"

namespace postgresql_extension {
namespace {

// The function's name and types, as it is declared.
struct declaration {
    char name[NAMEDATALEN];
    Oid types[FUNC_MAX_ARGS];
    std::size_t count;
    Oid result;
};

void read_declaration(Oid function, declaration& made) {
    const HeapTuple row = SearchSysCache1(PROCOID, ObjectIdGetDatum(function));
    if (!HeapTupleIsValid(row)) {
        elog(ERROR, "cache lookup failed for function %u", function);
    }
    const auto* const declared = static_cast<const FormData_pg_proc*>(static_cast<const void*>(GETSTRUCT(row)));
    made.count = static_cast<std::size_t>(declared->proargtypes.dim1);
    made.result = declared->prorettype;
    std::memcpy(made.name, NameStr(declared->proname), sizeof made.name);
    std::memcpy(made.types, declared->proargtypes.values, made.count * sizeof(Oid));
    ReleaseSysCache(row);
}

// What is written in the query. A parameter may have another value when its expression is evaluated again.
bool is_literal(const FmgrInfo& function, std::size_t position) {
    const Node* const expression = function.fn_expr;
    if (expression == nullptr || !IsA(expression, FuncExpr)) {
        return false;
    }
    const List* const arguments = reinterpret_cast<const FuncExpr*>(expression)->args;
    return position < static_cast<std::size_t>(list_length(arguments)) && IsA(list_nth(arguments, static_cast<int>(position)), Const);
}

// Makes the site of a call, which is kept as long as PostgreSQL keeps what it knows of the function. Not inlined: its room on the stack
// would be that of every call.
[[gnu::noinline]] call_site* make_site(FmgrInfo& function) {
    apply_settings();
    declaration declared;
    read_declaration(function.fn_oid, declared);
    // What may fail comes first, so that no site is left behind.
    auto* const callback = static_cast<MemoryContextCallback*>(MemoryContextAlloc(function.fn_mcxt, sizeof(MemoryContextCallback)));
    failure_text failure{};
    call_site* const site = create_site(declared.name, {declared.types, declared.count}, declared.result, failure);
    if (site == nullptr) {
        report(failure);
    }
    for (std::size_t i = 0; i < declared.count; ++i) {
        site->arguments[i].is_literal = is_literal(function, i);
    }
    callback->func = [](void* made) { destroy_site(static_cast<call_site*>(made)); };
    callback->arg = site;
    MemoryContextRegisterResetCallback(function.fn_mcxt, callback);
    function.fn_extra = site;
    return site;
}

// The zone by which the engine's session goes, in minutes; none at first.
std::int32_t current_zone = ZQTIME_NO_ZONE;

constexpr std::int64_t seconds_to_2000 = std::int64_t{binding::days_to_2000} * SECS_PER_DAY;

// At the start of the transaction. Found once for it, as the values of its rows are of other times.
std::int32_t zone_of_transaction() {
    static TimestampTz start = 0;
    static const pg_tz* time_zone = nullptr;
    static std::int32_t zone = 0;
    if (start != GetCurrentTransactionStartTimestamp() || time_zone != session_timezone) {
        start = GetCurrentTransactionStartTimestamp();
        time_zone = session_timezone;
        zone = zone_at(start / USECS_PER_SEC + seconds_to_2000);
    }
    return zone;
}

std::int32_t zone_for(const call_site& site, FunctionCallInfo info) {
    const NullableDatum& first = info->args[0];
    if (site.moment == zone_moment::now || first.isnull) {
        return zone_of_transaction();
    }
    if (site.moment == zone_moment::unix_seconds) {
        return zone_at(DatumGetInt64(first.value));
    }
    switch (site.function->arguments[0]) {
    case host_type::date:
        return zone_of_local(std::int64_t{DatumGetDateADT(first.value)} * SECS_PER_DAY + seconds_to_2000);
    case host_type::timestamp:
        return zone_of_local(DatumGetTimestamp(first.value) / USECS_PER_SEC + seconds_to_2000);
    default:
        return zone_at(DatumGetTimestampTz(first.value) / USECS_PER_SEC + seconds_to_2000);
    }
}

Datum call(FunctionCallInfo info) {
    FmgrInfo& function = *info->flinfo;
    call_site* const site = function.fn_extra != nullptr ? static_cast<call_site*>(function.fn_extra) : make_site(function);
    apply_settings();
    show_arguments(info->args, function.fn_mcxt, *site);
    if (site->moment != zone_moment::none) {
        if (const std::int32_t zone = zone_for(*site, info); zone != current_zone) {
            const failure_text failure = set_zone(zone);
            if (failure.message != nullptr) {
                report(failure);
            }
            current_zone = zone;
        }
    }
    binding::row_result made;
    failure_text failure;
    if (!evaluate_site(*site, made, failure)) {
        report(failure);
    }
    if (made.column == nullptr || made.column->data->null_flags[0] == 0) {
        info->isnull = true;
        return 0;
    }
    return make_datum(made, *site->function);
}

} // namespace
} // namespace postgresql_extension

extern "C" {

PG_MODULE_MAGIC;

PGDLLEXPORT void _PG_init(void);
void _PG_init(void) { postgresql_extension::define_settings(); }

PG_FUNCTION_INFO_V1(bifun_call);
PGDLLEXPORT Datum bifun_call(PG_FUNCTION_ARGS) { return postgresql_extension::call(fcinfo); }

// Whether the functions can work in this database: tells so before any of them is declared.
PG_FUNCTION_INFO_V1(bifun_check_database);
PGDLLEXPORT Datum bifun_check_database(FunctionCallInfo /*info*/) {
    postgresql_extension::apply_settings();
    PG_RETURN_VOID();
}
}
