// SPDX-License-Identifier: Apache-2.0
#include "host/values/plain_number.h"

#include "host/values/value_text.h"

namespace host {
namespace {

// What stands at the beginning of the text between groups; empty for anything else.
std::string_view group_mark(std::string_view text, char decimal_mark) {
    for (const std::string_view mark : {decimal_mark == ',' ? "." : ",", " ", "\u00A0", "\u202F", "'", "\u2019"}) {
        if (text.starts_with(mark)) {
            return mark;
        }
    }
    return {};
}

} // namespace

bool plain_number(std::string_view text, char decimal_mark, std::string& plain) {
    constexpr std::size_t group_digits = 3;
    text = without_blanks_around(text);
    plain.clear();
    const auto take = [&](std::size_t count) {
        plain += text.substr(0, count);
        text.remove_prefix(count);
        return count;
    };
    const auto take_digits = [&] { return take(std::min(text.find_first_not_of("0123456789"), text.size())); };
    take(text.starts_with('-') || text.starts_with('+') ? 1 : 0);
    const bool begins_with_zero = text.starts_with('0');
    std::size_t digits = take_digits();
    const std::string_view mark = group_mark(text, decimal_mark);
    if (!mark.empty() && (digits == 0 || digits > group_digits || begins_with_zero)) {
        return false;
    }
    while (!mark.empty() && text.starts_with(mark)) {
        text.remove_prefix(mark.size());
        if (take_digits() != group_digits) {
            return false;
        }
    }
    if (text.starts_with(decimal_mark)) {
        plain += '.';
        text.remove_prefix(1);
        digits += take_digits();
    }
    if (text.starts_with('e') || text.starts_with('E')) {
        take(text.size());
    }
    return digits > 0 && text.empty();
}

} // namespace host
