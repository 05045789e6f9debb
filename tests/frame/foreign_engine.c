/* An engine that is not ours: C11, with columns, decimals and operations of its own, that says nothing of itself. It loads the library
 * by name, without linking it, and calls exports of every kind. Exits with 0 if every result is the expected one. The public headers are
 * C11: every one of them, twice. */
#include <dlfcn.h>
#include <stdio.h>
#include <string.h>

#include "bop/bifun.h"
#include "engine/charset.h"
#include "engine/columns.h"
#include "engine/datetime.h"
#include "engine/decimal.h"
#include "engine/interval.h"
#include "engine/memory.h"
#include "engine/number_check.h"
#include "engine/number_format.h"
#include "engine/search.h"
#include "engine/session.h"
#include "engine/statements.h"
#include "engine/strings.h"

#include "bop/bifun.h"
#include "engine/charset.h"
#include "engine/columns.h"
#include "engine/datetime.h"
#include "engine/decimal.h"
#include "engine/interval.h"
#include "engine/memory.h"
#include "engine/number_check.h"
#include "engine/number_format.h"
#include "engine/search.h"
#include "engine/session.h"
#include "engine/statements.h"
#include "engine/strings.h"

enum { ROWS = 4 };

/* ---- the engine ---- */

struct bifun_environment {
    unsigned setter_calls;
    unsigned copies;
    unsigned strings;
    unsigned comparisons;
    unsigned texts;
    int out_of_memory;
    int cannot_reverse;
    unsigned strangers; /* calls with another environment or memory object */
};

static bifun_environment environment;
static bifun_memory_object memory;
static uint8_t string_space[1024];
static uint32_t string_space_used;

static void visit(const bifun_environment* passed_environment, const bifun_memory_object* passed_memory, unsigned* count) {
    ++*count;
    environment.strangers += passed_environment != &environment || passed_memory != &memory;
}

#define SETTER(name, record, type)                                                                                                         \
    int32_t name(bifun_environment* e, bifun_memory_object* m, bifun_column* result, uint32_t row, const record* value) {                  \
        visit(e, m, &environment.setter_calls);                                                                                            \
        environment.strangers += value->not_null != 1;                                                                                     \
        ((type*)result->data->values)[row] = value->value;                                                                                 \
        return -503; /* callers take no notice of it */                                                                                    \
    }
SETTER(bdta3_set_int, bifun_int_constant, int32_t)
SETTER(bdta3_set_int64, bifun_bigint_constant, int64_t)
SETTER(bdta3_set_double, bifun_double_constant, double)

int32_t bdta3_col_assign_str(bifun_environment* e, bifun_memory_object* m, bifun_column* result, uint32_t row, const uint8_t* data,
                             uint32_t length, uint32_t trailing_blanks) {
    visit(e, m, &environment.strings);
    bifun_string* const value = (bifun_string*)result->data->values + row;
    *value = (bifun_string){length, trailing_blanks, string_space + string_space_used};
    string_space_used += length;
    if (length > 0) {
        memcpy(value->data, data, length);
    }
    return 0;
}

int32_t bdta3_col_assign_bin(bifun_environment* e, bifun_memory_object* m, bifun_column* result, uint32_t row, const uint8_t* data,
                             uint32_t length) {
    return bdta3_col_assign_str(e, m, result, row, data, length, 0);
}

/* The width of a value is this engine's own word of a column. */
int32_t bdta3_col_copy(bifun_environment* e, bifun_memory_object* m, bifun_column* destination, const bifun_column* source,
                       uint32_t row_count) {
    visit(e, m, &environment.copies);
    if (e->out_of_memory) {
        return -503;
    }
    const size_t width = *(const size_t*)source->data->engine_word;
    destination->no_nulls = source->no_nulls;
    for (uint32_t k = 0; k < row_count; ++k) {
        const uint32_t row = source->selection != NULL ? source->selection[k] : k;
        destination->data->null_flags[k] = source->data->null_flags[row];
        memcpy((uint8_t*)destination->data->values + k * width, (const uint8_t*)source->data->values + row * width, width);
    }
    return 0;
}

/* Decimals of this engine: a digit in the last byte, and a mark of who wrote it in the one before. */
int32_t xdec_cmp(const xdec* a, const xdec* b) {
    ++environment.comparisons;
    return a->bytes[29] - b->bytes[29];
}

/* Every character of this engine has two bytes. */
uint32_t zq_mbstrlen_ex(const uint8_t* text, uint32_t length) {
    environment.texts += text != NULL;
    return length / 2;
}

void trim_left(const uint8_t* set, uint32_t set_length, const uint8_t** text, uint32_t* length) {
    for (environment.strangers += set_length != 2; *length > 0 && memcmp(*text, set, 2) == 0; *length -= 2) {
        *text += 2;
    }
}

uint8_t* zq_mbsrev_ex(uint8_t* text, uint32_t length) {
    for (uint32_t first = 0, last = length - 2; first < last; first += 2, last -= 2) {
        uint8_t character[2];
        memcpy(character, text + first, 2);
        memcpy(text + first, text + last, 2);
        memcpy(text + last, character, 2);
    }
    return environment.cannot_reverse ? NULL : text;
}

/* A datetime of this engine is a year after 2000, in its last byte. */
uint32_t zqtime_get_year(const zqtime* value) { return 2000U + value->bytes[11]; }

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
MAKE_COLUMN(bigints, int64_t, {-7, 99, 8, INT64_MIN});
MAKE_COLUMN(doubles, double, {1.5, 99, -0.0, -2});
MAKE_COLUMN(decimals, xdec, {{{[28] = 'a', [29] = 5}}, {{0}}, {{[28] = 'a', [29] = 7}}, {{[28] = 'a', [29] = 9}}});
static uint8_t text[] = "ab";
MAKE_COLUMN(strings, bifun_string, {{2, 1, text}, {0}, {0, 0, NULL}, {1, 0, text}});
static uint8_t pairs[3][6] = {"abcdab", "abxyzw", "ab"};
MAKE_COLUMN(texts, bifun_string, {{6, 0, pairs[0]}, {0}, {6, 1, pairs[1]}, {2, 2, pairs[2]}});
MAKE_COLUMN(datetimes, zqtime, {{{[11] = 24}}, {{0}}, {{[11] = 0}}, {{[11] = 99}}});

MAKE_COLUMN(int_result, int32_t, {0});
MAKE_COLUMN(bigint_result, int64_t, {0});
MAKE_COLUMN(double_result, double, {0});
MAKE_COLUMN(decimal_result, xdec, {{{0}}});
MAKE_COLUMN(string_result, bifun_string, {{0}});

static int string_is(uint32_t row, const char* bytes, uint32_t length, uint32_t trailing_blanks) {
    const bifun_string* const value = &string_result_values[row];
    return value->length == length && value->trailing_blanks == trailing_blanks && memcmp(value->data, bytes, length) == 0;
}

int main(int argument_count, char** arguments) {
    /* It lacks operations that no call below needs: they must be looked up when they are called, not when the library is loaded. */
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

    expect(FIND(babs_a_math_int)(&environment, &memory, &bigints, &bigint_result, ROWS) == -6102, "ABS of the smallest BIGINT");
    expect(bigint_result_values[0] == 7 && bigint_result_values[2] == 8 && bigint_result_values[3] == 0, "ABS before and at the failure");
    expect(environment.setter_calls == 5, "ABS sets the rows before the failing one");

    const bifun_bigint_constant five = {1, 5};
    expect(FIND(bmod_av_do_math_int64)(&environment, &memory, &bigints, &five, &bigint_result, ROWS) == 0, "MOD succeeds");
    expect(bigint_result_values[0] == -2 && bigint_result_values[2] == 3 && bigint_result_values[3] == -3, "MOD(x, 5)");
    expect(FIND(bceil_a_process_int64)(&environment, &memory, -4, &bigint_result, 1) == 0 && bigint_result_values[1] == -4, "CEIL(-4)");
    expect(environment.setter_calls == 9, "MOD and the kernel of CEIL go through the setter");

    const bifun_double_constant zero = {1, 0.0};
    expect(FIND(bleast_av_do_math)(&environment, &memory, &doubles, &zero, &double_result, ROWS) == 0, "LEAST succeeds");
    expect(double_result_values[0] == 0 && double_result_values[2] == 0 && double_result_values[3] == -2, "LEAST(x, 0.0)");
    expect(environment.setter_calls == 12, "LEAST goes through the setter");

    bifun_decimal_constant seven = {1, {{[28] = 'b', [29] = 7}}};
    expect(FIND(bgreatest_av_do_math_dec)(&environment, &memory, &decimals, &seven, &decimal_result, ROWS) == 0, "GREATEST succeeds");
    expect(decimal_result_values[0].bytes[28] == 'b' && decimal_result_values[2].bytes[28] == 'b' &&
               decimal_result_values[3].bytes[28] == 'a',
           "GREATEST(x, 7), which takes the second of equal values");
    expect(environment.comparisons == 3, "GREATEST compares by the engine's operation, for rows that are not NULL");

    expect(FIND(bgreatest_av_do_math_bigint)(&environment, &memory, &bigints, &five, &bigint_result, ROWS) == 0, "GREATEST succeeds");
    expect(bigint_result_values[0] == 5 && bigint_result_values[2] == 8 && bigint_result_values[3] == 5, "GREATEST(x, 5)");
    expect(environment.setter_calls == 12, "GREATEST of BIGINT stores its results itself");

    expect(FIND(bnvl_dec_av)(&environment, &memory, &decimals, &seven, &decimal_result, ROWS) == 0, "NVL succeeds");
    expect(decimal_result_values[0].bytes[29] == 5 && decimal_result_values[1].bytes[28] == 'b' && decimal_result_flags[1] == 1,
           "NVL(x, 7)");
    expect(environment.copies == 1, "NVL begins with a copy");

    bifun_string_constant word = {1, 3, 2, "xyz", NULL};
    expect(FIND(bnvl_varchar_av)(&environment, &memory, &strings, &word, &string_result, ROWS) == 0, "NVL of strings succeeds");
    expect(string_is(0, "ab", 2, 1) && string_is(1, "xyz", 3, 2) && string_is(2, "xyz", 3, 2) && string_is(3, "a", 1, 0),
           "NVL takes an empty string for NULL");
    expect(environment.strings == 2, "NVL assigns the rows that it replaces");

    const uint16_t reversed[ROWS] = {3, 2, 1, 0};
    bifun_column condition = {0, reversed, &ints_data};
    const bifun_bigint_constant nothing = {0, 0};
    expect(FIND(bifoperator_int64_aav)(&environment, &memory, &condition, &bigints, &nothing, &bigint_result, ROWS) == 0, "IF succeeds");
    expect(bigint_result_flags[0] == 0 && bigint_result_flags[3] == 1 && bigint_result_values[3] == INT64_MIN, "IF(c, x, NULL)");
    expect(FIND(blnnvl_a_bool)(&environment, &memory, &condition, &int_result, ROWS) == 0, "LNNVL succeeds");
    expect(int_result_values[0] == 1 && int_result_values[3] == 0 && int_result.no_nulls == 1, "LNNVL(c)");

    const bifun_int_constant both = {1, 0};
    const bifun_string_constant set = {1, 2, 0, "ab", NULL};
    expect(FIND(btrim_vav_str)(&environment, &memory, &both, &texts, &set, &string_result, ROWS) == 0, "TRIM succeeds");
    expect(string_is(0, "cd", 2, 0) && string_is(2, "xyzw", 4, 1) && string_is(3, "", 0, 2), "TRIM(BOTH 'ab' FROM s)");
    expect(string_result_flags[0] == 1 && string_result_flags[1] == 0 && string_result.no_nulls == 0, "NULL flags of TRIM");
    expect(memcmp(pairs[0], "abcdab", 6) == 0, "TRIM puts its argument back");
    expect(environment.strings == 5 && environment.texts > 0, "TRIM assigns its rows, and asks how many characters the set has");
    environment.cannot_reverse = 1;
    expect(FIND(btrim_vav_str)(&environment, &memory, &both, &texts, &set, &string_result, ROWS) == -6108, "TRIM that cannot reverse");
    expect(string_result_flags[0] == 0, "TRIM that failed has a NULL for the row");

    expect(FIND(byear_a_date)(&environment, &memory, &datetimes, &int_result, ROWS) == 0, "YEAR succeeds");
    expect(int_result_values[0] == 2024 && int_result_flags[1] == 0 && int_result_values[3] == 2099, "YEAR(d)");

    environment.out_of_memory = 1;
    bigint_result.no_nulls = string_result.no_nulls = 1;
    expect(FIND(bnvl_int64_aa)(&environment, &memory, &bigints, &bigints, &bigint_result, ROWS) == -503, "NVL without memory");
    expect(FIND(bnvl_varchar_av)(&environment, &memory, &strings, &word, &string_result, ROWS) == -503, "NVL without memory for strings");
    expect(bigint_result.no_nulls == 0 && string_result.no_nulls == 0, "NVL that failed promises nothing");
    bigint_result.no_nulls = 1;
    expect(FIND(bifoperator_int64_aav)(&environment, &memory, &condition, &bigints, &nothing, &bigint_result, ROWS) == -503,
           "IF without memory");
    expect(bigint_result.no_nulls == 0, "IF that failed promises nothing");

    expect(environment.strangers == 0, "every operation is given the environment, the memory object and a value that is not NULL");
    expect(dlclose(library) == 0, "the library can be unloaded");
    return failures == 0 ? 0 : 1;
}
