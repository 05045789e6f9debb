// SPDX-License-Identifier: Apache-2.0
// Batch columns that own their memory: what an executor fills, passes to bifun and reads.
#ifndef BIFUN_EMBEDDED_COLUMNS_COLUMN_STORAGE_H
#define BIFUN_EMBEDDED_COLUMNS_COLUMN_STORAGE_H

#include <cstdint>
#include <memory>

#include "bop/frame/contract.h"
#include "bop/frame/value_type.h"
#include "embedded/datetime/text.h"
#include "embedded/memory/arena.h"

namespace zqengine {

// `column` is what is passed to bifun; it has no selection vector of its own. `string_bytes` holds the bytes of string values.
struct column_storage {
    bifun_column column;
    bifun_column_data data;
    bifun::value_type type;
    datetime_kind kind; // of what its datetimes are to be written as
    std::uint32_t capacity;
    std::int32_t status; // -503 once an assignment has found no memory, until the column is cleared
    arena string_bytes;
};

// A column with room for `capacity` rows, all flags and values zero, or null when memory is exhausted.
[[nodiscard]] column_storage* create_column(bifun::value_type type, std::uint32_t capacity);
void destroy_column(column_storage* column);

// Forgets the string bytes and the status, so that the column can take the next batch. Flags and values stay as they are,
// but string values point to bytes that are used again: they must not be read before they are assigned.
void clear_column(column_storage& column);

// Has a column of strings tell what a look at its first `row_count` texts tells (columns_tell_texts in engine/statements.h). clear_column
// takes it back.
void tell_texts(column_storage& column, std::uint32_t row_count);

// Has it tell what the caller knows: ZQ_TEXTS_ANY, ZQ_TEXTS_UTF8 or ZQ_TEXTS_ASCII.
void set_known_texts(column_storage& column, std::int32_t known);

// Ends the process with a message unless a column of create_column has this data, or a copy of it. The operations that need such a column
// ask where BIFUN_CHECK_COLUMNS is defined, which it is in debug builds and under sanitizers.
void require_own_column(const bifun_column_data* data, const char* operation);
inline void check_column(const bifun_column_data* data, const char* operation) {
#ifdef BIFUN_CHECK_COLUMNS
    require_own_column(data, operation);
#else
    static_cast<void>(data);
    static_cast<void>(operation);
#endif
}

// The storage of such a column.
inline column_storage& storage_of(const bifun_column_data* data) { return *static_cast<column_storage*>(data->engine_header[0]); }

struct column_deleter {
    void operator()(column_storage* column) const { destroy_column(column); }
};
using column_pointer = std::unique_ptr<column_storage, column_deleter>;

template <class T> T* values_of(column_storage& column) { return static_cast<T*>(column.data.values); }
template <class T> const T* values_of(const column_storage& column) { return static_cast<const T*>(column.data.values); }

} // namespace zqengine

#endif
