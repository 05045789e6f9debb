// SPDX-License-Identifier: Apache-2.0
// LIKE.
#ifndef BIFUN_HOST_EVALUATION_LIKE_H
#define BIFUN_HOST_EVALUATION_LIKE_H

#include <cstdint>
#include <string_view>

#include "bop/frame/contract.h"

namespace host {

// Whether each text matches the pattern in the other column, into the condition `result`; unknown where either is NULL. In a pattern %
// stands for any characters, none too, and _ for any one; the character behind `escape`, which is one character or none, for itself.
// Characters are those of the database character set. As in comparisons, blanks at the end of a text need not be in the pattern, nor those
// of the pattern in the text; `fold_case` disregards the case of ASCII letters. Throws program_error where a pattern ends in the escape.
void match_columns(const bifun_column& texts, const bifun_column& patterns, std::string_view escape, bool fold_case, bifun_column& result,
                   std::uint32_t row_count);

} // namespace host

#endif
