// SPDX-License-Identifier: Apache-2.0
#include "engine/charset.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <memory>
#include <numeric>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>
#include <iconv.h>
#include <unicode/uchar.h>
#include <unicode/ucnv.h>
#include <unicode/utf16.h>

#include "embedded/charset/database_charset.h"
#include "tests/contract/exact_block.h"

namespace {

using namespace std::string_literals;

constexpr std::uint32_t single_byte_code = 3; // any but the three

// A charset as ICU knows it; EUC-KR, of which ICU has an older table, as the C library does. Those other than UTF-8 hold more byte
// sequences to be characters than there are code points for.
class reference {
  public:
    reference(std::uint32_t code, const char* name) : code(code) {
        if (code == ZQ_CHARSET_EUC_KR) {
            to_charset = iconv_open(name, "UTF-16LE");
            to_unicode = iconv_open("UTF-16LE", name);
            return;
        }
        UErrorCode status = U_ZERO_ERROR;
        converter.reset(ucnv_open(name, &status));
        ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
        ucnv_setFromUCallBack(converter.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
        EXPECT_TRUE(U_SUCCESS(status)) << name;
    }

    // Empty where there is none.
    std::string encoded(UChar32 code_point) const {
        UChar units[2];
        std::int32_t count = 0;
        U16_APPEND_UNSAFE(units, count, code_point);
        if (code == ZQ_CHARSET_EUC_KR) {
            constexpr UChar32 newest = 0x327E; // of 2002, which neither Python nor ICU has
            const std::string bytes =
                converted(to_charset, {reinterpret_cast<const char*>(units), static_cast<std::size_t>(count) * sizeof(UChar)});
            return code_point != newest && decoded(bytes) == code_point ? bytes : ""s; // some signs become others
        }
        char bytes[16];
        UErrorCode status = U_ZERO_ERROR;
        const std::int32_t length = ucnv_fromUChars(converter.get(), bytes, sizeof bytes, units, count, &status);
        return U_SUCCESS(status) ? std::string(bytes, static_cast<std::size_t>(length)) : ""s;
    }

    // -1 where the bytes are not one character.
    UChar32 decoded(std::string_view bytes) const {
        if (code == ZQ_CHARSET_EUC_KR) {
            const std::string units = converted(to_unicode, bytes);
            UChar unit = 0;
            std::memcpy(&unit, units.data(), std::min(units.size(), sizeof unit));
            return units.size() == sizeof unit ? unit : -1;
        }
        UChar units[16];
        UErrorCode status = U_ZERO_ERROR;
        const std::int32_t count =
            ucnv_toUChars(converter.get(), units, 16, bytes.data(), static_cast<std::int32_t>(bytes.size()), &status);
        if (U_SUCCESS(status) && count == 2 && U16_IS_LEAD(units[0])) {
            return U16_GET_SUPPLEMENTARY(units[0], units[1]);
        }
        return U_SUCCESS(status) && count == 1 ? units[0] : -1;
    }

    bool is_character(std::string_view bytes) const {
        const auto in = [bytes](std::size_t at, int first, int last) {
            const int byte = static_cast<std::uint8_t>(bytes[at]);
            return byte >= first && byte <= last;
        };
        if (code == ZQ_CHARSET_UTF8) {
            return decoded(bytes) != -1;
        }
        if (code == ZQ_CHARSET_EUC_KR) {
            return bytes.size() == 2 && in(0, 0xA1, 0xFE) && in(1, 0xA1, 0xFE);
        }
        return (bytes.size() == 2 && in(0, 0x81, 0xFE) && (in(1, 0x40, 0x7E) || in(1, 0x80, 0xFE))) ||
               (bytes.size() == 4 && in(0, 0x81, 0xFE) && in(1, 0x30, 0x39) && in(2, 0x81, 0xFE) && in(3, 0x30, 0x39));
    }

    std::vector<std::string> characters(std::string_view text) const {
        std::vector<std::string> found;
        while (!text.empty()) {
            std::size_t length = 1;
            for (std::size_t tried = 2; tried <= std::min<std::size_t>(text.size(), 4) && static_cast<std::uint8_t>(text[0]) >= 0x80;
                 ++tried) {
                length = is_character(text.substr(0, tried)) ? tried : length;
            }
            found.emplace_back(text.substr(0, length));
            text.remove_prefix(length);
        }
        return found;
    }

    std::string in_case(const std::string& character, bool upper) const {
        const bool unknown = character.size() == 1 && static_cast<std::uint8_t>(character[0]) >= 0x80;
        const UChar32 code_point = unknown ? -1 : decoded(character);
        const std::string changed = code_point == -1 ? ""s : encoded(upper ? u_toupper(code_point) : u_tolower(code_point));
        return changed.size() == character.size() ? changed : character;
    }

    std::uint32_t code;

  private:
    static std::string converted(iconv_t by, std::string_view from) {
        std::string input(from);
        std::string output(16, '\0');
        char* in = input.data();
        char* out = output.data();
        std::size_t in_left = input.size();
        std::size_t out_left = output.size();
        const bool is_whole = iconv(by, &in, &in_left, &out, &out_left) == 0;
        output.resize(is_whole ? output.size() - out_left : 0);
        return output;
    }

    iconv_t to_charset{};
    iconv_t to_unicode{};
    struct closed {
        void operator()(UConverter* opened) const { ucnv_close(opened); }
    };
    std::unique_ptr<UConverter, closed> converter;
};

std::span<const reference> references() {
    static const reference all[] = {{ZQ_CHARSET_UTF8, "UTF-8"}, {ZQ_CHARSET_GB18030, "gb18030"}, {ZQ_CHARSET_EUC_KR, "EUC-KR"}};
    return all;
}

std::string joined(const std::vector<std::string>& parts) { return std::accumulate(parts.begin(), parts.end(), ""s); }

// Valid characters, bytes at the borders of all ranges, stretches of ASCII, cut anywhere.
class random_texts {
  public:
    explicit random_texts(const reference& charset) : charset(charset) {}

    std::string next() {
        static const std::string border_bytes =
            "\x20\x2F\x30\x39\x3A\x40\x7A\x7E\x7F\x80\x81\x8F\x90\x9F\xA0\xA1\xBF\xC0\xC1\xC2\xDF\xE0\xE1"
            "\xED\xEF\xF0\xF1\xF4\xF5\xFE\xFF";
        static const UChar32 code_points[] = {'a',    'Z',    0xE4,   0xC4,   0x44F,  0x416,  0x7FF,   0x800,   0x1EA5,  0x3B1,
                                              0xAC00, 0x4E2D, 0xD7A3, 0xFFFD, 0xFF41, 0xFF3A, 0x10000, 0x1F600, 0x10428, 0x10FFFF};
        const std::uint32_t target = random(8) == 0 ? random(300) : random(45);
        const std::uint32_t malformed = random(3); // none, few or many
        std::string text;
        while (text.size() < target) {
            if (random(10) < malformed * malformed * 2) {
                text += border_bytes[random(static_cast<std::uint32_t>(border_bytes.size()))];
            } else if (random(12) == 0) {
                text.append(random(90), 'q');
            } else {
                text += charset.encoded(code_points[random(20)]);
            }
        }
        return text.substr(std::min<std::size_t>(random(4), text.size()), target);
    }

    std::uint32_t random(std::uint32_t end) { return static_cast<std::uint32_t>(generator() % end); }

  private:
    const reference& charset;
    std::mt19937 generator{20240229};
};

class Charset : public testing::Test {
  protected:
    ~Charset() override { zqengine::set_database_charset(ZQ_CHARSET_UTF8); }
};

TEST_F(Charset, IsUtf8) { EXPECT_EQ(zqengine::database_charset(), std::uint32_t{ZQ_CHARSET_UTF8}); }

TEST_F(Charset, OfOneByteHasNoOthers) {
    zqengine::set_database_charset(single_byte_code);
    const exact_block text("\xC2\x80 a");
    EXPECT_EQ(zq_mb_char_get_len_ex(text.data(), text.length), 1U);
    EXPECT_EQ(zq_mbstrlen_ex(text.data(), text.length), 4U);
}

TEST_F(Charset, KnowsEveryCodePointAndItsCases) {
    for (const reference& charset : references()) {
        zqengine::set_database_charset(charset.code);
        std::uint32_t known = 0;
        for (UChar32 code_point = 0; code_point <= 0x10FFFF; ++code_point) {
            const std::string bytes = U_IS_SURROGATE(code_point) ? ""s : charset.encoded(code_point);
            // The C library's EUC-KR has C1 control characters of one byte.
            if (bytes.empty() || (bytes.size() == 1 && code_point >= 0x80)) {
                continue;
            }
            ++known;
            exact_block text(bytes);
            std::uint32_t value[4] = {};
            ASSERT_EQ(zq_get_char_unicode_vals(text.data(), text.length, value), 1U) << std::hex << code_point;
            ASSERT_EQ(value[0], static_cast<std::uint32_t>(code_point));
            ASSERT_EQ(zq_mb_char_get_len(text.data()), text.length);
            ASSERT_EQ(zq_mbstrlen_ex(text.data(), text.length), 1U);
            zq_mbsupper_ex(text.data(), text.length);
            ASSERT_EQ(text.text(), charset.in_case(bytes, true)) << std::hex << code_point;
            exact_block lower(bytes);
            zq_mbslower_ex(lower.data(), lower.length);
            ASSERT_EQ(lower.text(), charset.in_case(bytes, false)) << std::hex << code_point;
        }
        EXPECT_EQ(known, charset.code == ZQ_CHARSET_EUC_KR ? 128U + 8226U : 0x110000U - 0x800U);
    }
}

TEST_F(Charset, UnassignedCharactersHaveNoCodePointAndStay) {
    const std::pair<std::uint32_t, std::string> cases[] = {{ZQ_CHARSET_GB18030, "\x84\x31\xA5\x30"},
                                                           {ZQ_CHARSET_GB18030, "\x8F\x39\xFE\x39"},
                                                           {ZQ_CHARSET_GB18030, "\xE3\x32\x9A\x36"},
                                                           {ZQ_CHARSET_GB18030, "\xFE\x39\xFE\x39"},
                                                           {ZQ_CHARSET_EUC_KR, "\xA2\xFE"},
                                                           {ZQ_CHARSET_EUC_KR, "\xC9\xA1"},
                                                           {ZQ_CHARSET_UTF8, "\xC2"},
                                                           {single_byte_code, "\xE4"}};
    for (const auto& [code, bytes] : cases) {
        zqengine::set_database_charset(code);
        exact_block text(bytes);
        std::uint32_t value[4] = {};
        EXPECT_EQ(zq_get_char_unicode_vals(text.data(), text.length, value), 1U);
        EXPECT_EQ(value[0], 0xFFFDU);
        zq_mbsupper_ex(text.data(), text.length);
        zq_mbslower_ex(text.data(), text.length);
        EXPECT_EQ(text.text(), bytes);
    }
}

TEST_F(Charset, OperationsAgreeOnAnyBytes) {
    for (const reference& charset : references()) {
        zqengine::set_database_charset(charset.code);
        random_texts texts(charset);
        int refused = 0;
        for (int round = 0; round < 12000; ++round) {
            const std::string bytes = texts.next();
            SCOPED_TRACE(testing::Message() << "code " << charset.code << " round " << round << ": " << testing::PrintToString(bytes));
            const exact_block text(bytes);
            const std::vector<std::string> characters = charset.characters(bytes);
            const auto count = static_cast<std::uint32_t>(characters.size());
            std::vector<std::uint32_t> offsets{0};
            std::vector<std::uint32_t> positions;
            std::string valid;
            std::uint32_t valid_count = 0;
            for (const std::string& character : characters) {
                offsets.push_back(offsets.back() + static_cast<std::uint32_t>(character.size()));
                positions.insert(positions.end(), character.size(), static_cast<std::uint32_t>(offsets.size() - 1));
                const bool is_valid = character.size() > 1 || static_cast<std::uint8_t>(character[0]) < 0x80;
                valid += is_valid ? character : ""s;
                valid_count += is_valid;
            }
            ASSERT_EQ(zq_mbstrlen_ex(text.data(), text.length), count);
            std::vector<std::uint32_t> lengths;
            std::ranges::transform(characters, std::back_inserter(lengths),
                                   [](const auto& c) { return static_cast<std::uint32_t>(c.size()); });
            ASSERT_EQ(zq_translate_from_str_has_mb(lengths.data(), count) != 0, count != text.length);
            std::vector<std::uint32_t> written(text.length);
            ASSERT_EQ(zq_mbstrlen_cposition_ex(text.data(), text.length, written.data()), count);
            ASSERT_EQ(written, positions);
            for (std::uint32_t offset = 0; offset < text.length; ++offset) {
                ASSERT_EQ(zq_char_start(text.data(), text.length, offset) != 0, std::binary_search(offsets.begin(), offsets.end(), offset))
                    << offset;
            }
            for (std::uint32_t n = 0; n <= count + 1; ++n) {
                const std::uint32_t reached = std::min(n, count);
                std::uint32_t stepped = 0;
                ASSERT_EQ(zq_mbsninc_ex(text.data(), text.length, n), offsets[reached]) << n;
                ASSERT_EQ(zq_mbsninc_count_ex(text.data(), text.length, n, &stepped), offsets[reached]) << n;
                ASSERT_EQ(stepped, reached);
                ASSERT_EQ(zq_mbget_byte_offset(text.data(), text.length, n + 1), offsets[reached]);
                const std::uint32_t more = texts.random(20);
                ASSERT_EQ(zq_mbget_bytelen(text.data(), text.length, n + 1, more), offsets[std::min(n + more, count)] - offsets[reached]);
                if (n < count) {
                    const exact_block rest(bytes.substr(offsets[n]));
                    ASSERT_EQ(zq_mbsinc_ex(rest.data(), rest.length), characters[n].size());
                    ASSERT_EQ(zq_mb_char_get_len_ex(rest.data(), rest.length), characters[n].size());
                }
            }
            // Of a set of its own bytes, which may be cut within characters.
            const std::string set_bytes = bytes.substr(std::min<std::size_t>(texts.random(3), bytes.size()), texts.random(12));
            const exact_block set(set_bytes);
            const std::vector<std::string> members = charset.characters(set_bytes);
            const auto first_kept = std::ranges::find_if(characters, [&](const auto& c) { return std::ranges::count(members, c) == 0; });
            const std::uint8_t* rest = text.data();
            std::uint32_t rest_length = text.length;
            trim_left(set.data(), set.length, &rest, &rest_length);
            ASSERT_EQ(text.length - rest_length, offsets[static_cast<std::size_t>(first_kept - characters.begin())]) << set_bytes;
            ASSERT_EQ(rest, text.data() + (text.length - rest_length));
            const exact_block padded(std::string(texts.random(42), ' ') + bytes);
            rest = padded.data();
            rest_length = padded.length;
            trim_left_space(&rest, &rest_length);
            ASSERT_EQ(padded.length - rest_length, std::min<std::size_t>(padded.text().find_first_not_of(' '), padded.length));
            ASSERT_EQ(zq_mbsinc_ex(text.data(), text.length), offsets[std::min<std::size_t>(1, count)]);
            exact_block copied(std::string(text.length, '\0'));
            std::uint32_t copied_count = 0;
            const std::int32_t number = charset.code == ZQ_CHARSET_UTF8 ? 1 : charset.code == ZQ_CHARSET_EUC_KR ? 6 : 10;
            ASSERT_EQ(zq_get_valid_chars(number, text.data(), text.length, copied.data(), &copied_count), valid.size());
            ASSERT_EQ(copied.text().substr(0, valid.size()), valid);
            ASSERT_EQ(copied_count, valid_count);
            ASSERT_EQ(zq_get_valid_chars(0, text.data(), text.length, nullptr, nullptr), text.length);
            for (const bool upper : {true, false}) {
                std::string expected;
                for (const std::string& character : characters) {
                    expected += charset.in_case(character, upper);
                }
                exact_block changed(bytes);
                (upper ? zq_mbsupper_ex : zq_mbslower_ex)(changed.data(), changed.length);
                ASSERT_EQ(changed.text(), expected);
            }
            // Reversal is undone by reversal, or refused.
            const std::vector<std::string> backwards(characters.rbegin(), characters.rend());
            const std::string reversed = joined(backwards);
            const bool can_be_reversed = charset.characters(reversed) == backwards;
            refused += !can_be_reversed;
            const std::uint8_t* const in_place = text.data();
            ASSERT_EQ(zq_mbsrev_ex(text.data(), text.length), can_be_reversed ? in_place : nullptr);
            ASSERT_EQ(text.text(), can_be_reversed ? reversed : bytes);
            ASSERT_TRUE(!can_be_reversed || zq_mbsrev_ex(text.data(), text.length) == in_place);
            ASSERT_EQ(text.text(), bytes);
            zq_mbsrev_with_compatible_mode(text.data(), text.length, 2);
            ASSERT_EQ(text.text(), std::string(bytes.rbegin(), bytes.rend()));
        }
        EXPECT_TRUE(refused > 20 && refused < 9000) << refused;
    }
}

} // namespace
