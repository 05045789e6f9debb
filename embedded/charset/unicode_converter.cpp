// SPDX-License-Identifier: Apache-2.0
#include "embedded/charset/unicode_converter.h"

#include <unicode/ucnv.h>

namespace zqengine {
namespace {

UConverter* open(const char* name) {
    UErrorCode status = U_ZERO_ERROR;
    UConverter* const converter = ucnv_open(name, &status);
    ucnv_setToUCallBack(converter, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    ucnv_setFromUCallBack(converter, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    if (U_FAILURE(status)) {
        ucnv_close(converter);
        return nullptr;
    }
    ucnv_setFallback(converter, 0);
    return converter;
}

} // namespace

UConverter* open_unicode_converter(utf8 /*charset*/) { return open("UTF-8"); }
UConverter* open_unicode_converter(gb18030 /*charset*/) { return open("GB18030"); }
// What ICU calls EUC-KR has the table of before 1998, without the euro sign.
UConverter* open_unicode_converter(euc_kr /*charset*/) { return open("windows-949"); }

} // namespace zqengine
