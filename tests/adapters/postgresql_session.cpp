// SPDX-License-Identifier: Apache-2.0
#include "tests/adapters/postgresql_session.h"

#include <libpq-fe.h>

#include <stdexcept>

namespace bifun::test {
namespace {

std::string field_of(const PGresult* result, int field) {
    const char* const text = PQresultErrorField(result, field);
    return text != nullptr ? text : "";
}

} // namespace

void session_closer::operator()(pg_conn* session) const { PQfinish(session); }

session_pointer open_session(const std::string& database, const std::string& options) {
    const char* const keywords[] = {"dbname", "options", nullptr};
    const char* const values[] = {database.c_str(), options.c_str(), nullptr};
    session_pointer made(PQconnectdbParams(keywords, values, 0));
    if (PQstatus(made.get()) != CONNECTION_OK) {
        throw std::runtime_error(PQerrorMessage(made.get()));
    }
    return made;
}

session_answer query(pg_conn& session, const std::string& sql) {
    const std::unique_ptr<PGresult, void (*)(PGresult*)> result(PQexec(&session, sql.c_str()), PQclear);
    session_answer made;
    const ExecStatusType status = PQresultStatus(result.get());
    if (status != PGRES_TUPLES_OK && status != PGRES_COMMAND_OK) {
        const std::string detail = field_of(result.get(), PG_DIAG_MESSAGE_DETAIL);
        made.error = field_of(result.get(), PG_DIAG_SQLSTATE) + " " + field_of(result.get(), PG_DIAG_MESSAGE_PRIMARY) +
                     (detail.empty() ? "" : " / " + detail);
        return made;
    }
    for (int row = 0; row < PQntuples(result.get()); ++row) {
        made.rows.emplace_back();
        for (int column = 0; column < PQnfields(result.get()); ++column) {
            const bool is_null = PQgetisnull(result.get(), row, column) != 0;
            made.rows.back().push_back(is_null ? std::optional<std::string>() : PQgetvalue(result.get(), row, column));
        }
    }
    return made;
}

} // namespace bifun::test
