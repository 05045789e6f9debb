// SPDX-License-Identifier: Apache-2.0
// ICU's converters of the character sets.
#ifndef BIFUN_EMBEDDED_CHARSET_UNICODE_CONVERTER_H
#define BIFUN_EMBEDDED_CHARSET_UNICODE_CONVERTER_H

#include "embedded/charset/euc_kr.h"
#include "embedded/charset/gb18030.h"
#include "embedded/charset/utf8.h"

struct UConverter; // ICU's

namespace zqengine {

// One that stops at what it cannot convert, for ucnv_close to close; null where there is none. The one of EUC-KR knows more pairs of bytes
// than EUC-KR has, and has characters of private use for those that the set leaves to its users: charset_tables.h tells which count.
UConverter* open_unicode_converter(utf8 charset);
UConverter* open_unicode_converter(gb18030 charset);
UConverter* open_unicode_converter(euc_kr charset);

} // namespace zqengine

#endif
