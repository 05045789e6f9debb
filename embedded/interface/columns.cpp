// SPDX-License-Identifier: Apache-2.0
// Columns by their C names.

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "bop/frame/status.h"
#include "embedded/columns/column_storage.h"
#include "embedded/columns/value_text.h"
#include "embedded/large_objects/large_object.h"
#include "embedded/zqengine.h"
#include "engine/columns.h"
#include "engine/datetime.h"

using bifun::value_type;
using zqengine::check_column;
using zqengine::column_storage;
using zqengine::datetime_kind;
using zqengine::storage_of;

namespace {

static_assert(ZQDT_DATE - 1 == static_cast<int>(datetime_kind::date));
static_assert(ZQDT_TIME - 1 == static_cast<int>(datetime_kind::time));
static_assert(ZQDT_DATETIME - 1 == static_cast<int>(datetime_kind::datetime));

bool is_type(int32_t type) { return type >= ZQENGINE_BOOL && type <= ZQENGINE_BLOB; }

std::uint8_t* place_of(const column_storage& column, std::uint32_t row) {
    return static_cast<std::uint8_t*>(column.data.values) + row * bifun::value_width(column.type);
}

// BOOL and INT are stored alike.
bool has_values_of(const column_storage& column, value_type type) {
    return column.type == type || (type == value_type::INT && column.type == value_type::BOOL);
}

template <class T> std::int32_t set_value(const bifun_column* column, std::uint32_t row, value_type type, const T& value) {
    const column_storage& storage = storage_of(column->data);
    if (row >= storage.capacity || !has_values_of(storage, type)) {
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    std::memcpy(place_of(storage, row), &value, sizeof value);
    column->data->null_flags[row] = 1;
    return BIFUN_OK;
}

std::int32_t set_string(bifun_column* column, std::uint32_t row, const void* bytes, std::uint32_t length, std::uint32_t trailing_blanks) {
    column_storage& storage = storage_of(column->data);
    std::uint8_t* const copy = arena_take(storage.string_bytes, length, 1);
    if (copy == nullptr) {
        return BIFUN_OUT_OF_MEMORY;
    }
    if (length != 0) {
        std::memcpy(copy, bytes, length);
    }
    zqengine::values_of<bifun_string>(storage)[row] = {length, trailing_blanks, copy};
    column->data->null_flags[row] = 1;
    column->data->engine_word = nullptr; // ZQ_TEXTS_ANY
    return BIFUN_OK;
}

// Whether a text of that length has room, whose length is told in any case.
bool has_room(std::uint64_t length, std::size_t size, std::size_t* told) {
    *told = length;
    return length < size;
}

std::int32_t write_string(const bifun_string& value, char* buffer, std::size_t size, std::size_t* length) {
    if (!has_room(std::uint64_t{value.length} + value.trailing_blanks, size, length)) {
        return BIFUN_RESULT_TOO_LONG;
    }
    if (value.length != 0) {
        std::memcpy(buffer, value.data, value.length);
    }
    std::memset(buffer + value.length, ' ', value.trailing_blanks);
    buffer[*length] = '\0';
    return BIFUN_OK;
}

std::int32_t write_large_object(const bifun_large_object& object, char* buffer, std::size_t size, std::size_t* length) {
    if (!has_room(static_cast<std::uint64_t>(zqengine::length_of(object)), size, length)) {
        return BIFUN_RESULT_TOO_LONG;
    }
    std::size_t read = 0;
    const std::int32_t status = zqengine::read_large_object(object, 0, reinterpret_cast<std::uint8_t*>(buffer), *length, &read);
    buffer[read] = '\0';
    return status;
}

} // namespace

// ---- columns ----------------------------------------------------------------------------------------------------------

bifun_column* zqengine_column_create(int32_t type, uint32_t capacity) {
    column_storage* const storage = is_type(type) ? zqengine::create_column(static_cast<value_type>(type), capacity) : nullptr;
    return storage == nullptr ? nullptr : &storage->column;
}

void zqengine_column_destroy(bifun_column* column) {
    if (column != nullptr) {
        check_column(column->data, __func__);
        zqengine::destroy_column(&storage_of(column->data));
    }
}

void zqengine_column_clear(bifun_column* column) {
    check_column(column->data, __func__);
    column_storage& storage = storage_of(column->data);
    zqengine::clear_column(storage);
    std::memset(storage.data.null_flags, 0, storage.capacity);
    // A function may give a row a flag and leave the value as it was: it must not point to bytes of the batch before.
    std::memset(storage.data.values, 0, bifun::value_width(storage.type) * storage.capacity);
    column->no_nulls = 0;
}

void zqengine_column_prepare(bifun_column* column, uint32_t row_count) {
    check_column(column->data, __func__);
    column_storage& storage = storage_of(column->data);
    zqengine::clear_column(storage);
    if (bifun::is_string(storage.type)) {
        if (row_count == 1) { // for which a call of memset takes longer
            *zqengine::values_of<bifun_string>(storage) = {};
        } else {
            std::memset(storage.data.values, 0, sizeof(bifun_string) * row_count);
        }
    }
    // A function may clear this flag only, and leave it otherwise.
    column->no_nulls = 1;
}

void zqengine_column_tell_texts(bifun_column* column, uint32_t row_count) {
    check_column(column->data, __func__);
    column_storage& storage = storage_of(column->data);
    if (storage.type == value_type::VARCHAR) {
        zqengine::tell_texts(storage, std::min(row_count, storage.capacity));
    }
}

void zqengine_column_set_known_texts(bifun_column* column, int32_t known) {
    check_column(column->data, __func__);
    column_storage& storage = storage_of(column->data);
    if (storage.type == value_type::VARCHAR) {
        zqengine::set_known_texts(storage, known);
    }
}

int32_t zqengine_column_type(const bifun_column* column) {
    check_column(column->data, __func__);
    return static_cast<int32_t>(storage_of(column->data).type);
}

uint32_t zqengine_column_capacity(const bifun_column* column) {
    check_column(column->data, __func__);
    return storage_of(column->data).capacity;
}

int32_t zqengine_column_status(const bifun_column* column) {
    check_column(column->data, __func__);
    return storage_of(column->data).status;
}

int32_t zqengine_column_set_kind(bifun_column* column, int32_t kind) {
    check_column(column->data, __func__);
    if (kind < ZQDT_DATE || kind > ZQDT_DATETIME) {
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    storage_of(column->data).kind = static_cast<datetime_kind>(kind - ZQDT_DATE);
    return BIFUN_OK;
}

// ---- filling ----------------------------------------------------------------------------------------------------------

int32_t zqengine_column_set_int(bifun_column* column, uint32_t row, int32_t value) {
    check_column(column->data, __func__);
    return set_value(column, row, value_type::INT, value);
}

int32_t zqengine_column_set_bigint(bifun_column* column, uint32_t row, int64_t value) {
    check_column(column->data, __func__);
    return set_value(column, row, value_type::BIGINT, value);
}

int32_t zqengine_column_set_double(bifun_column* column, uint32_t row, double value) {
    check_column(column->data, __func__);
    return set_value(column, row, value_type::DOUBLE, value);
}

int32_t zqengine_column_set_decimal(bifun_column* column, uint32_t row, const xdec* value) {
    check_column(column->data, __func__);
    return set_value(column, row, value_type::DECIMAL, *value);
}

int32_t zqengine_column_set_datetime(bifun_column* column, uint32_t row, const zqtime* value) {
    check_column(column->data, __func__);
    return set_value(column, row, value_type::DATETIME, *value);
}

int32_t zqengine_column_set_interval_ym(bifun_column* column, uint32_t row, const bifun_interval_ym* value) {
    check_column(column->data, __func__);
    return set_value(column, row, value_type::INTERVAL_YM, *value);
}

int32_t zqengine_column_set_interval_dt(bifun_column* column, uint32_t row, const bifun_interval_dt* value) {
    check_column(column->data, __func__);
    return set_value(column, row, value_type::INTERVAL_DT, *value);
}

int32_t zqengine_column_set_large_object(bifun_column* column, uint32_t row, bifun_large_object* object) {
    check_column(column->data, __func__);
    return object == nullptr ? BIFUN_ARGUMENT_OUT_OF_DOMAIN : set_value(column, row, value_type::BLOB, object);
}

int32_t zqengine_column_set_string(bifun_column* column, uint32_t row, const void* bytes, uint32_t length, uint32_t trailing_blanks) {
    check_column(column->data, __func__);
    const column_storage& storage = storage_of(column->data);
    const bool fits = bifun::is_string(storage.type) && (storage.type == value_type::VARCHAR || trailing_blanks == 0);
    return fits && row < storage.capacity ? set_string(column, row, bytes, length, trailing_blanks) : BIFUN_ARGUMENT_OUT_OF_DOMAIN;
}

int32_t zqengine_column_set_text(bifun_column* column, uint32_t row, const char* text, uint32_t length) {
    check_column(column->data, __func__);
    const column_storage& storage = storage_of(column->data);
    if (row >= storage.capacity || storage.type == value_type::BLOB) {
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    if (bifun::is_string(storage.type)) {
        return set_string(column, row, text, length, 0);
    }
    const std::int32_t status = zqengine::read_value(storage.type, {text, length}, place_of(storage, row));
    if (status == BIFUN_OK) {
        column->data->null_flags[row] = 1;
    }
    return status;
}

int32_t zqengine_column_set_null(bifun_column* column, uint32_t row) {
    check_column(column->data, __func__);
    if (row >= storage_of(column->data).capacity) {
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    column->data->null_flags[row] = 0;
    column->no_nulls = 0;
    return BIFUN_OK;
}

// ---- reading ----------------------------------------------------------------------------------------------------------

int32_t zqengine_column_get_text(const bifun_column* column, uint32_t row, char* buffer, size_t size, size_t* length) {
    check_column(column->data, __func__);
    const column_storage& storage = storage_of(column->data);
    if (row >= storage.capacity) {
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    if (column->data->null_flags[row] == 0) {
        *length = 0;
        if (size != 0) {
            buffer[0] = '\0';
        }
        return ZQENGINE_NULL;
    }
    if (bifun::is_string(storage.type)) {
        return write_string(zqengine::values_of<bifun_string>(storage)[row], buffer, size, length);
    }
    if (storage.type == value_type::BLOB) {
        return write_large_object(*zqengine::values_of<const bifun_large_object*>(storage)[row], buffer, size, length);
    }
    char text[zqengine::value_text_size];
    const std::size_t written = zqengine::write_value(storage.type, storage.kind, place_of(storage, row), text);
    return write_string({static_cast<std::uint32_t>(written), 0, reinterpret_cast<std::uint8_t*>(text)}, buffer, size, length);
}
