/* SPDX-License-Identifier: Apache-2.0 */
/* Keys by which texts sort as a language has them. */
#ifndef BIFUN_ENGINE_COLLATION_H
#define BIFUN_ENGINE_COLLATION_H

#include "bop/frame/contract.h"

#ifdef __cplusplus
extern "C" {
#endif

/* An order of texts. The engine's own; one thread at a time uses it. */
typedef struct nls_collation nls_collation;

/* `*collation` gets the order that an NLS text such as NLS_SORT=XGERMAN_CI names, or without a text (length 0) Unicode's own. The text has
 * at most 128 bytes; docs/strings.md has the names. Returns 0; ZQ_INVALID_NLS_PARAMETERS (engine/number_format.h) where it is no such text;
 * -503: then `*collation` is untouched. */
int32_t nls_sort_open(bifun_environment* environment, const uint8_t* nls, uint32_t length, nls_collation** collation);

/* Writes the key of a text in the database character set to `key`, of which at most `room` bytes are overwritten. `*key_length` gets its
 * length, which may be greater: then what is written has no meaning. Of two texts the one that sorts first has the lower key, byte by byte
 * as numbers without sign, where a key that is the beginning of another is lower; texts that the order holds equal have the same key.
 * Returns 0; -503. */
int32_t nls_sort_key(nls_collation* collation, const uint8_t* text, uint32_t length, uint8_t* key, uint32_t room, uint64_t* key_length);

void nls_sort_close(bifun_environment* environment, nls_collation* collation);

#ifdef __cplusplus
}
#endif

#endif
