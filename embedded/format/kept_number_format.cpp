// SPDX-License-Identifier: Apache-2.0
#include "embedded/format/kept_number_format.h"

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

std::int32_t keep_number_format(const format_texts& texts, number_format_memory& memory) {
    memory.format_length = number_format_memory::none;
    const std::int32_t status = parse_format_texts(texts, memory.format);
    if (status == 0) {
        memory.format_length = texts.format_length;
        memory.nls_length = texts.nls_length;
        std::memcpy(memory.format_text, texts.format, texts.format_length);
        if (texts.nls_length != 0) {
            std::memcpy(memory.nls_text, texts.nls, texts.nls_length);
        }
    }
    return status;
}

} // namespace zqengine
