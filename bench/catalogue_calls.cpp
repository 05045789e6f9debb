// SPDX-License-Identifier: Apache-2.0
#include "bench/catalogue_calls.h"

#include <dlfcn.h>

#include <charconv>
#include <map>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include "engine/charset.h"
#include "engine/memory.h"
#include "engine/statements.h"

namespace bifun::bench {
namespace {

using column_key = std::tuple<value_type, double, double, std::string_view, value_form, std::size_t, bool>;

const zqengine::column_storage& generated_column(value_type type, const typical_values& values, std::size_t position, bool nulls) {
    static std::map<column_key, zqengine::column_pointer> columns;
    zqengine::column_pointer& column = columns[{type, values.low, values.high, values.letters, values.form, position, nulls}];
    if (column == nullptr) {
        column.reset(zqengine::create_column(type, generated_rows));
        if (column == nullptr || !fill_column(*column, values, position + 1, generated_rows)) {
            throw std::runtime_error("out of memory");
        }
        if (nulls) {
            make_nulls(*column, position + 100, generated_rows);
        }
    }
    return *column;
}

// One row of every two next to each other, which of them by chance.
std::vector<std::uint16_t> make_selection(std::size_t position) {
    std::vector<std::uint16_t> selection(most_rows_per_call);
    for (std::size_t k = 0; k < selection.size(); ++k) {
        selection[k] = static_cast<std::uint16_t>(2 * k + (random_at(position + 200, k) & 1));
    }
    return selection;
}

const std::uint16_t* selection_of(std::size_t position) {
    static const std::vector<std::uint16_t> selections[most_arguments] = {make_selection(0), make_selection(1), make_selection(2),
                                                                          make_selection(3), make_selection(4)};
    return selections[position].data();
}

void move_to_row(call_argument& argument, std::uint32_t row) {
    if (argument.column != nullptr) {
        argument.data = argument.column->data;
        argument.data.null_flags += row;
        argument.data.values = static_cast<std::uint8_t*>(argument.data.values) + value_width(argument.column->type) * row;
    }
}

// What the engine says of itself, all of it or nothing.
void announce(bool all) { zq_engine_statements.size = all ? std::uint32_t{sizeof zq_engine_statements} : 0; }

} // namespace

void memory_object_deleter::operator()(bifun_memory_object* memory) const { rt_memobj_destroy(environment, memory); }

std::unique_ptr<prepared_call> prepare_call(const entry_point& entry, const call_path& path, std::uint32_t rows_per_call) {
    auto call = std::make_unique<prepared_call>();
    call->entry = &entry;
    call->path = &path;
    call->rows_per_call = rows_per_call;
    call->rows_read = path.selection ? 2 * rows_per_call : rows_per_call;
    for (std::size_t i = 0; i < entry.argument_count; ++i) {
        const auto [kind, type] = entry.argument_list[i];
        const typical_values values = values_of_argument(entry, i);
        call_argument& argument = call->arguments[i];
        if (kind == argument_kind::constant) {
            argument.constant = make_constant(type, values.constant);
            call->pointers[i] = record_address(argument.constant);
        } else {
            argument.column = &generated_column(type, values, i, path.nulls);
            argument.view = {argument.column->column.no_nulls, path.selection ? selection_of(i) : nullptr, &argument.data};
            call->pointers[i] = &argument.view;
        }
    }
    call->memory = {rt_memobj_create_ex(&call->environment, 0, 4096, __FILE__, __LINE__), {&call->environment}};
    call->result.reset(zqengine::create_column(entry.result, rows_per_call));
    if (call->memory == nullptr || call->result == nullptr) {
        throw std::runtime_error("out of memory");
    }
    return call;
}

std::int32_t call_at(prepared_call& call, void* function, std::uint32_t row) {
    for (std::size_t i = 0; i < call.entry->argument_count; ++i) {
        move_to_row(call.arguments[i], row);
    }
    if (is_string(call.entry->result)) {
        zqengine::clear_column(*call.result);
    }
    announce(!call.path->setters);
    const std::int32_t status =
        call.entry->invoke(function, &call.environment, call.memory.get(), call.pointers, &call.result->column, call.rows_per_call);
    announce(true);
    return status;
}

void* open_library(const char* path) {
    void* const library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    void* const initialise = library == nullptr ? nullptr : dlsym(library, "bifun_dll_var_init");
    if (initialise == nullptr) {
        throw std::runtime_error(dlerror());
    }
    reinterpret_cast<decltype(&bifun_dll_var_init)>(initialise)(1, ZQ_CHARSET_UTF8, 1);
    return library;
}

void* function_of(void* library, const entry_point& entry) { return dlsym(library, entry.symbol); }

std::uint32_t parse_rows_per_call(std::string_view text) {
    std::uint32_t rows = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), rows);
    if (error != std::errc{} || end != text.data() + text.size() || rows == 0 || rows > most_rows_per_call) {
        throw std::runtime_error("--rows_per_call takes a number from 1 to " + std::to_string(most_rows_per_call));
    }
    return rows;
}

} // namespace bifun::bench
