// SPDX-License-Identifier: Apache-2.0
// What is wrong with number formats, and with texts that are to be read under one.
#ifndef BIFUN_HOST_VALUES_NUMBER_FORMATS_H
#define BIFUN_HOST_VALUES_NUMBER_FORMATS_H

#include <string>
#include <string_view>

namespace host {

// Where the text departs from the format and what is expected there; empty where it does not. Texts are in the database character set, an
// empty `nls` is none; `shown` is the text as messages show it.
std::string explain_number_mismatch(std::string_view text, std::string_view shown, std::string_view format, std::string_view nls);

// The call that makes a number of the column or value `name` where its text is a number as people write them, with groups of thousands, a
// comma before the fraction or a unit of money or a per cent sign: TO_NUMBER(REPLACE(x, ',', '')). Empty where it is none. 1,234 has a
// group. The text is in UTF-8.
std::string call_that_reads(std::string_view name, std::string_view text);

// What formats are like, of a text that is none: "# is no element: ...".
std::string explain_number_format(std::string_view format);

} // namespace host

#endif
