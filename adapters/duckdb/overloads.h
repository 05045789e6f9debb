// SPDX-License-Identifier: Apache-2.0
// The functions that DuckDB gets for a built-in.
//
// DuckDB has no type for decimals of any width, and converting to the widest one takes it longer than most functions. So where a decimal is
// the only number of a call its parameter is of any type. That one wins over all parameters to which an argument would have to be
// converted: so beside it there is a function for each type that is no decimal's and would be converted.
#ifndef BIFUN_ADAPTERS_DUCKDB_OVERLOADS_H
#define BIFUN_ADAPTERS_DUCKDB_OVERLOADS_H

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "adapters/binding/signature.h"
#include "adapters/duckdb/api.h"

namespace duckdb_extension {

// A parameter whose vectors tell themselves of which type they are.
struct open_parameter {
    std::size_t position;
    duckdb_type declared;
};

struct overload {
    binding::signature form;
    std::size_t argument_count; // more than the signature has where it takes more
    std::optional<open_parameter> open;
    bool writes_arguments;

    [[nodiscard]] binding::sql_type type_of(std::size_t position) const {
        return form.type_list[position < form.argument_count ? position : form.argument_count - 1];
    }
    [[nodiscard]] bool is_open(std::size_t position) const { return open && open->position == position; }
};

std::vector<overload> overloads_of(std::string_view builtin);

} // namespace duckdb_extension

#endif
