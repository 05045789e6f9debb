// SPDX-License-Identifier: Apache-2.0
// Digests by libcrypto. Its newer interface takes 80 ns longer for each, to look up and to make what the older one has on the stack.
#define OPENSSL_SUPPRESS_DEPRECATED

#include "engine/digest.h"

#include <openssl/md5.h>
#include <openssl/sha.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>

#include "bop/frame/status.h"
#include "embedded/digest/md5_lanes.h"

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

struct known_digest {
    std::int32_t algorithm;
    std::uint32_t length;
    digest_function make;
};

constexpr known_digest known_digests[] = {
    {CYT_MD5, MD5_DIGEST_LENGTH, digest_of<MD5_CTX, MD5_Init, MD5_Update, MD5_Final>},
    {CYT_SHA224, SHA224_DIGEST_LENGTH, digest_of<SHA256_CTX, SHA224_Init, SHA224_Update, SHA224_Final>},
    {CYT_SHA256, SHA256_DIGEST_LENGTH, digest_of<SHA256_CTX, SHA256_Init, SHA256_Update, SHA256_Final>},
    {CYT_SHA384, SHA384_DIGEST_LENGTH, digest_of<SHA512_CTX, SHA384_Init, SHA384_Update, SHA384_Final>},
    {CYT_SHA512, SHA512_DIGEST_LENGTH, digest_of<SHA512_CTX, SHA512_Init, SHA512_Update, SHA512_Final>},
};

// Short texts several at once, the others one by one.
void make_md5(const bifun_string* values, std::uint32_t count, const known_digest& known, std::uint8_t* digests) {
    for (std::uint32_t first = 0; first < count; first += zqengine::md5_lanes) {
        const std::uint32_t lanes = std::min(count - first, zqengine::md5_lanes);
        const bifun_string* const group = values + first;
        std::uint8_t* const digests_of_group = digests + std::size_t{first} * MD5_DIGEST_LENGTH;
        zqengine::md5_of_short_texts(group, lanes, digests_of_group);
        for (std::uint32_t lane = 0; lane < lanes; ++lane) {
            if (group[lane].length > zqengine::longest_md5_lane) {
                known.make(group[lane].data, group[lane].length, digests_of_group + std::size_t{lane} * MD5_DIGEST_LENGTH);
            }
        }
    }
}

} // namespace

std::int32_t cyt_hash_gen_digest(std::int32_t algorithm, const bifun_string* values, std::uint32_t count, std::uint8_t* digests,
                                 std::uint32_t* digest_length) {
    const known_digest* const known = std::ranges::find(known_digests, algorithm, &known_digest::algorithm);
    if (known == std::end(known_digests)) {
        return BIFUN_CHARACTER_CONVERSION_FAILED;
    }
    *digest_length = known->length;
    if (algorithm == CYT_MD5 && count > 1) {
        make_md5(values, count, *known, digests);
        return BIFUN_OK;
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        known->make(values[i].data, values[i].length, digests + std::size_t{i} * known->length);
    }
    return BIFUN_OK;
}
