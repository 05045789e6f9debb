// SPDX-License-Identifier: Apache-2.0
#include "embedded/format/number_format_texts.h"

#include "embedded/format/nls_parameters.h"
#include "engine/number_format.h"

namespace zqengine {

std::int32_t parse_format_texts(const format_texts& texts, number_format& result) {
    nls_parameters parameters;
    if (!parse_nls_parameters(texts.nls, texts.nls_length, parameters)) {
        return ZQ_INVALID_NLS_PARAMETERS;
    }
    return parse_number_format(texts.format, texts.format_length, parameters, result) ? 0 : ZQ_INVALID_NUMBER_FORMAT;
}

} // namespace zqengine
