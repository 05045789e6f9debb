// SPDX-License-Identifier: Apache-2.0
// A format model and a text, separated by a newline: a text is read into a value that exists, or not at all; one that is read by a model
// which says all of a value is written by it so that it reads back as the same.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "embedded/format/date_format.h"
#include "engine/date_format.h"
#include "engine/datetime.h"
#include "fuzz/require.h"
#include "tests/contract/exact_block.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view input{reinterpret_cast<const char*>(data), size};
    const std::uint8_t choice = input.empty() ? 0 : static_cast<std::uint8_t>(input.front());
    input.remove_prefix(std::min<std::size_t>(input.size(), 1));
    const std::size_t newline = std::min(input.find('\n'), input.size());
    const exact_block format(input.substr(0, newline));
    const exact_block text(input.substr(std::min(newline + 1, input.size())));

    dfm_model model;
    if (parse_date_fmt_with_len(nullptr, format.data(), format.length, 1, &model) != 0) {
        return 0;
    }
    require(dfm_set_lang(&model, choice % 2) == 0);
    zqtime value{};
    const zqengine::date_reading reading = zqengine::read_date(zqengine::inside(model), text.data(), text.length, value);
    require(reading.fault != zqengine::text_fault::unreadable_model && reading.offset <= text.length);
    require(reading.piece <= zqengine::inside(model).piece_count);

    // By a plan or piece by piece, a text reads as the same.
    zqengine::date_model unplanned = zqengine::inside(model);
    unplanned.plan.can_read = false;
    zqtime by_pieces{};
    require(zqengine::read_date(unplanned, text.data(), text.length, by_pieces).fault == reading.fault);
    require(std::memcmp(&by_pieces, &value, sizeof value) == 0);
    if (reading.fault != zqengine::text_fault::none) {
        require(reading.fault != zqengine::text_fault::mismatch || reading.piece < zqengine::inside(model).piece_count);
        return 0;
    }
    std::int32_t year;
    std::uint32_t parts[6];
    zqtime_decode(&value, &year, &parts[0], &parts[1], &parts[2], &parts[3], &parts[4], &parts[5]);
    zqtime same;
    require(zqtime_encode(&same, year, parts[0], parts[1], parts[2], parts[3], parts[4], parts[5], ZQTIME_NO_ZONE) == 0);
    require(std::memcmp(&same, &value, sizeof same) == 0);

    // And the text that is written, in both ways.
    if (zqengine::inside(model).plan.can_read) {
        std::uint8_t buffer[DFM_TEXT_SIZE];
        std::uint32_t length = 0;
        require(dfm_char_get(nullptr, &model, &value, buffer, &length) == 0);
        const exact_block written(std::string_view(reinterpret_cast<const char*>(buffer), length));
        zqtime read{};
        require(zqengine::read_date(zqengine::inside(model), written.data(), written.length, read).fault == zqengine::text_fault::none);
        zqtime again{};
        require(zqengine::read_date(unplanned, written.data(), written.length, again).fault == zqengine::text_fault::none);
        require(std::memcmp(&again, &read, sizeof read) == 0);
    }
    return 0;
}
