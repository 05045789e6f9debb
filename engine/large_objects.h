/* SPDX-License-Identifier: Apache-2.0 */
/* Large objects: values that may be too long for memory. */
#ifndef BIFUN_ENGINE_LARGE_OBJECTS_H
#define BIFUN_ENGINE_LARGE_OBJECTS_H

#include "bop/frame/contract.h"

#ifdef __cplusplus
extern "C" {
#endif

/* `*length` gets the bytes that the object has, 0 or more. The object is that of a row that is not NULL, so the pointer is not null. Any
 * negative status ends the batch with it. */
int32_t nblob_get_length(bifun_environment* environment, const bifun_large_object* object, int64_t* length);

/* Copies bytes of an object that holds text in the database character set, from `offset` on, to `data`: at most `size`, and at least one
 * where there are some and `size` is not 0. `*read` gets how many. Any negative status says that they cannot be read. */
int32_t ntext_get_data(bifun_environment* environment, const bifun_large_object* object, int64_t offset, uint8_t* data, uint32_t size,
                       uint32_t* read);

#ifdef __cplusplus
}
#endif

#endif
