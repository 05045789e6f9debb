// SPDX-License-Identifier: Apache-2.0
// A value and a format: a format model in one of the languages, or a %-format. Any text is one or has a problem with a place in it; any
// value has a text that fits its room, the same one as the model says of it.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "embedded/format/date_format.h"
#include "engine/date_format.h"
#include "engine/datetime.h"
#include "fuzz/require.h"
#include "layouts/calendar.h"
#include "layouts/datetime_layout.h"
#include "tests/contract/exact_block.h"

namespace {

namespace layout = bifun::datetime_layout;

// Of any bits: every value that a column can hold.
zqtime value_of(std::string_view& input) {
    std::uint8_t bits[12] = {};
    const std::size_t size = std::min(input.size(), sizeof bits);
    std::memcpy(bits, input.data(), size);
    input.remove_prefix(size);
    std::uint32_t words[3];
    std::memcpy(words, bits, sizeof words);
    const std::int32_t number = static_cast<std::int32_t>(words[0] % (bifun::calendar::number_of_last_day + 1U));
    const auto date = bifun::calendar::date_of_julian_day(number);
    zqtime value;
    layout::store_datetime(
        value, layout::pack_datetime({.year = date.year,
                                      .month = date.month,
                                      .day = date.day,
                                      .hour = words[1] % 7 == 0 ? words[1] % 596524 : words[1] % 24,
                                      .minute = words[1] / 24 % 60,
                                      .second = words[1] / 1440 % 60,
                                      .microsecond = words[2] % 1000000,
                                      .zone = words[2] % 5 == 0 ? ZQTIME_NO_ZONE : static_cast<std::int32_t>(words[2] % 1681) - 840}));
    return value;
}

void check_problem(const zqengine::format_problem& problem, std::size_t length) {
    require(problem.fault == zqengine::format_fault::none || problem.fault == zqengine::format_fault::too_long ||
            (problem.offset + problem.length <= length && problem.length > 0));
}

// The text of a value that the model's statement is about.
void check_statement(const dfm_model& model, const zqtime& value, const std::uint8_t* text, std::uint32_t length) {
    const layout::datetime_words words = layout::load_datetime(value);
    if (model.fixed.length == 0 || layout::year_of(words) < 0 || layout::hour_of(words) > 99) {
        return;
    }
    const std::uint32_t numbers[] = {static_cast<std::uint32_t>(layout::year_of(words)) / 100,
                                     static_cast<std::uint32_t>(layout::year_of(words)) % 100,
                                     layout::month_of(words),
                                     layout::day_of(words),
                                     0,
                                     layout::hour_of(words),
                                     layout::minute_of(words),
                                     layout::second_of(words)};
    require(model.fixed.length == length);
    for (std::uint32_t i = 0; i < length; ++i) {
        const std::uint8_t order = model.fixed.order[i];
        const std::uint32_t number = order < 16 ? numbers[order / 2] : 0;
        const std::uint32_t digit = '0' + (order % 2 == 0 ? number / 10 : number % 10);
        require(text[i] == (order < 16 ? digit : model.fixed.others[i]));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view input{reinterpret_cast<const char*>(data), size};
    const zqtime value = value_of(input);
    const std::uint8_t choice = input.empty() ? 0 : static_cast<std::uint8_t>(input.front());
    input.remove_prefix(std::min<std::size_t>(input.size(), 1));
    const exact_block format(input);

    dfm_model model;
    (void)dfm_create(nullptr, &model);
    require(dfm_set_lang(&model, choice % 2) == 0);
    const bool is_percent = choice % 4 == 3;
    zqengine::date_model parsed = zqengine::inside(model);
    const zqengine::format_problem problem = is_percent ? zqengine::parse_percent_format(format.data(), format.length, parsed)
                                                        : zqengine::parse_format_model(format.data(), format.length, parsed);
    check_problem(problem, format.length);
    const std::int32_t status =
        is_percent ? zqtime_convert_fmt(nullptr, format.data(), format.length, &model) : dfm_parse(&model, format.data(), format.length);
    require((status == 0) == (problem.fault == zqengine::format_fault::none));
    if (status != 0) {
        return 0;
    }
    if (!is_percent) {
        check_problem(zqengine::inside(model).reading_problem, format.length);
    }
    require(model.room == DFM_SHORT_TEXT_SIZE || model.room == DFM_TEXT_SIZE);
    const exact_block buffer(std::string_view(std::string(model.room, '\0')));
    std::uint32_t length = 0;
    const auto write = is_percent ? date_to_char : dfm_char_get;
    require(write(nullptr, &model, &value, buffer.data(), &length) == 0 && length <= model.room);
    check_statement(model, value, buffer.data(), length);
    return 0;
}
