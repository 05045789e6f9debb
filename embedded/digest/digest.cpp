// SPDX-License-Identifier: Apache-2.0
// Digests by libcrypto. Its newer interface takes 80 ns longer for each, to look up and to make what the older one has on the stack.
#define OPENSSL_SUPPRESS_DEPRECATED

#include "engine/digest.h"

#include <openssl/md5.h>
#include <openssl/sha.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>

#include "bop/frame/status.h"

namespace {

using digest_function = unsigned char* (*)(const unsigned char* bytes, std::size_t length, unsigned char* digest);

template <class Context, auto begin, auto add, auto end>
unsigned char* digest_of(const unsigned char* bytes, std::size_t length, unsigned char* digest) {
    Context context;
    begin(&context);
    add(&context, bytes, length);
    end(digest, &context);
    return digest;
}

// A text that fits into one block with what stands behind it: a bit, zeros and the number of bits.
unsigned char* md5_of(const unsigned char* bytes, std::size_t length, unsigned char* digest) {
    constexpr std::size_t longest_in_block = 55;
    if (length > longest_in_block) {
        return digest_of<MD5_CTX, MD5_Init, MD5_Update, MD5_Final>(bytes, length, digest);
    }
    unsigned char block[MD5_CBLOCK] = {};
    if (length != 0) {
        std::memcpy(block, bytes, length);
    }
    block[length] = 0x80;
    block[MD5_CBLOCK - 8] = static_cast<unsigned char>(8 * length);
    block[MD5_CBLOCK - 7] = static_cast<unsigned char>(8 * length >> 8);
    MD5_CTX context;
    MD5_Init(&context);
    MD5_Transform(&context, block);
    unsigned char* to = digest;
    for (const MD5_LONG word : {context.A, context.B, context.C, context.D}) {
        for (std::uint32_t byte = 0; byte < sizeof word; ++byte) {
            *to++ = static_cast<unsigned char>(word >> (8 * byte));
        }
    }
    return digest;
}

struct known_digest {
    std::int32_t algorithm;
    std::uint32_t length;
    digest_function make;
};

constexpr known_digest known_digests[] = {
    {CYT_MD5, MD5_DIGEST_LENGTH, md5_of},
    {CYT_SHA224, SHA224_DIGEST_LENGTH, digest_of<SHA256_CTX, SHA224_Init, SHA224_Update, SHA224_Final>},
    {CYT_SHA256, SHA256_DIGEST_LENGTH, digest_of<SHA256_CTX, SHA256_Init, SHA256_Update, SHA256_Final>},
    {CYT_SHA384, SHA384_DIGEST_LENGTH, digest_of<SHA512_CTX, SHA384_Init, SHA384_Update, SHA384_Final>},
    {CYT_SHA512, SHA512_DIGEST_LENGTH, digest_of<SHA512_CTX, SHA512_Init, SHA512_Update, SHA512_Final>},
};

} // namespace

std::int32_t cyt_hash_gen_digest(std::int32_t algorithm, const std::uint8_t* bytes, std::uint64_t length, std::uint8_t* digest,
                                 std::uint32_t* digest_length) {
    for (const known_digest& known : known_digests) {
        if (known.algorithm == algorithm) {
            known.make(bytes, length, digest);
            *digest_length = known.length;
            return BIFUN_OK;
        }
    }
    return BIFUN_CHARACTER_CONVERSION_FAILED;
}
