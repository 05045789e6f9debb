// Texts of datetimes. What is read is written as text that reads back as the same value to the byte; reading does not go past the end.
#include <cstdint>
#include <cstring>

#include "bop/bifun.h"
#include "embedded/datetime/text.h"
#include "engine/datetime.h"
#include "fuzz/require.h"
#include "tests/contract/exact_block.h"

namespace {

// A failure leaves the value alone.
bool read(std::string_view text, zqtime& value, zqengine::datetime_kind& kind) {
    const exact_block block(text);
    zqtime untouched;
    std::memset(&untouched, 0xA5, sizeof untouched);
    value = untouched;
    const std::int32_t status = zqengine::read_datetime(block.bytes.get(), block.length, &value, &kind);
    require(status == 0 || status == BIFUN_UNUSABLE_TEXT);
    require(status == 0 || std::memcmp(&value, &untouched, sizeof value) == 0);
    return status == 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    zqtime value;
    zqengine::datetime_kind kind;
    if (!read({reinterpret_cast<const char*>(data), size}, value, kind)) {
        return 0;
    }
    // Encoding takes its parts, so they are in their ranges.
    std::int32_t year;
    std::uint32_t month, day, hour, minute, second, microsecond;
    zqtime_decode(&value, &year, &month, &day, &hour, &minute, &second, &microsecond);
    zqtime encoded;
    require(zqtime_encode(&encoded, year, month, day, hour, minute, second, microsecond, zqtime_get_tz(&value)) == 0);
    require(std::memcmp(&encoded, &value, sizeof value) == 0);

    char text[zqengine::datetime_text_size];
    const std::size_t length = zqengine::write_datetime(value, kind, text);
    zqtime again;
    zqengine::datetime_kind kind_again;
    require(read({text, length}, again, kind_again));
    require(std::memcmp(&again, &value, sizeof value) == 0 && kind_again == kind);
    return 0;
}
