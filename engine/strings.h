/* Owned string values. */
#ifndef BIFUN_ENGINE_STRINGS_H
#define BIFUN_ENGINE_STRINGS_H

#include "bop/frame/contract.h"

#ifdef __cplusplus
extern "C" {
#endif

enum { NSTR_RESERVED_LENGTH = 64 };

/* A string value that owns its bytes or looks at another's. Begin with all bytes zero. `data` points to `reserved` for a short value,
 * to memory of its own where `owned` is set, else to bytes that belong to somebody else.
 *
 * The assignments below copy: afterwards the bytes belong to the nstr and may be changed. Those named `no_clear` take no notice of
 * what the nstr held before; the others release it first. They return 0 or -503, and then the nstr is empty. The source must not lie
 * in what the target holds. */
typedef struct nstr {
    uint8_t* data;
    uint32_t length;
    uint32_t owned;
    bifun_memory_object* memory; /* what `data` is released to when `owned` */
    uint8_t reserved[NSTR_RESERVED_LENGTH];
} nstr;

/* The stored bytes of a column value, without its trailing blanks. */
int32_t nstr_assign(bifun_environment* environment, bifun_memory_object* memory, nstr* target, const bifun_string* source);

/* The full text of a column value, its trailing blanks as bytes. */
int32_t nstr_assign_with_blank_no_clear(bifun_environment* environment, bifun_memory_object* memory, nstr* target,
                                        const bifun_string* source);

/* The full text of a constant that is not NULL, its trailing blanks as bytes. */
int32_t nstr_assign_const_with_blank_no_clear(bifun_environment* environment, bifun_memory_object* memory, nstr* target,
                                              const bifun_string_constant* source);

/* The stored bytes of a constant that is not NULL. */
int32_t nstr_assign_const_ex_no_clear(bifun_environment* environment, bifun_memory_object* memory, nstr* target,
                                      const bifun_string_constant* source);

/* Makes `target` look at bytes that belong to somebody else and outlive it. What it held is released. */
void nstr_set_str_value(bifun_environment* environment, nstr* target, uint8_t* data, uint32_t length);

/* The same for the stored bytes of a column value, taking no notice of what the nstr held before. */
void bdta3_colstr_to_nstr_fast(nstr* target, const bifun_string* source);

/* Releases what the nstr holds and leaves it empty. */
void nstr_clear(bifun_environment* environment, nstr* target);

/* Releases what the nstr holds outside its reserved bytes; a value that lies in them stays. */
void nstr_non_reserved_clear(bifun_environment* environment, nstr* target);

#ifdef __cplusplus
}
#endif

#endif
