// SPDX-License-Identifier: Apache-2.0
// Numbers, formats and NLS texts, separated by newlines. Any number under any format has a text of its width or a status, the same for a
// session that has met other formats before; the text is read as a number that has the same text. Any text is read or departs from the
// format somewhere.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>

#include "bop/frame/status.h"
#include "embedded/format/nls_parameters.h"
#include "embedded/session/environment.h"
#include "engine/decimal.h"
#include "engine/number_format.h"
#include "fuzz/require.h"
#include "tests/contract/exact_block.h"

namespace {

exact_block take_line(std::string_view& input) {
    const std::string_view line = input.substr(0, input.find('\n'));
    input.remove_prefix(std::min(line.size() + 1, input.size()));
    return exact_block(line);
}

void check_width(const exact_block& format, const exact_block& nls, std::size_t length) {
    zqengine::nls_parameters parameters;
    zqengine::number_format parsed;
    require(zqengine::parse_nls_parameters(nls.bytes.get(), nls.length, parameters));
    require(zqengine::parse_number_format(format.bytes.get(), format.length, parameters, parsed));
    const bool is_shortest = parsed.kind == zqengine::format_kind::shortest || parsed.kind == zqengine::format_kind::shortest_scientific;
    if (is_shortest) {
        require(length >= 1 && length <= 64);
    } else {
        require(length == parsed.width || (parsed.fill_mode && length < parsed.width) ||
                (parsed.kind == zqengine::format_kind::scientific && length == parsed.width + 1U));
    }
}

std::int32_t read(bifun_environment* session, const std::uint8_t* text, std::size_t length, const exact_block& format,
                  const exact_block& nls, xdec& number) {
    std::uint32_t departs_at = 0;
    const std::int32_t status = char_to_dec_with_fmt(session, text, static_cast<std::uint32_t>(length), format.bytes.get(), format.length,
                                                     nls.bytes.get(), nls.length, &number, &departs_at);
    require(departs_at <= length);
    return status;
}

// A row of # is no number; an exponent behind that of the largest number is none, either.
void check_reading(bifun_environment* session, const exact_block& format, const exact_block& nls, const char* text) {
    xdec number;
    const std::size_t length = std::strlen(text);
    if (std::strspn(text, "#") == length || read(session, nullptr, 0, format, nls, number) == ZQ_INVALID_NLS_PARAMETERS) {
        return;
    }
    const std::int32_t status = read(session, reinterpret_cast<const std::uint8_t*>(text), length, format, nls, number);
    if (status == BIFUN_NUMERIC_OVERFLOW) {
        return;
    }
    require(status == 0);
    const auto again = std::make_unique<char[]>(1024);
    require(xdec_to_char_with_nls(session, &number, again.get(), format.bytes.get(), format.length, nls.bytes.get(), nls.length) == 0);
    require(std::strcmp(again.get(), text) == 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static bifun_environment session;
    std::string_view input{reinterpret_cast<const char*>(data), size};
    const exact_block number = take_line(input);
    const exact_block format = take_line(input);
    const exact_block nls = take_line(input);

    xdec value;
    (void)read(&session, number.bytes.get(), number.length, format, nls, value);
    if (xdec_from_char(number.bytes.get(), number.length, &value) != 0) {
        return 0;
    }
    const auto kept = std::make_unique<char[]>(1024);
    const auto fresh = std::make_unique<char[]>(1024);
    const std::int32_t status =
        xdec_to_char_with_nls(nullptr, &value, fresh.get(), format.bytes.get(), format.length, nls.bytes.get(), nls.length);
    for (int i = 0; i < 2; ++i) {
        require(xdec_to_char_with_nls(&session, &value, kept.get(), format.bytes.get(), format.length, nls.bytes.get(), nls.length) ==
                status);
        require(status != 0 || std::strcmp(kept.get(), fresh.get()) == 0);
    }
    require(status == 0 || status == ZQ_INVALID_NUMBER_FORMAT || status == ZQ_INVALID_NLS_PARAMETERS);
    if (status == 0) {
        check_width(format, nls, std::strlen(fresh.get()));
        check_reading(&session, format, nls, fresh.get());
    }
    return 0;
}
