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

#ifdef __cplusplus
}
#endif

#endif
