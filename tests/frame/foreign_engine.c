/* SPDX-License-Identifier: Apache-2.0 */
/* An engine that is not ours: C11, with columns, decimals and datetimes of its own, that says nothing of itself and lacks most operations.
 * It loads the library by name, without linking it, and calls exports of every kind. Exits with 0 if every result is the expected one. */
#include <dlfcn.h>
#include <stdio.h>
#include <string.h>

#include "tests/frame/public_headers.h"

enum { ROWS = 4 };

/* ---- the engine ---- */

struct bifun_environment {
    unsigned setter_calls, copies, comparisons;
    int out_of_memory;
    unsigned strangers; /* calls with another environment or memory object */
};

static bifun_environment environment;
static bifun_memory_object memory;

static void visit(const bifun_environment* passed_environment, const bifun_memory_object* passed_memory, unsigned* count) {
    ++*count;
    environment.strangers += passed_environment != &environment || passed_memory != &memory;
}

int32_t bdta3_set_int(bifun_environment* e, bifun_memory_object* m, bifun_column* result, uint32_t row, const bifun_int_constant* value) {
    visit(e, m, &environment.setter_calls);
    environment.strangers += value->not_null != 1;
    ((int32_t*)result->data->values)[row] = value->value;
    return -503; /* callers take no notice of it */
}

int32_t bdta3_set_dec(bifun_environment* e, bifun_memory_object* m, bifun_column* result, uint32_t row,
                      const bifun_decimal_constant* value) {
    visit(e, m, &environment.setter_calls);
    ((xdec*)result->data->values)[row] = value->value;
    return 0;
}

int32_t bdta3_set_int64(bifun_environment* e, bifun_memory_object* m, bifun_column* result, uint32_t row,
                        const bifun_bigint_constant* value) {
    visit(e, m, &environment.setter_calls);
    ((int64_t*)result->data->values)[row] = value->value;
    return 0;
}

/* Large objects of this engine know nothing but their length, and what is answered when they are asked for it. */
struct bifun_large_object {
    int64_t length;
    int32_t status;
};

int32_t nblob_get_length(bifun_environment* e, const bifun_large_object* object, int64_t* length) {
    e->strangers += e != &environment;
    *length = object->length;
    return object->status;
}

/* The width of a value is this engine's own word of a column. */
int32_t bdta3_col_copy(bifun_environment* e, bifun_memory_object* m, bifun_column* destination, const bifun_column* source,
                       uint32_t row_count) {
    visit(e, m, &environment.copies);
    const size_t width = *(const size_t*)source->data->engine_word;
    memcpy(destination->data->null_flags, source->data->null_flags, row_count);
    memcpy(destination->data->values, source->data->values, row_count * width);
    return e->out_of_memory ? -503 : 0;
}

/* Decimals of this engine: a digit in the last byte, and a mark of who wrote it in the one before. */
int32_t xdec_cmp(const xdec* a, const xdec* b) {
    ++environment.comparisons;
    return a->bytes[29] - b->bytes[29];
}

/* A datetime of this engine is a day after 1 October 2000, in its last byte. Such days are counted where the calendar has been adjusted,
 * which the byte before says. */
int32_t zqtime_encode(zqtime* result, int32_t year, uint32_t month, uint32_t day, uint32_t hour, uint32_t minute, uint32_t second,
                      uint32_t microsecond, int32_t zone) {
    environment.strangers += year != 2000 || month != 10 || day != 1 || hour + minute + second + microsecond != 4 || zone != ZQTIME_NO_ZONE;
    *result = (zqtime){{0}};
    return 1;
}

void zqtime_glgl_adjust(zqtime* value) { value->bytes[10] = 1; }

int32_t zqtime_diff_day(const zqtime* a, const zqtime* b) { return a->bytes[10] == 1 ? a->bytes[11] - b->bytes[11] : -1; }

/* ---- the calls ---- */

static int failures;

static void expect(int holds, const char* what) {
    if (!holds) {
        fprintf(stderr, "not so: %s\n", what);
        ++failures;
    }
}

static void* find(void* library, const char* name) {
    void* const symbol = dlsym(library, name);
    expect(symbol != NULL, name);
    return symbol;
}

/* dlsym returns a data pointer; ISO C converts none to a function, POSIX does. */
#define FIND(function) (__extension__(__typeof__(&(function))) find(library, #function))

/* A column over arrays of its own, and a result column of the same kind. */
#define MAKE_COLUMN(name, type, ...)                                                                                                       \
    static size_t name##_width = sizeof(type);                                                                                             \
    static type name##_values[ROWS] = __VA_ARGS__;                                                                                         \
    static uint8_t name##_flags[ROWS] = {1, 0, 1, 1};                                                                                      \
    static bifun_column_data name##_data = {{NULL}, name##_flags, &name##_width, name##_values};                                           \
    static bifun_column name = {0, NULL, &name##_data}

MAKE_COLUMN(ints, int32_t, {1, 99, 0, 3});
MAKE_COLUMN(decimals, xdec, {{{[28] = 'a', [29] = 5}}, {{0}}, {{[28] = 'a', [29] = 7}}, {{[28] = 'a', [29] = 9}}});
MAKE_COLUMN(datetimes, zqtime, {{{[11] = 24}}, {{0}}, {{[11] = 7}}, {{[11] = 6}}});

static struct bifun_large_object long_object = {5LL << 30, 7}, short_object = {1, 0}, lost_object = {1, -4711};
MAKE_COLUMN(objects, bifun_large_object*, {&long_object, NULL, &short_object, &lost_object});

MAKE_COLUMN(int_result, int32_t, {0});
MAKE_COLUMN(bigint_result, int64_t, {0});
MAKE_COLUMN(decimal_result, xdec, {{{0}}});

int main(int argument_count, char** arguments) {
    /* The operations that it lacks must be looked up when they are called, not when the library is loaded. */
    expect(argument_count == 2 && dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL) == NULL, "an operation is missing");
    void* const library = argument_count == 2 ? dlopen(arguments[1], RTLD_LAZY | RTLD_LOCAL) : NULL;
    if (library == NULL) {
        fprintf(stderr, "usage: foreign_engine LIBRARY: %s\n", argument_count == 2 ? dlerror() : "no library given");
        return 2;
    }
    const bifun_settings* const settings = find(library, "global_bifun_var");
    expect(FIND(bifun_dll_var_init)(2, 1, 1) == 0 && settings->compatible_mode == 2, "the settings are stored");

    expect(FIND(bceil_a_math_int)(&environment, &memory, &ints, &int_result, ROWS) == 0, "CEIL succeeds");
    expect(environment.setter_calls == 3, "CEIL goes through the setter for each row that is not NULL");
    expect(int_result_values[0] == 1 && int_result_values[1] == 0 && int_result_values[3] == 3, "CEIL(1, NULL, 0, 3)");
    expect(int_result_flags[0] == 1 && int_result_flags[1] == 0 && int_result.no_nulls == 0, "NULL flags of CEIL");

    bifun_decimal_constant seven = {1, {{[28] = 'b', [29] = 7}}};
    expect(FIND(bgreatest_av_do_math_dec)(&environment, &memory, &decimals, &seven, &decimal_result, ROWS) == 0, "GREATEST succeeds");
    expect(decimal_result_values[0].bytes[28] == 'b' && decimal_result_values[2].bytes[28] == 'b' &&
               decimal_result_values[3].bytes[28] == 'a' && environment.comparisons == 3,
           "GREATEST(x, 7), which takes the second of equal values, by the engine's comparison");
    expect(FIND(bnvl_dec_av)(&environment, &memory, &decimals, &seven, &decimal_result, ROWS) == 0, "NVL succeeds");
    expect(decimal_result_values[0].bytes[29] == 5 && decimal_result_values[1].bytes[28] == 'b' && environment.copies == 1,
           "NVL(x, 7), which begins with a copy");
    environment.out_of_memory = 1;
    decimal_result.no_nulls = 1;
    expect(FIND(bnvl_dec_av)(&environment, &memory, &decimals, &seven, &decimal_result, ROWS) == -503 && decimal_result.no_nulls == 0,
           "NVL without memory, which promises nothing");

    expect(FIND(bdayofweek_a_date)(&environment, &memory, &datetimes, &int_result, ROWS) == 0, "DAYOFWEEK succeeds");
    expect(int_result_values[0] == 4 && int_result_flags[1] == 0 && int_result_values[2] == 1 && int_result_values[3] == 7,
           "DAYOFWEEK of 24, NULL, 7 and 6 days after a Sunday");

    bigint_result.no_nulls = 1;
    expect(FIND(blengthb_blob_a_str)(&environment, &memory, &objects, &bigint_result, ROWS) == -4711, "LENGTHB fails as the engine does");
    expect(bigint_result_values[0] == 5LL << 30 && bigint_result_flags[1] == 0 && bigint_result_values[2] == 1,
           "LENGTHB of 5 GiB, NULL and a byte");
    expect(bigint_result_flags[3] == 0 && bigint_result.no_nulls == 0, "LENGTHB of an object that cannot be measured");

    expect(environment.strangers == 0, "every operation is given the environment, the memory object and a value that is not NULL");
    expect(dlclose(library) == 0, "the library can be unloaded");
    return failures == 0 ? 0 : 1;
}
