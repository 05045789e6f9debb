// SPDX-License-Identifier: Apache-2.0
// A session with the PostgreSQL server that the environment names, as libpq does.
#ifndef BIFUN_TESTS_ADAPTERS_POSTGRESQL_SESSION_H
#define BIFUN_TESTS_ADAPTERS_POSTGRESQL_SESSION_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

struct pg_conn;

namespace bifun::test {

struct session_closer {
    void operator()(pg_conn* session) const;
};
using session_pointer = std::unique_ptr<pg_conn, session_closer>;

// With settings as in PGOPTIONS, such as "-c bifun.compatible_mode=2". Throws where there is no such server.
session_pointer open_session(const std::string& database = "", const std::string& options = "");

struct session_answer {
    std::string error; // "22023 message / detail", empty where the statements succeeded
    std::vector<std::vector<std::optional<std::string>>> rows;
};

// Runs one statement, or several ones and gives the rows of the last.
session_answer query(pg_conn& session, const std::string& sql);

} // namespace bifun::test

#endif
