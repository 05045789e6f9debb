// SPDX-License-Identifier: Apache-2.0
// What may stand where the cursor of the shell is.
#ifndef BIFUN_HOST_SHELL_COMPLETION_H
#define BIFUN_HOST_SHELL_COMPLETION_H

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/shell/shell_table.h"

namespace host {

struct completions {
    std::size_t replaced = 0;       // bytes before the cursor that each of them stands for
    std::vector<std::string> texts; // sorted, none twice
};

// Of a statement: keywords and functions, in small letters where the word begins with one, tables and columns; behind FROM tables
// alone, and nothing within text and comments. `before` is all of the statement before the cursor.
completions complete_statement(std::string_view before, const std::vector<shell_table>& tables);

// Those of the words that begin so, ignoring case.
completions complete_word(std::string_view begun, std::span<const std::string> words);

// Names of files that begin so.
completions complete_path(std::string_view begun);

// Names of all built-ins, as SQL has them.
std::vector<std::string> function_names();

} // namespace host

#endif
