/* SPDX-License-Identifier: Apache-2.0 */
/* Runs on the embedded engine with one operation replaced: decimals as text have a comma. The program defines the operation, and the
 * library finds the program's before the engine's. The engine itself goes on with its own.
 *     replace_operation [libbifun.so.0] */
#define _GNU_SOURCE /* RTLD_NEXT */
#include <dlfcn.h>
#include <stdio.h>
#include <string.h>

#include "bop/bifun.h"
#include "embedded/zqengine.h"
#include "engine/charset.h"
#include "engine/decimal.h"
#include "engine/memory.h"
#include "engine/statements.h"

/* The engine says number_texts_as_described, and then the library writes short decimals itself, without the operation. So the program makes
 * the statements in place of the engine: all but this one. */
bifun_engine_statements zq_engine_statements = {
    .size = sizeof(bifun_engine_statements),
    .setters_are_plain_stores = 1,
    .free_bytes_are_open = 1,
    .ascii_is_single_byte = 1,
    .decimal_layout = XDEC_LAYOUT_PACKED_128,
    .datetime_layout = ZQTIME_LAYOUT_PACKED,
    .pads_as_described = 1,
    .utf8_is_unicode = 1,
    .number_texts_as_described = 0,
    .results_may_refer = 1,
};

int32_t xdec_to_char_with_zero(const xdec* value, char* buffer, uint32_t buffer_size, int32_t reserved_1, int32_t reserved_2,
                               uint32_t* length) {
    static __typeof__(&xdec_to_char_with_zero) of_engine;
    if (of_engine == NULL) {
        of_engine = (__typeof__(of_engine))dlsym(RTLD_NEXT, "xdec_to_char_with_zero");
    }
    const int32_t status = of_engine(value, buffer, buffer_size, reserved_1, reserved_2, length);
    char* const point = status == 0 ? memchr(buffer, '.', *length) : NULL;
    if (point != NULL) {
        *point = ',';
    }
    return status;
}

int main(int argument_count, char** arguments) {
    void* const library = dlopen(argument_count > 1 ? arguments[1] : "libbifun.so.0", RTLD_LAZY | RTLD_LOCAL);
    if (library == NULL) {
        fprintf(stderr, "replace_operation: %s\n", dlerror());
        return 1;
    }
    ((__typeof__(&bifun_dll_var_init))dlsym(library, "bifun_dll_var_init"))(1, ZQ_CHARSET_UTF8, 1);
    bifun_environment* const session = zqengine_environment_create();
    bifun_memory_object* const memory = rt_memobj_create_ex(session, 0, 4096, __FILE__, __LINE__);
    bifun_column* const decimals = zqengine_column_create(ZQENGINE_DECIMAL, 2);
    bifun_column* const texts = zqengine_column_create(ZQENGINE_VARCHAR, 2);
    int32_t status = session == NULL || memory == NULL || decimals == NULL || texts == NULL ? BIFUN_OUT_OF_MEMORY : BIFUN_OK;
    if (status == BIFUN_OK) {
        zqengine_column_set_text(decimals, 0, "-0.50", 5);
        zqengine_column_set_text(decimals, 1, "12345678901234567890.5", 22);
        const __typeof__(&bto_char_a_dec_to_varchar) to_char =
            (__typeof__(&bto_char_a_dec_to_varchar))dlsym(library, "bto_char_a_dec_to_varchar");
        status = to_char(session, memory, decimals, texts, 2);
    }
    for (uint32_t row = 0; status == BIFUN_OK && row < 2; ++row) {
        char of_library[64];
        char of_engine[64];
        size_t length = 0;
        zqengine_column_get_text(texts, row, of_library, sizeof of_library, &length);
        zqengine_column_get_text(decimals, row, of_engine, sizeof of_engine, &length);
        printf("TO_CHAR gives %s, the engine's own text is %s\n", of_library, of_engine);
    }
    if (status != BIFUN_OK) {
        fprintf(stderr, "replace_operation: %s\n", zqengine_status_meaning(status));
    }
    zqengine_column_destroy(decimals);
    zqengine_column_destroy(texts);
    rt_memobj_destroy(session, memory);
    zqengine_environment_destroy(session);
    return status == BIFUN_OK ? 0 : 1;
}
