// SPDX-License-Identifier: Apache-2.0
// MD5 and SHA2: digests by the engine, as hexadecimal digits in lower case.

#include "bop/bifun_str/conversion.h"
#include "bop/bifun_str/entry_points.h"
#include "engine/digest.h"

namespace bifun {
namespace {

using digits_of_digest = bounded_text<2 * CYT_LONGEST_DIGEST>;

status make_digest(std::int32_t algorithm, const std::uint8_t* bytes, std::uint32_t length, digits_of_digest& text) {
    std::uint8_t digest[CYT_LONGEST_DIGEST];
    std::uint32_t digest_length = 0;
    const status made = cyt_hash_gen_digest(algorithm, bytes, length, digest, &digest_length);
    if (made < BIFUN_OK) {
        return made;
    }
    text_writer digits{text.bytes, true};
    append_hexadecimal(digits, digest, digest_length, 'a');
    text.length = 2 * digest_length;
    return BIFUN_OK;
}

status digest_of_bytes(std::int32_t algorithm, const bifun_string& bytes, digits_of_digest& text) {
    return make_digest(algorithm, bytes.data, bytes.length, text);
}

// The blanks at the end are of the text.
status digest_of_text(std::int32_t algorithm, const bifun_string& value, scratch& full_text, digits_of_digest& text) {
    if (value.trailing_blanks == 0) [[likely]] {
        return make_digest(algorithm, value.data, value.length, text);
    }
    std::uint8_t* const bytes = reserve(full_text, full_length(value));
    if (bytes == nullptr) {
        return BIFUN_OUT_OF_MEMORY;
    }
    write_full_text(bytes, value);
    return make_digest(algorithm, bytes, static_cast<std::uint32_t>(full_length(value)), text);
}

template <class Algorithm> status digest_rows(batch_of<VARCHAR> batch, Algorithm algorithm, column_of<VARCHAR> text) {
    return with_scratch(batch.environment, batch.memory, string_source_file,
                        [&](scratch& full_text) { return string_rows<digest_of_text>(batch, algorithm, text, shared(full_text)); });
}

template <class Algorithm> status digest_rows(batch_of<VARCHAR> batch, Algorithm algorithm, column_of<VARBINARY> bytes) {
    return string_rows<digest_of_bytes>(batch, algorithm, bytes);
}

bool is_length_of_sha2(std::int32_t bits) { return bits == CYT_SHA224 || bits == CYT_SHA256 || bits == CYT_SHA384 || bits == CYT_SHA512; }

template <value_type type> status sha2(batch_of<VARCHAR> batch, column_of<type> value, constant_of<INT> bits) {
    const auto [wanted, present] = argument(bits);
    const std::int32_t algorithm = wanted == 0 ? CYT_SHA256 : wanted;
    return present && !is_length_of_sha2(algorithm) ? fail_batch(batch, BIFUN_ARGUMENT_OUT_OF_DOMAIN)
                                                    : digest_rows(batch, constant_argument{algorithm, present}, value);
}

constexpr std::int32_t md5 = CYT_MD5;

} // namespace

status entry::bmd5_a_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text) { return digest_rows(batch, fixed(md5), text); }
status entry::bmd5_varbinary_a_str(batch_of<VARCHAR> batch, column_of<VARBINARY> bytes) { return digest_rows(batch, fixed(md5), bytes); }
status entry::bsha2_av_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text, constant_of<INT> bits) { return sha2(batch, text, bits); }
status entry::bsha2_varbinary_av_str(batch_of<VARCHAR> batch, column_of<VARBINARY> bytes, constant_of<INT> bits) {
    return sha2(batch, bytes, bits);
}

} // namespace bifun
