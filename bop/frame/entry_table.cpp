// SPDX-License-Identifier: Apache-2.0
#include "bop/frame/entry_table.h"

#include "bop/frame/entry_points.h"

namespace bifun {
namespace {

// An entry point with the signature that it is exported with.
template <auto entry> struct adapter;
template <value_type result, class... Arguments, status (*entry)(batch_of<result>, Arguments...)> struct adapter<entry> {
    template <value_type type> static const bifun_column* given(column_of<type>);
    template <value_type type> static const typename storage<type>::constant* given(constant_of<type>);

    static status call(bifun_environment* environment, bifun_memory_object* memory, decltype(given(Arguments{}))... arguments,
                       bifun_column* result_column, std::uint32_t row_count) {
        const typed_batch<result> batch{{environment, memory, result_column, row_count}};
        return entry(batch, Arguments{arguments}...);
    }
};

} // namespace

const bifun_instruction_sets::entry_table entry_table = {
#define EXPORT(symbol, builtin, result, ...) adapter<entry::symbol>::call,
#include "bop/exports.def"
};

} // namespace bifun
