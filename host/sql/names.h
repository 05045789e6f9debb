// SPDX-License-Identifier: Apache-2.0
// Names of columns and tables as queries write them.
#ifndef BIFUN_HOST_SQL_NAMES_H
#define BIFUN_HOST_SQL_NAMES_H

#include <cstddef>
#include <string>
#include <string_view>

namespace host {

// The name, in double quotes where it is no word or a reserved one.
std::string name_in_query(const std::string& name);

// The place of a name in a query, ignoring case, that holds this place, ends at it or only has blanks in between; npos where there is none.
std::size_t find_name_around(std::string_view sql, std::string_view name, std::size_t offset);

// A name as it stands behind a place, before the parser folds it: NAME for name.
std::string_view name_as_written(std::string_view sql, std::size_t offset, std::string_view folded);

// The name of a column as the query spells it, at the place of the column and behind the name of a table: ID where the parser has made id
// of it. `folded` where it stands in quotes.
std::string_view column_as_spelled(std::string_view sql, std::size_t offset, bool has_table, std::string_view folded);

} // namespace host

#endif
