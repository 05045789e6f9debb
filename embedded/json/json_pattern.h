// SPDX-License-Identifier: Apache-2.0
// Regular expressions in paths, by ICU.
#ifndef BIFUN_EMBEDDED_JSON_JSON_PATTERN_H
#define BIFUN_EMBEDDED_JSON_JSON_PATTERN_H

#include <cstdint>
#include <string_view>

struct URegularExpression; // ICU's

namespace zqengine {

// The pattern is UTF-8, the flags are of i, m, q and s, and x beside q. Returns 0; -503; BIFUN_INVALID_JSON_PATH for others.
[[nodiscard]] std::int32_t create_pattern(std::string_view pattern, std::string_view flags, URegularExpression** made);
void release_pattern(URegularExpression* pattern);

// Whether the pattern is found in UTF-8. `found` is not set where a status is returned: -503; BIFUN_ARGUMENT_OUT_OF_DOMAIN where the search
// has been given up, as patterns can take any time. For one thread at a time.
[[nodiscard]] std::int32_t find_pattern(URegularExpression& pattern, std::string_view text, bool& found);

} // namespace zqengine

#endif
