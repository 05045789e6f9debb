// SPDX-License-Identifier: Apache-2.0
// Numbers as people write them, 1.234,56 and the like.
#ifndef BIFUN_HOST_VALUES_PLAIN_NUMBER_H
#define BIFUN_HOST_VALUES_PLAIN_NUMBER_H

#include <string>
#include <string_view>

namespace host {

// Makes of a number with that mark before its fraction, a comma or a point, one as in SQL: 1234.56. Between groups of three digits before
// the mark, and all of them, may stand the other of the two, a blank, U+00A0, U+202F, an apostrophe or U+2019. False where the text is no
// such number; what follows an E is not looked at.
bool plain_number(std::string_view text, char decimal_mark, std::string& plain);

} // namespace host

#endif
