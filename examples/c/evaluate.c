/* SPDX-License-Identifier: Apache-2.0 */
/* Evaluates functions over columns of every type: columns from the embedded engine, functions of libbifun.so by name.
 *     evaluate [libbifun.so.0] */
#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "bop/bifun.h"
#include "embedded/zqengine.h"
#include "engine/charset.h"
#include "engine/datetime.h"
#include "engine/decimal.h"
#include "engine/memory.h"

enum { ROWS = 3 };

static void* library;
static bifun_environment* session;
static bifun_memory_object* memory;

static void require(int holds, const char* what) {
    if (!holds) {
        fprintf(stderr, "evaluate: %s\n", what);
        exit(1);
    }
}

static void check(int32_t status) { require(status == 0, zqengine_status_meaning(status)); }

static void* find(const char* name) {
    void* const symbol = dlsym(library, name);
    require(symbol != NULL, name);
    return symbol;
}

/* An exported function with the type that bop/bifun.h declares. */
#define FIND(name) ((__typeof__(&(name)))find(#name))

static bifun_column* create_column(int32_t type) {
    bifun_column* const column = zqengine_column_create(type, ROWS);
    require(column != NULL, "out of memory");
    return column;
}

/* A column with these texts as its values; null pointers are NULLs. */
static bifun_column* column_of(int32_t type, const char* const texts[ROWS]) {
    bifun_column* const column = create_column(type);
    for (uint32_t row = 0; row < ROWS; ++row) {
        check(texts[row] == NULL ? zqengine_column_set_null(column, row)
                                 : zqengine_column_set_text(column, row, texts[row], (uint32_t)strlen(texts[row])));
    }
    return column;
}

/* A text constant lies in the record itself where it is short, else behind a pointer. */
static bifun_string_constant text_constant(const char* text) {
    bifun_string_constant constant = {.not_null = 1, .length = (uint32_t)strlen(text)};
    if (constant.length <= BIFUN_INLINE_LENGTH) {
        memcpy(constant.inline_bytes, text, constant.length);
    } else {
        constant.data = (uint8_t*)text;
    }
    return constant;
}

static void print(const char* call, int32_t status, const bifun_column* result, uint32_t rows) {
    printf("%s:", call);
    if (status == 0) {
        status = zqengine_column_status(result); /* strings of the result for which there was no memory */
    }
    if (status != 0) {
        printf(" %d %s\n", (int)status, zqengine_status_meaning(status));
        return;
    }
    for (uint32_t row = 0; row < rows; ++row) {
        char text[256];
        size_t length = 0;
        const int32_t told = zqengine_column_get_text(result, row, text, sizeof text, &length);
        printf(" [%s]", told == 0 ? text : told == ZQENGINE_NULL ? "NULL" : zqengine_status_meaning(told));
    }
    printf("\n");
}

/* Which row of a batch fails: the batch is repeated row by row. */
static uint32_t failing_row(__typeof__(&bln_a_math_dbl) function, const bifun_column* argument, bifun_column* result, uint32_t rows) {
    for (uint16_t row = 0; row < rows; ++row) {
        const bifun_column one = {.no_nulls = argument->no_nulls, .selection = &row, .data = argument->data};
        if (function(session, memory, &one, result, 1) < 0) {
            return row;
        }
    }
    return rows;
}

static void numbers(void) {
    bifun_column* const ints = column_of(ZQENGINE_INT, (const char*[]){"1", NULL, "3"});
    bifun_column* const int_result = create_column(ZQENGINE_INT);
    const bifun_int_constant seven = {.not_null = 1, .value = 7};
    print("NVL(x, 7)", FIND(bnvl_int_av)(session, memory, ints, &seven, int_result, ROWS), int_result, ROWS);

    /* The rows that a filter passed: the batch has two rows, row 2 and row 0 of the column. */
    const uint16_t passed[] = {2, 0};
    const bifun_column selected = {.no_nulls = 1, .selection = passed, .data = ints->data};
    print("NVL(x, 7) of two rows", FIND(bnvl_int_av)(session, memory, &selected, &seven, int_result, 2), int_result, 2);

    bifun_column* const decimals = column_of(ZQENGINE_DECIMAL, (const char*[]){"1.005", "-2.675", "12345678901234567890.125"});
    bifun_column* const decimal_result = create_column(ZQENGINE_DECIMAL);
    const bifun_int_constant two = {.not_null = 1, .value = 2};
    print("ROUND(x, 2)", FIND(bround_dec_av_li_math_dbl)(session, memory, decimals, &two, decimal_result, ROWS), decimal_result, ROWS);

    bifun_column* const doubles = column_of(ZQENGINE_DOUBLE, (const char*[]){"1", "10", "-1"});
    bifun_column* const double_result = create_column(ZQENGINE_DOUBLE);
    print("LN(x)", FIND(bln_a_math_dbl)(session, memory, doubles, double_result, ROWS), double_result, ROWS);
    printf("LN(x) fails in row %u\n", (unsigned)failing_row(FIND(bln_a_math_dbl), doubles, double_result, ROWS));
    print("LN(x) of two rows", FIND(bln_a_math_dbl)(session, memory, doubles, double_result, 2), double_result, 2);

    zqengine_column_destroy(ints);
    zqengine_column_destroy(int_result);
    zqengine_column_destroy(decimals);
    zqengine_column_destroy(decimal_result);
    zqengine_column_destroy(doubles);
    zqengine_column_destroy(double_result);
}

static void texts(void) {
    bifun_column* const names =
        column_of(ZQENGINE_VARCHAR, (const char*[]){"J\xC3\xBCrgen", "\xE5\xB1\xB1\xE7\x94\xB0 \xE8\x8A\xB1", NULL});
    bifun_column* const text_result = create_column(ZQENGINE_VARCHAR);
    const bifun_int_constant two = {.not_null = 1, .value = 2};
    print("LEFT(x, 2)", FIND(bleftstr_av_str)(session, memory, names, &two, text_result, ROWS), text_result, ROWS);

    bifun_column* const truths = column_of(ZQENGINE_BOOL, (const char*[]){"true", "false", NULL});
    const bifun_string_constant yes = text_constant("yes");
    const bifun_string_constant no = text_constant("no, and this one has more than the 48 bytes of the record");
    zqengine_column_clear(text_result); /* one result column takes batch after batch */
    print("IF(x, 'yes', ...)", FIND(bifoperator_varchar_avv)(session, memory, truths, &yes, &no, text_result, ROWS), text_result, ROWS);

    bifun_column* const bytes = create_column(ZQENGINE_VARBINARY);
    bifun_column* const bytes_result = create_column(ZQENGINE_VARBINARY);
    check(zqengine_column_set_string(bytes, 0, "\x01\x02", 2, 0)); /* rows 1 and 2 are NULL, as all are at first */
    const bifun_string_constant other = text_constant("other");
    check(FIND(bnvl_varbinary_av)(session, memory, bytes, &other, bytes_result, ROWS));
    const bifun_string* const values = bytes_result->data->values;
    printf("NVL(x, 'other'): %u bytes, %u bytes\n", (unsigned)values[0].length, (unsigned)values[1].length);

    zqengine_large_object_store* const store = zqengine_large_object_store_create();
    bifun_large_object* const object = store == NULL ? NULL : zqengine_large_object_create(store);
    require(object != NULL, "out of memory");
    check(zqengine_large_object_append(object, "a part, ", 8));
    check(zqengine_large_object_append(object, "and another", 11));
    bifun_column* const objects = create_column(ZQENGINE_BLOB);
    bifun_column* const lengths = create_column(ZQENGINE_BIGINT);
    check(zqengine_column_set_large_object(objects, 0, object));
    print("LENGTHB(x)", FIND(blengthb_blob_a_str)(session, memory, objects, lengths, ROWS), lengths, ROWS);

    zqengine_column_destroy(names);
    zqengine_column_destroy(text_result);
    zqengine_column_destroy(truths);
    zqengine_column_destroy(bytes);
    zqengine_column_destroy(bytes_result);
    zqengine_column_destroy(objects);
    zqengine_column_destroy(lengths);
    zqengine_large_object_destroy(object);
    zqengine_large_object_store_destroy(store);
}

static void dates(void) {
    bifun_column* const days = column_of(ZQENGINE_DATETIME, (const char*[]){"2024-01-31", "2023-12-31", NULL});
    bifun_column* const counts = column_of(ZQENGINE_BIGINT, (const char*[]){"1", "-10", "3"});
    bifun_column* const day_result = create_column(ZQENGINE_DATETIME);
    check(zqengine_column_set_kind(day_result, ZQDT_DATE)); /* for print: the values do not say that they are dates */
    const bifun_int_constant month = {.not_null = 1, .value = ZQTIME_MONTH};
    print("DATEADD(MONTH, n, x)", FIND(bdateadd_vaa_date)(session, memory, &month, counts, days, day_result, ROWS), day_result, ROWS);

    bifun_column* const spans = column_of(ZQENGINE_INTERVAL_YM, (const char*[]){"1-02", "-0-01", "0-11"});
    bifun_column* const span_result = create_column(ZQENGINE_INTERVAL_YM);
    const bifun_interval_ym_constant year = {.not_null = 1, .value = {.years = 1}};
    print("GREATEST(x, INTERVAL '1' YEAR)", FIND(bgreat_ivym_av_date)(session, memory, spans, &year, span_result, ROWS), span_result, ROWS);

    bifun_column* const times = column_of(ZQENGINE_INTERVAL_DT, (const char*[]){"1 02:03:04.5", "0 00:00:59", NULL});
    bifun_column* const seconds = create_column(ZQENGINE_DOUBLE);
    const bifun_int_constant second = {.not_null = 1, .value = ZQTIME_SECOND};
    print("EXTRACT(SECOND FROM x)", FIND(bextract_iv_dt_ex_va_date)(session, memory, &second, times, seconds, ROWS), seconds, ROWS);

    /* Text under the session's format; one that is none says where. */
    zqengine_format_fault fault;
    const char wrong[] = "DD of YYYY";
    if (zqengine_environment_set_format(session, ZQENGINE_DATE_FORMAT, wrong, sizeof wrong - 1, &fault) != 0) {
        printf("\"%.*s\" in \"%s\": %s\n", (int)fault.length, wrong + fault.offset, wrong, fault.meaning);
    }
    check(zqengine_environment_set_format(session, ZQENGINE_DATE_FORMAT, "DD.MM.YYYY", 10, &fault));
    bifun_column* const text_result = create_column(ZQENGINE_VARCHAR);
    print("TO_CHAR(x)", FIND(bto_char_date_def_a_date)(session, memory, days, text_result, ROWS), text_result, ROWS);

    zqengine_column_destroy(days);
    zqengine_column_destroy(counts);
    zqengine_column_destroy(day_result);
    zqengine_column_destroy(spans);
    zqengine_column_destroy(span_result);
    zqengine_column_destroy(times);
    zqengine_column_destroy(seconds);
    zqengine_column_destroy(text_result);
}

int main(int argument_count, char** arguments) {
    /* The embedded engine is linked; the library finds its operations in the process. */
    library = dlopen(argument_count > 1 ? arguments[1] : "libbifun.so.0", RTLD_LAZY | RTLD_LOCAL);
    require(library != NULL, "libbifun.so.0 cannot be loaded");
    check(FIND(bifun_dll_var_init)(/* compatible_mode */ 1, ZQ_CHARSET_UTF8, /* case_sensitive */ 1));
    session = zqengine_environment_create();
    memory = rt_memobj_create_ex(session, 0, 4096, __FILE__, __LINE__);
    require(session != NULL && memory != NULL, "out of memory");

    numbers();
    texts();
    dates();

    rt_memobj_destroy(session, memory);
    zqengine_environment_destroy(session);
    return 0;
}
