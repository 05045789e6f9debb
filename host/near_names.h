// SPDX-License-Identifier: Apache-2.0
// Suggestions for names that do not exist.
#ifndef BIFUN_HOST_NEAR_NAMES_H
#define BIFUN_HOST_NEAR_NAMES_H

#include <span>
#include <string>
#include <string_view>

#include "adapters/binding/upper_case.h"

namespace host {

using binding::upper_case;

// ASCII letters only, here as in the rest.
std::string lower_case(std::string_view text);
bool equal_ignoring_case(std::string_view a, std::string_view b);

// "; did you mean A or B?" with the candidates that differ least from `name`: by a typing error or two, or by what one has behind the
// other, ignoring the case of ASCII letters; empty when there is none.
// `shown` gives the candidates as they are to be typed.
std::string did_you_mean(
    std::string_view name, std::span<const std::string> candidates,
    std::string (*shown)(const std::string&) = [](const std::string& candidate) { return candidate; });

} // namespace host

#endif
