// SPDX-License-Identifier: Apache-2.0
// Which character set the database has. The operations of engine/charset.h work in it.
#ifndef BIFUN_EMBEDDED_CHARSET_DATABASE_CHARSET_H
#define BIFUN_EMBEDDED_CHARSET_DATABASE_CHARSET_H

#include <cstdint>

namespace zqengine {

// `code` is one of the ZQ_CHARSET_ codes of engine/charset.h, UTF-8 before the first call; under any other code every byte is a character.
// One for the process: set it at start, before other threads use the operations. bifun_dll_var_init does so.
void set_database_charset(std::uint32_t code);
[[nodiscard]] std::uint32_t database_charset();

} // namespace zqengine

#endif
