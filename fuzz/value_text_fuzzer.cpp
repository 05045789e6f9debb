// SPDX-License-Identifier: Apache-2.0
// Texts of decimals and doubles or, where the first byte is odd, datetimes. What is read is written as text that reads back as the same
// value to the byte, in a buffer of just its size; reading does not go past the end and leaves the value alone where it fails.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "bop/bifun.h"
#include "embedded/datetime/text.h"
#include "engine/datetime.h"
#include "engine/decimal.h"
#include "engine/number_format.h"
#include "fuzz/require.h"
#include "tests/contract/exact_block.h"

namespace {

template <class Value, class Read> bool read(std::string_view text, Value& value, const Read& read_value) {
    const exact_block block(text);
    Value untouched;
    std::memset(&untouched, 0xA5, sizeof untouched);
    value = untouched;
    const std::int32_t status = read_value(block.data(), block.length, &value);
    require(status == 0 || status == BIFUN_UNUSABLE_TEXT || status == BIFUN_NUMERIC_OVERFLOW);
    require(status == 0 || std::memcmp(&value, &untouched, sizeof value) == 0);
    return status == 0;
}

void check_decimal(std::string_view input) {
    xdec value;
    xdec again;
    if (!read(input, value, xdec_from_char)) {
        return;
    }
    char text[256];
    std::uint32_t length = 0;
    require(xdec_to_char_with_zero(&value, text, sizeof text, 0, 0, &length) == 0 && std::strlen(text) == length);
    const auto exact = std::make_unique<char[]>(length + 1);
    std::uint32_t no_length = 0;
    require(xdec_to_char_with_zero(&value, exact.get(), length + 1, 0, 0, &no_length) == 0 && std::strcmp(exact.get(), text) == 0);
    require(xdec_to_char_with_zero(&value, exact.get(), length, 0, 0, &no_length) == BIFUN_ARGUMENT_OUT_OF_DOMAIN);
    require(read({text, length}, again, xdec_from_char) && std::memcmp(&again, &value, sizeof value) == 0 && xdec_cmp(&again, &value) == 0);
}

void check_double(std::string_view input) {
    double value;
    double again;
    xdec decimal;
    if (!read(input, value, zq_char2dou)) {
        require(!read(input, decimal, xdec_from_char));
        return;
    }
    require(value == std::strtod(std::string(input).c_str(), nullptr) || value != value);
    char text[ZQ_DOUBLE_TEXT_SIZE];
    std::uint32_t length = 0;
    require(zq_dou2char(value, text, sizeof text, &length) == 0 && std::strlen(text) == length);
    require(read({text, length}, again, zq_char2dou) && (value != value || std::memcmp(&again, &value, sizeof value) == 0));
}

void check_numbers(std::string_view input) {
    check_decimal(input);
    check_double(input);
}

void check_datetime(std::string_view input) {
    zqtime value;
    zqtime again;
    zqengine::datetime_kind kind;
    const auto read_kind = [&kind](const std::uint8_t* text, std::uint32_t length, zqtime* result) {
        return zqengine::read_datetime(text, length, result, &kind);
    };
    if (!read(input, value, read_kind)) {
        return;
    }
    // Encoding takes its parts, so they are in their ranges.
    std::int32_t year;
    std::uint32_t month, day, hour, minute, second, microsecond;
    zqtime_decode(&value, &year, &month, &day, &hour, &minute, &second, &microsecond);
    require(zqtime_encode(&again, year, month, day, hour, minute, second, microsecond, zqtime_get_tz(&value)) == 0);
    require(std::memcmp(&again, &value, sizeof value) == 0);
    const zqengine::datetime_kind first_kind = kind;
    char text[zqengine::datetime_text_size];
    const std::size_t length = zqengine::write_datetime(value, kind, text);
    require(read({text, length}, again, read_kind) && std::memcmp(&again, &value, sizeof value) == 0 && kind == first_kind);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 0) {
        (*data % 2 == 0 ? check_numbers : check_datetime)({reinterpret_cast<const char*>(data) + 1, size - 1});
    }
    return 0;
}
