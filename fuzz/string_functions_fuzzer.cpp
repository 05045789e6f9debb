// SPDX-License-Identifier: Apache-2.0
// Any bytes as texts, sets, patterns and numbers of any string function, in any character set and under any settings. Two rows per batch.
// What holds for every call is checked by the call. The status is one that string functions have, and results are the same whatever the
// engine says of itself.
#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "bop/bifun.h"
#include "engine/number_format.h"
#include "fuzz/require.h"
#include "tests/bifun_str/string_calls.h"
#include "tests/contract/each_engine.h"

namespace {

using bifun::argument_kind;
using bifun::entry_point;
using bifun::value_type;
using string_model::value;

constexpr std::size_t row_count = 2;

struct reader {
    const std::uint8_t* at;
    const std::uint8_t* end;

    std::uint8_t byte() { return at < end ? *at++ : 0; }
    // Mostly small.
    std::int32_t number() {
        const std::uint8_t first = byte();
        if (first < 0xF0) {
            return static_cast<std::int8_t>(first < 0x78 ? first : first + 0x10);
        }
        std::uint32_t value = 0;
        for (int i = 0; i < 4; ++i) {
            value = value << 8 | byte();
        }
        return static_cast<std::int32_t>(value);
    }
};

// Texts of the model's characters say more than bytes at random, which are hardly ever some.
using alphabet = std::vector<std::string>;

value take_value(reader& input, value_type type, const alphabet* characters) {
    value taken;
    taken.is_null = input.byte() == 0xFF;
    if (type == value_type::INT) {
        taken.number = input.number();
        return taken;
    }
    taken.string.blanks = input.byte() % 8;
    for (auto left = std::min<std::ptrdiff_t>(input.byte(), input.end - input.at); left > 0; --left) {
        const std::uint8_t byte = input.byte();
        taken.string.stored += characters != nullptr ? (*characters)[byte % characters->size()] : std::string(1, static_cast<char>(byte));
    }
    return taken;
}

bool is_known(std::int32_t status) {
    constexpr std::int32_t statuses[] = {
        BIFUN_OK,
        ZQ_INVALID_NLS_PARAMETERS, // of the engine, for what its rules are asked for
#define STATUS(code, name, meaning) code,
#include "bop/frame/statuses.def"
#undef STATUS
    };
    return std::ranges::count(statuses, status) != 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::vector<const entry_point*> functions = string_model::string_functions();
    testing::FLAGS_gtest_break_on_failure = true;
    reader input{data, data + size};
    const entry_point& entry = *functions[input.byte() % functions.size()];
    const std::uint8_t setting = input.byte();
    const std::uint32_t charset = setting % 3;
    contract::set_up({.compatible_mode = std::uint32_t{setting} >> 6, .charset_code = charset, .case_sensitive = setting >> 5 & 1U});

    const alphabet characters = string_model::alphabet(charset);
    std::vector<std::vector<value>> rows(row_count);
    for (std::size_t i = 0; i < entry.argument_count; ++i) {
        for (std::vector<value>& row : rows) {
            const bool is_repeated = &row != &rows[0] && entry.argument_list[i].kind == argument_kind::constant;
            row.push_back(is_repeated ? rows[0][i]
                                      : take_value(input, entry.argument_list[i].type, (setting & 0x10) != 0 ? &characters : nullptr));
        }
    }
    std::string outcomes[2];
    for (const std::int32_t said : {0, 1}) {
        each_engine::say(ZQTIME_LAYOUT_PACKED, said);
        const auto [outcome, shown] = string_model::call_strings(entry, rows);
        require(is_known(outcome.status));
        outcomes[said] = std::to_string(outcome.status);
        for (std::uint32_t row = 0; outcome.status == BIFUN_OK && row < row_count; ++row) {
            outcomes[said] += ' ' + shown[row];
        }
    }
    require(outcomes[0] == outcomes[1]);
    return 0;
}
