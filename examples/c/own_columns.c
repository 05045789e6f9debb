/* SPDX-License-Identifier: Apache-2.0 */
/* An engine with columns and string storage of its own. It supplies the operations of engine/columns.h; those of text, decimals, datetimes
 * and memory it takes from the embedded engine.
 *     own_columns [libbifun.so.0] */
#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "bop/bifun.h"
#include "engine/charset.h"
#include "engine/columns.h"
#include "engine/memory.h"
#include "engine/statements.h"

/* ---- the columns ---- */

/* Strings lie in blocks, the newest of which has room left. */
typedef struct string_block {
    struct string_block* older;
    uint32_t size;
    uint32_t taken;
    uint8_t bytes[];
} string_block;

/* The library passes `column` and its data; the engine finds its own part by a word of the data's header. */
typedef struct own_column {
    bifun_column column;
    bifun_column_data data;
    size_t width;
    string_block* strings;
    int32_t status; /* the library does not look at the statuses of string assignments: the engine does, after the call */
} own_column;

static own_column* inside(const bifun_column_data* data) { return data->engine_header[0]; }

static own_column* create_own_column(size_t width, uint32_t capacity) {
    own_column* const made = calloc(1, sizeof *made);
    if (made != NULL) {
        made->width = width;
        made->column.data = &made->data;
        made->data.engine_header[0] = made;
        made->data.null_flags = calloc(capacity, 1);
        made->data.values = calloc(capacity, width);
    }
    if (made == NULL || made->data.null_flags == NULL || made->data.values == NULL) {
        fprintf(stderr, "own_columns: out of memory\n");
        exit(1);
    }
    return made;
}

static void destroy_own_column(own_column* column) {
    while (column->strings != NULL) {
        string_block* const block = column->strings;
        column->strings = block->older;
        free(block);
    }
    free(column->data.values);
    free(column->data.null_flags);
    free(column);
}

/* ---- the operations ---- */

uint8_t* bdta3_col_space_alloc(bifun_environment* environment, bifun_memory_object* memory, bifun_column_data* result, uint32_t size) {
    (void)environment;
    (void)memory;
    enum { BLOCK_SIZE = 4096 };
    own_column* const column = inside(result);
    if (column->strings == NULL || column->strings->size - column->strings->taken < size) {
        const uint32_t block_size = size > BLOCK_SIZE ? size : BLOCK_SIZE;
        string_block* const block = malloc(sizeof *block + block_size);
        if (block == NULL) {
            column->status = BIFUN_OUT_OF_MEMORY;
            return NULL;
        }
        *block = (string_block){.older = column->strings, .size = block_size};
        column->strings = block;
    }
    uint8_t* const bytes = column->strings->bytes + column->strings->taken;
    column->strings->taken += size;
    return bytes;
}

uint8_t* bdta3_colstr_assign_without_value(bifun_environment* environment, bifun_memory_object* memory, bifun_column_data* result,
                                           uint32_t row, uint32_t length, uint32_t trailing_blanks) {
    uint8_t* const bytes = bdta3_col_space_alloc(environment, memory, result, length);
    const bifun_string none = {0};
    ((bifun_string*)result->values)[row] =
        bytes == NULL ? none : (bifun_string){.length = length, .trailing_blanks = trailing_blanks, .data = bytes};
    return bytes;
}

int32_t bdta3_col_assign_str(bifun_environment* environment, bifun_memory_object* memory, bifun_column* result, uint32_t row,
                             const uint8_t* data, uint32_t length, uint32_t trailing_blanks) {
    uint8_t* const bytes = bdta3_colstr_assign_without_value(environment, memory, result->data, row, length, trailing_blanks);
    if (bytes == NULL) {
        return BIFUN_OUT_OF_MEMORY;
    }
    if (length != 0) {
        memcpy(bytes, data, length);
    }
    return BIFUN_OK;
}

int32_t bdta3_col_assign_bin(bifun_environment* environment, bifun_memory_object* memory, bifun_column* result, uint32_t row,
                             const uint8_t* data, uint32_t length) {
    return bdta3_col_assign_str(environment, memory, result, row, data, length, 0);
}

int32_t bdta3_set_str_from_str_with_len(bifun_environment* environment, bifun_memory_object* memory, bifun_column* result, uint32_t row,
                                        const uint8_t* data, uint32_t length) {
    return bdta3_col_assign_str(environment, memory, result, row, data, length, 0);
}

int32_t bdta3_colstr_copy(bifun_environment* environment, bifun_memory_object* memory, bifun_column* result, uint32_t row,
                          const bifun_string* source) {
    return bdta3_col_assign_str(environment, memory, result, row, source->data, source->length, source->trailing_blanks);
}

/* Only strings come here: the library copies the others itself, as setters_are_plain_stores lets it. */
int32_t bdta3_col_copy(bifun_environment* environment, bifun_memory_object* memory, bifun_column* destination, const bifun_column* source,
                       uint32_t row_count) {
    destination->no_nulls = source->no_nulls;
    for (uint32_t k = 0; k < row_count; ++k) {
        const uint32_t row = source->selection == NULL ? k : source->selection[k];
        const bifun_string* const value = (const bifun_string*)source->data->values + row;
        destination->data->null_flags[k] = source->data->null_flags[row];
        if (source->data->null_flags[row] != 0 && bdta3_colstr_copy(environment, memory, destination, k, value) != BIFUN_OK) {
            return BIFUN_OUT_OF_MEMORY;
        }
    }
    return BIFUN_OK;
}

/* ---- what the engine says of itself ---- */

/* Fixed-width values are stored by the library; the free bytes of these columns do not lie open, and results do not refer to arguments. Of
 * the embedded engine's part all is true that it says. */
bifun_engine_statements zq_engine_statements = {
    .size = sizeof(bifun_engine_statements),
    .setters_are_plain_stores = 1,
    .free_bytes_are_open = 0,
    .ascii_is_single_byte = 1,
    .decimal_layout = XDEC_LAYOUT_PACKED_128,
    .datetime_layout = ZQTIME_LAYOUT_PACKED,
    .pads_as_described = 1,
    .utf8_is_unicode = 1,
    .number_texts_as_described = 1,
    .results_may_refer = 0,
};

/* ---- calls ---- */

static void print(const char* call, int32_t status, const own_column* result, uint32_t rows) {
    printf("%s:", call);
    if (status == BIFUN_OK) {
        status = result->status;
    }
    if (status != BIFUN_OK) {
        printf(" status %d\n", (int)status);
        return;
    }
    const bifun_string* const values = result->data.values;
    for (uint32_t row = 0; row < rows; ++row) {
        if (result->data.null_flags[row] == 0) {
            printf(" NULL");
        } else {
            printf(" [%.*s%*s]", (int)values[row].length, (const char*)values[row].data, (int)values[row].trailing_blanks, "");
        }
    }
    printf("\n");
}

int main(int argument_count, char** arguments) {
    void* const library = dlopen(argument_count > 1 ? arguments[1] : "libbifun.so.0", RTLD_LAZY | RTLD_LOCAL);
    if (library == NULL) {
        fprintf(stderr, "own_columns: %s\n", dlerror());
        return 1;
    }
#define FIND(name) ((__typeof__(&(name)))dlsym(library, #name))
    FIND(bifun_dll_var_init)(1, ZQ_CHARSET_UTF8, 1);
    bifun_memory_object* const memory = rt_memobj_create_ex(NULL, 0, 4096, __FILE__, __LINE__);
    if (memory == NULL) {
        fprintf(stderr, "own_columns: out of memory\n");
        return 1;
    }

    /* Arguments are plain arrays: of them the library needs flags, values and a selection, and no operation of the engine. */
    bifun_string names[] = {{.length = 5, .data = (uint8_t*)"Adams"}, {0}, {.length = 3, .trailing_blanks = 2, .data = (uint8_t*)"Lee"}};
    uint8_t name_flags[] = {1, 0, 1};
    bifun_column_data name_data = {.null_flags = name_flags, .values = names};
    bifun_column name_column = {.data = &name_data};

    own_column* const result = create_own_column(sizeof(bifun_string), 3);
    bifun_string_constant other = {.not_null = 1, .length = 6, .inline_bytes = "& sons"};
    print("NVL(x, '& sons')", FIND(bnvl_varchar_av)(NULL, memory, &name_column, &other, &result->column, 3), result, 3);
    print("CONCAT(x, '& sons')", FIND(bconcat_av_str)(NULL, memory, &name_column, &other, &result->column, 3), result, 3);
    bifun_int_constant thousand = {.not_null = 1, .value = 1000};
    own_column* const wide = create_own_column(sizeof(bifun_string), 3);
    int32_t status = FIND(blpad_def_av_str)(NULL, memory, &name_column, &thousand, &wide->column, 3);
    own_column* const lengths = create_own_column(sizeof(int32_t), 3);
    status = status == BIFUN_OK ? wide->status : status;
    if (status == BIFUN_OK) {
        status = FIND(blength_space_a_str)(NULL, memory, &wide->column, &lengths->column, 3);
    }
    const int32_t* const values = lengths->data.values;
    printf("LENGTH(LPAD(x, 1000)): %d %d, status %d\n", (int)values[0], (int)values[2], (int)status);

    destroy_own_column(result);
    destroy_own_column(wide);
    destroy_own_column(lengths);
    rt_memobj_destroy(NULL, memory);
    return 0;
}
