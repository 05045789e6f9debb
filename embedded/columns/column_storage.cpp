// SPDX-License-Identifier: Apache-2.0
#include "embedded/columns/column_storage.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "embedded/memory/allocation.h"

namespace zqengine {
namespace {

std::size_t value_bytes(bifun::value_type type, std::uint32_t capacity) { return bifun::value_width(type) * capacity; }

void* allocate_zeroed(std::size_t size) {
    void* const memory = allocate(size);
    if (memory != nullptr) {
        std::memset(memory, 0, size);
    }
    return memory;
}

// The third word of the header of our columns points to it.
constexpr char own_column_mark = 0;
constexpr std::size_t mark_word = 2;

} // namespace

column_storage* create_column(bifun::value_type type, std::uint32_t capacity) {
    void* const memory = allocate(sizeof(column_storage));
    if (memory == nullptr) {
        return nullptr;
    }
    column_storage* const column = new (memory) column_storage{};
    column->type = type;
    column->kind = datetime_kind::datetime;
    column->capacity = capacity;
    column->column.data = &column->data;
    column->data.engine_header[0] = column;
    column->data.engine_header[1] = static_cast<bdta3_free_bytes*>(&column->string_bytes);
    column->data.engine_header[mark_word] = const_cast<char*>(&own_column_mark);
    column->data.null_flags = static_cast<std::uint8_t*>(allocate_zeroed(capacity));
    column->data.values = allocate_zeroed(value_bytes(type, capacity));
    if (column->data.null_flags == nullptr || column->data.values == nullptr) {
        destroy_column(column);
        return nullptr;
    }
    return column;
}

void destroy_column(column_storage* column) {
    if (column == nullptr) {
        return;
    }
    arena_release(column->string_bytes);
    release(column->data.values, value_bytes(column->type, column->capacity));
    release(column->data.null_flags, column->capacity);
    release(column, sizeof(column_storage));
}

void clear_column(column_storage& column) {
    arena_clear(column.string_bytes);
    column.data.engine_word = nullptr; // ZQ_TEXTS_ANY
    column.status = 0;
}

void require_own_column(const bifun_column_data* data, const char* operation) {
    if (data != nullptr && data->engine_header[mark_word] == &own_column_mark) {
        return;
    }
    static_cast<void>(std::fprintf(stderr,
                                   "libzqengine: %s: the column is not of this engine: the columns that it writes are made by "
                                   "zqengine_column_create (embedded/zqengine.h)\n",
                                   operation));
    std::abort();
}

} // namespace zqengine
