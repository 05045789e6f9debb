// SPDX-License-Identifier: Apache-2.0
// Numbers of text under a format: what TO_CHAR writes is read, and where other texts depart from the format.
#include <gtest/gtest.h>

#include <array>
#include <fstream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "bop/frame/status.h"
#include "embedded/format/nls_parameters.h"
#include "embedded/session/environment.h"
#include "engine/decimal.h"
#include "engine/number_format.h"
#include "tests/contract/exact_block.h"
#include "tests/embedded/quoted_cells.h"

namespace {

std::string plain_text(const xdec& value) {
    char text[256];
    std::uint32_t length = 0;
    EXPECT_EQ(xdec_to_char_with_zero(&value, text, sizeof text, 0, 0, &length), 0);
    return {text, length};
}

// The number with the digits of its scale; `@3` where the text departs from the format behind three bytes; else the status.
std::string read(bifun_environment* environment, const std::string& text_given, const std::string& format_given,
                 const std::string& nls_given = "") {
    const exact_block text(text_given);
    const exact_block format(format_given);
    const exact_block nls(nls_given);
    xdec value;
    std::uint32_t departs_at = ~0U;
    const std::int32_t status = char_to_dec_with_fmt(environment, text.data(), text.length, format.data(), format.length, nls.data(),
                                                     nls.length, &value, &departs_at);
    return status == 0                              ? plain_text(value)
           : status == BIFUN_NUMBER_FORMAT_MISMATCH ? std::string("@").append(std::to_string(departs_at))
                                                    : std::to_string(status);
}

struct reading_case {
    const char* text;
    const char* format;
    const char* result;
    const char* nls = "";
};

// What the page does not show.
TEST(NumberReading, Cases) {
    bifun_environment environment;
    for (const reading_case& the : std::initializer_list<reading_case>{
             {"1,2,34", "9,999", "@3"},
             {"1,,234", "9,,999", "1234"},
             {"1,,234", "9,999", "@2"},
             {",234", "9,999", "@0"},
             {"12,", "99,", "12"},
             {"12,", "99", "@2"},
             {"1234567.5", "9,999,999.9", "1234567.5"},
             {"1 2", "99", "@1"},
             {"+1", "9", "@0"},
             {"+1", "S9", "1"},
             {"-", "9", "@1"},
             {"1+", "9S", "1"},
             {"1-", "9MI", "-1"},
             {"1+", "9MI", "@1"},
             {"<1", "9PR", "@0"},
             {".", "9.9", "@1"},
             {"1.23", "9.9", "@3"},
             {"0.5", ".9", "@0"},
             {"1E5", "9", "@1"},
             {"1", "9EEEE", "@1"},
             {"1E", "9EEEE", "@2"},
             {"1E+", "9EEEE", "@3"},
             {"1E+5x", "9EEEE", "@4"},
             {"12e-3", "99EEEE", "0.012"},
             {"1E126", "9EEEE",
              "1"
              "0000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000"
              "00"},
             {"1E99999999999", "9EEEE", "-6102"},
             {"fG", "XX", "@1"},
             {"fff", "XX", "@2"},
             {"-f", "XX", "@0"},
             {"CD", "RN", "400"},
             {"VIIII", "RN", "@4"},
             {"IXI", "rn", "@2"},
             {"12.", "TM", "@2"},
             {"+1", "TM", "@0"},
             {"-.5E-3", "TM", "-0.0005"},
             {"1E5", "TM", "1.5", "NLS_NUMERIC_CHARACTERS='E,'"},
             {"512", "L99", "12", "NLS_CURRENCY=5"},
             {"--12", "L99", "-12", "NLS_CURRENCY=-"},
             {"-12", "L99", "12", "NLS_CURRENCY=-"},
             {"12kr", "99L", "12", "NLS_CURRENCY='kr '"},
             {"12 kr", "99L", "@2", "NLS_CURRENCY=kr"},
             {"1 234,5", "9G999D9", "1234.5", "NLS_NUMERIC_CHARACTERS=', '"},
             {"12", "99", "-6131", "NLS_NUMERIC_CHARACTERS=' ,'"},
             {"12", "99", "-6131", "NLS"},
             {"12", "9Q", "-6130"},
             {"12", "", "-6130"},
         }) {
        EXPECT_EQ(read(nullptr, the.text, the.format, the.nls), the.result) << the.text << " under " << the.format;
        EXPECT_EQ(read(&environment, the.text, the.format, the.nls), the.result) << the.text << " under " << the.format;
    }
    EXPECT_EQ(read(nullptr, std::string(129, '9'), "TM"), "@128");
}

// Rows of the tables in the reference page: | `'text'` | `format` | `number` |, with the NLS text in a fourth column.
TEST(NumberReading, ReferencePage) {
    std::ifstream page(NUMBER_FORMATS_PAGE);
    int examples = 0;
    for (std::string line; std::getline(page, line);) {
        const std::vector<std::string> cells = quoted_cells(line);
        if (line.starts_with("| `'") && cells.size() >= 3) {
            EXPECT_EQ(read(nullptr, text_in(cells[0]), cells[1], cells.size() > 3 ? cells[3] : ""), cells[2]) << line;
            ++examples;
        }
    }
    EXPECT_GT(examples, 15);
}

// ---- every text that TO_CHAR writes ----

using random_source = std::mt19937_64;

template <std::size_t count> std::string one_of(random_source& random, const std::array<const char*, count>& words) {
    return words[random() % count];
}

std::string random_digits(random_source& random, std::size_t most) {
    std::string digits;
    for (std::size_t i = random() % (most + 1); i-- > 0;) {
        digits += random() % 4 == 0 ? '0' : '9';
    }
    return digits;
}

std::string random_format(random_source& random) {
    const std::string fill = one_of(random, std::array{"", "", "FM"});
    if (random() % 8 == 0) {
        return fill + one_of(random, std::array{"TM", "TM9", "TME", "RN", "rn", "XXXX", "0XX", "xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx"});
    }
    std::string format = fill + one_of(random, std::array{"", "", "S"}) + one_of(random, std::array{"", "", "B"}) +
                         one_of(random, std::array{"", "", "$", "L", "C", "U"});
    const bool national = random() % 2 == 0;
    const std::string group = national ? "G" : ",";
    const bool grouped = random() % 2 == 0;
    for (std::size_t i = 1 + random() % 3; i-- > 0;) {
        format.append(random_digits(random, 12)).append(grouped && random() % 2 == 0 ? group : "");
    }
    if (random() % 6 == 0) {
        format.append("V").append(random_digits(random, 5));
    } else if (random() % 2 == 0) {
        format.append(national ? "D" : ".").append(random_digits(random, 20));
    }
    return format + one_of(random, std::array{"", "", "", "EEEE"}) + one_of(random, std::array{"", "", "L", "C", "U"}) +
           one_of(random, std::array{"", "", "MI", "PR", "S"});
}

std::string random_number(random_source& random) {
    std::string digits = std::to_string(1 + random() % 9);
    for (std::size_t i = random() % (random() % 3 == 0 ? 37 : 12); i-- > 0;) {
        digits += static_cast<char>('0' + random() % 10);
    }
    const auto exponent = static_cast<int>(random() % (random() % 4 == 0 ? 60 : 12)) - static_cast<int>(random() % 24);
    return std::string(random() % 2, '-').append(random() % 10 == 0 ? "0" : digits).append("E").append(std::to_string(exponent));
}

TEST(NumberReading, ReadsWhatIsWritten) {
    constexpr std::array numerics = {"", "NLS_NUMERIC_CHARACTERS=',.' ", "NLS_NUMERIC_CHARACTERS=', ' ", "NLS_NUMERIC_CHARACTERS='E,' ",
                                     "NLS_NUMERIC_CHARACTERS='*#' "};
    constexpr std::array symbols = {"€", "5", "-", "+", "<", ">", "'kr '", "' kr'", "''", "' '", "'12.5'", "E", "x-", "0E+1"};
    random_source random(16);
    bifun_environment environment;
    int written = 0;
    for (int i = 0; i < 200'000; ++i) {
        const std::string format = random_format(random);
        const std::string number = random_number(random);
        std::string nls = one_of(random, numerics);
        nls += random() % 3 == 0 ? "" : "NLS_CURRENCY=" + one_of(random, symbols) + " NLS_ISO_CURRENCY=" + one_of(random, symbols);
        const auto bytes = [](const std::string& text) { return reinterpret_cast<const std::uint8_t*>(text.data()); };
        const auto length = [](const std::string& text) { return static_cast<std::uint32_t>(text.size()); };
        xdec value;
        char text[ZQ_FORMATTED_NUMBER_SIZE];
        ASSERT_EQ(xdec_from_char(bytes(number), length(number), &value), 0) << number;
        if (xdec_to_char_with_nls(&environment, &value, text, bytes(format), length(format), bytes(nls), length(nls)) != 0 ||
            std::string_view(text).find_first_not_of('#') == std::string_view::npos) {
            continue;
        }
        SCOPED_TRACE(testing::Message() << number << " under " << format << " " << nls << ": \"" << text << '"');
        ++written;
        const std::string given = text;
        xdec back;
        std::uint32_t departs_at = 0;
        ASSERT_EQ(char_to_dec_with_fmt(&environment, bytes(given), length(given), bytes(format), length(format), bytes(nls), length(nls),
                                       &back, &departs_at),
                  0)
            << departs_at;
        const zqengine::number_format& parsed = environment.number_formats.kept[environment.number_formats.last].parsed;
        if (parsed.kind == zqengine::format_kind::scientific || parsed.kind == zqengine::format_kind::shortest_scientific) {
            char again[ZQ_FORMATTED_NUMBER_SIZE];
            ASSERT_EQ(xdec_to_char_with_nls(&environment, &back, again, bytes(format), length(format), bytes(nls), length(nls)), 0);
            ASSERT_STREQ(again, text);
            continue;
        }
        xdec expected = value;
        if (parsed.kind != zqengine::format_kind::shortest) {
            ASSERT_EQ(xdec_round(&value, 0, parsed.fraction_digits + parsed.multiplier_digits, &expected), 0);
        }
        ASSERT_EQ(xdec_cmp(&back, &expected), 0) << plain_text(back);
    }
    EXPECT_GT(written, 50'000);
}

} // namespace
