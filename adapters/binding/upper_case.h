// SPDX-License-Identifier: Apache-2.0
#ifndef BIFUN_ADAPTERS_BINDING_UPPER_CASE_H
#define BIFUN_ADAPTERS_BINDING_UPPER_CASE_H

#include <string>
#include <string_view>

namespace binding {

// The text with its ASCII letters as capitals, as names and keywords are compared.
inline std::string upper_case(std::string_view text) {
    std::string upper(text);
    for (char& letter : upper) {
        letter = letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    }
    return upper;
}

} // namespace binding

#endif
