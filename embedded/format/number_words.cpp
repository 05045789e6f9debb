// SPDX-License-Identifier: Apache-2.0
#include "embedded/format/number_words.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace zqengine {
namespace {

constexpr std::string_view below_twenty[] = {"ZERO",     "ONE",     "TWO",     "THREE",     "FOUR",     "FIVE",    "SIX",
                                             "SEVEN",    "EIGHT",   "NINE",    "TEN",       "ELEVEN",   "TWELVE",  "THIRTEEN",
                                             "FOURTEEN", "FIFTEEN", "SIXTEEN", "SEVENTEEN", "EIGHTEEN", "NINETEEN"};
constexpr std::string_view tens[] = {"", "", "TWENTY", "THIRTY", "FORTY", "FIFTY", "SIXTY", "SEVENTY", "EIGHTY", "NINETY"};

struct power {
    std::uint32_t value;
    std::string_view name;
};
constexpr power powers[] = {{1'000'000'000, " BILLION"}, {1'000'000, " MILLION"}, {1000, " THOUSAND"}, {100, " HUNDRED"}};

std::uint8_t* put(std::uint8_t* out, std::string_view word) {
    std::memcpy(out, word.data(), word.size());
    return out + word.size();
}

std::uint8_t* write_below_hundred(std::uint8_t* out, std::uint32_t number) {
    if (number < 20) {
        return put(out, below_twenty[number]);
    }
    out = put(out, tens[number / 10]);
    return number % 10 == 0 ? out : put(put(out, "-"), below_twenty[number % 10]);
}

} // namespace

std::uint8_t* write_in_words(std::uint8_t* out, std::uint32_t number) {
    for (const power& each : powers) {
        if (number >= each.value) {
            out = put(write_in_words(out, number / each.value), each.name);
            number %= each.value;
            return number == 0 ? out : write_in_words(put(out, " "), number);
        }
    }
    return write_below_hundred(out, number);
}

// The last word changes: ONE to FIRST, TWENTY to TWENTIETH, others get TH.
std::uint8_t* write_ordinal_in_words(std::uint8_t* out, std::uint32_t number) {
    constexpr std::string_view irregular[][2] = {{"ONE", "FIRST"},    {"TWO", "SECOND"}, {"THREE", "THIRD"},   {"FIVE", "FIFTH"},
                                                 {"EIGHT", "EIGHTH"}, {"NINE", "NINTH"}, {"TWELVE", "TWELFTH"}};
    std::uint8_t* const end = write_in_words(out, number);
    const std::uint8_t* last = end;
    while (last != out && last[-1] != ' ' && last[-1] != '-') {
        --last;
    }
    const std::string_view word(reinterpret_cast<const char*>(last), static_cast<std::size_t>(end - last));
    for (const auto& [cardinal, ordinal] : irregular) {
        if (word == cardinal) {
            return put(end - word.size(), ordinal);
        }
    }
    return word.back() == 'Y' ? put(end - 1, "IETH") : put(end, "TH");
}

std::uint8_t* write_year_in_words(std::uint8_t* out, std::uint32_t year) {
    const std::uint32_t century = year / 100;
    const std::uint32_t rest = year % 100;
    if (century == 0 || (century % 10 == 0 && rest < 10)) {
        return write_in_words(out, year);
    }
    out = write_below_hundred(out, century);
    if (rest == 0) {
        return put(out, " HUNDRED");
    }
    return write_below_hundred(put(out, rest < 10 ? " OH-" : " "), rest);
}

} // namespace zqengine
