// SPDX-License-Identifier: Apache-2.0
#include "engine/columns.h"

#include <algorithm>
#include <cstring>

#include "bop/frame/status.h"
#include "embedded/columns/column_storage.h"
#include "embedded/memory/allocation.h"
#include "embedded/memory/pending_failure.h"
#include "layouts/free_bytes.h"

using bifun::free_bytes::copy_bytes;
using bifun::free_bytes::copy_short;
using bifun::free_bytes::longest_short;
using zqengine::check_column;
using zqengine::column_storage;
using zqengine::storage_of;

namespace {

// ---- strings ----------------------------------------------------------------------------------------------------------

bifun_string& string_at(const bifun_column_data* data, std::uint32_t row) { return static_cast<bifun_string*>(data->values)[row]; }

// Nobody may follow what the row held before.
[[gnu::cold, gnu::noinline]] std::int32_t out_of_memory(column_storage& column, bifun_string& value) {
    value = {0, 0, nullptr};
    column.status = BIFUN_OUT_OF_MEMORY;
    return BIFUN_OUT_OF_MEMORY;
}

[[gnu::noinline]] std::int32_t assign_any(const bifun_column* result, std::uint32_t row, const std::uint8_t* data, std::uint32_t length,
                                          std::uint32_t trailing_blanks) {
    column_storage& column = storage_of(result->data);
    bifun_string& value = string_at(result->data, row);
    std::uint8_t* const bytes = zqengine::must_fail() ? nullptr : arena_take(column.string_bytes, length, 1);
    if (bytes == nullptr) {
        return out_of_memory(column, value);
    }
    value = {length, trailing_blanks, bytes};
    copy_bytes(bytes, data, length);
    return BIFUN_OK;
}

// assign_any, with a short value that fits without a call: a call in it would cost every row the saving of registers.
inline std::int32_t assign(const bifun_column* result, std::uint32_t row, const std::uint8_t* data, std::uint32_t length,
                           std::uint32_t trailing_blanks) {
    zqengine::arena& arena = storage_of(result->data).string_bytes;
    std::uint8_t* const bytes = arena.top;
    if (length > longest_short || static_cast<std::size_t>(arena.end - bytes) < length || zqengine::pending_failure()) [[unlikely]] {
        return assign_any(result, row, data, length, trailing_blanks);
    }
    arena.top = bytes + length;
    string_at(result->data, row) = {length, trailing_blanks, bytes};
    copy_short(bytes, data, length);
    return BIFUN_OK;
}

// ---- whole columns ----------------------------------------------------------------------------------------------------

struct every_row {
    std::uint32_t operator()(std::uint32_t k) const { return k; }
};

struct selected_row {
    const std::uint16_t* selection;
    std::uint32_t operator()(std::uint32_t k) const { return selection[k]; }
};

template <std::size_t Width> void gather(void* to, const void* from, const std::uint16_t* selection, std::uint32_t row_count) {
    auto* __restrict out = static_cast<std::uint8_t*>(to);
    const auto* __restrict in = static_cast<const std::uint8_t*>(from);
    for (std::uint32_t k = 0; k < row_count; ++k) {
        std::memcpy(out + k * Width, in + selection[k] * Width, Width);
    }
}

void gather_values(std::size_t width, void* to, const void* from, const std::uint16_t* selection, std::uint32_t row_count) {
    switch (width) {
    case 4:
        return gather<4>(to, from, selection, row_count);
    case 8:
        return gather<8>(to, from, selection, row_count);
    case sizeof(zqtime):
        return gather<sizeof(zqtime)>(to, from, selection, row_count);
    default:
        return gather<sizeof(xdec)>(to, from, selection, row_count);
    }
}

// Returns the first row for which there was no memory, or `row_count`. The values of NULL rows are not looked at.
template <class Row> std::uint32_t copy_strings(column_storage& to, const bifun_column_data& from, Row row_of, std::uint32_t row_count) {
    auto* const out = static_cast<bifun_string*>(to.data.values);
    const auto* const in = static_cast<const bifun_string*>(from.values);
    for (std::uint32_t k = 0; k < row_count; ++k) {
        const std::uint32_t row = row_of(k);
        if (from.null_flags[row] == 0) {
            continue;
        }
        const bifun_string value = in[row];
        std::uint8_t* const bytes = arena_take(to.string_bytes, value.length, 1);
        if (bytes == nullptr) [[unlikely]] {
            return k;
        }
        copy_bytes(bytes, value.data, value.length);
        out[k] = {value.length, value.trailing_blanks, bytes};
    }
    return row_count;
}

// Rows that could not be copied are NULL.
std::int32_t copy_failed(bifun_column* destination, std::uint32_t first_row, std::uint32_t row_count) {
    destination->no_nulls = 0;
    std::memset(destination->data->null_flags + first_row, 0, row_count - first_row);
    storage_of(destination->data).status = BIFUN_OUT_OF_MEMORY;
    return BIFUN_OUT_OF_MEMORY;
}

// ---- comparison -------------------------------------------------------------------------------------------------------

constexpr std::uint8_t blank = 0x20;

// How `length` bytes compare with as many blanks.
int compare_with_blanks(const std::uint8_t* bytes, std::uint64_t length) {
    const std::uint8_t* const end = bytes + length;
    const std::uint8_t* const other = std::find_if(bytes, end, [](std::uint8_t byte) { return byte != blank; });
    return other == end ? 0 : *other - blank;
}

} // namespace

// ---- setters ----------------------------------------------------------------------------------------------------------

int32_t bdta3_set_int(bifun_environment* /*environment*/, bifun_memory_object* /*memory*/, bifun_column* result, uint32_t row,
                      const bifun_int_constant* value) {
    static_cast<int32_t*>(result->data->values)[row] = value->value;
    return BIFUN_OK;
}

int32_t bdta3_set_int64(bifun_environment* /*environment*/, bifun_memory_object* /*memory*/, bifun_column* result, uint32_t row,
                        const bifun_bigint_constant* value) {
    static_cast<int64_t*>(result->data->values)[row] = value->value;
    return BIFUN_OK;
}

int32_t bdta3_set_double(bifun_environment* /*environment*/, bifun_memory_object* /*memory*/, bifun_column* result, uint32_t row,
                         const bifun_double_constant* value) {
    static_cast<double*>(result->data->values)[row] = value->value;
    return BIFUN_OK;
}

int32_t bdta3_set_dec(bifun_environment* /*environment*/, bifun_memory_object* /*memory*/, bifun_column* result, uint32_t row,
                      const bifun_decimal_constant* value) {
    static_cast<xdec*>(result->data->values)[row] = value->value;
    return BIFUN_OK;
}

int32_t bdta3_set_datetime(bifun_environment* /*environment*/, bifun_memory_object* /*memory*/, bifun_column* result, uint32_t row,
                           const bifun_datetime_constant* value) {
    static_cast<zqtime*>(result->data->values)[row] = value->value;
    return BIFUN_OK;
}

// ---- string and binary results ----------------------------------------------------------------------------------------

int32_t bdta3_col_assign_str(bifun_environment* /*environment*/, bifun_memory_object* /*memory*/, bifun_column* result, uint32_t row,
                             const uint8_t* data, uint32_t length, uint32_t trailing_blanks) {
    check_column(result->data, __func__);
    return assign(result, row, data, length, trailing_blanks);
}

int32_t bdta3_col_assign_bin(bifun_environment* /*environment*/, bifun_memory_object* /*memory*/, bifun_column* result, uint32_t row,
                             const uint8_t* data, uint32_t length) {
    check_column(result->data, __func__);
    return assign(result, row, data, length, 0);
}

int32_t bdta3_set_str_from_str_with_len(bifun_environment* /*environment*/, bifun_memory_object* /*memory*/, bifun_column* result,
                                        uint32_t row, const uint8_t* data, uint32_t length) {
    check_column(result->data, __func__);
    return assign(result, row, data, length, 0);
}

int32_t bdta3_colstr_copy(bifun_environment* /*environment*/, bifun_memory_object* /*memory*/, bifun_column* result, uint32_t row,
                          const bifun_string* source) {
    check_column(result->data, __func__);
    return assign(result, row, source->data, source->length, source->trailing_blanks);
}

uint8_t* bdta3_colstr_assign_without_value(bifun_environment* environment, bifun_memory_object* memory, bifun_column_data* result,
                                           uint32_t row, uint32_t length, uint32_t trailing_blanks) {
    check_column(result, __func__);
    uint8_t* const bytes = bdta3_col_space_alloc(environment, memory, result, length);
    bifun_string& value = string_at(result, row);
    if (bytes == nullptr) {
        out_of_memory(storage_of(result), value);
        return nullptr;
    }
    value = {length, trailing_blanks, bytes};
    return bytes;
}

uint8_t* bdta3_col_space_alloc(bifun_environment* /*environment*/, bifun_memory_object* /*memory*/, bifun_column_data* result,
                               uint32_t size) {
    check_column(result, __func__);
    column_storage& column = storage_of(result);
    uint8_t* const bytes = zqengine::must_fail() ? nullptr : arena_take(column.string_bytes, size, 1);
    if (bytes == nullptr) {
        column.status = BIFUN_OUT_OF_MEMORY;
    }
    return bytes;
}

// ---- whole columns ----------------------------------------------------------------------------------------------------

int32_t bdta3_col_copy(bifun_environment* /*environment*/, bifun_memory_object* /*memory*/, bifun_column* destination,
                       const bifun_column* source, uint32_t row_count) {
    check_column(destination->data, __func__);
    if (zqengine::must_fail()) {
        return copy_failed(destination, 0, row_count);
    }
    destination->no_nulls = source->no_nulls;
    if (row_count == 0) {
        return BIFUN_OK;
    }
    column_storage& to = storage_of(destination->data);
    const bifun_column_data& from = *source->data;
    const std::size_t width = bifun::value_width(to.type);
    const std::uint16_t* const selection = source->selection;
    if (selection == nullptr) {
        std::memcpy(to.data.null_flags, from.null_flags, row_count);
    } else {
        gather<1>(to.data.null_flags, from.null_flags, selection, row_count);
    }
    if (bifun::is_string(to.type)) {
        const std::uint32_t copied = selection == nullptr ? copy_strings(to, from, every_row{}, row_count)
                                                          : copy_strings(to, from, selected_row{selection}, row_count);
        return copied == row_count ? static_cast<int32_t>(BIFUN_OK) : copy_failed(destination, copied, row_count);
    }
    if (selection == nullptr) {
        std::memcpy(to.data.values, from.values, width * row_count);
    } else {
        gather_values(width, to.data.values, from.values, selection, row_count);
    }
    return BIFUN_OK;
}

// ---- string values ----------------------------------------------------------------------------------------------------

int32_t bdta3_colstr_cmp_with_blank(const bifun_string* a, const bifun_string* b) {
    const std::uint32_t stored = std::min(a->length, b->length);
    int difference = stored == 0 ? 0 : std::memcmp(a->data, b->data, stored);
    const std::uint64_t length_a = std::uint64_t{a->length} + a->trailing_blanks;
    const std::uint64_t length_b = std::uint64_t{b->length} + b->trailing_blanks;
    // One of the two may store bytes where the other counts blanks.
    if (difference == 0 && a->length > stored) {
        difference = compare_with_blanks(a->data + stored, std::min<std::uint64_t>(a->length, length_b) - stored);
    } else if (difference == 0 && b->length > stored) {
        difference = -compare_with_blanks(b->data + stored, std::min<std::uint64_t>(b->length, length_a) - stored);
    }
    if (difference != 0) {
        return difference;
    }
    return length_a < length_b ? -1 : static_cast<int32_t>(length_a > length_b);
}

void bdta3_colstr_trim(bifun_string* value) {
    const uint8_t* const data = value->data;
    uint32_t length = value->length;
    while (length > 0 && data[length - 1] == blank) {
        --length;
    }
    value->length = length;
    value->trailing_blanks = 0;
}
