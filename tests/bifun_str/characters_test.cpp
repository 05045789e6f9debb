// SPDX-License-Identifier: Apache-2.0
// Functions that change and convert characters, where the model of the string functions has no answer: malformed texts, character sets,
// modes, engines that fail, names of which others have said how they sound.

#include <dlfcn.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "engine/charset.h"
#include "engine/large_objects.h"
#include "tests/contract/each_engine.h"
#include "tests/contract/text_case.h"

namespace {
std::uint32_t most_bytes_read = UINT32_MAX; // at once, of a large object; 0: reading fails
}

// Replaces the engine's operation in this program.
extern "C" __attribute__((visibility("default"))) std::int32_t ntext_get_data(bifun_environment* environment,
                                                                              const bifun_large_object* object, std::int64_t offset,
                                                                              std::uint8_t* data, std::uint32_t size, std::uint32_t* read) {
    static auto* const embedded = reinterpret_cast<decltype(&ntext_get_data)>(dlsym(RTLD_NEXT, "ntext_get_data"));
    return most_bytes_read == 0 ? -7112 : embedded(environment, object, offset, data, std::min(size, most_bytes_read), read);
}

namespace {

using contract::evaluate;
using contract::expect_results;

class Characters : public testing::Test {
  protected:
    void SetUp() override { use(ZQ_CHARSET_UTF8); }
    static void use(std::uint32_t charset, std::uint32_t mode = 0) {
        contract::set_up({.compatible_mode = mode, .charset_code = charset, .case_sensitive = 1});
    }
};

TEST_F(Characters, OfMalformedTexts) {
    each_engine::with_each_engine([] {
        expect_results({
            "bupper_a_str | a\xFF\xE4\xB8z | [1] A\xFF\xE4\xB8Z",
            "binitcap_a_str | a\xFFzZ | [1] A\xFFZz",
            "breverse_a_str | ab \xA9\xC3 | [0] ba NULL status -6108", // would be an é
            "bascii_a_str | \xE4\xB8 \xFFz | [0] 228 255",
            "basciistr_a_str | a\xE4\xB8 | [1] a\\FFFD\\FFFD",
            "bsoundex_a_str | \xFFR\xE4oberts | [1] R163",
        });
    });
}

TEST_F(Characters, OfTheOtherCharacterSets) {
    use(ZQ_CHARSET_GB18030);
    expect_results({
        "bascii_a_str | \2010\2010z \x83\x36\xC7\x38 | [0] 2167439664 2201405240",
        "bchr_a_str | 2167439664 33089 | [1] \2010\2010 \201A",
        "bchr_a_str | 129 | [0] NULL status -6803",
        "bsoundex_a_str | \201R\201Bo\201B\201E | [1] O000", // letters that are halves of characters
        "bbinary_to_char_a_str | \201A A\x81 | [0] \201A NULL status -6147",
        "bstrposinc_def_a_str | \x81\xFE \x84\x31\xA4\x39 | [1] \x82@ \x90\x30\x81\x30",
        "bstrposdec_def_a_str | \2010\2010 | [0] NULL status -6803",
    });
    use(ZQ_CHARSET_EUC_KR);
    expect_results({
        "bchr_a_str | 45217 | [1] \xB0\xA1", "bchr_a_str | 41377 41376 | [0] \xA1\xA1 NULL status -6803",
        "bstrposinc_def_a_str | \xB0\xFE \xFE\xFE | [0] \xB1\xA1 NULL status -6803",
        "bupper_a_str | \xA9\xB0z | [1] \xA9\xB0Z", // has no capital there
    });
    use(99); // every byte is a character
    expect_results({
        "bchr_a_str | 200 | [1] \xC8",
        "bchr_a_str | 16706 | [0] NULL status -6803",
        "breverse_a_str | a\xC3\xA9 | [1] \xA9\xC3\x61",
        "bstrposinc_def_a_str | a\x7F \xFF | [0] a\x80 NULL status -6803",
    });
}

TEST_F(Characters, InCompatibleModes) {
    use(ZQ_CHARSET_UTF8, 2);
    expect_results({"breverse_a_str | aé \xA9\xC3 | [1] \xA9\xC3\x61 é"});
    use(ZQ_CHARSET_UTF8, 3);
    expect_results({"bascii_a_str | '' _ | [0] 0 32"});
}

TEST_F(Characters, OfLargeObjects) {
    const std::string whole = evaluate({"btext_to_char_a_str", {"0 1 5000"}, ""});
    most_bytes_read = 7;
    EXPECT_EQ(evaluate({"btext_to_char_a_str", {"0 1 5000"}, ""}), whole);
    most_bytes_read = 0;
    expect_results({"btext_to_char_a_str | 0 1 | [0] '' NULL status -6806"});
    most_bytes_read = UINT32_MAX;
}

// As the archives of the census code them.
TEST_F(Characters, SoundAsNames) {
    const std::pair<const char*, const char*> names[] = {
        {"Ashcraft", "A261"}, {"Ashcroft", "A261"},  {"Tymczak", "T522"}, {"Pfister", "P236"}, {"Honeyman", "H555"},
        {"Robert", "R163"},   {"Rupert", "R163"},    {"Rubin", "R150"},   {"Lee", "L000"},     {"Gutierrez", "G362"},
        {"Jackson", "J250"},  {"Lloyd", "L300"},     {"Euler", "E460"},   {"Gauss", "G200"},   {"Washington", "W252"},
        {"O'Hara", "O600"},   {"van~Deusen", "V532"}};
    for (const auto& [name, code] : names) {
        EXPECT_EQ(evaluate({"bsoundex_a_str", {name}, ""}), std::string("[1] ") + code) << name;
    }
    expect_results({
        "bdifference_aa_str | Green Green Smith 1 1 | Greene Green Jones 2 a | [1] 4 4 2 4 0",
        "bsoundex_a_str | '' 123 é_ | [1] '' '' ''",
    });
}

} // namespace
