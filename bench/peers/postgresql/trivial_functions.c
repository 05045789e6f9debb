/* SPDX-License-Identifier: Apache-2.0 */
/* Functions of PostgreSQL that do nothing but give their first argument back: what any function costs there. */
#include "postgres.h"

#include "fmgr.h"

PG_MODULE_MAGIC;

/* Any type that is passed by value. */
PG_FUNCTION_INFO_V1(first_value);
Datum first_value(PG_FUNCTION_ARGS) { return PG_GETARG_DATUM(0); }

/* A type of variable length: with a copy, as a function has that makes something. */
PG_FUNCTION_INFO_V1(first_copy);
Datum first_copy(PG_FUNCTION_ARGS) {
    const struct varlena* const value = PG_GETARG_VARLENA_PP(0);
    const Size size = VARSIZE_ANY_EXHDR(value);
    struct varlena* const copy = palloc(VARHDRSZ + size);
    SET_VARSIZE(copy, VARHDRSZ + size);
    memcpy(VARDATA(copy), VARDATA_ANY(value), size);
    PG_RETURN_POINTER(copy);
}
