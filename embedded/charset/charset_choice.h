// SPDX-License-Identifier: Apache-2.0
// The record of a character set by its code.
#ifndef BIFUN_EMBEDDED_CHARSET_CHARSET_CHOICE_H
#define BIFUN_EMBEDDED_CHARSET_CHARSET_CHOICE_H

#include "embedded/charset/euc_kr.h"
#include "embedded/charset/gb18030.h"
#include "embedded/charset/single_bytes.h"
#include "embedded/charset/utf8.h"
#include "engine/charset.h"

namespace zqengine {

// Calls `operation` with the record of the character set that has this ZQ_CHARSET_ code.
template <class Operation> auto in_charset(std::uint32_t code, Operation operation) {
    switch (code) {
    case ZQ_CHARSET_UTF8:
        return operation(utf8{});
    case ZQ_CHARSET_GB18030:
        return operation(gb18030{});
    case ZQ_CHARSET_EUC_KR:
        return operation(euc_kr{});
    default:
        return operation(single_bytes{});
    }
}

} // namespace zqengine

#endif
