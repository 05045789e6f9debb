// SPDX-License-Identifier: Apache-2.0
// The types that a user gives to columns, of one file or of several.
#ifndef BIFUN_HOST_TABLES_GIVEN_TYPES_H
#define BIFUN_HOST_TABLES_GIVEN_TYPES_H

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "host/tables/table.h"

namespace host {

// Reads "name:CHAR(10),staff.price:DECIMAL"; a name may stand in double quotes, and has one type. Names that differ
// in case alone may be those of two columns.
given_types parse_types(std::string_view text);

// The types with others that count instead for the names that they have. Names that differ in case alone are the same one, unless each is
// that of a column, as `is_column` tells.
given_types with_types(given_types types, const given_types& later, const std::function<bool(const std::string&)>& is_column);

// What is said of formats that may not be meant as they are written.
std::vector<std::string> remarks_on_formats(const given_types& types);

// The same text of them.
std::string given_types_text(const given_types& types);

// The column that a name means, the name of the table before it or not; null where the table has none.
table_column* find_given_column(table& source, std::string_view name);

// Fails where a type is given to what is a column of none of the files, and where a column has two. The headers of those other than
// `known`, which may be null, are read only where it lacks a column, and those of files that can be read only once are not.
void check_given_types(const given_types& types, table* known, const std::vector<std::string>& files, const file_options& options,
                       const session_settings& settings);

} // namespace host

#endif
