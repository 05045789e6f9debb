// Texts of decimals. What is read prints as plain digits, which read back as the same value to the byte, in a buffer of just their size.
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>

#include "bop/bifun.h"
#include "engine/decimal.h"
#include "fuzz/require.h"
#include "tests/contract/exact_block.h"

namespace {

// A failure leaves the value alone.
std::int32_t read(std::string_view text, xdec& value) {
    const exact_block block(text);
    xdec untouched;
    std::memset(&untouched, 0xA5, sizeof untouched);
    value = untouched;
    const std::int32_t status = xdec_from_char(block.bytes.get(), block.length, &value);
    require(status == 0 || status == BIFUN_UNUSABLE_TEXT || status == BIFUN_NUMERIC_OVERFLOW);
    require(status == 0 || std::memcmp(&value, &untouched, sizeof value) == 0);
    return status;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    xdec value;
    if (read({reinterpret_cast<const char*>(data), size}, value) != 0) {
        return 0;
    }
    char text[256];
    std::uint32_t length = 0;
    require(xdec_to_char_with_zero(&value, text, sizeof text, 0, 0, &length) == 0 && std::strlen(text) == length);

    const std::uint32_t exact_size = length + 1;
    const auto exact = std::make_unique<char[]>(exact_size);
    require(xdec_to_char_with_zero(&value, exact.get(), exact_size, 0, 0, &length) == 0 && std::strcmp(exact.get(), text) == 0);
    const auto short_by_one = std::make_unique<char[]>(exact_size - 1);
    std::uint32_t no_length = 0;
    require(xdec_to_char_with_zero(&value, short_by_one.get(), exact_size - 1, 0, 0, &no_length) == BIFUN_ARGUMENT_OUT_OF_DOMAIN);

    xdec again;
    require(read({text, length}, again) == 0);
    require(std::memcmp(&again, &value, sizeof value) == 0 && xdec_cmp(&again, &value) == 0);
    return 0;
}
