// SPDX-License-Identifier: Apache-2.0
// The last formats of a session, parsed, by the texts that they were parsed from: executors that call row by row, and rows that have their
// format in them, do not parse it again.
#ifndef BIFUN_EMBEDDED_FORMAT_FORMAT_MEMORY_H
#define BIFUN_EMBEDDED_FORMAT_FORMAT_MEMORY_H

#include <cstdint>
#include <cstring>

namespace zqengine {

constexpr std::uint32_t max_format_length = 75;
constexpr std::uint32_t max_nls_length = 128;

struct format_texts {
    const std::uint8_t* format;
    std::uint32_t format_length;
    const std::uint8_t* nls;
    std::uint32_t nls_length;
    std::uint32_t reading = 0; // what else it depends on how they are parsed
};

struct format_key {
    static constexpr std::uint32_t none = ~std::uint32_t{0};

    std::uint32_t format_length = none;
    std::uint32_t nls_length = 0;
    std::uint32_t reading = 0;
    std::uint8_t format[max_format_length];
    std::uint8_t nls[max_nls_length];
};

template <class Parsed> struct kept_format {
    format_key key;
    Parsed parsed;
};

// A query has few formats, and calls of it may take turns.
template <class Parsed> struct format_memory {
    static constexpr std::uint32_t count = 4;

    kept_format<Parsed> kept[count];
    std::uint32_t last = 0; // asked for
    std::uint32_t next = 0; // to be forgotten
};

inline bool same_bytes(const std::uint8_t* a, const std::uint8_t* b, std::uint32_t count) {
    const auto word_at = [](const std::uint8_t* bytes) {
        std::uint64_t word;
        std::memcpy(&word, bytes, sizeof word);
        return word;
    };
    if (count < 8) {
        for (std::uint32_t i = 0; i < count; ++i) {
            if (a[i] != b[i]) {
                return false;
            }
        }
        return true;
    }
    std::uint64_t differences = word_at(a + count - 8) ^ word_at(b + count - 8);
    for (std::uint32_t i = 0; i + 8 < count; i += 8) {
        differences |= word_at(a + i) ^ word_at(b + i);
    }
    return differences == 0;
}

inline bool is_key_of(const format_key& key, const format_texts& texts) {
    return key.format_length == texts.format_length && key.nls_length == texts.nls_length && key.reading == texts.reading &&
           same_bytes(key.format, texts.format, texts.format_length) && same_bytes(key.nls, texts.nls, texts.nls_length);
}

// What find_format does where the last format is another one.
template <class Parsed, class Parse>
[[gnu::noinline]] std::int32_t find_other_format(format_memory<Parsed>& memory, const format_texts& texts, const Parse& parse,
                                                 const Parsed*& found) {
    for (std::uint32_t i = 0; i < memory.count; ++i) {
        if (is_key_of(memory.kept[i].key, texts)) {
            memory.last = i;
            found = &memory.kept[i].parsed;
            return 0;
        }
    }
    kept_format<Parsed>& made = memory.kept[memory.next];
    made.key.format_length = format_key::none;
    found = &made.parsed;
    const std::int32_t status = parse(made.parsed);
    if (status == 0) {
        made.key.format_length = texts.format_length;
        made.key.nls_length = texts.nls_length;
        made.key.reading = texts.reading;
        if (texts.format_length != 0) {
            std::memcpy(made.key.format, texts.format, texts.format_length);
        }
        if (texts.nls_length != 0) {
            std::memcpy(made.key.nls, texts.nls, texts.nls_length);
        }
        memory.last = memory.next;
        memory.next = (memory.next + 1) % memory.count;
    }
    return status;
}

// Points `found` to what was kept for the texts, or to what `parse` makes of them. Returns 0 or the status of `parse`: then what is found
// is what that has left, and is not kept. Texts that parse have at most the lengths above.
template <class Parsed, class Parse>
std::int32_t find_format(format_memory<Parsed>& memory, const format_texts& texts, const Parse& parse, const Parsed*& found) {
    const kept_format<Parsed>& last = memory.kept[memory.last];
    found = &last.parsed;
    return is_key_of(last.key, texts) ? 0 : find_other_format(memory, texts, parse, found);
}

} // namespace zqengine

#endif
