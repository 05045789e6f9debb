// SPDX-License-Identifier: Apache-2.0
#include "host/values/charset_text.h"

#include <algorithm>
#include <cstring>

#include <iconv.h>

#include "host/near_names.h"
#include "host/program_error.h"

namespace host {
namespace {

constexpr charset charsets[] = {
    {"utf-8", "UTF-8", ZQ_CHARSET_UTF8},
    {"gb18030", "GB18030", ZQ_CHARSET_GB18030},
    {"euc-kr", "EUC-KR", ZQ_CHARSET_EUC_KR},
};

constexpr std::string_view replacement_character = "\xEF\xBF\xBD";

bool is_ascii(std::string_view text) {
    std::size_t i = 0;
    for (; i + 8 <= text.size(); i += 8) {
        std::uint64_t word;
        std::memcpy(&word, text.data() + i, sizeof word);
        if ((word & 0x8080808080808080U) != 0) {
            return false;
        }
    }
    return std::all_of(text.begin() + static_cast<std::ptrdiff_t>(i), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// The bytes of the UTF-8 character at the beginning of `text`, or 0. Ranges by The Unicode Standard, table 3-7.
std::size_t utf8_character_length(std::string_view text) {
    const auto byte = [&](std::size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U; };
    const auto continues = [&](std::size_t i) { return (byte(i) & 0xC0U) == 0x80U; };
    const unsigned lead = byte(0);
    if (lead < 0x80) {
        return 1;
    }
    if (lead < 0xC2 || lead > 0xF4 || !continues(1)) {
        return 0;
    }
    if (lead < 0xE0) {
        return 2;
    }
    if ((lead == 0xE0 && byte(1) < 0xA0) || (lead == 0xED && byte(1) > 0x9F) || (lead == 0xF0 && byte(1) < 0x90) ||
        (lead == 0xF4 && byte(1) > 0x8F) || !continues(2)) {
        return 0;
    }
    if (lead < 0xF0) {
        return 3;
    }
    return continues(3) ? 4 : 0;
}

bool is_valid_utf8(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = utf8_character_length(text);
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

struct iconv_closer {
    void operator()(void* descriptor) const { iconv_close(descriptor); }
};
using converter = std::unique_ptr<void, iconv_closer>;

// Conversion descriptors are costly to open, so each direction keeps the one of the character set in use.
struct conversion {
    std::string_view charset_name;
    converter descriptor;
};

iconv_t open_conversion(conversion& cached, std::string_view name, const char* to, const char* from) {
    if (cached.descriptor == nullptr || cached.charset_name != name) {
        const iconv_t opened = iconv_open(to, from);
        if (reinterpret_cast<std::intptr_t>(opened) == -1) {
            fail("this system's iconv does not know the character set {}", name);
        }
        cached = {name, converter(opened)};
    }
    return cached.descriptor.get();
}

// Converts as far as it goes; `text` keeps what could not be converted.
std::string convert(iconv_t descriptor, std::string_view& text) {
    std::string converted(text.size() * 4, '\0');
    char* in = const_cast<char*>(text.data()); // iconv does not write to its input
    std::size_t in_left = text.size();
    char* out = converted.data();
    std::size_t out_left = converted.size();
    iconv(descriptor, nullptr, nullptr, nullptr, nullptr);
    iconv(descriptor, &in, &in_left, &out, &out_left);
    converted.resize(converted.size() - out_left);
    text = text.substr(text.size() - in_left);
    return converted;
}

std::string convert_to_utf8(const charset& set, std::string_view& text) {
    thread_local conversion cached;
    return convert(open_conversion(cached, set.name, "UTF-8", set.iconv_name.data()), text);
}

} // namespace

const charset* find_charset(std::string_view name) {
    const auto plain = [](std::string_view text) {
        std::string letters;
        std::ranges::copy_if(text, std::back_inserter(letters), [](char c) { return c != '-' && c != '_'; });
        return letters;
    };
    const auto* const found =
        std::ranges::find_if(charsets, [&](const charset& set) { return equal_ignoring_case(plain(set.name), plain(name)); });
    return found == std::end(charsets) ? nullptr : found;
}

std::vector<std::string> charset_names() {
    std::vector<std::string> names;
    std::ranges::transform(charsets, std::back_inserter(names), [](const charset& set) { return std::string(set.name); });
    return names;
}

bool is_valid_text(const charset& set, std::string_view text) {
    if (is_ascii(text)) {
        return true;
    }
    if (set.code == ZQ_CHARSET_UTF8) {
        return is_valid_utf8(text);
    }
    convert_to_utf8(set, text);
    return text.empty();
}

std::optional<std::string> from_utf8(const charset& set, std::string_view text) {
    if (set.code == ZQ_CHARSET_UTF8 || is_ascii(text)) {
        return is_valid_text(charsets[0], text) ? std::optional(std::string(text)) : std::nullopt;
    }
    thread_local conversion cached;
    std::string converted = convert(open_conversion(cached, set.name, set.iconv_name.data(), "UTF-8"), text);
    return text.empty() ? std::optional(std::move(converted)) : std::nullopt;
}

std::optional<std::string> to_utf8(const charset& set, std::string_view text) {
    if (set.code == ZQ_CHARSET_UTF8 || is_ascii(text)) {
        return is_valid_text(set, text) ? std::optional(std::string(text)) : std::nullopt;
    }
    std::string converted = convert_to_utf8(set, text);
    return text.empty() ? std::optional(std::move(converted)) : std::nullopt;
}

std::string to_utf8_with_replacements(const charset& set, std::string_view text) {
    std::string made;
    while (!text.empty()) {
        if (set.code == ZQ_CHARSET_UTF8) {
            const std::size_t length = utf8_character_length(text);
            made += length == 0 ? replacement_character : text.substr(0, length);
            text.remove_prefix(std::max<std::size_t>(length, 1));
            continue;
        }
        made += convert_to_utf8(set, text);
        if (!text.empty()) {
            made += replacement_character;
            text.remove_prefix(1);
        }
    }
    return made;
}

std::string shown_text(const charset& set, std::string_view text) {
    constexpr std::size_t longest = 40;
    constexpr std::string_view replacement = "\uFFFD";
    std::string shown = to_utf8_with_replacements(set, text.substr(0, longest));
    if (text.size() <= longest) {
        return shown;
    }
    while (shown.ends_with(replacement)) { // what is left of a character
        shown.resize(shown.size() - replacement.size());
    }
    return shown + "...";
}

} // namespace host
