// SPDX-License-Identifier: Apache-2.0
#include "host/values/number_formats.h"

#include <algorithm>

#include <fmt/format.h>

#include "embedded/format/number_format_texts.h"
#include "host/values/plain_number.h"
#include "host/values/value_text.h"

namespace host {

std::string explain_number_mismatch(std::string_view text, std::string_view shown, std::string_view format, std::string_view nls) {
    const auto bytes = [](std::string_view given) { return reinterpret_cast<const std::uint8_t*>(given.data()); };
    const auto length = [](std::string_view given) { return static_cast<std::uint32_t>(given.size()); };
    zqengine::number_format parsed;
    xdec number;
    if (zqengine::parse_format_texts({bytes(format), length(format), bytes(nls), length(nls)}, parsed) != 0) {
        return "";
    }
    const zqengine::number_reading reading = zqengine::read_number(parsed, bytes(text), length(text), number);
    std::string_view fault;
    switch (reading.fault) {
    case zqengine::number_fault::none:
    case zqengine::number_fault::beyond_range:
        return "";
    case zqengine::number_fault::departs:
        fault = "departs from it";
        break;
    case zqengine::number_fault::too_many_digits:
        fault = "has more digits than it";
        break;
    case zqengine::number_fault::no_digits:
        fault = "lacks a digit";
        break;
    }
    const std::string_view read = text.substr(0, reading.at);
    return fmt::format("\"{}\" {} {}", shown, fault,
                       read.size() == text.size() ? "at its end"
                       : read.empty()             ? "at its beginning"
                                                  : fmt::format("behind \"{}\"", read));
}

std::string explain_number_format(std::string_view format) {
    const std::string_view digits = "9 is a digit and 0 one that is always there, as in 'FM999,990.00'";
    return format.find('#') != format.npos   ? fmt::format("\"#\" is no element; {}", digits)
           : format.find('%') != format.npos ? fmt::format("\"%\" is no element; {}", digits)
                                             : std::string(digits);
}

std::string call_that_reads(std::string_view name, std::string_view text) {
    constexpr std::string_view units[] = {"$", "\u20AC", "\u00A3", "\u00A5", "%", "EUR", "USD", "GBP", "CHF", "JPY"};
    std::string number(without_blanks_around(text));
    std::string call(name);
    const auto leave_out = [&](std::string_view part, std::string_view put = "") {
        call = fmt::format("REPLACE({}, '{}', '{}')", call, part, put);
    };
    for (const std::string_view unit : units) {
        for (const std::string& written : {fmt::format(" {}", unit), fmt::format("{} ", unit), std::string(unit)}) {
            if (const std::size_t at = number.find(written); at != number.npos) {
                number.erase(at, written.size());
                leave_out(written);
            }
        }
    }
    std::string plain;
    const char mark = plain_number(number, '.', plain) ? '.' : ',';
    if (mark == ',' && !plain_number(number, mark, plain)) {
        return "";
    }
    for (const std::string_view group : {".", ",", " ", "\u00A0", "\u202F", "\u2019"}) {
        if (group[0] != mark && number.find(group) != number.npos) {
            leave_out(group);
        }
    }
    if (mark == ',' && number.find(mark) != number.npos) {
        leave_out(",", ".");
    }
    return number.find('\'') == number.npos && call != name ? fmt::format("TO_NUMBER({})", call) : "";
}

} // namespace host
