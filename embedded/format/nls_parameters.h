// SPDX-License-Identifier: Apache-2.0
// What a number format takes from the language and the country: separators and currency symbols.
#ifndef BIFUN_EMBEDDED_FORMAT_NLS_PARAMETERS_H
#define BIFUN_EMBEDDED_FORMAT_NLS_PARAMETERS_H

#include <cstdint>

#include "embedded/format/number_format.h"

namespace zqengine {

struct currency_symbol {
    std::uint8_t length;
    char text[max_nls_length];
};

struct nls_parameters {
    char decimal_point = '.';
    char group_separator = ',';
    currency_symbol currency{1, "$"};
    currency_symbol iso_currency{3, "USD"};
    currency_symbol dual_currency{1, "$"};
};

// Reads `NAME = value` any number of times, in any order, each name once, with blanks between them; the rest of `result` stays as it is.
// Names are of any case. A value is in quotes, a quote in it doubled, or runs to the next blank.
//     NLS_NUMERIC_CHARACTERS   decimal point and group separator: two different ASCII characters, no digits and none of + - < >
//     NLS_CURRENCY, NLS_ISO_CURRENCY, NLS_DUAL_CURRENCY   the symbol itself, in any character set
// Returns whether the text is such a list of at most max_nls_length bytes; control characters are not allowed in values.
[[nodiscard]] bool parse_nls_parameters(const std::uint8_t* text, std::uint32_t length, nls_parameters& result);

} // namespace zqengine

#endif
