// SPDX-License-Identifier: Apache-2.0
// MD5 and SHA2: digests by the engine, as hexadecimal digits in lower case.

#include "bop/bifun_str/conversion.h"
#include "bop/bifun_str/entry_points.h"
#include "engine/digest.h"

namespace bifun {
namespace {

using digits_of_digest = bounded_text<2 * CYT_LONGEST_DIGEST>;

void set_digits(const std::uint8_t* digest, std::uint32_t length, digits_of_digest& text) {
    text_writer digits{text.bytes, true};
    append_hexadecimal(digits, digest, length, 'a');
    text.length = 2 * length;
}

status digest_of_bytes(std::int32_t algorithm, const bifun_string& bytes, digits_of_digest& text) {
    std::uint8_t digest[CYT_LONGEST_DIGEST];
    std::uint32_t digest_length = 0;
    const status made = cyt_hash_gen_digest(algorithm, &bytes, 1, digest, &digest_length);
    if (made < BIFUN_OK) {
        return made;
    }
    set_digits(digest, digest_length, text);
    return BIFUN_OK;
}

// The blanks at the end are of the text.
status digest_of_text(std::int32_t algorithm, const bifun_string& value, scratch& full_text, digits_of_digest& text) {
    if (value.trailing_blanks == 0) [[likely]] {
        return digest_of_bytes(algorithm, value, text);
    }
    std::uint8_t* const bytes = reserve(full_text, full_length(value));
    if (bytes == nullptr) {
        return BIFUN_OUT_OF_MEMORY;
    }
    write_full_text(bytes, value);
    return digest_of_bytes(algorithm, {static_cast<std::uint32_t>(full_length(value)), 0, bytes}, text);
}

// ---- MD5: of many rows at once, which takes the engine far less time than one by one ----

struct md5_digest {
    std::uint8_t bytes[16];
    status outcome;
};

// Of the stored bytes of each row. NULL rows may point anywhere.
[[gnu::noinline]] void make_md5_of_block(const void* source, std::uint32_t first, std::uint32_t count, md5_digest* digests) {
    constexpr std::uint32_t most_at_once = 64;
    const column_argument<bifun_string> values{static_cast<const bifun_column*>(source)};
    block_of<column_argument<bifun_string>, most_rows_per_block> room;
    const dense_rows<bifun_string> rows = room.rows(values, first, count);
    for (std::uint32_t done = 0; done < count; done += most_at_once) {
        const std::uint32_t now = std::min(count - done, most_at_once);
        bifun_string texts[most_at_once];
        for (std::uint32_t k = 0; k < now; ++k) {
            texts[k] = has_no_nulls(values) || rows.has_value(done + k) ? rows[done + k] : bifun_string{};
        }
        std::uint8_t made[most_at_once * CYT_LONGEST_DIGEST];
        std::uint32_t length = 0;
        const status outcome = cyt_hash_gen_digest(CYT_MD5, texts, now, made, &length);
        for (std::uint32_t k = 0; k < now; ++k) {
            std::memcpy(digests[done + k].bytes, made + k * sizeof digests->bytes, sizeof digests->bytes);
            digests[done + k].outcome = outcome;
        }
    }
}

status md5_of_bytes(const bifun_string& /*bytes*/, const md5_digest& digest, digits_of_digest& text) {
    if (digest.outcome >= BIFUN_OK) {
        set_digits(digest.bytes, sizeof digest.bytes, text);
    }
    return digest.outcome;
}

status md5_of_text(const bifun_string& value, const md5_digest& digest, scratch& full_text, digits_of_digest& text) {
    return value.trailing_blanks == 0 ? md5_of_bytes(value, digest, text) : digest_of_text(CYT_MD5, value, full_text, text);
}

template <value_type type> derived_argument<md5_digest> md5_digests(column_of<type> values) { return {values.column, make_md5_of_block}; }

// ---- SHA2 ----

status sha2_rows(batch_of<VARCHAR> batch, constant_argument<std::int32_t> algorithm, column_of<VARCHAR> text) {
    return with_scratch(batch.environment, batch.memory, string_source_file,
                        [&](scratch& full_text) { return string_rows<digest_of_text>(batch, algorithm, text, shared(full_text)); });
}

status sha2_rows(batch_of<VARCHAR> batch, constant_argument<std::int32_t> algorithm, column_of<VARBINARY> bytes) {
    return string_rows<digest_of_bytes>(batch, algorithm, bytes);
}

bool is_length_of_sha2(std::int32_t bits) { return bits == CYT_SHA224 || bits == CYT_SHA256 || bits == CYT_SHA384 || bits == CYT_SHA512; }

template <value_type type> status sha2(batch_of<VARCHAR> batch, column_of<type> value, constant_of<INT> bits) {
    const auto [wanted, present] = argument(bits);
    const std::int32_t algorithm = wanted == 0 ? CYT_SHA256 : wanted;
    return present && !is_length_of_sha2(algorithm) ? fail_batch(batch, BIFUN_ARGUMENT_OUT_OF_DOMAIN)
                                                    : sha2_rows(batch, constant_argument{algorithm, present}, value);
}

} // namespace

status entry::bmd5_a_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text) {
    return with_scratch(batch.environment, batch.memory, string_source_file,
                        [&](scratch& full_text) { return string_rows<md5_of_text>(batch, text, md5_digests(text), shared(full_text)); });
}
status entry::bmd5_varbinary_a_str(batch_of<VARCHAR> batch, column_of<VARBINARY> bytes) {
    return string_rows<md5_of_bytes>(batch, bytes, md5_digests(bytes));
}
status entry::bsha2_av_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text, constant_of<INT> bits) { return sha2(batch, text, bits); }
status entry::bsha2_varbinary_av_str(batch_of<VARCHAR> batch, column_of<VARBINARY> bytes, constant_of<INT> bits) {
    return sha2(batch, bytes, bits);
}

} // namespace bifun
