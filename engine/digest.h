/* SPDX-License-Identifier: Apache-2.0 */
/* Digests of bytes. */
#ifndef BIFUN_ENGINE_DIGEST_H
#define BIFUN_ENGINE_DIGEST_H

#include "bop/frame/contract.h"

#ifdef __cplusplus
extern "C" {
#endif

enum cyt_hash_algorithm { CYT_MD5 = 1, CYT_SHA224 = 224, CYT_SHA256 = 256, CYT_SHA384 = 384, CYT_SHA512 = 512 };

enum { CYT_LONGEST_DIGEST = 64 };

/* Writes the digests of `count` values one behind the other to `digests`, which has room for CYT_LONGEST_DIGEST bytes for each: MD5 of RFC
 * 1321, 16 bytes, or SHA-2 of FIPS 180-4, of as many bits as its number says. Digests are of the bytes of values, which may be null where
 * there are none; counts of blanks are not read. `*digest_length` gets the number of bytes of one digest. Returns 0; -6148 where the engine
 * does not make such digests. Takes no environment and may be called by several threads at once. */
int32_t cyt_hash_gen_digest(int32_t algorithm, const bifun_string* values, uint32_t count, uint8_t* digests, uint32_t* digest_length);

#ifdef __cplusplus
}
#endif

#endif
